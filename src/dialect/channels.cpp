#include "dialect/channels.h"

#include <array>
#include <cstddef>

namespace dialect {

namespace {

struct Effect {
    char name[3];
    const char* effect;
};

constexpr Effect kEffects[] = {
    {"05", "a movement of an object"},
    {"0A", "a second overlay picture"},
    {"0B", "the base layer's opacity"},
    {"0C", "the overlay's opacity"},
    {"0D", "the second overlay's opacity"},
    {"0E", "the poor layer's opacity"},
    {"97", "the background's volume"},
    {"98", "the notes' volume"},
    {"99", "a text"},
    {"A0", "a judgement width"},
    {"A1", "a colour of the base layer"},
    {"A2", "a colour of the overlay"},
    {"A3", "a colour of the second overlay"},
    {"A4", "a colour of the poor layer"},
    {"A5", "a picture for a key press"},
    {"A6", "a change of options"},
    {"SC", "a scroll speed"},
    {"SP", "a note spacing"},
};

constexpr int32_t Digit(char c) {
    return c <= '9' ? c - '0' : c - 'A' + 10;
}

constexpr int32_t CodeOf(const Effect& effect) {
    return Channel(Digit(effect.name[0]), Digit(effect.name[1]));
}

constexpr std::array<ChannelKind, kChannels> MakeKinds() {
    std::array<ChannelKind, kChannels> kinds{};
    for (const Effect& effect : kEffects) kinds[CodeOf(effect)] = ChannelKind::kNoEffect;
    constexpr ChannelKind kFirst[] = {
        ChannelKind::kUnknown,  ChannelKind::kBackground, ChannelKind::kLength,  ChannelKind::kTempo,
        ChannelKind::kPicture,  ChannelKind::kNoEffect,   ChannelKind::kPicture, ChannelKind::kPicture,
        ChannelKind::kTempoRef, ChannelKind::kStop,
    };
    for (int32_t i = 0; i < 10; ++i) kinds[i] = kFirst[i];
    constexpr struct {
        int32_t side;
        ChannelKind kind;
    } kSides[] = {
        {1, ChannelKind::kNote},   {2, ChannelKind::kNote},  {3, ChannelKind::kHidden},
        {4, ChannelKind::kHidden}, {5, ChannelKind::kLong},  {6, ChannelKind::kLong},
        {13, ChannelKind::kMine},  {14, ChannelKind::kMine},
    };
    for (const auto& side : kSides) {
        for (int32_t lane = 1; lane <= 9; ++lane) kinds[Channel(side.side, lane)] = side.kind;
    }
    return kinds;
}

constexpr std::array<ChannelKind, kChannels> kKinds = MakeKinds();

}  // namespace

ChannelKind KindOf(int32_t channel) {
    return kKinds[static_cast<size_t>(channel)];
}

const char* EffectOf(int32_t channel) {
    for (const Effect& effect : kEffects) {
        if (CodeOf(effect) == channel) return effect.effect;
    }
    return nullptr;
}

}  // namespace dialect
