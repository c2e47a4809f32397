// lumetra-check: reports what the player ignores silently.
#include <cstdio>

#include "check/explain.h"
#include "check/run.h"
#include "common/arguments.h"
#include "common/messages.h"

static int PrintExplanation(const std::string& code) {
    const std::string text = code == "all" ? check::ExplainAll() : check::Explain(*check::IndexOfCode(code));
    std::fputs(text.c_str(), stdout);
    return tools::FlushOutput() ? check::kClean : tools::Complain(check::kOutput, "cannot write the text");
}

static int Main(int argc, char** argv) {
    int code = check::kClean;
    if (tools::AnswerHelp(argc, argv, check::kHelp, check::kOutput, &code)) return code;
    check::Options options;
    const std::string error = check::ParseOptions(argc, argv, &options);
    if (!error.empty()) return tools::WrongUse(check::kUnreadable, error);
    return options.explain.empty() ? check::CheckAll(options) : PrintExplanation(options.explain);
}

int main(int argc, char** argv) {
    return tools::RunTool("lumetra-check", Main, argc, argv);
}
