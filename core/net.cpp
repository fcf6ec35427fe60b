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

#include "core/net_request.h"

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

using detail::Easy;
using detail::TransferState;

size_t WriteToBody(char* data, size_t size, size_t count, void* user) {
    auto* transfer = static_cast<TransferState*>(user);
    const qint64 length = static_cast<qint64>(size * count);
    const qint64 room = transfer->limit - transfer->body.size();
    if (length > room && transfer->failOverLimit) {
        transfer->tooLong = true;
        return 0;  // anything short of length makes curl stop with a write error
    }
    if (room > 0) {
        transfer->body.append(data, std::min(room, length));
    }
    transfer->received += length;
    return size * count;
}

int OnProgress(void* user, curl_off_t downloadTotal, curl_off_t downloadNow, curl_off_t,
               curl_off_t) {
    auto* transfer = static_cast<TransferState*>(user);
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

// One handle is kept per thread between transfers, with libcurl's cache of
// open connections: the next transfer to the same host reuses the
// connection, so the thousands of pages of an update, asked for one after
// another from one site, cost one connection and not one each. A transfer
// that keeps cookies in a file hands its handle back to libcurl instead,
// which writes the file as it lets the handle go.
thread_local Easy t_spare;

// The lane of this thread's transfers; null: its own connection.
thread_local TransferLane* t_lane = nullptr;

QString ErrorText(CURLcode code, const QString& url) {
    return QString::fromUtf8(curl_easy_strerror(code)) + QStringLiteral(": ") + url;
}

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

// A transfer of this thread, performed here or over its lane.
NetResult Transfer(const TransferSpec& spec, const NetProgress& progress) {
    if (t_lane != nullptr) {
        return t_lane->Run(spec, progress);
    }
    Easy easy = t_spare ? std::move(t_spare) : detail::NewEasy();
    detail::Request request(std::move(easy), spec, progress);
    CURLcode code = CURLE_FAILED_INIT;
    if (request.Handle() != nullptr) {
        do {
            code = curl_easy_perform(request.Handle());
        } while (request.FollowOn(code));
    }
    NetResult result = request.Finish(code);
    t_spare = request.Release();
    return result;
}

}  // namespace

