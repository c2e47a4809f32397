#include "shell/options.h"

#include <cstring>

#include "chart/text.h"
#include "platform/window/dialog.h"
#include "shell/shell.h"
#include "shell/winlist.h"
#include "system/diagnostics.h"

namespace {

constexpr int kValueSize = 128;
constexpr int32_t kSpeedDefault = 50;  // hundredths

const char* SkipBlanks(const char* psz) {
    while (*psz == ' ' || *psz == '\t') ++psz;
    return psz;
}

bool IsOption(const char* psz) {
    return *psz == '-' || *psz == '/';
}

// The letter of an option in upper case. For a bare sign, it is the character that ends the token.
char OptionLetter(const char* pszToken) {
    const char c = pszToken[1];
    return c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c;
}

const char* OptionValue(const char* pszToken) {
    const bool bBare = pszToken[1] == '\0' || pszToken[1] == ' ';
    return pszToken + (bBare ? 1 : 2);
}

// Only a blank ends a token. A tab belongs to it, although tabs between tokens are skipped.
const char* TokenEnd(const char* psz) {
    while (*psz && *psz != ' ') ++psz;
    return psz;
}

void CopyValue(const char* pszValue, const char* pszEnd, char (&szValue)[kValueSize]) {
    size_t nLength = static_cast<size_t>(pszEnd - pszValue);
    if (nLength > kValueSize - 1) nLength = kValueSize - 1;
    std::memcpy(szValue, pszValue, nLength);
    szValue[nLength] = '\0';
}

// The one other instance that accepts this line's commands; null when there is none.
HWND ForwardTarget(const CWinList& list) {
    return list.m_nSame == 1 && !g_bHost ? list.m_pSame[0] : nullptr;
}

int ForwardAndExit(HWND hTarget, UINT nMessage) {
    PostMessageA(hTarget, nMessage, 0, 0);
    return SCAN_EXIT;
}

void ActOnSpeed(const char* pszValue, HWND hTarget) {
    const int32_t nHundredths = SpeedFromText(pszValue);
    SetSpeed(nHundredths);
    if (hTarget) PostMessageA(hTarget, WM_REMOTE_SPEED, static_cast<WPARAM>(nHundredths), 0);
}

// Reads from the line, not from the token: a blank after the letter ends the token but is skipped here.
void ActOnMeasure(const char* pszText, HWND hTarget) {
    g_nStartMeasure = ClampMeasure(ReadDecimal(pszText));
    DebugLog("-N Option = %d\n", g_nStartMeasure);
    if (hTarget) PostMessageA(hTarget, WM_REMOTE_SEEK, static_cast<WPARAM>(g_nStartMeasure), 0);
}

void ActOnPlay() {
    g_bPlaying = 1;
    DebugLog("-P Option ON\n");
}

int32_t CoordinateFromText(const char* pszValue) {
    return *pszValue ? ReadDecimal(pszValue) : -1;
}

int ActOnOption(char cLetter, const char* pszValue, const char* pszEnd, HWND hTarget, Options* pOptions) {
    char szValue[kValueSize];
    CopyValue(pszValue, pszEnd, szValue);
    switch (cLetter) {
        case 'M':
            ActOnSpeed(szValue, hTarget);
            break;
        case 'N':
            ActOnMeasure(pszValue, hTarget);
            break;
        case 'P':
            if (hTarget) return ForwardAndExit(hTarget, WM_REMOTE_PLAY);
            ActOnPlay();
            break;
        case 'Q':
            if (hTarget) PostMessageA(hTarget, WM_REMOTE_QUIT, 0, 0);
            return SCAN_EXIT;
        case 'R':
            if (hTarget) return ForwardAndExit(hTarget, WM_REMOTE_RESTART);
            break;
        case 'S':
            if (hTarget) return ForwardAndExit(hTarget, WM_REMOTE_STOP);
            break;
        case 'X':
            pOptions->nWindowX = CoordinateFromText(szValue);
            break;
        case 'Y':
            pOptions->nWindowY = CoordinateFromText(szValue);
            break;
        default:  // D was handled before; W and unknown letters have no effect
            break;
    }
    return SCAN_DONE;
}

}  // namespace

void PostHost(const CWinList& list) {
    for (int32_t i = 0; i < list.m_nSame; ++i) PostMessageA(list.m_pSame[i], WM_REMOTE_HOST, 0, 0);
}

void ScanHostOption(const char* pszLine, const CWinList& list) {
    for (const char* psz = SkipBlanks(pszLine); IsOption(psz); psz = SkipBlanks(psz)) {
        if (OptionLetter(psz) == 'D') {
            g_bHost = 1;
            PostHost(list);
        }
        psz = TokenEnd(OptionValue(psz));
    }
}

int ScanOptions(const char* pszLine, const CWinList& list, Options* pOptions) {
    const HWND hTarget = ForwardTarget(list);
    const char* psz = SkipBlanks(pszLine);
    while (IsOption(psz)) {
        const char* pszValue = OptionValue(psz);
        const char* pszEnd = TokenEnd(pszValue);
        const int nResult = ActOnOption(OptionLetter(psz), pszValue, pszEnd, hTarget, pOptions);
        if (nResult != SCAN_DONE) return nResult;
        psz = SkipBlanks(pszEnd);
    }
    pOptions->pszRest = psz;
    return SCAN_DONE;
}

int32_t SpeedFromText(const char* pszValue) {
    double dSpeed = *pszValue ? ReadFloat(pszValue) : 0.5;
    // Compares with the exact value of the float, which is greater than the double 0.1: "0.1" is rejected.
    if (!(dSpeed >= static_cast<double>(0.1f)) || dSpeed > 8.0) dSpeed = 0.5;
    return static_cast<int32_t>(dSpeed * 100.0);
}

int32_t SpeedFromMessage(int32_t nHundredths) {
    return nHundredths < 10 || nHundredths > 800 ? kSpeedDefault : nHundredths;
}

void SetSpeed(int32_t nHundredths) {
    g_fSpeed = static_cast<float>(nHundredths) * 0.01f;
}

int32_t ClampMeasure(int32_t nMeasure) {
    return nMeasure < -1 ? -1 : nMeasure;
}

BOOL AskChartFile(HWND hOwner, HINSTANCE hInstance, char* szFile) {
    OPENFILENAME open{};
    open.lStructSize = 76;
    open.hwndOwner = hOwner;
    open.hInstance = hInstance;
    open.lpstrFilter = "BMS(BME)File(*.bms|*.bme)\0*.bms;*.bme\0";
    open.nFilterIndex = 1;
    open.lpstrFile = szFile;
    open.nMaxFile = FILE_NAME_SIZE;
    open.lpstrTitle = "Open BMS(BME) file";
    open.lpstrDefExt = "BMS";
    return GetOpenFileNameA(&open);
}

void StripQuotes(char* szFile) {
    if (szFile[0] == '"') std::memmove(szFile, szFile + 1, std::strlen(szFile));
    const size_t nLength = std::strlen(szFile);
    if (nLength && szFile[nLength - 1] == '"') szFile[nLength - 1] = '\0';
}

bool TakeFileName(const char* pszRest, char* szFile) {
    std::memset(szFile, 0, FILE_NAME_SIZE);
    if (*pszRest) {
        std::strncpy(szFile, pszRest, FILE_NAME_SIZE - 1);
    } else if (!AskChartFile(nullptr, g_hInstance, szFile)) {
        return false;
    }
    szFile[FILE_NAME_SIZE - 1] = '\0';
    StripQuotes(szFile);
    return true;
}
