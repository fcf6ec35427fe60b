// SPDX-License-Identifier: GPL-3.0-or-later
// How the windows behave at the keyboard, to assistive tools and on a dark
// desktop, on the offscreen platform. One walk over every window in each of
// its states checks what holds for all of them: a mnemonic on every menu
// entry, button, check box, radio button, group and tab caption, none
// clashing with another in view at the same time; a name for every input
// and every picture-only button; no caption disabled to look grey; and a Tab
// chain in reading order. Then the main window's standard keys, its item
// search, the layout it remembers between runs, the colours of the lists and
// panels on a light and a dark palette, and the star pictures.
#include <QAbstractButton>
#include <QAbstractItemView>
#include <QAbstractSpinBox>
#include <QAction>
#include <QApplication>
#include <QComboBox>
#include <QDialog>
#include <QGroupBox>
#include <QHeaderView>
#include <QLabel>
#include <QLineEdit>
#include <QMap>
#include <QMenu>
#include <QMenuBar>
#include <QPlainTextEdit>
#include <QScreen>
#include <QSplitter>
#include <QStatusBar>
#include <QStyle>
#include <QStyleFactory>
#include <QTabBar>
#include <QTabWidget>
#include <QTableView>
#include <QTextBrowser>
#include <QToolButton>
#include <QTreeWidget>
#include <QtTest>
#include <functional>
#include <memory>
#include <optional>

#include "core/session.h"
#include "core/settings.h"
#include "core/store.h"
#include "creator/category_directory.h"
#include "creator/listing_html.h"
#include "tests/support/test_support.h"
#include "tests/support/window_test.h"
#include "ui/frmAuction.h"
#include "ui/frmGeneral.h"
#include "ui/frmLWAC.h"
#include "ui/frmNewUser.h"
#include "ui/frmTip.h"
#include "ui/frmUpdate.h"
#include "ui/frmUserPreferences.h"
#include "ui/item_panels.h"
#include "ui/readable_colour.h"
#include "update/rules.h"
#include "views/listing_model.h"

using namespace lw;

using lw::test::EndIn;
using lw::test::Named;

