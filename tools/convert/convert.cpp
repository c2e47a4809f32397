#include "convert/convert.h"

#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <cstdio>
#include <filesystem>
#include <map>
#include <mutex>

#include "common/arguments.h"
#include "common/messages.h"
#include "common/output.h"
#include "common/signals.h"
#include "common/terminal.h"
#include "compile/shelf.h"
#include "convert/film.h"
#include "convert/folder.h"
#include "convert/names.h"
#include "convert/report.h"
#include "platform/files/handle.h"
#include "platform/files/lookup.h"
#include "platform/substitutes/substitute.h"

namespace convert {
namespace {

namespace fs = std::filesystem;

constexpr size_t kShownFindings = 5;        // of each code
constexpr int64_t kMostFindings = 100'000;  // of each code with --all

// One line on standard error, if that is a terminal.
class Progress {
public:
    ~Progress() {
        if (shown_) std::fputs("\r\x1b[K", stderr);
    }
    void Show(const char* what, size_t done, size_t of) {
        if (!terminal_) return;
        const std::lock_guard lock(mutex_);
        std::fprintf(stderr, "\r%s %zu of %zu\x1b[K", what, done, of);
        shown_ = true;
    }

private:
    const bool terminal_ = isatty(STDERR_FILENO);
    bool shown_ = false;
    std::mutex mutex_;
};

struct Job {
    Options options;
    std::string chart;       // path on this machine
    std::string chart_name;  // its last part
    std::vector<uint8_t> bytes;
    compile::Package package;
    std::map<std::string, std::string> files;  // of the package: their paths, absolute and without links
    FilmFailures failures;
};

bool ReadChart(Job* job, std::string* why) {
    job->chart = FindNamed(job->options.chart);
    if (job->chart.empty()) return *why = job->options.chart + ": there is no such file", false;
    std::error_code error;
    job->chart = fs::absolute(job->chart, error).string();
    if (error) return *why = job->options.chart + ": " + error.message(), false;
    job->chart_name = fs::path(job->chart).filename().string();
    if (tools::ReadFile(job->chart, dialect::kMostBytes, &job->bytes, why)) return true;
    *why = job->options.chart + ": " + *why;
    return false;
}

// Whether a file is a sound or picture by its first bytes.
bool IsMedia(const std::string& path) {
    int64_t size = 0;
    const int file = OpenRegularFile(path.c_str(), &size);
    if (file < 0) return false;
    BYTE head[kForeignHead] = {};
    const size_t count = ReadFileAt(file, head, sizeof head, 0);
    close(file);
    const std::string_view text(reinterpret_cast<const char*>(head), count);
    return text.starts_with("RIFF") || text.starts_with("KWD1") || text.starts_with("BM") ||
           ForeignKind(head, count, path) != MediaKind::kNone;
}

// A chart may name any file of its reader's, and packages are passed on: besides sounds and pictures, a
// package takes films, by the name of the file itself, from the chart's folder alone.
void AddFile(const std::string& name, const compile::UsedFile& file, const std::string& folder, Job* job) {
    if (file.path.empty()) return;
    std::error_code error;
    const std::string path = fs::canonical(file.path, error).string();
    const bool within = path.starts_with(fs::canonical(folder, error).string() + "/");
    if (!name.empty() && (IsMedia(path) || (within && IsFilmName(path)))) {
        job->files[name] = path;
        return;
    }
    job->package.findings.push_back(
        {dialect::Severity::kWarning, within ? "no-media" : "outside", file.source,
         dialect::Quote(file.name) + (within ? " is neither sound nor picture and is left out"
                                             : " lies outside the chart's folder and is left out")});
}

void Compile(Job* job) {
    const std::string folder = job->chart.substr(0, job->chart.rfind('/') + 1);
    Names names(folder, job->chart_name);
    compile::Settings settings;
    settings.choice = job->options.choice;
    if (job->options.all) settings.most_findings = kMostFindings;
    settings.list_used = true;
    settings.stopped = tools::Stopped;
    settings.written_name = [&](const compile::UsedFile& file, const std::string& own) {
        return names.NameInText(file, own);
    };
    if (HasFfmpeg()) {
        settings.film = [job](const std::string& path) {
            std::string why;
            const dialect::FilmLook look = LookAtFilm(path, &why);
            if (look.ms <= 0) job->failures[path] = why;
            return look;
        };
    }
    job->package = compile::CompileChart(
        {reinterpret_cast<const char*>(job->bytes.data()), job->bytes.size()}, folder, settings);
    for (const compile::UsedFile& file : job->package.used)
        AddFile(names.NameInFolder(file), file, folder, job);
    AddFileFindings(job->failures, &job->package);
}

// The chart and its files must not be what is replaced.
bool IsApart(const Job& job, const PackageFolder& folder, std::string* why) {
    const auto within = [&](const std::string& path) {
        return path.compare(0, folder.path().size(), folder.path()) == 0;
    };
    std::error_code error;
    if (within(fs::canonical(job.chart, error).string())) return *why = "the chart is in it", false;
    for (const auto& [name, path] : job.files) {
        if (within(path)) return *why = "the chart uses a file in it: " + path, false;
    }
    for (const compile::FilmFile& film : job.package.films) {
        const std::string path = fs::canonical(film.path, error).string();
        if (within(path)) return *why = "the chart uses a file in it: " + path, false;
    }
    return true;
}

bool WriteMade(const Job& job, Progress* progress, PackageFolder* folder, std::string* why) {
    std::atomic<size_t> done = 0;
    std::atomic<bool> failed = false;
    const size_t count = job.package.made.size();
    std::mutex mutex;
    compile::OnAllCores(count, [&](size_t i) {
        const compile::MadeFile& file = job.package.made[i];
        if (failed) return;
        ByteBlock bytes;
        const bool made = file.make({}, &bytes);
        if (!made || !folder->Write(file.name, bytes.Data(), bytes.Size())) {
            failed = true;
            const std::lock_guard lock(mutex);
            if (!made) *why = file.name + ": there is not enough memory";
        }
        progress->Show("mixed", ++done, count);
    });
    if (failed && why->empty()) *why = folder->error();
    return !failed;
}

// A film that ffmpeg gives up on stays blank from there on.
bool WriteFilm(const compile::FilmFile& file, Progress* progress, PackageFolder* folder, std::string* why) {
    const std::vector<dialect::Sheet>& sheets = file.film.sheets;
    size_t done = 0;
    bool written = true;
    const auto write = [&](const dialect::Sheet& sheet, const ByteBlock& bmp) {
        written = folder->Write(sheet.name, bmp.Data(), bmp.Size());
        progress->Show("sheets of stills", ++done, sheets.size());
        return written;
    };
    if (sheets.empty() || MakeFilmSheets(file, write, why)) return true;
    if (tools::Stopped()) return *why = "interrupted", false;
    if (written) tools::Complain(kGood, file.film.name + " stays blank from a point on: ffmpeg: " + *why);
    ByteBlock black;
    if (!MakeBlackSheet(&black)) return *why = "there is not enough memory", false;
    while (written && done < sheets.size()) write(sheets[done], black);
    return written || (*why = folder->error(), false);
}

bool WriteFiles(const Job& job, Progress* progress, PackageFolder* folder, std::string* why) {
    size_t done = 0;
    for (const auto& [name, path] : job.files) {
        if (!(job.options.copy ? folder->Copy(name, path) : folder->Link(name, path)))
            return *why = folder->error(), false;
        progress->Show(job.options.copy ? "copied" : "linked", ++done, job.files.size());
    }
    const compile::Package& package = job.package;
    const void* text = package.unchanged ? static_cast<const void*>(job.bytes.data()) : package.text.data();
    const size_t size = package.unchanged ? job.bytes.size() : package.text.size();
    return folder->Write(job.chart_name, text, size) || (*why = folder->error(), false);
}

bool Write(const Job& job, PackageFolder* folder, std::string* why) {
    Progress progress;
    if (!folder->Begin()) return *why = folder->error(), false;
    if (!WriteMade(job, &progress, folder, why)) return false;
    for (const compile::FilmFile& film : job.package.films) {
        if (!WriteFilm(film, &progress, folder, why)) return false;
    }
    if (!WriteFiles(job, &progress, folder, why)) return false;
    return folder->Commit() || (*why = folder->error(), false);
}

void PrintList(const Job& job) {
    std::printf("chart %s\n", tools::CleanText(job.chart_name).c_str());
    for (const compile::MadeFile& file : job.package.made)
        std::printf("%s %s\n", file.kind == MediaKind::kSound ? "stem" : "sheet", file.name.c_str());
    for (const auto& [name, path] : job.files)
        std::printf("%s %s -> %s\n", job.options.copy ? "copy" : "link", tools::CleanText(name).c_str(),
                    tools::CleanText(path).c_str());
    for (const compile::FilmFile& film : job.package.films)
        for (const dialect::Sheet& sheet : film.film.sheets)
            std::printf("stills %s of %s\n", sheet.name.c_str(), tools::CleanText(film.path).c_str());
}

void PrintSummary(const Job& job) {
    size_t stems = 0;
    for (const compile::MadeFile& file : job.package.made) stems += file.kind == MediaKind::kSound;
    size_t sheets = job.package.made.size() - stems;
    for (const compile::FilmFile& film : job.package.films) sheets += film.film.sheets.size();
    std::printf("%s: %s, %zu stems, %zu sheets, %zu files %s %s\n", tools::CleanText(job.chart).c_str(),
                job.package.unchanged ? "chart as it is" : "chart rewritten", stems, sheets, job.files.size(),
                job.options.copy ? "copied to" : "linked in", tools::CleanText(job.options.folder).c_str());
}

// A chart that cannot be converted at all is told by a finding for the whole of it.
const dialect::Finding* FindRefusal(const compile::Package& package) {
    if (!package.unchanged) return nullptr;
    const auto it =
        std::find_if(package.findings.begin(), package.findings.end(), [](const dialect::Finding& finding) {
            return finding.severity == dialect::Severity::kError && finding.place.line == 0;
        });
    return it == package.findings.end() ? nullptr : &*it;
}

}  // namespace

ExitCode Convert(const Options& options) {
    Job job;
    job.options = options;
    PackageFolder folder;
    std::string why;
    const auto fail = [](ExitCode code, const std::string& text) {
        return tools::Complain(code, text), code;
    };
    if (!folder.Check(options.folder)) return fail(kUsage, folder.error());
    if (!ReadChart(&job, &why)) return fail(kChart, why);
    Compile(&job);
    if (tools::Stopped()) return fail(kOutput, "interrupted; " + options.folder + " is unchanged");
    if (const dialect::Finding* refusal = FindRefusal(job.package))
        return fail(kChart, options.chart + ": " + refusal->text);
    if (!IsApart(job, folder, &why)) return fail(kUsage, options.folder + ": " + why);
    PrintFindings(options.chart, job.package, options.all ? SIZE_MAX : kShownFindings);
    if (options.dry_run) {
        PrintList(job);
    } else if (!Write(job, &folder, &why)) {
        return fail(kOutput, why + "; " + options.folder + " is unchanged");
    } else {
        PrintSummary(job);
    }
    return tools::FlushOutput() ? kGood : fail(kOutput, "cannot write the text");
}

}  // namespace convert
