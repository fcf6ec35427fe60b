// SPDX-License-Identifier: GPL-3.0-or-later
// The four item panels and the star pictures. Values arrive finished from
// views/panels; this file only places them, colours them and keeps very long
// texts from making a label lay out megabytes on every paint. No value sets
// the least size of a panel: a long title or name is cut where the panel
// ends, so that the main window's least size never follows the data.
#include "ui/item_panels.h"

#include <QEvent>
#include <QFontDatabase>
#include <QGridLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QHash>
#include <QLabel>
#include <QListWidget>
#include <QPainter>
#include <QPainterPath>
#include <QStyleOptionGroupBox>
#include <QStylePainter>
#include <QTimer>
#include <QVBoxLayout>
#include <QtMath>
#include <algorithm>

#include "ui/readable_colour.h"
#include "ui/task_pictures.h"

namespace lw::ui {

namespace {

// A label shows at most this much of a value; the rest would not fit anyway.
constexpr qsizetype kShownLength = 300;

QString Shown(const QString& text) {
    if (text.size() <= kShownLength) {
        return text;
    }
    return text.left(kShownLength - 3) + QStringLiteral("...");
}

// A frame caption keeps its end, where "(Item #...)" stands.
QString ShownTitle(const QString& title) {
    if (title.size() <= kShownLength) {
        return title;
    }
    return title.left(kShownLength - 63) + QStringLiteral("...") + title.right(60);
}

// A label takes "&" literally (it has no buddy), so the doubling that the
// frame captions need is undone for it.
QString LabelText(const QString& doubled) {
    return Shown(QString(doubled).replace(QStringLiteral("&&"), QStringLiteral("&")));
}

// A value label whose least width is that of a few characters, whatever it
// shows; a longer text is cut at the panel's edge.
class ValueLabel : public QLabel {
public:
    using QLabel::QLabel;
    QSize minimumSizeHint() const override {
        return {fontMetrics().horizontalAdvance(QLatin1Char('x')) * 4,
                QLabel::minimumSizeHint().height()};
    }
};

QLabel* Value(QWidget* parent, const QString& name) {
    auto* label = new ValueLabel(QStringLiteral("n/a"), parent);
    label->setObjectName(name);
    label->setTextInteractionFlags(Qt::TextSelectableByMouse);
    return label;
}

// A member of the lblLabel array: its name carries the index.
QLabel* Word(QWidget* parent, int index, const QString& text) {
    auto* label = new QLabel(text, parent);
    label->setObjectName(QStringLiteral("lblLabel%1").arg(index));
    label->setProperty("index", index);
    return label;
}

QLabel* Plain(QWidget* parent, const QString& text) {
    return new QLabel(text, parent);
}

// The star beside a name; whose feedback it rates is its accessible name.
QLabel* Star(QWidget* parent, const QString& name, const QString& whose) {
    auto* label = new QLabel(parent);
    label->setObjectName(name);
    label->setFixedSize(18, 18);
    label->setAlignment(Qt::AlignCenter);
    label->setAccessibleName(whose);
    return label;
}

void SetStar(QLabel* label, const QString& picture) {
    label->setPixmap(StarPicture(picture, label->devicePixelRatioF(),
                                 label->window()->palette().color(QPalette::Window)));
    label->setProperty("picture", picture);
    const QString meaning = StarMeaning(picture);
    label->setToolTip(meaning);
    label->setAccessibleDescription(meaning);
}

// The classic green and red, kept readable on the window's background.
QColor ShownColour(const QWidget* widget, views::CellColour colour) {
    return StateColourOn(views::ColourOf(colour),
                         widget->window()->palette().color(QPalette::Window));
}

// The colour a label or frame title was given, so that it can be chosen
// afresh when the palette changes.
const char* const kCellColour = "cellColour";

void SetColour(QLabel* label, views::CellColour colour) {
    label->setProperty(kCellColour, static_cast<int>(colour));
    QPalette palette = label->palette();
    palette.setColor(QPalette::WindowText, ShownColour(label, colour));
    label->setPalette(palette);
}

// Every coloured label and title of a panel, chosen again for the palette
// it now stands on.
void Recolour(QWidget* panel) {
    const auto labels = panel->findChildren<QLabel*>();
    for (QLabel* label : labels) {
        const QVariant colour = label->property(kCellColour);
        if (colour.isValid()) {
            SetColour(label, static_cast<views::CellColour>(colour.toInt()));
        }
        // A star's outline must stand out from the new ground too.
        const QVariant picture = label->property("picture");
        if (picture.isValid()) {
            SetStar(label, picture.toString());
        }
    }
    const auto boxes = panel->findChildren<PanelFrame*>();
    for (PanelFrame* box : boxes) {
        const QVariant colour = box->property(kCellColour);
        if (colour.isValid()) {
            box->SetTitleColour(static_cast<views::CellColour>(colour.toInt()));
        }
    }
}

// Runs the recolouring once a palette change has reached every widget.
void RecolourAfter(QWidget* panel, QEvent* event) {
    if (event->type() == QEvent::PaletteChange || event->type() == QEvent::StyleChange) {
        QTimer::singleShot(0, panel, [panel] { Recolour(panel); });
    }
}

void SetTitle(QGroupBox* box, const QString& title, views::CellColour colour) {
    box->setTitle(ShownTitle(title));
    if (auto* frame = dynamic_cast<PanelFrame*>(box)) {
        frame->SetTitleColour(colour);
    }
}

template <class T>
T* Child(QWidget* parent, const QString& name) {
    return parent->findChild<T*>(name);
}

void SetLabel(QWidget* panel, const QString& name, const QString& text) {
    if (QLabel* label = Child<QLabel>(panel, name)) {
        label->setText(Shown(text));
    }
}

void SetWords(QWidget* panel, const views::PanelWords& words, int ends, int startsAt,
              int currently) {
    if (words.ends.isEmpty()) {
        return;
    }
    SetLabel(panel, QStringLiteral("lblLabel%1").arg(ends), words.ends);
    SetLabel(panel, QStringLiteral("lblLabel%1").arg(startsAt), words.startsAt);
    SetLabel(panel, QStringLiteral("lblLabel%1").arg(currently), words.currently);
}

QListWidget* FixedList(QWidget* parent, const QString& name, const QString& spoken) {
    auto* list = new QListWidget(parent);
    list->setObjectName(name);
    list->setAccessibleName(spoken);
    list->setFont(QFontDatabase::systemFont(QFontDatabase::FixedFont));
    list->setUniformItemSizes(true);
    return list;
}

// A name label with its star right beside it.
QWidget* NameWithStar(QWidget* parent, QLabel* name, QLabel* star) {
    auto* box = new QWidget(parent);
    auto* row = new QHBoxLayout(box);
    row->setContentsMargins(0, 0, 0, 0);
    row->addWidget(name);
    row->addWidget(star);
    row->addStretch(1);
    return box;
}

// The star is drawn as a path at the pixel density it is shown at, so that it
// is as crisp on a high-density screen as on any other.
QPixmap DrawStar(const QColor& fill, qreal ratio, const QColor& background) {
    QPixmap picture = BlankPicture(ratio);
    QPainter painter(&picture);
    painter.setRenderHint(QPainter::Antialiasing);
    QPainterPath path;
    for (int i = 0; i < 10; ++i) {
        const double radius = (i % 2 == 0) ? 7.5 : 3.2;
        const double angle = -M_PI / 2 + i * M_PI / 5;
        const QPointF point(8 + radius * std::cos(angle), 8 + radius * std::sin(angle));
        if (i == 0) {
            path.moveTo(point);
        } else {
            path.lineTo(point);
        }
    }
    path.closeSubpath();
    // A shape needs 3:1 against its ground to be made out.
    painter.setPen(QPen(ReadableOn(QColor(64, 64, 64), background, 3.0), 0.8));
    painter.setBrush(fill);
    painter.drawPath(path);
    return picture;
}

}  // namespace

// ------------------------------------------------------------------ frames

PanelFrame::PanelFrame(QWidget* parent) : QGroupBox(parent) {
    // The title is the item's, not a caption: it takes no mnemonic.
    setProperty("titleFromData", true);
}

QSize PanelFrame::minimumSizeHint() const {
    return QWidget::minimumSizeHint();
}

void PanelFrame::SetTitleColour(views::CellColour colour) {
    setProperty(kCellColour, static_cast<int>(colour));
    m_titleColour = ShownColour(this, colour);
    setProperty("titleColour", m_titleColour.name());
    update();
}

void PanelFrame::paintEvent(QPaintEvent*) {
    QStylePainter painter(this);
    QStyleOptionGroupBox option;
    initStyleOption(&option);
    if (m_titleColour.isValid()) {
        // Some styles take the title's colour from the option, others
        // (Fusion) from the palette's window text.
        option.textColor = m_titleColour;
        option.palette.setColor(QPalette::WindowText, m_titleColour);
    }
    // Room for the title: the frame less a margin of two characters on
    // each side.
    const int room = std::max(0, width() - fontMetrics().averageCharWidth() * 4);
    option.text =
        fontMetrics().elidedText(option.text, Qt::ElideMiddle, room, Qt::TextShowMnemonic);
    painter.drawComplexControl(QStyle::CC_GroupBox, option);
}

QString StarMeaning(const QString& name) {
    // The bands of views::StarIconFor.
    static const QHash<QString, QString> meanings = {
        {QStringLiteral("eBayNoStar"),
         QStringLiteral("Empty star: a feedback score below 10, or no feedback")},
        {QStringLiteral("eBay10-99"), QStringLiteral("Yellow star: a feedback score of 10 to 99")},
        {QStringLiteral("eBay100-499"),
         QStringLiteral("Turquoise star: a feedback score of 100 to 499")},
        {QStringLiteral("eBay500-999"),
         QStringLiteral("Purple star: a feedback score of 500 to 999")},
        {QStringLiteral("eBay1000-9999"),
         QStringLiteral("Red star: a feedback score of 1,000 to 9,999")},
        {QStringLiteral("eBay10000"),
         QStringLiteral("Green star: a feedback score of 10,000 or more")},
    };
    return meanings.value(name);
}

QPixmap StarPicture(const QString& name, qreal devicePixelRatio, const QColor& background) {
    // Star colours by feedback band, from the plain outline to the top band.
    static const QHash<QString, QColor> colours = {
        {QStringLiteral("eBayNoStar"), Qt::transparent},
        {QStringLiteral("eBay10-99"), QColor(255, 215, 0)},
        {QStringLiteral("eBay100-499"), QColor(64, 224, 208)},
        {QStringLiteral("eBay500-999"), QColor(160, 32, 240)},
        {QStringLiteral("eBay1000-9999"), QColor(220, 20, 60)},
        {QStringLiteral("eBay10000"), QColor(34, 139, 34)},
    };
    const auto colour = colours.constFind(name);
    if (colour == colours.constEnd()) {
        return {};
    }
    // Drawn afresh each time: a picture kept in a static would outlive the
    // application object that owns the paint system.
    return DrawStar(colour.value(), devicePixelRatio, background);
}

// ------------------------------------------------------------------ sales

SalePanels::SalePanels(QWidget* parent) : QWidget(parent) {
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);