namespace {

const QString kUser = QStringLiteral("Pat O'Brien");

// One sale of the user; a reserve of "-" leaves the high bid uncoloured.
void AddSale(core::Database& db, const QString& item, const QString& title, const QString& highBid,
             const QString& reserve, int endsInDays, const QString& feedback) {
    db.Prepare(QStringLiteral(
                   "INSERT INTO Auctions (UserName, ItemNumber, ItemTitle, NumberBids, HighBid, "
                   "ReserveBid, EndDate, HighBidderName, HighBidderFeedback, Quantity, "
                   "ItemCategory) VALUES (?, ?, ?, '2', ?, ?, ?, 'buyer', ?, '1', 'Lamps')"))
        .BindAll(kUser, item, title, highBid, reserve, EndIn(endsInDays), feedback)
        .Run();
}

QString Describe(const QWidget* w) {
    const QString name = w->objectName().isEmpty() ? QStringLiteral("(unnamed)") : w->objectName();
    return QString::fromLatin1(w->metaObject()->className()) + u' ' + name;
}

// A caption shown on screen that the Tab key or a mnemonic can reach.
bool Shown(const QWidget* w, const QWidget* window) {
    return w->isVisibleTo(window) && w->window() == window;
}

bool TakesTabFocus(const QWidget* w) {
    return (w->focusPolicy() & Qt::TabFocus) == Qt::TabFocus && w->focusProxy() == nullptr;
}

// Reading order of two widgets of one window: they are compared where their
// branches part, as the two children of their nearest common ancestor that
// hold them. So a group box is read whole before the one beside it, as a
// reader takes a form in columns. Two boxes share a row when they overlap
// by half the height of the lower one; in a row the left comes first.
bool ReadsBefore(QWidget* a, QWidget* b) {
    if (a->isAncestorOf(b)) {
        return true;
    }
    if (b->isAncestorOf(a)) {
        return false;
    }
    QWidget* branchA = a;
    while (branchA->parentWidget() != nullptr && !branchA->parentWidget()->isAncestorOf(b)) {
        branchA = branchA->parentWidget();
    }
    QWidget* common = branchA->parentWidget();
    QWidget* branchB = b;
    while (branchB->parentWidget() != common) {
        branchB = branchB->parentWidget();
    }
    const QRect ra = branchA->geometry();
    const QRect rb = branchB->geometry();
    const int overlap = std::min(ra.bottom(), rb.bottom()) - std::max(ra.top(), rb.top());
    if (overlap >= std::min(ra.height(), rb.height()) / 2) {
        return ra.left() < rb.left() || (ra.left() == rb.left() && ra.top() <= rb.top());
    }
    return ra.top() < rb.top();
}

// Everything the walk finds wrong in one state of one window.
QStringList Faults(QWidget* window) {
    QStringList faults;
    // Mnemonics in view at the same time: a key may open one thing only.
    QMap<QKeySequence, QString> taken;
    auto claim = [&](const QString& caption, const QString& owner) {
        const QKeySequence key = QKeySequence::mnemonic(caption);
        if (key.isEmpty()) {
            faults << owner + QStringLiteral(": no mnemonic in \"") + caption + u'"';
            return;
        }
        if (taken.contains(key)) {
            faults << owner + QStringLiteral(": ") + key.toString() +
                          QStringLiteral(" is taken by ") + taken.value(key);
        }
        taken.insert(key, owner);
    };

    if (auto* main = qobject_cast<QMainWindow*>(window)) {
        for (QAction* title : main->menuBar()->actions()) {
            claim(title->text(), QStringLiteral("menu ") + title->text());
        }
        // Every menu of the window, the pop-up menus included: entries each
        // with a mnemonic of their own within their menu.
        const auto menus = window->findChildren<QMenu*>();
        for (const QMenu* menu : menus) {
            QMap<QKeySequence, QString> inMenu;
            for (const QAction* action : menu->actions()) {
                if (action->isSeparator() || action->text().isEmpty() || !action->isVisible()) {
                    continue;
                }
                const QString owner = menu->objectName() + u'/' + action->text();
                const QKeySequence key = QKeySequence::mnemonic(action->text());
                if (key.isEmpty()) {
                    faults << owner + QStringLiteral(": no mnemonic");
                } else if (inMenu.contains(key)) {
                    faults << owner + QStringLiteral(": clashes with ") + inMenu.value(key);
                } else {
                    inMenu.insert(key, owner);
                }
            }
        }
    }
    const auto buttons = window->findChildren<QAbstractButton*>();
    for (QAbstractButton* button : buttons) {
        if (!Shown(button, window)) {
            continue;
        }
        // A tool bar's buttons are reached through the menus' entries.
        const auto* tool = qobject_cast<QToolButton*>(button);
        if (tool != nullptr && tool->defaultAction() != nullptr) {
            continue;
        }
        if (!button->text().isEmpty()) {
            claim(button->text(), Describe(button));
        } else if (!button->icon().isNull() && button->accessibleName().isEmpty()) {
            faults << Describe(button) + QStringLiteral(": a picture without a name");
        }
    }
    const auto groups = window->findChildren<QGroupBox*>();
    for (QGroupBox* group : groups) {
        if (Shown(group, window) && !group->title().isEmpty() &&
            !group->property("titleFromData").toBool()) {
            claim(group->title(), Describe(group));
        }
    }
    const auto tabBars = window->findChildren<QTabBar*>();
    for (QTabBar* bar : tabBars) {
        if (!Shown(bar, window)) {
            continue;
        }
        for (int tab = 0; tab < bar->count(); ++tab) {
            if (bar->isTabVisible(tab) && !bar->tabText(tab).isEmpty()) {
                claim(bar->tabText(tab), QStringLiteral("tab ") + bar->tabText(tab));
            }
        }
    }
    const auto labels = window->findChildren<QLabel*>();
    for (QLabel* label : labels) {
        if (!Shown(label, window)) {
            continue;
        }
        if (label->buddy() != nullptr && !QKeySequence::mnemonic(label->text()).isEmpty()) {
            claim(label->text(), Describe(label));
        }
        // Greyed by being disabled, a caption reads as unavailable and may
        // fall below any readable contrast.
        if (!label->isEnabled() && label->parentWidget()->isEnabled()) {
            faults << Describe(label) + QStringLiteral(" \"") + label->text() +
                          QStringLiteral("\" is disabled to look grey");
        }
    }

    // Every input says what it is for: a label names it, or it has a name.
    QList<QWidget*> chain;
    for (QWidget* w = window->nextInFocusChain(); w != window; w = w->nextInFocusChain()) {
        if (Shown(w, window) && TakesTabFocus(w)) {
            chain << w;
        }
    }
    for (QWidget* w : chain) {
        const bool input = qobject_cast<QLineEdit*>(w) || qobject_cast<QComboBox*>(w) ||
                           qobject_cast<QAbstractItemView*>(w) ||
                           qobject_cast<QAbstractSpinBox*>(w) || qobject_cast<QTextEdit*>(w) ||
                           qobject_cast<QPlainTextEdit*>(w);
        if (!input || !w->accessibleName().isEmpty()) {
            continue;
        }
        const bool labelled = std::any_of(labels.begin(), labels.end(),
                                          [w](const QLabel* l) { return l->buddy() == w; });
        if (!labelled) {
            faults << Describe(w) + QStringLiteral(": no label and no accessible name");
        }
    }

    // The Tab chain, from the first widget in reading order, goes on in it.
    if (!chain.isEmpty()) {
        qsizetype first = 0;
        for (qsizetype i = 1; i < chain.size(); ++i) {
            if (ReadsBefore(chain.at(i), chain.at(first))) {
                first = i;
            }
        }
        std::rotate(chain.begin(), chain.begin() + first, chain.end());
        for (qsizetype i = 1; i < chain.size(); ++i) {
            if (!ReadsBefore(chain.at(i - 1), chain.at(i))) {
                faults << QStringLiteral("Tab goes from ") + Describe(chain.at(i - 1)) +
                              QStringLiteral(" back to ") + Describe(chain.at(i));
            }
        }
    }
    return faults;
}

void Settle(QWidget* window) {
    window->show();
    if (!QTest::qWaitForWindowExposed(window)) {
        qWarning("%s was not exposed", qPrintable(window->objectName()));
    }
    QCoreApplication::processEvents();
}

// Whether some pixel of the area, as the widget paints itself, is the
// colour (within what anti-aliasing leaves of a glyph's stem).
bool DrawnIn(QWidget* widget, const QRect& area, const QColor& colour) {
    const QImage image = widget->grab(area).toImage();
    for (int y = 0; y < image.height(); ++y) {
        for (int x = 0; x < image.width(); ++x) {
            const QColor pixel = image.pixelColor(x, y);
            if (std::abs(pixel.red() - colour.red()) <= 24 &&
                std::abs(pixel.green() - colour.green()) <= 24 &&
                std::abs(pixel.blue() - colour.blue()) <= 24) {
                return true;
            }
        }
    }
    return false;
}

// Makes the row of that item the current one, when it is listed.
void SelectItem(QTableView* grid, const QString& item) {
    for (int row = 0; row < grid->model()->rowCount(); ++row) {
        if (grid->model()->index(row, 0).data().toString() == item) {
            grid->setCurrentIndex(grid->model()->index(row, 0));
        }
    }
}

// A window and the states it is looked at in, each made by a step on it.
struct WindowCase {
    QString name;
    std::function<std::unique_ptr<QWidget>()> open;
    std::vector<std::pair<QString, std::function<void(QWidget*)>>> states;
};

void Nothing(QWidget*) {}

std::function<void(QWidget*)> TabOf(const QString& tabs, int index) {
    return [tabs, index](QWidget* w) { Named<QTabWidget>(w, tabs)->setCurrentIndex(index); };
}

std::function<void(QWidget*)> ClickOn(const QString& button) {
    return [button](QWidget* w) { Named<QAbstractButton>(w, button)->click(); };
}

// An ended sale to a buyer with an address and an ended bid won, for the
// Task Manager's panels; added once.
void AddEndedItems() {
    core::Database db = core::OpenStore();
    if (db.Prepare(QStringLiteral("SELECT 1 FROM Bids")).Step()) {
        return;
    }
    AddSale(db, QStringLiteral("1004"), QStringLiteral("Oil lamp"), QStringLiteral("$30.00"),
            QStringLiteral("-"), -5, QStringLiteral("(20)"));
    test::InsertRow(db, QStringLiteral("Buyers"),
                    {{"AuctionSiteFlag", 0},
                     {"BuyerID", QStringLiteral("buyer")},
                     {"StreetAddress1", QStringLiteral("12 Elm St")}});
    test::InsertRow(db, QStringLiteral("Bids"),
                    {{"UserName", kUser},
                     {"ItemNumber", QStringLiteral("3001")},
                     {"ItemTitle", QStringLiteral("Old map")},
                     {"HighBid", QStringLiteral("$15.00")},
                     {"EndDate", EndIn(-4)},
                     {"Winning", 1},
                     {"SellerName", QStringLiteral("seller")}});
}

// The Task Manager on a side, its first item's node of that key open, and
// then a control of the panel set when one is named ("lstPaymentMethods=1").
std::function<void(QWidget*)> TaskNode(bool bids, const QString& key,
                                       const QString& set = QString()) {
    return [bids, key, set](QWidget* w) {
        AddEndedItems();
        TabOf(QStringLiteral("SSTab1"), 2)(w);
        Named<QAbstractButton>(
            w, bids ? QStringLiteral("chkToDoBids") : QStringLiteral("chkToDoAuctions"))
            ->click();
        auto* tree = Named<QTreeWidget>(w, QStringLiteral("ToDo1"));
        for (QTreeWidgetItemIterator it(tree); *it != nullptr; ++it) {
            if ((*it)->data(0, Qt::UserRole).toString() == key) {
                tree->setCurrentItem(*it);
            }
        }
        if (!set.isEmpty()) {
            auto* list = Named<QComboBox>(w, set.section(u'=', 0, 0));
            list->setCurrentIndex(set.section(u'=', 1).toInt());
            Q_EMIT list->activated(list->currentIndex());
        }
    };
}

}  // namespace

