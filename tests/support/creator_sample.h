// SPDX-License-Identifier: GPL-3.0-or-later
// Creator documents for the suites and the benchmark: one with every part of a
// listing filled and one with only what a listing needs, over the lists the
// shipped rules give. Values only; nothing here is checked.
#pragma once

#include <QString>
#include <QStringList>

#include "creator/creator_document.h"

namespace lw::test {

inline QString SamplePicture(int n) {
    return QStringLiteral("http://127.0.0.1:8750/pictures/lantern-%1.jpg").arg(n);
}

// Every element on: title, five pictures, details, terms, captions, the
// payment line, links, colours and a font.
inline creator::CreatorDocument FullSampleDocument(const creator::CreatorLists& lists) {
    creator::CreatorDocument doc = creator::NewCreatorDocument(lists);
    doc.chkItemTitle = true;
    doc.txtItemTitle = QStringLiteral("Brass ship's lantern, about 1920");
    doc.txtEbayTitle = creator::EbayTitleFor(doc.txtItemTitle);
    doc.txtDescription = QStringLiteral(
        "<P>A brass ship's lantern with its <B>original</B> red glass and a working wick.</P>"
        "<P>Some dents at the base; the handle is firm. Height 34 cm.</P>");
    doc.txtMinimumBid = QStringLiteral("$25.00");
    doc.txtQuantity = QStringLiteral("1");
    doc.txtShipping = QStringLiteral("$12.50");
    doc.txtInsurance = QStringLiteral("$2.00");
    doc.txtReserve = QStringLiteral("$60.00");
    for (int n = 1; n <= 5; ++n) {
        doc.lstPictureLink << SamplePicture(n);
    }
    doc.chkPictureSize = true;
    doc.chkPictureReturn = true;
    doc.chkProductDetails = {true, true, true};
    doc.cmbProductDetails = {QStringLiteral("Used, good"),
                             QStringLiteral("From a harbour master's estate")};
    doc.chkTransaction = {true, true, true, true, true};
    doc.cmbTransaction = {QStringLiteral("within the country"), QStringLiteral("optional"),
                          QStringLiteral("Money order or personal check"),
                          QStringLiteral("Returns within 7 days"),
                          QStringLiteral("Combined shipping on request")};
    doc.chkOtherCaption = {true, true, true};
    doc.txtOtherCaption[1] = QStringLiteral("Ships the next day");
    doc.txtOtherCaption[2] = QStringLiteral("<I>Ask about the matching pair.</I>");
    doc.chkEmailLink = true;
    doc.txtEmailLinkText = QStringLiteral("darcy@example.org");
    doc.chkLink = {true, true};
    doc.txtLinkLink = {QStringLiteral("http://127.0.0.1:8750/shop"),
                       QStringLiteral("http://127.0.0.1:8750/lanterns")};
    doc.chkEbayAuctionLink = true;
    doc.cmbPayPalLogo = lists.cmbPayPalLogo.size() > 1 ? 1 : 0;
    doc.txtPayPalAddress = QStringLiteral("darcy@example.org");
    doc.cmbThemeColor = QStringLiteral("Matte Blue");
    doc.cmbFontColor = QStringLiteral("Dark Gray");
    doc.cmbTableBGColor = QStringLiteral("Pastel Light Blue");
    doc.cmbFontType = QStringLiteral("Verdana");
    return doc;
}

// Only the description: every optional element off.
inline creator::CreatorDocument BareSampleDocument(const creator::CreatorLists& lists) {
    creator::CreatorDocument doc = creator::NewCreatorDocument(lists);
    doc.txtDescription = QStringLiteral("<P>A brass ship's lantern.</P>");
    doc.txtEbayTitle = QStringLiteral("Brass ship's lantern");
    doc.cmbFontType.clear();
    return doc;
}

}  // namespace lw::test
