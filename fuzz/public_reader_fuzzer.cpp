/// Reads the input through the public reader in each mode. A stricter mode must report what a more lenient one does, in the
/// same order, no mode may change what the handlers get, and every position must be in the file.

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <sstream>

#include "Listener.h"

namespace {

std::shared_ptr<Listener> read(const std::string& file, BRYXValidationMode::Enum mode) {
    const auto listener = std::make_shared<Listener>();
    const auto reader = createBRYXReader(std::make_shared<std::istringstream>(file), mode);
    listen(*reader, listener);
    if (!readsToEnd(*reader)) {
        listener->sum += 1;
    }
    return listener;
}

void require(bool condition, const char* what) {
    if (!condition) {
        std::fprintf(stderr, "%s\n", what);
        std::abort();
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string file(reinterpret_cast<const char*>(data), size);
    std::shared_ptr<Listener> before;
    for (const auto mode : {BRYXValidationMode::None, BRYXValidationMode::Lenient, BRYXValidationMode::Standard,
                            BRYXValidationMode::Strict}) {
        const auto listener = read(file, mode);
        for (const Report& report : listener->findings.reports) {
            require(report.position >= 0 && report.position <= static_cast<std::streamoff>(size),
                    "a position is not in the file");
        }
        if (before != nullptr) {
            require(listener->sum == before->sum, "validation changes what handlers get");
            auto next = listener->findings.reports.begin();
            for (const Report& report : before->findings.reports) {
                next = std::find(next, listener->findings.reports.end(), report);
                require(next != listener->findings.reports.end(),
                        "a stricter mode does not report what a lenient one does");
                ++next;
            }
        }
        before = listener;
    }
    return 0;
}