    m_fraAuctionInfo = new PanelFrame(this);
    m_fraAuctionInfo->setObjectName(QStringLiteral("fraAuctionInfo"));
    {
        QWidget* f = m_fraAuctionInfo;
        auto* grid = new QGridLayout(f);
        grid->addWidget(Plain(f, QStringLiteral("Category:")), 0, 0);
        grid->addWidget(Value(f, QStringLiteral("lblCategory")), 0, 1, 1, 3);
        grid->addWidget(Word(f, 71, QStringLiteral("Starts at:")), 1, 0);
        grid->addWidget(Value(f, QStringLiteral("lblStartsAt")), 1, 1);
        grid->addWidget(Word(f, 48, QStringLiteral("Currently:")), 1, 2);
        grid->addWidget(Value(f, QStringLiteral("lblCurrently")), 1, 3);
        grid->addWidget(Plain(f, QStringLiteral("Reserve:")), 2, 0);
        grid->addWidget(Value(f, QStringLiteral("lblReserve")), 2, 1);
        grid->addWidget(Plain(f, QStringLiteral("Bids:")), 2, 2);
        grid->addWidget(Value(f, QStringLiteral("lblBids")), 2, 3);
        grid->addWidget(Plain(f, QStringLiteral("Quantity:")), 3, 0);
        grid->addWidget(Value(f, QStringLiteral("lblQuantity")), 3, 1);
        grid->addWidget(Plain(f, QStringLiteral("High Bidder:")), 3, 2);
        grid->addWidget(NameWithStar(f, Value(f, QStringLiteral("lblHighBidderName")),
                                     Star(f, QStringLiteral("picStar"),
                                          QStringLiteral("High bidder's feedback star"))),
                        3, 3);
        grid->addWidget(Plain(f, QStringLiteral("Started:")), 4, 0);
        grid->addWidget(Value(f, QStringLiteral("lblStarted")), 4, 1);
        grid->addWidget(Word(f, 55, QStringLiteral("Ends:")), 4, 2);
        grid->addWidget(Value(f, QStringLiteral("lblEnds")), 4, 3);
        grid->addWidget(Plain(f, QStringLiteral("Time Left:")), 5, 0);
        grid->addWidget(Value(f, QStringLiteral("lblTimeLeft")), 5, 1, 1, 3);
        grid->setColumnStretch(1, 1);
        grid->setColumnStretch(3, 1);
    }
    layout->addWidget(m_fraAuctionInfo);

