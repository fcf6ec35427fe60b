// SPDX-License-Identifier: GPL-3.0-or-later
// The site session: macros of page addresses, the page fetch with its status
// words, the form post to the site's CGI address, the connection test, and
// the encoded password. It never keeps a page it could not fetch in full,
// never sends a user's value unencoded, and never names a host of its own:
// every address comes from the rule store or the caller.
#include "update/site_session.h"

#include <QFile>
#include <QUrl>
#include <algorithm>
#include <array>
#include <exception>
#include <map>
#include <optional>
#include <string>

#include "core/page_charset.h"
#include "core/secrets.h"
#include "core/session.h"
#include "core/text.h"

namespace lw::update {

namespace {

using core::CurrentSession;
using core::CurrentUi;
using core::Database;

// The CGI path the site's posts and sign-in go to.
const QString& CgiPath() {
    static const QString path = QStringLiteral("/aw-cgi/eBayISAPI.dll");
    return path;
}

// A connection test that waits longer than this is as good as offline.
constexpr int kConnectTestMs = 3000;

// The site password is not in the row: it is asked of core/secrets.h only
// when a sign-in needs it.
struct SiteRow {
    bool found = false;
    QString userId;
    QVariant encodedPassword;  // null when the site has not handed one back yet
    QVariant lastUpdate;
};

SiteRow ReadSiteRow(Database& db, int siteNumber) {
    core::Statement query = db.Prepare(
        QStringLiteral("SELECT UserID, EncodedPassword, LastUpdate FROM UserSites "
                       "WHERE UserName = ? AND AuctionSiteFlag = ? ORDER BY rowid LIMIT 1"));
    query.BindAll(CurrentSession().CurrentUser, siteNumber);
    SiteRow row;
    if (query.Step()) {
        row.found = true;
        row.userId = query.Text(QStringLiteral("UserID"));
        row.encodedPassword = query.Value(QStringLiteral("EncodedPassword"));
        row.lastUpdate = query.Value(QStringLiteral("LastUpdate"));
    }
    return row;
}

// The sign-in post for the current user at site 0, with the password held
// only for the post.
QString SignIn(Database& db, const SiteRow& row) {
    QString password = core::SitePassword(db, CurrentSession().CurrentUser, 0);
    const QString fetched = FetchEncodedPassword(db, row.userId, password);
    core::Scrub(password);
    return fetched;
}

void StoreEncodedPassword(Database& db, const QString& encoded) {
    core::Statement update = db.Prepare(QStringLiteral(
        "UPDATE UserSites SET EncodedPassword = ? WHERE UserName = ? AND AuctionSiteFlag = 0"));
    update.BindAll(encoded, CurrentSession().CurrentUser);
    update.Run();
}

// The site answers with the token and one check character behind it; only
// the token goes into page addresses.
QString WithoutCheckCharacter(const QString& fetched) {
    return fetched.left(fetched.size() - 1);
}

// Trimming as the site's texts are compared: blanks only, not tabs or line ends.
QString TrimBlanks(const QString& text) {
    qsizetype first = 0;
    qsizetype last = text.size();
    while (first < last && text.at(first) == u' ') {
        ++first;
    }
    while (last > first && text.at(last - 1) == u' ') {
        --last;
    }
    return text.mid(first, last - first);
}

QString TextOfBytes(const QByteArray& bytes) {
    return QByteArrayView(bytes).isValidUtf8() ? QString::fromUtf8(bytes)
                                               : core::FromWindows1252(bytes);
}

const char kHexDigits[] = "0123456789ABCDEF";

// What an ASCII character becomes in a form post: itself for the letters,
// the digits and ".-_", "+" for the blank, 0 for one sent as its code.
constexpr std::array<char, 128> kFormCharacters = [] {
    std::array<char, 128> table{};
    for (char c = '0'; c <= '9'; ++c) {
        table[static_cast<size_t>(c)] = c;
    }
    for (char c = 'A'; c <= 'Z'; ++c) {
        table[static_cast<size_t>(c)] = c;
        table[static_cast<size_t>(c - 'A' + 'a')] = static_cast<char>(c - 'A' + 'a');
    }
    for (const char c : {'.', '-', '_'}) {
        table[static_cast<size_t>(c)] = c;
    }
    table[' '] = '+';
    return table;
}();

void AppendByte(std::string& out, unsigned value) {
    const char code[] = {'%', kHexDigits[(value >> 4) & 15u], kHexDigits[value & 15u]};
    out.append(code, sizeof code);
}

// One character as the site's form posts carry it: a code up to 255 as its
// one byte (as the site's older clients sent every character, and as the
// entity "&nbsp;" becomes "%A0"), anything beyond as the bytes of its UTF-8
// form, since it has no single byte.
void AppendCodePoint(std::string& out, char32_t code) {
    if (code <= 0xFF) {
        AppendByte(out, code);
        return;
    }
    const QByteArray utf8 = QString::fromUcs4(&code, 1).toUtf8();
    for (const char byte : utf8) {
        AppendByte(out, static_cast<unsigned char>(byte));
    }
}

// The number of an entity "#38", when the name is "#" and digits only.
std::optional<char32_t> EntityNumber(QStringView name) {
    if (name.size() < 2 || name.front() != u'#') {
        return std::nullopt;
    }
    qint64 value = 0;
    for (const QChar c : name.mid(1)) {
        if (c < u'0' || c > u'9') {
            return std::nullopt;
        }
        value = value * 10 + (c.unicode() - u'0');
    }
    if (value > 0x10FFFF || (value >= 0xD800 && value <= 0xDFFF)) {
        return std::nullopt;
    }
    return static_cast<char32_t>(value);
}

// The text from position at in the tag: a quoted value to the next double
// quote, otherwise to the next blank or the end of the tag.
QStringView ReadTagValue(QStringView stretch, qsizetype at, qsizetype tagEnd) {
    if (at < stretch.size() && stretch[at] == u'"') {
        const qsizetype close = stretch.indexOf(u'"', at + 1);
        const qsizetype end = close < 0 ? stretch.size() : close;
        return stretch.sliced(at + 1, end - at - 1);
    }
    qsizetype end = stretch.indexOf(u' ', at);
    if (end < 0 || end > tagEnd) {
        end = tagEnd;
    }
    return stretch.mid(at, end - at);
}

// The host the connection test tries when no proxy is in the way: that of the
// site's CGI address, or else that of the first page the update asks for.
QString SiteAddressForTest() {
    const QString cgi = CgiUrl();
    if (!cgi.isEmpty()) {
        return cgi;
    }
    const QString name = LookupRuleKey(QStringLiteral("Update"), QStringLiteral("Protocol1"), 0);
    const QString site =
        LookupRuleKey(QStringLiteral("Update"), QStringLiteral("Protocol1 Site"), 0).trimmed();
    if (name == RuleError() || site == RuleError()) {
        return {};
    }
    const QString siteName =
        LookupRuleKey(QStringLiteral("Sites"), QStringLiteral("Site") + site, 0);
    if (siteName == RuleError()) {
        return {};
    }
    const QString url = LookupRuleKey(name + u' ' + siteName, QStringLiteral("Url"), 0).trimmed();
    return url == RuleError() ? QString() : url;
}

}  // namespace

// ------------------------------------------------------------ page address

QString DaysToAsk(const QString& lastUpdate, const QDate& today) {
    if (lastUpdate.isNull()) {
        return QStringLiteral("30");
    }
    QString stamp = lastUpdate;
    for (const QString& zone : {QStringLiteral(" PST"), QStringLiteral(" PDT")}) {
        const qsizetype at = stamp.indexOf(zone);
        if (at >= 0) {
            stamp.truncate(at);
        }
    }
    const std::optional<QDateTime> last = core::ParseDateTime(stamp);
    if (!last) {
        // A stamp that is no date cannot say what is missing: ask for all.
        return QStringLiteral("30");
    }
    const qint64 days = qAbs(last->date().daysTo(today)) + 1;
    return QString::number(std::clamp<qint64>(days, 2, 30));
}

QString BuildUrl(Database& db, const QString& url, int siteNumber, const QStringList& fields,
                 const QStringList& values, qint64 pageOffset) {
    return RunAddresses(db).Build(url, siteNumber, fields, values, pageOffset);
}

struct RunAddresses::Kept {
    std::map<int, SiteRow> rows;
    QString password;  // empty: not read yet, or the site handed none back
};

RunAddresses::RunAddresses(Database& db) : m_db(db), m_kept(std::make_unique<Kept>()) {}

RunAddresses::~RunAddresses() {
    core::Scrub(m_kept->password);
}

void RunAddresses::Forget() {
    core::Scrub(m_kept->password);
    m_kept->password.clear();
    m_kept->rows.clear();
}

QString RunAddresses::Build(const QString& url, int siteNumber, const QStringList& fields,
                            const QStringList& values, qint64 pageOffset) {
    // The site row is read only for an address that needs it: an item page's
    // address, asked for once per record, names no user and no days.
    const auto siteRow = [&]() -> const SiteRow& {
        auto it = m_kept->rows.find(siteNumber);
        if (it == m_kept->rows.end()) {
            it = m_kept->rows.emplace(siteNumber, ReadSiteRow(m_db, siteNumber)).first;
        }
        return it->second;
    };
    QString address = url;
    const QString userMacro = QStringLiteral("[USERID]");
    if (address.contains(userMacro)) {
        address = core::ReplaceFirst(address, userMacro, TrimBlanks(siteRow().userId));
    }
    // The encoded password may cost a sign-in post, so it is asked for only
    // when the address needs it.
    const QString passwordMacro = QStringLiteral("[PASSWORD]");
    if (address.contains(passwordMacro)) {
        if (m_kept->password.isEmpty()) {
            m_kept->password = GetEncodedPassword(m_db);
        }
        address = core::ReplaceFirst(address, passwordMacro, m_kept->password);
    }
    const QString daysMacro = QStringLiteral("[DAYS]");
    if (address.contains(daysMacro)) {
        const QVariant& lastUpdate = siteRow().lastUpdate;
        address =
            core::ReplaceEvery(address, daysMacro,
                               DaysToAsk(lastUpdate.isNull() ? QString() : lastUpdate.toString(),
                                         QDate::currentDate()));
    }
    // A field without a value (the lists out of step) was not scanned: its
    // macro stays in the address.
    const qsizetype pairs = std::min(fields.size(), values.size());
    for (qsizetype i = 0; i < pairs; ++i) {
        address = core::ReplaceEvery(address, u'[' + fields.at(i) + u']', values.at(i));
    }
    return core::ReplaceEvery(address, QStringLiteral("[SKIP]"), QString::number(pageOffset));
}

// ------------------------------------------------------------------ network

core::NetOptions NetOptionsForUser(Database& db) {
    core::NetOptions options;
    core::Statement query = db.Prepare(QStringLiteral(
        "SELECT InternetConnection, ProxyServer, ProxyPort FROM Users WHERE UserName = ? "
        "ORDER BY rowid LIMIT 1"));
    query.Bind(1, CurrentSession().CurrentUser);
    if (!query.Step()) {
        return options;
    }
    const qint64 type = query.Int(QStringLiteral("InternetConnection"));
    if ((type == 3 || type == 4) && !query.IsNull(QStringLiteral("ProxyServer"))) {
        options.proxyHost = query.Text(QStringLiteral("ProxyServer")).trimmed();
        if (!query.IsNull(QStringLiteral("ProxyPort"))) {
            options.proxyPort = query.Text(QStringLiteral("ProxyPort")).trimmed().toInt();
        }
    }
    return options;
}

namespace {

const QString kConnecting = QStringLiteral("Connecting to Server");
const QString kDisconnected = QStringLiteral("Disconnected from Server.");

QString Transferring(qint64 bytes) {
    return QStringLiteral("Transferring Page: ") + QString::number(bytes) +
           QStringLiteral(" bytes");
}

}  // namespace

// A 404 answer is a page like any other; every other error status fails.
FetchResult PageOfAnswer(core::NetResult& got, QByteArray* page) {
    if (got.status == core::NetStatus::Cancelled) {
        return FetchResult::Cancelled;
    }
    if (got.ok() && (got.httpCode < 400 || got.httpCode == 404)) {
        if (page != nullptr) {
            *page = std::move(got.body);
        }
        return FetchResult::Ok;
    }
    return FetchResult::Failed;
}

void TellPageTaken(qint64 bytes) {
    core::Ui& ui = CurrentUi();
    ui.Status(kConnecting);
    ui.Status(Transferring(bytes));
    ui.Status(kDisconnected);
}

namespace {

// A GET through get, told on the status line as it goes, with events let run
// and the user's cancel heard; the body goes to page when one is given.
FetchResult Reported(const std::function<core::NetResult(const core::NetProgress&)>& get,
                     QByteArray* page, long* httpCode) {
    if (httpCode) {
        *httpCode = 0;
    }
    core::Ui& ui = CurrentUi();
    ui.Status(kConnecting);
    FetchResult result = FetchResult::Failed;
    try {
        bool started = false;
        qint64 shown = 0;
        core::NetResult got = get([&ui, &started, &shown](qint64 received, qint64) {
            if (!started) {
                started = true;
                ui.Status(Transferring(0));
            }
            if (received != shown) {
                shown = received;
                ui.Status(Transferring(received));
            }
            ui.PumpEvents();
            return !ui.CancelRequested();
        });
        if (httpCode) {
            *httpCode = got.httpCode;
        }
        result = PageOfAnswer(got, page);
    } catch (const std::exception&) {
        result = FetchResult::Failed;
    }
    ui.Status(kDisconnected);
    return result;
}

}  // namespace

FetchResult FetchPage(const core::NetOptions& options, const QString& url, QByteArray& page,
                      long* httpCode) {
    page.clear();
    return Reported(
        [&](const core::NetProgress& progress) { return core::HttpGet(url, options, progress); },
        &page, httpCode);
}

FetchResult FetchToFile(const core::NetOptions& options, const QString& url, const QString& file,
                        long* httpCode) {
    // The earlier page stays until the new one replaces it in one rename, or
    // is removed when this fetch brings none: never is a page of an earlier
    // fetch left for this one.
    const FetchResult result = Reported(
        [&](const core::NetProgress& progress) {
            return core::HttpGetToFile(url, file, options, progress);
        },
        nullptr, httpCode);
    if (result != FetchResult::Ok) {
        QFile::remove(file);
    }
    return result;
}

FetchResult FetchToFile(Database& db, const QString& url, const QString& file) {
    return FetchToFile(NetOptionsForUser(db), url, file);
}

FetchResult FetchToFile(const QString& url, const QString& file) {
    core::NetOptions options;
    try {
        Database db = core::OpenStoreForReading();
        options = NetOptionsForUser(db);
    } catch (const core::StoreError&) {
        // No database yet: no user, so no proxy either.
    }
    return FetchToFile(options, url, file);
}

RuleFetcher RuleFetcherForUser(Database& db) {
    const core::NetOptions options = NetOptionsForUser(db);
    return [options](const QString& url, const QString& filePath) {
        // Replaced only by a complete answer with a success status, so a
        // failed or refused download leaves the earlier file as it was.
        QByteArray page;
        long httpCode = 0;
        const FetchResult result = FetchPage(options, url, page, &httpCode);
        if (result != FetchResult::Ok || httpCode >= 400) {
            return result == FetchResult::Cancelled ? FetchResult::Cancelled : FetchResult::Failed;
        }
        return core::ReplaceFile(filePath, page) ? FetchResult::Ok : FetchResult::Failed;
    };
}

bool IsConnected(Database& db, const QString& purpose, bool showMessage) {
    core::Statement query = db.Prepare(QStringLiteral(
        "SELECT InternetConnection, ProxyServer, ProxyPort FROM Users ORDER BY rowid LIMIT 1"));
    if (!query.Step()) {
        return false;
    }
    core::NetOptions options;
    const qint64 type = query.Int(QStringLiteral("InternetConnection"));
    if ((type == 3 || type == 4) && !query.IsNull(QStringLiteral("ProxyServer"))) {
        options.proxyHost = query.Text(QStringLiteral("ProxyServer")).trimmed();
        options.proxyPort = query.Text(QStringLiteral("ProxyPort")).trimmed().toInt();
    }
    bool connected = false;
    try {
        connected = core::CanReach(options.proxyHost.isEmpty() ? SiteAddressForTest() : QString(),
                                   options, kConnectTestMs);
    } catch (const std::exception&) {
        connected = false;
    }
    if (!connected && showMessage) {
        CurrentUi().Message(
            QStringLiteral("You need to be connected to your Internet Service Provider to ") +
                purpose + QStringLiteral(".  Please connect and then try again."),
            QStringLiteral("No ISP Connection"), core::Icon::Warning);
    }
    return connected;
}

bool IsConnected(const QString& purpose, bool showMessage) {
    try {
        Database db = core::OpenStore();
        return IsConnected(db, purpose, showMessage);
    } catch (const core::StoreError&) {
        // Without a database there is no user, and without one, no test.
        return false;
    }
}

QString CgiUrl() {
    QString server =
        LookupRuleKey(QStringLiteral("Auction Post"), QStringLiteral("Server"), kSiteStore)
            .trimmed();
    if (server.isEmpty() || server == RuleError()) {
        return {};
    }
    if (!server.contains(QStringLiteral("://"))) {
        server.prepend(QStringLiteral("http://"));
    }
    QUrl url(server);
    if (!url.isValid() || url.host().isEmpty()) {
        return {};
    }
    // A server value with a path of its own names the whole address.
    if (url.path().isEmpty() || url.path() == QStringLiteral("/")) {
        url.setPath(CgiPath());
    }
    return url.toString();
}

QByteArray PostAndWait(Database& db, const QByteArray& body) {
    const QString url = CgiUrl();
    if (url.isEmpty()) {
        return {};
    }
    try {
        const core::NetResult answer = core::HttpPostForm(url, body, NetOptionsForUser(db));
        // Every caller takes an answer as the site's acceptance, so an error
        // page is no answer.
        if (!answer.ok() || answer.httpCode >= 400) {
            return {};
        }
        return answer.body;
    } catch (const std::exception&) {
        return {};
    }
}

// ------------------------------------------------------------- sign-in

QString FetchEncodedPassword(Database& db, const QString& userId, const QString& password) {
    const QStringList names = {QString(),
                               QStringLiteral("MfcISAPICommand"),
                               QStringLiteral("first"),
                               QStringLiteral("userid"),
                               QStringLiteral("pass"),
                               QStringLiteral("dayssince"),
                               QStringLiteral("sellerSort"),
                               QStringLiteral("bidderSort")};
    const QStringList values = {
        QString(), QStringLiteral("MyEbay"), QStringLiteral("Y"), userId,
        password,  QStringLiteral("1"),      QStringLiteral("3"), QStringLiteral("3")};
    const QByteArray answer = PostAndWait(db, BuildPostBody(names, values, 7).toLatin1());
    const QByteArray marker = "&pass=";
    const qsizetype at = answer.indexOf(marker);
    if (at < 0) {
        return {};
    }
    const qsizetype start = at + marker.size();
    const qsizetype end = answer.indexOf('&', start);
    if (end < 0) {
        // A token that runs to the end of the answer was cut by the answer
        // buffer: it cannot be trusted.
        return {};
    }
    return TextOfBytes(answer.mid(start, end - start));
}

bool RefreshEncodedPassword(Database& db) {
    const SiteRow row = ReadSiteRow(db, 0);
    if (!row.found) {
        return false;
    }
    const QString fetched = SignIn(db, row);
    if (fetched.isEmpty()) {
        return false;
    }
    StoreEncodedPassword(db, WithoutCheckCharacter(fetched));
    return true;
}

QString GetEncodedPassword(Database& db) {
    const SiteRow row = ReadSiteRow(db, 0);
    if (!row.found) {
        return {};
    }
    if (!row.encodedPassword.isNull()) {
        return row.encodedPassword.toString();
    }
    const QString fetched = SignIn(db, row);
    if (fetched.isEmpty()) {
        // Left null, so that the next address that needs it asks again.
        return {};
    }
    const QString encoded = WithoutCheckCharacter(fetched);
    StoreEncodedPassword(db, encoded);
    return encoded;
}

// ------------------------------------------------------------- form texts

namespace {

// Appends text as the site's form posts carry it (see UrlEncode): the
// characters of kFormCharacters as it gives them, a known entity as its
// character, every other character as the "%XX" of its code.
void AppendFormText(std::string& out, QStringView text) {
    const qsizetype length = text.size();
    out.reserve(out.size() + static_cast<size_t>(length) * 3);
    qsizetype i = 0;
    while (i < length) {
        const char16_t c = text[i].unicode();
        if (c < kFormCharacters.size() && c != u'&') {
            if (const char plain = kFormCharacters[c]; plain != 0) {
                out.push_back(plain);
            } else {
                AppendByte(out, c);
            }
            ++i;
            continue;
        }
        if (c == u'&') {
            // An entity ends at a ";" within 12 characters behind the "&".
            const qsizetype semicolon =
                text.sliced(i + 1, std::min<qsizetype>(12, length - i - 1)).indexOf(u';');
            if (semicolon >= 0) {
                const QStringView name = text.sliced(i + 1, semicolon);
                if (const std::optional<char32_t> number = EntityNumber(name)) {
                    AppendCodePoint(out, *number);
                    i += semicolon + 2;
                    continue;
                }
                const QString upper = name.toString().toUpper();
                const char* replacement = nullptr;
                if (upper == QLatin1String("QUOT")) {
                    replacement = "%26quot%3B";
                } else if (upper == QLatin1String("AMP")) {
                    replacement = "%26";
                } else if (upper == QLatin1String("NBSP")) {
                    replacement = "%A0";
                } else if (upper == QLatin1String("LT")) {
                    replacement = "%3C";
                } else if (upper == QLatin1String("GT")) {
                    replacement = "%3E";
                }
                if (replacement) {
                    out += replacement;
                    i += semicolon + 2;
                    continue;
                }
            }
            // Any other name: the "&" alone, and the name is encoded as text.
            out += "%26";
            ++i;
            continue;
        }
        if (QChar::isHighSurrogate(c) && i + 1 < length && text[i + 1].isLowSurrogate()) {
            AppendCodePoint(out, QChar::surrogateToUcs4(c, text[i + 1].unicode()));
            ++i;
        } else if (QChar::isSurrogate(c)) {
            AppendCodePoint(out, QChar::ReplacementCharacter);
        } else {
            AppendCodePoint(out, c);
        }
        ++i;
    }
}

// The form text as a string: it is ASCII whatever went in.
QString FormTextString(std::string& encoded) {
    if (encoded.empty()) {
        return {};
    }
    QString text = QString::fromLatin1(encoded.data(), static_cast<qsizetype>(encoded.size()));
    // The bytes may hold a password.
    std::fill(encoded.begin(), encoded.end(), '\0');
    return text;
}

}  // namespace

QString UrlEncode(const QString& text) {
    std::string out;
    AppendFormText(out, text);
    return FormTextString(out);
}

QString BuildPostBody(const QStringList& names, const QStringList& values, int count) {
    const qsizetype last = std::min<qsizetype>(count, values.size() - 1);
    // Room for every slot at once (three bytes a character but for the few
    // beyond U+07FF), so that no copy of the body is left behind unzeroed
    // where it grows.
    qsizetype room = 0;
    for (qsizetype slot = 1; slot <= last; ++slot) {
        room += (names.value(slot).size() + values.at(slot).size()) * 3 + 2;
    }
    std::string body;
    body.reserve(static_cast<size_t>(room));
    for (qsizetype slot = 1; slot <= last; ++slot) {
        const QString& value = values.at(slot);
        if (value.isEmpty()) {
            continue;
        }
        if (!body.empty()) {
            body += '&';
        }
        if (slot < names.size()) {
            AppendFormText(body, names.at(slot));
        }
        body += '=';
        // "$$$" marks a field that must be sent although it has no value.
        if (value != QLatin1String("$$$")) {
            AppendFormText(body, value);
        }
    }
    return FormTextString(body);
}

QString ExtractHiddenFields(const QString& page, const QString& formMarker) {
    // The page is not put on the clipboard for support to look at: a library
    // has no business with the user's clipboard.
    const qsizetype formAt =
        formMarker.isEmpty() ? -1 : page.indexOf(formMarker, 0, Qt::CaseInsensitive);
    if (formAt < 0) {
        return {};
    }
    // Searched without regard to case in the page as it came, so that names
    // and values keep their case and no upper-casing can shift a position.
    qsizetype formEnd = page.indexOf(QStringLiteral("</FORM>"), formAt, Qt::CaseInsensitive);
    if (formEnd < 0) {
        formEnd = page.size();
    }
    const QStringView stretch = QStringView(page).sliced(formAt, formEnd - formAt);

    std::string fields;
    qsizetype from = 0;
    while (true) {
        const qsizetype input =
            stretch.indexOf(QStringLiteral("<INPUT"), from, Qt::CaseInsensitive);
        if (input < 0) {
            break;
        }
        qsizetype tagEnd = stretch.indexOf(u'>', input);
        if (tagEnd < 0) {
            tagEnd = stretch.size();
        }
        from = input + 6;
        const QStringView tag = stretch.sliced(input, tagEnd - input);
        if (!tag.contains(QLatin1String("TYPE=HIDDEN"), Qt::CaseInsensitive) &&
            !tag.contains(QLatin1String("TYPE=\"HIDDEN\""), Qt::CaseInsensitive)) {
            continue;
        }
        const qsizetype nameAt = tag.indexOf(QLatin1String("NAME="), 0, Qt::CaseInsensitive);
        if (nameAt < 0) {
            continue;
        }
        const qsizetype valueAt = tag.indexOf(QLatin1String("VALUE="), 0, Qt::CaseInsensitive);
        fields += '&';
        AppendFormText(fields, ReadTagValue(stretch, input + nameAt + 5, tagEnd));
        fields += '=';
        if (valueAt >= 0) {
            AppendFormText(fields, ReadTagValue(stretch, input + valueAt + 6, tagEnd));
        }
    }
    return FormTextString(fields);
}

}  // namespace lw::update
