// SPDX-License-Identifier: GPL-3.0-or-later
// Reading a rule file from disk into the form the rule store keeps: text with
// CR LF line ends, whatever the file used. Knows nothing of sections or keys.
#pragma once

#include <QByteArray>
#include <QString>
#include <optional>

namespace lw::core {

// Bytes as UTF-8 when they are valid UTF-8, else as Latin-1; every line end
// (LF, CR LF, lone CR) becomes CR LF.
QString RuleTextFromBytes(const QByteArray& bytes);
// The file's text as above; nullopt when it cannot be read.
std::optional<QString> LoadRuleFile(const QString& path);

}  // namespace lw::core
