#include "charts/session.h"

#include <algorithm>
#include <charconv>
#include <functional>
#include <map>
#include <sstream>

#include "display/ddraw.h"
#include "display/dib.h"
#include "host/host.h"
#include "platform/timer.h"
#include "playback/layout.h"
#include "playback/playback.h"
#include "shell/shell.h"
#include "shell/shell_test.h"
#include "sound/dsbuffer.h"
#include "sound/dsound.h"

namespace {

std::string Join() {
    return "";
}
template <class Value, class... Values>
std::string Join(const Value& value, const Values&... values) {
    std::ostringstream out;
    if constexpr (std::is_floating_point_v<Value>) {
        char digits[32];  // the shortest that reads back as the same
        out << std::string(digits, std::to_chars(digits, digits + sizeof digits, value).ptr);
    } else {
        out << value;
    }
    return out.str() + (sizeof...(values) ? " " : "") + Join(values...);
}

int32_t ChartTime() {
    return static_cast<int32_t>(static_cast<uint32_t>(g_dwSeekTime) - g_dwStartTime + g_dwNowTime);
}

headless::Action ActionOf(const std::string& word, int64_t a, int64_t b, const std::string& path) {
    const std::map<std::string, headless::Action> actions = {
        {"key", headless::Key(static_cast<int>(a))},
        {"send", headless::Remote(static_cast<uint32_t>(a), b)},
        {"doubleclick", headless::DoubleClick()},
        {"menu", headless::WantMenu()},
        {"pick", headless::ChooseMenu(static_cast<int>(a))},
        {"drop", headless::Drop(path)},
        {"choose", headless::ChooseFile(path)},
        {"cancel", headless::CancelFile()},
        {"answer", headless::AnswerBox()},
        {"close", headless::Close()}};
    return actions.at(word);
}

}  // namespace

Session::Session(const std::filesystem::path& chart)
    : folder_(chart.parent_path()), chart_(test::TempFolder::Backslashes(chart)) {}

std::string Session::Play(const std::string& trace) {
    test::ResetProgram();
    headless::EndAt(1'000'000);
    headless::OnFrame([this](const headless::Frame&) { OnFrame(); });
    std::istringstream lines(trace);
    std::string line;
    for (std::getline(lines, line), inputs_ = {line}; std::getline(lines, line);)
        if (line.rfind("> ", 0) == 0) inputs_.push_back(line);
    for (const std::string& input : inputs_) Schedule(input);
    Do(inputs_[0]);
    if (!loads_ && g_pBMS) SayChart();
    for (const std::string& fault : headless::Faults()) Say("fault " + fault);
    test::ResetProgram();
    return text_;
}

void Session::Put(std::string line) {
    for (const std::string& folder : {test::TempFolder::Backslashes(folder_), folder_})
        for (size_t at; (at = line.find(folder)) != std::string::npos;) line.replace(at, folder.size(), ".");
    for (const char c : line) {
        char code[8];
        std::snprintf(code, sizeof code, c >= ' ' && c <= '~' ? "%c" : "\\x%02X", c & 0xFF);
        text_ += code;
    }
    text_ += '\n';
}

void Session::Say(const std::string& line) {
    const auto& titles = headless::Titles();
    const auto& dialogs = headless::FileDialogs();
    const auto& boxes = headless::Boxes();
    const auto& posted = headless::PostedToInstances();
    while (titles_ < titles.size()) Put("title " + titles[titles_++]);
    while (dialogs_ < dialogs.size()) Put("dialog " + dialogs[dialogs_++].folder);
    for (; boxes_ < boxes.size(); ++boxes_) Put(Join("box", boxes[boxes_].caption, "/", boxes[boxes_].text));
    for (; posted_ < posted.size(); ++posted_)
        Put(Join("posted", posted[posted_].instance, posted[posted_].message, posted[posted_].wparam));
    std::istringstream log(headless::Log().substr(logged_));
    logged_ = headless::Log().size();
    for (std::string text; std::getline(log, text);) Put("log " + text);
    Put(line);
}

