// Made-up charts against a small model of their own: the player's reader must hear in the compiled text what
// the model asks for.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <map>
#include <random>
#include <set>

#include "dialect/dialect.h"
#include "sound/dsbuffer.h"
#include "sound/dsound.h"
#include "support/chart_file.h"

namespace {

using Sounds = std::map<std::string, std::vector<double>>;  // by file: starts in ms

// Times by integration from the chart's begin, in whole notes, for every question anew.
struct Change {
    double at, bpm, stop;  // bpm 0: none; stop in 192nds of a whole note
};

struct Model {
    std::vector<double> lengths;
    std::vector<Change> changes;  // in order of place
    double bpm = 130;
    std::set<std::pair<std::string, double>> asked;  // file, whole notes

    double At(int measure, double place) const {
        double at = 0;
        for (int m = 0; m < measure; ++m) at += lengths[m];
        return at + place * lengths[measure];
    }
    double Ms(double at) const {
        double ms = 1000, from = 0, now = bpm;
        for (const Change& change : changes) {
            if (change.at >= at) break;
            ms += (change.at - from) * 240000 / now;
            if (change.bpm > 0) now = change.bpm;
            ms += change.stop / 192 * 240000 / now;
            from = change.at;
        }
        return ms + (at - from) * 240000 / now;
    }
};

class Maker {
public:
    explicit Maker(unsigned seed)
        : random_(seed), base_(Below(4) == 0 ? 62 : 36), sounds_(Below(2) ? 40 : 1200) {
        const char* ends[] = {"\r\n", "\n", "\r"};
        end_ = ends[Below(3)];
        model.bpm = 60 + static_cast<double>(Below(200));
        Line("#BPM " + std::to_string(model.bpm));
        if (base_ == 62) Line("#BASE 62");
        Line("#LNOBJ " + Id(sounds_ + 1));
        for (int n = 1; n <= sounds_; ++n) Line("#WAV" + Id(n) + " " + std::to_string(n) + ".wav");
        for (int n = 1; n <= 40; ++n) Line("#BPM" + Id(n) + " " + std::to_string(20 + n * 7.3));
        for (int n = 1; n <= 40; ++n) Line("#STOP" + Id(n) + " " + std::to_string(n * 5));
        for (int m = 0; m < 12; ++m)
            model.lengths.push_back(Below(3) ? 1.0 : 0.25 * static_cast<double>(1 + Below(8)));
        for (int m = 0; m < 12; ++m) Measure(m);
        Line("#01101:" + Id(1));
        Ask(11, 0, 1);
    }
    std::string text;
    Model model;

private:
    unsigned Below(unsigned n) { return static_cast<unsigned>(random_()) % n; }
    void Line(const std::string& line) { text += (Below(9) ? "" : " ") + line + end_; }
    std::string Id(int n) const {
        const char* digits = "0123456789ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz";
        return {digits[n / base_], digits[n % base_]};
    }
    void Ask(int measure, double place, int n) {
        model.asked.insert({std::to_string(n) + ".wav", model.At(measure, place)});
    }
    std::string Head(int measure, const char* channel) const {
        char head[16];
        std::snprintf(head, sizeof head, "#%03d%s:", measure, channel);
        return head;
    }
    // A line of objects; fn(index) makes each pair.
    template <class Function>
    void Pairs(int measure, const char* channel, unsigned grid, unsigned few, Function fn) {
        std::string data;
        for (unsigned i = 0; i < grid; ++i)
            data += Below(few) == 0 ? fn(static_cast<double>(i) / grid) : "00";
        Line(Head(measure, channel) + data);
    }
    void Measure(int m);
    void Tempos(int m);

