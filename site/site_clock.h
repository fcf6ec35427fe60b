// SPDX-License-Identifier: GPL-3.0-or-later
// The demo marketplace's clock: it starts at a chosen moment and runs a chosen
// number of times faster than the wall clock (0 stops it), so that auctions
// end while one watches, or never move at all in a test. Not thread-safe on
// its own; the site reads and changes it under its one lock.
#pragma once

#include <chrono>
#include <cstdint>

namespace lw::site {

class SiteClock {
public:
    SiteClock(std::int64_t startEpoch, double factor)
        : m_base(startEpoch), m_factor(factor), m_since(std::chrono::steady_clock::now()) {}

    std::int64_t Now() const {
        const double elapsed =
            std::chrono::duration<double>(std::chrono::steady_clock::now() - m_since).count();
        return m_base + static_cast<std::int64_t>(elapsed * m_factor);
    }

    double Factor() const { return m_factor; }

    // Keeps the present site time and runs on at the new speed from here.
    void SetFactor(double factor) {
        Rebase();
        m_factor = factor;
    }

    void Advance(std::int64_t seconds) {
        Rebase();
        m_base += seconds;
    }

private:
    void Rebase() {
        m_base = Now();
        m_since = std::chrono::steady_clock::now();
    }

    std::int64_t m_base;
    double m_factor;
    std::chrono::steady_clock::time_point m_since;
};

}  // namespace lw::site
