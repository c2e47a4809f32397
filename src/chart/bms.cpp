#include "chart/bms.h"

#include <cstring>
#include <initializer_list>

CBMS::CBMS(CDDraw* pDDraw, CDSound* pDSound) {
    Init();
    m_pDDraw = pDDraw;
    m_pDSound = pDSound;
}

CBMS::~CBMS() {
    Term();
}

void CBMS::Init() {
    m_pBgm = m_pTempo = m_pBga = m_pNote = nullptr;
    m_ppBgm = m_ppTempo = m_ppBga = m_ppNote = nullptr;
    m_pLength = nullptr;
    m_nBgm = m_nLength = m_nTempo = m_nBga = m_nNote = 0;
    m_nBgmFill = m_nLengthFill = m_nTempoFill = m_nBgaFill = m_nNoteFill = 0;
    m_pszTitle = m_pszArtist = m_pszGenre = nullptr;
    m_nPlayer = 0;
    m_dBPM = BMS_DEFAULT_BPM;
    m_nPlayLevel = m_nRank = m_nTotal = 0;
    m_nVolWav = 100;
    std::memset(m_aszWav, 0, sizeof m_aszWav);
    std::memset(m_aszBmp, 0, sizeof m_aszBmp);
    std::memset(m_aBgaDef, 0, sizeof m_aBgaDef);
    for (double& dBPM : m_adBPM) dBPM = BMS_DEFAULT_BPM;
    m_pMeasure = nullptr;
    m_nMeasure = 0;
    m_pDSound = nullptr;
    m_pDDraw = nullptr;
}

void CBMS::Term() {
    for (BmsObject* p : {m_pBgm, m_pTempo, m_pBga, m_pNote}) delete[] p;
    for (BmsObject** pp : {m_ppBgm, m_ppTempo, m_ppBga, m_ppNote}) delete[] pp;
    for (char* psz : {m_pszTitle, m_pszArtist, m_pszGenre}) delete[] psz;
    delete[] m_pLength;
    delete[] m_pMeasure;
    CDDraw* pDDraw = m_pDDraw;
    CDSound* pDSound = m_pDSound;
    Init();
    m_pDDraw = pDDraw;
    m_pDSound = pDSound;
}