class WindowMannersTest : public QObject {
    Q_OBJECT

private:
    std::unique_ptr<test::TempRoot> m_root;
    std::unique_ptr<test::ScriptedUi> m_ui;
    std::optional<core::Database> m_db;

    std::unique_ptr<ui::frmAuction> OpenMain() {
        auto w = std::make_unique<ui::frmAuction>();
        w->SetUrlOpener([](const QString&) {});
        Settle(w.get());
        w->Form_Load();
        return w;
    }

    std::vector<WindowCase> Windows() {
        std::vector<WindowCase> cases;
        // A window looked at as it opens, then in the states added to it (the
        // reference returned holds until the next window is added).
        const auto add = [&cases](const QString& name,
                                  std::function<std::unique_ptr<QWidget>()> open) -> WindowCase& {
            cases.push_back({name, std::move(open), {{QString(), Nothing}}});
            return cases.back();
        };
        WindowCase& main = add(QStringLiteral("frmAuction"),
                               [this] { return std::unique_ptr<QWidget>(OpenMain()); });
        const char* const mainTabs[] = {"My Sales", "My Bids", "Task Manager", "Auction Analysis"};
        for (int tab = 0; tab < 4; ++tab) {
            main.states.emplace_back(QString::fromLatin1(mainTabs[tab]),
                                     TabOf(QStringLiteral("SSTab1"), tab));
        }
        // Each panel of the Task Manager, on the side that has it.
        for (const char* key :
             {"SUM", "SUMS", "SUMN", "PRA", "CON", "SHP", "SHS", "SHR", "FBL", "FBR"}) {
            main.states.emplace_back(QStringLiteral("sale task ") + QLatin1String(key),
                                     TaskNode(false, QString::fromLatin1(key)));
        }
        main.states.emplace_back(
            QStringLiteral("sale payment by check"),
            TaskNode(false, QStringLiteral("PRI"), QStringLiteral("lstPaymentMethods=1")));
        main.states.emplace_back(
            QStringLiteral("bid payment by card"),
            TaskNode(true, QStringLiteral("PRP"), QStringLiteral("lstPaymentMethods=2")));
        main.states.emplace_back(QStringLiteral("bid task IRR"),
                                 TaskNode(true, QStringLiteral("IRR")));

        WindowCase& preferences = add(QStringLiteral("frmUserPreferences"),
                                      [] { return std::make_unique<ui::frmUserPreferences>(); });
        for (int tab = 0; tab < 7; ++tab) {
            preferences.states.emplace_back(QStringLiteral("tab %1").arg(tab),
                                            TabOf(QStringLiteral("tabPreferences"), tab));
        }
        preferences.states.emplace_back(QStringLiteral("proxy shown"), [](QWidget* w) {
            TabOf(QStringLiteral("tabPreferences"), 2)(w);
            ClickOn(QStringLiteral("optConnection3"))(w);
        });
        preferences.states.emplace_back(QStringLiteral("password change"),
                                        ClickOn(QStringLiteral("cmdChangePassword")));

        add(QStringLiteral("frmUpdate"), [] { return std::make_unique<ui::frmUpdate>(); })
            .states.emplace_back(QStringLiteral("details"),
                                 ClickOn(QStringLiteral("cmdShowDetails")));
        add(QStringLiteral("frmNewUser"), [] { return std::make_unique<ui::frmNewUser>(); });
        add(QStringLiteral("frmTip"), [] { return std::make_unique<ui::frmTip>(); });
        const std::pair<const char*, ui::frmGeneral::Form> forms[] = {
            {"item cost", ui::frmGeneral::ItemCostForm},
            {"posted", ui::frmGeneral::PostedForm},
            {"about", ui::frmGeneral::AboutForm}};
        for (const auto& named : forms) {
            add(QStringLiteral("frmGeneral ") + QLatin1String(named.first),
                [form = named.second] { return std::make_unique<ui::frmGeneral>(form); });
        }
        add(QStringLiteral("frmGeneral categories"), [this] {
            return std::make_unique<ui::frmGeneral>(ui::frmGeneral::CategoryForm, *m_db);
        }).states.emplace_back(QStringLiteral("search"), TabOf(QStringLiteral("tabCategories"), 1));
        add(QStringLiteral("frmGeneral save"),
            [this] { return std::make_unique<ui::frmGeneral>(ui::frmGeneral::SaveForm, *m_db); })
            .states.emplace_back(QStringLiteral("template"),
                                 ClickOn(QStringLiteral("optSaveAuction1")));

        WindowCase& creator = add(QStringLiteral("frmLWAC"), [] {
            auto w = std::make_unique<ui::frmLWAC>();
            w->SetUrlOpener([](const QUrl&) {});
            return w;
        });
        for (int option = 0; option < 4; ++option) {
            creator.states.emplace_back(QStringLiteral("chooser %1").arg(option),
                                        ClickOn(QStringLiteral("optACChoice%1").arg(option)));
        }
        creator.states.emplace_back(QStringLiteral("editing"),
                                    ClickOn(QStringLiteral("cmdLoadDefault")));
        for (int tab = 1; tab <= ui::frmLWAC::kPaymentTab; ++tab) {
            creator.states.emplace_back(QStringLiteral("tab %1").arg(tab),
                                        TabOf(QStringLiteral("SSTab1"), tab));
        }
        return cases;
    }

private Q_SLOTS:
    void init() {
        m_root = std::make_unique<test::TempRoot>();
        m_ui = std::make_unique<test::ScriptedUi>();
        const QString error = test::StartProgramRoot(*m_root, *m_ui);
        QVERIFY2(error.isEmpty(), qPrintable(error));
        core::Database db = core::OpenStore();
        QVERIFY(update::DecryptProtocols(update::Rules(), db));
        core::AddUser(db, {kUser, QStringLiteral("pat_sells"), QStringLiteral("secret"),
                           QStringLiteral("p@x.org")});
        core::SetCurrentUser(kUser);
        AddSale(db, QStringLiteral("1001"), QStringLiteral("Brass lamp"), QStringLiteral("$12.50"),
                QStringLiteral("$10.00"), 2, QStringLiteral("(150)"));
        AddSale(db, QStringLiteral("1002"), QStringLiteral("Glass lamp shade"),
                QStringLiteral("$5.00"), QStringLiteral("$8.00"), 3, QStringLiteral("(12000)"));
        AddSale(db, QStringLiteral("1003"), QStringLiteral("Tin robot"), QStringLiteral("$9.00"),
                QStringLiteral("-"), 4, QStringLiteral("(4)"));
        const core::Session& session = core::CurrentSession();
        QVERIFY(
            creator::InstallAuctionTemplates(session.ShippedDir, session.TemplatesDir, nullptr));
        creator::PrepareCategoryDirectory(db, *m_ui);
        m_db.emplace(core::OpenStore());
    }
    void cleanup() {
        const auto widgets = QApplication::topLevelWidgets();
        for (QWidget* widget : widgets) {
            widget->close();
        }
        QApplication::setPalette(QApplication::style()->standardPalette());
        m_db.reset();
        core::SetSettingsFolder(QString());
        core::ResetSession();
        m_ui.reset();
        m_root.reset();
    }

