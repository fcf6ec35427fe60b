// SPDX-License-Identifier: GPL-3.0-or-later
// The usage report: switched off, not yet due, due with the file's exact
// lines and the date stored, a sender that fails; the scramble of the e-mail
// line; and the FTP upload against a small FTP server on loopback.
#include <arpa/inet.h>
#include <gtest/gtest.h>
#include <netinet/in.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <QFile>
#include <algorithm>
#include <atomic>
#include <mutex>
#include <optional>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

#include "core/session.h"
#include "core/settings.h"
#include "core/store.h"
#include "tests/support/loopback_server.h"
#include "tests/support/store_test.h"
#include "tests/support/test_support.h"
#include "update/rules.h"
#include "update/usage_report.h"

using lw::core::Database;
using lw::test::ReadAll;
using namespace lw::update;

static void PrintTo(const QString& text, std::ostream* out) {
    *out << '"' << text.toStdString() << '"';
}

namespace {

// ------------------------------------------------------------ FTP server

int ListenOnLoopback(int* port) {
    const int fd = ::socket(AF_INET, SOCK_STREAM, 0);
    const int yes = 1;
    ::setsockopt(fd, SOL_SOCKET, SO_REUSEADDR, &yes, sizeof yes);
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    socklen_t length = sizeof address;
    if (::bind(fd, reinterpret_cast<sockaddr*>(&address), sizeof address) != 0 ||
        ::listen(fd, 4) != 0 ||
        ::getsockname(fd, reinterpret_cast<sockaddr*>(&address), &length) != 0) {
        ::close(fd);
        throw std::runtime_error("cannot listen on loopback");
    }
    *port = ntohs(address.sin_port);
    return fd;
}

// Waits up to timeoutMs for a connection; -1 when none came.
int AcceptWithin(int listener, int timeoutMs) {
    pollfd wait{listener, POLLIN, 0};
    if (::poll(&wait, 1, timeoutMs) <= 0) {
        return -1;
    }
    return ::accept(listener, nullptr, nullptr);
}

// Just enough of an FTP server for one upload in extended passive mode:
// sign-in, working folder, EPSV, TYPE, STOR, QUIT. It records the commands it
// was given and the bytes stored.
class FakeFtpServer {
public:
    explicit FakeFtpServer(std::string password) : m_password(std::move(password)) {
        m_listener = ListenOnLoopback(&m_port);
        m_thread = std::thread([this] { Serve(); });
    }
    ~FakeFtpServer() {
        m_stop = true;
        m_thread.join();
        ::close(m_listener);
    }

    int Port() const { return m_port; }
    std::vector<std::string> Commands() {
        const std::lock_guard lock(m_mutex);
        return m_commands;
    }
    std::string Stored() {
        const std::lock_guard lock(m_mutex);
        return m_stored;
    }

private:
    void Serve() {
        while (!m_stop) {
            const int control = AcceptWithin(m_listener, 50);
            if (control >= 0) {
                Session(control);
                ::close(control);
            }
        }
    }

    static void Send(int fd, const std::string& line) {
        const std::string text = line + "\r\n";
        [[maybe_unused]] const ssize_t sent = ::send(fd, text.data(), text.size(), MSG_NOSIGNAL);
    }

    // One line without its CR LF; nullopt when the client went away.
    static std::optional<std::string> ReadLine(int fd, std::string& buffer) {
        while (true) {
            const size_t end = buffer.find("\r\n");
            if (end != std::string::npos) {
                std::string line = buffer.substr(0, end);
                buffer.erase(0, end + 2);
                return line;
            }
            pollfd wait{fd, POLLIN, 0};
            if (::poll(&wait, 1, 5000) <= 0) {
                return std::nullopt;
            }
            char chunk[512];
            const ssize_t got = ::recv(fd, chunk, sizeof chunk, 0);
            if (got <= 0) {
                return std::nullopt;
            }
            buffer.append(chunk, static_cast<size_t>(got));
        }
    }

