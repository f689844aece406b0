// read-zone: the holder's name and the day of birth from a machine-readable zone in standard input,
// if nothing speaks against it. Exit status 1 where no zone is to be trusted.
#include <chrono>
#include <iostream>
#include <iterator>
#include <kestrelid/MachineReadableZone.h>
#include <string>

using namespace kestrelid;

int main() {
    const std::string text(std::istreambuf_iterator<char>(std::cin), {});
    const std::chrono::year_month_day today(
        std::chrono::floor<std::chrono::days>(std::chrono::system_clock::now()));
    ZoneRules rules;
    rules.asOf =
        CalendarDay{int(today.year()), int(unsigned(today.month())), int(unsigned(today.day()))};
    for (const MachineReadableZone& zone : parseZones(text, rules)) {
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
