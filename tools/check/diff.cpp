// A unified diff of a chart before and after its edits.
#include <algorithm>
#include <vector>

#include "check/mend.h"

namespace check {
namespace {

constexpr size_t kContext = 3;  // unchanged lines around the changed ones

// Up to and with the next LF.
std::string_view TakeLine(std::string_view* text) {
    const std::string_view line = text->substr(0, std::min(text->find('\n'), text->size() - 1) + 1);
    text->remove_prefix(line.size());
    return line;
}

// How many lines the edits make of one: those at lone CRs, but no CR in front of CR LF, which is only
// deleted.
size_t LinesAfter(std::string_view line, bool ends_at_cr) {
    if (!ends_at_cr) return 1;
    const bool lf = line.ends_with('\n');
    if (lf) line.remove_suffix(1);
    while (lf && line.ends_with('\r')) line.remove_suffix(1);
    const auto crs = static_cast<size_t>(std::count(line.begin(), line.end(), '\r'));
    return crs + (lf || !line.ends_with('\r'));
}

// Walks over the lines before the edits, each with the lines that it has become.
class Pairs {
public:
    Pairs(std::string_view before, const Mended& after)
        : before_(before), after_(TextOf(*after.bytes)), ends_at_cr_(after.ends_lines_at_cr) {}
    bool Next() {
        if (before_.empty()) return false;
        old_ = TakeLine(&before_);
        new_count_ = LinesAfter(old_, ends_at_cr_);
        std::string_view rest = after_;
        size_t count = 0;
        while (count < new_count_ && !rest.empty()) TakeLine(&rest), ++count;
        new_count_ = count;
        new_ = after_.substr(0, after_.size() - rest.size());
        after_ = rest;
        return true;
    }
    std::string_view Old() const { return old_; }
    std::string_view New() const { return new_; }
    size_t NewCount() const { return new_count_; }
    bool Same() const { return old_ == new_; }

private:
    std::string_view before_, after_, old_, new_;
    const bool ends_at_cr_;
    size_t new_count_ = 0;
};

struct Hunk {
    size_t first, end;            // lines before the edits, from 0
    size_t new_first, new_count;  // after them
};

std::vector<Hunk> FindHunks(Pairs pairs) {
    std::vector<Hunk> hunks;
    size_t shift =
        0;  // lines that edits above have added; they never remove one but the last, if it is empty
    size_t at = 0;
    for (; pairs.Next(); ++at) {
        const size_t grown = pairs.NewCount();
        if (!pairs.Same()) {
            const size_t first = at - std::min(at, kContext);
            if (hunks.empty() || first > hunks.back().end) hunks.push_back({first, at + 1, first + shift, 0});
            hunks.back().end = at + 1 + kContext;
            hunks.back().new_count += grown - 1;
        }
        shift += grown - 1;
    }
    for (Hunk& hunk : hunks) {
        hunk.end = std::min(hunk.end, at);
        hunk.new_count += hunk.end - hunk.first;
    }
    return hunks;
}

// As patch and git read it: names with odd characters are quoted, and a TAB ends one with blanks.
std::string HeadOf(const char* mark, const std::string& name) {
    const auto odd = [](char c) {
        return static_cast<unsigned char>(c) < 0x20 || c == 0x7F || c == '"' || c == '\\';
    };
    std::string shown = name;
    if (std::any_of(name.begin(), name.end(), odd)) {
        shown = "\"";
        for (const char c : name) {
            const auto byte = static_cast<unsigned char>(c);
            if (c == '"' || c == '\\')
                shown += {'\\', c};
            else if (odd(c))
                shown += {'\\', static_cast<char>('0' + (byte >> 6)),
                          static_cast<char>('0' + (byte >> 3 & 7)), static_cast<char>('0' + (byte & 7))};
            else
                shown += c;
        }
        shown += '"';
    } else if (name.find(' ') != name.npos) {
        shown += '\t';
    }
    return std::string(mark) + " " + shown + "\n";
}

std::string RangeOf(char sign, size_t first, size_t count) {
    return std::string(1, sign) + std::to_string(count > 0 ? first + 1 : first) + "," + std::to_string(count);
}

class Writer {
public:
    explicit Writer(const tools::Sink& sink) : sink_(sink) {}
    ~Writer() { sink_(out_); }
    void Add(std::string_view text) {
        constexpr size_t kPiece = size_t{1} << 20;
        out_ += text;
        if (out_.size() < kPiece) return;
        sink_(out_);
        out_.clear();
    }
    void AddLines(char mark, std::string_view lines) {
        while (!lines.empty()) {
            const std::string_view line = TakeLine(&lines);
            Add({&mark, 1});
            Add(line);
            if (!line.ends_with('\n')) Add("\n\\ No newline at end of file\n");
        }
    }

private:
    const tools::Sink& sink_;
    std::string out_;
};

}  // namespace

void WriteDiff(const std::string& name, std::string_view before, const Mended& after,
               const tools::Sink& sink) {
    Pairs pairs(before, after);
    const std::vector<Hunk> hunks = FindHunks(pairs);
    if (hunks.empty()) return;
    Writer writer(sink);
    writer.Add(HeadOf("---", name) + HeadOf("+++", name));
    size_t at = 0;
    for (const Hunk& hunk : hunks) {
        for (; at < hunk.first; ++at) pairs.Next();
        writer.Add("@@ " + RangeOf('-', hunk.first, hunk.end - hunk.first) + " " +
                   RangeOf('+', hunk.new_first, hunk.new_count) + " @@\n");
        // Changed lines in a row: first all old ones, then all new ones.
        std::string added;
        const auto flush = [&] { writer.AddLines('+', added), added.clear(); };
        for (; at < hunk.end && pairs.Next(); ++at) {
            if (pairs.Same()) flush();
            writer.AddLines(pairs.Same() ? ' ' : '-', pairs.Old());
            if (!pairs.Same()) added += pairs.New();
        }
        flush();
    }
}

}  // namespace check
