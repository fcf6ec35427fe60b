// SPDX-License-Identifier: GPL-3.0-or-later
// The auction creator's window on the offscreen platform: the chooser over
// each kind of row, a template opened and edited, the edits saved as a draft
// through the save dialog and shown again when the draft is reopened, the
// save question on leaving, the colours of the required labels and the
// refusal to send a document with a red one, the outbox, the picture list,
// the category box and its browser, and the main window's New Auction and
// relist.
#include <QAbstractButton>
#include <QAction>
#include <QApplication>
#include <QCheckBox>
#include <QComboBox>
#include <QFile>
#include <QGroupBox>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QPlainTextEdit>
#include <QTabWidget>
#include <QTableView>
#include <QtTest>
#include <functional>
#include <memory>
#include <optional>

#include "core/session.h"
#include "core/settings.h"
#include "core/store.h"
#include "creator/category_directory.h"
#include "creator/creator_document.h"
#include "creator/listing_html.h"
#include "tests/support/site_process.h"
#include "tests/support/test_support.h"
#include "tests/support/window_test.h"
#include "ui/frmAuction.h"
#include "ui/frmLWAC.h"
#include "update/rules.h"

using namespace lw;

using lw::test::Named;
using lw::test::Retype;
using lw::test::Row;
using lw::test::Texts;
using WhenShown = lw::test::WhenModal;

namespace {

const QString kUser = QStringLiteral("Pat O'Brien");

void Click(QWidget* window, const QString& name) {
    Named<QAbstractButton>(window, name)->click();
}

// The questions asked, leaving out the status lines.
QStringList Asked(const test::ScriptedUi& ui) {
    QStringList asked;
    for (const test::ScriptedUi::Shown& shown : ui.History()) {
        if (shown.kind == u"ask") {
            asked << shown.text;
        }
    }
    return asked;
}

int Colour(QWidget* window, const QString& label) {
    return Named<QLabel>(window, label)->property("colour").toInt();
}

}  // namespace

class CreatorWindowTest : public QObject {
    Q_OBJECT

private:
    std::unique_ptr<test::TempRoot> m_root;
    std::unique_ptr<test::ScriptedUi> m_ui;
    std::optional<core::Database> m_db;
    creator::CreatorLists m_lists;
    update::RuleStore m_rules;
    QStringList m_opened;

    std::unique_ptr<ui::frmLWAC> Open() {
        auto w = std::make_unique<ui::frmLWAC>();
        w->SetUrlOpener([this](const QUrl& url) { m_opened << url.toString(); });
        w->show();
        QCoreApplication::processEvents();
        return w;
    }

    // A row of the kind, through the creator's own save; its ID.
    qint64 AddRow(const QString& type, const QString& name, const QString& title) {
        creator::CreatorDocument doc = creator::NewCreatorDocument(m_lists);
        doc.txtItemTitle = title;
        doc.txtEbayTitle = title;
        doc.txtDescription = QStringLiteral("About ") + title;
        doc.txtMinimumBid = QStringLiteral("12");
        creator::SaveRequest request;
        request.name = name;
        request.type = type;
        return creator::SaveCreatorRecord(*m_db, request, doc, m_lists, m_rules);
    }

    QVariant Column(qint64 id, const QString& column) {
        core::Statement row =
            m_db->Prepare(QStringLiteral("SELECT %1 FROM AuctionCreator WHERE ID = ?").arg(column));
        row.Bind(1, id);
        return row.Step() ? row.Value(0) : QVariant();
    }

    qint64 Count(const QString& where) {
        return m_db->ScalarInt(QStringLiteral("SELECT COUNT(*) FROM AuctionCreator WHERE ") +
                               where);
    }

    // A document every required field of which is filled, in the window.
    void FillRequired(QWidget* w) {
        Retype(Named<QLineEdit>(w, QStringLiteral("txtItemTitle")),
               QStringLiteral("Brass ship's lantern"));
        Named<QPlainTextEdit>(w, QStringLiteral("txtDescription"))
            ->setPlainText(QStringLiteral("A lantern."));
        Retype(Named<QLineEdit>(w, QStringLiteral("txtMinimumBid")), QStringLiteral("25"));
        Retype(Named<QLineEdit>(w, QStringLiteral("txtQuantity")), QStringLiteral("1"));
        Named<QComboBox>(w, QStringLiteral("cmbEbayCategory"))->setEditText(QStringLiteral("110"));
        QVERIFY(QMetaObject::invokeMethod(w, "cmbEbayCategory_KeyEnter"));
        Retype(Named<QLineEdit>(w, QStringLiteral("txtItemLocationEbay")), QStringLiteral("Maine"));
        Named<QComboBox>(w, QStringLiteral("cmbEbayRegion"))->setCurrentIndex(0);
        Named<QComboBox>(w, QStringLiteral("cmbEbayCountry"))->setCurrentIndex(0);
        Named<QListWidget>(w, QStringLiteral("lstEbayAcceptedPayment"))->item(0)->setSelected(true);
        Named<QListWidget>(w, QStringLiteral("lstEbayShippingPref"))->item(1)->setSelected(true);
        Click(w, QStringLiteral("optEbayWorldShipping0"));
    }

private Q_SLOTS:
    void init() {
        m_root = std::make_unique<test::TempRoot>();
        m_ui = std::make_unique<test::ScriptedUi>();
        const QString error = test::StartProgramRoot(*m_root, *m_ui);
        QVERIFY2(error.isEmpty(), qPrintable(error));
        m_db.emplace(core::OpenStore());
        core::AddUser(*m_db, {kUser, QStringLiteral("pat_sells"), QStringLiteral("secret"),
                              QStringLiteral("p@x.org")});
        core::SetCurrentUser(kUser);
        QVERIFY(update::DecryptProtocols(m_rules, *m_db));
        const core::Session& session = core::CurrentSession();
        QVERIFY(
            creator::InstallAuctionTemplates(session.ShippedDir, session.TemplatesDir, nullptr));
        creator::PrepareCategoryDirectory(*m_db, *m_ui);
        m_lists = creator::LoadCreatorLists(*m_db, m_rules, kUser, creator::AuctionTemplatesDir());
        m_opened.clear();
    }
    void cleanup() {
        const auto widgets = QApplication::topLevelWidgets();
        for (QWidget* widget : widgets) {
            widget->hide();
        }
        m_db.reset();
        test::EndProgramRoot(m_ui, m_root);
    }

