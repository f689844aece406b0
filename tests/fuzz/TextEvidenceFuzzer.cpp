#include "base/UnicodeText.h"
#include "detection/NormalizedText.h"
#include "detection/PassportKeywords.h"
#include "tests/reference/PlainTextRules.h"

#include <kestrelid/TextEvidence.h>

#include <cstdint>
#include <cstdlib>
#include <string_view>

// Normalisation and keyword matching hold on any bytes and agree with the plain rules on short
// ones. Cleaning cleaned text only composes what has come to stand side by side.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace kestrelid;
    const std::string_view text(reinterpret_cast<const char*>(data), size);
    const TextEvidence evidence = textEvidence(text);
    if (detection::normalize(evidence.cleaned) != base::composed(evidence.cleaned))
        std::abort();
    if (invalidUtf8Offset(text) || size > 96)  // the plain rules are slow
        return 0;
    if (reference::normalize(text) != evidence.cleaned)
        std::abort();
    const std::vector<std::string> keywords(detection::passportKeywords().begin(),
                                            detection::passportKeywords().end());
    const auto expected = reference::matchKeywords(keywords, evidence.cleaned);
    if (expected.size() != evidence.matches.size())
        std::abort();
    for (std::size_t index = 0; index < expected.size(); ++index)
        if (expected[index].first != evidence.matches[index].keyword ||
            expected[index].second != evidence.matches[index].distance)
            std::abort();
    return 0;
}
