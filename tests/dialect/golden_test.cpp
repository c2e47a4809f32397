// Charts and what becomes of them, one file for each feature in golden/. A file holds a chart, a line `----`,
// and below it the compiled text, then what is not in the text: stems, sheets, findings.
//
// Of the chart each line gets a CR LF unless it ends in `\`; `\n`, `\r`, `\t` and `\xHH` are bytes; {3*ab} is
// ababab. Lines `% option` stand in front.
#include <gtest/gtest.h>

#include <cmath>
#include <filesystem>
#include <fstream>
#include <sstream>

#include "dialect/dialect.h"

namespace {

using dialect::Plan;

std::string Unescape(const std::string& line) {
    std::string bytes;
    for (size_t i = 0; i < line.size(); ++i) {
        const size_t times = line.find('*', i), close = line.find('}', i);
        if (line[i] == '{' && times < close && close != line.npos) {
            for (int n = std::stoi(line.substr(i + 1)); n > 0; --n)
                bytes += line.substr(times + 1, close - times - 1);
            i = close;
        } else if (line[i] != '\\' || i + 1 == line.size()) {
            bytes += line[i];
        } else if (line[++i] == 'x') {
            bytes += static_cast<char>(std::stoi(line.substr(i + 1, 2), nullptr, 16));
            i += 2;
        } else {
            bytes += line[i] == 'n' ? '\n' : line[i] == 'r' ? '\r' : '\t';
        }
    }
    if (!bytes.empty() && bytes.back() == '\\') return bytes.substr(0, bytes.size() - 1);
    return bytes + "\r\n";
}

void ReadOption(const std::string& line, dialect::Options* options) {
    std::istringstream in(line);
    std::string mark, word, value;
    in >> mark >> word;
    if (word == "random") {
        options->choice.kind = dialect::Choice::kList;
        while (std::getline(in, value, ',')) options->choice.list.push_back(std::stoi(value));
    } else if (word == "seed") {
        options->choice.kind = dialect::Choice::kSeed;
        in >> options->choice.seed;
    } else if (word == "film") {
        dialect::FilmLook look;
        in >> look.ms >> look.rate;
        options->film = [look](std::string_view name) {
            return name.ends_with(".mpg") ? look : dialect::FilmLook();
        };
    } else if (word == "length") {
        in >> value;
        options->sound_ms = [ms = std::stod(value)](std::string_view) { return ms; };
    }
}

std::string Short(double value) {
    char text[32];
    std::snprintf(text, sizeof text, "%.3f", value);
    return text;
}

void Describe(const Plan& plan, std::ostream& out) {
    for (const dialect::Stem& stem : plan.stems) {
        for (const std::string& name : stem.names)
            out << "stem " << name << " at " << Short(stem.begin_ms) << ":";
        for (const dialect::StemItem& item : stem.items) {
            out << " " << plan.mixed[static_cast<size_t>(item.sound)] << "+" << Short(item.start_ms);
            if (item.cut_ms != dialect::kWhole) out << "/" << Short(item.cut_ms);
        }
        out << "\n";
    }
    for (const dialect::Sheet& sheet : plan.sheets) {
        out << "sheet " << sheet.name << ":";
        for (const std::string& cell : sheet.cells) out << " " << cell;
        out << "\n";
    }
    for (const dialect::Film& film : plan.films) {
        out << "film " << film.name << ": " << film.stills << " stills, " << Short(film.rate)
            << " a second\n";
    }
    for (const dialect::Finding& finding : plan.findings) {
        out << finding.place.line << ":" << finding.place.column << " " << finding.code << ": "
            << finding.text << "\n";
    }
}

// Long rows of rests in a channel line as {n*00}.
std::string Shorten(const std::string& line) {
    std::string text = line.substr(0, 7);
    for (size_t i = 7, end; i < line.size(); i = end) {
        for (end = i; line[0] == '#' && line[6] == ':' && line.compare(end, 2, "00") == 0;) end += 2;
        if (end - i < 20) end = i + 2;
        text += end - i < 20 ? line.substr(i, 2) : "{" + std::to_string((end - i) / 2) + "*00}";
    }
    return text;
}

std::string Compile(const std::string& bytes, const dialect::Options& options) {
    const Plan plan = dialect::MakePlan(bytes, options);
    std::ostringstream out;
    if (plan.unchanged) out << "unchanged\n";
    const std::string text = plan.unchanged ? "" : dialect::WriteText(plan);
    for (size_t begin = 0, end; begin < text.size(); begin = end + 2) {
        end = text.find("\r\n", begin);
        EXPECT_NE(end, text.npos);
        EXPECT_LE(end - begin, 1023u);
        out << Shorten(text.substr(begin, end - begin)) << "\n";
    }
    Describe(plan, out);
    return out.str();
}

TEST(Golden, EachFeature) {
    int count = 0;
    for (const auto& entry : std::filesystem::directory_iterator(DIALECT_GOLDEN)) {
        std::ifstream in(entry.path(), std::ios::binary);
        dialect::Options options;
        std::string bytes, expected, line;
        while (std::getline(in, line) && line != "----") {
            if (line[0] == '%') {
                ReadOption(line, &options);
            } else {
                bytes += Unescape(line);
            }
        }
        while (std::getline(in, line)) expected += line + "\n";
        EXPECT_EQ(Compile(bytes, options), expected) << entry.path().filename();
        ++count;
    }
    EXPECT_GE(count, 20);
}

}  // namespace
