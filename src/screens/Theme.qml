import QtQuick

// Colours of the pages that are not pictures. Each text stands out from what it lies on by 4.5 : 1
// at least (WCAG 2.1, 1.4.3).
QtObject {
    id: theme

    // "light", "dark", or "system": as dark as the system's windows.
    property string choice: "system"

    readonly property bool isDark: choice === "dark" || (choice !== "light" && isSystemDark)

    readonly property color background: isDark ? "#121316" : "#FFFFFF"
    readonly property color text: isDark ? "#F2F3F5" : "#1B1B1F"
    readonly property color secondaryText: isDark ? "#A9AFBA" : "#5A5F68"
    readonly property color line: isDark ? "#34373D" : "#D5D8DD" // between parts; never a text
    readonly property color accent: isDark ? "#7CB8FF" : "#0B63CE" // also a text on the background
    readonly property color textOnAccent: isDark ? "#06264D" : "#FFFFFF"
    readonly property color tint: isDark ? "#24344A" : "#DCEBFF"
    readonly property color textOnTint: isDark ? "#BBD9FF" : "#0A4FA8"
    readonly property color success: isDark ? "#4ADE80" : "#146C34"
    readonly property color failure: isDark ? "#FF8A80" : "#C62828"
    readonly property color warning: isDark ? "#FFC857" : "#8A5A00"

    readonly property SystemPalette system: SystemPalette {}
    readonly property bool isSystemDark: system.window.hslLightness < 0.5
}
