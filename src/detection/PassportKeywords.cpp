#include "detection/PassportKeywords.h"

#include <array>

namespace kestrelid::detection {

namespace {

constexpr std::array<std::string_view, 30> kKeywords{
    "PASSPORT",
    "PASSEPORT",
    "PASAPORTE",
    "REISEPASS",
    "PASSPORT NUMBER",
    "NATIONALITY",
    "DATE OF BIRTH",
    "PLACE OF BIRTH",
    "SURNAME",
    "GIVEN NAMES",
    "AUTHORITY",
    "DATE OF ISSUEx",  // the x is meant: it is part of the entry that hosts see in the reasons
    "EXPIRY DATE",
    "PERSONAL DATA",
    "EMERGENCY CONTACT",
    "BANGLADESH",
    "PEOPLE'S REPUBLIC OF BANGLADESH",
    "REPUBLIC OF BANGLADESH",
    "\u099C\u09A8\u09B8\u0982\u0996\u09CD\u09AF\u09BE",
    "\u09A2\u09BE\u0995\u09BE",
    "BANGLADESHI",
    "BGD",
    "PEOPLE REUBLIC OF BANGLADESH",  // without the P, as the entry stands
    "BANGLADESH",
    "PASSPORT",
    "PERSONAL DATA AND EMERGENCY CONTACT",
    "FATHER'S NAME",
    "PERMANENT ADDRESS",
    "DATE OF BIRTH",
    "NATIONALITY",
};

}  // namespace

std::span<const std::string_view> passportKeywords() noexcept {
    return kKeywords;
}

}  // namespace kestrelid::detection