    void theChooserOffersEachKindAndOpensTheChosenRow_data() {
        QTest::addColumn<int>("option");
        QTest::addColumn<QString>("list");
        QTest::addColumn<QStringList>("rows");
        QTest::addColumn<QString>("opened");
        QTest::addColumn<QString>("title");
        // The Default row heads the templates; drafts and saved auctions are
        // listed newest first.
        Row("templates", 0, "lstUserTemp", QStringList{"Default", "Lamp template"}, "Lamp template",
            "T1");
        Row("drafts", 1, "lstDraft", QStringList{"Second draft", "First draft"}, "Second draft",
            "D2");
        Row("saved auctions", 3, "lstOldAuction", QStringList{"Sent lantern"}, "Sent lantern",
            "O1");
        Row("same as last", 2, "", QStringList{}, "Sent lantern", "O1");
    }

    void theChooserOffersEachKindAndOpensTheChosenRow() {
        QFETCH(int, option);
        QFETCH(QString, list);
        QFETCH(QStringList, rows);
        QFETCH(QString, opened);
        QFETCH(QString, title);
        AddRow(QString(creator::kTemplate), QStringLiteral("Lamp template"), QStringLiteral("T1"));
        AddRow(QString(creator::kDraft), QStringLiteral("First draft"), QStringLiteral("D1"));
        AddRow(QString(creator::kDraft), QStringLiteral("Second draft"), QStringLiteral("D2"));
        AddRow(QString(creator::kOldAuction), QStringLiteral("Sent lantern"), QStringLiteral("O1"));
        std::unique_ptr<ui::frmLWAC> w = Open();
        auto* tabs = Named<QTabWidget>(w.get(), QStringLiteral("SSTab1"));
        QVERIFY(!tabs->isTabEnabled(ui::frmLWAC::kItemTab));
        QVERIFY(!Named<QWidget>(w.get(), QStringLiteral("cmdSave"))->isVisibleTo(w.get()));
        Click(w.get(), QStringLiteral("optACChoice%1").arg(option));
        if (option == 2) {
            QCOMPARE(Named<QAbstractButton>(w.get(), QStringLiteral("optACChoice2"))
                         ->text()
                         .remove(u'&'),
                     QStringLiteral("Same As Last Auction (Sent lantern)"));
        } else {
            auto* shown = Named<QListWidget>(w.get(), list);
            QCOMPARE(Texts(shown), rows);
            shown->setCurrentRow(rows.indexOf(opened));
        }
        const QStringList details =
            Texts(Named<QListWidget>(w.get(), option == 0   ? QStringLiteral("lstUTDetails")
                                              : option == 1 ? QStringLiteral("lstADDetails")
                                              : option == 2 ? QStringLiteral("lstLADetails")
                                                            : QStringLiteral("lstOADetails")));
        QVERIFY2(details.contains(QStringLiteral("Minimum Bid: $12.00")),
                 qPrintable(details.join(u'|')));
        Click(w.get(), QStringLiteral("cmdLoadAuction"));
        QCOMPARE(tabs->currentIndex(), int(ui::frmLWAC::kItemTab));
        QVERIFY(tabs->isTabEnabled(ui::frmLWAC::kPaymentTab));
        QVERIFY(!Named<QWidget>(w.get(), QStringLiteral("cmdLoadAuction"))->isEnabled());
        QCOMPARE(w->windowTitle(), QStringLiteral("Lotwright AC: ") + opened);
        QCOMPARE(Named<QLineEdit>(w.get(), QStringLiteral("txtItemTitle"))->text(), title);
    }

    void draftsSortByDateOrName() {
        AddRow(QString(creator::kDraft), QStringLiteral("Bottle"), QString());
        AddRow(QString(creator::kDraft), QStringLiteral("anchor"), QString());
        AddRow(QString(creator::kDraft), QStringLiteral("Clock"), QString());
        std::unique_ptr<ui::frmLWAC> w = Open();
        Click(w.get(), QStringLiteral("optACChoice1"));
        auto* drafts = Named<QListWidget>(w.get(), QStringLiteral("lstDraft"));
        QCOMPARE(Texts(drafts), (QStringList{"Clock", "anchor", "Bottle"}));
        Click(w.get(), QStringLiteral("OptDSort1"));
        QCOMPARE(Texts(drafts), (QStringList{"anchor", "Bottle", "Clock"}));
        // The Delete key removes a draft at once, and the list follows.
        drafts->setCurrentRow(1);
        QTest::keyClick(drafts, Qt::Key_Delete);
        QCOMPARE(Texts(drafts), (QStringList{"anchor", "Clock"}));
        QCOMPARE(Count(QStringLiteral("AuctionName = 'Bottle'")), 0);
        // The Default template is never deleted.
        Click(w.get(), QStringLiteral("optACChoice0"));
        Named<QListWidget>(w.get(), QStringLiteral("lstUserTemp"))->setCurrentRow(0);
        w->mnuDeleteTemplate_Click();
        QCOMPARE(m_ui->Messages(),
                 QStringList{QStringLiteral("Default template cannot be deleted.")});
        QCOMPARE(Count(QStringLiteral("ACType = 'Default'")), 1);
    }

    void theWindowOpensAsItWasLeftAndJustGoSkipsTheChooser() {
        AddRow(QString(creator::kDraft), QStringLiteral("First"), QStringLiteral("D1"));
        AddRow(QString(creator::kDraft), QStringLiteral("Second"), QStringLiteral("D2"));
        {
            std::unique_ptr<ui::frmLWAC> w = Open();
            Named<QAction>(w.get(), QStringLiteral("mnuReviewPage"))->trigger();
            // The post route is kept at once, the rest on leaving.
            QCOMPARE(creator::LoadCreatorSettings().PostOption, 3);
            Named<QAction>(w.get(), QStringLiteral("mnuUAWF"))->trigger();
            Click(w.get(), QStringLiteral("optACChoice1"));
            Named<QListWidget>(w.get(), QStringLiteral("lstDraft"))->setCurrentRow(1);
            Named<QCheckBox>(w.get(), QStringLiteral("chkGo"))->setChecked(true);
            QVERIFY(w->UpdateAfter());
            w->reject();
        }
        std::unique_ptr<ui::frmLWAC> w = Open();
        QCOMPARE(Named<QTabWidget>(w.get(), QStringLiteral("SSTab1"))->currentIndex(),
                 int(ui::frmLWAC::kItemTab));
        QCOMPARE(Named<QLineEdit>(w.get(), QStringLiteral("txtItemTitle"))->text(),
                 QStringLiteral("D1"));
        QVERIFY(Named<QAction>(w.get(), QStringLiteral("mnuReviewPage"))->isChecked());
        QVERIFY(w->UpdateAfter());
    }