    m_fraDutchInfo = new PanelFrame(this);
    m_fraDutchInfo->setObjectName(QStringLiteral("fraDutchInfo"));
    {
        QWidget* f = m_fraDutchInfo;
        auto* grid = new QGridLayout(f);
        grid->addWidget(Plain(f, QStringLiteral("Category:")), 0, 0);
        grid->addWidget(Value(f, QStringLiteral("lblCategoryD")), 0, 1, 1, 3);
        grid->addWidget(Plain(f, QStringLiteral("Starts at:")), 1, 0);
        grid->addWidget(Value(f, QStringLiteral("lblStartsAtD")), 1, 1);
        grid->addWidget(Plain(f, QStringLiteral("Bids:")), 1, 2);
        grid->addWidget(Value(f, QStringLiteral("lblBidsD")), 1, 3);
        grid->addWidget(Plain(f, QStringLiteral("Quantity:")), 2, 0);
        grid->addWidget(Value(f, QStringLiteral("lblQuantityD")), 2, 1);
        grid->addWidget(Plain(f, QStringLiteral("Total:")), 2, 2);
        grid->addWidget(Value(f, QStringLiteral("lblTotalD")), 2, 3);
        grid->addWidget(Plain(f, QStringLiteral("Started:")), 3, 0);
        grid->addWidget(Value(f, QStringLiteral("lblStartedD")), 3, 1);
        grid->addWidget(Plain(f, QStringLiteral("Ends:")), 3, 2);
        grid->addWidget(Value(f, QStringLiteral("lblEndsD")), 3, 3);
        grid->addWidget(
            FixedList(f, QStringLiteral("lstDutchWinners"), QStringLiteral("Winning bidders")), 4,
            0, 1, 4);
        grid->setColumnStretch(1, 1);
        grid->setColumnStretch(3, 1);
    }
    layout->addWidget(m_fraDutchInfo);
    m_fraDutchInfo->hide();
    Clear();
}

