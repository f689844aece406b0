#pragma once

#include "scanner/FramePlacement.h"

#include <kestrelid/CaptureServices.h>

#include <memory>
#include <QPointF>
#include <QQuickItem>
#include <QSizeF>
#include <QtQml/qqmlregistration.h>

namespace kestrelid::scanner {

// A capture session on its way through QML.
struct CaptureSessionHandle {
    Q_GADGET
    QML_ANONYMOUS

public:
    std::shared_ptr<CaptureSession> session;
    friend bool operator==(const CaptureSessionHandle&, const CaptureSessionHandle&) = default;
};

// The live picture of a session, scaled to fill the item and cropped, or whole. Draws nothing
// before a session was given and frames have come; a second session is ignored.
class CameraPreview : public QQuickItem {
    Q_OBJECT
    Q_PROPERTY(kestrelid::scanner::CaptureSessionHandle session READ session WRITE setSession NOTIFY
                   sessionChanged)
    Q_PROPERTY(bool showsWholeFrame MEMBER showsWholeFrame_ NOTIFY placementChanged)
    // Of the last frame as it is shown, in pixels; empty before the first one.
    Q_PROPERTY(QSizeF pictureSize READ pictureSize NOTIFY placementChanged)
    QML_ELEMENT

public:
    explicit CameraPreview(QQuickItem* parent = nullptr);
    ~CameraPreview() override;

    [[nodiscard]] CaptureSessionHandle session() const { return {session_.lock()}; }
    void setSession(const CaptureSessionHandle& handle);

    [[nodiscard]] QSizeF pictureSize() const;

    // Where a point of the last frame is in the item; x, y: shares of its sides as the sensor sees
    // it, from its top left. Holds until placementChanged().
    Q_INVOKABLE QPointF mapFromFrame(qreal x, qreal y) const;

signals:
    void sessionChanged();
    void placementChanged();

protected:
    void geometryChange(const QRectF& newGeometry, const QRectF& oldGeometry) override;
    QSGNode* updatePaintNode(QSGNode* old, UpdatePaintNodeData* data) override;

private:
    class Surface;

    bool hasSession_ = false;
    bool showsWholeFrame_ = false;
    FrameShape shape_;  // of the last frame
    std::weak_ptr<CaptureSession> session_;
    std::shared_ptr<Surface> surface_;
};

}  // namespace kestrelid::scanner
