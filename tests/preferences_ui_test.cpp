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

using namespace lw;

using lw::test::Named;

namespace {

const QString kUser = QStringLiteral("Pat O'Brien");

QString Option(const QString& key) {
    return core::GetSetting(QStringLiteral("Tolvane"), QStringLiteral("Options"), key,
                            QStringLiteral("<absent>"));
}

void ClickRow(QListWidget* list, int row) {
    QTest::mouseClick(list->viewport(), Qt::LeftButton, {},
                      list->visualItemRect(list->item(row)).center());
}

// Brings a tab to the front and lets its layout settle before clicks land on it.
void ShowTab(QWidget* window, int index) {
    window->findChild<QTabWidget*>(QStringLiteral("tabPreferences"))->setCurrentIndex(index);
    QTest::qWait(10);
}

// A click on the box itself, not in the empty stretch beside its caption.
void ClickBox(QAbstractButton* box) {
    QTest::mouseMove(box, QPoint(6, box->height() / 2));
    QTest::mouseClick(box, Qt::LeftButton, {}, QPoint(6, box->height() / 2));
}

void Retype(QLineEdit* edit, const QString& text) {
    edit->clear();
    QTest::keyClicks(edit, text);
}

}  // namespace

class PreferencesWindowTest : public QObject {
    Q_OBJECT

private:
    QVariant UserValue(const QString& column) {
        core::Database db = core::OpenStore();
        core::Statement s = db.Prepare(QStringLiteral("SELECT * FROM Users WHERE UserName = ?"));
        s.Bind(1, kUser);
        if (!s.Step()) {
            return QStringLiteral("<no row>");
        }
        return s.Value(column);
    }
    QVariant SiteValue(const QString& column) {
        core::Database db = core::OpenStore();
        core::Statement s =
            db.Prepare(QStringLiteral("SELECT * FROM UserSites WHERE UserName = ?"));
        s.Bind(1, kUser);
        if (!s.Step()) {
            return QStringLiteral("<no row>");
        }
        return s.Value(column);
    }
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
        const QList<std::pair<int, QString>> values = {
            {0, QStringLiteral("Pat")},       {2, QStringLiteral("O'Brien")},
            {5, QStringLiteral("1 Main St")}, {7, QStringLiteral("Springfield")},
            {8, QStringLiteral("IL")},        {9, QStringLiteral("62701")},
            {10, QStringLiteral("Pat")},      {12, QStringLiteral("O'Brien")},
            {15, QStringLiteral("PO Box 4")}, {17, QStringLiteral("Springfield")},
            {18, QStringLiteral("IL")},       {19, QStringLiteral("62705")},
        };
        for (const auto& [index, text] : values) {
            Retype(Named<QLineEdit>(w, QStringLiteral("txtUserPref%1").arg(index)), text);
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
            auto* edit = Named<QLineEdit>(&w, QStringLiteral("txtUserPref%1").arg(index));
            QCOMPARE(edit->property("index").toInt(), index);
        }
        for (const QString& name :
             {QStringLiteral("cmdUpdate"), QStringLiteral("cmdReset"), QStringLiteral("cmdCancel"),
              QStringLiteral("cmdChangePassword"), QStringLiteral("cmdUpdatePassword"),
              QStringLiteral("cmdCancelPasswordChange"), QStringLiteral("cmdUseTolvane")}) {
            Named<QPushButton>(&w, name);
        }
        for (int i = 0; i < 5; ++i) {
            Named<QRadioButton>(&w, QStringLiteral("optConnection%1").arg(i));
        }
        QCOMPARE(
            Named<QRadioButton>(&w, QStringLiteral("optConnection1"))->text(),
            QStringLiteral("&Network (Including external DSL modem connected to a network card)"));
        QCOMPARE(Named<QLineEdit>(&w, QStringLiteral("txtUserPref20"))->text(), kUser);
        QVERIFY(Named<QLineEdit>(&w, QStringLiteral("txtUserPref20"))->isReadOnly());
        QCOMPARE(Named<QLineEdit>(&w, QStringLiteral("txtUserPref24"))->text(),
                 QStringLiteral("pat_sells"));
        QCOMPARE(Named<QLineEdit>(&w, QStringLiteral("txtUserPref25"))->text(),
                 QStringLiteral("pat@example.com"));
        QCOMPARE(Named<QLineEdit>(&w, QStringLiteral("txtUserPref33"))->text(),
                 QStringLiteral("secret"));
        QVERIFY(Named<QLineEdit>(&w, QStringLiteral("txtUserPref33"))->isHidden());
        // The lists come from the rule store.
        QCOMPARE(Named<QComboBox>(&w, QStringLiteral("cmbCountryShipping"))->itemText(0),
                 QStringLiteral("United States"));
        QVERIFY(Named<QListWidget>(&w, QStringLiteral("lstRegions"))->count() > 0);
        QCOMPARE(Named<QListWidget>(&w, QStringLiteral("lstShippingRegions"))->count(), 9);
        // A new user's removal rules are loaded by position.
        QCOMPARE(Named<QComboBox>(&w, QStringLiteral("cmbSaleOverPref"))->currentText(),
                 QStringLiteral("Once I've received feedback from buyer"));
        QCOMPARE(Named<QListWidget>(&w, QStringLiteral("lstDuration"))->currentItem()->text(),
                 QStringLiteral("7 days"));
        QCOMPARE(Named<QListWidget>(&w, QStringLiteral("lstTimeLeftOptions"))
                     ->item(1)
                     ->data(Qt::UserRole)
                     .toInt(),
                 65535);
        QVERIFY(m_ui->History().empty());
    }

    void typingIsFilteredAndUpdateWritesTheRows() {
        ui::frmUserPreferences w;
        Activate(&w);
        auto* shipCountry = Named<QComboBox>(&w, QStringLiteral("cmbCountryShipping"));
        auto* payCountry = Named<QComboBox>(&w, QStringLiteral("cmbCountryPayment"));
        shipCountry->setCurrentIndex(0);
        payCountry->setCurrentIndex(payCountry->findText(QStringLiteral("Canada")));
        FillRequired(&w);
        Retype(Named<QLineEdit>(&w, QStringLiteral("txtUserPref9")),
               QStringLiteral("62701-12a3 4"));
        QCOMPARE(Named<QLineEdit>(&w, QStringLiteral("txtUserPref9"))->text(),
                 QStringLiteral("62701-1234"));
        // Canada is not the first country: its postcode is typed as it is.
        Retype(Named<QLineEdit>(&w, QStringLiteral("txtUserPref19")), QStringLiteral("M5V 2T6"));
        QCOMPARE(Named<QLineEdit>(&w, QStringLiteral("txtUserPref19"))->text(),
                 QStringLiteral("M5V 2T6"));
        Retype(Named<QLineEdit>(&w, QStringLiteral("txtUserPref22")), QStringLiteral("7,2x5%"));
        QCOMPARE(Named<QLineEdit>(&w, QStringLiteral("txtUserPref22"))->text(),
                 QStringLiteral("725"));
        Retype(Named<QLineEdit>(&w, QStringLiteral("txtUserPref22")), QStringLiteral("7.25"));
        Retype(Named<QLineEdit>(&w, QStringLiteral("txtUserPref21")),
               QStringLiteral("reply@example.com"));
        QTest::mouseClick(Named<QPushButton>(&w, QStringLiteral("cmdUseTolvane")), Qt::LeftButton);
        QCOMPARE(Named<QLineEdit>(&w, QStringLiteral("txtUserPref23"))->text(),
                 QStringLiteral("Use Tolvane Mail Server"));
        Named<QComboBox>(&w, QStringLiteral("cmbWinningBidOver"))->setCurrentIndex(0);

        auto* regions = Named<QListWidget>(&w, QStringLiteral("lstShippingRegions"));
        QVERIFY(!regions->isEnabled());
        QTest::mouseClick(Named<QRadioButton>(&w, QStringLiteral("optUSPlus")), Qt::LeftButton);
        QVERIFY(regions->isEnabled());
        ShowTab(&w, 4);
        ClickRow(regions, 1);
        ClickRow(regions, 3);
        ShowTab(&w, 3);
        auto* payment = Named<QListWidget>(&w, QStringLiteral("lstPaymentPref"));
        ClickRow(payment, 1);
        ClickRow(payment, 2);
        ClickRow(Named<QListWidget>(&w, QStringLiteral("lstDuration")), 4);
        ShowTab(&w, 6);
        ClickRow(Named<QListWidget>(&w, QStringLiteral("lstTimeLeftOptions")), 0);

        QSignalSpy timerSpy(&w, &ui::frmUserPreferences::TimeLeftTimerChanged);
        QTest::mouseClick(Named<QPushButton>(&w, QStringLiteral("cmdUpdate")), Qt::LeftButton);
        QCOMPARE(m_ui->Messages(), QStringList());
        QCOMPARE(w.result(), int(QDialog::Accepted));
        QVERIFY(!w.isVisible());

        QCOMPARE(UserValue(QStringLiteral("SFirstName")).toString(), QStringLiteral("Pat"));
        QCOMPARE(UserValue(QStringLiteral("SLastName")).toString(), QStringLiteral("O'Brien"));
        QCOMPARE(UserValue(QStringLiteral("zipcode")).toString(), QStringLiteral("62701-1234"));
        QCOMPARE(UserValue(QStringLiteral("PZIPCode")).toString(), QStringLiteral("M5V 2T6"));
        QVERIFY(UserValue(QStringLiteral("SMiddleName")).isNull());
        QCOMPARE(UserValue(QStringLiteral("country")).toString(), QStringLiteral("United States"));
        QCOMPARE(UserValue(QStringLiteral("PCountry")).toString(), QStringLiteral("Canada"));
        QCOMPARE(UserValue(QStringLiteral("SalesTaxRate")).toDouble(), 0.0725);
        QCOMPARE(UserValue(QStringLiteral("MailServer")).toString(),
                 QStringLiteral("Use Tolvane Mail Server"));
        QCOMPARE(UserValue(QStringLiteral("BidRemoveTag")).toString(), QStringLiteral("IRR"));
        QCOMPARE(SiteValue(QStringLiteral("shipUSPlus")).toInt(), 1);
        QCOMPARE(SiteValue(QStringLiteral("europe")).toInt(), 1);
        QCOMPARE(SiteValue(QStringLiteral("asia")).toInt(), 1);
        QCOMPARE(SiteValue(QStringLiteral("northamerica")).toInt(), 0);
        QCOMPARE(SiteValue(QStringLiteral("PaymentTypePref")).toString(),
                 payment->item(1)->text() + QStringLiteral("~~~") + payment->item(2)->text());
        QCOMPARE(SiteValue(QStringLiteral("duration")).toInt(), 10);
        QCOMPARE(timerSpy.count(), 1);
        const auto timer = timerSpy.at(0).at(0).value<core::TimeLeftTimer>();
        QVERIFY(timer.enabled);
        QCOMPARE(timer.intervalMs, 30000);
    }

    void leavingABadFieldTellsAndPutsTheFocusBack() {
        ui::frmUserPreferences w;
        Activate(&w);
        auto* first = Named<QLineEdit>(&w, QStringLiteral("txtUserPref0"));
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
        auto* reply = Named<QLineEdit>(&w, QStringLiteral("txtUserPref21"));
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
        QTest::mouseClick(Named<QPushButton>(&w, QStringLiteral("cmdUpdate")), Qt::LeftButton);
        QTRY_COMPARE(m_ui->Messages().size(), 3);
        QVERIFY(w.isVisible());
        QVERIFY(UserValue(QStringLiteral("SFirstName")).isNull());
    }

    void aSmallTaxRateIsOfferedAsPercent() {
        ui::frmUserPreferences w;
        Activate(&w);
        FillRequired(&w);
        ShowTab(&w, 1);
        auto* tax = Named<QLineEdit>(&w, QStringLiteral("txtUserPref22"));
        tax->setFocus();
        QTRY_COMPARE(QApplication::focusWidget(), tax);
        QTest::keyClicks(tax, QStringLiteral("0.5"));
        m_ui->ScriptAnswer(core::Answer::Yes);
        LeaveWithTab(tax);
        QTRY_COMPARE(m_ui->History().size(), size_t(1));
        QCOMPARE(m_ui->History()[0].kind, QStringLiteral("ask"));
        QCOMPARE(m_ui->History()[0].text,
                 QStringLiteral("0.5 Is Less Than One Percent, Do You Mean 50.00%?"));
        QCOMPARE(m_ui->History()[0].title, QStringLiteral("Sales Tax Rate"));
        QCOMPARE(tax->text(), QStringLiteral("50"));
        QTRY_COMPARE(QApplication::focusWidget(), tax);

        QTest::mouseClick(Named<QPushButton>(&w, QStringLiteral("cmdUpdate")), Qt::LeftButton);
        QCOMPARE(UserValue(QStringLiteral("SalesTaxRate")).toDouble(), 0.5);

        ui::frmUserPreferences again;
        QCOMPARE(Named<QLineEdit>(&again, QStringLiteral("txtUserPref22"))->text(),
                 QStringLiteral("50.00"));
    }

    void proxyControlsFollowTheConnection() {
        ui::frmUserPreferences w;
        FillRequired(&w);
        auto* port = Named<QLineEdit>(&w, QStringLiteral("txtProxyPort"));
        auto* server = Named<QLineEdit>(&w, QStringLiteral("txtProxyServer"));
        // A new user is on the network option: no proxy shown.
        QVERIFY(Named<QRadioButton>(&w, QStringLiteral("optConnection1"))->isChecked());
        QVERIFY(port->isHidden());
        QTest::mouseClick(Named<QRadioButton>(&w, QStringLiteral("optConnection3")),
                          Qt::LeftButton);
        QVERIFY(!port->isHidden());
        QVERIFY(!server->isHidden());
        QCOMPARE(port->text(), QStringLiteral("80"));
        QTest::mouseClick(Named<QRadioButton>(&w, QStringLiteral("optConnection2")),
                          Qt::LeftButton);
        QVERIFY(port->isHidden());
        QTest::mouseClick(Named<QRadioButton>(&w, QStringLiteral("optConnection4")),
                          Qt::LeftButton);
        QTest::keyClicks(server, QStringLiteral("proxy.example.com"));
        QTest::mouseClick(Named<QPushButton>(&w, QStringLiteral("cmdUpdate")), Qt::LeftButton);
        QCOMPARE(UserValue(QStringLiteral("InternetConnection")).toInt(), 4);
        QCOMPARE(UserValue(QStringLiteral("ProxyServer")).toString(),
                 QStringLiteral("proxy.example.com"));
        QCOMPARE(UserValue(QStringLiteral("ProxyPort")).toString(), QStringLiteral("80"));
    }

    void passwordChangeRunsOnItsOwnTab() {
        ui::frmUserPreferences w;
        Activate(&w);
        FillRequired(&w);
        auto* tabs = Named<QTabWidget>(&w, QStringLiteral("tabPreferences"));
        auto* update = Named<QPushButton>(&w, QStringLiteral("cmdUpdate"));
        tabs->setCurrentIndex(1);
        QTest::mouseClick(Named<QPushButton>(&w, QStringLiteral("cmdChangePassword")),
                          Qt::LeftButton);
        QVERIFY(!update->isEnabled());
        QVERIFY(!Named<QPushButton>(&w, QStringLiteral("cmdReset"))->isEnabled());
        QVERIFY(!Named<QPushButton>(&w, QStringLiteral("cmdCancel"))->isEnabled());
        int shown = 0;
        for (int i = 0; i < tabs->count(); ++i) {
            shown += tabs->isTabVisible(i) ? 1 : 0;
        }
        QCOMPARE(shown, 1);
        QCOMPARE(tabs->currentWidget()->objectName(), QStringLiteral("tabPassword"));

        auto* oldPw = Named<QLineEdit>(&w, QStringLiteral("txtPassword0"));
        auto* newPw = Named<QLineEdit>(&w, QStringLiteral("txtPassword1"));
        auto* repeat = Named<QLineEdit>(&w, QStringLiteral("txtPassword2"));
        auto* press = Named<QPushButton>(&w, QStringLiteral("cmdUpdatePassword"));
        QTest::keyClicks(oldPw, QStringLiteral("guess"));
        QTest::keyClicks(newPw, QStringLiteral("n3w'pw"));
        QTest::keyClicks(repeat, QStringLiteral("n3w'pw"));
        QTest::mouseClick(press, Qt::LeftButton);
        QCOMPARE(m_ui->Messages(), QStringList{QStringLiteral("Old Password Is Not Correct")});
        QCOMPARE(m_ui->Titles(), QStringList{QStringLiteral("Incorrect Old Password")});
        QTRY_COMPARE(QApplication::focusWidget(), newPw);
        QCOMPARE(tabs->currentWidget()->objectName(), QStringLiteral("tabPassword"));

        Retype(oldPw, QStringLiteral("secret"));
        Retype(repeat, QStringLiteral("other"));
        QTest::mouseClick(press, Qt::LeftButton);
        QCOMPARE(m_ui->Messages().last(), QStringLiteral("New Passwords Do Not Match"));

        Retype(repeat, QStringLiteral("n3w'pw"));
        QTest::mouseClick(press, Qt::LeftButton);
        QCOMPARE(m_ui->Messages().size(), 2);
        QCOMPARE(tabs->currentIndex(), 1);
        QVERIFY(!tabs->isTabVisible(
            tabs->indexOf(tabs->findChild<QWidget*>(QStringLiteral("tabPassword")))));
        QVERIFY(tabs->isTabVisible(0));
        QVERIFY(update->isEnabled());
        QCOMPARE(oldPw->text(), QString());
        // Not stored until Update.
        QCOMPARE(SiteValue(QStringLiteral("UserPassword")).toString(), QStringLiteral("secret"));
        QTest::mouseClick(update, Qt::LeftButton);
        QCOMPARE(SiteValue(QStringLiteral("UserPassword")).toString(), QStringLiteral("n3w'pw"));
    }

    void cancellingAPasswordChangeKeepsThePassword() {
        ui::frmUserPreferences w;
        QTest::mouseClick(Named<QPushButton>(&w, QStringLiteral("cmdChangePassword")),
                          Qt::LeftButton);
        QTest::keyClicks(Named<QLineEdit>(&w, QStringLiteral("txtPassword0")),
                         QStringLiteral("secret"));
        QTest::mouseClick(Named<QPushButton>(&w, QStringLiteral("cmdCancelPasswordChange")),
                          Qt::LeftButton);
        QVERIFY(Named<QPushButton>(&w, QStringLiteral("cmdUpdate"))->isEnabled());
        QCOMPARE(Named<QLineEdit>(&w, QStringLiteral("txtUserPref33"))->text(),
                 QStringLiteral("secret"));
        QVERIFY(m_ui->History().empty());
    }

    void viewGroupsFollowTheirBoxesAndOrders() {
        ui::frmUserPreferences w;
        Activate(&w);
        ShowTab(&w, 6);
        auto* group = Named<QCheckBox>(&w, QStringLiteral("chkViewArchiveGroup"));
        auto* interval = Named<QLineEdit>(&w, QStringLiteral("txtAInterval"));
        auto* order = Named<QListWidget>(&w, QStringLiteral("lstAOrder"));
        auto* up = Named<QCheckBox>(&w, QStringLiteral("chkAAscending"));
        auto* down = Named<QCheckBox>(&w, QStringLiteral("chkADescending"));
        QVERIFY(!interval->isEnabled());
        // The words of the tab: both page sizes count rows, and the refresh
        // rows read as they always have.
        QStringList words;
        for (const QLabel* label :
             Named<QWidget>(&w, QStringLiteral("tabViews"))->findChildren<QLabel*>()) {
            words << label->text();
        }
        QCOMPARE(words.count(QStringLiteral("Rows per page (0 for all):")), 2);
        QVERIFY2(words.filter(QStringLiteral("Days")).isEmpty(), qPrintable(words.join(u'|')));
        QStringList refresh;
        auto* options = Named<QListWidget>(&w, QStringLiteral("lstTimeLeftOptions"));
        for (int row = 0; row < options->count(); ++row) {
            refresh << options->item(row)->text();
        }
        QCOMPARE(refresh, QStringList({QStringLiteral("30 seconds"), QStringLiteral("minute"),
                                       QStringLiteral("5 minutes"), QStringLiteral("10 minutes"),
                                       QStringLiteral("15 minutes"), QStringLiteral("30 minutes"),
                                       QStringLiteral("45 minutes"), QStringLiteral("hour")}));
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

        auto* current = Named<QCheckBox>(&w, QStringLiteral("chkViewCurrentGroup"));
        ClickBox(current);
        ClickBox(Named<QCheckBox>(&w, QStringLiteral("chkCAscending")));
        FillRequired(&w);
        QTest::mouseClick(Named<QPushButton>(&w, QStringLiteral("cmdUpdate")), Qt::LeftButton);
        QCOMPARE(Option(QStringLiteral("AAViewInterval")), QStringLiteral("30"));
        QCOMPARE(Option(QStringLiteral("AAViewOrder")), QStringLiteral("ItemTitle"));
        QCOMPARE(Option(QStringLiteral("AAViewOrder2")), QStringLiteral("DESC"));
        QCOMPARE(Option(QStringLiteral("CAViewInterval")), QStringLiteral("30"));
        QCOMPARE(Option(QStringLiteral("CAViewOrder")), QStringLiteral("ItemTitle"));
        QCOMPARE(Option(QStringLiteral("CAViewOrder2")), QString());

        // Unticking puts the group back to its resting state.
        ui::frmUserPreferences again;
        auto* againGroup = Named<QCheckBox>(&again, QStringLiteral("chkViewArchiveGroup"));
        QVERIFY(againGroup->isChecked());
        QCOMPARE(Named<QLineEdit>(&again, QStringLiteral("txtAInterval"))->text(),
                 QStringLiteral("30"));
        ClickBox(againGroup);
        QCOMPARE(Named<QLineEdit>(&again, QStringLiteral("txtAInterval"))->text(),
                 QStringLiteral("0"));
        QCOMPARE(Named<QListWidget>(&again, QStringLiteral("lstAOrder"))->currentRow(), 0);
        QVERIFY(Named<QCheckBox>(&again, QStringLiteral("chkAAscending"))->isChecked());
        QVERIFY(!Named<QLineEdit>(&again, QStringLiteral("txtAInterval"))->isEnabled());
        auto* againCurrent = Named<QCheckBox>(&again, QStringLiteral("chkViewCurrentGroup"));
        ClickBox(againCurrent);
        QVERIFY(Named<QCheckBox>(&again, QStringLiteral("chkCDescending"))->isChecked());
    }

    void noShippingPreferenceStandsAlone() {
        ui::frmUserPreferences w;
        Activate(&w);
        ShowTab(&w, 4);
        auto* list = Named<QListWidget>(&w, QStringLiteral("lstShippingPref"));
        ClickRow(list, 2);
        ClickRow(list, 3);
        QCOMPARE(list->selectedItems().size(), 2);
        ClickRow(list, 0);
        QCOMPARE(list->selectedItems().size(), 1);
        QVERIFY(list->item(0)->isSelected());
        ClickRow(list, 1);
        QCOMPARE(list->selectedItems().size(), 1);
        QVERIFY(list->item(0)->isSelected());
    }

    void trackingIsOffUntilTickedAndWrittenAtOnce() {
        {
            // A new store: the report is off, and the window says what it sends.
            ui::frmUserPreferences w;
            auto* box = Named<QCheckBox>(&w, QStringLiteral("chkTracking"));
            QVERIFY(!box->isChecked());
            QCOMPARE(Named<QLabel>(&w, QStringLiteral("lblTracking"))->text(),
                     core::UsageReportSummary());
            ClickBox(box);
            QCOMPARE(Option(QStringLiteral("Track")), QStringLiteral("ON"));
        }
        // The choice stands the next time.
        ui::frmUserPreferences again;
        auto* box = Named<QCheckBox>(&again, QStringLiteral("chkTracking"));
        QVERIFY(box->isChecked());
        ClickBox(box);
        QCOMPARE(Option(QStringLiteral("Track")), QStringLiteral("OFF"));
    }

    void resetAndCancelLeaveTheStoreAsItWas() {
        ui::frmUserPreferences w;
        auto* id = Named<QLineEdit>(&w, QStringLiteral("txtUserPref24"));
        Retype(id, QStringLiteral("someone_else"));
        QTest::mouseClick(Named<QPushButton>(&w, QStringLiteral("cmdReset")), Qt::LeftButton);
        QCOMPARE(id->text(), QStringLiteral("pat_sells"));
        Retype(id, QStringLiteral("someone_else"));
        w.show();
        QTest::mouseClick(Named<QPushButton>(&w, QStringLiteral("cmdCancel")), Qt::LeftButton);
        QCOMPARE(w.result(), int(QDialog::Rejected));
        QCOMPARE(SiteValue(QStringLiteral("UserID")).toString(), QStringLiteral("pat_sells"));
    }

    void aMissingUserIsTold() {
        core::SetCurrentUser(QStringLiteral("Nobody"));
        ui::frmUserPreferences w;
        QCOMPARE(m_ui->Messages(), QStringList{QStringLiteral("No Valid Current User Set")});
    }

    void qtUiShowsTheSystemsTextsAndReturnsTheAnswer() {
        ui::QtUi qtUi;
        QString shownText;
        QString shownTitle;
        QTimer::singleShot(0, this, [&] {
            auto* box = qobject_cast<QMessageBox*>(QApplication::activeModalWidget());
            QVERIFY(box != nullptr);
            shownText = box->text();
            shownTitle = box->windowTitle();
            box->button(QMessageBox::No)->click();
        });
        const core::Answer answer =
            qtUi.Ask(QStringLiteral("150 Is Greater Than 100 Percent, Is This Correct?"),
                     QStringLiteral("Sales Tax Rate"), core::Buttons::YesNo, core::Answer::Yes);
        QCOMPARE(answer, core::Answer::No);
        QCOMPARE(shownText, QStringLiteral("150 Is Greater Than 100 Percent, Is This Correct?"));
        QCOMPARE(shownTitle, QStringLiteral("Sales Tax Rate"));

        QTimer::singleShot(0, this, [&] {
            auto* box = qobject_cast<QMessageBox*>(QApplication::activeModalWidget());
            QVERIFY(box != nullptr);
            shownText = box->text();
            box->button(QMessageBox::Ok)->click();
        });
        qtUi.Message(QStringLiteral("Trimming ZIP Code to 5 Digits"),
                     QStringLiteral("5 Digit ZIP Code"), core::Icon::Information);
        QCOMPARE(shownText, QStringLiteral("Trimming ZIP Code to 5 Digits"));

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
            auto* tabs = Named<QTabWidget>(&w, QStringLiteral("tabPreferences"));
            for (int i = 1; i < tabs->count() - 1; ++i) {
                tabs->setCurrentIndex(i);
                w.grab().save(dir + QStringLiteral("/frmUserPreferences_tab%1.png").arg(i));
            }
            Named<QPushButton>(&w, QStringLiteral("cmdChangePassword"))->click();
            w.grab().save(dir + QStringLiteral("/frmUserPreferences_password.png"));
            Named<QPushButton>(&w, QStringLiteral("cmdCancelPasswordChange"))->click();
            tabs->setCurrentIndex(2);
            Named<QRadioButton>(&w, QStringLiteral("optConnection3"))->click();
            w.grab().save(dir + QStringLiteral("/frmUserPreferences_proxy.png"));
        }
    }
};

QTEST_MAIN(PreferencesWindowTest)
#include "preferences_ui_test.moc"
