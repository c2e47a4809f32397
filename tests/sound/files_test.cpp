// Every stored file, loaded whole and as a stream: what the log says, what the sound becomes, how it is
// served.
#include <set>

#include "platform/files/files.h"
#include "sound/sound_support.h"

namespace soundtest {
namespace {

constexpr DWORD kMostHashed = 1 << 20;
// One of each kind; of the others the stored results hold a hash.
const std::set<std::string> kServedInFull = {"stream_ms_stereo_part", "stream_pcm8", "stream_xa"};

class Files : public SoundTest {
protected:
    static std::string Describe(const CDSBuffer& s, bool exact) {
        std::ostringstream text;
        text << "  kind " << s.m_nKind << ", " << s.m_wfx.nSamplesPerSec << " Hz " << s.m_wfx.nChannels
             << " x " << s.m_wfx.wBitsPerSample << ", data " << s.m_nDataPos << " + " << s.m_nDataLen
             << ", PCM " << s.m_nPcmLen << " = " << s.m_nSeconds << " s, source " << s.m_nSrcSize
             << ", buffer " << s.m_nBufSize
             << (exact && s.m_nBufSize < kMostHashed ? " " + test::Hash(Contents(s.m_pDSB)) : "");
        return text.str();
    }

    // Up to the end, or for some laps.
    std::string ServeAll(CDSBuffer* sound) {
        std::string text = "  " + StreamState(*sound) + "\n" + LogOf([&] { EXPECT_EQ(sound->Play(), 0); });
        for (int i = 0; i < 12 && sound->m_nEndState != 5; ++i) {
            int result = 0;
            text += LogOf([&] { result = Serve(sound); }) + (result == 0 ? "  " : "  failed ");
            text += StreamState(*sound) + "\n";
            EXPECT_LT(sound->m_nWritePos, sound->m_nBufSize);
        }
        EXPECT_EQ(sound->IsPlaying(), sound->m_nEndState == 5 ? 0 : 1);
        EXPECT_EQ(sound->Rewind(), 0);
        return text;
    }

    std::string Load(const std::string& name, const std::string& bytes, int stream, int loop) {
        CDSBuffer* sound = Make(bytes);
        sound->m_bLoop = loop;
        int result = -1;
        const std::string log = LogOf([&] { result = sound->Load(stream); });
        EXPECT_EQ(result == 0, sound->m_bStream == stream && sound->m_pDSB != nullptr);
        std::string text = " -> " + std::to_string(result) + Held(*sound) + InOneLine(log);
        if (result != 0) return text;
        // What an MP3 decoder returns depends on its release, to the bit.
        text += Describe(*sound, name != "mp3");
        const std::string served = stream == 1 ? ServeAll(sound) : "";
        const bool in_full = kServedInFull.contains(name);
        if (stream == 1 && !in_full) text += ", served " + test::Hash(served);
        return text + "\n" + (in_full ? served : "");
    }

    std::string LoadInEveryWay(const std::string& name, const std::string& bytes) {
        const std::string whole = Load(name, bytes, 0, 0);
        const std::string stream = Load(name, bytes, 1, 0);
        const std::string loop = Load(name, bytes, 1, 1);
        if (whole == stream && stream == loop) return "each" + whole;
        return "whole" + whole + (stream == loop ? "streams" + stream : "stream" + stream + "loop" + loop);
    }

    std::string LoadAll(const std::string& folder) {
        std::map<std::string, std::string> files;
        for (const auto& entry : std::filesystem::directory_iterator(folder))
            files[entry.path().filename()] = test::ReadFile(entry.path());
        std::string text;
        for (const auto& [name, bytes] : files) {
            text += "== " + name + "\n" + LoadInEveryWay(name, bytes);
        }
        return text;
    }
};

TEST_F(Files, LoadAndPlayAsStored) {
    test::ExpectStored(
        LoadAll(SOUND_DATA "/files") + LoadAll(FUZZ_INPUTS "/fuzz_wav") + LoadAll(FUZZ_INPUTS "/fuzz_xa"),
        SOUND_DATA "/files.txt");
}

// Files in a list are decoded ahead on other threads; nothing else changes.
TEST_F(Files, DecodedAheadTheyAreTheSame) {
    std::vector<std::string> names;
    for (const auto& entry : std::filesystem::directory_iterator(SOUND_DATA "/files")) {
        names.push_back(m_folder.Write(entry.path().filename().string(), test::ReadFile(entry.path())));
        if (names.size() % 3 == 0) names.push_back(names[names.size() / 2]);
    }
    std::vector<const char*> list;
    for (const std::string& name : names) list.push_back(name.c_str());
    const auto load_all = [&] {
        std::string all;
        for (const std::string& name : names) {
            CDSBuffer sound(m_device);
            sound.SetFileName(name.c_str());
            all += name + LogOf([&] { all += std::to_string(sound.Load(0)); });
            if (sound.m_pDSB && sound.m_nBufSize < kMostHashed) all += Contents(sound.m_pDSB);
        }
        return all;
    };
    const std::string alone = load_all();
    for (int round = 0; round < 3; ++round) {
        FilesExpect(FILES_SOUNDS, list.data(), static_cast<int>(list.size()));
        EXPECT_TRUE(load_all() == alone);
        FilesExpectNoMore();
    }
}

// A search of chunks in a file of nothing but empty ones ends.
TEST_F(Files, SearchForAChunkIsBounded) {
    const std::string path = m_folder.Write("s", "RIFF....WAVE");
    std::filesystem::resize_file(path, 0x7FFF0000);
    CDSBuffer sound(m_device);
    sound.SetFileName(path.c_str());
    EXPECT_EQ(LogOf([&] { sound.Load(0); }), "    CDSBuffer::LoadWav fmt DecError\n");
    EXPECT_LT(test::Calls(Call::kFileRead), 70'000);
}

TEST_F(Files, StreamOnlyFromTwentySecondsOn) {
    for (const int seconds : {19, 20}) {
        for (const int stream : {0, 1, -5}) {
            CDSBuffer* sound = Make(test::SquareWav(seconds * 1000 + 900, 50, {1, 1000, 8}));
            sound->SetStreamSeconds(20);
            EXPECT_EQ(sound->Load(stream), 0);
            EXPECT_EQ(sound->m_bStream, seconds == 20 && stream != 0 ? 1 : 0) << seconds << " " << stream;
        }
    }
    EXPECT_EQ(CDSBuffer().m_nStreamSeconds, 20u);
}

}  // namespace
}  // namespace soundtest
