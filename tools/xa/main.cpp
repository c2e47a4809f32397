// lumetra-xa: makes, unpacks and describes XA sounds.
#include <cstdio>
#include <cstring>
#include <string>
#include <vector>

#include "xa/decode.h"
#include "xa/encoder.h"
#include "xa/files.h"
#include "xa/wav.h"

namespace {

enum ExitCode { kGood = 0, kUsage = 1, kInput = 2, kOutput = 3 };

constexpr uint64_t kMostBytes = uint64_t{1} << 32;

const char kHelp[] =
    "Usage: lumetra-xa encode [--mode fine|fast] IN.wav OUT.xa\n"
    "       lumetra-xa decode IN.xa OUT.wav\n"
    "       lumetra-xa info IN.xa...\n"
    "\n"
    "Makes XA sounds for charts, unpacks them to 16-bit WAV, and tells what is in them.\n"
    "\n"
    "  -m, --mode MODE  fine: 10-bit codes, the better sound (what is taken without this)\n"
    "                   fast: 4-bit codes, less than half the size\n"
    "  -h, --help       show this text\n"
    "  -V, --version    show the version\n"
    "\n"
    "IN.wav may be any sound file with 1 or 2 channels that libsndfile reads. OUT appears, or is\n"
    "replaced, only when it is complete.\n"
    "Exit codes: 0 done, 1 wrong use, 2 the input cannot be read, 3 the output cannot be written.\n";

int Complain(ExitCode code, const std::string& text) {
    std::fprintf(stderr, "lumetra-xa: %s\n", text.c_str());
    return code;
}

int WrongUse(const std::string& text) {
    Complain(kUsage, text);
    std::fprintf(stderr, "Try 'lumetra-xa --help'.\n");
    return kUsage;
}

int CannotWrite(const std::string& path, const std::string& why) {
    return Complain(kOutput, path + ": cannot write: " + why);
}

int EndOfText() {
    return std::fflush(stdout) == 0 && !std::ferror(stdout) ? kGood
                                                            : Complain(kOutput, "cannot write the text");
}

int Encode(const std::string& in, const std::string& out, xa::Mode mode) {
    std::string why;
    xa::Sound sound;
    if (!xa::ReadWav(in, &sound, &why)) return Complain(kInput, in + ": " + why);
    std::vector<uint8_t> file = xa::Encode(sound.samples, sound.channels, sound.rate, mode);
    if (file.empty()) return Complain(kInput, in + ": cannot be an XA sound");
    xa::PendingFile pending;
    if (!pending.Open(out, &why) || !pending.Write(file.data(), file.size(), &why) || !pending.Commit(&why)) {
        return CannotWrite(out, why);
    }
    return kGood;
}

// The file with its header; a warning when the file is shorter than the header says.
bool Read(const std::string& path, std::vector<uint8_t>* file, xa::Header* header) {
    std::string why;
    if (!xa::ReadFile(path, kMostBytes, file, &why) || !xa::ReadHeader(*file, header, &why)) {
        Complain(kInput, path + ": " + why);
        return false;
    }
    uint64_t has = file->size() - 32;
    if (has < header->data_bytes) {
        Complain(kInput, path + ": ends early, after " + std::to_string(has) + " of " +
                             std::to_string(header->data_bytes) + " bytes of data");
    }
    return true;
}

int Decode(const std::string& in, const std::string& out) {
    std::string why;
    std::vector<uint8_t> file;
    xa::Header header;
    xa::Sound sound;
    if (!Read(in, &file, &header)) return kInput;
    if (!xa::Decode(file, header, &sound, &why)) return Complain(kInput, in + ": " + why);
    xa::PendingFile pending;
    if (!pending.Open(out, &why) ||
        !xa::WriteWav(pending.fd(), sound.channels, sound.rate, sound.samples, &why) ||
        !pending.Commit(&why)) {
        return CannotWrite(out, why);
    }
    return kGood;
}

int Info(const std::string& path) {
    std::vector<uint8_t> file;
    xa::Header header;
    if (!Read(path, &file, &header)) return kInput;
    double seconds = static_cast<double>(header.frames) / header.rate;
    double pcm = 2.0 * header.channels * header.frames;
    std::printf("%s\n", path.c_str());
    std::printf("  mode      %s (%d-bit codes)\n", header.bits == 10 ? "fine" : "fast", header.bits);
    std::printf("  channels  %d\n", header.channels);
    std::printf("  rate      %u Hz\n", header.rate);
    std::printf("  length    %u frames, %.3f s\n", header.frames, seconds);
    std::printf("  data      %u bytes", header.data_bytes);
    if (pcm > 0)
        std::printf(", %.1f %% of 16-bit PCM, %.0f kbit/s", 100 * header.data_bytes / pcm,
                    header.data_bytes * 0.008 / seconds);
    std::printf("\n");
    return kGood;
}

int InfoOfAll(const std::vector<std::string>& paths) {
    int code = kGood;
    for (const std::string& path : paths) {
        if (Info(path) != kGood) code = kInput;
    }
    int text = EndOfText();
    return text != kGood ? text : code;
}

struct Arguments {
    std::vector<std::string> words;  // the command, then files
    bool mode_given = false;
    xa::Mode mode = xa::Mode::kFine;
};

bool TakeMode(const std::string& text, Arguments* arguments) {
    arguments->mode_given = true;
    arguments->mode = text == "fast" ? xa::Mode::kFast : xa::Mode::kFine;
    return text == "fast" || text == "fine";
}

// A complaint, or empty.
std::string Parse(const std::vector<std::string>& in, Arguments* out) {
    for (size_t i = 0; i < in.size(); ++i) {
        const std::string& word = in[i];
        if (word == "--") {
            out->words.insert(out->words.end(), in.begin() + static_cast<long>(i) + 1, in.end());
            return "";
        }
        if (word == "-m" || word == "--mode") {
            if (++i == in.size()) return "'" + word + "' needs a mode: fine or fast";
            if (!TakeMode(in[i], out)) return "no mode is called '" + in[i] + "': fine or fast";
        } else if (word.rfind("--mode=", 0) == 0) {
            if (!TakeMode(word.substr(7), out))
                return "no mode is called '" + word.substr(7) + "': fine or fast";
        } else if (word.size() > 1 && word[0] == '-') {
            return "no option is called '" + word + "'";
        } else {
            out->words.push_back(word);
        }
    }
    return "";
}

int Run(const Arguments& arguments) {
    if (arguments.words.empty()) return WrongUse("no command given");
    const std::string& command = arguments.words[0];
    std::vector<std::string> files(arguments.words.begin() + 1, arguments.words.end());
    bool encode = command == "encode", decode = command == "decode";
    if (!encode && !decode && command != "info") return WrongUse("no command is called '" + command + "'");
    if (arguments.mode_given && !encode) return WrongUse("only 'encode' takes a mode");
    if (encode || decode) {
        if (files.size() != 2)
            return WrongUse("'" + command + "' takes two files: what to read and what to write");
        return encode ? Encode(files[0], files[1], arguments.mode) : Decode(files[0], files[1]);
    }
    return files.empty() ? WrongUse("'info' takes at least one file") : InfoOfAll(files);
}

}  // namespace

int main(int argc, char** argv) {
    std::vector<std::string> words(argv + 1, argv + argc);
    for (const std::string& word : words) {
        if (word == "--") break;
        if (word == "-h" || word == "--help") return std::fputs(kHelp, stdout), EndOfText();
        if (word == "-V" || word == "--version") return std::puts("lumetra-xa " LUMETRA_VERSION), EndOfText();
    }
    Arguments arguments;
    std::string complaint = Parse(words, &arguments);
    return complaint.empty() ? Run(arguments) : WrongUse(complaint);
}