void SalePanels::ShowSale(const views::SalePanel& p) {
    FillSale(p);
    m_fraDutchInfo->hide();
    m_fraAuctionInfo->show();
}

void SalePanels::FillSale(const views::SalePanel& p) {
    QWidget* f = m_fraAuctionInfo;
    SetTitle(m_fraAuctionInfo, p.title, p.colour);
    Child<QLabel>(f, QStringLiteral("lblCategory"))->setText(LabelText(p.category));
    SetLabel(f, QStringLiteral("lblStartsAt"), p.startsAt);
    SetLabel(f, QStringLiteral("lblCurrently"), p.currently);
    SetColour(Child<QLabel>(f, QStringLiteral("lblCurrently")), p.colour);
    SetLabel(f, QStringLiteral("lblReserve"), p.reserve);
    SetLabel(f, QStringLiteral("lblBids"), p.bids);
    SetLabel(f, QStringLiteral("lblQuantity"), p.quantity);
    SetLabel(f, QStringLiteral("lblHighBidderName"), p.highBidder);
    SetStar(Child<QLabel>(f, QStringLiteral("picStar")), p.highBidderStar);
    SetLabel(f, QStringLiteral("lblStarted"), p.started);
    SetLabel(f, QStringLiteral("lblEnds"), p.ends);
    SetLabel(f, QStringLiteral("lblTimeLeft"), p.timeLeft);
    SetWords(f, p.words, 55, 71, 48);
}

