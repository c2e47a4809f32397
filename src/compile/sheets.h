// Sheets: pictures put together on one BMP.
#pragma once

#include <string>

#include "compile/package.h"

namespace compile {

// The sheet as a BMP file. Cells whose picture cannot be read are black.
FileMaker SheetMaker(const std::string& folder, const dialect::Sheet& sheet);

}  // namespace compile
