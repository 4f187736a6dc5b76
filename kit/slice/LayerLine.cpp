#include "slice/LayerLine.h"

#include <algorithm>
#include <atomic>
#include <chrono>
#include <condition_variable>
#include <exception>
#include <mutex>
#include <optional>
#include <thread>
#include <utility>
#include <vector>

namespace varnet {

namespace {

class OwnThread : public LayerLine {
public:
    explicit OwnThread(SlicePlan const& plan) : m_Maker(plan), m_Number(plan.settings.firstLayer) {}
    SlicedLayer Next(std::function<void()> const& look) override {
        Pulse pulse(look);
        return m_Maker.Make(m_Number++, pulse);
    }

private:
    LayerMaker m_Maker;
    int m_Number;
};

// Ends the making of a block in the middle of a layer.
struct Stopped {};

// Threads, of which the caller's is one, make blocks of layers, each the next one that nobody has; they wait
// where they are too far ahead of the layers that are taken.
class Threads : public LayerLine {
public:
    explicit Threads(SlicePlan const& plan) : m_Plan(plan) {
        int const count = plan.settings.lastLayer - plan.settings.firstLayer + 1;
        int const threads = std::min(plan.settings.threads, count);
        m_BlockSize = std::clamp(count / (threads * kBlocksEach), 1, kLongestBlock);
        m_BlockCount = (count + m_BlockSize - 1) / m_BlockSize;
        m_Slots.resize(static_cast<std::size_t>(std::min(threads * kAhead, m_BlockCount)));
        m_Threads.reserve(static_cast<std::size_t>(threads));
        try {
            for (int i = 1; i < threads; ++i) m_Threads.emplace_back([this] { Work(); });
        } catch (std::exception const&) {
            // The system has no more, or no memory for one: there are fewer, and more layers for each.
        }
    }

    ~Threads() override {
        m_Stop.store(true, std::memory_order_relaxed);
        {
            std::lock_guard const lock(m_Mutex);
            m_Room.notify_all();
        }
        for (std::thread& thread : m_Threads) thread.join();
    }

    SlicedLayer Next(std::function<void()> const& look) override {
        if (m_Taken == m_Block.size()) TakeBlock(look);
        return std::move(m_Block[m_Taken++]);
    }

private:
    static constexpr int kBlocksEach = 8;
    static constexpr int kLongestBlock = 8;
    static constexpr int kAhead = 4;

    struct Slot {
        bool full = false;
        std::vector<SlicedLayer> layers;
        std::exception_ptr error;
    };

    Slot& SlotOf(int block) { return m_Slots[static_cast<std::size_t>(block) % m_Slots.size()]; }
    bool HasRoom() const {
        return m_NextMade < m_BlockCount && m_NextMade < m_NextTaken + static_cast<int>(m_Slots.size());
    }

    // Blocks are made here, too, until the next one is there.
    void TakeBlock(std::function<void()> const& look) {
        std::unique_lock lock(m_Mutex);
        Slot& slot = SlotOf(m_NextTaken);
        while (!slot.full) {
            if (HasRoom()) {
                int const block = m_NextMade++;
                lock.unlock();
                MakeHere(block, look);
                lock.lock();
            } else if (!m_Ready.wait_for(lock, std::chrono::milliseconds(20),
                                         [&slot] { return slot.full; })) {
                lock.unlock();
                look();
                lock.lock();
            }
        }
        if (slot.error) std::rethrow_exception(slot.error);
        m_Block = std::move(slot.layers);
        slot = {};
        m_Taken = 0;
        ++m_NextTaken;
        m_Room.notify_all();
    }

    // What the look throws comes out at once; what the work throws, when its block is asked for.
    void MakeHere(int block, std::function<void()> const& look) {
        std::exception_ptr thrown;
        Pulse pulse([&look, &thrown] {
            try {
                look();
            } catch (...) {
                thrown = std::current_exception();
                throw Stopped();
            }
        });
        try {
            Make(block, m_Maker, pulse);
        } catch (Stopped const&) {
            std::rethrow_exception(thrown);
        }
    }

    void Work() {
        std::optional<LayerMaker> maker;
        Pulse pulse([this] {
            if (m_Stop.load(std::memory_order_relaxed)) throw Stopped();
        });
        try {
            for (int block = NextBlock(); block < m_BlockCount; block = NextBlock()) {
                if (!Make(block, maker, pulse)) return;
            }
        } catch (Stopped const&) {
            return;
        }
    }

    // Makes the block and puts it into its slot. Where that fails the slot gets the error, and false comes
    // back. Throws Stopped when the pulse does.
    bool Make(int block, std::optional<LayerMaker>& maker, Pulse& pulse) {
        Slot made;
        made.full = true;
        try {
            if (!maker.has_value()) maker.emplace(m_Plan);
            made.layers = LayersOf(block, *maker, pulse);
        } catch (Stopped const&) {
            throw;
        } catch (...) {
            made.error = std::current_exception();
        }
        bool const isMade = made.error == nullptr;
        std::lock_guard const lock(m_Mutex);
        SlotOf(block) = std::move(made);
        m_Ready.notify_all();
        return isMade;
    }

    std::vector<SlicedLayer> LayersOf(int block, LayerMaker& maker, Pulse& pulse) const {
        int const first = m_Plan.settings.firstLayer + block * m_BlockSize;
        int const last = std::min(first + m_BlockSize - 1, m_Plan.settings.lastLayer);
        std::vector<SlicedLayer> layers;
        for (int number = first; number <= last; ++number) layers.push_back(maker.Make(number, pulse));
        return layers;
    }

    // The next block that nobody has, once there is room for it; the number of blocks when there is no more.
    int NextBlock() {
        std::unique_lock lock(m_Mutex);
        auto const isStopped = [this] { return m_Stop.load(std::memory_order_relaxed); };
        m_Room.wait(lock, [&] { return isStopped() || m_NextMade >= m_BlockCount || HasRoom(); });
        return isStopped() || m_NextMade >= m_BlockCount ? m_BlockCount : m_NextMade++;
    }

    SlicePlan const& m_Plan;
    int m_BlockSize = 1;
    int m_BlockCount = 0;
    std::mutex m_Mutex;
    std::condition_variable m_Ready;
    std::condition_variable m_Room;
    std::vector<Slot> m_Slots;
    int m_NextMade = 0;
    int m_NextTaken = 0;
    std::atomic<bool> m_Stop{false};
    std::vector<SlicedLayer> m_Block;
    std::size_t m_Taken = 0;
    std::optional<LayerMaker> m_Maker;  // of the caller's thread
    std::vector<std::thread> m_Threads;
};

}  // namespace

std::unique_ptr<LayerLine> MakeLayerLine(SlicePlan const& plan) {
    if (plan.settings.threads == 1) return std::make_unique<OwnThread>(plan);
    return std::make_unique<Threads>(plan);
}

}  // namespace varnet
