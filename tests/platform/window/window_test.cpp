#include "platform/window/window.h"

#include <gtest/gtest.h>

#include <sstream>

#include "platform/resources.h"
#include "platform/window/dialog.h"
#include "support/program.h"

using namespace headless;

namespace {

struct Got {
    UINT message;
    WPARAM wparam;
    LPARAM lparam;
    bool operator==(const Got&) const = default;
};
std::ostream& operator<<(std::ostream& out, const Got& got) {
    return out << got.message << '/' << got.wparam;
}

std::vector<Got> g_got;
void (*g_on_message)(HWND, UINT) = nullptr;

LRESULT Record(HWND hWnd, UINT nMessage, WPARAM wParam, LPARAM lParam) {
    g_got.push_back({nMessage, wParam, nMessage == WM_WINDOWPOSCHANGING ? 0 : lParam});
    if (nMessage == WM_WINDOWPOSCHANGING)
        g_got.back().wparam = reinterpret_cast<const WINDOWPOS*>(lParam)->flags;
    if (g_on_message) g_on_message(hWnd, nMessage);
    return DefWindowProcA(hWnd, nMessage, wParam, lParam);
}

std::string Edges(const RECT& r) {
    std::ostringstream out;
    out << r.left << ' ' << r.top << ' ' << r.right << ' ' << r.bottom;
    return out.str();
}

class WindowTest : public testing::Test {
protected:
    void SetUp() override {
        test::ResetProgram();
        g_on_message = nullptr;
    }
    void TearDown() override { test::ResetProgram(); }

