// SPDX-License-Identifier: GPL-3.0-or-later
// Timing for the benchmarks. The machines are noisy, so no figure stands
// alone: each benchmark times its floor in the same run, takes the best of a
// few rounds for both, and prints the ratio.
#pragma once

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <functional>
#include <string>

namespace lw::bench {

// Best wall time in seconds of `rounds` runs of work.
inline double BestOf(int rounds, const std::function<void()>& work) {
    double best = 1e300;
    for (int i = 0; i < rounds; ++i) {
        const auto start = std::chrono::steady_clock::now();
        work();
        const std::chrono::duration<double> spent = std::chrono::steady_clock::now() - start;
        best = std::min(best, spent.count());
    }
    return best;
}

// One line per figure: name, measured, floor, ratio and the limit it must keep.
inline bool Report(const std::string& name, double seconds, double floorSeconds, double limit) {
    const double ratio = floorSeconds > 0 ? seconds / floorSeconds : 0;
    std::printf("%-44s %10.4f s  floor %10.4f s  ratio %5.2fx  (limit %.1fx) %s\n", name.c_str(),
                seconds, floorSeconds, ratio, limit, ratio <= limit ? "ok" : "OVER");
    std::fflush(stdout);
    return ratio <= limit;
}

}  // namespace lw::bench
