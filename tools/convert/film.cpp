#include "convert/film.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "common/program.h"
#include "platform/substitutes/picture.h"

namespace convert {
namespace {

constexpr size_t kSide = size_t{dialect::kSheetSide} * dialect::kCellSize;  // pixels
constexpr size_t kSheetBytes = kSide * kSide * 3;
constexpr double kLongest = 86400;  // s
constexpr double kMostRate = 240;   // frames in a second

// A stranger's file: it is read as a film and leads to no other file and no network. Pictures beyond 64
// million pixels are refused.
const char* const kGuards[] = {"-protocol_whitelist", "file",
                               "-format_whitelist",   "asf,avi,flv,matroska,mov,mpeg,mpegts,mpegvideo,ogg",
                               "-max_pixels",         "67108864"};

std::vector<std::string> Line(const char* program) {
    std::vector<std::string> line = {tools::FindProgram(program), "-v", "fatal"};
    line.insert(line.end(), std::begin(kGuards), std::end(kGuards));
    return line;
}

// The value of the last line `key=value` whose value is a number above 0, or of a fraction; otherwise 0.
double ValueOf(const std::string& text, const std::string& key) {
    double found = 0;
    for (size_t at = 0; at < text.size();) {
        const size_t end = std::min(text.find('\n', at), text.size());
        if (text.compare(at, key.size() + 1, key + "=") == 0) {
            char* rest = nullptr;
            double value = std::strtod(text.c_str() + at + key.size() + 1, &rest);
            if (*rest == '/') value /= std::strtod(rest + 1, nullptr);
            if (value > 0 && value < 1e9) found = value;
        }
        at = end + 1;
    }
    return found;
}

bool ToBmp(const std::string& pixels, ByteBlock* bmp) {
    const BmpRows rows = StartBmp(static_cast<int>(kSide), static_cast<int>(kSide), 24, bmp);
    if (!rows.pBottom) return false;
    for (size_t y = 0; y < kSide; ++y)
        std::memcpy(rows.pBottom + (kSide - 1 - y) * rows.nStride, pixels.data() + y * kSide * 3, kSide * 3);
    return true;
}

std::string Filters(const dialect::Film& film) {
    char rate[64];
    std::snprintf(rate, sizeof rate, "fps=fps=%.6f:start_time=0,", film.rate);
    const std::string cell = std::to_string(dialect::kCellSize), side = std::to_string(dialect::kSheetSide);
    return rate + ("scale=" + cell + ":" + cell) +
           ":force_original_aspect_ratio=decrease:flags=area,pad=" + cell + ":" + cell +
           ":(ow-iw)/2:(oh-ih)/2,setsar=1,tpad=stop=-1:stop_mode=clone,tile=" + side + "x" + side;
}

}  // namespace

bool MakeBlackSheet(ByteBlock* bmp) {
    return ToBmp(std::string(kSheetBytes, '\0'), bmp);
}

bool HasFfmpeg() {
    return !tools::FindProgram("ffmpeg").empty() && !tools::FindProgram("ffprobe").empty();
}

dialect::FilmLook LookAtFilm(const std::string& path, std::string* why) {
    std::vector<std::string> line = Line("ffprobe");
    for (const char* word :
         {"-count_packets", "-select_streams", "v:0", "-show_entries",
          "format=duration:stream=avg_frame_rate,nb_read_packets", "-of", "default=noprint_wrappers=1"})
        line.emplace_back(word);
    line.push_back("file:" + path);
    constexpr size_t kMostText = 65536;
    std::string text;
    const bool read = tools::ReadProgram(
        line,
        [&](const char* bytes, size_t count) {
            text.append(bytes, count);
            return text.size() < kMostText;
        },
        why);
    if (!read) return {};
    const double rate = ValueOf(text, "avg_frame_rate"), packets = ValueOf(text, "nb_read_packets");
    // Some containers tell a wrong length, counting is right.
    const double seconds = packets > 0 && rate > 0 ? packets / rate : ValueOf(text, "duration");
    if (seconds > 0 && rate > 0) return {std::min(seconds, kLongest) * 1000, std::min(rate, kMostRate)};
    return *why = "its length is not known", dialect::FilmLook();
}

bool MakeFilmSheets(const compile::FilmFile& file,
                    const std::function<bool(const dialect::Sheet& sheet, const ByteBlock& bmp)>& write,
                    std::string* why) {
    const std::vector<dialect::Sheet>& sheets = file.film.sheets;
    std::vector<std::string> line = Line("ffmpeg");
    for (const std::string& word : std::vector<std::string>{
             "-nostdin", "-i", "file:" + file.path, "-map", "0:v:0", "-vf", Filters(file.film), "-frames:v",
             std::to_string(sheets.size()), "-pix_fmt", "bgr24", "-f", "rawvideo", "pipe:1"})
        line.push_back(word);
    std::string pixels;
    size_t next = 0;
    const auto take = [&](const char* bytes, size_t count) {
        while (count > 0 && next < sheets.size()) {
            const size_t part = std::min(count, kSheetBytes - pixels.size());
            pixels.append(bytes, part);
            bytes += part;
            count -= part;
            if (pixels.size() < kSheetBytes) return true;
            ByteBlock bmp;
            if (!ToBmp(pixels, &bmp) || !write(sheets[next++], bmp)) return false;
            pixels.clear();
        }
        return true;
    };
    if (!tools::ReadProgram(line, take, why)) return false;
    return next == sheets.size() || (*why = "it has no pictures", false);
}

}  // namespace convert
