#include "platform/files/folder.h"

#include <dirent.h>
#include <strings.h>
#include <sys/stat.h>

namespace {

bool IsChartName(const std::string& name) {
    const size_t nDot = name.rfind('.');
    if (nDot == name.npos || name[0] == '.') return false;  // some archives hold `._song.bms`
    for (const char* pszEnding : {".bms", ".bme", ".bml", ".pms"}) {
        if (strcasecmp(name.c_str() + nDot, pszEnding) == 0) return true;
    }
    return false;
}

}  // namespace

bool IsFolder(const std::string& path) {
    struct stat info;
    return stat(path.c_str(), &info) == 0 && S_ISDIR(info.st_mode);
}

std::string OnlyChart(const std::string& folder) {
    std::string only;
    DIR* pDir = opendir(folder.c_str());
    if (!pDir) return only;
    int nCharts = 0;
    const std::string head = folder.ends_with('/') ? folder : folder + '/';
    while (const dirent* pItem = readdir(pDir)) {
        const std::string path = head + pItem->d_name;
        if (!IsChartName(pItem->d_name) || IsFolder(path)) continue;
        only = path;
        if (++nCharts > 1) break;
    }
    closedir(pDir);
    return nCharts == 1 ? only : "";
}
