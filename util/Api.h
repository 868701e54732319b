#pragma once

/// @file
/// What leaves the shared library, and the namespace of all of it.

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

/// Everything of the library stands in it.
namespace bryx {}

/// @def BRYX_NO_GLOBAL_NAMES
/// To be defined, for a whole program, by an application that has names of its own which are some of the library's as
/// well, such as Event, Track or util. Otherwise the names of the library can be written without bryx:: wherever one of
/// its headers is included.

#if !defined(BRYX_NO_GLOBAL_NAMES)
using namespace bryx; // NOLINT(google-build-using-namespace): the one place
#endif
