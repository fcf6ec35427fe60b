// SPDX-License-Identifier: GPL-3.0-or-later
// The list grid: fixed-size rows and the lists' column widths over a model,
// head clicks turned into the sort of the column clicked.
#include "ui/listing_grid.h"

#include <QContextMenuEvent>
#include <QEvent>
#include <QHeaderView>
#include <QItemSelectionModel>

#include "ui/readable_colour.h"

namespace lw::ui {

namespace {

constexpr qsizetype kCellLength = 400;
// The grids' widths are given in twips; a pixel is 15 of them.
constexpr int kTwipsPerPixel = 15;

}  // namespace

QVariant CappedTextModel::data(const QModelIndex& index, int role) const {
    QVariant value = QIdentityProxyModel::data(index, role);
    if (role == Qt::ForegroundRole && value.canConvert<QColor>() && m_background.isValid()) {
        return QVariant(StateColourOn(value.value<QColor>(), m_background));
    }
    if (role == Qt::DisplayRole || role == Qt::ToolTipRole) {
        const QString text = value.toString();
        if (text.size() > kCellLength) {
            return QVariant(text.left(kCellLength) + QStringLiteral("..."));
        }
    }
    return value;
}

ListingGrid::ListingGrid(const QString& name, views::ListingModel& model, QWidget* parent)
    : QTableView(parent), m_listing(model) {
    setObjectName(name);
    m_capped.setSourceModel(&model);
    m_capped.SetBackground(palette().color(QPalette::Base));
    setModel(&m_capped);
    setSelectionBehavior(QAbstractItemView::SelectRows);
    setSelectionMode(QAbstractItemView::SingleSelection);
    setEditTriggers(QAbstractItemView::NoEditTriggers);
    setWordWrap(false);
    setSortingEnabled(false);
    setContextMenuPolicy(Qt::DefaultContextMenu);
    verticalHeader()->setSectionResizeMode(QHeaderView::Fixed);
    verticalHeader()->setDefaultSectionSize(fontMetrics().height() + 4);
    verticalHeader()->hide();
    horizontalHeader()->setSectionResizeMode(QHeaderView::Interactive);
    // The title takes the room the window gives; the end column keeps the
    // width of its longest text ("mm/dd/yy, hh:mm:ss PST" or a time left).
    horizontalHeader()->setSectionResizeMode(views::ListingModel::kDescription,
                                             QHeaderView::Stretch);
    horizontalHeader()->setStretchLastSection(false);
    horizontalHeader()->setSectionsClickable(true);
    horizontalHeader()->setDefaultAlignment(Qt::AlignCenter);
    ApplyWidths();

    connect(horizontalHeader(), &QHeaderView::sectionClicked, this, &ListingGrid::HeadClicked);
    connect(selectionModel(), &QItemSelectionModel::currentRowChanged, this,
            [this](const QModelIndex& current, const QModelIndex&) {
                if (!m_quiet && current.isValid()) {
                    Q_EMIT RowChanged(current.row());
                }
            });
}

void ListingGrid::ApplyWidths() {
    setColumnWidth(views::ListingModel::kItem, 960 / kTwipsPerPixel);
    for (int column = views::ListingModel::kDescription; column <= views::ListingModel::kHighBid;
         ++column) {
        setColumnWidth(column, views::ListingModel::ColumnWidthTwips(column) / kTwipsPerPixel);
    }
    setColumnWidth(views::ListingModel::kEnd,
                   fontMetrics().horizontalAdvance(QStringLiteral("00/00/00, 00:00:00 PST")) + 16);
}

void ListingGrid::contextMenuEvent(QContextMenuEvent* event) {
    // From the keyboard (the menu key, Shift+F10) the menu is of the row that
    // has the focus and opens over it; from the mouse, of the row clicked.
    QModelIndex index;
    QPoint pos;
    if (event->reason() == QContextMenuEvent::Keyboard) {
        index = currentIndex();
        pos = visualRect(index).center();
    } else {
        pos = viewport()->mapFromGlobal(event->globalPos());
        index = indexAt(pos);
    }
    if (!index.isValid() || m_listing.ItemNumber(index.row()).isEmpty()) {
        return;
    }
    event->accept();
    selectRow(index.row());
    Q_EMIT PopupRequested(index.row(), viewport()->mapToGlobal(pos));
}

void ListingGrid::changeEvent(QEvent* event) {
    QTableView::changeEvent(event);
    if (event->type() == QEvent::PaletteChange) {
        m_capped.SetBackground(palette().color(QPalette::Base));
        viewport()->update();
    }
}

int ListingGrid::CurrentRow() const {
    const QModelIndex current = currentIndex();
    return current.isValid() ? current.row() : -1;
}

void ListingGrid::SelectRowQuietly(int row) {
    m_quiet = true;
    if (row >= 0 && row < model()->rowCount()) {
        setCurrentIndex(model()->index(row, 0));
    } else {
        clearSelection();
    }
    m_quiet = false;
}

}  // namespace lw::ui
