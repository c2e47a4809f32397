// lumetra-xa: makes, unpacks and describes XA sounds.
#include <cstdio>
#include <string>
#include <vector>

#include "common/arguments.h"
#include "common/messages.h"
#include "common/output.h"
#include "common/output_rules.h"
#include "common/signals.h"
#include "common/terminal.h"
#include "common/wav.h"
#include "sound/xadec.h"
#include "sound/xaformat.h"
#include "xa/decode.h"
#include "xa/encoder.h"
#include "xa/read_sound.h"

namespace {

using tools::Complain;

enum ExitCode { kGood = 0, kUsage = 1, kInput = 2, kOutput = 3 };

constexpr uint64_t kMostBytes = uint64_t{1} << 32;

const char kHelp[] =
    "Usage: lumetra-xa encode [--mode fine|fast] IN.wav OUT.xa\n"
    "       lumetra-xa decode IN.xa OUT.wav\n"
    "       lumetra-xa info IN.xa...\n"
    "\n"
    "Encodes sounds as XA, decodes XA to 16-bit WAV, and describes XA files.\n"
    "\n"
    "  -m, --mode MODE  fine: 10-bit codes, better sound (default)\n"
    "                   fast: 4-bit codes, less than half the size\n"
    "      --force      replace an existing file of another kind; never the input\n"
    "  -h, --help       print this help and exit\n"
    "  -V, --version    print the version and exit\n"
    "\n"
    "IN.wav can be any sound file with 1 or 2 channels that libsndfile reads. OUT is created or\n"
    "replaced only when it is complete.\n"
    "Exit codes: 0 done, 1 wrong usage, 2 the input cannot be read, 3 the output cannot be written.\n";

int WrongUse(const std::string& text) {
    return tools::WrongUse(kUsage, text);
}

int Encode(const std::string& in, const std::string& out, xa::Mode mode) {
    std::string why;
    xa::Sound sound;
    if (!xa::ReadSound(in, &sound, &why)) return Complain(kInput, in + ": " + why);
    const std::vector<uint8_t> file = xa::Encode(sound.samples, sound.channels, sound.rate, mode);
    if (file.empty()) return Complain(kInput, in + ": cannot be an XA sound");
    tools::Output output;
    const bool good = output.Open(out) && output.Write(file.data(), file.size()) && output.Commit();
    return good ? kGood : Complain(kOutput, output.error());
}

// The file with its header. Warns when the file is shorter than the header says.
bool Read(const std::string& path, std::vector<uint8_t>* file, xa::Header* header) {
    std::string why;
    if (!tools::ReadFile(path, kMostBytes, file, &why) || !xa::ReadHeader(*file, header, &why)) {
        Complain(kInput, path + ": " + why);
        return false;
    }
    const uint64_t has = file->size() - XA_HEADER_SIZE;
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
    tools::WavWriter wav;
    const bool good = wav.Open(out, sound.channels, sound.rate) &&
                      wav.Write(sound.samples.data(), sound.samples.size()) && wav.Commit();
    return good ? kGood : Complain(kOutput, wav.error());
}

int Info(const std::string& path) {
    std::vector<uint8_t> file;
    xa::Header header;
    if (!Read(path, &file, &header)) return kInput;
    const double seconds = static_cast<double>(header.frames) / header.rate;
    const double pcm = 2.0 * header.channels * header.frames;
    std::printf("%s\n", tools::CleanText(path).c_str());
    std::printf("  mode      %s (%d-bit codes)\n", header.bits == XA_BITS_FINE ? "fine" : "fast",
                header.bits);
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
    return tools::FlushOutput() ? code : Complain(kOutput, "cannot write the text");
}

struct Words {
    std::vector<std::string> operands;  // the command, then files
    std::string mode;                   // empty: not given
    bool force = false;
};

// Returns a complaint, or nothing.
std::string Parse(int argc, const char* const* argv, Words* words) {
    for (tools::Arguments in(argc, argv); in.Next();) {
        if (!in.IsOption()) {
            words->operands.push_back(in.name());
            continue;
        }
        if (in.name() == "--force") {
            words->force = true;
            continue;
        }
        if (in.name() != "-m" && in.name() != "--mode") return "unknown option: " + in.name();
        if (!in.Value(&words->mode)) return in.name() + " needs a mode: fine or fast";
        if (words->mode != "fine" && words->mode != "fast")
            return "unknown mode: '" + words->mode + "'; use fine or fast";
    }
    return "";
}

int Run(const Words& words) {
    if (words.operands.empty()) return WrongUse("no command given");
    const std::string& command = words.operands[0];
    const std::vector<std::string> files(words.operands.begin() + 1, words.operands.end());
    const bool encode = command == "encode", decode = command == "decode";
    if (!encode && !decode && command != "info") return WrongUse("unknown command: " + command);
    if (!words.mode.empty() && !encode) return WrongUse("only 'encode' takes a mode");
    if (command == "info")
        return files.empty() ? WrongUse("'info' takes at least one file") : InfoOfAll(files);
    if (files.size() != 2) return WrongUse("'" + command + "' takes two files: input and output");
    std::string why;
    tools::OutputRules rules(words.force);
    rules.Protect(files[0]);
    const auto kind = decode ? tools::FileKind::kWav : tools::FileKind::kXa;
    if (!rules.Allow(files[1], kind, &why)) return Complain(kUsage, why);
    tools::CatchSignals();
    if (decode) return Decode(files[0], files[1]);
    return Encode(files[0], files[1], words.mode == "fast" ? xa::Mode::kFast : xa::Mode::kFine);
}

}  // namespace

static int Main(int argc, char** argv) {
    int code = kGood;
    if (tools::AnswerHelp(argc, argv, kHelp, kOutput, &code)) return code;
    Words words;
    const std::string complaint = Parse(argc, argv, &words);
    return complaint.empty() ? Run(words) : WrongUse(complaint);
}

int main(int argc, char** argv) {
    return tools::RunTool("lumetra-xa", Main, argc, argv);
}
