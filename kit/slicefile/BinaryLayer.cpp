#include "slicefile/BinaryLayer.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstring>

#include "slicefile/TextLayer.h"

namespace varnet {

static_assert(std::endian::native == std::endian::little,
              "numbers of the files are taken as they lie in memory");

namespace {

template <class Number>
Number Load(char const* bytes) {
    Number number;
    std::memcpy(&number, bytes, sizeof number);
    return number;
}

std::optional<BinaryWord> CommandOf(std::uint16_t word, BinaryForm const& form) {
    return form.isDisguised ? DisguisedWordOf(word) : PlainWordOf(word);
}

std::int64_t WholeAt(char const* bytes, BinaryWord const& command) {
    return command.isShort ? Load<std::uint16_t>(bytes) : Load<std::int32_t>(bytes);
}

double RealAt(char const* bytes, BinaryWord const& command, double units) {
    double const stored =
        command.isShort ? Load<std::uint16_t>(bytes) : static_cast<double>(Load<float>(bytes));
    return stored * units - command.offset;
}

// Long commands of an aligned file have two bytes behind their word.
std::size_t WordSize(BinaryWord const& command, BinaryForm const& form) {
    return form.isAligned && !command.isShort ? 4 : 2;
}

// The bytes that fill up an aligned command whose end is at a place.
std::uint64_t Padding(std::uint64_t place, BinaryForm const& form) {
    return form.isAligned ? (4 - (place - form.start) % 4) % 4 : 0;
}

// The bytes of what follows the whole numbers.
std::uint64_t ItemBytes(BinaryWord const& command, std::int64_t items) {
    if (command.command == SliceCommand::kLayer) {
        return command.NumberSize() + static_cast<std::uint64_t>(command.offset);
    }
    return static_cast<std::uint64_t>(items) * command.Reals() * command.NumberSize();
}

// A window on a file that moves forward.
class Window {
public:
    explicit Window(SeekableFile& file)
        : m_File(file), m_Buffer(static_cast<std::size_t>(std::min<std::uint64_t>(file.Size(), kBlock))) {}

    // Up to `size` bytes at a place; fewer at the end of the file.
    std::span<char const> At(std::uint64_t place, std::size_t size) {
        if (place < m_Start || place + size > m_Start + m_Filled) {
            m_Start = place;
            m_Filled = m_File.ReadAt(place, m_Buffer);
        }
        std::size_t const from = static_cast<std::size_t>(place - m_Start);
        return std::span<char const>(m_Buffer).subspan(from, std::min(size, m_Filled - from));
    }

private:
    static constexpr std::uint64_t kBlock = std::uint64_t{1} << 18;
    SeekableFile& m_File;
    std::vector<char> m_Buffer;
    std::uint64_t m_Start = 0;
    std::size_t m_Filled = 0;
};

}  // namespace

BinaryIndex IndexBinary(SeekableFile& file, BinaryForm const& form, Progress const& progress) {
    constexpr std::size_t kMostAhead = 16;  // a word, its filling and three whole numbers
    constexpr std::uint64_t kBetweenCalls = 4096;
    BinaryIndex index;
    index.end = form.start;
    Window window(file);
    for (std::uint64_t commands = 0; index.end < file.Size(); ++commands) {
        if (progress && commands % kBetweenCalls == 0 &&
            !progress(static_cast<double>(index.end) / static_cast<double>(file.Size()))) {
            throw Error(ErrorKind::kCancelled, file.Path(), "reading was stopped");
        }
        std::span<char const> const bytes = window.At(index.end, kMostAhead);
        std::optional<BinaryWord> const command =
            bytes.size() < 2 ? std::nullopt : CommandOf(Load<std::uint16_t>(bytes.data()), form);
        if (!command) {
            index.broken = "there is no command here";
            break;
        }
        std::size_t const numbers = WordSize(*command, form);
        std::size_t const head = numbers + command->Wholes() * command->NumberSize();
        if (bytes.size() < head) {
            index.broken = "the file ends within a command";
            break;
        }
        std::int64_t const items =
            command->Wholes() == 0
                ? 0
                : WholeAt(bytes.data() + numbers + (command->Wholes() - 1) * command->NumberSize(), *command);
        std::uint64_t const behind = index.end + head + (items < 0 ? 0 : ItemBytes(*command, items));
        if (items < 0 || behind > file.Size()) {
            index.broken =
                "a command announces " + std::to_string(items) + " points, which the file does not hold";
            break;
        }
        bool const isLayer = command->command == SliceCommand::kLayer;
        // What comes before the first height belongs to the first layer.
        if (isLayer) index.places.push_back(index.places.empty() ? form.start : index.end);
        index.end = std::min(behind + Padding(behind, form), file.Size());
    }
    return index;
}

Layer ParseBinaryLayer(std::span<char const> bytes, BinaryForm const& form, std::filesystem::path const& file,
                       std::uint64_t place) {
    Layer layer;
    std::vector<Point2> points;
    std::vector<Stroke> strokes;
    std::size_t at = 0;
    auto const fail = [&](char const* why) { throw Error::AtByte(file, place + at, why); };
    while (at < bytes.size()) {
        if (bytes.size() - at < 2) fail("there is no command here");
        std::optional<BinaryWord> const command = CommandOf(Load<std::uint16_t>(bytes.data() + at), form);
        if (!command) fail("there is no command here");
        std::size_t const size = command->NumberSize();
        std::size_t const first = at + WordSize(*command, form);
        std::size_t const items = first + command->Wholes() * size;
        if (items > bytes.size()) fail("the file ends within a command");
        auto const whole = [&](std::size_t i) { return WholeAt(bytes.data() + first + i * size, *command); };
        std::int64_t const count = command->Wholes() == 0 ? 0 : whole(command->Wholes() - 1);
        if (count < 0 || ItemBytes(*command, count) > bytes.size() - items)
            fail("the file ends within a command");
        auto const real = [&](std::size_t i) {
            double const value = RealAt(bytes.data() + items + i * size, *command, form.units);
            if (!std::isfinite(value)) fail("a coordinate is not finite");
            return value;
        };
        auto const point = [&](std::size_t i) { return Point2{real(2 * i), real(2 * i + 1)}; };
        if (command->command == SliceCommand::kLayer) {
            layer.z = real(0);
        } else if (command->command == SliceCommand::kPolyline) {
            points.clear();
            for (std::size_t i = 0; i < static_cast<std::size_t>(count); ++i) points.push_back(point(i));
            AddPath(layer, points, whole(0), whole(1));
        } else {
            strokes.clear();
            for (std::size_t i = 0; i < static_cast<std::size_t>(count); ++i) {
                strokes.push_back({point(2 * i), point(2 * i + 1)});
            }
            layer.AddChain(strokes, static_cast<std::int32_t>(whole(0)));
        }
        std::uint64_t const behind = place + items + ItemBytes(*command, count);
        at = static_cast<std::size_t>(behind + Padding(behind, form) - place);
    }
    return layer;
}

}  // namespace varnet