namespace detail {

Easy NewEasy() {
    EnsureCurl();
    return Easy(curl_easy_init());
}

// curl copies string options, so the byte arrays made here may die when
// the constructor returns.
Request::Request(Easy handle, const TransferSpec& spec, const NetProgress& progress)
    : m_easy(std::move(handle)), m_spec(spec) {
    m_state.progress = &progress;
    if (spec.post) {
        m_state.limit = kPostAnswerLimit;
        m_state.failOverLimit = false;
    }
    CURL* e = m_easy.get();
    if (e == nullptr) {
        return;
    }
    const NetOptions& options = spec.options;
    curl_easy_setopt(e, CURLOPT_URL, spec.url.toUtf8().constData());
    curl_easy_setopt(e, CURLOPT_NOSIGNAL, 1L);
    curl_easy_setopt(e, CURLOPT_PROTOCOLS_STR, "http,https");
    curl_easy_setopt(e, CURLOPT_REDIR_PROTOCOLS_STR, "http,https");
    // Redirects are followed by FollowOn, which checks the host of each.
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
    curl_easy_setopt(e, CURLOPT_WRITEDATA, &m_state);
    if (progress) {
        curl_easy_setopt(e, CURLOPT_NOPROGRESS, 0L);
        curl_easy_setopt(e, CURLOPT_XFERINFOFUNCTION, OnProgress);
        curl_easy_setopt(e, CURLOPT_XFERINFODATA, &m_state);
    } else {
        curl_easy_setopt(e, CURLOPT_NOPROGRESS, 1L);
    }
    if (spec.post) {
        const QByteArray typeHeader = "Content-Type: " + spec.contentType;
        m_headers.reset(curl_slist_append(nullptr, typeHeader.constData()));
        if (m_headers) {
            // Without this curl waits for a "100 Continue" that many servers
            // never send before it sends a larger body. Appending keeps the head.
            curl_slist_append(m_headers.get(), "Expect:");
        }
        curl_easy_setopt(e, CURLOPT_HTTPHEADER, m_headers.get());
        curl_easy_setopt(e, CURLOPT_POST, 1L);
        curl_easy_setopt(e, CURLOPT_POSTFIELDSIZE_LARGE,
                         static_cast<curl_off_t>(m_spec.body.size()));
        // Not copied by curl: the body is read from the caller's, which
        // outlives the request.
        curl_easy_setopt(e, CURLOPT_POSTFIELDS, m_spec.body.constData());
    }
}

// A redirect to the host of the address is followed on the same handle, so
// cookies and the connection go along; a post becomes a GET after 301, 302
// and 303, as browsers do; the body of a redirect answer is dropped.
bool Request::FollowOn(CURLcode code) {
    CURL* e = m_easy.get();
    if (e == nullptr || code != CURLE_OK || m_state.failure) {
        return false;
    }
    long httpCode = 0;
    curl_easy_getinfo(e, CURLINFO_RESPONSE_CODE, &httpCode);
    const QString target = IsRedirect(httpCode) ? RedirectTarget(e) : QString();
    if (target.isEmpty()) {
        return false;
    }
    if (!SameHost(m_spec.url, target)) {
        m_redirectError = QStringLiteral("Redirected to another host, not followed: ") + target +
                          QStringLiteral(" (") + m_spec.url + u')';
        return false;
    }
    if (m_redirects >= kMaxRedirects) {
        m_redirectError =
            QStringLiteral("More than %1 redirects: ").arg(kMaxRedirects) + m_spec.url;
        return false;
    }
    ++m_redirects;
    m_state.body.clear();
    m_state.received = 0;
    if (httpCode != 307 && httpCode != 308) {
        curl_easy_setopt(e, CURLOPT_HTTPGET, 1L);
    }
    curl_easy_setopt(e, CURLOPT_URL, target.toUtf8().constData());
    return true;
}

NetResult Request::Finish(CURLcode code) {
    NetResult result;
    if (m_easy == nullptr) {
        result.error = ErrorText(CURLE_FAILED_INIT, m_spec.url);
        return result;
    }
    long httpCode = 0;
    curl_easy_getinfo(m_easy.get(), CURLINFO_RESPONSE_CODE, &httpCode);
    result.httpCode = httpCode;
    result.bytes = m_state.received;
    if (code == CURLE_OK) {
        result.status = NetStatus::Ok;
    } else {
        result.status = (code == CURLE_ABORTED_BY_CALLBACK && m_state.cancelled)
                            ? NetStatus::Cancelled
                            : NetStatus::Failed;
        result.error = ErrorText(code, m_spec.url);
    }
    if (!m_redirectError.isEmpty()) {
        result.status = NetStatus::Failed;
        result.error = m_redirectError;
    }
    if (m_state.tooLong) {
        result.error =
            QStringLiteral("The page is longer than %1 bytes: ").arg(m_state.limit) + m_spec.url;
    }
    if (m_state.failure) {
        std::rethrow_exception(m_state.failure);
    }
    // A page only when it came whole; a post's answer whatever it is.
    if (result.ok() || m_spec.post) {
        result.body = std::move(m_state.body);
    }
    return result;
}

Easy Request::Release() {
    if (!m_easy || !m_spec.options.cookieFile.isEmpty()) {
        m_easy.reset();
        return {};
    }
    curl_easy_reset(m_easy.get());
    return std::move(m_easy);
}

}  // namespace detail

LaneScope::LaneScope(TransferLane& lane) : m_saved(t_lane) {
    t_spare.reset();
    t_lane = &lane;
}

LaneScope::~LaneScope() {
    t_lane = m_saved;
}

NetResult HttpGet(const QString& url, const NetOptions& options, const NetProgress& progress) {
    TransferSpec spec;
    spec.url = url;
    spec.options = options;
    return Transfer(spec, progress);
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
    TransferSpec spec;
    spec.url = url;
    spec.options = options;
    spec.post = true;
    spec.body = body;
    spec.contentType = contentType;
    return Transfer(spec, progress);
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
    const Easy easy = detail::NewEasy();
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
