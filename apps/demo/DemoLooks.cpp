#include "apps/demo/DemoLooks.h"

#include <QApplication>
#include <QLibraryInfo>
#include <QLocale>
#include <QPalette>
#include <QTranslator>

namespace kestrelid::demo {

namespace {

// file: without the language. False if there is none for it.
bool load(const QString& file, const QLocale& locale, const QString& folder) {
    auto* translator = new QTranslator(qApp);
    // Not by the locale itself, which would take a person's second language where the first needs
    // no file: English.
    const bool isFound = translator->load(file + "_" + locale.name(), folder);
    if (isFound)
        QCoreApplication::installTranslator(translator);
    return isFound;
}

}  // namespace

void applyTheme(const QString& theme) {
    if (theme == QLatin1String("system"))
        return;
    // A desktop's own style would keep the desktop's palette.
    QApplication::setStyle("Fusion");
    const bool isDark = theme == QLatin1String("dark");
    const QColor button = isDark ? QColor(60, 60, 64) : QColor(236, 236, 238);
    QApplication::setPalette(QPalette(button, isDark ? QColor(28, 28, 30) : Qt::white));
}

bool applyLanguage(const QString& code) {
    const QLocale locale = code.isEmpty() ? QLocale() : QLocale(code);
    const QString folder = QCoreApplication::applicationDirPath() + "/" KESTRELID_DEMO_TRANSLATIONS;
    if (load("kestrelid", locale, folder)) {
        // What Qt's own dialogs say.
        load("qtbase", locale, QLibraryInfo::path(QLibraryInfo::TranslationsPath));
        QGuiApplication::setLayoutDirection(locale.textDirection());
    } else if (!code.isEmpty() && locale.language() != QLocale::English) {
        return false;
    }
    QLocale::setDefault(locale);
    return true;
}

}  // namespace kestrelid::demo
