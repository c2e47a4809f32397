#include "render/strip.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <filesystem>

#include "chart/bms.h"
#include "common/output.h"
#include "common/png.h"
#include "playback/layout.h"
#include "playback/playback.h"
#include "render/canvas.h"
#include "render/passage.h"
#include "system/globals.h"

namespace render {
namespace {

constexpr int kMostPageWidth = 4096, kMargin = 8, kGap = 10;
constexpr int kDensityHeight = 72, kTop = kDensityHeight + 2 * kMargin;
constexpr double kMostLength = 8;  // a longer measure is drawn as long as this; its length stands beside it
constexpr double kSpeed = 3;       // without --speed
constexpr int kMarkHeight = 4, kLabelHeight = 11;
// Columns of the player's screen: numbers, left field and the marks of sounds and pictures; right field;
// tempos.
constexpr int kLeftEnd = 108, kRightEnd = 178, kTempoText = 12,
              kTempoEnd = kTempoText + TEMPO_CHARS * CHAR_STEP;

struct Column {
    int32_t first, last;  // measures, the last one excluded
};

struct Plan {
    double unit;                  // pixels of a measure of length 1
    bool right;                   // notes of the second player
    std::vector<double> heights;  // of measures, in pixels
    std::vector<Column> columns;
    int column_width, columns_per_page, column_height;
    int Pages() const { return (static_cast<int>(columns.size()) + columns_per_page - 1) / columns_per_page; }
};

Plan MakePlan(const Options& options) {
    Plan plan = {};
    plan.unit = 64 * (options.speed.empty() ? kSpeed : std::strtod(options.speed.c_str(), nullptr));
    for (int32_t i = 0; i < g_nNoteCount; ++i)
        plan.right |= g_pNoteList[i].nChannel >= 0x21 && GetLane(g_pNoteList[i].nChannel);
    plan.column_width = kLeftEnd + (plan.right ? kRightEnd - kLeftEnd : 0) + kTempoEnd;
    plan.columns_per_page = (kMostPageWidth - 2 * kMargin + kGap) / (plan.column_width + kGap);
    const double most = kMostLength * plan.unit;
    double used = most + 1;
    // The last entry is the end of the chart.
    for (int32_t i = 0; i + 1 < g_nBarCount; ++i) {
        plan.heights.push_back(std::min(g_pBarList[i].dValue, kMostLength) * plan.unit);
        if (used + plan.heights.back() > most) {
            plan.columns.push_back({i, i});
            used = 0;
        }
        used += plan.heights.back();
        plan.columns.back().last = i + 1;
        plan.column_height = std::max(plan.column_height, static_cast<int>(std::ceil(used)));
    }
    return plan;
}

std::string LengthText(double length) {
    for (int below : {4, 8, 16, 32, 64}) {
        const double above = length * below;
        if (above == std::floor(above) && above < 1000)
            return std::to_string(static_cast<int>(above)) + "/" + std::to_string(below);
    }
    char text[16];
    std::snprintf(text, sizeof text, "%.4g", length);
    return std::string(text).find('e') == std::string::npos ? text : "";
}

// One column: a run of measures from bottom to top.
class ColumnPainter {
public:
    ColumnPainter(const Plan& plan, const Column& column, int x, Canvas* canvas)
        : plan_(plan), column_(column), x_(x), bottom_(kTop + plan.column_height), canvas_(canvas) {}

    void Paint() {
        starts_.push_back(0);
        for (int32_t i = column_.first; i < column_.last; ++i)
            starts_.push_back(starts_.back() + plan_.heights[static_cast<size_t>(i)]);
        const int height = static_cast<int>(starts_.back());
        canvas_->Skin(x_, bottom_ - height, height, 0, kLeftEnd);
        if (plan_.right) canvas_->Skin(x_ + kLeftEnd, bottom_ - height, height, kLeftEnd, kRightEnd);
        for (int32_t i = column_.first; i < column_.last; ++i) PaintBar(i);
        PaintTempos();
        PaintMarks(g_pBgmList, g_nBgmCount, BGM_MARK_X, SPRITE_NOTE_WHITE);
        PaintMarks(g_pBgaList, g_nBgaCount, BGA_MARK_X, SPRITE_NOTE_RED);
        for (int32_t i = 0; i < g_nNoteCount; ++i) {
            const Lane* lane = GetLane(g_pNoteList[i].nChannel);
            if (lane) Mark(g_pNoteList[i], lane->nX, *lane->pSprite);
        }
    }

private:
    bool Has(const BmsEvent& event) const {
        return event.nMeasure >= column_.first && event.nMeasure < column_.last;
    }

    int LineOf(int32_t measure, double place) const {
        const auto i = static_cast<size_t>(measure - column_.first);
        return bottom_ - kMarkHeight - static_cast<int>(starts_[i] + (starts_[i + 1] - starts_[i]) * place);
    }

    void Mark(const BmsEvent& event, int x, const RECT& sprite) {
        if (Has(event)) canvas_->Sprite(x_ + x, LineOf(event.nMeasure, event.dPos), sprite);
    }

    void PaintMarks(const BmsEvent* list, int32_t count, int x, const RECT& sprite) {
        for (int32_t i = 0; i < count; ++i) Mark(list[i], x, sprite);
    }

    // Labels that would cover the one below them are left out.
    void Label(int x, int line, const std::string& text, int* last) {
        if (line > *last - kLabelHeight) return;
        canvas_->Text(x_ + x, line, text);
        *last = line;
    }

