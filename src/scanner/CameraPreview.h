#pragma once

#include <kestrelid/CaptureServices.h>

#include <memory>
#include <QQuickItem>
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

// The live picture of a session, scaled to fill the item and cropped. Draws nothing before a
// session was given and frames have come; a second session is ignored.
class CameraPreview : public QQuickItem {
    Q_OBJECT
    Q_PROPERTY(kestrelid::scanner::CaptureSessionHandle session READ session WRITE setSession NOTIFY
                   sessionChanged)
    QML_ELEMENT

public:
    explicit CameraPreview(QQuickItem* parent = nullptr);
    ~CameraPreview() override;

    [[nodiscard]] CaptureSessionHandle session() const { return {session_.lock()}; }
    void setSession(const CaptureSessionHandle& handle);

signals:
    void sessionChanged();

protected:
    void geometryChange(const QRectF& newGeometry, const QRectF& oldGeometry) override;
    QSGNode* updatePaintNode(QSGNode* old, UpdatePaintNodeData* data) override;

private:
    class Surface;

    bool hasSession_ = false;
    std::weak_ptr<CaptureSession> session_;
    std::shared_ptr<Surface> surface_;
};

}  // namespace kestrelid::scanner
