// SPDX-License-Identifier: GPL-3.0-or-later
// Where the site password is kept. Where the desktop's keyring answers (a
// Secret Service, reached through QtKeychain) it lives there, one entry per
// user name and site, and the UserSites row holds none. Where none answers it
// stays in the row, in a database only its owner can read, and the user is
// told so once per database; when a keyring answers later, the password moves
// into it and the row is emptied once the keyring has confirmed the write.
// Sign-in, the encoded password, the preferences and anything else that needs
// the password ask these functions and nothing else.
#pragma once

#include <QString>

#include "core/store.h"

namespace lw::core {

// The password of userName at site (UserSites.AuctionSiteFlag); empty when the
// user has no row for the site, none was ever given, or it is in a keyring
// that does not answer now (which the user is told once in the run).
QString SitePassword(Database& db, const QString& userName, int site);
// Keeps password for userName at site: in the keyring, or in the row with
// the one-time notice. An empty password forgets it. Throws StoreError when
// the user has no row for the site.
void SaveSitePassword(Database& db, const QString& userName, int site, const QString& password);
// Removes the password from the keyring and from the row.
void ForgetSitePassword(Database& db, const QString& userName, int site);

// The keyring entry of userName at site: the site number, a slash and the
// name (as the store spells it); the entry's service is the application id.
QString SitePasswordEntry(const QString& userName, int site);

// False when LOTWRIGHT_KEYRING is "off": the password then stays in the
// database, no keyring is asked and nothing is said about it. The test suites
// run so.
bool KeyringWanted();

// Overwrites the characters of text that no other copy shares, then empties
// it: a password is not left lying in freed memory.
void Scrub(QString& text);

}  // namespace lw::core
