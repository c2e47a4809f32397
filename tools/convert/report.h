// What lumetra-convert tells about a chart.
#pragma once

#include <string>
#include <vector>

#include "compile/package.h"

namespace convert {

// Findings about used files: what is not there, what is a film, what stays outside.
void AddFileFindings(compile::Package* package);

// Lines like the checker's, at most so many of each code, and one line for the others.
void PrintFindings(const std::string& chart, const std::vector<dialect::Finding>& findings, size_t most);

}  // namespace convert