    void editsOfATemplateSaveAsADraftAndShowAgainWhenReopened_data() {
        QTest::addColumn<QString>("control");
        QTest::addColumn<QString>("typed");
        QTest::addColumn<QString>("column");
        QTest::addColumn<QString>("shown");
        // What is typed is stored as typed; reopened, the box shows it as
        // given here (nothing: not looked at).
        Row("title", "txtItemTitle", "Tin robot, wind-up", "ItemTitleLong", "Tin robot, wind-up");
        Row("site title follows", "txtItemTitle", "Tin robot, wind-up", "eBayAuctionTitle", "");
        Row("minimum bid", "txtMinimumBid", "7.5", "MinimumBid", "$7.50");
        Row("reserve", "txtReserve", "30", "Reserve", "$30.00");
        Row("location", "txtItemLocationEbay", "Cork, Ireland", "ItemLocation", "Cork, Ireland");
        Row("caption", "txtProductDetails0", "State:", "PDCaption0", "State:");
        Row("link", "txtLinkLink0", "http://shop.example.org", "LinkLink0",
            "http://shop.example.org");
    }

    void editsOfATemplateSaveAsADraftAndShowAgainWhenReopened() {
        QFETCH(QString, control);
        QFETCH(QString, typed);
        QFETCH(QString, column);
        QFETCH(QString, shown);
        const qint64 templateId =
            AddRow(QString(creator::kTemplate), QStringLiteral("Toys"), QStringLiteral("Toy"));
        qint64 draftId = 0;
        {
            std::unique_ptr<ui::frmLWAC> w = Open();
            w->mnuTemplateName_Click(templateId);
            QCOMPARE(w->windowTitle(), QStringLiteral("Lotwright AC: Toys"));
            Retype(Named<QLineEdit>(w.get(), control), typed);
            Named<QComboBox>(w.get(), QStringLiteral("cmbThemeColor"))
                ->setCurrentText(QStringLiteral("Matte Blue"));
            Named<QComboBox>(w.get(), QStringLiteral("cmbPictureLink"))
                ->setEditText(QStringLiteral("http://pics.example.org/robot.jpg"));
            Click(w.get(), QStringLiteral("cmdAddLink"));
            QString prefilled;
            WhenShown save(QStringLiteral("frmGeneral"), [&prefilled](QWidget* dialog) {
                QCOMPARE(dialog->windowTitle(), QStringLiteral("Save Auction Information"));
                QVERIFY(
                    Named<QAbstractButton>(dialog, QStringLiteral("optSaveAuction2"))->isChecked());
                auto* name = Named<QComboBox>(dialog, QStringLiteral("cmbDraftName"));
                prefilled = name->currentText();
                name->setEditText(QStringLiteral("Robot draft"));
                auto* ok = Named<QAbstractButton>(dialog, QStringLiteral("cmdOK"));
                QCOMPARE(ok->text(), QStringLiteral("&Save"));
                ok->click();
            });
            Click(w.get(), QStringLiteral("cmdSave"));
            QVERIFY(save.Acted());
            QVERIFY2(prefilled.startsWith(QStringLiteral("DRAFT ")), qPrintable(prefilled));
            draftId = m_db->ScalarInt(
                QStringLiteral("SELECT ID FROM AuctionCreator WHERE ACType = 'Draft'"));
            QVERIFY(draftId > 0);
            // Saved, the window asks nothing on leaving.
            w->reject();
            QVERIFY(!w->isVisible());
            QCOMPARE(Asked(*m_ui), QStringList());
        }
        QCOMPARE(Column(draftId, QStringLiteral("AuctionName")).toString(),
                 QStringLiteral("Robot draft"));
        QCOMPARE(Column(draftId, column).toString(), typed);
        QCOMPARE(Column(draftId, QStringLiteral("AuctionThemeColor")).toString(),
                 QStringLiteral("Matte Blue"));
        QCOMPARE(Column(draftId, QStringLiteral("PictureLinks")).toString(),
                 QStringLiteral("http://pics.example.org/robot.jpg~~~"));
        // The template itself is as it was.
        QCOMPARE(Column(templateId, QStringLiteral("AuctionThemeColor")).toString(),
                 QStringLiteral("Black"));

        std::unique_ptr<ui::frmLWAC> w = Open();
        Click(w.get(), QStringLiteral("optACChoice1"));
        Named<QListWidget>(w.get(), QStringLiteral("lstDraft"))->setCurrentRow(0);
        Click(w.get(), QStringLiteral("cmdLoadAuction"));
        if (!shown.isEmpty()) {
            QCOMPARE(Named<QLineEdit>(w.get(), control)->text(), shown);
        }
        QCOMPARE(Named<QComboBox>(w.get(), QStringLiteral("cmbThemeColor"))->currentText(),
                 QStringLiteral("Matte Blue"));
        QCOMPARE(Texts(Named<QListWidget>(w.get(), QStringLiteral("lstPictureLink"))),
                 QStringList{QStringLiteral("http://pics.example.org/robot.jpg")});
    }

