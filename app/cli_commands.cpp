// Parsing and running the command line. Every failure ends in one clear line
// on standard error and a non-zero exit code; nothing is half-written.
#include "app/cli_commands.h"

#include <QFileInfo>
#include <optional>

#include "core/session.h"
#include "core/settings.h"
#include "core/store.h"
#include "update/rules.h"

namespace lw::app {

namespace {

struct Options {
    QString root;
    std::optional<int> store;
    QString user, siteId, password, email;
    QStringList words;  // the command and its positional arguments
};

// Pulls the named options out of args; returns an error text, or empty.
QString Parse(const QStringList& args, Options& options) {
    for (qsizetype i = 0; i < args.size(); ++i) {
        const QString& arg = args.at(i);
        auto value = [&](QString& target) -> QString {
            if (i + 1 >= args.size()) {
                return QStringLiteral("%1 needs a value.").arg(arg);
            }
            target = args.at(++i);
            return {};
        };
        QString error;
        if (arg == QLatin1String("--root")) {
            error = value(options.root);
        } else if (arg == QLatin1String("--user")) {
            error = value(options.user);
        } else if (arg == QLatin1String("--site-id")) {
            error = value(options.siteId);
        } else if (arg == QLatin1String("--password")) {
            error = value(options.password);
        } else if (arg == QLatin1String("--email")) {
            error = value(options.email);
        } else if (arg == QLatin1String("--store")) {
            QString text;
            error = value(text);
            bool ok = false;
            const int store = text.toInt(&ok);
            if (error.isEmpty() && (!ok || store < 0 || store > 2)) {
                error = QStringLiteral("--store takes 0, 1 or 2.");
            }
            options.store = store;
        } else if (arg == QLatin1String("--help") || arg == QLatin1String("-h")) {
            options.words.prepend(QStringLiteral("help"));
        } else if (arg.startsWith(QLatin1String("--")) && arg.size() > 2) {
            error = QStringLiteral("Unknown option %1.").arg(arg);
        } else {
            options.words << arg;
        }
        if (!error.isEmpty()) {
            return error;
        }
    }
    return {};
}

// Sets up the session on the chosen AppRoot; the database must already exist
// unless create is set.
bool OpenSession(const Options& options, const QString& exeDir, bool create, QTextStream& err) {
    core::Session& session = core::CurrentSession();
    session.ShippedDir = core::ResolveShippedDir(exeDir);
    const QString root = core::ResolveAppRoot(options.root, exeDir);
    if (!options.root.isEmpty()) {
        // A root given on the command line is self-contained: its settings
        // live in it too.
        core::SetSettingsFolder(root + QStringLiteral("/Configs/Settings"));
    }
    if (!create && !QFileInfo::exists(root + QStringLiteral("/Data/Lotwright.db"))) {
        err << "There is no Lotwright database under " << root
            << " (run \"lotwright-cli init\" first).\n";
        return false;
    }
    QString error;
    if (!core::SetupDirectories(root, &error)) {
        err << error << '\n';
        return false;
    }
    return true;
}

int Init(const Options& options, const QString& exeDir, QTextStream& out, QTextStream& err) {
    if (options.user.trimmed().isEmpty() || options.siteId.trimmed().isEmpty() ||
        options.password.isEmpty()) {
        err << "init needs --user NAME --site-id ID --password PW [--email ADDR].\n";
        return kExitUsage;
    }
    if (!options.email.isEmpty() &&
        (!options.email.contains(u'@') || !options.email.contains(u'.'))) {
        err << "The e-mail address " << options.email << " is not valid.\n";
        return kExitUsage;
    }
    if (!OpenSession(options, exeDir, true, err)) {
        return kExitFailure;
    }
    core::Database db = core::OpenStore();
    core::AddUser(db, {options.user, options.siteId, options.password, options.email});
    core::SetCurrentUser(core::StoreText(options.user.trimmed()));
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
        out << "Installed " << options.words.at(2) << " and " << options.words.at(3) << '\n';
        return kExitOk;
    }
    if (verb != QLatin1String("get") && verb != QLatin1String("name")) {
        err << "rules takes get, name or install.\n";
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
QString Cell(const core::Statement& row, int column) {
    if (row.IsNull(column)) {
        return {};
    }
    QString text = row.Value(column).toString();
    text.replace(u'\\', QStringLiteral("\\\\"))
        .replace(u'\t', QStringLiteral("\\t"))
        .replace(u'\n', QStringLiteral("\\n"))
        .replace(u'\r', QStringLiteral("\\r"));
    return text;
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
    core::Statement statement = db.PrepareSingle(options.words.at(1));
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

}  // namespace

QString CliUsage() {
    return QStringLiteral(
        "Usage: lotwright-cli [--root DIR] COMMAND ...\n"
        "  init --user NAME --site-id ID --password PW [--email ADDR]\n"
        "        make the folders and the database and add the default user\n"
        "  rules get SECTION KEY [--store N]     the value of a key in the rules\n"
        "  rules name SECTION VALUE [--store N]  the key that holds a value\n"
        "  rules install SITE.PRO INFO.PRO       replace both rule files\n"
        "  query SQL                             read-only SQL; rows as tab-separated lines\n"
        "--root DIR is the folder that holds Configs/, Data/ and Templates/.\n");
}

int RunCli(const QStringList& args, const QString& exeDir, QTextStream& out, QTextStream& err) {
    Options options;
    const QString error = Parse(args, options);
    if (!error.isEmpty()) {
        err << error << '\n' << CliUsage();
        return kExitUsage;
    }
    const QString command = options.words.value(0);
    if (command.isEmpty() || command == QLatin1String("help")) {
        (command.isEmpty() ? err : out) << CliUsage();
        return command.isEmpty() ? kExitUsage : kExitOk;
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
