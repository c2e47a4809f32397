// The sounds of a chart: whether they were found and loaded, and their format.
#include <algorithm>
#include <cstring>

#include "check/files.h"
#include "check/subject.h"
#include "host/headless/headless.h"
#include "platform/codec/mmio.h"
#include "sound/dsbuffer.h"
#include "sound/xaformat.h"

namespace check {
namespace {

// What the player logs when it loads the sound again; empty on success.
std::string LogOfLoad(const CDSBuffer& sound) {
    CDSBuffer again(sound.m_pDS);
    again.SetFileName(sound.m_szName);
    const size_t before = headless::Log().size();
    again.Load(0);
    return headless::Log().substr(before);
}

// The format block of a WAV file; zeros if there is none. Returns the subformat of an extensible format.
WAVEFORMATEX ReadFormat(const char* path) {
    struct {
        WAVEFORMATEX format;
        BYTE rest[22];
    } block = {};
    HMMIO file = mmioOpenA(path, nullptr, MMIO_ALLOCBUF | MMIO_READ);
    if (file == nullptr) return block.format;
    MMCKINFO riff = {}, fmt = {};
    fmt.ckid = mmioFOURCC('f', 'm', 't', ' ');
    if (mmioDescend(file, &riff, nullptr, 0) == 0 && mmioDescend(file, &fmt, &riff, MMIO_FINDCHUNK) == 0)
        mmioRead(file, &block, static_cast<LONG>(std::min<DWORD>(fmt.cksize, sizeof block)));
    mmioClose(file, 0);
    if (block.format.wFormatTag == WAVE_FORMAT_EXTENSIBLE) {
        constexpr size_t kSubFormat = 6;  // after the valid bits and the speakers
        std::memcpy(&block.format.wFormatTag, block.rest + kSubFormat, sizeof(WORD));
    }
    return block.format;
}

std::string NameOfFormat(const WAVEFORMATEX& format) {
    const std::string bits = ", " + std::to_string(format.wBitsPerSample) + " bits";
    switch (format.wFormatTag) {
        case WAVE_FORMAT_PCM:
            return "PCM" + bits;
        case WAVE_FORMAT_ADPCM:
            return "Microsoft ADPCM";
        case WAVE_FORMAT_IEEE_FLOAT:
            return "float" + bits;
        case WAVE_FORMAT_ALAW:
            return "A-law";
        case WAVE_FORMAT_MULAW:
            return "mu-law";
        case WAVE_FORMAT_IMA_ADPCM:
            return "IMA ADPCM";
        case WAVE_FORMAT_GSM610:
            return "GSM 6.10";
        case WAVE_FORMAT_MPEGLAYER3:
            return "MP3 inside a WAV";
        default:
            return "format " + std::to_string(format.wFormatTag);
    }
}

bool IsPlain(const WAVEFORMATEX& format) {
    return format.wFormatTag == WAVE_FORMAT_PCM &&
           (format.wBitsPerSample == 8 || format.wBitsPerSample == 16) && format.nChannels <= 2;
}

// Why an existing file did not load, by the last line that the player logged.
std::string WhyUnreadable(const SoundFile& file, const std::string& log) {
    struct Reason {
        const char* logged;
        const char* why;
    };
    static constexpr Reason kReasons[] = {
        {"RIFF DecError", "the file has fewer than 8 bytes"},
        {"WAVE not found", "it is neither a RIFF WAVE nor a sound XA file"},
        {"fmt DecError", "it has no `fmt ` chunk"},
        {"fmt read Error", "its `fmt ` chunk is cut"},
        {"fmtAscError", "its `fmt ` chunk is cut"},
        {"data DecError", "it has no `data` chunk after its `fmt ` chunk"},
        {"SUGGEST", "the player cannot convert its format"},
        {"ACM OPEN", "the player cannot convert its format"},
        {"Size(s2d)", "it is too large"},
        {"DSBCreateError", "the sound device does not support its rate, channels or size"},
        {"ConvertError", "its data is damaged"},
        {"LoadXA Convert", "its data is damaged"},
    };
    const char* kind = KindOf(file.found);
    std::string why = "the player cannot read it";
    for (const Reason& reason : kReasons) {
        if (log.find(reason.logged) != log.npos) why = reason.why;
    }
    const bool foreign = kind && std::strcmp(kind, kWavFile) != 0 && std::strcmp(kind, kXaFile) != 0;
    if (foreign) why = std::string("it is ") + kind;
    if (!file.format.empty() && why.find("convert") != why.npos) why += " (" + file.format + ")";
    return why;
}

void DescribeWav(SoundFile* file, bool* plain) {
    const WAVEFORMATEX format = ReadFormat(file->found.c_str());
    if (format.wFormatTag == 0) return;
    file->format = NameOfFormat(format);
    *plain = IsPlain(format);
}

void Describe(const CDSBuffer& sound, bool converted, SoundFile* file, bool* plain) {
    *plain = true;
    if (converted) {
        file->format = "PCM, 16 bits";
    } else if (file->loaded && sound.m_nKind == SOUND_KIND_XA) {
        file->format = "XA";
        *plain = false;
    } else {
        DescribeWav(file, plain);
    }
    if (!file->loaded) return;
    file->rate = static_cast<int>(sound.m_wfx.nSamplesPerSec);
    file->channels = sound.m_wfx.nChannels;
    if (sound.m_wfx.nAvgBytesPerSec != 0)
        file->milliseconds = sound.m_nPcmLen * 1000.0 / sound.m_wfx.nAvgBytesPerSec;
    file->bytes = sound.m_nBufSize;
}

void CheckFound(Subject* subject, const Definition& definition, const CDSBuffer& sound, const SoundFile& file,
                bool converted, bool plain) {
    Findings& findings = subject->findings;
    const Place place = definition.NamePlace();
    CheckSpelling(CompareSpelling(definition.name, file.found), definition, file.found, MediaKind::kSound,
                  &findings);
    if (!plain) {
        findings.Add(place, "sound-format", [&] {
            return Quote(definition.name) + " is " + file.format + "; only some players read it";
        });
    }
    const int64_t held = SizeOf(file.found) - sound.m_nDataPos;
    if (held < sound.m_nDataLen && !converted) {
        findings.Add(place, "sound-cut", [&] {
            return Quote(definition.name) + " declares " + std::to_string(sound.m_nDataLen) +
                   " bytes of sound but has only " + std::to_string(std::max<int64_t>(held, 0)) +
                   "; the rest is silent; save the sound again";
        });
    } else if (sound.m_nPcmLen == 0) {
        findings.Add(place, "sound-empty",
                     [&] { return Quote(definition.name) + " holds no sound, so nothing is heard"; });
    }
}

void CheckSound(Subject* subject, const Definition& definition, const Use& use, const CDSBuffer& sound,
                SoundFile* file) {
    const bool heard = use.objects > use.invisible;
    const std::string cost =
        heard ? "; " + ItsObjects(use.objects - use.invisible, "make", "no sound") : std::string();
    const Severity severity = heard ? kError : kNote;
    // A successful load leaves no converter open.
    file->loaded = sound.m_pDSB != nullptr && sound.m_hAcm == nullptr;
    file->found = FindOpened(definition.path, MediaKind::kSound, file->loaded);
    if (file->found.empty()) {
        subject->findings.Add(definition.NamePlace(), "sound-missing", severity, [&] {
            return Quote(definition.name) + WhyMissing(definition, MediaKind::kSound) + cost;
        });
        return;
    }
    const bool converted = file->loaded && IsConverted(file->found);
    bool plain = true;
    Describe(sound, converted, file, &plain);
    if (file->loaded) return CheckFound(subject, definition, sound, *file, converted, plain);
    const std::string log = LogOfLoad(sound);
    subject->findings.Add(definition.NamePlace(), "sound-unreadable", severity, [&] {
        return Quote(definition.name) + " cannot be played: " + WhyUnreadable(*file, log) +
               HintAboutKind(definition.name, MediaKind::kSound) + cost;
    });
}

}  // namespace

void CheckSounds(Subject* subject) {
    for (int32_t i = 0; i < BMS_SLOTS; ++i) {
        const Definition& definition = subject->tables.sounds[static_cast<size_t>(i)];
        const CDSBuffer* sound = subject->sound.m_pSlot[i];
        if (definition.place.line == 0 || definition.made || !sound) continue;
        SoundFile file;
        file.number = i;
        CheckSound(subject, definition, subject->tables.sound_uses[static_cast<size_t>(i)], *sound, &file);
        subject->sounds.push_back(std::move(file));
    }
}

void CheckMixedSound(Subject* subject, const Definition& definition, int64_t objects) {
    CDSBuffer sound(subject->sound.m_pDS);
    sound.SetFileName(definition.path.c_str());
    sound.Load(0);
    Use use;
    use.objects = objects;
    SoundFile file;
    CheckSound(subject, definition, use, sound, &file);
}

}  // namespace check
