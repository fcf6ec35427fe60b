// SPDX-License-Identifier: GPL-3.0-or-later
// The auction creator's window, "Lotwright Auction Creator": the chooser on
// its first tab (templates, drafts, the last auction, saved auctions) and the
// editing tabs of one listing document, with its save, preview, post and
// outbox commands. Every control carries the system's name as its
// objectName (arrays as name plus index: chkTransaction0 to chkTransaction4,
// lblRequiredeBay0 to lblRequiredeBay8, ...). The handlers keep the system's
// names and stay thin: they read the controls into the document, call
// creator/, and write the controls back. It never writes SQL, never lets a
// failure out of a handler, and never drops what was typed: a failed save
// or send keeps the document and says why.
#pragma once

#include <QDialog>
#include <QUrl>
#include <array>
#include <functional>
#include <optional>
#include <utility>
#include <vector>

#include "core/store.h"
#include "creator/creator_document.h"
#include "creator/direct_post.h"
#include "creator/listing_html.h"
#include "update/rules.h"

class QAction;
class QActionGroup;
class QCheckBox;
class QComboBox;
class QLabel;
class QLineEdit;
class QListWidget;
class QMenu;
class QPlainTextEdit;
class QPushButton;
class QRadioButton;
class QStackedWidget;
class QTabWidget;

namespace lw::ui {

class frmLWAC : public QDialog {
    Q_OBJECT
public:
    // The tabs of SSTab1.
    enum Tab : int {
        kChooserTab = 0,
        kItemTab,
        kPicturesTab,
        kStyleTab,
        kDetailsTab,
        kLinksTab,
        kListingTab,
        kPaymentTab
    };

    explicit frmLWAC(QWidget* parent = nullptr);
    ~frmLWAC() override;

    // Opens the window straight on a document for editing, as a relist or an
    // inventory item does; the chooser is passed over.
    void OpenDocument(const creator::CreatorDocument& doc);
    // The same with row id loaded; false, and the chooser, when it is gone.
    bool OpenRecord(qint64 id);
    // A new document from the window's lists, for OpenDocument.
    creator::CreatorDocument NewDocument() const;

    // mnuUAWF: the sales are to be updated once the window has closed.
    bool UpdateAfter() const;
    // How pages are opened; QDesktopServices::openUrl unless replaced.
    void SetUrlOpener(std::function<void(const QUrl&)> opener);

public Q_SLOTS:
    // Exit, Escape and the window's close all leave here: the save question
    // first, then the leaving settings.
    void reject() override;

    // The chooser.
    void optACChoice_Click(int index);
    void lstUserTemp_Click();
    void lstDraft_Click();
    void lstOldAuction_Click();
    void OptDSort_Click();
    void OptOASort_Click();
    void cmdLoadAuction_Click();
    void cmdLoadDefault_Click();
    void mnuDeleteDraft_Click();
    void mnuDeleteTemplate_Click();
    void mnuPopupDeleteOldAuction_Click();

    // The commands and menus.
    void cmdSave_Click();
    void cmdPreviewAuction_Click();
    void cmdPostNow_Click();
    void cmdToOutbox_Click();
    void cmdExit_Click();
    void mnuNewAuction_Click();
    void mnuCreate_Click();
    void mnuTemplateName_Click(qint64 id);
    void mnuPostOption_Click(int option);
    void mnuFont_Click(const QString& tag);
    void SSTab1_Click(int index);

