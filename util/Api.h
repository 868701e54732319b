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

/// Everything of the library stands in it. Its names can be written without bryx:: wherever one of the headers is included.
///
/// An application that has names of its own which are some of the library's as well, such as Event, Track or util, defines
/// BRYX_NO_GLOBAL_NAMES for all of its sources, and writes bryx::Event.
namespace bryx {}

#if !defined(BRYX_NO_GLOBAL_NAMES)
using namespace bryx; // NOLINT(google-build-using-namespace): the one place
#endif
