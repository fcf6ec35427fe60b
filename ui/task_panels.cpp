// SPDX-License-Identifier: GPL-3.0-or-later
// The task manager's panels: their controls, made in reading order so that
// Tab goes through a panel as it reads, and their handlers over the task
// library's panels.
#include "ui/task_panels.h"

#include <QApplication>
#include <QButtonGroup>
#include <QCheckBox>
#include <QClipboard>
#include <QComboBox>
#include <QDate>
#include <QDesktopServices>
#include <QDir>
#include <QEvent>
#include <QFileDialog>
#include <QFont>
#include <QGridLayout>
#include <QHBoxLayout>
#include <QKeyEvent>
#include <QKeySequence>
#include <QLabel>
#include <QLineEdit>
#include <QMimeData>
#include <QPlainTextEdit>
#include <QPrintDialog>
#include <QPrinter>
#include <QPushButton>
#include <QRadioButton>
#include <QTextCursor>
#include <QTextEdit>
#include <QUrl>
#include <QVBoxLayout>

#include "core/richtext/rich_text.h"
#include "core/session.h"
#include "tasks/address_panel.h"
#include "tasks/email_task_panel.h"
#include "tasks/feedback_panel.h"
#include "tasks/notes_panel.h"
#include "tasks/packing_list.h"
#include "tasks/payment_panel.h"
#include "tasks/shipping_panel.h"
#include "tasks/summary_panel.h"
#include "tasks/task_lists.h"
#include "tasks/task_tree.h"
#include "ui/control_names.h"
#include "ui/item_panels.h"
#include "ui/qt_ui.h"