    void everyWindowReadsAndTabsInOrder_data() {
        QTest::addColumn<int>("index");
        const std::vector<WindowCase> cases = Windows();
        for (size_t i = 0; i < cases.size(); ++i) {
            QTest::newRow(qPrintable(cases[i].name)) << static_cast<int>(i);
        }
    }

    void everyWindowReadsAndTabsInOrder() {
        QFETCH(int, index);
        WindowCase c = std::move(Windows().at(static_cast<size_t>(index)));
        std::unique_ptr<QWidget> window = c.open();
        Settle(window.get());
        QStringList faults;
        for (const auto& [state, step] : c.states) {
            step(window.get());
            QCoreApplication::processEvents();
            for (const QString& fault : Faults(window.get())) {
                faults << (state.isEmpty() ? fault : state + QStringLiteral(": ") + fault);
            }
        }
        QVERIFY2(faults.isEmpty(), qPrintable(faults.join(u'\n')));
    }

    void theMainWindowAnswersTheStandardKeys() {
        std::unique_ptr<ui::frmAuction> w = OpenMain();
        const struct {
            QKeySequence::StandardKey key;
            const char* action;
        } keys[] = {
            {QKeySequence::Quit, "mnuFileExit"},
            {QKeySequence::Preferences, "mnuPreferences"},
            {QKeySequence::Find, "mnuFindItem"},
            {QKeySequence::Refresh, "mnuUpdateComplete"},
            {QKeySequence::HelpContents, "menHelpTopics"},
        };
        for (const auto& k : keys) {
            auto* action = Named<QAction>(w.get(), QString::fromLatin1(k.action));
            // Only a visible, enabled action answers its key.
            QVERIFY2(action->isVisible() && action->isEnabled(), k.action);
            QVERIFY2(!action->shortcuts().isEmpty(), k.action);
            for (const QKeySequence& platform : QKeySequence::keyBindings(k.key)) {
                QVERIFY2(action->shortcuts().contains(platform),
                         qPrintable(QString::fromLatin1(k.action) + u' ' + platform.toString()));
            }
        }
        // No key of the window starts two commands.
        QMap<QKeySequence, QString> owners;
        const auto actions = w->findChildren<QAction*>();
        for (const QAction* action : actions) {
            for (const QKeySequence& key : action->shortcuts()) {
                QVERIFY2(!owners.contains(key),
                         qPrintable(key.toString() + u' ' + owners.value(key) + u' ' +
                                    action->objectName()));
                owners.insert(key, action->objectName());
            }
        }

        // Pressed, the keys reach their commands: the help opens on the
        // program's guide, and Find goes to the item asked for.
        QApplication::setActiveWindow(w.get());
        QVERIFY(QTest::qWaitForWindowActive(w.get()));
        QString guide;
        test::WhenModal help(QStringLiteral("frmHelp"), [&guide](QWidget* dialog) {
            guide = Named<QTextBrowser>(dialog, QStringLiteral("txtHelp"))->toPlainText();
            static_cast<QDialog*>(dialog)->reject();
        });
        QTest::keySequence(w.get(), QKeySequence(QKeySequence::HelpContents));
        QVERIFY(help.Acted());
        QVERIFY2(guide.contains(QStringLiteral("The desktop program")),
                 qPrintable(guide.left(200)));

        QApplication::setActiveWindow(w.get());
        QVERIFY(QTest::qWaitForWindowActive(w.get()));
        m_ui->ScriptPrompt(QStringLiteral("robot"));
        QTest::keySequence(w.get(), QKeySequence(QKeySequence::Find));
        auto* grid = Named<QTableView>(w.get(), QStringLiteral("grdAuction"));
        QCOMPARE(grid->currentIndex().siblingAtColumn(0).data().toString(), QStringLiteral("1003"));
    }

