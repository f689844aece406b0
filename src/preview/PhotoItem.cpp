#include "preview/PhotoItem.h"

#include "preview/HostPicture.h"

#include <memory>
#include <QPromise>
#include <QQuickWindow>
#include <QSGImageNode>
#include <QThreadPool>
#include <utility>
#include <variant>

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

std::optional<Photo> photoIn(const HostPicture& source) {
    if (const auto* image = std::get_if<Image>(&source))
        return photoOf(*image);
    const auto* picture = std::get_if<QImage>(&source);
    return picture && !picture->isNull() ? std::optional(Photo{*picture}) : std::nullopt;
}

}  // namespace

PhotoItem::PhotoItem(QQuickItem* parent) : QQuickItem(parent) {
    setFlag(ItemHasContents);
    connect(&reading_, &QFutureWatcherBase::finished, this, [this] {
        if (std::exchange(isReading_, false))  // false: another image was set meanwhile
            setPhoto(reading_.result());
    });
    connect(&rendering_, &QFutureWatcherBase::finished, this, &PhotoItem::showRendered);
}

PhotoItem::~PhotoItem() = default;

void PhotoItem::setImage(const QVariant& image) {
    image_ = image;
    emit imageChanged();
    const HostPicture source = hostPicture(image_);
    if (const auto* url = std::get_if<QUrl>(&source))
        return read(*url);
    isReading_ = false;
    setPhoto(photoIn(source));
}

void PhotoItem::read(const QUrl& url) {
    photo_.reset();
    isReading_ = true;
    reading_.setFuture(onOtherThread<std::optional<Photo>>([url] { return readPhoto(url); }));
    emit pictureChanged();
    emit completeChanged();
}

void PhotoItem::setPhoto(std::optional<Photo> photo) {
    photo_ = std::move(photo);
    if (!photo_) {
        rendered_ = {};
        isNewTexture_ = true;
        update();
    }
    emit pictureChanged();
    render();
}

void PhotoItem::render() {
    const Rendering work = isComponentComplete() && window() && photo_
                               ? rendering(*photo_, window()->effectiveDevicePixelRatio())
                               : Rendering();
    if (!work) {
        emit completeChanged();
        return;
    }
    // One at a time: while a window is being resized, only the newest size is worth the work.
    isStale_ = isRendering_;
    if (isRendering_)
        return;
    isRendering_ = true;
    rendering_.setFuture(onOtherThread<RenderedPhoto>(work));
    emit completeChanged();
}

void PhotoItem::showRendered() {
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

void PhotoItem::componentComplete() {
    QQuickItem::componentComplete();
    render();
}

void PhotoItem::geometryChange(const QRectF& newGeometry, const QRectF& oldGeometry) {
    QQuickItem::geometryChange(newGeometry, oldGeometry);
    if (newGeometry.size() == oldGeometry.size())
        return;
    emit pictureChanged();
    render();
}

void PhotoItem::itemChange(ItemChange change, const ItemChangeData& data) {
    QQuickItem::itemChange(change, data);
    if (change == ItemSceneChange || change == ItemDevicePixelRatioHasChanged)
        render();
}

QSGNode* PhotoItem::updatePaintNode(QSGNode* old, UpdatePaintNodeData*) {
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
    }
    node->setRect(placeOf(rendered_));
    return node;
}

}  // namespace kestrelid::preview
