// SPDX-License-Identifier: GPL-3.0-or-later
// The page prefetcher against connections that answer through a fetch of
// its own: pages come in the order asked, never more than the depth ahead of
// the taker, each fetched once; what is not taken as asked is dropped; a page
// asked for early is fetched before what was asked before it and told once
// it has come; a page asked for first goes before everything; the lane's
// transfers start before any page waiting, with their news told on the
// caller's thread; a taker that gives up gets Cancelled and the transfer
// under way is told to stop; pages asked for later are kept apart until
// promoted; a taker asleep is told a page asked for early once nothing else
// is left to start.
#include <gtest/gtest.h>

#include <QByteArray>
#include <QString>
#include <QStringList>
#include <algorithm>
#include <atomic>
#include <chrono>
#include <condition_variable>
#include <memory>
#include <mutex>
#include <stdexcept>
#include <thread>

#include "tests/support/fake_connections.h"
#include "update/page_prefetcher.h"
#include "update/scanner.h"

using lw::test::FakeConnections;
using lw::update::FetchResult;
using lw::update::PagePrefetcher;
using namespace Qt::StringLiterals;

namespace {

// A fetch that answers "page of URL", fails for addresses that start with
// "bad", and can be held until released. It counts what it was asked, and
// the most pages fetched and not yet taken at any one time.
class FakeSite {
public:
    lw::update::Connect Fetch() {
        return FakeConnections(
            [this](const QString& url, QByteArray& page, const std::function<bool()>& stopped) {
                std::unique_lock lock(m_mutex);
                m_asked << url;
                m_started.notify_all();
                m_maxAhead = std::max(m_maxAhead, m_asked.size() - m_taken);
                bool stop = false;
                while ((m_holding || m_heldUrls.contains(url)) && !(stop = stopped())) {
                    m_release.wait_for(lock, std::chrono::milliseconds(2));
                }
                if (stop) {
                    ++m_stopped;
                    m_started.notify_all();
                    return FetchResult::Cancelled;
                }
                if (url.startsWith(u"slow"_s)) {
                    lock.unlock();
                    std::this_thread::sleep_for(std::chrono::milliseconds(30));
                    lock.lock();
                }
                if (url.startsWith(u"bad"_s)) {
                    return FetchResult::Failed;
                }
                page = "page of " + url.toUtf8();
                return FetchResult::Ok;
            });
    }
    void Hold() {
        const std::lock_guard lock(m_mutex);
        m_holding = true;
    }
    void Release() {
        {
            const std::lock_guard lock(m_mutex);
            m_holding = false;
        }
        m_release.notify_all();
    }
    // Holds one address until it is let go, whatever Hold says.
    void HoldUrl(const QString& url) {
        const std::lock_guard lock(m_mutex);
        m_heldUrls << url;
    }
    void ReleaseUrl(const QString& url) {
        {
            const std::lock_guard lock(m_mutex);
            m_heldUrls.removeAll(url);
        }
        m_release.notify_all();
    }
    void Taken() {
        const std::lock_guard lock(m_mutex);
        ++m_taken;
    }
    // Waits until n addresses have been asked for.
    bool WaitForAsked(qsizetype n) {
        std::unique_lock lock(m_mutex);
        return m_started.wait_for(lock, std::chrono::seconds(10),
                                  [&] { return m_asked.size() >= n; });
    }
    // Waits until n transfers have seen their stop.
    bool WaitForStopped(int n) {
        std::unique_lock lock(m_mutex);
        return m_started.wait_for(lock, std::chrono::seconds(10), [&] { return m_stopped >= n; });
    }
    QStringList Asked() {
        const std::lock_guard lock(m_mutex);
        return m_asked;
    }
    qsizetype MaxAhead() {
        const std::lock_guard lock(m_mutex);
        return m_maxAhead;
    }
    int Stopped() {
        const std::lock_guard lock(m_mutex);
        return m_stopped;
    }

private:
    std::mutex m_mutex;
    std::condition_variable m_started;
    std::condition_variable m_release;
    QStringList m_asked;
    QStringList m_heldUrls;
    qsizetype m_taken = 0;
    qsizetype m_maxAhead = 0;
    bool m_holding = false;
    int m_stopped = 0;
};

QStringList Addresses(int n, const char* prefix = "item") {
    QStringList urls;
    for (int i = 0; i < n; ++i) {
        urls << QString::fromLatin1(prefix) + QString::number(i);
    }
    return urls;
}

}  // namespace

