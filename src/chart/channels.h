// What the channels of a chart mean.
#pragma once

#include "chart/bms.h"

// Which of the store's lists a channel belongs to.
enum ChannelKind { KIND_NONE, KIND_BGM, KIND_LENGTH, KIND_TEMPO, KIND_BGA, KIND_NOTE };

// nChannel: the two digits of the file read as hexadecimal. KIND_NONE: objects of it do nothing but lengthen
// the chart.
ChannelKind GetChannelKind(int32_t nChannel);
