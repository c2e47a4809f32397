#include "dialect/events.h"

#include <array>

namespace dialect {

namespace {

constexpr size_t kNoEvent = static_cast<size_t>(-1);

// Joins the objects of the lanes to notes.
class Lanes {
public:
    Lanes(const Chart& chart, const TimeMap& times, std::vector<Event>* events, uint32_t* needs,
          Findings* findings)
        : chart_(chart), times_(times), events_(events), needs_(needs), findings_(findings) {
        last_note_.fill(kNoEvent);
        open_.fill(kNoEvent);
        run_end_.fill(-1.0);
    }

    void Note(size_t index);
    void Long(size_t index);
    void Close();

private:
    void End(size_t event, const Object& object) {
        (*events_)[event].kind = EventKind::kLongNote;
        (*events_)[event].end_ms = times_.MsAt(object.measure, object.place.Value());
    }
    void Run(const Object& object);
    bool LongAtSamePlace(size_t index, int32_t lane) const;
    void Add(const Object& object, int32_t channel, EventKind kind);

    const Chart& chart_;
    const TimeMap& times_;
    std::vector<Event>* events_;
    uint32_t* needs_;
    Findings* findings_;
    std::array<size_t, kChannels> last_note_;  // by channel: the note that a #LNOBJ may end
    std::array<size_t, kChannels> open_;       // the long note that is not ended
    std::array<double, kChannels> run_end_;    // of #LNTYPE 2
};

Event MakeEvent(const Object& object, int32_t channel, EventKind kind, const TimeMap& times) {
    const double ms = times.MsAt(object.measure, object.place.Value());
    const Fraction place = NearestPlace(object.place);
    return {object.at,
            ms,
            ms,
            place,
            object.measure,
            channel,
            object.number,
            0,
            object.source,
            kind,
            Fate::kOwn,
            place.den != object.place.den};
}

void Lanes::Add(const Object& object, int32_t channel, EventKind kind) {
    events_->push_back(MakeEvent(object, channel, kind, times_));
}

// The objects behind one on the same place are those of higher channels.
bool Lanes::LongAtSamePlace(size_t index, int32_t lane) const {
    for (size_t i = index; i < chart_.objects.size() && chart_.objects[i].at == chart_.objects[index].at;
         ++i) {
        if (chart_.objects[i].channel == lane + Channel(4, 0)) return true;
    }
    return false;
}

void Lanes::Note(size_t index) {
    const Object& object = chart_.objects[index];
    size_t& last = last_note_[static_cast<size_t>(object.channel)];
    if (object.number != chart_.long_end) {
        last = events_->size();
        Add(object, object.channel, EventKind::kNote);
        return;
    }
    *needs_ |= kNeedLongNotes;
    if (LongAtSamePlace(index, object.channel)) return;
    if (last == kNoEvent) {
        findings_->Add(Severity::kWarning, "unmatched-end", object.source,
                       "this end has no note before it, it makes no sound");
        return;
    }
    End(last, object);
    last = kNoEvent;
}

void Lanes::Long(size_t index) {
    const Object& object = chart_.objects[index];
    if (chart_.long_type == 2) return Run(object);
    size_t& open = open_[static_cast<size_t>(object.channel)];
    if (open != kNoEvent) {
        End(open, object);
        open = kNoEvent;
        return;
    }
    open = events_->size();
    Add(object, object.channel - Channel(4, 0), EventKind::kLongNote);
}

// #LNTYPE 2: objects without a rest between them are one note, which ends where the last one's room ends.
void Lanes::Run(const Object& object) {
    const size_t lane = static_cast<size_t>(object.channel);
    if (open_[lane] == kNoEvent || run_end_[lane] != object.at) {
        open_[lane] = events_->size();
        Add(object, object.channel - Channel(4, 0), EventKind::kLongNote);
    }
    const double end = (object.place.num + 1.0) / object.place.den;
    run_end_[lane] = object.measure + end;
    (*events_)[open_[lane]].end_ms = times_.MsAt(object.measure, end);
}

void Lanes::Close() {
    if (chart_.long_type == 2) return;
    for (const size_t open : open_) {
        if (open == kNoEvent) continue;
        (*events_)[open].kind = EventKind::kNote;
        findings_->Add(Severity::kWarning, "open-long-note", (*events_)[open].source,
                       "this long note has no end, it is a note");
    }
}

}  // namespace

std::vector<Event> MakeEvents(const Chart& chart, const TimeMap& times, uint32_t* needs, Findings* findings) {
    std::vector<Event> events;
    events.reserve(chart.objects.size());
    Lanes lanes(chart, times, &events, needs, findings);
    for (size_t i = 0; i < chart.objects.size(); ++i) {
        const Object& object = chart.objects[i];
        switch (KindOf(object.channel)) {
            case ChannelKind::kBackground:
                events.push_back(MakeEvent(object, object.channel, EventKind::kBackground, times));
                break;
            case ChannelKind::kPicture:
                events.push_back(MakeEvent(object, object.channel, EventKind::kPicture, times));
                break;
            case ChannelKind::kNote:
                lanes.Note(i);
                break;
            case ChannelKind::kLong:
                lanes.Long(i);
                break;
            default:
                break;
        }
    }
    lanes.Close();
    return events;
}

}  // namespace dialect
