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
#include <QSignalBlocker>
#include <QSplitter>
#include <QTimer>
#include <QTreeWidget>
#include <QTreeWidgetItemIterator>
#include <QVBoxLayout>

#include "core/session.h"
#include "core/store.h"
#include "tasks/task_model.h"
#include "tasks/task_tree.h"
#include "ui/qt_ui.h"
#include "ui/task_panels.h"
#include "ui/task_pictures.h"

namespace lw::ui {

namespace {

// What a tree node carries besides its text.
constexpr int kKeyRole = Qt::UserRole;
constexpr int kPictureRole = Qt::UserRole + 1;
constexpr int kFolderRole = Qt::UserRole + 2;

// The site of the shipped rules, whose partner rows the address test reads.
constexpr int kSiteFlag = 0;

const QString kTaskTitle = QStringLiteral("Task Manager");

QString CurrentUser() {
    return core::CurrentSession().CurrentUser;
}

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
    // A long title is cut in its middle, so that a winner's name at the end
    // of the row stays in view; the whole row is its tip.
    m_lstToAuctions->setTextElideMode(Qt::ElideMiddle);
    m_lstToAuctions->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
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
    m_panels = new TaskPanels(
        m_db, [this] { return SelectedItem(); }, scroll);
    scroll->setWidget(m_panels);

    m_split->addWidget(items);
    m_split->addWidget(m_ToDo1);
    m_split->addWidget(scroll);
    // The panel takes most of any room the window gains or loses, the item
    // list and the tree a share each, so that a small window still shows a
    // panel whole.
    m_split->setStretchFactor(0, 1);
    m_split->setStretchFactor(1, 1);
    m_split->setStretchFactor(2, 4);
    m_split->setSizes({250, 240, 590});

    connect(m_chkToDoAuctions, &QCheckBox::clicked, this, &TaskManagerTab::chkToDoAuctions_MouseUp);
    connect(m_chkToDoBids, &QCheckBox::clicked, this, &TaskManagerTab::chkToDoBids_MouseUp);
    connect(m_lstFilters, &QComboBox::activated, this, &TaskManagerTab::lstFilters_Click);
    connect(m_lstToAuctions, &QListWidget::currentRowChanged, this,
            &TaskManagerTab::lstToAuctions_Click);
    connect(m_ToDo1, &QTreeWidget::currentItemChanged, this, &TaskManagerTab::ToDo1_NodeClick);
    connect(m_ToDo1, &QTreeWidget::itemDoubleClicked, this, &TaskManagerTab::ToDo1_DblClick);
    connect(m_ToDo1, &QTreeWidget::itemExpanded, this, &TaskManagerTab::FolderToggled);
    connect(m_ToDo1, &QTreeWidget::itemCollapsed, this, &TaskManagerTab::FolderToggled);
    connect(m_cmdRemoveToDo, &QPushButton::clicked, this, &TaskManagerTab::cmdRemoveToDo_Click);
    connect(m_panels, &TaskPanels::Saved, this, &TaskManagerTab::AfterSave);
    connect(m_panels, &TaskPanels::RecordChanged, this, &TaskManagerTab::RefreshTaskIcons);
    connect(m_panels, &TaskPanels::NodeWanted, this, [this](const QString& key) {
        if (QTreeWidgetItem* node = Node(key)) {
            m_ToDo1->setCurrentItem(node);
        }
    });

