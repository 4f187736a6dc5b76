#pragma once

#include <cstddef>
#include <filesystem>

#include "part/FlatMesh.h"
#include "part/InputFile.h"
#include "part/Pace.h"

namespace varnet {

/// What a reader works with.
struct Reading {
    InputFile& file;
    IntakeSettings const& settings;
    IntakeReport& report;
    Pace pace;
};

/// Of a file whose facets all have no area, or lie where no part can be.
inline constexpr char const* kNoFacetToUse = "none of its facets can be used";

/// What a file is, as its content tells it, or where that tells nothing its name. Throws an Error of kind
/// kContent that says what is wrong with a file that is no model.
MeshFormat Recognise(InputFile& file);

// The readers of the formats. Each throws an Error of kind kContent where the bytes are not what they should
// be; what is read is complete otherwise. Memory grows with what the file holds, whatever it announces.

/// Binary STL, also models of it one behind the other, and the format that differs from it in the length of
/// its header only, 80 and 256 bytes.
RawMesh ReadBinaryStl(Reading& reading, std::size_t headerSize);
/// ASCII STL, by its words: `vertex` and three numbers are a corner, `endloop` or `endfacet` behind three
/// corners end a facet. Lines that begin with another word than those of the format, and what stands behind
/// `solid` and `endsolid`, count for nothing. Numbers do not depend on the process's locale.
RawMesh ReadAsciiStl(Reading& reading);
/// Plain CSM: points as floats, and three numbers a facet.
RawMesh ReadPlainCsm(Reading& reading);
/// CSM as a stream of steps of a ring of edges.
RawMesh ReadRingCsm(Reading& reading);
/// CSM in strips and 3DMF, through the classic model without a tolerance.
RawMesh ReadClassic(Reading& reading, MeshFormat format);

/// The file as its format says.
RawMesh ReadMeshFile(std::filesystem::path const& path, IntakeSettings const& settings, IntakeReport& report,
                     Pace const& pace);

}  // namespace varnet
