#include "check/run.h"

#include <algorithm>
#include <cstdio>
#include <cstring>

#include "check/collect.h"
#include "check/mend.h"
#include "check/report.h"
#include "check/statistics.h"
#include "common/arguments.h"
#include "common/messages.h"
#include "common/signals.h"
#include "platform/files/filename.h"

namespace check {
namespace {

// What comes back from the process that checked a chart, followed by a complaint.
struct Result {
    int32_t code = kClean;
    Statistics statistics;
};

std::string Pack(const Result& result, const std::string& why = "") {
    std::string bytes(sizeof result, '\0');
    std::memcpy(bytes.data(), &result, sizeof result);
    return bytes + why;
}

bool Fails(const Findings& findings, Severity fail_on) {
    return findings.Count(kError) > 0 || (fail_on >= kWarning && findings.Count(kWarning) > 0) ||
           (fail_on >= kNote && findings.Count(kNote) > 0);
}

const std::string& ShownAs(const std::string& chart, const Options& options) {
    return chart == "-" && !options.path.empty() ? options.path : chart;
}

// Checks single charts; each process has one of its own.
class ChartChecker {
public:
    // input: what - means.
    ChartChecker(const Options& options, const std::vector<std::string>& charts, SharedBytes input)
        : options_(options), charts_(charts), input_(std::move(input)) {
        for (const std::string& chart : charts) paths_.push_back(AbsolutePath(ShownAs(chart, options)));
    }

    std::string Check(size_t item, const tools::Sink& sink) {
        Result result;
        result.statistics.charts = 1;
        Rules rules;
        std::string why = settings_.Find(paths_[item], options_.rules, &rules);
        if (why.empty()) {
            Outcome outcome = Examine(item, rules, sink, &why);
            if (outcome.subject) {
                Subject& subject = *outcome.subject;
                subject.file_name = ShownAs(charts_[item], options_);
                subject.not_fixed = ShownName(why);
                if (!options_.diff) Report(subject, rules, sink);
                result.code = outcome.differs || Fails(subject.findings, rules.FailOn()) ? kFindings : kClean;
                if (!why.empty()) result.code = kOutput;
                result.statistics.Count(subject.findings);
                return Pack(result, why);
            }
        }
        result.code = kUnreadable;
        result.statistics.unreadable = 1;
        return Pack(result, why);
    }

private:
    struct Outcome {
        std::unique_ptr<Subject> subject;  // some megabytes, released before the next chart; null on failure
        bool differs = false;              // --diff has printed something
    };

    std::unique_ptr<Subject> Make(size_t item, const Rules& rules) const {
        auto subject = std::make_unique<Subject>(paths_[item], rules.Wanted());
        if (charts_[item] == "-") subject->provided = input_;
        if (options_.modern) subject->modern = options_.choice;
        return subject;
    }

    // Without a subject, or with one that is not mended, *why has the reason.
    Outcome Examine(size_t item, const Rules& rules, const tools::Sink& sink, std::string* why) const {
        const bool input = charts_[item] == "-";
        if (options_.fix && !input) return Fix(item, rules, why);
        Outcome outcome;
        if (!options_.fix && !options_.diff) {
            outcome.subject = Make(item, rules);
            if (!CheckChart(outcome.subject.get(), why)) outcome.subject.reset();
            return outcome;
        }
        ChartFile file;
        file.bytes = input_;
        if (!input) *why = ReadChartFile(paths_[item], &file);
        Mended mended;
        const auto make = [&] { return Make(item, rules); };
        if (!why->empty() || !CheckAndMend(make, file.bytes, &mended, why)) return outcome;
        if (options_.fix)
            std::fwrite(mended.bytes->Data(), 1, mended.bytes->Size(), stdout);
        else
            WriteDiff(ShownAs(charts_[item], options_), TextOf(*file.bytes), mended, sink);
        outcome.differs = options_.diff && mended.subject->edited > 0;
        outcome.subject = std::move(mended.subject);
        return outcome;
    }

    // The subject is that of the file as it is afterwards.
    Outcome Fix(size_t item, const Rules& rules, std::string* why) const {
        constexpr int kMostTries = 3;  // another process may write the same file
        Outcome outcome;
        const auto make = [&] { return Make(item, rules); };
        for (int tries = 1;; ++tries) {
            ChartFile file;
            Mended mended;
            *why = ReadChartFile(paths_[item], &file);
            if (!why->empty() || !CheckAndMend(make, file.bytes, &mended, why)) return outcome;
            bool changed = false;
            if (mended.subject->edited > 0) *why = ReplaceChartFile(file, *mended.bytes, &changed);
            if (changed && tries < kMostTries) continue;
            outcome.subject = std::move(mended.subject);
            if (why->empty()) return outcome;
            std::string unreadable;
            outcome.subject = make();
            outcome.subject->edited = 0;
            if (!CheckChart(outcome.subject.get(), &unreadable)) outcome.subject.reset();
            return outcome;
        }
    }

    void Report(const Subject& subject, const Rules& rules, const tools::Sink& sink) const {
        // Codes that were asked for by name are listed whatever their severity is.
        const bool notes = rules.FailOn() == kNote || rules.select;
        std::string out;
        if (options_.format == Format::kJson)
            WriteJson(subject, &out, &sink);
        else if (options_.format == Format::kSarif)
            WriteSarif(subject, &out);
        else if (options_.format == Format::kGithub)
            WriteGithub(subject, notes, &out);
        else if (!options_.statistics)
            WriteText(subject, {notes, options_.all, options_.color}, &out);
        sink(out);
    }

