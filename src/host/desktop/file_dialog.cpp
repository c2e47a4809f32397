#include <FL/Fl.H>
#include <FL/Fl_Box.H>
#include <FL/Fl_Button.H>
#include <FL/Fl_Check_Button.H>
#include <FL/Fl_Input.H>
#include <FL/Fl_Window.H>
#include <FL/fl_draw.H>

#include <algorithm>
#include <cctype>

#include "host/desktop/desktop.h"
#include "host/desktop/dialogs.h"
#include "host/desktop/file_browser.h"
#include "host/desktop/file_list.h"
#include "host/desktop/input_method.h"
#include "host/desktop/look.h"

namespace host {
namespace desktop {
namespace {

// The desktop's own font, until a letter needs another.
class NameInput : public Fl_Input {
public:
    using Fl_Input::Fl_Input;

    void Set(const std::string& text) {
        value(text.c_str());
        ChooseFont();
    }
    int handle(int event) override {
        const int handled = Fl_Input::handle(event);
        ChooseFont();
        return handled;
    }

private:
    void ChooseFont() {
        const Fl_Font font = FontFor(value());
        if (font == textfont()) return;
        textfont(font);
        redraw();
    }
};

class FileDialog : public DialogWindow {
public:
    FileDialog(const FileRequest& request, ModalLoop* loop);

    void Enter(const std::string& folder, const std::string& mark);
    void GoUp();
    void Activate();                        // what is marked in the list
    void Accept(const std::string& typed);  // what stands in the line
    void JumpTo(const std::string& beginning);
    const std::string& chosen() const { return m_chosen; }
    int handle(int event) override;
    void FocusList() { m_browser->take_focus(); }
    void ShowMarked();

private:
    void Build();
    void BuildHeads();
    void BuildButtons(int top);
    Fl_Box* AddText(int x, int y, int w, int h);
    void Fill(const std::string& mark);
    bool HandleKey();
    void Open(const FileEntry& entry);
    std::string Patterns() const { return m_all->value() ? "" : m_request.filter.patterns; }

