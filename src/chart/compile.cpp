// Computes chart times from positions in measures. Keep the arithmetic as it is, term by term: times must
// match to the last bit.
#include <cmath>
#include <new>

#include "chart/bms.h"

double TempoAfter(double dInForce, double dValue) {
    return std::isfinite(dValue) && dValue > 0.0 ? dValue : dInForce;
}

int32_t CBMS::Compile() {
    if (BuildMeasures() != 0) return 1;
    CompileTempo();
    CompileObjects(m_ppBgm, m_nBgm);
    CompileObjects(m_ppBga, m_nBga);
    CompileObjects(m_ppNote, m_nNote);
    return 0;
}

int32_t CBMS::BuildMeasures() {
    if (m_nMeasure < 3) return 1;
    delete[] m_pMeasure;
    m_pMeasure = new (std::nothrow) BmsMeasure[static_cast<size_t>(m_nMeasure)];
    if (!m_pMeasure) return 1;
    for (int32_t i = 0; i < m_nMeasure; ++i) m_pMeasure[i] = {1.0, 0.0, 0.0};
    for (int32_t i = 0; i < m_nLength; ++i) {
        const double dLength = m_pLength[i].dLength;
        m_pMeasure[m_pLength[i].nMeasure].dLength = std::isfinite(dLength) && dLength > 0.0 ? dLength : 0.0;
    }
    return 0;
}

void CBMS::CompileTempo() {
    SortObjects(m_ppTempo, m_nTempo);
    double b = TempoAfter(BMS_DEFAULT_BPM, m_dBPM);
    double t = BMS_LEAD_IN;
    int32_t i = 0;
    for (int32_t m = 0; m < m_nMeasure; ++m) {
        BmsMeasure& M = m_pMeasure[m];
        double w = BMS_MEASURE_MS / b;
        M.dStart = t;
        double d = M.dLength * w;
        while (i < m_nTempo && m_ppTempo[i]->nMeasure == m) {
            BmsObject& o = *m_ppTempo[i++];
            const double r = 1.0 - o.dPos;  // the part of the measure after the change
            d = d - M.dLength * w * r;
            o.dTime = M.dStart + d;
            b = TempoAfter(b, o.dValue);
            w = BMS_MEASURE_MS / b;
            d = d + M.dLength * w * r;
        }
        M.dDuration = d;
        t = t + d;
    }
}

void CBMS::CompileObjects(BmsObject** ppList, int32_t nCount) {
    SortObjects(ppList, nCount);
    // t is the chart time at position p of the current measure.
    double p = 0.0, t = BMS_LEAD_IN;
    double b = TempoAfter(BMS_DEFAULT_BPM, m_dBPM);
    double w = BMS_MEASURE_MS / b;
    int32_t i = 0, nLast = 0;
    for (int32_t n = 0; n < nCount; ++n) {
        BmsObject& o = *ppList[n];
        const int32_t m = o.nMeasure;
        if (nLast < m) {
            p = 0.0;
            t = m_pMeasure[m].dStart;
        }
        nLast = m;
        for (; i < m_nTempo; ++i) {
            const BmsObject& c = *m_ppTempo[i];
            if (c.nMeasure + c.dPos > m + o.dPos) break;
            b = TempoAfter(b, c.dValue);
            w = BMS_MEASURE_MS / b;
            if (c.nMeasure == m) {
                p = c.dPos;
                t = c.dTime;
            }
        }
        o.dTime = w * m_pMeasure[m].dLength * (o.dPos - p) + t;
    }
}
