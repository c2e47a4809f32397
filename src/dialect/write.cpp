// The compiled text. Every line is one that the player's reader takes whole: at most 1,023 bytes, CR LF.
#include <algorithm>
#include <charconv>
#include <cstring>
#include <numeric>

#include "dialect/dialect.h"

namespace dialect {

namespace {

constexpr char kDigits[] = "0123456789ABCDEFGHIJKLMNOPQRSTUVWXYZ";
constexpr size_t kMostName = 1000;  // bytes of a name in a line

std::string Number(int32_t number) {
    return {kDigits[number / 36], kDigits[number % 36]};
}

// The shortest digits that read as the same double.
std::string Decimal(double value) {
    char digits[32];
    const auto result = std::to_chars(digits, digits + sizeof digits, value);
    return {digits, static_cast<size_t>(result.ptr - digits)};
}

// Objects of one measure to lines. Objects of one channel and denominator share lines as long as no two stand
// on one place.
class Measure {
public:
    explicit Measure(std::string* text) : text_(text) {}

    void Begin(int32_t measure) { measure_ = measure; }
    // place.den is at most kMostPairs.
    void Add(int32_t channel, Fraction place, int32_t number) {
        objects_.push_back(
            {Key(channel, place.den, 0, place.num), number, static_cast<int32_t>(objects_.size())});
    }
    void Write();
    void Line(int32_t channel, std::string_view data);

private:
    struct Object {
        uint64_t key;
        int32_t number;
        int32_t order;  // keeps objects of one place as they came
    };
    // Channel, denominator, the how manieth object of its place, numerator, from high to low.
    static uint64_t Key(int32_t channel, int32_t den, int64_t layer, int32_t num) {
        return static_cast<uint64_t>(int64_t{channel} << 48 | int64_t{den} << 38 | layer << 10 | num);
    }
    static bool Less(const Object& a, const Object& b) {
        return a.key != b.key ? a.key < b.key : a.order < b.order;
    }
    static uint64_t LineOf(const Object& object) { return object.key >> 10; }
    static int32_t NumOf(const Object& object) { return static_cast<int32_t>(object.key & 1023); }
    void Layer();
    void WritePairs(const Object* begin, const Object* end);

    int32_t measure_ = 0;
    std::string* text_;
    std::vector<Object> objects_;
};

// Objects on many grids make a text that is hundreds of times as long as the author's.
void Measure::Line(int32_t channel, std::string_view data) {
    if (text_->size() > kMostTextBytes) return;
    const char head[] = {'#',
                         static_cast<char>('0' + measure_ / 100),
                         static_cast<char>('0' + measure_ / 10 % 10),
                         static_cast<char>('0' + measure_ % 10),
                         kDigits[channel / 36],
                         kDigits[channel % 36],
                         ':'};
    text_->append(head, sizeof head).append(data).append("\r\n");
}

void Measure::WritePairs(const Object* begin, const Object* end) {
    const int32_t den = static_cast<int32_t>(begin->key >> 38 & 1023);
    int32_t common = den;
    for (const Object* object = begin; object < end && common > 1; ++object)
        common = std::gcd(common, NumOf(*object));
    char data[2 * kMostPairs];
    const size_t size = static_cast<size_t>(den / common) * 2;
    std::memset(data, '0', size);
    for (const Object* object = begin; object < end; ++object) {
        char* pair = data + NumOf(*object) / common * 2;
        pair[0] = kDigits[object->number / 36];
        pair[1] = kDigits[object->number % 36];
    }
    Line(static_cast<int32_t>(begin->key >> 48), {data, size});
}

// Of objects on one place each goes one layer, a line of its own, further than the one before.
void Measure::Layer() {
    bool layered = false;
    uint64_t place = 0;
    int64_t layer = 0;
    for (size_t i = 0; i < objects_.size(); ++i) {
        layer = i > 0 && objects_[i].key == place ? layer + 1 : 0;
        place = objects_[i].key;
        objects_[i].key += static_cast<uint64_t>(layer << 10);
        layered |= layer > 0;
    }
    if (layered) std::sort(objects_.begin(), objects_.end(), Less);
}

void Measure::Write() {
    std::sort(objects_.begin(), objects_.end(), Less);
    Layer();
    for (size_t begin = 0, end; begin < objects_.size(); begin = end) {
        for (end = begin + 1; end < objects_.size() && LineOf(objects_[end]) == LineOf(objects_[begin]);)
            ++end;
        WritePairs(objects_.data() + begin, objects_.data() + end);
    }
    objects_.clear();
}

// #BPMxx lines stand right above the lines that name them, since the player takes a tempo when it reads the
// line: so a number can be defined anew, and 575 are enough for any chart.
class TempoNumbers {
public:
    explicit TempoNumbers(std::string* text) : text_(text) {}

    // The lines that name the numbers given so far are written: those may change. At most kMostPairs numbers
    // may be asked for between two calls.
    void Release() { ++block_; }

    // The number that has this value now.
    int32_t NumberOf(double bpm) {
        int32_t number = 1;
        while (number <= kMost && values_[number] != bpm) ++number;
        if (number > kMost) number = Define(bpm);
        used_[number] = block_;
        return number;
    }

private:
    int32_t Define(double bpm) {
        do next_ = next_ % kMost + 1;
        while (used_[next_] == block_);
        values_[next_] = bpm;
        text_->append("#BPM" + Number(next_) + " " + Decimal(bpm) + "\r\n");
        return next_;
    }