    void findGoesToTheNextMatchingItemOfTheListInView_data() {
        QTest::addColumn<QString>("selected");
        QTest::addColumn<QString>("asked");
        QTest::addColumn<QString>("found");
        // The search starts after the selected row and wraps round; an item
        // number matches whole, a title by any part, case aside.
        const auto row = [](const char* name, const char* selected, const char* asked,
                            const char* found) {
            QTest::newRow(name) << QString(selected) << QString(asked) << QString(found);
        };
        row("title word", "1001", "LAMP SHADE", "1002");
        row("next after the selected", "1001", "lamp", "1002");
        row("wraps to the top", "1002", "lamp", "1001");
        row("item number", "1001", " 1003 ", "1003");
        row("part of a number is no match", "1001", "100", "");
        row("nothing matches", "1003", "clock", "");
    }

    void findGoesToTheNextMatchingItemOfTheListInView() {
        QFETCH(QString, selected);
        QFETCH(QString, asked);
        QFETCH(QString, found);
        std::unique_ptr<ui::frmAuction> w = OpenMain();
        auto* grid = Named<QTableView>(w.get(), QStringLiteral("grdAuction"));
        SelectItem(grid, selected);
        m_ui->ScriptPrompt(asked);
        w->mnuFindItem_Click();
        const QString current = grid->currentIndex().siblingAtColumn(0).data().toString();
        if (found.isEmpty()) {
            QCOMPARE(current, selected);
            QCOMPARE(m_ui->Titles(), QStringList{QStringLiteral("Find Item")});
            QVERIFY(m_ui->Messages().first().contains(asked.trimmed()));
        } else {
            QCOMPARE(current, found);
            QVERIFY(m_ui->Messages().isEmpty());
            // The panel below shows the item found.
            QVERIFY(Named<QGroupBox>(w.get(), QStringLiteral("fraAuctionInfo"))
                        ->title()
                        .contains(found));
        }
    }

