// SPDX-License-Identifier: GPL-3.0-or-later
// The auction creator's commands: the chooser, the two states of the window,
// the save question, saving, previewing, posting and sending to the outbox.
// The controls and the fields' own handlers are in creator_controls.cpp. A handler
// reads the controls into the document, calls creator/, and writes the
// controls back; a failure is caught at the handler and told, and the
// document stays as it was typed.
#include "ui/frmLWAC.h"

#include <QAction>
#include <QApplication>
#include <QCheckBox>
#include <QClipboard>
#include <QComboBox>
#include <QDesktopServices>
#include <QFontDatabase>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QMenu>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QRadioButton>
#include <QStackedWidget>
#include <QTabWidget>
#include <QVBoxLayout>
#include <algorithm>
#include <exception>

#include "core/session.h"
#include "core/text.h"
#include "creator/category_directory.h"
#include "ui/frmGeneral.h"
#include "ui/qt_ui.h"
#include "ui/readable_colour.h"
#include "update/site_session.h"

namespace lw::ui {

namespace {

// What the connection check says is needed when the site cannot be reached.
const QString kOffline =
    QStringLiteral("post auctions to eBay.  Use the To Outbox button when you are offline.");

QString User() {
    return core::CurrentSession().CurrentUser;
}

// A caption shown as it is: an "&" in a name is no mnemonic.
QString Literal(QString text) {
    return text.replace(u'&', QStringLiteral("&&"));
}

// Leaving the item tab shows every price as money; a box that holds no
// number is left as typed.
void ShowAsMoney(QLineEdit* box) {
    const QString text = box->text().trimmed();
    if (text.isEmpty()) {
        return;
    }
    if (const std::optional<double> number = core::TextToNumber(QStringView(text))) {
        box->setText(core::Format(*number, QStringLiteral("Currency")));
    }
}

}  // namespace

frmLWAC::frmLWAC(QWidget* parent) : QDialog(parent) {
    setObjectName(QStringLiteral("frmLWAC"));
    setWindowTitle(creator::CreatorCaption());
    setModal(true);
    m_openUrl = [](const QUrl& url) { QDesktopServices::openUrl(url); };
    Guard([this] {
        update::DecryptProtocols(m_rules, Db());
        m_lists = creator::LoadCreatorLists(Db(), m_rules, User(), creator::AuctionTemplatesDir(),
                                            QFontDatabase::families());
    });
    m_doc = creator::NewCreatorDocument(m_lists);

    auto* layout = new QVBoxLayout(this);
    BuildMenus();
    m_SSTab1 = new QTabWidget(this);
    m_SSTab1->setObjectName(QStringLiteral("SSTab1"));
    m_SSTab1->addTab(BuildChooserTab(), QStringLiteral("C&hoose"));
    m_SSTab1->addTab(BuildItemTab(), QStringLiteral("&Item"));
    m_SSTab1->addTab(BuildPicturesTab(), QStringLiteral("Pict&ures"));
    m_SSTab1->addTab(BuildStyleTab(), QStringLiteral("St&yle"));
    m_SSTab1->addTab(BuildDetailsTab(), QStringLiteral("&Details"));
    m_SSTab1->addTab(BuildLinksTab(), QStringLiteral("&Links"));
    m_SSTab1->addTab(BuildListingTab(), QStringLiteral("Listin&g"));
    m_SSTab1->addTab(BuildPaymentTab(), QStringLiteral("Pay&ment && Shipping"));
    layout->addWidget(m_SSTab1, 1);

    m_lblStatus = new QLabel(this);
    m_lblStatus->setObjectName(QStringLiteral("lblStatus"));
    m_cmdSave = new QPushButton(QStringLiteral("&Save..."), this);
    m_cmdSave->setObjectName(QStringLiteral("cmdSave"));
    m_cmdPreviewAuction = new QPushButton(QStringLiteral("Pre&view"), this);
    m_cmdPreviewAuction->setObjectName(QStringLiteral("cmdPreviewAuction"));
    m_cmdPostNow = new QPushButton(QStringLiteral("Post &Now"), this);
    m_cmdPostNow->setObjectName(QStringLiteral("cmdPostNow"));
    m_cmdToOutbox = new QPushButton(QStringLiteral("To Out&box"), this);
    m_cmdToOutbox->setObjectName(QStringLiteral("cmdToOutbox"));
    m_cmdToOutbox->setToolTip(QStringLiteral("Keep the auction in the outbox, to send later"));
    m_cmdExit = new QPushButton(QStringLiteral("E&xit"), this);
    m_cmdExit->setObjectName(QStringLiteral("cmdExit"));
    auto* commands = new QHBoxLayout;
    commands->addWidget(m_lblStatus, 1);
    for (QPushButton* button :
         {m_cmdSave, m_cmdPreviewAuction, m_cmdPostNow, m_cmdToOutbox, m_cmdExit}) {
        button->setAutoDefault(false);
        commands->addWidget(button);
    }
    layout->addLayout(commands);
    m_cmdPostNow->setToolTip(QStringLiteral("Post the auction now, the way the Posting menu says"));

    connect(m_cmdSave, &QPushButton::clicked, this, &frmLWAC::cmdSave_Click);
    connect(m_cmdPreviewAuction, &QPushButton::clicked, this, &frmLWAC::cmdPreviewAuction_Click);
    connect(m_cmdPostNow, &QPushButton::clicked, this, &frmLWAC::cmdPostNow_Click);
    connect(m_cmdToOutbox, &QPushButton::clicked, this, &frmLWAC::cmdToOutbox_Click);
    connect(m_cmdExit, &QPushButton::clicked, this, &frmLWAC::cmdExit_Click);
    connect(m_SSTab1, &QTabWidget::currentChanged, this, &frmLWAC::SSTab1_Click);
    if (auto* qtUi = dynamic_cast<QtUi*>(&core::CurrentUi())) {
        connect(qtUi, &QtUi::StatusChanged, m_lblStatus, &QLabel::setText);
    }

    FillLists();
    WriteControls();
    WatchChanges();
    ShowChooser();
    resize(920, 680);
}

frmLWAC::~frmLWAC() = default;

core::Database& frmLWAC::Db() {
    if (!m_db) {
        m_db.emplace(core::OpenStore());
    }
    return *m_db;
}

bool frmLWAC::Guard(const std::function<void()>& work) {
    return RunReported(creator::CreatorCaption(), [&] {
        try {
            work();
        } catch (const core::StoreError&) {
            // The next command opens the database afresh.
            m_db.reset();
            throw;
        }
    });
}

void frmLWAC::SetUrlOpener(std::function<void(const QUrl&)> opener) {
    m_openUrl = std::move(opener);
}

bool frmLWAC::UpdateAfter() const {
    return m_mnuUAWF->isChecked();
}

creator::CreatorDocument frmLWAC::NewDocument() const {
    return creator::NewCreatorDocument(m_lists);
}

creator::ListingContext frmLWAC::Context() {
    return {creator::AuctionTemplatesDir(), &m_rules, creator::SellerId(Db(), User())};
}

// ------------------------------------------------------------------ states

void frmLWAC::ShowChooser() {
    m_editing = false;
    for (int tab = 1; tab < m_SSTab1->count(); ++tab) {
        m_SSTab1->setTabEnabled(tab, false);
    }
    {
        const QSignalBlocker hold(m_SSTab1);
        m_SSTab1->setCurrentIndex(kChooserTab);
    }
    m_lastTab = kChooserTab;
    for (QPushButton* button : {m_cmdSave, m_cmdPreviewAuction, m_cmdPostNow, m_cmdToOutbox}) {
        button->hide();
    }
    for (QMenu* menu : {m_mnuFont}) {
        menu->setEnabled(false);
    }
    FillChooser();
}

void frmLWAC::ShowEditing() {
    m_editing = true;
    for (int tab = 1; tab < m_SSTab1->count(); ++tab) {
        m_SSTab1->setTabEnabled(tab, true);
    }
    for (QPushButton* button : {m_cmdSave, m_cmdPreviewAuction, m_cmdPostNow, m_cmdToOutbox}) {
        button->show();
    }
    m_mnuFont->setEnabled(true);
    m_cmdLoadAuction->setEnabled(false);
    m_SSTab1->setCurrentIndex(kItemTab);
}

void frmLWAC::FillChooser() {
    const auto fill = [](QListWidget* list, const std::vector<creator::ChooserRow>& rows) {
        const QSignalBlocker hold(list);
        const int row = list->currentRow();
        list->clear();
        for (const creator::ChooserRow& entry : rows) {
            auto* item = new QListWidgetItem(entry.text, list);
            item->setData(Qt::UserRole, entry.id);
            item->setData(Qt::UserRole + 1, entry.type);
        }
        list->setCurrentRow(std::min(row, list->count() - 1));
    };
    Guard([&] {
        fill(m_lstUserTemp, creator::ChooserRows(Db(), QString(creator::kTemplate), User()));
        fill(m_lstDraft,
             creator::ChooserRows(Db(), QString(creator::kDraft), User(),
                                  m_OptDSort[1]->isChecked() ? creator::ChooserSort::Name
                                                             : creator::ChooserSort::Newest));
        fill(m_lstOldAuction,
             creator::ChooserRows(Db(), QString(creator::kOldAuction), User(),
                                  m_OptOASort[1]->isChecked() ? creator::ChooserSort::Name
                                                              : creator::ChooserSort::Newest));
    });
    const QString last = creator::SameAsLastCaption();
    m_optACChoice[2]->setText(QStringLiteral("&S") + Literal(last.mid(1)));
    FillTemplateMenu();
    int chosen = 0;
    for (size_t i = 0; i < m_optACChoice.size(); ++i) {
        if (m_optACChoice[i]->isChecked()) {
            chosen = int(i);
        }
    }
    optACChoice_Click(chosen);
}

void frmLWAC::FillTemplateMenu() {
    m_mnuTemplates->clear();
    for (int row = 0; row < m_lstUserTemp->count(); ++row) {
        QListWidgetItem* item = m_lstUserTemp->item(row);
        const qint64 id = item->data(Qt::UserRole).toLongLong();
        // The first rows take a digit as their key.
        const QString key = row < 9 ? QStringLiteral("&%1 ").arg(row + 1) : QString();
        QAction* action = m_mnuTemplates->addAction(key + Literal(item->text()));
        action->setObjectName(QStringLiteral("mnuTemplateName%1").arg(row));
        connect(action, &QAction::triggered, this, [this, id] { mnuTemplateName_Click(id); });
    }
    m_mnuTemplates->setEnabled(m_lstUserTemp->count() > 0);
}

QListWidget* frmLWAC::ChosenList() const {
    switch (m_chooserPages->currentIndex()) {
        case 0:
            return m_lstUserTemp;
        case 1:
            return m_lstDraft;
        case 3:
            return m_lstOldAuction;
        default:
            return nullptr;
    }
}

void frmLWAC::optACChoice_Click(int index) {
    m_optACChoice[size_t(index)]->setChecked(true);
    m_chooserPages->setCurrentIndex(index);
    if (index == 2) {
        const creator::CreatorSettings settings = creator::LoadCreatorSettings();
        m_lblAuctionName->setText(settings.LastAuctionName);
        m_lblAuctionItemData->setText(settings.LastAuctionID);
        m_lblAuctionType->setText(settings.LastAuctionType.toLower());
        m_details[2]->clear();
        Guard([&] {
            m_details[2]->addItems(
                creator::ChooserDetails(Db(), settings.LastAuctionID.toLongLong()));
        });
        m_cmdLoadAuction->setEnabled(!m_editing && !settings.LastAuctionName.isEmpty());
        return;
    }
    ChooseRow(ChosenList(), index == 0   ? QStringLiteral("template")
                            : index == 1 ? QStringLiteral("draft")
                                         : QStringLiteral("old auction"));
}

void frmLWAC::ChooseRow(QListWidget* list, const QString& kind) {
    const int page = m_chooserPages->indexOf(list->parentWidget()->parentWidget());
    QListWidget* details = m_details[size_t(std::clamp(page, 0, 3))];
    details->clear();
    QListWidgetItem* item = list->currentItem();
    m_cmdLoadAuction->setEnabled(!m_editing && item != nullptr);
    if (item == nullptr) {
        return;
    }
    m_lblAuctionName->setText(item->text());
    m_lblAuctionItemData->setText(item->data(Qt::UserRole).toString());
    m_lblAuctionType->setText(kind);
    Guard([&] {
        details->addItems(creator::ChooserDetails(Db(), item->data(Qt::UserRole).toLongLong()));
    });
}

void frmLWAC::lstUserTemp_Click() {
    ChooseRow(m_lstUserTemp, QStringLiteral("template"));
}

void frmLWAC::lstDraft_Click() {
    ChooseRow(m_lstDraft, QStringLiteral("draft"));
}

void frmLWAC::lstOldAuction_Click() {
    ChooseRow(m_lstOldAuction, QStringLiteral("old auction"));
}

void frmLWAC::OptDSort_Click() {
    FillChooser();
}

void frmLWAC::OptOASort_Click() {
    FillChooser();
}

creator::CreatorSettings frmLWAC::LeavingSettings() const {
    creator::CreatorSettings settings = m_settings;
    for (size_t i = 0; i < m_mnuPost.size(); ++i) {
        if (m_mnuPost[i]->isChecked()) {
            settings.PostOption = int(i) + 1;
        }
    }
    settings.UpdateAfter = m_mnuUAWF->isChecked() ? -1 : 0;
    for (size_t i = 0; i < m_optACChoice.size(); ++i) {
        if (m_optACChoice[i]->isChecked()) {
            settings.ACType = int(i);
        }
    }
    settings.TemplateChoice = std::max(0, m_lstUserTemp->currentRow());
    settings.DraftChoice = std::max(0, m_lstDraft->currentRow());
    settings.OldAuctionChoice = std::max(0, m_lstOldAuction->currentRow());
    settings.JustGo = m_chkGo->isChecked();
    return settings;
}

void frmLWAC::LoadCreatorOptions() {
    m_settings = creator::LoadCreatorSettings();
    m_mnuPost[size_t(m_settings.PostOption - 1)]->setChecked(true);
    m_mnuUAWF->setChecked(m_settings.UpdateAfter != 0);
    m_chkGo->setChecked(m_settings.JustGo);
    m_lstUserTemp->setCurrentRow(std::min(m_settings.TemplateChoice, m_lstUserTemp->count() - 1));
    m_lstDraft->setCurrentRow(std::min(m_settings.DraftChoice, m_lstDraft->count() - 1));
    m_lstOldAuction->setCurrentRow(
        std::min(m_settings.OldAuctionChoice, m_lstOldAuction->count() - 1));
    optACChoice_Click(std::clamp(m_settings.ACType, 0, 3));
    if (m_settings.JustGo && !m_editing && m_cmdLoadAuction->isEnabled()) {
        cmdLoadAuction_Click();
    }
}

void frmLWAC::showEvent(QShowEvent* event) {
    QDialog::showEvent(event);
    if (!m_activated) {
        m_activated = true;
        LoadCreatorOptions();
    }
}

bool frmLWAC::LoadAndEdit(qint64 id, bool defaultRow) {
    creator::CreatorDocument doc = NewDocument();
    doc.lblAuctionName = m_lblAuctionName->text();
    doc.lblAuctionItemData = id;
    doc.lblAuctionType = m_lblAuctionType->text();
    bool loaded = false;
    const bool ran = Guard([&] {
        loaded = creator::LoadCreatorRecord(Db(), id, m_lists, m_rules, doc);
        if (loaded && defaultRow) {
            creator::ApplyUserSitesPreferences(Db(), User(), m_lists, doc);
        }
    });
    if (!ran) {
        return false;
    }
    // A row that is gone leaves the fields as they were.
    if (loaded) {
        doc.dirty = false;
        m_doc = doc;
        m_html.clear();
        m_unsentId = 0;
        WriteControls();
    }
    ShowEditing();
    return loaded;
}

void frmLWAC::cmdLoadAuction_Click() {
    if (!m_cmdLoadAuction->isEnabled()) {
        return;
    }
    creator::SaveLeavingSettings(LeavingSettings());
    QListWidget* list = ChosenList();
    qint64 id = 0;
    bool defaultRow = false;
    if (list == nullptr) {
        id = creator::LoadCreatorSettings().LastAuctionID.toLongLong();
    } else if (QListWidgetItem* item = list->currentItem()) {
        id = item->data(Qt::UserRole).toLongLong();
        defaultRow = item->data(Qt::UserRole + 1).toString() == creator::kDefault;
    }
    ReloadLists();
    LoadAndEdit(id, defaultRow);
}

void frmLWAC::cmdLoadDefault_Click() {
    m_lblAuctionName->setText(QString(creator::kDefault));
    m_lblAuctionType->setText(QStringLiteral("template"));
    LoadAndEdit(1, false);
}

bool frmLWAC::OpenRecord(qint64 id) {
    m_lblAuctionName->clear();
    m_lblAuctionType->setText(QStringLiteral("old auction"));
    m_activated = true;
    return LoadAndEdit(id, false);
}

void frmLWAC::OpenDocument(const creator::CreatorDocument& doc) {
    m_activated = true;
    m_doc = doc;
    m_html.clear();
    m_unsentId = 0;
    WriteControls();
    ShowEditing();
}

void frmLWAC::mnuDeleteDraft_Click() {
    QListWidgetItem* item = m_lstDraft->currentItem();
    if (item != nullptr &&
        Guard([&] { creator::DeleteCreatorRecord(Db(), item->data(Qt::UserRole).toLongLong()); })) {
        FillChooser();
    }
}

void frmLWAC::mnuPopupDeleteOldAuction_Click() {
    QListWidgetItem* item = m_lstOldAuction->currentItem();
    if (item != nullptr &&
        Guard([&] { creator::DeleteCreatorRecord(Db(), item->data(Qt::UserRole).toLongLong()); })) {
        FillChooser();
    }
}

void frmLWAC::mnuDeleteTemplate_Click() {
    QListWidgetItem* item = m_lstUserTemp->currentItem();
    if (item == nullptr) {
        return;
    }
    const creator::ChooserRow row{item->data(Qt::UserRole).toLongLong(), item->text(),
                                  item->data(Qt::UserRole + 1).toString(), QString()};
    bool deleted = false;
    Guard([&] {
        deleted = creator::DeleteTemplate(Db(), m_lstUserTemp->row(item), row, core::CurrentUi());
    });
    if (deleted) {
        FillChooser();
    }
}

// ------------------------------------------------------------------ leaving and saving

bool frmLWAC::AskToSave() {
    if (!m_editing) {
        return true;
    }
    ReadControls();
    switch (creator::PromptSaveChanges(m_doc, isVisible(), core::CurrentUi())) {
        case creator::SaveAnswer::Yes:
            return SaveWithDialog(QString(creator::kDraft));
        case creator::SaveAnswer::Cancel:
            return false;
        default:
            return true;
    }
}

bool frmLWAC::SaveWithDialog(const QString& kind) {
    ReadControls();
    creator::SaveRequest request;
    {
        std::optional<frmGeneral> form;
        if (!Guard([&] { form.emplace(frmGeneral::SaveForm, Db(), this); })) {
            return false;
        }
        form->ChooseSaveKind(kind);
        if (form->exec() != QDialog::Accepted) {
            return false;
        }
        request = form->SaveChoice();
    }
    request.auctionHtml = m_html;
    qint64 id = 0;
    if (!Guard([&] { id = creator::SaveCreatorRecord(Db(), request, m_doc, m_lists, m_rules); })) {
        return false;
    }
    m_doc.lblAuctionName = request.name;
    m_doc.lblAuctionItemData = id;
    m_doc.lblAuctionType = request.type.toLower();
    m_doc.caption = QStringLiteral("Lotwright AC: ") + request.name;
    setWindowTitle(m_doc.caption);
    m_lblAuctionName->setText(m_doc.lblAuctionName);
    m_lblAuctionItemData->setText(QString::number(id));
    m_lblAuctionType->setText(m_doc.lblAuctionType);
    m_lblStatus->setText(QStringLiteral("Saved \"%1\".").arg(request.name));
    return true;
}

void frmLWAC::cmdSave_Click() {
    SaveWithDialog(QString(creator::kDraft));
}

void frmLWAC::cmdExit_Click() {
    reject();
}

void frmLWAC::reject() {
    if (!AskToSave()) {
        return;
    }
    creator::SaveLeavingSettings(LeavingSettings());
    QDialog::reject();
}

void frmLWAC::mnuNewAuction_Click() {
    if (AskToSave()) {
        ShowChooser();
    }
}

void frmLWAC::mnuCreate_Click() {
    if (!AskToSave()) {
        return;
    }
    ReloadLists();
    creator::CreatorDocument doc = NewDocument();
    doc.lblAuctionType = QStringLiteral("auction");
    OpenDocument(doc);
}

void frmLWAC::mnuTemplateName_Click(qint64 id) {
    if (!AskToSave()) {
        return;
    }
    for (int row = 0; row < m_lstUserTemp->count(); ++row) {
        if (m_lstUserTemp->item(row)->data(Qt::UserRole).toLongLong() == id) {
            m_lstUserTemp->setCurrentRow(row);
        }
    }
    optACChoice_Click(0);
    m_cmdLoadAuction->setEnabled(true);
    cmdLoadAuction_Click();
}

void frmLWAC::mnuPostOption_Click(int option) {
    m_settings.PostOption = option;
    creator::SavePostOption(option);
}

void frmLWAC::SSTab1_Click(int index) {
    if (index == kChooserTab && m_editing) {
        if (!AskToSave()) {
            const QSignalBlocker hold(m_SSTab1);
            m_SSTab1->setCurrentIndex(m_lastTab);
            return;
        }
        ShowChooser();
        return;
    }
    if (m_lastTab == kItemTab && index != kItemTab) {
        for (QLineEdit* box : m_moneyBoxes) {
            ShowAsMoney(box);
        }
    }
    m_lastTab = index;
}

// ------------------------------------------------------------------ building and sending

QString frmLWAC::BuildHtml() {
    ReadControls();
    creator::ListingResult listing;
    Guard([&] {
        listing = creator::BuildListing(m_doc.lstTemplateStyle, m_doc, m_lists, Context(), m_html);
    });
    if (!listing.problem.isEmpty()) {
        core::CurrentUi().Message(listing.problem, creator::CreatorCaption(), core::Icon::Warning);
    }
    m_html = listing.html;
    return m_html;
}

void frmLWAC::cmdPreviewAuction_Click() {
    ReadControls();
    creator::PreviewResult preview;
    if (!Guard([&] {
            preview = creator::PreviewAuction(m_doc.lstTemplateStyle, m_doc, m_lists, Context(),
                                              core::CurrentSession().ConfigsDir);
        })) {
        return;
    }
    if (preview.path.isEmpty()) {
        core::CurrentUi().Message(preview.problem, creator::CreatorCaption(), core::Icon::Warning);
        return;
    }
    m_html = preview.listing.html;
    if (m_openUrl) {
        m_openUrl(QUrl::fromLocalFile(preview.path));
    }
}

bool frmLWAC::SendToOutbox() {
    creator::SaveRequest request;
    request.name = m_doc.txtItemTitle.trimmed().isEmpty() ? m_doc.txtEbayTitle : m_doc.txtItemTitle;
    request.type = QString(creator::kOldAuction);
    request.toOutbox = true;
    request.overwrite = m_chkOverwrite->isChecked();
    request.existingId = request.overwrite ? m_lblAuctionItemData->text().toLongLong() : 0;
    request.auctionHtml = m_html;
    return Guard([&] {
        creator::KeepPictureFavorites(Db(), User(), m_doc, m_lists);
        creator::SaveCreatorRecord(Db(), request, m_doc, m_lists, m_rules);
    });
}

void frmLWAC::cmdToOutbox_Click() {
    if (m_cmdLoadAuction->isEnabled() || !m_editing) {
        return;
    }
    BuildHtml();
    if (!creator::ValidateForSending(m_doc, m_lists, core::CurrentUi()) || !SendToOutbox()) {
        return;
    }
    const QString name =
        m_doc.txtItemTitle.trimmed().isEmpty() ? m_doc.txtEbayTitle : m_doc.txtItemTitle;
    if (m_chkOverwrite->isChecked()) {
        creator::SaveLeavingSettings(LeavingSettings());
        accept();
        return;
    }
    ShowChooser();
    m_lblStatus->setText(QStringLiteral("\"%1\" waits in the outbox.").arg(name));
}

creator::PostRoute frmLWAC::PostRoute() const {
    for (size_t i = 0; i < m_mnuPost.size(); ++i) {
        if (m_mnuPost[i]->isChecked()) {
            return creator::PostRoute(int(i) + 1);
        }
    }
    return creator::PostRoute::Direct;
}

void frmLWAC::cmdPostNow_Click() {
    if (m_cmdLoadAuction->isEnabled() || !m_editing) {
        return;
    }
    bool online = false;
    if (!Guard([&] { online = update::IsConnected(Db(), kOffline, true); }) || !online) {
        return;
    }
    BuildHtml();
    if (!creator::ValidateForSending(m_doc, m_lists, core::CurrentUi())) {
        return;
    }
    // The commands wait while the post runs; the document is saved first as
    // an old auction, which is what is posted.
    const QList<QPushButton*> commands{m_cmdSave, m_cmdPreviewAuction, m_cmdPostNow, m_cmdToOutbox,
                                       m_cmdExit};
    for (QPushButton* button : commands) {
        button->setEnabled(false);
    }
    creator::SaveRequest request;
    request.name = m_doc.txtItemTitle.trimmed().isEmpty() ? m_doc.txtEbayTitle : m_doc.txtItemTitle;
    request.type = QString(creator::kOldAuction);
    request.existingId = m_unsentId;
    request.auctionHtml = m_html;
    const creator::PostRoute route = PostRoute();
    creator::PostOutcome outcome;
    const bool ran = Guard([&] {
        creator::KeepPictureFavorites(Db(), User(), m_doc, m_lists);
        m_unsentId = creator::SaveCreatorRecord(Db(), request, m_doc, m_lists, m_rules);
        creator::PrepareCategoryDirectory(Db(), core::CurrentUi());
        outcome = creator::PostAuction(Db(), m_rules, m_unsentId, route, core::CurrentUi());
    });
    for (QPushButton* button : commands) {
        button->setEnabled(true);
    }
    if (!outcome.browserPage.isEmpty() && m_openUrl) {
        m_openUrl(QUrl::fromLocalFile(outcome.browserPage));
    }
    if (!ran || !outcome.posted) {
        // Told already; what was typed stays in the window for another try.
        m_lblStatus->setText(outcome.problem);
        return;
    }
    if (route != creator::PostRoute::Direct) {
        creator::SavePostMark(User(), QDate::currentDate());
    }
    m_unsentId = 0;
    if (outcome.confirm) {
        ShowPosted(outcome.itemNumber, this);
    }
    ShowChooser();
    m_lblStatus->setText(outcome.problem.isEmpty() && !outcome.itemNumber.isEmpty()
                             ? QStringLiteral("Posted as item #%1.").arg(outcome.itemNumber)
                             : outcome.problem);
}

}  // namespace lw::ui
