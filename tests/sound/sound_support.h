// A sound device on the headless host, and sounds made of files' bytes on it.
#pragma once

#include <gtest/gtest.h>

#include <memory>
#include <string>

#include "platform/sound/sound_fixture.h"
#include "sound/dsbuffer.h"
#include "support/calls.h"
#include "support/media.h"
#include "support/stored.h"

namespace soundtest {

using test::Call;

class SoundTest : public ::SoundTest {
protected:
    void TearDown() override {
        test::ForgetCalls();
        m_sound.reset();
        ::SoundTest::TearDown();
    }

    // A new sound with that file's bytes, not loaded yet; as a stream whatever its length.
    CDSBuffer* Make(const std::string& bytes) {
        m_sound = std::make_unique<CDSBuffer>(m_device);
        m_sound->SetFileName(m_folder.Write("s", bytes).c_str());
        m_sound->SetStreamSeconds(0);
        return m_sound.get();
    }

    // The log of what `action` does, each line indented, without the folder of the sound's file.
    template <class Action>
    std::string LogOf(Action action) {
        const size_t before = headless::Log().size();
        action();
        std::istringstream log(headless::Log().substr(before));
        std::string text;
        for (std::string line; std::getline(log, line);) {
            const size_t at = line.find(m_folder.Path());
            if (at != line.npos) line.erase(at, m_folder.Path().size());
            text += "    " + line + "\n";
        }
        return text;
    }

    // A log of LogOf in one line, without the class that writes nearly all of it.
    static std::string InOneLine(const std::string& log) {
        std::istringstream lines(log);
        std::string text;
        for (std::string line; std::getline(lines, line);) {
            line.erase(0, line.rfind("    CDSBuffer::", 0) == 0 ? 15 : 4);
            text += (text.empty() ? ": " : " / ") + line;
        }
        return text + "\n";
    }

    // The parts that the sound holds.
    static std::string Held(const CDSBuffer& sound) {
        std::string held;
        if (sound.m_hFile != nullptr) held += " file";
        if (sound.m_pSrcFormat != nullptr) held += " format";
        if (sound.m_pSrc != nullptr) held += " source";
        if (sound.m_pDst != nullptr) held += " pcm";
        if (sound.m_hAcm != nullptr) held += " converter";
        if (sound.m_pDSB != nullptr) held += " buffer";
        return held;
    }

    // A stream's counters, and its ring.
    static std::string StreamState(const CDSBuffer& s) {
        std::ostringstream text;
        text << s.m_nSrcRead << ' ' << s.m_nSrcUsed << ' ' << s.m_nDstDone << ' ' << s.m_nWritePos << " half "
             << s.m_nHalf << " state " << s.m_nEndState << ' ' << s.m_nEndHalf;
        if (s.m_pDSB != nullptr) text << ' ' << test::Hash(Contents(s.m_pDSB));
        return text.str();
    }

    // Serves a stream with its cursor where a refill of the next half is due.
    static int Serve(CDSBuffer* sound) {
        sound->m_pDSB->SetCurrentPosition(sound->m_nHalf == 0 ? sound->m_nBufSize / 8 * 5
                                                              : sound->m_nBufSize / 4);
        return sound->StreamPlay();
    }

    test::TempFolder m_folder;
    std::unique_ptr<CDSBuffer> m_sound;
};

}  // namespace soundtest
