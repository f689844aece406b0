#include "vision/text/EnglishOnly.h"

#include <algorithm>

namespace kestrelid::vision {

std::optional<RequestError> refuseUnlessEnglish(const TextRequest& request) {
    const auto& languages = request.recognitionLanguages;
    if (std::find(languages.begin(), languages.end(), "en") != languages.end())
        return std::nullopt;
    return RequestError{"this text recogniser reads English only: ask for \"en\""};
}

}  // namespace kestrelid::vision
