#include "compile/modern.h"

#include <algorithm>
#include <atomic>
#include <chrono>
#include <memory>
#include <string>
#include <utility>

#include "compile/package.h"
#include "platform/open.h"

namespace compile {
namespace {

std::atomic<bool> g_modern = false;

// The chart compiled last. A loader opens a chart twice within moments: once to see whether it can be played,
// then to play it. The package, which holds decoded sounds, lives as long as its files can be opened.
struct Last {
    std::string name, bytes;
    std::chrono::steady_clock::time_point at;
    std::weak_ptr<const Package> package;
};

std::shared_ptr<const Package> Again(const Last& last, const std::string& name, std::string_view bytes) {
    const bool fresh = last.name == name && last.bytes == bytes &&
                       std::chrono::steady_clock::now() - last.at < std::chrono::seconds(1);
    return fresh ? last.package.lock() : nullptr;
}

// What the reader puts before the names of sounds and pictures.
std::string FolderOfName(const std::string& name) {
    return name.substr(0, name.rfind('\\') + 1);
}

void RegisterFiles(const std::string& folder, const std::shared_ptr<const Package>& package) {
    for (const MadeFile& file : package->made) {
        const FileMaker make = [package, &file](const MayHold& mayHold, ByteBlock* bytes) {
            return file.make(mayHold, bytes);
        };
        RegisterFile(folder + file.name, make);
        // The reader adds a separator where it takes the one before for half of a two-byte character.
        RegisterFile(folder + '\\' + file.name, make);
    }
}

SharedBytes Shared(const std::string& text) {
    auto bytes = std::make_shared<ByteBlock>();
    if (!bytes->Resize(text.size())) return nullptr;
    std::copy(text.begin(), text.end(), bytes->Data());
    return bytes;
}

}  // namespace

void PlayModern(const dialect::Choice& choice) {
    g_modern = true;
    SetChartMaker([choice, last = Last()](const std::string& name, const ByteBlock& chart) mutable {
        const std::string_view bytes(reinterpret_cast<const char*>(chart.Data()), chart.Size());
        const std::string folder = FolderOfName(name);
        Settings settings;
        settings.choice = choice;
        std::shared_ptr<const Package> package = Again(last, name, bytes);
        if (!package) package = std::make_shared<Package>(CompileChart(bytes, folder, settings));
        last = {name, std::string(bytes), std::chrono::steady_clock::now(), package};
        if (package->unchanged) return SharedBytes();
        RegisterFiles(folder, package);
        return Shared(package->text);
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
