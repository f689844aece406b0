#include "tests/screens/ShownScreen.h"

#include <kestrelid/screens/QmlModule.h>

#include <algorithm>
#include <cmath>
#include <gtest/gtest.h>
#include <QColor>
#include <QQmlComponent>

namespace kestrelid::test {
namespace {

// WCAG 2.1, relative luminance and contrast ratio.
double luminance(const QColor& color) {
    const auto linear = [](double channel) {
        return channel <= 0.03928 ? channel / 12.92 : std::pow((channel + 0.055) / 1.055, 2.4);
    };
    return 0.2126 * linear(color.redF()) + 0.7152 * linear(color.greenF()) +
           0.0722 * linear(color.blueF());
}

double contrast(const QColor& one, const QColor& other) {
    const auto [low, high] = std::minmax({luminance(one), luminance(other)});
    return (high + 0.05) / (low + 0.05);
}

std::unique_ptr<QObject> made(QQmlEngine& engine, const QByteArray& type) {
    installQmlModule(engine);
    QQmlComponent component(&engine);
    component.setData("import QtQuick\nimport Kestrelid\n" + type, {});
    std::unique_ptr<QObject> object(component.create());
    EXPECT_TRUE(object) << component.errorString().toStdString();
    return object;
}

TEST(SharedParts, TextsOfBothThemesStandOut) {
    QQmlEngine engine;
    for (const bool isDark : {false, true}) {
        const auto theme =
            made(engine, isDark ? "Theme { choice: 'dark' }" : "Theme { choice: 'light' }");
        const auto color = [&](const char* name) { return theme->property(name).value<QColor>(); };
        EXPECT_EQ(luminance(color("background")) < 0.5, isDark);
        for (const auto& [ground, texts] : std::map<const char*, std::vector<const char*>>{
                 {"background",
                  {"text", "secondaryText", "accent", "success", "failure", "warning"}},
                 {"tint", {"text", "secondaryText", "textOnTint", "success", "failure", "warning"}},
                 {"accent", {"textOnAccent"}}}) {
            for (const char* text : texts)
                EXPECT_GE(contrast(color(text), color(ground)), 4.5)
                    << text << " on " << ground << (isDark ? ", dark" : ", light");
        }
    }
}

TEST(SharedParts, OnlyLargeScreensThatAdaptGetLargerUnits) {
    QQmlEngine engine;
    const auto screen = made(engine, "ScreenItem {}");
    struct Row {
        QSizeF size;
        bool adapts;
        double unit;
        bool isCompact;
    };
    for (const auto& [size, adapts, unit, isCompact] : {
             Row{{3840, 2160}, false, 1.0, false},
             Row{{240, 320}, false, 1.0, false},
             Row{{3840, 2160}, true, 2.0, false},
             Row{{1440, 2560}, true, 1.25, false},
             Row{{1920, 1200}, true, 1.0, false},
             Row{{820, 390}, true, 1.0, true},
             Row{{320, 480}, true, 1.0, false},
             Row{{240, 320}, true, 1.0, true},
             Row{{360, 640}, true, 1.0, false},
         }) {
        qobject_cast<QQuickItem*>(screen.get())->setSize(size);
        screen->setProperty("adaptsToSize", adapts);
        EXPECT_EQ(screen->property("unit"), unit) << size.width();
        EXPECT_EQ(screen->property("isCompact"), isCompact) << size.width();
    }
}

}  // namespace
}  // namespace kestrelid::test
