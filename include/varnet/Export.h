#pragma once

// What the kit's shared library exports. A program that links the kit statically defines VARNET_KIT_STATIC.
#if defined(_WIN32) && !defined(VARNET_KIT_STATIC)
#if defined(VARNET_BUILDING_KIT)
#define VARNET_KIT_API __declspec(dllexport)
#else
#define VARNET_KIT_API __declspec(dllimport)
#endif
#elif defined(__GNUC__) && !defined(_WIN32)
#define VARNET_KIT_API __attribute__((visibility("default")))
#else
#define VARNET_KIT_API
#endif
