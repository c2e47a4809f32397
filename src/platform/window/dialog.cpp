#include "platform/window/dialog.h"

#include <sys/stat.h>

#include <cstring>

#include "host/host.h"
#include "platform/files/filename.h"
#include "platform/files/folder.h"
#include "platform/files/pathmatch.h"
#include "platform/files/text.h"
#include "platform/resources.h"
#include "platform/window/icons.h"
#include "platform/window/window_state.h"

namespace {

constexpr DWORD kOpenSize = 76;

struct State {
    std::string sFolder, sName;  // of the last opened chart
    std::string sAnswer;         // path of a dropped file
    std::string sNextFolder;     // where the next dialog begins, if not in sFolder
};
State g_state;

host::FileFilter Filter(const OPENFILENAME& open) {
    const char* psz = open.lpstrFilter;
    for (DWORD n = 1; psz && *psz; ++n) {
        const char* pszPatterns = psz + std::strlen(psz) + 1;
        if (n >= open.nFilterIndex) return {DisplayText(psz), DisplayText(pszPatterns)};
        psz = pszPatterns + std::strlen(pszPatterns) + 1;
    }
    return {"", "*"};
}

bool IsThere(const std::string& path) {
    struct stat info;
    return stat(path.c_str(), &info) == 0;
}

// Adds the default extension to a name without one, unless a file of exactly that name exists.
std::string WithExtension(const std::string& path, const char* pszExtension) {
    const size_t nName = path.rfind('/') + 1;
    if (!pszExtension || path.find('.', nName) != path.npos || IsThere(path)) return path;
    return path + '.' + pszExtension;
}

std::string Ask(const OPENFILENAME& open) {
    host::FileRequest request;
    request.title = DisplayText(open.lpstrTitle ? open.lpstrTitle : "");
    request.folder = g_state.sFolder;
    request.name = g_state.sName;
    if (request.folder.empty() && open.lpstrInitialDir) request.folder = open.lpstrInitialDir;
    if (!g_state.sNextFolder.empty()) {
        request.folder = std::move(g_state.sNextFolder);
        request.name.clear();
        g_state.sNextFolder.clear();
    }
    request.filter = Filter(open);
    request.extension = open.lpstrDefExt ? open.lpstrDefExt : "";
    if (open.hInstance && open.hInstance->nIcons > 0)
        request.icon = IconPicture(LoadIconA(open.hInstance, open.hInstance->pIcons[0].nId));
    const std::string path = host::ChooseFile(request, PumpModal);
    return QuitPosted() || path.empty() ? "" : WithExtension(path, open.lpstrDefExt);
}

void SetOffsets(OPENFILENAME* pOpen) {
    const std::string_view name = pOpen->lpstrFile;
    const size_t nSeparator = name.find_last_of("\\/");
    const size_t nName = nSeparator == name.npos ? 0 : nSeparator + 1;
    const size_t nDot = name.rfind('.');
    pOpen->nFileOffset = static_cast<WORD>(nName);
    pOpen->nFileExtension = nDot == name.npos || nDot < nName ? 0 : static_cast<WORD>(nDot + 1);
}

void Remember(const std::string& path) {
    g_state.sFolder = FolderOf(path);
    g_state.sName = path.substr(path.rfind('/') + 1);
}

bool FindFile(const std::string& candidate, void* pUser) {
    if (!IsThere(candidate)) return false;
    *static_cast<std::string*>(pUser) = candidate;
    return true;
}

}  // namespace

void ResetDialogs() {
    g_state = State();
}

int MessageBoxA(HWND, const char* pszText, const char* pszCaption, UINT nType) {
    host::BoxIcon icon = host::BoxIcon::kNone;
    if (nType == (MB_OK | MB_ICONEXCLAMATION)) icon = host::BoxIcon::kWarning;
    if (nType == (MB_OK | MB_ICONINFORMATION)) icon = host::BoxIcon::kInformation;
    if (icon == host::BoxIcon::kNone && nType != MB_OK) return 0;
    if (QuitPosted()) return IDOK;
    host::ShowBox(DisplayText(pszText ? pszText : ""), DisplayText(pszCaption ? pszCaption : "Error"), icon,
                  PumpModal);
    return IDOK;
}

BOOL GetOpenFileNameA(OPENFILENAME* pOpen) {
    if (!pOpen || pOpen->lStructSize != kOpenSize || !pOpen->lpstrFile || pOpen->nMaxFile == 0 ||
        pOpen->Flags || QuitPosted())
        return 0;
    std::string path = std::move(g_state.sAnswer);
    g_state.sAnswer.clear();
    if (path.empty()) path = Ask(*pOpen);
    if (path.empty()) return 0;
    path = AbsolutePath(path);
    const std::string name = HandOver(path);
    if (name.size() >= pOpen->nMaxFile) return 0;
    Remember(path);
    std::memcpy(pOpen->lpstrFile, name.c_str(), name.size() + 1);
    SetOffsets(pOpen);
    return 1;
}

void RememberOpenedFile(const char* pszPath) {
    std::string path;
    if (!pszPath || !MatchPath(pszPath, FindFile, &path)) return;
    Remember(AbsolutePath(path));
}

std::string OpenedFile() {
    if (g_state.sName.empty()) return "";
    return g_state.sFolder + (g_state.sFolder == "/" ? "" : "/") + g_state.sName;
}

void AnswerNextOpenDialog(const char* pszPath) {
    g_state.sAnswer = pszPath ? pszPath : "";
    g_state.sNextFolder.clear();
    if (!IsFolder(g_state.sAnswer)) return;
    g_state.sNextFolder = std::move(g_state.sAnswer);
    g_state.sAnswer = OnlyChart(g_state.sNextFolder);
    if (!g_state.sAnswer.empty()) g_state.sNextFolder.clear();
}
