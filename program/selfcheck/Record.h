#pragma once

#include <bit>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <random>
#include <string>
#include <string_view>
#include <type_traits>
#include <utility>
#include <vector>

#include "Varnet64.h"

namespace selfcheck {

/// What the operations of the library have given: a hash a room, and by name what rests on the C library's
/// sine and the like, which systems round differently.
class Record {
public:
    /// What follows belongs to this room.
    void BeginRoom(std::string const& name) { m_Rooms.emplace_back(name, kStart); }
    template <class Number>
    requires std::is_arithmetic_v<Number> || std::is_enum_v<Number>
    void Add(Number n) {
        if constexpr (std::is_floating_point_v<Number>) {
            AddWord(std::bit_cast<std::uint64_t>(static_cast<double>(n)));
        } else {
            AddWord(static_cast<std::uint64_t>(static_cast<std::int64_t>(n)));
        }
    }
    void Add(CPoint2D const& p);
    void Add(CPoint3D const& p);
    void Add(std::string_view bytes);
    /// Values that do not rest on each other: which one is computed first is the compiler's choice.
    void AddAll(auto const&... values) { (Add(values), ...); }

    /// A number that may differ in its last digits from system to system.
    void AddApart(std::string const& name, double value) { m_Apart.emplace_back(name, value); }

    /// In the order in which they began.
    std::vector<std::pair<std::string, std::uint64_t>> const& Rooms() const { return m_Rooms; }
    /// In the order of their adding.
    std::vector<std::pair<std::string, double>> const& Apart() const { return m_Apart; }
    /// Of all rooms together.
    std::uint64_t All() const;

private:
    static constexpr std::uint64_t kStart = 0xCBF29CE484222325u;
    void AddWord(std::uint64_t n);

    std::vector<std::pair<std::string, std::uint64_t>> m_Rooms;
    std::vector<std::pair<std::string, double>> m_Apart;
};

/// Numbers by chance, the same on every system: the distributions of the standard library are not.
class Chance {
public:
    explicit Chance(std::uint32_t seed) : m_Engine(seed) {}
    /// From -128 to 128.
    double operator()() { return (static_cast<double>(m_Engine()) - 2147483648.0) / 16777216.0; }
    /// One of 41 places from 0 to 20.
    double OnLattice() { return static_cast<double>(m_Engine() % 41) * 0.5; }
    CPoint2D Point2() {
        // One after the other: the order in which arguments are evaluated is the compiler's choice.
        double const x = (*this)();
        double const y = (*this)();
        return {x, y};
    }
    CPoint3D Point3() {
        double const x = (*this)();
        double const y = (*this)();
        double const z = (*this)();
        return {x, y, z};
    }

private:
    std::mt19937 m_Engine;
};

/// A path as the library takes it: a char* to a zero-terminated string of 16-bit characters. Alive as long as
/// the object.
class WidePath {
public:
    explicit WidePath(std::filesystem::path const& path) : m_Text(path.u16string()) {}
    operator char*() { return reinterpret_cast<char*>(m_Text.data()); }

private:
    std::u16string m_Text;
};

/// The bytes of a file; none where it cannot be opened.
std::string BytesOf(std::filesystem::path const& path);

/// A file of these bytes. Returns its path.
std::filesystem::path WriteFile(std::filesystem::path const& path, std::string_view bytes);

/// A new file, for operations that write to an open one and read from it. Throws std::runtime_error where it
/// cannot be made.
class OpenFile {
public:
    explicit OpenFile(std::filesystem::path const& path);
    OpenFile(OpenFile const&) = delete;
    OpenFile& operator=(OpenFile const&) = delete;
    ~OpenFile() { std::fclose(m_File); }
    operator FILE*() { return m_File; }
    /// All that was written. The file stands at its start afterwards.
    std::string Bytes();

private:
    FILE* m_File;
};

// The rooms of the library, and the kit. Files go to the folder.

void CheckFoundation(Record& record);
void CheckTrees(Record& record, std::filesystem::path const& folder);
void CheckMesh(Record& record);
void CheckModelFiles(Record& record, std::filesystem::path const& folder);
void CheckSupport(Record& record);
void CheckContours(Record& record);
void CheckSliceFiles(Record& record, std::filesystem::path const& folder);
void CheckKit(Record& record, std::filesystem::path const& folder);

/// All rooms of the library, without the kit.
inline void CheckLibrary(Record& record, std::filesystem::path const& folder) {
    CheckFoundation(record);
    CheckTrees(record, folder);
    CheckMesh(record);
    CheckModelFiles(record, folder);
    CheckSupport(record);
    CheckContours(record);
    CheckSliceFiles(record, folder);
}

// Models of the checks, made of exact numbers.

/// Triangles by chance: apart from each other, or on a lattice, where they share corners and edges.
void FillWithSoup(CSTLModel& model, Chance& chance, bool onLattice);
/// A closed body about so many millimetres in radius: an octahedron whose edges have so many divisions,
/// bulged along x and y.
void FillWithBall(CSTLModel& model, int divisions, double size);
/// All that the facets of all surfaces hold.
void AddModel(Record& record, CSTLModel& model);

}  // namespace selfcheck
