// Numbers that are used but not defined, or defined but not used.
#include "check/subject.h"

namespace check {
namespace {

std::string Objects(int64_t count) {
    return CountOf(count, "object");
}

void CheckSoundIds(Subject* subject) {
    const Tables& tables = subject->tables;
    for (size_t i = 1; i < BMS_SLOTS; ++i) {
        const Definition& definition = tables.sounds[i];
        const Use& use = tables.sound_uses[i];
        const int64_t heard = use.objects - use.invisible;
        const std::string id = IdOf(static_cast<int32_t>(i));
        if (definition.place.line == 0 && heard > 0) {
            subject->findings.Add(use.place, "undefined-sound", [&] {
                return "no #WAV" + id + " line defines this sound; " + ItsObjects(heard, "make", "no sound");
            });
        } else if (definition.place.line != 0 && heard == 0) {
            subject->findings.Add(definition.place, "unused-sound", [&] {
                return use.invisible > 0
                           ? "sound " + id + " is used only by invisible notes, which are never heard"
                           : "no object plays sound " + id;
            });
        }
    }
}

// Authors blank a layer on purpose with a number that no line can define.
void UndefinedPicture(Subject* subject, int32_t number) {
    const Use& use = subject->tables.picture_uses[static_cast<size_t>(number)];
    const std::string id = IdOf(number);
    const bool meant = number >= BMS_SLOTS && !subject->tables.folded_pictures[static_cast<size_t>(number)];
    subject->findings.Add(use.place, "undefined-picture", meant ? kNote : kWarning, [&] {
        return (number < BMS_SLOTS
                    ? "no #BMP" + id + " or #BGA" + id + " line defines this picture"
                    : "no #BGA" + id + " line defines this picture, and #BMP numbers end at FZ") +
               "; " + ItsObjects(use.objects, "blank", "the layer");
    });
}

// A picture object shows the rectangle with its number if there is one, otherwise the picture.
void CheckPictureIds(Subject* subject) {
    const Tables& tables = subject->tables;
    std::vector<bool> shown(BMS_SLOTS);
    for (size_t i = 1; i < BMS_BGADEFS; ++i) {
        const Use& use = tables.picture_uses[i];
        const BgaDef& bga = subject->chart->m_aBgaDef[i];
        const std::string id = IdOf(static_cast<int32_t>(i));
        const bool picture = i < BMS_SLOTS && tables.pictures[i].place.line != 0;
        if (bga.nBmp != 0) shown[static_cast<size_t>(bga.nBmp)] = true;
        if (use.objects == 0) {
            if (tables.bgas[i].place.line == 0) continue;
            subject->findings.Add(tables.bgas[i].place, "unused-rectangle",
                                  "no object shows rectangle " + id);
        } else if (bga.nBmp != 0) {
            if (tables.pictures[static_cast<size_t>(bga.nBmp)].place.line != 0) continue;
            subject->findings.Add(tables.bgas[i].place, "undefined-picture", [&] {
                return "no #BMP" + IdOf(bga.nBmp) + " line defines the picture of rectangle " + id + "; " +
                       ItsObjects(use.objects, "blank", "the layer");
            });
        } else if (picture) {
            shown[i] = true;
        } else {
            UndefinedPicture(subject, static_cast<int32_t>(i));
        }
    }
    for (size_t i = 0; i < BMS_SLOTS; ++i) {
        if (shown[i] || tables.pictures[i].place.line == 0) continue;
        subject->findings.Add(tables.pictures[i].place, "unused-picture", [&] {
            return i == 0 ? "no object can use picture 00, so the player never shows it"
                          : "no object shows picture " + IdOf(static_cast<int32_t>(i));
        });
    }
}

void CheckTempoIds(Subject* subject) {
    const Tables& tables = subject->tables;
    for (size_t i = 1; i < BMS_SLOTS; ++i) {
        const Definition& definition = tables.tempos[i];
        const Use& use = tables.tempo_uses[i];
        const std::string id = IdOf(static_cast<int32_t>(i));
        if (definition.place.line == 0 && use.objects > 0) {
            subject->findings.Add(use.place, "undefined-tempo", [&] {
                return "no #BPM" + id + " line defines this tempo; the player uses 130 for " +
                       Objects(use.objects);
            });
        } else if (use.early_objects > 0) {
            subject->findings.Add(use.early, "bpm-below-use", [&] {
                return "#BPM" + id + " is defined in line " + std::to_string(definition.place.line) +
                       ", below this use; the player uses 130 for " + Objects(use.early_objects) +
                       "; move the definition up";
            });
        } else if (definition.place.line != 0 && use.objects == 0) {
            subject->findings.Add(definition.place, "unused-tempo",
                                  "no object on channel 08 uses tempo " + id);
        }
    }
}

}  // namespace

void CheckIds(Subject* subject) {
    CheckSoundIds(subject);
    CheckPictureIds(subject);
    CheckTempoIds(subject);
}

}  // namespace check
