#include "convert/report.h"

#include <algorithm>
#include <cstdio>
#include <map>
#include <string_view>
#include <tuple>

#include "common/terminal.h"
#include "convert/film.h"
#include "platform/substitutes/substitute.h"

namespace convert {
namespace {

using dialect::Severity;

const char* NameOf(Severity severity) {
    return severity == Severity::kError ? "error" : severity == Severity::kWarning ? "warning" : "note";
}

std::string ReasonOf(const compile::UsedFile& film, const FilmFailures& failures) {
    if (!HasFfmpeg()) return ": the ffmpeg program is not installed";
    const auto it = failures.find(film.path);
    return it == failures.end() ? "" : ": " + it->second;
}

}  // namespace

void AddFileFindings(const FilmFailures& failures, compile::Package* package) {
    for (const compile::UsedFile& file : package->used) {
        const auto add = [&](Severity severity, const char* code, const std::string& text) {
            package->findings.push_back({severity, code, file.source, dialect::Quote(file.name) + text});
        };
        const bool film = IsFilmName(file.name) && IsFilmName(file.path);
        if (file.path.empty())
            add(Severity::kWarning, "missing-file", " is not there");
        else if (film && file.kind == MediaKind::kPicture)
            add(Severity::kWarning, "film", " is a film, its place stays blank" + ReasonOf(file, failures));
    }
    std::stable_sort(package->findings.begin(), package->findings.end(), [](const auto& a, const auto& b) {
        return std::tie(a.place.line, a.place.column) < std::tie(b.place.line, b.place.column);
    });
}

void PrintFindings(const std::string& chart, const compile::Package& package, size_t most) {
    const std::string name = tools::CleanText(chart);
    std::map<std::string_view, size_t> counts, untold;
    for (const dialect::LeftOut& of : package.findings_left_out)
        untold[of.code] += static_cast<size_t>(of.count);
    for (const dialect::Finding& finding : package.findings) {
        if (++counts[finding.code] > most) {
            ++untold[finding.code];
            continue;
        }
        std::printf("%s:%d:%d: %s: %s [%s]\n", name.c_str(), finding.place.line, finding.place.column,
                    NameOf(finding.severity), tools::CleanText(finding.text).c_str(), finding.code);
    }
    for (const auto& [code, count] : untold)
        std::printf("%s: %zu more of [%s]%s\n", name.c_str(), count, std::string(code).c_str(),
                    most == SIZE_MAX ? "" : ", --all shows them");
}

}  // namespace convert
