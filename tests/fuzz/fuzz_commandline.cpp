// Takes any bytes as a command line: as an argument vector, separated by line feeds, and as the single string
// that the scans read. Lists one and several other instances without real windows.
#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>
#include <vector>

#include "platform/window/commandline.h"
#include "shell/options.h"
#include "shell/shell.h"
#include "shell/winlist.h"
#include "support/program.h"

namespace {

void ScanLine(const std::string& line, int32_t nCopies) {
    g_bHost = 0;
    CWinList list;
    for (int32_t i = 0; i < nCopies; ++i) list.Add(nullptr);
    std::swap(list.m_pAll, list.m_pSame);
    std::swap(list.m_nAll, list.m_nSame);
    Options options{-1, -1, ""};
    ScanHostOption(line.c_str(), list);
    if (ScanOptions(line.c_str(), list, &options) != SCAN_DONE) return;
    const char* pszRest = options.pszRest;
    if (pszRest < line.c_str() || pszRest > line.c_str() + line.size()) std::abort();
    if (g_nStartMeasure < -1 || !(g_fSpeed > 0.05f && g_fSpeed <= 8.0f)) std::abort();
    char szFile[FILE_NAME_SIZE];
    TakeFileName(pszRest, szFile);  // an empty one asks for it in vain
}

std::string LineOfArguments(const std::string& text) {
    std::vector<std::string> words{"lumetra"};
    for (size_t at = 0; at <= text.size();) {
        const size_t end = std::min(text.find('\n', at), text.size());
        words.push_back(text.substr(at, end - at));
        at = end + 1;
    }
    std::vector<char*> argv;
    for (std::string& word : words) argv.push_back(word.data());
    argv.push_back(nullptr);
    return BuildCommandLine(static_cast<int>(words.size()), argv.data());
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    test::ResetProgram();  // otherwise log and queue grow from input to input
    const std::string text(std::string(reinterpret_cast<const char*>(data), size).c_str());  // no NUL inside
    for (const int32_t nCopies : {0, 1, 3}) ScanLine(text, nCopies);
    ScanLine(LineOfArguments(text), 0);
    return 0;
}
