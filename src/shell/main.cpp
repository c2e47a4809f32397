// The program from its command line to its exit code, and the main loop.
#include <cstdio>

#include "display/ddraw.h"
#include "playback/layout.h"
#include "playback/playback.h"
#include "shell/framerate.h"
#include "shell/options.h"
#include "shell/shell.h"
#include "shell/winlist.h"

namespace {

constexpr int EXIT_REMOTE = 1;
constexpr int EXIT_CANCELLED = -1;

// Serves all waiting messages. False, with the exit code, when the program should end.
bool ServeMessages(int* pnExitCode) {
    MSG msg;
    while (PeekMessageA(&msg, nullptr, 0, 0, PM_NOREMOVE)) {
        if (!GetMessageA(&msg, nullptr, 0, 0)) {
            *pnExitCode = static_cast<int>(msg.wParam);
            return false;
        }
        TranslateMessage(&msg);
        DispatchMessageA(&msg);
    }
    // If the window has vanished, there is nothing to draw on and nothing paces the loop.
    *pnExitCode = 0;
    return HasChart();
}

void DrawRate(uint32_t nRate) {
    char szRate[16];
    std::snprintf(szRate, sizeof(szRate), "%3u", nRate);
    int x = RATE_X;
    for (const char* psz = szRate; *psz; ++psz, x += CHAR_STEP) {
        if (*psz >= '0' && *psz <= '9')
            g_pDDraw->BltBack(x, RATE_Y, &SPRITE_DIGIT[*psz - '0'], PARTS_SPRITES);
    }
}

int RunLoop(CFrameRate* pRate) {
    int nExitCode = 0;
    while (ServeMessages(&nExitCode)) {
        PlayFrame();
        pRate->Stamp();
        DrawRate(pRate->GetRate());
        g_pDDraw->Present();
    }
    Shutdown();
    return nExitCode;
}

}  // namespace

int WinMain(HINSTANCE hInstance, HINSTANCE, char* lpCmdLine, int) {
    CWinList list;
    CFrameRate rate;
    Options options{-1, -1, ""};
    g_hInstance = hInstance;
    list.Update(WINDOW_CLASS, nullptr);
    ScanHostOption(lpCmdLine, list);
    const int nScan = ScanOptions(lpCmdLine, list, &options);
    if (nScan != SCAN_DONE) return nScan;
    if (list.m_nSame > 0 && !g_bHost) return EXIT_REMOTE;
    PostHost(list);
    char szFile[FILE_NAME_SIZE];
    if (!TakeFileName(options.pszRest, szFile)) {
        Shutdown();
        return EXIT_CANCELLED;
    }
    const int nResult = StartUp(szFile, options.nWindowX, options.nWindowY);
    return nResult == START_PLAY ? RunLoop(&rate) : nResult;
}