    // The fields.
    void txtItemTitle_Change();
    void txtItemTitle_DblClick();
    // A title longer than the site takes is warned of once, and the site's
    // title is then to be edited.
    void txtItemTitle_LostFocus();
    void txtMirror_Change();
    void lstTemplateStyle_Click();
    void cmbColor_Click();
    void cmbFontType_Click();
    void chkEbayGallery_Click();
    void lstEbayShippingPref_Click();
    void optEbayWorldShipping_Click();
    void chkbillpointIPAccepted_Click();
    void cmdEditPolicy_Click();
    void cmbEbayCategory_KeyEnter();
    void cmdBrowseCategory_Click();
    void cmdRemoveCat_Click();
    void cmdAddLink_Click();
    void cmdAddLinkToPictureList_Click();
    void cmdMoveLink_Click(int step);
    void cmdRemoveLink_Click();
    void cmdTestLink_Click();
    void lstPictureLink_Click();
    void cmdAddFavorite_Click(QComboBox* box, int urlType);
    void cmdRemoveFavorite_Click(QComboBox* box, int urlType);

protected:
    void showEvent(QShowEvent* event) override;
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    core::Database& Db();
    // Runs a handler's work; a failure is told under the window's caption.
    bool Guard(const std::function<void()>& work);

    // Building (creator_tabs.cpp).
    void BuildMenus();
    QWidget* BuildChooserTab();
    QWidget* BuildItemTab();
    QWidget* BuildPicturesTab();
    QWidget* BuildStyleTab();
    QWidget* BuildDetailsTab();
    QWidget* BuildLinksTab();
    QWidget* BuildListingTab();
    QWidget* BuildPaymentTab();
    QLineEdit* Text(QWidget* parent, const QString& name, QString* field);
    QCheckBox* Check(QWidget* parent, const QString& name, const QString& caption, bool* field);
    QComboBox* EditableCombo(QWidget* parent, const QString& name, QString* field);
    QComboBox* RowCombo(QWidget* parent, const QString& name, int* field);
    QListWidget* MultiList(QWidget* parent, const QString& name, QList<int>* field);
    QWidget* FavoriteButtons(QWidget* parent, QComboBox* box, int urlType);
    creator::ListingContext Context();
    void ReloadLists();
    void WatchChanges();

    // The document and the controls.
    void FillLists();
    void ReadControls();
    void WriteControls();
    void ShowRequired();
    void ShowStyle();
    void ShowColours();
    void ShowPictureButtons();
    void MarkDirty();

    // The chooser and the two states of the window.
    void ShowChooser();
    void ShowEditing();
    void FillChooser();
    void ChooseRow(QListWidget* list, const QString& kind);
    QListWidget* ChosenList() const;
    void LoadCreatorOptions();
    creator::CreatorSettings LeavingSettings() const;
    bool LoadAndEdit(qint64 id, bool defaultRow);
    void FillTemplateMenu();

    // Saving, sending, leaving.
    bool SaveWithDialog(const QString& kind);
    bool AskToSave();
    QString BuildHtml();
    bool SendToOutbox();
    creator::PostRoute PostRoute() const;

    std::optional<core::Database> m_db;
    update::RuleStore m_rules;
    creator::CreatorLists m_lists;
    creator::CreatorDocument m_doc;
    creator::CreatorSettings m_settings;
    QString m_html;  // rtbTemp2HTML: the last listing built
    // The saved auction of a Post Now that did not go out: the next try
    // writes it again rather than another.
    qint64 m_unsentId = 0;
    std::function<void(const QUrl&)> m_openUrl;
    bool m_activated = false;
    bool m_editing = false;
    QString m_warnedTitle;   // the last title warned of as too long
    bool m_showing = false;  // the controls are being written: no change is the user's
    int m_lastTab = kChooserTab;

    // What each kind of control holds of the document.
    std::vector<std::pair<QLineEdit*, QString*>> m_texts;
    std::vector<std::pair<QCheckBox*, bool*>> m_checks;
    std::vector<std::pair<QComboBox*, QString*>> m_comboTexts;
    std::vector<std::pair<QComboBox*, int*>> m_comboRows;
    std::vector<std::pair<QListWidget*, QList<int>*>> m_selections;

    QTabWidget* m_SSTab1 = nullptr;
    QLabel* m_lblStatus = nullptr;
    QPushButton* m_cmdSave = nullptr;
    QPushButton* m_cmdPreviewAuction = nullptr;
    QPushButton* m_cmdPostNow = nullptr;
    QPushButton* m_cmdToOutbox = nullptr;
    QPushButton* m_cmdExit = nullptr;
    QMenu* m_mnuTemplates = nullptr;
    std::array<QAction*, 3> m_mnuPost{};  // mnuAPost, mnuSellPage, mnuReviewPage
    QAction* m_mnuUAWF = nullptr;
    QMenu* m_mnuFont = nullptr;

