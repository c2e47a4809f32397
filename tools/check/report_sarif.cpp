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

void WriteArtifact(const std::string& name, Json* json) {
    json->Key("artifactLocation");
    json->Begin('{');
    json->Member("uri", UriOf(name));
    json->End('}');
}

void WriteLocation(const std::string& name, const Finding* finding, Json* json) {
    json->Key("locations");
    json->Begin('[');
    json->Begin('{');
    json->Key("physicalLocation");
    json->Begin('{');
    WriteArtifact(name, json);
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

void WriteReplacement(const ListedEdit& edit, Json* json) {
    json->Begin('{');
    json->Key("deletedRegion");
    json->Begin('{');
    json->Member("startLine", edit.line);
    json->Member("startColumn", edit.column);
    json->Member("endLine", edit.end_line);
    json->Member("endColumn", edit.end_column);
    json->Member("byteOffset", edit.offset);
    json->Member("byteLength", edit.length);
    json->End('}');
    json->Key("insertedContent");
    json->Begin('{');
    json->Member("text", edit.text);
    json->End('}');
    json->End('}');
}

void WriteFix(const std::string& name, const std::vector<ListedEdit>& edits, Json* json) {
    json->Key("fixes");
    json->Begin('[');
    json->Begin('{');
    json->Key("artifactChanges");
    json->Begin('[');
    json->Begin('{');
    WriteArtifact(name, json);
    json->Key("replacements");
    json->Begin('[');
    for (const ListedEdit& edit : edits) WriteReplacement(edit, json);
    for (const char bracket : std::string_view("]}]}]")) json->End(bracket);
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
    const ListedEdits edits = ListEdits(subject.edits, subject.findings);
    for (size_t i = 0; i < edits.of_finding.size(); ++i) {
        const Finding& finding = subject.findings.Kept()[i];
        json.Begin('{');
        json.Member("ruleId", finding.code);
        json.Member("ruleIndex", static_cast<int64_t>(*IndexOfCode(finding.code)));
        json.Member("level", NameOf(finding.severity));
        WriteMessage("message", finding.text, &json);
        WriteLocation(subject.file_name, &finding, &json);
        if (!edits.of_finding[i].empty()) WriteFix(subject.file_name, edits.of_finding[i], &json);
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
        if (!failure.file.empty()) WriteLocation(failure.file, nullptr, &json);
        json.End('}');
    }
    json.End(']');
    json.End('}');
    *out += "]}]}\n";
}

}  // namespace check
