#include "host/desktop/settings_text.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cstdlib>
#include <cstring>

namespace host::desktop {
namespace {

std::string_view Trim(std::string_view text) {
    constexpr char kBlanks[] = " \t\r\n\"";
    const size_t first = text.find_first_not_of(kBlanks);
    if (first == text.npos) return "";
    return text.substr(first, text.find_last_not_of(kBlanks) - first + 1);
}

// Whatever lies past the end reads as 0 and spoils `good`.
class Bytes {
public:
    explicit Bytes(std::string_view bytes) : m_bytes(bytes), m_big(!bytes.empty() && bytes[0] == 1) {}

    uint32_t Number(size_t size) {
        const std::string_view part = Text(size);
        uint32_t value = 0;
        for (size_t i = 0; i < part.size(); ++i) {
            const auto byte = static_cast<uint32_t>(static_cast<unsigned char>(part[i]));
            value |= byte << 8 * (m_big ? part.size() - 1 - i : i);
        }
        return value;
    }
    std::string_view Text(size_t size) {
        if (size > m_bytes.size() - m_at) {
            good = false;
            m_at = m_bytes.size();
            return "";
        }
        m_at += size;
        return m_bytes.substr(m_at - size, size);
    }
    // Padded to a multiple of four.
    std::string_view Padded(size_t size) {
        const std::string_view text = Text(size);
        Text((4 - size % 4) % 4);
        return text;
    }

    bool good = true;

private:
    std::string_view m_bytes;
    bool m_big;
    size_t m_at = 0;
};

std::string_view TakeLine(std::string_view* text) {
    const size_t end = std::min(text->find('\n'), text->size());
    const std::string_view line = text->substr(0, end);
    text->remove_prefix(std::min(end + 1, text->size()));
    return Trim(line);
}

std::optional<uint32_t> ParseTriple(std::string_view text) {
    uint32_t color = 0;
    for (int i = 0; i < 3; ++i) {
        const size_t end = std::min(text.find(','), text.size());
        const std::string_view part = Trim(text.substr(0, end));
        unsigned value = 0;
        const auto [after, error] = std::from_chars(part.data(), part.data() + part.size(), value);
        if (error != std::errc() || value > 255) return {};
        color = color << 8 | value;
        text.remove_prefix(std::min(end + 1, text.size()));
    }
    return color;
}

bool IsStyle(std::string_view word) {
    constexpr std::array kStyles = {"Regular",   "Roman", "Normal", "Book",    "Light",    "Medium",
                                    "Semi-Bold", "Bold",  "Italic", "Oblique", "Condensed"};
    return std::any_of(kStyles.begin(), kStyles.end(), [&](const char* style) { return word == style; });
}

}  // namespace

Settings ParseXSettings(std::string_view bytes) {
    enum { kInteger, kString, kColor };
    Settings settings;
    Bytes in(bytes);
    in.Text(8);  // byte order and serial number
    const uint32_t count = in.Number(4);
    for (uint32_t i = 0; i < count && in.good; ++i) {
        const uint32_t type = in.Number(1);
        in.Text(1);
        const std::string name(in.Padded(in.Number(2)));
        in.Text(4);
        std::string value;
        if (type == kInteger) {
            value = std::to_string(static_cast<int32_t>(in.Number(4)));
        } else if (type == kString) {
            value = in.Padded(in.Number(4));
        } else {
            in.Text(type == kColor ? 8 : bytes.size() + 1);
        }
        if (in.good) settings[name] = value;
    }
    return settings;
}

Settings ParseIni(std::string_view text) {
    Settings settings;
    std::string section;
    while (!text.empty()) {
        const std::string_view line = TakeLine(&text);
        if (line.empty() || line[0] == '#' || line[0] == ';') continue;
        const size_t equals = line.find('=');
        if (line.front() == '[' && line.back() == ']') {
            section = line.substr(1, line.size() - 2);
        } else if (equals != line.npos) {
            settings[section + "/" + std::string(Trim(line.substr(0, equals)))] =
                Trim(line.substr(equals + 1));
        }
    }
    return settings;
}

std::optional<uint32_t> ParseColor(std::string_view text) {
    text = Trim(text);
    if (text.starts_with("rgb(") && text.ends_with(")")) return ParseTriple(text.substr(4, text.size() - 5));
    if (text.empty() || text[0] != '#') return ParseTriple(text);
    text.remove_prefix(1);
    uint32_t value = 0;
    const auto [after, error] = std::from_chars(text.data(), text.data() + text.size(), value, 16);
    if (error != std::errc() || after != text.data() + text.size()) return {};
    if (text.size() == 6) return value;
    if (text.size() == 8) return value >> 8;
    if (text.size() != 3) return {};
    return (value >> 8) * 0x110000 + (value >> 4 & 15) * 0x1100 + (value & 15) * 0x11;
}

std::map<std::string, uint32_t> ParseThemeColors(std::string_view css) {
    constexpr std::string_view kDefine = "@define-color";
    std::map<std::string, uint32_t> colors;
    for (size_t at = css.find(kDefine); at != css.npos; at = css.find(kDefine, at)) {
        at += kDefine.size();
        const std::string_view definition =
            Trim(css.substr(at, std::min(css.find(';', at), css.size()) - at));
        const size_t blank = definition.find_first_of(" \t");
        if (blank == definition.npos) continue;
        const std::string_view value = Trim(definition.substr(blank));
        if (const auto color = ParseColor(value)) {
            colors[std::string(definition.substr(0, blank))] = *color;
        } else if (value.starts_with('@')) {
            const auto earlier = colors.find(std::string(value.substr(1)));
            if (earlier != colors.end()) colors[std::string(definition.substr(0, blank))] = earlier->second;
        }
    }
    return colors;
}

FontName ParseFontName(std::string_view text) {
    FontName font;
    text = Trim(text);
    const size_t blank = text.find_last_of(" ,");
    const std::string last(blank == text.npos ? "" : text.substr(blank + 1));
    char* end = nullptr;
    font.points = std::strtod(last.c_str(), &end);
    if (!last.empty() && *end == '\0' && font.points >= 1 && font.points <= 200) {
        text = Trim(text.substr(0, blank));
    } else {
        font.points = 0;
    }
    text = Trim(text.substr(0, text.find(',')));
    for (size_t cut; (cut = text.rfind(' ')) != text.npos && IsStyle(text.substr(cut + 1));)
        text = Trim(text.substr(0, cut));
    font.family = text;
    return font;
}

}  // namespace host::desktop
