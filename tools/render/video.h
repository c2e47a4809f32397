// Picture and sound as a video file, by the ffmpeg program.
#pragma once

#include <string>

#include "render/pass.h"

namespace render {

// The ffmpeg program's path; empty when there is none.
std::string FindEncoder();

// wav: the rendered sound. The file appears under its name when it is whole.
ExitCode RenderVideo(const Options& options, const std::string& wav);

}  // namespace render