    void theSaveDialogOverwritesARowOfTheSameName() {
        const qint64 id =
            AddRow(QString(creator::kDraft), QStringLiteral("Robot draft"), QStringLiteral("R"));
        std::unique_ptr<ui::frmLWAC> w = Open();
        w->mnuCreate_Click();
        Retype(Named<QLineEdit>(w.get(), QStringLiteral("txtItemTitle")), QStringLiteral("R2"));
        QStringList captions;
        WhenShown save(QStringLiteral("frmGeneral"), [&captions](QWidget* dialog) {
            auto* name = Named<QComboBox>(dialog, QStringLiteral("cmbDraftName"));
            auto* ok = Named<QAbstractButton>(dialog, QStringLiteral("cmdOK"));
            name->setEditText(QStringLiteral("   "));
            captions << (ok->isEnabled() ? ok->text() : QStringLiteral("disabled"));
            name->setEditText(QStringLiteral("ROBOT DRAFT"));
            captions << ok->text();
            ok->click();
        });
        Click(w.get(), QStringLiteral("cmdSave"));
        QVERIFY(save.Acted());
        QCOMPARE(captions, (QStringList{"disabled", "&Overwrite"}));
        QCOMPARE(Count(QStringLiteral("ACType = 'Draft'")), 1);
        QCOMPARE(Column(id, QStringLiteral("ItemTitleLong")).toString(), QStringLiteral("R2"));
    }

    void leavingAChangedDocumentAsksToSaveIt_data() {
        QTest::addColumn<int>("answer");
        QTest::addColumn<bool>("saveDialogOk");
        QTest::addColumn<bool>("closed");
        QTest::addColumn<int>("drafts");
        Row("cancel stays", int(core::Answer::Cancel), false, false, 0);
        Row("no leaves unsaved", int(core::Answer::No), false, true, 0);
        Row("yes saves and leaves", int(core::Answer::Yes), true, true, 1);
        Row("yes, dialog cancelled, stays", int(core::Answer::Yes), false, false, 0);
    }

    void leavingAChangedDocumentAsksToSaveIt() {
        QFETCH(int, answer);
        QFETCH(bool, saveDialogOk);
        QFETCH(bool, closed);
        QFETCH(int, drafts);
        std::unique_ptr<ui::frmLWAC> w = Open();
        w->mnuCreate_Click();
        // Untouched, it leaves without a word.
        w->mnuNewAuction_Click();
        QCOMPARE(Asked(*m_ui), QStringList());
        w->mnuCreate_Click();
        Retype(Named<QLineEdit>(w.get(), QStringLiteral("txtItemTitle")), QStringLiteral("Kite"));
        m_ui->ScriptAnswer(core::Answer(answer));
        WhenShown save(QStringLiteral("frmGeneral"), [saveDialogOk](QWidget* dialog) {
            Click(dialog, saveDialogOk ? QStringLiteral("cmdOK") : QStringLiteral("cmdCancel"));
        });
        Click(w.get(), QStringLiteral("cmdExit"));
        QCOMPARE(Asked(*m_ui),
                 QStringList{QStringLiteral("You have not saved your changes to this auction "
                                            "(Kite).  Would you like to save your work as a "
                                            "draft?")});
        QCOMPARE(m_ui->History().front().title, QStringLiteral("Save Changes?"));
        QCOMPARE(save.Acted(), answer == int(core::Answer::Yes));
        QCOMPARE(!w->isVisible(), closed);
        QCOMPARE(Count(QStringLiteral("ACType = 'Draft'")), drafts);
        if (!closed) {
            // What was typed is still there.
            QCOMPARE(Named<QLineEdit>(w.get(), QStringLiteral("txtItemTitle"))->text(),
                     QStringLiteral("Kite"));
        }
    }

    void requiredLabelsAreRedUntilFilledAndARedOneStopsTheOutbox_data() {
        QTest::addColumn<QString>("label");
        QTest::addColumn<std::function<void(QWidget*)>>("undo");
        const auto retype = [](const char* box, const char* text) {
            return std::function<void(QWidget*)>([box, text](QWidget* w) {
                Retype(Named<QLineEdit>(w, QString::fromLatin1(box)), QString::fromLatin1(text));
            });
        };
        QTest::newRow("description")
            << "lblRequired0" << std::function<void(QWidget*)>([](QWidget* w) {
                   Named<QPlainTextEdit>(w, QStringLiteral("txtDescription"))->clear();
               });
        QTest::newRow("minimum bid of a sign") << "lblRequired1" << retype("txtMinimumBid", "$");
        QTest::newRow("quantity 0") << "lblRequired2" << retype("txtQuantity", "0");
        QTest::newRow("category typed over")
            << "lblRequiredeBay0" << std::function<void(QWidget*)>([](QWidget* w) {
                   Named<QComboBox>(w, QStringLiteral("cmbEbayCategory"))
                       ->setEditText(QStringLiteral("lamps"));
               });
        QTest::newRow("site title") << "lblRequiredeBay1" << retype("txtEbayTitle", "");
        QTest::newRow("location") << "lblRequiredeBay3" << retype("txtItemLocationEbay", "");
        QTest::newRow("payment") << "lblRequiredeBay6"
                                 << std::function<void(QWidget*)>([](QWidget* w) {
                                        Named<QListWidget>(w,
                                                           QStringLiteral("lstEbayAcceptedPayment"))
                                            ->clearSelection();
                                    });
    }

    void requiredLabelsAreRedUntilFilledAndARedOneStopsTheOutbox() {
        QFETCH(QString, label);
        QFETCH(std::function<void(QWidget*)>, undo);
        std::unique_ptr<ui::frmLWAC> w = Open();
        w->mnuCreate_Click();
        QCOMPARE(Colour(w.get(), label), creator::kRed);
        FillRequired(w.get());
        for (int i = 0; i < 3; ++i) {
            QCOMPARE(Colour(w.get(), QStringLiteral("lblRequired%1").arg(i)), creator::kGreen);
        }
        for (int i = 0; i < 9; ++i) {
            QCOMPARE(Colour(w.get(), QStringLiteral("lblRequiredeBay%1").arg(i)), creator::kGreen);
        }
        QCOMPARE(Named<QLabel>(w.get(), QStringLiteral("lblRequiredeBay1"))->text(),
                 QStringLiteral("Title (20)"));
        // The command line names a red label by the words the label shows.
        creator::RequiredFields red;
        red.lblRequired.fill(creator::kRed);
        red.lblRequiredeBay.fill(creator::kRed);
        const QStringList names = red.RedLabels();
        const QStringList captions = red.RedCaptions();
        QCOMPARE(captions.size(), names.size());
        for (qsizetype i = 0; i < names.size(); ++i) {
            const QString name = QString(names[i]).remove(u'(').remove(u')');
            const QString shown = Named<QLabel>(w.get(), name)->text().remove(u'&');
            QVERIFY2(shown.startsWith(captions[i]), qPrintable(name + u' ' + shown));
        }
        undo(w.get());
        QCOMPARE(Colour(w.get(), label), creator::kRed);
        Click(w.get(), QStringLiteral("cmdToOutbox"));
        QCOMPARE(m_ui->Messages(),
                 QStringList{QStringLiteral("Please complete 'Red' fields in the Auction Creator "
                                            "to finish your auction or save as Draft")});
        QCOMPARE(Count(QStringLiteral("1")), 1);
        QVERIFY(w->isVisible());
    }