    static HWND Create(int x = CW_USEDEFAULT, int y = CW_USEDEFAULT) {
        return CreateWindowExA(WS_EX_TOPMOST, "Class", "title", WS_VISIBLE | WS_CAPTION, x, y, 452, 280,
                               nullptr, nullptr, nullptr, nullptr);
    }
    static HWND Open() {
        const BitmapResource icon = {103, 1, 1, [](uint32_t* pPixels) { pPixels[0] = 0xFF123456; }};
        const ModuleResources module = {nullptr, 0, &icon, 1};
        WNDCLASSEXA wc{};
        wc.cbSize = 48;
        wc.lpszClassName = "Class";
        wc.lpfnWndProc = Record;
        wc.hIcon = LoadIconA(&module, 103);
        EXPECT_NE(RegisterClassExA(&wc), 0);
        EXPECT_EQ(RegisterClassExA(&wc), 0);
        const HWND hWnd = Create(30, 40);
        g_got.clear();
        return hWnd;
    }
    static std::vector<Got> Serve() {
        g_got.clear();
        MSG msg;
        while (PeekMessageA(&msg, nullptr, 0, 0, PM_NOREMOVE) && GetMessageA(&msg, nullptr, 0, 0)) {
            TranslateMessage(&msg);
            DispatchMessageA(&msg);
        }
        return g_got;
    }
};

using Messages = std::vector<Got>;

TEST_F(WindowTest, FromCreationToADeadHandle) {
    EXPECT_EQ(Create(), nullptr);
    FailOpenWindow(true);
    EXPECT_EQ(Open(), nullptr);
    EXPECT_EQ(AnnouncedClass(), "");
    test::ResetProgram();
    const HWND hWnd = Open();
    EXPECT_EQ(AnnouncedClass(), "Class");
    EXPECT_EQ(Titles(), std::vector<std::string>{"title"});
    EXPECT_TRUE(TheWindow().topmost);
    EXPECT_EQ(TheWindow().client.left, 30);
    EXPECT_EQ(TheWindow().client.bottom, 320);
    EXPECT_EQ(TheWindow().icon.pixels, std::vector<uint32_t>{0xFF123456});
    EXPECT_EQ(GetWindowLongA(hWnd, GWL_STYLE), static_cast<LONG>(WS_VISIBLE | WS_CAPTION));
    EXPECT_EQ(GetWindowLongA(hWnd, GWL_EXSTYLE), static_cast<LONG>(WS_EX_TOPMOST));
    EXPECT_EQ(Create(), nullptr);  // one per process
    SetWindowTextA(hWnd, "-\x82\xA0\x82- \x83\x5C\x83  [\x95\x5C] ");
    EXPECT_EQ(Titles().back(), "-あ- ソ  [表] ");
    PostMessageA(hWnd, WM_USER + 1, 0, 0);
    SendMessageA(hWnd, WM_CLOSE, 0, 0);
    EXPECT_EQ(g_got, (Messages{{WM_CLOSE, 0, 0}, {WM_DESTROY, 0, 0}}));
    EXPECT_FALSE(TheWindow().open);
    EXPECT_EQ(AnnouncedClass(), "");
    EXPECT_TRUE(Serve().empty());
    EXPECT_FALSE(PostMessageA(hWnd, WM_USER, 0, 0));
    EXPECT_FALSE(PostMessageA(nullptr, WM_USER, 0, 0));
    EXPECT_FALSE(SetWindowTextA(hWnd, "x"));
    EXPECT_FALSE(SetWindowPos(hWnd, HWND_TOPMOST, 0, 0, 1, 1, SWP_SHOWWINDOW));
    EXPECT_FALSE(DestroyWindow(hWnd));
}

TEST_F(WindowTest, PlaceCountsTheFrame) {
    SetFrameExtents({4, 20, 4, 6});
    const HWND hWnd = Open();
    RECT rect{0, 0, 452, 280};
    ASSERT_TRUE(AdjustWindowRectEx(&rect, 0, 0, 0));
    EXPECT_EQ(Edges(rect), "-4 -20 456 286");
    const int nWidth = rect.right - rect.left, nHeight = rect.bottom - rect.top;
    g_got.clear();
    EXPECT_TRUE(SetWindowPos(hWnd, HWND_TOPMOST, 10, -7, nWidth, nHeight, SWP_SHOWWINDOW));
    EXPECT_EQ(g_got, (Messages{{WM_WINDOWPOSCHANGING, SWP_SHOWWINDOW, 0}}));
    EXPECT_TRUE(GetWindowRect(hWnd, &rect));
    EXPECT_EQ(Edges(rect), "10 -7 470 299");
    EXPECT_TRUE(GetClientRect(hWnd, &rect));
    EXPECT_EQ(Edges(rect), "0 0 452 280");
    POINT point{1, 2};
    EXPECT_TRUE(ClientToScreen(hWnd, &point));
    EXPECT_EQ(point.x, 15);
    EXPECT_EQ(point.y, 15);
    EXPECT_EQ(TheWindow().placed, 1);
    // Nothing changes: the host is not called.
    EXPECT_TRUE(SetWindowPos(hWnd, HWND_TOPMOST, 10, -7, nWidth, nHeight, SWP_SHOWWINDOW));
    EXPECT_TRUE(SetWindowPos(hWnd, nullptr, 99, 99, 1, 1, SWP_NOSIZE | SWP_NOMOVE));
    EXPECT_EQ(TheWindow().placed, 1);
    EXPECT_EQ(TheWindow().raised, 2);
    EXPECT_TRUE(SetWindowPos(hWnd, nullptr, 99, 98, 1, 1, SWP_NOSIZE));
    EXPECT_EQ(TheWindow().client.left, 103);
    EXPECT_EQ(TheWindow().client.right, 103 + 452);
    EXPECT_TRUE(SetWindowPos(hWnd, nullptr, INT32_MAX, INT32_MIN, 1, 1, SWP_NOSIZE));
    EXPECT_EQ(TheWindow().client.left, 32767 + 4);
    EXPECT_EQ(TheWindow().client.top, -32767 + 20);
}

TEST_F(WindowTest, PostedMessagesKeepTheirOrderAndQuitComesLast) {
    const HWND hWnd = Open();
    PostMessageA(hWnd, WM_USER + 1, 1, 2);
    PostQuitMessage(7);
    PostMessageA(hWnd, WM_USER + 2, 3, -4);
    At(0, Key(13));  // input is not served any more once a quit waits
    At(0, Remote(1125, -1, -2));
    MSG msg;
    EXPECT_TRUE(PeekMessageA(&msg, nullptr, 0, 0, PM_NOREMOVE));
    EXPECT_EQ(msg.message, WM_USER + 1);
    EXPECT_FALSE(TheWindow().hidden);
    EXPECT_EQ(Serve(),
              (Messages{{WM_USER + 1, 1, 2}, {WM_USER + 2, 3, -4}, {1125, static_cast<WPARAM>(-1), -2}}));
    PostQuitMessage(7);
    EXPECT_TRUE(PeekMessageA(&msg, nullptr, 0, 0, PM_NOREMOVE));
    EXPECT_EQ(msg.message, WM_QUIT);
    EXPECT_EQ(GetMessageA(&msg, nullptr, 0, 0), 0);
    EXPECT_EQ(msg.wParam, 7u);
    EXPECT_TRUE(TheWindow().hidden && TheWindow().open);
}

TEST_F(WindowTest, EventsBecomeMessages) {
    Open();
    AddScript({{0, Key(32)}, {0, DoubleClick(3, -4)}, {0, Remote(WM_USER - 1)}, {0, Remote(1130, 150)}});
    EXPECT_EQ(Serve(), (Messages{{WM_KEYDOWN, 32, 1},
                                 {WM_LBUTTONDBLCLK, 1, static_cast<LPARAM>(0xFFFC0003)},
                                 {1130, 150, 0}}));
    At(5000, Key(27));
    MSG msg;
    EXPECT_EQ(GetMessageA(&msg, nullptr, 0, 0), 1);  // waits
    EXPECT_EQ(msg.message, WM_KEYDOWN);
    EXPECT_EQ(Now(), 5000u);
    At(0, Close());
    EXPECT_EQ(Serve(), (Messages{{WM_CLOSE, 0, 0}, {WM_DESTROY, 0, 0}}));
}

// Each command posts the next one: the turn ends nevertheless, and nothing is lost.
TEST_F(WindowTest, AFloodLetsTheFramesGoOn) {
    const HWND hWnd = Open();
    for (int i = 0; i < 5000; ++i) At(0, Remote(1128, i));
    g_on_message = [](HWND, UINT) { At(0, Remote(1128, 9000)); };
    const Messages first = Serve();
    ASSERT_EQ(first.size(), 4096u + 64u);  // what waited, up to a bound, and a few new ones
    for (size_t i = 0; i < first.size(); ++i) ASSERT_EQ(first[i].wparam, i);
    g_on_message = nullptr;
    EXPECT_EQ(Serve().size(), 4096u + 64u);
    EXPECT_EQ(Serve().size(), 5000u - 4096u - 64u);
    for (int i = 0; i < 10'000; ++i) ASSERT_TRUE(PostMessageA(hWnd, WM_USER, static_cast<WPARAM>(i), 0));
    EXPECT_FALSE(PostMessageA(hWnd, WM_USER, 0, 0));
    EXPECT_EQ(Serve().size(), 10'000u);
}

TEST_F(WindowTest, SystemMenu) {
    const HWND hWnd = Open();
    const HMENU hMenu = GetSystemMenu(hWnd, 0);
    char szLoad[] = "&Load and more", szAbout[] = "&About...";
    MENUITEMINFO item{};
    item.cbSize = 44;
    item.fType = MFT_SEPARATOR;
    EXPECT_TRUE(InsertMenuItemA(hMenu, 7, 0, &item));
    item.fType = 0;
    item.fMask = MIIM_ID | MIIM_TYPE;
    for (const bool bLoad : {true, false}) {
        item.wID = bLoad ? 257 : 256;
        item.dwTypeData = bLoad ? szLoad : szAbout;
        item.cch = bLoad ? 5 : 9;
        EXPECT_TRUE(InsertMenuItemA(hMenu, bLoad ? 8 : 257, 0, &item));
    }
    AddScript({{0, WantMenu(-5, 300)}, {10, Remote(1126)}, {20, ChooseMenu(257)}});
    const LPARAM nPoint = static_cast<LPARAM>(0x012CFFFB);
    EXPECT_EQ(Serve(), (Messages{{WM_SYSCOMMAND, 0xF100, nPoint},
                                 {WM_ENTERMENULOOP, 0, 0},
                                 {1126, 0, 0},
                                 {WM_EXITMENULOOP, 0, 0},
                                 {WM_SYSCOMMAND, 257, nPoint}}));
    ASSERT_EQ(Menus().size(), 1u);
    EXPECT_EQ(Menus()[0].x, -5);
    EXPECT_EQ(Menus()[0].y, 300);
    std::ostringstream items;
    for (const host::MenuItem& shown : Menus()[0].items) items << shown.id << shown.text << ' ';
    EXPECT_EQ(items.str(), "61472Mi&nimize 61536&Close 0 256&About... 257&Load ");
    AddScript({{Now(), WantMenu()}, {Now() + 10, ChooseMenu(0xF020)}});
    Serve();
    EXPECT_TRUE(TheWindow().minimized);
    AddScript({{Now(), WantMenu()}, {Now() + 10, Key(27)}});
    EXPECT_EQ(Serve().back().message, WM_EXITMENULOOP);
    AddScript({{Now(), WantMenu()}, {Now() + 10, ChooseMenu(0xF060)}});
    EXPECT_EQ(Serve().back().message, WM_DESTROY);
    EXPECT_TRUE(Faults().empty());
}

// While a dialog is open, posted messages are served in order and the user's input is dropped.
TEST_F(WindowTest, ModalDialogsDeliverPostedMessages) {
    const HWND hWnd = Open();
    PostMessageA(hWnd, WM_USER + 1, 0, 0);
    AddScript({{0, Key(64)}, {0, Key(65)}});  // both are in the queue when the first opens the box
    g_on_message = [](HWND hOwner, UINT nMessage) {
        if (nMessage == WM_KEYDOWN) MessageBoxA(hOwner, "", "", MB_OK);
    };
    AddScript({{5, Remote(1125)},
               {10, Remote(1126)},
               {20, DoubleClick()},
               {30, Remote(1127)},
               {40, Close()},
               {50, Remote(500)},
               {60, AnswerBox()},
               {70, Remote(1128)}});
    EXPECT_EQ(Serve(),
              (Messages{{WM_USER + 1, 0, 0}, {WM_KEYDOWN, 64, 1}, {1125, 0, 0}, {1126, 0, 0}, {1127, 0, 0}}));
    EXPECT_EQ(Now(), 60u);
    EXPECT_TRUE(Serve().empty());
    EXPECT_TRUE(Faults().empty());
}

TEST_F(WindowTest, OtherCopies) {
    AddInstance(11, "Class");
    AddInstance(22, "class");
    AddInstance(33, "");
    const HWND hWnd = Open();
    static std::vector<HWND> windows;
    windows.clear();
    const WNDENUMPROC pfnAdd = [](HWND hOther, LPARAM) -> BOOL {
        windows.push_back(hOther);
        return 1;
    };
    EXPECT_TRUE(EnumWindows(pfnAdd, 0));
    ASSERT_EQ(windows.size(), 4u);
    EXPECT_EQ(windows[0], hWnd);
    char szName[256];
    EXPECT_EQ(GetClassNameA(windows[1], szName, 256), 5);
    EXPECT_STREQ(szName, "Class");
    EXPECT_EQ(GetClassNameA(windows[2], szName, 4), 3);
    EXPECT_STREQ(szName, "cla");
    EXPECT_EQ(GetClassNameA(windows[3], szName, 256), 0);
    EXPECT_TRUE(PostMessageA(windows[1], 1129, static_cast<WPARAM>(-5), 9));
    EXPECT_TRUE(PostMessageA(windows[2], 1126, 0, 0));
    RemoveInstance(11);
    EXPECT_FALSE(PostMessageA(windows[1], 1126, 0, 0));
    ASSERT_EQ(PostedToInstances().size(), 2u);
    const PostedMessage& posted = PostedToInstances()[0];
    EXPECT_TRUE(posted.instance == 11 && posted.wparam == -5 && posted.lparam == 9);
    EXPECT_FALSE(DestroyWindow(windows[2]));
    const std::vector<HWND> before = windows;
    windows.clear();
    EXPECT_TRUE(EnumWindows(pfnAdd, 0));
    EXPECT_EQ(windows, (std::vector<HWND>{hWnd, before[2], before[3]}));  // the same handle for the same copy
    FailListInstances(true);
    EXPECT_FALSE(EnumWindows(pfnAdd, 0));
}

}  // namespace
