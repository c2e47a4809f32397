// Pictures: which have numbers of their own, and which are put together on sheets.
#include <algorithm>
#include <map>

#include "dialect/plan.h"

namespace dialect {

namespace {

constexpr int32_t kPlayerPictures = 575;  // of #BMP; one more, 00, no object can name
constexpr int32_t kPlayerCuts = 1295;     // numbers that an object of a picture channel can name

// One side of a rectangle, without what lies left of the picture or of the layer: the player cuts it to 256
// first.
void KeepInside(int32_t* from, int32_t* to, int32_t* place) {
    if (*from < 0) *place -= *from, *from = 0;
    if (*place < 0) *from -= *place, *place = 0;
    *to = std::clamp(*to, *from, *from + kCellSize);
}

// What an object of a picture channel shows.
struct Look {
    int32_t number;  // the author's
    int64_t uses;
    bool cut;     // a rectangle of a picture
    size_t file;  // of files_
};

struct File {
    std::string_view name;
    int64_t uses = 0;
    bool cut = false;     // rectangles of it are shown: it keeps a number
    int32_t written = 0;  // number of the picture, or of the sheet
    int32_t cell = -1;    // on the sheet
};

class Planner {
public:
    Planner(const Chart& chart, const Options& options, Plan* plan, Findings* findings)
        : chart_(chart), options_(options), plan_(plan), findings_(findings) {}

    void Run() {
        FindLooks();
        if (looks_.size() > kPlayerCuts) DropRarest();
        NumberFiles();
        NumberLooks();
        for (Event& event : plan_->events) {
            if (event.kind != EventKind::kPicture || event.fate == Fate::kBeyond) continue;
            event.written = written_[static_cast<size_t>(event.number)];
            if (event.written == 0) event.written = blank_;
        }
    }

private:
    void FindLooks();
    void AddLook(int32_t number, int64_t uses);
    bool IsFilm(std::string_view name) const {
        return std::any_of(plan_->films.begin(), plan_->films.end(),
                           [&](const Film& film) { return film.name == name; });
    }
    void DropRarest();
    void NumberFiles();
    void NumberLooks();
    void FillSheets(const std::vector<File*>& files, size_t first);

