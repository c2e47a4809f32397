#include "render/options.h"

#include <cmath>
#include <string_view>

#include "common/arguments.h"

namespace render {

const char kHelp[] =
    "Usage: lumetra-render [options] CHART\n"
    "\n"
    "Renders a chart to files, faster than real time and identically on every run.\n"
    "\n"
    "  --wav FILE          sound: 44,100 Hz, 16 bit, stereo, until the last sound has ended\n"
    "  --video FILE        picture and sound; the suffix selects the format (needs ffmpeg)\n"
    "  --png DIR --at LIST a picture at each chart time of the comma-separated list: milliseconds,\n"
    "                      or m12 or m12.5 for a place in a measure\n"
    "  --trace FILE        text: every frame, record fired, copy drawn and sound started\n"
    "  --from N --to N     these measures only, both included\n"
    "  --pacing P          exact: every sound starts at its millisecond (default)\n"
    "                      player: at the next frame, up to 15 ms later, as the player plays it\n"
    "  --force             replace existing files of another kind; never the chart or its files\n"
    "  --speed S           scroll speed, 0.1 to 8 (default 1)\n"
    "  --fps N             pictures per second of video, 1 to 240 (default 60)\n"
    "  --size N            enlarge video and pictures by a whole factor, 1 to 8 (default 1)\n"
    "  -h, --help          print this help and exit\n"
    "  -V, --version       print the version and exit\n"
    "\n"
    "FILE can be - for standard output with --wav or --trace. An output file is created or replaced\n"
    "only when it is complete.\n"
    "Exit codes: 0 done, 1 wrong usage, 2 the chart cannot be read or played, 3 the output failed.\n";

namespace {

using tools::ReadNumber;
using tools::ReadWithin;

bool ReadPlace(std::string_view text, PicturePlace* place) {
    place->text = text;
    place->in_measure = !text.empty() && (text[0] == 'm' || text[0] == 'M');
    if (place->in_measure) text.remove_prefix(1);
    const bool plain = text.find_first_not_of("0123456789.") == std::string_view::npos;
    return plain && ReadNumber(text, &place->value) && std::isfinite(place->value) &&
           place->value < 2147483647.0;
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
    return ReadNumber(text, &speed) && speed >= static_cast<double>(0.1f) && speed <= 8.0;
}

// Takes one option. Returns false when the value is invalid.
bool Take(const std::string& name, const std::string& value, Options* o) {
    if (name == "--wav") return !(o->wav = value).empty();
    if (name == "--video") return !(o->video = value).empty() && value != "-";
    if (name == "--trace") return !(o->trace = value).empty();
    if (name == "--png") return !(o->png_folder = value).empty();
    if (name == "--at") return ReadPlaces(value, &o->places);
    if (name == "--from") return ReadWithin(value, 0, 999, &o->from);
    if (name == "--to") return ReadWithin(value, 0, 999, &o->to);
    if (name == "--speed") return ReadSpeed(o->speed = value);
    if (name == "--pacing") return o->exact = value == "exact", o->exact || value == "player";
    if (name == "--fps") return ReadWithin(value, 1, 240, &o->fps);
    if (name == "--size") return ReadWithin(value, 1, 8, &o->size);
    return false;
}

bool IsKnown(const std::string& name) {
    for (const char* known : {"--wav", "--video", "--trace", "--png", "--at", "--from", "--to", "--speed",
                              "--fps", "--size", "--pacing"}) {
        if (name == known) return true;
    }
    return false;
}

bool IsComplete(const Options& o, std::string* why) {
    if (o.chart.empty()) {
        *why = "no chart given";
    } else if (o.png_folder.empty() != o.places.empty()) {
        *why = "--png and --at go together";
    } else if (o.wav.empty() && o.video.empty() && o.trace.empty() && o.png_folder.empty()) {
        *why = "nothing to render: use --wav, --video, --png or --trace";
    } else if (o.wav == "-" && o.trace == "-") {
        *why = "only one output can go to standard output";
    } else if (o.to >= 0 && o.from > o.to) {
        *why = "--from is after --to";
    } else {
        return true;
    }
    return false;
}

}  // namespace

bool ParseOptions(int argc, const char* const* argv, Options* options, std::string* why) {
    const auto wrong = [why](const std::string& text) { return *why = text, false; };
    for (tools::Arguments words(argc, argv); words.Next();) {
        const std::string name = words.name();
        if (!words.IsOption()) {
            if (!options->chart.empty()) return wrong("one chart at a time: " + name);
            options->chart = name;
            continue;
        }
        std::string value;
        if (name == "--force") {
            options->force = true;
            continue;
        }
        if (!IsKnown(name)) return wrong("unknown option: " + name);
        if (!words.Value(&value)) return wrong(name + " needs a value");
        if (!Take(name, value, options)) return wrong(name + ": invalid value: " + value);
    }
    return IsComplete(*options, why);
}

}  // namespace render
