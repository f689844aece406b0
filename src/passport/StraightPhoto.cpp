#include "passport/StraightPhoto.h"

#include <algorithm>
#include <utility>

namespace kestrelid::passport {

StraightPhoto::StraightPhoto(QQuickItem* parent) : PhotoItem(parent) {
    setClip(true);
    connect(this, &PhotoItem::pictureChanged, this, &StraightPhoto::measure);
    connect(this, &PhotoItem::pictureChanged, this, &StraightPhoto::viewChanged);
    connect(this, &PhotoItem::imageChanged, this, &StraightPhoto::showWhole);
}

QVariantList StraightPhoto::outline() const {
    QVariantList points;
    for (const QPointF& point : outline_)
        points << point;
    return points;
}

void StraightPhoto::setOutline(const QVariantList& outline) {
    QPolygonF points;
    for (const QVariant& point : outline)
        points << point.toPointF();
    if (points == outline_)
        return;
    outline_ = points;
    emit outlineChanged();
    measure();
    showWhole();
}

void StraightPhoto::measure() {
    const QSizeF page = photo() ? StraightPicture(*photo(), outline_).size() : QSizeF();
    const qreal ratio = page.isEmpty() ? 1.0 : page.width() / page.height();
    if (std::exchange(aspectRatio_, ratio) != ratio)
        emit aspectRatioChanged();
}

QRectF StraightPhoto::pageRect() const {
    if (!photo() || width() <= 0.0 || height() <= 0.0)
        return {};
    const QSizeF page = QSizeF(aspectRatio_, 1.0).scaled(size(), Qt::KeepAspectRatio) * zoom_;
    // Its edges stay outside of the item, or as far inside on both sides.
    const auto start = [](qreal room, qreal side, qreal center) {
        return side <= room ? (room - side) / 2.0
                            : std::clamp(room / 2.0 - center * side, room - side, 0.0);
    };
    return {QPointF(start(width(), page.width(), center_.x()),
                    start(height(), page.height(), center_.y())),
            page};
}

void StraightPhoto::look(qreal zoom, const QPointF& center) {
    zoom_ = std::clamp(zoom, 1.0, kGreatestZoom);
    center_ = center;
    // Back from beyond the edges, so that the next move is seen at once.
    const QRectF page = pageRect();
    if (!page.isEmpty())
        center_ = {(width() / 2.0 - page.x()) / page.width(),
                   (height() / 2.0 - page.y()) / page.height()};
    // Who drags an enlarged page means the page, not what it lies in.
    setKeepMouseGrab(zoom_ > 1.0);
    setKeepTouchGrab(zoom_ > 1.0);
    emit viewChanged();
    update();  // stretched at once, sharp a moment later
    render();
}

void StraightPhoto::zoomBy(qreal factor, const QPointF& at) {
    const QRectF page = pageRect();
    if (page.isEmpty() || !(factor > 0.0))
        return;
    const qreal zoom = std::clamp(zoom_ * factor, 1.0, kGreatestZoom);
    const qreal grown = zoom / zoom_;
    const QPointF shares((at.x() - page.x()) / page.width(), (at.y() - page.y()) / page.height());
    const QSizeF size = page.size() * grown;
    look(zoom, {shares.x() + (width() / 2.0 - at.x()) / size.width(),
                shares.y() + (height() / 2.0 - at.y()) / size.height()});
}

void StraightPhoto::moveBy(qreal x, qreal y) {
    const QRectF page = pageRect();
    if (!page.isEmpty())
        look(zoom_, {center_.x() - x / page.width(), center_.y() - y / page.height()});
}

void StraightPhoto::showWhole() {
    look(1.0, {0.5, 0.5});
}

void StraightPhoto::geometryChange(const QRectF& newGeometry, const QRectF& oldGeometry) {
    PhotoItem::geometryChange(newGeometry, oldGeometry);
    if (newGeometry.size() != oldGeometry.size())
        update();
}

QRectF StraightPhoto::placeOf(const preview::RenderedPhoto& rendered) const {
    const QRectF page = pageRect();
    return {page.x() + rendered.rect.x() * page.width(),
            page.y() + rendered.rect.y() * page.height(), rendered.rect.width() * page.width(),
            rendered.rect.height() * page.height()};
}

preview::PhotoItem::Rendering StraightPhoto::rendering(const preview::Photo& photo,
                                                       qreal pixelRatio) const {
    const QRectF page = pageRect();
    const QRectF seen = page.intersected(boundingRect());
    const QSize pixels(qRound(seen.width() * pixelRatio), qRound(seen.height() * pixelRatio));
    if (pixels.isEmpty())
        return {};
    const QRectF shares((seen.x() - page.x()) / page.width(), (seen.y() - page.y()) / page.height(),
                        seen.width() / page.width(), seen.height() / page.height());
    return [picture = StraightPicture(photo, outline_), shares, pixels] {
        return preview::RenderedPhoto{picture.part(shares, pixels), shares};
    };
}

}  // namespace kestrelid::passport
