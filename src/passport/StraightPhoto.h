#pragma once

#include "passport/StraightPicture.h"
#include "preview/PhotoItem.h"

#include <QPointF>
#include <QPolygonF>
#include <QtQml/qqmlregistration.h>
#include <QVariantList>

namespace kestrelid::passport {

// Shows the page of a photo as if it lay flat, whole at first; it can be enlarged and moved. A
// photo without an outline is shown as it is.
class StraightPhoto : public preview::PhotoItem {
    Q_OBJECT
    // Four points, in shares of the photo from its top left; or none.
    Q_PROPERTY(QVariantList outline READ outline WRITE setOutline NOTIFY outlineChanged)
    // 1: the page is shown whole.
    Q_PROPERTY(qreal zoom READ zoom NOTIFY viewChanged)
    Q_PROPERTY(qreal greatestZoom READ greatestZoom CONSTANT)
    // Where the whole page lies, also what the item cuts off. Empty before its size is known.
    Q_PROPERTY(QRectF pageRect READ pageRect NOTIFY viewChanged)
    // Width by height of the page; 1 before it is known.
    Q_PROPERTY(qreal aspectRatio READ aspectRatio NOTIFY aspectRatioChanged)
    QML_ELEMENT

public:
    explicit StraightPhoto(QQuickItem* parent = nullptr);

    [[nodiscard]] QVariantList outline() const;
    void setOutline(const QVariantList& outline);
    [[nodiscard]] qreal zoom() const { return zoom_; }
    [[nodiscard]] qreal greatestZoom() const { return kGreatestZoom; }
    [[nodiscard]] QRectF pageRect() const;
    [[nodiscard]] qreal aspectRatio() const { return aspectRatio_; }

    // factor: of the present size. at: what stays where it is, in points of the item.
    Q_INVOKABLE void zoomBy(qreal factor, const QPointF& at);
    // Points. Stops at the page's edges.
    Q_INVOKABLE void moveBy(qreal x, qreal y);
    Q_INVOKABLE void showWhole();

signals:
    void outlineChanged();
    void viewChanged();
    void aspectRatioChanged();

protected:
    void geometryChange(const QRectF& newGeometry, const QRectF& oldGeometry) override;
    // In shares of the page: it stands elsewhere once the view has moved.
    [[nodiscard]] QRectF placeOf(const preview::RenderedPhoto& rendered) const override;
    [[nodiscard]] Rendering rendering(const preview::Photo& photo, qreal pixelRatio) const override;

private:
    static constexpr qreal kGreatestZoom = 8.0;

    void look(qreal zoom, const QPointF& center);
    void measure();

    QPolygonF outline_;
    qreal aspectRatio_ = 1.0;
    qreal zoom_ = 1.0;
    QPointF center_{0.5, 0.5};  // of what is shown, in shares of the page
};

}  // namespace kestrelid::passport
