#include "check/subject.h"

#include <cstring>

#include "chart/reader.h"
#include "check/modern.h"
#include "check/quiet.h"
#include "check/read.h"
#include "host/headless/headless.h"
#include "platform/files/filename.h"
#include "platform/files/files.h"
#include "report/refusal.h"

namespace check {
namespace {

void CheckRefused(Subject* subject) {
    if (!subject->refused) return;
    const Tables& tables = subject->tables;
    const bool any = tables.last_measure == 0;
    subject->findings.Add(
        any ? tables.last_place : Place{1, 1}, "refused",
        any ? "nothing comes after measure 0, so the player refuses the chart; put an object or "
              "a length into measure 1"
            : "the player finds no object and refuses the chart");
}

// Only a note: 130 may be what the author wants.
void CheckNoTempo(Subject* subject) {
    if (subject->refused || subject->tables.first_tempo.line != 0) return;
    subject->findings.Add({1, 1}, "no-tempo", "no #BPM line sets the tempo; the chart starts at 130");
}

void CheckContents(bool compiled, Subject* subject) {
    CheckRefused(subject);
    CheckNoTempo(subject);
    CheckSounds(subject);
    CheckPictures(subject);
    CheckOutside(subject);
    CheckIds(subject);
    if (subject->refused) return;
    CheckTimes(subject);
    if (!compiled) CheckGrid(subject);  // a compiled chart has places of its own
    CheckHearing(subject);
    CountFigures(subject);
}

// Lets the player read this text under the chart's name. Returns a copy that ends with a NUL.
std::unique_ptr<char[]> Provide(const std::string& text, const char* path) {
    const auto block = std::make_shared<ByteBlock>();
    if (!block->Resize(text.size())) return nullptr;
    std::memcpy(block->Data(), text.data(), text.size());
    FileProvide(path, block);
    int64_t size = 0;
    return std::unique_ptr<char[]>(ReadChartText(path, &size));
}

}  // namespace

bool CheckChart(Subject* subject, std::string* why) {
    const QuietStderr quiet;
    subject->path = HandOver(subject->file_name);
    const char* path = subject->path.c_str();
    FileProvide(path, subject->provided);
    int64_t size = 0;
    subject->text.reset(ReadChartText(path, &size));
    const char* text = subject->text.get();
    const std::string_view bytes(text ? text : "", static_cast<size_t>(size));
    if (text && subject->sound.Init(nullptr, 1) != 0) {
        *why = "no memory for the sounds";
        return false;
    }
    std::optional<Modern> modern;
    std::unique_ptr<char[]> compiled;
    if (text) {
        subject->verdict =
            JudgeChart(bytes, subject->modern.value_or(dialect::Choice{}), subject->modern.has_value());
        if (subject->modern) modern.emplace(bytes, subject->path, *subject->modern);
        if (modern && modern->Compiled()) compiled = Provide(modern->Text(), path);
    }
    const int64_t read_size = compiled ? static_cast<int64_t>(modern->Text().size()) : size;
    const size_t logged = headless::Log().size();
    subject->chart = std::make_unique<CBMS>(&subject->display, &subject->sound);
    if (!text || subject->chart->Load(path, 0) == 0) {
        *why = subject->provided ? "holds more objects than the player takes"
                                 : report::WhyUnreadable(subject->file_name);
        return false;
    }
    subject->refused = subject->chart->Compile() != 0;
    ReadLines(compiled ? compiled.get() : text, read_size, path, &subject->tables, &subject->findings);
    if (compiled) modern->MoveToAuthor(subject);
    CheckBudget(std::string_view(headless::Log()).substr(logged), subject);
    CheckContents(compiled != nullptr, subject);
    if (modern) modern->AddFindings(subject);
    subject->findings.Sort();
    subject->findings.FindColumns(bytes);
    subject->edits = Edits(bytes, subject->findings);
    return true;
}

}  // namespace check
