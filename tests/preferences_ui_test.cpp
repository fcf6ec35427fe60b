// SPDX-License-Identifier: GPL-3.0-or-later
// The preferences window on the offscreen platform: named controls loaded from
// the store, typing filtered, checks on leaving a field with the focus put
// back, proxy, password, view and list controls, Update writing the rows and
// Reset reading them back; and the desktop Ui port's boxes with the system's
// texts.
#include <QAbstractButton>
#include <QApplication>
#include <QCheckBox>
#include <QComboBox>
#include <QInputDialog>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QMessageBox>
#include <QPushButton>
#include <QRadioButton>
#include <QSignalSpy>
#include <QSpinBox>
#include <QTabWidget>
#include <QTimer>
#include <QtTest>
#include <memory>

#include "core/session.h"
#include "core/settings.h"
#include "core/store.h"
#include "core/tracking.h"
#include "tests/support/test_support.h"
#include "tests/support/window_test.h"
#include "ui/frmUserPreferences.h"
#include "ui/qt_ui.h"
#include "update/rules.h"
#include "update/update_connections.h"

using namespace lw;

using lw::test::Named;
using lw::test::Retype;

namespace {

const QString kUser = QStringLiteral("Pat O'Brien");

QString Option(const QString& key) {
    return core::GetSetting(QStringLiteral("Tolvane"), QStringLiteral("Options"), key,
                            QStringLiteral("<absent>"));
}

// A column of the user's row in Users or UserSites.
QVariant Stored(const char* table, const QString& column) {
    core::Database db = core::OpenStore();
    core::Statement s = db.Prepare(
        QStringLiteral("SELECT * FROM %1 WHERE UserName = ?").arg(QString::fromLatin1(table)));
    s.Bind(1, kUser);
    return s.Step() ? s.Value(column) : QVariant(QStringLiteral("<no row>"));
}

// Each "name=value" as stored: a column of the user's row in table, or a
// view and option setting when table is null. Null reads as empty.
void ExpectStored(const char* table, const QStringList& values) {
    for (const QString& expected : values) {
        const QString name = expected.section(u'=', 0, 0);
        const QString value = table != nullptr ? Stored(table, name).toString() : Option(name);
        QCOMPARE(name + u'=' + value, expected);
    }
}

template <class T>
T* Get(QWidget* window, const char* name) {
    return Named<T>(window, QString::fromLatin1(name));
}

QLineEdit* Pref(QWidget* window, int index) {
    return Named<QLineEdit>(window, QStringLiteral("txtUserPref%1").arg(index));
}

void Press(QWidget* window, const char* button) {
    QTest::mouseClick(Get<QPushButton>(window, button), Qt::LeftButton);
}

void ClickRow(QListWidget* list, int row) {
    QTest::mouseClick(list->viewport(), Qt::LeftButton, {},
                      list->visualItemRect(list->item(row)).center());
}

// Brings a tab to the front and lets its layout settle before clicks land on it.
void ShowTab(QWidget* window, int index) {
    Get<QTabWidget>(window, "tabPreferences")->setCurrentIndex(index);
    QTest::qWait(10);
}

// A click on the box itself, not in the empty stretch beside its caption.
void ClickBox(QAbstractButton* box) {
    QTest::mouseMove(box, QPoint(6, box->height() / 2));
    QTest::mouseClick(box, Qt::LeftButton, {}, QPoint(6, box->height() / 2));
}

}  // namespace

class PreferencesWindowTest : public QObject {
    Q_OBJECT

private:
    // Shows the window and gives it the focus, as a person's click would.
    void Activate(QWidget* window) {
        window->show();
        window->activateWindow();
        QVERIFY(QTest::qWaitForWindowActive(window));
    }
    // Moves the focus out of edit with the Tab key and lets the check run.
    void LeaveWithTab(QLineEdit* edit) {
        QTest::keyClick(edit, Qt::Key_Tab);
        QTest::qWait(20);
    }
    void FillRequired(QWidget* w) {
        const std::pair<int, const char*> values[] = {
            {0, "Pat"},       {2, "O'Brien"},      {5, "1 Main St"}, {7, "Springfield"},
            {8, "IL"},        {9, "62701"},        {10, "Pat"},      {12, "O'Brien"},
            {15, "PO Box 4"}, {17, "Springfield"}, {18, "IL"},       {19, "62705"},
        };
        for (const auto& [index, text] : values) {
            Retype(Pref(w, index), QString::fromUtf8(text));
        }
    }

