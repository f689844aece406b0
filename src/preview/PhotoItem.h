#pragma once

#include "preview/Photo.h"

#include <functional>
#include <optional>
#include <QFutureWatcher>
#include <QQuickItem>
#include <QtQml/qqmlregistration.h>

namespace kestrelid::preview {

// The base of items that show a photo. Reading and rendering happen on other threads; only a
// picture of the shown size becomes a texture.
class PhotoItem : public QQuickItem {
    Q_OBJECT
    // An Image, a QImage, or the URL of a local file or resource; anything else is no picture.
    Q_PROPERTY(QVariant image READ image WRITE setImage NOTIFY imageChanged)
    // False once it is known that there is nothing to show.
    Q_PROPERTY(bool hasPicture READ hasPicture NOTIFY pictureChanged)
    // What is on the screen is what was asked for.
    Q_PROPERTY(bool isComplete READ isComplete NOTIFY completeChanged)
    QML_ANONYMOUS

public:
    explicit PhotoItem(QQuickItem* parent = nullptr);
    ~PhotoItem() override;

    [[nodiscard]] QVariant image() const { return image_; }
    void setImage(const QVariant& image);
    [[nodiscard]] bool hasPicture() const { return photo_ || isReading_; }
    [[nodiscard]] bool isComplete() const { return !isReading_ && !isRendering_ && !isStale_; }

signals:
    void imageChanged();
    // Another picture, or another place for it.
    void pictureChanged();
    void completeChanged();

protected:
    // Work for another thread; empty: there is no room for a picture.
    using Rendering = std::function<RenderedPhoto()>;

    // What makes the photo ready to be shown as it is to be shown now. pixelRatio: device pixels a
    // point.
    [[nodiscard]] virtual Rendering rendering(const Photo& photo, qreal pixelRatio) const = 0;

    // Where a photo that was made ready stands now. Points.
    [[nodiscard]] virtual QRectF placeOf(const RenderedPhoto& rendered) const {
        return rendered.rect;
    }

    // Null before it is read, and where there is none.
    [[nodiscard]] const Photo* photo() const { return photo_ ? &*photo_ : nullptr; }

    // What is to be shown has changed.
    void render();

    void componentComplete() override;
    void geometryChange(const QRectF& newGeometry, const QRectF& oldGeometry) override;
    void itemChange(ItemChange change, const ItemChangeData& data) override;
    QSGNode* updatePaintNode(QSGNode* old, UpdatePaintNodeData* data) override;

private:
    void read(const QUrl& url);
    void setPhoto(std::optional<Photo> photo);
    void showRendered();

    QVariant image_;
    std::optional<Photo> photo_;
    QFutureWatcher<std::optional<Photo>> reading_;
    QFutureWatcher<RenderedPhoto> rendering_;
    RenderedPhoto rendered_;
    bool isReading_ = false;
    bool isRendering_ = false;
    bool isStale_ = false;  // something changed since the rendering under way began
    bool isNewTexture_ = false;
};

}  // namespace kestrelid::preview
