// SARIF 2.1.0: one run, a result for each finding, a rule for each code.
#include "check/explain.h"
#include "check/json.h"
#include "check/report.h"

namespace check {
namespace {

// A relative or absolute file name as a URI reference. The bytes stay those of the file system.
std::string UriOf(const std::string& name) {
    static constexpr char kHex[] = "0123456789ABCDEF";
    std::string uri = name[0] == '/' ? "file://" : "";
    for (const char c : name) {
        const auto byte = static_cast<unsigned char>(c);
        const bool letter = (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z');
        if (letter || (c >= '0' && c <= '9') || std::string_view("-._~/").find(c) != std::string_view::npos)
            uri += c;
        else
            uri += {'%', kHex[byte >> 4], kHex[byte & 15]};
    }
    return uri;
}

void WriteMessage(const char* key, std::string_view text, Json* json) {
    json->Key(key);
    json->Begin('{');
    json->Member("text", text);
    json->End('}');
}

void WriteLocation(const std::string& name, const Finding* finding, Json* json) {
    json->Key("locations");
    json->Begin('[');
    json->Begin('{');
    json->Key("physicalLocation");
    json->Begin('{');
    json->Key("artifactLocation");
    json->Begin('{');
    json->Member("uri", UriOf(name));
    json->End('}');
    if (finding) {
        json->Key("region");
        json->Begin('{');
        json->Member("startLine", finding->place.line);
        json->Member("startColumn", finding->character);
        json->End('}');
    }
    json->End('}');
    json->End('}');
    json->End(']');
}

void WriteRule(size_t index, Json* json) {
    const CodeInfo& info = kCodes[index];
    json->NewLine();
    json->Begin('{');
    json->Member("id", info.name);
    WriteMessage("shortDescription", info.meaning, json);
    WriteMessage("help", Explain(index), json);
    json->Key("defaultConfiguration");
    json->Begin('{');
    json->Member("level", NameOf(info.severity));
    json->End('}');
    json->End('}');
}

}  // namespace

void WriteSarifHead(const char* version, std::string* out) {
    *out +=
        "{\"$schema\":\"https://json.schemastore.org/sarif-2.1.0.json\",\"version\":\"2.1.0\",\"runs\":[{"
        "\"columnKind\":\"unicodeCodePoints\",\"tool\":{\"driver\":";
    Json json(out);
    json.Begin('{');
    json.Member("name", "lumetra-check");
    json.Member("version", version);
    json.Key("rules");
    json.Begin('[');
    for (size_t i = 0; i < std::size(kCodes); ++i) WriteRule(i, &json);
    json.End(']');
    json.End('}');
    *out += "},\"results\":[";
}

void WriteSarif(const Subject& subject, std::string* out) {
    Json json(out);
    for (const Finding& finding : subject.findings.Kept()) {
        json.Begin('{');
        json.Member("ruleId", finding.code);
        json.Member("ruleIndex", static_cast<int64_t>(*IndexOfCode(finding.code)));
        json.Member("level", NameOf(finding.severity));
        WriteMessage("message", finding.text, &json);
        WriteLocation(subject.file_name, &finding, &json);
        json.Key("properties");
        json.Begin('{');
        json.Member("byteColumn", finding.place.column);
        json.End('}');
        json.End('}');
        json.NewLine();
    }
}

void WriteSarifEnd(const std::vector<Failure>& failures, std::string* out) {
    *out += "],\"invocations\":[";
    Json json(out);
    json.Begin('{');
    json.Key("executionSuccessful");
    json.Flag(failures.empty());
    json.Key("toolExecutionNotifications");
    json.Begin('[');
    for (const Failure& failure : failures) {
        json.NewLine();
        json.Begin('{');
        json.Member("level", "error");
        WriteMessage("message", failure.why, &json);
        WriteLocation(failure.file, nullptr, &json);
        json.End('}');
    }
    json.End(']');
    json.End('}');
    *out += "]}]}\n";
}

}  // namespace check
