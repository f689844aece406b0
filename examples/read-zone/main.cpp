// read-zone [PICTURE]: the holder's name and the year of birth from a machine-readable zone of the
// picture, or in standard input, if nothing speaks against it. Exit status 1 where no zone is to be
// trusted.
#include <chrono>
#include <iostream>
#include <iterator>
#include <kestrelid/ImageFile.h>
#include <kestrelid/PassportDetector.h>
#include <string>
#include <variant>
#include <vector>

using namespace kestrelid;

std::vector<MachineReadableZone> zonesOfPicture(const char* path, const ZoneRules& rules) {
    const auto picture = readImage(path);
    const auto* image = std::get_if<Image>(&picture);
    if (!image) {
        std::cerr << path << ": " << std::get<ImageError>(picture).cause << '\n';
        return {};
    }
    const auto detector = PassportDetector::create();
    const auto result = detector->examineNow(image->upright(), {.zoneRules = rules});
    if (const auto* examined = std::get_if<Examination>(&result))
        return examined->zones;  // beside examined->verdict, the outlines and the lines
    return {};
}

std::vector<MachineReadableZone> zonesOfInput(const ZoneRules& rules) {
    const std::string text(std::istreambuf_iterator<char>(std::cin), {});
    return parseZones(text, rules);
}

int main(int argc, char** argv) {
    const std::chrono::year_month_day today(
        std::chrono::floor<std::chrono::days>(std::chrono::system_clock::now()));
    ZoneRules rules;
    rules.asOf =
        CalendarDay{int(today.year()), int(unsigned(today.month())), int(unsigned(today.day()))};
    for (const auto& zone : argc > 1 ? zonesOfPicture(argv[1], rules) : zonesOfInput(rules)) {
        if (!zone.isTrustworthy()) {
            for (const ZoneProblem& problem : zone.problems)
                std::cerr << describe(problem) << '\n';  // holds nothing of the document
            continue;
        }
        const ZoneField* name = zone.field(ZoneFieldKind::primaryIdentifier);
        const ZoneField* birth = zone.field(ZoneFieldKind::dateOfBirth);
        if (!name || !birth)
            continue;  // a driving licence
        std::cout << name->text.view() << ", born in " << birth->date->year.value_or(0) << '\n';
        return 0;
    }
    return 1;
}
