/// Writes files in two threads at once, and reads them in two threads at once: for ThreadSanitizer, which tells what they
/// share. Each thread must get what it would get alone.

#include <cstdio>
#include <cstdlib>
#include <future>
#include <sstream>

#include "Listener.h"
#include "sdk/BRYX.h"
#include "support/GoodClip.h"

namespace {

/// What a thread got of the file that it wrote and read.
struct Result {
    bool isWhole = false;
    std::size_t reports = 0;
    std::uint64_t sum = 0;

    friend bool operator==(const Result& a, const Result& b) {
        return a.isWhole == b.isWhole && a.reports == b.reports && a.sum == b.sum;
    }
};

/// Everything that it needs is its own.
Result writeAndRead(int frames) {
    ClipOptions options;
    options.frames = frames;
    options.hasGenericStream = true;
    const auto stream = std::make_shared<std::stringstream>();
    const GoodClip clip(options);
    clip.write(*createVerifyingBRYXWriter(stream));
    stream->seekg(0);
    const auto listener = std::make_shared<Listener>();
    const auto reader = createBRYXReader(stream, BRYXValidationMode::Strict);
    listen(*reader, listener);
    const bool isWhole = readsToEnd(*reader);
    return {isWhole, listener->findings.reports.size(), listener->sum};
}

} // namespace

int main() {
    constexpr int rounds = 5;
    for (int frames = 1; frames <= rounds; ++frames) {
        // Two at once come first, so that they meet wherever something is made when it is first needed.
        auto one = std::async(std::launch::async, writeAndRead, frames);
        auto other = std::async(std::launch::async, writeAndRead, 2 * frames);
        const Result results[] = {one.get(), other.get()};
        if (!(results[0] == writeAndRead(frames) && results[1] == writeAndRead(2 * frames)) || !results[0].isWhole ||
            results[0].reports != 0) {
            std::fputs("threads that have nothing in common disturb one another\n", stderr);
            return EXIT_FAILURE;
        }
    }
    return EXIT_SUCCESS;
}