    void boxesTakeWhatTheirFieldsAllow_data() {
        QTest::addColumn<QString>("box");
        QTest::addColumn<QString>("typed");
        QTest::addColumn<QString>("kept");
        QTest::addColumn<QString>("afterTheTab");
        // Digits and one point; the quantity is whole. Leaving the item tab
        // shows the prices as money.
        Row("minimum bid", "txtMinimumBid", "a1.2.5$", "1.25", "$1.25");
        Row("reserve", "txtReserve", "30", "30", "$30.00");
        Row("quantity", "txtQuantity", "2.5x", "25", "25");
        Row("title", "txtItemTitle", "Tin robot", "Tin robot", "Tin robot");
    }

    void boxesTakeWhatTheirFieldsAllow() {
        QFETCH(QString, box);
        QFETCH(QString, typed);
        QFETCH(QString, kept);
        QFETCH(QString, afterTheTab);
        std::unique_ptr<ui::frmLWAC> w = Open();
        w->mnuCreate_Click();
        auto* edit = Named<QLineEdit>(w.get(), box);
        Retype(edit, typed);
        QCOMPARE(edit->text(), kept);
        Named<QTabWidget>(w.get(), QStringLiteral("SSTab1"))->setCurrentIndex(2);
        QCOMPARE(edit->text(), afterTheTab);
    }

    // A title longer than the site takes is warned of when the box is left,
    // once for that title, until the warning's check is cleared.
    void aTitleTooLongForTheSiteIsWarnedOfUntilTheWarningIsTurnedOff() {
        std::unique_ptr<ui::frmLWAC> w = Open();
        w->mnuCreate_Click();
        auto* title = Named<QLineEdit>(w.get(), QStringLiteral("txtItemTitle"));
        QStringList seen;
        bool keepWarning = true;
        const auto leave = [&](const QString& text) {
            WhenShown warning(QStringLiteral("frmGeneral"), [&](QWidget* dialog) {
                seen << dialog->windowTitle() + u'|' +
                            Named<QLabel>(dialog, QStringLiteral("lblMessage"))->text() + u'|' +
                            Named<QCheckBox>(dialog, QStringLiteral("chkTitleTruncate"))->text();
                Named<QCheckBox>(dialog, QStringLiteral("chkTitleTruncate"))
                    ->setChecked(keepWarning);
                Click(dialog, QStringLiteral("cmdOK"));
            });
            title->setText(text);
            Q_EMIT title->editingFinished();
        };
        const QString fits(45, u'a');
        const QString longer = fits + QStringLiteral(" and more");
        leave(fits);
        QVERIFY(seen.isEmpty());
        leave(longer);
        QCOMPARE(seen, QStringList{QStringLiteral(
                           "Auction Title Truncated|Your auction title has been truncated to 45 "
                           "characters.  Please edit.|&Continue to show me this warning")});
        QCOMPARE(Named<QLineEdit>(w.get(), QStringLiteral("txtEbayTitle"))->text(), fits);
        leave(longer);
        QCOMPARE(seen.size(), 1);
        keepWarning = false;
        leave(longer + u'!');
        QCOMPARE(seen.size(), 2);
        QCOMPARE(core::GetSetting(QStringLiteral("Tolvane"), QStringLiteral("Options"),
                                  QStringLiteral("TitleTruncationWarningOff")),
                 QStringLiteral("-1"));
        leave(longer + QStringLiteral("!!"));
        QCOMPARE(seen.size(), 2);
    }

    void theStyleTabShowsTheChosenStyleAndColours() {
        std::unique_ptr<ui::frmLWAC> w = Open();
        w->mnuCreate_Click();
        auto* styles = Named<QListWidget>(w.get(), QStringLiteral("lstTemplateStyle"));
        QCOMPARE(styles->count(), int(std::size(creator::kStyleFiles)));
        for (int row = 0; row < styles->count(); ++row) {
            styles->setCurrentRow(row);
            for (int picture = 0; picture < styles->count(); ++picture) {
                auto* image =
                    Named<QLabel>(w.get(), QStringLiteral("imgTemplatePreview%1").arg(picture));
                QCOMPARE(!image->isHidden(), picture == row);
                if (picture == row) {
                    QVERIFY(!image->pixmap().isNull());
                }
            }
        }
        const struct {
            const char* box;
            const char* colour;
            QColor sample;
        } colours[] = {{"cmbTableBGColor", "Red", QColor(255, 0, 0)},
                       {"cmbThemeColor", "Brown", QColor(102, 51, 0)},
                       {"cmbFontColor", "Pastel Blue", QColor(204, 204, 255)}};
        for (size_t i = 0; i < std::size(colours); ++i) {
            Named<QComboBox>(w.get(), QString::fromLatin1(colours[i].box))
                ->setCurrentText(QString::fromLatin1(colours[i].colour));
            QCOMPARE(Named<QLabel>(w.get(), QStringLiteral("txtColor%1").arg(i))
                         ->palette()
                         .color(QPalette::Window),
                     colours[i].sample);
        }
        // The separator row of the fonts is no font.
        auto* fonts = Named<QComboBox>(w.get(), QStringLiteral("cmbFontType"));
        fonts->setCurrentText(creator::FontSeparator());
        QCOMPARE(fonts->currentIndex(), 0);
        // Enter in the description is a line break of the listing.
        auto* description = Named<QPlainTextEdit>(w.get(), QStringLiteral("txtDescription"));
        QTest::keyClicks(description, QStringLiteral("one"));
        QTest::keyClick(description, Qt::Key_Return);
        QTest::keyClicks(description, QStringLiteral("two"));
        QCOMPARE(description->toPlainText(), QStringLiteral("one<BR>two"));
        // The long title gives the site its first 45 characters.
        const QString title = QString(50, u'x');
        Retype(Named<QLineEdit>(w.get(), QStringLiteral("txtItemTitle")), title);
        QCOMPARE(Named<QLineEdit>(w.get(), QStringLiteral("txtEbayTitle"))->text(), title.left(45));
        QCOMPARE(Named<QLabel>(w.get(), QStringLiteral("lblTitleLength"))->text(),
                 QStringLiteral("(50)"));
    }

