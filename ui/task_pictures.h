// SPDX-License-Identifier: GPL-3.0-or-later
// The pictures of the task tree, drawn by the program at the density of the
// screen they are shown on, numbered as the task rows and the icon rule
// number them: 1 the root of a sale or bid, 2 the summary, 3 a task done,
// 4 a task pending, 8 a closed folder, 9 the same folder open. They only
// draw; which node shows which picture is the task model's business.
#pragma once

#include <QColor>
#include <QIcon>
#include <QPixmap>
#include <QString>

namespace lw::ui {

enum TaskPictureIndex : int {
    kRootPicture = 1,
    kSummaryPicture = 2,
    kDonePicture = 3,
    kPendingPicture = 4,
    kClosedFolderPicture = 8,
    kOpenFolderPicture = 9,
};

// A transparent picture of 16 by 16 device-independent pixels at the given
// pixel density (1 to 8), to draw a tree's or a panel's small picture on.
QPixmap BlankPicture(qreal devicePixelRatio);

// The picture of that index, 16 by 16 device-independent pixels drawn at the
// given pixel density, its outlines readable on background; an empty picture
// for an index that has none.
QPixmap TaskPicture(int index, qreal devicePixelRatio = 1.0, const QColor& background = Qt::white);
// The same as an icon with the densities 1 and 2 in it.
QIcon TaskIcon(int index, const QColor& background);
// What the picture tells, for a screen reader and a tip; empty for an
// index that has none.
QString TaskPictureMeaning(int index);

}  // namespace lw::ui
