// SPDX-License-Identifier: GPL-3.0-or-later
// The preferences window: the current user's addresses, site account, mail,
// connection, listing and shipping defaults, task-list rules, views and
// time-left refresh, in tabs. Every control carries the system's name as its
// objectName; the field array txtUserPref is named "txtUserPref<index>"
// ("txtUserPref0" to "txtUserPref33") and each of its line edits also holds
// its index in the property "index". The handlers only move values between
// the controls and admin/preferences; messages go through core::CurrentUi().
#pragma once

#include <QDialog>
#include <array>

#include "admin/preferences.h"
#include "core/session.h"

class QButtonGroup;
class QCheckBox;
class QComboBox;
class QLabel;
class QLineEdit;
class QListWidget;
class QPushButton;
class QRadioButton;
class QSpinBox;
class QTabWidget;

namespace lw::ui {

class frmUserPreferences : public QDialog {
    Q_OBJECT
public:
    explicit frmUserPreferences(QWidget* parent = nullptr);

    // What the last successful Update wrote to Global, for the main window's timer.
    core::TimeLeftTimer LastTimeLeftTimer() const { return m_timer; }

public Q_SLOTS:
    void cmdUpdate_Click();
    void cmdReset_Click();
    void cmdCancel_Click();
    void cmdChangePassword_Click();
    void cmdUpdatePassword_Click();
    void cmdCancelPasswordChange_Click();
    void cmdUseTolvane_Click();
    void optConnection_Click(int index);
    void chkViewArchiveGroup_Click();
    void chkViewCurrentGroup_Click();
    void lstAOrder_Click();
    void lstCOrder_Click();
    void lstShippingPref_Click();
    void chkTracking_Click();
    // The checks on leaving field index; true when the field keeps the focus.
    bool txtUserPref_LostFocus(int index);
    void reject() override;

Q_SIGNALS:
    // Update wrote everything: the main window applies the timer (enabled or
    // not) and refreshes its list for the view it shows.
    void TimeLeftTimerChanged(const lw::core::TimeLeftTimer& timer);
    void PreferencesSaved();

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    QWidget* BuildAddressTab();
    QWidget* BuildAccountTab();
    QWidget* BuildConnectionTab();
    QWidget* BuildListingTab();
    QWidget* BuildShippingTab();
    QWidget* BuildTasksTab();
    QWidget* BuildViewsTab();
    QWidget* BuildPasswordTab();
    QLineEdit* Field(int index) const { return m_field[static_cast<size_t>(index)]; }

    void SetTabOrder();
    void FillLists();
    void ShowPreferences(const admin::Preferences& prefs);
    admin::Preferences CollectPreferences() const;
    void SetProxyVisible(bool visible);
    void EnableArchiveControls(bool on);
    void EnableCurrentControls(bool on);
    void EndPasswordChange();

    admin::PreferenceLists m_lists;
    core::TimeLeftTimer m_timer;
    bool m_checking = false;
    int m_pendingCheck = -1;  // field whose leave check waits for the focus to settle
    bool m_filling = false;

    std::array<QLineEdit*, admin::kUserPrefCount> m_field{};
    QTabWidget* m_tabs = nullptr;
    QWidget* m_passwordTab = nullptr;
    std::array<QRadioButton*, 5> m_optConnection{};
    QButtonGroup* m_connectionGroup = nullptr;
    QLabel* m_lblProxyTitle = nullptr;
    QLabel* m_lblProxyServer = nullptr;
    QLabel* m_lblProxyPort = nullptr;
    QLineEdit* m_txtProxyServer = nullptr;
    QLineEdit* m_txtProxyPort = nullptr;
    QSpinBox* m_spnConnections = nullptr;
    QComboBox* m_cmbCountryShipping = nullptr;
    QComboBox* m_cmbCountryPayment = nullptr;
    QComboBox* m_cmbSaleOverPref = nullptr;
    QComboBox* m_cmbWinningBidOver = nullptr;
    QComboBox* m_cmbeBayCountryDefault = nullptr;
    QListWidget* m_lstRegions = nullptr;
    QListWidget* m_lstDuration = nullptr;
    QListWidget* m_lstShippingPref = nullptr;
    QListWidget* m_lstPaymentPref = nullptr;
    QListWidget* m_lstShippingRegions = nullptr;
    QCheckBox* m_chkBillpoint = nullptr;
    std::array<QRadioButton*, 2> m_optShipAbroad{};
    QRadioButton* m_optUSPlus = nullptr;
    QCheckBox* m_chkViewArchiveGroup = nullptr;
    QLineEdit* m_txtAInterval = nullptr;
    QListWidget* m_lstAOrder = nullptr;
    QCheckBox* m_chkAAscending = nullptr;
    QCheckBox* m_chkADescending = nullptr;
    QCheckBox* m_chkViewCurrentGroup = nullptr;
    QLineEdit* m_txtCInterval = nullptr;
    QListWidget* m_lstCOrder = nullptr;
    QCheckBox* m_chkCAscending = nullptr;
    QCheckBox* m_chkCDescending = nullptr;
    QCheckBox* m_chkAutoUpdateTimeLeft = nullptr;
    QListWidget* m_lstTimeLeftOptions = nullptr;
    QCheckBox* m_chkTracking = nullptr;
    QPushButton* m_cmdUpdate = nullptr;
    QPushButton* m_cmdReset = nullptr;
    QPushButton* m_cmdCancel = nullptr;
    QPushButton* m_cmdChangePassword = nullptr;
    QPushButton* m_cmdUseTolvane = nullptr;
    std::array<QLineEdit*, 3> m_txtPassword{};
};

}  // namespace lw::ui
