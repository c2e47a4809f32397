// A pass in a process of its own.
#pragma once

#include <functional>
#include <string>

#include "render/pass.h"

namespace render {

// Each pass needs a fresh program, so all but one of a process run in children. The child ends with this
// process and with a wish to stop. printed: gets what it writes to standard output and error; null leaves
// that alone. A child that crashes is reported and counts as kOutput.
ExitCode RunInChild(const std::string& chart, const std::function<ExitCode()>& pass, std::string* printed);

}  // namespace render
