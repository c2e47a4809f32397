// Temporary: lets programs link while parts are still missing.
#include "platform/window.h"
#include "platform/dialog.h"
#include "platform/gdi.h"
#include "platform/directdraw.h"
#include "platform/directsound.h"
#include "platform/mmio.h"
#include "platform/acm.h"
#include "platform/files.h"
#include "chart/text.h"
#include "chart/bms.h"
#include "playback/playback.h"
#include "playback/layout.h"
#include "sound/dsound.h"
#include "sound/dsbuffer.h"
#include "sound/xadec.h"
#include "display/dib.h"
#include "display/ddraw.h"
#include "shell/shell.h"
#include "host/host.h"
__attribute__((weak)) ATOM RegisterClassExA(const WNDCLASSEXA* pClass) { return {}; }
__attribute__((weak)) HWND CreateWindowExA(DWORD dwExStyle, const char* pszClass, const char* pszTitle, DWORD dwStyle, int x, int y, int nWidth, int nHeight, HWND hParent, HMENU hMenu, HINSTANCE hInstance, void* pParam) { return {}; }
__attribute__((weak)) BOOL DestroyWindow(HWND hWnd) { return {}; }
__attribute__((weak)) LRESULT DefWindowProcA(HWND hWnd, UINT nMessage, WPARAM wParam, LPARAM lParam) { return {}; }
__attribute__((weak)) BOOL SetWindowTextA(HWND hWnd, const char* pszText) { return {}; }
__attribute__((weak)) BOOL GetWindowRect(HWND hWnd, RECT* pRect) { return {}; }
__attribute__((weak)) BOOL GetClientRect(HWND hWnd, RECT* pRect) { return {}; }
__attribute__((weak)) BOOL ClientToScreen(HWND hWnd, POINT* pPoint) { return {}; }
__attribute__((weak)) LONG GetWindowLongA(HWND hWnd, int nIndex) { return {}; }
__attribute__((weak)) BOOL AdjustWindowRectEx(RECT* pRect, DWORD dwStyle, BOOL bMenu, DWORD dwExStyle) { return {}; }
__attribute__((weak)) BOOL SetWindowPos(HWND hWnd, HWND hAfter, int x, int y, int nWidth, int nHeight, UINT nFlags) { return {}; }
__attribute__((weak)) BOOL PeekMessageA(MSG* pMsg, HWND hWnd, UINT nMin, UINT nMax, UINT nRemove) { return {}; }
__attribute__((weak)) BOOL GetMessageA(MSG* pMsg, HWND hWnd, UINT nMin, UINT nMax) { return {}; }
__attribute__((weak)) BOOL TranslateMessage(const MSG* pMsg) { return {}; }
__attribute__((weak)) LRESULT DispatchMessageA(const MSG* pMsg) { return {}; }
__attribute__((weak)) LRESULT SendMessageA(HWND hWnd, UINT nMessage, WPARAM wParam, LPARAM lParam) { return {}; }
__attribute__((weak)) BOOL PostMessageA(HWND hWnd, UINT nMessage, WPARAM wParam, LPARAM lParam) { return {}; }
__attribute__((weak)) void PostQuitMessage(int nExitCode) {}
__attribute__((weak)) BOOL EnumWindows(WNDENUMPROC pfnCallback, LPARAM lParam) { return {}; }
__attribute__((weak)) int GetClassNameA(HWND hWnd, char* pszBuffer, int nMax) { return {}; }
__attribute__((weak)) HMENU GetSystemMenu(HWND hWnd, BOOL bRevert) { return {}; }
__attribute__((weak)) BOOL InsertMenuItemA(HMENU hMenu, UINT nItem, BOOL bByPosition, const MENUITEMINFO* pItem) { return {}; }
__attribute__((weak)) HICON LoadIconA(HINSTANCE hInstance, int nId) { return {}; }
__attribute__((weak)) HCURSOR LoadCursorA(HINSTANCE hInstance, int nId) { return {}; }
__attribute__((weak)) int MessageBoxA(HWND hOwner, const char* pszText, const char* pszCaption, UINT nType) { return {}; }
__attribute__((weak)) BOOL GetOpenFileNameA(OPENFILENAME* pOpen) { return {}; }
__attribute__((weak)) void RememberOpenedFile(const char* pszPath) {}
__attribute__((weak)) void AnswerNextOpenDialog(const char* pszPath) {}
__attribute__((weak)) HGDIOBJ GetStockObject(int nObject) { return {}; }
__attribute__((weak)) HBITMAP LoadBitmapA(HINSTANCE hInstance, int nId) { return {}; }
__attribute__((weak)) BOOL DeleteObject(HGDIOBJ hObject) { return {}; }
__attribute__((weak)) HDC GetDC(HWND hWnd) { return {}; }
__attribute__((weak)) int ReleaseDC(HWND hWnd, HDC hDC) { return {}; }
__attribute__((weak)) HDC CreateCompatibleDC(HDC hDC) { return {}; }
__attribute__((weak)) BOOL DeleteDC(HDC hDC) { return {}; }
__attribute__((weak)) HGDIOBJ SelectObject(HDC hDC, HGDIOBJ hObject) { return {}; }
__attribute__((weak)) BOOL BitBlt(HDC hDest, int x, int y, int nWidth, int nHeight, HDC hSource, int nSourceX, int nSourceY, DWORD dwRop) { return {}; }
__attribute__((weak)) void UnregisterDibMemory(const void* pData) {}
__attribute__((weak)) int StretchDIBits(HDC hDC, int nDestX, int nDestY, int nDestWidth, int nDestHeight, int nSourceX, int nSourceY, int nSourceWidth, int nSourceHeight, const void* pBits, const BITMAPINFOHEADER* pInfo, UINT nUsage, DWORD dwRop) { return {}; }
__attribute__((weak)) HRESULT IDirectDrawSurface7::BltFast(DWORD x, DWORD y, IDirectDrawSurface7* pSource, const RECT* pSourceRect, DWORD dwFlags) { return {}; }
__attribute__((weak)) HRESULT IDirectDrawSurface7::Blt(const RECT* pDestRect, IDirectDrawSurface7* pSource, const RECT* pSourceRect, DWORD dwFlags, const DDBLTFX* pFx) { return {}; }
__attribute__((weak)) HRESULT IDirectDrawSurface7::GetDC(HDC* phDC) { return {}; }
__attribute__((weak)) HRESULT IDirectDrawSurface7::ReleaseDC(HDC hDC) { return {}; }
__attribute__((weak)) HRESULT IDirectDrawSurface7::GetSurfaceDesc(DDSURFACEDESC2* pDesc) { return {}; }
__attribute__((weak)) HRESULT IDirectDrawSurface7::SetColorKey(DWORD dwFlags, const DDCOLORKEY* pKey) { return {}; }
__attribute__((weak)) DWORD IDirectDrawSurface7::Release() { return {}; }
__attribute__((weak)) HRESULT IDirectDraw7::SetCooperativeLevel(HWND hWnd, DWORD dwFlags) { return {}; }
__attribute__((weak)) HRESULT IDirectDraw7::CreateSurface(const DDSURFACEDESC2* pDesc, IDirectDrawSurface7** ppSurface, void* pOuter) { return {}; }
__attribute__((weak)) DWORD IDirectDraw7::Release() { return {}; }
__attribute__((weak)) HRESULT DirectDrawCreateEx(const GUID* pDriver, IDirectDraw7** ppDD, const GUID& iid, void* pOuter) { return {}; }
__attribute__((weak)) HRESULT IDirectSoundBuffer::GetCaps(DSBCAPS* pCaps) { return {}; }
__attribute__((weak)) HRESULT IDirectSoundBuffer::GetCurrentPosition(DWORD* pdwPlay, DWORD* pdwWrite) { return {}; }
__attribute__((weak)) HRESULT IDirectSoundBuffer::GetStatus(DWORD* pdwStatus) { return {}; }
__attribute__((weak)) HRESULT IDirectSoundBuffer::Lock(DWORD dwOffset, DWORD dwBytes, void** ppPart1, DWORD* pdwPart1, void** ppPart2, DWORD* pdwPart2, DWORD dwFlags) { return {}; }
__attribute__((weak)) HRESULT IDirectSoundBuffer::Unlock(void* pPart1, DWORD dwPart1, void* pPart2, DWORD dwPart2) { return {}; }
__attribute__((weak)) HRESULT IDirectSoundBuffer::Play(DWORD dwReserved1, DWORD dwReserved2, DWORD dwFlags) { return {}; }
__attribute__((weak)) HRESULT IDirectSoundBuffer::Stop() { return {}; }
__attribute__((weak)) HRESULT IDirectSoundBuffer::SetCurrentPosition(DWORD dwPosition) { return {}; }
__attribute__((weak)) HRESULT IDirectSoundBuffer::SetVolume(LONG nVolume) { return {}; }
__attribute__((weak)) HRESULT IDirectSoundBuffer::SetFormat(const WAVEFORMATEX* pFormat) { return {}; }
__attribute__((weak)) HRESULT IDirectSoundBuffer::Restore() { return {}; }
__attribute__((weak)) DWORD IDirectSoundBuffer::AddRef() { return {}; }
__attribute__((weak)) DWORD IDirectSoundBuffer::Release() { return {}; }
__attribute__((weak)) HRESULT IDirectSound::SetCooperativeLevel(HWND hWnd, DWORD dwLevel) { return {}; }
__attribute__((weak)) HRESULT IDirectSound::CreateSoundBuffer(const DSBUFFERDESC* pDesc, IDirectSoundBuffer** ppBuffer, void* pOuter) { return {}; }
__attribute__((weak)) HRESULT IDirectSound::Compact() { return {}; }
__attribute__((weak)) DWORD IDirectSound::AddRef() { return {}; }
__attribute__((weak)) DWORD IDirectSound::Release() { return {}; }
__attribute__((weak)) HRESULT DirectSoundCreate(const void* pDevice, IDirectSound** ppDS, void* pOuter) { return {}; }
__attribute__((weak)) HMMIO mmioOpenA(const char* pszName, MMIOINFO* pInfo, DWORD dwFlags) { return {}; }
__attribute__((weak)) MMRESULT mmioClose(HMMIO hMmio, UINT nFlags) { return {}; }
__attribute__((weak)) MMRESULT mmioDescend(HMMIO hMmio, MMCKINFO* pChunk, const MMCKINFO* pParent, UINT nFlags) { return {}; }
__attribute__((weak)) MMRESULT mmioAscend(HMMIO hMmio, MMCKINFO* pChunk, UINT nFlags) { return {}; }
__attribute__((weak)) LONG mmioRead(HMMIO hMmio, void* pBuffer, LONG nBytes) { return {}; }
__attribute__((weak)) LONG mmioSeek(HMMIO hMmio, LONG nOffset, int nOrigin) { return {}; }
__attribute__((weak)) MMRESULT acmFormatSuggest(AcmDriver* hDriver, WAVEFORMATEX* pSource, WAVEFORMATEX* pDest, DWORD cbDest, DWORD dwFlags) { return {}; }
__attribute__((weak)) MMRESULT acmStreamOpen(HACMSTREAM* phStream, AcmDriver* hDriver, WAVEFORMATEX* pSource, WAVEFORMATEX* pDest, WAVEFILTER* pFilter, uintptr_t dwCallback, uintptr_t dwInstance, DWORD dwFlags) { return {}; }
__attribute__((weak)) MMRESULT acmStreamSize(HACMSTREAM hStream, DWORD cbInput, DWORD* pcbOutput, DWORD dwFlags) { return {}; }
__attribute__((weak)) MMRESULT acmStreamPrepareHeader(HACMSTREAM hStream, ACMSTREAMHEADER* pHeader, DWORD dwFlags) { return {}; }
__attribute__((weak)) MMRESULT acmStreamConvert(HACMSTREAM hStream, ACMSTREAMHEADER* pHeader, DWORD dwFlags) { return {}; }
__attribute__((weak)) MMRESULT acmStreamUnprepareHeader(HACMSTREAM hStream, ACMSTREAMHEADER* pHeader, DWORD dwFlags) { return {}; }
__attribute__((weak)) MMRESULT acmStreamClose(HACMSTREAM hStream, DWORD dwFlags) { return {}; }
__attribute__((weak)) FileStream* FileOpen(const char* pszPath, const char* pszMode) { return {}; }
__attribute__((weak)) size_t FileRead(void* pBuffer, size_t nSize, size_t nCount, FileStream* pFile) { return {}; }
__attribute__((weak)) int FileSeek(FileStream* pFile, int64_t nOffset, int nWhence) { return {}; }
__attribute__((weak)) int64_t FileTell(FileStream* pFile) { return {}; }
__attribute__((weak)) int FileClose(FileStream* pFile) { return {}; }
__attribute__((weak)) void FileForgetListings() {}
__attribute__((weak)) int HasHeadI(const char* pszText, const char* pszHead) { return {}; }
__attribute__((weak)) void CutLF(char* pszText) {}
__attribute__((weak)) void CutTab(char* pszText) {}
__attribute__((weak)) int IsDigit(unsigned char c) { return {}; }
__attribute__((weak)) int IsBase36(unsigned char c) { return {}; }
__attribute__((weak)) int32_t GetMeasureNo(const char* pszText) { return {}; }
__attribute__((weak)) void RemoveUnderscore(char* pszText) {}
__attribute__((weak)) int IsSJisLead(unsigned char c) { return {}; }
__attribute__((weak)) void AddFileName(char* pszDir, int nDirSize, const char* pszName) {}
__attribute__((weak)) void GetDirName(const char* pszPath, char* pszDir, int nDirSize) {}
__attribute__((weak)) int32_t ObjNoToInt(const char* pszText) { return {}; }
__attribute__((weak)) int32_t Base36ToInt(const char* pszText) { return {}; }
__attribute__((weak)) int32_t ReadDecimal(const char* pszText) { return {}; }
__attribute__((weak)) double ReadFloat(const char* pszText) { return {}; }
__attribute__((weak)) int32_t ReadHexPair(const char* pszText) { return {}; }
__attribute__((weak)) CBMS::CBMS(CDDraw* pDDraw, CDSound* pDSound) {}
__attribute__((weak)) CBMS::~CBMS() {}
__attribute__((weak)) void CBMS::Init() {}
__attribute__((weak)) void CBMS::Term() {}
__attribute__((weak)) int32_t CBMS::Load(const char* pszPath, int32_t nMeasureBase) { return {}; }
__attribute__((weak)) int32_t CBMS::Compile() { return {}; }
__attribute__((weak)) void CBMS::GetBgmList(BmsEvent** ppList, int32_t* pnCount) {}
__attribute__((weak)) void CBMS::GetBgaList(BmsEvent** ppList, int32_t* pnCount) {}
__attribute__((weak)) void CBMS::GetTempoList(BmsEvent** ppList, int32_t* pnCount) {}
__attribute__((weak)) void CBMS::GetNoteList(BmsEvent** ppList, int32_t* pnCount) {}
__attribute__((weak)) void CBMS::GetBarList(BmsEvent** ppList, int32_t* pnCount) {}
__attribute__((weak)) void CBMS::FreeList(BmsEvent** ppList, int32_t* pnCount) {}
__attribute__((weak)) int32_t CBMS::CountChannel(int32_t nMeasure, int32_t nChannel, const char* pszData) { return {}; }
__attribute__((weak)) void CBMS::ReadChannel(int32_t nMeasure, int32_t nChannel, const char* pszData) {}
__attribute__((weak)) int32_t CBMS::BuildMeasures() { return {}; }
__attribute__((weak)) void CBMS::CompileTempo() {}
__attribute__((weak)) void CBMS::CompileObjects(BmsObject** ppList, int32_t nCount) {}
__attribute__((weak)) int CompareObjects(const BmsObject* pA, const BmsObject* pB) { return {}; }
__attribute__((weak)) void SortObjects(BmsObject** ppList, int32_t nCount) {}
__attribute__((weak)) BmsEvent* g_pBgmList;
__attribute__((weak)) int32_t g_nBgmCount, g_nBgmCursor;
__attribute__((weak)) BmsEvent* g_pBgaList;
__attribute__((weak)) int32_t g_nBgaCount, g_nBgaCursor;
__attribute__((weak)) BmsEvent* g_pTempoList;
__attribute__((weak)) int32_t g_nTempoCount, g_nTempoCursor;
__attribute__((weak)) BmsEvent* g_pNoteList;
__attribute__((weak)) int32_t g_nNoteCount, g_nNoteCursor;
__attribute__((weak)) BmsEvent* g_pBarList;
__attribute__((weak)) int32_t g_nBarCount, g_nBarCursor;
__attribute__((weak)) BmsEvent* g_pAnchor;
__attribute__((weak)) double g_dBPM;
__attribute__((weak)) int32_t g_nPlayers;
__attribute__((weak)) double g_dPixelsPerSec;
__attribute__((weak)) uint32_t g_dwStartTime;
__attribute__((weak)) uint32_t g_dwNowTime;
__attribute__((weak)) int32_t g_dwSeekTime;
__attribute__((weak)) void InitPlayLists() {}
__attribute__((weak)) void FreePlayLists() {}
__attribute__((weak)) int32_t SeekMeasure(int32_t nMeasure, int32_t* pnTime) { return {}; }
__attribute__((weak)) void PlayFrame() {}
__attribute__((weak)) void FireBga(const BmsEvent* pEvent) {}
__attribute__((weak)) const Lane* GetLane(int32_t nChannel) { return {}; }
__attribute__((weak)) void DrawSpriteAtlas(uint32_t* pPixels) {}
__attribute__((weak)) void DrawSkin(uint32_t* pPixels) {}
__attribute__((weak)) void DrawIcon(uint32_t* pPixels) {}
__attribute__((weak)) HINSTANCE GetProgramModule() { return {}; }
__attribute__((weak)) CDSound::CDSound() {}
__attribute__((weak)) CDSound::~CDSound() {}
__attribute__((weak)) int CDSound::Init(HWND hWnd, int bHighQuality) { return {}; }
__attribute__((weak)) int CDSound::CreateSilentBuffer(DWORD nSeconds) { return {}; }
__attribute__((weak)) int CDSound::PlaySilentBuffer() { return {}; }
__attribute__((weak)) int CDSound::StopSilentBuffer() { return {}; }
__attribute__((weak)) int CDSound::Compact() { return {}; }
__attribute__((weak)) int CDSound::Term() { return {}; }
__attribute__((weak)) CDSBuffer::CDSBuffer(IDirectSound* pDS) {}
__attribute__((weak)) CDSBuffer::CDSBuffer() {}
__attribute__((weak)) CDSBuffer::~CDSBuffer() {}
__attribute__((weak)) void CDSBuffer::SetFileName(const char* pszName) {}
__attribute__((weak)) void CDSBuffer::SetStreamSeconds(DWORD nSeconds) {}
__attribute__((weak)) IDirectSoundBuffer* CDSBuffer::GetDSBuffer() { return {}; }
__attribute__((weak)) int CDSBuffer::Load(int bStream) { return {}; }
__attribute__((weak)) int CDSBuffer::LoadWav(int bStream) { return {}; }
__attribute__((weak)) int CDSBuffer::LoadXA(int bStream) { return {}; }
__attribute__((weak)) int CDSBuffer::CreateDSB(DWORD nBytes) { return {}; }
__attribute__((weak)) int CDSBuffer::Term() { return {}; }
__attribute__((weak)) int CDSBuffer::Play() { return {}; }
__attribute__((weak)) int CDSBuffer::PlayCurrent(int bLoop, int nPlayParam) { return {}; }
__attribute__((weak)) int CDSBuffer::Stop() { return {}; }
__attribute__((weak)) int CDSBuffer::Rewind() { return {}; }
__attribute__((weak)) int CDSBuffer::IsPlaying() { return {}; }
__attribute__((weak)) int CDSBuffer::Pause() { return {}; }
__attribute__((weak)) void CDSBuffer::Resume() {}
__attribute__((weak)) void CDSBuffer::ClearPaused() {}
__attribute__((weak)) int CDSBuffer::FadeStart() { return {}; }
__attribute__((weak)) int CDSBuffer::FadeStep() { return {}; }
__attribute__((weak)) int CDSBuffer::StreamPlay() { return {}; }
__attribute__((weak)) int CDSBuffer::StreamUpdateWav(DWORD nEndPos, DWORD nMinPos) { return {}; }
__attribute__((weak)) int CDSBuffer::StreamUpdateResetWav() { return {}; }
__attribute__((weak)) int CDSBuffer::StreamUpdateXA(DWORD nEndPos, DWORD nMinPos) { return {}; }
__attribute__((weak)) int CDSBuffer::StreamUpdateResetXA() { return {}; }
__attribute__((weak)) void* xaDecodeOpen(const BYTE* pHeader, WAVEFORMATEX* pFormat) { return {}; }
__attribute__((weak)) int xaDecodeSize(void* hXa, DWORD nLength, DWORD* pnPcm) { return {}; }
__attribute__((weak)) int xaDecodeConvert(void* hXa, XaConvertBlock* pBlock) { return {}; }
__attribute__((weak)) int xaDecodeClose(void* hXa) { return {}; }
__attribute__((weak)) CDib::CDib() {}
__attribute__((weak)) CDib::~CDib() {}
__attribute__((weak)) int CDib::Load(const char* pszFile) { return {}; }
__attribute__((weak)) void CDib::Free() {}
__attribute__((weak)) int32_t CDib::GetWidth() const { return {}; }
__attribute__((weak)) int32_t CDib::GetHeight() const { return {}; }
__attribute__((weak)) int CDib::Draw(HDC hDC, const RECT* pDest, const RECT* pSource) { return {}; }
__attribute__((weak)) int CDib::Draw(HDC hDC, const RECT* pDest) { return {}; }
__attribute__((weak)) int CDib::Draw(HDC hDC, int x, int y, int nWidth, int nHeight) { return {}; }
__attribute__((weak)) CDDraw::CDDraw() {}
__attribute__((weak)) CDDraw::~CDDraw() {}
__attribute__((weak)) int CDDraw::Init(HWND hWnd, int x, int y, int nWidth, int nHeight) { return {}; }
__attribute__((weak)) int CDDraw::FitWindow(HWND hWnd, int x, int y, int nWidth, int nHeight) { return {}; }
__attribute__((weak)) int CDDraw::CreateParts(int nParts, int nWidth, int nHeight) { return {}; }
__attribute__((weak)) int CDDraw::LoadParts(HBITMAP hBitmap, int nWidth, int nHeight, int nParts) { return {}; }
__attribute__((weak)) HRESULT CDDraw::ClearParts(int nParts, DWORD dwColor) { return {}; }
__attribute__((weak)) HRESULT CDDraw::BltBack(int x, int y, const RECT* pRect, int nParts) { return {}; }
__attribute__((weak)) HRESULT CDDraw::BltBackKey(int x, int y, const RECT* pRect, int nParts) { return {}; }
__attribute__((weak)) int CDDraw::Present() { return {}; }
__attribute__((weak)) int CDDraw::LoadDib(const char* pszFile, int nSlot) { return {}; }
__attribute__((weak)) int CDDraw::FreeDib(int nSlot) { return {}; }
__attribute__((weak)) int CDDraw::DrawDib(CDib* pDib, const RECT* pDest, const RECT* pSource, int nParts) { return {}; }
__attribute__((weak)) int CDDraw::DrawDibSlot(int nSlot, const RECT* pDest, const RECT* pSource, int nParts) { return {}; }
__attribute__((weak)) HINSTANCE g_hInstance;
__attribute__((weak)) HWND g_hWnd;
__attribute__((weak)) CDSound* g_pDSound;
__attribute__((weak)) CDDraw* g_pDDraw;
__attribute__((weak)) CBMS* g_pBMS;
__attribute__((weak)) int g_bHost;
__attribute__((weak)) int32_t g_nStartMeasure;
__attribute__((weak)) float g_fSpeed;
__attribute__((weak)) TIMECAPS g_TimeCaps;
__attribute__((weak)) int g_bPlaying;
__attribute__((weak)) int g_bPaused;
__attribute__((weak)) uint32_t g_dwPauseTime;
__attribute__((weak)) int WinMain(HINSTANCE hInstance, HINSTANCE hPrevInstance, char* lpCmdLine, int nCmdShow) { return {}; }
__attribute__((weak)) LRESULT WindowProc(HWND hWnd, UINT nMessage, WPARAM wParam, LPARAM lParam) { return {}; }
__attribute__((weak)) HWND CreateMainWindow(HINSTANCE hInstance, int nIcon, const char* pszTitle, const char* pszClass, int x, int y) { return {}; }
__attribute__((weak)) BOOL SetChartTitle(HWND hWnd, const char* pszPrefix, const char* pszGenre, const char* pszText1, const char* pszTitle, const char* pszText2, const char* pszArtist, const char* pszEnd) { return {}; }
__attribute__((weak)) void Shutdown() {}
__attribute__((weak)) void PauseChart(int bUser) {}
__attribute__((weak)) void ResumeChart(int bUser) {}
__attribute__((weak)) void RestartChart() {}
__attribute__((weak)) void ReloadChart(HWND hWnd) {}
__attribute__((weak)) BOOL AskChartFile(HWND hOwner, HINSTANCE hInstance, char* szFile) { return {}; }
__attribute__((weak)) void StripQuotes(char* szFile) {}
namespace host {
__attribute__((weak)) bool HasDisplay() { return true; }
__attribute__((weak)) bool OpenWindow(const WindowRequest& request) { return {}; }
__attribute__((weak)) void CloseWindow() {}
__attribute__((weak)) WindowPlace GetWindowPlace() { return {}; }
__attribute__((weak)) void PlaceWindow(int x, int y, int width, int height) {}
__attribute__((weak)) void KeepOnTop() {}
__attribute__((weak)) void SetTitle(const std::string& title) {}
__attribute__((weak)) void Minimize() {}
__attribute__((weak)) void GetDesktopSize(int* width, int* height) {}
__attribute__((weak)) void ShowPixels(int x, int y, int width, int height, const uint32_t* pixels, int stride) {}
__attribute__((weak)) bool PollEvent(Event* event) { return {}; }
__attribute__((weak)) void WaitEvent(int milliseconds) {}
__attribute__((weak)) std::string ChooseFile(const std::string& title, const std::string& folder, const FileFilter& filter, Pump pump) { return {}; }
__attribute__((weak)) int PopupMenu(const std::vector<MenuItem>& items, int x, int y, Pump pump) { return {}; }
__attribute__((weak)) uint64_t Nanoseconds() { return {}; }
__attribute__((weak)) void SleepMilliseconds(uint32_t milliseconds) {}
__attribute__((weak)) bool OpenSound(int rate, MixCallback callback, void* user) { return {}; }
__attribute__((weak)) void CloseSound() {}
__attribute__((weak)) bool AnnounceCopy(const std::string& class_name) { return {}; }
__attribute__((weak)) void WithdrawCopy() {}
__attribute__((weak)) bool ListCopies(std::vector<Copy>* copies) { return {}; }
__attribute__((weak)) bool PostToCopy(uint64_t id, uint32_t message, int64_t wparam, int64_t lparam) { return {}; }
__attribute__((weak)) void DebugText(const char* bytes, size_t count) {}
__attribute__((weak)) void Shutdown() {}
}