    // The chooser.
    std::array<QRadioButton*, 4> m_optACChoice{};
    QStackedWidget* m_chooserPages = nullptr;
    QListWidget* m_lstUserTemp = nullptr;
    QListWidget* m_lstDraft = nullptr;
    QListWidget* m_lstOldAuction = nullptr;
    std::array<QListWidget*, 4> m_details{};  // lstUTDetails, lstADDetails, last, lstOADetails
    std::array<QRadioButton*, 2> m_OptDSort{};
    std::array<QRadioButton*, 2> m_OptOASort{};
    QPushButton* m_cmdLoadAuction = nullptr;
    QPushButton* m_cmdLoadDefault = nullptr;
    QCheckBox* m_chkGo = nullptr;
    QCheckBox* m_chkOverwrite = nullptr;
    QLabel* m_lblAuctionName = nullptr;
    QLabel* m_lblAuctionItemData = nullptr;
    QLabel* m_lblAuctionType = nullptr;

    // The editing tabs.
    QLineEdit* m_txtInventoryID = nullptr;
    QLineEdit* m_txtItemTitle = nullptr;
    QLabel* m_lblTitleLength = nullptr;
    QPlainTextEdit* m_txtDescription = nullptr;
    QLineEdit* m_txtQuantity = nullptr;
    QLineEdit* m_txtShipping = nullptr;
    QLineEdit* m_txtInsurance = nullptr;
    std::vector<QLineEdit*> m_moneyBoxes;
    std::array<QLabel*, 3> m_lblRequired{};
    std::array<QLabel*, 9> m_lblRequiredeBay{};
    QLabel* m_lblQuantity = nullptr;
    QLabel* m_lblShipCost = nullptr;
    QLabel* m_lblShipInsurance = nullptr;
    QComboBox* m_cmbPictureLink = nullptr;
    QListWidget* m_lstPictureLink = nullptr;
    std::array<QPushButton*, 2> m_cmdMoveLink{};  // up, down
    QComboBox* m_cmbEbayPicIconActivate = nullptr;
    QComboBox* m_cmbEbayGallery = nullptr;
    QCheckBox* m_chkEbayGallery = nullptr;
    QListWidget* m_lstTemplateStyle = nullptr;
    std::vector<QLabel*> m_imgTemplatePreview;
    std::array<QComboBox*, 3> m_colourBoxes{};  // cmbTableBGColor, cmbThemeColor, cmbFontColor
    std::array<QLabel*, 3> m_txtColor{};
    QComboBox* m_cmbFontType = nullptr;
    QLabel* m_lblFontType = nullptr;
    QComboBox* m_cmbBGImageLink = nullptr;
    QComboBox* m_cmbEbayCategory = nullptr;
    QLabel* m_lbleBayCat = nullptr;
    QLineEdit* m_txtEbayTitle = nullptr;
    QListWidget* m_lstEbayGiftIcon = nullptr;
    QListWidget* m_lstEbayShippingPref = nullptr;
    std::array<QRadioButton*, 3> m_optEbayWorldShipping{};
    QListWidget* m_lstEbayShiptoCountries = nullptr;
    QCheckBox* m_chkbillpointIPAccepted = nullptr;
    std::array<QLineEdit*, 3> m_ipBoxes{};  // txtipShippingFee, txtipShippingXFee, txtipTax
    QListWidget* m_lstipTaxState = nullptr;
    QLabel* m_lblipReturnPolicy = nullptr;
    QPushButton* m_cmdEditPolicy = nullptr;
    std::array<QComboBox*, 2> m_cmbProductDetails{};
    std::array<QComboBox*, 5> m_cmbTransaction{};
};

}  // namespace lw::ui
