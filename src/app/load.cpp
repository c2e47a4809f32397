#include "app/load.h"

#include <unistd.h>

#include <algorithm>
#include <memory>
#include <new>

#include "app/chart_lines.h"
#include "chart/bms.h"
#include "compile/modern.h"
#include "host/host.h"
#include "platform/files/filename.h"
#include "platform/files/files.h"
#include "platform/files/handle.h"
#include "platform/window/dialog.h"
#include "report/refusal.h"
#include "shell/options.h"
#include "shell/shell.h"

namespace app {
namespace {

SharedBytes ReadWhole(const std::string& path) {
    int64_t size = 0;
    const int file = OpenRegularFile(path.c_str(), &size);
    if (file < 0) return nullptr;
    const auto bytes = std::make_shared<ByteBlock>();
    const bool fits = size <= BMS_FILE_LIMIT && bytes->Resize(static_cast<size_t>(size));
    const size_t count = fits ? ReadFileAt(file, bytes->Data(), bytes->Size(), 0) : 0;
    close(file);
    return fits && bytes->Resize(count) ? bytes : nullptr;
}

}  // namespace

HeldChart::HeldChart(const std::string& path) {
    FileProvide(HandOver(path).c_str(), ReadWhole(path));
}

HeldChart::~HeldChart() {
    FileProvide("", nullptr);
}

void SetModern(bool modern) {
    modern ? compile::PlayModern() : compile::PlayAsWritten();
}

Probe ProbeChart(const std::string& path) {
    Probe probe;
    const std::unique_ptr<CBMS> chart(new (std::nothrow) CBMS(nullptr, nullptr));
    const std::string name = HandOver(path);
    if (!chart || name.size() >= static_cast<size_t>(FILE_NAME_SIZE) || !chart->Load(name.c_str(), 0)) {
        probe.refusal = report::WhyUnreadable(path);
    } else if (chart->Compile()) {
        probe.refusal = report::WhyRefusedFile(path);
    } else {
        probe.last_measure = chart->m_nMeasure - 1;
    }
    return probe;
}

int StartMeasure(const LoadRequest& request, const Probe& probe, bool* clamped) {
    int measure = request.measure.value_or(-1);
    if (request.line) measure = ReadChartLines(request.path).MeasureAt(*request.line);
    *clamped = measure > probe.last_measure;
    return ClampMeasure(std::min(measure, probe.last_measure));
}

void LoadAt(const std::string& path, int measure) {
    g_nStartMeasure = measure;
    AnswerNextOpenDialog(path.c_str());
    SendMessageA(g_hWnd, WM_LBUTTONDBLCLK, 0, 0);
}

// Measure and speed come first, so that nothing of another place is heard.
void Reload(const LoadRequest& request, int measure) {
    if (request.hundredths) SetSpeed(SpeedFromMessage(*request.hundredths));
    host::Unminimize();
    LoadAt(request.path, measure);
}

}  // namespace app
