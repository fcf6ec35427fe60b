// SPDX-License-Identifier: GPL-3.0-or-later
// Text forms of the demo marketplace.
#include "site/site_text.h"

#include <array>
#include <cctype>
#include <charconv>
#include <cstdio>
#include <ctime>

namespace lw::site {

namespace {

std::tm LocalTime(std::int64_t epochSeconds) {
    const std::time_t t = static_cast<std::time_t>(epochSeconds);
    std::tm local{};
    localtime_r(&t, &local);
    return local;
}

const char* Zone(const std::tm& local) {
    return local.tm_isdst > 0 ? "PDT" : "PST";
}

}  // namespace

std::string Html(std::string_view text) {
    std::string out;
    out.reserve(text.size() + 16);
    for (const char c : text) {
        switch (c) {
            case '&':
                out += "&amp;";
                break;
            case '<':
                out += "&lt;";
                break;
            case '>':
                out += "&gt;";
                break;
            case '"':
                out += "&#34;";
                break;
            case '\'':
                out += "&#39;";
                break;
            default:
                out += c;
        }
    }
    return out;
}

std::string Money(std::int64_t cents) {
    const bool negative = cents < 0;
    const std::uint64_t magnitude =
        negative ? static_cast<std::uint64_t>(-(cents + 1)) + 1 : static_cast<std::uint64_t>(cents);
    std::string whole = std::to_string(magnitude / 100);
    for (int i = static_cast<int>(whole.size()) - 3; i > 0; i -= 3) {
        whole.insert(static_cast<size_t>(i), 1, ',');
    }
    char fraction[4];
    std::snprintf(fraction, sizeof fraction, "%02u", static_cast<unsigned>(magnitude % 100));
    return std::string(negative ? "-$" : "$") + whole + "." + fraction;
}

std::optional<std::int64_t> ParseMoney(std::string_view text) {
    while (!text.empty() && text.front() == ' ') {
        text.remove_prefix(1);
    }
    while (!text.empty() && text.back() == ' ') {
        text.remove_suffix(1);
    }
    if (!text.empty() && text.front() == '$') {
        text.remove_prefix(1);
    }
    std::int64_t whole = 0;
    std::int64_t fraction = 0;
    int fractionDigits = 0;
    bool seenDigit = false;
    bool inFraction = false;
    for (const char c : text) {
        if (c == ',' && !inFraction) {
            continue;
        }
        if (c == '.' && !inFraction) {
            inFraction = true;
            continue;
        }
        if (c < '0' || c > '9') {
            return std::nullopt;
        }
        seenDigit = true;
        if (inFraction) {
            if (fractionDigits == 2) {
                return std::nullopt;
            }
            fraction = fraction * 10 + (c - '0');
            ++fractionDigits;
        } else {
            if (whole > 100'000'000'000) {
                return std::nullopt;
            }
            whole = whole * 10 + (c - '0');
        }
    }
    if (!seenDigit) {
        return std::nullopt;
    }
    if (fractionDigits == 1) {
        fraction *= 10;
    }
    return whole * 100 + fraction;
}

std::string SiteDate(std::int64_t epochSeconds) {
    const std::tm local = LocalTime(epochSeconds);
    char buffer[40];
    std::snprintf(buffer, sizeof buffer, "%02d/%02d/%02d %02d:%02d:%02d %s", local.tm_mon + 1,
                  local.tm_mday, local.tm_year % 100, local.tm_hour, local.tm_min, local.tm_sec,
                  Zone(local));
    return buffer;
}

std::string ClockText(std::int64_t epochSeconds) {
    static constexpr std::array<const char*, 7> kDays = {
        "Sunday", "Monday", "Tuesday", "Wednesday", "Thursday", "Friday", "Saturday"};
    const std::tm local = LocalTime(epochSeconds);
    char buffer[64];
    std::snprintf(buffer, sizeof buffer, "%s, %02d %02d, %04d %02d:%02d:%02d %s",
                  kDays[static_cast<size_t>(local.tm_wday % 7)], local.tm_mon + 1, local.tm_mday,
                  local.tm_year + 1900, local.tm_hour, local.tm_min, local.tm_sec, Zone(local));
    return buffer;
}

std::string LedgerStamp(std::int64_t epochSeconds) {
    const std::tm local = LocalTime(epochSeconds);
    char buffer[32];
    std::snprintf(buffer, sizeof buffer, "%02d/%02d/%02d %02d:%02d:%02d", local.tm_mon + 1,
                  local.tm_mday, local.tm_year % 100, local.tm_hour, local.tm_min, local.tm_sec);
    return buffer;
}

std::string TimeLeft(std::int64_t endSeconds, std::int64_t nowSeconds) {
    const std::int64_t left = endSeconds - nowSeconds;
    if (left <= 0) {
        return "Ended";
    }
    char buffer[48];
    if (left < 3600) {
        std::snprintf(buffer, sizeof buffer, "%lldm %02llds", static_cast<long long>(left / 60),
                      static_cast<long long>(left % 60));
    } else {
        std::snprintf(
            buffer, sizeof buffer, "%lldd %02lldh %02lldm", static_cast<long long>(left / 86400),
            static_cast<long long>(left % 86400 / 3600), static_cast<long long>(left % 3600 / 60));
    }
    return buffer;
}

std::optional<std::int64_t> ParseStartTime(std::string_view text) {
    if (text.empty()) {
        return std::nullopt;
    }
    std::int64_t epoch = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), epoch);
    if (error == std::errc() && end == text.data() + text.size()) {
        return epoch;
    }
    std::tm local{};
    const std::string copy(text);
    int matched = std::sscanf(copy.c_str(), "%d-%d-%d%*[ T]%d:%d:%d", &local.tm_year, &local.tm_mon,
                              &local.tm_mday, &local.tm_hour, &local.tm_min, &local.tm_sec);
    if (matched != 6) {
        return std::nullopt;
    }
    local.tm_year -= 1900;
    local.tm_mon -= 1;
    local.tm_isdst = -1;
    const std::time_t t = std::mktime(&local);
    if (t == static_cast<std::time_t>(-1)) {
        return std::nullopt;
    }
    return static_cast<std::int64_t>(t);
}

