// The two kinds of files that a chart names.
#pragma once

enum class MediaKind { kNone, kPicture, kSound };
