#pragma once

#include <gtest/gtest.h>
#include <QStringList>

namespace kestrelid::test {

// From now on warnings of Qt and QML are kept instead of printed. Once for the program.
void collectWarnings();

// Those that came since the last call.
QStringList takeWarnings();

// A test during which Qt or QML warned has failed, unless it took the warnings itself.
class WarningsFail final : public testing::EmptyTestEventListener {
    void OnTestStart(const testing::TestInfo&) override { takeWarnings(); }
    void OnTestEnd(const testing::TestInfo&) override {
        for (const QString& warning : takeWarnings())
            ADD_FAILURE() << "warning: " << warning.toStdString();
    }
};

}  // namespace kestrelid::test
