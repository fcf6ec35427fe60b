// SPDX-License-Identifier: GPL-3.0-or-later
// The panels of the task manager, the control array fraToDo: one panel in
// view at a time, each a frame over the selected item. Here the panels'
// controls are made and named, and here their handlers live: each load
// asks the task library (tasks/) for the panel's values and puts them into
// the controls, each save reads the controls into the library's panel and
// hands it to the library's save, and each rule of a control (a ticked box
// dates itself, a money box reformats, a payment method shows its details)
// reads the controls, lets the library apply the rule and writes them back.
// This file never touches the database itself and lets no failure out of a
// handler.
#pragma once

#include <QStackedWidget>
#include <QString>
#include <functional>
#include <map>
#include <optional>

#include "tasks/panel_values.h"
#include "tasks/selected_item.h"

class QButtonGroup;
class QCheckBox;
class QComboBox;
class QLabel;
class QLineEdit;
class QPlainTextEdit;
class QPushButton;
class QTextEdit;

namespace lw::core {
class Database;
}
namespace lw::tasks {
struct AddressBoxes;
struct EmailTaskPanel;
struct EntryTaskPanel;
struct FeedbackPanel;
struct ItemReceivedPanel;
struct PaymentPanel;
struct ShippingPanel;
struct TaskDispatch;
}  // namespace lw::tasks

namespace lw::ui {

class PanelFrame;

class TaskPanels : public QStackedWidget {
    Q_OBJECT
public:
    // The indexes of fraToDo. 4, 10, 12, 13 and 14 are the ones the task
    // rows and the empty list name; the others are this form's own.
    enum Panel : int {
        kPaymentPanel = 0,
        kShippingPanel = 1,
        kItemReceivedPanel = 2,
        kNotesPanel = 3,
        kEntryPanel = 4,
        kItemInfoPanel = 5,
        kSummaryPanel = 6,
        kAddressPanel = 7,
        kPackingPanel = 8,
        kEmailPanel = 10,
        kFeedbackPanel = 12,
        kNoAuctionsPanel = 13,
        kNoBidsPanel = 14,
    };

    // db gives the window's connection; selected the item that the item
    // list's selection stands for, read afresh by every save.
    TaskPanels(std::function<core::Database&()> db,
               std::function<std::optional<tasks::SelectedItem>()> selected,
               QWidget* parent = nullptr);

    // ShowTaskPanel: fraToDo(index) becomes the only panel in view.
    void ShowTaskPanel(int index);
    // The index of the panel in view.
    int ShownPanel() const;
    // fraToDo(index); nullptr for an index the form has none of.
    PanelFrame* Frame(int index) const;

    // Loads the panel that a node opens for the item and shows it. False
    // when there was nothing to show (the record is gone, the node opens
    // nothing, the read failed); the panel in view then stays.
    bool ShowTask(const tasks::TaskDispatch& dispatch, const tasks::SelectedItem& item);

    // How the copy of a packing list is opened in a word processor;
    // QDesktopServices::openUrl of the file unless replaced. False when no
    // program took it.
    void SetFileOpener(std::function<bool(const QString&)> opener);

Q_SIGNALS:
    // A save ran: the caller refreshes the pictures, runs the removal rule
    // and selects the node that the outcome names.
    void Saved(const tasks::SaveOutcome& outcome);
    // A record changed outside a save (a packing list built or printed):
    // the pictures are to be refreshed.
    void RecordChanged();
    // The node of that key is to be selected, which opens its panel.
    void NodeWanted(const QString& key);

public Q_SLOTS:
    void cmdSavePaymentInfo_Click();
    void cmdComputeSalesTax_Click();
    void lstPaymentMethods_Click();
    void chkDateCleared_Click();
    void cmdSaveShippingInfo_Click();
    void lstShippingMethod_Click();
    void cmdSaveItemReceived_Click();
    void chkItemReceived_Click();
    void cmdSaveReceivedFeedback_Click();
    void chkReceivedFeedback_Click();
    void cmdComposeFeedback_Click();
    void cmdSaveNotes_Click();
    void cmdSaveAddress_Click();
    void cmdPasteAddressFromClipboard_Click();
    void txtAddressState_LostFocus();
    void cmdSaveEmailInfo_Click();
    void cmdComposeEmail_Click();
    void chkEmailSent2_Click();
    void cmdSaveToDoEmail_Click();
    void chkEmailSent_Click();
    void txtEmailSentDate_LostFocus();
    void cmdPrintPackingList_Click();
    void cmdSavePackingListPdf_Click();
    void cmdEditPackingList_Click();

protected:
    // The money boxes: a departure reformats and totals, Enter is swallowed
    // (and moves on from the boxes that lead to another).
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    PanelFrame* NewFrame(int index);
    void BuildPaymentPanel();
    void BuildShippingPanel();
    void BuildItemReceivedPanel();
    void BuildNotesPanel();
    void BuildEntryPanel();
    void BuildItemInfoPanel();
    void BuildSummaryPanel();
    void BuildAddressPanel();
    void BuildPackingPanel();
    void BuildEmailPanel();
    void BuildFeedbackPanel();
    void BuildEmptyPanel(tasks::Side side);
    QLineEdit* MoneyBox(QWidget* parent, const QString& name, const QString& next = QString());
    void MoneyBoxLeft(QLineEdit* box);

