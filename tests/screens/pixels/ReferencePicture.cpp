#include "tests/screens/pixels/ReferencePicture.h"

#include <algorithm>
#include <cstdlib>
#include <QDir>

namespace kestrelid::test {

namespace {

// Of a channel: rounding differs between processors.
constexpr int kTolerance = 2;

bool isRenewing = false;

int distance(QRgb a, QRgb b) {
    return std::max({std::abs(qRed(a) - qRed(b)), std::abs(qGreen(a) - qGreen(b)),
                     std::abs(qBlue(a) - qBlue(b))});
}

struct Comparison {
    int differing = 0;
    int largest = 0;
    QImage picture;  // differing pixels red, the others pale
};

// Both of one size.
Comparison compared(const QImage& shown, const QImage& reference) {
    Comparison comparison;
    comparison.picture = QImage(shown.size(), QImage::Format_RGB32);
    for (int y = 0; y < shown.height(); ++y) {
        for (int x = 0; x < shown.width(); ++x) {
            const QRgb is = shown.pixel(x, y);
            const int apart = distance(is, reference.pixel(x, y));
            const int pale = 192 + qGray(is) / 4;
            comparison.largest = std::max(comparison.largest, apart);
            comparison.differing += apart > kTolerance ? 1 : 0;
            comparison.picture.setPixel(
                x, y, apart > kTolerance ? qRgb(255, 0, 0) : qRgb(pale, pale, pale));
        }
    }
    return comparison;
}

}  // namespace

void setRenewing(bool renewing) {
    isRenewing = renewing;
}

void expectLooksLike(const QImage& shown, const std::string& name) {
    const auto file = QString::fromStdString(name);
    const QString path = QStringLiteral(KESTRELID_REFERENCES "/%1.png").arg(file);
    const QImage picture = shown.convertToFormat(QImage::Format_RGB32);
    if (isRenewing) {
        EXPECT_TRUE(picture.save(path, "PNG", 0)) << "cannot write " << path.toStdString();
        return;
    }
    const QDir folder(QStringLiteral(KESTRELID_DIFFERENCES));
    folder.mkpath(".");
    const QString actual = folder.filePath(file + ".actual.png");
    const QImage reference(path);
    if (reference.size() != picture.size()) {
        picture.save(actual);
        ADD_FAILURE() << path.toStdString()
                      << (reference.isNull() ? " is missing" : " has another size")
                      << "; what is shown: " << actual.toStdString();
        return;
    }
    const Comparison comparison = compared(picture, reference);
    if (comparison.differing == 0)
        return;
    const QString difference = folder.filePath(file + ".difference.png");
    picture.save(actual);
    comparison.picture.save(difference);
    ADD_FAILURE() << comparison.differing << " pixels differ, by up to " << comparison.largest
                  << "\n  reference: " << path.toStdString()
                  << "\n  what is shown: " << actual.toStdString()
                  << "\n  difference: " << difference.toStdString();
}

}  // namespace kestrelid::test
