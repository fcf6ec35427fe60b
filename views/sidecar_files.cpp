// SPDX-License-Identifier: GPL-3.0-or-later
// Sidecar files into their sales rows. A file is deleted only after its row
// was written, so a failed write leaves it for the next time.
#include "views/sidecar_files.h"

#include <QFile>
#include <QStringList>
#include <vector>

#include "core/session.h"

namespace lw::views {

namespace {

// The first lines of a text file, line ends of either kind; missing lines
// read as empty.
QStringList Lines(const QString& path, int count) {
    QStringList lines;
    QFile file(path);
    if (file.open(QIODevice::ReadOnly)) {
        const QString text = QString::fromUtf8(file.readAll());
        lines = text.split(u'\n');
        for (QString& line : lines) {
            if (line.endsWith(u'\r')) {
                line.chop(1);
            }
        }
    }
    while (lines.size() < count) {
        lines << QString();
    }
    return lines.mid(0, count);
}

}  // namespace

int ImportSidecarFiles(core::Database& db) {
    const core::Session& session = core::CurrentSession();
    struct Sale {
        qint64 rowid;
        QString item;
    };
    std::vector<Sale> sales;
    {
        core::Statement s =
            db.Prepare(QStringLiteral("SELECT rowid, ItemNumber FROM Auctions WHERE UserName = ? "
                                      "AND ShippingMethod IS NULL"));
        s.Bind(1, session.CurrentUser);
        while (s.Step()) {
            const QString item = s.Text(1).trimmed();
            // A scraped item number names a file in the user's folder only.
            if (!item.isEmpty() && !item.contains(u'/') && !item.contains(u'\\') &&
                !item.startsWith(u'.')) {
                sales.push_back({s.Value(0).toLongLong(), item});
            }
        }
    }
    int taken = 0;
    for (const Sale& sale : sales) {
        const QString shipping = session.UserDataDir + sale.item + QStringLiteral(".pos");
        if (QFile::exists(shipping)) {
            const QStringList lines = Lines(shipping, 2);
            core::Statement update = db.Prepare(QStringLiteral(
                "UPDATE Auctions SET OrderShipping = ?, ShippingMethod = ? WHERE rowid = ?"));
            update.BindAll(lines[0], lines[1], sale.rowid).Run();
            QFile::remove(shipping);
            ++taken;
        }
        const QString cost = session.UserDataDir + sale.item + QStringLiteral(".itc");
        if (QFile::exists(cost)) {
            const QStringList lines = Lines(cost, 1);
            core::Statement update =
                db.Prepare(QStringLiteral("UPDATE Auctions SET ItemCost = ? WHERE rowid = ?"));
            update.BindAll(lines[0], sale.rowid).Run();
            QFile::remove(cost);
            ++taken;
        }
    }
    return taken;
}

}  // namespace lw::views
