#pragma once

#include <kestrelid/Image.h>
#include <kestrelid/screens/Export.h>
#include <kestrelid/screens/FormBuilderTag.h>
#include <kestrelid/screens/ScannerCamera.h>

#include <optional>
#include <QMarginsF>
#include <QString>
#include <QWidget>

namespace kestrelid {

/// The preview screen as a widget: alone as a window, or inside a dialog or window, which its close
/// control rejects or closes. Retake and Confirm leave it open. Main thread.
class KESTRELID_SCREENS_EXPORT ImagePreviewViewController : public QWidget {
    Q_OBJECT

public:
    /// title: shown as it stands. image: none shows a placeholder.
    ImagePreviewViewController(QString title, std::optional<Image> image, ScreenAction didTapRetake,
                               ScreenAction didTapConfirm, QWidget* parent = nullptr);

    /// Controllers are made in code only: ends the program.
    [[noreturn]] explicit ImagePreviewViewController(FormBuilderTag tag);

    ~ImagePreviewViewController() override;

    /// Read once, when the controller is first shown.
    QString titleText;
    std::optional<Image> image;
    QMarginsF safeAreaMargins;  ///< points of the screen's edges that a notch or system bar covers
    double textScale = 1.0;     ///< of every text; 1: as designed
    bool adaptsToSize = false;  ///< small heights and large screens get a layout of their own

    /// Looked up at each tap.
    ScreenAction didTapRetake;
    ScreenAction didTapConfirm;

protected:
    void showEvent(QShowEvent* event) override;

private:
    QWidget* hosted_ = nullptr;
};

}  // namespace kestrelid
