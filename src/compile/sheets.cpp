#include "compile/sheets.h"

#include <algorithm>
#include <cstring>
#include <new>

#include "display/dib.h"
#include "platform/graphics/dib_format.h"
#include "platform/substitutes/picture.h"

namespace compile {
namespace {

using dialect::kCellSize;
using dialect::kSheetSide;

constexpr int kSide = kSheetSide * kCellSize;  // pixels
constexpr size_t kLeastBmp = 54;

// Draws the picture as the player does into an empty layer: at the top, in the middle or, when it is wider,
// from its left.
void DrawPicture(const DibPicture& picture, DWORD* cell) {
    const int64_t width = std::min<int64_t>(picture.nWidth, kCellSize),
                  height = std::min<int64_t>(picture.nHeight, kCellSize);
    const DibWindow window = {cell + (picture.nWidth > kCellSize ? 0 : kCellSize / 2 - picture.nWidth / 2),
                              kSide,
                              0,
                              0,
                              width,
                              height};
    if (picture.nCompression == BI_RLE8 || picture.nCompression == BI_RLE4)
        DrawDibRuns(picture, window);
    else
        DrawDibRows(picture, window);
}

void DrawCell(const std::string& name, Costs* costs, DWORD* cell) {
    const SharedBytes file = LoadFile(name, MediaKind::kPicture, kMaxPictureFile, {}, costs);
    if (!file || file->Size() < kLeastBmp || std::memcmp(file->Data(), "BM", 2) != 0) return;
    CDib dib;  // its copy: finding the pixels mends the header
    dib.m_pData = new (std::nothrow) BYTE[file->Size()];
    if (!dib.m_pData) return;
    dib.m_nDataSize = static_cast<int32_t>(file->Size());
    std::memcpy(dib.m_pData, file->Data(), file->Size());
    DibPicture picture;
    if (RegisterDibMemory(dib.m_pData, file->Size()) && dib.SetPointers() &&
        ReadDibPicture(dib.m_pInfoHeader, dib.m_pBits, &picture))
        DrawPicture(picture, cell);
}

bool MakeSheet(const std::vector<std::string>& names, const MayHold& may_hold, Costs* costs, ByteBlock* bmp) {
    constexpr size_t kPixels = size_t{kSide} * kSide;
    if (may_hold && !may_hold(kPixels * 7)) return false;
    std::vector<DWORD> pixels(kPixels);
    for (size_t i = 0; i < names.size(); ++i) {
        const size_t x = i % kSheetSide * kCellSize, y = i / kSheetSide * kCellSize;
        DrawCell(names[i], costs, pixels.data() + y * kSide + x);
    }
    const BmpRows rows = StartBmp(kSide, kSide, 24, bmp);
    if (!rows.pBottom) return false;
    for (size_t y = 0; y < kSide; ++y) {
        BYTE* to = rows.pBottom + (kSide - 1 - y) * rows.nStride;
        const DWORD* from = pixels.data() + y * kSide;
        for (size_t x = 0; x < kSide; ++x) std::memcpy(to + 3 * x, from + x, 3);
    }
    return true;
}

}  // namespace

FileMaker SheetMaker(const std::string& folder, const dialect::Sheet& sheet, std::shared_ptr<Costs> costs) {
    std::vector<std::string> names;
    for (const std::string& cell : sheet.cells) names.push_back(folder + cell);
    return [names = std::move(names), costs = std::move(costs)](const MayHold& may_hold, ByteBlock* bmp) {
        try {
            return MakeSheet(names, may_hold, costs.get(), bmp);
        } catch (const std::bad_alloc&) {
            return false;
        }
    };
}

}  // namespace compile
