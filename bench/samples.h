#pragma once

#include <QtGlobal>

#include <algorithm>
#include <vector>

// Summaries of measured samples; 0 for none.
inline double median(std::vector<double> v)
{
    std::sort(v.begin(), v.end());
    return v.empty() ? 0 : v[v.size() / 2];
}

inline double largest(const std::vector<double>& v)
{
    return v.empty() ? 0 : *std::max_element(v.begin(), v.end());
}

// A smoke run (KESTRIO_BENCH_SMOKE set, as the test suite runs every
// benchmark): one round at tiny sizes, to show the benchmark still runs,
// never to measure.
inline bool smokeRun()
{
    return qEnvironmentVariableIsSet("KESTRIO_BENCH_SMOKE");
}

inline int rounds(int full)
{
    return smokeRun() ? 1 : full;
}
