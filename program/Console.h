#pragma once

#include <string>

#include "varnet/Error.h"

// What a person sees of long work, and how it is stopped.

/// From now on Ctrl-C, and the signals that ask a program to end, set a flag instead of ending it; a write
/// beyond the limit of a file's size fails instead of ending it.
void CatchSignals();

/// Whether one of them came.
bool IsStopped();

/// Throws Error of kind kCancelled where one came.
void ThrowIfStopped();

/// A bar on standard error, where that is a terminal, for work that takes longer than a moment. It stops the
/// work when IsStopped.
varnet::Progress Bar(std::string const& title);

/// Takes away a bar that stands on the line, where work holds one that goes on. To be called before anything
/// is printed.
void ClearBar();

/// A line on standard error: "varnet: warning: ...".
void Warn(std::string const& text);

#if defined(_WIN32)

/// While it is there, the console takes UTF-8 and the signs that move the cursor. What the console was set to
/// before comes back with the end.
class Utf8Console {
public:
    Utf8Console();
    Utf8Console(Utf8Console const&) = delete;
    Utf8Console& operator=(Utf8Console const&) = delete;
    ~Utf8Console();

private:
    unsigned m_OutputPage;
    unsigned long m_ErrorMode = 0;
    bool m_HasMode = false;
};

/// An argument as UTF-8. Halves of pairs of UTF-16 that stand alone become the sign for what is no character.
std::string ToUtf8(wchar_t const* text);

#endif
