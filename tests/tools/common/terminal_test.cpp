// Text from outside on its way to a terminal.
#include <gtest/gtest.h>

#include "common/terminal.h"

namespace {

TEST(CleanText, KeepsTextAndEscapesWhatATerminalObeys) {
    const struct {
        std::string_view bytes, clean;
    } rows[] = {
        {"plain \\ text", "plain \\ text"},
        {"\x1B]0;x\a\r\n\tq\x7F", "\\x1B]0;x\\x07\\x0D\\x0A\\x09q\\x7F"},
        {std::string_view("a\0b", 3), "a\\x00b"},
        {"譜面 é 🎹", "譜面 é 🎹"},
        {"\xC2\x9B\x31m", "\\u009B1m"},                  // C1
        {"\xE2\x80\xAE\xE2\x80\xA8", "\\u202E\\u2028"},  // direction, line separator
        {"\x95\x88\x96\xCA\\\xB1.wav", "譜面\\ｱ.wav"},   // CP932
        {"\xC3\xA9\xFF", "é\\xFF"},                      // neither: bytes without a meaning never pass
        {"\xED\xA0\x80\xC0\x9B\xF5", "\\xED\\xA0\\x80\\xC0\\x9B\\xF5"},  // surrogate, overlong
    };
    for (const auto& row : rows) EXPECT_EQ(tools::CleanText(row.bytes), row.clean);
}

}  // namespace