// Over one connection the pages are fetched in the order asked and never more
// than the depth ahead; over two, a page that comes late is still taken in its
// place. A failed page is told as such, with nothing in it.
TEST(PagePrefetcher, PagesComeInOrderEachFetchedOnceAndNeverBeyondTheDepth) {
    const struct {
        const char* name;
        int depth;
        int connections;
        QStringList urls;
    } cases[] = {
        {"one connection", 3, 1, Addresses(20) << u"bad0"_s},
        {"two connections, some pages slow", 4, 2,
         QStringList{u"slow0"_s, u"item1"_s, u"item2"_s, u"item3"_s, u"slow4"_s, u"item5"_s,
                     u"item6"_s, u"item7"_s, u"slow8"_s, u"item9"_s, u"bad10"_s, u"item11"_s}},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        FakeSite site;
        PagePrefetcher ahead({}, site.Fetch(), c.depth, c.connections);
        ahead.Ask(c.urls);
        for (const QString& url : c.urls) {
            QByteArray page;
            const auto result = ahead.Take(url, page);
            site.Taken();
            ASSERT_TRUE(result.has_value()) << url.toStdString();
            if (url.startsWith(u"bad"_s)) {
                EXPECT_EQ(*result, FetchResult::Failed);
                EXPECT_TRUE(page.isEmpty());
            } else {
                EXPECT_EQ(*result, FetchResult::Ok);
                EXPECT_EQ(page, "page of " + url.toUtf8());
            }
        }
        EXPECT_EQ(ahead.Waiting(), 0);
        QStringList asked = site.Asked();
        if (c.connections == 1) {
            EXPECT_EQ(asked, c.urls);
            // The depth fetched ahead at most, and the one the taker waits for.
            EXPECT_LE(site.MaxAhead(), c.depth + 1);
        }
        // Each once, whichever connection took it.
        asked.sort();
        QStringList expected = c.urls;
        expected.sort();
        EXPECT_EQ(asked, expected);
    }
}

TEST(PagePrefetcher, DroppingLetsTheTransfersUnderWayEndAndKeepsNoneOfTheirPages) {
    FakeSite site;
    site.Hold();
    PagePrefetcher ahead({}, site.Fetch(), 4, 2);
    ahead.Ask(Addresses(4));
    ASSERT_TRUE(site.WaitForAsked(2));
    ahead.Drop();
    EXPECT_EQ(ahead.Waiting(), 0);
    // The two under way end over their own connections; nothing dropped is
    // fetched afterwards, and a new address is.
    site.Release();
    ahead.Ask({u"after"_s});
    QByteArray page;
    EXPECT_EQ(ahead.Take(u"after"_s, page), FetchResult::Ok);
    EXPECT_EQ(page, QByteArray("page of after"));
    EXPECT_EQ(site.Stopped(), 0);
    EXPECT_EQ(site.Asked().size(), 3);
    EXPECT_EQ(ahead.Waiting(), 0);
}

