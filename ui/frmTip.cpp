// SPDX-License-Identifier: GPL-3.0-or-later
// The tip window: a label for the tip and the setting's check box.
#include "ui/frmTip.h"

#include <QCheckBox>
#include <QFrame>
#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>
#include <QRandomGenerator>
#include <QVBoxLayout>

#include "admin/tips.h"

namespace lw::ui {

frmTip::frmTip(QWidget* parent) : QDialog(parent) {
    setObjectName(QStringLiteral("frmTip"));
    setWindowTitle(QStringLiteral("Tip of the Day"));

    auto* heading = new QLabel(QStringLiteral("<b>Did you know...</b>"), this);
    heading->setObjectName(QStringLiteral("lblTipTitle"));
    m_lblTipText = new QLabel(this);
    m_lblTipText->setObjectName(QStringLiteral("lblTipText"));
    m_lblTipText->setWordWrap(true);
    m_lblTipText->setAlignment(Qt::AlignLeft | Qt::AlignTop);
    m_lblTipText->setMinimumSize(380, 90);
    m_lblTipText->setTextInteractionFlags(Qt::TextSelectableByMouse);

    auto* panel = new QFrame(this);
    panel->setFrameShape(QFrame::StyledPanel);
    panel->setBackgroundRole(QPalette::Base);
    panel->setAutoFillBackground(true);
    auto* panelLayout = new QVBoxLayout(panel);
    panelLayout->addWidget(heading);
    panelLayout->addWidget(m_lblTipText, 1);

    m_chkLoadTipsAtStartup = new QCheckBox(QStringLiteral("&Show Tips at Startup"), this);
    m_chkLoadTipsAtStartup->setObjectName(QStringLiteral("chkLoadTipsAtStartup"));
    m_chkLoadTipsAtStartup->setChecked(admin::ShowTipsAtStartup());
    auto* next = new QPushButton(QStringLiteral("&Next Tip"), this);
    next->setObjectName(QStringLiteral("cmdNextTip"));
    next->setAutoDefault(false);
    auto* close = new QPushButton(QStringLiteral("&Close"), this);
    close->setObjectName(QStringLiteral("cmdOK"));
    close->setDefault(true);

    auto* bottom = new QHBoxLayout;
    bottom->addWidget(m_chkLoadTipsAtStartup);
    bottom->addStretch();
    bottom->addWidget(next);
    bottom->addWidget(close);

    auto* layout = new QVBoxLayout(this);
    layout->addWidget(panel, 1);
    layout->addLayout(bottom);

    connect(next, &QPushButton::clicked, this, &frmTip::cmdNextTip_Click);
    connect(close, &QPushButton::clicked, this, &frmTip::cmdOK_Click);
    connect(m_chkLoadTipsAtStartup, &QCheckBox::clicked, this, &frmTip::chkLoadTipsAtStartup_Click);

    m_tips = admin::LoadTips(admin::TipFilePath());
    next->setEnabled(m_tips.size() > 1);
    cmdNextTip_Click();
}

void frmTip::cmdNextTip_Click() {
    m_current =
        admin::PickTip(static_cast<int>(m_tips.size()), m_current, *QRandomGenerator::global());
    m_lblTipText->setText(m_current < 0 ? QStringLiteral("No tips are available.")
                                        : m_tips.at(m_current));
}

void frmTip::cmdOK_Click() {
    accept();
}

void frmTip::chkLoadTipsAtStartup_Click() {
    admin::SetShowTipsAtStartup(m_chkLoadTipsAtStartup->isChecked());
}

}  // namespace lw::ui
