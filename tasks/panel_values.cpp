// SPDX-License-Identifier: GPL-3.0-or-later
// The values the task panels read and write, and the stepping over of a
// failed save: no store error of a save ever leaves here.
#include "tasks/panel_values.h"

#include "core/text.h"

namespace lw::tasks {

SaveOutcome StepOver(const std::function<int()>& write) {
    SaveOutcome outcome;
    try {
        outcome.saved = write() > 0;
    } catch (const core::StoreError&) {
        outcome.saved = false;
    }
    return outcome;
}

SaveOutcome SaveRecordFields(core::Database& db, const SelectedItem& item,
                             const QVariantMap& fields, const std::optional<QString>& removalCode) {
    SaveOutcome outcome = StepOver([&] { return WriteSelectedRecord(db, item, fields); });
    if (outcome.saved) {
        outcome.removalCode = removalCode;
    }
    return outcome;
}

std::optional<QString> RemovalCodeIf(bool condition, const char* code) {
    return condition ? std::optional(QString::fromLatin1(code)) : std::nullopt;
}

QVariant FieldValue(const QVariantMap& record, const QString& field) {
    const auto exact = record.constFind(field);
    if (exact != record.cend()) {
        return exact.value();
    }
    for (auto it = record.cbegin(); it != record.cend(); ++it) {
        if (it.key().compare(field, Qt::CaseInsensitive) == 0) {
            return it.value();
        }
    }
    return {};
}

QString FieldText(const QVariantMap& record, const QString& field) {
    const QVariant value = FieldValue(record, field);
    return value.isNull() ? QString() : value.toString();
}

bool FieldFlag(const QVariantMap& record, const QString& field) {
    return core::FlagValue(FieldValue(record, field));
}

int FieldIndex(const QVariantMap& record, const QString& field, int count) {
    bool ok = false;
    const int index = FieldText(record, field).trimmed().toInt(&ok);
    return ok && index >= 0 && index < count ? index : -1;
}

QString FieldMoney(const QVariantMap& record, const QString& field, const QString& fallback) {
    const QVariant value = FieldValue(record, field);
    return value.isNull() ? fallback : core::Format(value, QStringLiteral("Currency"));
}

QVariant BoxValue(const QString& text) {
    return text.trimmed().isEmpty() ? QVariant() : QVariant(text);
}

QVariant IndexValue(int index) {
    return index < 0 ? QVariant() : QVariant(index);
}

QString Caption(const QString& text) {
    return core::ReplaceEvery(text, QStringLiteral("&"), QStringLiteral("&&"));
}

QString ItemFrameTitle(const QString& words, const QVariantMap& record) {
    return Caption(words + FieldText(record, QStringLiteral("ItemNumber")));
}

QString DateBoxText(const QDate& today) {
    return core::Format(today, QStringLiteral("MM/DD/YY"));
}

QString NoMoney() {
    return QStringLiteral("$0.00");
}

}  // namespace lw::tasks
