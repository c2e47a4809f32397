#include "check/modern.h"

#include <algorithm>
#include <set>

#include "check/files.h"
#include "check/probe.h"
#include "compile/sound.h"
#include "dialect/text.h"

namespace check {
namespace {

constexpr int32_t kTempoChannel = 3, kTempoRefChannel = 8, kStopChannel = 9, kDataColumn = 8;

// What the compiler's findings are called here.
struct CodeName {
    std::string_view dialect;
    Code code;
};
constexpr CodeName kCodeNames[] = {
    {"bad-length", "bad-value"},
    {"bad-pair", "bad-value"},
    {"bad-picture-cut", "bad-value"},
    {"bad-stop", "bad-value"},
    {"bad-tempo", "bad-value"},
    {"bad-value", "bad-value"},
    {"undefined", "bad-value"},
    {"odd-data", "odd-data"},
    {"unknown-channel", "unknown-channel"},
    {"no-effect", "no-effect"},
    {"no-file", "undefined-sound"},
    {"unmatched-end", "long-note-end"},
    {"branch", "branch"},
    {"if-outside", "branch"},
    {"no-branches", "branch"},
    {"not-closed", "branch"},
    {"stray-control", "branch"},
    {"open-long-note", "long-note-end"},
    {"mixed", "mixed"},
    {"off-grid", "mixed"},
    {"shared-stems", "mixed"},
    {"wide-stems", "mixed"},
    {"beyond", "not-compiled"},
    {"empty", "not-compiled"},
    {"too-large", "not-compiled"},
    {"too-many-pictures", "not-compiled"},
};

Code CodeOf(std::string_view name) {
    for (const CodeName& entry : kCodeNames) {
        if (entry.dialect == name) return entry.code;
    }
    return "no-effect";
}

// Two digits of the compiled text.
int32_t PairAt36(std::string_view line, size_t at) {
    const dialect::DigitTable& digits = dialect::DigitsOfBase(36);
    return digits[static_cast<uint8_t>(line[at])] * 36 + digits[static_cast<uint8_t>(line[at + 1])];
}

std::string_view WordOf(std::string_view line) {
    return line.substr(0, line.find(' '));
}

}  // namespace

Modern::Modern(std::string_view bytes, const std::string& path, const dialect::Choice& choice) {
    dialect::Options options;
    options.choice = choice;
    options.most_findings = Findings::kMostOfOneCode;
    options.sound_ms = [clock = compile::SoundClock(), folder = std::string(Probe(path.c_str()).Folder())](
                           std::string_view name) mutable { return clock.Ms(folder + std::string(name)); };
    plan_ = dialect::MakePlan(bytes, options);
    FindLineStarts(bytes);
    if (plan_.unchanged) return;
    dialect::NumberStems(&plan_);
    text_ = dialect::WriteOrLeave(&plan_);
    if (plan_.unchanged) return;
    for (size_t begin = 0, end; begin < text_.size(); begin = end + 2) {
        end = std::min(text_.find("\r\n", begin), text_.size());
        lines_.push_back(std::string_view(text_).substr(begin, end - begin));
    }
    dialect::Findings told;  // the plan has them too
    chart_ = dialect::ReadChart(bytes, choice, &told);
    dialect::SortObjects(&chart_);
    dialect::LineTraits traits;
    for (const dialect::Line& line : dialect::ReadLines(bytes, &traits)) {
        words_.try_emplace(std::string(line.text), FromDialect(line.place));
        words_.try_emplace(
            std::string(line.text.substr(0, std::min(line.text.find_first_of(" :"), line.text.size()))),
            FromDialect(line.place));
    }
    FindObjects();
}

void Modern::FindLineStarts(std::string_view bytes) {
    int32_t line = 1;
    size_t lf_line = 0;
    starts_.push_back({1, 1});
    for (size_t i = 0; i < bytes.size(); ++i) {
        const char c = bytes[i];
        if (c != '\r' && c != '\n' && c != '\0') continue;
        if (c == '\r' && bytes.substr(i + 1, 1) == "\n") continue;
        if (c == '\n') ++line, lf_line = i + 1;
        starts_.push_back({line, static_cast<int32_t>(i + 2 - lf_line)});
    }
}

void Modern::FindObjects() {
    for (const dialect::Event& event : plan_.events) {
        objects_.try_emplace({event.channel, event.measure + event.place.Value()}, FromDialect(event.source));
        const auto number = static_cast<size_t>(event.number);
        if (event.kind == dialect::EventKind::kPicture && number < chart_.cuts.size())
            cuts_.try_emplace(event.written, FromDialect(chart_.cuts[number].source));
    }
}

Place Modern::FromDialect(dialect::Place place) const {
    if (place.line < 1 || static_cast<size_t>(place.line) > starts_.size()) return {1, 1};
    const LineStart& start = starts_[static_cast<size_t>(place.line) - 1];
    return {start.line, start.column + place.column - 1};
}

Place Modern::TempoAt(double at) const {
    Place place = {1, 1};
    for (const dialect::Object& object : chart_.objects) {
        if (object.at > at) break;
        if (object.channel == kTempoChannel || object.channel == kTempoRefChannel ||
            object.channel == kStopChannel)
            place = FromDialect(object.source);
    }
    return place;
}

Place Modern::PairOf(std::string_view line, int32_t column) const {
    const int32_t channel = PairAt36(line, 4);
    const std::string_view data = line.substr(kDataColumn - 1);
    const size_t pairs = data.size() / 2;
    size_t pair = column < kDataColumn ? 0 : static_cast<size_t>(column - kDataColumn) / 2;
    while (column < kDataColumn && pair + 1 < pairs && data.substr(2 * pair, 2) == "00") ++pair;
    const int32_t measure = (line[1] - '0') * 100 + (line[2] - '0') * 10 + (line[3] - '0');
    const double at =
        measure + dialect::Fraction{static_cast<int32_t>(pair), static_cast<int32_t>(pairs)}.Value();
    if (channel == kTempoChannel || channel == kTempoRefChannel) return TempoAt(at);
    const auto found = objects_.find({channel, at});
    return found == objects_.end() ? Place{1, 1} : found->second;
}

Place Modern::NameOf(const std::vector<dialect::Definition>& table, std::string_view name) const {
    for (const dialect::Definition& definition : table) {
        if (definition.value == name) return FromDialect(definition.source);
    }
    return {1, 1};
}

Place Modern::AuthorOf(Place place) const {
    if (place.line < 1 || static_cast<size_t>(place.line) > lines_.size()) return place;
    const std::string_view line = lines_[static_cast<size_t>(place.line) - 1];
    const bool measured = line.size() > 7 && line[6] == ':';
    const auto known = words_.find(std::string(measured ? line.substr(0, 6) : line));
    if (measured) {
        if (line.substr(4, 2) != "02") return PairOf(line, place.column);
        return known == words_.end() ? Place{1, 1} : known->second;
    }
    const bool sound = line.starts_with("#WAV"), picture = line.starts_with("#BMP");
    if (sound || picture) {
        Place name = NameOf(sound ? chart_.sounds : chart_.pictures, line.substr(7));
        name.column = std::max(1, name.column - 7);  // Definition::NamePlace adds as much
        return name;
    }
    if (line.starts_with("#BGA")) {
        const auto cut = cuts_.find(PairAt36(line, 4));
        return cut == cuts_.end() ? Place{1, 1} : cut->second;
    }
    if (known != words_.end()) return known->second;
    const auto word = words_.find(std::string(WordOf(line)));
    return word == words_.end() ? Place{1, 1} : word->second;
}

void Modern::MoveToAuthor(Subject* subject) const {
    Tables& tables = subject->tables;
    const auto move = [this](Place* place) {
        if (place->line != 0) *place = AuthorOf(*place);
    };
    for (auto* table : {&tables.sounds, &tables.pictures, &tables.tempos, &tables.bgas}) {
        for (Definition& definition : *table) move(&definition.place);
    }
    for (auto* uses : {&tables.sound_uses, &tables.picture_uses, &tables.tempo_uses}) {
        for (Use& use : *uses) move(&use.place), move(&use.early);
    }
    for (auto* sources : {&tables.bgm, &tables.notes, &tables.bga, &tables.changes}) {
        for (Source& source : *sources) move(&source.place);
    }
    for (Place& place : tables.lengths) move(&place);
    move(&tables.last_place);
    move(&tables.first_tempo);
    subject->findings.MovePlaces([this](Place place) { return AuthorOf(place); });
    for (const dialect::Stem& stem : plan_.stems) {
        for (const int32_t number : stem.numbers) tables.sounds[static_cast<size_t>(number)].made = true;
    }
    for (const dialect::Sheet& sheet : plan_.sheets)
        tables.pictures[static_cast<size_t>(sheet.number)].made = true;
    // Notes of mixed sounds have a number that nothing defines; those of the author's are reported below.
    for (size_t i = 0; i < tables.sounds.size(); ++i) {
        if (tables.sounds[i].place.line == 0) tables.sound_uses[i] = Use{};
    }
}

// Sounds in stems and pictures on sheets.
void Modern::CheckUnplaced(Subject* subject) const {
    const Probe probe(subject->path.c_str());
    std::map<std::string_view, int64_t> objects;
    for (const dialect::Event& event : plan_.events) {
        if (event.kind != dialect::EventKind::kPicture)
            ++objects[chart_.sounds[static_cast<size_t>(event.number)].value];
    }
    const auto define = [&](const std::vector<dialect::Definition>& table, const std::string& name) {
        Definition definition;
        definition.place = NameOf(table, name);
        definition.place.column = std::max(1, definition.place.column - 7);
        definition.name = name;
        definition.path = probe.Folder() + name;
        return definition;
    };
    for (const std::string& name : plan_.mixed)
        CheckMixedSound(subject, define(chart_.sounds, name), objects[name]);
    for (const dialect::Sheet& sheet : plan_.sheets) {
        for (const std::string& name : sheet.cells) {
            const Definition definition = define(chart_.pictures, name);
            if (!FindOpened(definition.path, MediaKind::kPicture, false).empty()) continue;
            subject->findings.Add(definition.NamePlace(), "picture-missing",
                                  [&] { return Quote(name) + WhyMissing(definition, MediaKind::kPicture); });
        }
    }
    for (size_t i = 1; i < chart_.sounds.size(); ++i) {
        const dialect::Definition& sound = chart_.sounds[i];
        if (sound.value.empty() || objects.count(sound.value) != 0) continue;
        subject->findings.Add(FromDialect(sound.source), "unused-sound",
                              [&] { return "no object plays " + Quote(sound.value); });
    }
}

void Modern::AddFindings(Subject* subject) const {
    if (Compiled()) CheckUnplaced(subject);
    // The player's own reading says the same of them.
    std::set<int32_t> unused;
    for (const Finding& finding : subject->findings.Kept()) {
        if (finding.code == "unused-header") unused.insert(finding.place.line);
    }
    for (const dialect::Finding& finding : plan_.findings) {
        if (std::string_view(finding.code) == "no-effect" && unused.contains(FromDialect(finding.place).line))
            continue;
        subject->findings.Add(FromDialect(finding.place), CodeOf(finding.code),
                              static_cast<Severity>(finding.severity),
                              [&] { return ShownName(finding.text); });
    }
    for (const dialect::LeftOut& of : plan_.findings_left_out)
        subject->findings.AddUnkept(CodeOf(of.code), static_cast<Severity>(of.severity), of.count);
}

}  // namespace check
