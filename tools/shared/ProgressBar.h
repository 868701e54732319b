#pragma once

#include <chrono>
#include <cstdint>
#include <limits>
#include <optional>

/// Shows on standard error how far the work on a file has come, if that is a terminal and the work takes more than a
/// second.
class ProgressBar {
public:
    /// @param total octets of the file; none if that is not known, and then there is no bar
    explicit ProgressBar(std::optional<std::uint64_t> total);

    /// Takes the bar away.
    void clear();

    /// Cheap enough for every KLV triplet: the clock is looked at a thousand times in a whole file.
    void reached(std::uint64_t position) {
        if (position >= nextLook_) {
            look(position);
        }
    }

private:
    using Clock = std::chrono::steady_clock;

    void look(std::uint64_t position);
    void draw(std::uint64_t position);

    std::uint64_t total_ = 0;
    std::uint64_t nextLook_ = std::numeric_limits<std::uint64_t>::max();
    Clock::time_point nextDrawing_ = Clock::now() + std::chrono::seconds(1);
    bool drawn_ = false;
};
