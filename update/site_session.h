// SPDX-License-Identifier: GPL-3.0-or-later
// The site session: page addresses built from rule macros, pages fetched to
// file, form posts, the connection test, and the sign-in material (user id,
// password, the encoded password the site hands back). It knows no page
// layout: addresses and hosts come from the rule store.
#pragma once

#include <QByteArray>
#include <QDate>
#include <QString>
#include <QStringList>
#include <functional>
#include <memory>

#include "core/net.h"
#include "core/store.h"
#include "update/rules.h"

namespace lw::update {

// One outcome type for every page fetch, shared with the rule self-update.
using FetchResult = FetchOutcome;

// The page address of a rule Url with its macros replaced: [USERID] and
// [PASSWORD] (first occurrence), [DAYS], "[" field "]" for each field scanned
// so far in the record (fields and values paired by row), [SKIP].
QString BuildUrl(core::Database& db, const QString& url, int siteNumber,
                 const QStringList& fields = {}, const QStringList& values = {},
                 qint64 pageOffset = 0);
// BuildUrl for the addresses of one update: the user's site rows and the
// encoded password are read at the first address that needs them and kept,
// since nothing the run does changes them, until Forget (the password was
// refreshed). An encoded password the site did not hand back is asked for
// again by the next address that needs one.
class RunAddresses {
public:
    explicit RunAddresses(core::Database& db);
    ~RunAddresses();
    RunAddresses(const RunAddresses&) = delete;
    RunAddresses& operator=(const RunAddresses&) = delete;

    QString Build(const QString& url, int siteNumber, const QStringList& fields = {},
                  const QStringList& values = {}, qint64 pageOffset = 0);
    void Forget();

private:
    struct Kept;
    core::Database& m_db;
    std::unique_ptr<Kept> m_kept;
};

// The [DAYS] value for a LastUpdate text ("30" when it is null).
QString DaysToAsk(const QString& lastUpdate, const QDate& today);

// Network options of the current user: the proxy for connection types 3 and 4.
core::NetOptions NetOptionsForUser(core::Database& db);

// GET url into page, reporting the transfer on the status line and letting
// events run; Cancelled when the user cancels. A 404 answer is a page like
// any other (the rules then find their markers missing); every other error
// status is a failed fetch and leaves page empty. httpCode, when given,
// receives the status of the answer (0 when none came).
FetchResult FetchPage(const core::NetOptions& options, const QString& url, QByteArray& page,
                      long* httpCode = nullptr);

// What a GET that FetchPage did not make itself brought, as FetchPage would
// tell it: its page goes to page when one is given.
FetchResult PageOfAnswer(core::NetResult& got, QByteArray* page);
// The status words of a fetch, told when a page fetched ahead is taken.
void TellPageTaken(qint64 bytes);

// How an update asks for a page: the fetch of the real run is FetchPage
// through the user's proxy; tests and the scan command put their own.
using PageFetcher = std::function<FetchResult(const QString& url, QByteArray& page)>;

// The same into file, replacing it in one rename; a fetch that brings no page
// leaves no file. Without options, the current user's proxy is used.
FetchResult FetchToFile(const QString& url, const QString& file);
FetchResult FetchToFile(core::Database& db, const QString& url, const QString& file);
// The same with the options given; httpCode, when given, receives the status
// of the answer (0 when none came).
FetchResult FetchToFile(const core::NetOptions& options, const QString& url, const QString& file,
                        long* httpCode = nullptr);

// A fetcher for CheckRuleUpdate that goes through the user's proxy. A rule
// file is only ever replaced by a complete answer with a success status.
RuleFetcher RuleFetcherForUser(core::Database& db);

// The connection test; shows "You need to be connected ..." when asked to.
bool IsConnected(const QString& purpose, bool showMessage);
bool IsConnected(core::Database& db, const QString& purpose, bool showMessage);

// The site's CGI address for posts, from the rule store.
QString CgiUrl();
// Posts a body to the CGI address through the user's proxy; the answer is
// capped at 75,000 characters. Empty when the post failed, an answer with an
// error status included: every caller takes an answer as acceptance.
QByteArray PostAndWait(core::Database& db, const QByteArray& body);

QString GetEncodedPassword(core::Database& db);
bool RefreshEncodedPassword(core::Database& db);
QString FetchEncodedPassword(core::Database& db, const QString& userId, const QString& password);

QString UrlEncode(const QString& text);
// Slots 1 to count of the two lists (index 0 unused, as LoadPostDefaults
// fills them); a slot with an empty value is left out.
QString BuildPostBody(const QStringList& names, const QStringList& values, int count);
QString ExtractHiddenFields(const QString& page, const QString& formMarker);

}  // namespace lw::update
