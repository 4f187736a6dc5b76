#pragma once

#include <algorithm>
#include <array>
#include <cctype>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <string>
#include <vector>

#include "cli/Slices.h"

// Reading and writing layers step by step with the C runtime, one line or number at a time: slow, and plain
// to see. Only for processes in the classic locale.

namespace literal {

inline bool Token(double& d, double dUnits) {
    char const* const p = std::strtok(nullptr, " ,");
    if (p != nullptr) d = std::atof(p) * dUnits;
    return p != nullptr;
}

inline bool Token(int& n) {
    char const* const p = std::strtok(nullptr, " ,");
    if (p != nullptr) n = std::atoi(p);
    return p != nullptr;
}

inline void Close(CLayer& layer) {
    for (tagLoopTreeNode* const pLoop : LoopsOf(layer.m_RawLoopList)) {
        if (pLoop->m_bClosed == 0 || pLoop->m_pPointList == nullptr) continue;
        if (pLoop->m_pPointList->GetCount() > 0)
            pLoop->m_pPointList->GetTail() = pLoop->m_pPointList->GetHead();
    }
}

inline int ReadText(CLayer& layer, FILE* pFile) {
    std::vector<char> line(10240);
    long nMark = std::ftell(pFile);
    int nSeen = 0;
    while (std::fgets(line.data(), 10240, pFile) != nullptr) {
        char start[21] = {};
        std::strncpy(start, line.data(), 20);
        for (char& c : start) c = static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
        if (std::strstr(start, "LAYER") != nullptr) {
            if (nSeen != 0) {
                std::fseek(pFile, nMark, SEEK_SET);
                break;
            }
            std::strtok(line.data(), "/");
            double dHeight = 0.0;
            if (!Token(dHeight, layer.m_dUnits)) dHeight = 0.0 * layer.m_dUnits;
            layer.m_dZ = dHeight;
            nSeen = 1;
            nMark = std::ftell(pFile);
        } else if (std::strstr(start, "POLYLINE") != nullptr) {
            int nID = 0, nDirection = 0, nCount = 0;
            std::strtok(line.data(), "/");
            if (!Token(nID) || !Token(nDirection) || !Token(nCount)) continue;
            auto* const pLoop = new tagLoopTreeNode(0);
            pLoop->m_pPointList = new PointList(10);
            CPoint2D point;
            while (Token(point.x, layer.m_dUnits) && Token(point.y, layer.m_dUnits)) {
                pLoop->m_pPointList->AddTail(point);
                pLoop->m_Box += point;
            }
            pLoop->m_nDirection =
                static_cast<LOOPDIRECT>(nDirection == 0 || nDirection == 1 ? nDirection : 2);
            pLoop->m_bClosed = nDirection < 2 ? 1 : 0;
            pLoop->m_dZ = layer.m_dZ;
            pLoop->m_nID = nID;
            layer.AddRawLoop(pLoop);
            layer.m_Box += pLoop->m_Box;
            nMark = std::ftell(pFile);
        } else if (std::strstr(start, "HATCH") != nullptr) {
            int nID = 0, nCount = 0;
            std::strtok(line.data(), "/");
            if (!Token(nID) || !Token(nCount)) continue;
            auto* const pHatch = new CHatch;
            double const dUnits = layer.m_dUnits;
            CEdge2D edge;
            while (Token(edge.m_ptStart.x, dUnits) && Token(edge.m_ptStart.y, dUnits) &&
                   Token(edge.m_ptEnd.x, dUnits) && Token(edge.m_ptEnd.y, dUnits)) {
                pHatch->m_EdgeList.AddTail(edge);
                layer.m_Box += edge.m_ptStart;
                layer.m_Box += edge.m_ptEnd;
            }
            pHatch->m_nID = nID;
            layer.m_HatchList.AddTail(pHatch);
            nMark = std::ftell(pFile);
        } else if (std::strstr(start, "GEOMETRYSTART") != nullptr) {
            nMark = std::ftell(pFile);
        } else {
            std::fseek(pFile, nMark, SEEK_SET);
            return nSeen;
        }
    }
    Close(layer);
    return nSeen;
}

/// Reads binary numbers one at a time.
class Numbers {
public:
    explicit Numbers(FILE* pFile) : m_pFile(pFile) {}
    bool Short(int& n) {
        std::array<unsigned char, 2> b{};
        if (std::fread(b.data(), 1, 2, m_pFile) != 2) return false;
        n = b[0] | b[1] << 8;
        return true;
    }
    bool Long(std::uint32_t& n) {
        std::array<unsigned char, 4> b{};
        if (std::fread(b.data(), 1, 4, m_pFile) != 4) return false;
        n = 0;
        for (std::size_t i = 4; i > 0; --i) n = n << 8 | b[i - 1];
        return true;
    }
    bool Whole(bool bShort, int& n) {
        if (bShort) return Short(n);
        std::uint32_t nBits = 0;
        bool const bRead = Long(nBits);
        n = static_cast<int>(nBits);
        return bRead;
    }
    bool Real(bool bShort, double& d) {
        int n = 0;
        std::uint32_t nBits = 0;
        if (bShort ? !Short(n) : !Long(nBits)) return false;
        d = bShort ? n : static_cast<double>(std::bit_cast<float>(nBits));
        return true;
    }
    /// Whether the rest of the file holds so many bytes; goes to its end where it does not.
    bool Holds(double dBytes) {
        long const nHere = std::ftell(m_pFile);
        std::fseek(m_pFile, 0, SEEK_END);
        bool const bHolds = dBytes >= 0.0 && dBytes <= static_cast<double>(std::ftell(m_pFile) - nHere);
        if (bHolds) std::fseek(m_pFile, nHere, SEEK_SET);
        return bHolds;
    }

private:
    FILE* m_pFile;
};

inline int ReadBinary(CLayer& layer, FILE* pFile, int nMode) {
    Numbers numbers(pFile);
    long nMark = std::ftell(pFile);
    int nSeen = 0;
    int nWord = 0;
    while (numbers.Short(nWord)) {
        int nKind = 0;  // 1 layer, 2 polyline, 3 hatches
        bool bShort = false;
        double k = 0.0;
        if (nMode == 3) {
            k = nWord / 245;
            nKind = nWord % 245;
            if (nKind < 1 || nKind > 3) return 0;
        } else {
            if (nWord < 127 || nWord > 132) return 0;
            nKind = (nWord - 127) / 2 + 1;
            bShort = nWord == 128 || nWord == 129 || nWord == 131;
        }
        double const dUnits = layer.m_dUnits;
        auto const real = [&](double& d) {
            if (!numbers.Real(bShort, d)) return false;
            d = d * dUnits;
            if (nMode == 3) d -= k;
            return true;
        };
        int const nSize = bShort ? 2 : 4;
        if (nKind == 1) {
            if (nSeen != 0) {
                std::fseek(pFile, nMark, SEEK_SET);
                break;
            }
            nSeen = 1;
            double z = 0.0;
            if (!real(z)) return 0;
            layer.m_dZ = z;
            for (int i = 0; i < static_cast<int>(k); ++i) {
                if (std::getc(pFile) == EOF) return 0;
            }
        } else if (nKind == 2) {
            int nID = 0, nDirection = 0, n = 0;
            if (!numbers.Whole(bShort, nID) || !numbers.Whole(bShort, nDirection) ||
                !numbers.Whole(bShort, n))
                return 0;
            if (!numbers.Holds(2.0 * nSize * n)) return 0;
            auto* const pLoop = new tagLoopTreeNode(0);
            pLoop->m_dZ = layer.m_dZ;
            pLoop->m_nID = nID;
            pLoop->m_nDirection = static_cast<LOOPDIRECT>(nDirection);
            pLoop->m_bClosed = nDirection < 2 ? 1 : 0;
            pLoop->m_pPointList = new PointList(10);
            for (int i = 0; i < n; ++i) {
                CPoint2D point;
                real(point.x);
                real(point.y);
                pLoop->m_pPointList->AddTail(point);
            }
            layer.AddRawLoop(pLoop);
        } else {
            int nID = 0, n = 0;
            if (!numbers.Whole(bShort, nID) || !numbers.Whole(bShort, n)) return 0;
            if (!numbers.Holds(4.0 * nSize * n)) return 0;
            auto* const pHatch = new CHatch;
            pHatch->m_nID = nID;
            for (int i = 0; i < n; ++i) {
                CEdge2D edge;
                real(edge.m_ptStart.x);
                real(edge.m_ptStart.y);
                real(edge.m_ptEnd.x);
                real(edge.m_ptEnd.y);
                pHatch->m_EdgeList.AddTail(edge);
            }
            layer.m_HatchList.AddTail(pHatch);
        }
        nMark = std::ftell(pFile);
    }
    layer.GetBoundBox();
    Close(layer);
    return nSeen;
}

inline int Read(CLayer& layer, FILE* pFile, int nMode) {
    return nMode == 1 ? ReadText(layer, pFile) : ReadBinary(layer, pFile, nMode);
}

inline std::string Printed(char const* pFormat, auto... values) {
    std::array<char, 2000> text{};
    std::snprintf(text.data(), text.size(), pFormat, values...);
    return text.data();
}

inline std::string LoopText(tagLoopTreeNode const& loop) {
    if (loop.m_pPointList == nullptr || loop.m_pPointList->GetCount() == 0) return {};
    std::string text = Printed("$$POLYLINE/%d %d %d ", loop.m_nID,
                               static_cast<int>(loop.m_bClosed != 0 ? loop.m_nDirection : LOOPDIRECT_NONE),
                               loop.m_pPointList->GetCount());
    for (auto const& [x, y] : PlacesOf(loop)) text += Printed(" %.3f %.3f", x, y);
    text += "\n";
    for (tagLoopTreeNode const* const pChild : LoopsOf(loop.m_ChildList)) text += LoopText(*pChild);
    return text;
}

inline std::string WriteText(CLayer const& layer) {
    std::string text = Printed("$$LAYER/%.2f \n", layer.m_dZ);
    for (tagLoopTreeNode const* const pLoop : LoopsOf(layer.m_RawLoopList)) text += LoopText(*pLoop);
    for (CHatch const* const pHatch : HatchesOf(layer)) {
        if (pHatch->m_EdgeList.GetCount() == 0) continue;
        text += Printed("$$HATCHES/%d %d    ", pHatch->m_nID, pHatch->m_EdgeList.GetCount());
        for (auto const& [a, b] : SegmentsOf(*pHatch)) {
            text += Printed(" %.3f %.3f %.3f %.3f", a.first, a.second, b.first, b.second);
        }
        text += "\n";
    }
    return text;
}

inline std::string WriteBinary(CLayer& layer, bool bDisguised) {
    SliceBytes bytes;
    int k = 0;
    auto const word = [&](int nPlain, int nDisguised) {
        if (bDisguised) k = std::rand() % 111;
        bytes.Short({bDisguised ? k * 245 + nDisguised : nPlain});
    };
    auto const real = [&](double d) { bytes.Float({static_cast<float>(bDisguised ? d + k : d)}); };
    word(127, 1);
    real(layer.m_dZ);
    for (int i = 0; i < k; ++i) bytes.Raw(std::string(1, static_cast<char>(std::rand() & 0xFF)));
    layer.BuildLoopList();
    for (tagLoopTreeNode const* const pLoop : LoopsOf(layer.m_LoopList)) {
        Places const places = pLoop->m_pPointList != nullptr ? PlacesOf(*pLoop) : Places();
        word(130, 2);
        bytes.Long({pLoop->m_nID, static_cast<std::int64_t>(pLoop->m_nDirection),
                    static_cast<std::int64_t>(places.size())});
        for (auto const& [x, y] : places) {
            real(x);
            real(y);
        }
    }
    for (CHatch const* const pHatch : HatchesOf(layer)) {
        word(132, 3);
        bytes.Long({pHatch->m_nID, pHatch->m_EdgeList.GetCount()});
        for (auto const& [a, b] : SegmentsOf(*pHatch)) {
            for (double const d : {a.first, a.second, b.first, b.second}) real(d);
        }
    }
    return bytes;
}

inline std::string Write(CLayer& layer, int nMode) {
    return nMode == 1 ? WriteText(layer) : WriteBinary(layer, nMode == 3);
}

}  // namespace literal
