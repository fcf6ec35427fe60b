// SPDX-License-Identifier: GPL-3.0-or-later
// The Task Manager tab over the task library: which rows the tree, the
// filter list and the item list hold, which panel a node opens and which
// picture a task shows are the library's; this file only binds them to the
// controls.
#include "ui/task_manager_tab.h"

#include <QCheckBox>
#include <QComboBox>
#include <QEvent>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QLabel>
#include <QListWidget>
#include <QPushButton>
#include <QScrollArea>
#include <QSplitter>
#include <QTimer>
#include <QTreeWidget>
#include <QTreeWidgetItemIterator>
#include <QVBoxLayout>

#include "ui/task_panels.h"
#include "ui/task_pictures.h"

namespace lw::ui {

namespace {

// What a tree node carries besides its text.
constexpr int kKeyRole = Qt::UserRole;
constexpr int kPictureRole = Qt::UserRole + 1;

}  // namespace

TaskManagerTab::TaskManagerTab(std::function<core::Database&()> db, QWidget* parent)
    : QWidget(parent), m_db(std::move(db)) {
    setObjectName(QStringLiteral("tabTaskManager"));
    auto* layout = new QHBoxLayout(this);
    m_split = new QSplitter(Qt::Horizontal, this);
    m_split->setObjectName(QStringLiteral("splTasks"));
    m_split->setChildrenCollapsible(false);
    layout->addWidget(m_split);

    auto* items = new QWidget(m_split);
    items->setObjectName(QStringLiteral("fraToDoItems"));
    auto* column = new QVBoxLayout(items);
    column->setContentsMargins(0, 0, 0, 0);
    auto* side = new QHBoxLayout;
    m_chkToDoAuctions = new QCheckBox(QStringLiteral("Sa&les"), items);
    m_chkToDoAuctions->setObjectName(QStringLiteral("chkToDoAuctions"));
    m_chkToDoAuctions->setChecked(true);
    m_chkToDoBids = new QCheckBox(QStringLiteral("B&ids"), items);
    m_chkToDoBids->setObjectName(QStringLiteral("chkToDoBids"));
    side->addWidget(m_chkToDoAuctions);
    side->addWidget(m_chkToDoBids);
    side->addStretch(1);
    column->addLayout(side);

    auto* filterCaption = new QLabel(QStringLiteral("Filte&r:"), items);
    m_lstFilters = new QComboBox(items);
    m_lstFilters->setObjectName(QStringLiteral("lstFilters"));
    m_lstFilters->setSizeAdjustPolicy(QComboBox::AdjustToMinimumContentsLengthWithIcon);
    m_lstFilters->setMinimumContentsLength(12);
    filterCaption->setBuddy(m_lstFilters);
    column->addWidget(filterCaption);
    column->addWidget(m_lstFilters);

    auto* count = new QHBoxLayout;
    m_lblToDoItems = new QLabel(QStringLiteral("Sales:"), items);
    m_lblToDoItems->setObjectName(QStringLiteral("lblToDoItems"));
    m_lblToDoRecordCount = new QLabel(QStringLiteral("(0)"), items);
    m_lblToDoRecordCount->setObjectName(QStringLiteral("lblToDoRecordCount"));
    count->addWidget(m_lblToDoItems);
    count->addWidget(m_lblToDoRecordCount);
    count->addStretch(1);
    column->addLayout(count);
    m_lstToAuctions = new QListWidget(items);
    m_lstToAuctions->setObjectName(QStringLiteral("lstToAuctions"));
    m_lstToAuctions->setAccessibleName(QStringLiteral("Items with pending tasks"));
    m_lstToAuctions->setTextElideMode(Qt::ElideRight);
    m_lblToDoItems->setBuddy(m_lstToAuctions);
    column->addWidget(m_lstToAuctions, 1);
    m_cmdRemoveToDo = new QPushButton(QStringLiteral("Re&move from Tasks"), items);
    m_cmdRemoveToDo->setObjectName(QStringLiteral("cmdRemoveToDo"));
    column->addWidget(m_cmdRemoveToDo);

    m_ToDo1 = new QTreeWidget(m_split);
    m_ToDo1->setObjectName(QStringLiteral("ToDo1"));
    m_ToDo1->setAccessibleName(QStringLiteral("Tasks"));
    m_ToDo1->setHeaderHidden(true);
    m_ToDo1->setColumnCount(1);
    m_ToDo1->setRootIsDecorated(true);
    // Only folders open and close on a double click, by the task rows.
    m_ToDo1->setExpandsOnDoubleClick(false);

    auto* scroll = new QScrollArea(m_split);
    scroll->setObjectName(QStringLiteral("scrToDo"));
    scroll->setWidgetResizable(true);
    scroll->setFrameShape(QFrame::NoFrame);
    scroll->setFocusPolicy(Qt::NoFocus);
    m_panels = new TaskPanels(scroll);
    scroll->setWidget(m_panels);

    m_split->addWidget(items);
    m_split->addWidget(m_ToDo1);
    m_split->addWidget(scroll);
    // The item list and the tree take what their texts need; the panel
    // takes the rest, and any room the window gains.
    m_split->setStretchFactor(0, 0);
    m_split->setStretchFactor(1, 0);
    m_split->setStretchFactor(2, 1);
    m_split->setSizes({250, 210, 600});

    connect(m_chkToDoAuctions, &QCheckBox::clicked, this, &TaskManagerTab::chkToDoAuctions_MouseUp);
    connect(m_chkToDoBids, &QCheckBox::clicked, this, &TaskManagerTab::chkToDoBids_MouseUp);
    connect(m_ToDo1, &QTreeWidget::itemDoubleClicked, this, &TaskManagerTab::ToDo1_DblClick);
    connect(m_ToDo1, &QTreeWidget::itemExpanded, this, &TaskManagerTab::FolderToggled);
    connect(m_ToDo1, &QTreeWidget::itemCollapsed, this, &TaskManagerTab::FolderToggled);

    ShowNoPendingTasks();
}

TaskManagerTab::~TaskManagerTab() = default;

bool TaskManagerTab::SalesSide() const {
    return m_chkToDoAuctions->isChecked();
}

void TaskManagerTab::ShowTaskPanel(int index) {
    m_panels->ShowTaskPanel(index);
}

void TaskManagerTab::ShowNoPendingTasks() {
    m_lblToDoRecordCount->setText(QStringLiteral("(0)"));
    m_ToDo1->setEnabled(false);
    m_cmdRemoveToDo->setEnabled(false);
    ShowTaskPanel(SalesSide() ? TaskPanels::kNoAuctionsPanel : TaskPanels::kNoBidsPanel);
}

// ------------------------------------------------------------------ side switch

void TaskManagerTab::chkToDoAuctions_MouseUp() {
    // The switch is a pair of boxes of which one is always set.
    m_chkToDoAuctions->setChecked(true);
    m_chkToDoBids->setChecked(false);
    m_lblToDoItems->setText(QStringLiteral("Sales:"));
    RebuildTaskView();
}

void TaskManagerTab::chkToDoBids_MouseUp() {
    m_chkToDoBids->setChecked(true);
    m_chkToDoAuctions->setChecked(false);
    m_lblToDoItems->setText(QStringLiteral("Bids:"));
    RebuildTaskView();
}

void TaskManagerTab::EnterTab() {
    RebuildTaskView();
}

void TaskManagerTab::RebuildTaskView() {
    m_stale = false;
    m_ToDo1->clear();
    m_lstFilters->clear();
    m_lstToAuctions->clear();
    ShowNoPendingTasks();
}

// ------------------------------------------------------------------ tree pictures

void TaskManagerTab::ToDo1_DblClick(QTreeWidgetItem* node) {
    if (node == nullptr || node->childCount() == 0) {
        return;
    }
    node->setExpanded(!node->isExpanded());
}

void TaskManagerTab::FolderToggled(QTreeWidgetItem* node) {
    const int picture = node->data(0, kPictureRole).toInt();
    if (picture != kClosedFolderPicture && picture != kOpenFolderPicture) {
        return;
    }
    const int shown = node->isExpanded() ? kOpenFolderPicture : kClosedFolderPicture;
    node->setData(0, kPictureRole, shown);
    node->setIcon(0, TaskIcon(shown, m_ToDo1->palette().color(QPalette::Base)));
}

void TaskManagerTab::RedrawPictures() {
    const QColor ground = m_ToDo1->palette().color(QPalette::Base);
    for (QTreeWidgetItemIterator it(m_ToDo1); *it != nullptr; ++it) {
        (*it)->setIcon(0, TaskIcon((*it)->data(0, kPictureRole).toInt(), ground));
    }
}

void TaskManagerTab::changeEvent(QEvent* event) {
    QWidget::changeEvent(event);
    if (event->type() == QEvent::PaletteChange || event->type() == QEvent::StyleChange) {
        QTimer::singleShot(0, this, [this] { RedrawPictures(); });
    }
}

}  // namespace lw::ui
