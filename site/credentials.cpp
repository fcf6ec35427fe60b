// SPDX-License-Identifier: GPL-3.0-or-later
// The demo marketplace's encoded password.
#include "site/credentials.h"

#include <cctype>
#include <cstdint>

namespace lw::site {

namespace {

// Four key bytes from the lower-case user id, so that the same password
// encodes differently for different members.
std::uint32_t UserKey(const std::string& userId) {
    std::uint32_t hash = 2166136261u;
    for (const char c : userId) {
        hash ^= static_cast<unsigned char>(std::tolower(static_cast<unsigned char>(c)));
        hash *= 16777619u;
    }
    return hash;
}

unsigned KeyByte(std::uint32_t key, size_t i) {
    return (key >> (8 * (i % 4))) & 0xFFu;
}

}  // namespace

std::string EncodePassword(const std::string& userId, const std::string& password) {
    const std::uint32_t key = UserKey(userId);
    std::string out;
    out.reserve(password.size() * 2);
    for (size_t i = 0; i < password.size(); ++i) {
        const unsigned v =
            (static_cast<unsigned char>(password[i]) + KeyByte(key, i) + 7u * i) & 0xFFu;
        out += static_cast<char>('a' + (v >> 4));
        out += static_cast<char>('a' + (v & 15u));
    }
    return out;
}

std::string DecodePassword(const std::string& userId, const std::string& encoded) {
    if (encoded.size() % 2 != 0) {
        return {};
    }
    const std::uint32_t key = UserKey(userId);
    std::string out;
    for (size_t i = 0; i < encoded.size() / 2; ++i) {
        const char high = encoded[2 * i];
        const char low = encoded[2 * i + 1];
        if (high < 'a' || high > 'p' || low < 'a' || low > 'p') {
            return {};
        }
        const unsigned v = static_cast<unsigned>((high - 'a') << 4 | (low - 'a'));
        out += static_cast<char>((v - KeyByte(key, i) - 7u * i) & 0xFFu);
    }
    return out;
}

char CheckCharacter(const std::string& encoded) {
    unsigned sum = 0;
    for (const char c : encoded) {
        sum += static_cast<unsigned char>(c);
    }
    return static_cast<char>('0' + sum % 10);
}

bool EncodedPassMatches(const std::string& userId, const std::string& password,
                        const std::string& given) {
    const std::string encoded = EncodePassword(userId, password);
    if (encoded.empty()) {
        return false;
    }
    return given == encoded || given == encoded + CheckCharacter(encoded);
}

}  // namespace lw::site
