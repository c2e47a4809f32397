#include "compile/package.h"

#include <algorithm>
#include <map>
#include <memory>
#include <set>
#include <tuple>

#include "compile/sheets.h"
#include "compile/stems.h"
#include "dialect/chart.h"
#include "platform/files/lookup.h"
#include "platform/substitutes/substitute.h"

namespace compile {
namespace {

using dialect::Severity;

constexpr int kMostFilms = 64;  // that are looked at: a look may start another program

class Compiler {
public:
    Compiler(std::string_view bytes, const std::string& folder, const Settings& settings)
        : bytes_(bytes), folder_(folder), settings_(settings) {
        source_->stopped = source_->shelf.stopped = settings.stopped;
    }

    Package Run();

private:
    bool Stopped() const { return settings_.stopped && settings_.stopped(); }
    double LengthOf(std::string_view name);
    void LoadMixed();
    void ListFiles();
    void FindFiles();
    void MakePlan();
    bool WantsNames();
    void NameFiles();
    void MakeFiles();

    const std::string_view bytes_;
    const std::string folder_;
    const Settings& settings_;
    std::shared_ptr<StemSource> source_ = std::make_shared<StemSource>();
    std::shared_ptr<Costs> costs_ = std::make_shared<Costs>();
    bool measured_ = false;
    int films_looked_at_ = 0;
    dialect::Options options_;
    dialect::Plan plan_;
    Package package_;
};

// The first question loads all sounds: nearly always all are asked for, and those to be mixed are needed.
double Compiler::LengthOf(std::string_view name) {
    if (!measured_) {
        measured_ = true;
        dialect::Findings told_by_the_plan;
        const dialect::Chart chart = dialect::ReadChart(bytes_, settings_.choice, &told_by_the_plan);
        std::set<std::string> names;
        for (const dialect::Definition& sound : chart.sounds) {
            if (!sound.value.empty()) names.insert(folder_ + std::string(sound.value));
        }
        source_->shelf.Load({names.begin(), names.end()});
    }
    return source_->shelf.Ms(folder_ + std::string(name));
}

// Those for which there is room; tells of the others.
void Compiler::LoadMixed() {
    std::vector<dialect::Place> places(plan_.mixed.size());
    for (const dialect::Stem& stem : plan_.stems) {
        for (const dialect::StemItem& item : stem.items) {
            dialect::Place& place = places[static_cast<size_t>(item.sound)];
            if (place.line == 0) place = item.source;
        }
    }
    std::vector<std::string> fitting;
    double room = static_cast<double>(Shelf::Room());
    for (size_t i = 0; i < plan_.mixed.size(); ++i) {
        source_->names.push_back(folder_ + plan_.mixed[i]);
        const double ms = source_->shelf.Ms(source_->names[i]);
        const double bytes = std::max(ms, 0.0) * kStemRate * 4 / 1000;
        const bool fits = bytes <= room && ms < Shelf::kLongMs;
        if (fits) room -= bytes;
        if (ms >= 0 && fits) fitting.push_back(source_->names[i]);
        const auto warn = [&](const char* code, const char* text) {
            plan_.findings.push_back(
                {Severity::kWarning, code, places[i], dialect::Quote(plan_.mixed[i]) + text});
        };
        if (ms < 0)
            warn("missing-sound", " cannot be read, it is missing in its stems");
        else if (!fits)
            warn("mix-too-large", " is missing in its stems: the sounds to mix are too large");
        else if (ms == 0)
            warn("empty-sound", " holds no sound, it is silent in its stems");
    }
    source_->shelf.KeepOnly(fitting);
    source_->shelf.Load(fitting);
}

// The plan's sounds and pictures; all that are defined where nothing is planned.
void Compiler::ListFiles() {
    dialect::Findings told_by_the_plan;
    const dialect::Chart chart = dialect::ReadChart(bytes_, settings_.choice, &told_by_the_plan);
    package_.used.clear();
    const auto list = [this](const std::vector<dialect::Definition>& table,
                             const std::vector<dialect::NamedFile>& planned, MediaKind kind) {
        std::map<std::string_view, dialect::Place> defined;
        for (const dialect::Definition& entry : table) {
            if (!entry.value.empty()) defined.emplace(entry.value, entry.source);
        }
        const auto add = [&](std::string_view name, dialect::Place source) {
            package_.used.push_back({std::string(name), std::string(name), kind, "", source});
        };
        for (const dialect::NamedFile& file : planned) add(file.name, defined[file.name]);
        if (!plan_.unchanged) return;
        for (const auto& [name, source] : defined) add(name, source);
    };
    list(chart.sounds, plan_.sounds, MediaKind::kSound);
    list(chart.pictures, plan_.pictures, MediaKind::kPicture);
}

void Compiler::FindFiles() {
    OnAllCores(package_.used.size(), [this](size_t i) {
        if (Stopped()) return;
        UsedFile& file = package_.used[i];
        const std::string name = folder_ + file.name;
        file.path = FindNamed(name);
        if (file.path.empty()) file.path = costs_->Make(SubstitutePaths(name, file.kind), file.kind, {}).path;
    });
}

// Whether a file of an unchanged chart is to have another name.
bool Compiler::WantsNames() {
    return settings_.written_name && std::any_of(package_.used.begin(), package_.used.end(), [&](auto& file) {
               return settings_.written_name(file, plan_.stem_head) != file.name;
           });
}

// The listed files are the plan's sounds and pictures, in this order.
void Compiler::NameFiles() {
    if (!settings_.written_name) return;
    size_t next = 0;
    for (auto* files : {&plan_.sounds, &plan_.pictures}) {
        for (dialect::NamedFile& file : *files) {
            UsedFile& used = package_.used[next++];
            file.written = used.written = settings_.written_name(used, plan_.stem_head);
        }
    }
}

void Compiler::MakeFiles() {
    for (const dialect::Stem& stem : plan_.stems) {
        for (size_t part = 0; part < stem.names.size(); ++part)
            package_.made.push_back(
                {stem.names[part], MediaKind::kSound, StemMaker(source_, stem, static_cast<int32_t>(part))});
    }
    for (const dialect::Sheet& sheet : plan_.sheets)
        package_.made.push_back({sheet.name, MediaKind::kPicture, SheetMaker(folder_, sheet, costs_)});
    for (const dialect::Film& film : plan_.films)
        package_.films.push_back({FindFilm(folder_ + film.name), film});
}

void Compiler::MakePlan() {
    options_.choice = settings_.choice;
    options_.most_findings = settings_.most_findings;
    if (settings_.film) {
        options_.film = [this](std::string_view name) {
            const std::string path = FindFilm(folder_ + std::string(name));
            return path.empty() || ++films_looked_at_ > kMostFilms || Stopped() ? dialect::FilmLook()
                                                                                : settings_.film(path);
        };
    }
    options_.sound_ms = [this](std::string_view name) { return LengthOf(name); };
    plan_ = dialect::MakePlan(bytes_, options_);
    if (!settings_.list_used) return;
    ListFiles();
    FindFiles();
    if (!plan_.unchanged || !WantsNames()) return;
    options_.needs = dialect::kNeedNames;
    films_looked_at_ = 0;
    plan_ = dialect::MakePlan(bytes_, options_);
    ListFiles();
    FindFiles();
}

Package Compiler::Run() {
    MakePlan();
    package_.needs = plan_.needs;
    if (settings_.list_used && !plan_.unchanged) NameFiles();
    if (!plan_.unchanged) {
        LoadMixed();
        FitStems(*source_, &plan_);
        package_.text = dialect::WriteOrLeave(&plan_);
    }
    package_.unchanged = plan_.unchanged;
    if (!plan_.unchanged) MakeFiles();
    std::stable_sort(plan_.findings.begin(), plan_.findings.end(), [](const auto& a, const auto& b) {
        return std::tie(a.place.line, a.place.column) < std::tie(b.place.line, b.place.column);
    });
    package_.findings = std::move(plan_.findings);
    package_.findings_left_out = std::move(plan_.findings_left_out);
    return std::move(package_);
}

}  // namespace

Package CompileChart(std::string_view bytes, const std::string& folder, const Settings& settings) {
    return Compiler(bytes, folder, settings).Run();
}

}  // namespace compile
