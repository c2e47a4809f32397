#include "render/options.h"

#include <charconv>
#include <cmath>
#include <cstring>
#include <string_view>

namespace render {

const char kHelp[] =
    "Usage: lumetra-render [options] CHART\n"
    "\n"
    "Renders a chart to files, faster than it plays and the same on every run.\n"
    "\n"
    "  --wav FILE          the sound: 44,100 Hz, 16 bit, stereo, up to the last sound's end\n"
    "  --video FILE        picture and sound, format by suffix (needs the ffmpeg program)\n"
    "  --png DIR --at LIST a picture for each chart time: milliseconds, or m12 or m12.5 for a\n"
    "                      measure and its part, with commas between them\n"
    "  --trace FILE        text: each frame, record fired, thing drawn and sound started\n"
    "  --from N --to N     these measures only, both included\n"
    "  --speed S           scroll speed, 0.1 to 8 (1)\n"
    "  --fps N             pictures for each second of video, 1 to 240 (60)\n"
    "  --size N            enlarge video and pictures by a whole factor, 1 to 8 (1)\n"
    "  --help, --version\n"
    "\n"
    "FILE may be - for standard output with --wav or --trace. An output appears, or is replaced, only\n"
    "when it is complete.\n"
    "Exit codes: 0 done, 1 wrong use, 2 the chart cannot be read or played, 3 the output failed.\n";

namespace {

// The whole text as a number; false for anything else.
template <class T>
bool ReadNumber(std::string_view text, T* number) {
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), *number);
    return error == std::errc() && end == text.data() + text.size();
}

bool ReadWithin(const std::string& text, int least, int most, int* number) {
    return ReadNumber(text, number) && *number >= least && *number <= most;
}

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

// One option with its value. False when the value is not right.
bool Take(const std::string& name, const std::string& value, Options* o) {
    if (name == "--wav") return !(o->wav = value).empty();
    if (name == "--video") return !(o->video = value).empty() && value != "-";
    if (name == "--trace") return !(o->trace = value).empty();
    if (name == "--png") return !(o->png_folder = value).empty();
    if (name == "--at") return ReadPlaces(value, &o->places);
    if (name == "--from") return ReadWithin(value, 0, 999, &o->from);
    if (name == "--to") return ReadWithin(value, 0, 999, &o->to);
    if (name == "--speed") return ReadSpeed(o->speed = value);
    if (name == "--fps") return ReadWithin(value, 1, 240, &o->fps);
    if (name == "--size") return ReadWithin(value, 1, 8, &o->size);
    return false;
}

bool IsKnown(const std::string& name) {
    for (const char* known :
         {"--wav", "--video", "--trace", "--png", "--at", "--from", "--to", "--speed", "--fps", "--size"}) {
        if (name == known) return true;
    }
    return false;
}

bool Sound(const Options& o, std::string* why) {
    if (o.chart.empty()) {
        *why = "which chart?";
    } else if (o.png_folder.empty() != o.places.empty()) {
        *why = "--png and --at go together";
    } else if (o.wav.empty() && o.video.empty() && o.trace.empty() && o.png_folder.empty()) {
        *why = "nothing to render: give --wav, --video, --png or --trace";
    } else if (o.wav == "-" && o.trace == "-") {
        *why = "only one output can go to standard output";
    } else if (o.to >= 0 && o.from > o.to) {
        *why = "--from lies behind --to";
    } else {
        return true;
    }
    return false;
}

}  // namespace

Parse ParseOptions(int argc, const char* const* argv, Options* options, std::string* why) {
    bool only_names = false;  // behind --
    for (int i = 1; i < argc; ++i) {
        std::string name = argv[i];
        if (only_names || name == "-" || name[0] != '-') {
            if (!options->chart.empty()) return *why = "one chart at a time: " + name, Parse::kWrong;
            options->chart = name;
            continue;
        }
        if (name == "--help" || name == "-h") return Parse::kHelp;
        if (name == "--version" || name == "-V") return Parse::kVersion;
        if (name == "--") {
            only_names = true;
            continue;
        }
        const size_t sign = name.find('=');
        std::string value = sign == std::string::npos ? "" : name.substr(sign + 1);
        name = name.substr(0, sign);
        if (!IsKnown(name)) return *why = "unknown option: " + name, Parse::kWrong;
        if (sign == std::string::npos) {
            if (i + 1 == argc) return *why = name + " needs a value", Parse::kWrong;
            value = argv[++i];
        }
        if (!Take(name, value, options)) return *why = name + " does not take: " + value, Parse::kWrong;
    }
    return Sound(*options, why) ? Parse::kRun : Parse::kWrong;
}

}  // namespace render