    std::unique_ptr<test::TempRoot> m_root;
    std::unique_ptr<test::ScriptedUi> m_ui;

private Q_SLOTS:
    void init() {
        m_root = std::make_unique<test::TempRoot>();
        m_ui = std::make_unique<test::ScriptedUi>();
        const QString error = test::StartProgramRoot(*m_root, *m_ui);
        QVERIFY2(error.isEmpty(), qPrintable(error));
        core::Database db = core::OpenStore();
        QVERIFY(update::DecryptProtocols(update::Rules(), db));
        core::AddUser(db, {kUser, QStringLiteral("pat_sells"), QStringLiteral("secret"),
                           QStringLiteral("pat@example.com")});
        core::SetCurrentUser(kUser);
    }
    void cleanup() {
        core::SetSettingsFolder({});
        core::ResetSession();
        m_ui.reset();
        m_root.reset();
    }

    void controlsCarryTheSystemsNamesAndTheUsersValues() {
        ui::frmUserPreferences w;
        for (int index = 0; index < 34; ++index) {
            QCOMPARE(Pref(&w, index)->property("index").toInt(), index);
        }
        for (int i = 0; i < 5; ++i) {
            Named<QRadioButton>(&w, QStringLiteral("optConnection%1").arg(i));
        }
        // A new user is on the network option: no proxy shown.
        auto* network = Get<QRadioButton>(&w, "optConnection1");
        QCOMPARE(network->text(),
                 QStringLiteral("&Network (Including external DSL modem connected to a "
                                "network card)"));
        QVERIFY(network->isChecked());
        QVERIFY(Get<QLineEdit>(&w, "txtProxyPort")->isHidden());
        // The user's values; the name only shown, the FTP defaults and the
        // password kept without being shown.
        const QList<std::pair<int, QString>> loaded = {{20, kUser},
                                                       {24, QStringLiteral("pat_sells")},
                                                       {25, QStringLiteral("pat@example.com")},
                                                       {33, QStringLiteral("secret")}};
        for (const auto& [index, text] : loaded) {
            QCOMPARE(Pref(&w, index)->text(), text);
        }
        QVERIFY(Pref(&w, 20)->isReadOnly());
        for (int index = 27; index <= 33; ++index) {
            QVERIFY2(Pref(&w, index)->isHidden(), qPrintable(QString::number(index)));
        }
        // The lists come from the rule store.
        QCOMPARE(Get<QComboBox>(&w, "cmbCountryShipping")->itemText(0),
                 QStringLiteral("United States"));
        QVERIFY(Get<QListWidget>(&w, "lstRegions")->count() > 0);
        QCOMPARE(Get<QListWidget>(&w, "lstShippingRegions")->count(), 9);
        // A new user's removal rules are loaded by position.
        QCOMPARE(Get<QComboBox>(&w, "cmbSaleOverPref")->currentText(),
                 QStringLiteral("Once I've received feedback from buyer"));
        QCOMPARE(Get<QListWidget>(&w, "lstDuration")->currentItem()->text(),
                 QStringLiteral("7 days"));
        QCOMPARE(Get<QListWidget>(&w, "lstTimeLeftOptions")->item(1)->data(Qt::UserRole).toInt(),
                 65535);
        QVERIFY(m_ui->History().empty());
    }