    const Chart& chart_;
    const Options& options_;
    Plan* plan_;
    Findings* findings_;
    std::vector<Look> looks_;
    std::vector<File> files_;
    std::map<std::string_view, size_t> of_name_;
    std::vector<int32_t> written_ = std::vector<int32_t>(kNumbers);
    int32_t blank_ = 0;  // a number that shows nothing
};

void Planner::AddLook(int32_t number, int64_t uses) {
    const size_t n = static_cast<size_t>(number);
    const bool cut = !chart_.cuts.empty() && chart_.cuts[n].picture >= 0;
    const size_t picture = cut ? static_cast<size_t>(chart_.cuts[n].picture) : n;
    const std::string_view name = chart_.pictures[picture].value;
    if (name.empty() || (!cut && IsFilm(name))) return;
    const auto [it, fresh] = of_name_.emplace(name, files_.size());
    if (fresh) files_.push_back({name});
    File& file = files_[it->second];
    file.uses += uses;
    file.cut |= cut;
    looks_.push_back({number, uses, cut, it->second});
}

void Planner::FindLooks() {
    std::vector<int64_t> uses(kNumbers);
    for (const Event& event : plan_->events) {
        if (event.kind == EventKind::kPicture) ++uses[static_cast<size_t>(event.number)];
    }
    for (int32_t number = 0; number < kNumbers; ++number) {
        if (uses[static_cast<size_t>(number)] > 0) AddLook(number, uses[static_cast<size_t>(number)]);
    }
}

void Planner::DropRarest() {
    std::stable_sort(looks_.begin(), looks_.end(),
                     [](const Look& a, const Look& b) { return a.uses > b.uses; });
    findings_->Add(Severity::kError, "too-many-pictures", {}, [&] {
        return std::to_string(looks_.size() - kPlayerCuts) + " of " + std::to_string(looks_.size()) +
               " pictures have no number left, their place stays blank";
    });
    looks_.resize(kPlayerCuts);
    std::sort(looks_.begin(), looks_.end(), [](const Look& a, const Look& b) { return a.number < b.number; });
}

// The files from `first` on share sheets.
void Planner::FillSheets(const std::vector<File*>& files, size_t first) {
    const std::string head = OwnName(chart_, "sheet-");
    for (size_t i = first; i < files.size(); ++i) {
        const int32_t cell = static_cast<int32_t>((i - first) % kSheetCells);
        if (cell == 0) {
            const int32_t number = static_cast<int32_t>(first + plan_->sheets.size()) + 1;
            plan_->sheets.push_back({number, SheetName(head, plan_->sheets.size() + 1), {}});
        }
        Sheet& sheet = plan_->sheets.back();
        sheet.cells.emplace_back(files[i]->name);
        files[i]->written = sheet.number;
        files[i]->cell = cell;
    }
}

// Pictures of which rectangles are shown, and the most used others, keep numbers of their own.
void Planner::NumberFiles() {
    std::vector<File*> order;
    for (File& file : files_) order.push_back(&file);
    size_t own = order.size();
    if (own > kPlayerPictures) {
        std::stable_sort(order.begin(), order.end(), [](const File* a, const File* b) {
            return a->cut != b->cut ? a->cut : a->uses > b->uses;
        });
        own = kPlayerPictures;
        while (own + (order.size() - own + kSheetCells - 1) / kSheetCells > kPlayerPictures) --own;
    }
    for (size_t i = 0; i < own; ++i) {
        order[i]->written = static_cast<int32_t>(i) + 1;
        const std::string_view name = order[i]->name;
        plan_->pictures.push_back({order[i]->written, std::string(name),
                                   options_.written_name ? options_.written_name(name) : std::string(name)});
    }
    FillSheets(order, own);
}

// A whole picture is named by its own number; everything else by a #BGA, whose number must name no picture
// that an object shows whole.
void Planner::NumberLooks() {
    std::vector<bool> taken(kPlayerCuts + 1);
    const auto whole = [&](const Look& look) { return !look.cut && files_[look.file].cell < 0; };
    for (const Look& look : looks_) {
        if (!whole(look)) continue;
        written_[static_cast<size_t>(look.number)] = files_[look.file].written;
        taken[static_cast<size_t>(files_[look.file].written)] = true;
    }
    int32_t next = kPlayerCuts;
    const auto take = [&] {
        while (next > 0 && taken[static_cast<size_t>(next)]) --next;
        return next > 0 ? next-- : 0;
    };
    for (const Look& look : looks_) {
        if (whole(look)) continue;
        const File& file = files_[look.file];
        WrittenCut cut{take(), file.written, 0, 0, 0, 0, 0, 0};
        if (look.cut) {
            const PictureCut& from = chart_.cuts[static_cast<size_t>(look.number)];
            cut = {cut.number, cut.picture, from.x1, from.y1, from.x2, from.y2, from.dx, from.dy};
            KeepInside(&cut.x1, &cut.x2, &cut.dx);
            KeepInside(&cut.y1, &cut.y2, &cut.dy);
        } else {
            cut.x1 = file.cell % kSheetSide * kCellSize, cut.y1 = file.cell / kSheetSide * kCellSize;
            cut.x2 = cut.x1 + kCellSize, cut.y2 = cut.y1 + kCellSize;
        }
        written_[static_cast<size_t>(look.number)] = cut.number;
        plan_->cuts.push_back(cut);
    }
    blank_ = take();
}

}  // namespace

std::string SheetName(const std::string& head, size_t number) {
    std::string digits = std::to_string(number);
    digits.insert(0, 3 - std::min<size_t>(digits.size(), 3), '0');
    return head + digits + ".bmp";
}

void PlanPictures(const Chart& chart, const Options& options, Plan* plan, Findings* findings) {
    Planner(chart, options, plan, findings).Run();
}

}  // namespace dialect
