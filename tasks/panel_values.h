// SPDX-License-Identifier: GPL-3.0-or-later
// What the task panels share: reading a field of the selected record without
// regard to the case of its name, turning boxes into the values a save
// writes (an empty box and a list with no row are Null), today's date as the
// panels write it, and what a save hands back to its caller. Nothing here
// draws, and nothing here writes but the selected record's fields.
#pragma once

#include <QDate>
#include <QString>
#include <QVariant>
#include <QVariantMap>
#include <functional>
#include <optional>

#include "core/store.h"
#include "tasks/selected_item.h"

namespace lw::tasks {

// What a save did and what its caller does next: RefreshTaskIcons in every
// case, then CompleteIfRemovalTask(removalCode) when there is one, then the
// selection of the tree node selectNode when there is one. A save never
// throws: a failed store call is stepped over without a message, and then
// saved is false and nothing is to be completed.
struct SaveOutcome {
    bool saved = false;
    std::optional<QString> removalCode;
    std::optional<QString> selectNode;
};

// Runs write, which returns the number of rows it changed; a core::StoreError
// is stepped over. saved is true when a row was changed.
SaveOutcome StepOver(const std::function<int()>& write);
// Writes the fields of the selected record so; removalCode goes to the
// outcome when the record took them.
SaveOutcome SaveRecordFields(core::Database& db, const SelectedItem& item,
                             const QVariantMap& fields,
                             const std::optional<QString>& removalCode = std::nullopt);
// The code when the condition holds ("SHS" with a shipping date standing).
std::optional<QString> RemovalCodeIf(bool condition, const char* code);

// The record's field of that name, found without regard to case; a null
// QVariant when the field is Null or the record has no such field.
QVariant FieldValue(const QVariantMap& record, const QString& field);
// Null reads as "".
QString FieldText(const QVariantMap& record, const QString& field);
// A flag: any number other than 0, or "True"/"Yes" in any case.
bool FieldFlag(const QVariantMap& record, const QString& field);
// A stored row of a list of count rows; -1 for Null or anything that is no
// such row.
int FieldIndex(const QVariantMap& record, const QString& field, int count);
// The field in "Currency" format; fallback when it is Null.
QString FieldMoney(const QVariantMap& record, const QString& field,
                   const QString& fallback = QString());

// What a text box writes: Null when it holds nothing but blanks.
QVariant BoxValue(const QString& text);
// What a list writes: its row, Null for -1.
QVariant IndexValue(int index);

// A caption of a frame or a check box: a single "&" would be taken as a
// mnemonic, so it is doubled.
QString Caption(const QString& text);

// A frame title: the words, then the record's ItemNumber ("Notes for Item #123").
QString ItemFrameTitle(const QString& words, const QVariantMap& record);

// Today as the panels put it into a date box, "MM/DD/YY".
QString DateBoxText(const QDate& today);

// "$0.00", what the money boxes show for nothing.
QString NoMoney();

}  // namespace lw::tasks
