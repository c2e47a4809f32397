#include "platform/substitutes/budget.h"

void Budget::Reset() {
    m_nPictureWork = m_nSoundWork = 0;
    m_nPictureBytes = 0;
    m_spent.clear();
}

bool Budget::MayDecode(MediaKind kind, uint64_t nWork) const {
    if (kind == MediaKind::kPicture) return m_nPictureWork + nWork <= kMostPictureWork;
    return m_nSoundWork < kMostSoundWork;
}

bool Budget::Spend(MediaKind kind, const std::string& path, uint64_t nWork, bool bDecoded) {
    if (!bDecoded && m_spent.count(path)) return true;
    if (!MayDecode(kind, nWork)) return false;
    (kind == MediaKind::kPicture ? m_nPictureWork : m_nSoundWork) += nWork;
    m_spent.insert(path);
    return true;
}

bool Budget::SpendPicture(uint64_t nBytes) {
    if (m_nPictureBytes + nBytes > kMostPictureBytes) return false;
    m_nPictureBytes += nBytes;
    return true;
}
