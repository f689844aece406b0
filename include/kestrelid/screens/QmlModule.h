#pragma once

#include <kestrelid/screens/Export.h>
#include <kestrelid/screens/ScannerCamera.h>

class QQmlEngine;

namespace kestrelid {

/// Makes `import Kestrelid` work in the engine without any file outside this library. The types are
/// DocumentScannerView, ImagePreviewView and PassportScan. Main thread.
KESTRELID_SCREENS_EXPORT void installQmlModule(QQmlEngine& engine);

/// For the scanning screens that open in the engine from now on. Main thread.
KESTRELID_SCREENS_EXPORT void setScannerCamera(QQmlEngine& engine, ScannerCamera camera);

}  // namespace kestrelid
