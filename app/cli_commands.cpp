// SPDX-License-Identifier: GPL-3.0-or-later
// Parsing and running the command line. Every failure ends in one clear line
// on standard error and a non-zero exit code; nothing is half-written.
#include "app/cli_commands.h"

#include <unistd.h>

#include <QCommandLineParser>
#include <QFile>
#include <QFileInfo>
#include <QHash>
#include <algorithm>
#include <optional>

#include "app/cli_packing.h"
#include "app/cli_scan.h"
#include "app/password_input.h"
#include "core/session.h"
#include "core/settings.h"
#include "core/store.h"
#include "core/ui_port.h"
#include "creator/category_directory.h"
#include "creator/creator_document.h"
#include "creator/direct_post.h"
#include "creator/listing_html.h"
#include "tasks/task_model.h"
#include "tasks/task_tree.h"
#include "update/record_writer.h"
#include "update/repair.h"
#include "update/rules.h"
#include "update/run_lists.h"
#include "update/site_session.h"
#include "update/update_lock.h"
#include "update/update_run.h"

namespace lw::app {

namespace {

struct Options {
    QString root;
    std::optional<int> store;
    QString user, siteId, email;
    std::optional<QString> password;              // --password
    bool passwordStdin = false;                   // --password-stdin
    QString rulesFile, protocol, page, pagesDir;  // scan
    bool list = false;                            // update --list
    bool wait = false;                            // update --wait
    bool all = false;                             // categories search --all
    bool bids = false;                            // tasks --bids
    QString filter;                               // tasks --filter
    bool version = false;
    std::optional<int> connections;    // update --connections
    QString bidder, pdfFile, rtfFile;  // packing-list, remittance
    QString type, style, outFile;      // listing --type, --style, --out
    bool sellPage = false;             // listing post --sell-page
    bool review = false;               // listing post --review
    QStringList words;                 // the command and its positional arguments
};

// The options of every command; each command reads those it takes. They may
// stand anywhere on the line, before or after the command's words; "--" ends
// them.
QString Parse(const QStringList& args, Options& options) {
    QCommandLineParser parser;
    const QCommandLineOption root(QStringLiteral("root"), QString(), QStringLiteral("DIR"));
    const QCommandLineOption user(QStringLiteral("user"), QString(), QStringLiteral("NAME"));
    const QCommandLineOption siteId(QStringLiteral("site-id"), QString(), QStringLiteral("ID"));
    const QCommandLineOption password(QStringLiteral("password"), QString(), QStringLiteral("PW"));
    const QCommandLineOption passwordStdin(QStringLiteral("password-stdin"));
    const QCommandLineOption email(QStringLiteral("email"), QString(), QStringLiteral("ADDR"));
    const QCommandLineOption store(QStringLiteral("store"), QString(), QStringLiteral("N"));
    const QCommandLineOption rules(QStringLiteral("rules"), QString(), QStringLiteral("FILE"));
    const QCommandLineOption protocol(QStringLiteral("protocol"), QString(),
                                      QStringLiteral("NAME"));
    const QCommandLineOption page(QStringLiteral("page"), QString(), QStringLiteral("FILE"));
    const QCommandLineOption pages(QStringLiteral("pages"), QString(), QStringLiteral("DIR"));
    const QCommandLineOption list(QStringLiteral("list"));
    const QCommandLineOption wait(QStringLiteral("wait"));
    const QCommandLineOption all(QStringLiteral("all"));
    const QCommandLineOption connections(QStringLiteral("connections"), QString(),
                                         QStringLiteral("N"));
    const QCommandLineOption bidder(QStringLiteral("bidder"), QString(), QStringLiteral("NAME"));
    const QCommandLineOption pdf(QStringLiteral("pdf"), QString(), QStringLiteral("FILE"));
    const QCommandLineOption rtf(QStringLiteral("rtf"), QString(), QStringLiteral("FILE"));
    const QCommandLineOption type(QStringLiteral("type"), QString(), QStringLiteral("KIND"));
    const QCommandLineOption style(QStringLiteral("style"), QString(), QStringLiteral("NAME"));
    const QCommandLineOption outFile(QStringLiteral("out"), QString(), QStringLiteral("FILE"));
    const QCommandLineOption bids(QStringLiteral("bids"));
    const QCommandLineOption filter(QStringLiteral("filter"), QString(), QStringLiteral("NAME"));
    const QCommandLineOption sellPage(QStringLiteral("sell-page"));
    const QCommandLineOption review(QStringLiteral("review"));
    const QCommandLineOption help(QStringList{QStringLiteral("h"), QStringLiteral("help")});
    const QCommandLineOption version(QStringList{QStringLiteral("v"), QStringLiteral("version")});
    parser.addOptions({root,   user,     siteId, password, passwordStdin, email,   store,
                       rules,  protocol, page,   pages,    list,          wait,    connections,
                       bidder, pdf,      rtf,    type,     style,         outFile, bids,
                       filter, sellPage, review, help,     version});
    parser.addOption(all);
    if (!parser.parse(QStringList{QStringLiteral("lotwright-cli")} + args)) {
        return parser.errorText();
    }
    options.root = parser.value(root);
    options.user = parser.value(user);
    options.siteId = parser.value(siteId);
    if (parser.isSet(password)) {
        options.password = parser.value(password);
    }
    options.passwordStdin = parser.isSet(passwordStdin);
    options.email = parser.value(email);
    if (parser.isSet(store)) {
        bool ok = false;
        const int number = parser.value(store).toInt(&ok);
        if (!ok || number < 0 || number > 2) {
            return QStringLiteral("--store takes 0, 1 or 2.");
        }
        options.store = number;
    }
    options.rulesFile = parser.value(rules);
    options.protocol = parser.value(protocol);
    options.page = parser.value(page);
    options.pagesDir = parser.value(pages);
    options.list = parser.isSet(list);
    options.wait = parser.isSet(wait);
    options.all = parser.isSet(all);
    options.bids = parser.isSet(bids);
    options.filter = parser.value(filter);
    options.version = parser.isSet(version);
    if (parser.isSet(connections)) {
        bool ok = false;
        const int number = parser.value(connections).toInt(&ok);
        if (!ok || number < update::kFewestConnections || number > update::kMostConnections) {
            return QStringLiteral("--connections takes a whole number from %1 to %2.")
                .arg(update::kFewestConnections)
                .arg(update::kMostConnections);
        }
        options.connections = number;
    }
    options.bidder = parser.value(bidder);
    options.pdfFile = parser.value(pdf);
    options.rtfFile = parser.value(rtf);
    options.type = parser.value(type);
    options.style = parser.value(style);
    options.outFile = parser.value(outFile);
    options.sellPage = parser.isSet(sellPage);
    options.review = parser.isSet(review);
    options.words = parser.positionalArguments();
    if (parser.isSet(help)) {
        options.words.prepend(QStringLiteral("help"));
    }
    return {};
}

// Sets up the session on the chosen AppRoot; the database must already exist
// unless create is set.
bool OpenSession(const Options& options, const QString& exeDir, bool create, QTextStream& err) {
    QString error;
    const std::optional<core::Locations> locations =
        core::ResolveLocations(options.root, exeDir, &error);
    if (!locations || !core::UseLocations(*locations, &error)) {
        err << error << '\n';
        return false;
    }
    const QString& root = locations->appRoot;
    if (!create && !QFileInfo::exists(root + QStringLiteral("/Data/Lotwright.db"))) {
        err << "There is no Lotwright database under " << root
            << " (run \"lotwright-cli init\" first).\n";
        return false;
    }
    if (!core::SetupDirectories(root, &error)) {
        err << error << '\n';
        return false;
    }
    return true;
}

// The default user of the database becomes the session's, with the site
// clock's correction; false, told on err, when there is none.
bool ChooseDefaultUser(core::Database& db, QTextStream& err) {
    if (core::ChooseUser(db, nullptr) != core::UserChoice::Chosen) {
        err << "There is no default user in this database (run \"lotwright-cli init\" first).\n";
        return false;
    }
    core::LoadSiteCorrection(db);
    return true;
}

// The site password of init: --password, one line of standard input with
// --password-stdin, or asked for on the terminal. Nothing, told on err, when
// none can be had.
std::optional<QString> InitPassword(const Options& options, QTextStream& err) {
    if (options.password && options.passwordStdin) {
        err << "Give the password one way: --password or --password-stdin.\n";
        return std::nullopt;
    }
    std::optional<QString> password = options.password;
    if (options.passwordStdin) {
        password = ReadOneLine(STDIN_FILENO);
        if (!password) {
            err << "--password-stdin found no line on standard input (a password of at most "
                   "4096 bytes, ended by a line end).\n";
            return std::nullopt;
        }
    } else if (!password) {
        if (isatty(STDIN_FILENO) == 0) {
            err << "init needs the site password: standard input is no terminal to ask on, so "
                   "give it as one line with --password-stdin.\n";
            return std::nullopt;
        }
        err.flush();
        password = ReadHiddenLine(QStringLiteral("Site password for %1: ").arg(options.siteId));
        if (!password) {
            err << "No password was typed.\n";
            return std::nullopt;
        }
    }
    if (password->isEmpty()) {
        err << "The password is empty; a site account needs one.\n";
        return std::nullopt;
    }
    return password;
}

int Init(const Options& options, const QString& exeDir, QTextStream& out, QTextStream& err) {
    if (options.user.trimmed().isEmpty() || options.siteId.trimmed().isEmpty()) {
        err << "init needs --user NAME --site-id ID [--email ADDR] and the site password.\n";
        return kExitUsage;
    }
    if (!options.email.isEmpty() &&
        (!options.email.contains(u'@') || !options.email.contains(u'.'))) {
        err << "The e-mail address " << options.email << " is not valid.\n";
        return kExitUsage;
    }
    const std::optional<QString> password = InitPassword(options, err);
    if (!password) {
        err << "Nothing was made.\n";
        return kExitUsage;
    }
    if (!OpenSession(options, exeDir, true, err)) {
        return kExitFailure;
    }
    core::Database db = core::OpenStore();
    core::AddUser(db, {options.user, options.siteId, *password, options.email});
    core::SetCurrentUser(core::StoreText(options.user.trimmed()));
    QString templatesError;
    if (!creator::InstallAuctionTemplates(core::CurrentSession().ShippedDir,
                                          core::CurrentSession().TemplatesDir, &templatesError)) {
        err << templatesError << '\n';
    }
    out << "Made user " << core::CurrentSession().CurrentUser << " in "
        << core::CurrentSession().AppRoot << '\n';
    return kExitOk;
}

int Rules(const Options& options, const QString& exeDir, QTextStream& out, QTextStream& err) {
    const QString verb = options.words.value(1);
    const int store = options.store.value_or(0);
    if (verb == QLatin1String("install")) {
        if (options.words.size() != 4) {
            err << "rules install needs SITE.PRO INFO.PRO.\n";
            return kExitUsage;
        }
        if (!OpenSession(options, exeDir, false, err)) {
            return kExitFailure;
        }
        QString error;
        if (!update::InstallRuleFiles(options.words.at(2), options.words.at(3), &error)) {
            err << error << '\n';
            return kExitFailure;
        }
        out << "Installed " << options.words.at(2) << " and " << options.words.at(3)
            << "; the rules they replace are kept in " << update::PreviousRulesDir() << '\n';
        return kExitOk;
    }
    if (verb == QLatin1String("restore")) {
        if (options.words.size() != 2) {
            err << "rules restore takes no more words.\n";
            return kExitUsage;
        }
        if (!OpenSession(options, exeDir, false, err)) {
            return kExitFailure;
        }
        QString error;
        if (!update::RestorePreviousRules(&error)) {
            err << error << '\n';
            return kExitFailure;
        }
        out << "Restored the earlier rules; the rules they replace are kept in "
            << update::PreviousRulesDir() << '\n';
        return kExitOk;
    }
    if (verb != QLatin1String("get") && verb != QLatin1String("name")) {
        err << "rules takes get, name, install or restore.\n";
        return kExitUsage;
    }
    if (options.words.size() != 4) {
        err << "rules " << verb << " needs SECTION " << (verb == u"get" ? "KEY" : "VALUE") << ".\n";
        return kExitUsage;
    }
    if (!OpenSession(options, exeDir, false, err)) {
        return kExitFailure;
    }
    update::InstallRuleStore();
    const QString& section = options.words.at(2);
    const QString& what = options.words.at(3);
    const QString answer = verb == QLatin1String("get")
                               ? update::LookupRuleKey(section, what, store)
                               : update::LookupRuleName(section, what, store);
    out << answer << '\n';
    if (answer == QLatin1String("ERROR")) {
        err << "No " << (verb == u"get" ? "key " : "key with the value ") << what << " in section ["
            << section << "] of rule store " << store << ".\n";
        return kExitNotFound;
    }
    return kExitOk;
}

// Tabs and line ends inside a value would break the line format.
QString Escaped(QString text) {
    text.replace(u'\\', QStringLiteral("\\\\"))
        .replace(u'\t', QStringLiteral("\\t"))
        .replace(u'\n', QStringLiteral("\\n"))
        .replace(u'\r', QStringLiteral("\\r"));
    return text;
}

QString Cell(const core::Statement& row, int column) {
    return row.IsNull(column) ? QString() : Escaped(row.Value(column).toString());
}

int Query(const Options& options, const QString& exeDir, QTextStream& out, QTextStream& err) {
    if (options.words.size() != 2) {
        err << "query needs one SQL text (quote it).\n";
        return kExitUsage;
    }
    if (!OpenSession(options, exeDir, false, err)) {
        return kExitFailure;
    }
    core::Database db = core::OpenStoreForReading();
    core::Statement statement = db.PrepareSingle(update::JetSql(options.words.at(1)));
    if (!statement.IsReadOnly()) {
        err << "Only reading queries are allowed here; the statement was not run.\n";
        return kExitUsage;
    }
    QStringList header;
    for (int i = 0; i < statement.ColumnCount(); ++i) {
        header << statement.ColumnName(i);
    }
    out << header.join(u'\t') << '\n';
    while (statement.Step()) {
        QStringList cells;
        for (int i = 0; i < statement.ColumnCount(); ++i) {
            cells << Cell(statement, i);
        }
        out << cells.join(u'\t') << '\n';
    }
    return kExitOk;
}

// Categories as lines of number, a tab and a name. The directory is brought
// up to date first, as the program's start does: a downloaded category.pro
// is taken in, a new database gets the shipped one.
int Categories(const Options& options, const QString& exeDir, QTextStream& out, QTextStream& err) {
    const QString verb = options.words.value(1);
    const bool search = verb == QLatin1String("search");
    if ((!search && verb != QLatin1String("browse")) || (search && options.words.size() < 3) ||
        (!search && options.words.size() > 3)) {
        err << "categories takes search WORDS... [--all] or browse [TOP-LEVEL NAME].\n";
        return kExitUsage;
    }
    if (!OpenSession(options, exeDir, false, err)) {
        return kExitFailure;
    }
    core::Database db = core::OpenStore();
    const creator::CategoryFileLoad load = creator::PrepareCategoryDirectory(db, core::CurrentUi());
    if (load.brokenLines > 0) {
        err << "category.pro: " << load.brokenLines
            << (load.brokenLines == 1 ? " broken line was" : " broken lines were")
            << " stepped over.\n";
    }
    if (search) {
        const creator::CategorySearch found =
            creator::SearchCategories(db, options.words.mid(2).join(u' '), options.all);
        if (found.matches.empty()) {
            err << found.caption << '\n';
        }
        for (const creator::CategoryEntry& entry : found.matches) {
            out << entry.number << '\t' << Escaped(entry.FullName()) << '\n';
        }
        return kExitOk;
    }
    const QStringList names = creator::TopLevelNames(db);
    if (options.words.size() == 2) {
        for (const QString& name : names) {
            out << Escaped(name) << '\n';
        }
        return kExitOk;
    }
    const QString& topLevel = options.words.at(2);
    if (!names.contains(topLevel, Qt::CaseInsensitive)) {
        err << "There is no top-level category " << topLevel
            << "; \"lotwright-cli categories browse\" lists them.\n";
        return kExitNotFound;
    }
    for (const creator::CategoryEntry& entry : creator::CategoriesUnder(db, topLevel)) {
        out << entry.number << '\t' << Escaped(entry.name) << '\n';
    }
    return kExitOk;
}

int Scan(const Options& options, QTextStream& out, QTextStream& err) {
    if (options.words.size() != 1 || options.rulesFile.isEmpty() || options.protocol.isEmpty() ||
        options.page.isEmpty()) {
        err << "scan needs --rules FILE --protocol NAME --page FILE [--pages DIR].\n";
        return kExitUsage;
    }
    return RunScan(options.rulesFile, options.protocol, options.page, options.pagesDir, out, err);
}

// The kinds of listing document by their ACType, as --type gives them.
std::optional<QString> ListingKind(const QString& given) {
    for (const QLatin1String kind : {creator::kDraft, creator::kTemplate, creator::kOldAuction}) {
        if (given.compare(kind, Qt::CaseInsensitive) == 0) {
            return QString(kind);
        }
    }
    return std::nullopt;
}

// The creator's lists and a document loaded from row id, as the creator
// window has them; nothing when there is no such row.
struct LoadedListing {
    creator::CreatorLists lists;
    creator::CreatorDocument doc;
    QString type;
    QString name;
};
std::optional<LoadedListing> LoadListing(core::Database& db, qint64 id) {
    LoadedListing loaded;
    loaded.lists = creator::LoadCreatorLists(
        db, update::Rules(), core::CurrentSession().CurrentUser, creator::AuctionTemplatesDir());
    loaded.doc = creator::NewCreatorDocument(loaded.lists);
    if (!creator::LoadCreatorRecord(db, id, loaded.lists, update::Rules(), loaded.doc)) {
        return std::nullopt;
    }
    core::Statement row =
        db.Prepare(QStringLiteral("SELECT ACType, AuctionName FROM AuctionCreator WHERE ID = ?"));
    row.Bind(1, id);
    if (row.Step()) {
        loaded.type = row.Text(0);
        loaded.name = row.Text(1);
    }
    return loaded;
}

// listing post: the document sent to the site by the creator's route; the
// new item number on standard output (the sell page's path with --sell-page,
// the review page's with --review).
int PostListing(core::Database& db, qint64 id, const Options& options, QTextStream& out,
                QTextStream& err) {
    const creator::PostRoute route = options.sellPage ? creator::PostRoute::SellPage
                                     : options.review ? creator::PostRoute::ReviewPage
                                                      : creator::PostRoute::Direct;
    // listing list and show reach every document, but only the user's own
    // are posted: not the Default, nor another user's.
    core::Statement owner =
        db.Prepare(QStringLiteral("SELECT ACType, UserName FROM AuctionCreator WHERE ID = ?"));
    owner.Bind(1, id);
    const QString user = core::CurrentSession().CurrentUser;
    if (owner.Step() && owner.Text(1) != user) {
        if (owner.Text(0) == creator::kDefault) {
            err << "Document " << id
                << " is the Default, which new documents start from; it is not posted itself.\n";
        } else {
            const QString name = owner.Text(1);
            err << "Document " << id << " belongs to "
                << (name.isEmpty() ? QStringLiteral("no user") : QStringLiteral("the user ") + name)
                << ", and only " << user << "'s own documents are posted.\n";
        }
        return kExitFailure;
    }
    // A category given by name is found in the directory, which a new
    // database gets from the shipped file.
    creator::PrepareCategoryDirectory(db, core::CurrentUi());
    const creator::PostOutcome outcome =
        creator::PostAuction(db, update::Rules(), id, route, core::CurrentUi());
    if (!outcome.problem.isEmpty()) {
        err << outcome.problem << '\n';
    }
    if (outcome.fellBack && !outcome.browserPage.isEmpty()) {
        err << "The listing was not posted; the sell page to finish it in the browser is "
            << outcome.browserPage << '\n';
    }
    if (!outcome.posted) {
        return kExitFailure;
    }
    if (route != creator::PostRoute::Direct) {
        creator::SavePostMark(core::CurrentSession().CurrentUser, QDate::currentDate());
        out << outcome.browserPage << '\n';
        return kExitOk;
    }
    if (outcome.itemNumber.isEmpty()) {
        err << "The site took the listing, but its answer named no item number; the next update "
               "of the sales will find it.\n";
        return kExitOk;
    }
    out << outcome.itemNumber << '\n';
    return kExitOk;
}

int Listing(const Options& options, const QString& exeDir, QTextStream& out, QTextStream& err) {
    const QString verb = options.words.value(1);
    const bool list = verb == QLatin1String("list");
    const bool post = verb == QLatin1String("post");
    if (!list && !post && verb != QLatin1String("show") && verb != QLatin1String("html")) {
        err << "listing takes list, show, html or post.\n";
        return kExitUsage;
    }
    if (options.words.size() != (list ? 2 : 3)) {
        err << (list ? "listing list takes no more words (--type KIND chooses a kind).\n"
                     : "listing show, html and post need one document ID.\n");
        return kExitUsage;
    }
    if ((options.sellPage || options.review) && !post) {
        err << "--sell-page and --review belong to listing post.\n";
        return kExitUsage;
    }
    if (options.sellPage && options.review) {
        err << "Give one route: --sell-page or --review.\n";
        return kExitUsage;
    }
    std::optional<QString> kind;
    if (!options.type.isEmpty() && !(kind = ListingKind(options.type))) {
        err << "--type takes Draft, Template or \"Old Auction\".\n";
        return kExitUsage;
    }
    bool idOk = list;
    const qint64 id = list ? 0 : options.words.at(2).toLongLong(&idOk);
    if (!idOk || (!list && id < 1)) {
        err << "The document ID " << options.words.value(2) << " is not a whole number above 0.\n";
        return kExitUsage;
    }
    if (!options.style.isEmpty() && creator::StyleFileName(options.style).isEmpty()) {
        QStringList styles;
        for (const creator::StyleFile& entry : creator::kStyleFiles) {
            styles << QString::fromLatin1(entry.style);
        }
        err << "There is no style " << options.style << "; the styles are "
            << styles.join(QStringLiteral(", ")) << ".\n";
        return kExitUsage;
    }
    if (!OpenSession(options, exeDir, false, err)) {
        return kExitFailure;
    }
    core::Database db = core::OpenStore();
    if (core::ChooseUser(db, nullptr) != core::UserChoice::Chosen) {
        err << "There is no default user in this database (run \"lotwright-cli init\" first).\n";
        return kExitFailure;
    }
    const QString user = core::CurrentSession().CurrentUser;
    if (list) {
        out << "ID\tType\tName\tCreated\n";
        const QStringList kinds =
            kind ? QStringList{*kind}
                 : QStringList{QString(creator::kTemplate), QString(creator::kDraft),
                               QString(creator::kOldAuction)};
        for (const QString& each : kinds) {
            for (const creator::ChooserRow& row : creator::ChooserRows(db, each, user)) {
                out << row.id << '\t' << row.type << '\t' << row.text << '\t' << row.created
                    << '\n';
            }
        }
        return kExitOk;
    }
    update::InstallRuleStore(update::Rules(), db);
    QString error;
    const core::Session& session = core::CurrentSession();
    if (!creator::InstallAuctionTemplates(session.ShippedDir, session.TemplatesDir, &error)) {
        err << error << '\n';
    }
    if (post) {
        return PostListing(db, id, options, out, err);
    }
    const std::optional<LoadedListing> loaded = LoadListing(db, id);
    if (!loaded) {
        err << "There is no listing document with the ID " << id << ".\n";
        return kExitFailure;
    }
    if (verb == QLatin1String("show")) {
        out << "ID: " << id << "\nType: " << loaded->type << "\nName: " << loaded->name << '\n';
        for (const QString& line : creator::ChooserDetails(db, id)) {
            out << line << '\n';
        }
        for (const auto& [column, value] :
             creator::DocumentColumns(loaded->doc, loaded->lists, update::Rules())) {
            QString text = value.toString();
            text.replace(u'\\', QStringLiteral("\\\\"))
                .replace(u'\n', QStringLiteral("\\n"))
                .replace(u'\r', QStringLiteral("\\r"));
            out << column << ": " << text << '\n';
        }
        const QStringList red =
            creator::CheckRequiredFields(loaded->doc, loaded->lists).RedCaptions();
        out << "Required fields: "
            << (red.isEmpty() ? QStringLiteral("complete")
                              : QStringLiteral("missing ") + red.join(QStringLiteral(", ")))
            << '\n';
        return kExitOk;
    }
    const QString style = options.style.isEmpty() ? loaded->doc.lstTemplateStyle : options.style;
    const creator::ListingContext context{creator::AuctionTemplatesDir(), &update::Rules(),
                                          creator::SellerId(db, user)};
    const creator::ListingResult listing =
        creator::BuildListing(style, loaded->doc, loaded->lists, context);
    if (!listing.problem.isEmpty() || creator::StyleFileName(style).isEmpty()) {
        err << (listing.problem.isEmpty()
                    ? QStringLiteral("The document's style \"%1\" is none of the styles; give "
                                     "one with --style.")
                          .arg(style)
                    : listing.problem)
            << '\n';
        return kExitFailure;
    }
    if (options.outFile.isEmpty()) {
        out << listing.html;
        return kExitOk;
    }
    QFile file(options.outFile);
    if (!file.open(QIODevice::WriteOnly | QIODevice::Truncate) ||
        file.write(listing.html.toUtf8()) < 0 || !file.flush()) {
        err << "The listing could not be written to " << options.outFile << ": "
            << file.errorString() << '\n';
        return kExitFailure;
    }
    out << "Wrote the listing of " << id << " in the style " << style << " to " << options.outFile
        << '\n';
    return kExitOk;
}

// The words of `update COMMAND`, one for each command that starts an update.
struct UpdateWord {
    const char* word;
    update::UpdateCommand command;
    const char* what;
};

constexpr UpdateWord kUpdateWords[] = {
    {"sales", update::UpdateCommand::UpdateAuctions, "my sales and their details, the site time"},
    {"bids", update::UpdateCommand::UpdateBids, "my bids and their details, the site time"},
    {"account", update::UpdateCommand::UpdateAccountBalance, "the account balance"},
    {"complete", update::UpdateCommand::UpdateComplete,
     "time, sales, bids and the account balance"},
    {"maximum", update::UpdateCommand::UpdateDatabaseAndAccount,
     "everything of the last 30 days again, with the account history (asks first)"},
    {"database", update::UpdateCommand::UpdateAuctionDatabase,
     "the protocols of the rules' [Update] section"},
    {"time", update::UpdateCommand::SyncTime, "the site clock"},
    {"watch", update::UpdateCommand::ItemWatch, "the watched items"},
    {"first", update::UpdateCommand::FirstRetrieval,
     "the first retrieval of a new user: [Update], then the account history"},
};

// The commands after which retrieved auctions are tied to the listings they
// were posted from.
bool Reconciles(update::UpdateCommand command) {
    return command == update::UpdateCommand::UpdateAuctionDatabase ||
           command == update::UpdateCommand::UpdateAuctions ||
           command == update::UpdateCommand::UpdateComplete ||
           command == update::UpdateCommand::UpdateDatabaseAndAccount;
}

int Update(const Options& options, const QString& exeDir, QTextStream& out, QTextStream& err) {
    std::optional<update::UpdateCommand> command;
    QStringList given;
    if (options.list) {
        given = options.words.mid(1);
        if (given.isEmpty()) {
            err << "update --list needs one or more protocol names (quote names with blanks).\n";
            return kExitUsage;
        }
    } else {
        if (options.words.size() != 2) {
            err << "update needs one command word, or --list PROTOCOL ...\n";
            return kExitUsage;
        }
        for (const UpdateWord& word : kUpdateWords) {
            if (options.words.at(1) == QLatin1String(word.word)) {
                command = word.command;
            }
        }
        if (!command) {
            err << "Unknown update command " << options.words.at(1) << ".\n";
            return kExitUsage;
        }
    }
    if (!OpenSession(options, exeDir, false, err)) {
        return kExitFailure;
    }
    // Held until the update and its reconciliation are over, before anything
    // of the update is written.
    update::UpdateLock lock;
    if (!lock.TryLock()) {
        if (!options.wait || !lock.Busy()) {
            err << lock.FailureMessage() << '\n';
            return kExitFailure;
        }
        err << lock.FailureMessage() << " Waiting for it to end.\n";
        err.flush();
        if (!lock.Lock([] { return !core::CurrentUi().CancelRequested(); })) {
            err << (lock.Busy() ? QStringLiteral("Stopped waiting; nothing was updated.")
                                : lock.FailureMessage())
                << '\n';
            return kExitFailure;
        }
    }
    core::Database db = core::OpenStore();
    if (!ChooseDefaultUser(db, err)) {
        return kExitFailure;
    }
    if (!update::InstallRuleStore(update::Rules(), db)) {
        return kExitFailure;
    }
    for (const QString& name : given) {
        if (update::Rules().LookupKey(name, QStringLiteral("Url"), update::kSiteStore) ==
            update::RuleError()) {
            err << "The rules hold no protocol [" << name << "] with a Url; nothing was updated.\n";
            return kExitNotFound;
        }
    }
    if (command == update::UpdateCommand::UpdateDatabaseAndAccount) {
        const core::Answer answer = core::CurrentUi().Ask(
            QStringLiteral("WARNING: this update will take 3 to 45 minutes because it will "
                           "re-retrieve your last 30 days of auction and bid activity, "
                           "regardless of when you last updated. This procedure is only "
                           "necessary if you've lost recent data.\r\n\r\nDo you wish to "
                           "proceed?"),
            QStringLiteral("Complete Update"), core::Buttons::YesNo, core::Answer::Yes);
        if (answer != core::Answer::Yes) {
            err << "Nothing was updated.\n";
            return kExitFailure;
        }
    }
    if (!update::IsConnected(db, QStringLiteral("update your auction database"), true)) {
        return kExitFailure;
    }
    if (command == update::UpdateCommand::UpdateDatabaseAndAccount) {
        // A LastUpdate of Null asks the site for the full 30 days.
        db.Prepare(QStringLiteral("UPDATE UserSites SET LastUpdate = NULL WHERE UserName = ? AND "
                                  "AuctionSiteFlag = 0"))
            .Bind(1, core::CurrentSession().CurrentUser)
            .Run();
    }
    const QStringList runList = command ? update::RunList(*command) : given;
    QString error;
    if (!update::WriteRunList(runList, &error)) {
        err << error << '\n';
        return kExitFailure;
    }

    update::UiUpdateView view;
    update::UpdateHooks hooks = update::DefaultUpdateHooks(db);
    hooks.connections = options.connections.value_or(0);
    update::UpdateRun run(db, view, std::move(hooks));
    const update::UpdateRun::Result result = run.Activate();
    core::CurrentUi().Status(QString());
    if (command && Reconciles(*command)) {
        update::ReconcileCreatorRows(db);
    }
    switch (result) {
        case update::UpdateRun::Result::Complete:
            if (!run.FailedProtocols().isEmpty()) {
                err << "The update ran to its end, but these protocols could not be processed: "
                    << run.FailedProtocols().join(QStringLiteral(", ")) << ".\n";
                return kExitProtocolFailed;
            }
            out << "Update complete.\n";
            return kExitOk;
        case update::UpdateRun::Result::StoreFailed:
            err << "The update was stopped: the database could not be written.\n";
            return kExitFailure;
        case update::UpdateRun::Result::Busy:
            err << "An update is already running.\n";
            return kExitFailure;
        case update::UpdateRun::Result::RulesFailed:
            err << "The update did not start: the rule version check failed.\n";
            return kExitFailure;
        case update::UpdateRun::Result::Aborted:
            err << "The update was aborted: a page could not be fetched.\n";
            return kExitFailure;
        case update::UpdateRun::Result::Cancelled:
            err << "The update was cancelled; what was retrieved before it is kept.\n";
            return kExitFailure;
    }
    return kExitFailure;
}

// packing-list ITEM and remittance ITEM.
int Packing(const Options& options, const QString& exeDir, tasks::Side side, QTextStream& out,
            QTextStream& err) {
    const bool sales = tasks::IsSalesSide(side);
    if (options.words.size() != 2 || (!sales && !options.bidder.isEmpty())) {
        err << (sales ? "packing-list needs ITEM [--bidder NAME] [--pdf FILE] [--rtf FILE].\n"
                      : "remittance needs ITEM [--pdf FILE] [--rtf FILE].\n");
        return kExitUsage;
    }
    if (!OpenSession(options, exeDir, false, err)) {
        return kExitFailure;
    }
    return RunPacking({side, options.words.at(1), options.bidder, options.pdfFile, options.rtfFile},
                      out, err);
}

// The Task Manager's item list of one filter, and for each item the state of
// every task of its side.
int Tasks(const Options& options, const QString& exeDir, QTextStream& out, QTextStream& err) {
    if (options.words.size() != 1) {
        err << "tasks takes no more words; name a filter with --filter NAME.\n";
        return kExitUsage;
    }
    if (!OpenSession(options, exeDir, false, err)) {
        return kExitFailure;
    }
    core::Database db = core::OpenStoreForReading();
    if (!ChooseDefaultUser(db, err)) {
        return kExitFailure;
    }
    const core::Session& session = core::CurrentSession();
    tasks::ListScope scope;
    scope.side = options.bids ? tasks::Side::Bids : tasks::Side::Sales;
    scope.userName = session.CurrentUser;
    scope.siteCorrection = session.SiteCorrection;

    const QStringList filters = tasks::TaskFilters(db, scope.userName, scope.side);
    QString filter = filters.value(0);
    if (!options.filter.isEmpty()) {
        const auto found = std::find_if(filters.cbegin(), filters.cend(), [&](const QString& f) {
            return f.compare(options.filter.trimmed(), Qt::CaseInsensitive) == 0;
        });
        if (found == filters.cend()) {
            err << "There is no task filter \"" << options.filter << "\" on the "
                << (options.bids ? "bids" : "sales")
                << " side. Its filters are: " << filters.join(QStringLiteral("; ")) << ".\n";
            return kExitUsage;
        }
        filter = *found;
    }
    if (filter.isEmpty()) {
        err << "The database holds no task filter for the " << (options.bids ? "bids" : "sales")
            << " side.\n";
        return kExitFailure;
    }
    const tasks::ItemList list = tasks::FillItemList(db, scope, filter);
    out << filter << ' ' << list.recordCount << '\n';
    if (list.Empty()) {
        out << tasks::NoPendingTasksRow() << '\n';
        return kExitOk;
    }
    QHash<QString, QString> descriptions;
    for (const tasks::TaskNode& node : tasks::TaskTree(db, scope.side)) {
        descriptions.insert(node.key, node.description);
    }
    for (const tasks::ItemListRow& row : list.rows) {
        out << row.text << '\n';
        const tasks::SelectedItem item =
            tasks::SelectionFromRow(scope.side, row.text, row.itemNumber);
        for (const tasks::TaskPicture& task :
             tasks::RefreshTaskIcons(db, scope.userName, 0, item)) {
            out << QStringLiteral("    %1 %2 %3")
                       .arg(task.key, -5)
                       .arg(task.picture == tasks::kDonePicture ? QStringLiteral("done")
                                                                : QStringLiteral("pending"),
                            -7)
                       .arg(descriptions.value(task.key))
                << '\n';
        }
    }
    return kExitOk;
}

}  // namespace

bool CliMakesDocuments(const QStringList& args) {
    return args.contains(QStringLiteral("packing-list")) ||
           args.contains(QStringLiteral("remittance"));
}

static QString UpdateWordsHelp() {
    QString text;
    for (const UpdateWord& word : kUpdateWords) {
        text += QStringLiteral("      %1 %2\n")
                    .arg(QLatin1String(word.word), -9)
                    .arg(QLatin1String(word.what));
    }
    return text;
}

QString CliUsage() {
    return QStringLiteral(
               "Usage: lotwright-cli [--root DIR] COMMAND ...\n"
               "       lotwright-cli --help | --version\n"
               "Commands:\n"
               "  init --user NAME --site-id ID [--email ADDR] [--password-stdin]\n"
               "        make the folders and the database and add the default user; the site\n"
               "        password is asked for on the terminal (not shown as it is typed), or\n"
               "        read as one line of standard input with --password-stdin\n"
               "        (--password PW also works, but other users can see it in the list\n"
               "        of processes)\n"
               "  rules get SECTION KEY [--store N]     the value of a key in the rules\n"
               "  rules name SECTION VALUE [--store N]  the key that holds a value\n"
               "  rules install SITE.PRO INFO.PRO       replace both rule files\n"
               "  rules restore                         put back the rules the last install\n"
               "        or rule update replaced\n"
               "  query SQL                             read-only SQL; rows as tab-separated "
               "lines\n"
               "  categories search WORDS... [--all]   categories with any of the words (all of\n"
               "        them with --all) in their top-level or their own name, or with the\n"
               "        number given; lines of number, tab, full name\n"
               "  categories browse [TOP-LEVEL NAME]   the top-level names, or the categories\n"
               "        under one\n"
               "  scan --rules FILE --protocol NAME --page FILE [--pages DIR]\n"
               "        one protocol of a rule file over a saved page; records as JSON lines\n"
               "        (ancillary pages from DIR by address, else passed over)\n"
               "  update COMMAND                        run an update; COMMAND is one of\n"
               "%1"
               "  update --list PROTOCOL ...            run the named protocols, in order\n"
               "  update ... --wait                     wait for an update that is running to "
               "end\n"
               "  update ... --connections N            keep N connections to the site (1 to 8;\n"
               "        default: the setting Connections of [Update], else 6)\n"
               "  packing-list ITEM [--bidder NAME] [--pdf FILE] [--rtf FILE]\n"
               "        the packing list of a sale (NAME: the winner of a multi-winner sale),\n"
               "        as text; --pdf prints it to FILE and marks it printed, --rtf saves it\n"
               "  remittance ITEM [--pdf FILE] [--rtf FILE]\n"
               "        the remittance advice of a won bid, the same ways\n"
               "  listing list [--type KIND]            the creator's documents: ID, type,\n"
               "        name and date; KIND is Draft, Template or \"Old Auction\"\n"
               "  listing show ID                       what a document holds, and which of\n"
               "        its required fields are missing\n"
               "  listing html ID [--style NAME] [--out FILE]\n"
               "        the listing HTML of a document, in its own style or NAME, on\n"
               "        standard output or into FILE\n"
               "  tasks [--bids] [--filter NAME]        the Task Manager's items of a filter (the\n"
               "        side's first without --filter), each with its tasks done or pending\n"
               "  listing post ID [--sell-page | --review]\n"
               "        post a document to the site and print the new item number; the\n"
               "        document stays as it is whatever happens. When the site does not\n"
               "        take the post, the sell page is written for the browser instead and\n"
               "        its path told. --sell-page writes the sell page filled with the\n"
               "        document, --review the site's review page, and prints its path\n"
               "Options:\n"
               "  --root DIR      the folder that holds Configs/, Data/ and Templates/, and\n"
               "                  the settings; without it a portable copy uses its own\n"
               "                  folder, an installed one the user's data, configuration\n"
               "                  and cache folders\n"
               "  -h, --help      this text\n"
               "  -v, --version   the program's version\n"
               "Ctrl-C stops an update at the next record and keeps what was written.\n"
               "Exit codes: 0 done (also a category search that finds nothing), 1 failed,\n"
               "2 wrong words on the command line, 3 a rule look-up or a top-level category\n"
               "name found nothing, 4 an update ran but a protocol could not be processed.\n")
        .arg(UpdateWordsHelp());
}

QString CliVersion() {
    return QStringLiteral("lotwright-cli " LW_VERSION "\n");
}

int RunCli(const QStringList& args, const QString& exeDir, QTextStream& out, QTextStream& err) {
    Options options;
    const QString error = Parse(args, options);
    if (!error.isEmpty()) {
        err << error << '\n' << CliUsage();
        return kExitUsage;
    }
    const QString command = options.words.value(0);
    if (command == QLatin1String("help")) {
        out << CliUsage();
        return kExitOk;
    }
    if (options.version) {
        out << CliVersion();
        return kExitOk;
    }
    if (command.isEmpty()) {
        err << CliUsage();
        return kExitUsage;
    }
    try {
        if (command == QLatin1String("init")) {
            return Init(options, exeDir, out, err);
        }
        if (command == QLatin1String("rules")) {
            return Rules(options, exeDir, out, err);
        }
        if (command == QLatin1String("query")) {
            return Query(options, exeDir, out, err);
        }
        if (command == QLatin1String("categories")) {
            return Categories(options, exeDir, out, err);
        }
        if (command == QLatin1String("scan")) {
            return Scan(options, out, err);
        }
        if (command == QLatin1String("update")) {
            return Update(options, exeDir, out, err);
        }
        if (command == QLatin1String("packing-list")) {
            return Packing(options, exeDir, tasks::Side::Sales, out, err);
        }
        if (command == QLatin1String("remittance")) {
            return Packing(options, exeDir, tasks::Side::Bids, out, err);
        }
        if (command == QLatin1String("listing")) {
            return Listing(options, exeDir, out, err);
        }
        if (command == QLatin1String("tasks")) {
            return Tasks(options, exeDir, out, err);
        }
    } catch (const core::StoreError& failure) {
        err << failure.Message() << '\n';
        return kExitFailure;
    } catch (const std::exception& failure) {
        err << QString::fromUtf8(failure.what()) << '\n';
        return kExitFailure;
    }
    err << "Unknown command " << command << ".\n" << CliUsage();
    return kExitUsage;
}

}  // namespace lw::app
