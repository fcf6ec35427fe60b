// SPDX-License-Identifier: GPL-3.0-or-later
// The general dialog, one window with several forms of which one shows at a
// time: form 9, the item cost and shipping figures of a sale, and the about
// form. The form only shows and reads its boxes; the row is read and written
// by views/item_cost, never here by SQL of its own.
#pragma once

#include <QDialog>
#include <QString>

class QLabel;
class QLineEdit;

namespace lw::core {
class Database;
}

namespace lw::ui {

class frmGeneral : public QDialog {
    Q_OBJECT
public:
    enum Form { ItemCostForm = 9, AboutForm = 100 };

    explicit frmGeneral(Form form, QWidget* parent = nullptr);

    Form CurrentForm() const { return m_form; }

    // Form 9: the three money boxes, as shown and as typed.
    void SetItemCostValues(const QString& itemCost, const QString& orderShipping,
                           const QString& insuranceCost);
    QString ItemCostText() const;
    QString OrderShippingText() const;
    QString InsuranceCostText() const;

public Q_SLOTS:
    void cmdOK_Click();
    void cmdCancel_Click();

private:
    QWidget* BuildItemCostForm();
    QWidget* BuildAboutForm();

    Form m_form;
    QLineEdit* m_txtItemCost = nullptr;
    QLineEdit* m_txtOrderShipping = nullptr;
    QLineEdit* m_txtInsuranceCost = nullptr;
};

// The whole mnuItemCost command for the current user's sale itemNumber: the
// row's ItemCost, OrderShipping and InsuranceCost shown (Null as "$0.00")
// under the title "Item #: " + number, written back on OK, nothing written
// on Cancel. True when the row was written. A missing row or a failed store
// says so through the Ui and writes nothing.
bool EditItemCost(core::Database& db, const QString& itemNumber, QWidget* parent);

// The about box: the program's name, its version, what it is for, its
// licence and the versions of the libraries it runs on.
void ShowAbout(QWidget* parent);
// "Built on Qt 6.4.2, SQLite 3.40.1 and libcurl 7.88.1.", the versions the
// program runs with.
QString LibraryVersions();

}  // namespace lw::ui
