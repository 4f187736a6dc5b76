#include "varnet/StreamSlicer.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <string>
#include <utility>

#include "part/FlatMesh.h"
#include "part/MeshReaders.h"
#include "part/StlRecords.h"
#include "slice/Apex.h"
#include "slice/LayerRun.h"
#include "stream/FacetRuns.h"
#include "stream/LivePoints.h"

namespace varnet {

namespace fs = std::filesystem;

namespace {

constexpr std::size_t kLeastSortMemory = std::size_t{1} << 20;
constexpr std::size_t kMostSortMemory = std::size_t{1} << 34;
// Of a facet that is sorted: its record, and its place in the order.
constexpr std::size_t kSortBytes = sizeof(FacetRecord) + sizeof(std::uint32_t);

// Shares of the work: up to where the file is measured, and up to where it is sorted.
constexpr double kMeasured = 0.25;
constexpr double kSorted = 0.6;

// Directed areas that add up to no more than this share of the area are those of a closed part.
constexpr double kClosedShare = 1e-9;

// Of twice the area times the extent, by which a volume of nothing may differ from 0.
constexpr double kVolumeRounding = 1e-9;

// Of what is solid in a layer, by which contours may enclose less through rounding.
constexpr double kAreaRounding = 1e-9;

using Corners = std::array<Point3, 3>;

double LowestOf(Corners const& c) { return std::min({c[0].z, c[1].z, c[2].z}); }
double HighestOf(Corners const& c) { return std::max({c[0].z, c[1].z, c[2].z}); }

void Check(StreamSettings const& settings) {
    CheckSettings(settings.slice);
    if (!(settings.scale > 0.0) || !std::isfinite(settings.scale)) {
        throw Error(ErrorKind::kArgument, "the scale has to be a number above 0");
    }
    if (settings.sortMemory < kLeastSortMemory || settings.sortMemory > kMostSortMemory) {
        throw Error(ErrorKind::kArgument, "the memory for sorting has to be from 1 MiB to 16 GiB");
    }
}

fs::path FolderOf(StreamSettings const& settings) {
    if (!settings.temp.empty()) return settings.temp;
    std::error_code error;
    fs::path folder = fs::temp_directory_path(error);
    if (error) throw Error(ErrorKind::kFile, "there is no folder for temporary files: name one");
    return folder;
}

// A file of facets that can be walked through more than once.
class FacetFile {
public:
    FacetFile(fs::path const& path, double scale) : m_File((Refuse(path), path)), m_Scale(scale) {
        MeshFormat const format = Recognise(m_File);
        if (format != MeshFormat::kBinaryStl && format != MeshFormat::kOltp) {
            throw Error(ErrorKind::kContent, path,
                        "is " + std::string(NameOf(format)) +
                            ": only binary STL can be sliced without taking it into memory");
        }
        m_HeaderSize = format == MeshFormat::kOltp ? 256 : 80;
    }

    // Calls take(corners) for the facets that have a place and three corners; counts them all in the report
    // of a first walk.
    template <class Take>
    void Walk(Asking& asking, double from, double to, StreamReport& report, Take const& take) {
        StlRecords records(m_File, m_HeaderSize);
        report.facetsInFile = static_cast<std::int64_t>(records.Announced());
        report.facetsRead = static_cast<std::int64_t>(records.Count());
        report.notFinite = report.degenerate = 0;
        while (records.Done() < records.Count()) {
            asking.Share(from + (to - from) * static_cast<double>(records.Done()) /
                                    static_cast<double>(records.Count()));
            asking.NowAndThen();
            std::span<char const> const block = records.NextBlock();
            for (std::size_t at = 0; at < block.size(); at += StlRecords::kRecord) {
                Take1(block.data() + at, report, take);
            }
        }
    }

private:
    static void Refuse(fs::path const& path) {
        std::error_code error;
        if (fs::exists(path, error) && !fs::is_directory(path, error) && !fs::is_regular_file(path, error)) {
            throw Error(ErrorKind::kFile, path, "is no plain file, and would have to be read twice");
        }
    }

    template <class Take>
    void Take1(char const* record, StreamReport& report, Take const& take) const {
        Corners corners;
        for (std::size_t k = 0; k < 3; ++k) corners[k] = m_Scale * StlRecords::CornerOf(record, k);
        auto const& [a, b, c] = corners;
        if (!(IsInRange(a) && IsInRange(b) && IsInRange(c))) {
            ++report.notFinite;
        } else if (a == b || b == c || c == a) {
            ++report.degenerate;
        } else {
            take(record, corners);
        }
    }

