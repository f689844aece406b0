// Zones in text: the specimens of ICAO Doc 9303, national habits, damage, and the slow second
// rules.
#include "tests/reference/PlainZoneRules.h"
#include "tests/zone/ZoneSummary.h"

#include <gtest/gtest.h>

namespace kestrelid::test {
namespace {

const std::string kTd3First = "P<UTOERIKSSON<<ANNA<MARIA<<<<<<<<<<<<<<<<<<<";
const std::string kTd3Second = "L898902C36UTO7408122F1204159ZE184226B<<<<<10";
const std::string kTd3 = kTd3First + "\n" + kTd3Second;
const std::string kTd3Fields =
    "TD3 P,UTO,ERIKSSON,ANNA MARIA,L898902C3+,UTO,740812+,F,120415+,ZE184226B+,+";
const std::string kTd1 = "I<UTOD231458907<<<<<<<<<<<<<<<\n7408122F1204159UTO<<<<<<<<<<<6\n"
                         "ERIKSSON<<ANNA<MARIA<<<<<<<<<<";
const std::string kTd1Fields = "TD1 I,UTO,D23145890+,,740812+,F,120415+,UTO,,ERIKSSON,ANNA MARIA,+";

const struct {
    const char* name;
    std::string text;
    std::string zones;
} kSound[] = {
    {"td3", kTd3, kTd3Fields},
    {"td1", kTd1, kTd1Fields},
    {"td1LongNumber",
     "I<UTOD23145890<7349<<<<<<<<<<<\n3407127M9507122UTO<<<<<<<<<<<2\n"
     "STEVENSON<<PETER<JOHN<<<<<<<<<",
     "TD1 I,UTO,D23145890734+,,340712+,M,950712+,UTO,,STEVENSON,PETER JOHN,+"},
    {"td1NumberOfTen",
     "I<UTOD23145890<76<<<<<<<<<<<<<\n3407127M9507122UTO<<<<<<<<<<<0\n"
     "STEVENSON<<PETER<JOHN<<<<<<<<<",
     "TD1 I,UTO,D231458907+,,340712+,M,950712+,UTO,,STEVENSON,PETER JOHN,+"},
    {"td2", "I<UTOERIKSSON<<ANNA<MARIA<<<<<<<<<<<\nD231458907UTO7408122F1204159<<<<<<<6",
     "TD2 I,UTO,ERIKSSON,ANNA MARIA,D23145890+,UTO,740812+,F,120415+,,+"},
    {"td2LongNumber", "I<UTOSTEVENSON<<PETER<JOHN<<<<<<<<<<\nD23145890<UTO3407127M95071227349<<<8",
     "TD2 I,UTO,STEVENSON,PETER JOHN,D23145890734+,UTO,340712+,M,950712+,,+"},
    {"mrvA",
     "V<UTOERIKSSON<<ANNA<MARIA<<<<<<<<<<<<<<<<<<<\n"
     "L8988901C4XXX4009078F96121096ZE184226B<<<<<<",
     "MRV-A V,UTO,ERIKSSON,ANNA MARIA,L8988901C+,XXX,400907+,F,961210+,6ZE184226B"},
    {"mrvB", "V<UTOERIKSSON<<ANNA<MARIA<<<<<<<<<<<\nL8988901C4XXX4009078F9612109<<<<<<<<",
     "MRV-B V,UTO,ERIKSSON,ANNA MARIA,L8988901C+,XXX,400907+,F,961210+,"},
    {"french", "IDFRABERTHIER<<<<<<<<<<<<<<<<<<<<<<<\n8806923102858CORINNE<<<<<<<6512068F6",
     "French identity card ID,FRA,BERTHIER,,880692310285+,CORINNE,651206+,F,+"},
    {"licence", "D1FRA13AA000026181231MARTIN<<9",
     "driving licence D1,FRA,13AA000026181231MARTIN,+"},
    {"optionalDataEmpty", kTd3First + "\nL898902C36UTO7408122F1204159<<<<<<<<<<<<<<<8",
     "TD3 P,UTO,ERIKSSON,ANNA MARIA,L898902C3+,UTO,740812+,F,120415+,,+"},
    {"shortStateAndUnknownParts",
     "P<D<<ERIKSSON<<<<<<<<<<<<<<<<<<<<<<<<<<<<<<<\nL898902C36D<<74<<<<1<1204159<<<<<<<<<<<<<<06",
     "TD3 P,D,ERIKSSON,,L898902C3+,D,74+,,120415+,+,+"},
    {"severalAmongOthers",
     "\xEF\xBB\xBFPASSPORT\r\n \t" + kTd3First + " \r\n\r\n" + kTd3Second + "\r\nutopia\r" + kTd1 +
         "\n",
     kTd3Fields + "\n" + kTd1Fields},
};

TEST(ParseZones, TellsSoundZonesStrictly) {
    for (const auto& row : kSound) {
        SCOPED_TRACE(row.name);
        const auto zones = parseZones(row.text);
        EXPECT_EQ(summary(zones), row.zones);
        for (const MachineReadableZone& zone : zones)
            EXPECT_TRUE(zone.isTrustworthy() && reference::disagreement(zone).empty());
    }
}

std::string replaced(std::string text, const std::string& from, const std::string& to) {
    return text.replace(text.find(from), from.size(), to);
}

TEST(ParseZones, TellsWhatIsWrong) {
    const std::string fromTd3First = "TD3 P,UTO,ERIKSSON,ANNA MARIA,";
    const std::string fromTd3Second = "TD3 L898902C3+,UTO,740812+,F,120415+,ZE184226B+,+";
    const struct {
        const char* name;
        std::string text;
        std::string zones;
    } rows[] = {
        {"impossibleDay", replaced(kTd3, "7408122", "7413120"),
         fromTd3First + "L898902C3+,UTO,741312-,F,120415+,ZE184226B+,-"
                        " !digit@1:19 !digit@1:43 !date@1:13"},
        {"februaryInNoLeapYear", replaced(kTd3, "7408122", "7402290"),
         fromTd3First + "L898902C3+,UTO,740229+,F,120415+,ZE184226B+,- !digit@1:43 !date@1:13"},
        {"longNumberWithoutDigit",
         "I<UTOD23145890<7A<<<<<<<<<<<<<\n3407127M9507122UTO<<<<<<<<<<<4\nSTEVENSON<<PETER<<<<<<<<<"
         "<<<<<",
         "TD1 I,UTO,D23145890-,7A,340712+,M,950712+,UTO,,STEVENSON,PETER,+ !digit@0:14"},
        {"smallLetter", replaced(kTd3, "MARIA", "mARIA"),
         replaced(kTd3Fields, "MARIA", "mARIA") + " !allowed@0:20"},
        {"cyrillicLetter", replaced(kTd3, "L898902C3", "L898902\u04213"),
         fromTd3First + "L898902?3-,UTO,740812+,F,120415+,ZE184226B+,-"
                        " !allowed@1:7 !digit@1:9 !digit@1:43"},
        {"blankInside", replaced(kTd3, "ANNA<", "ANNA "), kTd3Fields + " !allowed@0:19"},
        {"nameAfterThreeFillers", replaced(kTd3, "MARIA<<<<<", "MARIA<<<K<"),
         replaced(kTd3Fields, "MARIA", "MARIA K") + " !allowed@0:28"},
        {"namesMissing", "ERIKSSON\n" + kTd3Second, fromTd3Second + " !missing@0:0"},
        {"swapped", kTd3Second + "\n" + kTd3First, fromTd3Second + " !missing@0:0"},
        {"secondLineMissing", kTd3First, ""},
        {"firstLineOf43", kTd3.substr(0, 43) + "\n" + kTd3Second, fromTd3Second + " !length@0:0"},
        {"secondLineOf43", replaced(kTd3, "1204159", "120415"),
         fromTd3First + "L898902C3+,740812+ !length@1:0"},
        {"secondLineOf45", replaced(kTd3, "L898902C3", "L8998902C3"), ""},
        {"fillers", std::string(44, '<') + "\n" + std::string(44, '<'), ""},
        {"almostFillers", "P" + std::string(43, '<') + "\n" + std::string(44, '<'), ""},
        {"prose",
         "THE<QUICK<BROWN<FOX<JUMPED<OVER<THE<LAZY<DOG\n"
         "AND<THEN<THE<QUICK<BROWN<FOX<JUMPED<OVER<IT<",
         ""},
        {"barCode", "D1ZZZ4006381333931400638133393", ""},
        {"longLine", kTd3First + kTd3Second, ""},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        EXPECT_EQ(summary(parseZones(row.text)), row.zones);
    }
}

// What check digits promise: no single character of another value goes unnoticed where one covers.
TEST(ParseZones, NoticesEachErrorUnderADigit) {
    const std::string alphabet = "0123456789ABCDEFGHIJKLMNOPQRSTUVWXYZ<";
    const auto value = [&](char c) { return c == '<' ? 0 : alphabet.find(c) % 10; };
    int looked = 0;
    for (const auto& row : kSound) {
        const std::string text = row.text.substr(0, row.text.find("\r"));
        const auto zones = parseZones(text);
        for (const ZoneField& field : zones.empty() ? Wiped<ZoneField>() : zones[0].fields) {
            for (std::size_t i = 0;
                 field.checkDigit == CheckDigit::passed && i <= field.places.size(); ++i) {
                const ZonePlace place =
                    i < field.places.size() ? field.places[i] : *field.checkDigitPlace;
                const std::size_t length = zones[0].lines[0].text.view().size() + 1;
                const std::size_t at = static_cast<std::size_t>(place.line) * length +
                                       static_cast<std::size_t>(place.column);
                for (const char other : alphabet) {
                    std::string changed = text;
                    changed[at] = other;
                    const auto found = parseZones(changed);
                    const bool isSame = value(other) == value(text[at]);
                    EXPECT_FALSE(!isSame && !found.empty() && found[0].isTrustworthy())
                        << row.name << ' ' << at << other;
                    ++looked;
                }
            }
        }
    }
    EXPECT_GT(looked, 5000);
}

TEST(ParseZones, AgreesWithThePlainRules) {
    std::mt19937 engine(20261122);
    const auto below = [&](std::size_t limit) {
        return std::uniform_int_distribution<std::size_t>(0, limit - 1)(engine);
    };
    const std::string alphabet = "0123456789ABCDEFGHIJKLMNOPQRSTUVWXYZ<<<<<<a ";
    int told = 0;
    for (int round = 0; round < 1400; ++round) {
        const auto format = static_cast<ZoneFormat>(round % 7);
        std::string text;
        for (const std::string& line : reference::randomZone(format, engine))
            text += line + "\n";
        const bool isSound = round % 3 == 0;
        for (std::size_t i = isSound ? 0 : 1 + below(4); i > 0; --i)
            text[below(text.size() - 1)] = alphabet[below(alphabet.size())];
        const auto zones = parseZones(text);
        ASSERT_TRUE(!isSound || (zones.size() == 1 && zones[0].format == format)) << text;
        for (const MachineReadableZone& zone : zones) {
            if (!isWhole(zone))
                continue;
            ++told;
            ASSERT_EQ(reference::disagreement(zone), "") << text << summary(zones);
        }
    }
    EXPECT_GT(told, 1000);
}

TEST(ParseZones, TellsCenturiesByTheRule) {
    using enum ZoneFieldKind;
    const CalendarDay today{2026, 11, 22};
    EXPECT_EQ(usualCentury(dateOfBirth, 26, today), 2026);
    EXPECT_EQ(usualCentury(dateOfBirth, 27, today), 1927);
    EXPECT_EQ(usualCentury(dateOfExpiry, 76, today), 2076);
    EXPECT_EQ(usualCentury(dateOfExpiry, 77, today), 1977);
    EXPECT_EQ(usualCentury(dateOfBirth, 100, today), std::nullopt);
    EXPECT_EQ(usualCentury(dateOfExpiry, 90, {2147483647, 1, 1}), std::nullopt);

    const auto birth = [](const ZoneRules& rules) {
        const auto zones = parseZones(kTd3, rules);
        return zones.at(0).field(dateOfBirth)->date->year;
    };
    EXPECT_EQ(birth({}), std::nullopt);
    EXPECT_EQ(birth({.asOf = today}), 1974);
    EXPECT_EQ(birth({.asOf = CalendarDay{2074, 8, 12}}), 2074);
    EXPECT_EQ(birth({.asOf = CalendarDay{2074, 8, 11}}), 1974);
    EXPECT_EQ(birth({.asOf = today, .century = [](auto...) { return 1874; }}), 1874);
    EXPECT_EQ(birth({.asOf = today, .century = [](auto...) { return 1875; }}), std::nullopt);
    EXPECT_EQ(birth({.asOf = today, .century = nullptr}), std::nullopt);
    EXPECT_EQ(birth({.asOf = today,
                     .century = [](auto...) -> std::optional<int> { throw std::bad_alloc(); }}),
              std::nullopt);
}

}  // namespace
}  // namespace kestrelid::test