std::string UrlEncode(std::string_view text) {
    static constexpr char kHex[] = "0123456789ABCDEF";
    std::string out;
    for (const char c : text) {
        const auto u = static_cast<unsigned char>(c);
        if (std::isalnum(u) || c == '-' || c == '_' || c == '.') {
            out += c;
        } else if (c == ' ') {
            out += '+';
        } else {
            out += '%';
            out += kHex[u >> 4];
            out += kHex[u & 15];
        }
    }
    return out;
}

std::string JsonString(std::string_view text) {
    std::string out = "\"";
    for (const char c : text) {
        switch (c) {
            case '"':
                out += "\\\"";
                break;
            case '\\':
                out += "\\\\";
                break;
            case '\n':
                out += "\\n";
                break;
            case '\r':
                out += "\\r";
                break;
            case '\t':
                out += "\\t";
                break;
            default:
                if (static_cast<unsigned char>(c) < 0x20) {
                    char buffer[8];
                    std::snprintf(buffer, sizeof buffer, "\\u%04x", static_cast<unsigned>(c));
                    out += buffer;
                } else {
                    out += c;
                }
        }
    }
    return out + "\"";
}

std::string Lower(std::string_view text) {
    std::string out(text);
    for (char& c : out) {
        c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    }
    return out;
}

std::string MaskSecrets(std::string_view target) {
    std::string out(target);
    for (const std::string_view key : {std::string_view("pass="), std::string_view("password=")}) {
        size_t at = 0;
        while ((at = out.find(key, at)) != std::string::npos) {
            const bool keyStart = at == 0 || out[at - 1] == '&' || out[at - 1] == '?';
            const size_t valueStart = at + key.size();
            if (!keyStart) {
                at = valueStart;
                continue;
            }
            size_t valueEnd = out.find('&', valueStart);
            if (valueEnd == std::string::npos) {
                valueEnd = out.size();
            }
            out.replace(valueStart, valueEnd - valueStart, "***");
            at = valueStart + 3;
        }
    }
    return out;
}

}  // namespace lw::site