    InputFile m_File;
    double m_Scale;
    std::size_t m_HeaderSize = 80;
};

// What the facets add up to.
class StreamMeasures {
public:
    void Add(Corners const& corners) {
        auto const& [a, b, c] = corners;
        for (Point3 const& p : corners) m_Box.Add(p);
        m_Volume6 += m_Apex.VolumeBelow(a, b, c);
        Point3 const normal = Cross(b - a, c - a);
        m_Normals = m_Normals + normal;
        m_Area2 += Length(normal);
        m_Collinear += DoubledArea(a, b, c) <= kCollinear;
    }
    std::int64_t Collinear() const { return m_Collinear; }
    // A closed part has a volume about any point. That of an open one is judged about the middle of its box,
    // so that it does not depend on where the part stands; of a flat sheet, rounding alone is left.
    bool IsInsideOut() const {
        if (Length(m_Normals) <= kClosedShare * m_Area2) return m_Volume6 < 0.0;
        Point3 const middle = 0.5 * (m_Box.min + m_Box.max);
        double const rounding = kVolumeRounding * m_Area2 * Length(m_Box.max - m_Box.min);
        return m_Volume6 + Dot(m_Apex.Point() - middle, m_Normals) < -rounding;
    }
    PlanMeasures ForPlan(StreamReport const& report) const {
        PlanMeasures measures;
        measures.parts = m_Box;
        measures.volume = (report.turned ? -m_Volume6 : m_Volume6) / 6.0;
        measures.skipped = report.notFinite;
        return measures;
    }
    Box3 const& Box() const { return m_Box; }

private:
    Apex m_Apex;
    Box3 m_Box;
    double m_Volume6 = 0.0;
    Point3 m_Normals;
    double m_Area2 = 0.0;
    std::int64_t m_Collinear = 0;
};

// The facets for a sweep, from the sorted file.
class StreamedFacets : public FacetSource {
public:
    StreamedFacets(FacetRuns& runs, LayerHeights const& heights, double scale, bool turned)
        : m_Runs(runs), m_Heights(heights), m_Scale(scale), m_Turned(turned) {
        for (std::uint32_t i = 0; i < kBatch; ++i) m_Numbers.push_back(i);
    }
    LayerHeights const& Heights() const override { return m_Heights; }
    bool AreTurned() const override { return m_Turned; }
    bool ReusesNumbers() const override { return true; }
    void Deliver(int from, int to, std::function<void(FacetBatch const&)> const& take) override {
        if (from == 1) {
            m_Points.Clear();
            m_Runs.Rewind();
        }
        m_Points.Forget(to);
        auto const handOut = [&] {
            take({std::span(m_Numbers).first(m_Triangles.size()), m_Triangles, m_Points.All()});
            m_Triangles.clear();
        };
        while (FacetRecord const* const facet = m_Runs.Next(to)) {
            Add(*facet, to);
            if (m_Triangles.size() == kBatch) handOut();
        }
        handOut();
    }

private:
    static constexpr std::size_t kBatch = 4096;

    void Add(FacetRecord const& facet, int layer) {
        Corners corners;
        for (std::size_t k = 0; k < 3; ++k) {
            float const* const p = facet.corners.data() + 3 * k;
            corners[k] = m_Scale * Point3{p[0], p[1], p[2]};
        }
        int const last = m_Heights.FirstAbove(HighestOf(corners)) - 1;
        if (last < layer) return;
        m_Triangles.push_back(
            {m_Points.Add(corners[0], last), m_Points.Add(corners[1], last), m_Points.Add(corners[2], last)});
    }

