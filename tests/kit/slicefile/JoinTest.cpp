#include <gtest/gtest.h>

#include <cmath>
#include <fstream>
#include <iterator>

#include "TestFiles.h"
#include "varnet/SliceFile.h"

namespace varnet {
namespace {

namespace fs = std::filesystem;

// Layer n of a build: a square that grows with the height, and a stroke.
Layer LayerOf(std::int32_t number, double height = 0.25) {
    Layer layer;
    layer.number = number;
    layer.z = height * number;
    double const s = 10.0 + number;
    layer.AddContour(std::vector<Point2>{{0, 0}, {s, 0}, {s, s}, {0, s}}, {});
    Stroke const stroke{{1, 0.5 * number}, {s - 1, 0.5 * number}};
    layer.AddChain(std::span(&stroke, 1), kFillId);
    return layer;
}

class JoinTest : public ::testing::TestWithParam<SliceMode> {
protected:
    // Layers first to last of a build of so many, or a whole file where there is no range.
    fs::path Shard(std::string const& name, int first, int last, std::optional<int> whole,
                   SliceMode mode = SliceMode::kBinary) const {
        SliceWriteSettings settings;
        settings.mode = mode;
        settings.seed = 7;
        if (whole.has_value()) settings.range = LayerRange{first, last, *whole};
        SliceWriter writer(folder / name, last - first + 1, settings);
        for (int n = first; n <= last; ++n) writer.Write(LayerOf(n));
        writer.Finish();
        return folder / name;
    }
    static std::string BytesOf(fs::path const& path) {
        std::ifstream stream(path, std::ios::binary);
        return {std::istreambuf_iterator<char>(stream), {}};
    }
    // What a person reads where files are not joined; nothing is left of the output then.
    std::string RefusalOf(std::vector<fs::path> const& inputs, ErrorKind kind = ErrorKind::kContent,
                          Progress const& progress = {}) const {
        fs::path const output = folder / "joined.cli";
        try {
            JoinSliceFiles(inputs, output, progress);
        } catch (Error const& error) {
            EXPECT_EQ(kind, error.Kind()) << error.what();
            EXPECT_FALSE(fs::exists(output));
            return error.what();
        }
        return "joined";
    }

