// SPDX-License-Identifier: GPL-3.0-or-later
// The general dialog on the offscreen platform: the item cost form of a sale
// opened by the whole command (the row's figures with Null as "$0.00", the
// title with the item number), OK writing the boxes back, Cancel writing
// nothing, a box that is not money told and kept, an unknown item told
// without a form; and the about form with the program's name and version.
#include <QApplication>
#include <QDialog>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QTimer>
#include <QtTest>

#include <curl/curl.h>
#include <sqlite3.h>
#include <functional>
#include <memory>
#include <optional>

#include "core/session.h"
#include "core/settings.h"
#include "core/store.h"
#include "tests/support/test_support.h"
#include "tests/support/window_test.h"
#include "ui/frmGeneral.h"

using namespace lw;

using lw::test::Named;
using lw::test::Retype;

namespace {

const QString kUser = QStringLiteral("Pat O'Brien");

// Acts on the general dialog once it is up as the modal window; it runs in
// the dialog's own event loop.
class WhenUp : public test::WhenModal {
public:
    explicit WhenUp(std::function<void(QDialog*)> act)
        : WhenModal(QStringLiteral("frmGeneral"),
                    [act = std::move(act)](QWidget* form) { act(static_cast<QDialog*>(form)); }) {}
};

}  // namespace

class GeneralDialogTest : public QObject {
    Q_OBJECT

private:
    void Sale(const QString& item, const QVariant& cost, const QVariant& shipping,
              const QVariant& insurance, const QVariant& method) {
        m_db->Prepare(QStringLiteral("INSERT INTO Auctions (UserName, ItemNumber, ItemCost, "
                                     "OrderShipping, InsuranceCost, ShippingMethod) VALUES "
                                     "(?, ?, ?, ?, ?, ?)"))
            .BindAll(kUser, item, cost, shipping, insurance, method)
            .Run();
    }
    QVariant Column(const QString& item, const QString& column) {
        core::Statement s = m_db->Prepare(
            QStringLiteral("SELECT * FROM Auctions WHERE UserName = ? AND ItemNumber = ?"));
        s.BindAll(kUser, item);
        return s.Step() ? s.Value(column) : QVariant(QStringLiteral("<no row>"));
    }

    std::unique_ptr<test::TempRoot> m_root;
    std::unique_ptr<test::ScriptedUi> m_ui;
    std::optional<core::Database> m_db;

private Q_SLOTS:
    void init() {
        m_root = std::make_unique<test::TempRoot>();
        m_ui = std::make_unique<test::ScriptedUi>();
        m_db.emplace(test::StartUserStore(*m_root, *m_ui, kUser, QStringLiteral("pat")));
        Sale(QStringLiteral("1001"), QStringLiteral("$12.50"), QVariant(), QStringLiteral("$1.00"),
             QStringLiteral("UPS"));
    }
    void cleanup() {
        m_db.reset();
        test::EndProgramRoot(m_ui, m_root);
    }

    void theFormShowsTheRowAndOKWritesItBack() {
        QString title;
        QStringList shown;
        WhenUp driver([&](QDialog* form) {
            title = form->windowTitle();
            auto* cost = Named<QLineEdit>(form, QStringLiteral("txtItemCost"));
            auto* shipping = Named<QLineEdit>(form, QStringLiteral("txtOrderShipping"));
            auto* insurance = Named<QLineEdit>(form, QStringLiteral("txtInsuranceCost"));
            shown << cost->text() << shipping->text() << insurance->text();
            Retype(cost, QStringLiteral("9.5"));
            Retype(shipping, QStringLiteral("$4.00"));
            Retype(insurance, QString());
            QTest::mouseClick(Named<QPushButton>(form, QStringLiteral("cmdOK")), Qt::LeftButton);
        });
        QVERIFY(ui::EditItemCost(*m_db, QStringLiteral("1001"), nullptr));
        QVERIFY(driver.Acted());
        QCOMPARE(title, QStringLiteral("Item #: 1001"));
        QCOMPARE(shown, (QStringList{QStringLiteral("$12.50"), QStringLiteral("$0.00"),
                                     QStringLiteral("$1.00")}));
        QCOMPARE(Column(QStringLiteral("1001"), QStringLiteral("ItemCost")).toString(),
                 QStringLiteral("$9.50"));
        QCOMPARE(Column(QStringLiteral("1001"), QStringLiteral("OrderShipping")).toString(),
                 QStringLiteral("$4.00"));
        QVERIFY(Column(QStringLiteral("1001"), QStringLiteral("InsuranceCost")).isNull());
        QCOMPARE(Column(QStringLiteral("1001"), QStringLiteral("ShippingMethod")).toString(),
                 QStringLiteral("UPS"));
        QVERIFY(m_ui->History().empty());
    }

