#include "playback/layout.h"

#include <algorithm>
#include <iterator>

const RECT SPRITE_DIGIT[10] = {
    {1, 1, 7, 10},  {8, 1, 14, 10},  {15, 1, 21, 10},  {22, 1, 28, 10},  {29, 1, 35, 10},
    {1, 11, 7, 20}, {8, 11, 14, 20}, {15, 11, 21, 20}, {22, 11, 28, 20}, {29, 11, 35, 20},
};
const RECT SPRITE_COLON = {36, 11, 42, 20};
const RECT SPRITE_SLASH = {43, 1, 49, 10};
const RECT SPRITE_POINT = {36, 1, 42, 10};
const RECT SPRITE_NOTE_WHITE = {1, 26, 10, 30};
const RECT SPRITE_NOTE_BLUE = {1, 36, 9, 40};
const RECT SPRITE_NOTE_RED = {1, 31, 10, 35};
const RECT SPRITE_NOTE_YELLOW = {11, 26, 20, 30};
const RECT SPRITE_BAR = {1, 21, 63, 25};

namespace {

constexpr int32_t kFirstLeft = 0x11, kFirstRight = 0x21, kLanes = 9;

// The outer lane of each field shows two channels, the sixth and the seventh.
constexpr Lane kLeft[kLanes] = {
    {28, &SPRITE_NOTE_WHITE}, {36, &SPRITE_NOTE_BLUE},  {43, &SPRITE_NOTE_WHITE},
    {51, &SPRITE_NOTE_BLUE},  {58, &SPRITE_NOTE_WHITE}, {20, &SPRITE_NOTE_RED},
    {20, &SPRITE_NOTE_RED},   {66, &SPRITE_NOTE_BLUE},  {73, &SPRITE_NOTE_WHITE},
};
constexpr Lane kRight[kLanes] = {
    {114, &SPRITE_NOTE_WHITE}, {122, &SPRITE_NOTE_BLUE},  {129, &SPRITE_NOTE_WHITE},
    {137, &SPRITE_NOTE_BLUE},  {144, &SPRITE_NOTE_WHITE}, {167, &SPRITE_NOTE_RED},
    {167, &SPRITE_NOTE_RED},   {152, &SPRITE_NOTE_BLUE},  {159, &SPRITE_NOTE_WHITE},
};

}  // namespace

const Lane* GetLane(int32_t nChannel) {
    if (nChannel >= kFirstLeft && nChannel < kFirstLeft + kLanes) return &kLeft[nChannel - kFirstLeft];
    if (nChannel >= kFirstRight && nChannel < kFirstRight + kLanes) return &kRight[nChannel - kFirstRight];
    return nullptr;
}

bool IsLayer(int32_t nChannel) {
    return std::find(std::begin(LAYERS), std::end(LAYERS), nChannel) != std::end(LAYERS);
}
