#include <algorithm>
#include <cmath>
#include <string>

#include "varnet/SliceFile.h"

namespace varnet {

namespace {

[[noreturn]] void Refuse(SliceFile const& file, std::string const& why) {
    throw Error(ErrorKind::kContent, file.Path(), why);
}

std::string TextOf(LayerRange const& range) {
    return std::to_string(range.first) + ":" + std::to_string(range.last);
}

// A binary file that was cut short between two layers looks whole but for its range.
void RequireWholeRange(SliceFile const& file) {
    LayerRange const& range = *file.Header().range;
    if (range.first > range.last || range.last > range.whole) {
        Refuse(file, "states layers " + TextOf(range) + " of a build of " + std::to_string(range.whole));
    }
    std::int64_t const stated = range.last - range.first + 1;
    if (file.LayerCount() != stated) {
        Refuse(file, "states layers " + TextOf(range) + " and holds " + std::to_string(file.LayerCount()) +
                         " of these " + std::to_string(stated));
    }
}

// Ranges of one build, stated in the headers, must follow each other.
void RequireNext(std::filesystem::path const& before, LayerRange const& a, SliceFile const& file) {
    LayerRange const& b = *file.Header().range;
    if (a.whole != b.whole)
        Refuse(file, "is part of a build of " + std::to_string(b.whole) + " layers, not of " +
                         std::to_string(a.whole));
    if (b.first <= a.last) Refuse(file, "its layers " + TextOf(b) + " overlap those of " + before.string());
    if (b.first > a.last + 1) {
        Refuse(file, "layers " + std::to_string(a.last + 1) + " to " + std::to_string(b.first - 1) +
                         " are missing ahead of it");
    }
}

// The steps from layer to layer as the heights have them; files of text state two decimals of them.
class Heights {
public:
    // numbered: the file is known by its range to be the next, and two layers may round to one height.
    void Add(SliceFile const& file, bool numbered) {
        if (file.LayerCount() == 0) return;
        double const first = file.LayerAt(1).z;
        double const last = file.LayerAt(file.LayerCount()).z;
        double const step =
            file.LayerCount() > 1 ? (last - first) / static_cast<double>(file.LayerCount() - 1) : m_Step;
        if (m_Any && !(numbered ? first >= m_Last : first > m_Last))
            Refuse(file, "its layers begin at or below the end of the file before");
        constexpr double kLargestGap = 1.5;
        double const known = std::max(step, m_Step);
        if (m_Any && !numbered && known > 0.0 && first - m_Last > kLargestGap * known) {
            Refuse(file, "there is a gap of " + std::to_string(first - m_Last) + " mm ahead of its layers");
        }
        m_Any = true;
        m_Last = last;
        m_Step = known;
    }

private:
    bool m_Any = false;
    double m_Last = 0.0;
    double m_Step = 0.0;
};

// So many files stay open between the look at them and the copy: a system allows some hundreds.
constexpr std::size_t kMostOpen = 64;

// A file that was found to follow the one before it.
struct Piece {
    std::filesystem::path path;
    std::int64_t layers = 0;
    std::optional<LayerRange> range;
    std::optional<SliceFile> file;  // while it is open
};

struct Pieces {
    SliceHeader header;  // of the first file
    std::vector<Piece> pieces;
    std::int64_t layers = 0;
};

void RequireSameKind(SliceFile const& file, SliceHeader const& first) {
    if (file.Header().mode != first.mode) {
        Refuse(file, std::string("is of another mode than the first file: ") + NameOf(file.Header().mode));
    }
    if (file.Header().version != first.version) Refuse(file, "has another version than the first file");
    if (file.Header().units != first.units) Refuse(file, "has other units than the first file");
    if (file.Header().aligned) Refuse(file, "is aligned: varnet convert writes it anew");
}

Pieces Open(std::span<std::filesystem::path const> inputs) {
    Pieces found;
    Heights heights;
    for (std::filesystem::path const& path : inputs) {
        SliceFile file(path);
        if (found.pieces.empty()) found.header = file.Header();
        RequireSameKind(file, found.header);
        std::optional<LayerRange> const range = file.Header().range;
        if (range) RequireWholeRange(file);
        bool const numbered = range && !found.pieces.empty() && found.pieces.back().range;
        if (numbered) RequireNext(found.pieces.back().path, *found.pieces.back().range, file);
        heights.Add(file, numbered);
        found.layers += file.LayerCount();
        found.pieces.push_back({path, file.LayerCount(), range, std::nullopt});
        if (found.pieces.size() <= kMostOpen) found.pieces.back().file = std::move(file);
    }
    return found;
}

SliceFile OpenAgain(Piece& piece) {
    if (piece.file) {
        SliceFile file = std::move(*piece.file);
        piece.file.reset();
        return file;
    }
    SliceFile file(piece.path);
    if (file.LayerCount() != piece.layers) Refuse(file, "was changed while it was read");
    return file;
}

// The range that the files make up together, where all state theirs and it is not the whole build.
std::optional<LayerRange> RangeOf(std::vector<Piece> const& pieces) {
    for (Piece const& piece : pieces) {
        if (!piece.range) return std::nullopt;
    }
    LayerRange range = *pieces.front().range;
    range.last = pieces.back().range->last;
    if (range.first == 1 && range.last == range.whole) return std::nullopt;
    return range;
}

}  // namespace

JoinReport JoinSliceFiles(std::span<std::filesystem::path const> inputs, std::filesystem::path const& output,
                          Progress const& progress) {
    if (inputs.empty()) throw Error(ErrorKind::kArgument, "there is no file to join");
    Pieces found = Open(inputs);
    SliceWriteSettings settings;
    settings.mode = found.header.mode;
    settings.range = RangeOf(found.pieces);
    // Bytes of other units would change their meaning: those layers are written anew.
    bool const copy = found.header.mode != SliceMode::kText && found.header.units == 1.0;
    SliceWriter writer(output, found.layers, settings);
    for (std::size_t i = 0; i < found.pieces.size(); ++i) {
        auto const step = [&](double share) {
            double const done = (static_cast<double>(i) + share) / static_cast<double>(found.pieces.size());
            if (progress && !progress(done))
                throw Error(ErrorKind::kCancelled, output, "joining was stopped");
        };
        SliceFile const file = OpenAgain(found.pieces[i]);
        if (copy) {
            writer.Copy(file, step);
            continue;
        }
        for (std::int64_t n = 1; n <= file.LayerCount(); ++n) {
            writer.Write(file.LayerAt(n));
            step(static_cast<double>(n) / static_cast<double>(file.LayerCount()));
        }
    }
    writer.Finish();
    return {found.layers, settings.range};
}

}  // namespace varnet
