// Runs all jobs at all their sizes and prints, as one Markdown table, how the time grows: the exponent of the
// size in the time of the whole job, between the smallest size and the largest.

#include <cmath>

#include "Collector.h"

namespace {

struct Size {
    double dItems;
    double dTime;  // nanoseconds an item
};

bool IsNumber(std::string const& text) {
    return !text.empty() &&
           std::all_of(text.begin(), text.end(), [](char c) { return c >= '0' && c <= '9'; });
}

// The first number in a benchmark's name is its size; what is left of the name is the job.
bool SplitName(std::string const& name, std::string& job, double& dItems) {
    job.clear();
    bool bFound = false;
    for (std::size_t nStart = 0; nStart <= name.size();) {
        std::size_t const nEnd = std::min(name.find('/', nStart), name.size());
        std::string const part = name.substr(nStart, nEnd - nStart);
        if (!bFound && IsNumber(part)) {
            dItems = std::stod(part);
            bFound = true;
        } else {
            job += (job.empty() ? "" : " ") + part;
        }
        nStart = nEnd + 1;
    }
    return bFound;
}

void PrintRow(std::string const& job, std::vector<Size>& sizes) {
    std::sort(sizes.begin(), sizes.end(), [](Size const& a, Size const& b) { return a.dItems < b.dItems; });
    std::string text;
    for (Size const& size : sizes) {
        char cell[64];
        std::snprintf(cell, sizeof cell, "%s%.3g at %.0f", text.empty() ? "" : ", ", size.dTime, size.dItems);
        text += cell;
    }
    Size const& first = sizes.front();
    Size const& last = sizes.back();
    double const dExponent = 1.0 + std::log(last.dTime / first.dTime) / std::log(last.dItems / first.dItems);
    std::printf("| %s | %s | %.2f |\n", job.c_str(), text.c_str(), dExponent);
}

}  // namespace

int main(int nArguments, char** ppArguments) {
    Collector collector;
    if (!RunAll(collector, {"--benchmark_repetitions=3", "--benchmark_filter=-(Floor|Peak|ReadSmall).*"},
                nArguments, ppArguments)) {
        return 2;
    }
    std::map<std::string, std::vector<Size>> jobs;
    for (std::string const& name : collector.Names()) {
        std::string job;
        double dItems = 0.0;
        if (SplitName(name, job, dItems)) jobs[job].push_back({dItems, collector.Median(name)});
    }
    std::printf("| Job | nanoseconds an item | exponent |\n|---|---|---|\n");
    for (auto& [job, sizes] : jobs) {
        if (sizes.size() > 1) PrintRow(job, sizes);
    }
    return 0;
}
