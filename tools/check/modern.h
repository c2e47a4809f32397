// A chart as --modern plays it: compiled in memory, with the way back to the author's lines.
#pragma once

#include <map>
#include <string>
#include <string_view>
#include <vector>

#include "check/subject.h"
#include "dialect/dialect.h"

namespace check {

class Modern {
public:
    // bytes: the author's file; they must outlive this. path: of the chart, as the player gets it.
    Modern(std::string_view bytes, const std::string& path, const dialect::Choice& choice);

    bool Compiled() const { return !plan_.unchanged; }
    const std::string& Text() const { return text_; }  // empty unless compiled

    // To be called when the compiled text has been read into the subject's tables: from then on all places
    // are those of the author's file, and files that the compiler makes count as such.
    void MoveToAuthor(Subject* subject) const;
    // Files that stand in no line of the compiled text, numbers that no object uses, and what the compiler
    // has to say.
    void AddFindings(Subject* subject) const;

private:
    struct LineStart {
        int32_t line, column;  // of the first byte of a line as the compiler counts, by LFs
    };
    void FindLineStarts(std::string_view bytes);
    void FindObjects();
    Place FromDialect(dialect::Place place) const;
    Place AuthorOf(Place place) const;  // a place of the compiled text
    Place PairOf(std::string_view line, int32_t column) const;
    Place TempoAt(double at) const;
    Place NameOf(const std::vector<dialect::Definition>& table, std::string_view name) const;
    void CheckUnplaced(Subject* subject) const;

    dialect::Plan plan_;
    dialect::Chart chart_;
    std::string text_;
    std::vector<std::string_view> lines_;  // of the text
    std::vector<LineStart> starts_;
    std::map<std::string, Place> words_;                   // author's lines by text and by first word
    std::map<std::pair<int32_t, double>, Place> objects_;  // by channel and measure + place
    std::map<int32_t, Place> cuts_;                        // by the number in the text
};

}  // namespace check
