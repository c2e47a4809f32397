#include <FL/Fl.H>
#include <FL/Fl_Box.H>
#include <FL/Fl_Button.H>
#include <FL/Fl_Check_Button.H>
#include <FL/Fl_Hold_Browser.H>
#include <FL/Fl_Input.H>
#include <FL/Fl_Return_Button.H>
#include <FL/Fl_Window.H>

#include <cctype>

#include "host/desktop/clicks.h"
#include "host/desktop/desktop.h"
#include "host/desktop/dialogs.h"
#include "host/desktop/file_list.h"
#include "host/desktop/input_method.h"
#include "host/desktop/native.h"

namespace host {
namespace desktop {
namespace {

class FileDialog;

class FileBrowser : public Fl_Hold_Browser {
public:
    FileBrowser(int x, int y, int w, int h, FileDialog* dialog)
        : Fl_Hold_Browser(x, y, w, h), m_dialog(dialog) {}
    int handle(int event) override;
    bool IsDoubleClick() const { return m_double; }

private:
    bool HandleKey();
    FileDialog* m_dialog;
    ClickCounter m_clicks;
    bool m_double = false;  // the last press was a double click
    std::string m_typed;    // the beginning of a name, typed quickly
    uint64_t m_typed_at = 0;
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
    void Fill(const std::string& mark);
    bool HandleKey();
    const FileEntry* Marked() const;
    void Open(const FileEntry& entry);
    std::string Patterns() const { return m_all->value() ? "" : m_request.filter.patterns; }

    const FileRequest& m_request;
    ModalLoop* m_loop;
    std::string m_folder, m_chosen;
    std::vector<FileEntry> m_entries;
    Fl_Box *m_where = nullptr, *m_notice = nullptr;
    Fl_Button* m_cancel = nullptr;
    FileBrowser* m_browser = nullptr;
    Fl_Input* m_input = nullptr;
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

int FileBrowser::handle(int event) {
    if (event == FL_KEYBOARD && HandleKey()) return 1;
    if (event == FL_PUSH)
        m_double = m_clicks.Press(native::EventTime(), Fl::event_x_root(), Fl::event_y_root());
    return Fl_Hold_Browser::handle(event);
}

bool FileBrowser::HandleKey() {
    const int key = Fl::event_key();
    if (key == FL_Enter || key == FL_KP_Enter) {
        m_dialog->Activate();
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
    m_dialog->JumpTo(m_typed);
    return true;
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
    : DialogWindow(DialogUnit(480), DialogUnit(380)), m_request(request), m_loop(loop) {
    Build();
    end();
    xclass("lumetra");
    callback(OnCancel, loop);
    set_modal();
    resizable(m_browser);
    size_range(DialogUnit(320), DialogUnit(240));
}

void FileDialog::Build() {
    const Fl_Font font = FontForAnything();
    const int size = DialogTextSize(), edge = DialogUnit(10), row = DialogUnit(26), label = DialogUnit(56);
    const int button = DialogUnit(90);
    m_where = new Fl_Box(edge, DialogUnit(6), w() - 2 * edge, row);
    m_where->align(FL_ALIGN_LEFT | FL_ALIGN_INSIDE | FL_ALIGN_CLIP);
    m_where->labelfont(font);
    m_where->labelsize(size);
    m_notice = new Fl_Box(edge, h() - row, w() - 2 * edge, row - DialogUnit(4));
    m_notice->align(FL_ALIGN_LEFT | FL_ALIGN_INSIDE | FL_ALIGN_CLIP);
    m_notice->labelfont(font);
    m_notice->labelsize(size);
    m_notice->labelcolor(FL_DARK_RED);
    const int list_top = m_where->y() + row, list_bottom = m_notice->y() - 2 * row - DialogUnit(14);
    m_browser = new FileBrowser(edge, list_top, w() - 2 * edge, list_bottom - list_top, this);
    m_browser->textfont(font);
    m_browser->textsize(size);
    m_browser->format_char(0);  // names may hold any letter
    m_browser->column_char(0);
    m_browser->callback(OnList, this);
    const int input_y = list_bottom + DialogUnit(8), input_w = w() - 3 * edge - label - button;
    m_input = new Fl_Input(edge + label, input_y, input_w, row, "Name:");
    m_input->textfont(font);
    Fl_Return_Button* open = new Fl_Return_Button(w() - edge - button, input_y, button, row, "Open");
    open->callback(OnAccept, m_input);
    m_input->when(FL_WHEN_ENTER_KEY | FL_WHEN_NOT_CHANGED);
    m_input->callback(OnAccept, m_input);
    const int choice_y = input_y + row + DialogUnit(8);
    Fl_Box* type = new Fl_Box(edge, choice_y, label + input_w - button, row);
    type->copy_label(Label("Type: " + m_request.filter.name).c_str());
    type->align(FL_ALIGN_LEFT | FL_ALIGN_INSIDE | FL_ALIGN_CLIP);
    m_all = new Fl_Check_Button(type->x() + type->w(), choice_y, button, row, "&All files");
    m_all->callback(OnFilter, this);
    m_cancel = new Fl_Button(w() - edge - button, choice_y, button, row, "Cancel");
    m_cancel->callback(OnCancel, m_loop);
    for (Fl_Widget* widget :
         {static_cast<Fl_Widget*>(m_input), static_cast<Fl_Widget*>(open), static_cast<Fl_Widget*>(type),
          static_cast<Fl_Widget*>(m_all), static_cast<Fl_Widget*>(m_cancel)}) {
        widget->labelsize(size);
    }
    m_input->textsize(size);
}

void FileDialog::Enter(const std::string& folder, const std::string& mark) {
    if (!folder.empty()) m_folder = folder;
    m_where->copy_label(Label(ShownName(m_folder)).c_str());
    Fill(mark);
}

void FileDialog::Fill(const std::string& mark) {
    m_entries = ListFolder(m_folder, Patterns());
    m_browser->clear();
    int marked = 0, first = 0;  // lines from 1; first: of the files
    for (size_t row = 0; row < m_entries.size(); ++row) {
        const FileEntry& entry = m_entries[row];
        m_browser->add((entry.folder ? entry.shown + "/" : entry.shown).c_str());
        if (!entry.folder && first == 0) first = static_cast<int>(row) + 1;
        if (entry.name == mark) marked = static_cast<int>(row) + 1;
    }
    if (marked == 0) marked = first;
    if (marked == 0 && !m_entries.empty()) marked = 1;
    if (marked) {
        m_browser->value(marked);
        m_browser->middleline(marked);
    }
    ShowMarked();
}

const FileEntry* FileDialog::Marked() const {
    const int line = m_browser->value();
    return line >= 1 && line <= static_cast<int>(m_entries.size()) ? &m_entries[line - 1] : nullptr;
}

void FileDialog::ShowMarked() {
    const FileEntry* entry = Marked();
    m_input->value(entry && !entry->folder ? entry->shown.c_str() : "");
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
    if (const FileEntry* entry = Marked()) {
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
    if (typed.empty()) return Activate();
    for (const FileEntry& entry : m_entries) {
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
    for (size_t row = 0; row < m_entries.size(); ++row) {
        const std::string& name = m_entries[row].shown;
        if (!BeginsWith(name, beginning)) continue;
        m_browser->value(static_cast<int>(row) + 1);
        m_browser->middleline(static_cast<int>(row) + 1);
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
