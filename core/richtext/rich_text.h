// SPDX-License-Identifier: GPL-3.0-or-later
// Rich-text documents of the program (packing lists, remittance advice, mail
// templates): RTF read into a QTextDocument and written back so that a word
// processor opens it, tokens replaced in place, and the document put on paper
// or into a PDF. QtGui only: it must never include a widget header, and no
// file, however broken, may crash it or keep it busy without end.
#pragma once

#include <QByteArray>
#include <QString>

class QPagedPaintDevice;
class QTextDocument;

namespace lw::richtext {

struct LoadResult {
    bool ok = false;
    QString message;  // says what was wrong, for the user
};

// Files and texts above this size are refused rather than read.
inline constexpr qint64 kMaxRtfBytes = 16 * 1024 * 1024;
// Groups nested deeper than this make the document unreadable.
inline constexpr int kMaxGroupDepth = 1000;

// Replaces the document's content; on failure the document is empty.
LoadResult LoadRtf(const QByteArray& rtf, QTextDocument& document);
// A missing, unreadable or oversized file: ok false, a clear message, an empty document.
LoadResult LoadRtfFile(const QString& path, QTextDocument& document);

QByteArray SaveRtf(const QTextDocument& document);
bool SaveRtfFile(const QTextDocument& document, const QString& path, QString* error);

// Replaces the first occurrence of token (exact text, found across formatting runs) at or after
// position from; the new text takes the character format of the token's first character; a "\n"
// in text starts a new paragraph. Returns the position just behind the new text, or -1 when the
// token is not there.
int ReplaceToken(QTextDocument& document, const QString& token, const QString& text, int from = 0);

// Writes the document as PDF on the given page size, with margins of one inch (1440 twips) on
// every side. The paper is Letter where the locale measures in US units, else A4.
bool WritePdf(const QTextDocument& document, const QString& path, QString* error);

// Prints the document on device (a printer, a PDF writer): the device's own margins are set to a
// quarter inch (360 twips) and the text stands one inch (1440 twips) from every edge of the paper.
// Pages break where the document's paragraphs ask for it and where a page is full.
bool PrintDocument(const QTextDocument& document, QPagedPaintDevice& device, QString* error);

}  // namespace lw::richtext
