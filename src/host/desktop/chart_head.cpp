#include "host/desktop/chart_head.h"

#include <fcntl.h>
#include <strings.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <condition_variable>
#include <thread>
#include <utility>

#include "host/desktop/file_list.h"

namespace host::desktop {
namespace {

constexpr size_t kBeginning = 32 << 10;  // bytes; heads stand before the notes
constexpr size_t kLongest = 200;         // bytes of a text

// Removes the line from the text.
std::string_view TakeLine(std::string_view* text) {
    const size_t end = std::min(text->find_first_of(std::string_view("\r\n\0", 3)), text->size());
    const std::string_view line = text->substr(0, end);
    text->remove_prefix(std::min(end + 1, text->size()));
    return line;
}

std::string Shown(std::string_view bytes) {
    const size_t first = bytes.find_first_not_of(" \t");
    if (first == bytes.npos) return "";
    std::string text = ShownName(std::string(bytes.substr(first, 4 * kLongest)));
    for (char& c : text)
        if (static_cast<unsigned char>(c) < ' ' || c == 127) c = ' ';
    if (text.size() <= kLongest) return text;
    size_t end = kLongest;
    while (end > 0 && (static_cast<unsigned char>(text[end]) & 0xC0) == 0x80) --end;
    return text.substr(0, end);
}

std::string ReadBeginning(const std::string& path) {
    std::string text;
    const int file = open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK);
    struct stat info;
    if (file >= 0 && fstat(file, &info) == 0 && S_ISREG(info.st_mode)) {
        text.resize(kBeginning);
        const ssize_t count = read(file, text.data(), text.size());
        text.resize(count > 0 ? static_cast<size_t>(count) : 0);
    }
    if (file >= 0) close(file);
    return text;
}

}  // namespace

ChartHead ParseChartHead(std::string_view text) {
    ChartHead head;
    const struct {
        std::string_view keyword;
        std::string* value;
    } rows[] = {{"#TITLE ", &head.title}, {"#ARTIST ", &head.artist}, {"#PLAYLEVEL ", &head.level}};
    while (!text.empty()) {
        const std::string_view line = TakeLine(&text);
        for (const auto& [keyword, value] : rows) {
            if (line.size() > keyword.size() && strncasecmp(line.data(), keyword.data(), keyword.size()) == 0)
                *value = Shown(line.substr(keyword.size()));
        }
    }
    return head;
}

struct HeadReader::Shared {
    std::mutex lock;  // guards what follows
    std::condition_variable wake;
    std::vector<Task> tasks;
    std::vector<Result> results;
    bool end = false;
};

HeadReader::HeadReader() : m_shared(std::make_shared<Shared>()) {
    try {
        std::thread(Run, m_shared).detach();
    } catch (const std::exception&) {
        // The list shows names alone.
    }
}

HeadReader::~HeadReader() {
    const std::lock_guard<std::mutex> hold(m_shared->lock);
    m_shared->end = true;
    m_shared->wake.notify_one();
}

void HeadReader::Read(std::vector<Task> tasks) {
    const std::lock_guard<std::mutex> hold(m_shared->lock);
    m_shared->tasks = std::move(tasks);
    m_shared->wake.notify_one();
}

std::vector<HeadReader::Result> HeadReader::TakeResults() {
    const std::lock_guard<std::mutex> hold(m_shared->lock);
    return std::exchange(m_shared->results, {});
}

void HeadReader::Run(const std::shared_ptr<Shared>& shared) {
    std::unique_lock<std::mutex> hold(shared->lock);
    for (;;) {
        shared->wake.wait(hold, [&] { return shared->end || !shared->tasks.empty(); });
        if (shared->end) return;
        const Task task = std::move(shared->tasks.front());
        shared->tasks.erase(shared->tasks.begin());
        hold.unlock();
        ChartHead head = ParseChartHead(ReadBeginning(task.path));
        hold.lock();
        shared->results.push_back({task.id, std::move(head)});
    }
}

}  // namespace host::desktop
