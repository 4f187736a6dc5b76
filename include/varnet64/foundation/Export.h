#pragma once

/// Marks what a host may use: the library is built with hidden visibility, and nothing else is exported. A
/// program that holds the library's objects itself defines VARNET_STATIC.
#if defined(_WIN32) && defined(VARNET_STATIC)
#define VARNET_API
#elif defined(_WIN32)
#if defined(VARNET_BUILDING_LIBRARY)
#define VARNET_API __declspec(dllexport)
#else
#define VARNET_API __declspec(dllimport)
#endif
#else
#define VARNET_API __attribute__((visibility("default")))
#endif

/// Marks a class template, which each program makes from the header for the types that it wants. On Windows
/// it is taken from nowhere else; elsewhere the copies of all programs become one.
#if defined(_WIN32)
#define VARNET_TEMPLATE_API
#else
#define VARNET_TEMPLATE_API VARNET_API
#endif
