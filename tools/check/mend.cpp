#include "check/mend.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

#include "check/read.h"
#include "common/output.h"
#include "platform/files/filename.h"
#include "platform/files/files.h"
#include "platform/files/lookup.h"
#include "report/refusal.h"

namespace check {
namespace {

// Each pass takes what the one before has uncovered, and at most Findings::kMostProposals edits.
constexpr int kMostPasses = 16;

SharedBytes ReadAll(int fd, size_t size) {
    const auto block = std::make_shared<ByteBlock>();
    size_t done = 0;
    if (!block->Resize(size)) return nullptr;
    while (done < size) {
        const ssize_t count = read(fd, block->Data() + done, size - done);
        if (count < 0 && errno == EINTR) continue;
        if (count <= 0) return nullptr;
        done += static_cast<size_t>(count);
    }
    return block;
}

// Whether the file is still as it was read. *now: what it is.
bool IsUnchanged(const ChartFile& file, struct stat* now) {
    const struct stat &a = *now, &b = file.status;
    return stat(file.path.c_str(), now) == 0 && a.st_dev == b.st_dev && a.st_ino == b.st_ino &&
           a.st_size == b.st_size && a.st_mtim.tv_sec == b.st_mtim.tv_sec &&
           a.st_mtim.tv_nsec == b.st_mtim.tv_nsec;
}

// False without memory.
bool Apply(const Edits& edits, Mended* mended, int64_t* edited) {
    *edited += edits.Mended();
    mended->ends_lines_at_cr = mended->ends_lines_at_cr || edits.EndsLinesAtCr();
    mended->bytes = edits.Apply();
    return mended->bytes != nullptr;
}

// Mends what concerns single lines, which needs no sounds and pictures. mended->bytes: with a NUL after them.
bool MendLines(const Subject& subject, Mended* mended, int64_t* edited) {
    const std::string path = HandOver(subject.file_name);
    for (int pass = 0; pass < kMostPasses; ++pass) {
        Tables tables;
        Findings findings = subject.findings;  // none yet; it knows which are wanted
        const std::string_view text = TextOf(*mended->bytes);
        ReadLines(text.data(), static_cast<int64_t>(text.size()), path.c_str(), &tables, &findings);
        findings.Sort();
        const SharedBytes before = mended->bytes;
        const Edits edits(text, findings);
        if (edits.Empty()) return true;
        if (!Apply(edits, mended, edited)) return false;
    }
    return true;
}

}  // namespace

std::string ReadChartFile(const std::string& name, ChartFile* file) {
    FileForgetListings();
    file->path = FindNamed(HandOver(name));
    if (file->path.empty()) return report::WhyUnreadable(name);
    const int fd = open(file->path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK);
    if (fd < 0) return std::strerror(errno);
    std::string error;
    if (fstat(fd, &file->status) != 0 || !S_ISREG(file->status.st_mode) ||
        file->status.st_size > BMS_FILE_LIMIT)
        error = report::WhyUnreadable(file->path);
    else if (!(file->bytes = ReadAll(fd, static_cast<size_t>(file->status.st_size))))
        error = "it cannot be read whole";
    close(fd);
    return error;
}

std::string ReplaceChartFile(const ChartFile& file, const ByteBlock& bytes, bool* changed) {
    constexpr char kChanged[] = "not fixed: it was changed meanwhile";
    struct stat now = {};
    *changed = !IsUnchanged(file, &now);
    if (*changed) return kChanged;
    if (now.st_nlink > 1) return "not fixed: it has other names (hard links), which would keep the old text";
    if ((now.st_mode & 0222) == 0) return "not fixed: it is write-protected";
    tools::Output out;
    const bool written = out.Open(file.path) && out.Write(bytes.Data(), bytes.Size()) && out.Sync();
    *changed = written && !IsUnchanged(file, &now);  // writing to the disk takes its time
    if (*changed) return kChanged;
    return written && out.Commit() ? "" : "not fixed: " + out.error();
}

bool CheckAndMend(const std::function<std::unique_ptr<Subject>()>& make, const SharedBytes& bytes,
                  Mended* mended, std::string* why) {
    int64_t edited = 0;
    *why = "no memory for the edits";
    mended->bytes = Edits(TextOf(*bytes), Findings()).Apply();
    if (!mended->bytes) return false;
    for (int pass = 0;; ++pass) {
        mended->subject = make();
        if (!mended->subject->modern && !MendLines(*mended->subject, mended, &edited)) return false;
        mended->subject->provided = mended->bytes;
        why->clear();
        if (!CheckChart(mended->subject.get(), why)) return false;
        const Edits& edits = mended->subject->edits;
        mended->subject->edited = edited;
        if (edits.Empty() || pass == kMostPasses) return true;
        if (!Apply(edits, mended, &edited)) return false;
    }
}

}  // namespace check
