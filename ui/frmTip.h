// SPDX-License-Identifier: GPL-3.0-or-later
// The tip of the day: one random tip from the shipped data/tipofday.txt, the
// "Show Tips at Startup" check box bound to its setting, Next Tip and Close.
// Controls: lblTipText, chkLoadTipsAtStartup, cmdNextTip, cmdOK.
#pragma once

#include <QDialog>
#include <QStringList>

class QCheckBox;
class QLabel;

namespace lw::ui {

class frmTip : public QDialog {
    Q_OBJECT
public:
    explicit frmTip(QWidget* parent = nullptr);

    // The tip on screen, as its position in the file's tips; -1 when there is none.
    int CurrentTip() const { return m_current; }

public Q_SLOTS:
    void cmdNextTip_Click();
    void cmdOK_Click();
    void chkLoadTipsAtStartup_Click();

private:
    QStringList m_tips;
    int m_current = -1;
    QLabel* m_lblTipText = nullptr;
    QCheckBox* m_chkLoadTipsAtStartup = nullptr;
};

}  // namespace lw::ui
