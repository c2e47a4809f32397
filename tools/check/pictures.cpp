// The pictures of a chart.
#include <cstring>

#include "check/files.h"
#include "check/subject.h"
#include "display/dib.h"
#include "platform/graphics/dib_format.h"
#include "playback/layout.h"

namespace check {
namespace {

constexpr int kPixelOffsetAt = 10;  // in the file header, which the player never reads

// Objects that show the picture itself or a rectangle of it.
int64_t CountUses(const Subject& subject, int32_t number) {
    int64_t uses = 0;
    for (int32_t i = 1; i < BMS_BGADEFS; ++i) {
        const int32_t source = subject.chart->m_aBgaDef[i].nBmp;
        if (source == 0 ? i == number : source == number)
            uses += subject.tables.picture_uses[static_cast<size_t>(i)].objects;
    }
    return uses;
}

std::string WhyUnreadable(const std::string& found, bool left_out) {
    if (left_out) return "it is damaged, or the chart's pictures take too much together";
    const char* kind = KindOf(found);
    if (kind && std::strcmp(kind, kBmpFile) != 0) return std::string("it is ") + kind;
    const int64_t size = SizeOf(found);
    if (size < 54) return "its " + std::to_string(size) + " bytes are too few for a picture";
    return kind ? "its header is damaged" : "it is not a BMP file";
}

void CheckShape(Subject* subject, const Definition& definition, const CDib& dib, const PictureFile& file,
                bool converted) {
    const auto add = [&](Code code, Severity severity, const std::string& sentence) {
        subject->findings.Add(definition.NamePlace(), code, severity,
                              Quote(definition.name) + " " + sentence);
    };
    DibPicture picture;
    if (!ReadDibPicture(dib.m_pInfoHeader, dib.m_pBits, &picture)) {
        return add(
            "picture-format", kError,
            "has a depth, a compression or a size that the player cannot draw, so its layer stays blank; "
            "save it as a plain 24-bit BMP");
    }
    DWORD offset;
    std::memcpy(&offset, dib.m_pData + kPixelOffsetAt, sizeof offset);
    const int64_t taken = picture.pBits - dib.m_pData;
    if (offset >= 26 && offset < static_cast<DWORD>(dib.m_nDataSize) && taken != offset) {
        add("picture-shifted", kWarning,
            "has its pixels at byte " + std::to_string(offset) + ", but the player reads them from byte " +
                std::to_string(taken) +
                ", directly after header and palette, so the picture looks shifted; save it as a plain BMP");
    }
    if (converted) return;
    const bool runs = picture.nCompression == BI_RLE4 || picture.nCompression == BI_RLE8;
    const int64_t rows =
        static_cast<int64_t>(static_cast<uint64_t>(picture.pEnd - picture.pBits) / picture.nRowBytes);
    if (!runs && rows < picture.nHeight) {
        add("picture-cut", kWarning,
            "has only " + std::to_string(rows) + " of its " + std::to_string(picture.nHeight) +
                " rows, and the player leaves the others blank; save it again");
    }
    if (runs || file.bits == 16 || file.bits == 32 || picture.nCompression == BI_BITFIELDS)
        add("picture-format", kNote, "is a kind of BMP that only some players show");
}

void CheckLoaded(Subject* subject, const Definition& definition, const CDib& dib, PictureFile* file) {
    const bool core = dib.m_pInfoHeader->biSize < 40;
    file->bits = core ? dib.m_pCoreHeader->bcBitCount : dib.m_pInfoHeader->biBitCount;
    file->width = dib.GetWidth();
    file->height = dib.GetHeight() < 0 ? static_cast<int>(-int64_t{dib.GetHeight()}) : dib.GetHeight();
    file->bytes = dib.m_nDataSize;
    CheckSpelling(CompareSpelling(definition.name, file->found), definition, file->found, MediaKind::kPicture,
                  &subject->findings);
    CheckShape(subject, definition, dib, *file, IsConverted(file->found));
    const bool whole = subject->chart->m_aBgaDef[file->number].nBmp == 0 &&
                       subject->tables.picture_uses[static_cast<size_t>(file->number)].objects > 0;
    if (whole && (file->width > LAYER_SIZE || file->height > LAYER_SIZE)) {
        subject->findings.Add(definition.NamePlace(), "picture-large", [&] {
            return Quote(definition.name) + " is " + std::to_string(file->width) + " by " +
                   std::to_string(file->height) + "; the player shows only its upper left 256 by 256";
        });
    }
}

void CheckPicture(Subject* subject, const Definition& definition, const CDib* dib, PictureFile* file) {
    const int64_t uses = CountUses(*subject, file->number);
    const std::string cost = uses > 0 ? "; " + ItsObjects(uses, "blank", "the layer") : std::string();
    file->loaded = dib != nullptr;
    file->found = FindOpened(definition.path, MediaKind::kPicture, file->loaded);
    if (dib) return CheckLoaded(subject, definition, *dib, file);
    const bool missing = file->found.empty();
    const Code code = missing ? Code("picture-missing") : "picture-unreadable";
    subject->findings.Add(definition.NamePlace(), code, uses > 0 ? kError : kNote, [&] {
        return missing ? Quote(definition.name) + WhyMissing(definition, MediaKind::kPicture) + cost
                       : Quote(definition.name) +
                             " cannot be shown: " + WhyUnreadable(file->found, subject->pictures_left_out) +
                             HintAboutKind(definition.name, MediaKind::kPicture) + cost;
    });
}

}  // namespace

void CheckPictures(Subject* subject) {
    for (int32_t i = 0; i < BMS_SLOTS; ++i) {
        const Definition& definition = subject->tables.pictures[static_cast<size_t>(i)];
        if (definition.place.line == 0 || definition.made) continue;
        PictureFile file;
        file.number = i;
        CheckPicture(subject, definition, subject->display.m_apDib[i], &file);
        subject->pictures.push_back(std::move(file));
    }
}

}  // namespace check
