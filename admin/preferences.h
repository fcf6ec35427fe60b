// SPDX-License-Identifier: GPL-3.0-or-later
// The user preferences without a window: what the preferences window shows
// for the current user (Users, UserSites, Global and the view settings), the
// character filters and the checks that run while a field is edited, the
// password change, and the one write of everything when the user presses
// Update. Messages and questions go through the Ui port. Nothing here knows a
// widget; the window only copies its controls into a Preferences and back.
#pragma once

#include <QList>
#include <QString>
#include <QStringList>
#include <array>

#include "core/session.h"
#include "core/store.h"
#include "core/ui_port.h"
#include "update/rules.h"

namespace lw::admin {

// txtUserPref 0 to 33. Index to column:
//   0-9   SFirstName SMiddleName SLastName STitle SCompanyName AddressStreet1
//         AddressStreet2 City State zipcode
//   10-19 PFirstName PMiddleName PLastName PTitle PCompanyName PAddressStreet1
//         PAddressStreet2 PCity PState PZIPCode
//   20 UserName (shown only)  21 ReplyEmailAddress  22 SalesTaxRate in percent
//   23 MailServer  24 UserSites.UserID  25 UserSites.SiteEmailAddress
//   26 UserSites.LocationPref  27-32 the picture publisher's FTP defaults
//   (checked here, stored by the publisher)  33 the site password (hidden),
//   kept by core/secrets.h
inline constexpr int kUserPrefCount = 34;
inline constexpr int kPrefUserName = 20;
inline constexpr int kPrefReplyEmail = 21;
inline constexpr int kPrefSalesTax = 22;
inline constexpr int kPrefMailServer = 23;
inline constexpr int kPrefUserId = 24;
inline constexpr int kPrefSiteEmail = 25;
inline constexpr int kPrefLocation = 26;
inline constexpr int kPrefFtpZip = 27;
inline constexpr int kPrefFtpHost = 30;
inline constexpr int kPrefFtpDirectory = 32;
inline constexpr int kPrefPassword = 33;

// The Users column of indexes 0 to 19; empty for the others.
QString UserPrefColumn(int index);

// The rule lists live in store 1 (info.pro).
inline constexpr int kPreferenceListStore = update::kInfoStore;

// The rows of the lists that come from the rule store, in rule order.
struct PreferenceLists {
    QStringList regions;          // lstRegions, section Regions
    QStringList countries;        // cmbCountryShipping, cmbCountryPayment, cmbeBayCountryDefault
    QStringList shipping;         // lstShippingPref, section Shipping; row 0: no preference
    QStringList payment;          // lstPaymentPref, section Payment
    QStringList shippingRegions;  // lstShippingRegions, section Shipping Regions
};
PreferenceLists LoadPreferenceLists(const update::RuleStore& rules);
PreferenceLists LoadPreferenceLists();

// Fixed captions and the values that go with them, by list position.
const QStringList& ConnectionCaptions();  // optConnection 0 to 4
const QStringList& SaleOverEntries();     // cmbSaleOverPref
const QStringList& SaleOverTags();        // SHS SHE SHR FBL FBR
const QStringList& WinningBidOverEntries();
const QStringList& WinningBidOverTags();  // IRR IRE FBL FBR
const QStringList& ViewOrderFields();     // lstAOrder / lstCOrder: EndDate HighBid ...
const QStringList& ViewOrderCaptions();
const QStringList& TimeLeftCaptions();  // lstTimeLeftOptions
const QList<int>& TimeLeftData();       // its item data, same order
const QStringList& DurationEntries();   // lstDuration
// The number a duration entry starts with ("7 days" -> 7).
qint64 DurationDays(const QString& entry);
// The list position of a removal tag, a time-left interval or a number of
// days; -1 when none matches.
int TagIndex(const QStringList& tags, const QString& tag);
int TimeLeftIndexFor(qint64 interval);
int DurationIndexFor(qint64 days);

// The literal that stands for the maker's mail server in MailServer.
QString TolvaneMailServer();

enum class ShipScope { DomesticOnly, International, USPlus };

// One of the two view groups: the sold-archive view (chkViewArchiveGroup and
// txtAInterval, lstAOrder, chkAAscending, chkADescending) or the current view.
struct ViewGroup {
    bool enabled = false;
    QString interval = QStringLiteral("0");
    int order = 0;  // position in ViewOrderFields()
    bool descending = false;
};
// What unticking a group leaves: order 0 and "0", ascending for the archive
// view and descending for the current view.
ViewGroup ViewGroupReset(bool currentView);
// Choosing an order sets the direction: HighBid descending, any other ascending.
bool OrderMeansDescending(int order);

// Everything the preferences window edits, as the controls hold it.
struct Preferences {
    std::array<QString, kUserPrefCount> field;
    int connection = 0;  // optConnection
    QString proxyServer;
    QString proxyPort;
    QString countryShipping;  // texts of the country lists
    QString countryPayment;
    QString shipFromCountry;  // cmbeBayCountryDefault
    int saleOverPref = -1;    // list positions; -1: nothing chosen
    int winningBidOver = -1;
    QString region;  // lstRegions; empty: nothing chosen
    qint64 duration = 0;
    QStringList shippingPref;  // selected texts, in list order
    QStringList paymentPref;
    bool billpoint = false;
    ShipScope shipScope = ShipScope::DomesticOnly;
    QStringList shippingRegions;  // selected texts
    ViewGroup archiveView;
    ViewGroup currentView = ViewGroupReset(true);
    bool autoUpdateTimeLeft = false;
    int timeLeftOption = -1;  // position in lstTimeLeftOptions
    bool tracking = false;    // chkTracking: the usage report, off until switched on
};

// cmdReset: every field from the store and the settings. Throws StoreError
// with "No Valid Current User Set" when the user has no Users row.
Preferences LoadPreferences(core::Database& db, const QString& userName,
                            const PreferenceLists& lists, const update::RuleStore& rules);
// The same, telling a missing user through the Ui; false then.
bool ResetPreferences(core::Database& db, const QString& userName, const PreferenceLists& lists,
                      const update::RuleStore& rules, Preferences& out, core::Ui& ui);

// Filter while typing: whether a typed character may go into field index.
// Backspace is never filtered. The country positions are those of
// cmbCountryShipping and cmbCountryPayment (0: the first country).
bool AcceptsCharacter(int index, QChar c, int countryShippingIndex, int countryPaymentIndex);

// The checks when the user leaves field index. text may be corrected; focusBack
// asks the window to put the cursor back into the field.
struct FieldCheck {
    QString text;
    bool focusBack = false;
};
FieldCheck LeaveField(int index, const QString& text, core::Ui& ui);

// The proxy controls for a connection option: shown above option 2, with an
// empty port filled in as "80".
struct ProxyControls {
    bool visible = false;
    QString port;
};
ProxyControls ConnectionChosen(int option, const QString& port);

// lstShippingPref: while row 0 (no preference) is selected no other row is.
QList<int> ShippingSelection(const QList<int>& selectedRows);

// cmdUpdatePassword. storedPassword is field 33; it takes the new text only
// when every step passes. The store is written later by SavePreferences.
enum class PasswordChange { NotEntered, WrongOld, Mismatch, Changed };
PasswordChange UpdatePassword(QString& storedPassword, const QString& oldPassword,
                              const QString& newPassword, const QString& repeatPassword,
                              core::Ui& ui);

// chkTracking: Track is "OFF" when unticked, "ON" otherwise, written at once.
void SaveTracking(bool on);

// cmdUpdate, steps 1, 2, 4, 5 and 6: the view settings, the Users row, the
// first UserSites row and Global. Returns the time-left timer to apply. Throws
// StoreError ("No Valid Current User Set" when the user has no Users row).
core::TimeLeftTimer SavePreferences(core::Database& db, const QString& userName,
                                    const Preferences& prefs, const PreferenceLists& lists,
                                    const update::RuleStore& rules);

}  // namespace lw::admin
