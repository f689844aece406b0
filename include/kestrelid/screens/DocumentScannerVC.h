#pragma once

#include <kestrelid/screens/Export.h>
#include <kestrelid/screens/FormBuilderTag.h>
#include <kestrelid/screens/ScannerAssistance.h>
#include <kestrelid/screens/ScannerCamera.h>

#include <optional>
#include <QMarginsF>
#include <QString>
#include <QWidget>

namespace kestrelid {

/// The scanning screen as a widget: alone as a window, or inside a dialog or window, which its
/// close control rejects or closes. The camera is not touched before it is first shown. Main
/// thread.
class KESTRELID_SCREENS_EXPORT DocumentScannerVC : public QWidget {
    Q_OBJECT

public:
    /// completion: gets every photo that is asked for, exactly as CameraManager::onPhotoCapture.
    explicit DocumentScannerVC(PhotoCompletion completion, ScannerCamera camera = {},
                               QWidget* parent = nullptr);

    /// Controllers are made in code only: ends the program.
    [[noreturn]] explicit DocumentScannerVC(FormBuilderTag tag);

    ~DocumentScannerVC() override;

    /// What of the screen's edges is covered, by a notch or a system bar; counts if it is set
    /// before the first showing. Points.
    QMarginsF safeAreaMargins;

    /// @name Beyond the plain screen; counts if it is set before the first showing
    /// @{
    ScannerAssistance assistance;
    ScannerLayout layout;
    double textScale = 1.0;  ///< of every text; 1: as designed
    /// @}

    /// Looked up at each change of the zone. Zones are read only if it is set before the first
    /// showing; it may release the screen.
    ZoneObserver didReadZone;

    /// Looked up whenever the camera starts, is lost, comes back and so on; it may release the
    /// screen.
    CameraObserver didChangeCamera;

    /// Looked up whenever the camera's controls change; it may release the screen.
    ControlsObserver didChangeControls;

    /// Changes what didChangeControls told; without a value the camera chooses. Anything else is
    /// ignored, as is any call before the first showing.
    void setControl(CameraControl control, std::optional<double> value);

    /// Looked up whenever a camera comes or goes, from the first showing on; it may release the
    /// screen.
    CamerasObserver didChangeCameras;

    /// Goes on with the camera of that name, as CameraDescription has it; before the first showing
    /// it is remembered for that. A name that no camera has changes nothing.
    void switchCamera(const QString& name);

private:
    QWidget* hosted_ = nullptr;
};

}  // namespace kestrelid
