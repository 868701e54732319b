/// Runs a command, and prints on standard error the nanoseconds that it took, those of the processor among them, and the
/// most memory that it had, in KiB.
///
///     bryx_measure COMMAND...
///
/// The kernel counts to a program the memory of the one that starts it as well: that of this one is small.

#include <chrono>
#include <cstdio>
#include <spawn.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {

long long nanoseconds(const timeval& time) {
    return (static_cast<long long>(time.tv_sec) * 1'000'000 + time.tv_usec) * 1000;
}

} // namespace

int main(int argc, char** argv) {
    const auto start = std::chrono::steady_clock::now();
    pid_t child = 0;
    int status = 0;
    rusage usage{};
    if (argc < 2 || ::posix_spawnp(&child, argv[1], nullptr, nullptr, argv + 1, environ) != 0 ||
        ::wait4(child, &status, 0, &usage) != child) {
        std::fputs("usage: bryx_measure COMMAND...\n", stderr);
        return 2;
    }
    const std::chrono::nanoseconds time = std::chrono::steady_clock::now() - start;
    std::fprintf(stderr, "%lld %lld %ld\n", static_cast<long long>(time.count()),
                 nanoseconds(usage.ru_utime) + nanoseconds(usage.ru_stime), usage.ru_maxrss);
    return WIFEXITED(status) ? WEXITSTATUS(status) : 1;
}
