// SPDX-License-Identifier: GPL-3.0-or-later
// HTTP over libcurl: the page GET into memory or into a file, the form POST
// with its capped answer, and the connection test. It never lets a
// half-written or stale page stand at a target path, never keeps more of an
// answer than the answer buffer holds, and never picks up a proxy from the
// environment: the caller's options are the only source of proxy and
// time-outs.
#include "core/net.h"

#include <curl/curl.h>

#include <QFile>
#include <QUrl>
#include <algorithm>
#include <cstdio>
#include <exception>
#include <memory>

namespace lw::core {

namespace {

// curl_global_init is not thread-safe and must run before any easy handle; a
// function-local static gives exactly one call whichever thread comes first.
struct CurlGlobal {
    CurlGlobal() { curl_global_init(CURL_GLOBAL_DEFAULT); }
    ~CurlGlobal() { curl_global_cleanup(); }
    CurlGlobal(const CurlGlobal&) = delete;
    CurlGlobal& operator=(const CurlGlobal&) = delete;
};

void EnsureCurl() {
    static const CurlGlobal global;
}

struct EasyDeleter {
    void operator()(CURL* easy) const { curl_easy_cleanup(easy); }
};
using Easy = std::unique_ptr<CURL, EasyDeleter>;

struct SlistDeleter {
    void operator()(curl_slist* list) const { curl_slist_free_all(list); }
};
using Slist = std::unique_ptr<curl_slist, SlistDeleter>;

// What the callbacks of one transfer share. The body is collected into
// `body`: a page up to kPageLimit bytes (a longer one fails the transfer), a
// post's answer up to kPostAnswerLimit (the rest is read and dropped).
struct Transfer {
    const NetProgress* progress = nullptr;
    QByteArray* body = nullptr;
    qint64 limit = kPageLimit;
    bool failOverLimit = true;
    qint64 received = 0;
    bool cancelled = false;
    bool tooLong = false;
    // An exception thrown by the caller's progress callback must not unwind
    // through libcurl's C frames; it is held here and thrown again once the
    // transfer has been torn down.
    std::exception_ptr failure;
};

size_t WriteToBody(char* data, size_t size, size_t count, void* user) {
    auto* transfer = static_cast<Transfer*>(user);
    const qint64 length = static_cast<qint64>(size * count);
    const qint64 room = transfer->limit - transfer->body->size();
    if (length > room && transfer->failOverLimit) {
        transfer->tooLong = true;
        return 0;  // anything short of length makes curl stop with a write error
    }
    if (room > 0) {
        transfer->body->append(data, std::min(room, length));
    }
    transfer->received += length;
    return size * count;
}

int OnProgress(void* user, curl_off_t downloadTotal, curl_off_t downloadNow, curl_off_t,
               curl_off_t) {
    auto* transfer = static_cast<Transfer*>(user);
    try {
        if (!(*transfer->progress)(static_cast<qint64>(downloadNow),
                                   static_cast<qint64>(downloadTotal))) {
            transfer->cancelled = true;
            return 1;
        }
    } catch (...) {
        transfer->failure = std::current_exception();
        return 1;
    }
    return 0;
}

// "host:port" for curl; a bare IPv6 address needs its brackets to be told
// apart from the port.
QByteArray HostAndPort(const QString& host, int port) {
    QByteArray out = host.toUtf8();
    if (out.count(':') > 1 && !out.startsWith('[')) {
        out = '[' + out + ']';
    }
    if (port > 0) {
        out += ':' + QByteArray::number(port);
    }
    return out;
}

void SetProxy(CURL* easy, const NetOptions& options) {
    const QString host = options.proxyHost.trimmed();
    if (host.isEmpty()) {
        // An empty string switches proxies off, including any from
        // http_proxy / all_proxy in the environment.
        curl_easy_setopt(easy, CURLOPT_PROXY, "");
        return;
    }
    curl_easy_setopt(easy, CURLOPT_PROXY, HostAndPort(host, options.proxyPort).constData());
    curl_easy_setopt(easy, CURLOPT_PROXYTYPE, static_cast<long>(CURLPROXY_HTTP));
    // no_proxy in the environment would otherwise send some hosts around
    // the proxy the user asked for.
    curl_easy_setopt(easy, CURLOPT_NOPROXY, "");
}

// Options every transfer shares. curl copies string options, so the byte
// arrays made here may die when this returns.
// One handle is kept per thread between transfers, with libcurl's cache of
// open connections: the next transfer to the same host reuses the
// connection, so the thousands of pages of an update, asked for one after
// another from one site, cost one connection and not one each. A transfer
// that keeps cookies in a file hands its handle back to libcurl instead,
// which writes the file as it lets the handle go.
thread_local Easy t_spare;

Easy TakeEasy() {
    EnsureCurl();
    if (t_spare) {
        return std::move(t_spare);
    }
    return Easy(curl_easy_init());
}

void GiveBack(Easy easy, const NetOptions& options) {
    if (easy && options.cookieFile.isEmpty()) {
        curl_easy_reset(easy.get());
        t_spare = std::move(easy);
    }
}

Easy NewTransfer(const QString& url, const NetOptions& options, Transfer& transfer) {
    Easy easy = TakeEasy();
    if (!easy) {
        return easy;
    }
    CURL* e = easy.get();
    curl_easy_setopt(e, CURLOPT_URL, url.toUtf8().constData());
    curl_easy_setopt(e, CURLOPT_NOSIGNAL, 1L);
    curl_easy_setopt(e, CURLOPT_PROTOCOLS_STR, "http,https");
    curl_easy_setopt(e, CURLOPT_REDIR_PROTOCOLS_STR, "http,https");
    // Redirects are followed by Perform, which checks the host of each.
    curl_easy_setopt(e, CURLOPT_FOLLOWLOCATION, 0L);
    curl_easy_setopt(e, CURLOPT_CONNECTTIMEOUT_MS, static_cast<long>(options.connectTimeoutMs));
    curl_easy_setopt(e, CURLOPT_TIMEOUT_MS, static_cast<long>(std::max(0, options.totalTimeoutMs)));
    if (options.stallTimeoutSec > 0) {
        // Less than one byte a second over the whole time: nothing came.
        curl_easy_setopt(e, CURLOPT_LOW_SPEED_LIMIT, 1L);
        curl_easy_setopt(e, CURLOPT_LOW_SPEED_TIME, static_cast<long>(options.stallTimeoutSec));
    }
    curl_easy_setopt(e, CURLOPT_USERAGENT, options.userAgent.toUtf8().constData());
    SetProxy(e, options);
    if (!options.cookieFile.isEmpty()) {
        curl_easy_setopt(e, CURLOPT_COOKIEFILE, options.cookieFile.constData());
        curl_easy_setopt(e, CURLOPT_COOKIEJAR, options.cookieFile.constData());
    }
    curl_easy_setopt(e, CURLOPT_WRITEFUNCTION, WriteToBody);
    curl_easy_setopt(e, CURLOPT_WRITEDATA, &transfer);
    if (transfer.progress && *transfer.progress) {
        curl_easy_setopt(e, CURLOPT_NOPROGRESS, 0L);
        curl_easy_setopt(e, CURLOPT_XFERINFOFUNCTION, OnProgress);
        curl_easy_setopt(e, CURLOPT_XFERINFODATA, &transfer);
    } else {
        curl_easy_setopt(e, CURLOPT_NOPROGRESS, 1L);
    }
    return easy;
}

QString ErrorText(CURLcode code, const QString& url) {
    return QString::fromUtf8(curl_easy_strerror(code)) + QStringLiteral(": ") + url;
}

NetResult Outcome(CURL* easy, CURLcode code, const QString& url, const Transfer& transfer) {
    NetResult result;
    long httpCode = 0;
    curl_easy_getinfo(easy, CURLINFO_RESPONSE_CODE, &httpCode);
    result.httpCode = httpCode;
    result.bytes = transfer.received;
    if (code == CURLE_OK) {
        result.status = NetStatus::Ok;
    } else {
        result.status = (code == CURLE_ABORTED_BY_CALLBACK && transfer.cancelled)
                            ? NetStatus::Cancelled
                            : NetStatus::Failed;
        result.error = ErrorText(code, url);
    }
    return result;
}

NetResult NoHandle(const QString& url) {
    NetResult result;
    result.error = ErrorText(CURLE_FAILED_INIT, url);
    return result;
}

}  // namespace

namespace {

bool IsRedirect(long httpCode) {
    return httpCode == 301 || httpCode == 302 || httpCode == 303 || httpCode == 307 ||
           httpCode == 308;
}

// The place a redirect answer points to; empty when it names none.
QString RedirectTarget(CURL* easy) {
    char* target = nullptr;
    if (curl_easy_getinfo(easy, CURLINFO_REDIRECT_URL, &target) != CURLE_OK || target == nullptr) {
        return {};
    }
    return QString::fromUtf8(target);
}

bool SameHost(const QString& first, const QString& second) {
    const QString a = QUrl(first).host();
    return !a.isEmpty() && a.compare(QUrl(second).host(), Qt::CaseInsensitive) == 0;
}

// Runs a prepared transfer and hands its handle back; a callback's exception
// is thrown again here, outside libcurl. A redirect to the host of the
// address is followed on the same handle, so cookies and the connection go
// along; a post becomes a GET after 301, 302 and 303, as browsers do; the
// body of a redirect answer is dropped.
NetResult Perform(Easy easy, const QString& url, const NetOptions& options, Transfer& transfer) {
    CURL* e = easy.get();
    CURLcode code = curl_easy_perform(e);
    QString redirectError;
    for (int redirects = 0; code == CURLE_OK && !transfer.failure; ++redirects) {
        long httpCode = 0;
        curl_easy_getinfo(e, CURLINFO_RESPONSE_CODE, &httpCode);
        const QString target = IsRedirect(httpCode) ? RedirectTarget(e) : QString();
        if (target.isEmpty()) {
            break;
        }
        if (!SameHost(url, target)) {
            redirectError = QStringLiteral("Redirected to another host, not followed: ") + target +
                            QStringLiteral(" (") + url + u')';
            break;
        }
        if (redirects >= kMaxRedirects) {
            redirectError = QStringLiteral("More than %1 redirects: ").arg(kMaxRedirects) + url;
            break;
        }
        transfer.body->clear();
        transfer.received = 0;
        if (httpCode != 307 && httpCode != 308) {
            curl_easy_setopt(e, CURLOPT_HTTPGET, 1L);
        }
        curl_easy_setopt(e, CURLOPT_URL, target.toUtf8().constData());
        code = curl_easy_perform(e);
    }
    NetResult result = Outcome(e, code, url, transfer);
    if (!redirectError.isEmpty()) {
        result.status = NetStatus::Failed;
        result.error = redirectError;
    }
    if (transfer.tooLong) {
        result.error =
            QStringLiteral("The page is longer than %1 bytes: ").arg(transfer.limit) + url;
    }
    GiveBack(std::move(easy), options);
    if (transfer.failure) {
        std::rethrow_exception(transfer.failure);
    }
    return result;
}

}  // namespace

NetResult HttpGet(const QString& url, const NetOptions& options, const NetProgress& progress) {
    QByteArray page;
    Transfer transfer;
    transfer.progress = &progress;
    transfer.body = &page;
    Easy easy = NewTransfer(url, options, transfer);
    if (!easy) {
        return NoHandle(url);
    }
    NetResult result = Perform(std::move(easy), url, options, transfer);
    if (result.ok()) {
        result.body = std::move(page);
    }
    return result;
}

bool ReplaceFile(const QString& path, const QByteArray& bytes, QString* error) {
    // Written beside the target and renamed onto it, so that no half file is
    // ever read. Unlike QSaveFile it does not force the data to disk: these
    // are pages and rule downloads that the next run fetches again.
    const QString partial = path + QStringLiteral(".part");
    QFile file(partial);
    bool written = file.open(QIODevice::WriteOnly | QIODevice::Truncate) &&
                   file.write(bytes) == bytes.size() && file.flush();
    if (!written && error != nullptr) {
        *error = file.errorString();
    }
    file.close();
    // rename(2) replaces an earlier file in one step.
    if (written && std::rename(QFile::encodeName(partial).constData(),
                               QFile::encodeName(path).constData()) != 0) {
        written = false;
        if (error != nullptr) {
            *error = QStringLiteral("cannot rename ") + partial;
        }
    }
    if (!written) {
        QFile::remove(partial);
    }
    return written;
}

NetResult HttpGetToFile(const QString& url, const QString& filePath, const NetOptions& options,
                        const NetProgress& progress) {
    const auto cannotWrite = [&](const QString& why) -> QString {
        return QStringLiteral("Cannot write ") + filePath + QStringLiteral(": ") + why +
               QStringLiteral(" (") + url + QLatin1Char(')');
    };
    NetResult result;
    {
        // Nothing is fetched that could not be kept.
        QFile probe(filePath + QStringLiteral(".part"));
        if (!probe.open(QIODevice::WriteOnly | QIODevice::Truncate)) {
            result.error = cannotWrite(probe.errorString());
        }
    }
    if (result.error.isEmpty()) {
        try {
            result = HttpGet(url, options, progress);
        } catch (...) {
            QFile::remove(filePath + QStringLiteral(".part"));
            QFile::remove(filePath);
            throw;
        }
        QString error;
        if (result.ok() && !ReplaceFile(filePath, result.body, &error)) {
            result.status = NetStatus::Failed;
            result.error = cannotWrite(error);
        }
        result.body.clear();
    }
    if (!result.ok()) {
        // Neither a part nor the page from an earlier run may pass for this one.
        QFile::remove(filePath + QStringLiteral(".part"));
        QFile::remove(filePath);
    }
    return result;
}

NetResult HttpPostForm(const QString& url, const QByteArray& body, const NetOptions& options,
                       const NetProgress& progress, const QByteArray& contentType) {
    QByteArray answer;
    Transfer transfer;
    transfer.progress = &progress;
    transfer.body = &answer;
    transfer.limit = kPostAnswerLimit;
    transfer.failOverLimit = false;
    Easy easy = NewTransfer(url, options, transfer);
    if (!easy) {
        return NoHandle(url);
    }
    CURL* e = easy.get();
    const QByteArray typeHeader = "Content-Type: " + contentType;
    const Slist headers(curl_slist_append(nullptr, typeHeader.constData()));
    if (headers) {
        // Without this curl waits for a "100 Continue" that many servers
        // never send before it sends a larger body. Appending keeps the head.
        curl_slist_append(headers.get(), "Expect:");
    }
    curl_easy_setopt(e, CURLOPT_HTTPHEADER, headers.get());
    curl_easy_setopt(e, CURLOPT_POST, 1L);
    curl_easy_setopt(e, CURLOPT_POSTFIELDSIZE_LARGE, static_cast<curl_off_t>(body.size()));
    curl_easy_setopt(e, CURLOPT_POSTFIELDS, body.constData());
    NetResult result = Perform(std::move(easy), url, options, transfer);
    result.body = std::move(answer);
    return result;
}

bool CanReach(const QString& url, const NetOptions& options, int timeoutMs) {
    QString host;
    int port = 0;
    const QString proxyHost = options.proxyHost.trimmed();
    if (!proxyHost.isEmpty()) {
        host = proxyHost;
        port = options.proxyPort > 0 ? options.proxyPort : 1080;  // curl's own default
    } else {
        QUrl parsed(url.trimmed());
        if (parsed.host().isEmpty()) {
            parsed = QUrl(QStringLiteral("http://") + url.trimmed());
        }
        host = parsed.host();
        const bool secure =
            parsed.scheme().compare(QLatin1String("https"), Qt::CaseInsensitive) == 0;
        port = parsed.port(secure ? 443 : 80);
    }
    if (host.isEmpty()) {
        return false;
    }
    EnsureCurl();
    const Easy easy(curl_easy_init());
    if (!easy) {
        return false;
    }
    // A plain http address to host:port makes CONNECT_ONLY stop after the TCP
    // connection: no TLS handshake, no request, no proxy in between.
    const QByteArray target = "http://" + HostAndPort(host, port) + '/';
    const long timeout = static_cast<long>(timeoutMs > 0 ? timeoutMs : options.connectTimeoutMs);
    CURL* e = easy.get();
    curl_easy_setopt(e, CURLOPT_URL, target.constData());
    curl_easy_setopt(e, CURLOPT_CONNECT_ONLY, 1L);
    curl_easy_setopt(e, CURLOPT_NOSIGNAL, 1L);
    curl_easy_setopt(e, CURLOPT_PROXY, "");
    curl_easy_setopt(e, CURLOPT_CONNECTTIMEOUT_MS, timeout);
    curl_easy_setopt(e, CURLOPT_TIMEOUT_MS, timeout);
    return curl_easy_perform(e) == CURLE_OK;
}

QString CurlVersion() {
    const curl_version_info_data* info = curl_version_info(CURLVERSION_NOW);
    return info != nullptr && info->version != nullptr ? QString::fromLatin1(info->version)
                                                       : QString();
}

}  // namespace lw::core
