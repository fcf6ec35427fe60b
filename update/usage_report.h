// The usage report: every ten days at most, a small file of counters
// (trkrpt.dat) sent by FTP to the address in the rule store. Tracking may be
// switched off; any failure is ignored, because counting may never stop real work.
#pragma once

#include <QString>
#include <functional>

#include "core/store.h"

namespace lw::update {

// Sends a file; true when sent. Injected so tests need no FTP server.
using ReportSender = std::function<bool(const QString& file)>;

// Writes trkrpt.dat when due and sends it; returns true when a report was sent.
bool PrepareUsageReport(core::Database& db, const ReportSender& send = {});

// The one-way scramble of the e-mail line.
QString ScrambleForReport(const QString& text);

}  // namespace lw::update
