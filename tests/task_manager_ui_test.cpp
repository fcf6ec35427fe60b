// SPDX-License-Identifier: GPL-3.0-or-later
// The Task Manager tab of the main window on the offscreen platform over a
// prepared database: each side's item list with its count and its empty
// panel, the panel each node opens, the rows each save writes (an emptied
// box as Null) and the pictures that follow, the removal by the user's
// preference and by command, the return from the pop-up menu, the rules of
// the panels' own controls, the folders' double click, and the packing
// list's way to a word processor.
#include <QApplication>
#include <QCheckBox>
#include <QClipboard>
#include <QComboBox>
#include <QDate>
#include <QDateTime>
#include <QGroupBox>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QRadioButton>
#include <QStackedWidget>
#include <QTabWidget>
#include <QTableView>
#include <QTextEdit>
#include <QTreeWidget>
#include <QtTest>
#include <memory>

#include "core/session.h"
#include "core/settings.h"
#include "core/store.h"
#include "core/text.h"
#include "tasks/packing_list.h"
#include "tests/support/test_support.h"
#include "tests/support/window_test.h"
#include "ui/frmAuction.h"
#include "ui/task_manager_tab.h"

using namespace lw;

using lw::test::EndIn;
using lw::test::Named;
using lw::test::Row;
using lw::test::Texts;

namespace {

const QString kUser = QStringLiteral("Pat O'Brien");

QString Today() {
    return core::Format(QDate::currentDate(), QStringLiteral("mm/dd/yy"));
}

void AddSale(core::Database& db, const char* item, const char* title, const char* bidder,
             int endsInDays, const char* quantity = "1") {
    test::InsertRow(db, QStringLiteral("Auctions"),
                    {{"UserName", kUser},
                     {"ItemNumber", QString::fromLatin1(item)},
                     {"ItemTitle", QString::fromLatin1(title)},
                     {"NumberBids", QStringLiteral("3")},
                     {"HighBid", QStringLiteral("$12.50")},
                     {"ReserveBid", QStringLiteral("-")},
                     {"EndDate", EndIn(endsInDays)},
                     {"HighBidderName", QString::fromLatin1(bidder)},
                     {"HighBidderFeedback", QStringLiteral("(40)")},
                     {"Quantity", QString::fromLatin1(quantity)},
                     {"ItemCategory", QStringLiteral("Lamps")}});
}

void AddWinner(core::Database& db, const char* item, const char* bidder) {
    test::InsertRow(db, QStringLiteral("Dutch"),
                    {{"ItemNumber", QString::fromLatin1(item)},
                     {"UserName", kUser},
                     {"HighBidderName", QString::fromLatin1(bidder)},
                     {"Quantity", QStringLiteral("2")},
                     {"HighBid", QStringLiteral("$2.00")}});
}

void AddBid(core::Database& db, const char* item, const char* title, const char* seller,
            int endsInDays) {
    test::InsertRow(db, QStringLiteral("Bids"),
                    {{"UserName", kUser},
                     {"ItemNumber", QString::fromLatin1(item)},
                     {"ItemTitle", QString::fromLatin1(title)},
                     {"NumberBids", QStringLiteral("2")},
                     {"HighBid", QStringLiteral("$15.00")},
                     {"EndDate", EndIn(endsInDays)},
                     {"HighBidderName", QStringLiteral("pat_buys")},
                     {"Winning", 1},
                     {"SellerName", QString::fromLatin1(seller)},
                     {"SellerFeedback", QStringLiteral("(12)")}});
}

// A record by table and key: "2001", or "2004/winner_b" for a winner's row
// of Dutch; Buyers and Sellers by the partner's name.
QVariant Field(const QString& table, const QString& key, const QString& column) {
    core::Database db = core::OpenStore();
    QString where = QStringLiteral("ItemNumber = ?1");
    if (table == u"Buyers") {
        where = QStringLiteral("BuyerID = ?1");
    } else if (table == u"Sellers") {
        where = QStringLiteral("SellerID = ?1");
    } else if (table == u"Dutch") {
        where = QStringLiteral("ItemNumber = ?1 AND HighBidderName = ?2");
    }
    core::Statement s =
        db.Prepare(QStringLiteral("SELECT \"") + column + QStringLiteral("\" FROM ") + table +
                   QStringLiteral(" WHERE ") + where);
    const QStringList parts = key.split(u'/');
    s.Bind(1, parts.at(0));
    if (parts.size() > 1) {
        s.Bind(2, parts.at(1));
    }
    return s.Step() ? s.Value(0) : QVariant(QStringLiteral("<no row>"));
}

QTreeWidgetItem* NodeOf(QTreeWidget* tree, const QString& key) {
    for (QTreeWidgetItemIterator it(tree); *it != nullptr; ++it) {
        if ((*it)->data(0, Qt::UserRole).toString() == key) {
            return *it;
        }
    }
    qFatal("no node %s", qPrintable(key));
}

int Picture(QTreeWidget* tree, const QString& key) {
    return NodeOf(tree, key)->data(0, Qt::UserRole + 1).toInt();
}

}  // namespace

