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
    constexpr std::string_view kSound = "sound";
    for (auto& [key, group] : groups_) {
        const bool object = key.starts_with(kObjectKey), definition = key.starts_with(kDefinitionKey);
        if (!object && !definition) continue;
        const std::string name = key.substr(key.size() - 2);
        const auto number = static_cast<size_t>(PairToObjNo(name.c_str()));
        const Use& use = tables_->sound_uses[number];
        const std::string& heard = tables_->sounds[number].name;
        const bool sound = key.compare(key.size() - 2 - kSound.size(), kSound.size(), kSound) == 0;
        const auto meant = written_.find(name);
        const bool other = meant == written_.end() || meant->second != heard;
        if (sound && other && !heard.empty() && use.objects > use.invisible) {
            group.severity = kError;
            group.effect += ", where " + Quote(heard) + " sounds" +
                            (meant == written_.end() ? "" : " instead of " + Quote(meant->second));
        }
        group.effect += "; use a number up to FZ, or --modern";
    }
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
