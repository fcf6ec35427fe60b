// SPDX-License-Identifier: GPL-3.0-or-later
// The task tree's pictures as painter paths on a 16 by 16 grid. Every
// outline is kept at 3:1 against the ground it is drawn for, as a shape
// needs to be made out; the fills may be the classic colours.
#include "ui/task_pictures.h"

#include <QPainter>
#include <QPainterPath>
#include <algorithm>

#include "ui/readable_colour.h"

namespace lw::ui {

namespace {

constexpr int kSide = 16;
constexpr double kShapeContrast = 3.0;

QColor Outline(const QColor& wanted, const QColor& background) {
    return ReadableOn(wanted, background, kShapeContrast);
}

void DrawRoot(QPainter& p, const QColor& background) {
    // A gavel over its block.
    const QColor wood(139, 90, 43);
    p.setPen(QPen(Outline(QColor(92, 58, 26), background), 0.9));
    p.setBrush(wood);
    p.drawRoundedRect(QRectF(1.0, 12.5, 8.0, 2.5), 0.8, 0.8);
    p.save();
    p.translate(6.0, 6.0);
    p.rotate(45.0);
    p.drawRoundedRect(QRectF(-4.5, -2.3, 9.0, 4.6), 1.0, 1.0);
    p.restore();
    p.setPen(QPen(Outline(wood, background), 2.0, Qt::SolidLine, Qt::RoundCap));
    p.drawLine(QPointF(8.5, 8.5), QPointF(14.5, 14.5));
}

void DrawSummary(QPainter& p, const QColor& background) {
    // A written sheet.
    p.setPen(QPen(Outline(QColor(96, 96, 96), background), 0.9));
    p.setBrush(QColor(250, 250, 250));
    p.drawRect(QRectF(3.0, 1.5, 10.0, 13.0));
    p.setPen(QPen(QColor(52, 101, 164), 1.0));
    for (const double y : {4.5, 7.0, 9.5, 12.0}) {
        p.drawLine(QPointF(5.0, y), QPointF(y < 11.0 ? 11.0 : 9.0, y));
    }
}

void DrawDone(QPainter& p, const QColor& background) {
    QPainterPath tick;
    tick.moveTo(2.5, 8.5);
    tick.lineTo(6.5, 12.5);
    tick.lineTo(13.5, 3.5);
    p.setBrush(Qt::NoBrush);
    p.setPen(QPen(Outline(QColor(34, 139, 34), background), 2.6, Qt::SolidLine, Qt::RoundCap,
                  Qt::RoundJoin));
    p.drawPath(tick);
}

void DrawPending(QPainter& p, const QColor& background) {
    // An open clock face: nothing done yet.
    const QColor ink = Outline(QColor(184, 134, 11), background);
    p.setBrush(Qt::NoBrush);
    p.setPen(QPen(ink, 1.5));
    p.drawEllipse(QPointF(8.0, 8.0), 6.0, 6.0);
    p.setPen(QPen(ink, 1.4, Qt::SolidLine, Qt::RoundCap));
    p.drawLine(QPointF(8.0, 8.0), QPointF(8.0, 4.2));
    p.drawLine(QPointF(8.0, 8.0), QPointF(10.8, 9.6));
}

QPainterPath FolderBack() {
    QPainterPath back;
    back.moveTo(1.5, 3.5);
    back.lineTo(6.0, 3.5);
    back.lineTo(7.5, 5.0);
    back.lineTo(14.5, 5.0);
    back.lineTo(14.5, 13.5);
    back.lineTo(1.5, 13.5);
    back.closeSubpath();
    return back;
}

void DrawFolder(QPainter& p, const QColor& background, bool open) {
    const QColor edge = Outline(QColor(154, 116, 18), background);
    p.setPen(QPen(edge, 0.9));
    p.setBrush(open ? QColor(214, 163, 40) : QColor(232, 183, 58));
    p.drawPath(FolderBack());
    if (open) {
        QPainterPath flap;
        flap.moveTo(4.0, 7.5);
        flap.lineTo(15.5, 7.5);
        flap.lineTo(13.0, 13.5);
        flap.lineTo(1.5, 13.5);
        flap.closeSubpath();
        p.setBrush(QColor(246, 206, 96));
        p.drawPath(flap);
    }
}

}  // namespace

QPixmap BlankPicture(qreal devicePixelRatio) {
    const qreal density = std::clamp(devicePixelRatio, 1.0, 8.0);
    QPixmap picture(QSize(kSide, kSide) * density);
    picture.setDevicePixelRatio(density);
    picture.fill(Qt::transparent);
    return picture;
}

QPixmap TaskPicture(int index, qreal devicePixelRatio, const QColor& background) {
    if (TaskPictureMeaning(index).isEmpty()) {
        return {};
    }
    QPixmap picture = BlankPicture(devicePixelRatio);
    QPainter painter(&picture);
    painter.setRenderHint(QPainter::Antialiasing);
    switch (index) {
        case kRootPicture:
            DrawRoot(painter, background);
            break;
        case kSummaryPicture:
            DrawSummary(painter, background);
            break;
        case kDonePicture:
            DrawDone(painter, background);
            break;
        case kPendingPicture:
            DrawPending(painter, background);
            break;
        case kClosedFolderPicture:
        case kOpenFolderPicture:
            DrawFolder(painter, background, index == kOpenFolderPicture);
            break;
        default:
            break;
    }
    return picture;
}

QIcon TaskIcon(int index, const QColor& background) {
    QIcon icon;
    for (const qreal density : {1.0, 2.0}) {
        const QPixmap picture = TaskPicture(index, density, background);
        if (!picture.isNull()) {
            icon.addPixmap(picture);
        }
    }
    return icon;
}

QString TaskPictureMeaning(int index) {
    switch (index) {
        case kRootPicture:
            return QStringLiteral("Item");
        case kSummaryPicture:
            return QStringLiteral("Summary");
        case kDonePicture:
            return QStringLiteral("Done");
        case kPendingPicture:
            return QStringLiteral("Pending");
        case kClosedFolderPicture:
            return QStringLiteral("Folder, closed");
        case kOpenFolderPicture:
            return QStringLiteral("Folder, open");
        default:
            return {};
    }
}

}  // namespace lw::ui
