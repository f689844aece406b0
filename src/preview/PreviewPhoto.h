#pragma once

#include "preview/Photo.h"

#include <optional>
#include <QFutureWatcher>
#include <QQuickItem>
#include <QtQml/qqmlregistration.h>

namespace kestrelid::preview {

// Shows a photo whole, in the middle, with rounded corners and an outline. Reading and scaling
// happen on other threads; only a picture of the shown size becomes a texture.
class PreviewPhoto : public QQuickItem {
    Q_OBJECT
    // An Image, a QImage, or the URL of a local file or resource; anything else is no picture.
    Q_PROPERTY(QVariant image READ image WRITE setImage NOTIFY imageChanged)
    // False once it is known that there is nothing to show.
    Q_PROPERTY(bool hasPicture READ hasPicture NOTIFY pictureChanged)
    // The rectangle of the picture, without its outline. Empty before its size is known.
    Q_PROPERTY(QRectF pictureRect READ pictureRect NOTIFY pictureChanged)
    // What is on the screen is what was asked for.
    Q_PROPERTY(bool isComplete READ isComplete NOTIFY completeChanged)
    QML_ELEMENT

public:
    explicit PreviewPhoto(QQuickItem* parent = nullptr);
    ~PreviewPhoto() override;

    [[nodiscard]] QVariant image() const { return image_; }
    void setImage(const QVariant& image);
    [[nodiscard]] bool hasPicture() const { return photo_ || isReading_; }
    [[nodiscard]] QRectF pictureRect() const;
    [[nodiscard]] bool isComplete() const { return !isReading_ && !isRendering_ && !isStale_; }

signals:
    void imageChanged();
    void pictureChanged();
    void completeChanged();

protected:
    void componentComplete() override;
    void geometryChange(const QRectF& newGeometry, const QRectF& oldGeometry) override;
    void itemChange(ItemChange change, const ItemChangeData& data) override;
    QSGNode* updatePaintNode(QSGNode* old, UpdatePaintNodeData* data) override;

private:
    void read(const QUrl& url);
    void setPhoto(std::optional<Photo> photo);
    void render();
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