    void theMainWindowKeepsItsLayoutBetweenRuns() {
        const QStringList keys = {QStringLiteral("Geometry"),      QStringLiteral("State"),
                                  QStringLiteral("SalesSplitter"), QStringLiteral("BidsSplitter"),
                                  QStringLiteral("SalesColumns"),  QStringLiteral("BidsColumns")};
        auto stored = [&keys] {
            QStringList values;
            for (const QString& key : keys) {
                values << core::GetSetting(QStringLiteral("Lotwright"),
                                           QStringLiteral("frmAuction"), key);
            }
            return values;
        };
        {
            // Opened and closed unchanged, it writes nothing.
            std::unique_ptr<ui::frmAuction> w = OpenMain();
            w->close();
        }
        QCOMPARE(stored(), QStringList(keys.size(), QString()));

        QList<int> salesSplit;
        QList<int> bidsSplit;
        QSize size;
        {
            std::unique_ptr<ui::frmAuction> w = OpenMain();
            size = w->minimumSizeHint().expandedTo(w->minimumSize()) + QSize(37, 23);
            w->resize(size);
            w->move(30, 40);
            auto* split = Named<QSplitter>(w.get(), QStringLiteral("splSales"));
            split->setSizes({120, 260});
            salesSplit = split->sizes();
            Named<QTabWidget>(w.get(), QStringLiteral("SSTab1"))->setCurrentIndex(1);
            auto* bids = Named<QSplitter>(w.get(), QStringLiteral("splBids"));
            bids->setSizes({300, 80});
            bidsSplit = bids->sizes();
            auto* grid = Named<QTableView>(w.get(), QStringLiteral("grdAuction"));
            grid->setColumnWidth(views::ListingModel::kItem, 111);
            grid->setColumnWidth(views::ListingModel::kHighBid, 97);
            w->close();
        }
        // What changed is written; the tool bar and the bids' columns did not.
        const QStringList written = stored();
        for (const int changed : {0, 2, 3, 4}) {
            QVERIFY2(!written.at(changed).isEmpty(), qPrintable(keys.at(changed)));
        }
        {
            std::unique_ptr<ui::frmAuction> w = OpenMain();
            QCOMPARE(w->size(), size);
            QCOMPARE(w->pos(), QPoint(30, 40));
            QCOMPARE(Named<QSplitter>(w.get(), QStringLiteral("splSales"))->sizes(), salesSplit);
            Named<QTabWidget>(w.get(), QStringLiteral("SSTab1"))->setCurrentIndex(1);
            QCOMPARE(Named<QSplitter>(w.get(), QStringLiteral("splBids"))->sizes(), bidsSplit);
            auto* grid = Named<QTableView>(w.get(), QStringLiteral("grdAuction"));
            QCOMPARE(grid->columnWidth(views::ListingModel::kItem), 111);
            QCOMPARE(grid->columnWidth(views::ListingModel::kHighBid), 97);

            // Left where no screen is any more, it comes back on one.
            w->move(9000, 7000);
            w->close();
        }
        std::unique_ptr<ui::frmAuction> w = OpenMain();
        const QRect seen =
            QGuiApplication::primaryScreen()->availableGeometry().intersected(w->frameGeometry());
        QVERIFY2(seen.width() >= 100 && seen.height() >= 50,
                 qPrintable(QStringLiteral("%1,%2").arg(w->x()).arg(w->y())));

        // Values from elsewhere (damaged, or of another version) are passed over.
        w->close();
        w.reset();
        for (const char* key : {"Geometry", "SalesSplitter", "SalesColumns"}) {
            core::SaveSetting(QStringLiteral("Lotwright"), QStringLiteral("frmAuction"),
                              QString::fromLatin1(key), QStringLiteral("not:a,layout"));
        }
        std::unique_ptr<ui::frmAuction> again = OpenMain();
        QVERIFY(again->isVisible());
        QVERIFY(Named<QTableView>(again.get(), QStringLiteral("grdAuction"))
                    ->columnWidth(views::ListingModel::kItem) > 0);
    }

