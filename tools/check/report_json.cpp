#include "check/json.h"
#include "check/objects.h"
#include "check/report.h"

namespace check {
namespace {

void WriteEdits(const std::vector<ListedEdit>& edits, Json* json) {
    json->Key("edits");
    json->Begin('[');
    for (const Edit& edit : edits) {
        json->Begin('{');
        json->Member("offset", edit.offset);
        json->Member("length", edit.length);
        json->Member("text", edit.text);
        json->End('}');
    }
    json->End(']');
}

void WriteFindings(const Subject& subject, Json* json) {
    const Findings& findings = subject.findings;
    const ListedEdits edits = ListEdits(subject.edits, findings);
    json->Key("findings");
    json->Begin('[');
    for (size_t i = 0; i < findings.Kept().size(); ++i) {
        const Finding& finding = findings.Kept()[i];
        json->NewLine();
        json->Begin('{');
        json->Member("line", finding.place.line);
        json->Member("column", finding.place.column);
        json->Member("character", finding.character);
        json->Member("severity", NameOf(finding.severity));
        json->Member("code", finding.code);
        json->Member("text", finding.text);
        if (!edits.of_finding[i].empty()) WriteEdits(edits.of_finding[i], json);
        json->End('}');
    }
    json->End(']');
    json->Member("fixable", subject.edits.Mended());
    if (subject.edited >= 0) json->Member("fixed", subject.edited);
    if (!subject.not_fixed.empty()) json->Member("notFixed", subject.not_fixed);
    json->Key("editsListed");
    json->Flag(edits.whole);
    json->Key("leftOut");
    json->Begin('{');
    for (const auto& [code, count] : findings.LeftOut()) json->Member(code, count);
    json->End('}');
    json->Key("counts");
    json->Begin('{');
    for (const Severity severity : {Severity::kError, Severity::kWarning, Severity::kNote})
        json->Member(NameOf(severity), findings.Count(severity));
    json->End('}');
}

void WriteVerdict(const Verdict& verdict, Json* json) {
    json->Key("verdict");
    json->Begin('{');
    json->Member("sounds", verdict.plain.asked);
    json->Member("played", verdict.plain.played);
    json->Member("others", verdict.plain.wrong);
    json->Member("modernPlayed", verdict.modern.played);
    json->Member("modernOthers", verdict.modern.wrong);
    json->End('}');
    json->Key("modern");
    json->Flag(verdict.compiled);
}

void WriteHeader(const CBMS& chart, Json* json) {
    json->Key("header");
    json->Begin('{');
    json->Title("title", chart.m_pszTitle ? chart.m_pszTitle : "");
    json->Title("artist", chart.m_pszArtist ? chart.m_pszArtist : "");
    json->Title("genre", chart.m_pszGenre ? chart.m_pszGenre : "");
    json->Key("tempo");
    json->Number(chart.m_dBPM);
    json->Member("player", chart.m_nPlayer);
    json->Member("playLevel", chart.m_nPlayLevel);
    json->Member("rank", chart.m_nRank);
    json->Member("volWav", chart.m_nVolWav);
    json->Member("total", chart.m_nTotal);
    json->End('}');
}

void WriteFile(const Definition& definition, int32_t number, const std::string& found, bool loaded,
               int64_t bytes, const Use& use, Json* json) {
    json->Member("id", IdOf(number));
    json->Member("line", definition.place.line);
    json->Name("name", definition.name);
    if (!found.empty()) json->Name("found", found);
    json->Key("loaded");
    json->Flag(loaded);
    json->Member("bytes", bytes);
    json->Member("objects", use.objects);
}

void WriteFiles(const Subject& subject, Json* json) {
    const Tables& tables = subject.tables;
    json->Key("sounds");
    json->Begin('[');
    for (const SoundFile& file : subject.sounds) {
        const auto at = static_cast<size_t>(file.number);
        json->NewLine();
        json->Begin('{');
        WriteFile(tables.sounds[at], file.number, file.found, file.loaded, file.bytes, tables.sound_uses[at],
                  json);
        json->Member("format", file.format);
        json->Member("rate", file.rate);
        json->Member("channels", file.channels);
        json->Key("milliseconds");
        json->Number(file.milliseconds);
        json->End('}');
    }
    json->End(']');
    json->Key("pictures");
    json->Begin('[');
    for (const PictureFile& file : subject.pictures) {
        const auto at = static_cast<size_t>(file.number);
        json->NewLine();
        json->Begin('{');
        WriteFile(tables.pictures[at], file.number, file.found, file.loaded, file.bytes,
                  tables.picture_uses[at], json);
        json->Member("width", file.width);
        json->Member("height", file.height);
        json->Member("bits", file.bits);
        json->End('}');
    }
    json->End(']');
}

std::string ChannelName(int32_t channel) {
    return {static_cast<char>('0' + (channel >> 4 & 15)), static_cast<char>('0' + (channel & 15))};
}

void WriteFigures(const Figures& figures, Json* json) {
    json->Key("figures");
    json->Begin('{');
    json->Member("measures", figures.measures);
    const auto number = [json](const char* key, double value) { json->Key(key), json->Number(value); };
    number("endMs", figures.end_ms);
    number("firstSoundMs", figures.first_sound_ms);
    number("lastSoundMs", figures.last_sound_ms);
    number("soundEndMs", figures.sound_end_ms);
    number("slowestTempo", figures.slowest);
    number("fastestTempo", figures.fastest);
    json->Member("notes", figures.notes);
    json->Member("invisibleNotes", figures.invisible);
    json->Member("backgroundSounds", figures.bgm);
    json->Member("pictureChanges", figures.pictures);
    json->Member("tempoChanges", figures.tempos);
    json->Key("lanes");
    json->Begin('{');
    for (int32_t channel = 0x11; channel <= 0x49; ++channel) {
        if (figures.lanes[channel] > 0) json->Member(ChannelName(channel), figures.lanes[channel]);
    }
    json->End('}');
    json->Member("densestSecondNotes", figures.densest);
    number("densestSecondMs", figures.densest_ms);
    json->Member("voices", figures.voices);
    number("voicesMs", figures.voices_ms);
    json->Member("soundBytes", figures.sound_bytes);
    json->Member("pictureBytes", figures.picture_bytes);
    json->End('}');
}

void WriteMeasures(const CBMS& chart, Json* json) {
    json->Key("measures");
    json->Begin('[');
    for (int32_t i = 0; i < chart.m_nMeasure; ++i) {
        json->NewLine();
        json->Begin('{');
        json->Key("startMs");
        json->Number(chart.m_pMeasure[i].dStart);
        json->Key("length");
        json->Number(chart.m_pMeasure[i].dLength);
        json->End('}');
    }
    json->End(']');
}

enum class Names { kSound, kPicture, kTempo };

void WriteObject(const Subject& subject, const BmsObject& object, const Source* source, Names names,
                 Json* json) {
    const int32_t channel = object.nChannel % BGADEF_CHANNEL_BASE;
    json->NewLine();
    json->Begin('{');
    json->Member("measure", object.nMeasure);
    json->Key("position");
    json->Number(object.dPos);
    json->Member("channel", ChannelName(channel));
    json->Key("timeMs");
    json->Number(object.dTime);
    if (source) json->Member("line", source->place.line);
    if (names == Names::kTempo) {
        json->Key("tempo");
        json->Number(object.dValue);
    } else if (source) {
        const auto at = static_cast<size_t>(source->number);
        json->Member("id", IdOf(source->number));
        const bool rectangle = names == Names::kPicture && subject.chart->m_aBgaDef[at].nBmp != 0;
        const auto& files = names == Names::kSound ? subject.tables.sounds : subject.tables.pictures;
        const size_t file = rectangle ? static_cast<size_t>(subject.chart->m_aBgaDef[at].nBmp) : at;
        if (file < files.size() && files[file].place.line != 0) json->Name("file", files[file].name);
        if (rectangle) {
            const BgaDef& bga = subject.chart->m_aBgaDef[at];
            json->Key("rectangle");
            json->Begin('[');
            for (const int32_t n : {bga.nX1, bga.nY1, bga.nX2, bga.nY2, bga.nDX, bga.nDY}) json->Integer(n);
            json->End(']');
        }
    }
    json->End('}');
}

void WriteObjects(const Subject& subject, Json* json) {
    struct Group {
        const char* key;
        ObjectList list;
        Names names;
    };
    const Group groups[] = {
        {"tempos", TemposOf(subject), Names::kTempo},
        {"backgroundSounds", BgmOf(subject), Names::kSound},
        {"notes", NotesOf(subject), Names::kSound},
        {"pictureChanges", PicturesOf(subject), Names::kPicture},
    };
    json->Key("objects");
    json->Begin('{');
    for (const Group& group : groups) {
        json->Key(group.key);
        json->Begin('[');
        for (int32_t i = 0; i < group.list.count; ++i) {
            const BmsObject& object = *group.list.sorted[i];
            WriteObject(subject, object, group.list.SourceOf(&object), group.names, json);
        }
        json->End(']');
    }
    json->End('}');
}

}  // namespace

void WriteJson(const Subject& subject, std::string* out, const tools::Sink* sink) {
    Json json(out, sink);
    json.Begin('{');
    json.Name("file", subject.file_name);
    json.Key("readable");
    json.Flag(true);
    json.Key("refused");
    json.Flag(subject.refused);
    WriteVerdict(subject.verdict, &json);
    WriteHeader(*subject.chart, &json);
    WriteFindings(subject, &json);
    WriteFiles(subject, &json);
    if (!subject.refused) {
        WriteFigures(subject.figures, &json);
        WriteMeasures(*subject.chart, &json);
        WriteObjects(subject, &json);
    }
    json.End('}');
}

void WriteUnreadableJson(const Failure& failure, std::string* out) {
    Json json(out);
    json.Begin('{');
    json.Name("file", failure.file);
    json.Key("readable");
    json.Flag(false);
    json.Member("why", failure.why);
    json.End('}');
}

}  // namespace check
