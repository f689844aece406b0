#include "tests/screens/Warnings.h"

#include <gtest/gtest.h>
#include <QApplication>
#include <QFont>

namespace {

// A test during which Qt or QML warned has failed, unless it took the warnings itself.
class WarningsFail final : public testing::EmptyTestEventListener {
    void OnTestStart(const testing::TestInfo&) override { kestrelid::test::takeWarnings(); }
    void OnTestEnd(const testing::TestInfo&) override {
        for (const QString& warning : kestrelid::test::takeWarnings())
            ADD_FAILURE() << "warning: " << warning.toStdString();
    }
};

}  // namespace

int main(int argc, char** argv) {
    // Listing the tests needs no display either.
    if (!qEnvironmentVariableIsSet("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    testing::InitGoogleTest(&argc, argv);
    kestrelid::test::collectWarnings();
    QApplication application(argc, argv);
    QApplication::setFont(QFont(QStringLiteral("DejaVu Sans"), 10));
    QApplication::setQuitOnLastWindowClosed(false);
    testing::UnitTest::GetInstance()->listeners().Append(new WarningsFail);
    return RUN_ALL_TESTS();
}
