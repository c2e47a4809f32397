// A display and a sound device that write down what is asked of them. Link recorder.cpp in place of the real
// ones.
#pragma once

#include <set>
#include <string>

#include "display/ddraw.h"
#include "sound/dsbuffer.h"
#include "sound/dsound.h"

namespace recorder {

// Picture files that LoadDib finds, by the end of their path; all others leave their slot empty.
void SetPictures(std::set<std::string> names);

// One line for each call since the last Take, such as `bar 20,231 key` or `play 35`. Sounds are named by
// their slot.
std::string Take();
// The lines of Take that begin with the word.
std::string TakeOnly(const std::string& word);

CDDraw* Display();  // one for the process
CDSound* Sound();   // likewise
void Clear();       // slots, pictures and lines

}  // namespace recorder
