#pragma once

#include <cstddef>

/// What a program takes from the heap with operator new, which Allocations.cpp replaces. For one thread.
namespace allocations {

std::size_t count();  ///< made or tried so far
std::size_t octets(); ///< held
std::size_t peak();   ///< the most that was held since startPeak()
void startPeak();

/// While it exists, allocations fail: the @p nth that comes, counted from 0, and all behind it if failures last.
class Failing {
public:
    Failing(std::size_t nth, bool lasts);
    ~Failing();
    Failing(const Failing&) = delete;
    Failing& operator=(const Failing&) = delete;
};

std::size_t failures(); ///< made so far

} // namespace allocations