namespace lw::ui {

namespace {

const QString kTaskTitle = QStringLiteral("Task Manager");

// Letters that no caption in view beside a panel's own takes: the menus,
// the tabs, the side switch, the filter and the remove button hold the rest.
const QString kFreeMnemonics = QStringLiteral("EOCDGPWXYZJQ");

// A caption from the data with a mnemonic on its first letter that is one
// of letters; the caption as it is when it has none of them.
QString WithMnemonic(const QString& caption, const QString& letters = kFreeMnemonics) {
    for (qsizetype i = 0; i < caption.size(); ++i) {
        if (caption.at(i) == u'&') {
            ++i;  // a doubled "&" is a plain one
        } else if (letters.contains(caption.at(i).toUpper())) {
            return caption.left(i) + u'&' + caption.mid(i);
        }
    }
    return caption;
}

QLineEdit* TextBox(QWidget* parent, const QString& name) {
    auto* box = new QLineEdit(parent);
    box->setObjectName(name);
    return box;
}

// A caption and its box on a row of a two-pair grid.
template <class T>
T* Pair(QGridLayout* grid, int row, int pair, const QString& caption, T* box) {
    grid->addWidget(BuddyCaption(box->parentWidget(), caption, box), row, pair * 2);
    grid->addWidget(box, row, pair * 2 + 1);
    return box;
}

QPushButton* Button(QWidget* parent, const QString& name, const QString& caption) {
    auto* button = new QPushButton(caption, parent);
    button->setObjectName(name);
    return button;
}

QComboBox* List(QWidget* parent, const QString& name, const QStringList& rows) {
    auto* list = new QComboBox(parent);
    list->setObjectName(name);
    list->addItems(rows);
    list->setCurrentIndex(-1);
    // Narrow enough for a small window; the open list shows every row whole.
    list->setSizeAdjustPolicy(QComboBox::AdjustToMinimumContentsLengthWithIcon);
    list->setMinimumContentsLength(10);
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

// A combo whose record keeps the row's text: a text the list lacks (a year
// gone by) is added so that it still shows.
void SelectText(QComboBox* combo, const QString& text) {
    if (text.isEmpty()) {
        combo->setCurrentIndex(-1);
        return;
    }
    int row = combo->findText(text);
    if (row < 0) {
        combo->addItem(text);
        row = combo->count() - 1;
    }
    combo->setCurrentIndex(row);
}

void SetBox(QLineEdit* box, const QString& text, bool enabled) {
    box->setText(text);
    box->setEnabled(enabled);
}

}  // namespace

TaskPanels::TaskPanels(std::function<core::Database&()> db,
                       std::function<std::optional<tasks::SelectedItem>()> selected,
                       QWidget* parent)
    : QStackedWidget(parent), m_db(std::move(db)), m_selected(std::move(selected)) {
    setObjectName(QStringLiteral("fraToDo"));
    m_openFile = [](const QString& path) {
        return QDesktopServices::openUrl(QUrl::fromLocalFile(path));
    };
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
    BuildEmptyPanel(tasks::Side::Sales);
    BuildEmptyPanel(tasks::Side::Bids);
    ShowTaskPanel(kNoAuctionsPanel);
}

void TaskPanels::SetFileOpener(std::function<bool(const QString&)> opener) {
    m_openFile = std::move(opener);
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

void TaskPanels::SetFrameTitle(int index, const QString& title) {
    // The library's titles have their "&" doubled already.
    Frame(index)->setTitle(title);
}

QLineEdit* TaskPanels::Line(const QString& name) const {
    return findChild<QLineEdit*>(name);
}

QComboBox* TaskPanels::Combo(const QString& name) const {
    return findChild<QComboBox*>(name);
}

QString TaskPanels::TextOf(const QString& name) const {
    return Line(name)->text();
}

void TaskPanels::SetText(const QString& name, const QString& text) {
    Line(name)->setText(text);
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
    m_lstPaymentMethods =
        Pair(grid, 0, 0, QStringLiteral("Payment method:"),
             List(f, QStringLiteral("lstPaymentMethods"), tasks::PaymentMethods()));
    Pair(grid, 0, 1, QStringLiteral("Date paid:"),
         Indexed(new QLineEdit(f), QStringLiteral("txtPayInfo"), 0));
    Pair(grid, 1, 0, QStringLiteral("Winning bid:"),
         Indexed(MoneyBox(f, QString()), QStringLiteral("txtItemCost"), 0));
    m_lblItemCost1 = new QLabel(QStringLiteral("My item cost:"), f);
    QLineEdit* itemCost1 = Indexed(MoneyBox(f, QString()), QStringLiteral("txtItemCost"), 1);
    m_lblItemCost1->setBuddy(itemCost1);
    grid->addWidget(m_lblItemCost1, 1, 2);
    grid->addWidget(itemCost1, 1, 3);
    Pair(grid, 2, 0, QStringLiteral("Sales tax:"), MoneyBox(f, QStringLiteral("txtSalesTax")));
    grid->addWidget(Button(f, QStringLiteral("cmdComputeSalesTax"), QStringLiteral("&Compute Tax")),
                    2, 2, 1, 2, Qt::AlignLeft);
    Pair(grid, 3, 0, QStringLiteral("Shipping:"), MoneyBox(f, QStringLiteral("txtShippingCost")));
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
        QLineEdit* cleared = TextBox(check, QStringLiteral("txtDateCleared"));
        cleared->setAccessibleName(QStringLiteral("Date cleared"));
        g->addWidget(m_chkDateCleared, 1, 0);
        g->addWidget(cleared, 1, 1);
        g->setColumnStretch(1, 1);
        g->setColumnStretch(3, 1);
    }
    auto* card = Indexed(new QGroupBox(f), QStringLiteral("frmPayment"), 2);
    {
        auto* g = new QGridLayout(card);
        Pair(g, 0, 0, QStringLiteral("Card type:"),
             List(card, QStringLiteral("cmbCreditCardType"), tasks::CreditCardTypes()));
        Pair(g, 0, 1, QStringLiteral("Account:"),
             TextBox(card, QStringLiteral("txtCreditCardAccount")));
        auto* expires = new QWidget(card);
        auto* row = new QHBoxLayout(expires);
        row->setContentsMargins(0, 0, 0, 0);
        QComboBox* month = List(expires, QStringLiteral("cmbExpireMonth"), tasks::ExpireMonths());
        month->setAccessibleName(QStringLiteral("Expiry month"));
        QComboBox* year = List(expires, QStringLiteral("cmbExpireYear"),
                               tasks::ExpireYears(QDate::currentDate()));
        year->setAccessibleName(QStringLiteral("Expiry year"));
        row->addWidget(month);
        row->addWidget(year);
        row->addStretch(1);
        g->addWidget(BuddyCaption(card, QStringLiteral("Expires:"), month), 1, 0);
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
    auto* save =
        Button(f, QStringLiteral("cmdSavePaymentInfo"), QStringLiteral("S&ave Payment Info"));
    Commands(column)->addWidget(save);

    connect(m_lstPaymentMethods, &QComboBox::activated, this, &TaskPanels::lstPaymentMethods_Click);
    connect(m_chkDateCleared, &QCheckBox::clicked, this, &TaskPanels::chkDateCleared_Click);
    connect(findChild<QPushButton*>(QStringLiteral("cmdComputeSalesTax")), &QPushButton::clicked,
            this, &TaskPanels::cmdComputeSalesTax_Click);
    connect(save, &QPushButton::clicked, this, &TaskPanels::cmdSavePaymentInfo_Click);
}

void TaskPanels::BuildShippingPanel() {
    PanelFrame* f = NewFrame(kShippingPanel);
    auto* column = new QVBoxLayout(f);
    auto* grid = new QGridLayout;
    column->addLayout(grid);
    m_lstShippingMethod =
        Pair(grid, 0, 0, QStringLiteral("Shipping method:"),
             List(f, QStringLiteral("lstShippingMethod"), tasks::ShippingMethods()));
    Pair(grid, 0, 1, QStringLiteral("Date shipped:"),
         TextBox(f, QStringLiteral("txtShippingDate")));
    Pair(grid, 1, 0, QStringLiteral("Shipping charged:"),
         MoneyBox(f, QStringLiteral("txtShippingCost2")));
    // From the cost actually paid, Enter goes back to what was charged.
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
    auto* save =
        Button(f, QStringLiteral("cmdSaveShippingInfo"), QStringLiteral("S&ave Shipping Info"));
    Commands(column)->addWidget(save);

    connect(m_lstShippingMethod, &QComboBox::activated, this, &TaskPanels::lstShippingMethod_Click);
    connect(save, &QPushButton::clicked, this, &TaskPanels::cmdSaveShippingInfo_Click);
}

void TaskPanels::BuildItemReceivedPanel() {
    PanelFrame* f = NewFrame(kItemReceivedPanel);
    auto* column = new QVBoxLayout(f);
    auto* grid = new QGridLayout;
    column->addLayout(grid);
    m_chkItemReceived = new QCheckBox(QStringLiteral("Item rec&eived"), f);
    m_chkItemReceived->setObjectName(QStringLiteral("chkItemReceived"));
    grid->addWidget(m_chkItemReceived, 0, 0, 1, 2);
    Pair(grid, 0, 1, QStringLiteral("Date received:"),
         TextBox(f, QStringLiteral("txtReceivedDate")));
    Pair(grid, 1, 0, QStringLiteral("Condition:"),
         List(f, QStringLiteral("lstItemCondition"), tasks::ItemConditions()));
    Pair(grid, 1, 1, QStringLiteral("Packaging:"),
         List(f, QStringLiteral("lstItemPackaging"), tasks::ItemPackagings()));
    Pair(grid, 2, 0, QStringLiteral("Timeliness:"),
         List(f, QStringLiteral("lstItemTimeliness"), tasks::ItemTimelinesses()));
    Pair(grid, 2, 1, QStringLiteral("Communication:"),
         List(f, QStringLiteral("lstItemCommunication"), tasks::ItemCommunications()));
    grid->setColumnStretch(1, 1);
    grid->setColumnStretch(3, 1);
    QPlainTextEdit* notes = TextArea(f, QStringLiteral("txtItemNotes"), false);
    column->addWidget(BuddyCaption(f, QStringLiteral("Notes on the item:"), notes));
    column->addWidget(notes, 1);
    auto* save = Button(f, QStringLiteral("cmdSaveItemReceived"), QStringLiteral("S&ave"));
    Commands(column)->addWidget(save);

    connect(m_chkItemReceived, &QCheckBox::clicked, this, &TaskPanels::chkItemReceived_Click);
    connect(save, &QPushButton::clicked, this, &TaskPanels::cmdSaveItemReceived_Click);
}

void TaskPanels::BuildNotesPanel() {
    PanelFrame* f = NewFrame(kNotesPanel);
    auto* column = new QVBoxLayout(f);
    m_txtToDoNotes = TextArea(f, QStringLiteral("txtToDoNotes"), false);
    column->addWidget(BuddyCaption(f, QStringLiteral("Notes on this item:"), m_txtToDoNotes));
    column->addWidget(m_txtToDoNotes, 2);
    auto* save = Button(f, QStringLiteral("cmdSaveNotes"), QStringLiteral("S&ave Notes"));
    Commands(column)->addWidget(save);
    m_txtToDoPriorNotes = TextArea(f, QStringLiteral("txtToDoPriorNotes"), true);
    m_lblToDoPriorNotes = BuddyCaption(f, QStringLiteral("Other Notes"), m_txtToDoPriorNotes);
    m_lblToDoPriorNotes->setObjectName(QStringLiteral("lblToDoPriorNotes"));
    column->addWidget(m_lblToDoPriorNotes);
    column->addWidget(m_txtToDoPriorNotes, 3);

    connect(save, &QPushButton::clicked, this, &TaskPanels::cmdSaveNotes_Click);
}

void TaskPanels::BuildEntryPanel() {
    PanelFrame* f = NewFrame(kEntryPanel);
    auto* column = new QVBoxLayout(f);
    m_txtEmailSentInstructions = Value(f, QStringLiteral("txtEmailSentInstructions"));
    column->addWidget(m_txtEmailSentInstructions);
    auto* row = new QHBoxLayout;
    m_chkEmailSent = new QCheckBox(f);
    m_chkEmailSent->setObjectName(QStringLiteral("chkEmailSent"));
    row->addWidget(m_chkEmailSent);
    m_lblEmailSentDate = new QLabel(f);
    m_lblEmailSentDate->setObjectName(QStringLiteral("lblEmailSentDate"));
    QLineEdit* date = TextBox(f, QStringLiteral("txtEmailSentDate"));
    m_lblEmailSentDate->setBuddy(date);
    row->addSpacing(12);
    row->addWidget(m_lblEmailSentDate);
    row->addWidget(date);
    row->addStretch(1);
    column->addLayout(row);
    // The open node's key, carried from the load to the save.
    m_lblKey = new QLabel(f);
    m_lblKey->setObjectName(QStringLiteral("lblKey"));
    m_lblKey->hide();
    column->addStretch(1);
    auto* save = Button(f, QStringLiteral("cmdSaveToDoEmail"), QStringLiteral("S&ave"));
    Commands(column)->addWidget(save);

    connect(m_chkEmailSent, &QCheckBox::clicked, this, &TaskPanels::chkEmailSent_Click);
    connect(date, &QLineEdit::editingFinished, this, &TaskPanels::txtEmailSentDate_LostFocus);
    connect(save, &QPushButton::clicked, this, &TaskPanels::cmdSaveToDoEmail_Click);
}

void TaskPanels::BuildItemInfoPanel() {
    PanelFrame* f = NewFrame(kItemInfoPanel);
    auto* column = new QVBoxLayout(f);
    auto* grid = new QGridLayout;
    column->addLayout(grid);
    grid->addWidget(new QLabel(QStringLiteral("Title:"), f), 0, 0, Qt::AlignTop);
    grid->addWidget(Value(f, QStringLiteral("lblInfoTitle")), 0, 1);
    grid->addWidget(new QLabel(QStringLiteral("Category:"), f), 1, 0, Qt::AlignTop);
    grid->addWidget(Value(f, QStringLiteral("lblInfoCategory")), 1, 1);
    grid->setColumnStretch(1, 1);
    column->addStretch(1);
}

void TaskPanels::BuildSummaryPanel() {
    PanelFrame* f = NewFrame(kSummaryPanel);
    auto* column = new QVBoxLayout(f);
    auto* grid = new QGridLayout;
    column->addLayout(grid);
    auto* partner = new QLabel(f);
    partner->setObjectName(QStringLiteral("lblSummaryPartnerCaption"));
    grid->addWidget(partner, 0, 0);
    grid->addWidget(Value(f, QStringLiteral("lblSummaryPartner")), 0, 1);
    const struct {
        const char* caption;
        const char* name;
    } pairs[] = {{"Feedback:", "lblSummaryFeedback"},  {"High Bid:", "lblSummaryHighBid"},
                 {"Quantity:", "lblSummaryQuantity"},  {"Minimum Bid:", "lblSummaryMinimumBid"},
                 {"Reserve:", "lblSummaryReserveBid"}, {"Bids:", "lblSummaryNumberBids"}};
    int cell = 1;
    for (const auto& p : pairs) {
        grid->addWidget(new QLabel(QString::fromLatin1(p.caption), f), cell / 2, (cell % 2) * 2);
        grid->addWidget(Value(f, QString::fromLatin1(p.name)), cell / 2, (cell % 2) * 2 + 1);
        ++cell;
    }
    grid->setColumnStretch(1, 1);
    grid->setColumnStretch(3, 1);

    auto* history = Value(f, QStringLiteral("lblHistoryCaption"));
    QFont bold = history->font();
    bold.setBold(true);
    history->setFont(bold);
    column->addSpacing(8);
    column->addWidget(history);
    auto* past = new QGridLayout;
    column->addLayout(past);
    past->addWidget(new QLabel(QStringLiteral("Items:"), f), 0, 0);
    past->addWidget(Value(f, QStringLiteral("lblHistoryCount")), 0, 1);
    past->addWidget(new QLabel(QStringLiteral("Total:"), f), 0, 2);
    past->addWidget(Value(f, QStringLiteral("lblHistoryTotal")), 0, 3);
    auto* favorite = new QLabel(f);
    favorite->setObjectName(QStringLiteral("lblFavoriteCaption"));
    past->addWidget(favorite, 1, 0, Qt::AlignTop);
    past->addWidget(Value(f, QStringLiteral("lblFavorites")), 1, 1, 1, 3);
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
            grid->addWidget(BuddyCaption(f, caption, box), b.row, b.pair < 0 ? 0 : b.pair * 2);
        }
        if (b.pair < 0) {
            grid->addWidget(box, b.row, 1, 1, 3);
        } else {
            grid->addWidget(box, b.row, b.pair * 2 + 1);
        }
    }
    grid->setColumnStretch(1, 1);
    grid->setColumnStretch(3, 1);
    column->addStretch(1);
    QHBoxLayout* commands = Commands(column);
    auto* paste = Button(f, QStringLiteral("cmdPasteAddressFromClipboard"),
                         QStringLiteral("&Paste from Clipboard"));
    auto* save = Button(f, QStringLiteral("cmdSaveAddress"), QStringLiteral("S&ave Address"));
    commands->addWidget(paste);
    commands->addWidget(save);

