// SPDX-License-Identifier: GPL-3.0-or-later
// Shared pieces of the test suites: a temporary AppRoot, a Ui that answers from
// a script and records what it was shown, and paths to the sources and to the
// built executables.
#pragma once

#include <initializer_list>
#include <utility>

#include <QDir>
#include <QString>
#include <QStringList>
#include <QTemporaryDir>
#include <QVariant>
#include <deque>
#include <memory>

#include "core/store.h"
#include "core/ui_port.h"

namespace lw::core {
class Database;
}

namespace lw::test {

inline QString SourceDir() {
    return QStringLiteral(LW_SOURCE_DIR);
}
inline QString BinDir() {
    return QStringLiteral(LW_BIN_DIR);
}

// Records every message, question, status and progress; questions take the
// next scripted answer, or their default when the script has run out.
class ScriptedUi : public core::Ui {
public:
    struct Shown {
        QString kind;  // "message", "ask", "prompt", "status"
        QString text;
        QString title;
    };

    void Message(const QString& text, const QString& title, core::Icon) override;
    core::Answer Ask(const QString& text, const QString& title, core::Buttons,
                     core::Answer defaultAnswer) override;
    std::optional<QString> Prompt(const QString& text, const QString& title,
                                  const QString& initial) override;
    void Status(const QString& text) override;
    void Progress(qint64 value, qint64 maximum) override;
    void PumpEvents() override;
    bool CancelRequested() override;

    void ScriptAnswer(core::Answer answer) { m_answers.push_back(answer); }
    void ScriptPrompt(std::optional<QString> text) { m_prompts.push_back(std::move(text)); }
    // Cancel is reported from the n-th PumpEvents call on (1-based); 0: never.
    void CancelAfterPumps(int n) { m_cancelAfter = n; }
    void RequestCancel() { m_cancel = true; }

    const std::vector<Shown>& History() const { return m_shown; }
    QStringList Messages() const;  // texts of message boxes, in order
    QStringList Titles() const;    // titles of message boxes, in order
    QStringList Statuses() const;
    qint64 LastProgress() const { return m_lastProgress; }
    int Pumps() const { return m_pumps; }

private:
    std::vector<Shown> m_shown;
    std::deque<core::Answer> m_answers;
    std::deque<std::optional<QString>> m_prompts;
    qint64 m_lastProgress = -1;
    int m_pumps = 0;
    int m_cancelAfter = 0;
    bool m_cancel = false;
};

// A fresh folder for one test, removed afterwards.
class TempRoot {
public:
    TempRoot();
    QString Path() const { return m_dir.path(); }
    QString File(const QString& relative) const { return m_dir.filePath(relative); }
    // Writes bytes to a file under the root, making folders as needed.
    QString Write(const QString& relative, const QByteArray& bytes) const;

private:
    QTemporaryDir m_dir;
};

QByteArray ReadAll(const QString& path);

// One row into a table: its columns and their values, a null QVariant for
// Null. The names are the suite's own, the values are bound.
void InsertRow(core::Database& db, const QString& table,
               std::initializer_list<std::pair<const char*, QVariant>> row);

// How a program run as a child ended and what it wrote.
struct ProgramRun {
    int code = -1;  // -1: it crashed or did not end within two minutes
    QString out;
    QString err;
};
// Runs program with args; input is all its standard input. env changes this
// process's environment for the child: "NAME=VALUE" sets a variable, a bare
// "NAME" removes it.
ProgramRun RunProgram(const QString& program, const QStringList& args, const QByteArray& input = {},
                      const QStringList& env = {});

// Puts the session on ui and makes the folders of a new program root in
// root, with the shipped files taken from the sources and, when asked, the
// settings kept under root. Returns what went wrong, empty when nothing did.
QString StartProgramRoot(TempRoot& root, ScriptedUi& ui, bool ownSettings = true);

// StartProgramRoot, then the root's new database with one user, whose ID on
// site 0 is siteId, made the session's current user. Throws
// std::runtime_error when the root cannot be made.
core::Database StartUserStore(TempRoot& root, ScriptedUi& ui, const QString& user,
                              const QString& siteId);

// A list page of the suites' fake sites: one table row per record, its item
// number in <td class=n> and its title in <td class=t>, between the marks
// "<!-- BEGIN -->" and "<!-- END -->".
QByteArray ListPage(std::initializer_list<std::pair<const char*, const char*>> rows);

}  // namespace lw::test