class TaskManagerWindowTest : public QObject {
    Q_OBJECT

private:
    std::unique_ptr<test::TempRoot> m_root;
    std::unique_ptr<test::ScriptedUi> m_ui;
    std::unique_ptr<ui::frmAuction> m_window;

    // Two ended sales, a running one, a multi-winner sale with two winners;
    // an ended bid won and a running one.
    void Prepare() {
        core::Database db = core::OpenStore();
        AddSale(db, "2001", "Brass lamp", "buyer_one", -6);
        AddSale(db, "2002", "Tin robot", "buyer_two", -5);
        AddSale(db, "2003", "Wall clock", "buyer_three", 2);
        AddSale(db, "2004", "Marbles", "Dutch Auction", -1, "4");
        AddWinner(db, "2004", "winner_a");
        AddWinner(db, "2004", "winner_b");
        AddBid(db, "3001", "Old map", "map_seller", -4);
        AddBid(db, "3002", "Stamp album", "stamp_seller", 3);
    }

    // The removal preferences of the two sides; Null is none.
    void SetRemovalTags(const QVariant& sale, const QVariant& bid) {
        core::OpenStore()
            .Prepare(QStringLiteral(
                "UPDATE Users SET AuctionRemoveTag = ?, BidRemoveTag = ? WHERE UserName = ?"))
            .BindAll(sale, bid, kUser)
            .Run();
    }

    // The main window on its Task Manager tab, on the bids side when asked.
    ui::frmAuction* Open(bool bids = false) {
        m_window = std::make_unique<ui::frmAuction>();
        m_window->SetUrlOpener([](const QString&) {});
        m_window->show();
        m_window->Form_Load();
        // Active, so that the focus moves as a user's keys move it.
        QApplication::setActiveWindow(m_window.get());
        if (!QTest::qWaitForWindowActive(m_window.get())) {
            qWarning("the main window did not become active");
        }
        Named<QTabWidget>(m_window.get(), QStringLiteral("SSTab1"))
            ->setCurrentIndex(ui::frmAuction::kTaskTab);
        if (bids) {
            Named<QCheckBox>(m_window.get(), QStringLiteral("chkToDoBids"))->click();
        }
        return m_window.get();
    }

    template <class T>
    T* Control(const QString& name) {
        return Named<T>(m_window.get(), name);
    }

    QTreeWidget* Tree() { return Control<QTreeWidget>(QStringLiteral("ToDo1")); }
    QListWidget* List() { return Control<QListWidget>(QStringLiteral("lstToAuctions")); }

    int ShownPanel() {
        return Control<QStackedWidget>(QStringLiteral("fraToDo"))
            ->currentWidget()
            ->property("index")
            .toInt();
    }
    QString ShownTitle() {
        return qobject_cast<QGroupBox*>(
                   Control<QStackedWidget>(QStringLiteral("fraToDo"))->currentWidget())
            ->title();
    }

    // A click on the list row that starts with the text.
    void SelectRow(const QString& start) {
        for (int i = 0; i < List()->count(); ++i) {
            if (List()->item(i)->text().startsWith(start)) {
                List()->setCurrentRow(i);
                return;
            }
        }
        qFatal("no row %s", qPrintable(start));
    }
    void SelectNode(const QString& key) { Tree()->setCurrentItem(NodeOf(Tree(), key)); }

