#pragma once

#include <array>
#include <cstddef>
#include <string_view>

namespace varnet {

// The CSM files: three layouts that have nothing in common but the name, told apart by the text at the start
// of the header.

namespace csm {

enum class Layout {
    kPlain,  ///< indexed floats: vertices once, then three numbers a facet
    kRing,   ///< facets in the order in which a closed ring of edges grows over the mesh; written only
    kStrip   ///< facets in strips, vertices numbered in the order in which they come
};

/// The length of a header, but for that of strip files with the tag of long headers.
inline constexpr std::size_t kHeaderSize = 80;
inline constexpr std::size_t kLongHeaderSize = 4096;

// What the writers put into the header: the text, and zeros behind it.
inline constexpr std::string_view kPlainText = "Quarnell Ziped Model";
inline constexpr std::string_view kRingText = "Quarnell Ziped Model -- CSM2.0";
inline constexpr std::string_view kStripText = "Deiklug -- CSM3.0 Compressed data";
inline constexpr std::string_view kFloatStripText = "Deiklug -- CSM3.0";

/// A text that tells the layout, wherever it stands in the header. A file without any is a plain one.
struct Tag {
    std::string_view text;
    Layout layout;
    std::size_t nHeaderSize;
};

inline constexpr std::array<Tag, 4> kTags = {{{"CSM2.0", Layout::kRing, kHeaderSize},
                                              {"CSM3.0", Layout::kStrip, kHeaderSize},
                                              {"CSM4.0", Layout::kStrip, kHeaderSize},
                                              {"CSM5.0", Layout::kStrip, kLongHeaderSize}}};

/// The header's length where a tag of the layout stands in it ahead of its first zero byte: the longest one
/// of all such tags. 0 where there is none.
constexpr std::size_t HeaderSizeOf(std::string_view header, Layout layout) {
    header = header.substr(0, header.find('\0'));
    std::size_t nSize = 0;
    for (Tag const& tag : kTags) {
        bool const bHere = tag.layout == layout && header.find(tag.text) != std::string_view::npos;
        if (bHere && tag.nHeaderSize > nSize) nSize = tag.nHeaderSize;
    }
    return nSize;
}

}  // namespace csm

}  // namespace varnet
