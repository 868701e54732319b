#pragma once

#include <chrono>
#include <cstdint>
#include <iostream>
#include <limits>
#include <optional>
#include <string>

#ifdef _WIN32
#    include <cstdio>
#    include <io.h>
#else
#    include <unistd.h>
#endif

/// Shows on standard error how far the work on a file has come, if that is a terminal and the work takes more than a
/// second.
class ProgressBar {
public:
    /// @param total octets of the file; none if that is not known, and then there is no bar
    explicit ProgressBar(std::optional<std::uint64_t> total) {
        if (total && *total > 0 && standardErrorIsTerminal()) {
            total_ = *total;
            nextLook_ = 0;
        }
    }

    /// Takes the bar away.
    void clear() {
        if (drawn_) {
            std::cerr << '\r' << std::string(width + 8, ' ') << '\r' << std::flush;
            drawn_ = false;
        }
    }

    /// Cheap enough for every KLV triplet: the clock is looked at a thousand times in a whole file.
    void reached(std::uint64_t position) {
        if (position >= nextLook_) {
            nextLook_ = position + total_ / 1000 + 1;
            const auto now = Clock::now();
            if (now >= nextDrawing_) {
                nextDrawing_ = now + std::chrono::milliseconds(100);
                draw(position);
            }
        }
    }

private:
    using Clock = std::chrono::steady_clock;

    static constexpr unsigned width = 50;

    static bool standardErrorIsTerminal() {
#ifdef _WIN32
        return _isatty(_fileno(stderr)) != 0;
#else
        return isatty(STDERR_FILENO) != 0;
#endif
    }

    void draw(std::uint64_t position) {
        // The file may have grown since its size was asked.
        const double fraction = position < total_ ? static_cast<double>(position) / static_cast<double>(total_) : 1.0;
        const std::string percent = std::to_string(static_cast<unsigned>(fraction * 100));
        std::string bar(static_cast<std::size_t>(fraction * width), '#');
        bar.resize(width, '.');
        std::cerr << "\r[" << bar << "] " << std::string(3 - percent.size(), ' ') << percent << " %" << std::flush;
        drawn_ = true;
    }

    std::uint64_t total_ = 0;
    std::uint64_t nextLook_ = std::numeric_limits<std::uint64_t>::max();
    Clock::time_point nextDrawing_ = Clock::now() + std::chrono::seconds(1);
    bool drawn_ = false;
};
