#pragma once

#include <benchmark/benchmark.h>

#include <cstdio>
#include <map>
#include <string>
#include <utility>
#include <vector>

namespace recorder::bench {

// Prints Google Benchmark's usual table, then each requested ratio of two
// benchmarks' real time per iteration, both measured in this same run.
class RatioReporter : public benchmark::ConsoleReporter {
public:
    void ReportRuns(const std::vector<Run>& runs) override {
        for (const auto& run : runs)
            if (run.run_type == Run::RT_Iteration) nanoseconds_[run.benchmark_name()] = run.GetAdjustedRealTime() * scale(run.time_unit);
        ConsoleReporter::ReportRuns(runs);
    }

    double milliseconds(const std::string& name) const {
        auto it = nanoseconds_.find(name);
        return it == nanoseconds_.end() ? 0 : it->second / 1e6;
    }

    void printRatio(const std::string& measured, const std::string& baseline, const char* label) const {
        double a = milliseconds(measured), b = milliseconds(baseline);
        if (b > 0) std::printf("%s: %.3f ms vs %.3f ms = %.2fx\n", label, a, b, a / b);
    }

private:
    static double scale(benchmark::TimeUnit unit) {
        switch (unit) {
        case benchmark::kSecond: return 1e9;
        case benchmark::kMillisecond: return 1e6;
        case benchmark::kMicrosecond: return 1e3;
        default: return 1;
        }
    }

    std::map<std::string, double> nanoseconds_;
};

} // namespace recorder::bench
