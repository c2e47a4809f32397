#include "check/probe.h"

#include <array>
#include <cmath>
#include <cstring>
#include <limits>

#include "chart/reader.h"
#include "chart/text.h"

namespace check {

bool Reading::SameAs(const Reading& other) const {
    const auto numbers = [](const Reading& r) {
        const BgaDef& b = r.bga;
        return std::array{r.number, r.value, b.nX1, b.nY1, b.nX2, b.nY2, b.nDX, b.nDY, b.nBmp};
    };
    const bool same_tempo = tempo == other.tempo || (std::isnan(tempo) && std::isnan(other.tempo));
    return keyword == other.keyword && taken == other.taken && same_tempo && numbers(*this) == numbers(other);
}

Probe::Probe(const char* chart_path) : scratch_(std::make_unique<CBMS>(nullptr, nullptr)) {
    GetDirName(chart_path, folder_, BMS_PATH);
}

Reading Probe::ReadPath(Keyword keyword, const char* line, int length) {
    Reading reading;
    reading.keyword = keyword;
    reading.number = length >= 6 ? ObjNoToInt(line + 4) : 0;
    auto& table = keyword == Keyword::kWav ? scratch_->m_aszWav : scratch_->m_aszBmp;
    char* path = table[reading.number];
    path[0] = '\0';
    ReadDefinition(scratch_.get(), line, length, folder_);
    reading.taken = path[0] != '\0';
    reading.path = path;
    return reading;
}

Reading Probe::ReadBga(const char* line, int length) {
    Reading reading;
    reading.keyword = Keyword::kBga;
    reading.number = length >= 6 ? Base36ToInt(line + 4) : 0;
    BgaDef& definition = scratch_->m_aBgaDef[reading.number];
    definition.nBmp = -1;
    ReadDefinition(scratch_.get(), line, length, folder_);
    reading.taken = definition.nBmp >= 0;
    reading.bga = definition;
    return reading;
}

Reading Probe::ReadPathWav(const char* line, int length) {
    Reading reading;
    reading.keyword = Keyword::kPathWav;
    char folder[BMS_PATH] = "\n";  // no line can set this
    ReadDefinition(scratch_.get(), line, length, folder);
    reading.taken = folder[0] != '\n';
    if (reading.taken) std::memcpy(folder_, folder, BMS_PATH);
    return reading;
}

Reading Probe::ReadText(Keyword keyword, char* CBMS::*text, const char* line, int length) {
    Reading reading;
    reading.keyword = keyword;
    char*& value = scratch_.get()->*text;
    delete[] value;
    value = nullptr;
    ReadHeader(scratch_.get(), line, length);
    reading.taken = value != nullptr;
    return reading;
}

Reading Probe::ReadNumber(Keyword keyword, int32_t CBMS::*number, const char* line, int length) {
    Reading reading;
    reading.keyword = keyword;
    int32_t& value = scratch_.get()->*number;
    // Tried with two values before: a line that sets one of them changes the other.
    for (const int32_t before : {std::numeric_limits<int32_t>::min(), 0}) {
        value = before;
        ReadHeader(scratch_.get(), line, length);
        reading.taken = reading.taken || value != before;
    }
    reading.value = value;
    return reading;
}

Reading Probe::ReadTempo(const char* line, int length) {
    Reading reading;
    reading.number = length >= 6 ? ObjNoToInt(line + 4) : 0;
    double& numbered = scratch_->m_adBPM[reading.number];
    numbered = scratch_->m_dBPM = std::numeric_limits<double>::quiet_NaN();  // no text reads as this
    ReadHeader(scratch_.get(), line, length);
    const bool first = !std::isnan(scratch_->m_dBPM);
    const bool blank = line[4] == ' ' || line[4] == '\0';
    reading.keyword = first || blank ? Keyword::kBpm : Keyword::kBpmxx;
    reading.taken = first || !std::isnan(numbered);
    reading.tempo = first ? scratch_->m_dBPM : numbered;
    if (first) reading.number = 0;
    return reading;
}

// In the order in which the player compares.
Reading Probe::Read(const char* line, int length) {
    const char* word = line + 1;
    if (HasHeadI(word, "WAV")) return ReadPath(Keyword::kWav, line, length);
    if (HasHeadI(word, "BMP")) return ReadPath(Keyword::kBmp, line, length);
    if (HasHeadI(word, "BGA")) return ReadBga(line, length);
    if (HasHeadI(word, "PATH_WAV")) return ReadPathWav(line, length);
    if (HasHeadI(word, "TITLE")) return ReadText(Keyword::kTitle, &CBMS::m_pszTitle, line, length);
    if (HasHeadI(word, "ARTIST")) return ReadText(Keyword::kArtist, &CBMS::m_pszArtist, line, length);
    if (HasHeadI(word, "GENRE")) return ReadText(Keyword::kGenre, &CBMS::m_pszGenre, line, length);
    if (HasHeadI(word, "BPM")) return ReadTempo(line, length);
    if (HasHeadI(word, "PLAYLEVEL"))
        return ReadNumber(Keyword::kPlayLevel, &CBMS::m_nPlayLevel, line, length);
    if (HasHeadI(word, "PLAYER")) return ReadNumber(Keyword::kPlayer, &CBMS::m_nPlayer, line, length);
    if (HasHeadI(word, "RANK")) return ReadNumber(Keyword::kRank, &CBMS::m_nRank, line, length);
    if (HasHeadI(word, "VOLWAV")) return ReadNumber(Keyword::kVolWav, &CBMS::m_nVolWav, line, length);
    if (HasHeadI(word, "TOTAL")) return ReadNumber(Keyword::kTotal, &CBMS::m_nTotal, line, length);
    return {};
}

}  // namespace check