    void typingIsFilteredAndUpdateWritesTheRows() {
        ui::frmUserPreferences w;
        Activate(&w);
        auto* payCountry = Get<QComboBox>(&w, "cmbCountryPayment");
        Get<QComboBox>(&w, "cmbCountryShipping")->setCurrentIndex(0);
        payCountry->setCurrentIndex(payCountry->findText(QStringLiteral("Canada")));
        FillRequired(&w);
        // The first country's ZIP code takes digits and dashes, Canada's is
        // typed as it is; the tax rate takes digits and a point.
        const std::tuple<int, const char*, const char*> typing[] = {
            {9, "62701-12a3 4", "62701-1234"},
            {19, "M5V 2T6", "M5V 2T6"},
            {22, "7,2x5%", "725"},
            {22, "7.25", "7.25"},
        };
        for (const auto& [field, typed, shown] : typing) {
            Retype(Pref(&w, field), QString::fromUtf8(typed));
            QCOMPARE(Pref(&w, field)->text(), QString::fromUtf8(shown));
        }
        Retype(Pref(&w, 21), QStringLiteral("reply@example.com"));
        Press(&w, "cmdUseTolvane");
        QCOMPARE(Pref(&w, 23)->text(), QStringLiteral("Use Tolvane Mail Server"));
        Get<QComboBox>(&w, "cmbWinningBidOver")->setCurrentIndex(0);

        auto* regions = Get<QListWidget>(&w, "lstShippingRegions");
        QVERIFY(!regions->isEnabled());
        QTest::mouseClick(Get<QRadioButton>(&w, "optUSPlus"), Qt::LeftButton);
        QVERIFY(regions->isEnabled());
        // Rows clicked on their tabs: two regions, two payments, the fifth
        // duration and the first refresh interval.
        const std::tuple<int, const char*, int> rows[] = {
            {4, "lstShippingRegions", 1}, {4, "lstShippingRegions", 3},
            {3, "lstPaymentPref", 1},     {3, "lstPaymentPref", 2},
            {3, "lstDuration", 4},        {6, "lstTimeLeftOptions", 0},
        };
        for (const auto& [tab, list, row] : rows) {
            ShowTab(&w, tab);
            ClickRow(Get<QListWidget>(&w, list), row);
        }
        auto* payment = Get<QListWidget>(&w, "lstPaymentPref");

        QSignalSpy timerSpy(&w, &ui::frmUserPreferences::TimeLeftTimerChanged);
        Press(&w, "cmdUpdate");
        QCOMPARE(m_ui->Messages(), QStringList());
        QCOMPARE(w.result(), int(QDialog::Accepted));
        QVERIFY(!w.isVisible());

        // An empty box is Null; the rate is kept as a fraction.
        QVERIFY(Stored("Users", "SMiddleName").isNull());
        QCOMPARE(Stored("Users", "SalesTaxRate").toDouble(), 0.0725);
        ExpectStored("Users", {"SFirstName=Pat", "SLastName=O'Brien", "zipcode=62701-1234",
                               "PZIPCode=M5V 2T6", "country=United States", "PCountry=Canada",
                               "ReplyEmailAddress=reply@example.com",
                               "MailServer=Use Tolvane Mail Server", "BidRemoveTag=IRR"});
        ExpectStored("UserSites",
                     {"shipUSPlus=1", "europe=1", "asia=1", "northamerica=0", "duration=10"});
        QCOMPARE(Stored("UserSites", "PaymentTypePref").toString(),
                 payment->item(1)->text() + QStringLiteral("~~~") + payment->item(2)->text());
        QCOMPARE(timerSpy.count(), 1);
        const auto timer = timerSpy.at(0).at(0).value<core::TimeLeftTimer>();
        QVERIFY(timer.enabled);
        QCOMPARE(timer.intervalMs, 30000);
    }

