#include "preview/PreviewPhoto.h"

#include <QJSValue>
#include <QPromise>
#include <QQuickWindow>
#include <QSGImageNode>
#include <QThreadPool>
#include <utility>

namespace kestrelid::preview {

namespace {

template <typename Result>
QFuture<Result> onOtherThread(std::function<Result()> work) {
    auto promise = std::make_shared<QPromise<Result>>();
    promise->start();
    QThreadPool::globalInstance()->start([promise, work = std::move(work)] {
        promise->addResult(work());
        promise->finish();
    });
    return promise->future();
}

QVariant plain(const QVariant& value) {
    return value.metaType() == QMetaType::fromType<QJSValue>() ? value.value<QJSValue>().toVariant()
                                                               : value;
}

std::optional<QUrl> urlOf(const QVariant& value) {
    if (value.metaType() == QMetaType::fromType<QUrl>())
        return value.toUrl();
    if (value.metaType() == QMetaType::fromType<QString>() && !value.toString().isEmpty())
        return QUrl(value.toString());
    return std::nullopt;
}

std::optional<Photo> photoIn(const QVariant& value) {
    if (value.metaType() == QMetaType::fromType<Image>())
        return photoOf(value.value<Image>());
    const auto image =
        value.metaType() == QMetaType::fromType<QImage>() ? value.value<QImage>() : QImage();
    return image.isNull() ? std::nullopt : std::optional(Photo{image});
}

}  // namespace

PreviewPhoto::PreviewPhoto(QQuickItem* parent) : QQuickItem(parent) {
    setFlag(ItemHasContents);
    connect(&reading_, &QFutureWatcherBase::finished, this, [this] {
        if (std::exchange(isReading_, false))  // false: another image was set meanwhile
            setPhoto(reading_.result());
    });
    connect(&rendering_, &QFutureWatcherBase::finished, this, &PreviewPhoto::showRendered);
}

PreviewPhoto::~PreviewPhoto() = default;

void PreviewPhoto::setImage(const QVariant& image) {
    image_ = plain(image);
    emit imageChanged();
    if (const std::optional<QUrl> url = urlOf(image_))
        return read(*url);
    isReading_ = false;
    setPhoto(photoIn(image_));
}

void PreviewPhoto::read(const QUrl& url) {
    photo_.reset();
    isReading_ = true;
    reading_.setFuture(onOtherThread<std::optional<Photo>>([url] { return readPhoto(url); }));
    emit pictureChanged();
    emit completeChanged();
}

void PreviewPhoto::setPhoto(std::optional<Photo> photo) {
    photo_ = std::move(photo);
    if (!photo_) {
        rendered_ = {};
        isNewTexture_ = true;
        update();
    }
    emit pictureChanged();
    render();
}

QRectF PreviewPhoto::pictureRect() const {
    return photo_ ? aspectFit(*photo_, boundingRect()) : QRectF();
}

void PreviewPhoto::render() {
    const QRectF picture = pictureRect();
    if (!isComponentComplete() || !window() || picture.isEmpty()) {
        emit completeChanged();
        return;
    }
    // One at a time: while a window is being resized, only the newest size is worth the work.
    isStale_ = isRendering_;
    if (isRendering_)
        return;
    isRendering_ = true;
    rendering_.setFuture(onOtherThread<RenderedPhoto>(
        [photo = *photo_, picture, ratio = window()->effectiveDevicePixelRatio()] {
            return renderPhoto(photo, picture, ratio);
        }));
    emit completeChanged();
}

void PreviewPhoto::showRendered() {
    isRendering_ = false;
    if (photo_) {
        rendered_ = rendering_.result();
        isNewTexture_ = true;
        update();
    }
    if (std::exchange(isStale_, false))
        render();
    else
        emit completeChanged();
}

void PreviewPhoto::componentComplete() {
    QQuickItem::componentComplete();
    render();
}

void PreviewPhoto::geometryChange(const QRectF& newGeometry, const QRectF& oldGeometry) {
    QQuickItem::geometryChange(newGeometry, oldGeometry);
    if (newGeometry.size() == oldGeometry.size())
        return;
    emit pictureChanged();
    render();
}

void PreviewPhoto::itemChange(ItemChange change, const ItemChangeData& data) {
    QQuickItem::itemChange(change, data);
    if (change == ItemSceneChange || change == ItemDevicePixelRatioHasChanged)
        render();
}

QSGNode* PreviewPhoto::updatePaintNode(QSGNode* old, UpdatePaintNodeData*) {
    auto* node = static_cast<QSGImageNode*>(old);
    // The node is gone if the scene was released meanwhile.
    if (std::exchange(isNewTexture_, false) || !node) {
        if (rendered_.image.isNull()) {
            delete node;
            return nullptr;
        }
        if (!node) {
            node = window()->createImageNode();
            node->setOwnsTexture(true);
        }
        node->setTexture(window()->createTextureFromImage(rendered_.image,
                                                          QQuickWindow::TextureHasAlphaChannel));
        node->setSourceRect(QRectF(QPointF(), rendered_.image.size()));
        node->setRect(rendered_.rect);
    }
    return node;
}

}  // namespace kestrelid::preview
