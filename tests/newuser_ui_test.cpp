// SPDX-License-Identifier: GPL-3.0-or-later
// The new-user window on the offscreen platform: OK adds the default user and
// its site row, refusals are told and write nothing, Cancel and closing leave
// the marker, and start-up's choice of user runs through the window.
#include <QApplication>
#include <QFile>
#include <QLineEdit>
#include <QPushButton>
#include <QTimer>
#include <QtTest>
#include <memory>

#include "core/session.h"
#include "core/store.h"
#include "tests/support/test_support.h"
#include "tests/support/window_test.h"
#include "ui/frmNewUser.h"

using namespace lw;

using lw::test::Named;

namespace {

struct Entry {
    QString name, id, password, repeat, email;
};

void Type(QWidget* w, const Entry& e) {
    const QList<std::pair<QString, QString>> fields = {
        {QStringLiteral("txtUserName"), e.name},
        {QStringLiteral("txtUserID"), e.id},
        {QStringLiteral("txtPassword"), e.password},
        {QStringLiteral("txtConfirmPassword"), e.repeat},
        {QStringLiteral("txtEmail"), e.email},
    };
    for (const auto& [name, text] : fields) {
        auto* edit = Named<QLineEdit>(w, name);
        edit->clear();
        QTest::keyClicks(edit, text);
    }
}

void Press(QWidget* w, const QString& button) {
    QTest::mouseClick(Named<QPushButton>(w, button), Qt::LeftButton);
}

}  // namespace

class NewUserWindowTest : public QObject {
    Q_OBJECT

private:
    qint64 Count(const QString& sql) {
        core::Database db = core::OpenStore();
        return db.ScalarInt(sql);
    }

    std::unique_ptr<test::TempRoot> m_root;
    std::unique_ptr<test::ScriptedUi> m_ui;

private Q_SLOTS:
    void init() {
        m_root = std::make_unique<test::TempRoot>();
        m_ui = std::make_unique<test::ScriptedUi>();
        const QString error = test::StartProgramRoot(*m_root, *m_ui, false);
        QVERIFY2(error.isEmpty(), qPrintable(error));
        core::OpenStore();  // the prepared database, with no user yet
    }
    void cleanup() {
        core::ResetSession();
        m_ui.reset();
        m_root.reset();
    }

    void okAddsTheDefaultUserAndItsSiteRow() {
        ui::frmNewUser w;
        w.show();
        Type(&w,
             {QStringLiteral("Pat O'Brien"), QStringLiteral("pat_sells"), QStringLiteral("s3cret"),
              QStringLiteral("s3cret"), QStringLiteral("pat@example.com")});
        Press(&w, QStringLiteral("cmdOK"));
        QCOMPARE(m_ui->Messages(), QStringList());
        QCOMPARE(w.result(), int(QDialog::Accepted));
        QCOMPARE(
            Count(QStringLiteral("SELECT COUNT(*) FROM Users WHERE UserName = 'Pat O''Brien' "
                                 "AND isDefault = 1 AND ReplyEmailAddress = 'pat@example.com'")),
            qint64(1));
        QCOMPARE(Count(QStringLiteral(
                     "SELECT COUNT(*) FROM UserSites WHERE UserName = 'Pat O''Brien' AND "
                     "AuctionSiteFlag = 0 AND UserID = 'pat_sells' AND UserPassword = 's3cret' "
                     "AND SiteEmailAddress = 'pat@example.com'")),
                 qint64(1));
        QVERIFY(!core::NewUserCancelled());
    }

