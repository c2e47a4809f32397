#include "run_chart.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    RunChart(data, size);
    return 0;
}
