// What a loaded chart names and the player could not find or read.
#pragma once

#include <string>

class CBMS;
class CDDraw;
class CDSound;

namespace report {

struct Losses {
    int sounds = 0, sounds_missing = 0;  // named by the chart; of these, not loaded
    int pictures = 0, pictures_missing = 0;
};

// After CBMS::Load, while its slots are as it left them.
Losses CountLosses(const CBMS& chart, const CDSound& sound, const CDDraw& display);

// "1 of 72 sounds and 2 of 3 pictures missing"; empty when nothing is.
std::string LossSentence(const Losses& losses);

}  // namespace report