// Pages of what comes after the present part: fetched in their turn, kept
// when the present part's pages are taken past them or dropped, and taken
// only once promoted.
TEST(PagePrefetcher, PagesAskedForLaterOutliveThePresentPartAndAreTakenOncePromoted) {
    FakeSite site;
    PagePrefetcher ahead({}, site.Fetch(), 16, 2);
    ahead.Ask({u"now1"_s, u"now2"_s});
    ahead.Ask({u"next1"_s, u"next2"_s}, true);
    ahead.AskEarly(u"next-list"_s, true);
    ahead.Ask({u"now3"_s, u"now4"_s});
    QByteArray page;
    // Not yet the run's to take.
    EXPECT_FALSE(ahead.Take(u"next1"_s, page).has_value());
    // now1 and now2 are passed over and dropped; the later pages stay.
    EXPECT_EQ(ahead.Take(u"now3"_s, page), FetchResult::Ok);
    EXPECT_EQ(ahead.Waiting(), 4);
    ahead.DropPresent();
    EXPECT_EQ(ahead.Waiting(), 3);
    EXPECT_FALSE(ahead.Take(u"now4"_s, page).has_value());
    ahead.Promote();
    for (const char* url : {"next1", "next2", "next-list"}) {
        EXPECT_EQ(ahead.Take(QLatin1String(url), page), FetchResult::Ok) << url;
        EXPECT_EQ(page, "page of " + QByteArray(url));
    }
    EXPECT_EQ(ahead.Waiting(), 0);
    // Each later page was fetched once, although the present part was taken
    // past them and dropped around them.
    QStringList asked = site.Asked();
    for (const char* url : {"next1", "next2", "next-list"}) {
        EXPECT_EQ(asked.count(QLatin1String(url)), 1) << url;
    }
}

TEST(PagePrefetcher, PagesHeldAheadStayWithinTheirBytes) {
    FakeSite site;
    // Each page is 13 bytes: two held let a third start, three do not.
    PagePrefetcher ahead({}, site.Fetch(), 32, 1, 30);
    const QStringList urls = Addresses(8);
    ahead.Ask(urls);
    ASSERT_TRUE(site.WaitForAsked(3));
    std::this_thread::sleep_for(std::chrono::milliseconds(50));
    EXPECT_EQ(site.Asked().size(), 3);
    for (const QString& url : urls) {
        QByteArray page;
        EXPECT_EQ(ahead.Take(url, page), FetchResult::Ok);
        EXPECT_EQ(page, "page of " + url.toUtf8());
    }
    EXPECT_EQ(site.Asked(), urls);
}

TEST(PagePrefetcher, TakingFollowsTheAskedOrderAndAnAddressNotAskedForIsLeftToTheCaller) {
    FakeSite site;
    PagePrefetcher ahead({}, site.Fetch(), 8);
    // One item page asked for twice in a row, as two protocols of one
    // record read it.
    ahead.Ask({u"a"_s, u"b"_s, u"c"_s, u"c"_s, u"d"_s});
    QByteArray page;
    EXPECT_FALSE(ahead.Take(u"elsewhere"_s, page).has_value());
    EXPECT_EQ(ahead.Waiting(), 5);
    // Needed now: taken without dropping what was asked before it.
    ahead.AskFirst(u"elsewhere"_s);
    EXPECT_EQ(ahead.Take(u"elsewhere"_s, page), FetchResult::Ok);
    EXPECT_EQ(page, QByteArray("page of elsewhere"));
    EXPECT_EQ(ahead.Waiting(), 5);
    EXPECT_EQ(ahead.Take(u"a"_s, page), FetchResult::Ok);
    EXPECT_EQ(page, QByteArray("page of a"));
    // Taking a later address drops the ones before it; the same address
    // comes twice.
    EXPECT_EQ(ahead.Take(u"c"_s, page), FetchResult::Ok);
    EXPECT_EQ(ahead.Waiting(), 2);
    EXPECT_EQ(ahead.Take(u"c"_s, page), FetchResult::Ok);
    EXPECT_EQ(page, QByteArray("page of c"));
    // "b" is gone: taking it now is the caller's own fetch.
    EXPECT_FALSE(ahead.Take(u"b"_s, page).has_value());
    EXPECT_EQ(ahead.Take(u"d"_s, page), FetchResult::Ok);
    EXPECT_EQ(ahead.Waiting(), 0);
}

