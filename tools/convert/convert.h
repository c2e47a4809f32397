// Converting one chart.
#pragma once

#include "convert/options.h"

namespace convert {

// Reports what fails on standard error, findings and what is written on standard output.
ExitCode Convert(const Options& options);

}  // namespace convert