void SalePanels::ShowDutchSale(const views::DutchSalePanel& p) {
    QWidget* f = m_fraDutchInfo;
    SetTitle(m_fraDutchInfo, p.title, p.colour);
    Child<QLabel>(f, QStringLiteral("lblCategoryD"))->setText(LabelText(p.category));
    SetLabel(f, QStringLiteral("lblStartsAtD"), p.startsAt);
    SetLabel(f, QStringLiteral("lblBidsD"), p.bids);
    SetLabel(f, QStringLiteral("lblQuantityD"), p.quantity);
    SetLabel(f, QStringLiteral("lblStartedD"), p.started);
    SetLabel(f, QStringLiteral("lblEndsD"), p.ends);
    SetLabel(f, QStringLiteral("lblTotalD"), p.total);
    SetColour(Child<QLabel>(f, QStringLiteral("lblTotalD")), p.colour);
    auto* winners = Child<QListWidget>(f, QStringLiteral("lstDutchWinners"));
    winners->clear();
    for (const QString& row : p.winners) {
        winners->addItem(Shown(row));
    }
    m_fraAuctionInfo->hide();
    m_fraDutchInfo->show();
}

void SalePanels::Clear() {
    ShowSale(views::ClearSalePanel());
}

void SalePanels::changeEvent(QEvent* event) {
    QWidget::changeEvent(event);
    RecolourAfter(this, event);
}

QString SalePanels::TimeLeft() const {
    return Child<QLabel>(m_fraAuctionInfo, QStringLiteral("lblTimeLeft"))->text();
}

// ------------------------------------------------------------------ bids

BidPanels::BidPanels(QWidget* parent) : QWidget(parent) {
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);

    m_fraBidInfo = new PanelFrame(this);
    m_fraBidInfo->setObjectName(QStringLiteral("fraBidInfo"));
    {
        QWidget* f = m_fraBidInfo;
        auto* grid = new QGridLayout(f);
        grid->addWidget(Plain(f, QStringLiteral("Category:")), 0, 0);
        grid->addWidget(Value(f, QStringLiteral("lblBidCategory")), 0, 1, 1, 3);
        grid->addWidget(Word(f, 61, QStringLiteral("Starts at:")), 1, 0);
        grid->addWidget(Value(f, QStringLiteral("lblBidStartsAt")), 1, 1);
        grid->addWidget(Word(f, 62, QStringLiteral("Currently:")), 1, 2);
        grid->addWidget(Value(f, QStringLiteral("lblBidCurrently")), 1, 3);
        grid->addWidget(Plain(f, QStringLiteral("My Max Bid:")), 2, 0);
        grid->addWidget(Value(f, QStringLiteral("lblBidMyMax")), 2, 1);
        grid->addWidget(Plain(f, QStringLiteral("Bids:")), 2, 2);
        grid->addWidget(Value(f, QStringLiteral("lblBidBids")), 2, 3);
        grid->addWidget(Plain(f, QStringLiteral("Quantity:")), 3, 0);
        grid->addWidget(Value(f, QStringLiteral("lblBidQuantity")), 3, 1);
        grid->addWidget(Plain(f, QStringLiteral("High Bidder:")), 3, 2);
        grid->addWidget(NameWithStar(f, Value(f, QStringLiteral("lblBidHighBidderName")),
                                     Star(f, QStringLiteral("picBidStar"),
                                          QStringLiteral("High bidder's feedback star"))),
                        3, 3);
        grid->addWidget(Plain(f, QStringLiteral("Seller:")), 4, 2);
        grid->addWidget(NameWithStar(f, Value(f, QStringLiteral("lblBidSellerName")),
                                     Star(f, QStringLiteral("PicSellerStar"),
                                          QStringLiteral("Seller's feedback star"))),
                        4, 3);
        grid->addWidget(Plain(f, QStringLiteral("Started:")), 5, 0);
        grid->addWidget(Value(f, QStringLiteral("lblBidStarted")), 5, 1);
        grid->addWidget(Word(f, 70, QStringLiteral("Ends:")), 5, 2);
        grid->addWidget(Value(f, QStringLiteral("lblBidEnds")), 5, 3);
        grid->addWidget(Plain(f, QStringLiteral("Time Left:")), 6, 0);
        grid->addWidget(Value(f, QStringLiteral("lblBidTimeLeft")), 6, 1, 1, 3);
        grid->setColumnStretch(1, 1);
        grid->setColumnStretch(3, 1);
    }
    layout->addWidget(m_fraBidInfo);

    m_frmDutchBid = new PanelFrame(this);
    m_frmDutchBid->setObjectName(QStringLiteral("frmDutchBid"));
    {
        QWidget* f = m_frmDutchBid;
        auto* grid = new QGridLayout(f);
        const QStringList words = {QStringLiteral("Category:"), QStringLiteral("Minimum:"),
                                   QStringLiteral("Bids:"),     QStringLiteral("Quantity:"),
                                   QStringLiteral("Started:"),  QString()};
        for (int i = 0; i < 6; ++i) {
            auto* value = Value(f, QStringLiteral("lblDutchBid%1").arg(i));
            value->setProperty("index", i);
            QLabel* word = i == 5 ? Word(f, 107, QStringLiteral("Ends:")) : Plain(f, words.at(i));
            grid->addWidget(word, i / 2, (i % 2) * 2);
            grid->addWidget(value, i / 2, (i % 2) * 2 + 1);
        }
        grid->addWidget(FixedList(f, QStringLiteral("lstDutchBidders"), QStringLiteral("Bidders")),
                        3, 0, 1, 4);
        grid->setColumnStretch(1, 1);
        grid->setColumnStretch(3, 1);
    }
    layout->addWidget(m_frmDutchBid);
    m_frmDutchBid->hide();
    Clear();
}

