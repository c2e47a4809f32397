// Pictures of single moments.
#pragma once

#include "render/pass.h"

namespace render {

// Writes a PNG for each place into the folder, such as 0001_m12.5.png. Creates the folder.
ExitCode RenderPictures(const Options& options);

// The rows of a frame, enlarged: scale * width by scale * height pixels of 4 bytes, B G R X.
void Enlarge(const headless::Frame& frame, int scale, std::vector<uint32_t>* pixels);

}  // namespace render
