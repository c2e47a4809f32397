#include "support/recorder.h"

#include <cstring>
#include <sstream>

#include "host/host.h"
#include "platform/files/files.h"
#include "playback/layout.h"
#include "support/calls.h"
#include "support/media.h"
#include "support/tempfolder.h"

namespace {

std::string g_lines;
std::set<std::string> g_pictures;
const void* g_drawn;  // the surface whose context was handed out last

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

int PartsOf(const void* surface) {
    for (int i = 0; i < DDRAW_PARTS; ++i) {
        if (recorder::Display()->m_apParts[i] == surface) return i;
    }
    return -1;
}

int SlotOf(const void* buffer) {
    for (int i = 0; i < SOUND_SLOTS; ++i) {
        const CDSBuffer* sound = recorder::Sound()->m_pSlot[i];
        if (sound && sound->m_pDSB == buffer) return i;
    }
    return -1;
}

std::string NameOfCopy(const CallFacts& copy) {
    const int parts = PartsOf(copy.pFrom);
    const RECT& r = copy.source;
    if (parts == PARTS_SKIN && r.right == SCREEN_WIDTH) return "skin";
    if (IsLayer(parts) && r.right - r.left == LAYER_SIZE) return "layer" + std::to_string(parts);
    return NameOfRect(r, parts);
}

std::string Corners(const RECT& r) {
    std::ostringstream text;
    text << ' ' << r.left << ',' << r.top << ',' << r.right << ',' << r.bottom;
    return text.str();
}

std::string LineOf(const CallFacts& call) {
    std::ostringstream line;
    switch (call.eCall) {
        case PlatformCall::kBltFast:
            line << NameOfCopy(call) << ' ' << call.dest.left << ',' << call.dest.top
                 << (call.nValue & DDBLTFAST_SRCCOLORKEY ? " key\n" : "\n");
            break;
        case PlatformCall::kFill:
            line << "clear " << PartsOf(call.pObject) << ' ' << call.nValue << '\n';
            break;
        case PlatformCall::kStretchDIBits:
            line << "draw " << PartsOf(g_drawn) << Corners(call.dest) << Corners(call.source) << '\n';
            break;
        case PlatformCall::kPlay:
            line << "play " << SlotOf(call.pObject) << '\n';
            break;
        case PlatformCall::kBufferRelease:
            line << "end " << SlotOf(call.pObject) << '\n';
            break;
        case PlatformCall::kFileOpen:
            line << "open " << static_cast<const char*>(call.pObject) << '\n';
            break;
        default:
            break;
    }
    return line.str();
}

FileStream* OpenStored(const char* name, const std::string& bytes) {
    static const test::TempFolder folder;
    test::ThenAsk(nullptr);
    FileStream* file = FileOpen(folder.Write(name, bytes).c_str(), "rb");
    return file;
}

// The file that is there for a name, or null.
FileStream* OpenFor(const std::string& path) {
    static const std::string picture = test::Bmp(100, 80, 0x123456);
    static const std::string sound = test::SquareWav(1, 1, {1, 1000, 8}).replace(40, 4, "\xA8\x61\0\0", 4);
    const std::string name = path.substr(path.rfind('\\') + 1);
    if (g_pictures.count(name) != 0) return OpenStored("picture", picture);
    return name.ends_with(".wav") ? OpenStored("sound", sound) : nullptr;
}

bool OnCall(const CallFacts& call, int64_t* result) {
    if (call.eCall == PlatformCall::kSurfaceDC) g_drawn = call.pObject;
    g_lines += LineOf(call);
    if (call.eCall != PlatformCall::kFileOpen) return false;
    FileStream* file = OpenFor(static_cast<const char*>(call.pObject));
    test::ThenAsk(OnCall);
    *result = reinterpret_cast<int64_t>(file);
    return file != nullptr;
}

}  // namespace

namespace recorder {

CDDraw* Display() {
    static CDDraw* const display = [] {
        auto* made = new CDDraw;
        made->Init(nullptr, 0, 0, SCREEN_WIDTH, SCREEN_HEIGHT);
        made->CreateParts(PARTS_SPRITES, SPRITES_WIDTH, SPRITES_HEIGHT);
        made->CreateParts(PARTS_SKIN, SCREEN_WIDTH, SCREEN_HEIGHT);
        for (const int layer : LAYERS) made->CreateParts(layer, LAYER_SIZE, LAYER_SIZE);
        return made;
    }();
    return display;
}

CDSound* Sound() {
    static CDSound* const sound = [] {
        auto* made = new CDSound;
        made->Init(nullptr, 1);
        host::CloseSound();
        return made;
    }();
    return sound;
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

void EmptySlots() {
    for (int i = 0; i < DDRAW_SLOTS; ++i) Display()->FreeDib(i);
    for (CDSBuffer*& sound : Sound()->m_pSlot) {
        delete sound;
        sound = nullptr;
    }
}

void Clear() {
    EmptySlots();
    g_pictures.clear();
    g_lines.clear();
    test::ForgetCalls();
    test::ThenAsk(OnCall);
}

}  // namespace recorder
