#include "app/chart_lines.h"

#include <algorithm>
#include <fstream>
#include <iterator>

namespace app {
namespace {

constexpr size_t kHead = 7;                    // of `#MMMCC:`
constexpr size_t kLargest = size_t{64} << 20;  // bytes of a file that is read for its lines

int Digit(char c) {
    return c >= '0' && c <= '9' ? c - '0' : -1;
}

// Of a line `#MMMCC:...`; -1 for any other.
int MeasureOf(std::string_view line) {
    if (line.size() < kHead || line[0] != '#' || line[6] != ':') return -1;
    const int a = Digit(line[1]), b = Digit(line[2]), c = Digit(line[3]);
    return a < 0 || b < 0 || c < 0 ? -1 : a * 100 + b * 10 + c;
}

// The column of the first pair other than `00`, 0 when there is none. Channel 2 holds a length, not objects.
int FirstObject(std::string_view line) {
    if (line.substr(4, 2) == "02") return 0;
    for (size_t at = kHead; at + 1 < line.size() && line[at] > ' '; at += 2) {
        if (line[at] != '0' || line[at + 1] != '0') return static_cast<int>(at) + 1;
    }
    return 0;
}

}  // namespace

ChartLines::ChartLines(std::string_view text) : m_measures(1, -1) {
    for (size_t at = 0; at < text.size();) {
        const size_t end = std::min(text.find('\n', at), text.size());
        const std::string_view line = text.substr(at, end - at);
        at = end + 1;
        const int measure = MeasureOf(line);
        m_measures.push_back(measure >= 0 ? measure : m_measures.back());
        const int column = measure >= 0 ? FirstObject(line) : 0;
        if (column == 0) continue;
        if (m_places.size() <= static_cast<size_t>(measure))
            m_places.resize(static_cast<size_t>(measure) + 1);
        Place& place = m_places[static_cast<size_t>(measure)];
        if (place.line == 0) place = {static_cast<int>(m_measures.size()) - 1, column};
    }
}

ChartLines::Place ChartLines::Of(int measure) const {
    for (int at = std::min(measure, static_cast<int>(m_places.size()) - 1); at >= 0; --at) {
        if (m_places[static_cast<size_t>(at)].line != 0) return m_places[static_cast<size_t>(at)];
    }
    return {};
}

int ChartLines::MeasureAt(int line) const {
    if (line < 1 || m_measures.empty()) return -1;
    return m_measures[std::min(static_cast<size_t>(line), m_measures.size() - 1)];
}

ChartLines ReadChartLines(const std::string& path) {
    std::ifstream file(path, std::ios::binary | std::ios::ate);
    if (!file || file.tellg() < 0 || static_cast<size_t>(file.tellg()) > kLargest) return {};
    std::string text(static_cast<size_t>(file.tellg()), '\0');
    file.seekg(0);
    file.read(text.data(), static_cast<std::streamsize>(text.size()));
    return ChartLines(text);
}

}  // namespace app
