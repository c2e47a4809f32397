// A display and a sound device whose calls are written down: what is drawn where, and what plays. No file is
// needed for the pictures and sounds of a chart.
#pragma once

#include <set>
#include <string>

#include "display/ddraw.h"
#include "sound/dsbuffer.h"
#include "sound/dsound.h"

namespace recorder {

// Both one for the process, with all their surfaces; the display with neither skin nor sprites in them. What
// plays has no output, so that the clock may leap.
CDDraw* Display();
CDSound* Sound();

void EmptySlots();
void Clear();  // empty slots, no pictures, no lines

// Picture files that are there, by name without folder: 100 by 80. Every file whose name ends in .wav is
// there: 25 seconds of silence.
void SetPictures(std::set<std::string> names);

// One line for each call since the last Take:
//   SPRITE X,Y [key]               a copy to the picture; "skin" and "layer4" are copies of a whole surface
//   clear PARTS COLOUR
//   draw PARTS L,T,R,B L,T,R,B     of a picture into a layer, destination and source
//   play SLOT, end SLOT            a sound is started, is destroyed
//   open PATH
std::string Take();
std::string TakeOnly(const std::string& word);  // the lines that begin with the word

}  // namespace recorder