TEST(PagePrefetcher, APageAskedForEarlyGoesBeforeThePagesAskedBeforeItAndIsToldOnceItCame) {
    FakeSite site;
    site.Hold();
    PagePrefetcher ahead({}, site.Fetch(), 8, 1);
    const std::thread::id taker = std::this_thread::get_id();
    QStringList told;
    bool toldHere = true;
    ahead.SetArrival([&](const QString& url, const QByteArray& page, FetchResult result) {
        told << url + u": "_s + QString::fromUtf8(page);
        toldHere = toldHere && std::this_thread::get_id() == taker && result == FetchResult::Ok;
    });
    const QStringList items = Addresses(4);
    ahead.Ask(items);
    ahead.AskEarly(u"list1"_s);
    ASSERT_TRUE(site.WaitForAsked(1));
    site.Release();
    // The first item was under way; the early page goes next, before the
    // items that wait (those the taker needs now come first: it takes none
    // until then).
    ASSERT_TRUE(site.WaitForAsked(2));
    QByteArray page;
    for (const QString& url : items) {
        EXPECT_EQ(ahead.Take(url, page), FetchResult::Ok);
    }
    EXPECT_EQ(site.Asked(),
              (QStringList{u"item0"_s, u"list1"_s, u"item1"_s, u"item2"_s, u"item3"_s}));
    EXPECT_EQ(told, QStringList{u"list1: page of list1"_s});
    EXPECT_TRUE(toldHere);
    // It is still taken in its place, and told no more.
    EXPECT_EQ(ahead.Take(u"list1"_s, page), FetchResult::Ok);
    EXPECT_EQ(page, QByteArray("page of list1"));
    EXPECT_EQ(told.size(), 1);
}

// The taker sleeps for a page that does not come; a page asked for early
// comes meanwhile and nothing else is left to start: the taker is woken to
// be told it, as the pages it brings are what the connections wait for.
TEST(PagePrefetcher, ASleepingTakerIsToldAnEarlyPageOnceNothingElseIsLeftToStart) {
    FakeSite site;
    site.HoldUrl(u"held"_s);
    std::atomic<bool> toldWhileHeld = false;
    std::atomic<bool> late = false;  // the watchdog let the held page go
    PagePrefetcher ahead({}, site.Fetch(), 8, 2, qint64{1} << 20, [](lw::core::Wakeup& wakeup) {
        wakeup.Wait();
        return true;
    });
    ahead.SetArrival([&](const QString& url, const QByteArray&, FetchResult) {
        if (url == u"list"_s) {
            toldWhileHeld = !late;
            site.ReleaseUrl(u"held"_s);
        }
    });
    ahead.Ask({u"held"_s});
    ahead.AskEarly(u"list"_s);
    // Should the taker never be told, the held page comes after all, late.
    std::atomic<bool> done = false;
    std::thread watchdog([&] {
        for (int i = 0; i < 1000 && !done; ++i) {
            std::this_thread::sleep_for(std::chrono::milliseconds(10));
        }
        late = !done;
        site.ReleaseUrl(u"held"_s);
    });
    QByteArray page;
    EXPECT_EQ(ahead.Take(u"held"_s, page), FetchResult::Ok);
    done = true;
    watchdog.join();
    EXPECT_TRUE(toldWhileHeld);
    EXPECT_EQ(page, QByteArray("page of held"));
}