    // "name=value": a box takes the text, a list the row, a box to tick is
    // clicked when it is not yet as asked, an option is clicked.
    void Edit(const QString& edit) {
        const QString name = edit.section(u'=', 0, 0);
        const QString value = edit.section(u'=', 1);
        QObject* control = m_window->findChild<QObject*>(name);
        QVERIFY2(control != nullptr, qPrintable(name));
        if (auto* box = qobject_cast<QLineEdit*>(control)) {
            box->setText(value);
        } else if (auto* area = qobject_cast<QPlainTextEdit*>(control)) {
            area->setPlainText(value);
        } else if (auto* list = qobject_cast<QComboBox*>(control)) {
            list->setCurrentIndex(value.toInt());
            Q_EMIT list->activated(value.toInt());
        } else if (auto* option = qobject_cast<QRadioButton*>(control)) {
            option->click();
        } else if (auto* tick = qobject_cast<QCheckBox*>(control)) {
            if (tick->isChecked() != (value == u"1")) {
                tick->click();
            }
        } else {
            QFAIL(qPrintable(name + QStringLiteral(": no control the table can edit")));
        }
    }

private Q_SLOTS:
    void init() {
        m_root = std::make_unique<test::TempRoot>();
        m_ui = std::make_unique<test::ScriptedUi>();
        test::StartUserStore(*m_root, *m_ui, kUser, QStringLiteral("pat_sells"));
        // The packing list's templates, as the program's start puts them in place.
        QVERIFY(tasks::InstallPackingTemplates(nullptr));
    }
    void cleanup() {
        m_window.reset();
        test::EndProgramRoot(m_ui, m_root);
    }

    void eachSideListsItsEndedItemsOrShowsItsEmptyPanel_data() {
        QTest::addColumn<bool>("bids");
        QTest::addColumn<bool>("prepared");
        QTest::addColumn<QStringList>("rows");
        QTest::addColumn<QString>("count");
        QTest::addColumn<int>("panel");
        // The running items are not tasks; the winners' rows come after the
        // plain ones.
        Row("sales", false, true,
            QStringList{"2001: Brass lamp", "2002: Tin robot", "D2004: Marbles (winner_a)",
                        "D2004: Marbles (winner_b)"},
            "(4)", 6);
        Row("bids", true, true, QStringList{"3001: Old map"}, "(1)", 6);
        Row("no sales", false, false, QStringList{"No Pending Tasks"}, "(0)", 13);
        Row("no bids", true, false, QStringList{"No Pending Tasks"}, "(0)", 14);
    }

    void eachSideListsItsEndedItemsOrShowsItsEmptyPanel() {
        QFETCH(bool, bids);
        QFETCH(bool, prepared);
        QFETCH(QStringList, rows);
        QFETCH(QString, count);
        QFETCH(int, panel);
        if (prepared) {
            Prepare();
        }
        Open(bids);
        QCOMPARE(Control<QCheckBox>(QStringLiteral("chkToDoAuctions"))->isChecked(), !bids);
        QCOMPARE(Control<QCheckBox>(QStringLiteral("chkToDoBids"))->isChecked(), bids);
        QCOMPARE(Control<QLabel>(QStringLiteral("lblToDoItems"))->text(),
                 bids ? QStringLiteral("Bids:") : QStringLiteral("Sales:"));
        QCOMPARE(Control<QComboBox>(QStringLiteral("lstFilters"))->currentText(),
                 bids ? QStringLiteral("All Bids with Pending Tasks")
                      : QStringLiteral("All Auctions with Pending Tasks"));
        QCOMPARE(Texts(List()), rows);
        QCOMPARE(Control<QLabel>(QStringLiteral("lblToDoRecordCount"))->text(), count);
        QCOMPARE(ShownPanel(), panel);
        QCOMPARE(Tree()->isEnabled(), prepared);
        if (!prepared) {
            const QString side = bids ? QStringLiteral("Bids") : QStringLiteral("Auctions");
            QCOMPARE(Control<QLabel>(QStringLiteral("lblNoPendingTasks%1").arg(panel))->text(),
                     QStringLiteral("No ") + side + QStringLiteral(" with Pending Tasks"));
            QVERIFY(Control<QLabel>(QStringLiteral("lblNoPendingTasksText%1").arg(panel))
                        ->text()
                        .endsWith(QStringLiteral("once ") + side + QStringLiteral(" have ended.")));
            return;
        }
        // Row 0 and its summary.
        QCOMPARE(List()->currentRow(), 0);
        QCOMPARE(Tree()->currentItem()->data(0, Qt::UserRole).toString(), QStringLiteral("SUMS"));
        QVERIFY2(ShownTitle().startsWith(QStringLiteral("Bid Summary: #") +
                                         rows.first().section(u':', 0, 0)),
                 qPrintable(ShownTitle()));
        // The side switch is a pair of which one stays set: a click on the
        // set one keeps it.
        auto* set = Control<QCheckBox>(bids ? QStringLiteral("chkToDoBids")
                                            : QStringLiteral("chkToDoAuctions"));
        set->click();
        QVERIFY(set->isChecked());
        QCOMPARE(Texts(List()), rows);
    }

