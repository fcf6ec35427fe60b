// The general dialog: the item cost form and the about form.
#include "ui/frmGeneral.h"

#include <QLineEdit>

namespace lw::ui {

frmGeneral::frmGeneral(Form form, QWidget* parent) : QDialog(parent), m_form(form) {
    setObjectName(QStringLiteral("frmGeneral"));
}

void frmGeneral::SetItemCostValues(const QString&, const QString&, const QString&) {}
QString frmGeneral::ItemCostText() const {
    return {};
}
QString frmGeneral::OrderShippingText() const {
    return {};
}
QString frmGeneral::InsuranceCostText() const {
    return {};
}
void frmGeneral::cmdOK_Click() {
    accept();
}
void frmGeneral::cmdCancel_Click() {
    reject();
}
QWidget* frmGeneral::BuildItemCostForm() {
    return nullptr;
}
QWidget* frmGeneral::BuildAboutForm() {
    return nullptr;
}

bool EditItemCost(core::Database&, const QString&, QWidget*) {
    return false;
}

void ShowAbout(QWidget*) {}

}  // namespace lw::ui
