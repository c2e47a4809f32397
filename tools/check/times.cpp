// Findings that need the times of objects, and the figures.
#include <algorithm>
#include <cmath>
#include <functional>
#include <queue>

#include "chart/charttime.h"
#include "check/objects.h"
#include "sound/dsbuffer.h"

namespace check {

ObjectList BgmOf(const Subject& subject) {
    const CBMS& chart = *subject.chart;
    return {chart.m_pBgm, chart.m_ppBgm, chart.m_nBgm, &subject.tables.bgm};
}

ObjectList NotesOf(const Subject& subject) {
    const CBMS& chart = *subject.chart;
    return {chart.m_pNote, chart.m_ppNote, chart.m_nNote, &subject.tables.notes};
}

ObjectList PicturesOf(const Subject& subject) {
    const CBMS& chart = *subject.chart;
    return {chart.m_pBga, chart.m_ppBga, chart.m_nBga, &subject.tables.bga};
}

ObjectList TemposOf(const Subject& subject) {
    const CBMS& chart = *subject.chart;
    return {chart.m_pTempo, chart.m_ppTempo, chart.m_nTempo, &subject.tables.changes};
}

std::vector<Fire> FiresOf(const Subject& subject) {
    std::vector<Fire> fires;
    for (const ObjectList& list : {BgmOf(subject), NotesOf(subject)}) {
        for (int32_t i = 0; i < list.count; ++i) {
            const BmsObject& object = *list.sorted[i];
            const Source* source = list.SourceOf(&object);
            if (source && object.pObject && (object.nChannel == 1 || IsVisible(object.nChannel)))
                fires.push_back({RoundTime(object.dTime), source->number, source->place});
        }
    }
    std::stable_sort(fires.begin(), fires.end(), [](const Fire& a, const Fire& b) {
        return a.ms != b.ms ? a.ms < b.ms : a.number < b.number;
    });
    return fires;
}

namespace {

void CheckDoubleNotes(Subject* subject) {
    const ObjectList notes = NotesOf(*subject);
    int64_t count = 0;
    Place first;
    for (int32_t i = 1; i < notes.count; ++i) {
        const BmsObject &a = *notes.sorted[i - 1], &b = *notes.sorted[i];
        if (!IsVisible(b.nChannel) || CompareObjects(&a, &b) != 0) continue;
        const Source* source = notes.SourceOf(&b);
        if (!source) continue;
        if (count++ == 0) first = source->place;
    }
    if (count == 0) return;
    subject->findings.Add(first, "double-note", [count] {
        return "a note is at the same position as another note of its lane (" + CountOf(count, "note") +
               " in all); the player shows one and plays both";
    });
}

void CheckDoubleSounds(Subject* subject) {
    const std::vector<Fire> fires = FiresOf(*subject);
    int64_t count = 0;
    Place first;
    for (size_t i = 1; i < fires.size(); ++i) {
        if (fires[i].ms != fires[i - 1].ms || fires[i].number != fires[i - 1].number) continue;
        if (count++ == 0) first = fires[i].place;
    }
    if (count == 0) return;
    subject->findings.Add(first, "double-sound", [count] {
        return "a sound is started twice at the same time (" + CountOf(count, "object") +
               " in all); each sound has one voice, so it is heard once";
    });
}

void CheckLate(Subject* subject) {
    for (const ObjectList& list :
         {BgmOf(*subject), NotesOf(*subject), PicturesOf(*subject), TemposOf(*subject)}) {
        if (list.count == 0) continue;
        const BmsObject& last = *list.sorted[list.count - 1];
        const Source* source = list.SourceOf(&last);
        if (TruncTime(last.dTime) < INT32_MAX || !source) continue;
        subject->findings.Add(
            source->place, "too-late",
            "the player counts milliseconds in 32 bits, and this object would come later; it "
            "never does; check the tempos and lengths before it");
    }
}

void CheckLongMeasures(Subject* subject) {
    constexpr double kLongMs = 600'000.0;
    const CBMS& chart = *subject->chart;
    int32_t first = -1;
    int64_t count = 0;
    for (int32_t i = 0; i + 1 < chart.m_nMeasure; ++i) {
        if (!std::isfinite(chart.m_pMeasure[i].dStart)) break;
        if (!(chart.m_pMeasure[i + 1].dStart - chart.m_pMeasure[i].dStart > kLongMs)) continue;
        if (count++ == 0) first = i;
    }
    if (count == 0) return;
    const Place length = subject->tables.lengths[static_cast<size_t>(first)];
    const Place place = length.line != 0 ? length : subject->tables.first_tempo;
    subject->findings.Add(place.line != 0 ? place : Place{1, 1}, "long-measure", [&] {
        const double minutes =
            (chart.m_pMeasure[first + 1].dStart - chart.m_pMeasure[first].dStart) / 60'000.0;
        return "measure " + std::to_string(first) +
               (minutes < 1e9 ? " lasts " + std::to_string(static_cast<int64_t>(minutes)) + " minutes"
                              : std::string(" never ends")) +
               (count > 1 ? ", and " + CountOf(count - 1, "other measure") + " more than ten" : "") +
               "; check its length and the tempo";
    });
}

void CheckIdleEnd(Subject* subject) {
    const Tables& tables = subject->tables;
    if (tables.last_acting >= tables.last_measure) return;
    subject->findings.Add(tables.last_place, "idle-end", [&tables] {
        if (tables.last_acting < 0) return std::string("the chart has a length but no object with an effect");
        return "measure " + std::to_string(tables.last_measure) +
               " lengthens the chart but has no object with an effect; the last such object is in measure " +
               std::to_string(tables.last_acting);
    });
}

// The most sounds at once. A sound has one voice, which a new start takes over.
void CountVoices(const std::vector<Fire>& fires, const std::vector<double>& lengths, Figures* figures) {
    struct Voice {
        double end;
        int32_t number;
        bool operator>(const Voice& other) const { return end > other.end; }
    };
    std::priority_queue<Voice, std::vector<Voice>, std::greater<>> ends;
    std::vector<double> until(BMS_SLOTS, -1.0);
    int64_t sounding = 0;
    for (const Fire& fire : fires) {
        for (; !ends.empty() && ends.top().end <= fire.ms; ends.pop()) {
            const Voice& voice = ends.top();
            double& end = until[static_cast<size_t>(voice.number)];
            if (end != voice.end) continue;  // has been restarted since
            end = -1.0;
            --sounding;
        }
        const double length = lengths[static_cast<size_t>(fire.number)];
        if (length <= 0.0) continue;
        double& end = until[static_cast<size_t>(fire.number)];
        if (end < 0.0) ++sounding;
        if (end != fire.ms + length) ends.push({fire.ms + length, fire.number});
        end = fire.ms + length;
        figures->sound_end_ms = std::max(figures->sound_end_ms, end);
        if (sounding <= figures->voices) continue;
        figures->voices = sounding;
        figures->voices_ms = fire.ms;
    }
}

void CountNotes(const ObjectList& notes, Figures* figures) {
    std::vector<double> times;
    for (int32_t i = 0; i < notes.count; ++i) {
        const BmsObject& note = *notes.sorted[i];
        ++figures->lanes[note.nChannel];
        if (!IsVisible(note.nChannel)) {
            ++figures->invisible;
            continue;
        }
        ++figures->notes;
        if (std::isfinite(note.dTime)) times.push_back(note.dTime);
    }
    size_t first = 0;
    for (size_t i = 0; i < times.size(); ++i) {
        while (times[i] - times[first] >= 1000.0) ++first;
        const auto count = static_cast<int64_t>(i - first + 1);
        if (count <= figures->densest) continue;
        figures->densest = count;
        figures->densest_ms = times[first];
    }
}

void CountTempos(const Subject& subject, Figures* figures) {
    double tempo = TempoAfter(BMS_DEFAULT_BPM, subject.chart->m_dBPM);
    figures->slowest = figures->fastest = tempo;
    const ObjectList tempos = TemposOf(subject);
    for (int32_t i = 0; i < tempos.count; ++i) {
        tempo = TempoAfter(tempo, tempos.sorted[i]->dValue);
        figures->slowest = std::min(figures->slowest, tempo);
        figures->fastest = std::max(figures->fastest, tempo);
    }
}

}  // namespace

void CheckTimes(Subject* subject) {
    CheckDoubleNotes(subject);
    CheckDoubleSounds(subject);
    CheckLate(subject);
    CheckLongMeasures(subject);
    CheckIdleEnd(subject);
}

void CountFigures(Subject* subject) {
    Figures& figures = subject->figures;
    const CBMS& chart = *subject->chart;
    figures.measures = chart.m_nMeasure - 1;
    figures.end_ms = chart.m_pMeasure[chart.m_nMeasure - 1].dStart;
    figures.bgm = chart.m_nBgm;
    figures.pictures = chart.m_nBga;
    figures.tempos = chart.m_nTempo;
    CountTempos(*subject, &figures);
    CountNotes(NotesOf(*subject), &figures);
    std::vector<double> lengths(BMS_SLOTS);
    for (const SoundFile& sound : subject->sounds) {
        lengths[static_cast<size_t>(sound.number)] = sound.milliseconds;
        figures.sound_bytes += sound.bytes;
    }
    for (const PictureFile& picture : subject->pictures) figures.picture_bytes += picture.bytes;
    CountVoices(FiresOf(*subject), lengths, &figures);
}

}  // namespace check
