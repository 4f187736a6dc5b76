// What has to be right before the first layer is made.

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <string>

#include "slice/Apex.h"
#include "slice/FillLines.h"
#include "slice/LayerMaker.h"
#include "slice/Together.h"

namespace varnet {

namespace {

// What a part may be higher than its layers, of a layer, before it gets another one.
constexpr double kSliver = 1e-6;

constexpr double kMostLayers = 1e6;
constexpr int kMostThreads = 1024;

// Millimetres. Lengths outside of these are a slip of the hand.
constexpr double kShortest = 1e-9;
constexpr double kLongest = 1e6;

// Numbers of fill lines are exact up to here.
constexpr double kFarthestLine = 1e15;

[[noreturn]] void Refuse(std::string const& message) { throw Error(ErrorKind::kArgument, message); }

}  // namespace

void CheckSettings(SliceSettings const& settings) {
    auto const isLength = [](double value) { return value >= kShortest && value <= kLongest; };
    auto const isLengthOrNone = [](double value) { return value >= 0.0 && value <= kLongest; };
    if (!isLength(settings.layer)) Refuse("the height of a layer has to be from 1e-9 to 1e6 mm");
    if (settings.hatch != 0.0 && !isLength(settings.hatch)) {
        Refuse("the distance of fill lines has to be 0 or from 1e-9 to 1e6 mm");
    }
    if (!(std::fabs(settings.angle) <= 360.0)) {
        Refuse("the angle of fill lines has to be from -360 to 360 degrees");
    }
    if (!isLengthOrNone(settings.tolerance)) Refuse("the tolerance of contours has to be from 0 to 1e6 mm");
    if (!isLengthOrNone(settings.close)) Refuse("gaps can be closed from 0 to 1e6 mm");
    bool const isShard = settings.shards > 0 && settings.shard >= 1 && settings.shard <= settings.shards;
    if (!isShard && (settings.shards != 0 || settings.shard != 0)) {
        Refuse("a shard has to be from 1 to the number of shards");
    }
    if (settings.threads < 1 || settings.threads > kMostThreads) Refuse("threads have to be from 1 to 1024");
}

namespace {

// Checks all inputs, and measures what of them can be sliced: in one go, as memory is what this waits for.
// Sums are taken block by block, so that they are the same for any number of threads.
class Measures {
public:
    Measures(std::vector<SlicerInput> const& inputs, int threads, Pulse& pulse)
        : m_Threads(threads), m_Pulse(pulse) {
        for (std::size_t i = 0; i < inputs.size(); ++i) TakeIn(inputs[i], i);
    }
    PlanMeasures const& Found() const { return m_Measures; }

private:
    struct Block {
        Box3 box;
        double volume = 0.0;
        std::int64_t skipped = 0;
    };

    void TakeIn(SlicerInput const& input, std::size_t number) {
        if (input.triangles.size() >= UINT32_MAX) Refuse("a mesh can have at most 4294967294 facets");
        if (!m_HasApex && !input.support) FindApex(input, number);
        std::vector<Block> blocks((input.triangles.size() + kBlockSize - 1) / kBlockSize);
        auto const threads = std::clamp<std::size_t>(blocks.size(), 1, static_cast<std::size_t>(m_Threads));
        RunTogether(static_cast<int>(threads), m_Pulse, [&](int thread, Pulse& pulse) {
            auto const begin = [&](int i) { return blocks.size() * static_cast<std::size_t>(i) / threads; };
            for (std::size_t i = begin(thread); i < begin(thread + 1); ++i)
                blocks[i] = BlockOf(input, number, i * kBlockSize, pulse);
        });
        Box3& box = input.support ? m_Measures.supports : m_Measures.parts;
        double volume = 0.0;
        for (Block const& block : blocks) {
            if (!block.box.IsEmpty()) {
                box.Add(block.box.min);
                box.Add(block.box.max);
            }
            volume += block.volume;
            m_Measures.skipped += block.skipped;
        }
        m_Measures.volume += (input.turned ? -volume : volume) / 6.0;
    }

    static void CheckIndexes(SlicerInput const& input, std::size_t number, std::size_t facet) {
        auto const count = static_cast<std::int64_t>(std::min(input.points.size(), kMostPoints));
        for (std::int32_t const corner : input.triangles[facet]) {
            if (corner < 0 || corner >= count) RefuseIndex(facet, number, corner);
        }
    }

    // The first corner of all.
    void FindApex(SlicerInput const& input, std::size_t number) {
        for (std::size_t i = 0; i < input.triangles.size() && !m_HasApex; ++i) {
            CheckIndexes(input, number, i);
            m_HasApex = IsUsable(input, input.triangles[i]);
            if (m_HasApex) m_Apex = Apex(input.points[static_cast<std::size_t>(input.triangles[i][0])]);
        }
    }

