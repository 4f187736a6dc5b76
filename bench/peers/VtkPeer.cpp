// VTK on the same files: from STL to merged points with links to their cells, writing, consistent winding,
// area and volume, regions that face down.

#include <vtkConnectivityFilter.h>
#include <vtkDataObject.h>
#include <vtkMassProperties.h>
#include <vtkNew.h>
#include <vtkPolyData.h>
#include <vtkPolyDataNormals.h>
#include <vtkSTLReader.h>
#include <vtkSTLWriter.h>
#include <vtkSmartPointer.h>
#include <vtkThreshold.h>

#include <cmath>
#include <filesystem>

#include "BenchFiles.h"

namespace {

vtkSmartPointer<vtkPolyData> ReadMesh(std::string const& file) {
    vtkNew<vtkSTLReader> reader;
    reader->SetFileName(file.c_str());
    reader->Update();
    vtkSmartPointer<vtkPolyData> mesh = reader->GetOutput();
    mesh->BuildLinks();
    return mesh;
}

vtkSmartPointer<vtkPolyData> ReadGyroid(benchmark::State& state, Kind kind = Kind::kBinary) {
    return ReadMesh(GyroidFile(static_cast<std::size_t>(state.range(0)), kind));
}

vtkIdType FacetsOf(vtkPolyData& mesh) { return mesh.GetNumberOfCells(); }

void ReadFile(benchmark::State& state, Kind kind) { TimeReading(state, kind, ReadMesh, FacetsOf); }

void VtkReadShape(benchmark::State& state) { TimeReadingShape(state, ReadMesh, FacetsOf); }

void VtkReadBinary(benchmark::State& state) { ReadFile(state, Kind::kBinary); }
void VtkReadBinaryShuffled(benchmark::State& state) { ReadFile(state, Kind::kShuffled); }
void VtkReadAscii(benchmark::State& state) { ReadFile(state, Kind::kAscii); }

void VtkWriteBinary(benchmark::State& state) {
    auto const mesh = ReadGyroid(state);
    std::string const output = (std::filesystem::temp_directory_path() / "varnet-bench-peer.stl").string();
    for (auto _ : state) {
        vtkNew<vtkSTLWriter> writer;
        writer->SetInputData(mesh);
        writer->SetFileName(output.c_str());
        writer->SetFileTypeToBinary();
        writer->Write();
    }
    ReportFacets(state, static_cast<double>(mesh->GetNumberOfCells()));
}

// With the normals of the facets, which FixNormal makes as well.
void VtkOrient(benchmark::State& state) {
    auto const mesh = ReadGyroid(state, Kind::kTurned);
    for (auto _ : state) {
        vtkNew<vtkPolyDataNormals> normals;
        normals->SetInputData(mesh);
        normals->SplittingOff();
        normals->ConsistencyOn();
        normals->ComputePointNormalsOff();
        normals->ComputeCellNormalsOn();
        normals->Update();
    }
    ReportFacets(state, static_cast<double>(mesh->GetNumberOfCells()));
}

void VtkAreaAndVolume(benchmark::State& state) {
    auto const mesh = ReadGyroid(state);
    for (auto _ : state) {
        vtkNew<vtkMassProperties> properties;
        properties->SetInputData(mesh);
        benchmark::DoNotOptimize(properties->GetSurfaceArea());
        benchmark::DoNotOptimize(properties->GetVolume());
    }
    ReportFacets(state, static_cast<double>(mesh->GetNumberOfCells()));
}

// Regions of facets that face down by more than 45 degrees, from given normals.
void Overhangs(benchmark::State& state, std::string const& file) {
    vtkNew<vtkPolyDataNormals> normals;
    normals->SetInputData(ReadMesh(file));
    normals->SplittingOff();
    normals->ConsistencyOff();
    normals->ComputePointNormalsOff();
    normals->ComputeCellNormalsOn();
    normals->Update();
    vtkPolyData* const pMesh = normals->GetOutput();
    for (auto _ : state) {
        vtkNew<vtkThreshold> threshold;
        threshold->SetInputData(pMesh);
        threshold->SetInputArrayToProcess(0, 0, 0, vtkDataObject::FIELD_ASSOCIATION_CELLS, "Normals");
        threshold->SetComponentModeToUseSelected();
        threshold->SetSelectedComponent(2);
        threshold->SetThresholdFunction(vtkThreshold::THRESHOLD_LOWER);
        threshold->SetLowerThreshold(-std::sqrt(0.5));
        vtkNew<vtkConnectivityFilter> regions;
        regions->SetInputConnection(threshold->GetOutputPort());
        regions->SetExtractionModeToAllRegions();
        regions->Update();
        state.counters["regions"] = static_cast<double>(regions->GetNumberOfExtractedRegions());
    }
    ReportFacets(state, static_cast<double>(pMesh->GetNumberOfCells()));
}

void VtkOverhangs(benchmark::State& state) {
    Overhangs(state, GyroidFile(static_cast<std::size_t>(state.range(0))));
}
void VtkOverhangsOfNoise(benchmark::State& state) {
    Overhangs(state, NoiseFile(static_cast<std::size_t>(state.range(0))));
}

BENCHMARK(VtkReadBinary)->Arg(1000000)->Unit(benchmark::kMillisecond);
BENCHMARK(VtkReadBinaryShuffled)->Arg(1000000)->Unit(benchmark::kMillisecond);
BENCHMARK(VtkReadShape)->Apply(OfShapes);
BENCHMARK(VtkReadAscii)->Arg(1000000)->Unit(benchmark::kMillisecond);
BENCHMARK(VtkWriteBinary)->Arg(1000000)->Unit(benchmark::kMillisecond);
BENCHMARK(VtkOrient)->Arg(1000000)->Unit(benchmark::kMillisecond);
BENCHMARK(VtkOverhangs)->Arg(1000000)->Unit(benchmark::kMillisecond);
BENCHMARK(VtkOverhangsOfNoise)->Arg(1000000)->Unit(benchmark::kMillisecond);
BENCHMARK(VtkAreaAndVolume)->Arg(1000000)->Unit(benchmark::kMillisecond);

}  // namespace
