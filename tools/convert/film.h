// Films as sheets of stills, by the ffmpeg program.
#pragma once

#include <functional>
#include <string>

#include "compile/package.h"

namespace convert {

bool HasFfmpeg();  // both of its programs are installed

// What the film is; nothing, with the reason, when it cannot be read.
dialect::FilmLook LookAtFilm(const std::string& path, std::string* why);

bool MakeBlackSheet(ByteBlock* bmp);  // false when there is not enough memory

// Hands over the film's sheets as BMP files, one after the other, a few MB each. A film that ends early
// stands still. False when the program fails or `write` does; *why then says how.
bool MakeFilmSheets(const compile::FilmFile& file,
                    const std::function<bool(const dialect::Sheet& sheet, const ByteBlock& bmp)>& write,
                    std::string* why);

}  // namespace convert
