#include "tests/reference/PlainZoneRules.h"

#include <algorithm>
#include <chrono>
#include <map>
#include <regex>

namespace kestrelid::reference {
namespace {

// c code, s state, n names, d number, o optional data, b birth, x sex, e expiry, t nationality,
// f further data, p surname, g given names, i office. A capital is the check digit of its small
// letter, K the composite one over all letters of `covered`.
struct Picture {
    std::vector<std::string> lines;
    std::string covered;
};

const std::map<ZoneFormat, Picture>& pictures() {
    static const std::map<ZoneFormat, Picture> all{
        {ZoneFormat::td1,
         {{"ccsssdddddddddDooooooooooooooo", "bbbbbbBxeeeeeeEtttfffffffffffK",
           "nnnnnnnnnnnnnnnnnnnnnnnnnnnnnn"},
          "dDobBeEf"}},
        {ZoneFormat::td2,
         {{"ccsssnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnn", "dddddddddDtttbbbbbbBxeeeeeeEoooooooK"},
          "dDbBeEo"}},
        {ZoneFormat::td3,
         {{"ccsssnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnn",
           "dddddddddDtttbbbbbbBxeeeeeeEooooooooooooooOK"},
          "dDbBeEoO"}},
        {ZoneFormat::mrvA,
         {{"ccsssnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnn",
           "dddddddddDtttbbbbbbBxeeeeeeEoooooooooooooooo"},
          ""}},
        {ZoneFormat::mrvB,
         {{"ccsssnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnn", "dddddddddDtttbbbbbbBxeeeeeeEoooooooo"}, ""}},
        {ZoneFormat::frenchIdentityCard,
         {{"ccssspppppppppppppppppppppppppiiiiii", "ddddddddddddDggggggggggggggbbbbbbBxK"},
          "cspidDgbBx"}},
        {ZoneFormat::drivingLicence, {{"ccsssooooooooooooooooooooooooK"}, "cso"}}};
    return all;
}

// What stands at the places of these letters, in reading order.
std::string pick(const Picture& picture, const std::vector<std::string>& lines,
                 std::string_view letters) {
    std::string found;
    for (std::size_t line = 0; line < lines.size(); ++line) {
        for (std::size_t i = 0; i < lines[line].size(); ++i) {
            if (letters.find(picture.lines[line][i]) != std::string_view::npos)
                found += lines[line][i];
        }
    }
    return found;
}

bool isDay(const std::string& text) {
    if (!std::regex_match(text, std::regex("([0-9]{2}|<<){3}")))
        return false;
    const auto part = [&](std::size_t at) {
        return text[at] == '<' ? -1 : std::stoi(text.substr(at, 2));
    };
    for (int year = 1996; year < 2096; ++year) {  // without a leap year left out
        for (unsigned month = 1; month <= 12 && (part(0) < 0 || part(0) == year % 100); ++month) {
            for (unsigned day = 1; day <= 31; ++day) {
                const bool isThis = (part(2) < 0 || part(2) == static_cast<int>(month)) &&
                                    (part(4) < 0 || part(4) == static_cast<int>(day));
                if (isThis &&
                    std::chrono::year_month_day(std::chrono::year(year), std::chrono::month(month),
                                                std::chrono::day(day))
                        .ok())
                    return true;
            }
        }
    }
    return false;
}

const char* expressionFor(char letter, ZoneFormat format) {
    switch (letter) {
    case 'c':
        return format == ZoneFormat::mrvA || format == ZoneFormat::mrvB ? "V[A-Z<]"
               : format == ZoneFormat::td3                              ? "[A-UW-Z][A-Z<]"
               : format == ZoneFormat::drivingLicence                   ? "D1"
                                                                        : "[ACI][A-Z<]";
    case 's':
    case 't':
        return "[A-Z]([A-Z][A-Z<]|<<)";
    case 'n':
    case 'p':
    case 'g':
        return "[A-Z]+(<{1,2}[A-Z]+)*<*";
    case 'x':
        return "[FMX<]";
    case 'b':
    case 'e':
        return "[0-9<]*";
    default:
        return "[A-Z0-9<]*";
    }
}

const ZoneField* fieldOf(const MachineReadableZone& zone, ZoneFieldKind kind) {
    for (const ZoneField& field : zone.fields) {
        if (field.kind == kind)
            return &field;
    }
    return nullptr;
}

}  // namespace

char checkDigitOf(std::string_view characters) {
    static const std::string order = "0123456789ABCDEFGHIJKLMNOPQRSTUVWXYZ";
    std::size_t sum = 0;
    for (std::size_t i = 0; i < characters.size(); ++i) {
        if (characters[i] != '<')
            sum += order.find(characters[i]) * (i % 3 == 0 ? 7 : i % 3 == 1 ? 3 : 1);
    }
    return order[sum % 10];
}

std::string disagreement(const MachineReadableZone& zone) {
    using enum ZoneFieldKind;
    static const std::map<char, ZoneFieldKind> kinds{
        {'c', documentCode},      {'s', issuingState},        {'d', documentNumber},
        {'o', optionalData},      {'b', dateOfBirth},         {'x', sex},
        {'e', dateOfExpiry},      {'t', nationality},         {'f', furtherOptionalData},
        {'p', primaryIdentifier}, {'g', secondaryIdentifier}, {'i', issuingOffice}};
    const Picture& picture = pictures().at(zone.format);
    std::vector<std::string> lines;
    for (const ZoneLine& line : zone.lines)
        lines.emplace_back(line.text.view());
    std::map<char, std::string> fields;
    for (const std::string& line : picture.lines) {
        for (const char letter : line)
            fields[letter] = pick(picture, lines, {&letter, 1});
    }

    bool isStrict = true;
    std::string differences;
    const auto compare = [&](ZoneFieldKind kind, const std::string& characters, CheckDigit digit) {
        const ZoneField* field = fieldOf(zone, kind);
        if (!field || field->characters != characters || field->checkDigit != digit)
            differences += "field " + std::to_string(static_cast<int>(kind)) + "; ";
    };
    bool isLong = false;
    for (const auto& [letter, text] : fields) {
        if (letter < 'a')
            continue;
        const bool isAllowed =
            std::regex_match(text, std::regex(expressionFor(letter, zone.format)));
        isStrict = isStrict && isAllowed;
        if (letter == 'b' || letter == 'e')
            isStrict = isStrict && isDay(text);
        if (letter == 'n') {
            const std::size_t end = std::min(text.find("<<"), text.size() - 2) + 2;
            compare(primaryIdentifier, text.substr(0, end), CheckDigit::nonePrinted);
            compare(secondaryIdentifier, text.substr(end), CheckDigit::nonePrinted);
            continue;
        }
        const auto capital = fields.find(static_cast<char>(letter - 'a' + 'A'));
        std::string covered = text;
        char digit = capital == fields.end() ? '\0' : capital->second[0];
        if (letter == 'd' && digit == '<' && text.find('<') == std::string::npos &&
            (zone.format == ZoneFormat::td1 || zone.format == ZoneFormat::td2)) {
            std::smatch match;
            if (std::regex_match(fields['o'], match, std::regex("([^<]+)([0-9])<(.*)"))) {
                isLong = true;
                covered += match.str(1);
                digit = match.str(2)[0];
                compare(optionalData, match.str(3).insert(0, "<"), CheckDigit::nonePrinted);
            }
        }
        if (letter == 'o' && isLong)
            continue;
        const bool isEmpty = covered.find_first_not_of('<') == std::string::npos;
        const bool mayLack =
            letter == 'o' ||
            (letter == 'd' && (zone.format == ZoneFormat::td1 || zone.format == ZoneFormat::td2));
        const CheckDigit result =
            digit == '\0' || (digit == '<' && isEmpty && mayLack) ? CheckDigit::nonePrinted
            : isAllowed && std::regex_match(covered, std::regex("[A-Z0-9<]*")) &&
                    digit == checkDigitOf(covered)
                ? CheckDigit::passed
                : CheckDigit::failed;
        isStrict = isStrict && result != CheckDigit::failed;
        compare(kinds.at(letter), covered, result);
    }
    if (!picture.covered.empty()) {
        const std::string covered = pick(picture, lines, picture.covered);
        const bool holds = std::regex_match(covered, std::regex("[A-Z0-9<]*")) &&
                           checkDigitOf(covered) == fields['K'][0];
        const ZoneField* composite = fieldOf(zone, ZoneFieldKind::composite);
        const bool passed = composite && composite->checkDigit == CheckDigit::passed;
        const bool hasStranger =
            std::any_of(zone.problems.begin(), zone.problems.end(), [](const auto& problem) {
                return problem.kind == ZoneProblem::Kind::notAllowed;
            });
        if (!composite || (hasStranger ? passed && !holds : passed != holds))
            differences += "composite; ";
        isStrict = isStrict && holds;
    }
    return isStrict == zone.isTrustworthy() ? differences : differences + "strict";
}

std::vector<std::string> randomZone(ZoneFormat format, std::mt19937& engine) {
    const auto below = [&](std::size_t limit) {
        return std::uniform_int_distribution<std::size_t>(0, limit - 1)(engine);
    };
    static const std::string letters = "ABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789<";
    const Picture& picture = pictures().at(format);
    std::vector<std::string> lines = picture.lines;
    std::map<char, std::size_t> seen;
    for (std::string& line : lines) {
        for (char& place : line) {
            const std::size_t index = seen[place]++;
            const bool isName = place == 'n' || place == 'p' || place == 'g';
            if (place == 'c')
                place = (format == ZoneFormat::drivingLicence                       ? "D1"
                         : format == ZoneFormat::td3                                ? "P<"
                         : format == ZoneFormat::mrvA || format == ZoneFormat::mrvB ? "V<"
                                                                                    : "ID")[index];
            else if (place == 's' || place == 't')
                place = "FRA"[index];
            else if (isName)
                place = index % 5 == 4 ? '<' : letters[below(26)];
            else if (place == 'b' || place == 'e')
                place = letters[26 + below(index == 2 ? 2 : index == 4 ? 4 : 10)];
            else if (place == 'x')
                place = "MFX<"[below(4)];
            else if (place >= 'a')
                place = letters[below(letters.size())];
        }
    }
    for (std::size_t line = 0; line < lines.size(); ++line) {
        for (std::size_t i = 0; i < lines[line].size(); ++i) {
            const char capital = picture.lines[line][i];
            if (capital >= 'A' && capital <= 'Z' && capital != 'K') {
                const auto letter = static_cast<char>(capital - 'A' + 'a');
                lines[line][i] = checkDigitOf(pick(picture, lines, {&letter, 1}));
            }
        }
    }
    if (!picture.covered.empty())
        lines[lines.size() == 1 ? 0 : 1].back() =
            checkDigitOf(pick(picture, lines, picture.covered));
    return lines;
}

}  // namespace kestrelid::reference
