// Films as stills: what the player shows of them.
#include <algorithm>
#include <cmath>
#include <cstdio>
#include <set>

#include "dialect/plan.h"

namespace dialect {

namespace {

constexpr int32_t kPictureNumbers = 575, kCutNumbers = 1295;
constexpr double kMostRate = 30;  // stills in a second; the player draws twice as many frames
constexpr double kMostShiftMs = 5;
constexpr int32_t kStillPlaces = 480;  // of a measure: 4 ms apart at 120 BPM
constexpr size_t kMostStillEvents = kMostObjects;
constexpr size_t kMostFilms = 64;
constexpr size_t kNoFilm = SIZE_MAX;

bool IsCut(const Chart& chart, size_t number) {
    return !chart.cuts.empty() && chart.cuts[number].picture >= 0;
}

// One showing of a film, from an object to the next one of its channel.
struct Showing {
    size_t event, film;
    double end_at, end_ms;  // the next object's, or the chart's end
};

class FilmPlanner {
public:
    FilmPlanner(const Chart& chart, const TimeMap& times, Plan* plan, Findings* findings)
        : chart_(chart), times_(times), plan_(plan), findings_(findings) {
        for (size_t number = 0; number < film_of_.size(); ++number) {
            for (size_t film = 0; film < plan->films.size() && !IsCut(chart, number); ++film)
                if (plan->films[film].name == chart.pictures[number].value) film_of_[number] = film;
        }
    }

    void Run() {
        FindShowings();
        FindNumbers();
        ChooseRates();
        NumberStills();
        for (const Showing& showing : showings_) Show(showing);
        std::stable_sort(plan_->events.begin(), plan_->events.end(),
                         [](const Event& a, const Event& b) { return a.at < b.at; });
    }

private:
    size_t FilmOf(const Event& event) const;
    void FindShowings();
    void FindNumbers();
    int64_t StillsAt(double rate) const;
    void ChooseRates();
    void Tell(size_t film);
    void NumberStills();
    bool PlaceAt(double ms, int32_t* measure, Fraction* place) const;
    void Show(const Showing& showing);