    const FileRequest& m_request;
    ModalLoop* m_loop;
    std::string m_folder, m_chosen;
    Fl_Box *m_where = nullptr, *m_notice = nullptr;
    Fl_Button* m_cancel = nullptr;
    FileBrowser* m_browser = nullptr;
    NameInput* m_input = nullptr;
    // No choice menu: while one is open, FLTK runs a loop in which messages of other instances would wait.
    Fl_Check_Button* m_all = nullptr;
};

// Letter case does not matter.
bool BeginsWith(const std::string& name, const std::string& beginning) {
    if (name.size() < beginning.size()) return false;
    for (size_t at = 0; at < beginning.size(); ++at) {
        const auto a = static_cast<unsigned char>(name[at]), b = static_cast<unsigned char>(beginning[at]);
        if (std::tolower(a) != std::tolower(b)) return false;
    }
    return true;
}

// FLTK takes `@` in a label for the beginning of a symbol.
std::string Label(std::string text) {
    for (size_t at = 0; (at = text.find('@', at)) != std::string::npos; at += 2) text.insert(at, 1, '@');
    return text;
}

void OnList(Fl_Widget* list, void* dialog) {
    if (Fl::event() == FL_RELEASE && static_cast<FileBrowser*>(list)->IsDoubleClick()) {
        static_cast<FileDialog*>(dialog)->Activate();
    } else {
        static_cast<FileDialog*>(dialog)->ShowMarked();
    }
}

void OnCancel(Fl_Widget*, void* loop) {
    static_cast<ModalLoop*>(loop)->End();
}

void OnAccept(Fl_Widget* widget, void* input) {
    static_cast<FileDialog*>(widget->window())->Accept(static_cast<Fl_Input*>(input)->value());
}

void OnFilter(Fl_Widget*, void* dialog) {
    static_cast<FileDialog*>(dialog)->Enter("", "");
    static_cast<FileDialog*>(dialog)->FocusList();
}

FileDialog::FileDialog(const FileRequest& request, ModalLoop* loop)
    : DialogWindow(DialogUnit(680), DialogUnit(460)), m_request(request), m_loop(loop) {
    Build();
    end();
    xclass("lumetra");
    callback(OnCancel, loop);
    set_modal();
    resizable(m_browser);
    size_range(DialogUnit(420), DialogUnit(280));
}

Fl_Box* FileDialog::AddText(int x, int y, int w, int h) {
    Fl_Box* box = new Fl_Box(x, y, w, h);
    box->align(FL_ALIGN_LEFT | FL_ALIGN_INSIDE | FL_ALIGN_CLIP);
    box->labelsize(DialogTextSize());
    return box;
}

void FileDialog::Build() {
    const int edge = DialogUnit(12), row = DialogUnit(28), wide = w() - 2 * edge;
    m_where = AddText(edge, DialogUnit(8), wide, row);
    m_notice = AddText(edge, h() - row - DialogUnit(2), wide, row - DialogUnit(4));
    m_notice->labelfont(FontForAnything());
    m_notice->labelcolor(fl_contrast(FL_DARK_RED, FL_BACKGROUND_COLOR));
    const int list_top = m_where->y() + 2 * row - DialogUnit(8);
    const int list_bottom = m_notice->y() - 2 * row - DialogUnit(16);
    m_browser = new FileBrowser(edge, list_top, wide, list_bottom - list_top);
    m_browser->box(FL_BORDER_BOX);
    m_browser->textsize(DialogTextSize());
    m_browser->callback(OnList, this);
    m_browser->on_enter = [this] { Activate(); };
    m_browser->on_typed = [this](const std::string& beginning) { JumpTo(beginning); };
    BuildHeads();
    BuildButtons(list_bottom + DialogUnit(8));
}

// Above the columns of the list.
void FileDialog::BuildHeads() {
    const FileBrowser::Columns at = m_browser->FindColumns();
    const int height = DialogUnit(20), top = m_browser->y() - height;
    const struct {
        const char* text;
        int left, right;
    } heads[] = {{"Name", at.name, at.title},
                 {"Title", at.title, at.artist},
                 {"Artist", at.artist, at.level},
                 {"Level", at.level, at.end}};
    for (const auto& [text, left, right] : heads) {
        Fl_Box* box = AddText(left - 3, top, right - left + 3, height);  // FLTK indents labels by 3
        box->label(text);
        box->labelsize(DialogTextSize() * 7 / 8);
        box->labelcolor(FL_INACTIVE_COLOR);
        if (left == at.level) box->align(FL_ALIGN_RIGHT | FL_ALIGN_INSIDE);
    }
}

void FileDialog::BuildButtons(int top) {
    const int edge = DialogUnit(12), row = DialogUnit(28), label = DialogUnit(56), button = DialogUnit(96);
    const int gap = DialogUnit(8), input_w = w() - 2 * edge - gap - label - button;
    m_input = new NameInput(edge + label, top, input_w, row, "Name:");
    m_input->box(FL_BORDER_BOX);
    m_input->textsize(DialogTextSize());
    m_input->textcolor(fl_contrast(FL_FOREGROUND_COLOR, FL_BACKGROUND2_COLOR));
    m_input->cursor_color(m_input->textcolor());
    DefaultButton* open = new DefaultButton(w() - edge - button, top, button, row, "Open");
    open->callback(OnAccept, m_input);
    m_input->when(FL_WHEN_ENTER_KEY | FL_WHEN_NOT_CHANGED);
    m_input->callback(OnAccept, m_input);
    const int choice_y = top + row + gap;
    Fl_Box* type = AddText(edge, choice_y, label + input_w - button - gap, row);
    type->copy_label(Label("Type: " + m_request.filter.name).c_str());
    m_all = new Fl_Check_Button(w() - edge - 2 * button - gap, choice_y, button, row, "&All files");
    m_all->down_box(FL_BORDER_BOX);
    m_all->callback(OnFilter, this);
    m_cancel = new Fl_Button(w() - edge - button, choice_y, button, row, "Cancel");
    m_cancel->callback(OnCancel, m_loop);
    for (Fl_Widget* widget : {static_cast<Fl_Widget*>(m_input), static_cast<Fl_Widget*>(open),
                              static_cast<Fl_Widget*>(m_all), static_cast<Fl_Widget*>(m_cancel)}) {
        widget->labelsize(DialogTextSize());
    }
}

void FileDialog::Enter(const std::string& folder, const std::string& mark) {
    if (!folder.empty()) m_folder = folder;
    const std::string shown = Label(ShownName(m_folder));
    m_where->labelfont(FontFor(shown));
    m_where->copy_label(shown.c_str());
    Fill(mark);
}

void FileDialog::Fill(const std::string& mark) {
    m_browser->Fill(m_folder, ListFolder(m_folder, Patterns()));
    const std::vector<FileEntry>& entries = m_browser->entries();
    const auto named = [&](const FileEntry& entry) { return entry.name == mark; };
    const auto file = [](const FileEntry& entry) { return !entry.folder; };
    auto marked = std::find_if(entries.begin(), entries.end(), named);
    if (marked == entries.end()) marked = std::find_if(entries.begin(), entries.end(), file);
    if (marked == entries.end()) marked = entries.begin();
    if (!entries.empty()) m_browser->Mark(static_cast<size_t>(marked - entries.begin()));
    ShowMarked();
    if (!IsReadable(m_folder)) m_notice->label("This folder cannot be read");
}

void FileDialog::ShowMarked() {
    const FileEntry* entry = m_browser->Marked();
    m_input->Set(entry && !entry->folder ? entry->shown : "");
    m_notice->label("");
}

void FileDialog::Open(const FileEntry& entry) {
    if (entry.name == "..") return GoUp();
    const std::string path = JoinPath(m_folder, entry.name);
    if (entry.folder) return Enter(path, "");
    m_chosen = path;
    m_loop->End();
}

void FileDialog::Activate() {
    if (const FileEntry* entry = m_browser->Marked()) {
        const FileEntry copy = *entry;
        Open(copy);
    }
}

void FileDialog::GoUp() {
    const size_t slash = m_folder.find_last_of('/');
    const std::string last = slash == std::string::npos ? "" : m_folder.substr(slash + 1);
    Enter(ParentFolder(m_folder), last);
}

void FileDialog::Accept(const std::string& typed) {
    // Two names may look the same: the marked one is meant.
    const FileEntry* marked = m_browser->Marked();
    if (typed.empty() || (marked && marked->shown == typed)) return Activate();
    for (const FileEntry& entry : m_browser->entries()) {
        if (entry.shown != typed) continue;
        const FileEntry copy = entry;
        return Open(copy);
    }
    const std::string path = FindTyped(m_folder, typed, m_request.extension);
    if (IsFolder(path)) return Enter(AbsoluteFolder(path), "");
    if (IsFile(path)) {
        m_chosen = path;
        return m_loop->End();
    }
    m_notice->copy_label(Label("There is no file or folder called " + typed).c_str());
    m_input->position(m_input->size(), 0);  // marks what was typed
    m_input->take_focus();
}

void FileDialog::JumpTo(const std::string& beginning) {
    const std::vector<FileEntry>& entries = m_browser->entries();
    for (size_t row = 0; row < entries.size(); ++row) {
        if (!BeginsWith(entries[row].shown, beginning)) continue;
        m_browser->Mark(row);
        return ShowMarked();
    }
}

// Keys that the widget with the focus has left.
bool FileDialog::HandleKey() {
    const int key = Fl::event_key();
    const bool enter = key == FL_Enter || key == FL_KP_Enter;
    if (key == FL_Escape || (enter && Fl::focus() == m_cancel)) {
        m_loop->End();
        return true;
    }
    const bool back = key == FL_BackSpace && Fl::focus() != m_input;
    if (!back && !(key == FL_Up && Fl::event_state(FL_ALT))) return false;
    GoUp();
    return true;
}

int FileDialog::handle(int event) {
    return (event == FL_KEYBOARD && HandleKey()) || DialogWindow::handle(event);
}

// Before the program has a window, others may start while it asks for a chart.
class FirstDialog {
public:
    FirstDialog() : m_first(MainWindow() == nullptr) {
        if (m_first) UnlockStart();
    }
    FirstDialog(const FirstDialog&) = delete;
    FirstDialog& operator=(const FirstDialog&) = delete;
    ~FirstDialog() {
        if (m_first) LockStart(true);
    }

private:
    bool m_first;
};

}  // namespace
}  // namespace desktop

using namespace desktop;

std::string ChooseFile(const FileRequest& request, Pump pump) {
    if (!OpenDisplay()) return "";
    ModalLoop loop(Modal::kFileDialog, pump);
    if (loop.too_deep()) return "";
    const FirstDialog first;
    Fl_Group::current(nullptr);
    SetProgramIcon(request.icon);
    FileDialog dialog(request, &loop);
    dialog.copy_label(request.title.c_str());
    dialog.Enter(AbsoluteFolder(request.folder), request.name);
    PlaceDialog(&dialog);
    dialog.show();
    dialog.FocusList();
    {
        const InputMethod method(&dialog);
        loop.Run();
    }
    dialog.hide();
    PumpWindowSystem(0);
    return loop.ended_by_pump() ? "" : dialog.chosen();
}

}  // namespace host
