// SPDX-License-Identifier: GPL-3.0-or-later
// The grid of one list (grdAuction or GrdBid): a table view over the list's
// ListingModel with fixed row heights and the column widths of the lists, so
// that 100,000 rows cost nothing until they are scrolled into view, and very
// long cell texts are cut before they are laid out. A click on a column head
// sorts by that column's rule. It never reads the database.
#pragma once

#include <QColor>
#include <QIdentityProxyModel>
#include <QTableView>

#include "views/listing_model.h"

namespace lw::ui {

// Cell texts as the grid draws them: at most a few hundred characters, which
// is more than a column shows; and the green and red of the high-bid cells
// kept readable on the grid's background, light or dark.
class CappedTextModel : public QIdentityProxyModel {
    Q_OBJECT
public:
    using QIdentityProxyModel::QIdentityProxyModel;
    QVariant data(const QModelIndex& index, int role = Qt::DisplayRole) const override;
    void SetBackground(const QColor& background) { m_background = background; }

private:
    QColor m_background;
};

class ListingGrid : public QTableView {
    Q_OBJECT
public:
    ListingGrid(const QString& name, views::ListingModel& model, QWidget* parent = nullptr);

    views::ListingModel& Listing() { return m_listing; }
    // The row that has the focus; -1 when none.
    int CurrentRow() const;
    // Moves the selection to the row, column 0, without announcing it.
    void SelectRowQuietly(int row);

Q_SIGNALS:
    // A click on the head of the column.
    void HeadClicked(int column);
    // The focus moved to another row.
    void RowChanged(int row);
    // A right click, or the menu key, on a row with an item number.
    void PopupRequested(int row, const QPoint& globalPos);

protected:
    void changeEvent(QEvent* event) override;
    void contextMenuEvent(QContextMenuEvent* event) override;

private:
    void ApplyWidths();

    views::ListingModel& m_listing;
    CappedTextModel m_capped;
    bool m_quiet = false;
};

}  // namespace lw::ui
