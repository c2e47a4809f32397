// Lines that define rectangles of pictures.
#include <cstring>

#include "chart/text.h"
#include "check/line_checker.h"

namespace check {
namespace {

constexpr int kIdColumn = 4, kPictureColumn = 7, kNumbersColumn = 10;

}  // namespace

// Reads as the player does: each number begins after the next blank.
void LineChecker::CheckBgaNumbers(const Line& line) {
    const char* p = line.text + kNumbersColumn;
    int32_t numbers[6] = {};
    int found = 0;
    for (; found < 6; ++found) {
        if (*p == ' ' && found < 5) {
            return findings_->Add(
                line.At(p - line.text), "bga-blanks",
                "two blanks in a row: the player reads the next number twice and shifts the "
                "others; leave one blank");
        }
        numbers[found] = ReadDecimal(p);
        p = std::strchr(p, ' ');
        if (!p) break;
        ++p;
    }
    if (found < 5) {
        findings_->Add(line.place, "bga-numbers", [&] {
            return "the line has only " + CountOf(found + 1, "number") +
                   " of six after its picture, and the player reads the others as 0; write x1 y1 x2 y2 dx dy";
        });
    }
    const auto longer = [](int32_t from, int32_t to) { return int64_t{to} - (from < 0 ? 0 : from) > 256; };
    if (longer(numbers[0], numbers[2]) || longer(numbers[1], numbers[3])) {
        findings_->Add(line.place, "bga-clipped",
                       "the rectangle is larger than 256 by 256; the player cuts it off at the right and the "
                       "bottom");
    }
}

void LineChecker::DefineBga(const Line& line, const Reading& reading) {
    if (!IsId(line.text + kIdColumn)) CheckId(line, kIdColumn, "rectangle", reading.number);
    CheckId(line, kPictureColumn, "picture", reading.bga.nBmp);
    CheckBgaNumbers(line);
    Definition& definition = tables_->bgas[static_cast<size_t>(reading.number)];
    if (definition.place.line != 0) {
        findings_->Add(line.place, "defined-twice", [&] {
            return "line " + std::to_string(definition.place.line) + " also defines rectangle " +
                   IdOf(reading.number) + "; the player uses this one";
        });
    }
    if (reading.number == 0) {
        findings_->Add(line.At(kIdColumn), "zero-number",
                       "no object can use rectangle 00; give it another number");
    }
    const BgaDef& bga = reading.bga;
    if (bga.nBmp == 0) {
        findings_->Add(line.At(kPictureColumn), "zero-number",
                       "the player ignores rectangles of picture 00; give the picture another number");
    } else if (bga.nX2 <= bga.nX1 || bga.nY2 <= bga.nY1) {
        findings_->Add(line.place, "bga-empty",
                       "the rectangle has no width or no height, so the player blanks the layer; the numbers "
                       "are left, top, right, bottom, and the x and y at which it is shown");
    }
    definition.place = line.place;
}

}  // namespace check
