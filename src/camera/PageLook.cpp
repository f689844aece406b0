#include "camera/PageLook.h"

#include "base/ColumnsInside.h"
#include "base/GreyPixel.h"
#include "detection/RectangleStage.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdlib>
#include <functional>
#include <utility>
#include <vector>

namespace kestrelid::camera {

namespace {

using Corners = std::array<NormalizedPoint, 4>;

constexpr int kCellSide = 8;     // pixels, whatever the size of the picture: what is sharp is sharp
                                 // from one pixel to the next
constexpr int kCellsAlong = 64;  // looked at along the longer side of the page, at most

// A small square of the picture.
struct Cell {
    bool isInside = false;  // of the page; else nothing below holds
    int brightness = 0;     // sum of the grey values
    int darkest = 255;      // grey value
    int brightest = 0;
    int across = 0;  // the greatest change of grey from one pixel to the next in a row
    int down = 0;    // and in a column
    // Of each pixel's darkest channel, 0..255: reflected light is white, paper and pictures are
    // tinted.
    int leastWhite = 255;
    int mostWhite = 0;
};

// Cells at equal distances, row by row.
struct Lattice {
    int columns = 0;
    std::vector<Cell> cells;
};

using Square = std::array<std::array<int, kCellSide>, kCellSide>;

// Along the rows of the square, taken by twos: so noise counts less.
int greatestChange(const Square& square) {
    int greatest = 0;
    for (std::size_t row = 0; row < kCellSide; row += 2) {
        for (std::size_t column = 1; column < kCellSide; ++column)
            greatest =
                std::max(greatest, std::abs(square[row][column] + square[row + 1][column] -
                                            square[row][column - 1] - square[row + 1][column - 1]));
    }
    return greatest / 2;
}

Cell cellAt(const Bitmap& bitmap, int left, int top) {
    Cell cell;
    cell.isInside = true;
    Square rows;
    Square columns;
    const std::ptrdiff_t pixelBytes = bytesPerPixel(bitmap.format());
    for (std::size_t y = 0; y < kCellSide; ++y) {
        const std::byte* pixel = bitmap.row(top + static_cast<int>(y)) + left * pixelBytes;
        for (std::size_t x = 0; x < kCellSide; ++x, pixel += pixelBytes) {
            const base::Channels channels = base::channelsOf(pixel, bitmap.format());
            const int grey = channels.grey();
            const int white = channels.darkest();
            rows[y][x] = columns[x][y] = grey;
            cell.brightness += grey;
            cell.darkest = std::min(cell.darkest, grey);
            cell.brightest = std::max(cell.brightest, grey);
            cell.leastWhite = std::min(cell.leastWhite, white);
            cell.mostWhite = std::max(cell.mostWhite, white);
        }
    }
    cell.across = greatestChange(rows);
    cell.down = greatestChange(columns);
    return cell;
}

// A little smaller: an outline is never exact, and what lies around a page is often brighter or
// darker.
Corners within(const Corners& corners) {
    constexpr double kInset = 0.06;  // of the way to the middle
    NormalizedPoint middle;
    for (const NormalizedPoint& corner : corners) {
        middle.x += corner.x / 4.0;
        middle.y += corner.y / 4.0;
    }
    Corners smaller = corners;
    for (NormalizedPoint& corner : smaller) {
        corner.x += (middle.x - corner.x) * kInset;
        corner.y += (middle.y - corner.y) * kInset;
    }
    return smaller;
}

// The least box of whole pixels around the corners.
PixelRect boxAround(const Corners& corners, const Bitmap& bitmap) {
    const auto [left, right] = std::ranges::minmax(corners, {}, &NormalizedPoint::x);
    const auto [lower, upper] = std::ranges::minmax(corners, {}, &NormalizedPoint::y);
    const auto pixel = [](double share, int side) {
        return static_cast<int>(std::clamp(share, 0.0, 1.0) * side);
    };
    const int x = pixel(left.x, bitmap.width());
    const int y = pixel(1.0 - upper.y, bitmap.height());
    return {.x = x,
            .y = y,
            .width = pixel(right.x, bitmap.width()) - x,
            .height = pixel(1.0 - lower.y, bitmap.height()) - y};
}

Lattice latticeIn(const Bitmap& bitmap, const Corners& corners) {
    const PixelRect box = boxAround(corners, bitmap);
    const int step = std::max(kCellSide, std::max(box.width, box.height) / kCellsAlong);
    Lattice lattice{.columns = std::max(0, (box.width - kCellSide) / step + 1), .cells = {}};
    const int rows = std::max(0, (box.height - kCellSide) / step + 1);
    lattice.cells.reserve(static_cast<std::size_t>(lattice.columns) *
                          static_cast<std::size_t>(rows));
    for (int row = 0; row < rows; ++row) {
        const int y = box.y + row * step;
        const auto [first, last] =
            base::columnsInside(corners, y + kCellSide / 2, bitmap.width(), bitmap.height());
        for (int column = 0; column < lattice.columns; ++column) {
            const int x = box.x + column * step;
            const bool isInside = x >= first && x + kCellSide <= last;
            lattice.cells.push_back(isInside ? cellAt(bitmap, x, y) : Cell{});
        }
    }
    return lattice;
}

// The value of the cells inside below which that share of them lies. There is one at least.
template <typename Value>
int quantile(const Lattice& lattice, double share, Value value) {
    std::array<int, 256> histogram{};
    int count = 0;
    for (const Cell& cell : lattice.cells) {
        if (!cell.isInside)
            continue;
        ++histogram[static_cast<std::size_t>(std::invoke(value, cell))];
        ++count;
    }
    std::size_t at = 0;
    for (int below = histogram[0]; at < 255 && below <= share * (count - 1);)
        below += histogram[++at];
    return static_cast<int>(at);
}

// What the sharper edges take from one pixel to the next, of the contrast of the page: in the
// direction in which that is less, as a hand that moves blurs one direction alone.
double sharpnessOf(const Lattice& lattice) {
    constexpr double kFew = 0.02;       // of the cells: so many hold print, whatever the page
    constexpr int kLeastContrast = 16;  // grey values within a cell: less is noise
    const auto contrast = [](const Cell& cell) { return cell.brightest - cell.darkest; };
    if (quantile(lattice, 1.0 - kFew, contrast) < kLeastContrast)
        return 1.0;  // an empty page has nothing that could be blurred
    const int step = std::min(quantile(lattice, 1.0 - kFew, &Cell::across),
                              quantile(lattice, 1.0 - kFew, &Cell::down));
    const int whole =
        quantile(lattice, 1.0 - kFew, &Cell::brightest) - quantile(lattice, kFew, &Cell::darkest);
    return std::min(1.0, static_cast<double>(step) / std::max(1, whole));
}

double brightnessOf(const Lattice& lattice) {
    double sum = 0.0;
    int count = 0;
    for (const Cell& cell : lattice.cells) {
        if (!cell.isInside)
            continue;
        sum += cell.brightness;
        ++count;
    }
    return sum / count / (255.0 * kCellSide * kCellSide);
}

// The white that the picture reaches, 0..255: a thousandth of it is as white or whiter.
int whitestIn(const Bitmap& bitmap) {
    const int step = std::max(8, std::max(bitmap.width(), bitmap.height()) / 160);  // pixels
    std::array<int, 256> histogram{};
    int count = 0;
    for (int y = 0; y < bitmap.height(); y += step) {
        for (int x = 0; x < bitmap.width(); x += step, ++count) {
            const std::byte* pixel =
                bitmap.row(y) + std::ptrdiff_t{x} * bytesPerPixel(bitmap.format());
            const int white = base::channelsOf(pixel, bitmap.format()).darkest();
            ++histogram[static_cast<std::size_t>(white)];
        }
    }
    std::size_t value = 255;
    for (int whiter = histogram[value]; value > 0 && whiter * 1000 < count;)
        whiter += histogram[--value];
    return static_cast<int>(value);
}

// Whether a cell and all those around it are glaring, and it itself without any noise, as only what
// is cut off can be.
bool isCore(const Lattice& lattice, const std::vector<bool>& glaring, int index) {
    const int column = index % lattice.columns;
    const int row = index / lattice.columns;
    const int rows = static_cast<int>(glaring.size()) / lattice.columns;
    const Cell& middle = lattice.cells[static_cast<std::size_t>(index)];
    if (middle.mostWhite - middle.leastWhite > 1)
        return false;
    if (column == 0 || column + 1 == lattice.columns || row == 0 || row + 1 == rows)
        return false;
    for (int other = index - lattice.columns; other <= index + lattice.columns;
         other += lattice.columns) {
        for (int beside = other - 1; beside <= other + 1; ++beside) {
            if (!glaring[static_cast<std::size_t>(beside)])
                return false;
        }
    }
    return true;
}

// Share of the page. What a lamp has wiped out is as white as the picture gets (which need not be
// 255: a camera of video range ends at 235), wider than the gaps between letters, and whiter than
// the paper elsewhere. White paper and an overexposed page are as white all over.
double glareOf(const Lattice& lattice, const Bitmap& bitmap) {
    constexpr int kLeastWhite = 230;  // below it nothing was cut off
    constexpr int kSame = 3;          // grey values apart at most
    constexpr int kAbovePaper = 24;   // grey values, at least
    constexpr double kPaper = 0.3;    // of the cells: a lamp may hide most of the page
    const int whitest = whitestIn(bitmap);
    if (whitest < kLeastWhite ||
        whitest - quantile(lattice, kPaper, &Cell::mostWhite) < kAbovePaper)
        return 0.0;
    std::vector<bool> glaring;
    glaring.reserve(lattice.cells.size());
    for (const Cell& cell : lattice.cells)
        glaring.push_back(cell.isInside && cell.leastWhite >= whitest - kSame);
    // Areas of three cells by three, wherever they lie.
    std::vector<bool> wide(glaring.size());
    for (int index = 0; index < static_cast<int>(glaring.size()); ++index) {
        if (!isCore(lattice, glaring, index))
            continue;
        for (int other = index - lattice.columns; other <= index + lattice.columns;
             other += lattice.columns)
            std::fill_n(wide.begin() + other - 1, 3, true);
    }
    return static_cast<double>(std::ranges::count(wide, true)) /
           static_cast<double>(std::ranges::count(lattice.cells, true, &Cell::isInside));
}

bool isFinite(const RectangleObservation& outline) {
    return std::ranges::all_of(outline.corners, [](const NormalizedPoint& corner) {
        return std::isfinite(corner.x) && std::isfinite(corner.y);
    });
}

}  // namespace

std::optional<PageLook> lookAtPage(const Bitmap& bitmap, RectangleService& outlines) {
    if (std::min(bitmap.width(), bitmap.height()) < kCellSide)
        return std::nullopt;
    // A page that the picture cuts has another shape than a whole one.
    RectangleRequest request;
    request.minimumAspectRatio = 0.3f;
    request.maximumAspectRatio = 3.5f;
    RectangleResult result = outlines.perform(bitmap, request);
    auto* found = std::get_if<std::vector<RectangleObservation>>(&result);
    if (!found)
        return std::nullopt;
    std::erase_if(*found, [](const RectangleObservation& outline) { return !isFinite(outline); });
    const std::optional<std::size_t> largest = detection::largestRectangle(*found);
    return measuredPage(bitmap, largest ? std::optional((*found)[*largest]) : std::nullopt);
}

PageLook measuredPage(const Bitmap& bitmap, const std::optional<RectangleObservation>& outline) {
    const Lattice lattice =
        latticeIn(bitmap, outline ? within(outline->corners) : base::kWholePicture);
    if (outline && std::ranges::none_of(lattice.cells, &Cell::isInside))
        return measuredPage(bitmap, std::nullopt);  // too small to be a page
    return {.outline = outline,
            .brightness = brightnessOf(lattice),
            .glare = glareOf(lattice, bitmap),
            .sharpness = sharpnessOf(lattice)};
}

}  // namespace kestrelid::camera
