// Generates the demo: chart, sounds and pictures, with the same bytes on every machine.
#include <cstdio>
#include <fstream>

#include "generate.h"

namespace {

bool Write(const std::string& folder, const std::string& name, const char* bytes, size_t count) {
    std::string path = folder + "/" + name;
    std::ofstream file(path, std::ios::binary);
    file.write(bytes, static_cast<std::streamsize>(count));
    file.close();
    if (!file) std::fprintf(stderr, "%s: cannot write\n", path.c_str());
    return static_cast<bool>(file);
}

bool Write(const std::string& folder, const std::string& name, const demo::Bytes& bytes) {
    return Write(folder, name, reinterpret_cast<const char*>(bytes.data()), bytes.size());
}

}  // namespace

int main(int argc, char** argv) {
    if (argc != 2) {
        std::fprintf(stderr,
                     "Usage: %s FOLDER\nWrites demo.bms with its sounds and pictures into the folder.\n",
                     argv[0]);
        return 1;
    }
    std::vector<demo::File> pictures = demo::Pictures();
    demo::Chart chart = demo::WriteChart(pictures);
    bool good = Write(argv[1], "demo.bms", chart.text.data(), chart.text.size());
    for (const demo::File& picture : pictures) good = good && Write(argv[1], picture.name, picture.bytes);
    for (const demo::Voice& voice : chart.voices) {
        good = good && Write(argv[1], demo::SoundName(voice),
                             demo::SoundFile(demo::Play(voice), demo::FormatOf(voice)));
    }
    return good ? 0 : 1;
}
