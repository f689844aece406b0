#include <kestrelid/DispatchQueue.h>

namespace kestrelid {

DispatchQueue::~DispatchQueue() = default;

}  // namespace kestrelid