    // The loads: the panel's values from the library into the controls.
    bool LoadPanel(const tasks::TaskDispatch& dispatch, const tasks::SelectedItem& item);
    void BuildPackingDocument(const tasks::SelectedItem& item);
    // A save's work: the selected item, the library's save, then Saved.
    void RunSave(
        const std::function<tasks::SaveOutcome(core::Database&, const tasks::SelectedItem&)>& save);
    void SetFrameTitle(int index, const QString& title);

    // Each panel's controls as the library's panel, and back.
    tasks::PaymentPanel ReadPayment() const;
    void WritePayment(const tasks::PaymentPanel& panel);
    tasks::ShippingPanel ReadShipping() const;
    void WriteShipping(const tasks::ShippingPanel& panel);
    tasks::ItemReceivedPanel ReadItemReceived() const;
    void WriteItemReceived(const tasks::ItemReceivedPanel& panel);
    tasks::FeedbackPanel ReadFeedback() const;
    void WriteFeedback(const tasks::FeedbackPanel& panel);
    tasks::AddressBoxes ReadAddress() const;
    void WriteAddress(const tasks::AddressBoxes& boxes);
    tasks::EmailTaskPanel ReadEmailTask() const;
    void WriteEmailTask(const tasks::EmailTaskPanel& panel);
    tasks::EntryTaskPanel ReadEntryTask() const;
    void WriteEntryTask(const tasks::EntryTaskPanel& panel);

    // A control of this form by its name.
    QLineEdit* Line(const QString& name) const;
    QComboBox* Combo(const QString& name) const;
    QString TextOf(const QString& name) const;
    void SetText(const QString& name, const QString& text);

    std::function<core::Database&()> m_db;
    std::function<std::optional<tasks::SelectedItem>()> m_selected;
    std::function<bool(const QString&)> m_openFile;
    std::map<int, PanelFrame*> m_fraToDo;
    // The box that Enter moves on to, by money box.
    std::map<QLineEdit*, QString> m_moneyNext;

    QComboBox* m_lstPaymentMethods = nullptr;
    std::map<int, QWidget*> m_frmPayment;
    QLabel* m_lblItemCost1 = nullptr;
    QCheckBox* m_chkDateCleared = nullptr;
    QComboBox* m_lstShippingMethod = nullptr;
    QCheckBox* m_chkItemReceived = nullptr;
    QCheckBox* m_chkReceivedFeedback = nullptr;
    QButtonGroup* m_optReceivedFeedback = nullptr;
    QPushButton* m_cmdComposeFeedback = nullptr;
    QWidget* m_fraFeedbackType = nullptr;
    QPlainTextEdit* m_txtToDoNotes = nullptr;
    QPlainTextEdit* m_txtToDoPriorNotes = nullptr;
    QLabel* m_lblToDoPriorNotes = nullptr;
    QCheckBox* m_chkEmailSent = nullptr;
    QCheckBox* m_chkEmailSent2 = nullptr;
    QLabel* m_lblKey = nullptr;
    QLabel* m_lblEmailKey = nullptr;
    QLabel* m_lblEmailSentDate = nullptr;
    QLabel* m_txtEmailSentInstructions = nullptr;
    QWidget* m_frmShowMessage = nullptr;
    QPlainTextEdit* m_txtEmailMessage = nullptr;
    QPushButton* m_cmdComposeEmail = nullptr;
    QPushButton* m_cmdSaveEmailInfo = nullptr;
    QTextEdit* m_txtPackingList = nullptr;
};

}  // namespace lw::ui