    void leavingAFieldRunsItsCheckAndPutsTheFocusBack() {
        ui::frmUserPreferences w;
        Activate(&w);
        QLineEdit* first = Pref(&w, 0);
        first->setFocus();
        QTRY_COMPARE(QApplication::focusWidget(), first);
        LeaveWithTab(first);
        QTRY_COMPARE(m_ui->Messages(), QStringList{QStringLiteral("Required Information Missing")});
        QCOMPARE(m_ui->Titles(), QStringList{QStringLiteral("Missing Data")});
        QTRY_COMPARE(QApplication::focusWidget(), first);

        // A filled field is left without a word.
        QTest::keyClicks(first, QStringLiteral("Pat"));
        LeaveWithTab(first);
        QTRY_VERIFY(QApplication::focusWidget() != first);
        QCOMPARE(m_ui->Messages().size(), 1);

        ShowTab(&w, 1);
        QLineEdit* reply = Pref(&w, 21);
        reply->setFocus();
        QTRY_COMPARE(QApplication::focusWidget(), reply);
        Retype(reply, QStringLiteral("pat-at-example.com"));
        LeaveWithTab(reply);
        QTRY_COMPARE(m_ui->Messages().size(), 2);
        QCOMPARE(m_ui->Messages().at(1),
                 QStringLiteral("Your email Address Is Not Valid, Please Reenter"));
        QCOMPARE(m_ui->Titles().at(1), QStringLiteral("Invalid email Address"));
        QTRY_COMPARE(QApplication::focusWidget(), reply);

        // Pressing Update straight from the bad field runs the check first
        // and writes nothing.
        QSignalSpy saved(&w, &ui::frmUserPreferences::PreferencesSaved);
        Press(&w, "cmdUpdate");
        QTRY_COMPARE(m_ui->Messages().size(), 3);
        QVERIFY(w.isVisible());
        QCOMPARE(saved.count(), 0);
        QVERIFY(Stored("Users", "SFirstName").isNull());

        // A small tax rate is offered as percent; taken, the focus comes back.
        Retype(reply, QStringLiteral("reply@example.com"));
        QLineEdit* tax = Pref(&w, 22);
        tax->setFocus();
        QTRY_COMPARE(QApplication::focusWidget(), tax);
        FillRequired(&w);
        QTest::keyClicks(tax, QStringLiteral("0.5"));
        m_ui->ScriptAnswer(core::Answer::Yes);
        LeaveWithTab(tax);
        QTRY_COMPARE(m_ui->History().size(), size_t(4));
        QCOMPARE(m_ui->History()[3].kind, QStringLiteral("ask"));
        QCOMPARE(m_ui->History()[3].text,
                 QStringLiteral("0.5 Is Less Than One Percent, Do You Mean 50.00%?"));
        QCOMPARE(m_ui->History()[3].title, QStringLiteral("Sales Tax Rate"));
        QCOMPARE(tax->text(), QStringLiteral("50"));
        QTRY_COMPARE(QApplication::focusWidget(), tax);

        Press(&w, "cmdUpdate");
        QCOMPARE(saved.count(), 1);
        QCOMPARE(Stored("Users", "SalesTaxRate").toDouble(), 0.5);
        ui::frmUserPreferences again;
        QCOMPARE(Pref(&again, 22)->text(), QStringLiteral("50.00"));
    }

    void theConnectionTabsChoicesAreStored() {
        ui::frmUserPreferences w;
        FillRequired(&w);
        auto* port = Get<QLineEdit>(&w, "txtProxyPort");
        auto* server = Get<QLineEdit>(&w, "txtProxyServer");
        auto* connections = Get<QSpinBox>(&w, "spnConnections");
        auto choose = [](QWidget* window, int option) {
            QTest::mouseClick(
                Named<QRadioButton>(window, QStringLiteral("optConnection%1").arg(option)),
                Qt::LeftButton);
        };
        // Shown above the second option, an empty port filled in.
        choose(&w, 3);
        QVERIFY(!port->isHidden());
        QVERIFY(!server->isHidden());
        QCOMPARE(port->text(), QStringLiteral("80"));
        choose(&w, 2);
        QVERIFY(port->isHidden());
        QVERIFY(server->isHidden());
        choose(&w, 4);
        QTest::keyClicks(server, QStringLiteral("proxy.example.com"));
        // The connections an update keeps to the site: a setting, not a column.
        QCOMPARE(connections->minimum(), 1);
        QCOMPARE(connections->maximum(), 8);
        QCOMPARE(connections->value(), 6);
        QCOMPARE(Get<QLabel>(&w, "lblConnectionsNote")->text(), admin::ConnectionsNote());
        QVERIFY(Get<QWidget>(&w, "tabConnection")->isAncestorOf(connections));
        connections->setValue(2);
        Press(&w, "cmdUpdate");
        ExpectStored("Users",
                     {"InternetConnection=4", "ProxyServer=proxy.example.com", "ProxyPort=80"});
        QCOMPARE(update::ConnectionsSetting(), 2);

        // Without a proxy the proxy columns are Null again.
        ui::frmUserPreferences again;
        QCOMPARE(Get<QSpinBox>(&again, "spnConnections")->value(), 2);
        QCOMPARE(Get<QLineEdit>(&again, "txtProxyServer")->text(),
                 QStringLiteral("proxy.example.com"));
        choose(&again, 2);
        Press(&again, "cmdUpdate");
        QCOMPARE(Stored("Users", "InternetConnection").toInt(), 2);
        QVERIFY(Stored("Users", "ProxyServer").isNull());
        QVERIFY(Stored("Users", "ProxyPort").isNull());
    }

