#include "shared/ProgressBar.h"

#include <cstddef>
#include <iostream>
#include <string>

#ifdef _WIN32
#    include <cstdio>
#    include <io.h>
#else
#    include <unistd.h>
#endif

namespace {

constexpr unsigned width = 50;

bool standardErrorIsTerminal() {
#ifdef _WIN32
    return _isatty(_fileno(stderr)) != 0;
#else
    return isatty(STDERR_FILENO) != 0;
#endif
}

} // namespace

ProgressBar::ProgressBar(std::optional<std::uint64_t> total) {
    if (total && *total > 0 && standardErrorIsTerminal()) {
        total_ = *total;
        nextLook_ = 0;
    }
}

void ProgressBar::clear() {
    if (drawn_) {
        std::cerr << '\r' << std::string(width + 8, ' ') << '\r' << std::flush;
        drawn_ = false;
    }
}

void ProgressBar::look(std::uint64_t position) {
    nextLook_ = position + total_ / 1000 + 1;
    const auto now = Clock::now();
    if (now >= nextDrawing_) {
        nextDrawing_ = now + std::chrono::milliseconds(100);
        draw(position);
    }
}

void ProgressBar::draw(std::uint64_t position) {
    // The file may have grown since its size was asked.
    const double fraction = position < total_ ? static_cast<double>(position) / static_cast<double>(total_) : 1.0;
    const std::string percent = std::to_string(static_cast<unsigned>(fraction * 100));
    std::string bar(static_cast<std::size_t>(fraction * width), '#');
    bar.resize(width, '.');
    std::cerr << "\r[" << bar << "] " << std::string(3 - percent.size(), ' ') << percent << " %" << std::flush;
    drawn_ = true;
}
