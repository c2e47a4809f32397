#include "compile/modern.h"

#include <algorithm>
#include <atomic>
#include <chrono>
#include <string>
#include <utility>

#include "compile/package.h"
#include "platform/open.h"

namespace compile {
namespace {

std::atomic<bool> g_modern = false;  // also read by threads that tell the status

// The chart compiled last. A loader opens a chart twice within moments: once to see whether it can be played,
// then to play it.
struct Last {
    std::string name, bytes;
    std::chrono::steady_clock::time_point at;
    Package package;
};

bool IsFresh(const Last& last, const std::string& name, std::string_view bytes) {
    return last.name == name && last.bytes == bytes &&
           std::chrono::steady_clock::now() - last.at < std::chrono::seconds(1);
}

// What the reader puts before the names of sounds and pictures.
std::string FolderOfName(const std::string& name) {
    return name.substr(0, name.rfind('\\') + 1);
}

// The reader adds a separator where it takes the one before for half of a two-byte character.
void RegisterBoth(const std::string& folder, const MadeFile& file) {
    RegisterFile(folder + file.name, file.make);
    RegisterFile(folder + '\\' + file.name, file.make);
}

SharedBytes Shared(const std::string& text) {
    auto bytes = std::make_shared<ByteBlock>();
    if (!bytes->Resize(text.size())) return nullptr;
    std::copy(text.begin(), text.end(), bytes->Data());
    return bytes;
}

}  // namespace

void PlayModern(const dialect::Choice& choice, OnFindings on_findings) {
    g_modern = true;
    SetChartMaker(
        [choice, on_findings, last = Last()](const std::string& name, const ByteBlock& chart) mutable {
            const std::string_view bytes(reinterpret_cast<const char*>(chart.Data()), chart.Size());
            const std::string folder = FolderOfName(name);
            Settings settings;
            settings.choice = choice;
            if (!IsFresh(last, name, bytes)) {
                last.package = {};  // its sounds go before others come
                last.package = CompileChart(bytes, folder, settings);
            }
            last.name = name, last.bytes = bytes, last.at = std::chrono::steady_clock::now();
            if (on_findings) on_findings(last.package.findings);
            if (last.package.unchanged) return SharedBytes();
            for (const MadeFile& file : last.package.made) RegisterBoth(folder, file);
            return Shared(last.package.text);
        });
}

void PlayAsWritten() {
    g_modern = false;
    SetChartMaker(nullptr);
}

bool PlaysModern() {
    return g_modern;
}

}  // namespace compile
