// Sheets: pictures put together on one BMP.
#pragma once

#include <memory>
#include <string>

#include "compile/file.h"
#include "compile/package.h"

namespace compile {

// The sheet as a BMP file. Cells whose picture cannot be read, or costs too much, are black.
FileMaker SheetMaker(const std::string& folder, const dialect::Sheet& sheet, std::shared_ptr<Costs> costs);

}  // namespace compile
