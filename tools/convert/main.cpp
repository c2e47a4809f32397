// lumetra-convert: a chart of today as a package that the player plays right.
#include "common/arguments.h"
#include "common/messages.h"
#include "common/signals.h"
#include "convert/convert.h"

static int Main(int argc, char** argv) {
    using namespace convert;
    int answered = 0;
    if (tools::AnswerHelp(argc, argv, kHelp, kOutput, &answered)) return answered;
    Options options;
    std::string why;
    if (!ParseOptions(argc, argv, &options, &why)) return tools::WrongUse(kUsage, why);
    tools::CatchSignals();
    return Convert(options);
}

int main(int argc, char** argv) {
    return tools::RunTool("lumetra-convert", Main, argc, argv);
}
