// SPDX-License-Identifier: GPL-3.0-or-later
// lotwright-cli scan: the update's own scanner over a saved page, with the
// database and the network replaced by printing and by a folder of pages.
#include "app/cli_scan.h"

#include <QDir>
#include <QFile>
#include <QHash>
#include <QTemporaryDir>
#include <QUrl>
#include <utility>
#include <vector>

#include "app/cli_commands.h"
#include "core/rule_text.h"
#include "core/text.h"
#include "update/protocol.h"
#include "update/rules.h"
#include "update/scanner.h"

namespace lw::app {

namespace {

using update::ProtocolRecord;
using update::RuleError;
using update::ScanLists;

class QuietView : public update::UpdateView {
public:
    void Status(const QString&) override {}
    void ConnectStatus(const QString&) override {}
    void Progress(int) override {}
    void LastUrl(const QString&) override {}
    void CurrentItem(const QString&, const QString&) override {}
    bool DetailsShown() override { return false; }
};

QString JsonString(const QString& text) {
    QString out = QStringLiteral("\"");
    for (const QChar c : text) {
        switch (c.unicode()) {
            case u'"':
                out += QStringLiteral("\\\"");
                break;
            case u'\\':
                out += QStringLiteral("\\\\");
                break;
            case u'\n':
                out += QStringLiteral("\\n");
                break;
            case u'\r':
                out += QStringLiteral("\\r");
                break;
            case u'\t':
                out += QStringLiteral("\\t");
                break;
            default:
                if (c.unicode() < 0x20) {
                    out += QStringLiteral("\\u%1").arg(c.unicode(), 4, 16, QLatin1Char('0'));
                } else {
                    out += c;
                }
        }
    }
    return out + QStringLiteral("\"");
}

// Field -> value in the order of first appearance; a later value of the same
// field replaces the earlier one, as a later write would.
class Record {
public:
    void Set(const QString& field, const QString& value) {
        const auto it = m_index.constFind(field);
        if (it == m_index.constEnd()) {
            m_index.insert(field, m_pairs.size());
            m_pairs.emplace_back(field, value);
        } else {
            m_pairs[*it].second = value;
        }
    }
    QString Json() const {
        QString line = QStringLiteral("{");
        for (size_t i = 0; i < m_pairs.size(); ++i) {
            line += (i ? QStringLiteral(", ") : QString()) + JsonString(m_pairs[i].first) +
                    QStringLiteral(": ") + JsonString(m_pairs[i].second);
        }
        return line + QStringLiteral("}");
    }

private:
    std::vector<std::pair<QString, QString>> m_pairs;
    QHash<QString, size_t> m_index;
};

QString SourceValue(const QString& source, const QStringList& items,
                    const QStringList& ancillaryItems) {
    const bool ancillary = source.startsWith(u'A');
    const QStringList& list = ancillary ? ancillaryItems : items;
    const double number = core::Val(ancillary ? QStringView(source).mid(1) : QStringView(source));
    if (!(number >= 1 && number <= static_cast<double>(list.size()))) {
        return QString();
    }
    return list[static_cast<qsizetype>(number) - 1];
}

// The items of a record under their fields, then the given writes.
void AddItems(Record& record, const ProtocolRecord& protocol, const QStringList& items) {
    for (qsizetype i = 0; i < items.size(); ++i) {
        const QString field = static_cast<size_t>(i) < protocol.items.size()
                                  ? protocol.items[static_cast<size_t>(i)].field
                                  : RuleError();
        record.Set(field == RuleError() ? QStringLiteral("[%1]").arg(i + 1) : field, items[i]);
    }
}

// pagesDir/index.txt: address TAB file.
QHash<QString, QString> ReadIndex(const QString& pagesDir) {
    QHash<QString, QString> index;
    QFile file(QDir(pagesDir).filePath(QStringLiteral("index.txt")));
    if (!file.open(QIODevice::ReadOnly)) {
        return index;
    }
    const QString text = QString::fromUtf8(file.readAll());
    for (QString line : text.split(u'\n')) {
        if (line.endsWith(u'\r')) {
            line.chop(1);
        }
        const qsizetype tab = line.indexOf(u'\t');
        if (tab > 0 && !index.contains(line.left(tab))) {
            index.insert(line.left(tab), line.mid(tab + 1));
        }
    }
    return index;
}

QString SavedPage(const QString& pagesDir, const QHash<QString, QString>& index,
                  const QString& address) {
    if (pagesDir.isEmpty()) {
        return QString();
    }
    const QDir dir(pagesDir);
    const auto listed = index.constFind(address);
    const QString path = listed != index.constEnd()
                             ? dir.filePath(*listed)
                             : dir.filePath(QString::fromLatin1(QUrl::toPercentEncoding(address)));
    return QFile::exists(path) ? path : QString();
}

QString AncillaryAddress(const ProtocolRecord& protocol, const ScanLists& lists) {
    QString address = protocol.url;
    for (qsizetype i = 0; i < lists.fields.size() && i < lists.items.size(); ++i) {
        address = core::ReplaceEvery(
            address, QStringLiteral("[") + lists.fields[i] + QStringLiteral("]"), lists.items[i]);
    }
    return core::ReplaceEvery(address, QStringLiteral("[SKIP]"), QStringLiteral("0"));
}

}  // namespace

int RunScan(const QString& rulesFile, const QString& protocol, const QString& pageFile,
            const QString& pagesDir, QTextStream& out, QTextStream& err) {
    const std::optional<QString> ruleText = core::LoadRuleFile(rulesFile);
    if (!ruleText) {
        err << "Cannot read the rule file " << rulesFile << Qt::endl;
        return kExitFailure;
    }
    update::RuleStore rules;
    rules.SetText(update::kSiteStore, *ruleText + QStringLiteral("\r\n\r\n"));
    const ProtocolRecord main = update::LoadRunProtocol(rules, protocol);
    if (main.gStart == RuleError() && main.gEnd == RuleError() && main.items.empty()) {
        err << "The rule file " << rulesFile << " holds no protocol [" << protocol << "]"
            << Qt::endl;
        return kExitNotFound;
    }
    if (const QString fault = main.CountFault(); !fault.isEmpty()) {
        err << fault << Qt::endl;
        return kExitFailure;
    }

    QFile file(pageFile);
    if (!file.open(QIODevice::ReadOnly)) {
        err << "Cannot read the page " << pageFile << Qt::endl;
        return kExitFailure;
    }
    const update::PageText page(file.readAll());
    file.close();

    update::PageScanner scanner(main);
    if (!scanner.SetUp(page)) {
        err << "The page does not hold the record part of [" << protocol << "]: GStart "
            << JsonString(main.gStart) << " and then Gend " << JsonString(main.gEnd)
            << " must both stand on it." << Qt::endl;
        return kExitFailure;
    }

    const QHash<QString, QString> index = ReadIndex(pagesDir);
    QuietView view;
    update::AncillaryHooks hooks;
    hooks.load = [&rules](const QString& section) {
        return update::LoadAncillaryProtocol(rules, section);
    };
    hooks.address = AncillaryAddress;
    hooks.fetch = [&](const QString& address, QByteArray& page) {
        const QString saved = SavedPage(pagesDir, index, address);
        QFile file(saved);
        if (saved.isEmpty() || !file.open(QIODevice::ReadOnly)) {
            err << "No saved page for " << address << ": its ancillary record is passed over."
                << Qt::endl;
            return update::FetchResult::Failed;
        }
        page = file.readAll();
        return update::FetchResult::Ok;
    };
    hooks.write = [&out](const ProtocolRecord& ancillary, const ScanLists& lists) {
        Record record;
        record.Set(QStringLiteral("@protocol"), ancillary.section);
        AddItems(record, ancillary, lists.ancillaryItems);
        for (const update::WriteRule& write : ancillary.writes) {
            record.Set(write.field, SourceValue(write.source, lists.items, lists.ancillaryItems));
        }
        out << record.Json() << Qt::endl;
    };
    hooks.failed = [&err](const ProtocolRecord& ancillary, const QString& what, bool) {
        err << "[" << ancillary.section << "]: " << what << Qt::endl;
    };
    hooks.cancelled = [] {};
    update::AncillaryRunner ancillary(view, hooks);

    update::ScanHooks ancillaryScan;
    ancillaryScan.pumpEvents = [] {};
    update::ScanHooks scan;
    scan.pumpEvents = [] {};
    scan.runAncillary = [&](const update::ItemRule& item, ScanLists& lists) {
        ancillary.Run(item, lists, ancillaryScan);
    };

    update::ScanState state;
    ScanLists lists;
    while (scanner.ScanRecord(state, lists, scan) == update::PageScanner::RecordEnd::Complete) {
        Record record;
        AddItems(record, main, lists.items);
        for (qsizetype i = 0; i < lists.includes.size() && i < lists.includeValues.size(); ++i) {
            record.Set(lists.includes[i], lists.includeValues[i]);
        }
        for (const update::WriteRule& write : main.writes) {
            record.Set(write.field, SourceValue(write.source, lists.items, lists.ancillaryItems));
        }
        out << record.Json() << Qt::endl;
        lists.ClearRecord();
    }
    return kExitOk;
}

}  // namespace lw::app
