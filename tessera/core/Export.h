// Marks what the shared library exports; everything else stays hidden.
#pragma once

#if defined(_WIN32)
#if defined(TESSERA_BUILDING)
#define TESSERA_API __declspec(dllexport)
#else
#define TESSERA_API __declspec(dllimport)
#endif
#else
#define TESSERA_API __attribute__((visibility("default")))
#endif
