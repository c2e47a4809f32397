#include "check/subject.h"

#include <sys/stat.h>

#include <cerrno>
#include <cstring>

#include "chart/reader.h"
#include "check/read.h"
#include "platform/files/filename.h"
#include "platform/files/files.h"

namespace check {
namespace {

std::string WhyUnreadable(const std::string& file) {
    struct stat info;
    if (stat(file.c_str(), &info) != 0) return std::strerror(errno);
    if (S_ISDIR(info.st_mode)) return "is a folder";
    if (!S_ISREG(info.st_mode)) return "is no file";
    if (info.st_size > BMS_FILE_LIMIT) return "is larger than the 256 MiB that the player takes";
    return "the player cannot read it: it may not be read, or holds more objects than the player takes";
}

void CheckRefused(Subject* subject) {
    if (!subject->refused) return;
    const Tables& tables = subject->tables;
    const bool any = tables.last_measure == 0;
    subject->findings.Add(any ? tables.last_place : Place{1, 1}, Severity::kError, "refused", [any] {
        return std::string(
            any ? "nothing stands behind measure 0, and the player refuses such a chart; put an "
                  "object or a length into measure 1"
                : "the player finds no object at all and refuses the chart");
    });
}

// A chart that says nothing of its tempo may be meant so.
void CheckNoTempo(Subject* subject) {
    if (subject->refused || subject->tables.first_tempo.line != 0) return;
    subject->findings.Add({1, 1}, Severity::kNote, "no-tempo", [] {
        return std::string("no #BPM line says with which tempo the chart begins; the player takes 130");
    });
}

}  // namespace

bool CheckChart(Subject* subject, std::string* why) {
    subject->path = HandOver(subject->file_name);
    const char* path = subject->path.c_str();
    int64_t size = 0;
    const std::unique_ptr<char[]> text(ReadChartText(path, &size));
    if (text && subject->sound.Init(nullptr, 1) != 0) {
        *why = "no memory for the sounds";
        return false;
    }
    subject->chart = std::make_unique<CBMS>(&subject->display, &subject->sound);
    if (!text || subject->chart->Load(path, 0) == 0) {
        *why = WhyUnreadable(subject->file_name);
        return false;
    }
    subject->refused = subject->chart->Compile() != 0;
    ReadLines(text.get(), size, path, &subject->tables, &subject->findings);
    CheckRefused(subject);
    CheckNoTempo(subject);
    CheckSounds(subject);
    CheckPictures(subject);
    CheckIds(subject);
    if (!subject->refused) {
        CheckTimes(subject);
        CountFigures(subject);
    }
    subject->findings.Sort();
    return true;
}

}  // namespace check
