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

    // Entering the tab (after the Null repair of the scanned rows): the view
    // of the side in the switch built afresh.
    void EnterTab();
    // Marks the view out of date (an item came back to the task manager,
    // an update ran): the next entering builds it again.
    void Invalidate() { m_stale = true; }
    bool IsStale() const { return m_stale; }

    // BuildSalesTree or BuildBidsTree, by the switch.
    void RebuildTaskView();
    // ShowTaskPanel: fraToDo(index) becomes the only panel in view.
    void ShowTaskPanel(int index);

public Q_SLOTS:
    void chkToDoAuctions_MouseUp();
    void chkToDoBids_MouseUp();
    void ToDo1_DblClick(QTreeWidgetItem* node);

protected:
    // A new palette draws the tree's pictures afresh for its ground.
    void changeEvent(QEvent* event) override;

private:
    bool SalesSide() const;
    // The panel for an empty list: 13 on the sales side, 14 on the bids side.
    void ShowNoPendingTasks();
    // The tree's folder pictures follow whether the folder is open.
    void FolderToggled(QTreeWidgetItem* node);
    void RedrawPictures();

    std::function<core::Database&()> m_db;
    bool m_stale = true;

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
