// SPDX-License-Identifier: GPL-3.0-or-later
// A running lotwright-site for end-to-end suites: started on a free loopback
// port, asked over HTTP (pages, posts, admin routes), optionally with its
// request log written to a file so that a test can see which addresses a run
// fetched, and stopped when the object goes (or earlier, to play a site that
// is down). It never reaches beyond 127.0.0.1.
#pragma once

#include <httplib.h>

#include <QFile>
#include <QProcess>
#include <QString>
#include <QStringList>
#include <cctype>
#include <memory>
#include <string>

#include "tests/support/test_support.h"

namespace lw::test {

class SiteProcess {
public:
    // args are lotwright-site's options less --port; with a logFile the
    // request log goes there, else the site runs --quiet.
    explicit SiteProcess(QStringList args, const QString& logFile = QString()) {
        const QString program = BinDir() + QStringLiteral("/lotwright-site");
        if (!QFile::exists(program)) {
            m_error = "lotwright-site was not built at " + program.toStdString();
            return;
        }
        args << QStringLiteral("--port") << QStringLiteral("0");
        if (logFile.isEmpty()) {
            args << QStringLiteral("--quiet");
        } else {
            m_process.setStandardErrorFile(logFile);
        }
        m_logFile = logFile;
        m_process.setProgram(program);
        m_process.setArguments(args);
        m_process.start();
        if (!m_process.waitForStarted(10000)) {
            m_error = "lotwright-site did not start";
            return;
        }
        QByteArray first;
        while (!first.contains('\n')) {
            if (!m_process.waitForReadyRead(30000)) {
                m_error = "lotwright-site named no address";
                return;
            }
            first += m_process.readAllStandardOutput();
        }
        const std::string line = first.left(first.indexOf('\n')).toStdString();
        const std::string prefix = "listening on http://127.0.0.1:";
        if (line.rfind(prefix, 0) != 0) {
            m_error = "unexpected first line: " + line;
            return;
        }
        m_port = std::stoi(line.substr(prefix.size()));
        m_client = std::make_unique<httplib::Client>("127.0.0.1", m_port);
        m_client->set_connection_timeout(10);
        m_client->set_read_timeout(60);
    }

    ~SiteProcess() { Stop(); }

    SiteProcess(const SiteProcess&) = delete;
    SiteProcess& operator=(const SiteProcess&) = delete;

    // Ends the site as a stopped server would: nothing listens on its port.
    void Stop() {
        m_client.reset();
        if (m_process.state() != QProcess::NotRunning) {
            m_process.terminate();
            if (!m_process.waitForFinished(10000)) {
                m_process.kill();
                m_process.waitForFinished(5000);
            }
        }
    }

    bool Ok() const { return m_error.empty(); }
    const std::string& Error() const { return m_error; }
    int Port() const { return m_port; }
    QString Base() const { return QStringLiteral("http://127.0.0.1:%1").arg(m_port); }

    struct Answer {
        int status = 0;
        std::string body;
    };

    Answer Get(const std::string& target) {
        const auto result = m_client->Get(target);
        return result ? Answer{result->status, result->body} : Answer{};
    }
    Answer Post(const std::string& target, const std::string& form) {
        const auto result = m_client->Post(target, form, "application/x-www-form-urlencoded");
        return result ? Answer{result->status, result->body} : Answer{};
    }
    // An admin route with its parameters as a posted form, sent as plain
    // text: the site's admin routes read such a body as a form, and the HTTP
    // library caps only declared forms (at 8 KB), so a value of a megabyte
    // gets through.
    std::string Admin(const std::string& action, const std::string& form = {}) {
        const auto result = m_client->Post("/admin/" + action, form, "text/plain");
        return result ? result->body : std::string();
    }

    // The request log so far, one line per request.
    QStringList LogLines() const {
        QFile file(m_logFile);
        if (!file.open(QIODevice::ReadOnly)) {
            return {};
        }
        return QString::fromUtf8(file.readAll()).split(u'\n', Qt::SkipEmptyParts);
    }

    static std::string Encode(const std::string& text) {
        static constexpr char kHex[] = "0123456789ABCDEF";
        std::string out;
        for (const char c : text) {
            const auto u = static_cast<unsigned char>(c);
            if (std::isalnum(u) || c == '-' || c == '_' || c == '.') {
                out += c;
            } else {
                out += '%';
                out += kHex[u >> 4];
                out += kHex[u & 15];
            }
        }
        return out;
    }

private:
    QProcess m_process;
    std::unique_ptr<httplib::Client> m_client;
    std::string m_error;
    QString m_logFile;
    int m_port = 0;
};

}  // namespace lw::test
