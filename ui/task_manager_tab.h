// SPDX-License-Identifier: GPL-3.0-or-later
// The content of the main window's "Task Manager" tab, left to right: the
// side switch chkToDoAuctions / chkToDoBids with lblToDoItems, the filter
// combo lstFilters, the item list lstToAuctions with its count
// lblToDoRecordCount, the task tree ToDo1 with its drawn pictures, and the
// panels fraToDo; cmdRemoveToDo below the list. The handlers keep the
// system's names and stay thin: they read the controls, call the task
// library (tasks/), and write the controls. None lets a failure out: each
// catches at its edge and tells it through core::CurrentUi(), or steps over
// it where the task manager always has (reads that show an empty list).
#pragma once

#include <QString>
#include <QWidget>
#include <functional>
#include <optional>

#include "tasks/panel_values.h"
#include "tasks/selected_item.h"

class QCheckBox;
class QComboBox;
class QLabel;
class QListWidget;
class QPushButton;
class QSplitter;
class QTreeWidget;
class QTreeWidgetItem;

namespace lw::core {
class Database;
}

namespace lw::ui {

class TaskPanels;

class TaskManagerTab : public QWidget {
    Q_OBJECT
public:
    // db gives the window's one connection, opened when first needed.
    explicit TaskManagerTab(std::function<core::Database&()> db, QWidget* parent = nullptr);
    ~TaskManagerTab() override;

    // RebuildTaskView: BuildSalesTree or BuildBidsTree, by the switch. Runs
    // on entering the tab (after the Null repair of the scanned rows), on a
    // side switch and when an item leaves the task manager.
    void RebuildTaskView();
    void BuildSalesTree();
    void BuildBidsTree();
    // The rows of a filter in lstToAuctions; row 0 and the node "SUMS" are
    // then selected, or the empty side's panel shown.
    void FillItemList(const QString& filterName);
    // How a copy of a packing list is opened in a word processor (see
    // TaskPanels::SetFileOpener).
    void SetFileOpener(std::function<bool(const QString&)> opener);
    // ShowTaskPanel: fraToDo(index) becomes the only panel in view.
    void ShowTaskPanel(int index);
    // ShowSelectedTask: the panel of the selected node for the selected item.
    void ShowSelectedTask();
    // The pictures of the task nodes for the selected item.
    void RefreshTaskIcons();
    // The removal rule: the item leaves the task manager, and the view is
    // built again, when code is the user's removal preference of the side.
    void CompleteIfRemovalTask(const QString& code);
    // The item the list's selection stands for; nullopt when the list holds
    // no item.
    std::optional<tasks::SelectedItem> SelectedItem() const;

public Q_SLOTS:
    void chkToDoAuctions_MouseUp();
    void chkToDoBids_MouseUp();
    void lstFilters_Click();
    void lstToAuctions_Click();
    void ToDo1_NodeClick();
    void ToDo1_DblClick(QTreeWidgetItem* node);
    void cmdRemoveToDo_Click();
    // After every save of a panel: the pictures, the removal rule with the
    // code the save names, and the node it names selected.
    void AfterSave(const tasks::SaveOutcome& outcome);

protected:
    // A new palette draws the tree's pictures afresh for its ground.
    void changeEvent(QEvent* event) override;

private:
    bool SalesSide() const;
    tasks::Side CurrentSide() const;
    void BuildTree(tasks::Side side);
    // The node of that key selected without opening its panel; a click on
    // the tree or a list row opens it.
    void SelectNodeQuietly(const QString& key);
    QTreeWidgetItem* Node(const QString& key) const;
    QString SelectedNodeKey() const;
    // The panel for an empty list: 13 on the sales side, 14 on the bids side.
    void ShowNoPendingTasks();
    // The tree's folder pictures follow whether the folder is open.
    void FolderToggled(QTreeWidgetItem* node);
    void RedrawPictures();

    std::function<core::Database&()> m_db;

    QCheckBox* m_chkToDoAuctions = nullptr;
    QCheckBox* m_chkToDoBids = nullptr;
    QComboBox* m_lstFilters = nullptr;
    QLabel* m_lblToDoItems = nullptr;
    QLabel* m_lblToDoRecordCount = nullptr;
    QListWidget* m_lstToAuctions = nullptr;
    QPushButton* m_cmdRemoveToDo = nullptr;
    QTreeWidget* m_ToDo1 = nullptr;
    TaskPanels* m_panels = nullptr;
    QSplitter* m_split = nullptr;
};

}  // namespace lw::ui
