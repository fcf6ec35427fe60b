// SPDX-License-Identifier: GPL-3.0-or-later
// The settings store keeps values by application, section and key between runs.
#include <gtest/gtest.h>

#include <QFile>

#include "core/settings.h"
#include "tests/support/test_support.h"

using namespace lw::core;

class SettingsTest : public ::testing::Test {
protected:
    void SetUp() override { SetSettingsFolder(m_root.Path()); }
    void TearDown() override { SetSettingsFolder({}); }
    lw::test::TempRoot m_root;
};

TEST_F(SettingsTest, ValuesSurviveAndStaySeparateByApplicationAndSection) {
    SaveSetting(QStringLiteral("Tolvane"), QStringLiteral("Options"),
                QStringLiteral("Show Tips at Startup"), 0);
    SaveSetting(QStringLiteral("Auction Creator"), QStringLiteral("Ann/Shop"),
                QStringLiteral("Show Tips at Startup"), QStringLiteral("other"));
    EXPECT_EQ(GetSetting(QStringLiteral("Tolvane"), QStringLiteral("Options"),
                         QStringLiteral("Show Tips at Startup"), QStringLiteral("1")),
              QStringLiteral("0"));
    EXPECT_EQ(GetSetting(QStringLiteral("Auction Creator"), QStringLiteral("Ann/Shop"),
                         QStringLiteral("Show Tips at Startup")),
              QStringLiteral("other"));
    EXPECT_TRUE(QFile::exists(m_root.File(QStringLiteral("Tolvane.ini"))));
}

TEST_F(SettingsTest, MissingKeysGiveTheDefaultAndDeleteRemoves) {
    EXPECT_EQ(GetSetting(QStringLiteral("Lotwright"), QStringLiteral("Inventory"),
                         QStringLiteral("Nothing"), QStringLiteral("dflt")),
              QStringLiteral("dflt"));
    SaveSetting(QStringLiteral("Lotwright"), QStringLiteral("Inventory"), QStringLiteral("Key"),
                QStringLiteral("a=b;c \"quoted\""));
    EXPECT_EQ(
        GetSetting(QStringLiteral("Lotwright"), QStringLiteral("Inventory"), QStringLiteral("Key")),
        QStringLiteral("a=b;c \"quoted\""));
    DeleteSetting(QStringLiteral("Lotwright"), QStringLiteral("Inventory"), QStringLiteral("Key"));
    EXPECT_EQ(GetSetting(QStringLiteral("Lotwright"), QStringLiteral("Inventory"),
                         QStringLiteral("Key"), QStringLiteral("gone")),
              QStringLiteral("gone"));
}
