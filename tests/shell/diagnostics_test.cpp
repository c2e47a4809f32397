#include "system/diagnostics.h"

#include <gtest/gtest.h>

#include <string>

#include "host/headless/headless.h"

namespace {

TEST(Diagnostics, TextsAreCutAtTheBuffer) {
    headless::Reset();
    headless::At(0, headless::AnswerBox());
    const std::string text(400, 'x');
    EXPECT_EQ(DebugLog("%s", text.c_str()), 1);
    EXPECT_EQ(headless::Log(), text.substr(0, 259));
    EXPECT_EQ(ErrorBox(nullptr, "a=%d %s", 7, text.c_str()), 1);
    const headless::Box& box = headless::Boxes().at(0);
    EXPECT_EQ(box.text, "a=7 " + text.substr(0, 255));
    EXPECT_EQ(box.caption, "ERROR MESSAGE");
    EXPECT_EQ(box.icon, host::BoxIcon::kNone);
}

TEST(Diagnostics, NamesOfResults) {
    headless::Reset();
    // A lost buffer, the last but two, has no name of its own.
    for (uint32_t code : {0x00000000u, 0x8878000Au, 0x8878001Eu, 0x88780032u, 0x88780064u, 0x887800AAu,
                          0x887800B4u, 0x887800BEu, 0x80004001u, 0x8007000Eu, 0x80040110u, 0x80070057u,
                          0x88780096u, 0x88780078u, 0x00000001u})
        EXPECT_EQ(LogDSoundResult(static_cast<HRESULT>(code)), 1);
    for (uint32_t code :
         {0x00000000u, 0x00000001u, 0x80004001u, 0x80070002u, 0x80070015u, 0x80070057u, 0x8878000Au})
        LogDInputResult(static_cast<HRESULT>(code));
    std::string names;
    for (const char* name : {"DS_OK",
                             "DSERR_ALLOCATED",
                             "DSERR_CONTROLUNAVAIL",
                             "DSERR_INVALIDCALL",
                             "DSERR_BADFORMAT",
                             "DSERR_UNINITIALIZED",
                             "DSERR_BUFFERTOOSMALL",
                             "DSERR_DS8_REQUIRED",
                             "DSERR_UNSUPPORTED",
                             "DSERR_OUTOFMEMORY",
                             "DSERR_NOAGGREGATION",
                             "DSERR_INVALIDPARAM",
                             "UnknownError",
                             "UnknownError",
                             "UnknownError",
                             "DI_OK(00000000)",
                             "DI_PROPNOEFFECT(00000001)",
                             "DIERR_UNSUPPORTED(80004001)",
                             "DIERR_OBJECTNOTFOUND(80070002)",
                             "DIERR_NOTINITIALIZED(80070015)",
                             "DIERR_INVALIDPARAM(80070057)",
                             "UnknownError(8878000A)"})
        names += "HRESULT->" + std::string(name) + "\n";
    EXPECT_EQ(headless::Log(), names);
}

}  // namespace
