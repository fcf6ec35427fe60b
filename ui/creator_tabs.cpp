// SPDX-License-Identifier: GPL-3.0-or-later
// The auction creator's controls: the menus, the chooser tab and the editing
// tabs, laid out with Qt layouts in reading order, each control named as the
// system names it and bound to the field of the document it shows. Each
// column or block of a tab is a widget of its own, so that the Tab key reads
// a block through before the one beside it. Nothing here reads or writes the
// database; the handlers are in frmLWAC.cpp.
#include <QAction>
#include <QActionGroup>
#include <QCheckBox>
#include <QComboBox>
#include <QFrame>
#include <QGridLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QMenu>
#include <QMenuBar>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QRadioButton>
#include <QStackedWidget>
#include <QStyle>
#include <QVBoxLayout>

#include "ui/control_names.h"
#include "ui/frmLWAC.h"
#include "ui/item_panels.h"

namespace lw::ui {

namespace {

// A block's heading: words in bold, no frame, no key of its own.
QLabel* Heading(QWidget* parent, const QString& text) {
    auto* label = new QLabel(text, parent);
    QFont bold = label->font();
    bold.setBold(true);
    label->setFont(bold);
    return label;
}

QPushButton* Button(QWidget* parent, const QString& name, const QString& caption) {
    auto* button = Named(new QPushButton(caption, parent), name);
    button->setAutoDefault(false);
    return button;
}

// A button that shows a picture only: its words are its tip and its name.
QPushButton* PictureButton(QWidget* parent, const QString& name, const QIcon& icon,
                           const QString& words) {
    auto* button = Button(parent, name, QString());
    button->setIcon(icon);
    button->setToolTip(words);
    button->setAccessibleName(words);
    return button;
}

// A check box whose line is told by the boxes beside it; it has no words
// of its own and says what it includes to a screen reader.
QCheckBox* Include(QCheckBox* box, const QString& what) {
    box->setAccessibleName(QStringLiteral("Include ") + what);
    box->setToolTip(QStringLiteral("Include ") + what + QStringLiteral(" in the listing"));
    return box;
}

QWidget* Block(QWidget* parent, const QString& name) {
    return Named(new QWidget(parent), name);
}

QListWidget* PlainList(QWidget* parent, const QString& name) {
    return Named(new QListWidget(parent), name);
}

// A list as tall as rows rows.
void ListRows(QListWidget* list, int rows) {
    list->setMinimumHeight(list->fontMetrics().height() * rows + 2 * list->frameWidth() + 6);
}

}  // namespace

// ------------------------------------------------------------------ bindings

QLineEdit* frmLWAC::Text(QWidget* parent, const QString& name, QString* field) {
    auto* edit = Named(new QLineEdit(parent), name);
    m_texts.emplace_back(edit, field);
    return edit;
}

QCheckBox* frmLWAC::Check(QWidget* parent, const QString& name, const QString& caption,
                          bool* field) {
    auto* box = Named(new QCheckBox(caption, parent), name);
    m_checks.emplace_back(box, field);
    return box;
}

QComboBox* frmLWAC::EditableCombo(QWidget* parent, const QString& name, QString* field) {
    auto* box = Named(new QComboBox(parent), name);
    box->setEditable(true);
    box->setInsertPolicy(QComboBox::NoInsert);
    box->setMinimumContentsLength(16);
    box->setSizeAdjustPolicy(QComboBox::AdjustToMinimumContentsLengthWithIcon);
    if (field != nullptr) {
        m_comboTexts.emplace_back(box, field);
    }
    return box;
}

QComboBox* frmLWAC::RowCombo(QWidget* parent, const QString& name, int* field) {
    auto* box = Named(new QComboBox(parent), name);
    box->setMinimumContentsLength(12);
    box->setSizeAdjustPolicy(QComboBox::AdjustToMinimumContentsLengthWithIcon);
    m_comboRows.emplace_back(box, field);
    return box;
}

QListWidget* frmLWAC::MultiList(QWidget* parent, const QString& name, QList<int>* field) {
    auto* list = PlainList(parent, name);
    list->setSelectionMode(QAbstractItemView::MultiSelection);
    m_selections.emplace_back(list, field);
    return list;
}

QWidget* frmLWAC::FavoriteButtons(QWidget* parent, QComboBox* box, int urlType) {
    auto* pair = Block(parent, QString());
    const QString what = box->accessibleName().isEmpty() ? QStringLiteral("this text")
                                                         : box->accessibleName().toLower();
    const QString stem = box->objectName().mid(3);
    auto* add = PictureButton(pair, QStringLiteral("cmdAddFavorite") + stem,
                              QIcon(StarPicture(QStringLiteral("eBay10-99"), devicePixelRatioF())),
                              QStringLiteral("Add ") + what + QStringLiteral(" to the favorites"));
    auto* remove =
        PictureButton(pair, QStringLiteral("cmdRemoveFavorite") + stem,
                      style()->standardIcon(QStyle::SP_TrashIcon),
                      QStringLiteral("Remove ") + what + QStringLiteral(" from the favorites"));
    auto* layout = new QHBoxLayout(pair);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(2);
    layout->addWidget(add);
    layout->addWidget(remove);
    connect(add, &QPushButton::clicked, this,
            [this, box, urlType] { cmdAddFavorite_Click(box, urlType); });
    connect(remove, &QPushButton::clicked, this,
            [this, box, urlType] { cmdRemoveFavorite_Click(box, urlType); });
    return pair;
}

// ------------------------------------------------------------------ menus

void frmLWAC::BuildMenus() {
    auto* bar = Named(new QMenuBar(this), QStringLiteral("mnuBar"));
    QMenu* file = bar->addMenu(QStringLiteral("&File"));
    file->setObjectName(QStringLiteral("mnuFile"));
    QAction* newAuction = file->addAction(QStringLiteral("&New Auction"));
    newAuction->setObjectName(QStringLiteral("mnuNewAuction"));
    newAuction->setShortcut(QKeySequence::New);
    connect(newAuction, &QAction::triggered, this, &frmLWAC::mnuNewAuction_Click);
    QAction* create = file->addAction(QStringLiteral("&Create Blank Auction"));
    create->setObjectName(QStringLiteral("mnuCreate"));
    connect(create, &QAction::triggered, this, &frmLWAC::mnuCreate_Click);
    m_mnuTemplates = file->addMenu(QStringLiteral("From &Template"));
    m_mnuTemplates->setObjectName(QStringLiteral("mnuTemplates"));
    file->addSeparator();
    QAction* exit = file->addAction(QStringLiteral("E&xit"));
    exit->setObjectName(QStringLiteral("mnuExit"));
    connect(exit, &QAction::triggered, this, &frmLWAC::cmdExit_Click);

    m_mnuFont = bar->addMenu(QStringLiteral("F&ont"));
    m_mnuFont->setObjectName(QStringLiteral("mnuFont"));
    const struct {
        const char* name;
        const char* caption;
        const char* tag;
    } tags[] = {{"mnuBold", "&Bold", "B"},
                {"mnuItalic", "&Italic", "I"},
                {"mnuUnderline", "&Underline", "U"},
                {"mnuCenter", "&Center", "CENTER"}};
    for (const auto& entry : tags) {
        QAction* action = m_mnuFont->addAction(QString::fromLatin1(entry.caption));
        action->setObjectName(QString::fromLatin1(entry.name));
        const QString tag = QString::fromLatin1(entry.tag);
        connect(action, &QAction::triggered, this, [this, tag] { mnuFont_Click(tag); });
    }

    QMenu* post = bar->addMenu(QStringLiteral("&Posting"));
    post->setObjectName(QStringLiteral("mnuPost"));
    auto* routes = new QActionGroup(this);
    const struct {
        const char* name;
        const char* caption;
    } options[] = {{"mnuAPost", "Post &Directly"},
                   {"mnuSellPage", "Fill the &Sell Page in the Browser"},
                   {"mnuReviewPage", "Open the &Review Page in the Browser"}};
    for (int i = 0; i < 3; ++i) {
        QAction* action = post->addAction(QString::fromLatin1(options[i].caption));
        action->setObjectName(QString::fromLatin1(options[i].name));
        action->setCheckable(true);
        routes->addAction(action);
        connect(action, &QAction::triggered, this, [this, i] { mnuPostOption_Click(i + 1); });
        m_mnuPost[size_t(i)] = action;
    }
    m_mnuPost[0]->setChecked(true);
    post->addSeparator();
    m_mnuUAWF = post->addAction(QStringLiteral("&Update My Sales When Finished"));
    m_mnuUAWF->setObjectName(QStringLiteral("mnuUAWF"));
    m_mnuUAWF->setCheckable(true);
    layout()->setMenuBar(bar);
}

// ------------------------------------------------------------------ chooser

QWidget* frmLWAC::BuildChooserTab() {
    auto* tab = Named(new QWidget, QStringLiteral("tabChooser"));

    auto* options = Block(tab, QStringLiteral("fraACChoice"));
    auto* optionsLayout = new QVBoxLayout(options);
    optionsLayout->setContentsMargins(0, 0, 0, 0);
    optionsLayout->addWidget(Heading(options, QStringLiteral("Start from")));
    const QString captions[4] = {QStringLiteral("User Defi&ned Templates"),
                                 QStringLiteral("&Auction Drafts"), QString(),
                                 QStringLiteral("Sa&ved Auctions ")};
    for (int i = 0; i < 4; ++i) {
        auto* option =
            Indexed(new QRadioButton(captions[i], options), QStringLiteral("optACChoice"), i);
        optionsLayout->addWidget(option);
        connect(option, &QRadioButton::clicked, this, [this, i] { optACChoice_Click(i); });
        m_optACChoice[size_t(i)] = option;
    }
    optionsLayout->addStretch(1);

    m_chooserPages = Named(new QStackedWidget(tab), QStringLiteral("fraChooserLists"));
    const auto page = [this](const QString& heading, QListWidget* list, QListWidget* details,
                             std::array<QRadioButton*, 2>* sort, const QString& sortName) {
        auto* page = new QWidget(m_chooserPages);
        auto* grid = new QGridLayout(page);
        grid->setContentsMargins(0, 0, 0, 0);
        auto* left = Block(page, QString());
        auto* leftLayout = new QVBoxLayout(left);
        leftLayout->setContentsMargins(0, 0, 0, 0);
        leftLayout->addWidget(Heading(left, heading));
        if (list != nullptr) {
            list->setParent(left);
            leftLayout->addWidget(list, 1);
        }
        if (sort != nullptr) {
            auto* sortRow = new QHBoxLayout;
            sortRow->addWidget(new QLabel(QStringLiteral("Sort:"), left));
            const QString words[2] = {QStringLiteral("Ne&west first"), QStringLiteral("&By name")};
            for (int i = 0; i < 2; ++i) {
                (*sort)[size_t(i)] = Indexed(new QRadioButton(words[i], left), sortName, i);
                sortRow->addWidget((*sort)[size_t(i)]);
            }
            (*sort)[0]->setChecked(true);
            sortRow->addStretch(1);
            leftLayout->addLayout(sortRow);
        }
        auto* right = Block(page, QString());
        auto* rightLayout = new QVBoxLayout(right);
        rightLayout->setContentsMargins(0, 0, 0, 0);
        rightLayout->addWidget(Heading(right, QStringLiteral("Details")));
        details->setParent(right);
        details->setAccessibleName(QStringLiteral("Details"));
        details->setSelectionMode(QAbstractItemView::NoSelection);
        details->setFocusPolicy(Qt::NoFocus);
        details->setWordWrap(true);
        details->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
        rightLayout->addWidget(details, 1);
        grid->addWidget(left, 0, 0);
        grid->addWidget(right, 0, 1);
        grid->setColumnStretch(0, 1);
        grid->setColumnStretch(1, 1);
        m_chooserPages->addWidget(page);
    };
    m_lstUserTemp = PlainList(tab, QStringLiteral("lstUserTemp"));
    m_lstUserTemp->setAccessibleName(QStringLiteral("Templates"));
    m_lstDraft = PlainList(tab, QStringLiteral("lstDraft"));
    m_lstDraft->setAccessibleName(QStringLiteral("Drafts"));
    m_lstOldAuction = PlainList(tab, QStringLiteral("lstOldAuction"));
    m_lstOldAuction->setAccessibleName(QStringLiteral("Saved auctions"));
    const QString detailNames[4] = {QStringLiteral("lstUTDetails"), QStringLiteral("lstADDetails"),
                                    QStringLiteral("lstLADetails"), QStringLiteral("lstOADetails")};
    for (int i = 0; i < 4; ++i) {
        m_details[size_t(i)] = PlainList(tab, detailNames[i]);
    }
    page(QStringLiteral("Your templates"), m_lstUserTemp, m_details[0], nullptr, QString());
    page(QStringLiteral("Your drafts"), m_lstDraft, m_details[1], &m_OptDSort,
         QStringLiteral("OptDSort"));
    page(QStringLiteral("The auction saved last"), nullptr, m_details[2], nullptr, QString());
    page(QStringLiteral("Auctions sent or posted"), m_lstOldAuction, m_details[3], &m_OptOASort,
         QStringLiteral("OptOASort"));

    auto* bottom = Block(tab, QStringLiteral("fraChooserCommands"));
    m_chkGo = Named(new QCheckBox(QStringLiteral("&Just Go (skip this page next time)"), bottom),
                    QStringLiteral("chkGo"));
    m_cmdLoadAuction =
        Button(bottom, QStringLiteral("cmdLoadAuction"), QStringLiteral("&Continue"));
    m_cmdLoadAuction->setDefault(true);
    m_cmdLoadDefault = Button(bottom, QStringLiteral("cmdLoadDefault"), QStringLiteral("D&efault"));
    m_cmdLoadDefault->setToolTip(QStringLiteral("Start from your default settings"));
    auto* bottomLayout = new QHBoxLayout(bottom);
    bottomLayout->setContentsMargins(0, 0, 0, 0);
    bottomLayout->addWidget(m_chkGo);
    bottomLayout->addStretch(1);
    bottomLayout->addWidget(m_cmdLoadAuction);
    bottomLayout->addWidget(m_cmdLoadDefault);

    // Kept for the handlers, never shown.
    m_lblAuctionName = Named(new QLabel(tab), QStringLiteral("lblAuctionName"));
    m_lblAuctionItemData = Named(new QLabel(tab), QStringLiteral("lblAuctionItemData"));
    m_lblAuctionType = Named(new QLabel(tab), QStringLiteral("lblAuctionType"));
    m_chkOverwrite = Named(new QCheckBox(tab), QStringLiteral("chkOverwrite"));
    for (QWidget* hidden : std::initializer_list<QWidget*>{m_lblAuctionName, m_lblAuctionItemData,
                                                           m_lblAuctionType, m_chkOverwrite}) {
        hidden->hide();
    }

    auto* grid = new QGridLayout(tab);
    grid->addWidget(options, 0, 0);
    grid->addWidget(m_chooserPages, 0, 1);
    grid->addWidget(bottom, 1, 0, 1, 2);
    grid->setColumnStretch(1, 1);

    connect(m_lstUserTemp, &QListWidget::currentRowChanged, this, &frmLWAC::lstUserTemp_Click);
    connect(m_lstDraft, &QListWidget::currentRowChanged, this, &frmLWAC::lstDraft_Click);
    connect(m_lstOldAuction, &QListWidget::currentRowChanged, this, &frmLWAC::lstOldAuction_Click);
    for (QListWidget* list : {m_lstUserTemp, m_lstDraft, m_lstOldAuction}) {
        connect(list, &QListWidget::itemDoubleClicked, this, &frmLWAC::cmdLoadAuction_Click);
        list->setContextMenuPolicy(Qt::CustomContextMenu);
        list->installEventFilter(this);
    }
    const struct {
        QListWidget* list;
        const char* name;
        const char* caption;
        void (frmLWAC::*handler)();
    } popups[] = {
        {m_lstUserTemp, "mnuDeleteTemplate", "&Delete Template", &frmLWAC::mnuDeleteTemplate_Click},
        {m_lstDraft, "mnuDeleteDraft", "&Delete Draft", &frmLWAC::mnuDeleteDraft_Click},
        {m_lstOldAuction, "mnuPopupDeleteOldAuction", "&Delete Saved Auction",
         &frmLWAC::mnuPopupDeleteOldAuction_Click}};
    for (const auto& popup : popups) {
        auto* menu = new QMenu(popup.list);
        QAction* action = menu->addAction(QString::fromLatin1(popup.caption));
        action->setObjectName(QString::fromLatin1(popup.name));
        connect(action, &QAction::triggered, this, popup.handler);
        QListWidget* list = popup.list;
        connect(list, &QListWidget::customContextMenuRequested, this,
                [list, menu](const QPoint& at) {
                    if (list->itemAt(at) != nullptr) {
                        list->setCurrentItem(list->itemAt(at));
                        menu->popup(list->viewport()->mapToGlobal(at));
                    }
                });
    }
    for (QRadioButton* sort : m_OptDSort) {
        connect(sort, &QRadioButton::clicked, this, &frmLWAC::OptDSort_Click);
    }
    for (QRadioButton* sort : m_OptOASort) {
        connect(sort, &QRadioButton::clicked, this, &frmLWAC::OptOASort_Click);
    }
    connect(m_cmdLoadAuction, &QPushButton::clicked, this, &frmLWAC::cmdLoadAuction_Click);
    connect(m_cmdLoadDefault, &QPushButton::clicked, this, &frmLWAC::cmdLoadDefault_Click);
    return tab;
}

// ------------------------------------------------------------------ item

QWidget* frmLWAC::BuildItemTab() {
    auto* tab = Named(new QWidget, QStringLiteral("tabItem"));
    m_txtInventoryID = Text(tab, QStringLiteral("txtInventoryID"), &m_doc.txtInventoryID);
    m_txtInventoryID->hide();

    auto* title = Block(tab, QStringLiteral("fraTitle"));
    m_txtItemTitle = Text(title, QStringLiteral("txtItemTitle"), &m_doc.txtItemTitle);
    m_txtItemTitle->installEventFilter(this);
    m_lblTitleLength =
        Named(new QLabel(QStringLiteral("(0)"), title), QStringLiteral("lblTitleLength"));
    auto* show = Check(title, QStringLiteral("chkItemTitle"),
                       QStringLiteral("Sho&w in the listing"), &m_doc.chkItemTitle);
    auto* titleLayout = new QHBoxLayout(title);
    titleLayout->setContentsMargins(0, 0, 0, 0);
    titleLayout->addWidget(BuddyCaption(title, QStringLiteral("&Title:"), m_txtItemTitle));
    titleLayout->addWidget(m_txtItemTitle, 1);
    titleLayout->addWidget(m_lblTitleLength);
    titleLayout->addWidget(show);

    auto* description = Block(tab, QStringLiteral("fraDescription"));
    m_txtDescription = Named(new QPlainTextEdit(description), QStringLiteral("txtDescription"));
    m_txtDescription->setTabChangesFocus(true);
    m_txtDescription->installEventFilter(this);
    m_txtDescription->setPlaceholderText(QStringLiteral(
        "Describe the item; HTML tags are welcome. Enter starts a new line (<BR>)."));
    m_lblRequired[0] = Indexed(new QLabel(QStringLiteral("D&escription"), description),
                               QStringLiteral("lblRequired"), 0);
    m_lblRequired[0]->setBuddy(m_txtDescription);
    auto* descriptionLayout = new QVBoxLayout(description);
    descriptionLayout->setContentsMargins(0, 0, 0, 0);
    descriptionLayout->addWidget(m_lblRequired[0]);
    descriptionLayout->addWidget(m_txtDescription, 1);

    // Prices and quantity, two pairs to a row.
    auto* prices = Block(tab, QStringLiteral("fraPrices"));
    auto* grid = new QGridLayout(prices);
    grid->setContentsMargins(0, 0, 0, 0);
    const auto money = [this, prices](const QString& name, QString* field) {
        QLineEdit* box = Text(prices, name, field);
        box->setAlignment(Qt::AlignRight);
        box->setMaximumWidth(box->fontMetrics().averageCharWidth() * 16);
        box->installEventFilter(this);
        return box;
    };
    QLineEdit* minimum = money(QStringLiteral("txtMinimumBid"), &m_doc.txtMinimumBid);
    m_lblRequired[1] = Indexed(new QLabel(QStringLiteral("Minimum bid"), prices),
                               QStringLiteral("lblRequired"), 1);
    m_lblRequired[1]->setBuddy(minimum);
    m_txtQuantity = money(QStringLiteral("txtQuantity"), &m_doc.txtQuantity);
    m_lblRequired[2] =
        Indexed(new QLabel(QStringLiteral("&Quantity"), prices), QStringLiteral("lblRequired"), 2);
    m_lblRequired[2]->setBuddy(m_txtQuantity);
    QLineEdit* reserve = money(QStringLiteral("txtReserve"), &m_doc.txtReserve);
    QLineEdit* sellPrice = money(QStringLiteral("txtSellPrice"), &m_doc.txtSellPrice);
    m_txtShipping = money(QStringLiteral("txtShipping"), &m_doc.txtShipping);
    auto* method = Named(new QComboBox(prices), QStringLiteral("cmbShippingMethod"));
    method->setSizeAdjustPolicy(QComboBox::AdjustToContents);
    m_comboTexts.emplace_back(method, &m_doc.cmbShippingMethod);
    m_txtInsurance = money(QStringLiteral("txtInsurance"), &m_doc.txtInsurance);
    QLineEdit* itemCost = money(QStringLiteral("txtItemCost"), &m_doc.txtItemCost);
    m_moneyBoxes = {minimum, m_txtShipping, itemCost, reserve, m_txtInsurance, sellPrice};

    grid->addWidget(m_lblRequired[1], 0, 0);
    grid->addWidget(minimum, 0, 1);
    grid->addWidget(m_lblRequired[2], 0, 3);
    grid->addWidget(m_txtQuantity, 0, 4);
    grid->addWidget(BuddyCaption(prices, QStringLiteral("&Reserve"), reserve), 1, 0);
    grid->addWidget(reserve, 1, 1);
    grid->addWidget(BuddyCaption(prices, QStringLiteral("T&ake-it Price"), sellPrice), 1, 3);
    grid->addWidget(sellPrice, 1, 4);
    grid->addWidget(BuddyCaption(prices, QStringLiteral("Shipping"), m_txtShipping), 2, 0);
    grid->addWidget(m_txtShipping, 2, 1);
    grid->addWidget(BuddyCaption(prices, QStringLiteral("Shipping method"), method), 2, 3);
    grid->addWidget(method, 2, 4, Qt::AlignLeft);
    grid->addWidget(BuddyCaption(prices, QStringLiteral("Insuran&ce"), m_txtInsurance), 3, 0);
    grid->addWidget(m_txtInsurance, 3, 1);
    grid->addWidget(BuddyCaption(prices, QStringLiteral("Your item cost"), itemCost), 3, 3);
    grid->addWidget(itemCost, 3, 4);
    grid->setColumnMinimumWidth(2, 24);
    grid->setColumnStretch(5, 1);

    auto* layout = new QVBoxLayout(tab);
    layout->addWidget(title);
    layout->addWidget(description, 1);
    layout->addWidget(prices);

    connect(m_txtItemTitle, &QLineEdit::textChanged, this, &frmLWAC::txtItemTitle_Change);
    connect(m_txtItemTitle, &QLineEdit::editingFinished, this, &frmLWAC::txtItemTitle_LostFocus);
    for (QLineEdit* mirrored : {m_txtQuantity, m_txtShipping, m_txtInsurance}) {
        connect(mirrored, &QLineEdit::textChanged, this, &frmLWAC::txtMirror_Change);
    }
    return tab;
}

// ------------------------------------------------------------------ pictures

QWidget* frmLWAC::BuildPicturesTab() {
    auto* tab = Named(new QWidget, QStringLiteral("tabPictures"));

    auto* listing = Block(tab, QStringLiteral("fraPictureList"));
    m_cmbPictureLink = EditableCombo(listing, QStringLiteral("cmbPictureLink"), nullptr);
    m_cmbPictureLink->setAccessibleName(QStringLiteral("Picture link"));
    QWidget* pictureFavorites = FavoriteButtons(listing, m_cmbPictureLink, 0);
    auto* add = Button(listing, QStringLiteral("cmdAddLink"), QStringLiteral("&Add"));
    m_lstPictureLink = PlainList(listing, QStringLiteral("lstPictureLink"));
    m_lstPictureLink->setAccessibleName(QStringLiteral("Pictures of the listing"));
    auto* buttons = Block(listing, QString());
    auto* ask =
        Button(buttons, QStringLiteral("cmdAddLinkToPictureList"), QStringLiteral("New Lin&k..."));
    m_cmdMoveLink[0] = PictureButton(buttons, QStringLiteral("cmdMoveLinkUp"),
                                     style()->standardIcon(QStyle::SP_ArrowUp),
                                     QStringLiteral("Move the picture up"));
    m_cmdMoveLink[1] = PictureButton(buttons, QStringLiteral("cmdMoveLinkDown"),
                                     style()->standardIcon(QStyle::SP_ArrowDown),
                                     QStringLiteral("Move the picture down"));
    auto* remove = Button(buttons, QStringLiteral("cmdRemoveLink"), QStringLiteral("&Remove"));
    auto* test = Button(buttons, QStringLiteral("cmdTestLink"), QStringLiteral("&Test"));
    test->setToolTip(QStringLiteral("Open the picture in the browser"));
    auto* buttonsLayout = new QVBoxLayout(buttons);
    buttonsLayout->setContentsMargins(0, 0, 0, 0);
    for (QWidget* button :
         std::initializer_list<QWidget*>{ask, m_cmdMoveLink[0], m_cmdMoveLink[1], remove, test}) {
        buttonsLayout->addWidget(button);
    }
    buttonsLayout->addStretch(1);
    auto* size =
        Check(listing, QStringLiteral("chkPictureSize"),
              QStringLiteral("&Clickable thumbnails (175 pixels wide)"), &m_doc.chkPictureSize);
    auto* paragraph =
        Check(listing, QStringLiteral("chkPictureReturn"),
              QStringLiteral("Paragraph aft&er each picture"), &m_doc.chkPictureReturn);
    auto* grid = new QGridLayout(listing);
    grid->setContentsMargins(0, 0, 0, 0);
    grid->addWidget(Heading(listing, QStringLiteral("Pictures in the listing")), 0, 0, 1, 4);
    grid->addWidget(BuddyCaption(listing, QStringLiteral("Picture link:"), m_cmbPictureLink), 1, 0);
    grid->addWidget(m_cmbPictureLink, 1, 1);
    grid->addWidget(pictureFavorites, 1, 2);
    grid->addWidget(add, 1, 3);
    grid->addWidget(m_lstPictureLink, 2, 0, 1, 3);
    grid->addWidget(buttons, 2, 3);
    grid->addWidget(size, 3, 0, 1, 3);
    grid->addWidget(paragraph, 4, 0, 1, 3);
    grid->setColumnStretch(1, 1);
    grid->setRowStretch(2, 1);

    auto* site = Block(tab, QStringLiteral("fraSitePictures"));
    m_cmbEbayPicIconActivate = EditableCombo(site, QStringLiteral("cmbEbayPicIconActivate"),
                                             &m_doc.cmbEbayPicIconActivate);
    m_cmbEbayPicIconActivate->setAccessibleName(QStringLiteral("Picture URL"));
    QWidget* iconFavorites = FavoriteButtons(site, m_cmbEbayPicIconActivate, 0);
    m_chkEbayGallery = Check(site, QStringLiteral("chkEbayGallery"),
                             QStringLiteral("Sho&w in the gallery:"), &m_doc.chkEbayGallery);
    m_cmbEbayGallery = EditableCombo(site, QStringLiteral("cmbEbayGallery"), &m_doc.cmbEbayGallery);
    m_cmbEbayGallery->setAccessibleName(QStringLiteral("Gallery picture"));
    QWidget* galleryFavorites = FavoriteButtons(site, m_cmbEbayGallery, 0);
    auto* siteGrid = new QGridLayout(site);
    siteGrid->setContentsMargins(0, 0, 0, 0);
    siteGrid->addWidget(Heading(site, QStringLiteral("Pictures on the site's item page")), 0, 0, 1,
                        3);
    siteGrid->addWidget(
        BuddyCaption(site, QStringLiteral("Picture URL:"), m_cmbEbayPicIconActivate), 1, 0);
    siteGrid->addWidget(m_cmbEbayPicIconActivate, 1, 1);
    siteGrid->addWidget(iconFavorites, 1, 2);
    siteGrid->addWidget(m_chkEbayGallery, 2, 0);
    siteGrid->addWidget(m_cmbEbayGallery, 2, 1);
    siteGrid->addWidget(galleryFavorites, 2, 2);
    siteGrid->setColumnStretch(1, 1);

    auto* layout = new QVBoxLayout(tab);
    layout->addWidget(listing, 1);
    layout->addSpacing(8);
    layout->addWidget(site);

    connect(add, &QPushButton::clicked, this, &frmLWAC::cmdAddLink_Click);
    connect(ask, &QPushButton::clicked, this, &frmLWAC::cmdAddLinkToPictureList_Click);
    connect(m_cmdMoveLink[0], &QPushButton::clicked, this, [this] { cmdMoveLink_Click(-1); });
    connect(m_cmdMoveLink[1], &QPushButton::clicked, this, [this] { cmdMoveLink_Click(1); });
    connect(remove, &QPushButton::clicked, this, &frmLWAC::cmdRemoveLink_Click);
    connect(test, &QPushButton::clicked, this, &frmLWAC::cmdTestLink_Click);
    connect(m_lstPictureLink, &QListWidget::itemDoubleClicked, this, &frmLWAC::cmdTestLink_Click);
    connect(m_lstPictureLink, &QListWidget::currentRowChanged, this,
            &frmLWAC::lstPictureLink_Click);
    connect(m_chkEbayGallery, &QCheckBox::clicked, this, &frmLWAC::chkEbayGallery_Click);
    return tab;
}

// ------------------------------------------------------------------ style

QWidget* frmLWAC::BuildStyleTab() {
    auto* tab = Named(new QWidget, QStringLiteral("tabStyle"));

    auto* left = Block(tab, QStringLiteral("fraStyle"));
    m_lstTemplateStyle = PlainList(left, QStringLiteral("lstTemplateStyle"));
    ListRows(m_lstTemplateStyle, 7);
    auto* grid = new QGridLayout(left);
    grid->setContentsMargins(0, 0, 0, 0);
    grid->addWidget(BuddyCaption(left, QStringLiteral("&Template style:"), m_lstTemplateStyle), 0,
                    0, 1, 3);
    grid->addWidget(m_lstTemplateStyle, 1, 0, 1, 3);
    const struct {
        const char* name;
        const char* caption;
        QString* field;
    } colours[] = {{"cmbTableBGColor", "T&able background:", &m_doc.cmbTableBGColor},
                   {"cmbThemeColor", "Th&eme:", &m_doc.cmbThemeColor},
                   {"cmbFontColor", "Font colo&r:", &m_doc.cmbFontColor}};
    for (int i = 0; i < 3; ++i) {
        auto* box = Named(new QComboBox(left), QString::fromLatin1(colours[i].name));
        m_comboTexts.emplace_back(box, colours[i].field);
        m_colourBoxes[size_t(i)] = box;
        m_txtColor[size_t(i)] = Indexed(new QLabel(left), QStringLiteral("txtColor"), i);
        m_txtColor[size_t(i)]->setFrameShape(QFrame::Box);
        m_txtColor[size_t(i)]->setFixedSize(48, box->sizeHint().height());
        m_txtColor[size_t(i)]->setAutoFillBackground(true);
        grid->addWidget(BuddyCaption(left, QString::fromLatin1(colours[i].caption), box), 2 + i, 0);
        grid->addWidget(box, 2 + i, 1);
        grid->addWidget(m_txtColor[size_t(i)], 2 + i, 2);
        connect(box, &QComboBox::currentIndexChanged, this, &frmLWAC::cmbColor_Click);
    }
    m_cmbFontType = Named(new QComboBox(left), QStringLiteral("cmbFontType"));
    m_cmbFontType->setMaxVisibleItems(20);
    m_comboTexts.emplace_back(m_cmbFontType, &m_doc.cmbFontType);
    m_lblFontType = Named(new QLabel(left), QStringLiteral("lblFontType"));
    auto* size = RowCombo(left, QStringLiteral("cmbFontSize"), &m_doc.cmbFontSize);
    m_cmbBGImageLink = EditableCombo(left, QStringLiteral("cmbBGImageLink"), &m_doc.cmbBGImageLink);
    m_cmbBGImageLink->setAccessibleName(QStringLiteral("Background picture"));
    QWidget* backgroundFavorites = FavoriteButtons(left, m_cmbBGImageLink, 1);
    auto* tile = Check(left, QStringLiteral("chkBGImage"),
                       QStringLiteral("Tile it over the &whole page"), &m_doc.chkBGImage);
    grid->addWidget(BuddyCaption(left, QStringLiteral("Font fa&ce:"), m_cmbFontType), 5, 0);
    grid->addWidget(m_cmbFontType, 5, 1);
    grid->addWidget(BuddyCaption(left, QStringLiteral("Si&ze:"), size), 6, 0);
    grid->addWidget(size, 6, 1);
    grid->addWidget(m_lblFontType, 7, 1, 1, 2);
    grid->addWidget(BuddyCaption(left, QStringLiteral("Bac&kground picture:"), m_cmbBGImageLink), 8,
                    0);
    grid->addWidget(m_cmbBGImageLink, 8, 1);
    grid->addWidget(backgroundFavorites, 8, 2);
    grid->addWidget(tile, 9, 1, 1, 2);
    grid->setRowStretch(10, 1);
    grid->setColumnStretch(1, 1);

    auto* right = Block(tab, QStringLiteral("fraTemplatePreview"));
    auto* rightLayout = new QVBoxLayout(right);
    rightLayout->setContentsMargins(0, 0, 0, 0);
    rightLayout->addWidget(Heading(right, QStringLiteral("How the style looks")));
    for (size_t i = 0; i < m_lists.lstTemplateStyle.size(); ++i) {
        auto* picture = Indexed(new QLabel(right), QStringLiteral("imgTemplatePreview"), int(i));
        picture->setAlignment(Qt::AlignTop | Qt::AlignHCenter);
        picture->setFrameShape(QFrame::StyledPanel);
        picture->hide();
        rightLayout->addWidget(picture, 1);
        m_imgTemplatePreview.push_back(picture);
    }
    rightLayout->addStretch(0);

    auto* layout = new QHBoxLayout(tab);
    layout->addWidget(left, 3);
    layout->addWidget(right, 2);

    connect(m_lstTemplateStyle, &QListWidget::currentRowChanged, this,
            &frmLWAC::lstTemplateStyle_Click);
    connect(m_cmbFontType, &QComboBox::currentIndexChanged, this, &frmLWAC::cmbFontType_Click);
    return tab;
}

// ------------------------------------------------------------------ details

QWidget* frmLWAC::BuildDetailsTab() {
    auto* tab = Named(new QWidget, QStringLiteral("tabDetails"));
    auto* grid = new QGridLayout(tab);
    int row = 0;
    const auto heading = [&](const QString& text) {
        if (row > 0) {
            grid->setRowMinimumHeight(row++, 6);
        }
        grid->addWidget(Heading(tab, text), row++, 0, 1, 4);
    };
    // One line: its check, its caption (a box or fixed words) and its statement.
    const auto line = [&](QCheckBox* include, QWidget* caption, QComboBox* statement, int urlType) {
        grid->addWidget(include, row, 0);
        grid->addWidget(caption, row, 1);
        if (statement != nullptr) {
            grid->addWidget(statement, row, 2);
            grid->addWidget(FavoriteButtons(tab, statement, urlType), row, 3);
        }
        ++row;
    };
    const auto fixedCaption = [&](int acIndex, const QString& words, QLabel** mirror,
                                  const QString& mirrorName) {
        auto* box = Block(tab, QString());
        auto* boxLayout = new QHBoxLayout(box);
        boxLayout->setContentsMargins(0, 0, 0, 0);
        boxLayout->addWidget(Indexed(new QLabel(words, box), QStringLiteral("lblAC"), acIndex));
        *mirror = Named(new QLabel(box), mirrorName);
        QFont bold = (*mirror)->font();
        bold.setBold(true);
        (*mirror)->setFont(bold);
        boxLayout->addWidget(*mirror);
        boxLayout->addStretch(1);
        return box;
    };

    heading(QStringLiteral("Item details"));
    for (int i = 0; i < 2; ++i) {
        auto* include = Include(
            Indexed(new QCheckBox(tab), QStringLiteral("chkProductDetails"), i),
            i == 0 ? QStringLiteral("the condition line") : QStringLiteral("the comments line"));
        m_checks.emplace_back(include, &m_doc.chkProductDetails[size_t(i)]);
        auto* caption = Indexed(new QLineEdit(tab), QStringLiteral("txtProductDetails"), i);
        caption->setAccessibleName(QStringLiteral("Caption"));
        m_texts.emplace_back(caption, &m_doc.txtProductDetails[size_t(i)]);
        auto* statement = EditableCombo(tab, QString(), &m_doc.cmbProductDetails[size_t(i)]);
        Indexed(statement, QStringLiteral("cmbProductDetails"), i);
        statement->setAccessibleName(i == 0 ? QStringLiteral("Condition")
                                            : QStringLiteral("Comments"));
        statement->lineEdit()->setPlaceholderText(QStringLiteral("Type it, or choose a favorite"));
        m_cmbProductDetails[size_t(i)] = statement;
        line(include, caption, statement, 3 + i);
    }
    auto* quantity = Include(Indexed(new QCheckBox(tab), QStringLiteral("chkProductDetails"), 2),
                             QStringLiteral("the quantity line"));
    m_checks.emplace_back(quantity, &m_doc.chkProductDetails[2]);
    line(
        quantity,
        fixedCaption(0, QStringLiteral("Quantity:"), &m_lblQuantity, QStringLiteral("lblQuantity")),
        nullptr, 0);

    heading(QStringLiteral("Terms of sale"));
    const QString terms[5] = {
        QStringLiteral("the shipping cost line"), QStringLiteral("the shipping insurance line"),
        QStringLiteral("the payment line"), QStringLiteral("the policies line"),
        QStringLiteral("the comments on the sale")};
    for (int i = 0; i < 5; ++i) {
        auto* include =
            Include(Indexed(new QCheckBox(tab), QStringLiteral("chkTransaction"), i), terms[i]);
        m_checks.emplace_back(include, &m_doc.chkTransaction[size_t(i)]);
        QWidget* caption = nullptr;
        if (i == 0) {
            caption = fixedCaption(15, QStringLiteral("Shipping Cost:"), &m_lblShipCost,
                                   QStringLiteral("lblShipCost"));
        } else if (i == 1) {
            caption = fixedCaption(16, QStringLiteral("Shipping Insurance:"), &m_lblShipInsurance,
                                   QStringLiteral("lblShipInsurance"));
        } else {
            auto* edit = Indexed(new QLineEdit(tab), QStringLiteral("txtTransaction"), i - 2);
            edit->setAccessibleName(QStringLiteral("Caption"));
            m_texts.emplace_back(edit, &m_doc.txtTransaction[size_t(i - 2)]);
            caption = edit;
        }
        auto* statement = EditableCombo(tab, QString(), &m_doc.cmbTransaction[size_t(i)]);
        Indexed(statement, QStringLiteral("cmbTransaction"), i);
        statement->setAccessibleName(QStringLiteral("Statement"));
        statement->lineEdit()->setPlaceholderText(QStringLiteral("Type it, or choose a favorite"));
        m_cmbTransaction[size_t(i)] = statement;
        line(include, caption, statement, 5 + i);
    }

    heading(QStringLiteral("Other captions"));
    for (int i = 0; i < 3; ++i) {
        auto* include = Include(Indexed(new QCheckBox(tab), QStringLiteral("chkOtherCaption"), i),
                                QStringLiteral("this caption"));
        m_checks.emplace_back(include, &m_doc.chkOtherCaption[size_t(i)]);
        auto* caption = Indexed(new QLineEdit(tab), QStringLiteral("txtOtherCaption"), i);
        caption->setAccessibleName(i == 2 ? QStringLiteral("HTML of a live service")
                                          : QStringLiteral("Caption"));
        if (i == 2) {
            caption->setPlaceholderText(
                QStringLiteral("HTML of a live service, such as a counter"));
        }
        m_texts.emplace_back(caption, &m_doc.txtOtherCaption[size_t(i)]);
        grid->addWidget(include, row, 0);
        grid->addWidget(caption, row++, 1, 1, 3);
    }
    grid->setColumnStretch(1, 2);
    grid->setColumnStretch(2, 3);
    grid->setRowStretch(row, 1);
    return tab;
}

// ------------------------------------------------------------------ links

QWidget* frmLWAC::BuildLinksTab() {
    auto* tab = Named(new QWidget, QStringLiteral("tabLinks"));
    auto* grid = new QGridLayout(tab);
    grid->addWidget(Heading(tab, QStringLiteral("Links in the listing")), 0, 0, 1, 4);
    grid->addWidget(new QLabel(QStringLiteral("Words shown"), tab), 1, 1);
    grid->addWidget(new QLabel(QStringLiteral("Address"), tab), 1, 2);
    const auto link = [&](int row, QCheckBox* include, QLineEdit* caption, QLineEdit* address) {
        grid->addWidget(include, row, 0);
        caption->setAccessibleName(QStringLiteral("Words shown"));
        grid->addWidget(caption, row, 1);
        if (address != nullptr) {
            address->setAccessibleName(QStringLiteral("Address"));
            grid->addWidget(address, row, 2);
        }
    };
    QCheckBox* mail =
        Include(Check(tab, QStringLiteral("chkEmailLink"), QString(), &m_doc.chkEmailLink),
                QStringLiteral("the mail link"));
    QLineEdit* mailCaption =
        Text(tab, QStringLiteral("txtEmailLinkCaption"), &m_doc.txtEmailLinkCaption);
    QLineEdit* mailAddress = Text(tab, QStringLiteral("txtEmailLinkText"), &m_doc.txtEmailLinkText);
    mailAddress->setPlaceholderText(QStringLiteral("your mail address"));
    link(2, mail, mailCaption, mailAddress);
    for (int i = 0; i < 2; ++i) {
        auto* include = Include(Indexed(new QCheckBox(tab), QStringLiteral("chkLink"), i),
                                QStringLiteral("this link"));
        m_checks.emplace_back(include, &m_doc.chkLink[size_t(i)]);
        auto* caption = Indexed(new QLineEdit(tab), QStringLiteral("txtLinkCaption"), i);
        m_texts.emplace_back(caption, &m_doc.txtLinkCaption[size_t(i)]);
        auto* address = Indexed(new QLineEdit(tab), QStringLiteral("txtLinkLink"), i);
        m_texts.emplace_back(address, &m_doc.txtLinkLink[size_t(i)]);
        link(3 + i, include, caption, address);
    }
    QCheckBox* auctions = Include(
        Check(tab, QStringLiteral("chkEbayAuctionLink"), QString(), &m_doc.chkEbayAuctionLink),
        QStringLiteral("the link to your other auctions"));
    link(5, auctions, Text(tab, QStringLiteral("txtEbayAuctionLink"), &m_doc.txtEbayAuctionLink),
         nullptr);
    grid->addWidget(new QLabel(QStringLiteral("(to your other auctions on the site)"), tab), 5, 2);

    grid->setRowMinimumHeight(6, 12);
    grid->addWidget(Heading(tab, QStringLiteral("Payment logo and counter")), 7, 0, 1, 4);
    auto* logo = RowCombo(tab, QStringLiteral("cmbPayPalLogo"), &m_doc.cmbPayPalLogo);
    auto* address = Text(tab, QStringLiteral("txtPayPalAddress"), &m_doc.txtPayPalAddress);
    auto* counter = RowCombo(tab, QStringLiteral("cmbCounterStyle"), &m_doc.cmbCounterStyle);
    grid->addWidget(BuddyCaption(tab, QStringLiteral("PayPal logo:"), logo), 8, 1);
    grid->addWidget(logo, 9, 1);
    grid->addWidget(BuddyCaption(tab, QStringLiteral("PayPal address:"), address), 8, 2);
    grid->addWidget(address, 9, 2);
    grid->addWidget(BuddyCaption(tab, QStringLiteral("Counter:"), counter), 10, 1);
    grid->addWidget(counter, 11, 1);
    grid->setColumnStretch(1, 2);
    grid->setColumnStretch(2, 3);
    grid->setRowStretch(12, 1);
    return tab;
}

// ------------------------------------------------------------------ site listing

QWidget* frmLWAC::BuildListingTab() {
    auto* tab = Named(new QWidget, QStringLiteral("tabListing"));
    const auto required = [this](QWidget* parent, int index, const QString& words, QWidget* buddy) {
        auto* label = Indexed(new QLabel(words, parent), QStringLiteral("lblRequiredeBay"), index);
        label->setBuddy(buddy);
        m_lblRequiredeBay[size_t(index)] = label;
        return label;
    };

    auto* fields = Block(tab, QStringLiteral("fraListingFields"));
    auto* grid = new QGridLayout(fields);
    grid->setContentsMargins(0, 0, 0, 0);
    m_txtEbayTitle = Text(fields, QStringLiteral("txtEbayTitle"), &m_doc.txtEbayTitle);
    m_txtEbayTitle->setMaxLength(45);
    grid->addWidget(required(fields, 1, QStringLiteral("Title (0)"), m_txtEbayTitle), 0, 0);
    grid->addWidget(m_txtEbayTitle, 0, 1, 1, 3);

    m_cmbEbayCategory = EditableCombo(fields, QStringLiteral("cmbEbayCategory"), nullptr);
    m_cmbEbayCategory->setToolTip(
        QStringLiteral("Type a category number or name and press Enter, or browse"));
    auto* browse =
        Button(fields, QStringLiteral("cmdBrowseCategory"), QStringLiteral("Bro&wse..."));
    auto* removeCategory = PictureButton(fields, QStringLiteral("cmdRemoveCat"),
                                         style()->standardIcon(QStyle::SP_TrashIcon),
                                         QStringLiteral("Remove the category from the favorites"));
    m_lbleBayCat = Named(new QLabel(fields), QStringLiteral("lbleBayCat"));
    m_lbleBayCat->hide();
    grid->addWidget(required(fields, 0, QStringLiteral("Category"), m_cmbEbayCategory), 1, 0);
    grid->addWidget(m_cmbEbayCategory, 1, 1);
    grid->addWidget(browse, 1, 2);
    grid->addWidget(removeCategory, 1, 3);

    auto* duration = Named(new QComboBox(fields), QStringLiteral("cmbEbayDuration"));
    m_comboTexts.emplace_back(duration, &m_doc.cmbEbayDuration);
    grid->addWidget(required(fields, 2, QStringLiteral("Duration (days)"), duration), 2, 0);
    grid->addWidget(duration, 2, 1, Qt::AlignLeft);
    auto* location =
        Text(fields, QStringLiteral("txtItemLocationEbay"), &m_doc.txtItemLocationEbay);
    grid->addWidget(required(fields, 3, QStringLiteral("Item location"), location), 3, 0);
    grid->addWidget(location, 3, 1, 1, 3);
    auto* region = RowCombo(fields, QStringLiteral("cmbEbayRegion"), &m_doc.cmbEbayRegion);
    grid->addWidget(required(fields, 4, QStringLiteral("Region"), region), 4, 0);
    grid->addWidget(region, 4, 1, 1, 3);
    auto* country = RowCombo(fields, QStringLiteral("cmbEbayCountry"), &m_doc.cmbEbayCountry);
    grid->addWidget(required(fields, 5, QStringLiteral("Country"), country), 5, 0);
    grid->addWidget(country, 5, 1, 1, 3);

    auto* where = Block(fields, QStringLiteral("fraEbayWorldShipping"));
    auto* whereLayout = new QVBoxLayout(where);
    whereLayout->setContentsMargins(0, 0, 0, 0);
    const QString choices[3] = {QStringLiteral("Domesti&c only"),
                                QStringLiteral("Int&ernational shipping"),
                                QStringLiteral("US &and the following regions")};
    for (int i = 0; i < 3; ++i) {
        m_optEbayWorldShipping[size_t(i)] =
            Indexed(new QRadioButton(choices[i], where), QStringLiteral("optEbayWorldShipping"), i);
        whereLayout->addWidget(m_optEbayWorldShipping[size_t(i)]);
        connect(m_optEbayWorldShipping[size_t(i)], &QRadioButton::clicked, this,
                &frmLWAC::optEbayWorldShipping_Click);
    }
    m_lstEbayShiptoCountries = PlainList(where, QStringLiteral("lstEbayShiptoCountries"));
    m_lstEbayShiptoCountries->setSelectionMode(QAbstractItemView::MultiSelection);
    m_lstEbayShiptoCountries->setAccessibleName(QStringLiteral("Regions shipped to"));
    ListRows(m_lstEbayShiptoCountries, 5);
    whereLayout->addWidget(m_lstEbayShiptoCountries, 1);
    auto* whereLabel =
        required(fields, 8, QStringLiteral("Where will you ship"), m_optEbayWorldShipping[0]);
    whereLabel->setAlignment(Qt::AlignLeft | Qt::AlignTop);
    grid->addWidget(whereLabel, 6, 0);
    grid->addWidget(where, 6, 1, 1, 3);
    grid->setColumnStretch(1, 1);
    grid->setRowStretch(6, 1);

    auto* options = Block(tab, QStringLiteral("fraEbayOptions"));
    auto* optionsLayout = new QVBoxLayout(options);
    optionsLayout->setContentsMargins(0, 0, 0, 0);
    auto* optionList = MultiList(options, QStringLiteral("lstEbayOptions"), &m_doc.lstEbayOptions);
    optionsLayout->addWidget(BuddyCaption(options, QStringLiteral("Listing options:"), optionList));
    optionsLayout->addWidget(optionList, 5);
    m_lstEbayGiftIcon = PlainList(options, QStringLiteral("lstEbayGiftIcon"));
    optionsLayout->addWidget(
        BuddyCaption(options, QStringLiteral("Gift icon:"), m_lstEbayGiftIcon));
    optionsLayout->addWidget(m_lstEbayGiftIcon, 9);

    auto* layout = new QHBoxLayout(tab);
    layout->addWidget(fields, 3);
    layout->addWidget(options, 2);

    connect(m_cmbEbayCategory->lineEdit(), &QLineEdit::returnPressed, this,
            &frmLWAC::cmbEbayCategory_KeyEnter);
    connect(browse, &QPushButton::clicked, this, &frmLWAC::cmdBrowseCategory_Click);
    connect(removeCategory, &QPushButton::clicked, this, &frmLWAC::cmdRemoveCat_Click);
    return tab;
}

// ------------------------------------------------------------------ payment

QWidget* frmLWAC::BuildPaymentTab() {
    auto* tab = Named(new QWidget, QStringLiteral("tabPayment"));

    auto* methods = Block(tab, QStringLiteral("fraPaymentMethods"));
    auto* methodsLayout = new QVBoxLayout(methods);
    methodsLayout->setContentsMargins(0, 0, 0, 0);
    auto* accepted =
        MultiList(methods, QStringLiteral("lstEbayAcceptedPayment"), &m_doc.lstEbayAcceptedPayment);
    m_lblRequiredeBay[6] = Indexed(new QLabel(QStringLiteral("Payment methods"), methods),
                                   QStringLiteral("lblRequiredeBay"), 6);
    m_lblRequiredeBay[6]->setBuddy(accepted);
    methodsLayout->addWidget(m_lblRequiredeBay[6]);
    methodsLayout->addWidget(accepted, 3);
    m_lstEbayShippingPref =
        MultiList(methods, QStringLiteral("lstEbayShippingPref"), &m_doc.lstEbayShippingPref);
    // One choice only: a click clears every other row.
    m_lstEbayShippingPref->setSelectionMode(QAbstractItemView::SingleSelection);
    m_lblRequiredeBay[7] = Indexed(new QLabel(QStringLiteral("Who pays shipping"), methods),
                                   QStringLiteral("lblRequiredeBay"), 7);
    m_lblRequiredeBay[7]->setBuddy(m_lstEbayShippingPref);
    methodsLayout->addWidget(m_lblRequiredeBay[7]);
    methodsLayout->addWidget(m_lstEbayShippingPref, 1);

    auto* online = Block(tab, QStringLiteral("fraOnlinePayment"));
    auto* grid = new QGridLayout(online);
    grid->setContentsMargins(0, 0, 0, 0);
    grid->addWidget(Heading(online, QStringLiteral("Online payment")), 0, 0, 1, 3);
    grid->addWidget(Check(online, QStringLiteral("chkbillpointCCAccepted"),
                          QStringLiteral("Accept &Credit Cards"), &m_doc.chkbillpointCCAccepted),
                    1, 0, 1, 3);
    grid->addWidget(
        Check(online, QStringLiteral("chkbillpointECAccepted"),
              QStringLiteral("Accept Electronic Chec&ks"), &m_doc.chkbillpointECAccepted),
        2, 0, 1, 3);
    m_chkbillpointIPAccepted =
        Check(online, QStringLiteral("chkbillpointIPAccepted"),
              QStringLiteral("Enable Instant Pu&rchase"), &m_doc.chkbillpointIPAccepted);
    grid->addWidget(m_chkbillpointIPAccepted, 3, 0, 1, 3);
    const struct {
        const char* name;
        const char* caption;
        QString* field;
    } boxes[] = {{"txtipShippingFee", "Shipping, handling, ins.:", &m_doc.txtipShippingFee},
                 {"txtipShippingXFee", "Additional shipping:", &m_doc.txtipShippingXFee},
                 {"txtipTax", "Sales tax (%):", &m_doc.txtipTax}};
    for (int i = 0; i < 3; ++i) {
        QLineEdit* box = Text(online, QString::fromLatin1(boxes[i].name), boxes[i].field);
        box->setAlignment(Qt::AlignRight);
        box->setMaximumWidth(box->fontMetrics().averageCharWidth() * 14);
        box->installEventFilter(this);
        m_ipBoxes[size_t(i)] = box;
        grid->addWidget(BuddyCaption(online, QString::fromLatin1(boxes[i].caption), box), 4 + i, 1);
        grid->addWidget(box, 4 + i, 2);
    }
    m_lstipTaxState = PlainList(online, QStringLiteral("lstipTaxState"));
    ListRows(m_lstipTaxState, 4);
    grid->addWidget(BuddyCaption(online, QStringLiteral("Tax state:"), m_lstipTaxState), 7, 1,
                    Qt::AlignTop);
    grid->addWidget(m_lstipTaxState, 7, 2);
    m_lblipReturnPolicy = Named(new QLabel(online), QStringLiteral("lblipReturnPolicy"));
    m_lblipReturnPolicy->setWordWrap(true);
    m_cmdEditPolicy = Button(online, QStringLiteral("cmdEditPolicy"), QStringLiteral("Edi&t..."));
    grid->addWidget(new QLabel(QStringLiteral("Return policy:"), online), 8, 1, Qt::AlignTop);
    grid->addWidget(m_lblipReturnPolicy, 8, 2);
    grid->addWidget(m_cmdEditPolicy, 9, 2, Qt::AlignLeft);
    grid->addWidget(
        Check(online, QStringLiteral("chkAddbillpointicon"),
              QStringLiteral("&Add the payment icon to the listing"), &m_doc.chkAddbillpointicon),
        10, 0, 1, 3);
    grid->setColumnMinimumWidth(0, 16);
    grid->setColumnStretch(2, 1);
    grid->setRowStretch(11, 1);

    auto* layout = new QHBoxLayout(tab);
    layout->addWidget(methods, 1);
    layout->addWidget(online, 1);

    connect(m_lstEbayShippingPref, &QListWidget::itemClicked, this,
            &frmLWAC::lstEbayShippingPref_Click);
    connect(m_chkbillpointIPAccepted, &QCheckBox::clicked, this,
            &frmLWAC::chkbillpointIPAccepted_Click);
    connect(m_cmdEditPolicy, &QPushButton::clicked, this, &frmLWAC::cmdEditPolicy_Click);
    return tab;
}

}  // namespace lw::ui
