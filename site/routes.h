// SPDX-License-Identifier: GPL-3.0-or-later
// The demo marketplace's HTTP face: the CGI path that takes every page and
// post by its command, the rule-update endpoint, and the admin routes that
// tests use to steer the market. It owns the site's one lock: every request
// holds it while it reads or changes the store. It answers on loopback only.
#pragma once

#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <mutex>
#include <string>

#include "site/market_store.h"
#include "site/pages.h"
#include "site/site_clock.h"

namespace httplib {
class Server;
struct Request;
struct Response;
}  // namespace httplib

namespace lw::site {

struct SiteSettings {
    std::string rulesDir;
    std::string ruleVersion;
    int pageSize = 50;
    bool quiet = false;
    // The base the shipped rules point at; served rule files have it replaced
    // by the site's own base.
    std::string rulesBase = "http://127.0.0.1:8750";
};

class MarketSite {
public:
    MarketSite(MarketStore& store, SiteClock& clock, SiteSettings settings);

    // Set once the port is known, before the first request.
    void SetBaseUrl(const std::string& baseUrl) { m_baseUrl = baseUrl; }
    void Register(httplib::Server& server);
    // Ends every held answer at once; called as the server stops.
    void Stop();

private:
    struct Control {
        bool down = false;
        int breakCount = 0;
        bool breakAll = true;
        PageKind breakKind = PageKind::Other;
        int layout = 1;
        int refusePosts = 0;  // sell posts still to refuse
        int refuseStatus = 500;
        int holdPosts = 0;  // sell posts still to hold
        std::chrono::milliseconds holdFor{0};
    };

    // body: a posted body read by the caller; null for the request's own.
    void Cgi(const httplib::Request& request, httplib::Response& response, const std::string* body);
    void Rules(const httplib::Request& request, httplib::Response& response);
    void Admin(const httplib::Request& request, httplib::Response& response);

    // True when this page is to lose its begin marker, counting the break down.
    bool TakeBreak(PageKind kind);
    // Whether a sell post is to be refused (the status to answer with, else
    // left 0) or held, counting the faults down.
    void TakeSellPostFault(const std::string& command, int& refuseStatus,
                           std::chrono::milliseconds& hold);

    MarketStore& m_store;
    SiteClock& m_clock;
    SiteSettings m_settings;
    std::string m_baseUrl;
    Control m_control;
    std::mutex m_lock;
    std::mutex m_holdMutex;
    std::condition_variable m_holdEnded;
    bool m_stopping = false;
};

}  // namespace lw::site
