#pragma once

#include <gtest/gtest.h>
#include <QImage>
#include <string>

namespace kestrelid::test {

// Compares what a screen shows with references/NAME.png, pixel by pixel. Where they differ, both
// the picture and one of the differences are left in the build folder. With `--renew` the reference
// is written instead.
void expectLooksLike(const QImage& shown, const std::string& name);

// From the command line.
void setRenewing(bool isRenewing);

}  // namespace kestrelid::test
