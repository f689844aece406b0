#include "tests/screens/pixels/ReferencePicture.h"
#include "tests/screens/Warnings.h"

#include <cstring>
#include <gtest/gtest.h>
#include <QApplication>
#include <QFontInfo>

// Without arguments of Google Test: --renew writes the references.
int main(int argc, char** argv) {
    testing::InitGoogleTest(&argc, argv);
    kestrelid::test::setRenewing(argc > 1 && std::strcmp(argv[1], "--renew") == 0);
    // The same pixels on every machine.
    qputenv("QT_QPA_PLATFORM", "offscreen");
    qputenv("QT_QUICK_BACKEND", "software");
    qputenv("QT_SCALE_FACTOR", "1");
    kestrelid::test::collectWarnings();
    QApplication application(argc, argv);
    QFont font(QStringLiteral("DejaVu Sans"), 10);
    font.setHintingPreference(QFont::PreferNoHinting);
    QApplication::setFont(font);
    QApplication::setQuitOnLastWindowClosed(false);
    testing::UnitTest::GetInstance()->listeners().Append(new kestrelid::test::WarningsFail);
    return RUN_ALL_TESTS();
}
