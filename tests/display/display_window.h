// A display on a window of the headless host.
#pragma once

#include <gtest/gtest.h>

#include "display/ddraw.h"
#include "platform/directdraw_test.h"
#include "platform/window.h"
#include "support/program.h"

namespace test {

class DisplayWindow : public testing::Test {
protected:
    static constexpr int kWidth = 452, kHeight = 280;
    static constexpr int kDesktopWidth = 1024, kDesktopHeight = 768;

    void SetUp() override {
        ResetProgram();
        headless::SetDesktop(kDesktopWidth, kDesktopHeight);
        WNDCLASSEXA windowClass = {};
        windowClass.cbSize = 48;
        windowClass.lpfnWndProc = DefWindowProcA;
        windowClass.lpszClassName = "display test";
        ASSERT_NE(RegisterClassExA(&windowClass), 0);
        m_hWnd = CreateWindowExA(WS_EX_TOPMOST, "display test", "", WS_CAPTION | WS_VISIBLE, 300, 200, kWidth,
                                 kHeight, nullptr, nullptr, nullptr, nullptr);
        ASSERT_NE(m_hWnd, nullptr);
    }
    void TearDown() override {
        directdraw_test::FailNone();
        DestroyWindow(m_hWnd);
        ResetProgram();
    }

    HWND m_hWnd = nullptr;
};

}  // namespace test
