// The stems of a plan: made to fit, and written as WAV files.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "compile/package.h"
#include "compile/shelf.h"

namespace compile {

// What the makers of a package share. The names of plan->mixed with the folder in front.
struct StemSource {
    Shelf shelf;
    std::vector<std::string> names;
    std::function<bool()> stopped;  // once true, sounds are silent; when set
};

// Splits the stems within full scale and numbers them, on all cores. Leaves out, with findings, what would
// take too much memory or time. The sounds must be on the shelf.
void FitStems(const StemSource& source, dialect::Plan* plan);

// One part as a WAV file. The source lives as long as the maker.
FileMaker StemMaker(std::shared_ptr<const StemSource> source, const dialect::Stem& stem, int32_t part);

}  // namespace compile