    void eachNodeOpensItsPanelForTheSelectedItem_data() {
        QTest::addColumn<bool>("bids");
        QTest::addColumn<QString>("row");
        QTest::addColumn<QString>("node");
        QTest::addColumn<int>("panel");
        QTest::addColumn<QString>("title");
        Row("item", false, "2001", "SUM", 5, "Item Information: #2001");
        Row("winner's item", false, "D2004: Marbles (winner_b)", "SUM", 5,
            "Item Information: #2004 (Dutch Auction)");
        Row("summary", false, "2002", "SUMS", 6, "Bid Summary: #2002 (Ended ");
        Row("notes", false, "2001", "SUMN", 3, "Notes for Item #2001");
        Row("buyer's address", false, "2001", "PRA", 7, "Address for buyer_one");
        Row("mail", false, "2001", "CON", 10, "Congratulations (#2001)");
        Row("sale payment", false, "2001", "PRI", 0, "Payment Info for #2001");
        Row("shipping", false, "2001", "SHS", 1, "Shipping Info for #2001");
        Row("yes or no", false, "2001", "SHR", 4, "Buyer Received Item");
        Row("left feedback", false, "2001", "FBL", 12, "Feedback Left: #2001");
        Row("received feedback", false, "2001", "FBR", 12, "Received Feedback: #2001");
        Row("bid payment", true, "3001", "PRP", 0, "Payment Info for #3001");
        Row("item received", true, "3001", "IRR", 2, "Item Received: #3001");
        Row("seller's address", true, "3001", "PRA", 7, "Address for map_seller");
    }

    void eachNodeOpensItsPanelForTheSelectedItem() {
        QFETCH(bool, bids);
        QFETCH(QString, row);
        QFETCH(QString, node);
        QFETCH(int, panel);
        QFETCH(QString, title);
        Prepare();
        Open(bids);
        SelectRow(row);
        SelectNode(node);
        QCOMPARE(ShownPanel(), panel);
        QVERIFY2(ShownTitle().startsWith(title), qPrintable(ShownTitle()));
        QVERIFY(m_ui->Messages().isEmpty());
    }

    void aPackingListWithoutItsDataOpensThePanelThatLacksIt_data() {
        QTest::addColumn<bool>("bids");
        QTest::addColumn<QString>("node");
        QTest::addColumn<QString>("box");
        QTest::addColumn<QString>("opens");
        QTest::addColumn<int>("panel");
        Row("packing list", false, "SHP", "Missing Address", "PRA", 7);
        Row("remittance advice", true, "PRS", "Missing Payment Info", "PRP", 0);
    }

    void aPackingListWithoutItsDataOpensThePanelThatLacksIt() {
        QFETCH(bool, bids);
        QFETCH(QString, node);
        QFETCH(QString, box);
        QFETCH(QString, opens);
        QFETCH(int, panel);
        Prepare();
        Open(bids);
        SelectNode(node);
        QCOMPARE(m_ui->Titles(), QStringList{box});
        QCOMPARE(Tree()->currentItem()->data(0, Qt::UserRole).toString(), opens);
        QCOMPARE(ShownPanel(), panel);
    }

