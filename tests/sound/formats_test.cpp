// The codecs: each format as the library itself reads it, sizes to the byte, refusals.
#include "platform/codec/acm.h"

#include "sound/sound_support.h"

namespace soundtest {
namespace {

class Formats : public SoundTest {};

struct Row {
    const char* name;
    int subtype, channels, rate;
    int container = SF_FORMAT_WAV;
};

const Row kRows[] = {
    {"24 bits", SF_FORMAT_PCM_24, 2, 44100},
    {"32 bits", SF_FORMAT_PCM_32, 1, 48000},
    {"16 bits extensible", SF_FORMAT_PCM_16, 2, 44100, SF_FORMAT_WAVEX},
    {"24 bits extensible", SF_FORMAT_PCM_24, 1, 22050, SF_FORMAT_WAVEX},
    {"A-law", SF_FORMAT_ALAW, 1, 8000},
    {"mu-law", SF_FORMAT_ULAW, 2, 11025},
    {"mu-law extensible", SF_FORMAT_ULAW, 2, 11025, SF_FORMAT_WAVEX},
    {"IMA mono", SF_FORMAT_IMA_ADPCM, 1, 22050},
    {"IMA stereo", SF_FORMAT_IMA_ADPCM, 2, 44100},
    {"IMA slow", SF_FORMAT_IMA_ADPCM, 1, 8000},
    {"Microsoft mono", SF_FORMAT_MS_ADPCM, 1, 11025},
    {"Microsoft stereo", SF_FORMAT_MS_ADPCM, 2, 44100},
    {"GSM", SF_FORMAT_GSM610, 1, 8000},
};

TEST_F(Formats, DecodeAsTheLibraryDoes) {
    for (const Row& row : kRows) {
        const Samples samples = Music(50000, row.channels, row.rate);
        const CodedFile coded = Encode(row.subtype, samples, row.channels, row.rate, row.container);
        CDSBuffer* sound = Make(coded.file);
        EXPECT_EQ(LogOf([&] { EXPECT_EQ(sound->Load(0), 0) << row.name; }), "") << row.name;
        ASSERT_NE(sound->m_pDSB, nullptr) << row.name;
        Samples content = ContentSamples(sound->m_pDSB);
        if (row.subtype == SF_FORMAT_GSM610) {
            content.resize(samples.size());  // the library counts the pad byte as a block more
        }
        ASSERT_GE(content.size(), samples.size()) << row.name;
        content.resize(std::min(content.size(), coded.samples.size()));
        EXPECT_TRUE(std::equal(content.begin(), content.end(), coded.samples.begin())) << row.name;
        EXPECT_EQ(sound->m_wfx.wBitsPerSample, 16);
        EXPECT_EQ(sound->m_wfx.nSamplesPerSec, static_cast<DWORD>(row.rate));
    }
}

TEST_F(Formats, FloatsAreScaledAndLimited) {
    const float values[] = {0, 0.5f, -0.5f, 1, -1, 2, -3, 1e30f, NAN, INFINITY, 1 / 32768.0f};
    const Samples expected = {0, 16384, -16384, 32767, -32768, 32767, -32768, 32767, 0, 32767, 1};
    std::string data;
    for (float value : values) data.append(reinterpret_cast<const char*>(&value), 4);
    ASSERT_EQ(Make(WavOf({3, 1, 44100, -1, 4, 32}, data))->Load(0), 0);
    Samples content = ContentSamples(m_sound->m_pDSB);
    content.resize(expected.size());
    EXPECT_EQ(content, expected);
    const double half = 0.5;
    ASSERT_EQ(
        Make(WavOf({3, 1, 44100, -1, 8, 64}, std::string(reinterpret_cast<const char*>(&half), 8)))->Load(0),
        0);
    EXPECT_EQ(ContentSamples(m_sound->m_pDSB)[0], 16384);
}

TEST_F(Formats, ManyChannelsStay) {
    const Samples samples = Music(9000, 6, 44100);
    ASSERT_EQ(Make(WavOf({1, 6, 44100, -1, -1, 16}, Bytes(samples)))->Load(0), 0);
    EXPECT_EQ(ContentSamples(m_sound->m_pDSB), samples);
    EXPECT_EQ(m_sound->m_wfx.nChannels, 6);
}

// Where the library can: it need not have been built with MP3.
TEST_F(Formats, Mp3) {
    SF_INFO info = {0, 44100, 2, SF_FORMAT_MPEG | SF_FORMAT_MPEG_LAYER_III, 0, 0};
    if (sf_format_check(&info) == 0) GTEST_SKIP() << "no MP3 in the codec library";
    const Samples samples = Music(60000, 2, 44100);
    const CodedFile coded = Encode(SF_FORMAT_MPEG_LAYER_III, samples, 2, 44100, SF_FORMAT_MPEG);
    const double seconds = static_cast<double>(coded.samples.size()) / 2 / 44100;
    const int average = static_cast<int>(static_cast<double>(coded.file.size()) / seconds);
    const Format format = {85, 2, 44100, average, 1, 0};
    CDSBuffer* sound = Make(WavOf(format, coded.file));
    EXPECT_EQ(LogOf([&] { EXPECT_EQ(sound->Load(0), 0); }), "");
    EXPECT_NEAR(sound->m_nPcmLen, static_cast<double>(coded.samples.size()) * 2, 40);
    const Samples content = ContentSamples(sound->m_pDSB);
    size_t near = 0;
    for (size_t i = 0; i < samples.size() && i < content.size(); ++i)
        near += std::abs(content[i] - coded.samples[i]) <= 1;
    EXPECT_GT(near, samples.size() * 98 / 100);

    sound = Make(WavOf(format, std::string(50000, 'x')));
    EXPECT_EQ(LogOf([&] { EXPECT_EQ(sound->Load(0), 1); }), "CDSBuffer::LoadWav ConvertError\n");
    sound->SetStreamSeconds(0);
    EXPECT_EQ(LogOf([&] { EXPECT_EQ(sound->Load(1), 1); }), "CDSBuffer::LoadWav Size(d2s)Get Error\n");
    EXPECT_EQ(Make(WavOf({85, 2, 44100, 0, 1, 0}, "x"))->Load(0), 1);
}

// The last block of a file may be cut: what is left of it is heard.
TEST_F(Formats, PartOfABlock) {
    for (const Row& row : kRows) {
        const bool ima = row.subtype == SF_FORMAT_IMA_ADPCM;
        if (!ima && row.subtype != SF_FORMAT_MS_ADPCM) continue;
        const CodedFile coded =
            Encode(row.subtype, Music(40000, row.channels, row.rate), row.channels, row.rate);
        const std::string fmt = coded.file.substr(20, static_cast<size_t>(coded.file[16]));
        const size_t align = test::Number(fmt, 12, 2);
        const std::string data = coded.file.substr(coded.file.find("data") + 8, align * 10 + align / 2);
        ASSERT_EQ(Make(Riff(Chunk("fmt ", fmt) + Chunk("data", data)))->Load(0), 0);
        const size_t channels = static_cast<size_t>(row.channels), in_head = ima ? 1 : 2;
        // Frames of so much of a block; codes of IMA come in words of each channel.
        const auto frames = [&](size_t codes) {
            codes -= (ima ? 4 : 7) * channels;
            return (ima ? codes / (4 * channels) * 4 * channels : codes) * 2 / channels + in_head;
        };
        const size_t got = m_sound->m_nPcmLen / 2;
        EXPECT_EQ(got, (frames(align) * 10 + frames(align / 2)) * channels) << row.name;
        Samples content = ContentSamples(m_sound->m_pDSB);
        ASSERT_GE(content.size(), got);
        content.resize(got);
        EXPECT_TRUE(std::equal(content.begin(), content.end(), coded.samples.begin())) << row.name;
    }
}

class Converter {
public:
    explicit Converter(const Format& format) {
        block_ = FormatBlock(format) + std::string(64, '\0');
        auto* source = reinterpret_cast<WAVEFORMATEX*>(block_.data());
        wfx.wFormatTag = WAVE_FORMAT_PCM;
        suggested = acmFormatSuggest(nullptr, source, &wfx, sizeof(wfx), ACM_FORMATSUGGESTF_WFORMATTAG);
        opened = acmStreamOpen(&stream, nullptr, source, &wfx, nullptr, 0, 0, ACM_STREAMOPENF_NONREALTIME);
    }
    ~Converter() {
        if (stream != nullptr) acmStreamClose(stream, 0);
    }
    Converter(const Converter&) = delete;
    Converter& operator=(const Converter&) = delete;
    DWORD Size(DWORD in, DWORD flags) {
        DWORD out = 77;
        EXPECT_EQ(acmStreamSize(stream, in, &out, flags), MMSYSERR_NOERROR);
        return out;
    }
    // Bytes used and made.
    std::pair<DWORD, DWORD> Convert(std::string source, DWORD room, DWORD flags, int16_t* pcm) {
        ACMSTREAMHEADER header = {};
        header.cbStruct = 84;
        header.pbSrc = reinterpret_cast<BYTE*>(source.data());
        header.cbSrcLength = static_cast<DWORD>(source.size());
        header.pbDst = reinterpret_cast<BYTE*>(pcm);
        header.cbDstLength = room;
        EXPECT_EQ(acmStreamConvert(stream, &header, flags), ACMERR_UNPREPARED);
        EXPECT_EQ(acmStreamPrepareHeader(stream, &header, 0), MMSYSERR_NOERROR);
        EXPECT_EQ(acmStreamConvert(stream, &header, flags), MMSYSERR_NOERROR);
        EXPECT_EQ(header.fdwStatus, ACMSTREAMHEADER_STATUSF_DONE | ACMSTREAMHEADER_STATUSF_PREPARED);
        EXPECT_EQ(acmStreamUnprepareHeader(stream, &header, 0), MMSYSERR_NOERROR);
        return {header.cbSrcLengthUsed, header.cbDstLengthUsed};
    }
    std::pair<DWORD, DWORD> Convert(DWORD from, DWORD room, DWORD flags) {
        std::vector<int16_t> pcm(room / 2 + 1);
        return Convert(std::string(from, '\0'), room, flags, pcm.data());
    }
    WAVEFORMATEX wfx = {};
    HACMSTREAM stream = nullptr;
    MMRESULT suggested, opened;

private:
    std::string block_;
};

TEST(Sizes, BothDirections) {
    struct Line {
        Format format;
        DWORD source, pcm;      // PCM of so much source
        DWORD asked, returned;  // source of so much PCM
    };
    const Line lines[] = {
        {{1, 2, 44100, -1, -1, 16}, 1003, 1000, 1003, 1000},
        {{1, 1, 44100, -1, -1, 8}, 1003, 1003, 1003, 1003},
        {{1, 2, 44100, -1, -1, 24}, 605, 400, 401, 600},
        {{3, 1, 44100, -1, 4, 32}, 403, 200, 203, 404},
        {{7, 1, 8000, -1, -1, 8}, 100, 200, 201, 100},
        {{17, 1, 22050, -1, 512, 4}, 1024, 2 * 1017 * 2, 2 * 1017 * 2 + 2033, 1024},
        {{17, 1, 22050, -1, 512, 4}, 1024 + 4, (2 * 1017 + 1) * 2, 10, 512},
        {{17, 2, 44100, -1, 2048, 4}, 2048 * 5 + 16, (5 * 2041 + 9) * 4, 2041 * 4 * 7, 2048 * 7},
        {{2, 1, 22050, -1, 512, 4}, 512 * 3 + 6, 3 * 1012 * 2, 1012 * 2 * 3 - 1, 1024},
        {{2, 2, 44100, -1, 2048, 4}, 2048 + 14, (2036 + 2) * 4, 2036 * 4, 2048},
        {{49, 1, 8000, 1625, 65, 0}, 65 * 4 + 64, 320 * 2 * 4, 320 * 2 * 2, 130},
        {{7, 1, 8000, -1, -1, 8}, 0xFFFFFFFF, 0xFFFFFFFE, 0, 1},
    };
    for (const Line& line : lines) {
        Converter converter(line.format);
        ASSERT_EQ(converter.opened, MMSYSERR_NOERROR) << line.format.tag;
        EXPECT_EQ(converter.Size(line.source, ACM_STREAMSIZEF_SOURCE), line.pcm)
            << line.format.tag << " " << line.source;
        EXPECT_EQ(converter.Size(line.asked, ACM_STREAMSIZEF_DESTINATION), line.returned) << line.format.tag;
    }
}

TEST(Sizes, WhatAConversionUsesAndMakes) {
    using Pair = std::pair<DWORD, DWORD>;
    Converter ima({17, 1, 22050, -1, 512, 4});
    const DWORD pcm = 1017 * 2, block = ACM_STREAMCONVERTF_BLOCKALIGN;
    EXPECT_EQ(ima.Convert(511, 10000, block), Pair(0, 0));
    EXPECT_EQ(ima.Convert(512 * 3 + 100, 100000, block), Pair(512 * 3, pcm * 3));
    EXPECT_EQ(ima.Convert(512 * 3 + 104, 100000, 0), Pair(512 * 3 + 104, pcm * 3 + (100 * 2 + 1) * 2));
    EXPECT_EQ(ima.Convert(512 * 9, pcm * 2 + 1000, block), Pair(512 * 2, pcm * 2));
    EXPECT_EQ(ima.Convert(512 * 9, pcm * 2 + 1000, 0), Pair(512 * 3, pcm * 2 + 1000));
    EXPECT_EQ(ima.Convert(0, 1000, block), Pair(0, 0));
    EXPECT_EQ(ima.Convert(512, 0, 0), Pair(0, 0));
    Converter plain({1, 2, 44100, -1, -1, 16});
    EXPECT_EQ(plain.Convert(1003, 10000, block), Pair(1000, 1000));
    EXPECT_EQ(plain.Convert(1003, 10000, 0), Pair(1000, 1000));
    EXPECT_EQ(plain.Convert(1000, 403, block), Pair(400, 400));
}

// What the codec carries from one block to the next is there again at the next call.
TEST_F(Formats, StateIsKeptBetweenCalls) {
    const CodedFile coded = Encode(SF_FORMAT_GSM610, Music(16000, 1, 8000), 1, 8000);
    const std::string data = coded.file.substr(coded.file.find("data") + 8);
    Converter gsm({49, 1, 8000, 1625, 65, 0});
    Samples out(320 * 50);
    for (size_t i = 0; i < 50; ++i) {
        const auto made =
            gsm.Convert(data.substr(i * 65, 65), 640, ACM_STREAMCONVERTF_BLOCKALIGN, &out[i * 320]);
        ASSERT_EQ(made.second, 640u);
    }
    out.resize(std::min(out.size(), coded.samples.size()));
    EXPECT_TRUE(std::equal(out.begin(), out.end(), coded.samples.begin()));
}

TEST(Converters, Refusals) {
    const std::string lying = "\xff\xff";
    const Format rows[] = {
        {0, 1, 44100, -1, -1, 16},
        {1, 0, 44100, -1, 2, 16},
        {1, 1, 0, -1, -1, 16},
        {1, 1, 44100, -1, 3, 16},
        {1, 1, 44100, -1, 0, 0},
        {1, 1, 44100, -1, 5, 40},
        {3, 1, 44100, -1, 2, 16},
        {6, 1, 44100, -1, 2, 16},
        {17, 1, 44100, -1, 4, 4},
        {17, 2, 44100, -1, 1028, 4},
        {17, 3, 44100, -1, 1032, 4},
        {17, 1, 44100, -1, 512, 3},
        {2, 1, 44100, -1, 7, 4},
        {49, 2, 8000, -1, 65, 0},
        {49, 1, 8000, -1, 64, 0},
        {0xFFFE, 1, 44100, -1, 2, 16},
        {0xFFFE, 1, 44100, -1, 2, 16, lying},
        {0x2000, 2, 44100, -1, 1, 0},
        {1, 8, -1, -1, -1, 32},
    };
    for (const Format& row : rows) {
        Converter converter(row);
        EXPECT_EQ(converter.suggested, ACMERR_NOTPOSSIBLE) << row.tag << " " << row.align;
        EXPECT_EQ(converter.opened, ACMERR_NOTPOSSIBLE) << row.tag << " " << row.align;
        EXPECT_EQ(converter.stream, nullptr);
    }
    // The rate stays, and nothing but PCM is made.
    Converter good({});
    WAVEFORMATEX other = good.wfx, dest = {};
    other.nSamplesPerSec = 22050;
    HACMSTREAM stream = good.stream;
    EXPECT_EQ(acmStreamOpen(&stream, nullptr, &good.wfx, &other, nullptr, 0, 0, 0), ACMERR_NOTPOSSIBLE);
    EXPECT_EQ(stream, nullptr);
    EXPECT_EQ(acmFormatSuggest(nullptr, &good.wfx, &dest, sizeof(dest), ACM_FORMATSUGGESTF_WFORMATTAG),
              ACMERR_NOTPOSSIBLE);
}

}  // namespace
}  // namespace soundtest
