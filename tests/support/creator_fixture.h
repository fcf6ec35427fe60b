// SPDX-License-Identifier: GPL-3.0-or-later
// The start of every creator suite: a fresh program root with its database,
// one user with a site account, the rule texts as the creator window reads
// them, the creator's lists over the shipped templates, and what a listing
// reads beyond the document.
#pragma once

#include "creator/creator_document.h"
#include "creator/listing_html.h"
#include "tests/support/store_test.h"
#include "update/rules.h"

namespace lw::test {

inline QString ShippedTemplates() {
    return SourceDir() + QStringLiteral("/data/templates/auctions");
}

class CreatorFixture : public StoreTest {
public:
    static QString User() { return QStringLiteral("D'Arcy"); }

protected:
    void SetUp() override {
        StoreTest::SetUp();
        if (HasFatalFailure()) {
            return;
        }
        core::AddUser(*m_db, {User(), QStringLiteral("darcy_sells"), QStringLiteral("pw"), {}});
        core::SetCurrentUser(User());
        ASSERT_TRUE(update::DecryptProtocols(m_rules, *m_db));
        m_lists = creator::LoadCreatorLists(*m_db, m_rules, User(), ShippedTemplates());
        m_context = {ShippedTemplates(), &m_rules, creator::SellerId(*m_db, User())};
    }
    core::Database& Db() { return *m_db; }

    update::RuleStore m_rules;
    creator::CreatorLists m_lists;
    creator::ListingContext m_context;
};

}  // namespace lw::test