    void contrastIsMeasuredAsTheWebGuidelinesDo() {
        const struct {
            QColor a;
            QColor b;
            double ratio;
        } pairs[] = {
            {Qt::black, Qt::white, 21.0},
            {Qt::white, Qt::white, 1.0},
            {QColor(0x76, 0x76, 0x76), Qt::white, 4.54},  // the lightest grey that passes
            {QColor(0, 0, 255), Qt::white, 8.59},
            {QColor(255, 0, 0), Qt::black, 5.25},
        };
        for (const auto& p : pairs) {
            QVERIFY2(std::abs(ui::ContrastRatio(p.a, p.b) - p.ratio) < 0.01,
                     qPrintable(p.a.name() + u' ' + p.b.name()));
            QCOMPARE(ui::ContrastRatio(p.a, p.b), ui::ContrastRatio(p.b, p.a));
        }
        // A colour that reads stays as it is; one that does not is moved in
        // lightness only, just far enough.
        const QColor darkRed(128, 0, 0);
        QCOMPARE(ui::ReadableOn(darkRed, Qt::white), darkRed);
        for (const QColor& ground : {QColor(30, 30, 32), QColor(45, 45, 48), QColor(Qt::black)}) {
            const QColor shown = ui::ReadableOn(darkRed, ground);
            QVERIFY(ui::ContrastRatio(shown, ground) >= ui::kReadableContrast);
            QVERIFY(ui::ContrastRatio(shown, ground) < ui::kReadableContrast + 0.5);
            QCOMPARE(shown.hslHue(), darkRed.hslHue());
        }
    }

    void listsAndPanelsReadOnALightAndADarkPalette_data() {
        QTest::addColumn<bool>("dark");
        QTest::newRow("Fusion light") << false;
        QTest::newRow("Fusion dark") << true;
    }

    void listsAndPanelsReadOnALightAndADarkPalette() {
        QFETCH(bool, dark);
        std::unique_ptr<QStyle> fusion(QStyleFactory::create(QStringLiteral("Fusion")));
        QVERIFY(fusion != nullptr);
        // Opened light, then the desktop's palette changes under it.
        QApplication::setPalette(fusion->standardPalette());
        std::unique_ptr<ui::frmAuction> w = OpenMain();
        QApplication::setPalette(dark ? ui::DarkPalette() : fusion->standardPalette());
        // The change reaches every widget, then the panels choose again.
        for (int pass = 0; pass < 3; ++pass) {
            QCoreApplication::processEvents();
        }
        auto* grid = Named<QTableView>(w.get(), QStringLiteral("grdAuction"));
        const QColor base = grid->palette().color(QPalette::Base);
        QCOMPARE(ui::IsDarkBackground(base), dark);
        // On a light ground the system's own green and red, for which they
        // were chosen; on a dark one whatever reads, 4.5:1 at least.
        const QList<QColor> system = {views::ColourOf(views::CellColour::Green),
                                      views::ColourOf(views::CellColour::Red)};
        auto reads = [dark, &system](const QColor& ink, const QColor& ground) {
            return dark ? ui::ContrastRatio(ink, ground) >= ui::kReadableContrast
                        : system.contains(ink);
        };

        // The high bids in green (reserve met) and red (not met).
        QSet<QRgb> inks;
        for (int row = 0; row < grid->model()->rowCount(); ++row) {
            const QVariant ink =
                grid->model()->index(row, views::ListingModel::kHighBid).data(Qt::ForegroundRole);
            if (!ink.isValid()) {
                continue;
            }
            inks << ink.value<QColor>().rgb();
            QVERIFY2(reads(ink.value<QColor>(), base),
                     qPrintable(ink.value<QColor>().name() + " on " + base.name()));
        }
        QVERIFY(inks.size() >= 2);

        // The panel shown when the palette changed, then the panel of each:
        // the figure and the frame's title, coloured alike.
        for (const QString& item : {QString(), QStringLiteral("1001"), QStringLiteral("1002")}) {
            SelectItem(grid, item);
            auto* currently = Named<QLabel>(w.get(), QStringLiteral("lblCurrently"));
            const QColor ground = w->palette().color(QPalette::Window);
            QCOMPARE(currently->palette().color(QPalette::Window), ground);
            QVERIFY(reads(currently->palette().color(QPalette::WindowText), ground));
            const QColor title(Named<QGroupBox>(w.get(), QStringLiteral("fraAuctionInfo"))
                                   ->property("titleColour")
                                   .toString());
            QVERIFY2(reads(title, ground), qPrintable(title.name() + " on " + ground.name()));
            // ... and drawn in it.
            auto* frame = Named<QGroupBox>(w.get(), QStringLiteral("fraAuctionInfo"));
            QVERIFY2(DrawnIn(frame, QRect(0, 0, frame->width(), frame->fontMetrics().height() + 4),
                             title),
                     qPrintable(title.name()));
            // The star beside the bidder is the one drawn for this ground.
            auto* star = Named<QLabel>(w.get(), QStringLiteral("picStar"));
            QCOMPARE(star->pixmap().toImage(), ui::StarPicture(star->property("picture").toString(),
                                                               star->devicePixelRatioF(), ground)
                                                   .toImage());
        }

        // The status bar: its words in a quieter colour, not disabled, and
        // each figure named for a screen reader.
        for (int i = 0; i < 4; ++i) {
            auto* caption = Named<QLabel>(w.get(), QStringLiteral("lblInfoCaption%1").arg(i));
            QVERIFY(caption->isEnabled());
            QVERIFY(ui::ContrastRatio(caption->palette().color(caption->foregroundRole()),
                                      caption->palette().color(QPalette::Window)) >= 3.0);
            QVERIFY(!Named<QLabel>(w.get(), QStringLiteral("lblInfo%1").arg(i))
                         ->accessibleName()
                         .isEmpty());
        }
    }

