#include "passport/StraightPicture.h"

#include "preview/BoxReduction.h"
#include "screens/PixelImage.h"
#include "screens/UprightTransform.h"

#include <algorithm>
#include <cmath>
#include <QLineF>
#include <QPainter>
#include <QTransform>
#include <utility>

namespace kestrelid::passport {

namespace {

constexpr double kLeastArea = 0.005;  // of the photo: less is no page that anybody could look at

QPolygonF cornersOf(const QSizeF& size) {
    return QList<QPointF>{
        {0, 0}, {size.width(), 0}, {size.width(), size.height()}, {0, size.height()}};
}

// Twice the area that three corners span; positive: clockwise as it is seen.
double turn(const QPointF& a, const QPointF& b, const QPointF& c) {
    return (b.x() - a.x()) * (c.y() - b.y()) - (b.y() - a.y()) * (c.x() - b.x());
}

bool isPage(const QPolygonF& corners) {
    if (corners.size() != 4)
        return false;
    for (int corner = 0; corner < 4; ++corner) {
        // Each corner turns the same way and spans a part of the area.
        if (!(turn(corners[corner], corners[(corner + 1) % 4], corners[(corner + 2) % 4]) >
              kLeastArea))
            return false;
    }
    return true;
}

double length(const QPointF& from, const QPointF& to) {
    return QLineF(from, to).length();
}

}  // namespace

StraightPicture::StraightPicture(preview::Photo photo, const QPolygonF& outline)
    : photo_(std::move(photo)) {
    const QSizeF shown = screens::uprightSize(photo_.orientation, photo_.pixels.size());
    page_ = cornersOf(shown);
    if (isPage(outline))
        page_ = QTransform::fromScale(shown.width(), shown.height()).map(outline);
    size_ = {(length(page_[0], page_[1]) + length(page_[3], page_[2])) / 2.0,
             (length(page_[0], page_[3]) + length(page_[1], page_[2])) / 2.0};
}

QImage StraightPicture::part(const QRectF& shares, const QSize& pixels) const {
    QImage drawn(pixels, QImage::Format_ARGB32_Premultiplied);
    drawn.fill(Qt::transparent);
    const QSizeF whole(pixels.width() / shares.width(), pixels.height() / shares.height());
    QTransform straighten;
    if (!QTransform::quadToQuad(page_, cornersOf(whole), straighten))
        return drawn;
    const QTransform toDrawn =
        screens::uprightTransform(photo_.orientation, photo_.pixels.size()) * straighten *
        QTransform::fromTranslate(-shares.x() * whole.width(), -shares.y() * whole.height());

    // Only what is shown of the photo, reduced to about the pixels that are drawn.
    const QRect seen = toDrawn.inverted()
                           .mapRect(QRectF(QPointF(), QSizeF(pixels)))
                           .toAlignedRect()
                           .adjusted(-2, -2, 2, 2)
                           .intersected(photo_.pixels.rect());
    if (seen.isEmpty())
        return drawn;
    QImage cut = seen == photo_.pixels.rect() ? photo_.pixels : photo_.pixels.copy(seen);
    if (cut.hasAlphaChannel())
        cut = screens::onWhite(cut);
    const double shrinking =
        std::min(size_.width() / whole.width(), size_.height() / whole.height());
    const int factor =
        std::clamp(static_cast<int>(shrinking), 1, std::min(cut.width(), cut.height()));
    if (factor > 1)
        cut = preview::boxReduced(cut, factor);

    QPainter painter(&drawn);
    painter.setRenderHints(QPainter::Antialiasing | QPainter::SmoothPixmapTransform);
    painter.setTransform(QTransform::fromScale(factor, factor) *
                         QTransform::fromTranslate(seen.x(), seen.y()) * toDrawn);
    painter.drawImage(0, 0, cut);
    return drawn;
}

}  // namespace kestrelid::passport
