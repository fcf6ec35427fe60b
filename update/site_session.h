// The site session: page addresses built from rule macros, pages fetched to
// file, form posts, the connection test, and the sign-in material (user id,
// password, the encoded password the site hands back). It knows no page
// layout: addresses and hosts come from the rule store.
#pragma once

#include <QString>
#include <QStringList>

#include "core/net.h"
#include "core/store.h"

namespace lw::update {

enum class FetchResult { Ok, Failed, Cancelled };

// The page address of a rule Url with its macros replaced: [USERID] and
// [PASSWORD] (first occurrence), [DAYS], "[" field "]" for each field scanned
// so far in the record (fields and values paired by row), [SKIP].
QString BuildUrl(core::Database& db, const QString& url, int siteNumber,
                 const QStringList& fields = {}, const QStringList& values = {},
                 qint64 pageOffset = 0);
// The [DAYS] value for a LastUpdate text ("30" when it is null).
QString DaysToAsk(const QString& lastUpdate, const QDate& today);

// Network options of the current user: the proxy for connection types 3 and 4.
core::NetOptions NetOptionsForUser(core::Database& db);

// GET url into file (deleting the file first), reporting the transfer on the
// status line and letting events run; Cancelled when the user cancels.
FetchResult FetchToFile(const QString& url, const QString& file);
FetchResult FetchToFile(core::Database& db, const QString& url, const QString& file);

// The connection test; shows "You need to be connected ..." when asked to.
bool IsConnected(const QString& purpose, bool showMessage);

// The site's CGI address for posts, from the rule store.
QString CgiUrl();
// Posts a body to the CGI address through the user's proxy; the answer is
// capped at 75,000 characters. Empty when the post failed.
QByteArray PostAndWait(core::Database& db, const QByteArray& body);

QString GetEncodedPassword(core::Database& db);
bool RefreshEncodedPassword(core::Database& db);
QString FetchEncodedPassword(core::Database& db, const QString& userId, const QString& password);

QString UrlEncode(const QString& text);
QString BuildPostBody(const QStringList& names, const QStringList& values, int count);
QString ExtractHiddenFields(const QString& page, const QString& formMarker);

}  // namespace lw::update
