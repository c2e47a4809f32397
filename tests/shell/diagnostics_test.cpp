#include "system/diagnostics.h"

#include <gtest/gtest.h>

#include <string>

#include "host/headless/headless.h"

namespace {

TEST(Diagnostics, DebugLogAddsNothingAndCutsAtTheBuffer) {
    headless::Reset();
    EXPECT_EQ(DebugLog("a=%d", 7), 1);
    DebugLog("\x8a\xbf%d\n", 1);
    EXPECT_EQ(headless::Log(),
              "a=7\x8a\xbf"
              "1\n");
    headless::Reset();
    DebugLog("%s", std::string(400, 'x').c_str());
    EXPECT_EQ(headless::Log(), std::string(259, 'x'));
}

TEST(Diagnostics, DSoundNames) {
    const std::pair<uint32_t, const char*> rows[] = {
        {0x00000000, "DS_OK"},
        {0x8878000A, "DSERR_ALLOCATED"},
        {0x8878001E, "DSERR_CONTROLUNAVAIL"},
        {0x88780032, "DSERR_INVALIDCALL"},
        {0x88780064, "DSERR_BADFORMAT"},
        {0x887800AA, "DSERR_UNINITIALIZED"},
        {0x887800B4, "DSERR_BUFFERTOOSMALL"},
        {0x887800BE, "DSERR_DS8_REQUIRED"},
        {0x80004001, "DSERR_UNSUPPORTED"},
        {0x8007000E, "DSERR_OUTOFMEMORY"},
        {0x80040110, "DSERR_NOAGGREGATION"},
        {0x80070057, "DSERR_INVALIDPARAM"},
        {0x88780096, "UnknownError"},  // a lost buffer has no name of its own
        {0x88780078, "UnknownError"},
        {1, "UnknownError"},
    };
    for (const auto& [code, name] : rows) {
        headless::Reset();
        EXPECT_EQ(LogDSoundResult(static_cast<HRESULT>(code)), 1);
        EXPECT_EQ(headless::Log(), "HRESULT->" + std::string(name) + "\n");
    }
}

TEST(Diagnostics, DInputNamesAndCode) {
    const std::pair<uint32_t, const char*> rows[] = {
        {0x00000000, "DI_OK(00000000)"},
        {0x00000001, "DI_PROPNOEFFECT(00000001)"},
        {0x80004001, "DIERR_UNSUPPORTED(80004001)"},
        {0x80070002, "DIERR_OBJECTNOTFOUND(80070002)"},
        {0x80070015, "DIERR_NOTINITIALIZED(80070015)"},
        {0x80070057, "DIERR_INVALIDPARAM(80070057)"},
        {0x8878000A, "UnknownError(8878000A)"},
    };
    for (const auto& [code, name] : rows) {
        headless::Reset();
        LogDInputResult(static_cast<HRESULT>(code));
        EXPECT_EQ(headless::Log(), "HRESULT->" + std::string(name) + "\n");
    }
}

TEST(Diagnostics, ErrorBoxFormatsAndCutsItsText) {
    headless::Reset();
    headless::At(0, headless::AnswerBox());
    headless::At(0, headless::AnswerBox());
    EXPECT_EQ(ErrorBox(nullptr, "%s=%d", "a", 7), 1);
    ErrorBox(nullptr, "%s", std::string(400, 'x').c_str());
    ASSERT_EQ(headless::Boxes().size(), 2u);
    EXPECT_EQ(headless::Boxes()[0].text, "a=7");
    EXPECT_EQ(headless::Boxes()[0].caption, "ERROR MESSAGE");
    EXPECT_EQ(headless::Boxes()[0].icon, host::BoxIcon::kNone);
    EXPECT_EQ(headless::Boxes()[1].text, std::string(259, 'x'));
}

}  // namespace
