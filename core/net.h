// SPDX-License-Identifier: GPL-3.0-or-later
// HTTP for the whole program, over libcurl: a GET of a page into memory or a
// file with progress and abort, a form POST whose answer is kept up to the size of
// the answer buffer, and the short connection test. Proxy and time-outs come
// from the caller; a thread may hand its transfers to a lane of connections
// kept elsewhere (a TransferPool's, in an update). It knows no site and no
// rule file.
#pragma once

#include <QByteArray>
#include <QString>
#include <functional>

namespace lw::core {

struct NetOptions {
    QString proxyHost;  // empty: direct
    int proxyPort = 0;
    int connectTimeoutMs = 15000;
    int totalTimeoutMs = 300000;  // 0: none
    // A transfer that receives no byte for this many seconds is dropped at
    // once, whatever time the total allows; 0: never.
    int stallTimeoutSec = 60;
    QString userAgent = QStringLiteral("Lotwright/0.1");
    QByteArray cookieFile;  // empty: no cookie jar
};

enum class NetStatus { Ok, Failed, Cancelled };

struct NetResult {
    NetStatus status = NetStatus::Failed;
    long httpCode = 0;  // 0 when no answer came
    QString error;      // for the log and the message; empty on Ok
    qint64 bytes = 0;   // bytes received
    QByteArray body;    // the page of HttpGet; the answer of a POST, capped
    bool ok() const { return status == NetStatus::Ok; }
};

// The answer to a form post is kept up to this many characters; the rest is
// dropped, as the site's answer buffer always has been.
inline constexpr qint64 kPostAnswerLimit = 75000;

// A page of more bytes than this fails rather than fill the memory.
inline constexpr qint64 kPageLimit = qint64{256} * 1024 * 1024;

// Redirects are followed only to the host the address named, and at most this
// many for one request; a redirect to any other host fails the transfer, so
// that nothing the program sends reaches a host it was not given.
inline constexpr int kMaxRedirects = 10;

// Called while data arrives; return false to abort (the result is Cancelled).
using NetProgress = std::function<bool(qint64 received, qint64 total)>;

// GET url into memory: the body whatever the HTTP status (a 404 page is a page
// the caller may look at); on a failure or a cancel the body is empty.
NetResult HttpGet(const QString& url, const NetOptions& options, const NetProgress& progress = {});

// Writes bytes to path through a file beside it renamed onto it, so no half
// file ever stands at path. False, with the reason in error, when it cannot.
bool ReplaceFile(const QString& path, const QByteArray& bytes, QString* error = nullptr);

// GET url into filePath. The body is written whatever the HTTP status (a 404
// page is a page the caller may look at); on a transport failure or a cancel
// the file does not exist afterwards, so no stale page can be read.
NetResult HttpGetToFile(const QString& url, const QString& filePath, const NetOptions& options,
                        const NetProgress& progress = {});

// POST an already encoded body ("a=1&b=2") and return the answer.
NetResult HttpPostForm(const QString& url, const QByteArray& body, const NetOptions& options,
                       const NetProgress& progress = {},
                       const QByteArray& contentType = "application/x-www-form-urlencoded");

// True when a TCP connection to the host of url (or to the proxy, when one is
// set) opens within timeoutMs.
bool CanReach(const QString& url, const NetOptions& options, int timeoutMs = 5000);

// The version of the libcurl the program runs with, as "8.5.0".
QString CurlVersion();

// One transfer as HttpGet and HttpPostForm describe it, for whatever
// performs it: a GET of a page into memory, or a form POST with its body.
struct TransferSpec {
    QString url;
    NetOptions options;
    bool post = false;
    QByteArray body;         // of a post, already encoded
    QByteArray contentType;  // of a post
};

// Where the transfers of a thread go while it has a lane: the lane performs
// each on a connection it keeps, and the thread only waits for the end. An
// update gives its thread a lane, so that every transfer of the run, pages
// and posts alike, goes over the few connections the run keeps to the site.
class TransferLane {
public:
    virtual ~TransferLane() = default;
    // Performs the transfer and returns once it has ended, with the result
    // HttpGet or HttpPostForm would have given. Meanwhile progress runs on the
    // calling thread at each piece of news and whenever the caller's events
    // run; false from it stops the transfer (Cancelled). An exception of
    // progress comes out here, after the transfer has ended.
    virtual NetResult Run(const TransferSpec& spec, const NetProgress& progress) = 0;
};

// For its lifetime, the transfers the calling thread starts (HttpGet,
// HttpGetToFile, HttpPostForm) go over lane, their progress told on this
// thread as ever. The thread's own idle connection is closed at the start,
// so that the lane's are the only ones the program holds.
class LaneScope {
public:
    explicit LaneScope(TransferLane& lane);
    ~LaneScope();
    LaneScope(const LaneScope&) = delete;
    LaneScope& operator=(const LaneScope&) = delete;

private:
    TransferLane* m_saved;
};

}  // namespace lw::core
