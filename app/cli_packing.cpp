// SPDX-License-Identifier: GPL-3.0-or-later
// lotwright-cli packing-list and remittance: the task manager's build of the
// document, with the panel, the printer and the word processor replaced by
// standard output and the files named on the command line. It never marks a
// task printed whose PDF was not written.
#include "app/cli_packing.h"

#include <QStringList>
#include <QTextDocument>

#include "app/cli_commands.h"
#include "core/richtext/rich_text.h"
#include "core/session.h"
#include "core/store.h"
#include "tasks/packing_list.h"

namespace lw::app {

namespace {

// The winners of a multi-winner sale; none for a plain sale.
QStringList DutchWinners(core::Database& db, const QString& itemNumber) {
    auto statement = db.Prepare(QStringLiteral(
        "SELECT HighBidderName FROM Dutch WHERE ItemNumber = ?1 ORDER BY HighBidderName"));
    statement.Bind(1, itemNumber);
    QStringList winners;
    while (statement.Step()) {
        winners << statement.Text(0);
    }
    return winners;
}

QString DocumentName(tasks::Side side) {
    return tasks::IsSalesSide(side) ? QStringLiteral("packing list")
                                    : QStringLiteral("remittance advice");
}

// Why nothing was made, for a build that did not end in a document.
QString NotBuilt(const PackingRequest& request, tasks::PackingStatus status) {
    const QString none =
        QStringLiteral("No ") + DocumentName(request.side) + QStringLiteral(" was made: ");
    switch (status) {
        case tasks::PackingStatus::NoRecord:
            if (!request.bidder.isEmpty()) {
                return none + QStringLiteral("item %1 has no winner %2.")
                                  .arg(request.itemNumber, request.bidder);
            }
            return none + (tasks::IsSalesSide(request.side)
                               ? QStringLiteral("there is no sale with item number %1.")
                               : QStringLiteral("there is no bid with item number %1."))
                              .arg(request.itemNumber);
        case tasks::PackingStatus::MissingAddress:
            return none +
                   (tasks::IsSalesSide(request.side) ? QStringLiteral("the buyer's")
                                                     : QStringLiteral("the seller's")) +
                   QStringLiteral(" address is missing (task PRA).");
        case tasks::PackingStatus::MissingPaymentInfo:
            return none + QStringLiteral("the payment method is missing (task PRP).");
        case tasks::PackingStatus::Failed:
            return none + QStringLiteral("the database could not be read.");
        case tasks::PackingStatus::Built:
            break;
    }
    return {};
}

}  // namespace

int RunPacking(const PackingRequest& request, QTextStream& out, QTextStream& err) {
    core::Database db = core::OpenStore();
    if (core::ChooseUser(db, nullptr) != core::UserChoice::Chosen) {
        err << "There is no default user in this database (run \"lotwright-cli init\" first).\n";
        return kExitFailure;
    }
    QString error;
    if (!tasks::InstallPackingTemplates(&error)) {
        err << error << '\n';
    }
    tasks::SelectedItem item;
    item.side = request.side;
    item.itemNumber = request.itemNumber;
    item.dutchBidder = request.bidder;
    if (tasks::IsSalesSide(request.side) && request.bidder.isEmpty()) {
        const QStringList winners = DutchWinners(db, request.itemNumber);
        if (!winners.isEmpty()) {
            err << "Item " << request.itemNumber
                << " is a multi-winner sale: name its winner with --bidder NAME ("
                << winners.join(QStringLiteral(", ")) << ").\n";
            return kExitUsage;
        }
    }

    QTextDocument document;
    const tasks::PackingOutcome outcome = tasks::BuildPackingDocument(db, item, document);
    if (!outcome.templateProblem.isEmpty()) {
        err << outcome.templateProblem << '\n';
    }
    if (!outcome.Built()) {
        err << NotBuilt(request, outcome.status) << '\n';
        return kExitFailure;
    }
    if (!request.rtfFile.isEmpty()) {
        if (!richtext::SaveRtfFile(document, request.rtfFile, &error)) {
            err << error << '\n';
            return kExitFailure;
        }
        out << "Wrote the " << DocumentName(request.side) << " to " << request.rtfFile << '\n';
    }
    if (!request.pdfFile.isEmpty()) {
        // Unlike the panel's printer, a file that was not written leaves the
        // task open: the command failed and can be run again.
        if (!richtext::WritePdf(document, request.pdfFile, &error)) {
            err << error << '\n';
            return kExitFailure;
        }
        out << "Printed the " << DocumentName(request.side) << " to " << request.pdfFile << '\n';
        if (!tasks::MarkPackingPrinted(db, item)) {
            return kExitFailure;
        }
    }
    if (request.rtfFile.isEmpty() && request.pdfFile.isEmpty()) {
        out << document.toPlainText() << '\n';
    }
    return kExitOk;
}

}  // namespace lw::app
