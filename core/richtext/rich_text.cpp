// SPDX-License-Identifier: GPL-3.0-or-later
// The rich-text library's work on whole documents: RTF files read and written
// with the user's words for what went wrong, tokens replaced in place, and
// pages drawn on a printer or into a PDF. It must never leave a half-written
// file behind nor draw without an application that can lay out text.
#include "core/richtext/rich_text.h"

#include <QAbstractTextDocumentLayout>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QGuiApplication>
#include <QLocale>
#include <QPagedPaintDevice>
#include <QPainter>
#include <QPdfWriter>
#include <QSaveFile>
#include <QStringTokenizer>
#include <QTextBlock>
#include <QTextCursor>
#include <QTextDocument>
#include <algorithm>
#include <memory>
#include <utility>

namespace lw::richtext {
namespace {

QString Shown(const QString& path) {
    return QDir::toNativeSeparators(path);
}

void SetError(QString* error, const QString& text) {
    if (error) {
        *error = text;
    }
}

}  // namespace

LoadResult LoadRtfFile(const QString& path, QTextDocument& document) {
    document.clear();
    const QFileInfo info(path);
    if (!info.exists()) {
        return {false, QStringLiteral("The file %1 does not exist.").arg(Shown(path))};
    }
    if (!info.isFile()) {
        return {false, QStringLiteral("%1 is not a file.").arg(Shown(path))};
    }
    const QString tooLarge = QStringLiteral("The file %1 is larger than %2 MB and is not read.")
                                 .arg(Shown(path))
                                 .arg(kMaxRtfBytes / (1024 * 1024));
    if (info.size() > kMaxRtfBytes) {
        return {false, tooLarge};
    }
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) {
        return {
            false,
            QStringLiteral("The file %1 cannot be read: %2").arg(Shown(path), file.errorString())};
    }
    // Read no more than the bound, whatever the size told before.
    const QByteArray rtf = file.read(kMaxRtfBytes + 1);
    if (rtf.size() > kMaxRtfBytes) {
        return {false, tooLarge};
    }
    LoadResult result = LoadRtf(rtf, document);
    if (!result.ok) {
        result.message =
            QStringLiteral("The file %1 cannot be read. %2").arg(Shown(path), result.message);
    }
    return result;
}

bool SaveRtfFile(const QTextDocument& document, const QString& path, QString* error) {
    QSaveFile file(path);
    if (!file.open(QIODevice::WriteOnly) || file.write(SaveRtf(document)) < 0 || !file.commit()) {
        SetError(error, QStringLiteral("The file %1 cannot be written: %2")
                            .arg(Shown(path), file.errorString()));
        return false;
    }
    return true;
}

int ReplaceToken(QTextDocument& document, const QString& token, const QString& text, int from) {
    if (token.isEmpty()) {
        return -1;
    }
    QTextCursor found = document.find(token, std::max(from, 0), QTextDocument::FindCaseSensitively);
    if (found.isNull()) {
        return -1;
    }
    QTextCursor first(&document);
    first.setPosition(found.selectionStart() + 1);
    const QTextCharFormat format = first.charFormat();

    QString lines = text;
    lines.replace(QStringLiteral("\r\n"), QStringLiteral("\n")).replace(u'\r', u'\n');
    found.beginEditBlock();
    found.removeSelectedText();
    bool firstLine = true;
    for (const QStringView line : QStringTokenizer(lines, u'\n')) {
        if (!std::exchange(firstLine, false)) {
            found.insertBlock();
        }
        found.insertText(line.toString(), format);
    }
    found.endEditBlock();
    return found.position();
}

bool PrintDocument(const QTextDocument& document, QPagedPaintDevice& device, QString* error) {
    if (!qobject_cast<QGuiApplication*>(QCoreApplication::instance())) {
        SetError(error,
                 QStringLiteral("Printing needs the program's display, which is not there."));
        return false;
    }
    // A printer that cannot come as close as a quarter inch keeps its own
    // margins; the text stands one inch from the edge all the same.
    device.setPageMargins(QMarginsF(0.25, 0.25, 0.25, 0.25), QPageLayout::Inch);
    QPainter painter;
    if (!painter.begin(&device)) {
        SetError(error, QStringLiteral("The printer cannot be started."));
        return false;
    }
    const QPageLayout layout = device.pageLayout();
    const int dpiX = device.logicalDpiX();
    const int dpiY = device.logicalDpiY();
    const QRectF paper = layout.fullRectPixels(dpiX);
    const QRectF paint = layout.paintRectPixels(dpiX);
    const QRectF body(dpiX, dpiY, paper.width() - 2.0 * dpiX, paper.height() - 2.0 * dpiY);

    const std::unique_ptr<QTextDocument> copy(document.clone());
    copy->documentLayout()->setPaintDevice(&device);
    copy->setDocumentMargin(0);
    copy->setPageSize(body.size());
    const int pages = copy->pageCount();
    for (int page = 0; page < pages; ++page) {
        if (page > 0 && !device.newPage()) {
            SetError(error, QStringLiteral("The printer did not take page %1.").arg(page + 1));
            return false;
        }
        const QRectF clip(0, page * body.height(), body.width(), body.height());
        painter.save();
        // The painter starts at the device's margin; the text a page further down each time.
        painter.translate(body.left() - paint.left(), body.top() - paint.top() - clip.top());
        painter.setClipRect(clip);
        QAbstractTextDocumentLayout::PaintContext context;
        context.clip = clip;
        context.palette.setColor(QPalette::Text, Qt::black);
        copy->documentLayout()->draw(&painter, context);
        painter.restore();
    }
    return painter.end();
}

bool WritePdf(const QTextDocument& document, const QString& path, QString* error) {
    QSaveFile file(path);
    if (!file.open(QIODevice::WriteOnly)) {
        SetError(error, QStringLiteral("The file %1 cannot be written: %2")
                            .arg(Shown(path), file.errorString()));
        return false;
    }
    {
        QPdfWriter writer(&file);
        writer.setCreator(QCoreApplication::applicationName());
        writer.setTitle(document.metaInformation(QTextDocument::DocumentTitle));
        writer.setPageSize(QPageSize(QLocale().measurementSystem() == QLocale::ImperialUSSystem
                                         ? QPageSize::Letter
                                         : QPageSize::A4));
        if (!PrintDocument(document, writer, error)) {
            file.cancelWriting();
            return false;
        }
    }
    if (!file.commit()) {
        SetError(error, QStringLiteral("The file %1 cannot be written: %2")
                            .arg(Shown(path), file.errorString()));
        return false;
    }
    return true;
}

}  // namespace lw::richtext
