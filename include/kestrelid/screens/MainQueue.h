#pragma once

#include <kestrelid/DispatchQueue.h>
#include <kestrelid/screens/Export.h>

#include <memory>

namespace kestrelid {

/// The main queue of a Qt program: blocks run one after another on the thread of the
/// QCoreApplication, from its event loop. Needs a QCoreApplication. Thread: any.
[[nodiscard]] KESTRELID_SCREENS_EXPORT std::shared_ptr<DispatchQueue> makeQtMainQueue();

}  // namespace kestrelid
