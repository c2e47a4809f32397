// The list of the file dialog: a row for each file, with what its chart says about itself.
#pragma once

#include <FL/Fl_Hold_Browser.H>

#include <functional>
#include <string>
#include <vector>

#include "host/desktop/chart_head.h"
#include "host/desktop/clicks.h"
#include "host/desktop/file_list.h"

namespace host::desktop {

class FileBrowser : public Fl_Hold_Browser {
public:
    FileBrowser(int x, int y, int w, int h);
    ~FileBrowser() override;

    // Replaces all rows. Heads of charts come later, those of visible rows alone.
    void Fill(const std::string& folder, std::vector<FileEntry> entries);
    const std::vector<FileEntry>& entries() const { return m_entries; }
    const FileEntry* Marked() const;  // null when no row is
    void Mark(size_t row);

    // The left edges of the columns, and the right edge of the last one, for what stands above the list.
    struct Columns {
        int name, title, artist, level, end;
    };
    Columns FindColumns() const;

    int handle(int event) override;
    bool IsDoubleClick() const { return m_double; }

    std::function<void()> on_enter;
    std::function<void(const std::string&)> on_typed;  // the beginning of a name, typed quickly

protected:
    void draw() override;
    int item_height(void*) const override;
    int incr_height() const override;
    void item_draw(void* item, int x, int y, int w, int h) const override;

private:
    struct Row {
        ChartHead head;
        bool read = false;
    };
    bool HandleKey();
    void TakeHeads();
    static void OnTick(void* browser);

    std::string m_folder;
    std::vector<FileEntry> m_entries;
    mutable std::vector<Row> m_rows;                 // as m_entries; drawing tells what is visible
    mutable std::vector<HeadReader::Task> m_wanted;  // of the picture that is being drawn
    uint64_t m_first_id = 0;                         // of the first row; those of earlier folders are lower
    HeadReader m_reader;
    ClickCounter m_clicks;
    bool m_double = false;  // the last press was a double click
    std::string m_typed;
    uint64_t m_typed_at = 0;
};

}  // namespace host::desktop
