// SPDX-License-Identifier: GPL-3.0-or-later
// The general dialog, one window with several forms of which one shows at a
// time: form 2, the category browser of the auction creator; form 5, the
// word that a post went out; form 8, the creator's save dialog; form 9, the
// item cost and shipping figures of a sale; and the about form. A form only shows and reads its
// boxes; the rows are read and written by views/ and creator/, never here by SQL of its own.
#pragma once

#include <QDialog>
#include <QString>
#include <array>
#include <functional>
#include <optional>
#include <vector>

#include "creator/category_directory.h"
#include "creator/creator_document.h"

class QCheckBox;
class QComboBox;
class QGroupBox;
class QLabel;
class QLineEdit;
class QListWidget;
class QPushButton;
class QRadioButton;
class QTabWidget;

namespace lw::core {
class Database;
}

namespace lw::ui {

class frmGeneral : public QDialog {
    Q_OBJECT
public:
    enum Form { CategoryForm = 2, PostedForm = 5, SaveForm = 8, ItemCostForm = 9, AboutForm = 100 };

    // The posted, item cost and about forms.
    explicit frmGeneral(Form form, QWidget* parent = nullptr);
    // The category browser and the save dialog, which read the database.
    frmGeneral(Form form, core::Database& db, QWidget* parent = nullptr);

    Form CurrentForm() const { return m_form; }

    // Form 9: the three money boxes, as shown and as typed.
    void SetItemCostValues(const QString& itemCost, const QString& orderShipping,
                           const QString& insuranceCost);
    QString ItemCostText() const;
    QString OrderShippingText() const;
    QString InsuranceCostText() const;

    // Form 5: the words shown.
    void SetMessage(const QString& text);
    // Form 5 as the warning that the title for the site was cut: its
    // caption and words, and the setting its check clears
    // (TitleTruncationWarningOff rather than AuctionConfirmOff).
    void SetTitleTruncated();

    // Form 2: the category chosen by Select; nothing before.
    std::optional<creator::CategoryListRow> SelectedCategory() const { return m_selected; }

    // Form 8: what OK saves: the kind, the name, and the row overwritten.
    creator::SaveRequest SaveChoice() const;
    // Form 8 opened with that kind chosen (kDraft, kTemplate or kDefault).
    void ChooseSaveKind(const QString& type);

public Q_SLOTS:
    void cmdOK_Click();
    void cmdCancel_Click();

    // Form 2.
    void lstCategoryNames_Click();
    void lstCategoryItems_Click();
    void lstCategorys_Click();
    void lstSearchCategories_Click();
    void lstSearchMatches_Click();
    void cmdSearchCategories_Click();
    void cmdAddToFavorites_Click();
    void cmdSelectCategory_Click();
    void cmdCancelCategory_Click();

    // Form 8.
    void optSaveAuction_Click();
    void cmbName_Change();

private:
    QWidget* BuildItemCostForm();
    QWidget* BuildAboutForm();
    QWidget* BuildPostedForm();
    QWidget* BuildCategoryForm();
    QWidget* BuildSaveForm();
    void ShowBrowser();
    void Guarded(const std::function<void()>& work);
    QComboBox* SaveNameBox() const;
    // The row of the kind chosen whose name is the one typed, case-blind.
    const creator::ChooserRow* MatchingRow() const;

    Form m_form;
    core::Database* m_db = nullptr;
    QPushButton* m_cmdOK = nullptr;

    // Form 2.
    creator::CategoryBrowser m_browser;
    std::optional<creator::CategoryListRow> m_selected;
    QTabWidget* m_tabCategories = nullptr;
    QListWidget* m_lstCategoryNames = nullptr;
    QListWidget* m_lstCategoryItems = nullptr;
    QListWidget* m_lstCategorys = nullptr;
    QComboBox* m_lstSearchCategories = nullptr;
    QListWidget* m_lstSearchTerms = nullptr;
    QListWidget* m_lstSearchMatches = nullptr;  // the matches of lstSearchCategories, in view
    QCheckBox* m_chkAndSearch = nullptr;
    QGroupBox* m_fraSearch = nullptr;
    QLineEdit* m_txtSelCal = nullptr;
    QLineEdit* m_txtSelCalNumber = nullptr;
    QLineEdit* m_txtHiddenCategoryName = nullptr;

    // Form 8.
    std::array<QRadioButton*, 3> m_optSaveAuction{};
    QComboBox* m_cmbTemplateName = nullptr;
    QComboBox* m_cmbDraftName = nullptr;
    QLabel* m_lblSaveName = nullptr;
    std::vector<creator::ChooserRow> m_templates;
    std::vector<creator::ChooserRow> m_drafts;

    QLineEdit* m_txtItemCost = nullptr;
    QLineEdit* m_txtOrderShipping = nullptr;
    QLineEdit* m_txtInsuranceCost = nullptr;

    // Form 5.
    QLabel* m_lblPosted = nullptr;
    QCheckBox* m_chkTitleTruncate = nullptr;
    // The Options setting set to -1 when the check is cleared.
    QString m_offSetting = QStringLiteral("AuctionConfirmOff");
};

// The whole mnuItemCost command for the current user's sale itemNumber: the
// row's ItemCost, OrderShipping and InsuranceCost shown (Null as "$0.00")
// under the title "Item #: " + number, written back on OK, nothing written
// on Cancel. True when the row was written. A missing row or a failed store
// says so through the Ui and writes nothing.
bool EditItemCost(core::Database& db, const QString& itemNumber, QWidget* parent);

// Form 5 after a post from the creator: "Auction Posted Successfully" with
// the new item's number; clearing its check stops it from showing again
// (AuctionConfirmOff).
void ShowPosted(const QString& itemNumber, QWidget* parent);

// Form 5 when the title typed is longer than the site takes: "Auction Title
// Truncated", unless its warning was turned off (TitleTruncationWarningOff).
// True when it was shown.
bool ShowTitleTruncated(QWidget* parent);

// The about box: the program's name, its version, what it is for, its
// licence and the versions of the libraries it runs on.
void ShowAbout(QWidget* parent);
// "Built on Qt 6.4.2, SQLite 3.40.1 and libcurl 7.88.1.", the versions the
// program runs with.
QString LibraryVersions();

}  // namespace lw::ui
