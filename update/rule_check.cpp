// SPDX-License-Identifier: GPL-3.0-or-later
// The check of a rule file before it is used: the form of a rule text first
// (a web page or stray bytes never get as far as the sections), then the
// sections and protocols the program reads from site.pro and info.pro, looked
// up exactly as the program will look them up.
#include "update/rule_check.h"

#include <QRegularExpression>
#include <QStringList>
#include <initializer_list>

#include "update/rules.h"
#include "update/run_lists.h"

namespace lw::update {

namespace {

const QString kSitePro = QStringLiteral("site.pro");
const QString kInfoPro = QStringLiteral("info.pro");

// A line quoted in a message is cut to this many characters.
constexpr qsizetype kQuotedLine = 60;

QString Quoted(const QString& line) {
    QString shown = line.trimmed();
    if (shown.size() > kQuotedLine) {
        shown = shown.left(kQuotedLine) + QStringLiteral("...");
    }
    return u'"' + shown + u'"';
}

bool IsHeader(const QString& trimmed) {
    return trimmed.size() > 2 && trimmed.startsWith(u'[') && trimmed.endsWith(u']');
}

// What is wrong with the form of the text; empty when it reads as sections of
// key=value lines. Other files of the self-update (category.pro) may hold
// lines without "=", which their readers pass over; site.pro and info.pro may
// not, since such a line is never found and means the file is not what it
// claims to be.
QString FormProblem(const QString& text, bool everyLineAKey) {
    if (text.trimmed().isEmpty()) {
        return QStringLiteral("holds no rules");
    }
    if (text.contains(QChar(0))) {
        return QStringLiteral("holds binary data, not rule text");
    }
    static const QRegularExpression lineEnd(QStringLiteral("\r\n|\r|\n"));
    const QStringList lines = text.split(lineEnd);
    qsizetype first = 0;
    while (lines.at(first).trimmed().isEmpty()) {
        ++first;  // the text is not blank, so a line with something stands further on
    }
    const QString head = lines.at(first).trimmed();
    if (head.startsWith(u'<')) {
        return QStringLiteral(
            "is a web page, not a rule file (a network that wants you to sign in first answers "
            "with such a page)");
    }
    if (!IsHeader(head)) {
        return QStringLiteral("does not begin with a [section] line but with %1").arg(Quoted(head));
    }
    if (everyLineAKey) {
        for (qsizetype i = first + 1; i < lines.size(); ++i) {
            const QString trimmed = lines.at(i).trimmed();
            if (!trimmed.isEmpty() && !IsHeader(trimmed) && !lines.at(i).contains(u'=')) {
                return QStringLiteral("has a line %1 that is neither a [section] nor key=value: %2")
                    .arg(i + 1)
                    .arg(Quoted(lines.at(i)));
            }
        }
    }
    return {};
}

QString MissingSection(const RuleStore& rules, int store,
                       std::initializer_list<const char*> sections) {
    for (const char* name : sections) {
        const QString section = QString::fromLatin1(name);
        if (!rules.HasSection(section, store)) {
            return QStringLiteral("has no [%1] section").arg(section);
        }
    }
    return {};
}

QString SiteProblem(const RuleStore& rules) {
    QString problem = MissingSection(rules, kSiteStore, {"Protocols", "Update", "Sites"});
    if (!problem.isEmpty()) {
        return problem;
    }
    // Without these the next version check could not run, and no later
    // update could put the rules right again.
    for (const char* key : {"ProtocolCheckUrl", "Current Protocol"}) {
        if (rules.LookupKey(QStringLiteral("Protocols"), QString::fromLatin1(key), kSiteStore) ==
            RuleError()) {
            return QStringLiteral("has no %1 in its [Protocols] section")
                .arg(QString::fromLatin1(key));
        }
    }
    const QStringList runList = RuleUpdateList(rules);
    if (runList.isEmpty()) {
        return QStringLiteral("names no protocol to run in its [Update] section");
    }
    // The protocols of [Update] and those the update commands run by name.
    QStringList needed = runList;
    for (const UpdateCommand command :
         {UpdateCommand::UpdateAuctions, UpdateCommand::UpdateBids,
          UpdateCommand::UpdateAccountBalance, UpdateCommand::UpdateComplete,
          UpdateCommand::UpdateDatabaseAndAccount, UpdateCommand::SyncTime,
          UpdateCommand::ItemWatch, UpdateCommand::FirstRetrieval}) {
        needed << RunList(command, rules);
    }
    needed.removeDuplicates();
    for (const QString& protocol : needed) {
        if (rules.LookupKey(protocol, QStringLiteral("Url"), kSiteStore) == RuleError()) {
            return QStringLiteral("has no [%1] section with a Url for the protocol of that name")
                .arg(protocol);
        }
    }
    return {};
}

}  // namespace

QString RuleFileProblem(const QString& name, const QString& text) {
    const bool site = name == kSitePro;
    const bool info = name == kInfoPro;
    QString problem = FormProblem(text, site || info);
    if (problem.isEmpty() && (site || info)) {
        RuleStore rules;
        const int store = site ? kSiteStore : kInfoStore;
        rules.SetText(store, text + QStringLiteral("\r\n\r\n"));
        problem = site ? SiteProblem(rules)
                       : MissingSection(
                             rules, kInfoStore,
                             {"Mail Server", "Tracking", "Shipping Regions Reversecode",
                              "Billpoint Tax States", "AuctionPost Names", "AuctionPost Defaults"});
    }
    return problem.isEmpty() ? problem : QString(name + u' ' + problem);
}

}  // namespace lw::update