    void anEmptiedCostMarksTheShippingMethod() {
        WhenUp driver([](QDialog* form) {
            Retype(Named<QLineEdit>(form, QStringLiteral("txtItemCost")), QString());
            QTest::keyClick(form, Qt::Key_Return);
        });
        QVERIFY(ui::EditItemCost(*m_db, QStringLiteral("1001"), nullptr));
        QVERIFY(Column(QStringLiteral("1001"), QStringLiteral("ItemCost")).isNull());
        QCOMPARE(Column(QStringLiteral("1001"), QStringLiteral("ShippingMethod")).toString(),
                 QStringLiteral("0.00"));
        // The untouched boxes went back as they were shown.
        QCOMPARE(Column(QStringLiteral("1001"), QStringLiteral("OrderShipping")).toString(),
                 QStringLiteral("$0.00"));
        QCOMPARE(Column(QStringLiteral("1001"), QStringLiteral("InsuranceCost")).toString(),
                 QStringLiteral("$1.00"));
    }

    void cancelWritesNothing() {
        WhenUp driver([](QDialog* form) {
            Retype(Named<QLineEdit>(form, QStringLiteral("txtItemCost")), QStringLiteral("99"));
            QTest::mouseClick(Named<QPushButton>(form, QStringLiteral("cmdCancel")),
                              Qt::LeftButton);
        });
        QVERIFY(!ui::EditItemCost(*m_db, QStringLiteral("1001"), nullptr));
        QVERIFY(driver.Acted());
        QCOMPARE(Column(QStringLiteral("1001"), QStringLiteral("ItemCost")).toString(),
                 QStringLiteral("$12.50"));
        QVERIFY(Column(QStringLiteral("1001"), QStringLiteral("OrderShipping")).isNull());
    }

    void aBoxThatIsNotMoneyIsToldAndKept() {
        bool stayedOpen = false;
        QWidget* focusAfter = nullptr;
        QLineEdit* shipping = nullptr;
        QString kept;
        WhenUp driver([&](QDialog* form) {
            form->activateWindow();
            shipping = Named<QLineEdit>(form, QStringLiteral("txtOrderShipping"));
            Retype(Named<QLineEdit>(form, QStringLiteral("txtItemCost")), QStringLiteral("3"));
            Retype(shipping, QStringLiteral("four dollars"));
            QTest::mouseClick(Named<QPushButton>(form, QStringLiteral("cmdOK")), Qt::LeftButton);
            stayedOpen = form->isVisible();
            focusAfter = form->focusWidget();
            kept = shipping->text();
            Retype(shipping, QStringLiteral("4"));
            QTest::mouseClick(Named<QPushButton>(form, QStringLiteral("cmdOK")), Qt::LeftButton);
        });
        QVERIFY(ui::EditItemCost(*m_db, QStringLiteral("1001"), nullptr));
        QVERIFY(stayedOpen);
        QCOMPARE(kept, QStringLiteral("four dollars"));
        QCOMPARE(focusAfter, static_cast<QWidget*>(shipping));
        QCOMPARE(m_ui->Messages().size(), 1);
        QCOMPARE(m_ui->Titles(), QStringList{QStringLiteral("Item #: 1001")});
        QCOMPARE(Column(QStringLiteral("1001"), QStringLiteral("ItemCost")).toString(),
                 QStringLiteral("$3.00"));
        QCOMPARE(Column(QStringLiteral("1001"), QStringLiteral("OrderShipping")).toString(),
                 QStringLiteral("$4.00"));
    }

