// Pictures of single moments.
#pragma once

#include "render/pass.h"

namespace render {

// A PNG for each place into the folder, which is made when it is not there: 0001_m12.5.png and so on.
ExitCode RenderPictures(const Options& options);

// Rows of a frame, enlarged, as 4 bytes B G R X for each pixel; scale * width * scale * height of them.
void Enlarge(const headless::Frame& frame, int scale, std::vector<uint32_t>* pixels);

}  // namespace render
