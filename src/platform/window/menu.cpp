// The system menu: the standard entries, then the inserted ones.
#include <algorithm>
#include <cstring>

#include "platform/files/text.h"
#include "platform/window/window_state.h"

namespace {

constexpr UINT kItemSize = 44;

std::vector<host::MenuItem> AllItems(const MenuObject& menu) {
    std::vector<host::MenuItem> items = {{static_cast<int>(SC_MINIMIZE), "Mi&nimize"},
                                         {static_cast<int>(SC_CLOSE), "&Close"}};
    items.insert(items.end(), menu.items.begin(), menu.items.end());
    return items;
}

bool ReadItem(const MENUITEMINFO& info, host::MenuItem* pItem) {
    if (info.fType & MFT_SEPARATOR) {
        *pItem = {0, ""};
        return true;
    }
    if (info.fMask != (MIIM_ID | MIIM_TYPE) || info.fType || !info.wID || !info.dwTypeData) return false;
    *pItem = {static_cast<int>(info.wID), DisplayText({info.dwTypeData, strnlen(info.dwTypeData, info.cch)})};
    return true;
}

}  // namespace

HMENU GetSystemMenu(HWND hWnd, BOOL bRevert) {
    return IsLocal(hWnd) && !bRevert ? &hWnd->menu : nullptr;
}

BOOL InsertMenuItemA(HMENU hMenu, UINT nItem, BOOL bByPosition, const MENUITEMINFO* pItem) {
    if (!LocalWindow() || hMenu != &LocalWindow()->menu || bByPosition || !pItem ||
        pItem->cbSize != kItemSize)
        return 0;
    host::MenuItem item;
    if (!ReadItem(*pItem, &item)) return 0;
    auto& items = hMenu->items;
    const auto before = std::find_if(items.begin(), items.end(), [nItem](const host::MenuItem& other) {
        return other.id && other.id == static_cast<int>(nItem);
    });
    items.insert(before, std::move(item));
    return 1;
}

void RunSystemMenu(HWND hWnd, int x, int y) {
    if (QuitPosted()) return;
    SendMessageA(hWnd, WM_ENTERMENULOOP, 0, 0);
    const int nId = IsLocal(hWnd) ? host::PopupMenu(AllItems(hWnd->menu), x, y, PumpModal) : 0;
    SendMessageA(hWnd, WM_EXITMENULOOP, 0, 0);
    if (nId) PostMessageA(hWnd, WM_SYSCOMMAND, static_cast<WPARAM>(nId), PackPoint(x, y));
}
