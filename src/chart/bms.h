// One chart in memory: its headers, tables and lists of timed objects.
#pragma once

#include <cstdint>

class CDDraw;
class CDSound;

constexpr int BMS_SLOTS = 576;               // sounds, images, extended tempos
constexpr int BMS_BGADEFS = 1296;            // picture definitions
constexpr int BMS_PATH = 260;                // size of a path buffer in bytes, including the NUL
constexpr int BGADEF_CHANNEL_BASE = 3840;    // added to the channel of an object that points to a BgaDef
constexpr double BMS_LEAD_IN = 1000.0;       // ms; chart time of the start of measure 0
constexpr double BMS_MEASURE_MS = 240000.0;  // a measure of length 1.0 at 1 BPM: four beats of one minute
constexpr double BMS_DEFAULT_BPM = 130.0;

// Limits for one chart. A larger file, or one with more objects, is treated as if it could not be opened.
constexpr int64_t BMS_FILE_LIMIT = int64_t{256} << 20;  // bytes
constexpr int64_t BMS_OBJECT_LIMIT = int64_t{8}
                                     << 20;  // objects and length lines together: about 1 GB of records

// A timed object, in file order.
struct BmsObject {
    int32_t nMeasure;
    int32_t nChannel;  // the two digits in the file, read as hexadecimal
    double dPos;       // position in the measure, 0 <= dPos < 1
    double dTime;      // chart time in ms; 0.0 until Compile has run
    union {
        void* pObject;  // sounds: CDSBuffer or null. Pictures: CDib, or BgaDef with BGADEF_CHANNEL_BASE
        double dValue;  // tempo list: BPM
    };
};

struct BmsLength {  // one channel 2 line
    int32_t nMeasure;
    double dLength;  // 1.0 is four beats
};

struct BmsMeasure {  // entry of the measure table, indexed by measure number
    double dLength;
    double dStart;     // chart time in ms
    double dDuration;  // ms
};

struct BgaDef {                  // one picture definition
    int32_t nX1, nY1, nX2, nY2;  // source rectangle, from the picture's top left
    int32_t nDX, nDY;            // position in the layer; may be negative
    int32_t nBmp;                // image number; 0 also means undefined
};

// An entry of the five playback lists.
struct BmsEvent {
    int32_t nMeasure;
    double dPos;
    int32_t nChannel;  // for bars, and tempos that have been the anchor: the scroll line
    int32_t nTime;     // chart time in whole ms
    int32_t bDone;     // fired or passed
    void* pObject;     // borrowed
    double dValue;     // tempo list: BPM; bar list: measure length
};

// A chart. Load it once into a new object, then compile it once. Owns its arrays and texts; borrows sounds
// and pictures from the slots of the two devices, which must outlive it.
class CBMS {
public:
    CBMS(CDDraw* pDDraw, CDSound* pDSound);
    ~CBMS();
    CBMS(const CBMS&) = delete;
    CBMS& operator=(const CBMS&) = delete;

    void Init();  // sets every field to its default and the devices to null; frees nothing
    void Term();  // frees everything and sets all fields but the devices to their defaults

    // Reads the chart and fills the sound and picture slots. Returns m_nMeasure, or 0 if the file cannot be
    // opened (logged). Adds nMeasureBase to each measure number; callers pass 0. Drops lines that this moves
    // off the measure table.
    int32_t Load(const char* pszPath, int32_t nMeasureBase);
    int32_t Compile();  // 0, or 1 when no object lies after measure 0

    // Each copies one list for playback to *ppList and *pnCount, freeing the previous one. An empty source
    // changes nothing. Free the copy with FreeList.
    void GetBgmList(BmsEvent** ppList, int32_t* pnCount);
    void GetBgaList(BmsEvent** ppList, int32_t* pnCount);
    void GetTempoList(BmsEvent** ppList, int32_t* pnCount);
    void GetNoteList(BmsEvent** ppList, int32_t* pnCount);
    void GetBarList(BmsEvent** ppList, int32_t* pnCount);
    static void FreeList(BmsEvent** ppList, int32_t* pnCount);

    // Steps of Load and Compile.
    int32_t CountChannel(int32_t nMeasure, int32_t nChannel,
                         const char* pszData);  // returns the objects on the line
    void ReadChannel(int32_t nMeasure, int32_t nChannel, const char* pszData);
    int AllocLists();  // 0, or 1 when out of memory
    void LoadImages();
    void LoadSounds();
    int32_t BuildMeasures();
    void CompileTempo();
    void CompileObjects(BmsObject** ppList, int32_t nCount);

    BmsObject* m_pBgm;  // in file order
    int32_t m_nBgm;
    BmsObject** m_ppBgm;  // sorted view
    int32_t m_nBgmFill;   // number stored so far
    BmsLength* m_pLength;
    int32_t m_nLength;
    int32_t m_nLengthFill;
    BmsObject* m_pTempo;
    int32_t m_nTempo;
    BmsObject** m_ppTempo;
    int32_t m_nTempoFill;
    BmsObject* m_pBga;
    int32_t m_nBga;
    BmsObject** m_ppBga;
    int32_t m_nBgaFill;
    BmsObject* m_pNote;
    int32_t m_nNote;
    BmsObject** m_ppNote;
    int32_t m_nNoteFill;
    char* m_pszTitle;
    char* m_pszArtist;
    char* m_pszGenre;
    int32_t m_nPlayer;
    double m_dBPM;  // initial tempo
    int32_t m_nPlayLevel;
    int32_t m_nRank;
    int32_t m_nVolWav;
    int32_t m_nTotal;
    char m_aszWav[BMS_SLOTS][BMS_PATH];
    char m_aszBmp[BMS_SLOTS][BMS_PATH];
    BgaDef m_aBgaDef[BMS_BGADEFS];
    double m_adBPM[BMS_SLOTS];
    BmsMeasure* m_pMeasure;
    int32_t
        m_nMeasure;  // the highest measure used while counting; afterwards that + 2, the size of m_pMeasure
    CDSound* m_pDSound;
    CDDraw* m_pDDraw;
};

// The tempo after a change to dValue. Ignores values that are not positive and finite.
double TempoAfter(double dInForce, double dValue);

// Compares two objects by position in the chart, then by channel. Returns -1, 0 or 1.
int CompareObjects(const BmsObject* pA, const BmsObject* pB);
// Stable: of two equal objects, the later one in the file stays later.
void SortObjects(BmsObject** ppList, int32_t nCount);
