// SPDX-License-Identifier: GPL-3.0-or-later
// A stand-in for an update's transfer pool, for the suites that test which
// pages are fetched when without a network: a thread per connection takes
// the next transfer from the source and answers it through a function of the
// test's own.
#pragma once

#include <QByteArray>
#include <QString>
#include <functional>

#include "update/page_prefetcher.h"

namespace lw::test {

// Answers url into page. stopped() turns true once the transfer is to be
// given up; a fetch that sees it returns Cancelled.
using FakeFetch = std::function<update::FetchResult(const QString& url, QByteArray& page,
                                                    const std::function<bool()>& stopped)>;

update::Connect FakeConnections(FakeFetch fetch);

}  // namespace lw::test