    void savesWriteTheRecordAndMarkTheTask_data() {
        QTest::addColumn<bool>("bids");
        QTest::addColumn<QString>("row");
        QTest::addColumn<QString>("node");
        QTest::addColumn<QString>("edits");  // "control=value|..."
        QTest::addColumn<QString>("save");
        QTest::addColumn<QString>("record");
        // "column=value|...": "<today>" is today's date as the boxes take it,
        // "<null>" Null; "Table/key#column=value" is of another record.
        QTest::addColumn<QString>("written");
        Row("notes", false, "2001", "SUMN", "txtToDoNotes=Wants it gift wrapped", "cmdSaveNotes",
            "Auctions/2001", "AuctionNotes=Wants it gift wrapped");
        Row("a winner's notes, the other winner's untouched", false, "D2004: Marbles (winner_b)",
            "SUMN", "txtToDoNotes=Two bags", "cmdSaveNotes", "Dutch/2004/winner_b",
            "AuctionNotes=Two bags|Dutch/2004/winner_a#AuctionNotes=<null>|"
            "Auctions/2004#AuctionNotes=<null>");
        Row("shipping, an empty box is Null", false, "2001", "SHS",
            "lstShippingMethod=1|txtTrackingNumber=|txtShippingCost2=$4.00", "cmdSaveShippingInfo",
            "Auctions/2001",
            "ShippingMethod=1|ShippingDate=<today>|OrderShipping=$4.00|"
            "ShippingTrackingNumber=<null>");
        Row("a check with no bank", false, "2002", "PRI",
            "lstPaymentMethods=1|txtCheckNumber=1042|txtDrawnOnBank=", "cmdSavePaymentInfo",
            "Auctions/2002",
            "OrderPaymentMethod=1|OrderPaymentDate=<today>|OrderPaymentNumber=1042|"
            "OrderPaymentBank=<null>");
        Row("received feedback", false, "2001", "FBR",
            "chkReceivedFeedback=1|optReceivedFeedback0=1|txtReceivedFeedbackComment=Fast payment",
            "cmdSaveReceivedFeedback", "Auctions/2001",
            "ReturnFeedback=1|ReturnFeedbackDate=<today>|ReturnFeedbackType=0|"
            "ReturnFeedbackComment=Fast payment");
        Row("left feedback", false, "2001", "FBL",
            "chkReceivedFeedback=1|txtReceivedFeedbackComment=Great buyer",
            "cmdSaveReceivedFeedback", "Auctions/2001",
            "FeedbackLeft=1|FeedbackLeftDate=<today>|FeedbackLeftComment=Great buyer");
        Row("yes or no", false, "2002", "SHR", "chkEmailSent=1", "cmdSaveToDoEmail",
            "Auctions/2002", "EmailBuyerReceived=1|EmailBuyerReceivedDate=<today>");
        Row("mail sent", false, "2002", "CON", "chkEmailSent2=1", "cmdSaveEmailInfo",
            "Auctions/2002", "EmailEndOfAuction=1|EmailEndOfAuctionDate=<today>");
        Row("buyer's address", false, "2001", "PRA",
            "txtAddressFirst=Ann|txtAddressStreet1=12 Elm St|txtAddressState=oh|txtAddressFax=",
            "cmdSaveAddress", "Buyers/buyer_one",
            "FirstName=Ann|StreetAddress1=12 Elm St|FaxNumber=<null>");
        Row("item received", true, "3001", "IRR",
            "chkItemReceived=1|lstItemCondition=0|txtItemNotes=", "cmdSaveItemReceived",
            "Bids/3001",
            "Item Received=1|ItemReceivedDate=<today>|ItemCondition=0|ItemNotes=<null>");
        Row("bid payment by money order", true, "3001", "PRP",
            "lstPaymentMethods=3|txtMoneyOrder=MO-77|txtSalesTax=", "cmdSavePaymentInfo",
            "Bids/3001", "OrderPaymentMethod=3|OrderPaymentNumber=MO-77|OrderTax=<null>");
    }

