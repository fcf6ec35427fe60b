// SPDX-License-Identifier: GPL-3.0-or-later
// Finding and reading an item's outbox and archive files; nothing here
// writes or deletes one.
#include "tasks/queue_files.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

#include "core/rule_text.h"
#include "core/session.h"

namespace lw::tasks {

namespace {

constexpr qint64 kMaxFileBytes = 4 * 1024 * 1024;
// Numbered winner files looked at for one item and code.
constexpr int kMaxNumberedFiles = 1000;

QString UserFolder(const QString& relative) {
    return QDir(core::CurrentSession().UserDataDir).filePath(relative);
}

// A part of a file name that stays inside its folder and means nothing to a
// folder listing's pattern.
bool IsPlainNamePart(const QString& part) {
    static const QString kForbidden = QStringLiteral("/\\*?[]");
    if (part.isEmpty() || part == u"." || part == u"..") {
        return false;
    }
    for (const QChar c : part) {
        if (c.unicode() < 32 || kForbidden.contains(c)) {
            return false;
        }
    }
    return true;
}

QString ExistingFile(const QString& folder, const QString& name) {
    const QString path = QDir(folder).filePath(name);
    return QFileInfo(path).isFile() ? path : QString();
}

bool NamesPartner(const QString& path, int partnerLine, const QString& bidder) {
    const auto lines = ReadQueueFile(path);
    return lines && partnerLine < lines->size() &&
           lines->at(partnerLine).trimmed().compare(bidder.trimmed(), Qt::CaseInsensitive) == 0;
}

QString FindWinnerFile(const QString& folder, const SelectedItem& item, const QString& code,
                       int partnerLine) {
    const QString head = item.itemNumber + u'D';
    if (IsPlainNamePart(item.dutchBidder)) {
        const QString named = ExistingFile(folder, head + item.dutchBidder + code + u".dat");
        if (!named.isEmpty()) {
            return named;
        }
    }
    const QString tail = code + u".dat";
    const QStringList names = QDir(folder).entryList({head + u'*' + tail}, QDir::Files, QDir::Name);
    int looked = 0;
    for (const QString& name : names) {
        if (++looked > kMaxNumberedFiles) {
            break;
        }
        const QString number = name.mid(head.size(), name.size() - head.size() - tail.size());
        bool isNumber = false;
        number.toUInt(&isNumber);
        const QString path = QDir(folder).filePath(name);
        if (isNumber && NamesPartner(path, partnerLine, item.dutchBidder)) {
            return path;
        }
    }
    return {};
}

}  // namespace

QString OutboxMailFolder() {
    return UserFolder(QStringLiteral("Queue/Emails"));
}

QString ArchiveMailFolder() {
    return UserFolder(QStringLiteral("Archive/Emails"));
}

QString OutboxFeedbackFolder() {
    return UserFolder(QStringLiteral("Queue/Feedback"));
}

std::optional<QStringList> ReadQueueFile(const QString& path) {
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) {
        return std::nullopt;
    }
    QStringList lines =
        core::RuleTextFromBytes(file.read(kMaxFileBytes)).split(QStringLiteral("\r\n"));
    // The last line's end leaves an empty piece behind it, which is no line.
    if (!lines.isEmpty() && lines.constLast().isEmpty()) {
        lines.removeLast();
    }
    return lines;
}

QString FindItemFile(const QString& folder, const SelectedItem& item, const QString& code,
                     int partnerLine) {
    if (!IsPlainNamePart(item.itemNumber) || !IsPlainNamePart(code)) {
        return {};
    }
    if (item.IsDutch()) {
        const QString winner = FindWinnerFile(folder, item, code, partnerLine);
        if (!winner.isEmpty()) {
            return winner;
        }
    }
    return ExistingFile(folder, item.itemNumber + code + u".dat");
}

}  // namespace lw::tasks
