#pragma once

#include <cmath>
#include <cstdint>
#include <filesystem>
#include <span>
#include <string>
#include <utility>
#include <vector>

#include "DemoPage.h"
#include "Report.h"
#include "varnet/Kit.h"

// The colours of the part and of its supports.
inline constexpr std::uint32_t kSteel = 0x8FB3CF;
inline constexpr std::uint32_t kAmber = 0xE0A030;

// Coarser than a printer would have it, so that a picture shows single lines.
inline constexpr double kLayerHeight = 0.25;
inline constexpr double kFillDistance = 1.0;

/// The whole road of one part, from its making to files that are printed from. Each step prints what it
/// found, checks it, and puts its pictures and figures on a page.
class Demo {
public:
    explicit Demo(std::filesystem::path folder) : m_Folder(std::move(folder)) {}

    void Run();

private:
    void ShowPart();
    void ShowSurfaces();
    void ShowFormats();
    void ShowSupports();
    void ShowLayers();
    void ShowModes();
    void ShowOrder();
    void ShowPage();

    // The path of a file in the folder, which is listed on the page.
    std::filesystem::path File(std::string const& name) {
        m_Files.push_back(name);
        return m_Folder / name;
    }
    void Check(bool holds, char const* what) {
        if (!holds)
            throw varnet::Error(varnet::ErrorKind::kContent, std::string("the demo's check failed: ") + what);
        ++m_Checks;
    }
    void Show(Report const& report) {
        report.Print();
        m_Page.AddTable(report);
    }
    void Draw(std::string const& name, std::span<varnet::PicturedMesh const> meshes, char const* alternative,
              char const* caption) {
        varnet::WriteBytes(File(name), varnet::PictureOf(meshes, alternative));
        m_Page.AddPicture(name, alternative, caption);
    }
    varnet::Slicer MakeSlicer() const {
        varnet::SliceSettings settings;
        settings.layer = kLayerHeight;
        settings.hatch = kFillDistance;
        return varnet::Slicer(varnet::SlicerInputs(m_Part, m_Supports), settings);
    }

    std::filesystem::path m_Folder;
    DemoPage m_Page{"A bracket, from mesh to slices",
                    "Made, read, repaired, measured, divided, supported, sliced, ordered, written in seven "
                    "formats and read "
                    "back by varnet demo."};
    std::vector<std::string> m_Files;
    int m_Checks = 0;
    varnet::Part m_Part;
    varnet::Supports m_Supports;
};

inline bool IsNear(double a, double b, double share) { return std::fabs(a - b) <= share * std::fabs(b); }
