#pragma once

#include <string_view>

namespace varnet {

// The files of viewer/, as the build puts them into the library.

/// The script, the style, and what stands in the page's body before the data.
extern std::string_view const kViewerScript;
extern std::string_view const kViewerStyle;
extern std::string_view const kViewerBody;
/// The SHA-256 of the script and of the style, in hexadecimal digits.
extern std::string_view const kViewerScriptHash;
extern std::string_view const kViewerStyleHash;

}  // namespace varnet
