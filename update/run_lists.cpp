// SPDX-License-Identifier: GPL-3.0-or-later
// The run lists of the update commands and RunProt.dat. The file is written
// whole and at once (a half-written list would run half an update), with
// CR LF line ends as the program has always written it, and read back with
// any line end.
#include "update/run_lists.h"

#include <QFile>
#include <QSaveFile>

#include "core/session.h"
#include "update/protocol.h"
#include "update/rules.h"

namespace lw::update {

namespace {

const QString kCurrentTime = QStringLiteral("Current Time eBay");
const QString kCurrentAuctions = QStringLiteral("Current Auctions eBay");
const QString kAuctionDetails = QStringLiteral("Auction Details eBay");
const QString kCurrentBids = QStringLiteral("Current Bids eBay");
const QString kBidDetails = QStringLiteral("Bid Details eBay");
const QString kAccountHistory = QStringLiteral("Account History eBay");
const QString kAccountInformation = QStringLiteral("Account Information eBay");
const QString kWatchingItems = QStringLiteral("Watching Items eBay");

}  // namespace

QStringList RuleUpdateList(const RuleStore& rules) {
    const QString update = QStringLiteral("Update");
    const int count = RuleCount(rules.LookupKey(update, QStringLiteral("Protocols"), kSiteStore));
    QStringList lines;
    for (int n = 1; n <= count; ++n) {
        const QString protocol = QStringLiteral("Protocol") + QString::number(n);
        const QString site =
            rules.LookupKey(update, protocol + QStringLiteral(" Site"), kSiteStore);
        const QString siteName =
            rules.LookupKey(QStringLiteral("Sites"), QStringLiteral("Site") + site, kSiteStore);
        lines << rules.LookupKey(update, protocol, kSiteStore) + QStringLiteral(" ") + siteName;
    }
    return lines;
}

QStringList RunList(UpdateCommand command, const RuleStore& rules) {
    switch (command) {
        case UpdateCommand::UpdateAuctions:
        case UpdateCommand::AfterPosting:
            return {kCurrentAuctions, kAuctionDetails, kCurrentTime};
        case UpdateCommand::UpdateBids:
            return {kCurrentBids, kBidDetails, kCurrentTime};
        case UpdateCommand::UpdateAccountBalance:
            return {kAccountInformation};
        case UpdateCommand::UpdateComplete:
            return {kCurrentTime, kCurrentAuctions, kAuctionDetails,
                    kCurrentBids, kBidDetails,      kAccountInformation};
        case UpdateCommand::UpdateDatabaseAndAccount:
            return {kCurrentTime, kCurrentAuctions, kAuctionDetails,
                    kCurrentBids, kBidDetails,      kAccountHistory};
        case UpdateCommand::UpdateAuctionDatabase:
            return RuleUpdateList(rules);
        case UpdateCommand::SyncTime:
            return {kCurrentTime};
        case UpdateCommand::ItemWatch:
            return {kWatchingItems};
        case UpdateCommand::FirstRetrieval:
            return RuleUpdateList(rules) << kAccountHistory;
    }
    return {};
}

QStringList RunList(UpdateCommand command) {
    return RunList(command, Rules());
}

QString RunListPath() {
    return core::CurrentSession().ScratchDir + QStringLiteral("RunProt.dat");
}

bool WriteRunList(const QString& path, const QStringList& lines, QString* error) {
    QByteArray bytes;
    for (const QString& line : lines) {
        bytes += line.toUtf8();
        bytes += "\r\n";
    }
    QSaveFile file(path);
    if (!file.open(QIODevice::WriteOnly) || file.write(bytes) != bytes.size() || !file.commit()) {
        if (error != nullptr) {
            *error = QStringLiteral("The list of protocols could not be written to ") + path +
                     QStringLiteral(": ") + file.errorString();
        }
        return false;
    }
    return true;
}

bool WriteRunList(const QStringList& lines, QString* error) {
    return WriteRunList(RunListPath(), lines, error);
}

QStringList ReadRunList(const QString& path) {
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) {
        return {};
    }
    QStringList lines;
    const QString text = QString::fromUtf8(file.readAll());
    for (QString line : text.split(u'\n')) {
        if (line.endsWith(u'\r')) {
            line.chop(1);
        }
        if (!line.isEmpty()) {
            lines << line;
        }
    }
    return lines;
}

QStringList ReadRunList() {
    return ReadRunList(RunListPath());
}

}  // namespace lw::update
