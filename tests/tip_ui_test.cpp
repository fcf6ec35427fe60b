// SPDX-License-Identifier: GPL-3.0-or-later
// The tip window on the offscreen platform: a line of the shipped tips file,
// Next Tip moving to another line, and the check box bound to "Show Tips at
// Startup".
#include <QCheckBox>
#include <QLabel>
#include <QPushButton>
#include <QtTest>
#include <memory>

#include "admin/tips.h"
#include "core/session.h"
#include "core/settings.h"
#include "tests/support/test_support.h"
#include "tests/support/window_test.h"
#include "ui/frmTip.h"

using namespace lw;

using lw::test::Named;

namespace {

QString TipsSetting() {
    return core::GetSetting(QStringLiteral("Tolvane"), QStringLiteral("Options"),
                            QStringLiteral("Show Tips at Startup"), QStringLiteral("<absent>"));
}

QStringList ShippedTips() {
    QFile file(test::SourceDir() + QStringLiteral("/data/tipofday.txt"));
    if (!file.open(QIODevice::ReadOnly)) {
        return {};
    }
    QStringList tips;
    for (const QByteArray& line : file.readAll().split('\n')) {
        if (!line.trimmed().isEmpty()) {
            tips << QString::fromUtf8(line.trimmed());
        }
    }
    return tips;
}

}  // namespace

class TipWindowTest : public QObject {
    Q_OBJECT

private:
    std::unique_ptr<test::TempRoot> m_root;
    std::unique_ptr<test::ScriptedUi> m_ui;

private Q_SLOTS:
    void init() {
        m_root = std::make_unique<test::TempRoot>();
        m_ui = std::make_unique<test::ScriptedUi>();
        core::ResetSession(m_ui.get());
        core::CurrentSession().ShippedDir = test::SourceDir();
        core::SetSettingsFolder(m_root->File(QStringLiteral("settings")));
    }
    void cleanup() {
        core::SetSettingsFolder({});
        core::ResetSession();
        m_ui.reset();
        m_root.reset();
    }

    void showsALineOfTheShippedFileAndNextShowsAnother() {
        const QStringList tips = ShippedTips();
        QVERIFY(tips.size() >= 25);
        ui::frmTip w;
        auto* text = Named<QLabel>(&w, QStringLiteral("lblTipText"));
        QVERIFY2(tips.contains(text->text()), qPrintable(text->text()));
        for (int i = 0; i < 20; ++i) {
            const QString before = text->text();
            QTest::mouseClick(Named<QPushButton>(&w, QStringLiteral("cmdNextTip")), Qt::LeftButton);
            QVERIFY(tips.contains(text->text()));
            QVERIFY(text->text() != before);
        }
    }

    void aOneLineFileShowsThatLine() {
        core::CurrentSession().ShippedDir = m_root->Path();
        m_root->Write(QStringLiteral("data/tipofday.txt"),
                      "\r\nThe outbox keeps mail until you are online.\r\n\r\n");
        ui::frmTip w;
        QCOMPARE(Named<QLabel>(&w, QStringLiteral("lblTipText"))->text(),
                 QStringLiteral("The outbox keeps mail until you are online."));
        QVERIFY(!Named<QPushButton>(&w, QStringLiteral("cmdNextTip"))->isEnabled());
    }

    void theCheckBoxFollowsAndWritesTheSetting() {
        {
            ui::frmTip w;
            auto* box = Named<QCheckBox>(&w, QStringLiteral("chkLoadTipsAtStartup"));
            QCOMPARE(box->text(), QStringLiteral("&Show Tips at Startup"));
            QVERIFY(box->isChecked());  // shown unless the setting says 0
            QTest::mouseClick(box, Qt::LeftButton);
            QCOMPARE(TipsSetting(), QStringLiteral("0"));
            QVERIFY(!admin::ShowTipsAtStartup());
        }
        ui::frmTip again;
        auto* box = Named<QCheckBox>(&again, QStringLiteral("chkLoadTipsAtStartup"));
        QVERIFY(!box->isChecked());
        QTest::mouseClick(box, Qt::LeftButton);
        QCOMPARE(TipsSetting(), QStringLiteral("1"));
    }

    void closeEndsTheWindow() {
        ui::frmTip w;
        w.show();
        QTest::mouseClick(Named<QPushButton>(&w, QStringLiteral("cmdOK")), Qt::LeftButton);
        QVERIFY(!w.isVisible());
        QCOMPARE(w.result(), int(QDialog::Accepted));
    }

    void screenshot() {
        ui::frmTip w;
        w.show();
        QVERIFY(QTest::qWaitForWindowExposed(&w));
        QVERIFY(w.grab().save(qEnvironmentVariable("LW_SCREENSHOT_DIR", QStringLiteral("/tmp")) +
                              QStringLiteral("/frmTip.png")));
    }
};

QTEST_MAIN(TipWindowTest)
#include "tip_ui_test.moc"
