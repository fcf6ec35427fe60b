// SPDX-License-Identifier: GPL-3.0-or-later
// The panels of the task manager, the control array fraToDo: one panel in
// view at a time, each a frame over the selected item. This is where the
// panels' controls are made and named, where the rules of the controls
// themselves live (today's date into a date box when its box is ticked, the
// money boxes' reformat and total, the detail frames of a payment method),
// and where each panel's load and save handlers read and write the
// controls. What a load shows and what a save writes is the task library's
// (tasks/); this file never touches the database itself and lets no
// failure out of a handler.
#pragma once

#include <QStackedWidget>
#include <QString>
#include <functional>
#include <map>
#include <optional>

class QButtonGroup;
class QCheckBox;
class QComboBox;
class QLabel;
class QLineEdit;
class QPlainTextEdit;
class QPushButton;
class QRadioButton;
class QTextEdit;
class QWidget;

namespace lw::core {
class Database;
}

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

    explicit TaskPanels(QWidget* parent = nullptr);

    // ShowTaskPanel: fraToDo(index) becomes the only panel in view.
    void ShowTaskPanel(int index);
    // The index of the panel in view.
    int ShownPanel() const;
    // fraToDo(index); nullptr for an index the form has none of.
    PanelFrame* Frame(int index) const;

public Q_SLOTS:
    // The rules of the controls, as a click or a departure runs them.
    void lstPaymentMethods_Click();
    void chkDateCleared_Click();
    void lstShippingMethod_Click();
    void chkItemReceived_Click();
    void chkReceivedFeedback_Click();
    void chkEmailSent_Click();
    void chkEmailSent2_Click();
    void txtAddressState_LostFocus();
    void txtEmailSentDate_LostFocus();
    // txtTotalSale from the three boxes it adds up.
    void ComputeTotal();

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
    void BuildEmptyPanel(int index, const QString& heading, const QString& text);
    QLineEdit* MoneyBox(QWidget* parent, const QString& name, const QString& next = QString());
    void MoneyBoxLeft(QLineEdit* box);

    std::map<int, PanelFrame*> m_fraToDo;
    // The box that Enter moves on to, by money box.
    std::map<QLineEdit*, QString> m_moneyNext;

    // Payment.
    QComboBox* m_lstPaymentMethods = nullptr;
    QLineEdit* m_txtPayInfo0 = nullptr;
    QLineEdit* m_txtItemCost0 = nullptr;
    QLineEdit* m_txtItemCost1 = nullptr;
    QLabel* m_lblItemCost1 = nullptr;
    QLineEdit* m_txtSalesTax = nullptr;
    QLineEdit* m_txtShippingCost = nullptr;
    QLineEdit* m_txtTotalSale = nullptr;
    QPushButton* m_cmdComputeSalesTax = nullptr;
    std::map<int, QWidget*> m_frmPayment;
    QCheckBox* m_chkDateCleared = nullptr;
    QLineEdit* m_txtDateCleared = nullptr;
    // Shipping.
    QComboBox* m_lstShippingMethod = nullptr;
    QLineEdit* m_txtShippingDate = nullptr;
    // Item received.
    QCheckBox* m_chkItemReceived = nullptr;
    QLineEdit* m_txtReceivedDate = nullptr;
    // Feedback.
    QCheckBox* m_chkReceivedFeedback = nullptr;
    QLineEdit* m_txtReceivedFeedbackDate = nullptr;
    QLineEdit* m_txtReceivedFeedbackComment = nullptr;
    QButtonGroup* m_optReceivedFeedback = nullptr;
    // Yes-or-no entry and e-mail task.
    QCheckBox* m_chkEmailSent = nullptr;
    QLineEdit* m_txtEmailSentDate = nullptr;
    QCheckBox* m_chkEmailSent2 = nullptr;
    QLineEdit* m_txtSentDate = nullptr;
    QPushButton* m_cmdComposeEmail = nullptr;
    // Address.
    QLineEdit* m_txtAddressState = nullptr;
};

}  // namespace lw::ui