    static constexpr int32_t kMost = 575;
    std::string* text_;
    double values_[kMost + 1] = {};
    int64_t used_[kMost + 1] = {};  // the block that named it last
    int64_t block_ = 1;
    int32_t next_ = 0;
};

class Writer {
public:
    explicit Writer(const Plan& plan) : plan_(plan), tempo_numbers_(&text_), lines_(&text_) {}
    std::string Run();

private:
    void Name(const char* command, int32_t number, std::string_view name) {
        text_.append("#").append(command).append(Number(number)).append(" ");
        text_.append(name.substr(0, kMostName)).append("\r\n");
    }
    void Head();
    void Cut(const WrittenCut& cut);
    void Tempos(int32_t measure);
    void Events(int32_t measure);
    void OneMeasure(int32_t measure);

    const Plan& plan_;
    std::string text_;
    TempoNumbers tempo_numbers_;
    Measure lines_;
    size_t next_tempo_ = 0, next_event_ = 0;
    std::vector<std::vector<int32_t>> stems_;  // by measure: numbers that start with it
};

void Writer::Cut(const WrittenCut& cut) {
    std::string line = "#BGA" + Number(cut.number) + " " + Number(cut.picture);
    for (const int32_t n : {cut.x1, cut.y1, cut.x2, cut.y2, cut.dx, cut.dy}) line += " " + std::to_string(n);
    constexpr size_t kLeast = 22;  // the player passes over a shorter line
    line.resize(std::max(line.size(), kLeast), ' ');
    text_.append(line).append("\r\n");
}

void Writer::Head() {
    for (const std::string& line : plan_.headers) text_.append(line).append("\r\n");
    text_.append("#BPM " + Decimal(plan_.bpm) + "\r\n");
    for (const NamedFile& file : plan_.sounds) Name("WAV", file.number, file.written);
    for (const Stem& stem : plan_.stems) {
        for (size_t part = 0; part < stem.numbers.size(); ++part)
            Name("WAV", stem.numbers[part], stem.names[part]);
    }
    for (const NamedFile& file : plan_.pictures) Name("BMP", file.number, file.written);
    for (const Sheet& sheet : plan_.sheets) Name("BMP", sheet.number, sheet.name);
    for (const Film& film : plan_.films) {
        for (const Sheet& sheet : film.sheets) Name("BMP", sheet.number, sheet.name);
    }
    for (const WrittenCut& cut : plan_.cuts) Cut(cut);
}

// Whole tempos up to 255 as they are, the others by number.
void Writer::Tempos(int32_t measure) {
    int32_t by_number = 0;
    const auto write = [&] {
        lines_.Write();
        tempo_numbers_.Release();
        by_number = 0;
    };
    for (; next_tempo_ < plan_.tempos.size() && plan_.tempos[next_tempo_].measure == measure; ++next_tempo_) {
        const Tempo& tempo = plan_.tempos[next_tempo_];
        const int32_t whole = tempo.bpm >= 1 && tempo.bpm <= 255 ? static_cast<int32_t>(tempo.bpm) : 0;
        if (whole == tempo.bpm) {
            lines_.Add(3, tempo.place, whole / 16 * 36 + whole % 16);
            continue;
        }
        lines_.Add(8, tempo.place, tempo_numbers_.NumberOf(tempo.bpm));
        if (++by_number == kMostPairs) write();
    }
    write();
}

void Writer::Events(int32_t measure) {
    for (const int32_t number : stems_[static_cast<size_t>(measure)]) lines_.Add(1, {0, 1}, number);
    for (; next_event_ < plan_.events.size() && plan_.events[next_event_].measure == measure; ++next_event_) {
        const Event& event = plan_.events[next_event_];
        if (event.written > 0) lines_.Add(event.channel, event.place, event.written);
    }
    lines_.Write();
}

// The last measure is there whatever it holds, and the player wants one behind measure 0.
void Writer::OneMeasure(int32_t measure) {
    const double length = plan_.lengths[static_cast<size_t>(measure)];
    const bool last = static_cast<size_t>(measure) + 1 == plan_.lengths.size();
    lines_.Begin(measure);
    const size_t before = text_.size();
    if (length != 1) lines_.Line(2, Decimal(length));
    Tempos(measure);
    Events(measure);
    if (last && measure > 0 && text_.size() == before) lines_.Line(2, "1");
    if (last && measure == 0) {
        lines_.Begin(1);
        lines_.Line(2, "1");
    }
}

std::string Writer::Run() {
    text_.reserve(plan_.events.size() * 16 + 65536);
    stems_.resize(plan_.lengths.size());
    for (const Stem& stem : plan_.stems) {
        for (const int32_t measure : stem.measures) {
            auto& numbers = stems_[static_cast<size_t>(measure)];
            numbers.insert(numbers.end(), stem.numbers.begin(), stem.numbers.end());
        }
    }
    Head();
    for (size_t m = 0; m < plan_.lengths.size(); ++m) OneMeasure(static_cast<int32_t>(m));
    return text_.size() <= kMostTextBytes ? std::move(text_) : std::string();
}

}  // namespace

std::string WriteText(const Plan& plan) {
    return Writer(plan).Run();
}

std::string WriteOrLeave(Plan* plan) {
    std::string text = WriteText(*plan);
    if (text.empty()) {
        plan->unchanged = true;
        plan->findings.push_back({Severity::kError,
                                  "too-large",
                                  {},
                                  "the text for the player would be too large, the chart is left as it is"});
    }
    return text;
}

}  // namespace dialect