    void passwordChangeRunsOnItsOwnTab() {
        ui::frmUserPreferences w;
        Activate(&w);
        FillRequired(&w);
        auto* tabs = Get<QTabWidget>(&w, "tabPreferences");
        QLineEdit* pw[3];
        for (int i = 0; i < 3; ++i) {
            pw[i] = Named<QLineEdit>(&w, QStringLiteral("txtPassword%1").arg(i));
        }
        auto shownTabs = [tabs] {
            QStringList shown;
            for (int i = 0; i < tabs->count(); ++i) {
                if (tabs->isTabVisible(i)) {
                    shown << tabs->widget(i)->objectName();
                }
            }
            return shown;
        };
        const QStringList allButPassword = shownTabs();
        QVERIFY(!allButPassword.contains(QStringLiteral("tabPassword")));
        // Cancelled, refused twice (told, the focus on the new password, the
        // tab still up), then changed.
        struct Attempt {
            const char* typed[3];
            const char* button;
            const char* message;  // empty: the tab closes
            const char* title;
        };
        const Attempt attempts[] = {
            {{"secret", "", ""}, "cmdCancelPasswordChange", "", ""},
            {{"guess", "n3w'pw", "n3w'pw"},
             "cmdUpdatePassword",
             "Old Password Is Not Correct",
             "Incorrect Old Password"},
            {{"secret", "n3w'pw", "other"},
             "cmdUpdatePassword",
             "New Passwords Do Not Match",
             "Mismatched New Password"},
            {{"secret", "n3w'pw", "n3w'pw"}, "cmdUpdatePassword", "", ""},
        };
        QString password = QStringLiteral("secret");
        for (const Attempt& attempt : attempts) {
            if (shownTabs() == allButPassword) {
                tabs->setCurrentIndex(1);
                Press(&w, "cmdChangePassword");
                for (const char* name : {"cmdUpdate", "cmdReset", "cmdCancel"}) {
                    QVERIFY(!Get<QPushButton>(&w, name)->isEnabled());
                }
                QCOMPARE(shownTabs(), QStringList{QStringLiteral("tabPassword")});
                QCOMPARE(tabs->currentWidget()->objectName(), QStringLiteral("tabPassword"));
                // Only the tab's own buttons end it: Escape closes nothing.
                QTest::keyClick(&w, Qt::Key_Escape);
                QVERIFY(w.isVisible());
            }
            for (int i = 0; i < 3; ++i) {
                Retype(pw[i], QString::fromUtf8(attempt.typed[i]));
            }
            Press(&w, attempt.button);
            if (*attempt.message != '\0') {
                QCOMPARE(m_ui->Messages().last(), QString::fromUtf8(attempt.message));
                QCOMPARE(m_ui->Titles().last(), QString::fromUtf8(attempt.title));
                QTRY_COMPARE(QApplication::focusWidget(), pw[1]);
                QCOMPARE(tabs->currentWidget()->objectName(), QStringLiteral("tabPassword"));
                QCOMPARE(Pref(&w, 33)->text(), password);
                continue;
            }
            if (QByteArray(attempt.button) == "cmdUpdatePassword") {
                password = QString::fromUtf8(attempt.typed[1]);
            }
            QCOMPARE(tabs->currentIndex(), 1);
            QCOMPARE(shownTabs(), allButPassword);
            QVERIFY(Get<QPushButton>(&w, "cmdUpdate")->isEnabled());
            QCOMPARE(pw[0]->text(), QString());
            QCOMPARE(Pref(&w, 33)->text(), password);
        }
        QCOMPARE(m_ui->Messages().size(), 2);
        // Not stored until Update.
        QCOMPARE(Stored("UserSites", "UserPassword").toString(), QStringLiteral("secret"));
        Press(&w, "cmdUpdate");
        QCOMPARE(Stored("UserSites", "UserPassword").toString(), QStringLiteral("n3w'pw"));
    }

