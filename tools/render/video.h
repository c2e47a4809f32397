// Picture and sound as a video file, by the ffmpeg program.
#pragma once

#include <string>

#include "render/pass.h"

namespace render {

// The path of the ffmpeg program; empty when it is not installed.
std::string FindEncoder();

// wav: the rendered sound. The file appears under its name only when it is complete.
ExitCode RenderVideo(const Options& options, const std::string& wav);

}  // namespace render
