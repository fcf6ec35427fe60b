// SPDX-License-Identifier: GPL-3.0-or-later
// A suite's fixture for logic over the database: a fresh program root with
// the shipped files, a scripted Ui in session, and the root's new database.
// It never reaches the keyring, the network or a window, and leaves the
// session and the settings folder as it found them.
#pragma once

#include <gtest/gtest.h>

#include <optional>

#include "core/session.h"
#include "core/settings.h"
#include "core/store.h"
#include "tests/support/test_support.h"

namespace lw::test {

class StoreTest : public ::testing::Test {
protected:
    void SetUp() override {
        const QString error = StartProgramRoot(m_root, m_ui);
        ASSERT_TRUE(error.isEmpty()) << error.toStdString();
        m_db.emplace(core::OpenOrCreateStore(core::StorePath(), SourceDir()));
    }
    void TearDown() override {
        core::SetSettingsFolder(QString());
        core::ResetSession();
    }

    ScriptedUi m_ui;
    TempRoot m_root;
    std::optional<core::Database> m_db;
};

}  // namespace lw::test
