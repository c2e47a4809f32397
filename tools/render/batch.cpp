#include "render/batch.h"

#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <map>
#include <set>

#include "common/output_rules.h"
#include "common/parallel.h"
#include "common/signals.h"
#include "render/child.h"
#include "render/outputs.h"

namespace render {
namespace {

namespace fs = std::filesystem;

bool IsChartName(const fs::path& path) {
    const std::string suffix = tools::SuffixOf(path.string());
    return suffix == ".bms" || suffix == ".bme" || suffix == ".bml" || suffix == ".pms";
}

// How a chart is named, with so many of its folders in front.
struct PreviewName {
    fs::path chart;
    std::string own;  // without its ending, unless a chart of the same folder differs in that alone
    int folders = 0;
    std::string With(int count) const {
        std::string name = own;
        fs::path folder = chart.parent_path();
        for (; count > 0 && folder.has_relative_path(); --count, folder = folder.parent_path())
            name = folder.filename().string() + "-" + name;
        return name;
    }
};

std::vector<PreviewName> OwnNames(const std::vector<std::string>& charts) {
    std::vector<PreviewName> names;
    std::map<fs::path, int> alike;
    for (const std::string& chart : charts) {
        names.push_back({tools::FollowLinks(chart), "", 0});
        ++alike[fs::path(names.back().chart).replace_extension()];
    }
    for (PreviewName& name : names) {
        const bool shared = alike[fs::path(name.chart).replace_extension()] > 1;
        name.own = (shared ? name.chart.filename() : name.chart.stem()).string();
    }
    return names;
}

struct Counts {
    int written = 0, existing = 0, failed = 0;
    ExitCode code = kGood;
    void Add(ExitCode one) {
        ++(one == kGood ? written : failed);
        code = std::max(code, one);
    }
};

void ShowProgress(size_t done, size_t all) {
    if (isatty(STDERR_FILENO)) std::fprintf(stderr, "\r%zu of %zu", done, all);
}

// Each in a fresh process, also of the processes that take one chart after the other.
void RenderInOrder(const Options& options, const std::vector<PreviewJob>& jobs,
                   const std::function<ExitCode(const Options&)>& render, Counts* counts) {
    const auto run = [&](size_t i, const tools::Sink& print) {
        Options own = options;
        own.chart = jobs[i].chart;
        own.audio = jobs[i].output;
        std::string printed;
        const ExitCode code = RunInChild(
            own.chart, [&] { return render(own); }, &printed);
        print(printed);
        return std::string(1, static_cast<char>(code));
    };
    tools::Taker taker;
    taker.piece = [](size_t, std::string_view text) { std::fwrite(text.data(), 1, text.size(), stderr); };
    taker.done = [&](size_t i, const std::string* code) {
        counts->Add(code ? static_cast<ExitCode>((*code)[0]) : kOutput);
        ShowProgress(i + 1, jobs.size());
        return !tools::Stopped();
    };
    tools::RunInOrder(jobs.size(), 0, run, taker);
}

}  // namespace

bool FindCharts(const std::vector<std::string>& names, std::vector<std::string>* charts, std::string* why) {
    std::set<std::string> seen;
    for (const std::string& name : names) {
        std::vector<std::string> found = {name};
        std::error_code error;
        if (fs::is_directory(name, error)) {
            found.clear();
            const auto options = fs::directory_options::skip_permission_denied;
            for (fs::recursive_directory_iterator at(name, options, error), end; !error && at != end;
                 at.increment(error)) {
                if (IsChartName(at->path()) && at->is_regular_file(error))
                    found.push_back(at->path().string());
            }
            if (error) return *why = name + ": " + error.message(), false;
            std::sort(found.begin(), found.end());
        }
        for (const std::string& chart : found) {
            if (seen.insert(tools::FollowLinks(chart)).second) charts->push_back(chart);
        }
    }
    return true;
}

std::vector<PreviewJob> NamePreviews(const std::vector<std::string>& charts, const std::string& folder) {
    std::vector<PreviewName> names = OwnNames(charts);
    for (bool changed = true; changed;) {
        changed = false;
        std::map<std::string, std::vector<PreviewName*>> owners;
        for (PreviewName& name : names) owners[name.With(name.folders)].push_back(&name);
        for (const auto& [text, sharers] : owners) {
            const fs::path folder_of_first = sharers[0]->chart.parent_path();
            const bool apart = std::any_of(sharers.begin(), sharers.end(), [&](const PreviewName* name) {
                return name->chart.parent_path() != folder_of_first;
            });
            for (PreviewName* name : sharers) {
                if (!apart || name->With(name->folders + 1) == text) continue;
                ++name->folders;
                changed = true;
            }
        }
    }
    std::vector<PreviewJob> jobs;
    for (size_t i = 0; i < charts.size(); ++i)
        jobs.push_back({charts[i], (fs::path(folder) / (names[i].With(names[i].folders) + ".ogg")).string()});
    return jobs;
}

ExitCode RenderPreviews(const Options& options, const std::function<ExitCode(const Options&)>& render) {
    std::string why;
    std::vector<std::string> charts;
    if (!FindCharts(options.charts, &charts, &why)) return Complain(kChart, why);
    if (charts.empty()) return Complain(kUsage, "no chart in these folders");
    std::error_code error;
    fs::create_directories(options.output_dir, error);
    if (error) return Complain(kOutput, options.output_dir + ": cannot create: " + error.message());
    Counts counts;
    std::vector<PreviewJob> jobs;
    // A preview of one chart may have the name of another's sound.
    tools::OutputRules rules(true);
    for (size_t i = 0; options.force && i < charts.size(); ++i) ProtectNamed(charts[i], &rules);
    std::set<std::string> outputs;
    for (const PreviewJob& job : NamePreviews(charts, options.output_dir)) {
        if (!outputs.insert(tools::FollowLinks(job.output)).second)
            counts.Add(Complain(kUsage, job.chart + ": another chart's preview has the name " + job.output));
        else if (options.force && !rules.Allow(job.output, tools::FileKind::kOgg, &why))
            counts.Add(Complain(kUsage, why));
        else if (!options.force && fs::exists(job.output, error))
            ++counts.existing;
        else
            jobs.push_back(job);
    }
    RenderInOrder(options, jobs, render, &counts);
    if (tools::Stopped()) return kStopped;
    if (charts.size() > 1 || counts.existing > 0) {
        Complain(kGood, std::to_string(counts.written) + " written, " + std::to_string(counts.existing) +
                            " skipped because they exist, " + std::to_string(counts.failed) + " failed");
    }
    return counts.code;
}

}  // namespace render
