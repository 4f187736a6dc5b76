#pragma once

#include <bit>
#include <cstdint>
#include <cstdio>
#include <initializer_list>
#include <string>
#include <string_view>

#include "cli/LayerModel.h"
#include "contours/Paths.h"

// Slice files put together by hand, and looked into.

/// An open file of these bytes without a name, at its start.
class OpenBytes {
public:
    explicit OpenBytes(std::string_view bytes = {}) : m_pFile(std::tmpfile()) {
        if (!bytes.empty()) std::fwrite(bytes.data(), 1, bytes.size(), m_pFile);
        std::rewind(m_pFile);
    }
    OpenBytes(OpenBytes const&) = delete;
    OpenBytes& operator=(OpenBytes const&) = delete;
    ~OpenBytes() { std::fclose(m_pFile); }
    operator FILE*() const { return m_pFile; }
    long Position() const { return std::ftell(m_pFile); }
    /// All bytes of the file; it then stands at its end.
    std::string All() const {
        std::rewind(m_pFile);
        return Rest();
    }
    /// The bytes from where the file stands.
    std::string Rest() const {
        std::string bytes;
        for (int c = std::getc(m_pFile); c != EOF; c = std::getc(m_pFile)) bytes += static_cast<char>(c);
        return bytes;
    }

private:
    FILE* m_pFile;
};

/// One text of several.
inline std::string Join(std::initializer_list<std::string_view> parts) {
    std::string text;
    for (std::string_view const part : parts) text.append(part);
    return text;
}

/// What writing gives: the bytes that write(file) appends to an empty file.
template <class Write>
std::string Written(Write write) {
    OpenBytes const file;
    write(static_cast<FILE*>(file));
    return file.All();
}

inline std::string BytesOf(CLayer& layer, int nMode) {
    return Written([&](FILE* pFile) { layer.WriteCLIFile(pFile, nMode); });
}

/// Little-endian bytes.
class SliceBytes {
public:
    SliceBytes& Short(std::initializer_list<int> values) {
        for (int const n : values) Append(static_cast<std::uint32_t>(n), 2);
        return *this;
    }
    SliceBytes& Long(std::initializer_list<std::int64_t> values) {
        for (std::int64_t const n : values) Append(static_cast<std::uint32_t>(n), 4);
        return *this;
    }
    SliceBytes& Float(std::initializer_list<float> values) {
        for (float const f : values) Append(std::bit_cast<std::uint32_t>(f), 4);
        return *this;
    }
    SliceBytes& Raw(std::string_view bytes) {
        m_Bytes.append(bytes);
        return *this;
    }
    operator std::string const&() const { return m_Bytes; }
    operator std::string_view() const { return m_Bytes; }
    std::size_t Size() const { return m_Bytes.size(); }

private:
    void Append(std::uint32_t n, int nSize) {
        for (int i = 0; i < nSize; ++i) m_Bytes += static_cast<char>(n >> (8 * i) & 0xFF);
    }
    std::string m_Bytes;
};

/// Everything in a layer that a file brings or changes, to the bit, as text that can be compared.
inline std::string Dump(CLayer const& layer) {
    std::string text;
    auto const add = [&text](auto n) { text += std::to_string(n) + " "; };
    auto const addReal = [&add](double d) { add(std::bit_cast<std::uint64_t>(d)); };
    auto const addPoint = [&](CPoint2D const& p) {
        addReal(p.x);
        addReal(p.y);
        add(std::bit_cast<std::uint32_t>(p.m_fAttr1));
        add(std::bit_cast<std::uint32_t>(p.m_fAttr2));
    };
    auto const addBox = [&](CBoundBox2D const& box) {
        addPoint(box.m_ptMin);
        addPoint(box.m_ptMax);
    };
    addReal(layer.m_dZ);
    addReal(layer.m_dUnits);
    addBox(layer.m_Box);
    add(layer.m_LoopList.GetCount());
    for (tagLoopTreeNode const* const pLoop : LoopsOf(layer.m_RawLoopList)) {
        text += "\nloop ";
        add(pLoop->m_nID);
        add(static_cast<std::int32_t>(pLoop->m_nDirection));
        add(pLoop->m_bClosed);
        add(pLoop->m_nLevel);
        add(pLoop->m_nFlag);
        addReal(pLoop->m_dZ);
        addBox(pLoop->m_Box);
        add(pLoop->m_ChildList.GetCount());
        if (pLoop->m_pPointList == nullptr) {
            text += "none";
            continue;
        }
        add(pLoop->m_pPointList->m_nBlockSize);
        add(pLoop->m_pPointList->GetCount());
        for (auto const* p = pLoop->m_pPointList->m_pNodeHead; p != nullptr; p = p->pNext) addPoint(p->data);
    }
    for (CHatch const* const pHatch : HatchesOf(layer)) {
        text += "\nhatch ";
        add(pHatch->m_nID);
        add(pHatch->m_nFlag);
        add(pHatch->m_EdgeList.m_nBlockSize);
        add(pHatch->m_EdgeList.GetCount());
        for (auto const* p = pHatch->m_EdgeList.m_pNodeHead; p != nullptr; p = p->pNext) {
            addPoint(p->data.m_ptStart);
            addPoint(p->data.m_ptEnd);
        }
    }
    return text;
}
