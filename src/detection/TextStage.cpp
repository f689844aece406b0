#include "detection/TextStage.h"

#include "detection/KeywordTable.h"
#include "detection/NormalizedText.h"
#include "detection/VerdictNumbers.h"

#include <memory>
#include <mutex>
#include <utility>
#include <vector>

namespace kestrelid::detection {

namespace {

// Counts the entries of the table that match within the single lines read so far. A line's words
// stand side by side in the whole text too, so an entry that matches within a line matches there as
// well: once enough have matched, the rest of the text cannot change the score. Until then any line
// that is not read yet can, whatever the outline is.
class EntriesMatchedByLines {
public:
    bool isEnoughAfter(std::string_view line) {
        const std::lock_guard lock(mutex_);
        const KeywordTable& table = KeywordTable::passport();
        const std::vector<std::int64_t> distances = table.distances(normalize(line));
        matched_.resize(distances.size());
        std::int64_t count = 0;
        for (std::size_t entry = 0; entry < distances.size(); ++entry) {
            matched_[entry] = matched_[entry] || table.isMatch(entry, distances[entry]);
            count += matched_[entry];
        }
        return count >= kKeywordMatchThreshold;
    }

private:
    std::mutex mutex_;
    std::vector<bool> matched_;
};

}  // namespace

std::vector<TextObservation> readLines(TextService& service, const Console& console,
                                       const Bitmap& bitmap,
                                       std::function<bool(std::string_view)> isEnough) {
    TextRequest request;  // accurate, with language correction, English
    request.isEnough = std::move(isEnough);
    return findings([&] { return service.perform(bitmap, request); },
                    {.reported = "Text recognition error:", .notPerformed = kTextRequestFailed},
                    console);
}

std::function<bool(std::string_view)> untilDecided() {
    // Shared: a service may keep the request and ask once more after its answer.
    return [matched = std::make_shared<EntriesMatchedByLines>()](std::string_view line) {
        return matched->isEnoughAfter(line);
    };
}

std::string joinedText(const std::vector<TextObservation>& lines) {
    std::string text;
    bool isFirst = true;
    for (const TextObservation& line : lines) {
        const std::vector<RecognizedText> best = line.topCandidates(1);
        if (best.empty())
            continue;
        if (!isFirst)
            text += '\n';
        isFirst = false;
        text += best.front().string;
    }
    return text;
}

}  // namespace kestrelid::detection