    ShowNoPendingTasks();
}

TaskManagerTab::~TaskManagerTab() = default;

bool TaskManagerTab::SalesSide() const {
    return m_chkToDoAuctions->isChecked();
}

tasks::Side TaskManagerTab::CurrentSide() const {
    return SalesSide() ? tasks::Side::Sales : tasks::Side::Bids;
}

void TaskManagerTab::SetFileOpener(std::function<bool(const QString&)> opener) {
    m_panels->SetFileOpener(std::move(opener));
}

void TaskManagerTab::ShowTaskPanel(int index) {
    m_panels->ShowTaskPanel(index);
}

void TaskManagerTab::ShowNoPendingTasks() {
    m_lblToDoRecordCount->setText(QStringLiteral("(0)"));
    m_ToDo1->setEnabled(false);
    m_cmdRemoveToDo->setEnabled(false);
    ShowTaskPanel(tasks::NoPendingTasksPanel(CurrentSide()).index);
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

void TaskManagerTab::RebuildTaskView() {
    if (SalesSide()) {
        BuildSalesTree();
    } else {
        BuildBidsTree();
    }
}

void TaskManagerTab::BuildSalesTree() {
    BuildTree(tasks::Side::Sales);
}

void TaskManagerTab::BuildBidsTree() {
    BuildTree(tasks::Side::Bids);
}

void TaskManagerTab::BuildTree(tasks::Side side) {
    // A read that fails shows an empty tree and list, which the panel of
    // the empty side covers.
    std::vector<tasks::TaskNode> nodes;
    QStringList filters;
    try {
        nodes = tasks::TaskTree(m_db(), side);
        filters = tasks::TaskFilters(m_db(), CurrentUser(), side);
    } catch (const std::exception&) {
        nodes.clear();
        filters.clear();
    }
    m_ToDo1->setUpdatesEnabled(false);
    {
        const QSignalBlocker quietList(m_lstToAuctions);
        const QSignalBlocker quietTree(m_ToDo1);
        m_lstToAuctions->clear();
        m_ToDo1->clear();
        const QColor ground = m_ToDo1->palette().color(QPalette::Base);
        for (const tasks::TaskNode& n : nodes) {
            QTreeWidgetItem* parent = n.relative.isEmpty() ? nullptr : Node(n.relative);
            auto* node =
                parent != nullptr ? new QTreeWidgetItem(parent) : new QTreeWidgetItem(m_ToDo1);
            node->setText(0, n.description);
            node->setToolTip(0, n.description);
            node->setData(0, kKeyRole, n.key);
            node->setData(0, kPictureRole, n.startImage);
            node->setData(0, kFolderRole, n.isFolder);
            node->setIcon(0, TaskIcon(n.startImage, ground));
        }
    }
    // Every node open, the root too: its tasks are what the page is for.
    m_ToDo1->expandAll();
    m_ToDo1->setUpdatesEnabled(true);
    SelectNodeQuietly(tasks::kTaskRoot.toString());

    m_lstFilters->clear();
    m_lstFilters->addItems(filters);
    m_lstFilters->setCurrentIndex(filters.isEmpty() ? -1 : 0);
    FillItemList(filters.value(0));
}

void TaskManagerTab::lstFilters_Click() {
    FillItemList(m_lstFilters->currentText());
}

void TaskManagerTab::FillItemList(const QString& filterName) {
    tasks::ItemList list;
    list.recordCount = QStringLiteral("(0)");
    if (!filterName.isEmpty()) {
        try {
            tasks::ListScope scope;
            scope.side = CurrentSide();
            scope.userName = CurrentUser();
            scope.siteCorrection = core::CurrentSession().SiteCorrection;
            list = tasks::FillItemList(m_db(), scope, filterName);
        } catch (const std::exception&) {
            list = {};
            list.recordCount = QStringLiteral("(0)");
        }
    }
    {
        const QSignalBlocker quiet(m_lstToAuctions);
        m_lstToAuctions->clear();
        for (const tasks::ItemListRow& row : list.rows) {
            auto* line = new QListWidgetItem(row.text, m_lstToAuctions);
            line->setToolTip(row.text);
            if (!row.itemNumber.isEmpty()) {
                line->setData(Qt::UserRole, row.itemNumber);
            }
        }
    }
    if (list.Empty()) {
        if (m_lstToAuctions->count() == 0) {
            m_lstToAuctions->addItem(tasks::NoPendingTasksRow());
        }
        ShowNoPendingTasks();
        return;
    }
    m_lblToDoRecordCount->setText(list.recordCount);
    m_ToDo1->setEnabled(true);
    m_cmdRemoveToDo->setEnabled(true);
    {
        const QSignalBlocker quiet(m_lstToAuctions);
        m_lstToAuctions->setCurrentRow(0);
    }
    SelectNodeQuietly(tasks::kTaskSummary.toString());
    lstToAuctions_Click();
}

std::optional<tasks::SelectedItem> TaskManagerTab::SelectedItem() const {
    const QListWidgetItem* row = m_lstToAuctions->currentItem();
    if (row == nullptr || m_lblToDoRecordCount->text() == QLatin1String("(0)")) {
        return std::nullopt;
    }
    const QString item = row->data(Qt::UserRole).toString();
    if (item.isEmpty()) {
        return std::nullopt;
    }
    tasks::SelectedItem selected = tasks::SelectionFromRow(CurrentSide(), row->text(), item);
    selected.userName = CurrentUser();
    return selected;
}

void TaskManagerTab::lstToAuctions_Click() {
    ShowSelectedTask();
    RefreshTaskIcons();
}

void TaskManagerTab::ToDo1_NodeClick() {
    ShowSelectedTask();
}

void TaskManagerTab::ShowSelectedTask() {
    tasks::TaskDispatch dispatch;
    try {
        dispatch = tasks::ShowSelectedTask(m_db(), CurrentSide(), SelectedNodeKey(),
                                           m_lblToDoRecordCount->text());
    } catch (const std::exception&) {
        return;
    }
    const std::optional<tasks::SelectedItem> item = SelectedItem();
    if (dispatch.panel == tasks::TaskPanel::NoPendingTasks || !item) {
        ShowNoPendingTasks();
        return;
    }
    if (!m_panels->ShowTask(dispatch, *item)) {
        return;
    }
    if (!dispatch.focus.isEmpty()) {
        if (auto* control = m_panels->findChild<QWidget*>(dispatch.focus)) {
            control->setFocus(Qt::OtherFocusReason);
        }
    }
}

void TaskManagerTab::RefreshTaskIcons() {
    const std::optional<tasks::SelectedItem> item = SelectedItem();
    if (!item) {
        return;
    }
    std::vector<tasks::TaskPicture> pictures;
    try {
        pictures = tasks::RefreshTaskIcons(m_db(), CurrentUser(), kSiteFlag, *item);
    } catch (const std::exception&) {
        // The tree keeps the pictures it shows; the next selection reads afresh.
        return;
    }
    const QColor ground = m_ToDo1->palette().color(QPalette::Base);
    for (const tasks::TaskPicture& task : pictures) {
        if (QTreeWidgetItem* node = Node(task.key)) {
            node->setData(0, kPictureRole, task.picture);
            node->setIcon(0, TaskIcon(task.picture, ground));
        }
    }
}

void TaskManagerTab::CompleteIfRemovalTask(const QString& code) {
    const std::optional<tasks::SelectedItem> item = SelectedItem();
    if (!item) {
        return;
    }
    bool finished = false;
    RunReported(kTaskTitle, [&] {
        finished = tasks::CompleteIfRemovalTask(m_db(), CurrentUser(), *item, code);
    });
    if (finished) {
        RebuildTaskView();
    }
}

void TaskManagerTab::cmdRemoveToDo_Click() {
    const std::optional<tasks::SelectedItem> item = SelectedItem();
    if (!item) {
        return;
    }
    if (RunReported(kTaskTitle, [&] { tasks::RemoveSelectedFromTasks(m_db(), *item); })) {
        RebuildTaskView();
    }
}

void TaskManagerTab::AfterSave(const tasks::SaveOutcome& outcome) {
    RefreshTaskIcons();
    if (outcome.removalCode) {
        const int rows = m_lstToAuctions->count();
        CompleteIfRemovalTask(*outcome.removalCode);
        // A finished item took the view back to the first row and its summary.
        if (m_lstToAuctions->count() != rows) {
            return;
        }
    }
    if (outcome.selectNode) {
        if (QTreeWidgetItem* node = Node(*outcome.selectNode)) {
            m_ToDo1->setCurrentItem(node);
        }
    }
}

// ------------------------------------------------------------------ tree nodes

QTreeWidgetItem* TaskManagerTab::Node(const QString& key) const {
    for (QTreeWidgetItemIterator it(m_ToDo1); *it != nullptr; ++it) {
        if ((*it)->data(0, kKeyRole).toString().compare(key, Qt::CaseInsensitive) == 0) {
            return *it;
        }
    }
    return nullptr;
}

QString TaskManagerTab::SelectedNodeKey() const {
    const QTreeWidgetItem* node = m_ToDo1->currentItem();
    return node == nullptr ? QString() : node->data(0, kKeyRole).toString();
}

void TaskManagerTab::SelectNodeQuietly(const QString& key) {
    const QSignalBlocker quiet(m_ToDo1);
    m_ToDo1->setCurrentItem(Node(key));
}

// ------------------------------------------------------------------ tree pictures

void TaskManagerTab::ToDo1_DblClick(QTreeWidgetItem* node) {
    if (node != nullptr && node->data(0, kFolderRole).toBool()) {
        node->setExpanded(!node->isExpanded());
    }
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
