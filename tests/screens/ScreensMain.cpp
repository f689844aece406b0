#include <cstdio>
#include <gtest/gtest.h>
#include <mutex>
#include <QApplication>
#include <QFont>
#include <QStringList>
#include <QStyleHints>
#include <utility>

namespace {

std::mutex mutex;
QStringList warnings;

void collect(QtMsgType type, const QMessageLogContext&, const QString& line) {
    // About this platform's windows and the machine's fonts, not about the screens.
    if (line.contains(QLatin1String("propagateSizeHints")) ||
        line.contains(QLatin1String("OpenType support missing")))
        return;
    if (type != QtWarningMsg && type != QtCriticalMsg) {
        std::fprintf(stderr, "%s\n", qPrintable(line));
        return;
    }
    const std::lock_guard lock(mutex);
    warnings.append(line);
}

QStringList take() {
    const std::lock_guard lock(mutex);
    return std::exchange(warnings, {});
}

// A test during which Qt or QML warned has failed.
class WarningsFail final : public testing::EmptyTestEventListener {
    void OnTestStart(const testing::TestInfo&) override { take(); }
    void OnTestEnd(const testing::TestInfo&) override {
        for (const QString& warning : take())
            ADD_FAILURE() << "warning: " << warning.toStdString();
    }
};

}  // namespace

// --renew: writes the references of the pixel tests.
int main(int argc, char** argv) {
    // The same pixels on every machine.
    qputenv("QT_QPA_PLATFORM", "offscreen");
    qputenv("QT_QUICK_BACKEND", "software");
    qputenv("QT_SCALE_FACTOR", "1");
    testing::InitGoogleTest(&argc, argv);
    qInstallMessageHandler(collect);
    QApplication application(argc, argv);
    QFont font(QStringLiteral("DejaVu Sans"), 10);
    font.setHintingPreference(QFont::PreferNoHinting);
    QApplication::setFont(font);
    QApplication::setQuitOnLastWindowClosed(false);
    QGuiApplication::styleHints()->setMousePressAndHoldInterval(0);  // each press is a long one
    if (QApplication::arguments().contains("--renew"))
        testing::GTEST_FLAG(filter) = "*Pixels*";
    testing::UnitTest::GetInstance()->listeners().Append(new WarningsFail);
    return RUN_ALL_TESTS();
}
