#include "support/recorder.h"

#include <cstring>
#include <sstream>

#include "display/dib.h"
#include "playback/layout.h"

namespace {

std::string g_lines;
std::set<std::string> g_pictures;

std::string NameOfRect(const RECT& rect, int parts) {
    const auto same = [&](const RECT& other) { return std::memcmp(&rect, &other, sizeof rect) == 0; };
    for (int i = 0; i < 10; ++i) {
        if (same(SPRITE_DIGIT[i])) return std::to_string(i);
    }
    if (parts != PARTS_SPRITES) return "part";
    const std::pair<const RECT*, const char*> names[] = {
        {&SPRITE_COLON, "colon"},  {&SPRITE_SLASH, "slash"},       {&SPRITE_POINT, "point"},
        {&SPRITE_BAR, "bar"},      {&SPRITE_NOTE_WHITE, "white"},  {&SPRITE_NOTE_BLUE, "blue"},
        {&SPRITE_NOTE_RED, "red"}, {&SPRITE_NOTE_YELLOW, "yellow"}};
    for (const auto& [sprite, name] : names) {
        if (same(*sprite)) return name;
    }
    return "unknown";
}

void LogCopy(int x, int y, const RECT* rect, int parts, const char* tail) {
    const std::string whole = parts == PARTS_SKIN ? "skin" : "layer" + std::to_string(parts);
    std::ostringstream line;
    line << (rect ? NameOfRect(*rect, parts) : whole) << ' ' << x << ',' << y << tail << '\n';
    g_lines += line.str();
}

void LogDraw(const std::string& what, const RECT* dest, const RECT* source, int parts) {
    std::ostringstream line;
    line << "draw " << what << " layer" << parts;
    for (const RECT* r : {dest, source}) {
        if (!r) continue;
        line << ' ' << r->left << ',' << r->top << ',' << r->right << ',' << r->bottom;
    }
    g_lines += line.str() + '\n';
}

std::string BaseName(const char* path) {
    const char* last = std::strrchr(path, '\\');
    return last ? last + 1 : path;
}

// A picture of 100 by 80 pixels for each slot. It has no pixels: only the real display would look at them.
CDib* PictureOf(int slot) {
    static CDib pictures[DDRAW_SLOTS];
    pictures[slot].m_nWidth = 100;
    pictures[slot].m_nHeight = 80;
    return &pictures[slot];
}

int SlotOf(const CDSBuffer* sound) {
    for (int i = 0; i < SOUND_SLOTS; ++i) {
        if (recorder::Sound()->m_pSlot[i] == sound) return i;
    }
    return -1;
}

}  // namespace

namespace recorder {

CDDraw* Display() {
    static CDDraw display;
    return &display;
}

CDSound* Sound() {
    static CDSound sound;
    return &sound;
}

void SetPictures(std::set<std::string> names) {
    g_pictures = std::move(names);
}

std::string Take() {
    return std::move(g_lines);
}

std::string TakeOnly(const std::string& word) {
    std::istringstream all(Take());
    std::string found;
    for (std::string line; std::getline(all, line);) {
        if (line.compare(0, word.size() + 1, word + ' ') == 0) found += line + '\n';
    }
    return found;
}

void Clear() {
    Sound()->Term();
    for (auto& dib : Display()->m_apDib) dib = nullptr;
    g_pictures.clear();
    g_lines.clear();
}

}  // namespace recorder

// --- the display ---

CDDraw::CDDraw() : m_apDib() {}
CDDraw::~CDDraw() = default;

HRESULT CDDraw::ClearParts(int nParts, DWORD dwColor) {
    g_lines += "clear " + std::to_string(nParts) + ' ' + std::to_string(dwColor) + '\n';
    return 0;
}

HRESULT CDDraw::BltBack(int x, int y, const RECT* pRect, int nParts) {
    LogCopy(x, y, pRect, nParts, "");
    return 0;
}

HRESULT CDDraw::BltBackKey(int x, int y, const RECT* pRect, int nParts) {
    LogCopy(x, y, pRect, nParts, " key");
    return 0;
}

int CDDraw::LoadDib(const char* pszFile, int nSlot) {
    g_lines += "image " + std::to_string(nSlot) + ' ' + pszFile + '\n';
    const bool bFound = g_pictures.count(BaseName(pszFile)) != 0;
    m_apDib[nSlot] = bFound ? PictureOf(nSlot) : nullptr;
    return bFound ? 0 : 1;
}

int CDDraw::DrawDib(CDib* pDib, const RECT* pDest, const RECT* pSource, int nParts) {
    LogDraw(pDib ? "picture" : "nothing", pDest, pSource, nParts);
    return 0;
}

int CDDraw::DrawDibSlot(int nSlot, const RECT* pDest, const RECT* pSource, int nParts) {
    LogDraw("slot " + std::to_string(nSlot), pDest, pSource, nParts);
    return 0;
}

// --- the sound device ---

CDSound::CDSound() : m_pDS(nullptr), m_pSlot() {}
CDSound::~CDSound() {
    Term();
}

int CDSound::Term() {
    for (auto& pSlot : m_pSlot) {
        delete pSlot;
        pSlot = nullptr;
    }
    return 0;
}

CDSBuffer::CDSBuffer() : CDSBuffer(nullptr) {}
CDSBuffer::CDSBuffer(IDirectSound*) : m_szName() {
    g_lines += "new sound\n";
}
CDSBuffer::~CDSBuffer() {
    g_lines += "end sound\n";
}
void CDSBuffer::SetFileName(const char* pszName) {
    std::strncpy(m_szName, pszName, sizeof m_szName - 1);
    g_lines += "name " + std::to_string(SlotOf(this)) + ' ' + pszName + '\n';
}
int CDSBuffer::Load(int bStream) {
    g_lines += "load " + std::to_string(SlotOf(this)) + " stream=" + std::to_string(bStream) + '\n';
    return 0;
}
int CDSBuffer::Play() {
    g_lines += "play " + std::to_string(SlotOf(this)) + '\n';
    return 0;
}
