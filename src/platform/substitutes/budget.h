// What the files of one chart may cost together. A single file has bounds of its own (picture.h, sound.h).
#pragma once

#include <atomic>
#include <cstdint>
#include <string>
#include <unordered_set>

#include "platform/substitutes/media.h"

// Bytes of all pictures that one load opens, as BMP files: what the slots then hold.
constexpr uint64_t kMostPictureBytes = uint64_t{1} << 30;
// Work of decoding pictures: bytes of the BMP times the scans of a progressive JPEG, 1 for others. Some five
// seconds of one core.
constexpr uint64_t kMostPictureWork = uint64_t{32} << 30;
// Work of decoding sounds: bytes of PCM. The device's buffers hold no more in all.
constexpr uint64_t kMostSoundWork = uint64_t{2} << 30;

// Spent by the reader alone, in the order in which it opens files, so that which files are beyond a bound
// does not depend on threads. Those only ask.
class Budget {
public:
    void Reset();

    // Whether a further file of that work may be decoded. A sound's work is known only afterwards, so the
    // last one may go beyond. Safe on any thread.
    bool MayDecode(MediaKind kind, uint64_t nWork) const;
    // Counts one that is about to be used: the first time its path is used, and each time it was decoded.
    // False when it is beyond the bound; then it does not count.
    bool Spend(MediaKind kind, const std::string& path, uint64_t nWork, bool bDecoded);

    // Counts an opened picture of so many bytes. False when it would go beyond the bound; then it does not
    // count.
    bool SpendPicture(uint64_t nBytes);

private:
    std::atomic<uint64_t> m_nPictureWork = 0, m_nSoundWork = 0;
    uint64_t m_nPictureBytes = 0;
    std::unordered_set<std::string> m_spent;
};
