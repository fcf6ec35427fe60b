// SPDX-License-Identifier: GPL-3.0-or-later
// The demo marketplace's HTTP face: the CGI path that takes every page and
// post by its command, the rule-update endpoint, and the admin routes that
// tests use to steer the market. It owns the site's one lock: every request
// holds it while it reads or changes the store. It answers on loopback only.
#pragma once

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

private:
    struct Control {
        bool down = false;
        int breakCount = 0;
        bool breakAll = true;
        PageKind breakKind = PageKind::Other;
        int layout = 1;
    };

    void Cgi(const httplib::Request& request, httplib::Response& response);
    void Rules(const httplib::Request& request, httplib::Response& response);
    void Admin(const httplib::Request& request, httplib::Response& response);

    // True when this page is to lose its begin marker, counting the break down.
    bool TakeBreak(PageKind kind);

    MarketStore& m_store;
    SiteClock& m_clock;
    SiteSettings m_settings;
    std::string m_baseUrl;
    Control m_control;
    std::mutex m_lock;
};

}  // namespace lw::site
