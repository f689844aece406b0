#include "scanner/ZoneValue.h"

#include <optional>
#include <QString>
#include <QStringList>
#include <QVariantList>
#include <QVariantMap>
#include <string_view>

namespace kestrelid::scanner {

namespace {

QString textOf(std::string_view text) {
    return QString::fromUtf8(text.data(), static_cast<qsizetype>(text.size()));
}

QVariant null() {
    return QVariant::fromValue(nullptr);
}

QVariant valueOf(const std::optional<int>& number) {
    return number ? QVariant(*number) : null();
}

QVariant valueOf(const std::optional<ZoneDate>& date) {
    if (!date)
        return null();
    return QVariantMap{{QStringLiteral("year"), valueOf(date->year)},
                       {QStringLiteral("twoDigitYear"), valueOf(date->twoDigitYear)},
                       {QStringLiteral("month"), valueOf(date->month)},
                       {QStringLiteral("day"), valueOf(date->day)}};
}

QVariant valueOf(const std::optional<ZoneState>& state) {
    if (!state)
        return null();
    return QVariantMap{{QStringLiteral("name"), textOf(state->name)},
                       {QStringLiteral("isKnown"), state->isKnown}};
}

QVariantMap valueOf(const ZoneField& field) {
    return {{QStringLiteral("kind"), textOf(keyOf(field.kind))},
            {QStringLiteral("text"), textOf(field.text.view())},
            {QStringLiteral("characters"), textOf(field.characters.view())},
            {QStringLiteral("checkDigit"), textOf(keyOf(field.checkDigit))},
            {QStringLiteral("corrections"), static_cast<int>(field.corrections.size())},
            {QStringLiteral("doubtful"), static_cast<int>(field.doubtful.size())},
            {QStringLiteral("date"), valueOf(field.date)},
            {QStringLiteral("state"), valueOf(field.state)},
            {QStringLiteral("isPerhapsTruncated"), field.isPerhapsTruncated}};
}

QVariantMap valueOf(const ZoneProblem& problem) {
    return {
        {QStringLiteral("kind"), textOf(keyOf(problem.kind))},
        {QStringLiteral("field"), problem.field ? QVariant(textOf(keyOf(*problem.field))) : null()},
        {QStringLiteral("text"), QString::fromStdString(describe(problem))},
    };
}

}  // namespace

QVariant zoneValue(const LiveZone& live) {
    return live.zone ? zoneValue(*live.zone, live.isStrict(), live.frames) : null();
}

QVariant zoneValue(const MachineReadableZone& zone, bool isStrict, int frames) {
    QStringList lines;
    for (const ZoneLine& line : zone.lines)
        lines << textOf(line.text.view());
    QVariantList fields;
    for (const ZoneField& field : zone.fields)
        fields << valueOf(field);
    QVariantList problems;
    for (const ZoneProblem& problem : zone.problems)
        problems << valueOf(problem);
    return QVariantMap{{QStringLiteral("format"), textOf(nameOf(zone.format))},
                       {QStringLiteral("strict"), isStrict},
                       {QStringLiteral("frames"), frames},
                       {QStringLiteral("lines"), lines},
                       {QStringLiteral("fields"), fields},
                       {QStringLiteral("problems"), problems}};
}

}  // namespace kestrelid::scanner
