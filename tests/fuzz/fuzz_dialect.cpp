// The compiler of charts of today: any bytes give a plan, and its text is one that the player's rules for
// lines hold for. The first byte chooses the branches.
#include <cstdlib>

#include "dialect/dialect.h"

static void Check(bool good) {
    if (!good) std::abort();
}

static void CheckText(const dialect::Plan& plan) {
    const std::string text = dialect::WriteText(plan);
    for (size_t begin = 0, end; begin < text.size(); begin = end + 2) {
        end = text.find("\r\n", begin);
        Check(end != text.npos && end - begin <= 1023 && text[begin] == '#');
    }
    for (const dialect::NamedFile& sound : plan.sounds) Check(sound.number >= 1 && sound.number <= 575);
    for (const dialect::Event& event : plan.events) Check(event.written >= 0 && event.written <= 1295);
    for (const dialect::WrittenCut& cut : plan.cuts) Check(cut.number <= 1295 && cut.picture <= 575);
    for (const dialect::Stem& stem : plan.stems) {
        Check(!stem.numbers.empty());
        for (const dialect::StemItem& item : stem.items) Check(item.start_ms >= 0 && item.cut_ms > 0);
    }
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    if (size == 0) return 0;
    const std::string_view bytes(reinterpret_cast<const char*>(data) + 1, size - 1);
    dialect::Options options;
    options.choice.kind = data[0] & 1 ? dialect::Choice::kSeed : dialect::Choice::kFirst;
    options.choice.seed = data[0];
    if (data[0] & 2)
        options.sound_ms = [](std::string_view name) { return static_cast<double>(name.size() * 50); };
    if (data[0] & 4) {
        options.film = [](std::string_view name) {
            const double size = static_cast<double>(name.size());
            return dialect::FilmLook{name.size() % 3 ? size * 999 : 0, size * size / 7};
        };
    }
    const dialect::Plan plan = dialect::MakePlan(bytes, options);
    if (!plan.unchanged) CheckText(plan);
    for (const auto judge : {dialect::Judge, dialect::JudgeCompiled}) {
        const dialect::Verdict verdict = judge(bytes, options);
        Check(verdict.played <= verdict.asked && verdict.wrong >= 0);
    }
    return 0;
}