    void Session(int control) {
        Send(control, "220 ready");
        std::string buffer;
        int dataListener = -1;
        int dataPort = 0;
        while (const std::optional<std::string> line = ReadLine(control, buffer)) {
            {
                const std::lock_guard lock(m_mutex);
                m_commands.push_back(*line);
            }
            const std::string verb = line->substr(0, line->find(' '));
            const std::string argument =
                line->find(' ') == std::string::npos ? "" : line->substr(line->find(' ') + 1);
            if (verb == "USER") {
                Send(control, "331 password please");
            } else if (verb == "PASS") {
                Send(control, argument == m_password ? "230 logged in" : "530 login incorrect");
            } else if (verb == "PWD") {
                Send(control, "257 \"/\" is the current folder");
            } else if (verb == "CWD") {
                Send(control, "250 folder changed");
            } else if (verb == "TYPE") {
                Send(control, "200 type set");
            } else if (verb == "EPSV") {
                if (dataListener >= 0) {
                    ::close(dataListener);
                }
                dataListener = ListenOnLoopback(&dataPort);
                Send(control,
                     "229 Entering Extended Passive Mode (|||" + std::to_string(dataPort) + "|)");
            } else if (verb == "STOR" && dataListener >= 0) {
                Send(control, "150 send the file");
                const int data = AcceptWithin(dataListener, 5000);
                std::string stored;
                if (data >= 0) {
                    char chunk[512];
                    ssize_t got = 0;
                    while ((got = ::recv(data, chunk, sizeof chunk, 0)) > 0) {
                        stored.append(chunk, static_cast<size_t>(got));
                    }
                    ::close(data);
                }
                {
                    const std::lock_guard lock(m_mutex);
                    m_stored = stored;
                }
                Send(control, "226 stored");
            } else if (verb == "QUIT") {
                Send(control, "221 bye");
                break;
            } else {
                Send(control, "502 not here");
            }
        }
        if (dataListener >= 0) {
            ::close(dataListener);
        }
    }

    std::string m_password;
    int m_listener = -1;
    int m_port = 0;
    std::atomic<bool> m_stop{false};
    std::thread m_thread;
    std::mutex m_mutex;
    std::vector<std::string> m_commands;
    std::string m_stored;
};

// ------------------------------------------------------------- fixture

const QString kUser = QStringLiteral("O'Hara");
const QDate kToday(2024, 3, 15);

class UsageReportTest : public lw::test::StoreTest {
protected:
    void SetUp() override {
        StoreTest::SetUp();
        Rules().ClearAll();
        lw::core::AddUser(*m_db, {kUser, QStringLiteral("ohara"), QStringLiteral("pw"),
                                  QStringLiteral("ab@c.d")});
        lw::core::AddUser(*m_db,
                          {QStringLiteral("Ben"), QStringLiteral("ben"), QStringLiteral("pw"),
                           QStringLiteral("ben@c.d")},
                          false);
        lw::core::SetCurrentUser(kUser);
        m_report = m_root.File(QStringLiteral("Configs/trkrpt.dat"));
        // The report cases below are of a user who switched it on.
        SwitchReport(QStringLiteral("ON"));
    }
    void TearDown() override {
        Rules().ClearAll();
        StoreTest::TearDown();
    }

    Database& Db() { return *m_db; }

    // The switch as the preferences window writes it; a null text: never set.
    static void SwitchReport(const QString& value) {
        const QString app = QStringLiteral("Tolvane");
        const QString section = QStringLiteral("Options");
        if (value.isNull()) {
            lw::core::DeleteSetting(app, section, QStringLiteral("Track"));
        } else {
            lw::core::SaveSetting(app, section, QStringLiteral("Track"), value);
        }
    }

    void SetLastReport(const QVariant& stamp) {
        Db().Prepare(QStringLiteral("UPDATE Tracking SET TrackingDate = ?")).Bind(1, stamp).Run();
    }
    QVariant LastReport() {
        lw::core::Statement query =
            Db().Prepare(QStringLiteral("SELECT TrackingDate FROM Tracking"));
        EXPECT_TRUE(query.Step());
        return query.Value(0);
    }
    void AddSale(const QString& user, const QString& number, const QString& category) {
        Db()
            .Prepare(QStringLiteral(
                "INSERT INTO Auctions (UserName, ItemNumber, ItemCategory) VALUES (?, ?, ?)"))
            .BindAll(user, number, category)
            .Run();
    }
    void AddBid(const QString& user, const QString& number) {
        Db().Prepare(QStringLiteral("INSERT INTO Bids (UserName, ItemNumber) VALUES (?, ?)"))
            .BindAll(user, number)
            .Run();
    }

    // A sender that keeps what it was given.
    ReportSender Recording(bool result) {
        return [this, result](const QString& file) {
            ++m_sends;
            m_sentPath = file;
            m_sent = ReadAll(file);
            return result;
        };
    }

