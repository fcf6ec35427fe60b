// SPDX-License-Identifier: GPL-3.0-or-later
// A QGuiApplication for the whole run of a GoogleTest suite that lays out
// text or paints (fonts need the application). A suite registers it once:
//   const auto* const kGui = ::testing::AddGlobalTestEnvironment(new lw::test::GuiEnvironment);
// It must not be used where the suite makes an application of its own.
#pragma once

#include <gtest/gtest.h>

#include <QGuiApplication>
#include <memory>

namespace lw::test {

class GuiEnvironment : public ::testing::Environment {
public:
    void SetUp() override {
        static int argc = 1;
        static char name[] = "lotwright-test";
        static char* argv[] = {name, nullptr};
        m_app = std::make_unique<QGuiApplication>(argc, argv);
    }
    void TearDown() override { m_app.reset(); }

private:
    std::unique_ptr<QGuiApplication> m_app;
};

}  // namespace lw::test
