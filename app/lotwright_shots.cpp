// SPDX-License-Identifier: GPL-3.0-or-later
// lotwright-shots: opens each window of the program in turn on a prepared
// AppRoot and writes one PNG per window, so that the windows can be looked at
// without sitting at the screen. It starts as lotwright does (the first
// retrieval included, when the user has none), runs one "My Bids Only"
// update to catch the update window at work, and then shows the rest: among
// them the auction creator on each of its tabs with a sample listing typed
// in, its save dialog and category browser, and the preview page of every
// listing style, written as HTML beside the pictures (previews-html/) for
// scripts/screenshots to draw in a browser. Last the main window, the about
// box, the preferences and the creator's site fields again under a dark
// palette.
// Messages are not shown (nobody is there to answer them) but are printed.
// It writes pictures only; every row it changes is one the program's own
// start or update would have written, or, in the Task Manager, one that a
// user writes there: a partner's address pasted and saved, and a bid's
// payment, so that the packing list and the remittance advice have what
// they need.
//   lotwright-shots --root DIR --out DIR
#include <QAbstractButton>
#include <QAbstractItemView>
#include <QApplication>
#include <QCheckBox>
#include <QClipboard>
#include <QComboBox>
#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QPainter>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QRegularExpression>
#include <QTabWidget>
#include <QTextStream>
#include <QTimer>
#include <QTreeWidget>
#include <QUrl>
#include <string_view>

#include "admin/startup.h"
#include "core/session.h"
#include "core/settings.h"
#include "core/store.h"
#include "ui/desktop_start.h"
#include "ui/frmAuction.h"
#include "ui/frmGeneral.h"
#include "ui/frmLWAC.h"
#include "ui/frmNewUser.h"
#include "ui/frmTip.h"
#include "ui/frmUpdate.h"
#include "ui/frmUserPreferences.h"
#include "ui/readable_colour.h"
#include "update/run_lists.h"
#include "update/update_run.h"

namespace {

// Answers every question with its default and prints what was shown.
class PrintingUi : public lw::core::Ui {
public:
    void Message(const QString& text, const QString& title, lw::core::Icon) override {
        QTextStream(stderr) << "[" << title << "] " << text << '\n';
    }
    lw::core::Answer Ask(const QString& text, const QString& title, lw::core::Buttons,
                         lw::core::Answer defaultAnswer) override {
        QTextStream(stderr) << "[" << title << "] " << text << " (default answer taken)\n";
        return defaultAnswer;
    }
    std::optional<QString> Prompt(const QString&, const QString&, const QString& initial) override {
        return initial;
    }
    void Status(const QString&) override {}
    void Progress(qint64, qint64) override {}
    void PumpEvents() override { QCoreApplication::processEvents(); }
    bool CancelRequested() override { return false; }
};

class Shots {
public:
    explicit Shots(QString outDir) : m_out(std::move(outDir)) {}

