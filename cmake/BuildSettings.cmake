# How this project's own targets are compiled. All of it is set for the directory, never for a target's interface, so
# that none of it reaches those who link the library.

if(PROJECT_IS_TOP_LEVEL AND NOT CMAKE_BUILD_TYPE AND NOT CMAKE_CONFIGURATION_TYPES)
    set(CMAKE_BUILD_TYPE Release CACHE STRING "Kind of build" FORCE)
endif()

set(CMAKE_CXX_STANDARD 17)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)

find_program(CCACHE ccache)
mark_as_advanced(CCACHE)
if(CCACHE AND NOT DEFINED CMAKE_CXX_COMPILER_LAUNCHER)
    set(CMAKE_CXX_COMPILER_LAUNCHER "${CCACHE}")
endif()

if(CMAKE_CXX_COMPILER_ID MATCHES "GNU|Clang")
    add_compile_options(-Wall -Wextra -Wpedantic -Wshadow -Wconversion -Wsign-conversion)
    if(BRYX_WARNINGS_AS_ERRORS)
        add_compile_options(-Werror)
    endif()
endif()

# The library's functions may call each other directly, and be put in place of calls, though other programs can see them:
# a tenth fewer instructions for each element of essence. Nobody is meant to replace one of them by another of its name.
include(CheckCXXCompilerFlag)
check_cxx_compiler_flag(-fno-semantic-interposition BRYX_HAS_NO_SEMANTIC_INTERPOSITION)
if(BRYX_HAS_NO_SEMANTIC_INTERPOSITION)
    add_compile_options(-fno-semantic-interposition)
endif()

if(BRYX_SANITIZE)
    add_compile_options(-fsanitize=${BRYX_SANITIZE} -fno-sanitize-recover=all -fno-omit-frame-pointer)
    add_link_options(-fsanitize=${BRYX_SANITIZE})
endif()

if(BRYX_BUILD_FUZZERS)
    if(NOT CMAKE_CXX_COMPILER_ID MATCHES "Clang")
        message(FATAL_ERROR "BRYX_BUILD_FUZZERS needs clang; this is ${CMAKE_CXX_COMPILER_ID}")
    endif()
    # Coverage of the library is what guides the fuzzers. The code for it needs AddressSanitizer to run in programs that are
    # no fuzzers, and ThreadSanitizer would report that all threads count at once.
    if(BRYX_SANITIZE MATCHES "address")
        add_compile_options(-fsanitize=fuzzer-no-link)
    endif()
endif()
