#include "passport/ZoneRows.h"

#include <algorithm>
#include <array>
#include <optional>
#include <QStringList>
#include <QVariantMap>
#include <string_view>

namespace kestrelid::passport {

namespace {

constexpr std::array kRows{
    ZoneFieldKind::primaryIdentifier,
    ZoneFieldKind::secondaryIdentifier,
    ZoneFieldKind::documentNumber,
    ZoneFieldKind::nationality,
    ZoneFieldKind::issuingState,
    ZoneFieldKind::dateOfBirth,
    ZoneFieldKind::sex,
    ZoneFieldKind::dateOfExpiry,
};

QString textOf(std::string_view text) {
    return QString::fromUtf8(text.data(), static_cast<qsizetype>(text.size()));
}

bool isDoubtful(const MachineReadableZone& zone, const ZoneField& field) {
    return field.checkDigit == CheckDigit::failed || !field.doubtful.empty() ||
           field.isPerhapsTruncated ||
           std::ranges::any_of(zone.problems, [&](const ZoneProblem& problem) {
               return problem.field == field.kind;
           });
}

QString textOf(const ZoneField& field, const QLocale& locale) {
    const QString plain = textOf(field.text.view());
    if (field.date) {
        const QString date = dateText(*field.date, locale);
        return date.isEmpty() ? plain : date;
    }
    if (field.state && !field.state->name.empty())
        return QStringLiteral("%1, %2").arg(textOf(field.state->name), plain);
    return plain;
}

QString number(int value, int digits, const QLocale& locale) {
    QLocale ungrouped = locale;
    ungrouped.setNumberOptions(QLocale::OmitGroupSeparator);
    QString text = ungrouped.toString(value);
    while (text.size() < digits)
        text.prepend(locale.zeroDigit());
    return text;
}

QString yearText(const ZoneDate& date, const QLocale& locale) {
    return date.year           ? number(*date.year, 4, locale)
           : date.twoDigitYear ? number(*date.twoDigitYear, 2, locale)
                               : QString();
}

// The locale's pattern for a day without the day of the week, and what set that apart.
QString patternOf(const QLocale& locale) {
    QString pattern = locale.dateFormat(QLocale::LongFormat);
    const qsizetype weekday = pattern.indexOf(QLatin1String("dddd"));
    if (weekday < 0)
        return pattern;
    pattern.remove(weekday, 4);
    const auto separates = [&](qsizetype at) {
        const QChar c = pattern[at];
        return c.isSpace() || c == QLatin1Char(',') || c == QChar(0x060C) || c == QChar(0x3001);
    };
    while (weekday < pattern.size() && separates(weekday))
        pattern.remove(weekday, 1);
    if (weekday == pattern.size()) {
        while (!pattern.isEmpty() && separates(pattern.size() - 1))
            pattern.chop(1);
    }
    return pattern;
}

}  // namespace

QString dateText(const ZoneDate& date, const QLocale& locale) {
    const QString year = yearText(date, locale);
    if (!date.day || !date.month || year.isEmpty()) {
        QStringList known;
        if (date.month)
            known << locale.standaloneMonthName(*date.month);
        if (!year.isEmpty())
            known << year;
        return known.join(QLatin1Char(' '));
    }
    const QString pattern = patternOf(locale);
    QString text;
    bool isQuoted = false;
    for (qsizetype at = 0; at < pattern.size();) {
        const QChar letter = pattern[at];
        qsizetype end = at + 1;
        while (end < pattern.size() && pattern[end] == letter)
            ++end;
        const auto count = static_cast<int>(end - at);
        at = end;
        if (letter == QLatin1Char('\'')) {
            text += QString(count / 2, letter);
            isQuoted = isQuoted != (count % 2 == 1);
        } else if (isQuoted) {
            text += QString(count, letter);
        } else if (letter == QLatin1Char('d')) {
            text += number(*date.day, count, locale);
        } else if (letter == QLatin1Char('M')) {
            text += count >= 3 ? locale.monthName(*date.month) : number(*date.month, count, locale);
        } else if (letter == QLatin1Char('y')) {
            text += year;
        } else {
            text += QString(count, letter);
        }
    }
    return text;
}

QVariantList zoneRows(const MachineReadableZone& zone, const QLocale& locale) {
    QVariantList rows;
    for (const ZoneFieldKind kind : kRows) {
        const ZoneField* field = zone.field(kind);
        if (!field)
            continue;
        const QString text = textOf(*field, locale);
        if (text.isEmpty() && kind != ZoneFieldKind::sex)
            continue;
        rows << QVariantMap{{QStringLiteral("kind"), textOf(keyOf(kind))},
                            {QStringLiteral("text"), text},
                            {QStringLiteral("isDoubtful"), isDoubtful(zone, *field)}};
    }
    return rows;
}

}  // namespace kestrelid::passport
