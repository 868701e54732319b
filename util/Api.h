#pragma once

/// @file
/// BRYX_API marks what leaves the shared library; everything else stays hidden.

#if defined(_WIN32)
#    if defined(BRYX_BUILDING_LIBRARY)
#        define BRYX_API __declspec(dllexport)
#    else
#        define BRYX_API __declspec(dllimport)
#    endif
#else
#    define BRYX_API __attribute__((visibility("default")))
#endif
