#pragma once

/// @file
/// What leaves the shared library.

/// @def BRYX_API
/// Marks a class or function that leaves the shared library; everything else stays hidden.

#if defined(_WIN32)
#    if defined(BRYX_BUILDING_LIBRARY)
#        define BRYX_API __declspec(dllexport)
#    else
#        define BRYX_API __declspec(dllimport)
#    endif
#else
#    define BRYX_API __attribute__((visibility("default")))
#endif
