#include "tests/screens/Warnings.h"

#include <gtest/gtest.h>
#include <QApplication>
#include <QFont>

int main(int argc, char** argv) {
    // Listing the tests needs no display either.
    if (!qEnvironmentVariableIsSet("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    testing::InitGoogleTest(&argc, argv);
    kestrelid::test::collectWarnings();
    QApplication application(argc, argv);
    QApplication::setFont(QFont(QStringLiteral("DejaVu Sans"), 10));
    QApplication::setQuitOnLastWindowClosed(false);
    testing::UnitTest::GetInstance()->listeners().Append(new kestrelid::test::WarningsFail);
    return RUN_ALL_TESTS();
}
