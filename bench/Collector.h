#pragma once

#include <benchmark/benchmark.h>

#include <algorithm>
#include <cstdio>
#include <limits>
#include <map>
#include <string>
#include <vector>

/// Gathers the time that each benchmark takes for an item, in nanoseconds, and tells on standard error how
/// far the run is.
class Collector : public benchmark::BenchmarkReporter {
public:
    bool ReportContext(Context const&) override { return true; }

    void ReportRuns(std::vector<Run> const& runs) override {
        for (Run const& run : runs) {
            if (run.run_type != Run::RT_Iteration || run.error_occurred) continue;
            auto const rate = run.counters.find("items_per_second");
            auto const time = run.counters.find("s/item");
            if (time != run.counters.end()) {
                m_Times[run.run_name.str()].push_back(time->second.value * 1e9);
            } else if (rate != run.counters.end()) {
                m_Times[run.run_name.str()].push_back(1e9 / rate->second.value);
            }
            auto const area = run.counters.find("area");
            if (area != run.counters.end()) m_Areas[run.run_name.str()] = area->second.value;
            std::fprintf(stderr, "%s\n", run.run_name.str().c_str());
        }
    }

    /// The median of the repetitions; not a number for a benchmark that has not run.
    double Median(std::string const& name) const {
        auto const found = m_Times.find(name);
        if (found == m_Times.end()) return std::numeric_limits<double>::quiet_NaN();
        std::vector<double> times = found->second;
        auto const middle = times.begin() + static_cast<std::ptrdiff_t>(times.size() / 2);
        std::nth_element(times.begin(), middle, times.end());
        return *middle;
    }

    /// What a benchmark counts as "area"; not a number for one that does not, or has not run.
    double Area(std::string const& name) const {
        auto const found = m_Areas.find(name);
        return found == m_Areas.end() ? std::numeric_limits<double>::quiet_NaN() : found->second;
    }

    std::vector<std::string> Names() const {
        std::vector<std::string> names;
        for (auto const& entry : m_Times) names.push_back(entry.first);
        return names;
    }

private:
    std::map<std::string, std::vector<double>> m_Times;
    std::map<std::string, double> m_Areas;
};

/// Runs the benchmarks, with these arguments in front of those of the command line; false for arguments that
/// there are not.
inline bool RunAll(Collector& collector, std::vector<std::string> own, int nArguments, char** ppArguments) {
    std::vector<char*> arguments = {ppArguments[0]};
    for (std::string& argument : own) arguments.push_back(argument.data());
    arguments.insert(arguments.end(), ppArguments + 1, ppArguments + nArguments);
    auto nAll = static_cast<int>(arguments.size());
    arguments.push_back(nullptr);
    benchmark::Initialize(&nAll, arguments.data());
    if (benchmark::ReportUnrecognizedArguments(nAll, arguments.data())) return false;
    benchmark::RunSpecifiedBenchmarks(&collector);
    return true;
}