    const Options& options_;
    const std::vector<std::string>& charts_;
    const SharedBytes input_;
    std::vector<std::string> paths_;
    SettingsFinder settings_;
};

// Writes the report of all charts as they arrive.
class Report {
public:
    Report(const Options& options, const std::vector<std::string>& charts)
        : options_(options),
          charts_(charts),
          out_(options.fix && charts.size() == 1 && charts[0] == "-" ? stderr : stdout) {}
    void Begin(const std::vector<Failure>& folders);  // folders: those without charts
    void Piece(size_t item, std::string_view piece);
    bool Done(size_t item, const std::string* bytes);  // false when nothing more can be written
    int End();

private:
    void Separate();
    void Fail(int code, const std::string& file, const std::string& why);
    void Write(std::string_view text) { std::fwrite(text.data(), 1, text.size(), out_); }

    const Options& options_;
    const std::vector<std::string>& charts_;
    FILE* const out_;  // standard output, unless a mended chart goes there
    Statistics statistics_;
    std::vector<Failure> failures_;
    bool begun_ = false, any_ = false;  // begun_: the output of the current chart
    int code_ = kClean;
};

void Report::Begin(const std::vector<Failure>& folders) {
    if (options_.format == Format::kJson) {
        Write("{\"format\":\"lumetra-check\",\"version\":" + std::to_string(kJsonVersion) +
              ",\"program\":\"" LUMETRA_VERSION "\",\"charts\":[\n");
    } else if (options_.format == Format::kSarif) {
        std::string head;
        WriteSarifHead(LUMETRA_VERSION, &head);
        Write(head);
    }
    for (const Failure& folder : folders) {
        Fail(kUnreadable, folder.file, folder.why);
        begun_ = false;
    }
}

// Before the first output of a chart.
void Report::Separate() {
    if (begun_) return;
    begun_ = true;
    if (any_ && (options_.format == Format::kJson || options_.format == Format::kSarif)) Write(",\n");
    if (any_ && options_.format == Format::kText && !options_.diff) Write("\n");
    any_ = true;
}

void Report::Piece(size_t item, std::string_view piece) {
    if (piece.empty()) return;
    Separate();
    Write(piece);
}

// code: of what went wrong; a chart that could only not be fixed has its own member in JSON.
void Report::Fail(int code, const std::string& file, const std::string& why) {
    const Failure failure = {file, ShownName(why)};
    std::fflush(stdout);  // a terminal shows both in order
    code_ = std::max(code_, tools::Complain(code, file + ": " + why));
    failures_.push_back(failure);
    std::string out;
    if (options_.format == Format::kJson && code == kUnreadable) WriteUnreadableJson(failure, &out);
    if (options_.format == Format::kGithub) WriteGithubFailure(failure, &out);
    if (out.empty()) return;
    Separate();
    Write(out);
}

bool Report::Done(size_t item, const std::string* bytes) {
    Result result;
    if (bytes) {
        std::memcpy(&result, bytes->data(), sizeof result);
    } else {
        result.code = kUnreadable;
        result.statistics.charts = result.statistics.unreadable = 1;
    }
    const std::string why = bytes ? bytes->substr(sizeof result) : "the check ended without a result";
    if (result.code == kUnreadable || !why.empty()) Fail(result.code, ShownAs(charts_[item], options_), why);
    statistics_.Add(result.statistics);
    code_ = std::max<int>(code_, result.code);
    begun_ = false;
    return !std::ferror(stdout) && !tools::Stopped();
}

int Report::End() {
    std::string out;
    if (options_.format == Format::kJson) {
        out = "\n]";
        if (options_.statistics) {
            out += ",";
            Json json(&out);
            WriteStatisticsJson(statistics_, &json);
        }
        out += "}\n";
    } else if (options_.format == Format::kSarif) {
        if (tools::Stopped()) failures_.push_back({"", "stopped before all charts were checked"});
        WriteSarifEnd(failures_, &out);
    } else if (options_.statistics) {
        WriteStatisticsText(statistics_, &out);
    }
    Write(out);
    if (tools::Stopped()) return tools::Complain(kOutput, "stopped");
    return tools::FlushOutput() ? code_ : tools::Complain(kOutput, "cannot write the report");
}

}  // namespace

int CheckAll(const Options& options) {
    std::vector<Failure> folders;
    const std::vector<std::string> charts = CollectCharts(options.charts, &folders);
    SharedBytes input;
    if (std::find(charts.begin(), charts.end(), "-") != charts.end()) {
        const std::string error = ReadStandardInput(&input);
        if (!error.empty()) return tools::Complain(kUnreadable, "-: " + error);
    }
    if (options.fix) tools::CatchSignals();  // a file that is being written is written whole or not at all
    ChartChecker checker(options, charts, input);
    Report report(options, charts);
    report.Begin(folders);
    std::fflush(stdout);
    tools::RunInOrder(charts.size(), options.jobs,
                      [&](size_t item, const tools::Sink& sink) { return checker.Check(item, sink); },
                      {[&](size_t item, std::string_view piece) { report.Piece(item, piece); },
                       [&](size_t item, const std::string* result) { return report.Done(item, result); }});
    return report.End();
}

}  // namespace check
