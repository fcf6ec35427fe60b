// SPDX-License-Identifier: GPL-3.0-or-later
// The general dialog: the category browser (form 2), the creator's save
// dialog (form 8), the item cost form (form 9) and the about form. The
// money boxes are checked before the dialog closes with OK, so that a typo
// is told and the typing is kept; the rows themselves are views/item_cost's
// and creator/'s. A failing read is told and leaves the form open.
#include "ui/frmGeneral.h"

#include <QCheckBox>
#include <QComboBox>
#include <QDateTime>
#include <QDialogButtonBox>
#include <QFormLayout>
#include <QGridLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QPushButton>
#include <QRadioButton>
#include <QTabWidget>
#include <QVBoxLayout>
#include <exception>

#include <sqlite3.h>

#include "core/net.h"
#include "core/session.h"
#include "core/settings.h"
#include "core/store.h"
#include "core/text.h"
#include "ui/control_names.h"
#include "ui/qt_ui.h"
#include "views/item_cost.h"

#ifndef LW_VERSION
#define LW_VERSION "unknown"
#endif

namespace lw::ui {

namespace {

const QString kProgramName = QStringLiteral("Tolvane Lotwright Pro");
const QString kLicenceUrl = QStringLiteral("https://www.gnu.org/licenses/gpl-3.0.html");

QPushButton* Button(const QString& name, const QString& caption, QWidget* parent) {
    auto* button = Named(new QPushButton(caption, parent), name);
    button->setAutoDefault(false);
    return button;
}

QListWidget* List(const QString& name, QWidget* parent) {
    return Named(new QListWidget(parent), name);
}

QLineEdit* MoneyBox(const QString& name, QWidget* parent) {
    auto* box = new QLineEdit(parent);
    box->setObjectName(name);
    box->setAlignment(Qt::AlignRight);
    return box;
}

}  // namespace

QString LibraryVersions() {
    return QStringLiteral("Built on Qt %1, SQLite %2 and libcurl %3.")
        .arg(QString::fromLatin1(qVersion()), QString::fromLatin1(sqlite3_libversion()),
             core::CurlVersion());
}

frmGeneral::frmGeneral(Form form, core::Database& db, QWidget* parent)
    : QDialog(parent), m_form(form), m_db(&db) {
    setObjectName(QStringLiteral("frmGeneral"));
    setModal(true);
    auto* layout = new QVBoxLayout(this);
    if (form == CategoryForm) {
        layout->addWidget(BuildCategoryForm());
        Guarded([this] {
            m_browser.Open(*m_db, core::CurrentSession().CurrentUser);
            ShowBrowser();
        });
    } else {
        layout->addWidget(BuildSaveForm());
        ChooseSaveKind(QString(creator::kDraft));
    }
}

frmGeneral::frmGeneral(Form form, QWidget* parent) : QDialog(parent), m_form(form) {
    setObjectName(QStringLiteral("frmGeneral"));
    setModal(true);
    auto* layout = new QVBoxLayout(this);
    layout->addWidget(form == ItemCostForm ? BuildItemCostForm()
                      : form == PostedForm ? BuildPostedForm()
                                           : BuildAboutForm());

    auto* buttons = new QDialogButtonBox(this);
    auto* ok = buttons->addButton(QStringLiteral("&OK"), QDialogButtonBox::AcceptRole);
    ok->setObjectName(QStringLiteral("cmdOK"));
    ok->setDefault(true);
    connect(ok, &QPushButton::clicked, this, &frmGeneral::cmdOK_Click);
    if (form == ItemCostForm) {
        auto* cancel = buttons->addButton(QStringLiteral("&Cancel"), QDialogButtonBox::RejectRole);
        cancel->setObjectName(QStringLiteral("cmdCancel"));
        connect(cancel, &QPushButton::clicked, this, &frmGeneral::cmdCancel_Click);
    }
    layout->addWidget(buttons);
}

QWidget* frmGeneral::BuildPostedForm() {
    setWindowTitle(QStringLiteral("Auction Posted Successfully"));
    auto* page = Named(new QWidget(this), QStringLiteral("fraPosted"));
    m_lblPosted = Named(new QLabel(page), QStringLiteral("lblMessage"));
    m_lblPosted->setWordWrap(true);
    m_lblPosted->setMinimumWidth(300);
    m_lblPosted->setTextInteractionFlags(Qt::TextSelectableByMouse);
    m_chkTitleTruncate =
        Named(new QCheckBox(QStringLiteral("&Continue to show me this message"), page),
              QStringLiteral("chkTitleTruncate"));
    m_chkTitleTruncate->setChecked(true);
    auto* layout = new QVBoxLayout(page);
    layout->addWidget(m_lblPosted);
    layout->addSpacing(6);
    layout->addWidget(m_chkTitleTruncate);
    return page;
}

void frmGeneral::SetMessage(const QString& text) {
    if (m_lblPosted != nullptr) {
        m_lblPosted->setText(text);
    }
}

void frmGeneral::SetTitleTruncated() {
    if (m_form != PostedForm) {
        return;
    }
    setWindowTitle(QStringLiteral("Auction Title Truncated"));
    SetMessage(
        QStringLiteral("Your auction title has been truncated to 45 characters.  Please edit."));
    m_chkTitleTruncate->setText(QStringLiteral("&Continue to show me this warning"));
    m_chkTitleTruncate->setChecked(true);
    m_offSetting = QStringLiteral("TitleTruncationWarningOff");
}

QWidget* frmGeneral::BuildItemCostForm() {
    auto* page = new QWidget(this);
    page->setObjectName(QStringLiteral("fraItemCost"));
    m_txtItemCost = MoneyBox(QStringLiteral("txtItemCost"), page);
    m_txtOrderShipping = MoneyBox(QStringLiteral("txtOrderShipping"), page);
    m_txtInsuranceCost = MoneyBox(QStringLiteral("txtInsuranceCost"), page);
    auto* form = new QFormLayout(page);
    form->addRow(QStringLiteral("&Item cost:"), m_txtItemCost);
    form->addRow(QStringLiteral("&Shipping charged:"), m_txtOrderShipping);
    form->addRow(QStringLiteral("I&nsurance cost:"), m_txtInsuranceCost);
    return page;
}

QWidget* frmGeneral::BuildAboutForm() {
    setWindowTitle(QStringLiteral("About ") + kProgramName);
    auto* page = new QWidget(this);
    page->setObjectName(QStringLiteral("fraAbout"));
    auto* name = new QLabel(kProgramName, page);
    name->setObjectName(QStringLiteral("lblProgram"));
    QFont big = name->font();
    big.setBold(true);
    big.setPointSizeF(big.pointSizeF() * 1.4);
    name->setFont(big);
    auto* version = new QLabel(QStringLiteral("Version ") + QString::fromLatin1(LW_VERSION), page);
    version->setObjectName(QStringLiteral("lblVersion"));
    auto* what = new QLabel(
        QStringLiteral("For people who sell and buy at online auctions: one local database of "
                       "your sales, bids, buyers and stock, refreshed from the auction site's "
                       "pages, with the work after each sale laid out as tasks."),
        page);
    what->setObjectName(QStringLiteral("lblDescription"));
    what->setWordWrap(true);
    what->setMinimumWidth(320);
    auto* licence = new QLabel(
        QStringLiteral("Lotwright is free software: you may share and change it under the GNU "
                       "General Public License, version 3 or any later version "
                       "(GPL-3.0-or-later).<br>It comes with <b>no warranty</b>, to the extent "
                       "permitted by law.<br><a href=\"%1\">Read the licence</a>")
            .arg(kLicenceUrl),
        page);
    licence->setObjectName(QStringLiteral("lblLicence"));
    licence->setTextFormat(Qt::RichText);
    licence->setWordWrap(true);
    licence->setOpenExternalLinks(true);
    licence->setTextInteractionFlags(Qt::TextBrowserInteraction);
    auto* libraries = new QLabel(LibraryVersions(), page);
    libraries->setObjectName(QStringLiteral("lblLibraries"));
    libraries->setWordWrap(true);
    libraries->setTextInteractionFlags(Qt::TextSelectableByMouse);
    auto* layout = new QVBoxLayout(page);
    layout->addWidget(name);
    layout->addWidget(version);
    layout->addWidget(what);
    layout->addSpacing(6);
    layout->addWidget(licence);
    layout->addSpacing(6);
    layout->addWidget(libraries);
    return page;
}

void frmGeneral::SetItemCostValues(const QString& itemCost, const QString& orderShipping,
                                   const QString& insuranceCost) {
    if (m_form != ItemCostForm) {
        return;
    }
    m_txtItemCost->setText(itemCost);
    m_txtOrderShipping->setText(orderShipping);
    m_txtInsuranceCost->setText(insuranceCost);
}

QString frmGeneral::ItemCostText() const {
    return m_txtItemCost ? m_txtItemCost->text() : QString();
}

QString frmGeneral::OrderShippingText() const {
    return m_txtOrderShipping ? m_txtOrderShipping->text() : QString();
}

QString frmGeneral::InsuranceCostText() const {
    return m_txtInsuranceCost ? m_txtInsuranceCost->text() : QString();
}

void frmGeneral::cmdOK_Click() {
    if (m_form == PostedForm && !m_chkTitleTruncate->isChecked()) {
        core::SaveSetting(QStringLiteral("Tolvane"), QStringLiteral("Options"), m_offSetting, -1);
    }
    if (m_form == ItemCostForm) {
        const int bad =
            views::FirstBadBox({ItemCostText(), OrderShippingText(), InsuranceCostText()});
        if (bad >= 0) {
            QLineEdit* boxes[] = {m_txtItemCost, m_txtOrderShipping, m_txtInsuranceCost};
            core::CurrentUi().Message(
                QStringLiteral("Please enter an amount of money, such as $4.50, or leave the "
                               "box empty."),
                windowTitle(), core::Icon::Warning);
            boxes[bad]->setFocus();
            boxes[bad]->selectAll();
            return;
        }
    }
    accept();
}

void frmGeneral::cmdCancel_Click() {
    reject();
}

// ------------------------------------------------------------------ form 2

void frmGeneral::Guarded(const std::function<void()>& work) {
    RunReported(windowTitle(), work);
}

QWidget* frmGeneral::BuildCategoryForm() {
    setWindowTitle(creator::CategoryBrowser::Caption());
    auto* page = Named(new QWidget(this), QStringLiteral("fraCategories"));
    m_tabCategories = Named(new QTabWidget(page), QStringLiteral("tabCategories"));

    auto* browse = Named(new QWidget(m_tabCategories), QStringLiteral("tabBrowse"));
    m_lstCategoryNames = List(QStringLiteral("lstCategoryNames"), browse);
    m_lstCategoryItems = List(QStringLiteral("lstCategoryItems"), browse);
    m_lstCategorys = List(QStringLiteral("lstCategorys"), browse);
    auto* addFavorite =
        Button(QStringLiteral("cmdAddToFavorites"), QStringLiteral("Add to &Favorites"), browse);
    auto* browseGrid = new QGridLayout(browse);
    browseGrid->addWidget(BuddyCaption(browse, QStringLiteral("&Top level:"), m_lstCategoryNames),
                          0, 0);
    browseGrid->addWidget(BuddyCaption(browse, QStringLiteral("Cate&gories:"), m_lstCategoryItems),
                          0, 1);
    browseGrid->addWidget(BuddyCaption(browse, QStringLiteral("Fa&vorites:"), m_lstCategorys), 0,
                          2);
    browseGrid->addWidget(m_lstCategoryNames, 1, 0);
    browseGrid->addWidget(m_lstCategoryItems, 1, 1);
    browseGrid->addWidget(m_lstCategorys, 1, 2);
    browseGrid->addWidget(addFavorite, 2, 2, Qt::AlignRight);
    browseGrid->setColumnStretch(0, 2);
    browseGrid->setColumnStretch(1, 2);
    browseGrid->setColumnStretch(2, 1);
    m_tabCategories->addTab(browse, QStringLiteral("&Browse"));

    auto* search = Named(new QWidget(m_tabCategories), QStringLiteral("tabSearch"));
    m_fraSearch = Named(new QGroupBox(QStringLiteral("Search Categories: "), search),
                        QStringLiteral("fraSearch"));
    // The caption tells the outcome of the last search; it takes no mnemonic.
    m_fraSearch->setProperty("titleFromData", true);
    m_lstSearchCategories =
        Named(new QComboBox(m_fraSearch), QStringLiteral("lstSearchCategories"));
    m_lstSearchCategories->setEditable(true);
    m_lstSearchCategories->setInsertPolicy(QComboBox::NoInsert);
    m_lstSearchCategories->setMinimumContentsLength(32);
    m_lstSearchCategories->setSizeAdjustPolicy(QComboBox::AdjustToMinimumContentsLengthWithIcon);
    auto* find =
        Button(QStringLiteral("cmdSearchCategories"), QStringLiteral("Fin&d"), m_fraSearch);
    m_chkAndSearch = Named(new QCheckBox(QStringLiteral("&All words in one name"), m_fraSearch),
                           QStringLiteral("chkAndSearch"));
    m_lstSearchTerms = List(QStringLiteral("lstSearchTerms"), m_fraSearch);
    m_lstSearchTerms->setMaximumHeight(m_lstSearchTerms->fontMetrics().height() * 3 + 8);
    m_lstSearchTerms->setFlow(QListView::LeftToRight);
    m_lstSearchMatches = List(QStringLiteral("lstSearchMatches"), m_fraSearch);
    auto* searchGrid = new QGridLayout(m_fraSearch);
    searchGrid->addWidget(
        BuddyCaption(m_fraSearch, QStringLiteral("&Words or number:"), m_lstSearchCategories), 0,
        0);
    searchGrid->addWidget(m_lstSearchCategories, 0, 1);
    searchGrid->addWidget(find, 0, 2);
    searchGrid->addWidget(m_chkAndSearch, 1, 1, 1, 2);
    searchGrid->addWidget(
        BuddyCaption(m_fraSearch, QStringLiteral("&Terms searched:"), m_lstSearchTerms), 2, 0,
        Qt::AlignTop);
    searchGrid->addWidget(m_lstSearchTerms, 2, 1, 1, 2);
    searchGrid->addWidget(
        BuddyCaption(m_fraSearch, QStringLiteral("&Matches:"), m_lstSearchMatches), 3, 0,
        Qt::AlignTop);
    searchGrid->addWidget(m_lstSearchMatches, 3, 1, 1, 2);
    searchGrid->setColumnStretch(1, 1);
    searchGrid->setRowStretch(3, 1);
    auto* addFavorite2 =
        Button(QStringLiteral("cmdAddToFavorites2"), QStringLiteral("Add to &Favorites"), search);
    auto* searchLayout = new QVBoxLayout(search);
    searchLayout->addWidget(m_fraSearch, 1);
    searchLayout->addWidget(addFavorite2, 0, Qt::AlignRight);
    m_tabCategories->addTab(search, QStringLiteral("Sea&rch"));

    m_txtSelCal = Named(new QLineEdit(page), QStringLiteral("txtSelCal"));
    m_txtSelCal->setReadOnly(true);
    m_txtSelCalNumber = Named(new QLineEdit(page), QStringLiteral("txtSelCalNumber"));
    m_txtSelCalNumber->setReadOnly(true);
    m_txtSelCalNumber->setMaximumWidth(m_txtSelCalNumber->fontMetrics().averageCharWidth() * 14);
    m_txtHiddenCategoryName = Named(new QLineEdit(page), QStringLiteral("txtHiddenCategoryName"));
    m_txtHiddenCategoryName->hide();
    auto* chosen = new QHBoxLayout;
    chosen->addWidget(BuddyCaption(page, QStringLiteral("Chos&en:"), m_txtSelCal));
    chosen->addWidget(m_txtSelCal, 1);
    chosen->addWidget(BuddyCaption(page, QStringLiteral("&Number:"), m_txtSelCalNumber));
    chosen->addWidget(m_txtSelCalNumber);

    // Each page has its own Select and Cancel, as the two pages always had.
    auto* buttons = new QHBoxLayout;
    buttons->addStretch(1);
    QPushButton* pageButtons[2][2];
    for (int i = 0; i < 2; ++i) {
        const QString suffix = i == 0 ? QString() : QStringLiteral("2");
        pageButtons[i][0] =
            Button(QStringLiteral("cmdSelectCategory") + suffix, QStringLiteral("&Select"), page);
        pageButtons[i][1] =
            Button(QStringLiteral("cmdCancelCategory") + suffix, QStringLiteral("&Cancel"), page);
        for (QPushButton* button : pageButtons[i]) {
            buttons->addWidget(button);
        }
        connect(pageButtons[i][0], &QPushButton::clicked, this,
                &frmGeneral::cmdSelectCategory_Click);
        connect(pageButtons[i][1], &QPushButton::clicked, this,
                &frmGeneral::cmdCancelCategory_Click);
    }
    const auto showButtons = [pageButtons](int tab) {
        for (int i = 0; i < 2; ++i) {
            pageButtons[i][0]->setVisible(i == tab);
            pageButtons[i][1]->setVisible(i == tab);
        }
    };
    showButtons(0);
    connect(m_tabCategories, &QTabWidget::currentChanged, this, showButtons);

    auto* layout = new QVBoxLayout(page);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(m_tabCategories, 1);
    layout->addLayout(chosen);
    layout->addLayout(buttons);
    resize(720, 440);

    connect(m_lstCategoryNames, &QListWidget::currentRowChanged, this,
            &frmGeneral::lstCategoryNames_Click);
    connect(m_lstCategoryItems, &QListWidget::currentRowChanged, this,
            &frmGeneral::lstCategoryItems_Click);
    connect(m_lstCategorys, &QListWidget::currentRowChanged, this, &frmGeneral::lstCategorys_Click);
    connect(m_lstSearchCategories, &QComboBox::activated, this,
            &frmGeneral::lstSearchCategories_Click);
    connect(m_lstSearchMatches, &QListWidget::currentRowChanged, this,
            &frmGeneral::lstSearchMatches_Click);
    connect(m_lstSearchMatches, &QListWidget::itemDoubleClicked, this,
            &frmGeneral::cmdSelectCategory_Click);
    connect(find, &QPushButton::clicked, this, &frmGeneral::cmdSearchCategories_Click);
    connect(m_lstSearchCategories->lineEdit(), &QLineEdit::returnPressed, this,
            &frmGeneral::cmdSearchCategories_Click);
    connect(addFavorite, &QPushButton::clicked, this, &frmGeneral::cmdAddToFavorites_Click);
    connect(addFavorite2, &QPushButton::clicked, this, &frmGeneral::cmdAddToFavorites_Click);
    connect(m_lstCategoryItems, &QListWidget::itemDoubleClicked, this,
            &frmGeneral::cmdSelectCategory_Click);
    return page;
}

// Writes the browser's lists and boxes into the controls; the signals of
// the lists are held meanwhile, so that showing a row chooses nothing.
void frmGeneral::ShowBrowser() {
    const auto fill = [](QListWidget* list, const auto& rows, int current) {
        const QSignalBlocker hold(list);
        list->clear();
        for (const auto& row : rows) {
            auto* item = new QListWidgetItem(row.text, list);
            item->setData(Qt::UserRole, row.number);
        }
        list->setCurrentRow(current);
    };
    {
        const QSignalBlocker hold(m_lstCategoryNames);
        if (m_lstCategoryNames->count() != m_browser.lstCategoryNames.size()) {
            m_lstCategoryNames->clear();
            m_lstCategoryNames->addItems(m_browser.lstCategoryNames);
        }
        m_lstCategoryNames->setCurrentRow(m_browser.categoryNamesIndex);
    }
    fill(m_lstCategoryItems, m_browser.lstCategoryItems, m_lstCategoryItems->currentRow());
    fill(m_lstCategorys, m_browser.lstCategorys, m_browser.categorysIndex);
    {
        const QSignalBlocker hold(m_lstSearchCategories);
        const QString typed = m_lstSearchCategories->currentText();
        m_lstSearchCategories->clear();
        for (const creator::CategoryListRow& row : m_browser.lstSearchCategories) {
            m_lstSearchCategories->addItem(row.text, row.number);
        }
        m_lstSearchCategories->setCurrentIndex(m_browser.searchCategoriesIndex);
        if (m_browser.searchCategoriesIndex < 0) {
            // A number that matches nothing empties the box; words stay.
            m_lstSearchCategories->setEditText(m_browser.lstSearchTerms.isEmpty() ? QString()
                                                                                  : typed);
        }
    }
    fill(m_lstSearchMatches, m_browser.lstSearchCategories, m_browser.searchCategoriesIndex);
    m_lstSearchTerms->clear();
    m_lstSearchTerms->addItems(m_browser.lstSearchTerms);
    m_fraSearch->setTitle(m_browser.searchCaption.isEmpty() ? QStringLiteral("Search Categories: ")
                                                            : m_browser.searchCaption);
    m_chkAndSearch->setChecked(m_browser.chkAndSearch);
    m_txtSelCal->setText(m_browser.txtSelCal);
    m_txtSelCal->setCursorPosition(0);
    m_txtSelCalNumber->setText(m_browser.txtSelCalNumber);
    m_txtHiddenCategoryName->setText(m_browser.txtHiddenCategoryName);
}

void frmGeneral::lstCategoryNames_Click() {
    Guarded([this] {
        m_browser.ShowTopLevel(*m_db, m_lstCategoryNames->currentRow());
        ShowBrowser();
    });
}

void frmGeneral::lstCategoryItems_Click() {
    m_browser.ChooseItem(m_lstCategoryItems->currentRow());
    ShowBrowser();
}

void frmGeneral::lstCategorys_Click() {
    Guarded([this] {
        m_browser.ChooseFavorite(*m_db, m_lstCategorys->currentRow());
        ShowBrowser();
    });
}

void frmGeneral::lstSearchCategories_Click() {
    m_browser.ChooseMatch(m_lstSearchCategories->currentIndex());
    ShowBrowser();
}

void frmGeneral::lstSearchMatches_Click() {
    m_browser.ChooseMatch(m_lstSearchMatches->currentRow());
    ShowBrowser();
}

void frmGeneral::cmdSearchCategories_Click() {
    Guarded([this] {
        m_browser.chkAndSearch = m_chkAndSearch->isChecked();
        m_browser.Search(*m_db, m_lstSearchCategories->currentText());
        ShowBrowser();
    });
}

void frmGeneral::cmdAddToFavorites_Click() {
    Guarded([this] {
        m_browser.AddChosenToFavorites(*m_db, core::CurrentSession().CurrentUser);
        ShowBrowser();
    });
}

void frmGeneral::cmdSelectCategory_Click() {
    m_selected = m_browser.Selection();
    if (m_selected) {
        accept();
    }
}

void frmGeneral::cmdCancelCategory_Click() {
    reject();
}

// ------------------------------------------------------------------ form 8

QWidget* frmGeneral::BuildSaveForm() {
    setWindowTitle(QStringLiteral("Save Auction Information"));
    auto* page = Named(new QWidget(this), QStringLiteral("fraSave"));
    auto* kinds =
        Named(new QGroupBox(QStringLiteral("Save &as"), page), QStringLiteral("fraSaveAuction"));
    const QString captions[3] = {QStringLiteral("&Default settings"), QStringLiteral("&Template"),
                                 QStringLiteral("D&raft")};
    auto* kindsLayout = new QVBoxLayout(kinds);
    for (int i = 0; i < 3; ++i) {
        auto* option =
            Named(new QRadioButton(captions[i], kinds), QStringLiteral("optSaveAuction%1").arg(i));
        option->setProperty("index", i);
        kindsLayout->addWidget(option);
        connect(option, &QRadioButton::clicked, this, &frmGeneral::optSaveAuction_Click);
        m_optSaveAuction[size_t(i)] = option;
    }
    m_optSaveAuction[0]->setToolTip(QStringLiteral(
        "Select Default Settings to overwrite your default Auction Creator settings."));

    const auto nameBox = [this, page](const QString& name) {
        auto* box = Named(new QComboBox(page), name);
        box->setEditable(true);
        box->setInsertPolicy(QComboBox::NoInsert);
        box->setMinimumContentsLength(36);
        box->setSizeAdjustPolicy(QComboBox::AdjustToMinimumContentsLengthWithIcon);
        connect(box, &QComboBox::editTextChanged, this, &frmGeneral::cmbName_Change);
        return box;
    };
    m_lblSaveName = Named(new QLabel(QStringLiteral("&Name:"), page), QStringLiteral("lblName"));
    m_cmbTemplateName = nameBox(QStringLiteral("cmbTemplateName"));
    m_cmbDraftName = nameBox(QStringLiteral("cmbDraftName"));
    Guarded([this] {
        const QString user = core::CurrentSession().CurrentUser;
        for (const creator::ChooserRow& row :
             creator::ChooserRows(*m_db, QString(creator::kTemplate), user)) {
            if (row.type == creator::kTemplate) {
                m_templates.push_back(row);
            }
        }
        m_drafts =
            creator::ChooserRows(*m_db, QString(creator::kDraft), user, creator::ChooserSort::Name);
    });
    for (const auto& [box, rows] :
         {std::pair{m_cmbTemplateName, &m_templates}, std::pair{m_cmbDraftName, &m_drafts}}) {
        const QSignalBlocker hold(box);
        for (const creator::ChooserRow& row : *rows) {
            box->addItem(row.text, row.id);
        }
        box->setCurrentIndex(-1);
    }
    auto* names = new QHBoxLayout;
    names->addWidget(m_lblSaveName);
    names->addWidget(m_cmbTemplateName, 1);
    names->addWidget(m_cmbDraftName, 1);

    auto* buttons = new QDialogButtonBox(page);
    m_cmdOK = buttons->addButton(QStringLiteral("&Save"), QDialogButtonBox::AcceptRole);
    m_cmdOK->setObjectName(QStringLiteral("cmdOK"));
    m_cmdOK->setDefault(true);
    connect(m_cmdOK, &QPushButton::clicked, this, &frmGeneral::cmdOK_Click);
    auto* cancel = buttons->addButton(QStringLiteral("&Cancel"), QDialogButtonBox::RejectRole);
    cancel->setObjectName(QStringLiteral("cmdCancel"));
    connect(cancel, &QPushButton::clicked, this, &frmGeneral::cmdCancel_Click);

    auto* layout = new QVBoxLayout(page);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(kinds);
    layout->addLayout(names);
    layout->addStretch(1);
    layout->addWidget(buttons);
    return page;
}

void frmGeneral::ChooseSaveKind(const QString& type) {
    const int option = type == creator::kDefault ? 0 : type == creator::kTemplate ? 1 : 2;
    m_optSaveAuction[size_t(option)]->setChecked(true);
    optSaveAuction_Click();
}

QComboBox* frmGeneral::SaveNameBox() const {
    if (m_optSaveAuction[1]->isChecked()) {
        return m_cmbTemplateName;
    }
    return m_optSaveAuction[2]->isChecked() ? m_cmbDraftName : nullptr;
}

void frmGeneral::optSaveAuction_Click() {
    QComboBox* box = SaveNameBox();
    m_cmbTemplateName->setVisible(box == m_cmbTemplateName);
    m_cmbDraftName->setVisible(box == m_cmbDraftName);
    m_lblSaveName->setBuddy(box);
    m_lblSaveName->setVisible(box != nullptr);
    if (box != nullptr && box->currentText().isEmpty()) {
        const QString stamp =
            QDateTime::currentDateTime().toString(QStringLiteral("MM/dd/yy hh:mm:ss"));
        box->setEditText((box == m_cmbTemplateName ? QStringLiteral("NEW TEMPLATE ")
                                                   : QStringLiteral("DRAFT ")) +
                         stamp);
    }
    cmbName_Change();
}

const creator::ChooserRow* frmGeneral::MatchingRow() const {
    const QComboBox* box = SaveNameBox();
    if (box == nullptr) {
        return nullptr;
    }
    const std::vector<creator::ChooserRow>& rows =
        box == m_cmbTemplateName ? m_templates : m_drafts;
    for (const creator::ChooserRow& row : rows) {
        if (row.text.compare(box->currentText().trimmed(), Qt::CaseInsensitive) == 0) {
            return &row;
        }
    }
    return nullptr;
}

void frmGeneral::cmbName_Change() {
    const QComboBox* box = SaveNameBox();
    m_cmdOK->setText(MatchingRow() != nullptr ? QStringLiteral("&Overwrite")
                                              : QStringLiteral("&Save"));
    m_cmdOK->setEnabled(box == nullptr || !box->currentText().trimmed().isEmpty());
}

creator::SaveRequest frmGeneral::SaveChoice() const {
    creator::SaveRequest request;
    const QComboBox* box = SaveNameBox();
    if (box == nullptr) {
        request.type = QString(creator::kDefault);
        request.name = QString(creator::kDefault);
        return request;
    }
    request.type = QString(box == m_cmbTemplateName ? creator::kTemplate : creator::kDraft);
    request.name = box->currentText().trimmed();
    if (const creator::ChooserRow* row = MatchingRow()) {
        request.existingId = row->id;
        request.name = row->text;
    }
    return request;
}

// ------------------------------------------------------------------ commands

bool EditItemCost(core::Database& db, const QString& itemNumber, QWidget* parent) {
    const QString title = QStringLiteral("Item #: ") + itemNumber;
    const QString user = core::CurrentSession().CurrentUser;
    try {
        const auto shown = views::ReadItemCost(db, user, itemNumber);
        if (!shown) {
            core::CurrentUi().Message(
                QStringLiteral("Item ") + itemNumber +
                    QStringLiteral(" is not among your sales in the database."),
                title, core::Icon::Warning);
            return false;
        }
        frmGeneral form(frmGeneral::ItemCostForm, parent);
        form.setWindowTitle(title);
        form.SetItemCostValues(shown->itemCost, shown->orderShipping, shown->insuranceCost);
        if (form.exec() != QDialog::Accepted) {
            return false;
        }
        return views::WriteItemCost(
            db, user, itemNumber,
            {form.ItemCostText(), form.OrderShippingText(), form.InsuranceCostText()});
    } catch (const core::StoreError& error) {
        core::CurrentUi().Message(error.Message(), title, core::Icon::Warning);
    } catch (const std::exception& error) {
        core::CurrentUi().Message(QString::fromUtf8(error.what()), title, core::Icon::Warning);
    }
    return false;
}

void ShowPosted(const QString& itemNumber, QWidget* parent) {
    frmGeneral posted(frmGeneral::PostedForm, parent);
    posted.SetMessage(
        itemNumber.isEmpty()
            ? QStringLiteral("Your auction was posted.  The next update of your sales lists it.")
            : QStringLiteral("Your auction was posted as item #%1.").arg(itemNumber));
    posted.exec();
}

bool ShowTitleTruncated(QWidget* parent) {
    if (core::Val(core::GetSetting(QStringLiteral("Tolvane"), QStringLiteral("Options"),
                                   QStringLiteral("TitleTruncationWarningOff"))) != 0) {
        return false;
    }
    frmGeneral warning(frmGeneral::PostedForm, parent);
    warning.SetTitleTruncated();
    warning.exec();
    return true;
}

void ShowAbout(QWidget* parent) {
    frmGeneral about(frmGeneral::AboutForm, parent);
    about.exec();
}

}  // namespace lw::ui