void Session::SayChart() {
    const CBMS& chart = *g_pBMS;
    const std::pair<const char*, const char*> texts[] = {
        {"title", chart.m_pszTitle}, {"artist", chart.m_pszArtist}, {"genre", chart.m_pszGenre}};
    for (const auto& [name, text] : texts)
        if (text) Say(Join("chart", name, text));
    Say(Join("chart player", chart.m_nPlayer, "level", chart.m_nPlayLevel, "rank", chart.m_nRank, "volwav",
             chart.m_nVolWav, "total", chart.m_nTotal, "bpm", chart.m_dBPM));
    for (int i = 0; i < BMS_SLOTS; ++i) {
        if (chart.m_adBPM[i] != BMS_DEFAULT_BPM) Put(Join("bpm", i, chart.m_adBPM[i]));
        const CDSBuffer* sound = g_pDSound ? g_pDSound->m_pSlot[i] : nullptr;
        if (chart.m_aszWav[i][0])
            Put(Join("wav", i, chart.m_aszWav[i], sound && sound->m_pDSB ? "loaded" : "silent"));
        const CDib* dib = g_pDDraw ? g_pDDraw->m_apDib[i] : nullptr;
        if (!chart.m_aszBmp[i][0]) continue;
        Put(Join("bmp", i, chart.m_aszBmp[i], dib ? Join(dib->GetWidth(), dib->GetHeight()) : "missing"));
    }
    for (int i = 0; i < BMS_BGADEFS; ++i) {
        const BgaDef& d = chart.m_aBgaDef[i];
        if (d.nX1 || d.nY1 || d.nX2 || d.nY2 || d.nDX || d.nDY || d.nBmp)
            Put(Join("bga", i, "picture", d.nBmp, "from", d.nX1, d.nY1, d.nX2, d.nY2, "to", d.nDX, d.nDY));
    }
    for (int i = 0; i < chart.m_nLength; ++i)
        Put(Join("length", chart.m_pLength[i].nMeasure, chart.m_pLength[i].dLength));
    SayBars();
    SayObjects("tempo", chart.m_ppTempo, chart.m_nTempo, g_pTempoList);
    SayObjects("bgm", chart.m_ppBgm, chart.m_nBgm, g_pBgmList);
    SayObjects("note", chart.m_ppNote, chart.m_nNote, g_pNoteList);
    SayObjects("bga", chart.m_ppBga, chart.m_nBga, g_pBgaList);
}

// Bars that go on as the one before them are left out.
void Session::SayBars() {
    Put(Join("measures", g_pBMS->m_nMeasure));
    BmsMeasure last = {-1, 0, 0};
    for (int i = 0; g_pBMS->m_pMeasure && i < g_pBMS->m_nMeasure; ++i) {
        const BmsMeasure& m = g_pBMS->m_pMeasure[i];
        const bool same = m.dLength == last.dLength && m.dDuration == last.dDuration;
        if (!same || m.dStart != last.dStart + last.dDuration)
            Put(Join("measure", i, "length", m.dLength, "starts", m.dStart, "lasts", m.dDuration));
        last = m;
    }
}

std::string Session::NameOf(const BmsObject& object) const {
    if (!object.pObject) return "nothing";
    for (int i = 0; i < BMS_SLOTS; ++i) {
        if (g_pDSound && object.pObject == g_pDSound->m_pSlot[i]) return Join("wav", i);
        if (g_pDDraw && object.pObject == g_pDDraw->m_apDib[i]) return Join("bmp", i);
    }
    return Join("definition", static_cast<const BgaDef*>(object.pObject) - g_pBMS->m_aBgaDef);
}

void Session::SayObjects(const char* name, BmsObject* const* list, int count, const BmsEvent* events) {
    for (int i = 0; i < count; ++i) {
        const BmsObject& o = *list[i];
        const std::string what = name == std::string("tempo") ? Join(o.dValue) : NameOf(o);
        const std::string played = events ? Join("at", events[i].nTime) : "not played";
        Put(Join(name, o.nMeasure, o.dPos, "channel", o.nChannel, what, "compiled", o.dTime, played));
    }
}

void Session::SayList(const char* name, const BmsEvent* list, int count, int cursor) {
    std::string marks;
    for (int i = 0; i < std::min(count, 64); ++i) {
        marks += list[i].bDone ? " done" : " -";
        if (list == g_pBarList || list == g_pTempoList) marks += Join("", list[i].nChannel);
    }
    if (count) Put(Join("list", name, "cursor", cursor) + marks);
}

void Session::SayFrame(const std::string& lines) {
    std::istringstream in(lines);
    for (std::string line; std::getline(in, line);) Say(line);
    SayLayers();
    const bool bar = g_pAnchor >= g_pBarList && g_pAnchor < g_pBarList + g_nBarCount;
    Put(Join("state", test::StateName(), "measure", g_nStartMeasure, "seek", g_dwSeekTime, "speed", g_fSpeed,
             "host", g_bHost, "players", g_nPlayers, "tempo", g_dBPM, "pixels", g_dPixelsPerSec, "anchor",
             bar ? "bar" : "tempo", g_pAnchor - (bar ? g_pBarList : g_pTempoList)));
    SayList("bar", g_pBarList, g_nBarCount, g_nBarCursor);
    SayList("tempo", g_pTempoList, g_nTempoCount, g_nTempoCursor);
    SayList("bgm", g_pBgmList, g_nBgmCount, g_nBgmCursor);
    SayList("note", g_pNoteList, g_nNoteCount, g_nNoteCursor);
    SayList("bga", g_pBgaList, g_nBgaCount, g_nBgaCursor);
}

