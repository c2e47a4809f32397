#include "platform/window/icons.h"

#include <memory>
#include <vector>

#include "platform/resources.h"
#include "platform/window/window.h"

namespace {

struct Icon {
    HINSTANCE hInstance;
    int nId;
    host::Icon picture;
};

// An icon handle is the address of an element; there is one per icon of the program.
std::vector<std::unique_ptr<Icon>> g_icons;

HICON HandleOf(const Icon* pIcon) {
    return reinterpret_cast<HICON>(const_cast<Icon*>(pIcon));
}

HICON KeepIcon(HINSTANCE hInstance, int nId, host::Icon picture) {
    for (const auto& pIcon : g_icons) {
        if (pIcon->hInstance == hInstance && pIcon->nId == nId) return HandleOf(pIcon.get());
    }
    g_icons.push_back(std::make_unique<Icon>(Icon{hInstance, nId, std::move(picture)}));
    return HandleOf(g_icons.back().get());
}

host::Icon Draw(const BitmapResource& resource) {
    host::Icon picture = {resource.nWidth, resource.nHeight, {}};
    picture.pixels.resize(static_cast<size_t>(resource.nWidth) * static_cast<size_t>(resource.nHeight));
    resource.pfnDraw(picture.pixels.data());
    return picture;
}

}  // namespace

host::Icon IconPicture(HICON hIcon) {
    for (const auto& pIcon : g_icons) {
        if (HandleOf(pIcon.get()) == hIcon) return pIcon->picture;
    }
    return {0, 0, {}};
}

HICON LoadIconA(HINSTANCE hInstance, int nId) {
    if (!hInstance) return nId == IDI_APPLICATION ? KeepIcon(nullptr, nId, {0, 0, {}}) : nullptr;
    for (int i = 0; i < hInstance->nIcons; ++i) {
        if (hInstance->pIcons[i].nId == nId) return KeepIcon(hInstance, nId, Draw(hInstance->pIcons[i]));
    }
    return nullptr;
}

HCURSOR LoadCursorA(HINSTANCE hInstance, int nId) {
    return !hInstance && nId == IDC_ARROW ? KeepIcon(nullptr, -nId, {0, 0, {}}) : nullptr;
}