    void refusalsAreToldAndWriteNothing_data() {
        QTest::addColumn<QString>("name");
        QTest::addColumn<QString>("repeat");
        QTest::addColumn<QString>("email");
        QTest::addColumn<QString>("mentions");
        QTest::addColumn<QString>("focus");
        QTest::newRow("no name") << QStringLiteral("  ") << QStringLiteral("pw")
                                 << QStringLiteral("a@b.com") << QStringLiteral("name")
                                 << QStringLiteral("txtUserName");
        QTest::newRow("passwords differ")
            << QStringLiteral("Sam") << QStringLiteral("PW") << QStringLiteral("a@b.com")
            << QStringLiteral("passwords do not match") << QStringLiteral("txtConfirmPassword");
        QTest::newRow("no at sign")
            << QStringLiteral("Sam") << QStringLiteral("pw") << QStringLiteral("ab.com")
            << QStringLiteral("email Address Is Not Valid") << QStringLiteral("txtEmail");
        QTest::newRow("no point") << QStringLiteral("Sam") << QStringLiteral("pw")
                                  << QStringLiteral("a@bcom")
                                  << QStringLiteral("email Address Is Not Valid")
                                  << QStringLiteral("txtEmail");
    }
    void refusalsAreToldAndWriteNothing() {
        QFETCH(QString, name);
        QFETCH(QString, repeat);
        QFETCH(QString, email);
        QFETCH(QString, mentions);
        QFETCH(QString, focus);
        ui::frmNewUser w;
        w.show();
        w.activateWindow();
        QVERIFY(QTest::qWaitForWindowActive(&w));
        Type(&w, {name, QStringLiteral("sam_id"), QStringLiteral("pw"), repeat, email});
        Press(&w, QStringLiteral("cmdOK"));
        QCOMPARE(m_ui->Messages().size(), 1);
        QVERIFY2(m_ui->Messages()[0].contains(mentions, Qt::CaseInsensitive),
                 qPrintable(m_ui->Messages()[0]));
        QCOMPARE(m_ui->Titles()[0], QStringLiteral("New User"));
        QVERIFY(w.isVisible());
        QTRY_COMPARE(QApplication::focusWidget(), Named<QLineEdit>(&w, focus));
        QCOMPARE(Count(QStringLiteral("SELECT COUNT(*) FROM Users")), qint64(0));
        QCOMPARE(Count(QStringLiteral("SELECT COUNT(*) FROM UserSites")), qint64(0));
    }

    void cancelAndClosingLeaveTheMarker() {
        {
            ui::frmNewUser w;
            w.show();
            Type(&w, {QStringLiteral("Sam"), QStringLiteral("id"), QStringLiteral("pw"),
                      QStringLiteral("pw"), QStringLiteral("a@b.com")});
            Press(&w, QStringLiteral("cmdCancel"));
            QCOMPARE(w.result(), int(QDialog::Rejected));
            QVERIFY(QFile::exists(m_root->File(QStringLiteral("Configs/nuwcancel.cfg"))));
            QCOMPARE(Count(QStringLiteral("SELECT COUNT(*) FROM Users")), qint64(0));
        }
        core::RemoveStaleNewUserCancel();
        ui::frmNewUser w;
        w.show();
        QTest::keyClick(&w, Qt::Key_Escape);
        QVERIFY(!w.isVisible());
        QVERIFY(core::NewUserCancelled());
    }

    void startUpChoosesTheUserMadeInTheWindow() {
        core::Database db = core::OpenStore();
        const core::UserChoice choice = core::ChooseUser(db, [] {
            ui::frmNewUser w;
            QTimer::singleShot(0, &w, [&w] {
                Type(&w,
                     {QStringLiteral("D'Arcy"), QStringLiteral("darcy_buys"), QStringLiteral("pw"),
                      QStringLiteral("pw"), QStringLiteral("darcy@example.com")});
                Press(&w, QStringLiteral("cmdOK"));
            });
            w.exec();
        });
        QCOMPARE(choice, core::UserChoice::Chosen);
        QCOMPARE(core::CurrentSession().CurrentUser, QStringLiteral("D'Arcy"));

        // A second prepared database without users: Cancel ends the choice.
        core::Database fresh =
            core::OpenOrCreateStore(m_root->File(QStringLiteral("second.db")), test::SourceDir());
        const core::UserChoice cancelled = core::ChooseUser(fresh, [] {
            ui::frmNewUser w;
            QTimer::singleShot(0, &w, [&w] { Press(&w, QStringLiteral("cmdCancel")); });
            w.exec();
        });
        QCOMPARE(cancelled, core::UserChoice::Cancelled);
    }

    void screenshot() {
        ui::frmNewUser w;
        w.show();
        QVERIFY(QTest::qWaitForWindowExposed(&w));
        QVERIFY(w.grab().save(qEnvironmentVariable("LW_SCREENSHOT_DIR", QStringLiteral("/tmp")) +
                              QStringLiteral("/frmNewUser.png")));
    }
};

QTEST_MAIN(NewUserWindowTest)
#include "newuser_ui_test.moc"