    void aCompleteDocumentGoesToTheOutboxAndPreviews() {
        std::unique_ptr<ui::frmLWAC> w = Open();
        w->mnuCreate_Click();
        FillRequired(w.get());
        Click(w.get(), QStringLiteral("cmdPreviewAuction"));
        QCOMPARE(m_opened.size(), 1);
        const QByteArray page = test::ReadAll(QUrl(m_opened.first()).toLocalFile());
        QVERIFY(page.contains("A lantern."));
        QVERIFY(page.contains("Antiques: Lamps &amp; Lighting (110)"));

        Click(w.get(), QStringLiteral("cmdToOutbox"));
        QVERIFY2(m_ui->Messages().isEmpty(), qPrintable(m_ui->Messages().join(u'|')));
        QCOMPARE(Count(QStringLiteral("ACType = 'Old Auction' AND Outbox = 1 AND AuctionName = "
                                      "'Brass ship''s lantern' AND eBayCategory = '110'")),
                 1);
        // The chooser again, with the auction among the saved ones.
        auto* tabs = Named<QTabWidget>(w.get(), QStringLiteral("SSTab1"));
        QCOMPARE(tabs->currentIndex(), int(ui::frmLWAC::kChooserTab));
        QVERIFY(!tabs->isTabEnabled(ui::frmLWAC::kItemTab));
        QCOMPARE(Texts(Named<QListWidget>(w.get(), QStringLiteral("lstOldAuction"))),
                 QStringList{QStringLiteral("Brass ship's lantern")});
    }

    void postNowSendsTheDocumentByTheChosenRoute_data() {
        QTest::addColumn<QString>("route");
        QTest::addColumn<QString>("page");
        QTest::addColumn<bool>("siteUp");
        Row("direct", "mnuAPost", "", true);
        Row("review page", "mnuReviewPage", "ebaypost.html", true);
        Row("sell page", "mnuSellPage", "ebaysell.html", true);
        Row("site down", "mnuAPost", "", false);
    }

    void postNowSendsTheDocumentByTheChosenRoute() {
        QFETCH(QString, route);
        QFETCH(QString, page);
        QFETCH(bool, siteUp);
        test::SiteProcess site({QStringLiteral("--seed"), QStringLiteral("5")});
        QVERIFY2(site.Ok(), site.Error().c_str());
        // The rules as a rule update from this site leaves them, and its seller.
        QStringList rules;
        for (const char* name : {"site.pro", "info.pro", "seller.pro"}) {
            rules << m_root->Write(
                QStringLiteral("rules/") + QLatin1String(name),
                test::ReadAll(test::SourceDir() + QStringLiteral("/rules/") + QLatin1String(name))
                    .replace("http://127.0.0.1:8750", site.Base().toUtf8()));
        }
        QString error;
        QVERIFY2(update::InstallRuleFiles(rules.at(0), rules.at(1), &error), qPrintable(error));
        QVERIFY(QFile::copy(rules.at(2), core::CurrentSession().ConfigsDir + "seller.pro"));
        core::AddUser(*m_db, {QStringLiteral("Demo"), QStringLiteral("demo_seller"),
                              QStringLiteral("demo"), QStringLiteral("demo@example.com")});
        core::SetCurrentUser(QStringLiteral("Demo"));

        std::unique_ptr<ui::frmLWAC> w = Open();
        Named<QAction>(w.get(), route)->trigger();
        w->mnuCreate_Click();
        FillRequired(w.get());
        if (!siteUp) {
            site.Stop();
        }
        QString said;
        WhenShown posted(QStringLiteral("frmGeneral"), [&said](QWidget* dialog) {
            QCOMPARE(dialog->windowTitle(), QStringLiteral("Auction Posted Successfully"));
            said = Named<QLabel>(dialog, QStringLiteral("lblMessage"))->text();
            // Not again: the next post goes without it.
            Named<QCheckBox>(dialog, QStringLiteral("chkTitleTruncate"))->setChecked(false);
            Click(dialog, QStringLiteral("cmdOK"));
        });
        Click(w.get(), QStringLiteral("cmdPostNow"));

        const QString sent = QStringLiteral("ACType = 'Old Auction' AND Outbox IS NOT 1");
        auto* tabs = Named<QTabWidget>(w.get(), QStringLiteral("SSTab1"));
        if (!siteUp) {
            // Nothing was sent or saved, and the document is still in the window.
            QCOMPARE(m_ui->Titles(), QStringList{QStringLiteral("No ISP Connection")});
            QVERIFY(m_ui->Messages().first().contains(QStringLiteral("post auctions to eBay.")));
            QCOMPARE(Count(sent), 0);
            QCOMPARE(tabs->currentIndex(), int(ui::frmLWAC::kItemTab));
            QCOMPARE(Named<QLineEdit>(w.get(), QStringLiteral("txtItemTitle"))->text(),
                     QStringLiteral("Brass ship's lantern"));
            return;
        }
        QVERIFY2(m_ui->Messages().isEmpty(), qPrintable(m_ui->Messages().join(u'|')));
        QCOMPARE(Count(sent), 1);
        const qint64 id =
            m_db->ScalarInt(QStringLiteral("SELECT ID FROM AuctionCreator WHERE ") + sent);
        // Sent directly, it is listed among the seller's sales under the
        // number the confirmation gives.
        const auto listed = [this](const QVariant& creatorId) {
            core::Statement s = m_db->Prepare(
                QStringLiteral("SELECT ItemNumber FROM Auctions WHERE ItemTitle = ? AND UserName "
                               "= ? AND (? IS NULL OR AuctionCreatorID = ?)"));
            s.BindAll(QStringLiteral("Brass ship's lantern"), QStringLiteral("Demo"), creatorId,
                      creatorId);
            QStringList numbers;
            while (s.Step()) {
                numbers << s.Text(0);
            }
            return numbers;
        };
        const QStringList numbers = listed(id);
        QCOMPARE(posted.Acted(), page.isEmpty());
        QCOMPARE(numbers.size(), page.isEmpty() ? 1 : 0);
        if (page.isEmpty()) {
            QCOMPARE(said,
                     QStringLiteral("Your auction was posted as item #%1.").arg(numbers.at(0)));
            QCOMPARE(core::GetSetting(QStringLiteral("Tolvane"), QStringLiteral("Options"),
                                      QStringLiteral("AuctionConfirmOff")),
                     QStringLiteral("-1"));
            QString shownAgain;
            WhenShown again(QStringLiteral("frmGeneral"), [&shownAgain](QWidget* dialog) {
                shownAgain = dialog->windowTitle();
                static_cast<QDialog*>(dialog)->reject();
            });
            w->mnuCreate_Click();
            FillRequired(w.get());
            Click(w.get(), QStringLiteral("cmdPostNow"));
            QVERIFY2(!again.Acted(), qPrintable(shownAgain));
            QVERIFY2(m_ui->Messages().isEmpty(), qPrintable(m_ui->Messages().join(u'|')));
            QCOMPARE(listed(QVariant()).size(), 2);
        }
        QCOMPARE(m_opened.size(), page.isEmpty() ? 0 : 1);
        if (!page.isEmpty()) {
            QVERIFY2(m_opened.first().endsWith(page), qPrintable(m_opened.first()));
        }
        QCOMPARE(core::GetSetting(QStringLiteral("Auction Creator"), QStringLiteral("Demo"),
                                  QStringLiteral("eBayPost")),
                 page.isEmpty() ? QString() : QStringLiteral("-1"));
        QCOMPARE(tabs->currentIndex(), int(ui::frmLWAC::kChooserTab));
    }