    std::mt19937 random_;
    int base_, sounds_;
    bool long_open_ = false;
    std::string end_;
};

void Maker::Tempos(int m) {
    std::map<double, Change> here;
    const unsigned grid = 1 + Below(16);
    const auto at = [&](double place) -> Change& {
        return here.try_emplace(place, Change{model.At(m, place), 0, 0}).first->second;
    };
    Pairs(m, "03", grid, 6, [&](double place) { return at(place).bpm = 0x78, "78"; });
    Pairs(m, "08", grid, 6, [&](double place) {
        const int n = static_cast<int>(1 + Below(40));
        at(place).bpm = 20 + n * 7.3;
        return Id(n);
    });
    const bool crowd =
        sounds_ > 100 && Below(8) == 0;  // stops off the player's grid, more than it has places
    Pairs(m, "09", crowd ? 1009 : 1 + Below(24), crowd ? 4 : 8, [&](double place) {
        const int n = static_cast<int>(1 + Below(40));
        at(place).stop = n * 5;
        return Id(n);
    });
    for (const auto& [place, change] : here) model.changes.push_back(change);
}

void Maker::Measure(int m) {
    if (model.lengths[m] != 1) Line(Head(m, "02") + std::to_string(model.lengths[m]));
    Tempos(m);
    const auto any = [&](double place) {
        const int n = 1 + static_cast<int>(Below(static_cast<unsigned>(sounds_)));
        Ask(m, place, n);
        return Id(n);
    };
    constexpr unsigned kGrids[] = {1, 7, 16, 48, 192, 500, 1536};
    for (int i = 0; i < 6; ++i) Pairs(m, "01", kGrids[Below(sounds_ > 100 ? 7 : 5)], 8, any);
    Pairs(m, "12", 16, 1, [&](double) { return Id(2); });  // all of it is overwritten
    Pairs(m, "12", 16, 1, any);
    Pairs(m, "32", 16, 2, [&](double) { return Id(3); });
    Pairs(m, "53", 16, 3, [&](double place) { return (long_open_ = !long_open_) ? any(place) : Id(4); });
    Line(Head(m, "14") + any(0) + Id(sounds_ + 1) + any(0.5) + Id(sounds_ + 1));
}

Sounds Asked(const Model& model) {
    Sounds sounds;
    for (const auto& [file, at] : model.asked) sounds[file].push_back(model.Ms(at));
    return sounds;
}

// What the player starts when it has read the text, stems counted by what they hold.
Sounds Heard(const dialect::Plan& plan, const std::string& text) {
    CDSound device;
    const auto chart = LoadChart(text, nullptr, &device);
    EXPECT_TRUE(chart && chart->Compile() == 0);
    std::map<const void*, int> number;
    for (int i = 0; i < SOUND_SLOTS; ++i) number[device.m_pSlot[i]] = device.m_pSlot[i] ? i : 0;
    Sounds sounds;
    const auto play = [&](const BmsObject* object) {
        const int n = number[object->pObject];
        const double ms = std::floor(object->dTime + 0.5);
        for (const auto& file : plan.sounds) {
            if (file.number == n) sounds[file.name].push_back(ms);
        }
        for (const auto& stem : plan.stems) {
            if (stem.numbers[0] != n) continue;
            for (const auto& item : stem.items) sounds[plan.mixed[item.sound]].push_back(ms + item.start_ms);
        }
    };
    for (int i = 0; i < chart->m_nBgm; ++i) play(chart->m_ppBgm[i]);
    for (int i = 0; i < chart->m_nNote; ++i) {
        if (chart->m_ppNote[i]->nChannel < 0x30) play(chart->m_ppNote[i]);
    }
    return sounds;
}

// How many of the starts have none of the others within a millisecond.
int Unmatched(const Sounds& sounds, const Sounds& others) {
    int unmatched = 0;
    for (const auto& [file, times] : sounds) {
        const auto other = others.find(file);
        for (const double ms : times) {
            const auto near = [ms](double with) { return std::fabs(with - ms) <= 1.0; };
            unmatched +=
                other == others.end() || std::none_of(other->second.begin(), other->second.end(), near);
        }
    }
    return unmatched;
}

TEST(Property, ThePlayerHearsWhatTheModelAsksFor) {
    int mixed = 0;
    for (unsigned seed = 1; seed <= 30; ++seed) {
        const Maker maker(seed);
        const dialect::Plan plan = dialect::MakePlan(maker.text, {});
        ASSERT_FALSE(plan.unchanged);
        mixed += !plan.stems.empty();
        const Sounds asked = Asked(maker.model), heard = Heard(plan, dialect::WriteText(plan));
        EXPECT_EQ(Unmatched(asked, heard), 0) << seed;
        EXPECT_EQ(Unmatched(heard, asked), 0) << seed;
    }
    EXPECT_GT(mixed, 5);
    EXPECT_LT(mixed, 25);
}

// More tempos than the player has numbers, and one of them in every measure.
TEST(Property, TemposBeyondTheTable) {
    Model model;
    model.lengths.assign(301, 1.0);
    std::string text = "#WAV01 a.wav\n";
    const char* digits = "0123456789ABCDEFGHIJKLMNOPQRSTUVWXYZ";
    const auto id = [&](int n) { return std::string{digits[n / 36], digits[n % 36]}; };
    for (int n = 1; n <= 1200; ++n) text += "#BPM" + id(n) + " " + std::to_string(100 + n) + ".5\n";
    for (int m = 1; m <= 300; ++m) {
        char measure[8];
        std::snprintf(measure, sizeof measure, "#%03d", m);
        text += measure + std::string("08:") + id(1) + id(4 * m) + id(4 * m - 1) + id(1) + "\n";
        text += measure + std::string("11:0101\n");
        const int numbers[] = {1, 4 * m, 4 * m - 1, 1};
        for (int i = 0; i < 4; ++i) model.changes.push_back({m + i / 4.0, 100.5 + numbers[i], 0});
        for (double place : {0.0, 0.5}) model.asked.insert({"a.wav", m + place});
    }
    const dialect::Plan plan = dialect::MakePlan(text, {});
    const Sounds asked = Asked(model), heard = Heard(plan, dialect::WriteText(plan));
    EXPECT_EQ(Unmatched(asked, heard), 0);
    EXPECT_EQ(Unmatched(heard, asked), 0);
}

// A chart in the player's own dialect passes through, and the verdict says that nothing is lost.
TEST(Property, TheVerdictCountsWhatIsLost) {
    const std::string plain = Lines("#WAV01 a.wav\n#WAV02 b.wav\n#00101:0102\n#00211:01\n");
    EXPECT_TRUE(dialect::MakePlan(plain, {}).unchanged);
    const dialect::Verdict good = dialect::Judge(plain, {});
    EXPECT_EQ(good.asked, 3);
    EXPECT_EQ(good.played, 3);
    EXPECT_EQ(good.wrong, 0);
    const dialect::Verdict bad =
        dialect::Judge(plain + Lines("#WAVZ1 c.wav\n#00112:Z1\n#00151:0202\n#00109:01\n#STOP01 96\n"), {});
    EXPECT_EQ(bad.asked, 5);
    EXPECT_EQ(bad.played, 1);  // b.wav: a.wav is another file by the folded number, measure 2 is late
    EXPECT_EQ(bad.wrong, 3);
    EXPECT_TRUE(dialect::Judge("#WAV01 a.wav\n#00101:01\n", {}).refused);
    // Blanks behind a name: the player plays the file without them as a substitute, if it ends like one.
    const std::string blanks = Lines("#WAV01 a.wav  \n#WAV02 b.wav\n#00101:0102\n#00211:01\n");
    EXPECT_TRUE(dialect::MakePlan(blanks, {}).unchanged);
    EXPECT_EQ(dialect::Judge(blanks, {}).played, 3);
    const std::string others = Lines("#WAV01 a.xa  \n#WAV02 b \n#00101:0102\n#00211:01\n");
    EXPECT_EQ(dialect::Judge(others, {}).played, 0);
    EXPECT_EQ(dialect::JudgeCompiled(others, {}).played, 3);
}

}  // namespace
