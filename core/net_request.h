// SPDX-License-Identifier: GPL-3.0-or-later
// One transfer of core/net as both of its drivers perform it: the handle set
// up from a TransferSpec, what its callbacks share, the redirects followed
// on it and the result. The blocking functions of net.h perform a request on
// the calling thread; a TransferPool performs many side by side on its own.
#pragma once

#include <curl/curl.h>

#include <QByteArray>
#include <QString>
#include <exception>
#include <memory>

#include "core/net.h"

namespace lw::core::detail {

struct EasyDeleter {
    void operator()(CURL* easy) const { curl_easy_cleanup(easy); }
};
using Easy = std::unique_ptr<CURL, EasyDeleter>;

struct SlistDeleter {
    void operator()(curl_slist* list) const { curl_slist_free_all(list); }
};
using Slist = std::unique_ptr<curl_slist, SlistDeleter>;

// A new handle, libcurl set up first; null when libcurl has none to give.
Easy NewEasy();

// What the callbacks of one transfer share. The body is collected into
// `body`: a page up to kPageLimit bytes (a longer one fails the transfer), a
// post's answer up to kPostAnswerLimit (the rest is read and dropped).
struct TransferState {
    const NetProgress* progress = nullptr;
    QByteArray body;
    qint64 limit = kPageLimit;
    bool failOverLimit = true;
    qint64 received = 0;
    bool cancelled = false;
    bool tooLong = false;
    // An exception thrown by the caller's progress callback must not unwind
    // through libcurl's C frames; it is held here and thrown again once the
    // transfer has ended.
    std::exception_ptr failure;
};

class Request {
public:
    // handle: a new handle or one reset after an earlier request; the
    // request fails at once without one. spec and progress (which may be
    // empty) must outlive the request: libcurl reads a post's body from the
    // spec as it sends it.
    Request(Easy handle, const TransferSpec& spec, const NetProgress& progress);
    Request(const Request&) = delete;
    Request& operator=(const Request&) = delete;

    // Null when the request had no handle.
    CURL* Handle() const { return m_easy.get(); }
    // After a step of the transfer ended with code: true when it goes on, to
    // the target of a redirect on the address's own host, and the handle is
    // to be performed again.
    bool FollowOn(CURLcode code);
    // The result once the last step ended with code: the page of a GET that
    // went well, the (capped) answer of a post. An exception of the progress
    // callback is thrown again here.
    NetResult Finish(CURLcode code);
    // The handle for a later request, reset; null when it has to go (libcurl
    // writes a cookie file as it lets its handle go).
    Easy Release();

private:
    Easy m_easy;
    const TransferSpec& m_spec;
    TransferState m_state;
    Slist m_headers;
    int m_redirects = 0;
    QString m_redirectError;
};

}  // namespace lw::core::detail
