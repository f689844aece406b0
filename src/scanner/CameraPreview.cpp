#include "scanner/CameraPreview.h"

#include <mutex>
#include <optional>
#include <QImage>
#include <QQuickWindow>
#include <QSGImageNode>
#include <QSGTexture>
#include <QSGTransformNode>
#include <utility>

namespace kestrelid::scanner {

namespace {

struct Frame {
    Bitmap bitmap;
    Orientation orientation;
    bool isMirrored;

    [[nodiscard]] FrameShape shape() const {
        return {QSizeF(bitmap.width(), bitmap.height()), orientation, isMirrored};
    }
};

// Shares the bitmap's pixels.
QImage asImage(const Bitmap& bitmap) {
    return {reinterpret_cast<const uchar*>(bitmap.row(0)),
            bitmap.width(),
            bitmap.height(),
            bitmap.stride(),
            QImage::Format_RGB32,
            [](void* held) { delete static_cast<Bitmap*>(held); },
            new Bitmap(bitmap)};
}

class FrameNode final : public QSGTransformNode {
public:
    explicit FrameNode(QQuickWindow& window) : image_(window.createImageNode()) {
        image_->setOwnsTexture(true);
        image_->setFiltering(QSGTexture::Linear);
        appendChildNode(image_);
    }

    void setFrame(QQuickWindow& window, const Frame& frame) {
        image_->setTexture(
            window.createTextureFromImage(asImage(frame.bitmap), QQuickWindow::TextureIsOpaque));
    }

    void place(const FramePlacement& placement) {
        image_->setSourceRect(placement.source);
        image_->setRect(QRectF(QPointF(), placement.stored));
        setMatrix(QMatrix4x4(placement.transform));
    }

private:
    QSGImageNode* image_;
};

}  // namespace

// Keeps the newest frame for the item. Outlives the item if the session holds it at that moment.
class CameraPreview::Surface final : public PreviewSurface {
public:
    explicit Surface(CameraPreview& item) : item_(&item) {}

    void show(const Bitmap& frame, Orientation orientation, bool isMirrored) override {
        std::optional<Frame> replaced;  // released after the lock
        const std::lock_guard lock(mutex_);
        replaced = std::exchange(newest_, Frame{frame, orientation, isMirrored});
        if (!item_ || isAnnounced_)
            return;
        isAnnounced_ = true;
        QMetaObject::invokeMethod(item_, &QQuickItem::update, Qt::QueuedConnection);
    }

    // Nothing if no frame has come since the last call.
    std::optional<Frame> take() {
        const std::lock_guard lock(mutex_);
        isAnnounced_ = false;
        return std::exchange(newest_, std::nullopt);
    }

    void forgetItem() {
        const std::lock_guard lock(mutex_);
        item_ = nullptr;
    }

private:
    std::mutex mutex_;
    std::optional<Frame> newest_;
    CameraPreview* item_;
    bool isAnnounced_ = false;
};

CameraPreview::CameraPreview(QQuickItem* parent)
    : QQuickItem(parent), surface_(std::make_shared<Surface>(*this)) {
    setFlag(ItemHasContents);
    connect(this, &CameraPreview::placementChanged, this, [this] { update(); });
}

CameraPreview::~CameraPreview() {
    surface_->forgetItem();
}

void CameraPreview::setSession(const CaptureSessionHandle& handle) {
    if (!handle.session || hasSession_)
        return;
    hasSession_ = true;
    session_ = handle.session;
    handle.session->addPreviewSurface(surface_);
    emit sessionChanged();
}

void CameraPreview::geometryChange(const QRectF& newGeometry, const QRectF& oldGeometry) {
    QQuickItem::geometryChange(newGeometry, oldGeometry);
    emit placementChanged();
}

QSizeF CameraPreview::pictureSize() const {
    return screens::uprightSize(shape_.orientation, shape_.stored);
}

QPointF CameraPreview::mapFromFrame(qreal x, qreal y) const {
    return scanner::mapFromFrame(shape_, placeFrame(shape_, size(), showsWholeFrame_), {x, y});
}

QSGNode* CameraPreview::updatePaintNode(QSGNode* old, UpdatePaintNodeData*) {
    auto* node = static_cast<FrameNode*>(old);
    if (const std::optional<Frame> frame = surface_->take()) {
        if (!node)
            node = new FrameNode(*window());
        node->setFrame(*window(), *frame);
        // The main thread waits meanwhile, and is told once it goes on.
        if (const FrameShape shape = frame->shape(); shape != shape_) {
            shape_ = shape;
            QMetaObject::invokeMethod(this, &CameraPreview::placementChanged, Qt::QueuedConnection);
        }
    }
    if (node)
        node->place(placeFrame(shape_, size(), showsWholeFrame_));
    return node;
}

}  // namespace kestrelid::scanner
