// SPDX-License-Identifier: GPL-3.0-or-later
// The preferences window: layout and thin handlers. Checks, answers and writes
// all live in admin/preferences; this file only copies values between the
// controls and a Preferences, and moves the focus.
#include "ui/frmUserPreferences.h"

#include <algorithm>
#include <array>

#include <QButtonGroup>
#include <QCheckBox>
#include <QComboBox>
#include <QFocusEvent>
#include <QFormLayout>
#include <QGridLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QPushButton>
#include <QRadioButton>
#include <QSpinBox>
#include <QTabWidget>
#include <QTimer>
#include <QVBoxLayout>

#include "core/tracking.h"
#include "update/rules.h"

namespace lw::ui {

namespace {

const char* const kIndexProperty = "index";

QString FieldName(int index) {
    return QStringLiteral("txtUserPref") + QString::number(index);
}

QListWidget* MakeList(const QString& name, QAbstractItemView::SelectionMode mode, QWidget* parent) {
    auto* list = new QListWidget(parent);
    list->setObjectName(name);
    list->setSelectionMode(mode);
    return list;
}

void SetComboText(QComboBox* combo, const QString& text) {
    int index = text.isEmpty() ? -1 : combo->findText(text, Qt::MatchFixedString);
    if (index < 0 && !text.isEmpty()) {
        // A value the rules no longer list stays shown and is stored again.
        combo->addItem(text);
        index = combo->count() - 1;
    }
    combo->setCurrentIndex(index);
}

QString ComboText(const QComboBox* combo) {
    return combo->currentIndex() < 0 ? QString() : combo->currentText();
}

void SelectTexts(QListWidget* list, const QStringList& texts) {
    list->clearSelection();
    for (int row = 0; row < list->count(); ++row) {
        QListWidgetItem* item = list->item(row);
        if (texts.contains(item->text(), Qt::CaseInsensitive)) {
            item->setSelected(true);
        }
    }
}

QStringList SelectedTexts(const QListWidget* list) {
    QStringList texts;
    for (int row = 0; row < list->count(); ++row) {
        if (list->item(row)->isSelected()) {
            texts << list->item(row)->text();
        }
    }
    return texts;
}

void SelectRow(QListWidget* list, int row) {
    list->clearSelection();
    if (row >= 0 && row < list->count()) {
        list->setCurrentRow(row, QItemSelectionModel::ClearAndSelect);
    } else {
        list->setCurrentRow(-1, QItemSelectionModel::Clear);
    }
}

int SelectedRow(const QListWidget* list) {
    for (int row = 0; row < list->count(); ++row) {
        if (list->item(row)->isSelected()) {
            return row;
        }
    }
    return -1;
}

// The caption with its mnemonic before the first `key` it holds; the
// caption as it is when it holds none.
QString WithMnemonic(const QString& caption, QChar key) {
    QString marked = caption;
    const qsizetype at = marked.indexOf(key);
    if (at >= 0) {
        marked.insert(at, u'&');
    }
    return marked;
}

// The letters of the connection choices, one each within the window.
constexpr std::array<char16_t, 5> kConnectionKeys{u'D', u'N', u'i', u'P', u'x'};

// A list as tall as its rows, up to maxRows; longer lists scroll.
void FitRows(QListWidget* list, int maxRows) {
    const int rows = std::clamp(static_cast<int>(list->count()), 1, maxRows);
    const int row = list->count() > 0 ? list->sizeHintForRow(0) : list->fontMetrics().height() + 2;
    list->setFixedHeight(row * rows + 2 * list->frameWidth() + 2);
}

}  // namespace

frmUserPreferences::frmUserPreferences(QWidget* parent) : QDialog(parent) {
    setObjectName(QStringLiteral("frmUserPreferences"));
    setWindowTitle(QStringLiteral("User Preferences"));

    for (int index = 0; index < admin::kUserPrefCount; ++index) {
        auto* edit = new QLineEdit(this);
        edit->setObjectName(FieldName(index));
        edit->setProperty(kIndexProperty, index);
        edit->installEventFilter(this);
        m_field[static_cast<size_t>(index)] = edit;
    }
    Field(admin::kPrefUserName)->setReadOnly(true);
    Field(admin::kPrefPassword)->setEchoMode(QLineEdit::Password);
    // The picture publisher's FTP defaults and the password are kept here
    // without being shown.
    for (int index = admin::kPrefFtpZip; index <= admin::kPrefPassword; ++index) {
        Field(index)->hide();
    }

    m_tabs = new QTabWidget(this);
    m_tabs->setObjectName(QStringLiteral("tabPreferences"));
    m_tabs->addTab(BuildAddressTab(), QStringLiteral("&Addresses"));
    m_tabs->addTab(BuildAccountTab(), QStringLiteral("Account and &Mail"));
    m_tabs->addTab(BuildConnectionTab(), QStringLiteral("C&onnection"));
    m_tabs->addTab(BuildListingTab(), QStringLiteral("&Listing Defaults"));
    m_tabs->addTab(BuildShippingTab(), QStringLiteral("S&hipping"));
    m_tabs->addTab(BuildTasksTab(), QStringLiteral("&Task List"));
    m_tabs->addTab(BuildViewsTab(), QStringLiteral("&Views"));
    m_passwordTab = BuildPasswordTab();
    m_tabs->addTab(m_passwordTab, QStringLiteral("Change Pass&word"));
    m_tabs->setTabVisible(m_tabs->indexOf(m_passwordTab), false);

    m_cmdUpdate = new QPushButton(QStringLiteral("&Update"), this);
    m_cmdUpdate->setObjectName(QStringLiteral("cmdUpdate"));
    m_cmdReset = new QPushButton(QStringLiteral("&Reset"), this);
    m_cmdReset->setObjectName(QStringLiteral("cmdReset"));
    m_cmdCancel = new QPushButton(QStringLiteral("&Cancel"), this);
    m_cmdCancel->setObjectName(QStringLiteral("cmdCancel"));
    // Reset and Cancel never take the focus, so leaving a half-typed field
    // for them runs no check.
    m_cmdReset->setFocusPolicy(Qt::NoFocus);
    m_cmdCancel->setFocusPolicy(Qt::NoFocus);
    m_cmdUpdate->setAutoDefault(false);
    m_cmdReset->setAutoDefault(false);
    m_cmdCancel->setAutoDefault(false);

    auto* buttons = new QHBoxLayout;
    buttons->addStretch();
    buttons->addWidget(m_cmdUpdate);
    buttons->addWidget(m_cmdReset);
    buttons->addWidget(m_cmdCancel);

    auto* layout = new QVBoxLayout(this);
    layout->addWidget(m_tabs);
    layout->addLayout(buttons);

    connect(m_cmdUpdate, &QPushButton::clicked, this, &frmUserPreferences::cmdUpdate_Click);
    connect(m_cmdReset, &QPushButton::clicked, this, &frmUserPreferences::cmdReset_Click);
    connect(m_cmdCancel, &QPushButton::clicked, this, &frmUserPreferences::cmdCancel_Click);

    SetTabOrder();
    FillLists();
    cmdReset_Click();
    m_tabs->setCurrentIndex(0);
}

void frmUserPreferences::SetTabOrder() {
    // The Tab key follows the tabs from top to bottom, as they read.
    QList<QWidget*> order;
    for (int index = 0; index < 10; ++index) {
        order << Field(index);
    }
    order << m_cmbCountryShipping;
    for (int index = 10; index < 20; ++index) {
        order << Field(index);
    }
    order << m_cmbCountryPayment << Field(admin::kPrefUserName) << Field(admin::kPrefUserId)
          << Field(admin::kPrefSiteEmail) << m_cmdChangePassword << Field(admin::kPrefReplyEmail)
          << Field(admin::kPrefMailServer) << m_cmdUseTolvane << Field(admin::kPrefSalesTax);
    for (QRadioButton* option : m_optConnection) {
        order << option;
    }
    order << m_txtProxyServer << m_txtProxyPort << m_spnConnections << Field(admin::kPrefLocation)
          << m_cmbeBayCountryDefault << m_lstRegions << m_lstDuration << m_lstPaymentPref
          << m_chkBillpoint << m_lstShippingPref << m_optShipAbroad[0] << m_optShipAbroad[1]
          << m_optUSPlus << m_lstShippingRegions << m_cmbSaleOverPref << m_cmbWinningBidOver
          << m_chkViewArchiveGroup << m_txtAInterval << m_lstAOrder << m_chkAAscending
          << m_chkADescending << m_chkViewCurrentGroup << m_txtCInterval << m_lstCOrder
          << m_chkCAscending << m_chkCDescending << m_chkAutoUpdateTimeLeft << m_lstTimeLeftOptions
          << m_chkTracking << m_txtPassword[0] << m_txtPassword[1] << m_txtPassword[2]
          << findChild<QPushButton*>(QStringLiteral("cmdUpdatePassword"))
          << findChild<QPushButton*>(QStringLiteral("cmdCancelPasswordChange")) << m_cmdUpdate;
    for (qsizetype i = 1; i < order.size(); ++i) {
        QWidget::setTabOrder(order.at(i - 1), order.at(i));
    }
}

// ------------------------------------------------------------------- layout

QWidget* frmUserPreferences::BuildAddressTab() {
    auto* page = new QWidget;
    page->setObjectName(QStringLiteral("tabAddresses"));
    const QStringList labels = {
        QStringLiteral("First name: *"),     QStringLiteral("Middle name:"),
        QStringLiteral("Last name: *"),      QStringLiteral("Title:"),
        QStringLiteral("Company:"),          QStringLiteral("Street address: *"),
        QStringLiteral("Street address 2:"), QStringLiteral("City: *"),
        QStringLiteral("State: *"),          QStringLiteral("ZIP code: *"),
    };
    auto makeGroup = [&](const QString& title, const QString& name, int first, QComboBox* country) {
        auto* group = new QGroupBox(title, page);
        group->setObjectName(name);
        auto* form = new QFormLayout(group);
        for (int i = 0; i < labels.size(); ++i) {
            form->addRow(labels.at(i), Field(first + i));
        }
        form->addRow(QStringLiteral("Country:"), country);
        return group;
    };
    m_cmbCountryShipping = new QComboBox(page);
    m_cmbCountryShipping->setObjectName(QStringLiteral("cmbCountryShipping"));
    m_cmbCountryPayment = new QComboBox(page);
    m_cmbCountryPayment->setObjectName(QStringLiteral("cmbCountryPayment"));

    auto* row = new QHBoxLayout;
    row->addWidget(makeGroup(QStringLiteral("&Shipping address (where you ship from)"),
                             QStringLiteral("fraShipping"), 0, m_cmbCountryShipping));
    row->addWidget(makeGroup(QStringLiteral("&Payment address (where buyers send payment)"),
                             QStringLiteral("fraPayment"), 10, m_cmbCountryPayment));
    auto* layout = new QVBoxLayout(page);
    layout->addLayout(row);
    auto* note = new QLabel(QStringLiteral("Fields marked * are required."), page);
    note->setObjectName(QStringLiteral("lblRequired"));
    layout->addWidget(note);
    layout->addStretch();
    return page;
}

QWidget* frmUserPreferences::BuildAccountTab() {
    auto* page = new QWidget;
    page->setObjectName(QStringLiteral("tabAccount"));

    auto* user = new QGroupBox(QStringLiteral("Auction &site account"), page);
    user->setObjectName(QStringLiteral("fraAccount"));
    auto* userForm = new QFormLayout(user);
    userForm->addRow(QStringLiteral("Lotwright user:"), Field(admin::kPrefUserName));
    userForm->addRow(QStringLiteral("Site user ID:"), Field(admin::kPrefUserId));
    userForm->addRow(QStringLiteral("E-mail registered at the site:"),
                     Field(admin::kPrefSiteEmail));
    m_cmdChangePassword = new QPushButton(QStringLiteral("Change &Password..."), user);
    m_cmdChangePassword->setObjectName(QStringLiteral("cmdChangePassword"));
    m_cmdChangePassword->setAutoDefault(false);
    auto* passwordRow = new QHBoxLayout;
    passwordRow->addWidget(m_cmdChangePassword);
    passwordRow->addStretch();
    userForm->addRow(QStringLiteral("Site password:"), passwordRow);

    auto* mail = new QGroupBox(QStringLiteral("Mail and sales ta&x"), page);
    mail->setObjectName(QStringLiteral("fraMail"));
    auto* mailForm = new QFormLayout(mail);
    mailForm->addRow(QStringLiteral("Reply e-mail address:"), Field(admin::kPrefReplyEmail));
    m_cmdUseTolvane = new QPushButton(QStringLiteral("Use Tolvane Mail S&erver"), mail);
    m_cmdUseTolvane->setObjectName(QStringLiteral("cmdUseTolvane"));
    m_cmdUseTolvane->setAutoDefault(false);
    auto* serverRow = new QHBoxLayout;
    serverRow->addWidget(Field(admin::kPrefMailServer), 1);
    serverRow->addWidget(m_cmdUseTolvane);
    auto* serverLabel = new QLabel(QStringLiteral("Outgoing mail server:"), mail);
    serverLabel->setBuddy(Field(admin::kPrefMailServer));
    mailForm->addRow(serverLabel, serverRow);
    auto* taxRow = new QHBoxLayout;
    Field(admin::kPrefSalesTax)->setMaximumWidth(90);
    taxRow->addWidget(Field(admin::kPrefSalesTax));
    taxRow->addWidget(new QLabel(QStringLiteral("%  (for example 7.25)"), mail));
    taxRow->addStretch();
    auto* taxLabel = new QLabel(QStringLiteral("Sales tax rate:"), mail);
    taxLabel->setBuddy(Field(admin::kPrefSalesTax));
    mailForm->addRow(taxLabel, taxRow);

    auto* layout = new QVBoxLayout(page);
    layout->addWidget(user);
    layout->addWidget(mail);
    layout->addStretch();

    connect(m_cmdChangePassword, &QPushButton::clicked, this,
            &frmUserPreferences::cmdChangePassword_Click);
    connect(m_cmdUseTolvane, &QPushButton::clicked, this, &frmUserPreferences::cmdUseTolvane_Click);
    return page;
}

QWidget* frmUserPreferences::BuildConnectionTab() {
    auto* page = new QWidget;
    page->setObjectName(QStringLiteral("tabConnection"));
    auto* group = new QGroupBox(QStringLiteral("Ho&w this computer reaches the Internet"), page);
    group->setObjectName(QStringLiteral("fraConnection"));
    auto* options = new QVBoxLayout(group);
    m_connectionGroup = new QButtonGroup(this);
    for (int i = 0; i < 5; ++i) {
        auto* option = new QRadioButton(WithMnemonic(admin::ConnectionCaptions().at(i),
                                                     kConnectionKeys[static_cast<size_t>(i)]),
                                        group);
        option->setObjectName(QStringLiteral("optConnection") + QString::number(i));
        m_connectionGroup->addButton(option, i);
        options->addWidget(option);
        m_optConnection[static_cast<size_t>(i)] = option;
    }

    m_lblProxyTitle = new QLabel(QStringLiteral("<b>Proxy server</b>"), page);
    m_lblProxyTitle->setObjectName(QStringLiteral("lblProxyTitle"));
    m_lblProxyServer = new QLabel(QStringLiteral("Server:"), page);
    m_lblProxyServer->setObjectName(QStringLiteral("lblProxyServer"));
    m_lblProxyPort = new QLabel(QStringLiteral("Port:"), page);
    m_lblProxyPort->setObjectName(QStringLiteral("lblProxyPort"));
    m_txtProxyServer = new QLineEdit(page);
    m_txtProxyServer->setObjectName(QStringLiteral("txtProxyServer"));
    m_txtProxyPort = new QLineEdit(page);
    m_txtProxyPort->setObjectName(QStringLiteral("txtProxyPort"));
    m_txtProxyPort->setMaximumWidth(80);
    m_lblProxyServer->setBuddy(m_txtProxyServer);
    m_lblProxyPort->setBuddy(m_txtProxyPort);
    auto* proxy = new QGridLayout;
    proxy->addWidget(m_lblProxyTitle, 0, 0, 1, 4);
    proxy->addWidget(m_lblProxyServer, 1, 0);
    proxy->addWidget(m_txtProxyServer, 1, 1);
    proxy->addWidget(m_lblProxyPort, 1, 2);
    proxy->addWidget(m_txtProxyPort, 1, 3);
    proxy->setColumnStretch(1, 1);

    m_spnConnections = new QSpinBox(page);
    m_spnConnections->setObjectName(QStringLiteral("spnConnections"));
    m_spnConnections->setRange(update::kFewestConnections, update::kMostConnections);
    auto* lblConnections =
        new QLabel(QStringLiteral("Connections to the site durin&g an update:"), page);
    lblConnections->setObjectName(QStringLiteral("lblConnections"));
    lblConnections->setBuddy(m_spnConnections);
    auto* lblConnectionsNote = new QLabel(admin::ConnectionsNote(), page);
    lblConnectionsNote->setObjectName(QStringLiteral("lblConnectionsNote"));
    lblConnectionsNote->setWordWrap(true);
    auto* connections = new QHBoxLayout;
    connections->addWidget(lblConnections);
    connections->addWidget(m_spnConnections);
    connections->addStretch();

    auto* layout = new QVBoxLayout(page);
    layout->addWidget(group);
    layout->addLayout(proxy);
    layout->addLayout(connections);
    layout->addWidget(lblConnectionsNote);
    layout->addStretch();

    connect(m_connectionGroup, &QButtonGroup::idClicked, this,
            &frmUserPreferences::optConnection_Click);
    return page;
}

QWidget* frmUserPreferences::BuildListingTab() {
    auto* page = new QWidget;
    page->setObjectName(QStringLiteral("tabListing"));
    m_lstRegions = MakeList(QStringLiteral("lstRegions"), QAbstractItemView::SingleSelection, page);
    m_cmbeBayCountryDefault = new QComboBox(page);
    m_cmbeBayCountryDefault->setObjectName(QStringLiteral("cmbeBayCountryDefault"));
    m_lstDuration =
        MakeList(QStringLiteral("lstDuration"), QAbstractItemView::SingleSelection, page);
    m_lstPaymentPref =
        MakeList(QStringLiteral("lstPaymentPref"), QAbstractItemView::MultiSelection, page);
    m_chkBillpoint = new QCheckBox(QStringLiteral("Use &Billpoint Online Payments"), page);
    m_chkBillpoint->setObjectName(QStringLiteral("chkBillpoint"));

    auto* where = new QGroupBox(QStringLiteral("Where the item &is"), page);
    auto* whereForm = new QFormLayout(where);
    whereForm->addRow(QStringLiteral("Item location:"), Field(admin::kPrefLocation));
    whereForm->addRow(QStringLiteral("Country:"), m_cmbeBayCountryDefault);
    whereForm->addRow(QStringLiteral("Region:"), m_lstRegions);

    auto* terms = new QGroupBox(QStringLiteral("Listing t&erms"), page);
    auto* termsForm = new QFormLayout(terms);
    termsForm->addRow(QStringLiteral("Duration:"), m_lstDuration);
    termsForm->addRow(QStringLiteral("Payment accepted:"), m_lstPaymentPref);
    termsForm->addRow(QString(), m_chkBillpoint);

    auto* row = new QHBoxLayout;
    row->addWidget(where, 1);
    row->addWidget(terms, 1);
    auto* layout = new QVBoxLayout(page);
    layout->addLayout(row);
    layout->addStretch();
    return page;
}

QWidget* frmUserPreferences::BuildShippingTab() {
    auto* page = new QWidget;
    page->setObjectName(QStringLiteral("tabShipping"));
    m_lstShippingPref =
        MakeList(QStringLiteral("lstShippingPref"), QAbstractItemView::MultiSelection, page);
    m_lstShippingRegions =
        MakeList(QStringLiteral("lstShippingRegions"), QAbstractItemView::MultiSelection, page);

    auto* charges = new QGroupBox(QStringLiteral("Shipping char&ges"), page);
    auto* chargesLayout = new QVBoxLayout(charges);
    auto* whoPays =
        new QLabel(QStringLiteral("Who pays for shipping (choose one or more):"), charges);
    whoPays->setBuddy(m_lstShippingPref);
    chargesLayout->addWidget(whoPays);
    chargesLayout->addWidget(m_lstShippingPref);
    chargesLayout->addStretch();

    auto* scope = new QGroupBox(QStringLiteral("Where you shi&p"), page);
    auto* scopeLayout = new QVBoxLayout(scope);
    m_optShipAbroad[0] = new QRadioButton(QStringLiteral("&Domestic Only"), scope);
    m_optShipAbroad[0]->setObjectName(QStringLiteral("optShipAbroad0"));
    m_optShipAbroad[1] = new QRadioButton(QStringLiteral("&International Shipping"), scope);
    m_optShipAbroad[1]->setObjectName(QStringLiteral("optShipAbroad1"));
    m_optUSPlus = new QRadioButton(QStringLiteral("U.&S. and the following regions:"), scope);
    m_optUSPlus->setObjectName(QStringLiteral("optUSPlus"));
    scopeLayout->addWidget(m_optShipAbroad[0]);
    scopeLayout->addWidget(m_optShipAbroad[1]);
    scopeLayout->addWidget(m_optUSPlus);
    m_lstShippingRegions->setAccessibleName(QStringLiteral("Regions you ship to"));
    scopeLayout->addWidget(m_lstShippingRegions);

    auto* row = new QHBoxLayout;
    row->addWidget(charges, 1);
    row->addWidget(scope, 1);
    auto* layout = new QVBoxLayout(page);
    layout->addLayout(row);
    layout->addStretch();

    connect(m_lstShippingPref, &QListWidget::itemSelectionChanged, this,
            &frmUserPreferences::lstShippingPref_Click);
    connect(m_optUSPlus, &QRadioButton::toggled, m_lstShippingRegions, &QWidget::setEnabled);
    return page;
}

QWidget* frmUserPreferences::BuildTasksTab() {
    auto* page = new QWidget;
    page->setObjectName(QStringLiteral("tabTasks"));
    m_cmbSaleOverPref = new QComboBox(page);
    m_cmbSaleOverPref->setObjectName(QStringLiteral("cmbSaleOverPref"));
    m_cmbSaleOverPref->addItems(admin::SaleOverEntries());
    m_cmbWinningBidOver = new QComboBox(page);
    m_cmbWinningBidOver->setObjectName(QStringLiteral("cmbWinningBidOver"));
    m_cmbWinningBidOver->addItems(admin::WinningBidOverEntries());

    auto* group = new QGroupBox(QStringLiteral("When an item l&eaves the task list"), page);
    auto* form = new QFormLayout(group);
    form->addRow(QStringLiteral("A sale is done:"), m_cmbSaleOverPref);
    form->addRow(QStringLiteral("A won bid is done:"), m_cmbWinningBidOver);
    auto* layout = new QVBoxLayout(page);
    layout->addWidget(group);
    layout->addStretch();
    return page;
}

QWidget* frmUserPreferences::BuildViewsTab() {
    auto* page = new QWidget;
    page->setObjectName(QStringLiteral("tabViews"));

    auto makeGroup = [&](const QString& title, const QString& prefix,
                         const QStringList& directionCaptions, QCheckBox*& enable,
                         QLineEdit*& interval, QListWidget*& order, QCheckBox*& ascending,
                         QCheckBox*& descending) {
        auto* group = new QGroupBox(page);
        auto* grid = new QGridLayout(group);
        enable = new QCheckBox(title, group);
        interval = new QLineEdit(group);
        interval->setObjectName(QStringLiteral("txt") + prefix + QStringLiteral("Interval"));
        interval->setMaximumWidth(60);
        order = MakeList(QStringLiteral("lst") + prefix + QStringLiteral("Order"),
                         QAbstractItemView::SingleSelection, group);
        order->addItems(admin::ViewOrderCaptions());
        ascending = new QCheckBox(directionCaptions.at(0), group);
        ascending->setObjectName(QStringLiteral("chk") + prefix + QStringLiteral("Ascending"));
        descending = new QCheckBox(directionCaptions.at(1), group);
        descending->setObjectName(QStringLiteral("chk") + prefix + QStringLiteral("Descending"));
        auto* direction = new QButtonGroup(group);
        direction->setExclusive(true);
        direction->addButton(ascending);
        direction->addButton(descending);
        grid->addWidget(enable, 0, 0, 1, 3);
        auto* rows = new QLabel(QStringLiteral("Rows per page (0 for all):"), group);
        rows->setBuddy(interval);
        grid->addWidget(rows, 1, 0);
        grid->addWidget(interval, 1, 1);
        auto* sortBy = new QLabel(QStringLiteral("Sort by:"), group);
        sortBy->setBuddy(order);
        grid->addWidget(sortBy, 2, 0, Qt::AlignTop);
        grid->addWidget(order, 2, 1, 1, 2);
        auto* directions = new QHBoxLayout;
        directions->addWidget(ascending);
        directions->addWidget(descending);
        directions->addStretch();
        grid->addLayout(directions, 3, 1, 1, 2);
        grid->setColumnStretch(2, 1);
        return group;
    };
    QGroupBox* archive = makeGroup(
        QStringLiteral("Set my own view of &sold items (archive)"), QStringLiteral("A"),
        {QStringLiteral("Ascen&ding"), QStringLiteral("D&escending")}, m_chkViewArchiveGroup,
        m_txtAInterval, m_lstAOrder, m_chkAAscending, m_chkADescending);
    m_chkViewArchiveGroup->setObjectName(QStringLiteral("chkViewArchiveGroup"));
    QGroupBox* current = makeGroup(
        QStringLiteral("Set my own view of current &items"), QStringLiteral("C"),
        {QStringLiteral("Ascendi&ng"), QStringLiteral("Descendin&g")}, m_chkViewCurrentGroup,
        m_txtCInterval, m_lstCOrder, m_chkCAscending, m_chkCDescending);
    m_chkViewCurrentGroup->setObjectName(QStringLiteral("chkViewCurrentGroup"));

    auto* timeLeft = new QGroupBox(QStringLiteral("Time Le&ft column"), page);
    auto* timeLayout = new QVBoxLayout(timeLeft);
    m_chkAutoUpdateTimeLeft =
        new QCheckBox(QStringLiteral("Refresh it b&y itself every:"), timeLeft);
    m_chkAutoUpdateTimeLeft->setObjectName(QStringLiteral("chkAutoUpdateTimeLeft"));
    m_lstTimeLeftOptions = MakeList(QStringLiteral("lstTimeLeftOptions"),
                                    QAbstractItemView::SingleSelection, timeLeft);
    for (int i = 0; i < admin::TimeLeftCaptions().size(); ++i) {
        auto* item = new QListWidgetItem(admin::TimeLeftCaptions().at(i), m_lstTimeLeftOptions);
        item->setData(Qt::UserRole, admin::TimeLeftData().at(i));
    }
    m_lstTimeLeftOptions->setAccessibleName(QStringLiteral("Refresh interval"));
    timeLayout->addWidget(m_chkAutoUpdateTimeLeft);
    timeLayout->addWidget(m_lstTimeLeftOptions);
    m_chkTracking =
        new QCheckBox(QStringLiteral("Send a usage re&port to Lotwright's maker"), page);
    m_chkTracking->setObjectName(QStringLiteral("chkTracking"));
    auto* trackingNote = new QLabel(core::UsageReportSummary(), page);
    trackingNote->setObjectName(QStringLiteral("lblTracking"));
    trackingNote->setWordWrap(true);
    trackingNote->setForegroundRole(QPalette::PlaceholderText);

    // Each column a widget of its own, so that the Tab key reads the left
    // column down before the right one.
    auto* left = new QWidget(page);
    auto* views = new QVBoxLayout(left);
    views->setContentsMargins(0, 0, 0, 0);
    views->addWidget(archive);
    views->addWidget(current);
    views->addStretch();
    auto* right = new QWidget(page);
    auto* side = new QVBoxLayout(right);
    side->setContentsMargins(0, 0, 0, 0);
    side->addWidget(timeLeft);
    side->addSpacing(8);
    side->addWidget(m_chkTracking);
    side->addWidget(trackingNote);
    side->addStretch();
    auto* layout = new QHBoxLayout(page);
    layout->addWidget(left, 3);
    layout->addWidget(right, 2);

    connect(m_chkViewArchiveGroup, &QCheckBox::clicked, this,
            &frmUserPreferences::chkViewArchiveGroup_Click);
    connect(m_chkViewCurrentGroup, &QCheckBox::clicked, this,
            &frmUserPreferences::chkViewCurrentGroup_Click);
    connect(m_lstAOrder, &QListWidget::currentRowChanged, this,
            &frmUserPreferences::lstAOrder_Click);
    connect(m_lstCOrder, &QListWidget::currentRowChanged, this,
            &frmUserPreferences::lstCOrder_Click);
    connect(m_chkTracking, &QCheckBox::clicked, this, &frmUserPreferences::chkTracking_Click);
    connect(m_chkAutoUpdateTimeLeft, &QCheckBox::toggled, this, [this](bool on) {
        m_lstTimeLeftOptions->setEnabled(on);
        if (on && !m_filling && SelectedRow(m_lstTimeLeftOptions) < 0) {
            SelectRow(m_lstTimeLeftOptions, admin::TimeLeftIndexFor(65535));
        }
    });
    return page;
}

QWidget* frmUserPreferences::BuildPasswordTab() {
    auto* page = new QWidget;
    page->setObjectName(QStringLiteral("tabPassword"));
    auto* group = new QGroupBox(QStringLiteral("Change the password of your &site account"), page);
    auto* form = new QFormLayout(group);
    const QStringList labels = {QStringLiteral("Old password:"), QStringLiteral("New password:"),
                                QStringLiteral("New password again:")};
    for (int i = 0; i < 3; ++i) {
        auto* edit = new QLineEdit(group);
        edit->setObjectName(QStringLiteral("txtPassword") + QString::number(i));
        edit->setEchoMode(QLineEdit::Password);
        form->addRow(labels.at(i), edit);
        m_txtPassword[static_cast<size_t>(i)] = edit;
    }
    auto* update = new QPushButton(QStringLiteral("Up&date Password"), group);
    update->setObjectName(QStringLiteral("cmdUpdatePassword"));
    update->setAutoDefault(false);
    auto* cancel = new QPushButton(QStringLiteral("Cancel Password Chan&ge"), group);
    cancel->setObjectName(QStringLiteral("cmdCancelPasswordChange"));
    cancel->setAutoDefault(false);
    auto* row = new QHBoxLayout;
    row->addStretch();
    row->addWidget(update);
    row->addWidget(cancel);
    form->addRow(row);
    auto* note = new QLabel(
        QStringLiteral("The new password is saved when you press Update in the preferences."),
        page);
    note->setWordWrap(true);

    auto* layout = new QVBoxLayout(page);
    layout->addWidget(group);
    layout->addWidget(note);
    layout->addStretch();
    connect(update, &QPushButton::clicked, this, &frmUserPreferences::cmdUpdatePassword_Click);
    connect(cancel, &QPushButton::clicked, this,
            &frmUserPreferences::cmdCancelPasswordChange_Click);
    return page;
}

// -------------------------------------------------------- controls <-> values

void frmUserPreferences::FillLists() {
    m_lists = admin::LoadPreferenceLists(update::Rules());
    for (QComboBox* combo : {m_cmbCountryShipping, m_cmbCountryPayment, m_cmbeBayCountryDefault}) {
        combo->clear();
        combo->addItems(m_lists.countries);
    }
    m_lstRegions->clear();
    m_lstRegions->addItems(m_lists.regions);
    m_lstShippingPref->clear();
    m_lstShippingPref->addItems(m_lists.shipping);
    m_lstPaymentPref->clear();
    m_lstPaymentPref->addItems(m_lists.payment);
    m_lstShippingRegions->clear();
    m_lstShippingRegions->addItems(m_lists.shippingRegions);
    m_lstDuration->clear();
    m_lstDuration->addItems(admin::DurationEntries());
    FitRows(m_lstRegions, 8);
    FitRows(m_lstShippingPref, 8);
    FitRows(m_lstPaymentPref, 8);
    FitRows(m_lstShippingRegions, 10);
    FitRows(m_lstDuration, 8);
    FitRows(m_lstAOrder, 8);
    FitRows(m_lstCOrder, 8);
    FitRows(m_lstTimeLeftOptions, 8);
}

void frmUserPreferences::ShowPreferences(const admin::Preferences& prefs) {
    m_filling = true;
    for (int index = 0; index < admin::kUserPrefCount; ++index) {
        Field(index)->setText(prefs.field[static_cast<size_t>(index)]);
    }
    m_txtProxyServer->setText(prefs.proxyServer);
    m_txtProxyPort->setText(prefs.proxyPort);
    m_optConnection[static_cast<size_t>(prefs.connection)]->setChecked(true);
    optConnection_Click(prefs.connection);
    m_spnConnections->setValue(prefs.connections);

    SetComboText(m_cmbCountryShipping, prefs.countryShipping);
    SetComboText(m_cmbCountryPayment, prefs.countryPayment);
    SetComboText(m_cmbeBayCountryDefault, prefs.shipFromCountry);
    m_cmbSaleOverPref->setCurrentIndex(prefs.saleOverPref);
    m_cmbWinningBidOver->setCurrentIndex(prefs.winningBidOver);

    SelectRow(m_lstRegions, prefs.region.isEmpty()
                                ? -1
                                : static_cast<int>(m_lists.regions.indexOf(prefs.region)));
    SelectRow(m_lstDuration, admin::DurationIndexFor(prefs.duration));
    SelectTexts(m_lstShippingPref, prefs.shippingPref);
    SelectTexts(m_lstPaymentPref, prefs.paymentPref);
    m_chkBillpoint->setChecked(prefs.billpoint);
    switch (prefs.shipScope) {
        case admin::ShipScope::DomesticOnly:
            m_optShipAbroad[0]->setChecked(true);
            break;
        case admin::ShipScope::International:
            m_optShipAbroad[1]->setChecked(true);
            break;
        case admin::ShipScope::USPlus:
            m_optUSPlus->setChecked(true);
            break;
    }
    m_lstShippingRegions->setEnabled(prefs.shipScope == admin::ShipScope::USPlus);
    SelectTexts(m_lstShippingRegions, prefs.shippingRegions);

    m_chkViewArchiveGroup->setChecked(prefs.archiveView.enabled);
    m_txtAInterval->setText(prefs.archiveView.interval);
    SelectRow(m_lstAOrder, prefs.archiveView.order);
    (prefs.archiveView.descending ? m_chkADescending : m_chkAAscending)->setChecked(true);
    EnableArchiveControls(prefs.archiveView.enabled);
    m_chkViewCurrentGroup->setChecked(prefs.currentView.enabled);
    m_txtCInterval->setText(prefs.currentView.interval);
    SelectRow(m_lstCOrder, prefs.currentView.order);
    (prefs.currentView.descending ? m_chkCDescending : m_chkCAscending)->setChecked(true);
    EnableCurrentControls(prefs.currentView.enabled);

    m_chkAutoUpdateTimeLeft->setChecked(prefs.autoUpdateTimeLeft);
    m_lstTimeLeftOptions->setEnabled(prefs.autoUpdateTimeLeft);
    SelectRow(m_lstTimeLeftOptions, prefs.timeLeftOption);
    m_chkTracking->setChecked(prefs.tracking);
    m_filling = false;
}

admin::Preferences frmUserPreferences::CollectPreferences() const {
    admin::Preferences prefs;
    for (int index = 0; index < admin::kUserPrefCount; ++index) {
        prefs.field[static_cast<size_t>(index)] = Field(index)->text();
    }
    prefs.connection = std::max(0, m_connectionGroup->checkedId());
    prefs.proxyServer = m_txtProxyServer->text();
    prefs.proxyPort = m_txtProxyPort->text();
    prefs.connections = m_spnConnections->value();
    prefs.countryShipping = ComboText(m_cmbCountryShipping);
    prefs.countryPayment = ComboText(m_cmbCountryPayment);
    prefs.shipFromCountry = ComboText(m_cmbeBayCountryDefault);
    prefs.saleOverPref = m_cmbSaleOverPref->currentIndex();
    prefs.winningBidOver = m_cmbWinningBidOver->currentIndex();
    const int region = SelectedRow(m_lstRegions);
    prefs.region = region < 0 ? QString() : m_lstRegions->item(region)->text();
    const int duration = SelectedRow(m_lstDuration);
    prefs.duration = duration < 0 ? 0 : admin::DurationDays(m_lstDuration->item(duration)->text());
    prefs.shippingPref = SelectedTexts(m_lstShippingPref);
    prefs.paymentPref = SelectedTexts(m_lstPaymentPref);
    prefs.billpoint = m_chkBillpoint->isChecked();
    if (m_optUSPlus->isChecked()) {
        prefs.shipScope = admin::ShipScope::USPlus;
    } else if (m_optShipAbroad[1]->isChecked()) {
        prefs.shipScope = admin::ShipScope::International;
    } else {
        prefs.shipScope = admin::ShipScope::DomesticOnly;
    }
    prefs.shippingRegions = SelectedTexts(m_lstShippingRegions);
    prefs.archiveView = {m_chkViewArchiveGroup->isChecked(), m_txtAInterval->text(),
                         std::max(0, SelectedRow(m_lstAOrder)), m_chkADescending->isChecked()};
    prefs.currentView = {m_chkViewCurrentGroup->isChecked(), m_txtCInterval->text(),
                         std::max(0, SelectedRow(m_lstCOrder)), m_chkCDescending->isChecked()};
    prefs.autoUpdateTimeLeft = m_chkAutoUpdateTimeLeft->isChecked();
    prefs.timeLeftOption = SelectedRow(m_lstTimeLeftOptions);
    prefs.tracking = m_chkTracking->isChecked();
    return prefs;
}

// ------------------------------------------------------------------ handlers

bool frmUserPreferences::eventFilter(QObject* watched, QEvent* event) {
    auto* edit = qobject_cast<QLineEdit*>(watched);
    const QVariant index = edit != nullptr ? edit->property(kIndexProperty) : QVariant();
    if (!index.isValid()) {
        return QDialog::eventFilter(watched, event);
    }
    if (event->type() == QEvent::KeyPress) {
        auto* key = static_cast<QKeyEvent*>(event);
        const bool shortcut =
            key->modifiers() & (Qt::ControlModifier | Qt::AltModifier | Qt::MetaModifier);
        if (!shortcut) {
            for (QChar c : key->text()) {
                if (c.isPrint() &&
                    !admin::AcceptsCharacter(index.toInt(), c, m_cmbCountryShipping->currentIndex(),
                                             m_cmbCountryPayment->currentIndex())) {
                    return true;
                }
            }
        }
    } else if (event->type() == QEvent::FocusOut) {
        // Only leaving for another control of this window is a leave: a
        // message box or another window taking the focus is not.
        const Qt::FocusReason reason = static_cast<QFocusEvent*>(event)->reason();
        if (reason != Qt::ActiveWindowFocusReason && reason != Qt::PopupFocusReason &&
            !m_checking && !m_tabs->isTabVisible(m_tabs->indexOf(m_passwordTab))) {
            // Run once the focus has moved; Update runs it first if pressed
            // before that, as a leave comes before the press.
            const int leaving = index.toInt();
            m_pendingCheck = leaving;
            QTimer::singleShot(0, this, [this, leaving] {
                if (m_pendingCheck == leaving) {
                    m_pendingCheck = -1;
                    if (isVisible()) {
                        txtUserPref_LostFocus(leaving);
                    }
                }
            });
        }
    }
    return QDialog::eventFilter(watched, event);
}

bool frmUserPreferences::txtUserPref_LostFocus(int index) {
    if (m_checking || index < 0 || index >= admin::kUserPrefCount) {
        return false;
    }
    m_checking = true;
    QLineEdit* edit = Field(index);
    const admin::FieldCheck check = admin::LeaveField(index, edit->text(), core::CurrentUi());
    if (check.text != edit->text()) {
        edit->setText(check.text);
    }
    if (check.focusBack) {
        for (int tab = 0; tab < m_tabs->count(); ++tab) {
            if (m_tabs->widget(tab)->isAncestorOf(edit)) {
                m_tabs->setCurrentIndex(tab);
            }
        }
        edit->setFocus(Qt::OtherFocusReason);
    }
    m_checking = false;
    return check.focusBack;
}

void frmUserPreferences::optConnection_Click(int index) {
    const admin::ProxyControls controls = admin::ConnectionChosen(index, m_txtProxyPort->text());
    SetProxyVisible(controls.visible);
    m_txtProxyPort->setText(controls.port);
    if (controls.visible && isActiveWindow() && !m_filling) {
        m_txtProxyServer->setFocus();
    }
}

void frmUserPreferences::SetProxyVisible(bool visible) {
    for (QWidget* widget : std::initializer_list<QWidget*>{
             m_lblProxyTitle, m_lblProxyServer, m_txtProxyServer, m_lblProxyPort, m_txtProxyPort}) {
        widget->setVisible(visible);
    }
}

void frmUserPreferences::cmdUseTolvane_Click() {
    Field(admin::kPrefMailServer)->setText(admin::TolvaneMailServer());
}

void frmUserPreferences::EnableArchiveControls(bool on) {
    for (QWidget* widget : std::initializer_list<QWidget*>{m_txtAInterval, m_lstAOrder,
                                                           m_chkAAscending, m_chkADescending}) {
        widget->setEnabled(on);
    }
}

void frmUserPreferences::EnableCurrentControls(bool on) {
    for (QWidget* widget : std::initializer_list<QWidget*>{m_txtCInterval, m_lstCOrder,
                                                           m_chkCAscending, m_chkCDescending}) {
        widget->setEnabled(on);
    }
}

void frmUserPreferences::chkViewArchiveGroup_Click() {
    const bool on = m_chkViewArchiveGroup->isChecked();
    if (!on) {
        const admin::ViewGroup reset = admin::ViewGroupReset(false);
        m_filling = true;
        SelectRow(m_lstAOrder, reset.order);
        (reset.descending ? m_chkADescending : m_chkAAscending)->setChecked(true);
        m_txtAInterval->setText(reset.interval);
        m_filling = false;
    }
    EnableArchiveControls(on);
}

void frmUserPreferences::chkViewCurrentGroup_Click() {
    const bool on = m_chkViewCurrentGroup->isChecked();
    if (!on) {
        const admin::ViewGroup reset = admin::ViewGroupReset(true);
        m_filling = true;
        SelectRow(m_lstCOrder, reset.order);
        (reset.descending ? m_chkCDescending : m_chkCAscending)->setChecked(true);
        m_txtCInterval->setText(reset.interval);
        m_filling = false;
    }
    EnableCurrentControls(on);
}

void frmUserPreferences::lstAOrder_Click() {
    if (m_filling) {
        return;
    }
    const bool descending = admin::OrderMeansDescending(m_lstAOrder->currentRow());
    (descending ? m_chkADescending : m_chkAAscending)->setChecked(true);
}

void frmUserPreferences::lstCOrder_Click() {
    if (m_filling) {
        return;
    }
    const bool descending = admin::OrderMeansDescending(m_lstCOrder->currentRow());
    (descending ? m_chkCDescending : m_chkCAscending)->setChecked(true);
}

void frmUserPreferences::lstShippingPref_Click() {
    if (m_filling) {
        return;
    }
    QList<int> rows;
    for (int row = 0; row < m_lstShippingPref->count(); ++row) {
        if (m_lstShippingPref->item(row)->isSelected()) {
            rows << row;
        }
    }
    const QList<int> kept = admin::ShippingSelection(rows);
    if (kept == rows) {
        return;
    }
    m_filling = true;
    for (int row = 0; row < m_lstShippingPref->count(); ++row) {
        m_lstShippingPref->item(row)->setSelected(kept.contains(row));
    }
    m_filling = false;
}

void frmUserPreferences::chkTracking_Click() {
    admin::SaveTracking(m_chkTracking->isChecked());
}

void frmUserPreferences::cmdChangePassword_Click() {
    for (QLineEdit* edit : m_txtPassword) {
        edit->clear();
    }
    m_cmdUpdate->setEnabled(false);
    m_cmdReset->setEnabled(false);
    m_cmdCancel->setEnabled(false);
    const int passwordTab = m_tabs->indexOf(m_passwordTab);
    m_tabs->setTabVisible(passwordTab, true);
    m_tabs->setCurrentIndex(passwordTab);
    for (int tab = 0; tab < m_tabs->count(); ++tab) {
        if (tab != passwordTab) {
            m_tabs->setTabVisible(tab, false);
        }
    }
    m_txtPassword[0]->setFocus();
}

void frmUserPreferences::cmdUpdatePassword_Click() {
    QString stored = Field(admin::kPrefPassword)->text();
    const admin::PasswordChange result =
        admin::UpdatePassword(stored, m_txtPassword[0]->text(), m_txtPassword[1]->text(),
                              m_txtPassword[2]->text(), core::CurrentUi());
    if (result != admin::PasswordChange::Changed) {
        m_txtPassword[1]->setFocus();
        return;
    }
    Field(admin::kPrefPassword)->setText(stored);
    EndPasswordChange();
}

void frmUserPreferences::cmdCancelPasswordChange_Click() {
    EndPasswordChange();
}

void frmUserPreferences::EndPasswordChange() {
    for (QLineEdit* edit : m_txtPassword) {
        edit->clear();
    }
    const int passwordTab = m_tabs->indexOf(m_passwordTab);
    for (int tab = 0; tab < m_tabs->count(); ++tab) {
        m_tabs->setTabVisible(tab, tab != passwordTab);
    }
    m_tabs->setCurrentIndex(1);
    m_cmdUpdate->setEnabled(true);
    m_cmdReset->setEnabled(true);
    m_cmdCancel->setEnabled(true);
}

void frmUserPreferences::cmdUpdate_Click() {
    if (m_pendingCheck >= 0) {
        const int leaving = m_pendingCheck;
        m_pendingCheck = -1;
        if (txtUserPref_LostFocus(leaving)) {
            return;
        }
    }
    try {
        core::Database db = core::OpenStore();
        m_timer = admin::SavePreferences(db, core::CurrentSession().CurrentUser,
                                         CollectPreferences(), m_lists, update::Rules());
    } catch (const core::StoreError& error) {
        core::CurrentUi().Message(error.Message(), windowTitle(), core::Icon::Warning);
        return;
    }
    Q_EMIT TimeLeftTimerChanged(m_timer);
    Q_EMIT PreferencesSaved();
    accept();
}

void frmUserPreferences::cmdReset_Click() {
    admin::Preferences prefs;
    try {
        core::Database db = core::OpenStore();
        if (!admin::ResetPreferences(db, core::CurrentSession().CurrentUser, m_lists,
                                     update::Rules(), prefs, core::CurrentUi())) {
            return;
        }
    } catch (const core::StoreError& error) {
        core::CurrentUi().Message(error.Message(), windowTitle(), core::Icon::Warning);
        return;
    }
    ShowPreferences(prefs);
}

void frmUserPreferences::cmdCancel_Click() {
    reject();
}

void frmUserPreferences::reject() {
    // While the password is being changed only its own buttons close anything.
    if (!m_cmdCancel->isEnabled()) {
        return;
    }
    m_pendingCheck = -1;
    QDialog::reject();
}

}  // namespace lw::ui
