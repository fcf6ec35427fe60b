// SPDX-License-Identifier: GPL-3.0-or-later
// The usage report to the program's maker: the file trkrpt.dat of counters,
// written at most every ten days, and its FTP upload. Nothing here may stop
// or slow an update for long: every failure is swallowed, and the upload has
// short time-outs. The e-mail address never leaves the machine in clear.
#include "update/usage_report.h"

#include <curl/curl.h>

#include <QFile>
#include <QUrl>
#include <exception>
#include <memory>
#include <optional>

#include "core/session.h"
#include "core/settings.h"
#include "core/text.h"
#include "core/tracking.h"
#include "update/rules.h"

namespace lw::update {

namespace {

using core::CurrentSession;
using core::CurrentUi;
using core::Database;

constexpr qint64 kDaysBetweenReports = 10;
constexpr long kFtpConnectTimeoutMs = 5000;
constexpr long kFtpTotalTimeoutMs = 15000;

QString ReportPath() {
    return CurrentSession().ScratchDir + QStringLiteral("trkrpt.dat");
}

// A Yes/No column as it reads in text: "True" or "False".
QString FlagText(const core::Statement& row, const QString& column) {
    return row.Flag(column) ? QStringLiteral("True") : QStringLiteral("False");
}

qint64 CountOfUser(Database& db, const QString& table) {
    core::Statement query = db.Prepare(QStringLiteral("SELECT COUNT(*) FROM ") + table +
                                       QStringLiteral(" WHERE UserName = ?"));
    query.Bind(1, CurrentSession().CurrentUser);
    return query.Step() ? query.Value(0).toLongLong() : 0;
}

QString SiteEmailAddress(Database& db) {
    core::Statement query = db.Prepare(QStringLiteral(
        "SELECT SiteEmailAddress FROM UserSites WHERE UserName = ? AND AuctionSiteFlag = 0 "
        "ORDER BY rowid LIMIT 1"));
    query.Bind(1, CurrentSession().CurrentUser);
    return query.Step() ? query.Text(0) : QString();
}

QString ReportText(Database& db, const QDate& today) {
    QStringList lines;
    lines << ScrambleForReport(SiteEmailAddress(db));
    lines << today.toString(QStringLiteral("MM/dd/yyyy"));
    core::Statement tracking = db.Prepare(QStringLiteral(
        "SELECT AuctionsPosted, Updates, SendEmail, RubyLane, Paypal, Billpoint, RubyLaneClick "
        "FROM Tracking ORDER BY rowid LIMIT 1"));
    const bool hasRow = tracking.Step();
    auto counter = [&](const char* column) {
        return hasRow ? tracking.Text(QString::fromLatin1(column)) : QString();
    };
    auto flag = [&](const char* column) {
        return hasRow ? FlagText(tracking, QString::fromLatin1(column)) : QString();
    };
    lines << QStringLiteral("Auctions Posted=") + counter("AuctionsPosted");
    lines << QStringLiteral("Updates=") + counter("Updates");
    lines << QStringLiteral("Email Sent=") + flag("SendEmail");
    lines << QStringLiteral("Ruby Lane=") + flag("RubyLane");
    lines << QStringLiteral("PayPal=") + flag("Paypal");
    lines << QStringLiteral("Billpoint=") + flag("Billpoint");
    lines << QStringLiteral("Ruby Lane Clicks=") + counter("RubyLaneClick");
    lines << QString::number(CountOfUser(db, QStringLiteral("Auctions")));
    lines << QString::number(CountOfUser(db, QStringLiteral("Bids")));

    core::Statement categories =
        db.Prepare(QStringLiteral("SELECT ItemCategory, COUNT(*) FROM Auctions WHERE UserName = ? "
                                  "GROUP BY ItemCategory ORDER BY ItemCategory"));
    categories.Bind(1, CurrentSession().CurrentUser);
    while (categories.Step()) {
        lines << categories.Text(0) + u'=' + QString::number(categories.Value(1).toLongLong());
    }
    return lines.join(QStringLiteral("\r\n")) + QStringLiteral("\r\n");
}

// The day of the last report; a report never sent dates from before the
// program existed, so the first one is always due.
QDate LastReportDay(Database& db) {
    const QDate never(1998, 12, 12);
    core::Statement query =
        db.Prepare(QStringLiteral("SELECT TrackingDate FROM Tracking ORDER BY rowid LIMIT 1"));
    if (!query.Step() || query.IsNull(0)) {
        return never;
    }
    const std::optional<QDateTime> last = core::ParseDateTime(query.Text(0));
    return last ? last->date() : never;
}

void StoreReportDay(Database& db, const QDate& today) {
    const QString stamp =
        today.toString(QStringLiteral("yyyy-MM-dd")) + QStringLiteral(" 00:00:00");
    if (db.ScalarInt(QStringLiteral("SELECT COUNT(*) FROM Tracking")) == 0) {
        db.Prepare(QStringLiteral("INSERT INTO Tracking (TrackingDate) VALUES (?)"))
            .Bind(1, stamp)
            .Run();
        return;
    }
    db.Prepare(QStringLiteral(
                   "UPDATE Tracking SET TrackingDate = ? WHERE rowid = (SELECT MIN(rowid) FROM "
                   "Tracking)"))
        .Bind(1, stamp)
        .Run();
}

// ------------------------------------------------------------------ FTP

struct CurlGlobal {
    CurlGlobal() { curl_global_init(CURL_GLOBAL_DEFAULT); }
    ~CurlGlobal() { curl_global_cleanup(); }
    CurlGlobal(const CurlGlobal&) = delete;
    CurlGlobal& operator=(const CurlGlobal&) = delete;
};

struct EasyDeleter {
    void operator()(CURL* easy) const { curl_easy_cleanup(easy); }
};

struct Upload {
    QFile* file = nullptr;
    bool loggedIn = false;
};

size_t ReadFromFile(char* buffer, size_t size, size_t count, void* user) {
    auto* upload = static_cast<Upload*>(user);
    const qint64 got = upload->file->read(buffer, static_cast<qint64>(size * count));
    return got < 0 ? CURL_READFUNC_ABORT : static_cast<size_t>(got);
}

// The server's answer lines come here; "230" is the answer to a sign-in.
size_t OnServerLine(char* data, size_t size, size_t count, void* user) {
    auto* upload = static_cast<Upload*>(user);
    const size_t length = size * count;
    if (!upload->loggedIn && length >= 3 && data[0] == '2' && data[1] == '3' && data[2] == '0') {
        upload->loggedIn = true;
        try {
            CurrentUi().Status(QStringLiteral("Logged in to Tolvane"));
        } catch (...) {
            // Nothing may unwind through libcurl.
        }
    }
    return length;
}

QString TrackingKey(const char* key) {
    return LookupRuleKey(QStringLiteral("Tracking"), QString::fromLatin1(key), kInfoStore)
        .trimmed();
}

bool SendByFtp(const QString& filePath) {
    const QString host = TrackingKey("host");
    const QString userId = TrackingKey("userid");
    const QString password = TrackingKey("pass");
    const QString account = TrackingKey("account");
    if (host.isEmpty() || host == RuleError() || userId == RuleError() || password == RuleError() ||
        account == RuleError()) {
        return false;
    }
    QString folder;
    if (!account.isEmpty()) {
        folder = QString::fromLatin1(QUrl::toPercentEncoding(account)) + u'/';
    }
    const QByteArray url =
        (QStringLiteral("ftp://") + host + u'/' + folder + QStringLiteral("trkrpt.dat")).toUtf8();

    QFile file(filePath);
    if (!file.open(QIODevice::ReadOnly)) {
        return false;
    }
    static const CurlGlobal global;
    const std::unique_ptr<CURL, EasyDeleter> easy(curl_easy_init());
    if (!easy) {
        return false;
    }
    Upload upload;
    upload.file = &file;
    const QByteArray user = userId.toUtf8();
    const QByteArray pass = password.toUtf8();
    CURL* e = easy.get();
    curl_easy_setopt(e, CURLOPT_URL, url.constData());
    curl_easy_setopt(e, CURLOPT_PROTOCOLS_STR, "ftp");
    curl_easy_setopt(e, CURLOPT_NOSIGNAL, 1L);
    curl_easy_setopt(e, CURLOPT_PROXY, "");
    curl_easy_setopt(e, CURLOPT_USERNAME, user.constData());
    curl_easy_setopt(e, CURLOPT_PASSWORD, pass.constData());
    curl_easy_setopt(e, CURLOPT_UPLOAD, 1L);
    curl_easy_setopt(e, CURLOPT_INFILESIZE_LARGE, static_cast<curl_off_t>(file.size()));
    curl_easy_setopt(e, CURLOPT_READFUNCTION, ReadFromFile);
    curl_easy_setopt(e, CURLOPT_READDATA, &upload);
    curl_easy_setopt(e, CURLOPT_HEADERFUNCTION, OnServerLine);
    curl_easy_setopt(e, CURLOPT_HEADERDATA, &upload);
    curl_easy_setopt(e, CURLOPT_CONNECTTIMEOUT_MS, kFtpConnectTimeoutMs);
    curl_easy_setopt(e, CURLOPT_TIMEOUT_MS, kFtpTotalTimeoutMs);
    const CURLcode code = curl_easy_perform(e);
    if (code == CURLE_OK) {
        CurrentUi().Status(QStringLiteral("Information sent"));
    }
    if (upload.loggedIn) {
        CurrentUi().Status(QStringLiteral("Disconnected from Tolvane"));
    }
    return code == CURLE_OK;
}

}  // namespace

QString ScrambleForReport(const QString& text) {
    QString out;
    out.reserve(text.size());
    for (const QChar c : text) {
        const int code = c.unicode() + 5;
        const bool replaced = (code <= 47) || (code >= 58 && code <= 63) ||
                              (code >= 91 && code <= 96) || (code >= 123 && code <= 127);
        out += replaced ? QChar(u'@') : QChar(static_cast<char16_t>(code));
    }
    return out;
}

ReportSender FtpReportSender() {
    return [](const QString& file) { return SendByFtp(file); };
}

bool PrepareUsageReport(Database& db, const ReportSender& send, const QDate& today) {
    try {
        // Off until the user switched it on: nothing is written or sent.
        if (!core::UsageReportOn()) {
            return false;
        }
        const QString path = ReportPath();
        QFile::remove(path);
        if (LastReportDay(db).daysTo(today) < kDaysBetweenReports) {
            return false;
        }
        QFile file(path);
        if (!file.open(QIODevice::WriteOnly | QIODevice::Truncate)) {
            return false;
        }
        const QByteArray bytes = ReportText(db, today).toUtf8();
        if (file.write(bytes) != bytes.size() || !file.flush()) {
            file.close();
            QFile::remove(path);
            return false;
        }
        file.close();
        StoreReportDay(db, today);
        const ReportSender sender = send ? send : FtpReportSender();
        return sender(path);
    } catch (...) {
        // Usage counting may never stop real work.
        return false;
    }
}

bool PrepareUsageReport(Database& db, const ReportSender& send) {
    return PrepareUsageReport(db, send, QDate::currentDate());
}

}  // namespace lw::update
