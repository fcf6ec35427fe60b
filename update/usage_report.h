// SPDX-License-Identifier: GPL-3.0-or-later
// The usage report: every ten days at most, a small file of counters
// (trkrpt.dat) sent by FTP to the address in the rule store. Nothing is sent
// until the user switches the report on (core::UsageReportOn); any failure is
// ignored, because counting may never stop real work.
#pragma once

#include <QDate>
#include <QString>
#include <functional>

#include "core/store.h"

namespace lw::update {

// Sends a file; true when sent. Injected so tests need no FTP server.
using ReportSender = std::function<bool(const QString& file)>;

// Writes trkrpt.dat when switched on and due, and sends it; returns true when
// a report was sent. Switched off, it touches nothing.
bool PrepareUsageReport(core::Database& db, const ReportSender& send = {});
// The same with today's date given.
bool PrepareUsageReport(core::Database& db, const ReportSender& send, const QDate& today);

// The one-way scramble of the e-mail line.
QString ScrambleForReport(const QString& text);

// The sender used when none is given: an FTP upload of the file as
// trkrpt.dat into the folder `account` on `host`, signed in as `userid` with
// `pass`, all four from rule section "Tracking" of the second rule text. It
// says "Logged in to Tolvane", "Information sent" and "Disconnected from
// Tolvane" on the status line, and gives up after a few seconds.
ReportSender FtpReportSender();

}  // namespace lw::update
