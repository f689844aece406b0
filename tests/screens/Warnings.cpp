#include "tests/screens/Warnings.h"

#include <cstdio>
#include <mutex>
#include <QtGlobal>
#include <utility>

namespace kestrelid::test {

namespace {

struct Collected {
    std::mutex mutex;
    QStringList lines;
};

Collected& collected() {
    static Collected lines;
    return lines;
}

void collect(QtMsgType type, const QMessageLogContext&, const QString& line) {
    // About this platform's windows and the machine's fonts, not about the screens.
    if (line.contains(QLatin1String("propagateSizeHints")) ||
        line.contains(QLatin1String("OpenType support missing")))
        return;
    if (type != QtWarningMsg && type != QtCriticalMsg) {
        std::fprintf(stderr, "%s\n", qPrintable(line));
        return;
    }
    const std::lock_guard lock(collected().mutex);
    collected().lines.append(line);
}

}  // namespace

void collectWarnings() {
    qInstallMessageHandler(collect);
}

QStringList takeWarnings() {
    const std::lock_guard lock(collected().mutex);
    return std::exchange(collected().lines, {});
}

}  // namespace kestrelid::test
