// SPDX-License-Identifier: GPL-3.0-or-later
#include "tests/support/test_support.h"

#include <QFile>
#include <QFileInfo>
#include <QProcess>
#include <stdexcept>

#include "core/session.h"
#include "core/settings.h"
#include "core/store.h"

namespace lw::test {

namespace {

// Every suite keeps the site password in its own database, also when it runs
// straight from the build folder rather than under ctest: no test may reach
// the keyring of the person who runs it. The keyring suite turns it back on
// inside its own private bus.
struct KeyringOffInTests {
    KeyringOffInTests() { qputenv("LOTWRIGHT_KEYRING", "off"); }
};
const KeyringOffInTests kKeyringOffInTests;

}  // namespace

void ScriptedUi::Message(const QString& text, const QString& title, core::Icon) {
    m_shown.push_back({QStringLiteral("message"), text, title});
}

core::Answer ScriptedUi::Ask(const QString& text, const QString& title, core::Buttons,
                             core::Answer defaultAnswer) {
    m_shown.push_back({QStringLiteral("ask"), text, title});
    if (m_answers.empty()) {
        return defaultAnswer;
    }
    const core::Answer answer = m_answers.front();
    m_answers.pop_front();
    return answer;
}

std::optional<QString> ScriptedUi::Prompt(const QString& text, const QString& title,
                                          const QString& initial) {
    m_shown.push_back({QStringLiteral("prompt"), text, title});
    if (m_prompts.empty()) {
        return initial;
    }
    // Copy the text out rather than the optional: GCC 12 takes a copied
    // optional<QString> for a maybe-uninitialised read.
    const bool cancelled = !m_prompts.front().has_value();
    const QString reply = cancelled ? QString() : *m_prompts.front();
    m_prompts.pop_front();
    if (cancelled) {
        return std::nullopt;
    }
    return reply;
}

void ScriptedUi::Status(const QString& text) {
    m_shown.push_back({QStringLiteral("status"), text, QString()});
}

void ScriptedUi::Progress(qint64 value, qint64) {
    m_lastProgress = value;
}

void ScriptedUi::PumpEvents() {
    ++m_pumps;
    if (m_cancelAfter > 0 && m_pumps >= m_cancelAfter) {
        m_cancel = true;
    }
}

bool ScriptedUi::CancelRequested() {
    return m_cancel;
}

static QStringList Pick(const std::vector<ScriptedUi::Shown>& shown, const QString& kind,
                        bool titles) {
    QStringList out;
    for (const auto& s : shown) {
        if (s.kind == kind) {
            out << (titles ? s.title : s.text);
        }
    }
    return out;
}

QStringList ScriptedUi::Messages() const {
    return Pick(m_shown, QStringLiteral("message"), false);
}
QStringList ScriptedUi::Titles() const {
    return Pick(m_shown, QStringLiteral("message"), true);
}
QStringList ScriptedUi::Statuses() const {
    return Pick(m_shown, QStringLiteral("status"), false);
}

TempRoot::TempRoot() {
    if (!m_dir.isValid()) {
        throw std::runtime_error("cannot make a temporary folder");
    }
}

QString TempRoot::Write(const QString& relative, const QByteArray& bytes) const {
    const QString path = m_dir.filePath(relative);
    QDir().mkpath(QFileInfo(path).absolutePath());
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly | QIODevice::Truncate) ||
        file.write(bytes) != bytes.size()) {
        throw std::runtime_error("cannot write test file");
    }
    return path;
}

ProgramRun RunProgram(const QString& program, const QStringList& args, const QByteArray& input,
                      const QStringList& env) {
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    for (const QString& change : env) {
        if (change.contains(u'=')) {
            environment.insert(change.section(u'=', 0, 0), change.section(u'=', 1));
        } else {
            environment.remove(change);
        }
    }
    QProcess process;
    process.setProcessEnvironment(environment);
    process.start(program, args);
    process.write(input);
    process.closeWriteChannel();
    if (!process.waitForFinished(120000)) {
        process.kill();
        process.waitForFinished();
        return {};
    }
    return {process.exitStatus() == QProcess::NormalExit ? process.exitCode() : -1,
            QString::fromUtf8(process.readAllStandardOutput()),
            QString::fromUtf8(process.readAllStandardError())};
}

void InsertRow(core::Database& db, const QString& table,
               std::initializer_list<std::pair<const char*, QVariant>> row) {
    QStringList columns;
    QStringList marks;
    for (const auto& [column, value] : row) {
        columns << QLatin1Char('"') + QString::fromLatin1(column) + QLatin1Char('"');
        marks << QStringLiteral("?");
    }
    core::Statement insert =
        db.Prepare(QStringLiteral("INSERT INTO \"") + table + QStringLiteral("\" (") +
                   columns.join(u',') + QStringLiteral(") VALUES (") + marks.join(u',') + u')');
    int index = 1;
    for (const auto& [column, value] : row) {
        insert.Bind(index++, value);
    }
    insert.Run();
}

QByteArray ReadAll(const QString& path) {
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) {
        return {};
    }
    return file.readAll();
}

QString StartProgramRoot(TempRoot& root, ScriptedUi& ui, bool ownSettings) {
    core::ResetSession(&ui);
    QString error;
    if (!core::SetupDirectories(root.Path(), &error)) {
        return error.isEmpty() ? QStringLiteral("the folders could not be made") : error;
    }
    core::CurrentSession().ShippedDir = SourceDir();
    if (ownSettings) {
        core::SetSettingsFolder(root.File(QStringLiteral("settings")));
    }
    return QString();
}

core::Database StartUserStore(TempRoot& root, ScriptedUi& ui, const QString& user,
                              const QString& siteId) {
    const QString error = StartProgramRoot(root, ui);
    if (!error.isEmpty()) {
        throw std::runtime_error(error.toStdString());
    }
    core::Database db = core::OpenOrCreateStore(core::StorePath(), SourceDir());
    core::AddUser(db, {user, siteId, QStringLiteral("pw"), QString()});
    core::SetCurrentUser(user);
    return db;
}

QByteArray ListPage(std::initializer_list<std::pair<const char*, const char*>> rows) {
    QByteArray page = "<html><!-- BEGIN --><table>";
    for (const auto& [number, title] : rows) {
        page += QByteArray("<tr><td class=n>") + number + "</td><td class=t>" + title +
                "</td></tr>\r\n";
    }
    return page + "</table><!-- END --></html>";
}

}  // namespace lw::test