    connect(Line(QStringLiteral("txtAddressState")), &QLineEdit::editingFinished, this,
            &TaskPanels::txtAddressState_LostFocus);
    connect(paste, &QPushButton::clicked, this, &TaskPanels::cmdPasteAddressFromClipboard_Click);
    connect(save, &QPushButton::clicked, this, &TaskPanels::cmdSaveAddress_Click);
}

void TaskPanels::BuildPackingPanel() {
    PanelFrame* f = NewFrame(kPackingPanel);
    auto* column = new QVBoxLayout(f);
    m_txtPackingList = new QTextEdit(f);
    m_txtPackingList->setObjectName(QStringLiteral("txtPackingList"));
    m_txtPackingList->setReadOnly(true);
    m_txtPackingList->setTabChangesFocus(true);
    m_txtPackingList->setAccessibleName(QStringLiteral("Document"));
    column->addWidget(m_txtPackingList, 1);
    QHBoxLayout* commands = Commands(column);
    auto* edit =
        Button(f, QStringLiteral("cmdEditPackingList"), QStringLiteral("&Edit in Word Processor"));
    auto* pdf =
        Button(f, QStringLiteral("cmdSavePackingListPdf"), QStringLiteral("Save as P&DF..."));
    auto* print = Button(f, QStringLiteral("cmdPrintPackingList"), QStringLiteral("&Print..."));
    commands->addWidget(edit);
    commands->addWidget(pdf);
    commands->addWidget(print);

    connect(edit, &QPushButton::clicked, this, &TaskPanels::cmdEditPackingList_Click);
    connect(pdf, &QPushButton::clicked, this, &TaskPanels::cmdSavePackingListPdf_Click);
    connect(print, &QPushButton::clicked, this, &TaskPanels::cmdPrintPackingList_Click);
}

void TaskPanels::BuildEmailPanel() {
    PanelFrame* f = NewFrame(kEmailPanel);
    auto* column = new QVBoxLayout(f);
    m_lblEmailKey = new QLabel(f);
    m_lblEmailKey->setObjectName(QStringLiteral("lblEmailKey"));
    m_lblEmailKey->hide();
    auto* row = new QHBoxLayout;
    m_chkEmailSent2 = new QCheckBox(f);
    m_chkEmailSent2->setObjectName(QStringLiteral("chkEmailSent2"));
    row->addWidget(m_chkEmailSent2);
    QLineEdit* date = TextBox(f, QStringLiteral("txtSentDate"));
    row->addSpacing(12);
    row->addWidget(BuddyCaption(f, QStringLiteral("Date sent:"), date));
    row->addWidget(date);
    row->addStretch(1);
    column->addLayout(row);

    auto* message = new QGroupBox(f);
    message->setObjectName(QStringLiteral("frmShowMessage"));
    m_frmShowMessage = message;
    {
        auto* g = new QGridLayout(message);
        Pair(g, 0, 0, QStringLiteral("To:"), TextBox(message, QStringLiteral("txtEmailTo")))
            ->setReadOnly(true);
        Pair(g, 1, 0, QStringLiteral("Subject:"),
             TextBox(message, QStringLiteral("txtEmailSubject")))
            ->setReadOnly(true);
        m_txtEmailMessage = TextArea(message, QStringLiteral("txtEmailMessage"), true);
        m_txtEmailMessage->setAccessibleName(QStringLiteral("Message"));
        g->addWidget(m_txtEmailMessage, 2, 0, 1, 2);
        g->setRowStretch(2, 1);
        g->setColumnStretch(1, 1);
    }
    column->addWidget(message, 1);
    message->hide();
    column->addStretch(0);
    QHBoxLayout* commands = Commands(column);
    m_cmdComposeEmail =
        Button(f, QStringLiteral("cmdComposeEmail"), QStringLiteral("C&ompose Email..."));
    m_cmdSaveEmailInfo = Button(f, QStringLiteral("cmdSaveEmailInfo"), QStringLiteral("S&ave"));
    commands->addWidget(m_cmdComposeEmail);
    commands->addWidget(m_cmdSaveEmailInfo);

    connect(m_chkEmailSent2, &QCheckBox::clicked, this, &TaskPanels::chkEmailSent2_Click);
    connect(m_cmdComposeEmail, &QPushButton::clicked, this, &TaskPanels::cmdComposeEmail_Click);
    connect(m_cmdSaveEmailInfo, &QPushButton::clicked, this, &TaskPanels::cmdSaveEmailInfo_Click);
}

void TaskPanels::BuildFeedbackPanel() {
    PanelFrame* f = NewFrame(kFeedbackPanel);
    auto* column = new QVBoxLayout(f);
    auto* grid = new QGridLayout;
    column->addLayout(grid);
    m_chkReceivedFeedback = new QCheckBox(f);
    m_chkReceivedFeedback->setObjectName(QStringLiteral("chkReceivedFeedback"));
    grid->addWidget(m_chkReceivedFeedback, 0, 0, 1, 2);
    Pair(grid, 0, 1, QStringLiteral("Date:"),
         TextBox(f, QStringLiteral("txtReceivedFeedbackDate")));
    m_fraFeedbackType = new QWidget(f);
    m_fraFeedbackType->setObjectName(QStringLiteral("fraFeedbackType"));
    auto* kindRow = new QHBoxLayout(m_fraFeedbackType);
    kindRow->setContentsMargins(0, 0, 0, 0);
    m_optReceivedFeedback = new QButtonGroup(this);
    const QStringList& kinds = tasks::FeedbackTypes();
    // Each option its own letter, none of the box's or the buttons'.
    QString letters = QStringLiteral("PEGWXYZ");
    for (int i = 0; i < kinds.size(); ++i) {
        const QString caption = WithMnemonic(tasks::Caption(kinds.at(i)), letters);
        const QKeySequence key = QKeySequence::mnemonic(caption);
        if (!key.isEmpty()) {
            letters.remove(QChar(key[0].key()));
        }
        auto* option = Indexed(new QRadioButton(caption, m_fraFeedbackType),
                               QStringLiteral("optReceivedFeedback"), i);
        m_optReceivedFeedback->addButton(option, i);
        kindRow->addWidget(option);
    }
    kindRow->addStretch(1);
    grid->addWidget(m_fraFeedbackType, 1, 0, 1, 4);
    QLineEdit* comment = TextBox(f, QStringLiteral("txtReceivedFeedbackComment"));
    grid->addWidget(BuddyCaption(f, QStringLiteral("Comment:"), comment), 2, 0);
    grid->addWidget(comment, 2, 1, 1, 3);
    grid->setColumnStretch(1, 1);
    grid->setColumnStretch(3, 1);
    column->addStretch(1);
    QHBoxLayout* commands = Commands(column);
    m_cmdComposeFeedback =
        Button(f, QStringLiteral("cmdComposeFeedback"), QStringLiteral("C&ompose Feedback..."));
    auto* save = Button(f, QStringLiteral("cmdSaveReceivedFeedback"), QStringLiteral("S&ave"));
    commands->addWidget(m_cmdComposeFeedback);
    commands->addWidget(save);

    connect(m_chkReceivedFeedback, &QCheckBox::clicked, this,
            &TaskPanels::chkReceivedFeedback_Click);
    connect(m_cmdComposeFeedback, &QPushButton::clicked, this,
            &TaskPanels::cmdComposeFeedback_Click);
    connect(save, &QPushButton::clicked, this, &TaskPanels::cmdSaveReceivedFeedback_Click);
}

void TaskPanels::BuildEmptyPanel(tasks::Side side) {
    const tasks::EmptyTaskPanel empty = tasks::NoPendingTasksPanel(side);
    PanelFrame* f = NewFrame(empty.index);
    auto* column = new QVBoxLayout(f);
    auto* title = new QLabel(empty.title, f);
    title->setObjectName(QStringLiteral("lblNoPendingTasks%1").arg(empty.index));
    QFont bigger = title->font();
    bigger.setBold(true);
    bigger.setPointSizeF(bigger.pointSizeF() * 1.25);
    title->setFont(bigger);
    auto* words = new QLabel(empty.text, f);
    words->setObjectName(QStringLiteral("lblNoPendingTasksText%1").arg(empty.index));
    words->setWordWrap(true);
    column->addWidget(title);
    column->addWidget(words);
    column->addStretch(1);
}

// ------------------------------------------------------------------ controls to panels

tasks::PaymentPanel TaskPanels::ReadPayment() const {
    tasks::PaymentPanel p;
    p.sale = !m_lblItemCost1->isHidden();
    p.frameTitle = Frame(kPaymentPanel)->title();
    p.txtItemCost0 = TextOf(QStringLiteral("txtItemCost0"));
    p.txtItemCost1 = TextOf(QStringLiteral("txtItemCost1"));
    p.txtShippingCost = TextOf(QStringLiteral("txtShippingCost"));
    p.txtSalesTax = TextOf(QStringLiteral("txtSalesTax"));
    p.txtTotalSale = TextOf(QStringLiteral("txtTotalSale"));
    p.lstPaymentMethods = m_lstPaymentMethods->currentIndex();
    p.txtPayInfo0 = TextOf(QStringLiteral("txtPayInfo0"));
    p.txtPayInfo0Enabled = Line(QStringLiteral("txtPayInfo0"))->isEnabled();
    p.frmPayment = 0;
    for (const auto& [index, frame] : m_frmPayment) {
        if (!frame->isHidden()) {
            p.frmPayment = index;
        }
    }
    p.txtCheckNumber = TextOf(QStringLiteral("txtCheckNumber"));
    p.txtDrawnOnBank = TextOf(QStringLiteral("txtDrawnOnBank"));
    p.chkDateCleared = m_chkDateCleared->isChecked();
    p.txtDateCleared = TextOf(QStringLiteral("txtDateCleared"));
    p.txtDateClearedEnabled = Line(QStringLiteral("txtDateCleared"))->isEnabled();
    p.txtCreditCardAccount = TextOf(QStringLiteral("txtCreditCardAccount"));
    p.cmbCreditCardType = Combo(QStringLiteral("cmbCreditCardType"))->currentText();
    p.cmbExpireMonth = Combo(QStringLiteral("cmbExpireMonth"))->currentText();
    p.cmbExpireYear = Combo(QStringLiteral("cmbExpireYear"))->currentText();
    p.txtMoneyOrder = TextOf(QStringLiteral("txtMoneyOrder"));
    return p;
}

void TaskPanels::WritePayment(const tasks::PaymentPanel& p) {
    SetFrameTitle(kPaymentPanel, p.frameTitle);
    SetText(QStringLiteral("txtItemCost0"), p.txtItemCost0);
    SetText(QStringLiteral("txtItemCost1"), p.txtItemCost1);
    m_lblItemCost1->setVisible(p.sale);
    Line(QStringLiteral("txtItemCost1"))->setVisible(p.sale);
    SetText(QStringLiteral("txtShippingCost"), p.txtShippingCost);
    SetText(QStringLiteral("txtSalesTax"), p.txtSalesTax);
    SetText(QStringLiteral("txtTotalSale"), p.txtTotalSale);
    m_lstPaymentMethods->setCurrentIndex(p.lstPaymentMethods);
    SetBox(Line(QStringLiteral("txtPayInfo0")), p.txtPayInfo0, p.txtPayInfo0Enabled);
    for (const auto& [index, frame] : m_frmPayment) {
        frame->setVisible(index == p.frmPayment);
    }
    SetText(QStringLiteral("txtCheckNumber"), p.txtCheckNumber);
    SetText(QStringLiteral("txtDrawnOnBank"), p.txtDrawnOnBank);
    m_chkDateCleared->setChecked(p.chkDateCleared);
    SetBox(Line(QStringLiteral("txtDateCleared")), p.txtDateCleared, p.txtDateClearedEnabled);
    SetText(QStringLiteral("txtCreditCardAccount"), p.txtCreditCardAccount);
    SelectText(Combo(QStringLiteral("cmbCreditCardType")), p.cmbCreditCardType);
    SelectText(Combo(QStringLiteral("cmbExpireMonth")), p.cmbExpireMonth);
    SelectText(Combo(QStringLiteral("cmbExpireYear")), p.cmbExpireYear);
    SetText(QStringLiteral("txtMoneyOrder"), p.txtMoneyOrder);
}

tasks::ShippingPanel TaskPanels::ReadShipping() const {
    tasks::ShippingPanel p;
    p.frameTitle = Frame(kShippingPanel)->title();
    p.lstShippingMethod = m_lstShippingMethod->currentIndex();
    p.txtShippingDate = TextOf(QStringLiteral("txtShippingDate"));
    p.txtShippingDateEnabled = Line(QStringLiteral("txtShippingDate"))->isEnabled();
    p.txtShippingCost2 = TextOf(QStringLiteral("txtShippingCost2"));
    p.txtActualShippingCost = TextOf(QStringLiteral("txtActualShippingCost"));
    p.txtInsuranceCost = TextOf(QStringLiteral("txtInsuranceCost"));
    p.txtTrackingNumber = TextOf(QStringLiteral("txtTrackingNumber"));
    p.txtInsuranceNumber = TextOf(QStringLiteral("txtInsuranceNumber"));
    return p;
}

void TaskPanels::WriteShipping(const tasks::ShippingPanel& p) {
    SetFrameTitle(kShippingPanel, p.frameTitle);
    m_lstShippingMethod->setCurrentIndex(p.lstShippingMethod);
    SetBox(Line(QStringLiteral("txtShippingDate")), p.txtShippingDate, p.txtShippingDateEnabled);
    SetText(QStringLiteral("txtShippingCost2"), p.txtShippingCost2);
    SetText(QStringLiteral("txtActualShippingCost"), p.txtActualShippingCost);
    SetText(QStringLiteral("txtInsuranceCost"), p.txtInsuranceCost);
    SetText(QStringLiteral("txtTrackingNumber"), p.txtTrackingNumber);
    SetText(QStringLiteral("txtInsuranceNumber"), p.txtInsuranceNumber);
}

tasks::ItemReceivedPanel TaskPanels::ReadItemReceived() const {
    tasks::ItemReceivedPanel p;
    p.frameTitle = Frame(kItemReceivedPanel)->title();
    p.chkItemReceived = m_chkItemReceived->isChecked();
    p.txtReceivedDate = TextOf(QStringLiteral("txtReceivedDate"));
    p.txtReceivedDateEnabled = Line(QStringLiteral("txtReceivedDate"))->isEnabled();
    p.lstItemCondition = Combo(QStringLiteral("lstItemCondition"))->currentIndex();
    p.lstItemPackaging = Combo(QStringLiteral("lstItemPackaging"))->currentIndex();
    p.lstItemTimeliness = Combo(QStringLiteral("lstItemTimeliness"))->currentIndex();
    p.lstItemCommunication = Combo(QStringLiteral("lstItemCommunication"))->currentIndex();
    p.txtItemNotes = findChild<QPlainTextEdit*>(QStringLiteral("txtItemNotes"))->toPlainText();
    return p;
}

void TaskPanels::WriteItemReceived(const tasks::ItemReceivedPanel& p) {
    SetFrameTitle(kItemReceivedPanel, p.frameTitle);
    m_chkItemReceived->setChecked(p.chkItemReceived);
    SetBox(Line(QStringLiteral("txtReceivedDate")), p.txtReceivedDate, p.txtReceivedDateEnabled);
    Combo(QStringLiteral("lstItemCondition"))->setCurrentIndex(p.lstItemCondition);
    Combo(QStringLiteral("lstItemPackaging"))->setCurrentIndex(p.lstItemPackaging);
    Combo(QStringLiteral("lstItemTimeliness"))->setCurrentIndex(p.lstItemTimeliness);
    Combo(QStringLiteral("lstItemCommunication"))->setCurrentIndex(p.lstItemCommunication);
    findChild<QPlainTextEdit*>(QStringLiteral("txtItemNotes"))->setPlainText(p.txtItemNotes);
}

tasks::FeedbackPanel TaskPanels::ReadFeedback() const {
    tasks::FeedbackPanel p;
    p.frameTitle = Frame(kFeedbackPanel)->title();
    p.chkReceivedFeedbackCaption = m_chkReceivedFeedback->property("caption").toString();
    p.chkReceivedFeedback = m_chkReceivedFeedback->isChecked();
    p.txtReceivedFeedbackDate = TextOf(QStringLiteral("txtReceivedFeedbackDate"));
    p.txtReceivedFeedbackComment = TextOf(QStringLiteral("txtReceivedFeedbackComment"));
    p.optReceivedFeedback = m_optReceivedFeedback->checkedId();
    p.optReceivedFeedbackVisible = !m_fraFeedbackType->isHidden();
    p.cmdComposeFeedbackVisible = !m_cmdComposeFeedback->isHidden();
    p.detailsEnabled = Line(QStringLiteral("txtReceivedFeedbackComment"))->isEnabled();
    return p;
}

void TaskPanels::WriteFeedback(const tasks::FeedbackPanel& p) {
    SetFrameTitle(kFeedbackPanel, p.frameTitle);
    m_chkReceivedFeedback->setProperty("caption", p.chkReceivedFeedbackCaption);
    m_chkReceivedFeedback->setText(
        WithMnemonic(p.chkReceivedFeedbackCaption, QStringLiteral("CDWXYZ")));
    m_chkReceivedFeedback->setChecked(p.chkReceivedFeedback);
    SetBox(Line(QStringLiteral("txtReceivedFeedbackDate")), p.txtReceivedFeedbackDate,
           p.detailsEnabled);
    SetBox(Line(QStringLiteral("txtReceivedFeedbackComment")), p.txtReceivedFeedbackComment,
           p.detailsEnabled);
    // No option set is a state of its own, which an exclusive group forbids.
    m_optReceivedFeedback->setExclusive(false);
    for (QAbstractButton* option : m_optReceivedFeedback->buttons()) {
        option->setChecked(m_optReceivedFeedback->id(option) == p.optReceivedFeedback);
        option->setEnabled(p.detailsEnabled);
    }
    m_optReceivedFeedback->setExclusive(true);
    m_fraFeedbackType->setVisible(p.optReceivedFeedbackVisible);
    m_cmdComposeFeedback->setVisible(p.cmdComposeFeedbackVisible);
}

tasks::AddressBoxes TaskPanels::ReadAddress() const {
    tasks::AddressBoxes b;
    b.txtAddressMr = TextOf(QStringLiteral("txtAddressMr"));
    b.txtAddressFirst = TextOf(QStringLiteral("txtAddressFirst"));
    b.txtAddressMiddle = TextOf(QStringLiteral("txtAddressMiddle"));
    b.txtAddressLast = TextOf(QStringLiteral("txtAddressLast"));
    b.txtAddressTitle = TextOf(QStringLiteral("txtAddressTitle"));
    b.txtAddressCompany = TextOf(QStringLiteral("txtAddressCompany"));
    b.txtAddressStreet1 = TextOf(QStringLiteral("txtAddressStreet1"));
    b.txtAddressStreet2 = TextOf(QStringLiteral("txtAddressStreet2"));
    b.txtAddressCity = TextOf(QStringLiteral("txtAddressCity"));
    b.txtAddressState = TextOf(QStringLiteral("txtAddressState"));
    b.txtAddressZip = TextOf(QStringLiteral("txtAddressZip"));
    b.txtAddressCountry = TextOf(QStringLiteral("txtAddressCountry"));
    b.txtAddressPhone = TextOf(QStringLiteral("txtAddressPhone"));
    b.txtAddressFax = TextOf(QStringLiteral("txtAddressFax"));
    b.txtAddressEmail = TextOf(QStringLiteral("txtAddressEmail"));
    return b;
}

void TaskPanels::WriteAddress(const tasks::AddressBoxes& b) {
    SetText(QStringLiteral("txtAddressMr"), b.txtAddressMr);
    SetText(QStringLiteral("txtAddressFirst"), b.txtAddressFirst);
    SetText(QStringLiteral("txtAddressMiddle"), b.txtAddressMiddle);
    SetText(QStringLiteral("txtAddressLast"), b.txtAddressLast);
    SetText(QStringLiteral("txtAddressTitle"), b.txtAddressTitle);
    SetText(QStringLiteral("txtAddressCompany"), b.txtAddressCompany);
    SetText(QStringLiteral("txtAddressStreet1"), b.txtAddressStreet1);
    SetText(QStringLiteral("txtAddressStreet2"), b.txtAddressStreet2);
    SetText(QStringLiteral("txtAddressCity"), b.txtAddressCity);
    SetText(QStringLiteral("txtAddressState"), b.txtAddressState);
    SetText(QStringLiteral("txtAddressZip"), b.txtAddressZip);
    SetText(QStringLiteral("txtAddressCountry"), b.txtAddressCountry);
    SetText(QStringLiteral("txtAddressPhone"), b.txtAddressPhone);
    SetText(QStringLiteral("txtAddressFax"), b.txtAddressFax);
    SetText(QStringLiteral("txtAddressEmail"), b.txtAddressEmail);
}

tasks::EmailTaskPanel TaskPanels::ReadEmailTask() const {
    tasks::EmailTaskPanel p;
    p.lblEmailKey = m_lblEmailKey->text();
    p.frameTitle = Frame(kEmailPanel)->title();
    p.chkEmailSent2Caption = m_chkEmailSent2->property("caption").toString();
    p.chkEmailSent2 = m_chkEmailSent2->isChecked();
    p.txtSentDate = TextOf(QStringLiteral("txtSentDate"));
    p.txtSentDateEnabled = Line(QStringLiteral("txtSentDate"))->isEnabled();
    p.frmShowMessage = !m_frmShowMessage->isHidden();
    p.txtEmailTo = TextOf(QStringLiteral("txtEmailTo"));
    p.txtEmailSubject = TextOf(QStringLiteral("txtEmailSubject"));
    p.txtEmailMessage = m_txtEmailMessage->toPlainText();
    p.cmdComposeEmailEnabled = m_cmdComposeEmail->isEnabled();
    p.cmdSaveEmailInfoEnabled = m_cmdSaveEmailInfo->isEnabled();
    return p;
}

void TaskPanels::WriteEmailTask(const tasks::EmailTaskPanel& p) {
    m_lblEmailKey->setText(p.lblEmailKey);
    SetFrameTitle(kEmailPanel, p.frameTitle);
    m_chkEmailSent2->setProperty("caption", p.chkEmailSent2Caption);
    // The mnemonic goes on the "Email Sent" that ends every such caption.
    QString caption = p.chkEmailSent2Caption;
    const qsizetype sent = caption.lastIndexOf(QStringLiteral("Email Sent"));
    m_chkEmailSent2->setText(sent < 0 ? WithMnemonic(caption) : caption.insert(sent, u'&'));
    m_chkEmailSent2->setChecked(p.chkEmailSent2);
    SetBox(Line(QStringLiteral("txtSentDate")), p.txtSentDate, p.txtSentDateEnabled);
    m_frmShowMessage->setVisible(p.frmShowMessage);
    SetText(QStringLiteral("txtEmailTo"), p.txtEmailTo);
    SetText(QStringLiteral("txtEmailSubject"), p.txtEmailSubject);
    m_txtEmailMessage->setPlainText(p.txtEmailMessage);
    m_cmdComposeEmail->setEnabled(p.cmdComposeEmailEnabled);
    m_cmdSaveEmailInfo->setEnabled(p.cmdSaveEmailInfoEnabled);
}

tasks::EntryTaskPanel TaskPanels::ReadEntryTask() const {
    tasks::EntryTaskPanel p;
    p.lblKey = m_lblKey->text();
    p.frameTitle = Frame(kEntryPanel)->title();
    p.chkEmailSentCaption = m_chkEmailSent->property("caption").toString();
    p.lblEmailSentDateCaption = m_lblEmailSentDate->text();
    p.txtEmailSentInstructions = m_txtEmailSentInstructions->text();
    p.chkEmailSent = m_chkEmailSent->isChecked();
    p.txtEmailSentDate = TextOf(QStringLiteral("txtEmailSentDate"));
    p.txtEmailSentDateEnabled = Line(QStringLiteral("txtEmailSentDate"))->isEnabled();
    return p;
}

void TaskPanels::WriteEntryTask(const tasks::EntryTaskPanel& p) {
    m_lblKey->setText(p.lblKey);
    SetFrameTitle(kEntryPanel, p.frameTitle);
    m_chkEmailSent->setProperty("caption", p.chkEmailSentCaption);
    m_chkEmailSent->setText(WithMnemonic(tasks::Caption(p.chkEmailSentCaption)));
    m_lblEmailSentDate->setText(tasks::Caption(p.lblEmailSentDateCaption));
    m_txtEmailSentInstructions->setText(p.txtEmailSentInstructions);
    m_chkEmailSent->setChecked(p.chkEmailSent);
    SetBox(Line(QStringLiteral("txtEmailSentDate")), p.txtEmailSentDate, p.txtEmailSentDateEnabled);
}

// ------------------------------------------------------------------ loads

bool TaskPanels::ShowTask(const tasks::TaskDispatch& dispatch, const tasks::SelectedItem& item) {
    bool shown = false;
    RunReported(kTaskTitle, [&] { shown = LoadPanel(dispatch, item); });
    return shown;
}

bool TaskPanels::LoadPanel(const tasks::TaskDispatch& d, const tasks::SelectedItem& item) {
    core::Database& db = m_db();
    int index = -1;
    switch (d.panel) {
        case tasks::TaskPanel::SalePayment:
        case tasks::TaskPanel::BidPayment: {
            const auto p = d.panel == tasks::TaskPanel::SalePayment
                               ? tasks::ShowSalePayment(db, item)
                               : tasks::ShowBidPayment(db, item);
            if (p) {
                WritePayment(*p);
                index = kPaymentPanel;
            }
            break;
        }
        case tasks::TaskPanel::Shipping:
            if (const auto p = tasks::ShowShipping(db, item)) {
                WriteShipping(*p);
                index = kShippingPanel;
            }
            break;
        case tasks::TaskPanel::ItemReceived:
            if (const auto p = tasks::ShowItemReceived(db, item)) {
                WriteItemReceived(*p);
                index = kItemReceivedPanel;
            }
            break;
        case tasks::TaskPanel::ReceivedFeedback:
        case tasks::TaskPanel::LeftFeedback: {
            const auto p = d.panel == tasks::TaskPanel::ReceivedFeedback
                               ? tasks::ShowReceivedFeedback(db, item)
                               : tasks::ShowLeftFeedback(db, item);
            if (p) {
                WriteFeedback(*p);
                index = kFeedbackPanel;
            }
            break;
        }
        case tasks::TaskPanel::Notes:
            if (const auto p = tasks::ShowNotes(db, item)) {
                SetFrameTitle(kNotesPanel, p->frameTitle);
                m_txtToDoNotes->setPlainText(p->txtToDoNotes);
                m_lblToDoPriorNotes->setText(tasks::Caption(p->lblToDoPriorNotes));
                m_txtToDoPriorNotes->setPlainText(p->txtToDoPriorNotes);
                index = kNotesPanel;
            }
            break;
        case tasks::TaskPanel::BuyerAddress:
        case tasks::TaskPanel::SellerAddress: {
            const auto p = d.panel == tasks::TaskPanel::BuyerAddress
                               ? tasks::ShowBuyerAddress(db, item)
                               : tasks::ShowSellerAddress(db, item);
            if (p) {
                SetFrameTitle(kAddressPanel, p->frameTitle);
                WriteAddress(p->boxes);
                index = kAddressPanel;
            }
            break;
        }
        case tasks::TaskPanel::EmailTask:
            if (const auto p =
                    tasks::ShowEmailTask(db, item, d.description, d.key, d.additional[0],
                                         d.parameter, d.additional[1], d.additional[2])) {
                WriteEmailTask(*p);
                index = kEmailPanel;
            }
            break;
        case tasks::TaskPanel::EntryTask:
            if (const auto p = tasks::ShowEntryTask(db, item, d.description, d.key, d.additional[0],
                                                    d.additional[1], d.additional[2],
                                                    d.additional[3], d.additional[4])) {
                WriteEntryTask(*p);
                index = kEntryPanel;
            }
            break;
        case tasks::TaskPanel::ItemInfo: {
            const tasks::ItemInfoPanel p = tasks::ShowItemInfo(db, item);
            SetFrameTitle(kItemInfoPanel, p.frameTitle);
            findChild<QLabel*>(QStringLiteral("lblInfoTitle"))->setText(p.lblInfoTitle);
            findChild<QLabel*>(QStringLiteral("lblInfoCategory"))->setText(p.lblInfoCategory);
            index = kItemInfoPanel;
            break;
        }
        case tasks::TaskPanel::SaleSummary:
        case tasks::TaskPanel::BidSummary: {
            const bool sale = d.panel == tasks::TaskPanel::SaleSummary;
            const auto p =
                sale ? tasks::ShowSaleSummary(db, item) : tasks::ShowBidSummary(db, item);
            if (!p) {
                break;
            }
            SetFrameTitle(kSummaryPanel, p->frameTitle);
            const std::pair<const char*, QString> labels[] = {
                {"lblSummaryPartnerCaption",
                 sale ? QStringLiteral("High Bidder:") : QStringLiteral("Seller:")},
                {"lblSummaryPartner", p->lblSummaryPartner},
                {"lblSummaryFeedback", p->lblSummaryFeedback},
                {"lblSummaryHighBid", p->lblSummaryHighBid},
                {"lblSummaryQuantity", p->lblSummaryQuantity},
                {"lblSummaryMinimumBid", p->lblSummaryMinimumBid},
                {"lblSummaryReserveBid", p->lblSummaryReserveBid},
                {"lblSummaryNumberBids", p->lblSummaryNumberBids},
                {"lblHistoryCaption", p->lblHistoryCaption},
                {"lblHistoryCount", p->lblHistoryCount},
                {"lblHistoryTotal", p->lblHistoryTotal},
                {"lblFavoriteCaption", p->lblFavoriteCaption},
                {"lblFavorites", p->lblFavorites},
            };
            for (const auto& [name, text] : labels) {
                findChild<QLabel*>(QString::fromLatin1(name))->setText(text);
            }
            index = kSummaryPanel;
            break;
        }
        case tasks::TaskPanel::PackingList:
        case tasks::TaskPanel::RemittanceAdvice:
            BuildPackingDocument(item);
            return true;
        case tasks::TaskPanel::NoPendingTasks:
        case tasks::TaskPanel::None:
            break;
    }
    if (index < 0) {
        return false;
    }
    ShowTaskPanel(index);
    return true;
}

void TaskPanels::BuildPackingDocument(const tasks::SelectedItem& item) {
    const tasks::PackingOutcome outcome =
        tasks::BuildPackingDocument(m_db(), item, *m_txtPackingList->document());
    if (!outcome.node.isEmpty()) {
        // A partner's address or the payment is missing: its node opens.
        Q_EMIT NodeWanted(outcome.node);
        Q_EMIT RecordChanged();
        return;
    }
    SetFrameTitle(kPackingPanel, outcome.frameTitle);
    m_txtPackingList->moveCursor(QTextCursor::Start);
    ShowTaskPanel(kPackingPanel);
    Q_EMIT RecordChanged();
}

// ------------------------------------------------------------------ saves

void TaskPanels::RunSave(
    const std::function<tasks::SaveOutcome(core::Database&, const tasks::SelectedItem&)>& save) {
    const std::optional<tasks::SelectedItem> item = m_selected();
    if (!item) {
        return;
    }
    tasks::SaveOutcome outcome;
    if (RunReported(kTaskTitle, [&] { outcome = save(m_db(), *item); })) {
        Q_EMIT Saved(outcome);
    }
}

void TaskPanels::cmdSavePaymentInfo_Click() {
    const tasks::PaymentPanel panel = ReadPayment();
    RunSave([&](core::Database& db, const tasks::SelectedItem& item) {
        return tasks::SavePayment(db, item, panel);
    });
}

void TaskPanels::cmdSaveShippingInfo_Click() {
    const tasks::ShippingPanel panel = ReadShipping();
    RunSave([&](core::Database& db, const tasks::SelectedItem& item) {
        return tasks::SaveShipping(db, item, panel);
    });
}

void TaskPanels::cmdSaveItemReceived_Click() {
    const tasks::ItemReceivedPanel panel = ReadItemReceived();
    RunSave([&](core::Database& db, const tasks::SelectedItem& item) {
        return tasks::SaveItemReceived(db, item, panel);
    });
}

void TaskPanels::cmdSaveReceivedFeedback_Click() {
    const tasks::FeedbackPanel panel = ReadFeedback();
    const bool left = panel.chkReceivedFeedbackCaption == tasks::LeftFeedbackCaption();
    RunSave([&](core::Database& db, const tasks::SelectedItem& item) {
        return tasks::SaveReceivedFeedback(db, item, panel);
    });
    // The left feedback's panel shows what now stands, the outbox's mark
    // included.
    if (left && ShownPanel() == kFeedbackPanel) {
        if (const std::optional<tasks::SelectedItem> item = m_selected()) {
            RunReported(kTaskTitle, [&] {
                if (const auto shown = tasks::ShowLeftFeedback(m_db(), *item)) {
                    WriteFeedback(*shown);
                }
            });
        }
    }
}

void TaskPanels::cmdSaveNotes_Click() {
    const QString notes = m_txtToDoNotes->toPlainText();
    RunSave([&](core::Database& db, const tasks::SelectedItem& item) {
        return tasks::SaveNotes(db, item, notes);
    });
}

void TaskPanels::cmdSaveAddress_Click() {
    const tasks::AddressBoxes boxes = ReadAddress();
    RunSave([&](core::Database& db, const tasks::SelectedItem& item) {
        return item.side == tasks::Side::Sales ? tasks::SaveBuyerAddress(db, item, boxes)
                                               : tasks::SaveSellerAddress(db, item, boxes);
    });
}

void TaskPanels::cmdSaveEmailInfo_Click() {
    const QString key = m_lblEmailKey->text();
    const bool sent = m_chkEmailSent2->isChecked();
    const QString date = TextOf(QStringLiteral("txtSentDate"));
    RunSave([&](core::Database& db, const tasks::SelectedItem& item) {
        return tasks::SaveEmailTask(db, item, key, sent, date);
    });
}

void TaskPanels::cmdSaveToDoEmail_Click() {
    const QString key = m_lblKey->text();
    const bool done = m_chkEmailSent->isChecked();
    const QString date = TextOf(QStringLiteral("txtEmailSentDate"));
    RunSave([&](core::Database& db, const tasks::SelectedItem& item) {
        return tasks::SaveEntryTask(db, item, key, done, date);
    });
}

// ------------------------------------------------------------------ rules of the controls

void TaskPanels::lstPaymentMethods_Click() {
    tasks::PaymentPanel panel = ReadPayment();
    tasks::ChoosePaymentMethod(panel, m_lstPaymentMethods->currentIndex());
    WritePayment(panel);
}

void TaskPanels::chkDateCleared_Click() {
    tasks::PaymentPanel panel = ReadPayment();
    tasks::TickDateCleared(panel, m_chkDateCleared->isChecked());
    WritePayment(panel);
}

void TaskPanels::cmdComputeSalesTax_Click() {
    double rate = 0;
    if (!RunReported(kTaskTitle, [&] { rate = tasks::SalesTaxRate(m_db()); })) {
        return;
    }
    tasks::PaymentPanel panel = ReadPayment();
    tasks::ComputeSalesTax(panel, rate);
    WritePayment(panel);
}

void TaskPanels::lstShippingMethod_Click() {
    tasks::ShippingPanel panel = ReadShipping();
    tasks::ChooseShippingMethod(panel, m_lstShippingMethod->currentIndex());
    WriteShipping(panel);
    if (panel.txtShippingDateEnabled) {
        Line(QStringLiteral("txtShippingDate"))->setFocus(Qt::OtherFocusReason);
    }
}

void TaskPanels::chkItemReceived_Click() {
    tasks::ItemReceivedPanel panel = ReadItemReceived();
    tasks::TickItemReceived(panel, m_chkItemReceived->isChecked());
    WriteItemReceived(panel);
}

void TaskPanels::chkReceivedFeedback_Click() {
    tasks::FeedbackPanel panel = ReadFeedback();
    tasks::TickFeedback(panel, m_chkReceivedFeedback->isChecked());
    WriteFeedback(panel);
}

void TaskPanels::chkEmailSent2_Click() {
    tasks::EmailTaskPanel panel = ReadEmailTask();
    tasks::TickEmailSent2(panel, m_chkEmailSent2->isChecked());
    WriteEmailTask(panel);
}

void TaskPanels::chkEmailSent_Click() {
    tasks::EntryTaskPanel panel = ReadEntryTask();
    tasks::TickEmailSent(panel, m_chkEmailSent->isChecked());
    WriteEntryTask(panel);
}

void TaskPanels::txtEmailSentDate_LostFocus() {
    QLineEdit* date = Line(QStringLiteral("txtEmailSentDate"));
    date->setText(tasks::EntryDateText(date->text()));
}

void TaskPanels::txtAddressState_LostFocus() {
    QLineEdit* state = Line(QStringLiteral("txtAddressState"));
    state->setText(tasks::AddressStateText(state->text()));
}

void TaskPanels::cmdPasteAddressFromClipboard_Click() {
    const tasks::PastedAddress pasted =
        tasks::PasteAddressFromClipboard(QApplication::clipboard()->text(), ReadAddress());
    WriteAddress(pasted.boxes);
    if (pasted.failed) {
        core::CurrentUi().Message(pasted.message, pasted.title, core::Icon::Warning);
    }
}

void TaskPanels::cmdComposeEmail_Click() {
    // The mail of a task is written in the mail window, which this version
    // does not have; the task is still kept by hand.
    core::CurrentUi().Message(
        QStringLiteral("Mail is not composed in this version of Lotwright.  Send the mail from "
                       "your own mail program, then tick the box and save, and the task is "
                       "marked done."),
        QStringLiteral("Compose Email"), core::Icon::Information);
}

void TaskPanels::cmdComposeFeedback_Click() {
    core::CurrentUi().Message(
        QStringLiteral("Feedback is not composed in this version of Lotwright.  Leave the "
                       "feedback on the auction site, then tick the box and save, and the task "
                       "is marked done."),
        QStringLiteral("Compose Feedback"), core::Icon::Information);
}

// ------------------------------------------------------------------ packing list

void TaskPanels::cmdPrintPackingList_Click() {
    const std::optional<tasks::SelectedItem> item = m_selected();
    if (!item) {
        return;
    }
    QPrinter printer(QPrinter::HighResolution);
    QPrintDialog dialog(&printer, this);
    dialog.setWindowTitle(Frame(kPackingPanel)->title());
    if (dialog.exec() != QDialog::Accepted) {
        return;
    }
    // A printer that fails is passed over: the list counts as printed, as
    // the paper may well have come out.
    QString ignored;
    richtext::PrintDocument(*m_txtPackingList->document(), printer, &ignored);
    RunReported(kTaskTitle, [&] { tasks::MarkPackingPrinted(m_db(), *item); });
    Q_EMIT RecordChanged();
}

void TaskPanels::cmdSavePackingListPdf_Click() {
    const std::optional<tasks::SelectedItem> item = m_selected();
    if (!item) {
        return;
    }
    const QString path = QFileDialog::getSaveFileName(
        this, QStringLiteral("Save as PDF"),
        QDir::home().filePath(QStringLiteral("pack%1.pdf").arg(item->itemNumber)),
        QStringLiteral("PDF documents (*.pdf)"));
    if (path.isEmpty()) {
        return;
    }
    QString error;
    if (!richtext::WritePdf(*m_txtPackingList->document(), path, &error)) {
        core::CurrentUi().Message(error, QStringLiteral("Save as PDF"), core::Icon::Warning);
        return;
    }
    RunReported(kTaskTitle, [&] { tasks::MarkPackingPrinted(m_db(), *item); });
    Q_EMIT RecordChanged();
}

void TaskPanels::cmdEditPackingList_Click() {
    const std::optional<tasks::SelectedItem> item = m_selected();
    if (!item) {
        return;
    }
    QString error;
    const QString path = tasks::SavePackingForEdit(*m_txtPackingList->document(), &error);
    if (path.isEmpty() || !m_openFile(path)) {
        // No program took the copy: the document goes to the clipboard, in
        // rich text and plain, for the user to paste wherever they write.
        auto* data = new QMimeData;
        data->setHtml(m_txtPackingList->document()->toHtml());
        data->setText(m_txtPackingList->document()->toPlainText());
        data->setData(QStringLiteral("text/rtf"), richtext::SaveRtf(*m_txtPackingList->document()));
        QApplication::clipboard()->setMimeData(data);
        const tasks::BoxText box = tasks::WordProcessorFallback();
        core::CurrentUi().Message(box.text, box.title, core::Icon::Warning);
    }
    RunReported(kTaskTitle, [&] { tasks::MarkPackingPrinted(m_db(), *item); });
    Q_EMIT RecordChanged();
}

// ------------------------------------------------------------------ money boxes

void TaskPanels::MoneyBoxLeft(QLineEdit* box) {
    box->setText(tasks::MoneyBoxText(box->text()));
    const QString name = box->objectName();
    if (name == u"txtSalesTax" || name == u"txtShippingCost" || name == u"txtItemCost0") {
        tasks::PaymentPanel panel = ReadPayment();
        tasks::ComputeTotal(panel);
        SetText(QStringLiteral("txtTotalSale"), panel.txtTotalSale);
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
            // The entry counts as made, whether or not the focus moves on.
            MoneyBoxLeft(box);
            if (!money->second.isEmpty()) {
                if (auto* next = findChild<QWidget*>(money->second)) {
                    next->setFocus(Qt::TabFocusReason);
                }
            }
            return true;
        }
    }
    return QStackedWidget::eventFilter(watched, event);
}

}  // namespace lw::ui