    Block BlockOf(SlicerInput const& input, std::size_t number, std::size_t first, Pulse& pulse) const {
        Block block;
        Apex apex = m_Apex;
        std::size_t const end = std::min(first + kBlockSize, input.triangles.size());
        for (std::size_t i = first; i < end; ++i) {
            pulse.Beat();
            CheckIndexes(input, number, i);
            Triangle const& triangle = input.triangles[i];
            if (!IsUsable(input, triangle)) {
                ++block.skipped;
                continue;
            }
            auto const corner = [&](std::size_t k) {
                return input.points[static_cast<std::size_t>(triangle[k])];
            };
            for (std::size_t k = 0; k < 3; ++k) block.box.Add(corner(k));
            if (!input.support) block.volume += apex.VolumeBelow(corner(0), corner(1), corner(2));
        }
        return block;
    }

    [[noreturn]] static void RefuseIndex(std::size_t facet, std::size_t number, std::int32_t corner) {
        Refuse("facet " + std::to_string(facet) + " of mesh " + std::to_string(number) + " names point " +
               std::to_string(corner) + ", which is not there");
    }

    static constexpr std::size_t kMostPoints = std::size_t{1} << 31;
    static constexpr std::size_t kBlockSize = std::size_t{1} << 16;
    int m_Threads;
    Pulse& m_Pulse;
    PlanMeasures m_Measures;
    Apex m_Apex;
    bool m_HasApex = false;
};

Box2 Flat(Box3 const& box) { return {{box.min.x, box.min.y}, {box.max.x, box.max.y}}; }

LayerHeights HeightsOf(Box3 const& box, SliceSettings const& settings) {
    if (box.IsEmpty() || !(box.max.z > box.min.z)) {
        Refuse("there is nothing to slice: the parts have no height");
    }
    double const layers = std::max(std::ceil((box.max.z - box.min.z) / settings.layer - kSliver), 1.0);
    if (!(layers <= kMostLayers)) {
        char message[128];
        std::snprintf(message, sizeof message,
                      "the layers are too thin: for at most a million they have to be %.3g mm or more",
                      (box.max.z - box.min.z) / kMostLayers);
        Refuse(message);
    }
    return {box.min.z, settings.layer, static_cast<int>(layers), box.max.z};
}

// Lines at any angle.
void CheckFillLines(Box2 const& box, double hatch) {
    if (!(hatch > 0.0) || box.IsEmpty()) return;
    double const width = box.max.x - box.min.x;
    double const depth = box.max.y - box.min.y;
    double const across = std::sqrt(width * width + depth * depth);
    double const farthest =
        std::max({std::fabs(box.min.x), std::fabs(box.min.y), std::fabs(box.max.x), std::fabs(box.max.y)});
    if (across / hatch <= kMostFillLines && farthest / hatch <= kFarthestLine) return;
    char message[128];
    std::snprintf(message, sizeof message,
                  "the fill lines are too close for parts of this size: at least %.3g mm, or 0 for none",
                  std::max(across / kMostFillLines, farthest / kFarthestLine));
    Refuse(message);
}

void TakeShard(SliceSettings& settings, int count) {
    auto const begin = [&](std::int64_t shard) {
        return static_cast<std::int32_t>(shard * count / settings.shards);
    };
    if (settings.firstLayer != 1 || settings.lastLayer != 0) {
        Refuse("layers can be given by number or by shard, and not by both");
    }
    if (settings.shards > count) {
        Refuse("there are " + std::to_string(count) + " layers, too few for " +
               std::to_string(settings.shards) + " shards");
    }
    settings.firstLayer = begin(settings.shard - 1) + 1;
    settings.lastLayer = begin(settings.shard);
}

void CheckRange(SliceSettings& settings, int count) {
    if (settings.shards != 0) TakeShard(settings, count);
    if (settings.lastLayer == 0) settings.lastLayer = count;
    if (settings.firstLayer >= 1 && settings.firstLayer <= settings.lastLayer &&
        settings.lastLayer <= count) {
        return;
    }
    Refuse("there are layers 1 to " + std::to_string(count) + ", and not " +
           std::to_string(settings.firstLayer) + " to " + std::to_string(settings.lastLayer));
}

}  // namespace

SlicePlan PlanFor(PlanMeasures const& measures, SliceSettings const& settings) {
    SlicePlan plan;
    plan.settings = settings;
    plan.heights = HeightsOf(measures.parts, settings);
    CheckRange(plan.settings, plan.heights.count);
    CheckFillLines(Flat(measures.parts), settings.hatch);
    CheckFillLines(Flat(measures.supports), settings.hatch);
    plan.partGrid = Grid(Flat(measures.parts));
    plan.supportGrid = Grid(Flat(measures.supports));
    plan.meshVolume = measures.volume;
    plan.skippedFacets = measures.skipped;
    return plan;
}

SlicePlan PlanSlices(std::vector<SlicerInput> const& inputs, SliceSettings const& settings, Pulse& pulse) {
    CheckSettings(settings);
    PlanMeasures const measures = Measures(inputs, settings.threads, pulse).Found();
    SlicePlan plan = PlanFor(measures, settings);
    for (SlicerInput const& input : inputs) {
        (input.support ? plan.supports : plan.parts)
            .emplace_back(input, plan.heights, measures.skipped == 0, settings.threads, pulse);
    }
    return plan;
}

}  // namespace varnet