    void savesWriteTheRecordAndMarkTheTask() {
        QFETCH(bool, bids);
        QFETCH(QString, row);
        QFETCH(QString, node);
        QFETCH(QString, edits);
        QFETCH(QString, save);
        QFETCH(QString, record);
        QFETCH(QString, written);
        Prepare();
        SetRemovalTags(QVariant(), QVariant());
        Open(bids);
        SelectRow(row);
        SelectNode(node);
        QCOMPARE(Picture(Tree(), node), 4);
        for (const QString& edit : edits.split(u'|')) {
            Edit(edit);
        }
        Control<QPushButton>(save)->click();
        for (const QString& entry : written.split(u'|')) {
            const QString where = entry.contains(u'#') ? entry.section(u'#', 0, 0) : record;
            const QString expected = entry.section(u'#', -1);
            const QString column = expected.section(u'=', 0, 0);
            const QVariant stored =
                Field(where.section(u'/', 0, 0), where.section(u'/', 1), column);
            const QString shown = stored.isNull() ? QStringLiteral("<null>") : stored.toString();
            QString value = expected.section(u'=', 1);
            value.replace(QStringLiteral("<today>"), Today());
            QCOMPARE(where + u'#' + column + u'=' + shown, where + u'#' + column + u'=' + value);
        }
        // The task is done now, and the list shows the same item still.
        QCOMPARE(Picture(Tree(), node), 3);
        QVERIFY(List()->currentItem()->text().startsWith(row));
        QVERIFY(m_ui->Messages().isEmpty());
    }

    void onlyThePreferredTaskEndsAnItem_data() {
        QTest::addColumn<bool>("bids");
        QTest::addColumn<QString>("tag");
        QTest::addColumn<QString>("node");
        QTest::addColumn<QString>("edits");  // "control=value|..."
        QTest::addColumn<QString>("save");
        QTest::addColumn<bool>("ends");
        Row("left feedback ticked", false, "FBL", "FBL", "chkReceivedFeedback=1",
            "cmdSaveReceivedFeedback", true);
        Row("left feedback clear", false, "FBL", "FBL", "", "cmdSaveReceivedFeedback", false);
        Row("shipped, another task", false, "FBL", "SHS", "lstShippingMethod=1",
            "cmdSaveShippingInfo", false);
        Row("shipped mail", false, "SHE", "SHE", "chkEmailSent2=1", "cmdSaveEmailInfo", true);
        Row("item received", true, "IRR", "IRR", "chkItemReceived=1", "cmdSaveItemReceived", true);
    }

    void onlyThePreferredTaskEndsAnItem() {
        QFETCH(bool, bids);
        QFETCH(QString, tag);
        QFETCH(QString, node);
        QFETCH(QString, edits);
        QFETCH(QString, save);
        QFETCH(bool, ends);
        Prepare();
        SetRemovalTags(bids ? QVariant() : QVariant(tag), bids ? QVariant(tag) : QVariant());
        Open(bids);
        const QString item = bids ? QStringLiteral("3001") : QStringLiteral("2001");
        const QStringList before = Texts(List());
        SelectRow(item);
        SelectNode(node);
        for (const QString& edit : edits.split(u'|', Qt::SkipEmptyParts)) {
            Edit(edit);
        }
        Control<QPushButton>(save)->click();
        const QString table = bids ? QStringLiteral("Bids") : QStringLiteral("Auctions");
        QCOMPARE(Field(table, item, QStringLiteral("ToDoComplete")).toInt(), ends ? 1 : 0);
        QStringList after = before;
        if (!ends) {
            QCOMPARE(Texts(List()), before);
            return;
        }
        after.removeIf([&item](const QString& r) { return r.startsWith(item); });
        const QString count = QStringLiteral("(%1)").arg(after.size());
        if (after.isEmpty()) {
            after << QStringLiteral("No Pending Tasks");
            QCOMPARE(ShownPanel(), bids ? 14 : 13);
        } else {
            // Built afresh: row 0 and its summary.
            QCOMPARE(List()->currentRow(), 0);
            QCOMPARE(ShownPanel(), 6);
        }
        QCOMPARE(Texts(List()), after);
        QCOMPARE(Control<QLabel>(QStringLiteral("lblToDoRecordCount"))->text(), count);
    }

