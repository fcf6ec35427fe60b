// SPDX-License-Identifier: GPL-3.0-or-later
// Text forms of the demo marketplace: HTML escaping, money, the site's date
// and clock formats, query encoding and JSON strings. Pure functions; they
// never read the market's state or the clock.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace lw::site {

// Every character that could end an attribute or open a tag is escaped, and
// the quotes take the numeric forms that a page scanner decodes.
std::string Html(std::string_view text);

// "$1,234.50"; negative amounts read "-$12.34".
std::string Money(std::int64_t cents);
// "12.50", "$1,234.5", "7" to cents; nullopt for anything else.
std::optional<std::int64_t> ParseMoney(std::string_view text);

// End and start dates as the site shows them: "06/08/00 12:04:00 PDT".
std::string SiteDate(std::int64_t epochSeconds);
// The official clock: "Thursday, 06 08, 2000 12:04:00 PDT".
std::string ClockText(std::int64_t epochSeconds);
// Ledger stamps: "06/08/00 12:04:31".
std::string LedgerStamp(std::int64_t epochSeconds);
// "Ended", or "2d 03h 10m" (and "45m 10s" in the last hour).
std::string TimeLeft(std::int64_t endSeconds, std::int64_t nowSeconds);
// "2000-06-08 12:04:00" (local time) or plain epoch seconds.
std::optional<std::int64_t> ParseStartTime(std::string_view text);

// Query-string value encoding for links the pages write.
std::string UrlEncode(std::string_view text);
std::string JsonString(std::string_view text);
std::string Lower(std::string_view text);
// A request target with the values of pass= replaced by "***", for the log.
std::string MaskSecrets(std::string_view target);

}  // namespace lw::site
