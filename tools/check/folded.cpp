// Numbers above FZ, which mean others to the player, and long notes: what another file or silence replaces.
#include <algorithm>

#include "chart/digits.h"
#include "check/line_checker.h"
#include "platform/ascii.h"

namespace check {
namespace {

constexpr char kObjectKey[] = "folded object ", kDefinitionKey[] = "folded definition ";

}  // namespace

// Reported once for each number as written, because a number has many objects.
void LineChecker::NoteFolded(Place place, const char* pair, const char* thing, bool object) {
    const std::string name = AsciiUpper(std::string(pair, 2));
    const int32_t number = PairToObjNo(pair);
    const std::string key = (object ? kObjectKey : kDefinitionKey) + std::string(thing) + name;
    Group& group = GroupOf(key, place, "folded-id", kWarning);
    group.objects += object;
    if (!group.subject.empty()) return;
    group.subject = Quote(PairAt(pair));
    group.effect = std::string(thing) + " numbers end at FZ, so the player reads this as " + IdOf(number) +
                   (number == 0 && object ? ", which makes no object" : "");
}

// An error where a file sounds that is not the one of the number as written.
void LineChecker::JudgeFolded() {
    for (auto& [key, group] : groups_) {
        const bool object = key.starts_with(kObjectKey), definition = key.starts_with(kDefinitionKey);
        if (!object && !definition) continue;
        const std::string name = key.substr(key.size() - 2);
        if (key.find("sound") != key.npos) JudgeFoldedSound(name, definition, &group);
        group.effect += "; use a number up to FZ, or --modern";
    }
}

// name: the number as written.
void LineChecker::JudgeFoldedSound(const std::string& name, bool definition, Group* group) {
    const int32_t number = PairToObjNo(name.c_str());
    const Use& use = tables_->sound_uses[static_cast<size_t>(number)];
    const std::string& heard = tables_->sounds[static_cast<size_t>(number)].name;
    if (heard.empty() || use.objects == use.invisible) return;
    auto meant = written_.find(name);
    // The file of a definition that takes effect sounds for the other numbers.
    if (definition && meant->second == heard)
        meant = std::find_if(written_.begin(), written_.end(), [&](const auto& other) {
            return PairToObjNo(other.first.c_str()) == number && other.second != heard;
        });
    if (meant == written_.end() ? definition : meant->second == heard) return;
    group->severity = kError;
    group->effect += ", where " + Quote(heard) + " sounds" +
                     (meant == written_.end() ? "" : " instead of " + Quote(meant->second));
}

void LineChecker::JudgeLongNotes() {
    for (auto& [key, group] : groups_) {
        const auto plays = [&](const std::string& number) { return written_.count(number) != 0; };
        if (std::none_of(group.sounds.begin(), group.sounds.end(), plays)) continue;
        group.code = "long-note-lost";
        group.severity = kError;
        group.effect =
            "the player does not support long notes and does not play the sounds of these; write them as "
            "ordinary notes on channels 11 to 29, or use --modern";
    }
}

}  // namespace check