    void removedByCommandAnItemComesBackFromThePopUp() {
        Prepare();
        ui::frmAuction* w = Open();
        // One winner of a multi-winner sale leaves; the other stays.
        SelectRow(QStringLiteral("D2004: Marbles (winner_a)"));
        Control<QPushButton>(QStringLiteral("cmdRemoveToDo"))->click();
        QCOMPARE(Texts(List()),
                 (QStringList{"2001: Brass lamp", "2002: Tin robot", "D2004: Marbles (winner_b)"}));
        SelectRow(QStringLiteral("2002"));
        Control<QPushButton>(QStringLiteral("cmdRemoveToDo"))->click();
        QCOMPARE(Texts(List()), (QStringList{"2001: Brass lamp", "D2004: Marbles (winner_b)"}));
        QCOMPARE(Control<QLabel>(QStringLiteral("lblToDoRecordCount"))->text(),
                 QStringLiteral("(2)"));

        // Back from My Sales' pop-up menu, it is listed on entering the tab.
        auto* tabs = Control<QTabWidget>(QStringLiteral("SSTab1"));
        tabs->setCurrentIndex(ui::frmAuction::kSalesTab);
        // The item ended five days ago: it stands among the archived sales.
        Named<QComboBox>(w, QStringLiteral("lstAuctionGroup"))->setCurrentIndex(1);
        w->lstAuctionGroup_Click();
        m_ui->ScriptPrompt(QStringLiteral("2002"));
        w->mnuFindItem_Click();
        w->mnuPopupAuctionReturntoTask_Click();
        tabs->setCurrentIndex(ui::frmAuction::kTaskTab);
        QCOMPARE(Texts(List()),
                 (QStringList{"2001: Brass lamp", "2002: Tin robot", "D2004: Marbles (winner_b)"}));
    }

    void thePanelsControlsKeepTheirRules() {
        Prepare();
        Open();
        SelectRow(QStringLiteral("2001"));
        SelectNode(QStringLiteral("PRI"));
        // A money box reformats when left, and the total follows.
        auto* tax = Control<QLineEdit>(QStringLiteral("txtSalesTax"));
        tax->setFocus();
        tax->clear();
        QTest::keyClicks(tax, QStringLiteral("1.5"));
        QTest::keyClick(tax, Qt::Key_Return);
        QCOMPARE(tax->text(), QStringLiteral("$1.50"));
        Control<QLineEdit>(QStringLiteral("txtShippingCost"))->setFocus();
        QCOMPARE(Control<QLineEdit>(QStringLiteral("txtTotalSale"))->text(),
                 QStringLiteral("$14.00"));
        // A method shows its details and dates the payment today.
        Edit(QStringLiteral("lstPaymentMethods=1"));
        QVERIFY(Control<QGroupBox>(QStringLiteral("frmPayment1"))->isVisible());
        QVERIFY(!Control<QGroupBox>(QStringLiteral("frmPayment2"))->isVisible());
        QCOMPARE(Control<QLineEdit>(QStringLiteral("txtPayInfo0"))->text(), Today());
        auto* cleared = Control<QLineEdit>(QStringLiteral("txtDateCleared"));
        Edit(QStringLiteral("chkDateCleared=1"));
        QVERIFY(cleared->isEnabled());
        QCOMPARE(cleared->text(), Today());
        Edit(QStringLiteral("chkDateCleared=0"));
        QVERIFY(!cleared->isEnabled());
        QVERIFY(cleared->text().isEmpty());

        // Enter in the cost paid goes on to what was charged.
        SelectNode(QStringLiteral("SHS"));
        auto* actual = Control<QLineEdit>(QStringLiteral("txtActualShippingCost"));
        actual->setFocus();
        actual->clear();
        QTest::keyClicks(actual, QStringLiteral("3"));
        QTest::keyClick(actual, Qt::Key_Enter);
        QCOMPARE(m_window->focusWidget(), Control<QLineEdit>(QStringLiteral("txtShippingCost2")));
        QCOMPARE(actual->text(), QStringLiteral("$3.00"));

        // The feedback's date, options and comment open with its box.
        SelectNode(QStringLiteral("FBR"));
        auto* date = Control<QLineEdit>(QStringLiteral("txtReceivedFeedbackDate"));
        QVERIFY(!date->isEnabled());
        Edit(QStringLiteral("chkReceivedFeedback=1"));
        QCOMPARE(date->text(), Today());
        QVERIFY(Control<QRadioButton>(QStringLiteral("optReceivedFeedback2"))->isEnabled());
        QVERIFY(!Control<QPushButton>(QStringLiteral("cmdComposeFeedback"))->isVisible());
        SelectNode(QStringLiteral("FBL"));
        QVERIFY(Control<QPushButton>(QStringLiteral("cmdComposeFeedback"))->isVisible());
        QVERIFY(!Control<QRadioButton>(QStringLiteral("optReceivedFeedback0"))->isVisible());

        // The state is put in capitals when left.
        SelectNode(QStringLiteral("PRA"));
        auto* state = Control<QLineEdit>(QStringLiteral("txtAddressState"));
        state->setFocus();
        QTest::keyClicks(state, QStringLiteral("oh"));
        Control<QLineEdit>(QStringLiteral("txtAddressZip"))->setFocus();
        QCOMPARE(state->text(), QStringLiteral("OH"));
    }