void BidPanels::ShowBid(const views::BidDetails& details) {
    if (details.dutch) {
        const views::DutchBidPanel& p = details.dutchPanel;
        QWidget* f = m_frmDutchBid;
        SetTitle(m_frmDutchBid, p.title, p.colour);
        for (int i = 0; i < 6; ++i) {
            Child<QLabel>(f, QStringLiteral("lblDutchBid%1").arg(i))
                ->setText(i == 0 ? LabelText(p.values[0])
                                 : Shown(p.values[static_cast<size_t>(i)]));
        }
        if (!p.endsWord.isEmpty()) {
            SetLabel(f, QStringLiteral("lblLabel107"), p.endsWord);
        }
        auto* bidders = Child<QListWidget>(f, QStringLiteral("lstDutchBidders"));
        bidders->clear();
        for (const QString& row : p.bidders) {
            bidders->addItem(Shown(row));
        }
        m_fraBidInfo->hide();
        m_frmDutchBid->show();
        return;
    }
    const views::BidPanel& p = details.plain;
    QWidget* f = m_fraBidInfo;
    SetTitle(m_fraBidInfo, p.title, p.colour);
    Child<QLabel>(f, QStringLiteral("lblBidCategory"))->setText(LabelText(p.category));
    SetLabel(f, QStringLiteral("lblBidStartsAt"), p.startsAt);
    SetLabel(f, QStringLiteral("lblBidCurrently"), p.currently);
    SetColour(Child<QLabel>(f, QStringLiteral("lblBidCurrently")), p.colour);
    SetLabel(f, QStringLiteral("lblBidMyMax"), p.myMax);
    SetLabel(f, QStringLiteral("lblBidBids"), p.bids);
    SetLabel(f, QStringLiteral("lblBidQuantity"), p.quantity);
    SetLabel(f, QStringLiteral("lblBidHighBidderName"), p.highBidder);
    SetStar(Child<QLabel>(f, QStringLiteral("picBidStar")), p.highBidderStar);
    SetLabel(f, QStringLiteral("lblBidSellerName"), p.seller);
    SetStar(Child<QLabel>(f, QStringLiteral("PicSellerStar")), p.sellerStar);
    SetLabel(f, QStringLiteral("lblBidStarted"), p.started);
    SetLabel(f, QStringLiteral("lblBidEnds"), p.ends);
    SetLabel(f, QStringLiteral("lblBidTimeLeft"), p.timeLeft);
    SetWords(f, p.words, 70, 61, 62);
    m_frmDutchBid->hide();
    m_fraBidInfo->show();
}

void BidPanels::changeEvent(QEvent* event) {
    QWidget::changeEvent(event);
    RecolourAfter(this, event);
}

void BidPanels::Clear() {
    views::BidDetails details;
    details.plain = views::ClearBidPanel();
    ShowBid(details);
}

}  // namespace lw::ui