    QString m_report;
    int m_sends = 0;
    QString m_sentPath;
    QByteArray m_sent;
};

}  // namespace

// ---------------------------------------------------------------- scramble

TEST(UsageReportScramble, AddsFiveAndMasksTheCodesOutsideLettersAndDigits) {
    EXPECT_EQ(ScrambleForReport(QStringLiteral("ab@c.d")), QStringLiteral("fgEh3i"));
    // Results 0 to 47 and 58 to 63 become "@"; 48 to 57 stay digits.
    EXPECT_EQ(ScrambleForReport(QStringLiteral(" *+45")), QStringLiteral("@@09@"));
    // 91 to 96 and 123 to 127 become "@"; 90 and 122 stay letters.
    EXPECT_EQ(ScrambleForReport(QStringLiteral("UVuvz")), QStringLiteral("Z@z@@"));
    // Above 127 nothing is masked.
    EXPECT_EQ(ScrambleForReport(QStringLiteral("\u00e9")), QStringLiteral("\u00ee"));
    EXPECT_EQ(ScrambleForReport(QString()), QString());
}

// ------------------------------------------------------------------ report

TEST_F(UsageReportTest, OffUntilSwitchedOnAndOffAgainTouchesNothing) {
    // A new store whose user never chose, then a switch written by an older
    // copy in any other form, then the user's own "OFF": none sends, none
    // writes a file or a date. Only "ON" sends.
    const struct {
        QString setting;
        bool sends;
    } cases[] = {
        {QString(), false},
        {QStringLiteral(""), false},
        {QStringLiteral("on "), false},
        {QStringLiteral("OFF"), false},
        {QStringLiteral("ON"), true},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.setting.isNull() ? std::string("never set") : c.setting.toStdString());
        SwitchReport(c.setting);
        SetLastReport(QVariant());
        m_sends = 0;
        m_root.Write(QStringLiteral("Configs/trkrpt.dat"), "earlier report");
        EXPECT_EQ(PrepareUsageReport(Db(), Recording(true), kToday), c.sends);
        EXPECT_EQ(m_sends, c.sends ? 1 : 0);
        if (!c.sends) {
            EXPECT_EQ(ReadAll(m_report), QByteArray("earlier report"));
            EXPECT_TRUE(LastReport().isNull());
        }
    }
}

// Ten days after the last report, another is due; before that, none is sent,
// any earlier file goes and the date stays. A date that cannot be read counts
// as no report yet.
TEST_F(UsageReportTest, DueTenDaysAfterTheLastReport) {
    const struct {
        QString last;
        QDate today;
        QString after;  // the stored date afterwards; due when it changed
    } cases[] = {
        {QStringLiteral("2024-03-06 00:00:00"), kToday, QStringLiteral("2024-03-06 00:00:00")},
        {QStringLiteral("2024-03-06 00:00:00"), kToday.addDays(1),
         QStringLiteral("2024-03-16 00:00:00")},
        {QStringLiteral("someday"), kToday, QStringLiteral("2024-03-15 00:00:00")},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.last.toStdString() + " to " + c.today.toString().toStdString());
        const bool due = c.after != c.last;
        m_root.Write(QStringLiteral("Configs/trkrpt.dat"), "earlier report");
        SetLastReport(c.last);
        m_sends = 0;
        EXPECT_EQ(PrepareUsageReport(Db(), Recording(true), c.today), due);
        EXPECT_EQ(m_sends, due ? 1 : 0);
        EXPECT_EQ(QFile::exists(m_report), due);
        EXPECT_EQ(LastReport().toString(), c.after);
    }
}