    void thePictureListKeepsItsOrderAndSaysWhatIsMissing() {
        std::unique_ptr<ui::frmLWAC> w = Open();
        w->mnuCreate_Click();
        Click(w.get(), QStringLiteral("cmdAddLink"));
        Click(w.get(), QStringLiteral("cmdRemoveLink"));
        QCOMPARE(m_ui->Messages(),
                 (QStringList{"Please enter a picture link before attempting to add to picture "
                              "link box",
                              "You need to select a link from your Picture List to remove it."}));
        auto* link = Named<QComboBox>(w.get(), QStringLiteral("cmbPictureLink"));
        for (const char* picture : {"http://p/1.jpg", "http://p/2.jpg", "http://p/3.jpg"}) {
            link->setEditText(QString::fromLatin1(picture));
            Click(w.get(), QStringLiteral("cmdAddLink"));
        }
        auto* list = Named<QListWidget>(w.get(), QStringLiteral("lstPictureLink"));
        auto* up = Named<QAbstractButton>(w.get(), QStringLiteral("cmdMoveLinkUp"));
        auto* down = Named<QAbstractButton>(w.get(), QStringLiteral("cmdMoveLinkDown"));
        QVERIFY(up->isEnabled() && !down->isEnabled());
        up->click();
        up->click();
        QVERIFY(!up->isEnabled() && down->isEnabled());
        QCOMPARE(Texts(list), (QStringList{"http://p/3.jpg", "http://p/1.jpg", "http://p/2.jpg"}));
        list->setCurrentRow(1);
        Click(w.get(), QStringLiteral("cmdRemoveLink"));
        QCOMPARE(Texts(list), (QStringList{"http://p/3.jpg", "http://p/2.jpg"}));
        Click(w.get(), QStringLiteral("cmdTestLink"));
        QCOMPARE(m_opened.size(), 1);
        // A link kept as a favourite comes back in the box of the next window.
        link->setEditText(QStringLiteral("http://p/fav.jpg"));
        Click(w.get(), QStringLiteral("cmdAddFavoritePictureLink"));
        std::unique_ptr<ui::frmLWAC> next = Open();
        QVERIFY(Named<QComboBox>(next.get(), QStringLiteral("cmbEbayGallery"))
                    ->findText(QStringLiteral("http://p/fav.jpg")) >= 0);
    }

    void theCategoryBoxTakesANumberANameOrTheBrowsersChoice_data() {
        QTest::addColumn<QString>("typed");
        QTest::addColumn<QString>("shown");
        QTest::addColumn<QString>("message");
        Row("number", "110", "Antiques: Lamps & Lighting (110)", "");
        Row("full name", "Antiques: Lamps & Lighting", "Antiques: Lamps & Lighting (110)", "");
        Row("unknown number", "99999", "",
            "Category #99999 not found.  Please enter another category number.");
    }

    void theCategoryBoxTakesANumberANameOrTheBrowsersChoice() {
        QFETCH(QString, typed);
        QFETCH(QString, shown);
        QFETCH(QString, message);
        std::unique_ptr<ui::frmLWAC> w = Open();
        w->mnuCreate_Click();
        auto* box = Named<QComboBox>(w.get(), QStringLiteral("cmbEbayCategory"));
        box->setEditText(typed);
        w->cmbEbayCategory_KeyEnter();
        QCOMPARE(m_ui->Messages(), message.isEmpty() ? QStringList() : QStringList{message});
        QCOMPARE(box->currentIndex() >= 0 ? box->currentText() : QString(), shown);
        QCOMPARE(Colour(w.get(), QStringLiteral("lblRequiredeBay0")),
                 shown.isEmpty() ? creator::kRed : creator::kGreen);
    }

    void theCategoryBrowserSearchesAndChooses_data() {
        QTest::addColumn<QString>("words");
        QTest::addColumn<bool>("allWords");
        QTest::addColumn<QString>("caption");
        QTest::addColumn<QString>("chosen");
        Row("a word", "TOLEWARE", false, "Search Categories: 1 matches found",
            "Antiques: Toleware (117)");
        Row("a number", "117", false, "Search Categories: Match found", "Antiques: Toleware (117)");
        Row("any word", "antiques toleware", false, "Search Categories: 20 matches found",
            "Antiques: Architectural & Garden (106)");
        // All words must stand in one of the two names, not across them.
        Row("all words across names", "antiques toleware", true,
            "Search Categories: No Matches Found", "");
    }

