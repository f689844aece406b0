#pragma once

#include <optional>
#include <QString>
#include <QStringList>
#include <variant>

namespace kestrelid::demo {

struct DemoOptions {
    bool help = false;
    bool version = false;
    bool widgets = false;
    QString camera;      // a name, or the path of a picture or video file; empty: the first camera
    QString picture{};   // shown in the preview at once
    QString theme{};     // "system", "light" or "dark"
    QString language{};  // as QLocale names it; empty: the system's
    double textScale = 1.0;
    QString screenshot{};
    std::optional<double> after{};  // seconds
};

struct UsageError {
    QString cause;  // one line
};

[[nodiscard]] std::variant<DemoOptions, UsageError> parseOptions(const QStringList& arguments);

[[nodiscard]] QString helpText();

}  // namespace kestrelid::demo
