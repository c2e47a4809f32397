// Files that the player reads outside the chart's folder.
#include <cstdlib>
#include <memory>

#include "check/files.h"
#include "check/subject.h"
#include "platform/files/filename.h"

namespace check {
namespace {

// Without links and `..`; empty if it does not exist.
std::string RealPath(const std::string& path) {
    const std::unique_ptr<char, void (*)(void*)> real(realpath(path.c_str(), nullptr), std::free);
    return real ? real.get() : "";
}

struct Outside {
    const Definition* first = nullptr;
    int64_t files = 0;
};

template <class File>
void Count(const std::string& folder, const std::vector<File>& files,
           const std::vector<Definition>& definitions, Outside* outside) {
    for (const File& file : files) {
        if (file.found.empty() || RealPath(file.found).starts_with(folder)) continue;
        const Definition& definition = definitions[static_cast<size_t>(file.number)];
        if (outside->files++ == 0 || definition.place.line < outside->first->place.line)
            outside->first = &definition;
    }
}

}  // namespace

void CheckOutside(Subject* subject) {
    const std::string folder = RealPath(FolderOf(AbsolutePath(subject->file_name)));
    if (folder.empty() || folder == "/") return;
    Outside outside;
    Count(folder + "/", subject->sounds, subject->tables.sounds, &outside);
    Count(folder + "/", subject->pictures, subject->tables.pictures, &outside);
    if (outside.files == 0) return;
    subject->findings.Add(outside.first->NamePlace(), "outside-folder", [&] {
        const bool one = outside.files == 1;
        return Quote(outside.first->name) +
               (one ? " is" : " and " + CountOf(outside.files - 1, "other file") + " are") +
               " outside the chart's folder; the player reads " + (one ? "it" : "them") +
               ", but a copy of the folder does not include " + (one ? "it" : "them");
    });
}

}  // namespace check