TEST_F(UsageReportTest, ADueReportHoldsTheCountersAndStoresToday) {
    Db().Exec(QStringLiteral(
        "UPDATE Tracking SET AuctionsPosted = 4, Updates = 17, SendEmail = 1, RubyLane = 0, "
        "Paypal = 1, Billpoint = 0, RubyLaneClick = 2"));
    AddSale(kUser, QStringLiteral("1"), QStringLiteral("Books"));
    AddSale(kUser, QStringLiteral("2"), QStringLiteral("Antiques"));
    AddSale(kUser, QStringLiteral("3"), QStringLiteral("Antiques"));
    AddSale(QStringLiteral("Ben"), QStringLiteral("4"), QStringLiteral("Toys"));
    AddBid(kUser, QStringLiteral("5"));
    AddBid(kUser, QStringLiteral("6"));
    AddBid(QStringLiteral("Ben"), QStringLiteral("7"));

    EXPECT_TRUE(PrepareUsageReport(Db(), Recording(true), kToday));
    EXPECT_EQ(m_sends, 1);
    EXPECT_EQ(m_sentPath, m_report);
    EXPECT_EQ(m_sent, QByteArray("fgEh3i\r\n"
                                 "03/15/2024\r\n"
                                 "Auctions Posted=4\r\n"
                                 "Updates=17\r\n"
                                 "Email Sent=True\r\n"
                                 "Ruby Lane=False\r\n"
                                 "PayPal=True\r\n"
                                 "Billpoint=False\r\n"
                                 "Ruby Lane Clicks=2\r\n"
                                 "3\r\n"
                                 "2\r\n"
                                 "Antiques=2\r\n"
                                 "Books=1\r\n"));
    EXPECT_EQ(LastReport().toString(), QStringLiteral("2024-03-15 00:00:00"));
}

TEST_F(UsageReportTest, AFailingSenderIsIgnored) {
    EXPECT_FALSE(PrepareUsageReport(Db(), Recording(false), kToday));
    EXPECT_EQ(m_sends, 1);
    EXPECT_EQ(LastReport().toString(), QStringLiteral("2024-03-15 00:00:00"));

    SetLastReport(QVariant());
    const ReportSender throwing = [](const QString&) -> bool {
        throw std::runtime_error("the line dropped");
    };
    EXPECT_NO_THROW(EXPECT_FALSE(PrepareUsageReport(Db(), throwing, kToday)));
    EXPECT_TRUE(QFile::exists(m_report));
    EXPECT_TRUE(m_ui.Messages().isEmpty());
}

// --------------------------------------------------------------------- FTP

namespace {

void SetTrackingRules(int port, const char* password) {
    Rules().SetText(kInfoStore, QStringLiteral("[Tracking]\r\nhost=127.0.0.1:") +
                                    QString::number(port) +
                                    QStringLiteral("\r\nuserid=lotwright\r\npass=") +
                                    QString::fromLatin1(password) +
                                    QStringLiteral("\r\naccount=reports\r\n\r\n"));
}

}  // namespace

TEST_F(UsageReportTest, TheDefaultSenderUploadsTheFileByFtp) {
    FakeFtpServer server("s3cret");
    SetTrackingRules(server.Port(), "s3cret");
    EXPECT_TRUE(PrepareUsageReport(Db(), {}, kToday));
    EXPECT_EQ(QByteArray::fromStdString(server.Stored()), ReadAll(m_report));
    const std::vector<std::string> commands = server.Commands();
    for (const char* command :
         {"USER lotwright", "PASS s3cret", "CWD reports", "STOR trkrpt.dat"}) {
        EXPECT_NE(std::find(commands.begin(), commands.end(), command), commands.end()) << command;
    }
    const QStringList statuses = m_ui.Statuses();
    const qsizetype loggedIn = statuses.indexOf(QStringLiteral("Logged in to Tolvane"));
    const qsizetype sent = statuses.indexOf(QStringLiteral("Information sent"));
    const qsizetype gone = statuses.indexOf(QStringLiteral("Disconnected from Tolvane"));
    EXPECT_GE(loggedIn, 0);
    EXPECT_GT(sent, loggedIn);
    EXPECT_GT(gone, sent);
}

TEST_F(UsageReportTest, ARefusedOrUnreachableServerIsNoReport) {
    {
        FakeFtpServer server("right");
        SetTrackingRules(server.Port(), "wrong");
        EXPECT_FALSE(PrepareUsageReport(Db(), {}, kToday));
        EXPECT_TRUE(server.Stored().empty());
    }
    EXPECT_FALSE(m_ui.Statuses().contains(QStringLiteral("Logged in to Tolvane")));
    EXPECT_FALSE(m_ui.Statuses().contains(QStringLiteral("Information sent")));

    SetTrackingRules(lw::test::ClosedPort(), "x");
    EXPECT_FALSE(FtpReportSender()(m_report));
    Rules().ClearAll();
    EXPECT_FALSE(FtpReportSender()(m_report));
    EXPECT_TRUE(m_ui.Messages().isEmpty());
}
