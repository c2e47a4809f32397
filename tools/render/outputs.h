// What a call of the renderer writes, and whether it may.
#pragma once

#include "common/output_rules.h"
#include "render/options.h"
#include "render/pass.h"

namespace render {

// Asks the common rules about all outputs of the options; the chart that is loaded and the files that it
// names are inputs. Reports the first that is refused.
ExitCode CheckOutputs(const Options& options);

// The picture's file, such as DIR/0001_m12.5.png. index: in options.places.
std::string PictureName(const Options& options, size_t index);

// The chart and every file that a line of it names, in any branch.
void ProtectNamed(const std::string& chart, tools::OutputRules* rules);

}  // namespace render
