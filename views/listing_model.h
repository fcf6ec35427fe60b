// SPDX-License-Identifier: GPL-3.0-or-later
// The rows of one list of the main window (My Sales or My Bids) as a table
// model: the five columns, their texts, the colour of the high-bid cell, the
// sort rules of a head click and the time-left column. The rows are filled by
// the listings (listings.h) with one query and held in one compact vector, so
// that a list of 100,000 rows costs no widget item per cell; the time-left
// texts are worked out only for the rows a view asks for. The model never
// reads the database and never writes a setting.
#pragma once

#include <QAbstractTableModel>
#include <QColor>
#include <QDateTime>
#include <QHash>
#include <QString>
#include <array>
#include <vector>

namespace lw::views {

// Row 0 and row 1 of a group combo.
enum class Group { Current = 0, Archived = 1 };

// The colours of the classic 16-colour table that the lists and panels use.
enum class CellColour { None, Green, Red };
QColor ColourOf(CellColour colour);

// The text of a Null field in a list or a panel.
QString NotAvailable();
// Column 2 of a multi-winner sale; selection tells a Dutch row by it.
QString DutchMark();

// One row as the listing read it.
struct ListingRow {
    QString item;             // column 0
    QString title;            // column 1, entities decoded
    QString bids;             // column 2
    QString highBid;          // column 3
    QString endDate;          // EndDate as stored; column 4 is made from it
    double highBidValue = 0;  // HighBid by the number rule
    CellColour colour = CellColour::None;
    bool endNull = true;
};

class ListingModel : public QAbstractTableModel {
    Q_OBJECT

public:
    enum Column : int { kItem = 0, kDescription, kBids, kHighBid, kEnd, kColumnCount };

    explicit ListingModel(QObject* parent = nullptr);

    int rowCount(const QModelIndex& parent = QModelIndex()) const override;
    int columnCount(const QModelIndex& parent = QModelIndex()) const override;
    QVariant data(const QModelIndex& index, int role = Qt::DisplayRole) const override;
    QVariant headerData(int section, Qt::Orientation orientation,
                        int role = Qt::DisplayRole) const override;

    // The cell text as the grid shows it; empty outside the rows.
    QString Text(int row, int column) const;
    QString ItemNumber(int row) const { return Text(row, kItem); }
    // "*D*" in column 2.
    bool IsDutchRow(int row) const;
    CellColour HighBidColour(int row) const;
    double HighBidValue(int row) const;

    // The first row from `from` on, wrapping round to the top, whose item
    // number is text or whose title holds it, case aside; -1 when none.
    int FindRow(const QString& text, int from) const;

    // Column 4 shows the time left (current view) or the end day (archive).
    bool ShowsTimeLeft() const { return m_timeLeft; }
    // "Time Left" or "Ended"; the item panel's word is EndLabel().
    QString EndHeading() const;
    QString EndLabel() const;
    static QString Heading(int column, bool timeLeft);
    // Widths of columns 1 to 3 in twips, as the grid sets them; 0 for the
    // columns whose width the grid leaves alone.
    static int ColumnWidthTwips(int column);

    // Head clicks. A column's direction is 0 before its first click, then
    // alternates 2, 1, 2, ... Column 0 sorts descending on 2 and ascending on 1;
    // column 1 A to Z on 2; columns 2 and 3 (by value) largest first on 2;
    // column 4 by the text it shows (a time left or an end day, not the
    // time), A to Z on 1.
    void HeadClick(int column);
    void Sort(int column, int direction);
    // Sets a direction without sorting (the bids list's start values).
    void SetSortState(int column, int direction);
    int SortDirection(int column) const;
    int SortColumn() const { return m_sortColumn; }
    // The column under a head click at x twips, by the default widths; -1 for
    // the gaps between the columns' ranges.
    static int ColumnAtHeadX(int xTwips, int gridWidthTwips);

    // Filled by the listings.
    void SetRows(std::vector<ListingRow> rows, bool timeLeft, const QDateTime& now,
                 const QString& siteCorrection);
    void Clear(bool timeLeft);
    // The end of an item as read again for the time-left refresh.
    struct End {
        QString endDate;
        bool endNull = true;
    };
    // New ends by item number, texts as of now; only column 4 changes, and
    // rows whose item was not found keep what they show.
    void RefreshTimeLeft(const QHash<QString, End>& ends, const QDateTime& now,
                         const QString& siteCorrection);
    const std::vector<ListingRow>& Rows() const { return m_rows; }

private:
    QString EndText(int row) const;

    std::vector<ListingRow> m_rows;
    // Time-left texts are made on demand and kept until the next refresh.
    mutable std::vector<QString> m_timeLeftCache;
    mutable std::vector<bool> m_timeLeftDone;
    bool m_timeLeft = true;
    QDateTime m_now;
    QString m_siteCorrection = QStringLiteral("0");
    std::array<int, kColumnCount> m_directions{};
    int m_sortColumn = 0;
};

}  // namespace lw::views
