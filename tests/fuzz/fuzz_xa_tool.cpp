// Takes any bytes as the input of lumetra-xa's three commands, run as a user runs them. The first byte
// chooses the command.
#include <cstdint>
#include <cstdlib>
#include <iterator>
#include <string>
#include <vector>

#include "support/tempfolder.h"

int XaMain(int argc, char** argv);  // the tool's main

extern "C" const char* __lsan_default_suppressions() {
    return "leak:libvorbis\nleak:libsndfile\n";
}

namespace {

int Run(std::vector<std::string> words) {
    words.insert(words.begin(), "lumetra-xa");
    std::vector<char*> argv;
    for (std::string& word : words) argv.push_back(word.data());
    argv.push_back(nullptr);
    return XaMain(static_cast<int>(words.size()), argv.data());
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    static const test::TempFolder folder;
    if (size == 0 || size > 16384) return 0;
    const std::string bytes(reinterpret_cast<const char*>(data) + 1, size - 1);
    const std::string in = folder.Write("in", bytes), xa = folder.Path("out.xa"),
                      wav = folder.Path("out.wav");
    const std::vector<std::string> commands[] = {
        {"encode", in, xa}, {"encode", "--mode=fast", in, xa},       {"decode", in, wav},
        {"info", in, in},   {"-m", bytes.c_str(), "encode", in, xa}, {bytes.c_str(), "--force", in, xa}};
    const size_t choice = data[0] % std::size(commands);
    const std::vector<std::string>& command = commands[choice];
    const int code = Run(command);
    if (code < 0 || code > 3) std::abort();
    // A file is there exactly when the command says so, and what it made can be read.
    const bool made = choice != 3 && std::filesystem::exists(command.back());
    if (made && code != 0) std::abort();
    if (!made && code == 0 && choice < 3) std::abort();
    if (made && command.back() == xa && Run({"decode", xa, wav}) != 0) std::abort();
    for (const std::string& out : {xa, wav}) std::filesystem::remove(out);
    return 0;
}
