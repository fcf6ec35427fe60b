// SPDX-License-Identifier: GPL-3.0-or-later
// The site password between the keyring and the UserSites row. QtKeychain's
// jobs are asynchronous; each is waited for on a local event loop with a time
// limit, so a keyring that hangs (a stuck bus, an unlock prompt nobody
// answers) costs one wait and never blocks the program.
#include "core/secrets.h"

#include <qt6keychain/keychain.h>

#include <QCoreApplication>
#include <QDir>
#include <QEventLoop>
#include <QThread>
#include <QTimer>
#include <algorithm>
#include <optional>

#include "core/app_identity.h"
#include "core/session.h"

namespace lw::core {

namespace {

// Long enough for the user to answer a keyring's unlock prompt; a keyring
// that has not answered by then is taken as none for the rest of the run.
constexpr int kKeyringWaitMs = 20000;

enum class Outcome { Done, NotFound, NoKeyring };

// What this run learned of the keyring. Process-wide, as QtKeychain's own
// state is: it runs one job at a time, so after a job that never finished no
// later one would start either.
struct KeyringState {
    bool silent = false;          // a job failed or ran out of time
    bool toldUnreadable = false;  // the user heard that the password could not be read
};

KeyringState& State() {
    static KeyringState state;
    return state;
}

QString Service() {
    return QString::fromLatin1(kApplicationId);
}

// A keyring can be asked from the program's main thread, with an event loop
// to wait on, unless it is turned off or already failed in this run.
bool CanAsk() {
    if (!KeyringWanted() || State().silent) {
        return false;
    }
    const QCoreApplication* app = QCoreApplication::instance();
    return app != nullptr && QThread::currentThread() == app->thread();
}

// One job, deleted when it has finished; one still running when the wait ran
// out deletes itself when (if ever) it finishes, as its answer would still
// reach it.
template <class JobType>
class KeyringJob {
public:
    explicit KeyringJob(const QString& entry) : m_job(new JobType(Service())) {
        m_job->setAutoDelete(false);
        m_job->setInsecureFallback(false);
        m_job->setKey(entry);
    }
    ~KeyringJob() {
        if (m_finished) {
            delete m_job;
        } else {
            m_job->setAutoDelete(true);
        }
    }
    KeyringJob(const KeyringJob&) = delete;
    KeyringJob& operator=(const KeyringJob&) = delete;

    JobType* operator->() const { return m_job; }

