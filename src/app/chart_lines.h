// Where the measures of a chart stand in its author's file.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace app {

// Built from the file's text, which is not needed afterwards. Lines and columns count from 1, lines by their
// line feeds and columns in bytes, as editors do.
class ChartLines {
public:
    ChartLines() = default;
    explicit ChartLines(std::string_view text);

    struct Place {
        int line = 0, column = 0;  // 0: nowhere
    };
    // The first line with an object of that measure, and on it the first object; of the nearest measure
    // before it where it has none.
    Place Of(int measure) const;

    // The measure that holds a line; for a line of no measure that of the nearest before it, -1 when there is
    // none.
    int MeasureAt(int line) const;

private:
    std::vector<Place> m_places;  // by measure
    std::vector<int> m_measures;  // by line, from 1
};

ChartLines ReadChartLines(const std::string& path);  // empty when the file cannot be read

}  // namespace app
