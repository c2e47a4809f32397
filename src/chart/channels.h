// The meaning of a chart's channels.
#pragma once

#include "chart/bms.h"

// The list to which a channel belongs.
enum ChannelKind { KIND_NONE, KIND_BGM, KIND_LENGTH, KIND_TEMPO, KIND_BGA, KIND_NOTE };

// nChannel: the two digits in the file, read as hexadecimal. KIND_NONE: objects on the channel only lengthen
// the chart.
ChannelKind GetChannelKind(int32_t nChannel);