    void viewGroupsFollowTheirBoxesAndOrders() {
        ui::frmUserPreferences w;
        Activate(&w);
        ShowTab(&w, 6);
        auto* group = Get<QCheckBox>(&w, "chkViewArchiveGroup");
        auto* interval = Get<QLineEdit>(&w, "txtAInterval");
        auto* order = Get<QListWidget>(&w, "lstAOrder");
        auto* up = Get<QCheckBox>(&w, "chkAAscending");
        auto* down = Get<QCheckBox>(&w, "chkADescending");
        QVERIFY(!interval->isEnabled());
        // The words of the tab: both page sizes count rows, and the refresh
        // rows read as they always have.
        QStringList words;
        for (const QLabel* label : Get<QWidget>(&w, "tabViews")->findChildren<QLabel*>()) {
            words << label->text();
        }
        QCOMPARE(words.count(QStringLiteral("Rows per page (0 for all):")), 2);
        QVERIFY2(words.filter(QStringLiteral("Days")).isEmpty(), qPrintable(words.join(u'|')));
        QStringList refresh;
        auto* options = Get<QListWidget>(&w, "lstTimeLeftOptions");
        for (int row = 0; row < options->count(); ++row) {
            refresh << options->item(row)->text();
        }
        QCOMPARE(refresh, QStringList({"30 seconds", "minute", "5 minutes", "10 minutes",
                                       "15 minutes", "30 minutes", "45 minutes", "hour"}));
        ClickBox(group);
        QVERIFY(interval->isEnabled());
        ClickRow(order, 1);  // HighBid
        QVERIFY(down->isChecked());
        QVERIFY(!up->isChecked());
        ClickRow(order, 3);
        QVERIFY(up->isChecked());
        ClickBox(down);
        QVERIFY(!up->isChecked());
        Retype(interval, QStringLiteral("30"));

        ClickBox(Get<QCheckBox>(&w, "chkViewCurrentGroup"));
        ClickBox(Get<QCheckBox>(&w, "chkCAscending"));
        FillRequired(&w);
        Press(&w, "cmdUpdate");
        ExpectStored(nullptr, {"AAViewInterval=30", "AAViewOrder=ItemTitle", "AAViewOrder2=DESC",
                               "CAViewInterval=30", "CAViewOrder=ItemTitle", "CAViewOrder2="});

        // Unticking puts the group back to its resting state.
        ui::frmUserPreferences again;
        auto* againGroup = Get<QCheckBox>(&again, "chkViewArchiveGroup");
        auto* againInterval = Get<QLineEdit>(&again, "txtAInterval");
        QVERIFY(againGroup->isChecked());
        QCOMPARE(againInterval->text(), QStringLiteral("30"));
        ClickBox(againGroup);
        QCOMPARE(againInterval->text(), QStringLiteral("0"));
        QCOMPARE(Get<QListWidget>(&again, "lstAOrder")->currentRow(), 0);
        QVERIFY(Get<QCheckBox>(&again, "chkAAscending")->isChecked());
        QVERIFY(!againInterval->isEnabled());
        ClickBox(Get<QCheckBox>(&again, "chkViewCurrentGroup"));
        QVERIFY(Get<QCheckBox>(&again, "chkCDescending")->isChecked());
    }

    void noShippingPreferenceStandsAlone() {
        ui::frmUserPreferences w;
        Activate(&w);
        ShowTab(&w, 4);
        auto* list = Get<QListWidget>(&w, "lstShippingPref");
        // Row 0, no preference, is chosen alone: it clears the others and
        // keeps them from being chosen beside it.
        for (const auto& [row, selected] : {std::pair{2, "2"}, {3, "23"}, {0, "0"}, {1, "0"}}) {
            ClickRow(list, row);
            QString rows;
            for (int i = 0; i < list->count(); ++i) {
                rows += list->item(i)->isSelected() ? QString::number(i) : QString();
            }
            QCOMPARE(rows, QString::fromLatin1(selected));
        }
    }

    void trackingIsOffUntilTickedAndWrittenAtOnce() {
        // A new store: the report is off, and the window says what it sends.
        // A click is written at once and stands the next time.
        for (const char* track : {"ON", "OFF"}) {
            ui::frmUserPreferences w;
            auto* box = Get<QCheckBox>(&w, "chkTracking");
            QCOMPARE(box->isChecked(), QByteArray(track) == "OFF");
            QCOMPARE(Get<QLabel>(&w, "lblTracking")->text(), core::UsageReportSummary());
            ClickBox(box);
            QCOMPARE(Option("Track"), QString::fromLatin1(track));
        }
    }

    void resetAndCancelLeaveTheStoreAsItWas() {
        ui::frmUserPreferences w;
        auto* id = Get<QLineEdit>(&w, "txtUserPref24");
        Retype(id, QStringLiteral("someone_else"));
        Press(&w, "cmdReset");
        QCOMPARE(id->text(), QStringLiteral("pat_sells"));
        Retype(id, QStringLiteral("someone_else"));
        w.show();
        Press(&w, "cmdCancel");
        QCOMPARE(w.result(), int(QDialog::Rejected));
        QCOMPARE(Stored("UserSites", "UserID").toString(), QStringLiteral("pat_sells"));
    }

