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

namespace render {
namespace {

namespace fs = std::filesystem;

bool IsChartName(const fs::path& path) {
    const std::string suffix = tools::SuffixOf(path.string());
    return suffix == ".bms" || suffix == ".bme" || suffix == ".bml" || suffix == ".pms";
}

// The name with so many of the chart's folders in front.
std::string NameWithFolders(const fs::path& chart, int folders) {
    std::string name = chart.stem().string();
    fs::path folder = chart.parent_path();
    for (; folders > 0 && folder.has_relative_path(); --folders, folder = folder.parent_path())
        name = folder.filename().string() + "-" + name;
    return name;
}

struct Counts {
    int written = 0, existing = 0, failed = 0;
    ExitCode code = kGood;
};

void Count(const PreviewJob& job, const tools::JobResult& result, Counts* counts) {
    std::fwrite(result.printed.data(), 1, result.printed.size(), stderr);
    if (result.crashed)
        Complain(kChart, job.chart + ": the renderer crashed, signal " + std::to_string(result.code));
    const auto code = result.crashed ? kChart : static_cast<ExitCode>(result.code);
    ++(code == kGood ? counts->written : counts->failed);
    counts->code = std::max(counts->code, code);
}

void ShowProgress(size_t done, size_t all) {
    if (isatty(STDERR_FILENO)) std::fprintf(stderr, "\r%zu of %zu", done, all);
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
    std::vector<PreviewJob> jobs;
    std::vector<int> folders(charts.size(), 0);
    for (bool changed = true; changed;) {
        changed = false;
        std::map<std::string, std::vector<size_t>> owners;
        for (size_t i = 0; i < charts.size(); ++i)
            owners[NameWithFolders(tools::FollowLinks(charts[i]), folders[i])].push_back(i);
        for (const auto& [name, indexes] : owners) {
            for (const size_t i : indexes) {
                const std::string longer = NameWithFolders(tools::FollowLinks(charts[i]), folders[i] + 1);
                if (indexes.size() < 2 || longer == name) continue;
                ++folders[i];
                changed = true;
            }
        }
    }
    for (size_t i = 0; i < charts.size(); ++i) {
        const std::string name = NameWithFolders(tools::FollowLinks(charts[i]), folders[i]);
        jobs.push_back({charts[i], (fs::path(folder) / (name + ".ogg")).string()});
    }
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
    for (const PreviewJob& job : NamePreviews(charts, options.output_dir)) {
        if (!options.force && fs::exists(job.output, error))
            ++counts.existing;
        else
            jobs.push_back(job);
    }
    const auto run = [&](size_t i) {
        Options own = options;
        own.chart = jobs[i].chart;
        own.audio = jobs[i].output;
        return static_cast<int>(render(own));
    };
    tools::RunParallel(jobs.size(), run, [&](size_t i, const tools::JobResult& result) {
        Count(jobs[i], result, &counts);
        ShowProgress(i + 1, jobs.size());
    });
    if (tools::Stopped()) return kStopped;
    if (charts.size() > 1 || counts.existing > 0) {
        Complain(kGood, std::to_string(counts.written) + " written, " + std::to_string(counts.existing) +
                            " skipped because they exist, " + std::to_string(counts.failed) + " failed");
    }
    return counts.code;
}

}  // namespace render
