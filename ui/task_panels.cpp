// SPDX-License-Identifier: GPL-3.0-or-later
// The task manager's panels: their controls, made in reading order so that
// Tab goes through a panel as it reads, and the rules of the controls.
#include "ui/task_panels.h"

#include <QButtonGroup>
#include <QCheckBox>
#include <QComboBox>
#include <QDate>
#include <QEvent>
#include <QFont>
#include <QGridLayout>
#include <QHBoxLayout>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QRadioButton>
#include <QTextEdit>
#include <QVBoxLayout>

#include "core/text.h"
#include "ui/item_panels.h"

namespace lw::ui {

namespace {

// Today as the date boxes take it.
QString Today() {
    return core::Format(QDate::currentDate(), QStringLiteral("mm/dd/yy"));
}

QLineEdit* TextBox(QWidget* parent, const QString& name) {
    auto* box = new QLineEdit(parent);
    box->setObjectName(name);
    return box;
}

// A member of a control array: its name carries the index.
template <class T>
T* Indexed(T* control, const QString& name, int index) {
    control->setObjectName(name + QString::number(index));
    control->setProperty("index", index);
    return control;
}

QLabel* Caption(QWidget* parent, const QString& text, QWidget* buddy) {
    auto* label = new QLabel(text, parent);
    label->setBuddy(buddy);
    return label;
}

// A caption and its box on a row of a two-pair grid; the caption is made
// first so that the pair reads as it stands.
template <class T>
T* Pair(QGridLayout* grid, int row, int pair, const QString& caption, T* box) {
    auto* label = new QLabel(caption, box->parentWidget());
    label->setBuddy(box);
    grid->addWidget(label, row, pair * 2);
    grid->addWidget(box, row, pair * 2 + 1);
    return box;
}

QPushButton* Button(QWidget* parent, const QString& name, const QString& caption) {
    auto* button = new QPushButton(caption, parent);
    button->setObjectName(name);
    return button;
}

QComboBox* List(QWidget* parent, const QString& name) {
    auto* list = new QComboBox(parent);
    list->setObjectName(name);
    return list;
}

QPlainTextEdit* TextArea(QWidget* parent, const QString& name, bool readOnly) {
    auto* area = new QPlainTextEdit(parent);
    area->setObjectName(name);
    area->setReadOnly(readOnly);
    // Tab leaves the box, as in every other control of the form.
    area->setTabChangesFocus(true);
    return area;
}

QLabel* Value(QWidget* parent, const QString& name) {
    auto* label = new QLabel(parent);
    label->setObjectName(name);
    label->setTextInteractionFlags(Qt::TextSelectableByMouse);
    label->setWordWrap(true);
    return label;
}

// The row of a panel's commands, at its foot on the right.
QHBoxLayout* Commands(QVBoxLayout* column) {
    auto* row = new QHBoxLayout;
    row->addStretch(1);
    column->addLayout(row);
    return row;
}

// A date box follows its check box: ticked, it opens with today in it;
// cleared, it empties and closes.
void FollowTick(bool ticked, QLineEdit* date) {
    date->setEnabled(ticked);
    date->setText(ticked ? Today() : QString());
}

}  // namespace

TaskPanels::TaskPanels(QWidget* parent) : QStackedWidget(parent) {
    setObjectName(QStringLiteral("fraToDo"));
    BuildPaymentPanel();
    BuildShippingPanel();
    BuildItemReceivedPanel();
    BuildNotesPanel();
    BuildEntryPanel();
    BuildItemInfoPanel();
    BuildSummaryPanel();
    BuildAddressPanel();
    BuildPackingPanel();
    BuildEmailPanel();
    BuildFeedbackPanel();
    BuildEmptyPanel(kNoAuctionsPanel, QStringLiteral("No Auctions with Pending Tasks"),
                    QStringLiteral("You do not currently have any Auctions with pending tasks.  "
                                   "The Task Manager will become available once Auctions have "
                                   "ended."));
    BuildEmptyPanel(kNoBidsPanel, QStringLiteral("No Bids with Pending Tasks"),
                    QStringLiteral("You do not currently have any Bids with pending tasks.  The "
                                   "Task Manager will become available once Bids have ended."));
    ShowTaskPanel(kNoAuctionsPanel);
}

PanelFrame* TaskPanels::NewFrame(int index) {
    auto* frame = Indexed(new PanelFrame(this), QStringLiteral("fraToDo"), index);
    addWidget(frame);
    m_fraToDo[index] = frame;
    return frame;
}

void TaskPanels::ShowTaskPanel(int index) {
    if (PanelFrame* frame = Frame(index)) {
        setCurrentWidget(frame);
    }
}

int TaskPanels::ShownPanel() const {
    const QWidget* shown = currentWidget();
    return shown == nullptr ? -1 : shown->property("index").toInt();
}

PanelFrame* TaskPanels::Frame(int index) const {
    const auto found = m_fraToDo.find(index);
    return found == m_fraToDo.end() ? nullptr : found->second;
}

QLineEdit* TaskPanels::MoneyBox(QWidget* parent, const QString& name, const QString& next) {
    QLineEdit* box = TextBox(parent, name);
    box->installEventFilter(this);
    m_moneyNext[box] = next;
    return box;
}

// ------------------------------------------------------------------ building

void TaskPanels::BuildPaymentPanel() {
    PanelFrame* f = NewFrame(kPaymentPanel);
    auto* column = new QVBoxLayout(f);
    auto* grid = new QGridLayout;
    column->addLayout(grid);
    m_lstPaymentMethods = Pair(grid, 0, 0, QStringLiteral("Payment method:"),
                               List(f, QStringLiteral("lstPaymentMethods")));
    m_txtPayInfo0 = Pair(grid, 0, 1, QStringLiteral("Date paid:"),
                         Indexed(new QLineEdit(f), QStringLiteral("txtPayInfo"), 0));
    m_txtItemCost0 = Pair(grid, 1, 0, QStringLiteral("Winning bid:"),
                          Indexed(MoneyBox(f, QString()), QStringLiteral("txtItemCost"), 0));
    m_lblItemCost1 = new QLabel(QStringLiteral("My item cost:"), f);
    m_txtItemCost1 = Indexed(MoneyBox(f, QString()), QStringLiteral("txtItemCost"), 1);
    m_lblItemCost1->setBuddy(m_txtItemCost1);
    grid->addWidget(m_lblItemCost1, 1, 2);
    grid->addWidget(m_txtItemCost1, 1, 3);
    m_txtSalesTax =
        Pair(grid, 2, 0, QStringLiteral("Sales tax:"), MoneyBox(f, QStringLiteral("txtSalesTax")));
    m_cmdComputeSalesTax =
        Button(f, QStringLiteral("cmdComputeSalesTax"), QStringLiteral("&Compute Tax"));
    grid->addWidget(m_cmdComputeSalesTax, 2, 2, 1, 2, Qt::AlignLeft);
    m_txtShippingCost = Pair(grid, 3, 0, QStringLiteral("Shipping:"),
                             MoneyBox(f, QStringLiteral("txtShippingCost")));
    m_txtTotalSale =
        Pair(grid, 4, 0, QStringLiteral("Total:"), TextBox(f, QStringLiteral("txtTotalSale")));
    grid->setColumnStretch(1, 1);
    grid->setColumnStretch(3, 1);

    // The details of a method: frmPayment(1) check, (2) credit card,
    // (3) money order; the method list above names which.
    auto* check = Indexed(new QGroupBox(f), QStringLiteral("frmPayment"), 1);
    {
        auto* g = new QGridLayout(check);
        Pair(g, 0, 0, QStringLiteral("Check number:"),
             TextBox(check, QStringLiteral("txtCheckNumber")));
        Pair(g, 0, 1, QStringLiteral("Drawn on bank:"),
             TextBox(check, QStringLiteral("txtDrawnOnBank")));
        m_chkDateCleared = new QCheckBox(QStringLiteral("Cl&eared"), check);
        m_chkDateCleared->setObjectName(QStringLiteral("chkDateCleared"));
        m_txtDateCleared = TextBox(check, QStringLiteral("txtDateCleared"));
        m_txtDateCleared->setAccessibleName(QStringLiteral("Date cleared"));
        g->addWidget(m_chkDateCleared, 1, 0);
        g->addWidget(m_txtDateCleared, 1, 1);
        g->setColumnStretch(1, 1);
        g->setColumnStretch(3, 1);
    }
    auto* card = Indexed(new QGroupBox(f), QStringLiteral("frmPayment"), 2);
    {
        auto* g = new QGridLayout(card);
        Pair(g, 0, 0, QStringLiteral("Card type:"),
             List(card, QStringLiteral("lstCreditCardType")));
        Pair(g, 0, 1, QStringLiteral("Account:"),
             TextBox(card, QStringLiteral("txtCreditCardAccount")));
        auto* expires = new QWidget(card);
        auto* row = new QHBoxLayout(expires);
        row->setContentsMargins(0, 0, 0, 0);
        QComboBox* month = List(expires, QStringLiteral("lstExpireMonth"));
        month->setAccessibleName(QStringLiteral("Expiry month"));
        QComboBox* year = List(expires, QStringLiteral("lstExpireYear"));
        year->setAccessibleName(QStringLiteral("Expiry year"));
        row->addWidget(month);
        row->addWidget(year);
        row->addStretch(1);
        auto* expiresCaption = new QLabel(QStringLiteral("Expires:"), card);
        expiresCaption->setBuddy(month);
        g->addWidget(expiresCaption, 1, 0);
        g->addWidget(expires, 1, 1, 1, 3);
        g->setColumnStretch(1, 1);
        g->setColumnStretch(3, 1);
    }
    auto* order = Indexed(new QGroupBox(f), QStringLiteral("frmPayment"), 3);
    {
        auto* g = new QGridLayout(order);
        Pair(g, 0, 0, QStringLiteral("Money order number:"),
             TextBox(order, QStringLiteral("txtMoneyOrder")));
        g->setColumnStretch(1, 1);
    }
    for (const auto& [index, frame] :
         {std::pair<int, QGroupBox*>{1, check}, {2, card}, {3, order}}) {
        column->addWidget(frame);
        frame->hide();
        m_frmPayment[index] = frame;
    }
    column->addStretch(1);
    Commands(column)->addWidget(
        Button(f, QStringLiteral("cmdSavePaymentInfo"), QStringLiteral("S&ave Payment Info")));

    connect(m_lstPaymentMethods, &QComboBox::activated, this, &TaskPanels::lstPaymentMethods_Click);
    connect(m_chkDateCleared, &QCheckBox::clicked, this, &TaskPanels::chkDateCleared_Click);
}

void TaskPanels::BuildShippingPanel() {
    PanelFrame* f = NewFrame(kShippingPanel);
    auto* column = new QVBoxLayout(f);
    auto* grid = new QGridLayout;
    column->addLayout(grid);
    m_lstShippingMethod = Pair(grid, 0, 0, QStringLiteral("Shipping method:"),
                               List(f, QStringLiteral("lstShippingMethod")));
    m_txtShippingDate = Pair(grid, 0, 1, QStringLiteral("Date shipped:"),
                             TextBox(f, QStringLiteral("txtShippingDate")));
    Pair(grid, 1, 0, QStringLiteral("Shipping charged:"),
         MoneyBox(f, QStringLiteral("txtShippingCost2")));
    Pair(grid, 1, 1, QStringLiteral("Actual shipping cost:"),
         MoneyBox(f, QStringLiteral("txtActualShippingCost"), QStringLiteral("txtShippingCost2")));
    Pair(grid, 2, 0, QStringLiteral("Insurance cost:"),
         MoneyBox(f, QStringLiteral("txtInsuranceCost"), QStringLiteral("txtInsuranceNumber")));
    Pair(grid, 2, 1, QStringLiteral("Insurance number:"),
         TextBox(f, QStringLiteral("txtInsuranceNumber")));
    Pair(grid, 3, 0, QStringLiteral("Tracking number:"),
         TextBox(f, QStringLiteral("txtTrackingNumber")));
    grid->setColumnStretch(1, 1);
    grid->setColumnStretch(3, 1);
    column->addStretch(1);
    Commands(column)->addWidget(
        Button(f, QStringLiteral("cmdSaveShippingInfo"), QStringLiteral("S&ave Shipping Info")));

    connect(m_lstShippingMethod, &QComboBox::activated, this, &TaskPanels::lstShippingMethod_Click);
}

void TaskPanels::BuildItemReceivedPanel() {
    PanelFrame* f = NewFrame(kItemReceivedPanel);
    auto* column = new QVBoxLayout(f);
    auto* grid = new QGridLayout;
    column->addLayout(grid);
    m_chkItemReceived = new QCheckBox(QStringLiteral("Item rec&eived"), f);
    m_chkItemReceived->setObjectName(QStringLiteral("chkItemReceived"));
    grid->addWidget(m_chkItemReceived, 0, 0, 1, 2);
    m_txtReceivedDate = Pair(grid, 0, 1, QStringLiteral("Date received:"),
                             TextBox(f, QStringLiteral("txtReceivedDate")));
    Pair(grid, 1, 0, QStringLiteral("Condition:"), List(f, QStringLiteral("lstItemCondition")));
    Pair(grid, 1, 1, QStringLiteral("Packaging:"), List(f, QStringLiteral("lstItemPackaging")));
    Pair(grid, 2, 0, QStringLiteral("Timeliness:"), List(f, QStringLiteral("lstItemTimeliness")));
    Pair(grid, 2, 1, QStringLiteral("Communication:"),
         List(f, QStringLiteral("lstItemCommunication")));
    grid->setColumnStretch(1, 1);
    grid->setColumnStretch(3, 1);
    QPlainTextEdit* notes = TextArea(f, QStringLiteral("txtItemNotes"), false);
    column->addWidget(Caption(f, QStringLiteral("Notes on the item:"), notes));
    column->addWidget(notes, 1);
    Commands(column)->addWidget(
        Button(f, QStringLiteral("cmdSaveItemReceived"), QStringLiteral("S&ave")));

    connect(m_chkItemReceived, &QCheckBox::clicked, this, &TaskPanels::chkItemReceived_Click);
}

void TaskPanels::BuildNotesPanel() {
    PanelFrame* f = NewFrame(kNotesPanel);
    auto* column = new QVBoxLayout(f);
    QPlainTextEdit* notes = TextArea(f, QStringLiteral("txtToDoNotes"), false);
    column->addWidget(Caption(f, QStringLiteral("Notes on this item:"), notes));
    column->addWidget(notes, 2);
    Commands(column)->addWidget(
        Button(f, QStringLiteral("cmdSaveNotes"), QStringLiteral("S&ave Notes")));
    QPlainTextEdit* prior = TextArea(f, QStringLiteral("txtToDoPriorNotes"), true);
    auto* priorCaption = Caption(f, QStringLiteral("Other Notes"), prior);
    priorCaption->setObjectName(QStringLiteral("lblToDoPriorNotes"));
    column->addWidget(priorCaption);
    column->addWidget(prior, 3);
}

void TaskPanels::BuildEntryPanel() {
    PanelFrame* f = NewFrame(kEntryPanel);
    auto* column = new QVBoxLayout(f);
    auto* instructions = Value(f, QStringLiteral("txtEmailSentInstructions"));
    column->addWidget(instructions);
    auto* row = new QHBoxLayout;
    m_chkEmailSent = new QCheckBox(f);
    m_chkEmailSent->setObjectName(QStringLiteral("chkEmailSent"));
    row->addWidget(m_chkEmailSent);
    auto* dateCaption = new QLabel(f);
    dateCaption->setObjectName(QStringLiteral("lblEmailSentDate"));
    m_txtEmailSentDate = TextBox(f, QStringLiteral("txtEmailSentDate"));
    dateCaption->setBuddy(m_txtEmailSentDate);
    row->addSpacing(12);
    row->addWidget(dateCaption);
    row->addWidget(m_txtEmailSentDate);
    row->addStretch(1);
    column->addLayout(row);
    // The open node's key, carried from the load to the save.
    auto* key = new QLabel(f);
    key->setObjectName(QStringLiteral("lblKey"));
    key->hide();
    column->addStretch(1);
    Commands(column)->addWidget(
        Button(f, QStringLiteral("cmdSaveToDoEmail"), QStringLiteral("S&ave")));

    connect(m_chkEmailSent, &QCheckBox::clicked, this, &TaskPanels::chkEmailSent_Click);
    connect(m_txtEmailSentDate, &QLineEdit::editingFinished, this,
            &TaskPanels::txtEmailSentDate_LostFocus);
}

void TaskPanels::BuildItemInfoPanel() {
    PanelFrame* f = NewFrame(kItemInfoPanel);
    auto* column = new QVBoxLayout(f);
    auto* grid = new QGridLayout;
    column->addLayout(grid);
    const struct {
        const char* caption;
        const char* name;
    } rows[] = {{"Title:", "lblInfoTitle"}, {"Category:", "lblInfoCategory"}};
    int line = 0;
    for (const auto& r : rows) {
        grid->addWidget(new QLabel(QString::fromLatin1(r.caption), f), line, 0, Qt::AlignTop);
        grid->addWidget(Value(f, QString::fromLatin1(r.name)), line, 1);
        ++line;
    }
    grid->setColumnStretch(1, 1);
    column->addStretch(1);
}

void TaskPanels::BuildSummaryPanel() {
    PanelFrame* f = NewFrame(kSummaryPanel);
    auto* column = new QVBoxLayout(f);
    auto* grid = new QGridLayout;
    column->addLayout(grid);
    auto* partner = new QLabel(QStringLiteral("High Bidder:"), f);
    partner->setObjectName(QStringLiteral("lblSummaryPartnerCaption"));
    grid->addWidget(partner, 0, 0);
    grid->addWidget(Value(f, QStringLiteral("lblSummaryPartner")), 0, 1);
    const struct {
        const char* caption;
        const char* name;
    } pairs[] = {{"Feedback:", "lblSummaryFeedback"}, {"High Bid:", "lblSummaryHighBid"},
                 {"Quantity:", "lblSummaryQuantity"}, {"Minimum Bid:", "lblSummaryMinimumBid"},
                 {"Reserve:", "lblSummaryReserve"},   {"Bids:", "lblSummaryNumberBids"}};
    int cell = 1;
    for (const auto& p : pairs) {
        const int row = cell / 2;
        const int pair = cell % 2;
        grid->addWidget(new QLabel(QString::fromLatin1(p.caption), f), row, pair * 2);
        grid->addWidget(Value(f, QString::fromLatin1(p.name)), row, pair * 2 + 1);
        ++cell;
    }
    grid->setColumnStretch(1, 1);
    grid->setColumnStretch(3, 1);

    auto* history = Value(f, QStringLiteral("lblHistory"));
    QFont bold = history->font();
    bold.setBold(true);
    history->setFont(bold);
    column->addSpacing(8);
    column->addWidget(history);
    auto* past = new QGridLayout;
    column->addLayout(past);
    auto* countCaption = new QLabel(QStringLiteral("Past sales:"), f);
    countCaption->setObjectName(QStringLiteral("lblHistoryCountCaption"));
    past->addWidget(countCaption, 0, 0);
    past->addWidget(Value(f, QStringLiteral("lblHistoryCount")), 0, 1);
    past->addWidget(new QLabel(QStringLiteral("Total:"), f), 0, 2);
    past->addWidget(Value(f, QStringLiteral("lblHistoryTotal")), 0, 3);
    auto* favorite = new QLabel(QStringLiteral("Favorite Category"), f);
    favorite->setObjectName(QStringLiteral("lblFavoriteCategory"));
    past->addWidget(favorite, 1, 0, Qt::AlignTop);
    past->addWidget(Value(f, QStringLiteral("lblFavoriteCategories")), 1, 1, 1, 3);
    past->setColumnStretch(1, 1);
    past->setColumnStretch(3, 1);
    column->addStretch(1);
}

void TaskPanels::BuildAddressPanel() {
    PanelFrame* f = NewFrame(kAddressPanel);
    auto* column = new QVBoxLayout(f);
    auto* grid = new QGridLayout;
    column->addLayout(grid);
    // Caption, box name, row, pair; a pair of -1 spans the row.
    const struct {
        const char* caption;
        const char* name;
        int row;
        int pair;
    } boxes[] = {
        {"Salutation:", "txtAddressMr", 0, 0},      {"First name:", "txtAddressFirst", 0, 1},
        {"Middle name:", "txtAddressMiddle", 1, 0}, {"Last name:", "txtAddressLast", 1, 1},
        {"Title:", "txtAddressTitle", 2, 0},        {"Company:", "txtAddressCompany", 2, 1},
        {"Street:", "txtAddressStreet1", 3, -1},    {"", "txtAddressStreet2", 4, -1},
        {"City:", "txtAddressCity", 5, 0},          {"State:", "txtAddressState", 5, 1},
        {"Zip code:", "txtAddressZip", 6, 0},       {"Country:", "txtAddressCountry", 6, 1},
        {"Phone:", "txtAddressPhone", 7, 0},        {"Fax:", "txtAddressFax", 7, 1},
        {"Email:", "txtAddressEmail", 8, -1},
    };
    for (const auto& b : boxes) {
        QLineEdit* box = TextBox(f, QString::fromLatin1(b.name));
        const QString caption = QString::fromLatin1(b.caption);
        if (caption.isEmpty()) {
            box->setAccessibleName(QStringLiteral("Street, second line"));
        } else {
            grid->addWidget(Caption(f, caption, box), b.row, b.pair < 0 ? 0 : b.pair * 2);
        }
        if (b.pair < 0) {
            grid->addWidget(box, b.row, 1, 1, 3);
        } else {
            grid->addWidget(box, b.row, b.pair * 2 + 1);
        }
    }
    grid->setColumnStretch(1, 1);
    grid->setColumnStretch(3, 1);
    m_txtAddressState = findChild<QLineEdit*>(QStringLiteral("txtAddressState"));
    column->addStretch(1);
    QHBoxLayout* commands = Commands(column);
    commands->addWidget(Button(f, QStringLiteral("cmdPasteAddressFromClipboard"),
                               QStringLiteral("&Paste from Clipboard")));
    commands->addWidget(
        Button(f, QStringLiteral("cmdSaveAddress"), QStringLiteral("S&ave Address")));

    connect(m_txtAddressState, &QLineEdit::editingFinished, this,
            &TaskPanels::txtAddressState_LostFocus);
}

void TaskPanels::BuildPackingPanel() {
    PanelFrame* f = NewFrame(kPackingPanel);
    auto* column = new QVBoxLayout(f);
    auto* document = new QTextEdit(f);
    document->setObjectName(QStringLiteral("txtPackingList"));
    document->setReadOnly(true);
    document->setTabChangesFocus(true);
    document->setAccessibleName(QStringLiteral("Document"));
    column->addWidget(document, 1);
    QHBoxLayout* commands = Commands(column);
    commands->addWidget(
        Button(f, QStringLiteral("cmdEditPackingList"), QStringLiteral("&Edit in Word Processor")));
    commands->addWidget(
        Button(f, QStringLiteral("cmdSavePackingListPdf"), QStringLiteral("Save as P&DF...")));
    commands->addWidget(
        Button(f, QStringLiteral("cmdPrintPackingList"), QStringLiteral("&Print...")));
}

void TaskPanels::BuildEmailPanel() {
    PanelFrame* f = NewFrame(kEmailPanel);
    auto* column = new QVBoxLayout(f);
    auto* key = new QLabel(f);
    key->setObjectName(QStringLiteral("lblEmailKey"));
    key->hide();
    auto* row = new QHBoxLayout;
    m_chkEmailSent2 = new QCheckBox(f);
    m_chkEmailSent2->setObjectName(QStringLiteral("chkEmailSent2"));
    row->addWidget(m_chkEmailSent2);
    m_txtSentDate = TextBox(f, QStringLiteral("txtSentDate"));
    row->addSpacing(12);
    row->addWidget(Caption(f, QStringLiteral("Date sent:"), m_txtSentDate));
    row->addWidget(m_txtSentDate);
    row->addStretch(1);
    column->addLayout(row);

    auto* message = new QGroupBox(f);
    message->setObjectName(QStringLiteral("frmShowMessage"));
    {
        auto* g = new QGridLayout(message);
        auto* to =
            Pair(g, 0, 0, QStringLiteral("To:"), TextBox(message, QStringLiteral("txtEmailTo")));
        to->setReadOnly(true);
        auto* subject = Pair(g, 1, 0, QStringLiteral("Subject:"),
                             TextBox(message, QStringLiteral("txtEmailSubject")));
        subject->setReadOnly(true);
        QPlainTextEdit* text = TextArea(message, QStringLiteral("txtEmailMessage"), true);
        text->setAccessibleName(QStringLiteral("Message"));
        g->addWidget(text, 2, 0, 1, 2);
        g->setRowStretch(2, 1);
        g->setColumnStretch(1, 1);
    }
    column->addWidget(message, 1);
    message->hide();
    column->addStretch(0);
    QHBoxLayout* commands = Commands(column);
    m_cmdComposeEmail =
        Button(f, QStringLiteral("cmdComposeEmail"), QStringLiteral("C&ompose Email..."));
    commands->addWidget(m_cmdComposeEmail);
    commands->addWidget(Button(f, QStringLiteral("cmdSaveEmailInfo"), QStringLiteral("S&ave")));

    connect(m_chkEmailSent2, &QCheckBox::clicked, this, &TaskPanels::chkEmailSent2_Click);
}

void TaskPanels::BuildFeedbackPanel() {
    PanelFrame* f = NewFrame(kFeedbackPanel);
    auto* column = new QVBoxLayout(f);
    auto* grid = new QGridLayout;
    column->addLayout(grid);
    m_chkReceivedFeedback = new QCheckBox(QStringLiteral("Received Fee&dback"), f);
    m_chkReceivedFeedback->setObjectName(QStringLiteral("chkReceivedFeedback"));
    grid->addWidget(m_chkReceivedFeedback, 0, 0, 1, 2);
    m_txtReceivedFeedbackDate = Pair(grid, 0, 1, QStringLiteral("Date:"),
                                     TextBox(f, QStringLiteral("txtReceivedFeedbackDate")));
    auto* kinds = new QWidget(f);
    kinds->setObjectName(QStringLiteral("fraFeedbackType"));
    auto* kindRow = new QHBoxLayout(kinds);
    kindRow->setContentsMargins(0, 0, 0, 0);
    m_optReceivedFeedback = new QButtonGroup(this);
    const QStringList captions = {QStringLiteral("&Positive"), QStringLiteral("N&eutral"),
                                  QStringLiteral("Ne&gative")};
    for (int i = 0; i < captions.size(); ++i) {
        auto* option = Indexed(new QRadioButton(captions.at(i), kinds),
                               QStringLiteral("optReceivedFeedback"), i);
        m_optReceivedFeedback->addButton(option, i);
        kindRow->addWidget(option);
    }
    kindRow->addStretch(1);
    grid->addWidget(kinds, 1, 0, 1, 4);
    m_txtReceivedFeedbackComment = TextBox(f, QStringLiteral("txtReceivedFeedbackComment"));
    grid->addWidget(Caption(f, QStringLiteral("Comment:"), m_txtReceivedFeedbackComment), 2, 0);
    grid->addWidget(m_txtReceivedFeedbackComment, 2, 1, 1, 3);
    grid->setColumnStretch(1, 1);
    grid->setColumnStretch(3, 1);
    column->addStretch(1);
    QHBoxLayout* commands = Commands(column);
    commands->addWidget(
        Button(f, QStringLiteral("cmdComposeFeedback"), QStringLiteral("C&ompose Feedback...")));
    commands->addWidget(
        Button(f, QStringLiteral("cmdSaveReceivedFeedback"), QStringLiteral("S&ave")));

    connect(m_chkReceivedFeedback, &QCheckBox::clicked, this,
            &TaskPanels::chkReceivedFeedback_Click);
}

void TaskPanels::BuildEmptyPanel(int index, const QString& heading, const QString& text) {
    PanelFrame* f = NewFrame(index);
    auto* column = new QVBoxLayout(f);
    auto* title = new QLabel(heading, f);
    title->setObjectName(QStringLiteral("lblNoPendingTasks%1").arg(index));
    QFont bigger = title->font();
    bigger.setBold(true);
    bigger.setPointSizeF(bigger.pointSizeF() * 1.25);
    title->setFont(bigger);
    auto* words = new QLabel(text, f);
    words->setObjectName(QStringLiteral("lblNoPendingTasksText%1").arg(index));
    words->setWordWrap(true);
    column->addWidget(title);
    column->addWidget(words);
    column->addStretch(1);
}

// ------------------------------------------------------------------ rules of the controls

void TaskPanels::lstPaymentMethods_Click() {
    for (const auto& [index, frame] : m_frmPayment) {
        frame->hide();
    }
    const int method = m_lstPaymentMethods->currentIndex();
    if (m_txtPayInfo0->text().isEmpty()) {
        m_txtPayInfo0->setText(Today());
    }
    if (const auto frame = m_frmPayment.find(method); frame != m_frmPayment.end()) {
        frame->second->show();
    }
    m_txtPayInfo0->setEnabled(method != -1);
    if (method == -1) {
        m_txtPayInfo0->clear();
    }
}

void TaskPanels::chkDateCleared_Click() {
    FollowTick(m_chkDateCleared->isChecked(), m_txtDateCleared);
}

void TaskPanels::lstShippingMethod_Click() {
    const bool chosen = m_lstShippingMethod->currentIndex() != -1;
    FollowTick(chosen, m_txtShippingDate);
    if (chosen) {
        m_txtShippingDate->setFocus(Qt::OtherFocusReason);
    }
}

void TaskPanels::chkItemReceived_Click() {
    FollowTick(m_chkItemReceived->isChecked(), m_txtReceivedDate);
}

void TaskPanels::chkReceivedFeedback_Click() {
    const bool ticked = m_chkReceivedFeedback->isChecked();
    FollowTick(ticked, m_txtReceivedFeedbackDate);
    m_txtReceivedFeedbackComment->setEnabled(ticked);
    if (!ticked) {
        m_txtReceivedFeedbackComment->clear();
        m_optReceivedFeedback->setExclusive(false);
        for (QAbstractButton* option : m_optReceivedFeedback->buttons()) {
            option->setChecked(false);
        }
        m_optReceivedFeedback->setExclusive(true);
    }
    for (QAbstractButton* option : m_optReceivedFeedback->buttons()) {
        option->setEnabled(ticked);
    }
}

void TaskPanels::chkEmailSent_Click() {
    FollowTick(m_chkEmailSent->isChecked(), m_txtEmailSentDate);
}

void TaskPanels::chkEmailSent2_Click() {
    FollowTick(m_chkEmailSent2->isChecked(), m_txtSentDate);
}

void TaskPanels::txtAddressState_LostFocus() {
    m_txtAddressState->setText(m_txtAddressState->text().toUpper());
}

void TaskPanels::txtEmailSentDate_LostFocus() {
    const QString typed = m_txtEmailSentDate->text();
    if (typed.isEmpty()) {
        return;
    }
    if (typed.size() == 6) {
        m_txtEmailSentDate->setText(typed.left(2) + u'/' + typed.mid(2, 2) + u'/' + typed.right(2));
    } else {
        m_txtEmailSentDate->setText(core::Format(typed, QStringLiteral("mm/dd/yy")));
    }
}

void TaskPanels::ComputeTotal() {
    double sum = 0;
    for (const QLineEdit* box : {m_txtSalesTax, m_txtShippingCost, m_txtItemCost0}) {
        sum += core::NumberRule(box->text());
    }
    m_txtTotalSale->setText(core::Format(sum, QStringLiteral("Currency")));
}

void TaskPanels::MoneyBoxLeft(QLineEdit* box) {
    if (!box->text().isEmpty()) {
        box->setText(core::Format(box->text(), QStringLiteral("Currency")));
    }
    if (box == m_txtSalesTax || box == m_txtShippingCost || box == m_txtItemCost0) {
        ComputeTotal();
    }
}

bool TaskPanels::eventFilter(QObject* watched, QEvent* event) {
    auto* box = qobject_cast<QLineEdit*>(watched);
    const auto money = box == nullptr ? m_moneyNext.end() : m_moneyNext.find(box);
    if (money == m_moneyNext.end()) {
        return QStackedWidget::eventFilter(watched, event);
    }
    if (event->type() == QEvent::FocusOut) {
        MoneyBoxLeft(box);
    } else if (event->type() == QEvent::KeyPress) {
        const int key = static_cast<QKeyEvent*>(event)->key();
        if (key == Qt::Key_Return || key == Qt::Key_Enter) {
            if (!money->second.isEmpty()) {
                if (auto* next = findChild<QWidget*>(money->second)) {
                    next->setFocus(Qt::TabFocusReason);
                }
            } else {
                MoneyBoxLeft(box);
            }
            return true;
        }
    }
    return QStackedWidget::eventFilter(watched, event);
}

}  // namespace lw::ui
