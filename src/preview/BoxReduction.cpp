#include "preview/BoxReduction.h"

#include <algorithm>
#include <cstdint>
#include <vector>

namespace kestrelid::preview {

namespace {

struct Layout {
    int bytes;  // of one pixel
    int red;
    int green;
    int blue;
};

constexpr Layout kRgb32{4, 2, 1, 0};  // little endian
constexpr Layout kRgb888{3, 0, 1, 2};
constexpr Layout kGray8{1, 0, 0, 0};

}  // namespace

QImage boxReduced(const QImage& image, int factor) {
    const bool isKnown = image.format() == QImage::Format_RGB888 ||
                         image.format() == QImage::Format_Grayscale8 ||
                         image.format() == QImage::Format_RGB32;
    const QImage source = isKnown ? image : image.convertToFormat(QImage::Format_RGB32);
    const Layout layout = source.format() == QImage::Format_RGB888       ? kRgb888
                          : source.format() == QImage::Format_Grayscale8 ? kGray8
                                                                         : kRgb32;
    const int width = source.width() / factor;
    const int height = source.height() / factor;
    const auto count = static_cast<std::uint32_t>(factor) * static_cast<std::uint32_t>(factor);
    std::vector<std::uint32_t> sums(static_cast<std::size_t>(width) * 3);
    QImage reduced(width, height, QImage::Format_RGB32);
    for (int y = 0; y < height; ++y) {
        std::fill(sums.begin(), sums.end(), 0u);
        for (int row = y * factor; row < (y + 1) * factor; ++row) {
            const uchar* from = source.constScanLine(row);
            for (std::uint32_t* sum = sums.data(); sum != sums.data() + sums.size(); sum += 3) {
                for (int column = 0; column < factor; ++column, from += layout.bytes) {
                    sum[0] += from[layout.red];
                    sum[1] += from[layout.green];
                    sum[2] += from[layout.blue];
                }
            }
        }
        auto* to = reinterpret_cast<QRgb*>(reduced.scanLine(y));
        for (int x = 0; x < width; ++x) {
            const std::uint32_t* sum = &sums[static_cast<std::size_t>(x) * 3];
            const auto mean = [&](int channel) {
                return static_cast<int>((sum[channel] + count / 2) / count);
            };
            to[x] = qRgb(mean(0), mean(1), mean(2));
        }
    }
    return reduced;
}

}  // namespace kestrelid::preview
