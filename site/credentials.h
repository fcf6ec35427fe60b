// SPDX-License-Identifier: GPL-3.0-or-later
// How the demo marketplace signs a member in: the password is scrambled with
// the member's user id into the "encoded password" that the sign-in answer
// hands out (followed by one check character) and that every member page
// asks for. The scramble is reversible and URL-safe; it is no protection and
// must never be mistaken for one.
#pragma once

#include <string>

namespace lw::site {

std::string EncodePassword(const std::string& userId, const std::string& password);
// The clear password back from its encoded form; empty when it is malformed.
std::string DecodePassword(const std::string& userId, const std::string& encoded);
// The character the sign-in answer puts behind the encoded password.
char CheckCharacter(const std::string& encoded);
// A member page's pass= value: the encoded password, with or without its
// check character.
bool EncodedPassMatches(const std::string& userId, const std::string& password,
                        const std::string& given);

}  // namespace lw::site
