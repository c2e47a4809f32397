#include "report/losses.h"

#include "chart/bms.h"
#include "display/ddraw.h"
#include "sound/dsbuffer.h"
#include "sound/dsound.h"

namespace report {
namespace {

std::string Clause(int missing, int all, const char* what) {
    return std::to_string(missing) + " of " + std::to_string(all) + " " + what + (all == 1 ? "" : "s");
}

}  // namespace

Losses CountLosses(const CBMS& chart, const CDSound& sound, const CDDraw& display) {
    Losses losses;
    for (int i = 0; i < BMS_SLOTS; ++i) {
        if (chart.m_aszWav[i][0]) {
            ++losses.sounds;
            losses.sounds_missing += !sound.m_pSlot[i] || !sound.m_pSlot[i]->m_pDSB;
        }
        if (chart.m_aszBmp[i][0]) {
            ++losses.pictures;
            losses.pictures_missing += !display.m_apDib[i];
        }
    }
    return losses;
}

std::string LossSentence(const Losses& losses) {
    std::string text;
    if (losses.sounds_missing > 0) text = Clause(losses.sounds_missing, losses.sounds, "sound");
    if (losses.pictures_missing > 0)
        text += (text.empty() ? "" : " and ") + Clause(losses.pictures_missing, losses.pictures, "picture");
    return text.empty() ? text : text + " missing";
}

}  // namespace report
