// Files that the player leaves out because the chart's files together cost too much.
#include "check/subject.h"
#include "platform/substitutes/substitute.h"

namespace check {
namespace {

// The place of the file that the log names; its name is cut there.
Place PlaceOf(std::string_view logged, const std::vector<Definition>& definitions) {
    Place place = {1, 1};
    for (const Definition& definition : definitions) {
        if (definition.place.line == 0 || NameForLog(definition.path) != logged) continue;
        if (place.line == 1 || definition.place.line < place.line) place = definition.NamePlace();
    }
    return place;
}

// The name that the log has for the first file left out; empty if there is none.
std::string_view FirstLeftOut(std::string_view log, const char* kind) {
    const size_t end = log.find(std::string(" is beyond what the ") + kind + " of one chart may take");
    constexpr std::string_view kHead = "Files: ";
    const size_t begin = end == log.npos ? log.npos : log.rfind(kHead, end);
    return begin == log.npos ? std::string_view() : log.substr(begin, end - begin).substr(kHead.size());
}

}  // namespace

void CheckBudget(std::string_view log, Subject* subject) {
    const auto check = [&](const char* kind, const std::vector<Definition>& definitions) {
        const std::string_view name = FirstLeftOut(log, kind);
        if (name.empty()) return false;
        subject->findings.Add(PlaceOf(name, definitions), "over-budget", [&] {
            return std::string("the ") + kind +
                   " of the chart together take more than the player allows; it leaves out " + Quote(name) +
                   " and others after it";
        });
        return true;
    };
    check("sounds", subject->tables.sounds);
    subject->pictures_left_out = check("pictures", subject->tables.pictures);
}

}  // namespace check
