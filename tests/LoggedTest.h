#pragma once
// A fixture for tests that check what was logged: a freshly configured log whose lines go
// into `capture` instead of the console.

#include <ki/log/GLog.h>
#include <ki/log/LogCapture.h>

#include <gtest/gtest.h>

#include <memory>

class LoggedTest : public testing::Test {
protected:
    void SetUp() override {
        ki::log::reset_for_tests();
        ki::log::configure();
        ki::log::remove_log_appender(ki::log::get_console_appender());
        capture = std::make_unique<ki::log::LogCapture>();
    }
    void TearDown() override {
        capture.reset();
        ki::log::reset_for_tests();
    }

    std::unique_ptr<ki::log::LogCapture> capture;
};
