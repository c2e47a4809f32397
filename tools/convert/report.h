// What lumetra-convert tells about a chart.
#pragma once

#include <map>
#include <string>
#include <vector>

#include "compile/package.h"

namespace convert {

using FilmFailures = std::map<std::string, std::string>;  // by path: why a film cannot be read

// Findings about used files: what is not there, what is a film and stays blank.
void AddFileFindings(const FilmFailures& failures, compile::Package* package);

// Lines like the checker's, at most so many of each code, and one line for the others.
void PrintFindings(const std::string& chart, const compile::Package& package, size_t most);

}  // namespace convert
