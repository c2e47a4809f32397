// What the file dialog tells about a chart beside its name.
#pragma once

#include <cstdint>
#include <memory>
#include <mutex>
#include <string>
#include <string_view>
#include <vector>

namespace host::desktop {

// UTF-8 without control characters, at most 200 bytes each.
struct ChartHead {
    std::string title, artist, level;
};

// #TITLE, #ARTIST and #PLAYLEVEL in the beginning of a chart's text; of several lines the last.
ChartHead ParseChartHead(std::string_view text);

// Reads the heads of charts on a thread of its own, so that a slow disk holds nobody. Belongs to one dialog.
class HeadReader {
public:
    HeadReader();
    HeadReader(const HeadReader&) = delete;
    HeadReader& operator=(const HeadReader&) = delete;
    ~HeadReader();  // waits for nothing

    struct Task {
        uint64_t id;
        std::string path;
    };
    struct Result {
        uint64_t id;
        ChartHead head;
    };
    void Read(std::vector<Task> tasks);  // in place of all that still wait
    std::vector<Result> TakeResults();

private:
    struct Shared;
    static void Run(const std::shared_ptr<Shared>& shared);
    std::shared_ptr<Shared> m_shared;
};

}  // namespace host::desktop
