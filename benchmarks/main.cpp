#include <algorithm>
#include <cstdio>
#include <map>
#include <string>
#include <vector>

#include <benchmark/benchmark.h>

#include "Benchmarks.h"

namespace {

/// Prints the usual lines, and at the end the ratios within each group. The first of a group is its base.
class RatioReporter : public benchmark::ConsoleReporter {
public:
    void ReportRuns(const std::vector<Run>& runs) override {
        ConsoleReporter::ReportRuns(runs);
        for (const Run& run : runs) {
            if (run.run_type == Run::RT_Iteration && !run.error_occurred) {
                const double time = run.real_accumulated_time / static_cast<double>(run.iterations);
                const std::string name = run.run_name.function_name;
                if (fastest_.emplace(name, time).second) {
                    names_.push_back(name);
                }
                fastest_[name] = std::min(fastest_[name], time);
            }
        }
    }

    void Finalize() override {
        std::printf("\nTime as a multiple of the first of each group (fastest repetition):\n");
        std::string base;
        for (const std::string& name : names_) {
            const std::string group = name.substr(0, name.find('/') + 1);
            if (base.compare(0, group.size(), group) != 0) {
                base = name;
            }
            std::printf("  %-34s %6.2f\n", name.c_str(), fastest_[name] / fastest_[base]);
        }
    }

private:
    std::map<std::string, double> fastest_;
    std::vector<std::string> names_;
};

} // namespace

int main(int argc, char** argv) {
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv)) {
        return 2;
    }
    registerReading();
    registerValidation();
    registerMetadata();
    registerIndex();
    registerWriting();
    RatioReporter reporter;
    benchmark::RunSpecifiedBenchmarks(&reporter);
    return 0;
}