    void aMissingUserIsTold() {
        core::SetCurrentUser(QStringLiteral("Nobody"));
        ui::frmUserPreferences w;
        QCOMPARE(m_ui->Messages(), QStringList{QStringLiteral("No Valid Current User Set")});
    }

    void qtUiShowsTheSystemsTextsAndReturnsTheAnswer() {
        ui::QtUi qtUi;
        // Each box as "title|text", closed with the button given.
        QStringList shown;
        auto answer = [this, &shown](QMessageBox::StandardButton button) {
            QTimer::singleShot(0, this, [&shown, button] {
                auto* box = qobject_cast<QMessageBox*>(QApplication::activeModalWidget());
                QVERIFY(box != nullptr);
                shown << box->windowTitle() + u'|' + box->text();
                box->button(button)->click();
            });
        };
        answer(QMessageBox::No);
        QCOMPARE(
            qtUi.Ask(QStringLiteral("150 Is Greater Than 100 Percent, Is This Correct?"),
                     QStringLiteral("Sales Tax Rate"), core::Buttons::YesNo, core::Answer::Yes),
            core::Answer::No);
        answer(QMessageBox::Ok);
        qtUi.Message(QStringLiteral("Trimming ZIP Code to 5 Digits"),
                     QStringLiteral("5 Digit ZIP Code"), core::Icon::Information);
        QCOMPARE(shown,
                 QStringList({"Sales Tax Rate|150 Is Greater Than 100 Percent, Is This Correct?",
                              "5 Digit ZIP Code|Trimming ZIP Code to 5 Digits"}));

        QTimer::singleShot(0, this, [&] {
            auto* dialog = qobject_cast<QInputDialog*>(QApplication::activeModalWidget());
            QVERIFY(dialog != nullptr);
            QCOMPARE(dialog->textValue(), QStringLiteral("start"));
            dialog->setTextValue(QStringLiteral("typed"));
            dialog->accept();
        });
        QCOMPARE(
            qtUi.Prompt(QStringLiteral("Name?"), QStringLiteral("Prompt"), QStringLiteral("start")),
            std::optional<QString>(QStringLiteral("typed")));

        QSignalSpy status(&qtUi, &ui::QtUi::StatusChanged);
        QSignalSpy progress(&qtUi, &ui::QtUi::ProgressChanged);
        qtUi.Status(QStringLiteral("Checking version"));
        qtUi.Progress(3, 10);
        QCOMPARE(status.at(0).at(0).toString(), QStringLiteral("Checking version"));
        QCOMPARE(progress.at(0).at(1).toLongLong(), 10);

        QPushButton cancel;
        qtUi.AttachCancelButton(&cancel);
        QVERIFY(!qtUi.CancelRequested());
        cancel.click();
        QVERIFY(qtUi.CancelRequested());
        qtUi.ClearCancel();
        QVERIFY(!qtUi.CancelRequested());
    }

    void screenshot() {
        ui::frmUserPreferences w;
        w.resize(w.sizeHint());
        w.show();
        QVERIFY(QTest::qWaitForWindowExposed(&w));
        const QString dir = qEnvironmentVariable("LW_SCREENSHOT_DIR", QStringLiteral("/tmp"));
        QVERIFY(w.grab().save(dir + QStringLiteral("/frmUserPreferences.png")));
        // Every tab on request, for a look at the whole window.
        if (qEnvironmentVariableIsSet("LW_SCREENSHOT_DIR")) {
            auto* tabs = Get<QTabWidget>(&w, "tabPreferences");
            for (int i = 1; i < tabs->count() - 1; ++i) {
                tabs->setCurrentIndex(i);
                w.grab().save(dir + QStringLiteral("/frmUserPreferences_tab%1.png").arg(i));
            }
            Get<QPushButton>(&w, "cmdChangePassword")->click();
            w.grab().save(dir + QStringLiteral("/frmUserPreferences_password.png"));
            Get<QPushButton>(&w, "cmdCancelPasswordChange")->click();
            tabs->setCurrentIndex(2);
            Get<QRadioButton>(&w, "optConnection3")->click();
            w.grab().save(dir + QStringLiteral("/frmUserPreferences_proxy.png"));
        }
    }
};

QTEST_MAIN(PreferencesWindowTest)
#include "preferences_ui_test.moc"
