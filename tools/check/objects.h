// The objects that the player made of a chart, with the lines they come from.
#pragma once

#include <vector>

#include "check/subject.h"

namespace check {

// One of the player's four lists of objects.
struct ObjectList {
    const BmsObject* first;  // in file order
    BmsObject* const* sorted;
    int32_t count;
    const std::vector<Source>* sources;

    // Null if the file changed between our reading and the player's.
    const Source* SourceOf(const BmsObject* object) const {
        const auto at = static_cast<size_t>(object - first);
        return at < sources->size() ? &(*sources)[at] : nullptr;
    }
};

ObjectList BgmOf(const Subject& subject);
ObjectList NotesOf(const Subject& subject);
ObjectList PicturesOf(const Subject& subject);
ObjectList TemposOf(const Subject& subject);

// A sound that the player starts.
struct Fire {
    int32_t ms;
    int32_t number;
    Place place;
};
std::vector<Fire> FiresOf(const Subject& subject);  // by time, then by number

inline bool IsVisible(int32_t channel) {
    return channel >= 0x11 && channel <= 0x29;
}

}  // namespace check