TEST(PagePrefetcher, TheLaneRunsATransferBeforeThePagesWaitingToStart) {
    FakeSite site;
    site.Hold();
    PagePrefetcher ahead({}, site.Fetch(), 8, 1);
    ahead.Ask({u"p0"_s, u"p1"_s});
    ASSERT_TRUE(site.WaitForAsked(1));
    const std::thread::id caller = std::this_thread::get_id();
    lw::core::TransferSpec spec;
    spec.url = u"lane"_s;
    int ticks = 0;
    bool ticksHere = true;
    const lw::core::NetResult result = ahead.Run(spec, [&](qint64, qint64) {
        ticksHere = ticksHere && std::this_thread::get_id() == caller;
        if (++ticks == 1) {
            site.Release();  // p0 ends; the connection is free
        }
        return true;
    });
    EXPECT_TRUE(result.ok());
    EXPECT_EQ(result.body, QByteArray("page of lane"));
    // p1 may have started since; the transfer went before it.
    EXPECT_EQ(site.Asked().mid(0, 2), (QStringList{u"p0"_s, u"lane"_s}));
    EXPECT_GE(ticks, 1);
    EXPECT_TRUE(ticksHere);
    QByteArray page;
    EXPECT_EQ(ahead.Take(u"p0"_s, page), FetchResult::Ok);
    EXPECT_EQ(ahead.Take(u"p1"_s, page), FetchResult::Ok);

    // Progress that says no stops the transfer; a failure of it comes out on
    // the caller's thread once the transfer has ended.
    site.Hold();
    EXPECT_EQ(ahead.Run(spec, [](qint64, qint64) { return false; }).status,
              lw::core::NetStatus::Cancelled);
    EXPECT_EQ(site.Stopped(), 1);
    EXPECT_THROW(ahead.Run(spec, [](qint64, qint64) -> bool { throw std::runtime_error("lost"); }),
                 std::runtime_error);
    EXPECT_EQ(site.Stopped(), 2);
}

TEST(PagePrefetcher, ATakerThatGivesUpGetsCancelledAndTheTransferIsStopped) {
    FakeSite site;
    site.Hold();
    int looks = 0;
    PagePrefetcher ahead({}, site.Fetch(), 2, 1, qint64{1} << 20,
                         [&looks](lw::core::Wakeup&) { return ++looks < 3; });
    ahead.Ask(Addresses(5));
    ASSERT_TRUE(site.WaitForAsked(1));
    QByteArray page = "stale";
    const auto result = ahead.Take(u"item0"_s, page);
    EXPECT_EQ(result, FetchResult::Cancelled);
    EXPECT_EQ(looks, 3);
    EXPECT_TRUE(page.isEmpty());
    EXPECT_EQ(ahead.Waiting(), 0);
    // The transfer that was held sees its stop.
    EXPECT_TRUE(site.WaitForStopped(1));
    EXPECT_EQ(site.Stopped(), 1);
}

TEST(PagePrefetcher, TheTakerSleepsThroughItsWaiterUntilThePageComes) {
    FakeSite site;
    site.Hold();
    int sleeps = 0;
    PagePrefetcher ahead({}, site.Fetch(), 2, 1, qint64{1} << 20,
                         [&sleeps, &site](lw::core::Wakeup& wakeup) {
                             if (++sleeps == 1) {
                                 site.Release();
                             }
                             wakeup.Wait();
                             return true;
                         });
    ahead.Ask({u"held"_s});
    ASSERT_TRUE(site.WaitForAsked(1));
    QByteArray page;
    EXPECT_EQ(ahead.Take(u"held"_s, page), FetchResult::Ok);
    EXPECT_EQ(page, QByteArray("page of held"));
    EXPECT_GE(sleeps, 1);
}

TEST(PagePrefetcher, GoingAwayStopsAHeldTransfer) {
    FakeSite site;
    site.Hold();
    {
        PagePrefetcher ahead({}, site.Fetch(), 2);
        ahead.Ask(Addresses(3));
        ASSERT_TRUE(site.WaitForAsked(1));
    }  // must not wait for the held page
    EXPECT_EQ(site.Stopped(), 1);
    EXPECT_EQ(site.Asked().size(), 1);
}