    void theCategoryBrowserSearchesAndChooses() {
        QFETCH(QString, words);
        QFETCH(bool, allWords);
        QFETCH(QString, caption);
        QFETCH(QString, chosen);
        std::unique_ptr<ui::frmLWAC> w = Open();
        w->mnuCreate_Click();
        QString seen;
        QStringList favourites;
        WhenShown browse(QStringLiteral("frmGeneral"), [&](QWidget* dialog) {
            QCOMPARE(dialog->windowTitle(), QStringLiteral("Browse eBay Categories"));
            QVERIFY(Named<QListWidget>(dialog, QStringLiteral("lstCategoryItems"))->count() > 0);
            Named<QTabWidget>(dialog, QStringLiteral("tabCategories"))->setCurrentIndex(1);
            Named<QCheckBox>(dialog, QStringLiteral("chkAndSearch"))->setChecked(allWords);
            Named<QComboBox>(dialog, QStringLiteral("lstSearchCategories"))->setEditText(words);
            Click(dialog, QStringLiteral("cmdSearchCategories"));
            seen = Named<QGroupBox>(dialog, QStringLiteral("fraSearch"))->title();
            Click(dialog, QStringLiteral("cmdAddToFavorites2"));
            favourites = Texts(Named<QListWidget>(dialog, QStringLiteral("lstCategorys")));
            // Select with nothing chosen leaves the dialog open.
            Click(dialog, QStringLiteral("cmdSelectCategory2"));
            if (dialog->isVisible()) {
                Click(dialog, QStringLiteral("cmdCancelCategory2"));
            }
        });
        Click(w.get(), QStringLiteral("cmdBrowseCategory"));
        QVERIFY(browse.Acted());
        QCOMPARE(seen, caption);
        auto* box = Named<QComboBox>(w.get(), QStringLiteral("cmbEbayCategory"));
        QCOMPARE(box->currentIndex() >= 0 ? box->currentText() : QString(), chosen);
        const QString number = chosen.isEmpty() ? QString() : chosen.section(u'(', -1).chopped(1);
        QCOMPARE(Named<QLabel>(w.get(), QStringLiteral("lbleBayCat"))->text(), number);
        // The favourite made there is offered by the box at once.
        QCOMPARE(favourites, chosen.isEmpty() ? QStringList() : QStringList{chosen});
        QCOMPARE(box->findText(chosen.section(QStringLiteral(" ("), 0, 0)) >= 0, !chosen.isEmpty());
    }

    void theMainWindowOpensTheCreatorForANewAuctionAndARelist_data() {
        QTest::addColumn<bool>("fromCreator");
        QTest::addColumn<QString>("title");
        Row("posted from the creator", true, "Lantern as the creator has it");
        Row("posted elsewhere", false, "Lantern as the site lists it");
    }

    void theMainWindowOpensTheCreatorForANewAuctionAndARelist() {
        QFETCH(bool, fromCreator);
        QFETCH(QString, title);
        const qint64 id = AddRow(QString(creator::kOldAuction), QStringLiteral("Lantern"),
                                 QStringLiteral("Lantern as the creator has it"));
        m_db->Prepare(
                QStringLiteral("INSERT INTO Auctions (UserName, ItemNumber, ItemTitle, EndDate, "
                               "AuctionCreatorID, NumberBids, HighBid) VALUES (?, '5001', ?, ?, ?, "
                               "'0', '-')"))
            .BindAll(kUser, QStringLiteral("Lantern as the site lists it"),
                     QStringLiteral("01/02/20, 10:00:00 PST"), fromCreator ? id : qint64(0))
            .Run();
        ui::frmAuction main;
        main.SetUrlOpener([](const QString&) {});
        main.show();
        main.Form_Load();
        QString shown;
        bool chooser = true;
        WhenShown relist(QStringLiteral("frmLWAC"), [&](QWidget* creator) {
            shown = Named<QLineEdit>(creator, QStringLiteral("txtItemTitle"))->text();
            chooser = Named<QTabWidget>(creator, QStringLiteral("SSTab1"))->currentIndex() == 0;
            static_cast<QDialog*>(creator)->reject();
        });
        Named<QComboBox>(&main, QStringLiteral("lstAuctionGroup"))->setCurrentIndex(1);
        main.lstAuctionGroup_Click();
        auto* grid = Named<QTableView>(&main, QStringLiteral("grdAuction"));
        QCOMPARE(grid->model()->rowCount(), 1);
        grid->setCurrentIndex(grid->model()->index(0, 0));
        main.mnuItemRelistCreator_Click();
        QVERIFY(relist.Acted());
        QCOMPARE(shown, title);
        QVERIFY(!chooser);
        // Afterwards the current sales are shown from their first page.
        QCOMPARE(Named<QComboBox>(&main, QStringLiteral("lstAuctionGroup"))->currentIndex(), 0);
        QVERIFY(m_ui->Titles().isEmpty());

        // Closed with "Update My Sales When Finished" ticked, the sales update
        // runs: here it finds no connection and says so.
        WhenShown fresh(QStringLiteral("frmLWAC"), [&chooser](QWidget* creator) {
            chooser = Named<QTabWidget>(creator, QStringLiteral("SSTab1"))->currentIndex() == 0;
            Named<QAction>(creator, QStringLiteral("mnuUAWF"))->trigger();
            static_cast<QDialog*>(creator)->reject();
        });
        Named<QAction>(&main, QStringLiteral("mnuAuctionCreator"))->trigger();
        QVERIFY(fresh.Acted());
        QVERIFY(chooser);
        QCOMPARE(m_ui->Titles(), QStringList{QStringLiteral("No ISP Connection")});
        QVERIFY(m_ui->Messages().at(0).contains(QStringLiteral("update your auction database")));
    }
};

QTEST_MAIN(CreatorWindowTest)
#include "creator_ui_test.moc"
