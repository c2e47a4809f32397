#include "render/options.h"

#include <algorithm>
#include <string_view>

#include "common/arguments.h"
#include "common/branches.h"
#include "render/audio_file.h"

namespace render {

const char kHelp[] =
    "Usage: lumetra-render [options] CHART\n"
    "       lumetra-render --preview [options] --output-dir DIR CHART|FOLDER...\n"
    "\n"
    "Renders a chart to files, faster than real time and identically on every run.\n"
    "\n"
    "  --wav FILE          sound: 44,100 Hz, 16 bit, stereo, until the last sound has ended\n"
    "  --audio FILE        sound as .wav, .flac or .ogg, with title and artist\n"
    "    --bits 16|24        of .wav and .flac (default 16)\n"
    "    --float             32-bit floats, of .wav\n"
    "    --normalize LUFS    bring to this loudness (EBU R128) with true peaks below -1 dBTP\n"
    "  --preview           a passage of one chart (--audio FILE), or of many charts and folders\n"
    "                      (--output-dir DIR: DIR/NAME.ogg), on all cores\n"
    "    --from START        m12, 20s or 35% (default: the densest passage that starts on a measure)\n"
    "    --length S          seconds (default 30)\n"
    "    --fade S            fade out at its end, seconds (default 2, or all of a shorter one)\n"
    "    --trim              leave out silence at both ends\n"
    "  --video FILE        picture and sound; the suffix selects the format (needs ffmpeg)\n"
    "  --png DIR --at LIST a picture at each chart time of the comma-separated list: milliseconds,\n"
    "                      or m12 or m12.5 for a place in a measure\n"
    "  --strip FILE.png    the whole chart as columns of lanes, its density over time above; more\n"
    "                      pages as FILE-2.png and so on\n"
    "  --trace FILE        text: every frame, record fired, copy drawn and sound started\n"
    "  --from N --to N     these measures only, both included\n"
    "  --pacing P          exact: every sound starts at its millisecond (default)\n"
    "                      player: at the next frame, up to 15 ms later, as the player plays it\n"
    "  --modern            charts of today: numbers up to ZZ, long notes, stops and more\n"
    "    --seed N            draw the branches of #RANDOM with this seed (default: the first)\n"
    "    --random 2,1,3      take these branches in turn\n"
    "  --force             replace existing files of another kind, and existing previews; never the\n"
    "                      chart or its files\n"
    "  --speed S           scroll speed, 0.1 to 8 (default 1; 3 for --strip)\n"
    "  --fps N             pictures per second of video, 1 to 240 (default 60)\n"
    "  --size N            enlarge video and pictures by a whole factor, 1 to 8 (default 1)\n"
    "  -h, --help          print this help and exit\n"
    "  -V, --version       print the version and exit\n"
    "\n"
    "FILE can be - for standard output with --wav or --trace. An output file is created or replaced\n"
    "only when it is complete.\n"
    "Exit codes: 0 done, 1 wrong usage, 2 the chart cannot be read or played, 3 the output failed.\n";

namespace {

using tools::ReadWithin;

bool ReadPlace(std::string_view text, PicturePlace* place) {
    place->text = text;
    place->in_measure = !text.empty() && (text[0] == 'm' || text[0] == 'M');
    if (place->in_measure) text.remove_prefix(1);
    const bool plain = text.find_first_not_of("0123456789.") == std::string_view::npos;
    return plain && ReadWithin(text, 0.0, 2147483646.0, &place->value);
}

bool ReadPlaces(const std::string& list, std::vector<PicturePlace>* places) {
    for (size_t at = 0; at <= list.size();) {
        const size_t comma = std::min(list.find(',', at), list.size());
        PicturePlace place;
        if (!ReadPlace(std::string_view(list).substr(at, comma - at), &place)) return false;
        places->push_back(place);
        at = comma + 1;
    }
    return true;
}

bool ReadSpeed(const std::string& text) {
    double speed = 0;
    return ReadWithin(text, static_cast<double>(0.1f), 8.0, &speed);
}

// "30s", "30", "0.5s".
bool ReadSeconds(std::string_view text, double least, double most, double* seconds) {
    if (!text.empty() && text.back() == 's') text.remove_suffix(1);
    return ReadWithin(text, least, most, seconds);
}

// Measures alone are for every rendering, the units for previews.
bool ReadStart(std::string_view text, Options* o) {
    o->start.kind = PassageStart::kMeasure;
    if (ReadWithin(text, 0, 999, &o->from)) return o->start.value = o->from, true;
    if (!text.empty() && text.front() == 'm')
        return ReadWithin(text.substr(1), 0.0, 999.999, &o->start.value);
    const char unit = text.empty() ? ' ' : text.back();
    o->start.kind = unit == 's' ? PassageStart::kSeconds : PassageStart::kPercent;
    if (unit != 's' && unit != '%') return false;
    text.remove_suffix(1);
    return ReadWithin(text, 0.0, unit == 's' ? 2147483.0 : 100.0, &o->start.value);
}

bool ReadName(const std::string& value, std::string* name) {
    return !(*name = value).empty();
}

using Setter = bool (*)(const std::string& value, Options* o);

const struct {
    const char* name;
    Setter set;  // false: the value is invalid
} kValued[] = {
    {"--wav", [](const std::string& v, Options* o) { return ReadName(v, &o->wav); }},
    {"--audio", [](const std::string& v, Options* o) { return ReadName(v, &o->audio) && v != "-"; }},
    {"--video", [](const std::string& v, Options* o) { return ReadName(v, &o->video) && v != "-"; }},
    {"--trace", [](const std::string& v, Options* o) { return ReadName(v, &o->trace); }},
    {"--png", [](const std::string& v, Options* o) { return ReadName(v, &o->png_folder); }},
    {"--strip", [](const std::string& v, Options* o) { return ReadName(v, &o->strip) && v != "-"; }},
    {"--output-dir", [](const std::string& v, Options* o) { return ReadName(v, &o->output_dir); }},
    {"--at", [](const std::string& v, Options* o) { return ReadPlaces(v, &o->places); }},
    {"--from", [](const std::string& v, Options* o) { return ReadStart(v, o); }},
    {"--to", [](const std::string& v, Options* o) { return ReadWithin(v, 0, 999, &o->to); }},
    {"--speed", [](const std::string& v, Options* o) { return ReadSpeed(o->speed = v); }},
    {"--pacing",
     [](const std::string& v, Options* o) { return o->exact = v == "exact", o->exact || v == "player"; }},
    {"--fps", [](const std::string& v, Options* o) { return ReadWithin(v, 1, 240, &o->fps); }},
    {"--size", [](const std::string& v, Options* o) { return ReadWithin(v, 1, 8, &o->size); }},
    {"--bits", [](const std::string& v,
                  Options* o) { return o->quality.bits = v == "24" ? 24 : 16, v == "16" || v == "24"; }},
    {"--normalize",
     [](const std::string& v, Options* o) { return ReadWithin(v, -70.0, 0.0, &o->loudness.emplace()); }},
    {"--seed", [](const std::string& v, Options* o) { return tools::ReadSeed(v, &o->choice); }},
    {"--random", [](const std::string& v, Options* o) { return tools::ReadBranches(v, &o->choice); }},
    {"--length", [](const std::string& v, Options* o) { return ReadSeconds(v, 1, 3600, &o->length); }},
    {"--fade", [](const std::string& v, Options* o) { return ReadSeconds(v, 0, 60, &o->fade); }},
};

const struct {
    const char* name;
    bool* (*flag)(Options* o);
} kFlags[] = {
    {"--force", [](Options* o) { return &o->force; }},
    {"--modern", [](Options* o) { return &o->modern; }},
    {"--float", [](Options* o) { return &o->quality.floats; }},
    {"--preview", [](Options* o) { return &o->preview; }},
    {"--trim", [](Options* o) { return &o->trim; }},
};

// Takes one option, with its value. Returns what is wrong, or nothing.
std::string Take(tools::Arguments* words, Options* o) {
    const std::string name = words->name();
    for (const auto& option : kFlags) {
        if (name != option.name) continue;
        *option.flag(o) = true;
        return words->HasValue() ? name + " takes no value" : "";
    }
    for (const auto& option : kValued) {
        std::string value;
        if (name != option.name) continue;
        if (!words->Value(&value)) return name + " needs a value";
        return option.set(value, o) ? "" : name + ": invalid value: " + value;
    }
    return "unknown option: " + name;
}

std::string WrongAudio(const Options& o) {
    tools::FileKind kind = tools::FileKind::kOgg;
    const bool named = !o.audio.empty();
    if (named && !AudioKind(o.audio, &kind)) return o.audio + ": --audio writes .wav, .flac and .ogg";
    if ((o.quality.floats && kind != tools::FileKind::kWav) || (o.quality.bits == 24 && !named))
        return "--float and --bits go with --audio; --float needs a .wav file";
    if (o.quality.bits == 24 && kind == tools::FileKind::kOgg) return "--bits is for .wav and .flac only";
    if (o.loudness && !named && !o.preview) return "--normalize goes with --audio or --preview";
    return "";
}

std::string WrongPreview(const Options& o) {
    const bool others = !o.wav.empty() || !o.video.empty() || !o.trace.empty() || !o.png_folder.empty() ||
                        !o.strip.empty() || o.to >= 0;
    if (!o.preview && (!o.output_dir.empty() || o.trim)) return "--output-dir and --trim go with --preview";
    if (!o.preview && o.start.kind != PassageStart::kDensest && o.from < 0)
        return "--from takes a measure; times and percent go with --preview";
    if (!o.preview) return "";
    if (others)
        return "--preview goes with --audio or --output-dir alone, and takes --length in place of --to";
    if (o.audio.empty() == o.output_dir.empty())
        return "--preview needs either --audio FILE or --output-dir DIR";
    if (o.output_dir.empty() && o.charts.size() > 1)
        return "previews of several charts need --output-dir DIR";
    if (o.fade > o.length) return "--fade is longer than --length";
    return "";
}

// What is wrong with the whole, or nothing.
std::string Wrong(const Options& o) {
    if (o.charts.empty()) return "no chart given";
    if (o.choice.kind != dialect::Choice::kFirst && !o.modern) return "--seed and --random go with --modern";
    if (!o.preview && o.charts.size() > 1) return "one chart at a time: " + o.charts[1];
    if (o.png_folder.empty() != o.places.empty()) return "--png and --at go together";
    for (const auto& wrong : {WrongAudio(o), WrongPreview(o)}) {
        if (!wrong.empty()) return wrong;
    }
    const bool wants_any = o.preview || !o.places.empty();
    const bool named = !(o.wav + o.audio + o.video + o.trace + o.strip).empty();
    if (!wants_any && !named)
        return "nothing to render: use --wav, --audio, --video, --png, --strip, --trace or --preview";
    if (o.wav == "-" && o.trace == "-") return "only one output can go to standard output";
    if (o.to >= 0 && o.from > o.to) return "--from is after --to";
    return "";
}

}  // namespace

bool ParseOptions(int argc, const char* const* argv, Options* options, std::string* why) {
    why->clear();
    for (tools::Arguments words(argc, argv); why->empty() && words.Next();) {
        if (words.IsOption())
            *why = Take(&words, options);
        else
            options->charts.push_back(words.name());
    }
    if (options->fade < 0) options->fade = std::min(2.0, options->length);
    if (why->empty()) *why = Wrong(*options);
    if (!options->charts.empty()) options->chart = options->charts[0];
    if (options->preview) options->from = -1;
    return why->empty();
}

}  // namespace render