    void foldersOpenAndCloseOnADoubleClick() {
        Prepare();
        Open();
        QTreeWidgetItem* folder = NodeOf(Tree(), QStringLiteral("SFP"));
        QVERIFY(folder->isExpanded());
        QCOMPARE(Picture(Tree(), QStringLiteral("SFP")), 9);
        auto doubleClick = [this](QTreeWidgetItem* node) {
            const QPoint place = Tree()->visualItemRect(node).center();
            QTest::mouseClick(Tree()->viewport(), Qt::LeftButton, {}, place);
            QTest::mouseDClick(Tree()->viewport(), Qt::LeftButton, {}, place);
        };
        doubleClick(folder);
        QVERIFY(!folder->isExpanded());
        QCOMPARE(Picture(Tree(), QStringLiteral("SFP")), 8);
        doubleClick(folder);
        QVERIFY(folder->isExpanded());
        QCOMPARE(Picture(Tree(), QStringLiteral("SFP")), 9);
        // A task is no folder: it stays as it is.
        QTreeWidgetItem* task = NodeOf(Tree(), QStringLiteral("PRI"));
        doubleClick(task);
        QCOMPARE(Picture(Tree(), QStringLiteral("PRI")), 4);
    }

    void aPackingListNoProgramOpensGoesToTheClipboard() {
        Prepare();
        core::Database db = core::OpenStore();
        test::InsertRow(db, QStringLiteral("Buyers"),
                        {{"AuctionSiteFlag", 0},
                         {"BuyerID", QStringLiteral("buyer_one")},
                         {"FirstName", QStringLiteral("Ann")},
                         {"LastName", QStringLiteral("Lee")},
                         {"StreetAddress1", QStringLiteral("12 Elm St")},
                         {"City", QStringLiteral("Dayton")}});
        Open();
        QStringList opened;
        m_window->findChild<ui::TaskManagerTab*>()->SetFileOpener([&opened](const QString& path) {
            opened << path;
            return false;
        });
        SelectRow(QStringLiteral("2001"));
        SelectNode(QStringLiteral("SHP"));
        QCOMPARE(ShownPanel(), 8);
        QCOMPARE(ShownTitle(), QStringLiteral("Packing List for #2001"));
        const QString document =
            Control<QTextEdit>(QStringLiteral("txtPackingList"))->toPlainText();
        QVERIFY2(document.contains(QStringLiteral("Brass lamp")), qPrintable(document));
        QVERIFY(document.contains(QStringLiteral("12 Elm St")));

        Control<QPushButton>(QStringLiteral("cmdEditPackingList"))->click();
        QCOMPARE(opened.size(), 1);
        QVERIFY(opened.first().endsWith(QStringLiteral(".rtf")));
        QCOMPARE(m_ui->Titles(), QStringList{"Unable to open word processor"});
        QVERIFY(QApplication::clipboard()->text().contains(QStringLiteral("Brass lamp")));
        QCOMPARE(Field(QStringLiteral("Auctions"), QStringLiteral("2001"),
                       QStringLiteral("PackingListPrinted"))
                     .toInt(),
                 1);
        QCOMPARE(Picture(Tree(), QStringLiteral("SHP")), 3);
    }
};

QTEST_MAIN(TaskManagerWindowTest)
#include "task_manager_ui_test.moc"
