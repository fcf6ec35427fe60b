// SPDX-License-Identifier: GPL-3.0-or-later
// The auction creator's handlers: the document carried between the controls
// and creator/'s operations, the chooser, the two states of the window, the
// save question, saving, previewing and sending to the outbox. A handler
// reads the controls into the document, calls creator/, and writes the
// controls back; a failure is caught at the handler and told, and the
// document stays as it was typed.
#include "ui/frmLWAC.h"

#include <QAction>
#include <QApplication>
#include <QCheckBox>
#include <QClipboard>
#include <QComboBox>
#include <QDesktopServices>
#include <QFontDatabase>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QMenu>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QRadioButton>
#include <QStackedWidget>
#include <QTabWidget>
#include <QVBoxLayout>
#include <algorithm>
#include <exception>

#include "core/session.h"
#include "core/text.h"
#include "creator/category_directory.h"
#include "ui/frmGeneral.h"
#include "ui/qt_ui.h"
#include "ui/readable_colour.h"
#include "update/site_session.h"

namespace lw::ui {

namespace {

// What the connection check says is needed when the site cannot be reached.
const QString kOffline =
    QStringLiteral("post auctions to eBay.  Use the To Outbox button when you are offline.");

QString User() {
    return core::CurrentSession().CurrentUser;
}

// A caption shown as it is: an "&" in a name is no mnemonic.
QString Literal(QString text) {
    return text.replace(u'&', QStringLiteral("&&"));
}

// The row of a combo box with that text, added at the end when the list
// lacks it, so that a value no list offers any more is shown and kept.
void ShowComboText(QComboBox* box, const QString& text) {
    int row = box->findText(text, Qt::MatchFixedString);
    if (box->isEditable()) {
        box->setCurrentIndex(row);
        box->setEditText(text);
        return;
    }
    if (row < 0 && !text.isEmpty()) {
        box->addItem(text);
        row = box->count() - 1;
    }
    box->setCurrentIndex(row);
}

QString ComboText(const QComboBox* box) {
    return box->isEditable() || box->currentIndex() >= 0 ? box->currentText() : QString();
}

void SelectRows(QListWidget* list, const QList<int>& rows) {
    list->clearSelection();
    for (int row : rows) {
        if (row >= 0 && row < list->count()) {
            list->item(row)->setSelected(true);
        }
    }
}

QList<int> SelectedRows(const QListWidget* list) {
    QList<int> rows;
    for (int row = 0; row < list->count(); ++row) {
        if (list->item(row)->isSelected()) {
            rows << row;
        }
    }
    return rows;
}

void SelectOne(QListWidget* list, int row) {
    SelectRows(list, {row});
    if (row >= 0 && row < list->count()) {
        list->setCurrentRow(row, QItemSelectionModel::NoUpdate);
    }
}

int SelectedOne(const QListWidget* list) {
    const QList<int> rows = SelectedRows(list);
    return rows.isEmpty() ? -1 : rows.first();
}

void FillRows(QComboBox* box, const creator::ListRows& rows) {
    box->clear();
    for (const creator::ListRow& row : rows) {
        box->addItem(row.text, row.data);
    }
}

void FillRows(QListWidget* list, const creator::ListRows& rows) {
    list->clear();
    for (const creator::ListRow& row : rows) {
        auto* item = new QListWidgetItem(row.text, list);
        item->setData(Qt::UserRole, row.data);
    }
}

void FillTexts(QComboBox* box, const QStringList& texts) {
    box->clear();
    box->addItems(texts);
}

// Leaving the item tab shows every price as money; a box that holds no
// number is left as typed.
void ShowAsMoney(QLineEdit* box) {
    const QString text = box->text().trimmed();
    if (text.isEmpty()) {
        return;
    }
    if (const std::optional<double> number = core::TextToNumber(QStringView(text))) {
        box->setText(core::Format(*number, QStringLiteral("Currency")));
    }
}

}  // namespace

frmLWAC::frmLWAC(QWidget* parent) : QDialog(parent) {
    setObjectName(QStringLiteral("frmLWAC"));
    setWindowTitle(creator::CreatorCaption());
    setModal(true);
    m_openUrl = [](const QUrl& url) { QDesktopServices::openUrl(url); };
    Guard([this] {
        update::DecryptProtocols(m_rules, Db());
        m_lists = creator::LoadCreatorLists(Db(), m_rules, User(), creator::AuctionTemplatesDir(),
                                            QFontDatabase::families());
    });
    m_doc = creator::NewCreatorDocument(m_lists);

    auto* layout = new QVBoxLayout(this);
    BuildMenus();
    m_SSTab1 = new QTabWidget(this);
    m_SSTab1->setObjectName(QStringLiteral("SSTab1"));
    m_SSTab1->addTab(BuildChooserTab(), QStringLiteral("C&hoose"));
    m_SSTab1->addTab(BuildItemTab(), QStringLiteral("&Item"));
    m_SSTab1->addTab(BuildPicturesTab(), QStringLiteral("Pict&ures"));
    m_SSTab1->addTab(BuildStyleTab(), QStringLiteral("St&yle"));
    m_SSTab1->addTab(BuildDetailsTab(), QStringLiteral("&Details"));
    m_SSTab1->addTab(BuildLinksTab(), QStringLiteral("&Links"));
    m_SSTab1->addTab(BuildListingTab(), QStringLiteral("Listin&g"));
    m_SSTab1->addTab(BuildPaymentTab(), QStringLiteral("Pay&ment && Shipping"));
    layout->addWidget(m_SSTab1, 1);

    m_lblStatus = new QLabel(this);
    m_lblStatus->setObjectName(QStringLiteral("lblStatus"));
    m_cmdSave = new QPushButton(QStringLiteral("&Save..."), this);
    m_cmdSave->setObjectName(QStringLiteral("cmdSave"));
    m_cmdPreviewAuction = new QPushButton(QStringLiteral("Pre&view"), this);
    m_cmdPreviewAuction->setObjectName(QStringLiteral("cmdPreviewAuction"));
    m_cmdPostNow = new QPushButton(QStringLiteral("Post &Now"), this);
    m_cmdPostNow->setObjectName(QStringLiteral("cmdPostNow"));
    m_cmdToOutbox = new QPushButton(QStringLiteral("To Out&box"), this);
    m_cmdToOutbox->setObjectName(QStringLiteral("cmdToOutbox"));
    m_cmdToOutbox->setToolTip(QStringLiteral("Keep the auction in the outbox, to send later"));
    m_cmdExit = new QPushButton(QStringLiteral("E&xit"), this);
    m_cmdExit->setObjectName(QStringLiteral("cmdExit"));
    auto* commands = new QHBoxLayout;
    commands->addWidget(m_lblStatus, 1);
    for (QPushButton* button :
         {m_cmdSave, m_cmdPreviewAuction, m_cmdPostNow, m_cmdToOutbox, m_cmdExit}) {
        button->setAutoDefault(false);
        commands->addWidget(button);
    }
    layout->addLayout(commands);
    m_cmdPostNow->setToolTip(QStringLiteral("Post the auction now, the way the Posting menu says"));

    connect(m_cmdSave, &QPushButton::clicked, this, &frmLWAC::cmdSave_Click);
    connect(m_cmdPreviewAuction, &QPushButton::clicked, this, &frmLWAC::cmdPreviewAuction_Click);
    connect(m_cmdPostNow, &QPushButton::clicked, this, &frmLWAC::cmdPostNow_Click);
    connect(m_cmdToOutbox, &QPushButton::clicked, this, &frmLWAC::cmdToOutbox_Click);
    connect(m_cmdExit, &QPushButton::clicked, this, &frmLWAC::cmdExit_Click);
    connect(m_SSTab1, &QTabWidget::currentChanged, this, &frmLWAC::SSTab1_Click);
    if (auto* qtUi = dynamic_cast<QtUi*>(&core::CurrentUi())) {
        connect(qtUi, &QtUi::StatusChanged, m_lblStatus, &QLabel::setText);
    }

    FillLists();
    WriteControls();
    WatchChanges();
    ShowChooser();
    resize(920, 680);
}

frmLWAC::~frmLWAC() = default;

core::Database& frmLWAC::Db() {
    if (!m_db) {
        m_db.emplace(core::OpenStore());
    }
    return *m_db;
}

bool frmLWAC::Guard(const std::function<void()>& work) {
    return RunReported(creator::CreatorCaption(), [&] {
        try {
            work();
        } catch (const core::StoreError&) {
            // The next command opens the database afresh.
            m_db.reset();
            throw;
        }
    });
}

void frmLWAC::SetUrlOpener(std::function<void(const QUrl&)> opener) {
    m_openUrl = std::move(opener);
}

bool frmLWAC::UpdateAfter() const {
    return m_mnuUAWF->isChecked();
}

creator::CreatorDocument frmLWAC::NewDocument() const {
    return creator::NewCreatorDocument(m_lists);
}

creator::ListingContext frmLWAC::Context() {
    return {creator::AuctionTemplatesDir(), &m_rules, creator::SellerId(Db(), User())};
}

// ------------------------------------------------------------------ the controls

void frmLWAC::WatchChanges() {
    const auto dirty = [this] { MarkDirty(); };
    for (const auto& [edit, field] : m_texts) {
        connect(edit, &QLineEdit::textChanged, this, dirty);
    }
    for (const auto& [box, field] : m_checks) {
        connect(box, &QCheckBox::toggled, this, dirty);
    }
    for (const auto& [box, field] : m_comboTexts) {
        connect(box, &QComboBox::currentTextChanged, this, dirty);
    }
    for (const auto& [box, field] : m_comboRows) {
        connect(box, &QComboBox::currentIndexChanged, this, dirty);
    }
    for (const auto& [list, field] : m_selections) {
        connect(list, &QListWidget::itemSelectionChanged, this, dirty);
    }
    for (QListWidget* list : {m_lstPictureLink, m_lstEbayGiftIcon, m_lstEbayShiptoCountries,
                              m_lstipTaxState, m_lstTemplateStyle}) {
        connect(list, &QListWidget::itemSelectionChanged, this, dirty);
    }
    for (QRadioButton* option : m_optEbayWorldShipping) {
        connect(option, &QRadioButton::toggled, this, dirty);
    }
    connect(m_txtDescription, &QPlainTextEdit::textChanged, this, dirty);
    connect(m_cmbEbayCategory, &QComboBox::currentTextChanged, this, dirty);
}

void frmLWAC::MarkDirty() {
    if (m_showing) {
        return;
    }
    m_doc.dirty = true;
    ShowRequired();
}

void frmLWAC::FillLists() {
    m_showing = true;
    const auto box = [this](const char* name) {
        return findChild<QComboBox*>(QString::fromLatin1(name));
    };
    const auto list = [this](const char* name) {
        return findChild<QListWidget*>(QString::fromLatin1(name));
    };
    FillRows(list("lstEbayOptions"), m_lists.lstEbayOptions);
    FillRows(m_lstEbayGiftIcon, m_lists.lstEbayGiftIcon);
    FillRows(list("lstEbayAcceptedPayment"), m_lists.lstEbayAcceptedPayment);
    FillRows(m_lstEbayShippingPref, m_lists.lstEbayShippingPref);
    FillRows(box("cmbEbayCountry"), m_lists.cmbEbayCountry);
    FillRows(m_lstEbayShiptoCountries, m_lists.lstEbayShiptoCountries);
    FillRows(box("cmbEbayRegion"), m_lists.cmbEbayRegion);
    FillRows(box("cmbShippingMethod"), m_lists.cmbShippingMethod);
    FillRows(m_lstipTaxState, m_lists.lstipTaxState);
    FillTexts(box("cmbCounterStyle"), m_lists.cmbCounterStyle);
    FillTexts(box("cmbPayPalLogo"), m_lists.cmbPayPalLogo);
    FillTexts(m_cmbFontType, m_lists.cmbFontType);
    FillTexts(box("cmbFontSize"), m_lists.cmbFontSize);
    FillTexts(box("cmbEbayDuration"), m_lists.cmbEbayDuration);
    for (size_t i = 0; i < m_colourBoxes.size(); ++i) {
        FillTexts(m_colourBoxes[i], m_lists.colours);
        for (int row = 0; row < m_lists.colours.size(); ++row) {
            const auto rgb = creator::ColourTriple(m_lists.colours.at(row));
            m_colourBoxes[i]->setItemData(row, QColor(rgb[0], rgb[1], rgb[2]), Qt::DecorationRole);
        }
    }
    m_lstTemplateStyle->clear();
    for (size_t i = 0; i < m_lists.lstTemplateStyle.size(); ++i) {
        auto* item = new QListWidgetItem(m_lists.lstTemplateStyle[i].name, m_lstTemplateStyle);
        item->setData(Qt::UserRole, int(i));
    }
    for (QComboBox* pictures : {m_cmbPictureLink, m_cmbEbayPicIconActivate, m_cmbEbayGallery}) {
        FillRows(pictures, m_lists.cmbPictureLink);
    }
    FillTexts(m_cmbBGImageLink, m_lists.cmbBGImageLink);
    for (size_t i = 0; i < 2; ++i) {
        FillTexts(m_cmbProductDetails[i], m_lists.cmbProductDetails[i]);
    }
    for (size_t i = 0; i < 5; ++i) {
        FillTexts(m_cmbTransaction[i], m_lists.cmbTransaction[i]);
    }
    m_cmbEbayCategory->clear();
    for (const creator::CategoryRow& row : m_lists.cmbEbayCategory) {
        m_cmbEbayCategory->addItem(row.text, row.number);
    }
    m_showing = false;
}

void frmLWAC::ReloadLists() {
    ReadControls();
    Guard([this] {
        m_lists = creator::LoadCreatorLists(Db(), m_rules, User(), creator::AuctionTemplatesDir(),
                                            QFontDatabase::families());
    });
    FillLists();
    WriteControls();
}

void frmLWAC::ReadControls() {
    for (const auto& [edit, field] : m_texts) {
        *field = edit->text();
    }
    for (const auto& [box, field] : m_checks) {
        *field = box->isChecked();
    }
    for (const auto& [box, field] : m_comboTexts) {
        *field = ComboText(box);
    }
    for (const auto& [box, field] : m_comboRows) {
        *field = box->currentIndex();
    }
    for (const auto& [list, field] : m_selections) {
        *field = SelectedRows(list);
    }
    m_doc.txtDescription = m_txtDescription->toPlainText();
    m_doc.lstPictureLink.clear();
    for (int row = 0; row < m_lstPictureLink->count(); ++row) {
        m_doc.lstPictureLink << m_lstPictureLink->item(row)->text();
    }
    const int style = SelectedOne(m_lstTemplateStyle);
    m_doc.lstTemplateStyle = style >= 0 ? m_lstTemplateStyle->item(style)->text() : QString();
    m_doc.lstEbayGiftIcon = SelectedOne(m_lstEbayGiftIcon);
    m_doc.lstipTaxState = SelectedOne(m_lstipTaxState);
    m_doc.optEbayWorldShipping = -1;
    for (size_t i = 0; i < m_optEbayWorldShipping.size(); ++i) {
        if (m_optEbayWorldShipping[i]->isChecked()) {
            m_doc.optEbayWorldShipping = int(i);
        }
    }
    for (int row = 0; row < int(m_doc.lstEbayShiptoCountries.size()); ++row) {
        m_doc.lstEbayShiptoCountries[size_t(row)] =
            row < m_lstEbayShiptoCountries->count() &&
            m_lstEbayShiptoCountries->item(row)->isSelected();
    }
    // A category box whose text is not its chosen row's has no row chosen.
    const int category = m_cmbEbayCategory->currentIndex();
    if (category >= 0 &&
        m_cmbEbayCategory->itemText(category) == m_cmbEbayCategory->currentText()) {
        m_doc.cmbEbayCategory = {m_cmbEbayCategory->itemText(category),
                                 m_cmbEbayCategory->itemData(category).toString()};
    } else {
        m_doc.cmbEbayCategory = {};
    }
    m_doc.lbleBayCat = m_lbleBayCat->text();
}

void frmLWAC::WriteControls() {
    m_showing = true;
    for (const auto& [edit, field] : m_texts) {
        edit->setText(*field);
        edit->setCursorPosition(0);
    }
    for (const auto& [box, field] : m_checks) {
        box->setChecked(*field);
    }
    for (const auto& [box, field] : m_comboTexts) {
        ShowComboText(box, *field);
    }
    for (const auto& [box, field] : m_comboRows) {
        box->setCurrentIndex(*field < box->count() ? *field : -1);
    }
    for (const auto& [list, field] : m_selections) {
        SelectRows(list, *field);
    }
    // No method chosen shows the list's first row, which says to choose one.
    if (m_doc.cmbShippingMethod.isEmpty()) {
        findChild<QComboBox*>(QStringLiteral("cmbShippingMethod"))->setCurrentIndex(0);
    }
    m_txtDescription->setPlainText(m_doc.txtDescription);
    m_lstPictureLink->clear();
    m_lstPictureLink->addItems(m_doc.lstPictureLink);
    const auto styles = m_lstTemplateStyle->findItems(m_doc.lstTemplateStyle, Qt::MatchFixedString);
    SelectOne(m_lstTemplateStyle, styles.isEmpty() ? -1 : m_lstTemplateStyle->row(styles.first()));
    SelectOne(m_lstEbayGiftIcon, m_doc.lstEbayGiftIcon);
    SelectOne(m_lstipTaxState, m_doc.lstipTaxState);
    for (size_t i = 0; i < m_optEbayWorldShipping.size(); ++i) {
        m_optEbayWorldShipping[i]->setChecked(m_doc.optEbayWorldShipping == int(i));
    }
    if (m_doc.optEbayWorldShipping < 0) {
        // No choice at all: the group is cleared, which exclusive buttons refuse.
        for (QRadioButton* option : m_optEbayWorldShipping) {
            option->setAutoExclusive(false);
            option->setChecked(false);
            option->setAutoExclusive(true);
        }
    }
    for (int row = 0; row < m_lstEbayShiptoCountries->count(); ++row) {
        m_lstEbayShiptoCountries->item(row)->setSelected(
            row < int(m_doc.lstEbayShiptoCountries.size()) &&
            m_doc.lstEbayShiptoCountries[size_t(row)]);
    }
    int category = -1;
    if (!m_doc.cmbEbayCategory.text.isEmpty()) {
        category = m_cmbEbayCategory->findText(m_doc.cmbEbayCategory.text, Qt::MatchFixedString);
        if (category < 0) {
            m_cmbEbayCategory->addItem(m_doc.cmbEbayCategory.text, m_doc.cmbEbayCategory.number);
            category = m_cmbEbayCategory->count() - 1;
        }
    }
    m_cmbEbayCategory->setCurrentIndex(category);
    m_cmbEbayCategory->setEditText(m_doc.cmbEbayCategory.text);
    m_lbleBayCat->setText(m_doc.lbleBayCat);
    m_lblipReturnPolicy->setText(creator::ReturnPolicySummary(m_doc.lblFullPolicy));
    m_lblAuctionName->setText(m_doc.lblAuctionName);
    m_lblAuctionItemData->setText(QString::number(m_doc.lblAuctionItemData));
    m_lblAuctionType->setText(m_doc.lblAuctionType);
    setWindowTitle(m_doc.caption);
    m_showing = false;

    txtItemTitle_Change();
    txtMirror_Change();
    chkEbayGallery_Click();
    optEbayWorldShipping_Click();
    ShowStyle();
    ShowColours();
    cmbFontType_Click();
    ShowPictureButtons();
    for (QWidget* box :
         {static_cast<QWidget*>(m_ipBoxes[0]), static_cast<QWidget*>(m_ipBoxes[1]),
          static_cast<QWidget*>(m_ipBoxes[2]), static_cast<QWidget*>(m_lstipTaxState),
          static_cast<QWidget*>(m_cmdEditPolicy)}) {
        box->setEnabled(m_doc.chkbillpointIPAccepted);
    }
    ShowRequired();
}

void frmLWAC::ShowRequired() {
    const bool dirty = m_doc.dirty;
    ReadControls();
    m_doc.dirty = dirty;
    const creator::RequiredFields fields = creator::CheckRequiredFields(m_doc, m_lists);
    const QColor ground = palette().color(QPalette::Window);
    const auto colour = [&ground](QLabel* label, int vbColour) {
        // The colours are stored as the system keeps them: red + 256 green.
        const QColor system(vbColour & 0xff, (vbColour >> 8) & 0xff, (vbColour >> 16) & 0xff);
        QPalette shown = label->palette();
        shown.setColor(QPalette::WindowText, StateColourOn(system, ground));
        label->setPalette(shown);
        label->setProperty("colour", vbColour);
    };
    for (size_t i = 0; i < m_lblRequired.size(); ++i) {
        colour(m_lblRequired[i], fields.lblRequired[i]);
    }
    for (size_t i = 0; i < m_lblRequiredeBay.size(); ++i) {
        colour(m_lblRequiredeBay[i], fields.lblRequiredeBay[i]);
    }
    m_lblRequiredeBay[1]->setText(fields.titleCaption);
}

void frmLWAC::ShowStyle() {
    const int chosen = m_lstTemplateStyle->currentRow();
    const int index =
        chosen >= 0 ? m_lstTemplateStyle->item(chosen)->data(Qt::UserRole).toInt() : -1;
    for (size_t i = 0; i < m_imgTemplatePreview.size(); ++i) {
        QLabel* picture = m_imgTemplatePreview[i];
        const bool shown = int(i) == index;
        if (shown && picture->pixmap().isNull() && i < m_lists.lstTemplateStyle.size()) {
            const QPixmap full(creator::StylePreviewPicture(core::CurrentSession().ShippedDir,
                                                            m_lists.lstTemplateStyle[i].fileName));
            picture->setPixmap(full.isNull() ? full
                                             : full.scaledToWidth(340, Qt::SmoothTransformation));
        }
        picture->setVisible(shown);
    }
}

void frmLWAC::ShowColours() {
    for (size_t i = 0; i < m_colourBoxes.size(); ++i) {
        const auto rgb = creator::ColourTriple(ComboText(m_colourBoxes[i]));
        QPalette sample = m_txtColor[i]->palette();
        sample.setColor(QPalette::Window, QColor(rgb[0], rgb[1], rgb[2]));
        m_txtColor[i]->setPalette(sample);
    }
}

void frmLWAC::ShowPictureButtons() {
    const int row = m_lstPictureLink->currentRow();
    const int count = m_lstPictureLink->count();
    m_cmdMoveLink[0]->setEnabled(count > 1 && row > 0);
    m_cmdMoveLink[1]->setEnabled(count > 1 && row >= 0 && row < count - 1);
}

// ------------------------------------------------------------------ states

void frmLWAC::ShowChooser() {
    m_editing = false;
    for (int tab = 1; tab < m_SSTab1->count(); ++tab) {
        m_SSTab1->setTabEnabled(tab, false);
    }
    {
        const QSignalBlocker hold(m_SSTab1);
        m_SSTab1->setCurrentIndex(kChooserTab);
    }
    m_lastTab = kChooserTab;
    for (QPushButton* button : {m_cmdSave, m_cmdPreviewAuction, m_cmdPostNow, m_cmdToOutbox}) {
        button->hide();
    }
    for (QMenu* menu : {m_mnuFont}) {
        menu->setEnabled(false);
    }
    FillChooser();
}

void frmLWAC::ShowEditing() {
    m_editing = true;
    for (int tab = 1; tab < m_SSTab1->count(); ++tab) {
        m_SSTab1->setTabEnabled(tab, true);
    }
    for (QPushButton* button : {m_cmdSave, m_cmdPreviewAuction, m_cmdPostNow, m_cmdToOutbox}) {
        button->show();
    }
    m_mnuFont->setEnabled(true);
    m_cmdLoadAuction->setEnabled(false);
    m_SSTab1->setCurrentIndex(kItemTab);
}

void frmLWAC::FillChooser() {
    const auto fill = [](QListWidget* list, const std::vector<creator::ChooserRow>& rows) {
        const QSignalBlocker hold(list);
        const int row = list->currentRow();
        list->clear();
        for (const creator::ChooserRow& entry : rows) {
            auto* item = new QListWidgetItem(entry.text, list);
            item->setData(Qt::UserRole, entry.id);
            item->setData(Qt::UserRole + 1, entry.type);
        }
        list->setCurrentRow(std::min(row, list->count() - 1));
    };
    Guard([&] {
        fill(m_lstUserTemp, creator::ChooserRows(Db(), QString(creator::kTemplate), User()));
        fill(m_lstDraft,
             creator::ChooserRows(Db(), QString(creator::kDraft), User(),
                                  m_OptDSort[1]->isChecked() ? creator::ChooserSort::Name
                                                             : creator::ChooserSort::Newest));
        fill(m_lstOldAuction,
             creator::ChooserRows(Db(), QString(creator::kOldAuction), User(),
                                  m_OptOASort[1]->isChecked() ? creator::ChooserSort::Name
                                                              : creator::ChooserSort::Newest));
    });
    const QString last = creator::SameAsLastCaption();
    m_optACChoice[2]->setText(QStringLiteral("&S") + Literal(last.mid(1)));
    FillTemplateMenu();
    int chosen = 0;
    for (size_t i = 0; i < m_optACChoice.size(); ++i) {
        if (m_optACChoice[i]->isChecked()) {
            chosen = int(i);
        }
    }
    optACChoice_Click(chosen);
}

void frmLWAC::FillTemplateMenu() {
    m_mnuTemplates->clear();
    for (int row = 0; row < m_lstUserTemp->count(); ++row) {
        QListWidgetItem* item = m_lstUserTemp->item(row);
        const qint64 id = item->data(Qt::UserRole).toLongLong();
        // The first rows take a digit as their key.
        const QString key = row < 9 ? QStringLiteral("&%1 ").arg(row + 1) : QString();
        QAction* action = m_mnuTemplates->addAction(key + Literal(item->text()));
        action->setObjectName(QStringLiteral("mnuTemplateName%1").arg(row));
        connect(action, &QAction::triggered, this, [this, id] { mnuTemplateName_Click(id); });
    }
    m_mnuTemplates->setEnabled(m_lstUserTemp->count() > 0);
}

QListWidget* frmLWAC::ChosenList() const {
    switch (m_chooserPages->currentIndex()) {
        case 0:
            return m_lstUserTemp;
        case 1:
            return m_lstDraft;
        case 3:
            return m_lstOldAuction;
        default:
            return nullptr;
    }
}

void frmLWAC::optACChoice_Click(int index) {
    m_optACChoice[size_t(index)]->setChecked(true);
    m_chooserPages->setCurrentIndex(index);
    if (index == 2) {
        const creator::CreatorSettings settings = creator::LoadCreatorSettings();
        m_lblAuctionName->setText(settings.LastAuctionName);
        m_lblAuctionItemData->setText(settings.LastAuctionID);
        m_lblAuctionType->setText(settings.LastAuctionType.toLower());
        m_details[2]->clear();
        Guard([&] {
            m_details[2]->addItems(
                creator::ChooserDetails(Db(), settings.LastAuctionID.toLongLong()));
        });
        m_cmdLoadAuction->setEnabled(!m_editing && !settings.LastAuctionName.isEmpty());
        return;
    }
    ChooseRow(ChosenList(), index == 0   ? QStringLiteral("template")
                            : index == 1 ? QStringLiteral("draft")
                                         : QStringLiteral("old auction"));
}

void frmLWAC::ChooseRow(QListWidget* list, const QString& kind) {
    const int page = m_chooserPages->indexOf(list->parentWidget()->parentWidget());
    QListWidget* details = m_details[size_t(std::clamp(page, 0, 3))];
    details->clear();
    QListWidgetItem* item = list->currentItem();
    m_cmdLoadAuction->setEnabled(!m_editing && item != nullptr);
    if (item == nullptr) {
        return;
    }
    m_lblAuctionName->setText(item->text());
    m_lblAuctionItemData->setText(item->data(Qt::UserRole).toString());
    m_lblAuctionType->setText(kind);
    Guard([&] {
        details->addItems(creator::ChooserDetails(Db(), item->data(Qt::UserRole).toLongLong()));
    });
}

void frmLWAC::lstUserTemp_Click() {
    ChooseRow(m_lstUserTemp, QStringLiteral("template"));
}

void frmLWAC::lstDraft_Click() {
    ChooseRow(m_lstDraft, QStringLiteral("draft"));
}

void frmLWAC::lstOldAuction_Click() {
    ChooseRow(m_lstOldAuction, QStringLiteral("old auction"));
}

void frmLWAC::OptDSort_Click() {
    FillChooser();
}

void frmLWAC::OptOASort_Click() {
    FillChooser();
}

creator::CreatorSettings frmLWAC::LeavingSettings() const {
    creator::CreatorSettings settings = m_settings;
    for (size_t i = 0; i < m_mnuPost.size(); ++i) {
        if (m_mnuPost[i]->isChecked()) {
            settings.PostOption = int(i) + 1;
        }
    }
    settings.UpdateAfter = m_mnuUAWF->isChecked() ? -1 : 0;
    for (size_t i = 0; i < m_optACChoice.size(); ++i) {
        if (m_optACChoice[i]->isChecked()) {
            settings.ACType = int(i);
        }
    }
    settings.TemplateChoice = std::max(0, m_lstUserTemp->currentRow());
    settings.DraftChoice = std::max(0, m_lstDraft->currentRow());
    settings.OldAuctionChoice = std::max(0, m_lstOldAuction->currentRow());
    settings.JustGo = m_chkGo->isChecked();
    return settings;
}

void frmLWAC::LoadCreatorOptions() {
    m_settings = creator::LoadCreatorSettings();
    m_mnuPost[size_t(m_settings.PostOption - 1)]->setChecked(true);
    m_mnuUAWF->setChecked(m_settings.UpdateAfter != 0);
    m_chkGo->setChecked(m_settings.JustGo);
    m_lstUserTemp->setCurrentRow(std::min(m_settings.TemplateChoice, m_lstUserTemp->count() - 1));
    m_lstDraft->setCurrentRow(std::min(m_settings.DraftChoice, m_lstDraft->count() - 1));
    m_lstOldAuction->setCurrentRow(
        std::min(m_settings.OldAuctionChoice, m_lstOldAuction->count() - 1));
    optACChoice_Click(std::clamp(m_settings.ACType, 0, 3));
    if (m_settings.JustGo && !m_editing && m_cmdLoadAuction->isEnabled()) {
        cmdLoadAuction_Click();
    }
}

void frmLWAC::showEvent(QShowEvent* event) {
    QDialog::showEvent(event);
    if (!m_activated) {
        m_activated = true;
        LoadCreatorOptions();
    }
}

bool frmLWAC::LoadAndEdit(qint64 id, bool defaultRow) {
    creator::CreatorDocument doc = NewDocument();
    doc.lblAuctionName = m_lblAuctionName->text();
    doc.lblAuctionItemData = id;
    doc.lblAuctionType = m_lblAuctionType->text();
    bool loaded = false;
    const bool ran = Guard([&] {
        loaded = creator::LoadCreatorRecord(Db(), id, m_lists, m_rules, doc);
        if (loaded && defaultRow) {
            creator::ApplyUserSitesPreferences(Db(), User(), m_lists, doc);
        }
    });
    if (!ran) {
        return false;
    }
    // A row that is gone leaves the fields as they were.
    if (loaded) {
        doc.dirty = false;
        m_doc = doc;
        m_html.clear();
        m_unsentId = 0;
        WriteControls();
    }
    ShowEditing();
    return loaded;
}

void frmLWAC::cmdLoadAuction_Click() {
    if (!m_cmdLoadAuction->isEnabled()) {
        return;
    }
    creator::SaveLeavingSettings(LeavingSettings());
    QListWidget* list = ChosenList();
    qint64 id = 0;
    bool defaultRow = false;
    if (list == nullptr) {
        id = creator::LoadCreatorSettings().LastAuctionID.toLongLong();
    } else if (QListWidgetItem* item = list->currentItem()) {
        id = item->data(Qt::UserRole).toLongLong();
        defaultRow = item->data(Qt::UserRole + 1).toString() == creator::kDefault;
    }
    ReloadLists();
    LoadAndEdit(id, defaultRow);
}

void frmLWAC::cmdLoadDefault_Click() {
    m_lblAuctionName->setText(QString(creator::kDefault));
    m_lblAuctionType->setText(QStringLiteral("template"));
    LoadAndEdit(1, false);
}

bool frmLWAC::OpenRecord(qint64 id) {
    m_lblAuctionName->clear();
    m_lblAuctionType->setText(QStringLiteral("old auction"));
    m_activated = true;
    return LoadAndEdit(id, false);
}

void frmLWAC::OpenDocument(const creator::CreatorDocument& doc) {
    m_activated = true;
    m_doc = doc;
    m_html.clear();
    m_unsentId = 0;
    WriteControls();
    ShowEditing();
}

void frmLWAC::mnuDeleteDraft_Click() {
    QListWidgetItem* item = m_lstDraft->currentItem();
    if (item != nullptr &&
        Guard([&] { creator::DeleteCreatorRecord(Db(), item->data(Qt::UserRole).toLongLong()); })) {
        FillChooser();
    }
}

void frmLWAC::mnuPopupDeleteOldAuction_Click() {
    QListWidgetItem* item = m_lstOldAuction->currentItem();
    if (item != nullptr &&
        Guard([&] { creator::DeleteCreatorRecord(Db(), item->data(Qt::UserRole).toLongLong()); })) {
        FillChooser();
    }
}

void frmLWAC::mnuDeleteTemplate_Click() {
    QListWidgetItem* item = m_lstUserTemp->currentItem();
    if (item == nullptr) {
        return;
    }
    const creator::ChooserRow row{item->data(Qt::UserRole).toLongLong(), item->text(),
                                  item->data(Qt::UserRole + 1).toString(), QString()};
    bool deleted = false;
    Guard([&] {
        deleted = creator::DeleteTemplate(Db(), m_lstUserTemp->row(item), row, core::CurrentUi());
    });
    if (deleted) {
        FillChooser();
    }
}

// ------------------------------------------------------------------ leaving and saving

bool frmLWAC::AskToSave() {
    if (!m_editing) {
        return true;
    }
    ReadControls();
    switch (creator::PromptSaveChanges(m_doc, isVisible(), core::CurrentUi())) {
        case creator::SaveAnswer::Yes:
            return SaveWithDialog(QString(creator::kDraft));
        case creator::SaveAnswer::Cancel:
            return false;
        default:
            return true;
    }
}

bool frmLWAC::SaveWithDialog(const QString& kind) {
    ReadControls();
    creator::SaveRequest request;
    {
        std::optional<frmGeneral> form;
        if (!Guard([&] { form.emplace(frmGeneral::SaveForm, Db(), this); })) {
            return false;
        }
        form->ChooseSaveKind(kind);
        if (form->exec() != QDialog::Accepted) {
            return false;
        }
        request = form->SaveChoice();
    }
    request.auctionHtml = m_html;
    qint64 id = 0;
    if (!Guard([&] { id = creator::SaveCreatorRecord(Db(), request, m_doc, m_lists, m_rules); })) {
        return false;
    }
    m_doc.lblAuctionName = request.name;
    m_doc.lblAuctionItemData = id;
    m_doc.lblAuctionType = request.type.toLower();
    m_doc.caption = QStringLiteral("Lotwright AC: ") + request.name;
    setWindowTitle(m_doc.caption);
    m_lblAuctionName->setText(m_doc.lblAuctionName);
    m_lblAuctionItemData->setText(QString::number(id));
    m_lblAuctionType->setText(m_doc.lblAuctionType);
    m_lblStatus->setText(QStringLiteral("Saved \"%1\".").arg(request.name));
    return true;
}

void frmLWAC::cmdSave_Click() {
    SaveWithDialog(QString(creator::kDraft));
}

void frmLWAC::cmdExit_Click() {
    reject();
}

void frmLWAC::reject() {
    if (!AskToSave()) {
        return;
    }
    creator::SaveLeavingSettings(LeavingSettings());
    QDialog::reject();
}

void frmLWAC::mnuNewAuction_Click() {
    if (AskToSave()) {
        ShowChooser();
    }
}

void frmLWAC::mnuCreate_Click() {
    if (!AskToSave()) {
        return;
    }
    ReloadLists();
    creator::CreatorDocument doc = NewDocument();
    doc.lblAuctionType = QStringLiteral("auction");
    OpenDocument(doc);
}

void frmLWAC::mnuTemplateName_Click(qint64 id) {
    if (!AskToSave()) {
        return;
    }
    for (int row = 0; row < m_lstUserTemp->count(); ++row) {
        if (m_lstUserTemp->item(row)->data(Qt::UserRole).toLongLong() == id) {
            m_lstUserTemp->setCurrentRow(row);
        }
    }
    optACChoice_Click(0);
    m_cmdLoadAuction->setEnabled(true);
    cmdLoadAuction_Click();
}

void frmLWAC::mnuPostOption_Click(int option) {
    m_settings.PostOption = option;
    creator::SavePostOption(option);
}

void frmLWAC::SSTab1_Click(int index) {
    if (index == kChooserTab && m_editing) {
        if (!AskToSave()) {
            const QSignalBlocker hold(m_SSTab1);
            m_SSTab1->setCurrentIndex(m_lastTab);
            return;
        }
        ShowChooser();
        return;
    }
    if (m_lastTab == kItemTab && index != kItemTab) {
        for (QLineEdit* box : m_moneyBoxes) {
            ShowAsMoney(box);
        }
    }
    m_lastTab = index;
}

// ------------------------------------------------------------------ building and sending

QString frmLWAC::BuildHtml() {
    ReadControls();
    creator::ListingResult listing;
    Guard([&] {
        listing = creator::BuildListing(m_doc.lstTemplateStyle, m_doc, m_lists, Context(), m_html);
    });
    if (!listing.problem.isEmpty()) {
        core::CurrentUi().Message(listing.problem, creator::CreatorCaption(), core::Icon::Warning);
    }
    m_html = listing.html;
    return m_html;
}

void frmLWAC::cmdPreviewAuction_Click() {
    ReadControls();
    creator::PreviewResult preview;
    if (!Guard([&] {
            preview = creator::PreviewAuction(m_doc.lstTemplateStyle, m_doc, m_lists, Context(),
                                              core::CurrentSession().ConfigsDir);
        })) {
        return;
    }
    if (preview.path.isEmpty()) {
        core::CurrentUi().Message(preview.problem, creator::CreatorCaption(), core::Icon::Warning);
        return;
    }
    m_html = preview.listing.html;
    if (m_openUrl) {
        m_openUrl(QUrl::fromLocalFile(preview.path));
    }
}

bool frmLWAC::SendToOutbox() {
    creator::SaveRequest request;
    request.name = m_doc.txtItemTitle.trimmed().isEmpty() ? m_doc.txtEbayTitle : m_doc.txtItemTitle;
    request.type = QString(creator::kOldAuction);
    request.toOutbox = true;
    request.overwrite = m_chkOverwrite->isChecked();
    request.existingId = request.overwrite ? m_lblAuctionItemData->text().toLongLong() : 0;
    request.auctionHtml = m_html;
    return Guard([&] {
        creator::KeepPictureFavorites(Db(), User(), m_doc, m_lists);
        creator::SaveCreatorRecord(Db(), request, m_doc, m_lists, m_rules);
    });
}

void frmLWAC::cmdToOutbox_Click() {
    if (m_cmdLoadAuction->isEnabled() || !m_editing) {
        return;
    }
    BuildHtml();
    if (!creator::ValidateForSending(m_doc, m_lists, core::CurrentUi()) || !SendToOutbox()) {
        return;
    }
    const QString name =
        m_doc.txtItemTitle.trimmed().isEmpty() ? m_doc.txtEbayTitle : m_doc.txtItemTitle;
    if (m_chkOverwrite->isChecked()) {
        creator::SaveLeavingSettings(LeavingSettings());
        accept();
        return;
    }
    ShowChooser();
    m_lblStatus->setText(QStringLiteral("\"%1\" waits in the outbox.").arg(name));
}

creator::PostRoute frmLWAC::PostRoute() const {
    for (size_t i = 0; i < m_mnuPost.size(); ++i) {
        if (m_mnuPost[i]->isChecked()) {
            return creator::PostRoute(int(i) + 1);
        }
    }
    return creator::PostRoute::Direct;
}

void frmLWAC::cmdPostNow_Click() {
    if (m_cmdLoadAuction->isEnabled() || !m_editing) {
        return;
    }
    bool online = false;
    if (!Guard([&] { online = update::IsConnected(Db(), kOffline, true); }) || !online) {
        return;
    }
    BuildHtml();
    if (!creator::ValidateForSending(m_doc, m_lists, core::CurrentUi())) {
        return;
    }
    // The commands wait while the post runs; the document is saved first as
    // an old auction, which is what is posted.
    const QList<QPushButton*> commands{m_cmdSave, m_cmdPreviewAuction, m_cmdPostNow, m_cmdToOutbox,
                                       m_cmdExit};
    for (QPushButton* button : commands) {
        button->setEnabled(false);
    }
    creator::SaveRequest request;
    request.name = m_doc.txtItemTitle.trimmed().isEmpty() ? m_doc.txtEbayTitle : m_doc.txtItemTitle;
    request.type = QString(creator::kOldAuction);
    request.existingId = m_unsentId;
    request.auctionHtml = m_html;
    const creator::PostRoute route = PostRoute();
    creator::PostOutcome outcome;
    const bool ran = Guard([&] {
        creator::KeepPictureFavorites(Db(), User(), m_doc, m_lists);
        m_unsentId = creator::SaveCreatorRecord(Db(), request, m_doc, m_lists, m_rules);
        creator::PrepareCategoryDirectory(Db(), core::CurrentUi());
        outcome = creator::PostAuction(Db(), m_rules, m_unsentId, route, core::CurrentUi());
    });
    for (QPushButton* button : commands) {
        button->setEnabled(true);
    }
    if (!outcome.browserPage.isEmpty() && m_openUrl) {
        m_openUrl(QUrl::fromLocalFile(outcome.browserPage));
    }
    if (!ran || !outcome.posted) {
        // Told already; what was typed stays in the window for another try.
        m_lblStatus->setText(outcome.problem);
        return;
    }
    if (route != creator::PostRoute::Direct) {
        creator::SavePostMark(User(), QDate::currentDate());
    }
    m_unsentId = 0;
    if (outcome.confirm) {
        ShowPosted(outcome.itemNumber, this);
    }
    ShowChooser();
    m_lblStatus->setText(outcome.problem.isEmpty() && !outcome.itemNumber.isEmpty()
                             ? QStringLiteral("Posted as item #%1.").arg(outcome.itemNumber)
                             : outcome.problem);
}

// ------------------------------------------------------------------ fields

void frmLWAC::txtItemTitle_Change() {
    const QString title = m_txtItemTitle->text();
    m_lblTitleLength->setText(QStringLiteral("(%1)").arg(title.size()));
    if (!m_showing) {
        m_txtEbayTitle->setText(creator::EbayTitleFor(title));
    }
}

void frmLWAC::txtItemTitle_DblClick() {
    QApplication::clipboard()->setText(m_txtItemTitle->text());
}

void frmLWAC::txtMirror_Change() {
    m_lblQuantity->setText(m_txtQuantity->text());
    m_lblShipCost->setText(m_txtShipping->text());
    m_lblShipInsurance->setText(m_txtInsurance->text());
    if (!m_showing && sender() == m_txtShipping) {
        const double shipping = core::NumberRule(m_txtShipping->text());
        m_ipBoxes[0]->setText(core::Format(shipping, QStringLiteral("Currency")));
    }
}

void frmLWAC::lstTemplateStyle_Click() {
    ShowStyle();
}

void frmLWAC::cmbColor_Click() {
    ShowColours();
}

void frmLWAC::cmbFontType_Click() {
    if (m_cmbFontType->currentText() == creator::FontSeparator()) {
        m_cmbFontType->setCurrentIndex(0);
        return;
    }
    const QString font = ComboText(m_cmbFontType);
    m_lblFontType->setText(font.isEmpty() ? QString()
                                          : QStringLiteral("%1: The quick brown fox").arg(font));
    QFont shown = m_lblFontType->font();
    shown.setFamily(font);
    m_lblFontType->setFont(shown);
}

void frmLWAC::chkEbayGallery_Click() {
    m_cmbEbayGallery->setEnabled(m_chkEbayGallery->isChecked());
}

void frmLWAC::lstEbayShippingPref_Click() {
    MarkDirty();
}

void frmLWAC::optEbayWorldShipping_Click() {
    m_lstEbayShiptoCountries->setEnabled(m_optEbayWorldShipping[2]->isChecked());
}

void frmLWAC::chkbillpointIPAccepted_Click() {
    if (m_chkbillpointIPAccepted->isChecked()) {
        ReadControls();
        Guard([this] { creator::PresetInstantPurchase(Db(), m_lists, m_rules, m_doc); });
        m_doc.dirty = true;
    } else {
        ReadControls();
    }
    WriteControls();
}

void frmLWAC::cmdEditPolicy_Click() {
    const std::optional<QString> policy =
        core::CurrentUi().Prompt(QStringLiteral("Your return policy:"),
                                 QStringLiteral("Return Policy"), m_doc.lblFullPolicy);
    if (!policy) {
        return;
    }
    ReadControls();
    m_doc.lblFullPolicy = *policy;
    m_lblipReturnPolicy->setText(creator::ReturnPolicySummary(*policy));
    MarkDirty();
}

void frmLWAC::cmbEbayCategory_KeyEnter() {
    const QString typed = m_cmbEbayCategory->currentText().trimmed();
    const int current = m_cmbEbayCategory->currentIndex();
    const bool chosen = current >= 0 && m_cmbEbayCategory->itemText(current) == typed;
    if (chosen) {
        return;
    }
    std::optional<creator::CategoryListRow> row;
    QString message;
    QString title;
    Guard([&] {
        if (typed.isEmpty() || core::Val(typed) >= 1) {
            const creator::CategoryNumberEntry entry =
                creator::EnterCategoryNumber(Db(), typed, current >= 0);
            row = entry.row;
            message = entry.message;
            title = entry.title;
            return;
        }
        const qint64 number = creator::ResolveCategory(Db(), core::CurrentUi(), typed);
        if (number < 0) {
            return;
        }
        if (const std::optional<creator::CategoryEntry> found =
                creator::FindCategory(Db(), number)) {
            row = creator::CategoryListRow{found->ListText(), found->number};
        }
    });
    if (!message.isEmpty()) {
        core::CurrentUi().Message(message, title, core::Icon::Warning);
        m_txtEbayTitle->setFocus();
        return;
    }
    if (row) {
        m_cmbEbayCategory->addItem(row->text, QString::number(row->number));
        m_cmbEbayCategory->setCurrentIndex(m_cmbEbayCategory->count() - 1);
        m_lbleBayCat->setText(QString::number(row->number));
        MarkDirty();
    }
}

void frmLWAC::cmdBrowseCategory_Click() {
    std::optional<creator::CategoryListRow> chosen;
    {
        std::optional<frmGeneral> browser;
        if (!Guard([&] { browser.emplace(frmGeneral::CategoryForm, Db(), this); })) {
            return;
        }
        if (browser->exec() != QDialog::Accepted) {
            return;
        }
        chosen = browser->SelectedCategory();
    }
    if (!chosen) {
        return;
    }
    // The browser may have added favourites: the box offers them at once.
    ReloadLists();
    m_cmbEbayCategory->addItem(chosen->text, QString::number(chosen->number));
    m_cmbEbayCategory->setCurrentIndex(m_cmbEbayCategory->count() - 1);
    m_lbleBayCat->setText(QString::number(chosen->number));
    MarkDirty();
}

void frmLWAC::cmdRemoveCat_Click() {
    const int row = m_cmbEbayCategory->currentIndex();
    if (row < 0) {
        return;
    }
    const qint64 number = m_cmbEbayCategory->itemData(row).toLongLong();
    if (Guard([&] { creator::RemoveFavoriteCategory(Db(), User(), number); })) {
        ReloadLists();
    }
}

// ------------------------------------------------------------------ pictures and favourites

void frmLWAC::cmdAddLink_Click() {
    const QString link = m_cmbPictureLink->currentText().trimmed();
    if (link.isEmpty()) {
        core::CurrentUi().Message(
            QStringLiteral("Please enter a picture link before attempting to add to picture link "
                           "box"),
            creator::CreatorCaption(), core::Icon::Information);
        return;
    }
    m_lstPictureLink->addItem(link);
    m_lstPictureLink->setCurrentRow(m_lstPictureLink->count() - 1);
    MarkDirty();
}

void frmLWAC::cmdAddLinkToPictureList_Click() {
    ReadControls();
    bool added = false;
    Guard([&] {
        added = creator::AddPictureToList(Db(), User(), m_doc, m_lists, core::CurrentUi());
    });
    if (added) {
        FillLists();
        WriteControls();
        m_lstPictureLink->setCurrentRow(m_lstPictureLink->count() - 1);
    }
}

void frmLWAC::cmdMoveLink_Click(int step) {
    const int row = m_lstPictureLink->currentRow();
    const int to = row + step;
    if (row < 0 || to < 0 || to >= m_lstPictureLink->count()) {
        return;
    }
    QListWidgetItem* item = m_lstPictureLink->takeItem(row);
    m_lstPictureLink->insertItem(to, item);
    m_lstPictureLink->setCurrentRow(to);
    MarkDirty();
}

void frmLWAC::cmdRemoveLink_Click() {
    const int row = m_lstPictureLink->currentRow();
    if (row < 0) {
        core::CurrentUi().Message(
            QStringLiteral("You need to select a link from your Picture List to remove it."),
            QStringLiteral("Cannot Remove Link"), core::Icon::Information);
        return;
    }
    delete m_lstPictureLink->takeItem(row);
    MarkDirty();
    ShowPictureButtons();
}

void frmLWAC::cmdTestLink_Click() {
    QListWidgetItem* item = m_lstPictureLink->currentItem();
    const QString link = item != nullptr ? item->text() : m_cmbPictureLink->currentText().trimmed();
    if (!link.isEmpty() && m_openUrl) {
        m_openUrl(QUrl(link));
    }
}

void frmLWAC::lstPictureLink_Click() {
    ShowPictureButtons();
}

void frmLWAC::cmdAddFavorite_Click(QComboBox* box, int urlType) {
    bool added = false;
    Guard([&] {
        added = creator::AddFavorite(Db(), User(), urlType, box->currentText(), core::CurrentUi());
    });
    if (added) {
        ReloadLists();
    }
}

void frmLWAC::cmdRemoveFavorite_Click(QComboBox* box, int urlType) {
    bool removed = false;
    Guard([&] {
        removed =
            creator::RemoveFavorite(Db(), User(), urlType, box->currentText(), core::CurrentUi());
    });
    if (removed) {
        ReloadLists();
    }
}

void frmLWAC::mnuFont_Click(const QString& tag) {
    QTextCursor cursor = m_txtDescription->textCursor();
    cursor.insertText(u'<' + tag + u'>' + cursor.selectedText() + QStringLiteral("</") + tag +
                      u'>');
    m_txtDescription->setTextCursor(cursor);
}

// ------------------------------------------------------------------ keys

bool frmLWAC::eventFilter(QObject* watched, QEvent* event) {
    if (event->type() == QEvent::MouseButtonDblClick && watched == m_txtItemTitle) {
        txtItemTitle_DblClick();
        return false;
    }
    if (event->type() != QEvent::KeyPress) {
        return QDialog::eventFilter(watched, event);
    }
    const auto* key = static_cast<QKeyEvent*>(event);
    if (watched == m_txtDescription &&
        (key->key() == Qt::Key_Return || key->key() == Qt::Key_Enter) &&
        key->modifiers() == Qt::NoModifier) {
        m_txtDescription->insertPlainText(QStringLiteral("<BR>"));
        return true;
    }
    if (key->key() == Qt::Key_Delete && watched == m_lstDraft) {
        mnuDeleteDraft_Click();
        return true;
    }
    auto* box = qobject_cast<QLineEdit*>(watched);
    const bool numeric =
        box != nullptr &&
        (std::find(m_moneyBoxes.begin(), m_moneyBoxes.end(), box) != m_moneyBoxes.end() ||
         box == m_txtQuantity ||
         std::find(m_ipBoxes.begin(), m_ipBoxes.end(), box) != m_ipBoxes.end());
    const QString typed = key->text();
    if (!numeric || typed.isEmpty() || !typed.at(0).isPrint() ||
        (key->modifiers() & (Qt::ControlModifier | Qt::AltModifier))) {
        return QDialog::eventFilter(watched, event);
    }
    // Digits, and one point where a point is allowed; the quantity is whole.
    QString kept = box->text();
    if (box->hasSelectedText()) {
        kept.remove(box->selectionStart(), box->selectedText().size());
    }
    const bool point = typed == u"." && box != m_txtQuantity && !kept.contains(u'.');
    const bool digits =
        std::all_of(typed.begin(), typed.end(), [](QChar c) { return c.isDigit(); });
    return !(digits || point);
}

}  // namespace lw::ui
