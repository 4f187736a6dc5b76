#pragma once

#include <atomic>

/// While this is set, operator new throws std::bad_alloc, in every thread.
extern std::atomic<bool> g_NewFails;
