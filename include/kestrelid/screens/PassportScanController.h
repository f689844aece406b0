#pragma once

#include <kestrelid/Examination.h>
#include <kestrelid/Image.h>
#include <kestrelid/screens/Export.h>
#include <kestrelid/screens/FormBuilderTag.h>
#include <kestrelid/screens/ScannerAssistance.h>
#include <kestrelid/screens/ScannerCamera.h>

#include <functional>
#include <optional>
#include <QMarginsF>
#include <QString>
#include <QUrl>
#include <QWidget>

namespace kestrelid {

/// What a person has scanned. Personal data: never log it.
struct PassportScanResult {
    Image photo;              ///< upright; places in the examination are places in it
    Examination examination;  ///< the verdict, and all else that was read
};

/// Gets the result, or nothing if the person has given up.
using PassportScanCompletion = std::function<void(const std::optional<PassportScanResult>& result)>;

/// Gets the name of the page that is shown: "scanning", "preview", "judging", "result" or "failed".
using PageObserver = std::function<void(const QString& page)>;

/// The whole way in one widget: scan, look at the photo, judge it, show what was found. What goes
/// wrong has a page of its own that says what to do. Alone as a window, or inside a dialog or
/// window, which closes once completion was called. Main thread.
class KESTRELID_SCREENS_EXPORT PassportScanController : public QWidget {
    Q_OBJECT

public:
    /// completion: called once for each showing, when the person is done or has given up.
    explicit PassportScanController(PassportScanCompletion completion, ScannerCamera camera = {},
                                    QWidget* parent = nullptr);

    /// Controllers are made in code only: ends the program.
    [[noreturn]] explicit PassportScanController(FormBuilderTag tag);

    ~PassportScanController() override;

    /// @name Read once, when the controller is first shown
    /// @{
    QMarginsF safeAreaMargins;  ///< points of the screen's edges that a notch or system bar covers
    ScannerAssistance assistance = ScannerAssistance::all();
    double textScale = 1.0;  ///< 1: as designed
    bool readsZone = true;   ///< the machine-readable zone too
    /// What the result page counts as a passport.
    PassportProof proof = PassportProof::verdict;
    /// Whether a photo that shows no passport may be handed over too.
    bool acceptsAnyPhoto = false;
    /// @}

    /// Looked up whenever another page is shown, the first one included; it may release the screen.
    PageObserver didChangePage;

    /// Goes on with a picture file in place of a photo; before the first showing it is remembered
    /// for that.
    void open(const QUrl& file);

protected:
    void showEvent(QShowEvent* event) override;

private Q_SLOTS:
    void tellPage();

private:
    PassportScanCompletion completion_;
    ScannerCamera camera_;
    QWidget* hosted_ = nullptr;
    QUrl picture_;  // before it is shown
};

}  // namespace kestrelid
