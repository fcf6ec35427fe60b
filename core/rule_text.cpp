// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/rule_text.h"

#include <QFile>
#include <QStringDecoder>

namespace lw::core {

QString RuleTextFromBytes(const QByteArray& bytes) {
    QStringDecoder utf8(QStringDecoder::Utf8, QStringDecoder::Flag::Stateless);
    QString text = utf8.decode(bytes);
    if (utf8.hasError()) {
        text = QString::fromLatin1(bytes);
    }
    QString out;
    out.reserve(text.size() + text.size() / 32);
    for (qsizetype i = 0; i < text.size(); ++i) {
        const QChar c = text.at(i);
        if (c == u'\r') {
            out += QStringLiteral("\r\n");
            if (i + 1 < text.size() && text.at(i + 1) == u'\n') {
                ++i;
            }
        } else if (c == u'\n') {
            out += QStringLiteral("\r\n");
        } else {
            out += c;
        }
    }
    return out;
}

std::optional<QString> LoadRuleFile(const QString& path) {
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) {
        return std::nullopt;
    }
    return RuleTextFromBytes(file.readAll());
}

}  // namespace lw::core