    // Lets the window lay itself out and paint, then writes it.
    void Take(QWidget* window, const QString& name) {
        window->show();
        window->raise();
        // Long enough for charts to settle their axes and for timers of the
        // first second (the site clock) to have run.
        QElapsedTimer settle;
        settle.start();
        while (settle.elapsed() < 1200) {
            QCoreApplication::processEvents(QEventLoop::AllEvents, 50);
        }
        const QString file = QDir(m_out).filePath(name + QStringLiteral(".png"));
        if (window->grab().save(file)) {
            QTextStream(stdout) << file << '\n';
        } else {
            QTextStream(stderr) << "could not write " << file << '\n';
            m_failed = true;
        }
    }
    bool Failed() const { return m_failed; }

private:
    QString m_out;
    bool m_failed = false;
};

QWidget* VisibleTopLevel(const QString& objectName) {
    const auto widgets = QApplication::topLevelWidgets();
    for (QWidget* widget : widgets) {
        if (widget->objectName() == objectName && widget->isVisible()) {
            return widget;
        }
    }
    return nullptr;
}

// Takes the picture of a modal window once it shows, then closes it.
void TakeWhenShown(Shots& shots, const QString& objectName, const QString& picture) {
    auto* poll = new QTimer;
    poll->setInterval(50);
    QObject::connect(poll, &QTimer::timeout, [poll, &shots, objectName, picture] {
        if (QWidget* window = VisibleTopLevel(objectName)) {
            poll->stop();
            poll->deleteLater();
            shots.Take(window, picture);
            window->close();
        }
    });
    poll->start();
}

template <class T>
T* Child(QWidget* window, const char* name) {
    return window->findChild<T*>(QString::fromLatin1(name));
}

// A picture of the sample listing: a lantern drawn on a plain ground with
// its number, so that the preview pages show pictures without a network.
QString SamplePicture(const QString& dir, int n) {
    QImage image(400, 300, QImage::Format_RGB32);
    image.fill(QColor(0xec, 0xe6, 0xd6));
    QPainter paint(&image);
    paint.setRenderHint(QPainter::Antialiasing);
    paint.setPen(Qt::NoPen);
    paint.setBrush(QColor(0x8a, 0x6d, 0x1d));
    paint.drawRoundedRect(170, 40, 60, 18, 6, 6);
    paint.drawRoundedRect(140, 208, 120, 22, 6, 6);
    paint.setBrush(QColor(0xc9, 0xa2, 0x27));
    paint.drawRoundedRect(150, 58, 100, 150, 14, 14);
    paint.setBrush(QColor(0xb3, 0x26, 0x1e));
    paint.drawRoundedRect(168, 80, 64, 106, 8, 8);
    paint.setPen(QColor(0x55, 0x55, 0x55));
    QFont font = paint.font();
    font.setPixelSize(24);
    paint.setFont(font);
    paint.drawText(QRect(0, 250, 400, 40), Qt::AlignCenter, QStringLiteral("Picture %1").arg(n));
    paint.end();
    const QString path = QDir(dir).filePath(QStringLiteral("lantern-%1.png").arg(n));
    image.save(path);
    return QUrl::fromLocalFile(path).toString();
}

// Types a sample listing into the creator as a seller would.
void TypeSampleListing(QWidget* creator, const QString& pictureDir) {
    const struct {
        const char* name;
        const char* text;
    } boxes[] = {{"txtItemTitle", "Brass ship's lantern with red glass, about 1920"},
                 {"txtMinimumBid", "$25.00"},
                 {"txtReserve", "$60.00"},
                 {"txtQuantity", "1"},
                 {"txtShipping", "$12.50"},
                 {"txtInsurance", "$2.00"},
                 {"txtItemCost", "$8.00"},
                 {"txtItemLocationEbay", "Portland, Maine"},
                 {"txtPayPalAddress", "demo@example.com"}};
    for (const auto& box : boxes) {
        if (auto* edit = Child<QLineEdit>(creator, box.name)) {
            edit->setText(QString::fromUtf8(box.text));
        }
    }
    if (auto* description = Child<QPlainTextEdit>(creator, "txtDescription")) {
        description->setPlainText(QStringLiteral(
            "<P>A brass ship's lantern with its <B>original</B> red glass and a working "
            "wick.</P><BR><P>Some dents at the base; the handle is firm. Height 34 cm.</P>"));
    }
    auto* link = Child<QComboBox>(creator, "cmbPictureLink");
    auto* add = Child<QAbstractButton>(creator, "cmdAddLink");
    for (int n = 1; link != nullptr && add != nullptr && n <= 4; ++n) {
        link->setEditText(SamplePicture(pictureDir, n));
        add->click();
    }
    if (link != nullptr) {
        link->setEditText(QString());
    }
    if (auto* category = Child<QComboBox>(creator, "cmbEbayCategory")) {
        category->setEditText(QStringLiteral("110"));
        QMetaObject::invokeMethod(creator, "cmbEbayCategory_KeyEnter");
    }
    for (const char* list : {"lstEbayAcceptedPayment", "lstEbayShippingPref", "lstEbayOptions"}) {
        if (auto* rows = Child<QListWidget>(creator, list); rows != nullptr && rows->count() > 1) {
            rows->item(1)->setSelected(true);
        }
    }
    if (auto* domestic = Child<QAbstractButton>(creator, "optEbayWorldShipping0")) {
        domestic->click();
    }
    for (const char* check : {"chkItemTitle", "chkPictureSize", "chkPictureReturn"}) {
        if (auto* box = Child<QAbstractButton>(creator, check); box && !box->isChecked()) {
            box->click();
        }
    }
    const struct {
        const char* name;
        const char* text;
    } choices[] = {{"cmbTableBGColor", "Pastel Light Blue"},
                   {"cmbThemeColor", "Matte Blue"},
                   {"cmbFontColor", "Dark Gray"},
                   {"cmbFontType", "Verdana"},
                   {"cmbProductDetails0", "Used, in good order"},
                   {"cmbProductDetails1", "From a harbour master's estate"},
                   {"cmbTransaction0", "within the country"},
                   {"cmbTransaction2", "Money order or personal check"}};
    for (const auto& choice : choices) {
        if (auto* combo = Child<QComboBox>(creator, choice.name)) {
            const QString text = QString::fromUtf8(choice.text);
            if (combo->isEditable()) {
                combo->setEditText(text);
            } else {
                combo->setCurrentIndex(combo->findText(text));
            }
        }
    }
    for (const char* box : {"cmbEbayRegion", "cmbEbayCountry"}) {
        if (auto* combo = Child<QComboBox>(creator, box); combo != nullptr && combo->count() > 0) {
            combo->setCurrentIndex(0);
        }
    }
}

// The creator, its dialogs and the preview page of each style.
void TakeCreator(Shots& shots, QWidget* parent, const QString& out) {
    const QString htmlDir = QDir(out).filePath(QStringLiteral("previews-html"));
    QDir().mkpath(htmlDir);
    lw::ui::frmLWAC creator(parent);
    QString written;
    creator.SetUrlOpener([&written](const QUrl& url) { written = url.toLocalFile(); });
    creator.resize(960, 700);
    shots.Take(&creator, QStringLiteral("frmLWAC-0-Choose"));
    creator.cmdLoadDefault_Click();
    TypeSampleListing(&creator, htmlDir);
    auto* tabs = creator.findChild<QTabWidget*>(QStringLiteral("SSTab1"));
    for (int index = 1; tabs != nullptr && index < tabs->count(); ++index) {
        tabs->setCurrentIndex(index);
        shots.Take(&creator, QStringLiteral("frmLWAC-%1-%2")
                                 .arg(index)
                                 .arg(tabs->widget(index)->objectName().mid(3)));
    }
    if (auto* styles = Child<QListWidget>(&creator, "lstTemplateStyle")) {
        for (int row = 0; row < styles->count(); ++row) {
            styles->setCurrentRow(row);
            written.clear();
            creator.cmdPreviewAuction_Click();
            const QString name =
                QString(styles->item(row)->text())
                    .replace(QRegularExpression(QStringLiteral("[^A-Za-z]+")), QStringLiteral("-"));
            const QString copy =
                QDir(htmlDir).filePath(QStringLiteral("preview-%1-%2.html").arg(row).arg(name));
            QFile::remove(copy);
            if (written.isEmpty() || !QFile::copy(written, copy)) {
                QTextStream(stderr) << "no preview page for " << styles->item(row)->text() << '\n';
            }
        }
        styles->setCurrentRow(1);
    }
    TakeWhenShown(shots, QStringLiteral("frmGeneral"), QStringLiteral("frmGeneral-SaveAuction"));
    creator.cmdSave_Click();
    try {
        lw::core::Database db = lw::core::OpenStore();
        lw::ui::frmGeneral browser(lw::ui::frmGeneral::CategoryForm, db, &creator);
        if (auto* top = Child<QListWidget>(&browser, "lstCategoryNames"); top && top->count() > 0) {
            top->setCurrentRow(std::min(10, int(top->count()) - 1));
        }
        if (auto* items = Child<QListWidget>(&browser, "lstCategoryItems");
            items && items->count() > 0) {
            items->setCurrentRow(0);
        }
        shots.Take(&browser, QStringLiteral("frmGeneral-Categories-Browse"));
        if (auto* pages = browser.findChild<QTabWidget*>(QStringLiteral("tabCategories"))) {
            pages->setCurrentIndex(1);
        }
        if (auto* words = Child<QComboBox>(&browser, "lstSearchCategories")) {
            words->setEditText(QStringLiteral("lamp"));
            browser.cmdSearchCategories_Click();
        }
        shots.Take(&browser, QStringLiteral("frmGeneral-Categories-Search"));
    } catch (const lw::core::StoreError& failure) {
        QTextStream(stderr) << failure.Message() << '\n';
    }
    // Closed as it stands: the sample was never the user's work.
    creator.hide();
}

// A user's step in a panel: the boxes filled, then the button pressed.
void FillAndPress(QWidget* window, std::initializer_list<std::pair<const char*, QString>> boxes,
                  const char* button) {
    for (const auto& [name, text] : boxes) {
        if (auto* box = Child<QLineEdit>(window, name)) {
            box->setText(text);
        } else if (auto* list = Child<QComboBox>(window, name)) {
            list->setCurrentIndex(text.toInt());
            Q_EMIT list->activated(text.toInt());
        }
    }
    if (auto* press = Child<QPushButton>(window, button)) {
        press->click();
    }
}

// The Task Manager on each side: the first item with every panel that its
// tree opens, the partner's address pasted from the clipboard and saved
// first (and on a bid the payment), so that the packing list and the
// remittance advice can be built.
void TakeTaskManager(Shots& shots, QWidget* window) {
    auto* tree = Child<QTreeWidget>(window, "ToDo1");
    auto* list = Child<QListWidget>(window, "lstToAuctions");
    auto* count = Child<QLabel>(window, "lblToDoRecordCount");
    if (tree == nullptr || list == nullptr || count == nullptr) {
        return;
    }
    auto select = [tree](const QString& key) {
        for (QTreeWidgetItemIterator it(tree); *it != nullptr; ++it) {
            if ((*it)->data(0, Qt::UserRole).toString() == key) {
                tree->setCurrentItem(*it);
                return true;
            }
        }
        return false;
    };
    for (const char* side : {"Sale", "Bid"}) {
        const bool sale = side == std::string_view("Sale");
        if (auto* box = Child<QCheckBox>(window, sale ? "chkToDoAuctions" : "chkToDoBids")) {
            box->click();
        }
        const QString prefix = QStringLiteral("frmAuction-2-TaskManager-") + QLatin1String(side);
        if (count->text() == QLatin1String("(0)")) {
            shots.Take(window, prefix + QStringLiteral("-Empty"));
            continue;
        }
        list->setCurrentRow(0);
        if (select(QStringLiteral("PRA"))) {
            QApplication::clipboard()->setText(
                QStringLiteral("Ms. Ann B Lee\nLee Antiques\n12 Elm Street\nDayton, OH 45402"));
            FillAndPress(window, {}, "cmdPasteAddressFromClipboard");
            FillAndPress(window, {}, "cmdSaveAddress");
        }
        if (!sale && select(QStringLiteral("PRP"))) {
            FillAndPress(window,
                         {{"lstPaymentMethods", QStringLiteral("1")},
                          {"txtCheckNumber", QStringLiteral("1042")},
                          {"txtDrawnOnBank", QStringLiteral("First Bank")}},
                         "cmdSavePaymentInfo");
        }
        QStringList keys;
        for (QTreeWidgetItemIterator it(tree); *it != nullptr; ++it) {
            if ((*it)->childCount() == 0 || (*it)->parent() == nullptr) {
                keys << (*it)->data(0, Qt::UserRole).toString();
            }
        }
        for (const QString& key : keys) {
            select(key);
            shots.Take(window, prefix + u'-' + key);
        }
    }
    if (auto* box = Child<QCheckBox>(window, "chkToDoAuctions")) {
        box->click();
    }
}

}  // namespace

