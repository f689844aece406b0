#pragma once

#include <QStringList>

namespace kestrelid::test {

// From now on warnings of Qt and QML are kept instead of printed. Once for the program.
void collectWarnings();

// Those that came since the last call.
QStringList takeWarnings();

}  // namespace kestrelid::test
