// Previews of many charts.
#pragma once

#include <functional>
#include <string>
#include <vector>

#include "render/options.h"
#include "render/pass.h"

namespace render {

struct PreviewJob {
    std::string chart, output;
};

// The charts among the names, and those in folders below them, sorted; each once. False with a reason when a
// folder cannot be read.
bool FindCharts(const std::vector<std::string>& names, std::vector<std::string>* charts, std::string* why);

// FOLDER/NAME.ogg for each chart. Charts of one folder that differ only in their ending keep it:
// FOLDER/NAME.bme.ogg. Charts of one name get as many of their own folders in front as they need:
// FOLDER/SONG-NAME.ogg. Two may still have one output.
std::vector<PreviewJob> NamePreviews(const std::vector<std::string>& charts, const std::string& folder);

// Renders each chart with its own options in a process of its own, and prints a summary. Returns the highest
// exit code.
ExitCode RenderPreviews(const Options& options, const std::function<ExitCode(const Options&)>& render);

}  // namespace render
