// The whole program with its second channel, asked by lines.
#pragma once

#include <gtest/gtest.h>

#include <nlohmann/json.hpp>
#include <string>

#include "app/channel.h"
#include "shell/shell_test.h"

namespace test {

using nlohmann::json;

class ChannelTest : public ShellTest {
protected:
    void SetUp() override { Prepare(); }
    static void Prepare() {
        Fresh();
        app::ResetChannel();
        app::ServeChannel(nullptr);
    }
    static json Last() {
        return headless::SentLines().empty() ? json() : json::parse(headless::SentLines().back().line);
    }
    // Sends a line at some time and looks at the answer when it must be there.
    static void Ask(uint64_t ms, const std::string& line, const std::string& code) {
        headless::At(ms, headless::Call([=] { headless::ReceiveLine(7, line); }));
        headless::At(ms + 50, headless::Call([=] {
                         const json answer = Last();
                         const bool ok = answer.value("ok", false);
                         EXPECT_EQ(ok ? "" : answer["error"].value("code", "?"), code) << line;
                         EXPECT_EQ(headless::SentLines().back().client, 7u);
                     }));
    }
    static void ExpectState(uint64_t ms, const std::string& state) {
        headless::At(ms, headless::Call([=] { EXPECT_EQ(StateName(), state) << "at " << ms; }));
    }
};

}  // namespace test