    void PaintBar(int32_t i) {
        const int line = LineOf(i, 0);
        canvas_->Sprite(x_ + BAR_LEFT_X, line, SPRITE_BAR);
        if (plan_.right) canvas_->Sprite(x_ + BAR_RIGHT_X, line, SPRITE_BAR);
        char number[16];
        std::snprintf(number, sizeof number, "%3d", i);
        Label(BAR_NUMBER_X, line - BAR_NUMBER_UP, number, &last_number_);
        const double length = g_pBarList[i].dValue;
        if (length != 1 && last_number_ == line - BAR_NUMBER_UP)
            Label(BAR_NUMBER_X, line - BAR_NUMBER_UP - kLabelHeight, LengthText(length), &last_number_);
    }

    void PaintTempos() {
        const int x = plan_.column_width - kTempoEnd;
        const auto text = [](double tempo) {
            char digits[400];
            std::snprintf(digits, sizeof digits, "%.2f", tempo);
            return std::string(digits).substr(0, TEMPO_CHARS);
        };
        if (column_.first == 0)
            Label(x + kTempoText, LineOf(0, 0) - BAR_NUMBER_UP,
                  text(TempoAfter(BMS_DEFAULT_BPM, g_pBMS->m_dBPM)), &last_tempo_);
        for (int32_t i = 0; i < g_nTempoCount; ++i) {
            if (!Has(g_pTempoList[i])) continue;
            Mark(g_pTempoList[i], x, SPRITE_NOTE_YELLOW);
            Label(x + kTempoText, LineOf(g_pTempoList[i].nMeasure, g_pTempoList[i].dPos) - BAR_NUMBER_UP,
                  text(g_pTempoList[i].dValue), &last_tempo_);
        }
    }

    const Plan& plan_;
    const Column column_;
    const int x_, bottom_;
    Canvas* const canvas_;
    std::vector<double> starts_;  // of the column's measures above its bottom, and of its end
    int last_number_ = INT32_MAX, last_tempo_ = INT32_MAX;
};

// Notes in the second around each moment; what is on this page stands out.
void PaintDensity(const std::vector<int64_t>& times, int64_t from, int64_t to, Canvas* canvas) {
    const int left = kMargin + 4 * CHAR_STEP, width = canvas->width() - left - kMargin;
    const int64_t end = std::max<int64_t>(g_pBarList[g_nBarCount - 1].nTime, 1);
    std::vector<int> counts;
    for (int i = 0; i < width; ++i) counts.push_back(CountWithin(times, end * i / width - 500, 1000));
    const int most = std::max(1, *std::max_element(counts.begin(), counts.end()));
    const int base = kMargin + kDensityHeight - kLabelHeight;
    for (int i = 0; i < width; ++i) {
        const int64_t time = end * i / width;
        const int height = counts[static_cast<size_t>(i)] * (kDensityHeight - kLabelHeight) / most;
        const bool here = time >= from && time < to;
        canvas->Fill(left + i, base - height, 1, height,
                     here ? Canvas::ColorOf(SPRITE_NOTE_YELLOW) : Canvas::ColorOf(SPRITE_NOTE_BLUE));
    }
    canvas->Fill(left, base, width, 1, 0x808080);
    canvas->Text(kMargin, kMargin, std::to_string(most));
    // A clock mark each half minute, or as far apart as they fit.
    int64_t step = 30'000;
    while (end / step * 6 * CHAR_STEP > width) step *= 2;
    for (int64_t time = 0; time < end; time += step) {
        char text[32];
        std::snprintf(text, sizeof text, "%lld:%02lld", static_cast<long long>(time / 60'000),
                      static_cast<long long>(time / 1000 % 60));
        canvas->Text(left + static_cast<int>(time * width / end), base + 2, text);
    }
}

std::string PaintPage(const Plan& plan, int page) {
    const int first = page * plan.columns_per_page;
    const int last = std::min(first + plan.columns_per_page, static_cast<int>(plan.columns.size()));
    const int step = plan.column_width + kGap, columns = last - first;
    // The density needs room even above a single column.
    Canvas canvas(std::max(2 * kMargin + columns * step - kGap, 480), kTop + plan.column_height + kMargin);
    const Column &begin = plan.columns[static_cast<size_t>(first)],
                 &end = plan.columns[static_cast<size_t>(last - 1)];
    PaintDensity(Starts(), g_pBarList[begin.first].nTime, g_pBarList[end.last].nTime, &canvas);
    for (int i = first; i < last; ++i)
        ColumnPainter(plan, plan.columns[static_cast<size_t>(i)], kMargin + (i - first) * step, &canvas)
            .Paint();
    return tools::EncodePng(canvas.pixels(), canvas.width(), canvas.height());
}

}  // namespace

std::vector<std::string> StripNames(const Options& options) {
    std::vector<std::string> names = {options.strip};
    const std::filesystem::path path(options.strip);
    for (int page = 2; page <= MakePlan(options).Pages(); ++page) {
        const std::string name =
            path.stem().string() + "-" + std::to_string(page) + path.extension().string();
        names.push_back((path.parent_path() / name).string());
    }
    return names;
}

ExitCode StripSink::Begin(double) {
    const Plan plan = MakePlan(options_);
    names_ = StripNames(options_);
    for (int page = 0; page < plan.Pages(); ++page) {
        pages_.push_back(PaintPage(plan, page));
        if (pages_.back().empty())
            return Complain(kOutput, names_[static_cast<size_t>(page)] + ": cannot be encoded");
    }
    return kGood;
}

ExitCode StripSink::Finish() {
    for (size_t i = 0; i < pages_.size(); ++i) {
        tools::Output out;
        if (!out.Open(names_[i]) || !out.Write(pages_[i].data(), pages_[i].size()) || !out.Commit())
            return Complain(kOutput, out.error());
    }
    return kGood;
}

}  // namespace render