    FacetRuns& m_Runs;
    LayerHeights m_Heights;
    double m_Scale;
    bool m_Turned;
    LivePoints m_Points;
    std::vector<Triangle> m_Triangles;
    std::vector<std::uint32_t> m_Numbers;
};

// The layers of the range as the sweep goes up.
class StreamLine : public LayerLine {
public:
    StreamLine(SlicePlan const& plan, FacetRuns& runs, double scale, StreamReport& report)
        : m_Maker(plan, CutSweep(std::make_unique<StreamedFacets>(runs, plan.heights, scale, report.turned))),
          m_Number(plan.settings.firstLayer),
          m_MayBeInsideOut(plan.settings.rule == SolidRule::kWinding),
          m_Report(report) {
        m_Report.insideOutLayers = 0;
    }
    SlicedLayer Next(std::function<void()> const& look) override {
        Pulse pulse(look);
        SlicedLayer sliced = m_Maker.Make(m_Number++, pulse);
        double const solid = sliced.facts.solidArea;
        m_Report.insideOutLayers += m_MayBeInsideOut && sliced.facts.cutArea < solid - kAreaRounding * solid;
        return sliced;
    }

private:
    LayerMaker m_Maker;
    int m_Number;
    bool m_MayBeInsideOut;
    StreamReport& m_Report;
};

}  // namespace

// It stays where it is, so that its pieces may refer to each other.
class StreamSlicer::Work {
public:
    Work(fs::path const& path, StreamSettings const& settings)
        : m_Settings((Check(settings), settings)),
          m_Asking(m_Settings.slice.progress),
          m_File(path, settings.scale),
          m_Plan(Measure()),
          m_Runs(FolderOf(settings), settings.sortMemory / kSortBytes,
                 static_cast<std::uint64_t>(m_Report.facetsRead), m_Plan.heights.count),
          m_Run(
              m_Plan,
              [this] { return std::make_unique<StreamLine>(m_Plan, m_Runs, m_Settings.scale, m_Report); },
              kSorted) {
        Sort();
    }

    SlicePlan const& Plan() const { return m_Plan; }
    Box3 const& Box() const { return m_Box; }
    LayerRun& Run() { return m_Run; }
    StreamReport const& Report() const { return m_Report; }

private:
    SlicePlan Measure() {
        StreamMeasures measures;
        m_File.Walk(m_Asking, 0.0, kMeasured, m_Report,
                    [&measures](char const*, Corners const& corners) { measures.Add(corners); });
        m_Report.collinear = measures.Collinear();
        m_Report.turned = measures.IsInsideOut();
        m_Box = measures.Box();
        return PlanFor(measures.ForPlan(m_Report), m_Settings.slice);
    }

    void Sort() {
        Pulse pulse([this] { m_Asking.NowAndThen(); });
        LayerHeights const& heights = m_Plan.heights;
        StreamReport again;
        m_File.Walk(m_Asking, kMeasured, kSorted, again, [&](char const* record, Corners const& corners) {
            int const first = heights.FirstAbove(LowestOf(corners));
            int const last = heights.FirstAbove(HighestOf(corners)) - 1;
            if (first > last || first > m_Plan.settings.lastLayer || last < m_Plan.settings.firstLayer) {
                return;
            }
            FacetRecord facet;
            facet.layer = first;
            for (std::size_t k = 0; k < 9; ++k) facet.corners[k] = StlRecords::NumberOf(record, k);
            m_Runs.Add(facet, pulse);
            ++m_Report.facetsSorted;
        });
        m_Runs.Finish(pulse);
        m_Report.temporaryBytes = m_Runs.BytesOnDisk();
    }

    StreamSettings m_Settings;
    Asking m_Asking;
    FacetFile m_File;
    StreamReport m_Report;
    Box3 m_Box;
    SlicePlan m_Plan;
    FacetRuns m_Runs;
    LayerRun m_Run;
};

StreamSlicer::StreamSlicer(fs::path const& path, StreamSettings const& settings)
    : m_Work(std::make_unique<Work>(path, settings)) {}

StreamSlicer::~StreamSlicer() = default;
StreamSlicer::StreamSlicer(StreamSlicer&&) noexcept = default;
StreamSlicer& StreamSlicer::operator=(StreamSlicer&&) noexcept = default;

SliceSettings const& StreamSlicer::Settings() const { return m_Work->Plan().settings; }
std::int32_t StreamSlicer::LayerCount() const { return m_Work->Plan().heights.count; }
std::int32_t StreamSlicer::FirstLayer() const { return Settings().firstLayer; }
std::int32_t StreamSlicer::LastLayer() const { return Settings().lastLayer; }
Box3 const& StreamSlicer::Box() const { return m_Work->Box(); }
std::optional<Layer> StreamSlicer::NextLayer() { return m_Work->Run().Next(); }
SliceReport const& StreamSlicer::ForEachLayer(std::function<void(Layer&&)> const& take) {
    return m_Work->Run().ForEach(take);
}
SliceReport const& StreamSlicer::Report() const { return m_Work->Run().Report(); }
StreamReport const& StreamSlicer::Stream() const { return m_Work->Report(); }

}  // namespace varnet
