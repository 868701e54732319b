#pragma once

#include <cstdio>
#include <cstdlib>
#include <exception>
#include <string>

/// Called before the program ends for what does not hold: to say what it was at.
inline void (*beforeFailure)() = [] {};

/// Says what does not hold, and ends the program, if @p condition does not.
inline void expect(bool condition, const char* what) {
    if (!condition) {
        std::fprintf(stderr, "%s\n", what);
        beforeFailure();
        std::abort();
    }
}
inline void expect(bool condition, const std::string& what) {
    expect(condition, what.c_str());
}

/// Says what the exception says that nobody has caught: for std::set_terminate().
inline void failUncaught() {
    try {
        throw;
    } catch (const std::exception& exception) {
        expect(false, exception.what());
    } catch (...) {
        expect(false, "an exception of an unknown kind");
    }
}