int main(int argc, char** argv) {
    QApplication app(argc, argv);
    QApplication::setApplicationName(QStringLiteral("Lotwright"));
    QApplication::setOrganizationName(QStringLiteral("Lotwright"));

    QString root;
    QString out;
    const QStringList args = QApplication::arguments();
    for (qsizetype i = 1; i + 1 < args.size(); i += 2) {
        if (args.at(i) == QLatin1String("--root")) {
            root = args.at(i + 1);
        } else if (args.at(i) == QLatin1String("--out")) {
            out = args.at(i + 1);
        }
    }
    if (root.isEmpty() || out.isEmpty() || !QDir().mkpath(out)) {
        QTextStream(stderr) << "Usage: lotwright-shots --root DIR --out DIR\n";
        return 2;
    }

    PrintingUi ui;
    lw::core::ResetSession(&ui);
    lw::core::CurrentSession().ShippedDir =
        lw::core::ResolveShippedDir(QApplication::applicationDirPath());
    lw::core::SetSettingsFolder(QDir(root).absolutePath() + QStringLiteral("/Configs/Settings"));

    lw::ui::DesktopStart start = lw::ui::StartDesktop(QDir(root).absolutePath());
    if (!start.window) {
        return start.exitCode == 0 ? 1 : start.exitCode;
    }
    lw::ui::frmAuction* window = start.window.get();
    window->resize(1100, 720);
    Shots shots(out);

    // The tip of the day that the start put up.
    QCoreApplication::processEvents();
    if (QWidget* tip = VisibleTopLevel(QStringLiteral("frmTip"))) {
        shots.Take(tip, QStringLiteral("frmTip"));
        tip->close();
    } else {
        lw::ui::frmTip own(window);
        shots.Take(&own, QStringLiteral("frmTip"));
    }

    auto* tabs = window->findChild<QTabWidget*>(QStringLiteral("SSTab1"));
    const QStringList tabNames = {QStringLiteral("MySales"), QStringLiteral("MyBids"),
                                  QStringLiteral("TaskManager"), QStringLiteral("AuctionAnalysis")};
    for (int index = 0; tabs != nullptr && index < tabs->count(); ++index) {
        tabs->setCurrentIndex(index);
        shots.Take(window, QStringLiteral("frmAuction-%1-%2")
                               .arg(index)
                               .arg(tabNames.value(index, QString::number(index))));
    }
    if (tabs != nullptr) {
        tabs->setCurrentIndex(lw::ui::frmAuction::kTaskTab);
        TakeTaskManager(shots, window);
        tabs->setCurrentIndex(0);
    }
    // The sale with the longest title selected: its panel must keep to the
    // window, whatever the title's length.
    if (auto* grid = window->findChild<QAbstractItemView*>(QStringLiteral("grdAuction"))) {
        int longest = -1;
        qsizetype length = -1;
        for (int row = 0; row < grid->model()->rowCount(); ++row) {
            const qsizetype size = grid->model()->index(row, 1).data().toString().size();
            if (size > length) {
                longest = row;
                length = size;
            }
        }
        if (longest >= 0) {
            grid->setCurrentIndex(grid->model()->index(longest, 0));
            shots.Take(window, QStringLiteral("frmAuction-0-MySales-LongestTitle"));
        }
    }

    // The update window at work: taken from inside the run, when the address
    // of its second page is made (on the window's thread: the pages
    // themselves come over the run's connections).
    try {
        lw::core::Database db = lw::core::OpenStore();
        lw::update::WriteRunList(lw::update::RunList(lw::update::UpdateCommand::UpdateBids));
        lw::update::UpdateHooks hooks = lw::update::DefaultUpdateHooks(db);
        hooks.redraw = [window] { window->RedrawViews(); };
        int addresses = 0;
        bool taken = false;
        auto buildUrl = hooks.buildUrl;
        hooks.buildUrl = [&](const QString& url, int siteNumber, const QStringList& fields,
                             const QStringList& values, qint64 pageOffset) {
            if (++addresses == 2 && !taken) {
                if (QWidget* update = VisibleTopLevel(QStringLiteral("frmUpdate"))) {
                    shots.Take(update, QStringLiteral("frmUpdate"));
                    taken = true;
                }
            }
            return buildUrl(url, siteNumber, fields, values, pageOffset);
        };
        lw::ui::ShowUpdateWindow(db, window, std::move(hooks));
        if (!taken) {
            QTextStream(stderr) << "the update window was not caught at work\n";
        }
    } catch (const lw::core::StoreError& failure) {
        QTextStream(stderr) << failure.Message() << '\n';
    }

    {
        lw::ui::frmUserPreferences preferences(window);
        auto* pages = preferences.findChild<QTabWidget*>(QStringLiteral("tabPreferences"));
        for (int index = 0; pages != nullptr && index < pages->count(); ++index) {
            pages->setCurrentIndex(index);
            shots.Take(&preferences, QStringLiteral("frmUserPreferences-%1-%2")
                                         .arg(index)
                                         .arg(pages->widget(index)->objectName()));
        }
    }
    {
        lw::ui::frmNewUser newUser(window);
        shots.Take(&newUser, QStringLiteral("frmNewUser"));
        // Closing it would leave the marker that ends a start.
        newUser.hide();
    }
    {
        lw::ui::frmGeneral itemCost(lw::ui::frmGeneral::ItemCostForm, window);
        const auto* grid = window->findChild<QAbstractItemView*>(QStringLiteral("grdAuction"));
        const QString item = grid != nullptr && grid->model()->rowCount() > 0
                                 ? grid->model()->index(0, 0).data().toString()
                                 : QStringLiteral("n/a");
        itemCost.setWindowTitle(QStringLiteral("Item #: ") + item);
        itemCost.SetItemCostValues(QStringLiteral("$12.50"), QStringLiteral("$4.95"),
                                   QStringLiteral("$0.00"));
        shots.Take(&itemCost, QStringLiteral("frmGeneral-ItemCost"));
    }
    {
        lw::ui::frmGeneral about(lw::ui::frmGeneral::AboutForm, window);
        shots.Take(&about, QStringLiteral("frmGeneral-About"));
    }
    TakeCreator(shots, window, out);
    // Help, Contents and Index: taken from inside its own modal loop.
    TakeWhenShown(shots, QStringLiteral("frmHelp"), QStringLiteral("frmHelp"));
    window->menHelpTopics_Click();

    // The same windows on a dark desktop: the Fusion style with a dark
    // palette, changed under the open main window as a desktop changes it.
    QApplication::setStyle(QStringLiteral("Fusion"));
    QApplication::setPalette(lw::ui::DarkPalette());
    for (int index : {0, 1, 2, 3}) {
        if (tabs == nullptr) {
            break;
        }
        tabs->setCurrentIndex(index);
        shots.Take(window, QStringLiteral("dark-frmAuction-%1-%2")
                               .arg(index)
                               .arg(tabNames.value(index, QString::number(index))));
    }
    if (tabs != nullptr) {
        tabs->setCurrentIndex(0);
    }
    {
        lw::ui::frmGeneral about(lw::ui::frmGeneral::AboutForm, window);
        shots.Take(&about, QStringLiteral("dark-frmGeneral-About"));
    }
    {
        // The required labels in red and green on the dark ground.
        lw::ui::frmLWAC creator(window);
        creator.resize(960, 700);
        creator.cmdLoadDefault_Click();
        if (auto* tabs = creator.findChild<QTabWidget*>(QStringLiteral("SSTab1"))) {
            tabs->setCurrentIndex(lw::ui::frmLWAC::kListingTab);
        }
        if (auto* location = Child<QLineEdit>(&creator, "txtItemLocationEbay")) {
            location->setText(QStringLiteral("Portland, Maine"));
        }
        shots.Take(&creator, QStringLiteral("dark-frmLWAC-6-Listing"));
        creator.hide();
    }
    {
        lw::ui::frmUserPreferences preferences(window);
        if (auto* pages = preferences.findChild<QTabWidget*>(QStringLiteral("tabPreferences"))) {
            pages->setCurrentIndex(pages->count() - 2);
        }
        shots.Take(&preferences, QStringLiteral("dark-frmUserPreferences-Views"));
    }
    window->close();
    start.window.reset();
    lw::core::ResetSession();
    return shots.Failed() ? 1 : 0;
}
