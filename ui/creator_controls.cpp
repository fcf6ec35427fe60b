// SPDX-License-Identifier: GPL-3.0-or-later
// The auction creator's controls and the document: the lists filled from the
// creator's lists, the document written into the controls and read back, the
// dirty flag, the colours of the required labels, the style's picture and the
// colour samples, and the handlers of single fields (title, mirrors,
// category, pictures, favourites, the keys of the number boxes). A handler
// reads the controls into the document, calls creator/, and writes the
// controls back; it never writes SQL and never lets a failure out.
#include <QAction>
#include <QApplication>
#include <QCheckBox>
#include <QClipboard>
#include <QComboBox>
#include <QFontDatabase>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QRadioButton>
#include <QTextCursor>
#include <algorithm>

#include "core/session.h"
#include "core/text.h"
#include "creator/category_directory.h"
#include "ui/frmGeneral.h"
#include "ui/frmLWAC.h"
#include "ui/readable_colour.h"

namespace lw::ui {

namespace {

QString User() {
    return core::CurrentSession().CurrentUser;
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

}  // namespace

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

// ------------------------------------------------------------------ fields

void frmLWAC::txtItemTitle_Change() {
    const QString title = m_txtItemTitle->text();
    m_lblTitleLength->setText(QStringLiteral("(%1)").arg(title.size()));
    if (!m_showing) {
        m_txtEbayTitle->setText(creator::EbayTitleFor(title));
    }
}

void frmLWAC::txtItemTitle_LostFocus() {
    const QString title = m_txtItemTitle->text();
    if (m_showing || creator::EbayTitleFor(title) == title || title == m_warnedTitle) {
        return;
    }
    m_warnedTitle = title;
    if (ShowTitleTruncated(this)) {
        m_txtEbayTitle->setFocus();
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
