#include "apps/cli/TextCommand.h"

#include "apps/cli/FileBytes.h"
#include "apps/cli/JsonLine.h"
#include "apps/cli/PictureInputs.h"
#include "apps/cli/StandardStreams.h"
#include "apps/cli/TerminalText.h"
#include "apps/cli/VerdictText.h"

#include <kestrelid/TextEvidence.h>

#include <optional>

namespace kestrelid::cli {
namespace {

// The text of a page has a few thousand bytes; this stops a file named by mistake.
constexpr std::size_t kMaximumTextSize = 16u * 1024 * 1024;  // bytes

std::string asJson(const std::string& name, const TextEvidence& evidence) {
    std::string matches;
    for (const KeywordMatch& match : evidence.matches) {
        matches += matches.empty() ? "" : ",";
        matches += jsonObject(
            {{"keyword", jsonText(match.keyword)}, {"distance", std::to_string(match.distance)}});
    }
    JsonMembers members = fileMembers(name);
    members.emplace_back("cleaned", jsonText(evidence.cleaned));
    members.emplace_back("matched", std::to_string(evidence.matches.size()));
    members.emplace_back("matches", "[" + matches + "]");
    members.emplace_back("keywordReason", jsonText(evidence.keywordReason));
    members.emplace_back("mrzLike",
                         jsonObject({{"found", evidence.mrzLike.found ? "true" : "false"},
                                     {"reason", jsonText(evidence.mrzLike.reason)}}));
    return jsonObject(members) + "\n";
}

std::string asText(const std::string& name, const TextEvidence& evidence) {
    const std::size_t count = evidence.matches.size();
    return terminalText(name) + ": " + std::to_string(count) +
           (count == 1 ? " keyword matched, " : " keywords matched, ") +
           (evidence.mrzLike.found ? "MRZ-like lines found\n" : "no MRZ-like lines\n") +  //
           "    Text: " + terminalText(evidence.cleaned) + "\n" +                         //
           "    " + terminalText(evidence.keywordReason) + "\n" +                         //
           "    " + terminalText(evidence.mrzLike.reason) + "\n";
}

// The cause if the file gave no evidence.
std::optional<std::string> weigh(const std::string& name, bool json) {
    const BytesResult bytes = name == kStandardInputName ? readStandardInput(kMaximumTextSize)
                                                         : readFile(name, kMaximumTextSize);
    if (const auto* error = std::get_if<ReadError>(&bytes))
        return error->cause;
    const auto& content = std::get<std::string>(bytes);
    if (const auto offset = invalidUtf8Offset(content))
        return "not valid UTF-8 at byte offset " + std::to_string(*offset);
    const TextEvidence evidence = textEvidence(content);
    writeOutput(json ? asJson(name, evidence) : asText(name, evidence));
    return std::nullopt;
}

}  // namespace

ExitStatus text(const TextOptions& options) {
    ExitStatus status = ExitStatus::done;
    const std::vector<std::string> standardInput{std::string(kStandardInputName)};
    for (const std::string& name : options.files.empty() ? standardInput : options.files) {
        if (const auto cause = weigh(name, options.json)) {
            if (options.json)
                writeOutput(errorAsJson({name, name}, *cause));
            writeError(name, *cause);
            status = ExitStatus::inputFailed;
        }
    }
    return graver(status, outputStatus());
}

}  // namespace kestrelid::cli
