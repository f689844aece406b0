#pragma once

#include <kestrelid/MachineReadableZone.h>

#include <QLocale>
#include <QString>
#include <QVariantList>

namespace kestrelid::passport {

// What a zone says, for people: maps with `kind` (keyOf()), `text`, and `isDoubtful`, in the order
// in which a passport is looked at. Fields that the zone does not tell are left out. Personal data:
// never log it.
[[nodiscard]] QVariantList zoneRows(const MachineReadableZone& zone, const QLocale& locale);

// A date in the locale's long form, without the day of the week. What is not known is left out; a
// year without its century keeps its two digits.
[[nodiscard]] QString dateText(const ZoneDate& date, const QLocale& locale);

}  // namespace kestrelid::passport
