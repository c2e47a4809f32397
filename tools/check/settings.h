// Which findings count: from the command line and from lumetra-check.toml.
#pragma once

#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "check/codes.h"

namespace check {

struct Rules {
    std::optional<CodeSet> select;  // none: all codes
    CodeSet ignore;
    std::optional<Severity> fail_on;

    CodeSet Wanted() const { return select.value_or(CodeSet().set()) & ~ignore; }
    Severity FailOn() const { return fail_on.value_or(kWarning); }
};

// Adds the codes of a list such as `tab,stop`. Returns an error message, or an empty string.
std::string AddCodes(std::string_view list, CodeSet* codes);

// Reads the text of a settings file. Returns an error message that begins with the line, or an empty string.
std::string ReadSettings(std::string_view text, Rules* rules);

// Finds the settings of charts: those in the chart's folder or else in the nearest folder above it. Keeps
// what it has read.
class SettingsFinder {
public:
    // command_line: takes precedence; its ignored codes are added. Returns an error message, or an empty
    // string.
    std::string Find(const std::string& chart, const Rules& command_line, Rules* rules);

private:
    struct Found {
        Rules rules;
        std::string error;
    };
    const Found& InFolder(const std::string& folder);
    std::map<std::string, Found> folders_;
};

}  // namespace check