    TestFolder folder;
};

INSTANTIATE_TEST_SUITE_P(Modes, JoinTest,
                         ::testing::Values(SliceMode::kText, SliceMode::kBinary, SliceMode::kDisguised));

TEST_P(JoinTest, ShardsAreTheBytesOfTheWhole) {
    int const layers = 12;
    fs::path const whole = Shard("whole.cli", 1, layers, std::nullopt, GetParam());
    for (int const shards : {1, 2, 3, 5, 12}) {
        std::vector<fs::path> inputs;
        for (int i = 0; i < shards; ++i) {
            int const first = layers * i / shards + 1;
            int const last = layers * (i + 1) / shards;
            inputs.push_back(Shard(std::to_string(i) + ".cli", first, last, layers, GetParam()));
        }
        EXPECT_EQ(layers, JoinSliceFiles(inputs, folder / "joined.cli").layers);
        EXPECT_TRUE(BytesOf(whole) == BytesOf(folder / "joined.cli")) << shards;
    }
}

// Each input counts as much as any other; the layers of a binary one are copied at once.
TEST_P(JoinTest, TellsTheShareOfTheInputsThatAreDone) {
    std::vector<fs::path> const inputs = {Shard("a.cli", 1, 2, 6, GetParam()),
                                          Shard("b.cli", 3, 6, 6, GetParam())};
    std::vector<double> shares;
    Progress const all = [&shares](double share) {
        shares.push_back(share);
        return true;
    };
    EXPECT_EQ(6, JoinSliceFiles(inputs, folder / "whole.cli", all).layers);
    std::vector<double> const expected = GetParam() == SliceMode::kText
                                             ? std::vector<double>{0.25, 0.5, 0.625, 0.75, 0.875, 1.0}
                                             : std::vector<double>{0.5, 1.0};
    EXPECT_EQ(shares, expected);
    int calls = 0;
    std::string const refusal =
        RefusalOf(inputs, ErrorKind::kCancelled, [&calls](double) { return ++calls < 2; });
    EXPECT_EQ((folder / "joined.cli").string() + ": joining was stopped", refusal);
    EXPECT_EQ(2, calls);
}

TEST_P(JoinTest, FilesWithoutARangeAreHeldAgainstTheirHeights) {
    std::vector<fs::path> const inputs{Shard("a.cli", 1, 4, std::nullopt, GetParam()),
                                       Shard("b.cli", 5, 9, std::nullopt, GetParam())};
    EXPECT_EQ(9, JoinSliceFiles(inputs, folder / "joined.cli").layers);
    {
        // Closed before the file is removed.
        SliceFile const joined(folder / "joined.cli");
        for (int n = 1; n <= 9; ++n) EXPECT_NEAR(0.25 * n, joined.LayerAt(n).z, 0.006) << n;
    }
    std::vector<fs::path> const turned{inputs[1], inputs[0]};
    fs::remove(folder / "joined.cli");
    EXPECT_NE(std::string::npos, RefusalOf(turned).find("begin at or below"));
    std::vector<fs::path> const gap{inputs[0], Shard("c.cli", 7, 9, std::nullopt, GetParam())};
    EXPECT_NE(std::string::npos, RefusalOf(gap).find("gap"));
}

// Some of the shards are a shard themselves, and can be joined with the others later.
TEST_P(JoinTest, ShardsOfAnEndOfTheBuildStateTheirRange) {
    int const layers = 12;
    auto const shard = [&](int first, int last) {
        return Shard(std::to_string(first) + ".cli", first, last, layers, GetParam());
    };
    std::vector<fs::path> const low{shard(1, 3), shard(4, 6)};
    std::vector<fs::path> const high{shard(7, 7), shard(8, 12)};
    fs::path const lowest = folder / "low.cli";
    fs::path const highest = folder / "high.cli";
    JoinReport const joined = JoinSliceFiles(low, lowest);
    EXPECT_EQ(6, joined.layers);
    EXPECT_EQ((LayerRange{1, 6, layers}), joined.range);
    EXPECT_EQ((LayerRange{7, 12, layers}), JoinSliceFiles(high, highest).range);
    EXPECT_EQ((LayerRange{1, 6, layers}), SliceFile(lowest).Header().range);
    EXPECT_EQ((LayerRange{7, 12, layers}), SliceFile(highest).Header().range);
    EXPECT_TRUE(BytesOf(Shard("same.cli", 1, 6, layers, GetParam())) == BytesOf(lowest));
    EXPECT_NE(std::string::npos, RefusalOf({lowest, high[1]}).find("layers 7 to 7 are missing"));
    JoinReport const all = JoinSliceFiles(std::vector<fs::path>{lowest, highest}, folder / "joined.cli");
    EXPECT_EQ(layers, all.layers);
    EXPECT_FALSE(all.range.has_value());
    fs::path const whole = Shard("whole.cli", 1, layers, std::nullopt, GetParam());
    EXPECT_TRUE(BytesOf(whole) == BytesOf(folder / "joined.cli"));
}

// More files than are open at a time.
TEST_P(JoinTest, AShardForEachLayer) {
    int const layers = 150;
    std::vector<fs::path> inputs;
    for (int n = 1; n <= layers; ++n) {
        inputs.push_back(Shard(std::to_string(n) + ".cli", n, n, layers, GetParam()));
    }
    EXPECT_EQ(layers, JoinSliceFiles(inputs, folder / "joined.cli").layers);
    fs::path const whole = Shard("whole.cli", 1, layers, std::nullopt, GetParam());
    EXPECT_TRUE(BytesOf(whole) == BytesOf(folder / "joined.cli"));
}

// Heights in text have two decimals: the numbers say that the layers follow each other.
TEST_P(JoinTest, ThinLayersMayRoundToOneHeight) {
    SliceWriteSettings settings;
    settings.mode = GetParam();
    settings.range = LayerRange{1, 1, 2};
    for (std::int32_t const n : {1, 2}) {
        settings.range->first = settings.range->last = n;
        SliceWriter writer(folder / (std::to_string(n) + ".cli"), 1, settings);
        writer.Write(LayerOf(n, 0.001));
        writer.Finish();
    }
    EXPECT_EQ(2,
              JoinSliceFiles(std::vector<fs::path>{folder / "1.cli", folder / "2.cli"}, folder / "joined.cli")
                  .layers);
}

TEST_P(JoinTest, FilesWithAndWithoutARangeMayFollowEachOther) {
    auto const shard = [&](std::string const& name, int first, int last, bool stated) {
        return Shard(name, first, last, stated ? std::optional<int>(12) : std::nullopt, GetParam());
    };
    std::vector<fs::path> const inputs{shard("a.cli", 1, 3, false), shard("b.cli", 4, 6, true),
                                       shard("c.cli", 7, 9, true), shard("d.cli", 10, 12, false)};
    EXPECT_EQ(12, JoinSliceFiles(inputs, folder / "joined.cli").layers);
    fs::path const whole = Shard("whole.cli", 1, 12, std::nullopt, GetParam());
    EXPECT_TRUE(BytesOf(whole) == BytesOf(folder / "joined.cli"));
    fs::remove(folder / "joined.cli");
    std::vector<fs::path> const gap{inputs[1], inputs[2], shard("e.cli", 12, 12, false)};
    EXPECT_NE(std::string::npos, RefusalOf(gap).find("gap"));
    // Layers 7 to 9 of a build whose layers are lower than those of the file before.
    SliceWriteSettings settings;
    settings.mode = GetParam();
    settings.range = LayerRange{7, 9, 12};
    SliceWriter writer(folder / "lower.cli", 3, settings);
    for (std::int32_t n = 7; n <= 9; ++n) writer.Write(LayerOf(n, 0.125));
    writer.Finish();
    EXPECT_NE(std::string::npos, RefusalOf({inputs[1], folder / "lower.cli"}).find("begin at or below"));
}

using JoinRefusals = JoinTest;

// Nothing else tells that a binary file was cut between two layers.
TEST_F(JoinRefusals, FilesWithOtherLayersThanTheyState) {
    fs::path const a = Shard("a.cli", 1, 4, 12);
    std::string const bytes = BytesOf(Shard("b.cli", 5, 8, 12));
    fs::path const c = Shard("c.cli", 9, 12, 12);
    // Of each layer 6 bytes are its own, 14 and 5 points its contour's, 10 and a stroke its chain's.
    std::size_t const layer = 6 + 14 + 5 * 8 + 10 + 16;
    for (std::size_t const missing : {1, 3, 4}) {
        fs::path const cut = folder.Write("cut.cli", bytes.substr(0, bytes.size() - missing * layer));
        std::string const why = RefusalOf({a, cut, c});
        EXPECT_NE(std::string::npos, why.find("cut.cli")) << why;
        EXPECT_NE(std::string::npos, why.find("states layers 5:8 and holds " + std::to_string(4 - missing)))
            << why;
    }
    for (std::string const range : {"8:5/12", "5:8/07"}) {
        std::string other = bytes;
        other.replace(other.find("5:8/12"), range.size(), range);
        fs::path const b = folder.Write("other.cli", other);
        EXPECT_NE(std::string::npos, RefusalOf({b}).find("other.cli: states layers")) << range;
    }
}

// A step is a quarter of a millimetre.
TEST_F(JoinRefusals, AGapOfOneStepAndAHalfIsNoneAndAnEndThatIsTheNextBeginningIsRefused) {
    auto const file = [this](char const* name, std::vector<double> const& heights) {
        SliceWriteSettings settings;
        settings.mode = SliceMode::kBinary;
        SliceWriter writer(folder / name, static_cast<std::int64_t>(heights.size()), settings);
        for (double const z : heights) {
            Layer layer = LayerOf(1);
            layer.z = z;
            writer.Write(layer);
        }
        writer.Finish();
        return folder / name;
    };
    fs::path const a = file("a.cli", {0.25, 0.5, 0.75, 1.0});
    EXPECT_EQ(RefusalOf({a, file("at.cli", {1.375, 1.625})}), "joined");
    fs::remove(folder / "joined.cli");
    EXPECT_NE(std::string::npos, RefusalOf({a, file("far.cli", {1.4375, 1.6875})}).find("gap"));
    EXPECT_NE(std::string::npos, RefusalOf({a, file("same.cli", {1.0, 1.25})}).find("begin at or below"));
    // Of one layer, the step is that of the file before.
    EXPECT_EQ(RefusalOf({a, file("one.cli", {1.25})}), "joined");
    fs::remove(folder / "joined.cli");
    EXPECT_NE(std::string::npos, RefusalOf({a, file("alone.cli", {1.5})}).find("gap"));
    // Where neither has a step, any way up will do.
    EXPECT_EQ(RefusalOf({file("single.cli", {1.0}), file("high.cli", {90.0})}), "joined");
    fs::remove(folder / "joined.cli");
    // The way from one file to the next is held against the larger of their steps.
    for (std::vector<double> const& heights : {std::vector<double>{1.25, 1.375}, {1.625, 2.125}}) {
        EXPECT_EQ(RefusalOf({a, file("other.cli", heights)}), "joined") << heights[0];
        fs::remove(folder / "joined.cli");
    }
}

TEST_F(JoinRefusals, OverlapsGapsAndOtherBuildsAreNamed) {
    fs::path const a = Shard("a.cli", 1, 4, 12);
    fs::path const b = Shard("b.cli", 4, 8, 12);
    fs::path const c = Shard("c.cli", 9, 12, 12);
    fs::path const other = Shard("other.cli", 5, 8, 13);
    std::string const overlap = RefusalOf({a, b});
    EXPECT_NE(std::string::npos, overlap.find("b.cli"));
    EXPECT_NE(std::string::npos, overlap.find("4:8"));
    EXPECT_NE(std::string::npos, RefusalOf({a, c}).find("layers 5 to 8 are missing"));
    EXPECT_NE(std::string::npos, RefusalOf({a, other}).find("13 layers, not of 12"));
    EXPECT_NE("joined", RefusalOf({c, a}));
}

TEST_F(JoinRefusals, OtherModesAndUnitsAreNamed) {
    fs::path const a = Shard("a.cli", 1, 4, 8);
    fs::path const text = Shard("t.cli", 5, 8, 8, SliceMode::kText);
    EXPECT_NE(std::string::npos, RefusalOf({a, text}).find("another mode"));
    std::string bytes = BytesOf(Shard("t1.cli", 1, 4, 8, SliceMode::kText));
    std::size_t const at = bytes.find("$$UNITS/");
    ASSERT_NE(std::string::npos, at);
    std::size_t const end = bytes.find('\n', at);
    bytes.replace(at, end - at, "$$UNITS/00000000.500000");
    fs::path const half = folder.Write("half.cli", bytes);
    EXPECT_NE(std::string::npos, RefusalOf({half, text}).find("other units"));
    std::string later = BytesOf(text);
    ASSERT_NE(std::string::npos, later.find("$$VERSION/200"));
    later.replace(later.find("$$VERSION/200"), 13, "$$VERSION/201");
    fs::path const versioned = folder.Write("later.cli", later);
    EXPECT_NE(std::string::npos,
              RefusalOf({folder / "t1.cli", versioned}).find("later.cli: has another version"));
}

TEST_F(JoinRefusals, BrokenFilesMissingOnesAndNoneAtAll) {
    fs::path const a = Shard("a.cli", 1, 4, 8);
    std::string const bytes = BytesOf(Shard("b.cli", 5, 8, 8));
    fs::path const cut = folder.Write("cut.cli", bytes.substr(0, bytes.size() - 3));
    EXPECT_NE(std::string::npos, RefusalOf({a, cut}).find("cut.cli"));
    EXPECT_NE(std::string::npos,
              RefusalOf({a, folder / "missing.cli"}, ErrorKind::kFile).find("no such file"));
    RefusalOf({}, ErrorKind::kArgument);
    RefusalOf({a, Shard("b.cli", 5, 8, 8)}, ErrorKind::kCancelled, [](double) { return false; });
}

TEST_F(JoinRefusals, LineEndsBehindTheLayersStayOutOfWhatIsJoined) {
    std::vector<fs::path> const inputs{
        folder.Write("a2.cli", BytesOf(Shard("a.cli", 1, 4, 8)) + "\r\n"),
        folder.Write("b2.cli", BytesOf(Shard("b.cli", 5, 8, 8)) + "\r\n"),
    };
    EXPECT_EQ(8, JoinSliceFiles(inputs, folder / "joined.cli").layers);
    EXPECT_TRUE(BytesOf(Shard("whole.cli", 1, 8, std::nullopt)) == BytesOf(folder / "joined.cli"));
}

TEST_F(JoinRefusals, AlignedFilesAreNamed) {
    std::string bytes = BytesOf(Shard("a.cli", 1, 1, std::nullopt));
    bytes.resize(bytes.find("$$HEADEREND"));
    fs::path const aligned = folder.Write("aligned.cli", bytes + "$$ALIGN\n$$HEADEREND");
    EXPECT_NE(std::string::npos, RefusalOf({aligned}).find("aligned.cli: is aligned"));
}

// So many files are kept open; those behind are opened again when their turn comes.
TEST_F(JoinRefusals, AFileThatHasOtherLayersWhenItsTurnComesIsNamed) {
    constexpr int kFiles = 70;
    for (int const layers : {1, 3}) {
        std::vector<fs::path> inputs;
        for (int i = 0; i < kFiles; ++i) {
            inputs.push_back(Shard("s" + std::to_string(i) + ".cli", 2 * i + 1, 2 * i + 2, std::nullopt));
        }
        bool isChanged = false;
        std::string const refusal = RefusalOf(inputs, ErrorKind::kContent, [&](double) {
            if (!isChanged) Shard("s69.cli", 139, 138 + layers, std::nullopt);
            isChanged = true;
            return true;
        });
        EXPECT_NE(std::string::npos, refusal.find("s69.cli: was changed while it was read")) << refusal;
    }
}

// The bytes of the layers are copied in one block, which is all there is to do.
TEST_F(JoinRefusals, CopyingTellsSharesOfTheLayersAlone) {
    SliceFile const file(Shard("a.cli", 1, 4, std::nullopt));
    SliceWriter writer(folder / "copy.cli", 4);
    std::vector<double> shares;
    writer.Copy(file, [&shares](double share) { shares.push_back(share); });
    EXPECT_EQ(shares, std::vector<double>{1.0});
}

#if !defined(_WIN32)
TEST_F(JoinRefusals, AFileThatBecomesShorterWhileItIsCopiedIsNamed) {
    fs::path const path = Shard("a.cli", 1, 4, std::nullopt);
    SliceFile const file(path);
    fs::resize_file(path, file.GeometryEnd() - 20);
    SliceWriter writer(folder / "copy.cli", 4);
    try {
        writer.Copy(file, [](double) {});
        ADD_FAILURE() << "copied";
    } catch (Error const& error) {
        EXPECT_EQ(ErrorKind::kFile, error.Kind());
        EXPECT_EQ(path.string() + ": has become shorter while it was read", error.what());
    }
}
#endif

}  // namespace
}  // namespace varnet