// Pictures for this have the value 1 + x + 1024 * y in each pixel, so a layer tells which part of one it
// shows.
void Session::SayLayers() {
    for (int layer : LAYERS) {
        RECT box = {LAYER_SIZE, LAYER_SIZE, 0, 0};
        int first = -1;
        bool mixed = false;
        for (int i = 0; i < LAYER_SIZE * LAYER_SIZE; ++i) {
            const int x = i % LAYER_SIZE, y = i / LAYER_SIZE;
            const int place = static_cast<int>(test::PixelAt(g_pDDraw->m_apParts[layer], x, y)) - 1;
            if (place < 0) continue;
            if (first < 0) first = place, box.left = x, box.top = y;
            box.right = std::max(box.right, x + 1), box.bottom = y + 1;
            mixed |= place != first + x - box.left + 1024 * (y - box.top);
        }
        std::string text = Join("layer", layer, mixed ? "mixed" : "from", first % 1024, first / 1024, "at",
                                box.left, box.top, box.right, box.bottom);
        if (first < 0) text = Join("layer", layer, "blank");
        if (shown_[layer] != text) Put(text);
        shown_[layer] = text;
    }
}

void Session::OnFrame() {
    if (loads_ != headless::Titles().size()) {  // another chart
        loads_ = headless::Titles().size();
        trace_.Begin();
        SayChart();
        turns_ = 1;
    }
    const std::string lines = trace_.Take(ChartTime(), true);
    if (turns_ == 0 || --turns_ > 0) {  // not shown but for what it fired
        std::istringstream in(lines);
        for (std::string line; std::getline(in, line);)
            if (line.rfind("fire ", 0) == 0) Say(line);
        if (lines.find("\nfire bga") != std::string::npos) SayLayers();
        return;
    }
    SayFrame(lines);
    while (turns_ == 0 && ++next_ < inputs_.size()) Do(inputs_[next_]);
    if (next_ >= inputs_.size() && !timed_) headless::At(headless::Now(), headless::Close());
}

void Session::Do(const std::string& input) {
    std::istringstream in(input.substr(2));
    std::string word;
    int64_t a = 0, b = 0;
    in >> word;
    if (word == "at") return;
    Say(input);
    if (word == "lumetra") {
        std::string line = input.substr(std::string("> lumetra").size());
        if (const size_t at = line.find('@'); at != std::string::npos) line.replace(at, 1, chart_);
        const int code = WinMain(GetProgramModule(), nullptr, line.data(), 1);
        return Say(Join("exit", code));
    }
    in >> a >> b;
    const UINT message = word == "key" ? WM_KEYDOWN : static_cast<UINT>(a);
    if (word == "run") {
        turns_ = static_cast<int>(a);
    } else if (word == "frame") {
        const uint32_t stamp = static_cast<uint32_t>(a - g_dwSeekTime) + g_dwStartTime;
        if (stamp - g_dwNowTime > 100'000) host::CloseSound();  // nobody hears days of it
        headless::SetClock(uint64_t{stamp} * 1'000'000);
        PlayFrame();
        SayFrame(trace_.Take(ChartTime(), true));
    } else {
        WindowProc(g_hWnd, message, static_cast<WPARAM>(word == "key" ? a : b), 0);
        SayFrame("");
        if (message == WM_KEYDOWN || message == WM_REMOTE_RESTART || message == WM_REMOTE_SEEK)
            trace_.Begin();
    }
}

void Session::Schedule(const std::string& input) {
    std::istringstream in(input);
    std::string mark, at, word, name;
    uint64_t ms = 0;
    int64_t a = 0, b = 0;
    if (!(in >> mark >> at >> ms >> word) || at != "at") return;
    timed_ = true;
    headless::At(ms, headless::Call([this, input] { Say(input); }));
    if (word == "state") return headless::At(ms, headless::Call([this] { SayFrame(""); }));
    if (word == "choose" || word == "drop") in >> name;
    in >> a >> b;
    headless::At(ms, ActionOf(word, a, b, folder_ + "/" + name));
}
