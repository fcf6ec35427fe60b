// SPDX-License-Identifier: GPL-3.0-or-later
// The general dialog: the item cost form (form 9) and the about form. The
// money boxes are checked before the dialog closes with OK, so that a typo
// is told and the typing is kept; the row itself is views/item_cost's.
#include "ui/frmGeneral.h"

#include <QDialogButtonBox>
#include <QFormLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QVBoxLayout>
#include <exception>

#include <sqlite3.h>

#include "core/net.h"
#include "core/session.h"
#include "core/store.h"
#include "views/item_cost.h"

#ifndef LW_VERSION
#define LW_VERSION "unknown"
#endif

namespace lw::ui {

namespace {

const QString kProgramName = QStringLiteral("Tolvane Lotwright Pro");
const QString kLicenceUrl = QStringLiteral("https://www.gnu.org/licenses/gpl-3.0.html");

QLineEdit* MoneyBox(const QString& name, QWidget* parent) {
    auto* box = new QLineEdit(parent);
    box->setObjectName(name);
    box->setAlignment(Qt::AlignRight);
    return box;
}

}  // namespace

QString LibraryVersions() {
    return QStringLiteral("Built on Qt %1, SQLite %2 and libcurl %3.")
        .arg(QString::fromLatin1(qVersion()), QString::fromLatin1(sqlite3_libversion()),
             core::CurlVersion());
}

frmGeneral::frmGeneral(Form form, QWidget* parent) : QDialog(parent), m_form(form) {
    setObjectName(QStringLiteral("frmGeneral"));
    setModal(true);
    auto* layout = new QVBoxLayout(this);
    layout->addWidget(form == ItemCostForm ? BuildItemCostForm() : BuildAboutForm());

    auto* buttons = new QDialogButtonBox(this);
    auto* ok = buttons->addButton(QStringLiteral("&OK"), QDialogButtonBox::AcceptRole);
    ok->setObjectName(QStringLiteral("cmdOK"));
    ok->setDefault(true);
    connect(ok, &QPushButton::clicked, this, &frmGeneral::cmdOK_Click);
    if (form == ItemCostForm) {
        auto* cancel = buttons->addButton(QStringLiteral("&Cancel"), QDialogButtonBox::RejectRole);
        cancel->setObjectName(QStringLiteral("cmdCancel"));
        connect(cancel, &QPushButton::clicked, this, &frmGeneral::cmdCancel_Click);
    }
    layout->addWidget(buttons);
}

QWidget* frmGeneral::BuildItemCostForm() {
    auto* page = new QWidget(this);
    page->setObjectName(QStringLiteral("fraItemCost"));
    m_txtItemCost = MoneyBox(QStringLiteral("txtItemCost"), page);
    m_txtOrderShipping = MoneyBox(QStringLiteral("txtOrderShipping"), page);
    m_txtInsuranceCost = MoneyBox(QStringLiteral("txtInsuranceCost"), page);
    auto* form = new QFormLayout(page);
    form->addRow(QStringLiteral("&Item cost:"), m_txtItemCost);
    form->addRow(QStringLiteral("&Shipping charged:"), m_txtOrderShipping);
    form->addRow(QStringLiteral("I&nsurance cost:"), m_txtInsuranceCost);
    return page;
}

QWidget* frmGeneral::BuildAboutForm() {
    setWindowTitle(QStringLiteral("About ") + kProgramName);
    auto* page = new QWidget(this);
    page->setObjectName(QStringLiteral("fraAbout"));
    auto* name = new QLabel(kProgramName, page);
    name->setObjectName(QStringLiteral("lblProgram"));
    QFont big = name->font();
    big.setBold(true);
    big.setPointSizeF(big.pointSizeF() * 1.4);
    name->setFont(big);
    auto* version = new QLabel(QStringLiteral("Version ") + QString::fromLatin1(LW_VERSION), page);
    version->setObjectName(QStringLiteral("lblVersion"));
    auto* what = new QLabel(
        QStringLiteral("For people who sell and buy at online auctions: one local database of "
                       "your sales, bids, buyers and stock, refreshed from the auction site's "
                       "pages, with the work after each sale laid out as tasks."),
        page);
    what->setObjectName(QStringLiteral("lblDescription"));
    what->setWordWrap(true);
    what->setMinimumWidth(320);
    auto* licence = new QLabel(
        QStringLiteral("Lotwright is free software: you may share and change it under the GNU "
                       "General Public License, version 3 or any later version "
                       "(GPL-3.0-or-later).<br>It comes with <b>no warranty</b>, to the extent "
                       "permitted by law.<br><a href=\"%1\">Read the licence</a>")
            .arg(kLicenceUrl),
        page);
    licence->setObjectName(QStringLiteral("lblLicence"));
    licence->setTextFormat(Qt::RichText);
    licence->setWordWrap(true);
    licence->setOpenExternalLinks(true);
    licence->setTextInteractionFlags(Qt::TextBrowserInteraction);
    auto* libraries = new QLabel(LibraryVersions(), page);
    libraries->setObjectName(QStringLiteral("lblLibraries"));
    libraries->setWordWrap(true);
    libraries->setTextInteractionFlags(Qt::TextSelectableByMouse);
    auto* layout = new QVBoxLayout(page);
    layout->addWidget(name);
    layout->addWidget(version);
    layout->addWidget(what);
    layout->addSpacing(6);
    layout->addWidget(licence);
    layout->addSpacing(6);
    layout->addWidget(libraries);
    return page;
}

void frmGeneral::SetItemCostValues(const QString& itemCost, const QString& orderShipping,
                                   const QString& insuranceCost) {
    if (m_form != ItemCostForm) {
        return;
    }
    m_txtItemCost->setText(itemCost);
    m_txtOrderShipping->setText(orderShipping);
    m_txtInsuranceCost->setText(insuranceCost);
}

QString frmGeneral::ItemCostText() const {
    return m_txtItemCost ? m_txtItemCost->text() : QString();
}

QString frmGeneral::OrderShippingText() const {
    return m_txtOrderShipping ? m_txtOrderShipping->text() : QString();
}

QString frmGeneral::InsuranceCostText() const {
    return m_txtInsuranceCost ? m_txtInsuranceCost->text() : QString();
}

void frmGeneral::cmdOK_Click() {
    if (m_form == ItemCostForm) {
        const int bad =
            views::FirstBadBox({ItemCostText(), OrderShippingText(), InsuranceCostText()});
        if (bad >= 0) {
            QLineEdit* boxes[] = {m_txtItemCost, m_txtOrderShipping, m_txtInsuranceCost};
            core::CurrentUi().Message(
                QStringLiteral("Please enter an amount of money, such as $4.50, or leave the "
                               "box empty."),
                windowTitle(), core::Icon::Warning);
            boxes[bad]->setFocus();
            boxes[bad]->selectAll();
            return;
        }
    }
    accept();
}

void frmGeneral::cmdCancel_Click() {
    reject();
}

bool EditItemCost(core::Database& db, const QString& itemNumber, QWidget* parent) {
    const QString title = QStringLiteral("Item #: ") + itemNumber;
    const QString user = core::CurrentSession().CurrentUser;
    try {
        const auto shown = views::ReadItemCost(db, user, itemNumber);
        if (!shown) {
            core::CurrentUi().Message(
                QStringLiteral("Item ") + itemNumber +
                    QStringLiteral(" is not among your sales in the database."),
                title, core::Icon::Warning);
            return false;
        }
        frmGeneral form(frmGeneral::ItemCostForm, parent);
        form.setWindowTitle(title);
        form.SetItemCostValues(shown->itemCost, shown->orderShipping, shown->insuranceCost);
        if (form.exec() != QDialog::Accepted) {
            return false;
        }
        return views::WriteItemCost(
            db, user, itemNumber,
            {form.ItemCostText(), form.OrderShippingText(), form.InsuranceCostText()});
    } catch (const core::StoreError& error) {
        core::CurrentUi().Message(error.Message(), title, core::Icon::Warning);
    } catch (const std::exception& error) {
        core::CurrentUi().Message(QString::fromUtf8(error.what()), title, core::Icon::Warning);
    }
    return false;
}

void ShowAbout(QWidget* parent) {
    frmGeneral about(frmGeneral::AboutForm, parent);
    about.exec();
}

}  // namespace lw::ui
