#include "screens/QtMainQueue.h"

#include <kestrelid/screens/MainQueue.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <deque>
#include <exception>
#include <mutex>
#include <QCoreApplication>
#include <QEvent>
#include <QObject>
#include <QtGlobal>
#include <QTimer>
#include <utility>

namespace kestrelid::screens {

namespace {

using Clock = std::chrono::steady_clock;
using Seconds = std::chrono::duration<double>;

constexpr Seconds kLongestTimer{1'000'000.0};  // QTimer counts milliseconds in an int

// Qt's event loop does not survive an exception: what a host's callback throws is told.
void run(const DispatchQueue::Block& block) noexcept {
    try {
        block();
    } catch (const std::exception& exception) {
        qWarning("kestrelid: main queue: %s", exception.what());
    } catch (...) {
        qWarning("kestrelid: main queue: unknown exception");
    }
}

// Thread: the receiver's.
void runAt(Clock::time_point due, std::shared_ptr<QObject> receiver, DispatchQueue::Block block) {
    const auto left = std::chrono::ceil<std::chrono::milliseconds>(due - Clock::now());
    if (left.count() <= 0)
        return run(block);
    QObject* context = receiver.get();
    QTimer::singleShot(left, Qt::PreciseTimer, context,
                       [due, receiver = std::move(receiver), block = std::move(block)]() mutable {
                           runAt(due, std::move(receiver), std::move(block));
                       });
}

}  // namespace

// Holds the waiting blocks, and itself while there are any, so that it outlives the queue. Events
// do not hold blocks: an application that ends deletes its events under the lock that posting
// takes, and a block may be the last owner of something that posts when it is released, or that
// waits for a thread that posts.
class QtMainQueue::Receiver final : public QObject, public std::enable_shared_from_this<Receiver> {
public:
    static std::shared_ptr<Receiver> make() {
        const std::shared_ptr<Receiver> made(new Receiver, [](Receiver* receiver) {
            receiver->hasEnded_ ? delete receiver : receiver->deleteLater();
        });
        auto* application = QCoreApplication::instance();
        if (!application)
            return made;
        made->moveToThread(application->thread());
        connect(application, &QObject::destroyed, made.get(), &Receiver::end, Qt::DirectConnection);
        return made;
    }

    void add(Block block) {
        const std::lock_guard lock(mutex_);
        if (hasEnded_)
            return;
        waiting_.push_back(std::move(block));
        self_ = shared_from_this();
        QCoreApplication::postEvent(this, new QEvent(QEvent::User));
    }

protected:
    // One event for each block: a block that runs an event loop of its own does not stop the rest.
    bool event(QEvent* event) override {
        if (event->type() != QEvent::User)
            return QObject::event(event);
        const std::shared_ptr<Receiver> self = shared_from_this();
        Block block;
        {
            const std::lock_guard lock(mutex_);
            if (waiting_.empty())
                return true;
            block = std::move(waiting_.front());
            waiting_.pop_front();
            if (waiting_.empty())
                self_.reset();
        }
        run(block);
        return true;
    }

private:
    void end() {
        std::deque<Block> abandoned;  // released after the lock
        std::shared_ptr<Receiver> self;
        const std::lock_guard lock(mutex_);
        hasEnded_ = true;
        abandoned.swap(waiting_);
        self.swap(self_);
    }

    std::mutex mutex_;
    std::deque<Block> waiting_;
    std::shared_ptr<Receiver> self_;
    std::atomic<bool> hasEnded_ = false;
};

QtMainQueue::QtMainQueue() : receiver_(Receiver::make()) {}

QtMainQueue::~QtMainQueue() = default;

void QtMainQueue::async(Block block) {
    receiver_->add(std::move(block));
}

void QtMainQueue::asyncAfter(std::chrono::duration<double> delay, Block block) {
    if (!(delay > Seconds::zero()))
        return async(std::move(block));
    const auto wait = std::chrono::ceil<Clock::duration>(std::min(delay, kLongestTimer));
    const Clock::time_point due = Clock::now() + wait;
    async([due, receiver = receiver_, block = std::move(block)] { runAt(due, receiver, block); });
}

}  // namespace kestrelid::screens

std::shared_ptr<kestrelid::DispatchQueue> kestrelid::makeQtMainQueue() {
    return std::make_shared<screens::QtMainQueue>();
}