    void anUnknownItemIsToldWithoutAForm() {
        WhenUp driver([](QDialog* form) { form->reject(); });
        QVERIFY(!ui::EditItemCost(*m_db, QStringLiteral("9999"), nullptr));
        QVERIFY(!driver.Acted());
        QCOMPARE(m_ui->Messages().size(), 1);
        QVERIFY(m_ui->Messages().first().contains(QStringLiteral("9999")));
        QCOMPARE(m_ui->Titles(), QStringList{QStringLiteral("Item #: 9999")});
        QCOMPARE(Column(QStringLiteral("1001"), QStringLiteral("ItemCost")).toString(),
                 QStringLiteral("$12.50"));
    }

    void theAboutFormNamesTheProgramItsVersionLicenceAndLibraries() {
        QString title;
        QString name;
        QString version;
        QString description;
        QString licence;
        QString libraries;
        bool linksOpen = false;
        bool hasCancel = true;
        WhenUp driver([&](QDialog* form) {
            title = form->windowTitle();
            name = Named<QLabel>(form, QStringLiteral("lblProgram"))->text();
            version = Named<QLabel>(form, QStringLiteral("lblVersion"))->text();
            hasCancel = form->findChild<QPushButton*>(QStringLiteral("cmdCancel")) != nullptr;
            description = Named<QLabel>(form, QStringLiteral("lblDescription"))->text();
            auto* licenceLabel = Named<QLabel>(form, QStringLiteral("lblLicence"));
            licence = licenceLabel->text();
            linksOpen = licenceLabel->openExternalLinks();
            libraries = Named<QLabel>(form, QStringLiteral("lblLibraries"))->text();
            QTest::mouseClick(Named<QPushButton>(form, QStringLiteral("cmdOK")), Qt::LeftButton);
        });
        ui::ShowAbout(nullptr);
        QVERIFY(driver.Acted());
        QCOMPARE(title, QStringLiteral("About Tolvane Lotwright Pro"));
        QCOMPARE(name, QStringLiteral("Tolvane Lotwright Pro"));
        QVERIFY2(QRegularExpression(QStringLiteral("^Version [0-9]+\\.[0-9]+(\\.[0-9]+)?$"))
                     .match(version)
                     .hasMatch(),
                 qPrintable(version));
        QVERIFY(!description.isEmpty());
        QVERIFY(!hasCancel);

        // The licence, the lack of warranty and where the licence is read;
        // the versions of the libraries this very process runs with.
        const curl_version_info_data* curl = curl_version_info(CURLVERSION_NOW);
        const struct {
            const QString* text;
            QString wanted;
        } shown[] = {
            {&licence, QStringLiteral("GPL-3.0-or-later")},
            {&licence, QStringLiteral("GNU General Public License")},
            {&licence, QStringLiteral("no warranty")},
            {&licence, QStringLiteral("href=\"https://www.gnu.org/licenses/gpl-3.0.html\"")},
            {&libraries, QStringLiteral("Qt ") + QString::fromLatin1(qVersion())},
            {&libraries, QStringLiteral("SQLite ") + QString::fromLatin1(sqlite3_libversion())},
            {&libraries, QStringLiteral("libcurl ") + QString::fromLatin1(curl->version)},
        };
        for (const auto& s : shown) {
            QVERIFY2(s.text->contains(s.wanted), qPrintable(*s.text + " lacks " + s.wanted));
        }
        QVERIFY(linksOpen);
    }
};

QTEST_MAIN(GeneralDialogTest)
#include "general_ui_test.moc"
