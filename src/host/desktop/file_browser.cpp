#include "host/desktop/file_browser.h"

#include <FL/Fl.H>
#include <FL/fl_draw.H>

#include "host/desktop/dialogs.h"
#include "host/desktop/native.h"

namespace host::desktop {
namespace {

constexpr double kTick = 0.03;  // s, between looks for heads that have been read

// Cuts text in the current font at a width, with an ellipsis.
std::string Shortened(const std::string& text, int width) {
    constexpr char kEllipsis[] = "\u2026";
    if (fl_width(text.c_str(), static_cast<int>(text.size())) <= width) return text;
    const double room = width - fl_width(kEllipsis);
    std::string cut = text;
    while (!cut.empty() && fl_width(cut.c_str(), static_cast<int>(cut.size())) > room) {
        do cut.pop_back();
        while (!cut.empty() && (static_cast<unsigned char>(text[cut.size()]) & 0xC0) == 0x80);
    }
    return cut + kEllipsis;
}

struct Cell {
    int left, right, y, height;
};

void DrawText(const std::string& text, const Cell& cell, Fl_Align align) {
    if (text.empty() || cell.right <= cell.left) return;
    fl_font(FontFor(text), DialogTextSize());
    const std::string shown = Shortened(text, cell.right - cell.left);
    const int length = static_cast<int>(shown.size());
    const int width = static_cast<int>(fl_width(shown.c_str(), length));
    const int x = align == FL_ALIGN_RIGHT ? cell.right - width : cell.left;
    fl_draw(shown.c_str(), length, x, cell.y + (cell.height + fl_height()) / 2 - fl_descent());
}

void DrawFolder(int x, int y, int size) {
    const int height = size * 3 / 4, tab = size / 6, top = y + (size - height) / 2;
    fl_color(fl_rgb_color(214, 158, 46));
    fl_rectf(x, top, size * 2 / 5, 2 * tab);
    fl_rectf(x, top + tab, size, height - tab);
    fl_color(fl_rgb_color(246, 200, 95));
    fl_rectf(x, top + 2 * tab, size, height - 2 * tab);
}

}  // namespace

FileBrowser::FileBrowser(int x, int y, int w, int h) : Fl_Hold_Browser(x, y, w, h) {
    format_char(0);  // names may hold any letter
    column_char(0);
    has_scrollbar(VERTICAL);
    Fl::add_timeout(kTick, OnTick, this);
}

FileBrowser::~FileBrowser() {
    Fl::remove_timeout(OnTick, this);
}

void FileBrowser::Fill(const std::string& folder, std::vector<FileEntry> entries) {
    m_folder = folder;
    m_first_id += m_entries.size();
    m_entries = std::move(entries);
    m_rows.assign(m_entries.size(), {});
    m_reader.Read({});
    clear();
    for (const FileEntry& entry : m_entries) add(entry.shown.c_str());
}

const FileEntry* FileBrowser::Marked() const {
    const int line = value();
    return line >= 1 && line <= static_cast<int>(m_entries.size()) ? &m_entries[line - 1] : nullptr;
}

void FileBrowser::Mark(size_t row) {
    value(static_cast<int>(row) + 1);
    middleline(static_cast<int>(row) + 1);
}

FileBrowser::Columns FileBrowser::FindColumns() const {
    const int gap = DialogUnit(8), left = x() + gap + DialogTextSize() + gap;
    const int right = x() + w() - Fl::scrollbar_size() - gap, width = right - left;
    return {left, left + width * 34 / 100, left + width * 70 / 100, left + width * 92 / 100, right};
}

int FileBrowser::item_height(void*) const {
    return DialogTextSize() + DialogUnit(9);
}

int FileBrowser::incr_height() const {
    return item_height(nullptr);
}

void FileBrowser::item_draw(void* item, int x, int y, int, int h) const {
    const int line = lineno(item);
    if (line < 1 || line > static_cast<int>(m_entries.size())) return;
    const FileEntry& entry = m_entries[line - 1];
    Row& row = m_rows[line - 1];
    const Columns at = FindColumns();
    const int gap = DialogUnit(8), icon = DialogTextSize();
    const Fl_Color behind = value() == line ? selection_color() : color();
    const Fl_Color ink = fl_contrast(textcolor(), behind);
    if (entry.folder) DrawFolder(x + DialogUnit(5), y + (h - icon) / 2, icon);
    fl_color(ink);
    DrawText(entry.shown, {at.name, entry.folder ? at.end : at.title - gap, y, h}, FL_ALIGN_LEFT);
    if (entry.folder) return;
    if (!row.read)
        m_wanted.push_back({m_first_id + static_cast<uint64_t>(line) - 1, JoinPath(m_folder, entry.name)});
    DrawText(row.head.title, {at.title, at.artist - gap, y, h}, FL_ALIGN_LEFT);
    fl_color(fl_color_average(ink, behind, 0.7f));
    DrawText(row.head.artist, {at.artist, at.level - gap, y, h}, FL_ALIGN_LEFT);
    DrawText(row.head.level, {at.level, at.end, y, h}, FL_ALIGN_RIGHT);
}

// The charts that came into view are read, and no longer those that left it.
void FileBrowser::draw() {
    m_wanted.clear();
    Fl_Hold_Browser::draw();
    if (!m_wanted.empty()) m_reader.Read(m_wanted);
}

void FileBrowser::TakeHeads() {
    bool changed = false;
    for (HeadReader::Result& result : m_reader.TakeResults()) {
        if (result.id < m_first_id || result.id - m_first_id >= m_rows.size()) continue;
        Row& row = m_rows[result.id - m_first_id];
        row.head = std::move(result.head);
        row.read = changed = true;
    }
    if (changed) redraw();
}

void FileBrowser::OnTick(void* browser) {
    static_cast<FileBrowser*>(browser)->TakeHeads();
    Fl::repeat_timeout(kTick, OnTick, browser);
}

int FileBrowser::handle(int event) {
    if (event == FL_KEYBOARD && HandleKey()) return 1;
    if (event == FL_PUSH)
        m_double = m_clicks.Press(native::EventTime(), Fl::event_x_root(), Fl::event_y_root());
    return Fl_Hold_Browser::handle(event);
}

bool FileBrowser::HandleKey() {
    const int key = Fl::event_key();
    if (key == FL_Enter || key == FL_KP_Enter) {
        on_enter();
        return true;
    }
    if (key == FL_Home || key == FL_End) {
        value(key == FL_Home ? 1 : size());
        middleline(value());
        do_callback();
        return true;
    }
    if (Fl::event_length() == 0 || Fl::event_text()[0] == '\t' ||
        Fl::event_state(FL_CTRL | FL_ALT | FL_META)) {
        return false;
    }
    if (static_cast<unsigned char>(Fl::event_text()[0]) < ' ' || Fl::event_text()[0] == 127) return false;
    const uint64_t now = Nanoseconds();
    if (now - m_typed_at > 1'000'000'000) m_typed.clear();
    m_typed_at = now;
    m_typed += Fl::event_text();
    on_typed(m_typed);
    return true;
}

}  // namespace host::desktop