    void starsAreNamedExplainedAndDrawnForTheScreensDensity() {
        const QStringList names = {QStringLiteral("eBayNoStar"),    QStringLiteral("eBay10-99"),
                                   QStringLiteral("eBay100-499"),   QStringLiteral("eBay500-999"),
                                   QStringLiteral("eBay1000-9999"), QStringLiteral("eBay10000")};
        QSet<QString> meanings;
        for (const QString& name : names) {
            const QPixmap one = ui::StarPicture(name, 1.0);
            const QPixmap two = ui::StarPicture(name, 2.0);
            QCOMPARE(one.deviceIndependentSize(), QSizeF(16, 16));
            QCOMPARE(two.deviceIndependentSize(), QSizeF(16, 16));
            QCOMPARE(two.size(), QSize(32, 32));
            QCOMPARE(two.devicePixelRatio(), 2.0);
            // Drawn at its density, not the small one blown up.
            QVERIFY(two.toImage() != one.toImage().scaled(32, 32));
            meanings << ui::StarMeaning(name);
        }
        // The empty star is its outline alone: on a dark ground as on a light
        // one it stands out, 3:1 at least, as a shape must.
        for (const QColor& ground :
             {QColor(Qt::white), ui::DarkPalette().color(QPalette::Window)}) {
            const QImage outline = ui::StarPicture(QStringLiteral("eBayNoStar"), 2.0, ground)
                                       .toImage()
                                       .convertToFormat(QImage::Format_ARGB32);
            bool seen = false;
            for (int y = 0; y < outline.height() && !seen; ++y) {
                for (int x = 0; x < outline.width() && !seen; ++x) {
                    const QColor pixel = outline.pixelColor(x, y);
                    seen = pixel.alpha() == 255 && ui::ContrastRatio(pixel, ground) >= 3.0;
                }
            }
            QVERIFY2(seen, qPrintable(ground.name()));
        }
        QCOMPARE(meanings.size(), names.size());
        QVERIFY(!meanings.contains(QString()));
        QVERIFY(ui::StarPicture(QStringLiteral("eBayGold")).isNull());

        // Beside a name, the star says whose feedback it rates and what it means.
        std::unique_ptr<ui::frmAuction> w = OpenMain();
        auto* grid = Named<QTableView>(w.get(), QStringLiteral("grdAuction"));
        const struct {
            const char* item;
            const char* picture;
        } rows[] = {{"1001", "eBay100-499"}, {"1002", "eBay10000"}, {"1003", "eBayNoStar"}};
        for (const auto& r : rows) {
            SelectItem(grid, QString::fromLatin1(r.item));
            auto* star = Named<QLabel>(w.get(), QStringLiteral("picStar"));
            QCOMPARE(star->property("picture").toString(), QString::fromLatin1(r.picture));
            QCOMPARE(star->toolTip(), ui::StarMeaning(QString::fromLatin1(r.picture)));
            QVERIFY(!star->accessibleName().isEmpty());
        }
    }
};

QTEST_MAIN(WindowMannersTest)
#include "window_manners_ui_test.moc"