    const Chart& chart_;
    const TimeMap& times_;
    Plan* plan_;
    Findings* findings_;
    std::vector<size_t> film_of_ = std::vector<size_t>(kNumbers, kNoFilm);  // by the author's number
    std::vector<Showing> showings_;
    size_t tries_ = 0;  // stills for which a place was looked for
    std::vector<double> shown_ms_ = std::vector<double>(plan_->films.size());  // the most of each film
    std::vector<int32_t> numbers_;                                             // free for cuts
    std::vector<std::vector<int32_t>> stills_{plan_->films.size()};            // their numbers
};

size_t FilmPlanner::FilmOf(const Event& event) const {
    const bool shown = event.kind == EventKind::kPicture && event.fate != Fate::kBeyond;
    return shown ? film_of_[static_cast<size_t>(event.number)] : kNoFilm;
}

void FilmPlanner::FindShowings() {
    const int32_t last = times_.Measures() - 1;
    const double end_ms = std::min(times_.MeasureMs(last), kMostMs);
    std::vector<size_t> open(kChannels, SIZE_MAX);
    for (size_t i = 0; i < plan_->events.size(); ++i) {
        const Event& event = plan_->events[i];
        if (event.kind != EventKind::kPicture) continue;
        size_t& before = open[static_cast<size_t>(event.channel)];
        if (before != SIZE_MAX) showings_[before].end_at = event.at, showings_[before].end_ms = event.ms;
        before = SIZE_MAX;
        const size_t film = FilmOf(event);
        if (film == kNoFilm) continue;
        before = showings_.size();
        showings_.push_back({i, film, static_cast<double>(last), end_ms});
    }
    for (Showing& showing : showings_) {
        double& shown = shown_ms_[showing.film];
        const double room = showing.end_ms - plan_->events[showing.event].ms;
        shown = std::max(shown, std::min(room, plan_->films[showing.film].ms));
    }
}

// 1 for the end of the measure. Slow measures need more places than one grid has; each grid is a line of the
// text, so there are few.
Fraction StillPlace(double value, bool fine) {
    constexpr int32_t kGrids[] = {kStillPlaces, 493, 497, 499, 501, 503, 505, 507};
    Fraction best{0, 1};
    for (const int32_t grid : kGrids) {
        const Fraction place{static_cast<int32_t>(std::lround(value * grid)), grid};
        if (grid == kStillPlaces || std::fabs(place.Value() - value) < std::fabs(best.Value() - value))
            best = place;
        if (!fine) break;
    }
    return best;
}

// Those of the rectangles and of the pictures that something shows stay.
void FilmPlanner::FindNumbers() {
    std::vector<bool> taken(kCutNumbers + 1);
    for (const NamedFile& file : plan_->pictures) taken[static_cast<size_t>(file.number)] = true;
    for (const WrittenCut& cut : plan_->cuts) taken[static_cast<size_t>(cut.number)] = true;
    for (const Event& event : plan_->events) {
        if (event.kind == EventKind::kPicture && FilmOf(event) == kNoFilm)
            taken[static_cast<size_t>(event.written)] = true;
    }
    for (int32_t number = 1; number <= kCutNumbers; ++number) {
        if (!taken[static_cast<size_t>(number)]) numbers_.push_back(number);
    }
}

int64_t FilmPlanner::StillsAt(double rate) const {
    double sum = 0;
    for (size_t i = 0; i < plan_->films.size(); ++i)
        sum += std::ceil(shown_ms_[i] / 1000 * std::min(rate, plan_->films[i].rate));
    return static_cast<int64_t>(std::min(sum, 1e15));
}

// The highest rate at which the numbers of cuts suffice, and those of the pictures for the sheets.
void FilmPlanner::ChooseRates() {
    const size_t used = plan_->pictures.size() + plan_->sheets.size(), films = plan_->films.size();
    const int64_t sheets =
        kPictureNumbers - static_cast<int64_t>(std::min<size_t>(used + films, kPictureNumbers));
    const int64_t most = std::min(static_cast<int64_t>(numbers_.size()), sheets * kSheetCells);
    double low = 0, high = kMostRate;
    for (int i = 0; i < 60; ++i) {
        const double middle = StillsAt(high) <= most ? high : (low + high) / 2;
        (StillsAt(middle) <= most ? low : high) = middle;
    }
    for (size_t i = 0; i < films; ++i) {
        Film& film = plan_->films[i];
        film.rate = std::min(film.rate, low);
        film.stills = static_cast<int32_t>(std::ceil(shown_ms_[i] / 1000 * film.rate));
        Tell(i);
    }
}

void FilmPlanner::Tell(size_t index) {
    const Film& film = plan_->films[index];
    const auto it = std::find(film_of_.begin(), film_of_.end(), index);
    const Place source = chart_.pictures[static_cast<size_t>(it - film_of_.begin())].source;
    char rate[32];
    std::snprintf(rate, sizeof rate, "%.1f", film.rate);
    findings_->Add(Severity::kNote, "film", source, [&] {
        const std::string stills = std::to_string(film.stills) + " stills, " + rate + " a second";
        return Quote(film.name) + (film.stills == 0 ? " stays blank: no number is left for its stills"
                                                    : " is shown as " + stills);
    });
}

void FilmPlanner::NumberStills() {
    const std::string head = OwnName(chart_, "film-");
    size_t next = 0, sheets = 0;
    int32_t picture = static_cast<int32_t>(plan_->pictures.size() + plan_->sheets.size());
    for (size_t i = 0; i < plan_->films.size(); ++i) {
        Film& film = plan_->films[i];
        for (int32_t still = 0; still < film.stills; ++still) {
            const int32_t cell = still % kSheetCells;
            if (cell == 0) film.sheets.push_back({++picture, SheetName(head, ++sheets), {}});
            const int32_t x = cell % kSheetSide * kCellSize, y = cell / kSheetSide * kCellSize;
            stills_[i].push_back(numbers_[next++]);
            plan_->cuts.push_back({stills_[i].back(), picture, x, y, x + kCellSize, y + kCellSize, 0, 0});
        }
    }
}

// The nearest place of the grid. False during a stop, where no place has a time, and behind the last measure.
bool FilmPlanner::PlaceAt(double ms, int32_t* measure, Fraction* place) const {
    int32_t low = 0, high = times_.Measures() - 1;
    while (high - low > 1) {
        const int32_t middle = low + (high - low) / 2;
        (times_.MeasureMs(middle) <= ms ? low : high) = middle;
    }
    const Knot* const begin = times_.Begin(low);
    const Knot* knot = std::upper_bound(begin + 1, times_.End(low), ms,
                                        [](double value, const Knot& k) { return value < k.ms; }) -
                       1;
    if (ms < knot->after) return false;
    const double per_measure = times_.Length(low) * (kMeasureMs / knot->bpm);
    const double value = std::min(knot->value + (ms - knot->after) / per_measure, 1.0);
    *place = StillPlace(value, per_measure / kStillPlaces > kMostShiftMs);
    *measure = place->num == place->den ? low + 1 : low;
    if (place->num == place->den) *place = {0, 1};
    return *measure < times_.Measures() - 1;
}

void FilmPlanner::Show(const Showing& showing) {
    const Film& film = plan_->films[showing.film];
    Event event = plan_->events[showing.event];
    const double begin_ms = event.ms;
    if (film.stills == 0) return;
    plan_->events[showing.event].written = stills_[showing.film][0];
    for (int32_t still = 1; still < film.stills; ++still) {
        Event next = event;
        next.ms = next.end_ms = begin_ms + still * 1000 / film.rate;
        if (next.ms >= showing.end_ms || ++tries_ >= kMostStillEvents) return;
        if (!PlaceAt(next.ms, &next.measure, &next.place)) continue;
        next.at = next.measure + next.place.Value();
        if (next.at >= showing.end_at) return;
        if (next.at <= event.at) continue;
        next.written = stills_[showing.film][static_cast<size_t>(still)];
        plan_->events.push_back(event = next);
    }
}

}  // namespace

void FindFilms(const Chart& chart, const Options& options, Plan* plan) {
    if (!options.film) return;
    std::vector<bool> seen(kNumbers);
    std::set<std::string_view> names;
    for (const Event& event : plan->events) {
        const size_t number = static_cast<size_t>(event.number);
        if (event.kind != EventKind::kPicture || seen[number]) continue;
        seen[number] = true;
        const std::string_view name = chart.pictures[number].value;
        if (name.empty() || IsCut(chart, number) || plan->films.size() == kMostFilms) continue;
        if (!names.insert(name).second) continue;
        const FilmLook look = options.film(name);
        if (look.ms > 0 && look.rate > 0)
            plan->films.push_back({std::string(name), look.ms, look.rate, 0, {}});
    }
}

void PlanFilms(const Chart& chart, const TimeMap& times, Plan* plan, Findings* findings) {
    if (!plan->films.empty()) FilmPlanner(chart, times, plan, findings).Run();
}

}  // namespace dialect
