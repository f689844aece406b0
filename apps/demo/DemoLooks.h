#pragma once

#include <QString>

namespace kestrelid::demo {

// For the whole program, before its first window. theme: "system", "light" or "dark".
void applyTheme(const QString& theme);

// Texts, dates and the direction of layouts, for the whole program, before its first window. Empty:
// the system's language. False if the texts are not translated into the one that is asked for.
[[nodiscard]] bool applyLanguage(const QString& code);

}  // namespace kestrelid::demo
