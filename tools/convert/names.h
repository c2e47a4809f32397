// The names that a package's files have in its folder and in its text.
#pragma once

#include <map>
#include <string>

#include "compile/package.h"

namespace convert {

// What is in the chart's folder keeps its place and spelling; everything else, and what would take the
// chart's own name, gets a new name, so that no name leads out of the package.
class Names {
public:
    // folder: of the chart, as the files layer has it in its paths, with its closing `/`, or empty.
    Names(std::string folder, std::string chart) : folder_(std::move(folder)), chart_(std::move(chart)) {}

    // The name that the text is to have for a used file; the same each time it is asked.
    std::string NameInText(const compile::UsedFile& file, const std::string& own);
    // Where it stands in the package; empty when it is not in it. The name is safe.
    std::string NameInFolder(const compile::UsedFile& file) const;

private:
    struct Renamed {
        std::string in_text, in_folder;
    };

    std::string BelowChart(const std::string& path) const;

    const std::string folder_, chart_;
    std::map<std::pair<std::string, MediaKind>, Renamed> renamed_;  // by the author's names
};

}  // namespace convert
