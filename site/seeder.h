// SPDX-License-Identifier: GPL-3.0-or-later
// Deterministic demo data for the marketplace: the same options give the same
// members, item numbers, bids and ledger, whatever the machine or the hour,
// apart from the times, which are laid out around the site clock's `now`. It
// draws from a fixed generator and never from the wall clock.
#pragma once

#include <cstdint>

#include "site/market_store.h"

namespace lw::site {

inline constexpr const char* kDemoUserId = "demo_seller";
inline constexpr const char* kDemoPassword = "demo";
// The fewest members a seed makes: the demo member and the four partners its
// fixed scenes need.
inline constexpr int kMinimumSeedUsers = 5;

struct SeedOptions {
    int users = 8;
    int extraSales = 0;  // ended, sold lots of the demo member
    int extraBids = 0;   // other members' lots the demo member bid on
    std::int64_t now = 0;
};

struct SeedSummary {
    int users = 0;
    std::int64_t items = 0;
    std::int64_t bids = 0;
};

// Fills an empty store.
SeedSummary Seed(MarketStore& store, const SeedOptions& options);

}  // namespace lw::site