    Outcome Run() {
        QEventLoop loop;
        QObject::connect(m_job, &QKeychain::Job::finished, &loop, [this, &loop] {
            m_finished = true;
            loop.quit();
        });
        QTimer::singleShot(kKeyringWaitMs, &loop, &QEventLoop::quit);
        m_job->start();
        loop.exec(QEventLoop::ExcludeUserInputEvents);
        if (!m_finished) {
            State().silent = true;
            return Outcome::NoKeyring;
        }
        switch (m_job->error()) {
            case QKeychain::NoError:
                return Outcome::Done;
            case QKeychain::EntryNotFound:
                return Outcome::NotFound;
            default:
                // No service, a locked keyring whose unlock was refused, no
                // bus: the same for the rest of the run.
                State().silent = true;
                return Outcome::NoKeyring;
        }
    }

private:
    JobType* m_job;
    bool m_finished = false;
};

Outcome ReadEntry(const QString& entry, QString* password) {
    if (!CanAsk()) {
        return Outcome::NoKeyring;
    }
    KeyringJob<QKeychain::ReadPasswordJob> job(entry);
    const Outcome outcome = job.Run();
    if (outcome == Outcome::Done) {
        *password = job->textData();
    }
    return outcome;
}

Outcome WriteEntry(const QString& entry, const QString& password) {
    if (!CanAsk()) {
        return Outcome::NoKeyring;
    }
    KeyringJob<QKeychain::WritePasswordJob> job(entry);
    job->setTextData(password);
    return job.Run();
}

Outcome DeleteEntry(const QString& entry) {
    if (!CanAsk()) {
        return Outcome::NoKeyring;
    }
    KeyringJob<QKeychain::DeletePasswordJob> job(entry);
    return job.Run();
}

const QString& NoticeTitle() {
    static const QString title = QStringLiteral("Site Password");
    return title;
}

// Says once per database, remembered in Global, that the password is kept in
// it. A database that cannot record it (opened read-only) still says it. Who
// turned the keyring off knows where the password is: nothing is said then.
void TellKeptInStore(Database& db) {
    if (!KeyringWanted()) {
        return;
    }
    try {
        if (db.ScalarInt(
                QStringLiteral("SELECT COUNT(*) FROM Global WHERE PasswordInStoreTold <> 0")) > 0) {
            return;
        }
        if (db.ScalarInt(QStringLiteral("SELECT COUNT(*) FROM Global")) == 0) {
            db.Exec(QStringLiteral("INSERT INTO Global (PasswordInStoreTold) VALUES (1)"));
        } else {
            db.Exec(QStringLiteral("UPDATE Global SET PasswordInStoreTold = 1"));
        }
    } catch (const StoreError&) {
    }
    CurrentUi().Message(
        QStringLiteral("No keyring answered, so the site password is kept in the database %1, "
                       "which only you can read.")
            .arg(QDir::toNativeSeparators(db.Path())),
        NoticeTitle(), Icon::Information);
}

void TellUnreadable(const QString& userName) {
    if (!KeyringWanted() || State().toldUnreadable) {
        return;
    }
    State().toldUnreadable = true;
    CurrentUi().Message(
        QStringLiteral("No keyring answered, so the site password of %1 could not be read. "
                       "Unlock the keyring and start again, or enter the password again in the "
                       "preferences.")
            .arg(userName),
        NoticeTitle(), Icon::Warning);
}

struct SiteRow {
    QString userName;  // as the store spells it
    QString kept;      // the password in the row, empty when none
};

std::optional<SiteRow> ReadRow(Database& db, const QString& userName, int site) {
    Statement query = db.Prepare(
        QStringLiteral("SELECT UserName, UserPassword FROM UserSites WHERE UserName = ? AND "
                       "AuctionSiteFlag = ? ORDER BY rowid LIMIT 1"));
    query.BindAll(userName, site);
    if (!query.Step()) {
        return std::nullopt;
    }
    return SiteRow{query.Text(0), query.Text(1)};
}

void WriteColumn(Database& db, const QString& userName, int site, const QVariant& value) {
    Statement update = db.Prepare(QStringLiteral(
        "UPDATE UserSites SET UserPassword = ? WHERE UserName = ? AND AuctionSiteFlag = ?"));
    update.BindAll(value, userName, site).Run();
}

}  // namespace

QString SitePasswordEntry(const QString& userName, int site) {
    return QString::number(site) + u'/' + userName;
}

bool KeyringWanted() {
    return qEnvironmentVariable("LOTWRIGHT_KEYRING")
               .compare(QLatin1String("off"), Qt::CaseInsensitive) != 0;
}

void Scrub(QString& text) {
    if (text.isDetached()) {
        std::fill(text.begin(), text.end(), QChar());
    }
    text.clear();
}

QString SitePassword(Database& db, const QString& userName, int site) {
    std::optional<SiteRow> row = ReadRow(db, userName, site);
    if (!row) {
        return {};
    }
    const QString entry = SitePasswordEntry(row->userName, site);
    if (!row->kept.isEmpty()) {
        // Kept in the row: where no keyring answered when it was saved, or
        // from a build that knew no keyring. It moves when one answers; the
        // row is emptied only if it still holds what went into the keyring.
        if (WriteEntry(entry, row->kept) == Outcome::Done) {
            try {
                Statement clear = db.Prepare(
                    QStringLiteral("UPDATE UserSites SET UserPassword = NULL WHERE UserName = ? "
                                   "AND AuctionSiteFlag = ? AND UserPassword = ? COLLATE BINARY"));
                clear.BindAll(row->userName, site, row->kept).Run();
            } catch (const StoreError&) {
                // A database opened read-only keeps it; it moves next time.
            }
        } else {
            TellKeptInStore(db);
        }
        return row->kept;
    }
    QString password;
    if (ReadEntry(entry, &password) == Outcome::NoKeyring) {
        TellUnreadable(row->userName);
    }
    return password;
}

void SaveSitePassword(Database& db, const QString& userName, int site, const QString& password) {
    if (password.isEmpty()) {
        ForgetSitePassword(db, userName, site);
        return;
    }
    const std::optional<SiteRow> row = ReadRow(db, userName, site);
    if (!row) {
        throw StoreError(
            QStringLiteral("The user %1 has no account at site %2.").arg(userName).arg(site), 0);
    }
    if (WriteEntry(SitePasswordEntry(row->userName, site), password) == Outcome::Done) {
        WriteColumn(db, row->userName, site, QVariant());
        return;
    }
    WriteColumn(db, row->userName, site, password);
    TellKeptInStore(db);
}

void ForgetSitePassword(Database& db, const QString& userName, int site) {
    const std::optional<SiteRow> row = ReadRow(db, userName, site);
    const QString name = row ? row->userName : userName;
    DeleteEntry(SitePasswordEntry(name, site));
    if (row) {
        WriteColumn(db, name, site, QVariant());
    }
}

}  // namespace lw::core
