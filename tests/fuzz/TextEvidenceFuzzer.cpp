#include "base/UnicodeText.h"
#include "detection/NormalizedText.h"
#include "detection/PassportKeywords.h"
#include "tests/reference/PlainTextRules.h"

#include <cstdlib>

// Normalisation and keyword matching hold on any bytes and agree with the plain rules on short
// texts that those know. Cleaning cleaned text only composes what has come to stand side by side.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace kestrelid;
    const std::string_view text(reinterpret_cast<const char*>(data), size);
    const TextEvidence evidence = textEvidence(text);
    if (detection::normalize(evidence.cleaned) != base::composed(evidence.cleaned))
        std::abort();
    if (size > 96 || !reference::knows(text))  // the plain rules are slow
        return 0;
    if (reference::normalize(text) != evidence.cleaned ||
        reference::matchKeywords(detection::passportKeywords(), evidence.cleaned) !=
            evidence.matches)
        std::abort();
    return 0;
}
