#include "QtMainQueue.h"

#include <kestrelid/screens/MainQueue.h>

#include <algorithm>
#include <chrono>
#include <QCoreApplication>
#include <QTimer>
#include <utility>

namespace kestrelid {

namespace {

using Clock = std::chrono::steady_clock;
using Seconds = std::chrono::duration<double>;

constexpr Seconds kLongestTimer{1'000'000.0};  // QTimer counts milliseconds in an int

// Thread: the receiver's.
void runAt(Clock::time_point due, std::shared_ptr<QObject> receiver, DispatchQueue::Block block) {
    const auto left = std::chrono::ceil<std::chrono::milliseconds>(due - Clock::now());
    if (left.count() <= 0)
        return block();
    QObject* context = receiver.get();
    QTimer::singleShot(left, Qt::PreciseTimer, context,
                       [due, receiver = std::move(receiver), block = std::move(block)]() mutable {
                           runAt(due, std::move(receiver), std::move(block));
                       });
}

}  // namespace

QtMainQueue::QtMainQueue()
    : receiver_(new QObject, [](QObject* object) { object->deleteLater(); }) {
    if (const auto* application = QCoreApplication::instance())
        receiver_->moveToThread(application->thread());
}

QtMainQueue::~QtMainQueue() = default;

void QtMainQueue::async(Block block) {
    QMetaObject::invokeMethod(
        receiver_.get(), [receiver = receiver_, block = std::move(block)] { block(); },
        Qt::QueuedConnection);
}

void QtMainQueue::asyncAfter(std::chrono::duration<double> delay, Block block) {
    if (!(delay > Seconds::zero()))
        return async(std::move(block));
    const auto wait = std::chrono::ceil<Clock::duration>(std::min(delay, kLongestTimer));
    const Clock::time_point due = Clock::now() + wait;
    async([due, receiver = receiver_, block = std::move(block)] { runAt(due, receiver, block); });
}

std::shared_ptr<DispatchQueue> makeQtMainQueue() {
    return std::make_shared<QtMainQueue>();
}

}  // namespace kestrelid
