#pragma once

#include <string>

/// The text with the characters that mean something in HTML and SVG written so that they stand for
/// themselves.
std::string EscapedMarkup(std::string const& text);
