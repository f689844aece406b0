#include "screens/HostedScreen.h"

#include <kestrelid/screens/ImagePreviewViewController.h>

#include <QPointer>
#include <QQuickWidget>
#include <QVariantMap>

namespace kestrelid {

namespace {

using Closure = ScreenAction ImagePreviewViewController::*;

// Calls the controller's closure of that moment, if there is still a controller.
QVariant forwarded(ImagePreviewViewController& controller, Closure closure) {
    return QVariant::fromValue(
        ScreenAction([weak = QPointer<ImagePreviewViewController>(&controller), closure] {
            if (!weak)
                return;
            // A copy: the closure may replace itself.
            if (const ScreenAction current = weak->*closure)
                current();
        }));
}

}  // namespace

ImagePreviewViewController::ImagePreviewViewController(QString title, std::optional<Image> picture,
                                                       ScreenAction retake, ScreenAction confirm,
                                                       QWidget* parent)
    : QWidget(parent), titleText(std::move(title)), image(std::move(picture)),
      didTapRetake(std::move(retake)), didTapConfirm(std::move(confirm)) {
    setFocusPolicy(Qt::StrongFocus);  // a place in the order of Tab before there is a child
}

ImagePreviewViewController::ImagePreviewViewController(FormBuilderTag) {
    screens::refuseFormBuilder("ImagePreviewViewController", 34);
}

ImagePreviewViewController::~ImagePreviewViewController() = default;

void ImagePreviewViewController::showEvent(QShowEvent* event) {
    QWidget::showEvent(event);
    if (hosted_)
        return;
    const QVariantMap properties{
        {QStringLiteral("title"), titleText},
        {QStringLiteral("image"), image ? QVariant::fromValue(*image) : QVariant()},
        {QStringLiteral("textScale"), textScale},
        {QStringLiteral("adaptsToSize"), adaptsToSize},
        {QStringLiteral("didTapRetake"),
         forwarded(*this, &ImagePreviewViewController::didTapRetake)},
        {QStringLiteral("didTapConfirm"),
         forwarded(*this, &ImagePreviewViewController::didTapConfirm)},
    };
    hosted_ = screens::hostScreen(*this, QStringLiteral("ImagePreviewView"), properties,
                                  safeAreaMargins, {});
}

}  // namespace kestrelid
