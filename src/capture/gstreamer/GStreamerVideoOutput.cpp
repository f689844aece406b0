#include "capture/gstreamer/GStreamerOutputs.h"

#include <atomic>
#include <exception>
#include <utility>

namespace kestrelid::capture {

namespace {

class Frame final : public SampleBuffer, public PixelBuffer {
public:
    Frame(std::shared_ptr<LiveFrame> frame, std::shared_ptr<FramePool> pool)
        : frame_(std::move(frame)), pool_(std::move(pool)) {}

    const PixelBuffer* imageBuffer() const override { return this; }
    std::optional<Bitmap> render() const override {
        try {
            return frame_->copy(*pool_);
        } catch (const std::exception&) {
            return std::nullopt;  // no memory
        }
    }

private:
    const std::shared_ptr<LiveFrame> frame_;
    const std::shared_ptr<FramePool> pool_;
};

}  // namespace

struct GStreamerVideoOutput::Receiver {
    // Ends a frame's call, however it ends.
    struct Call {
        explicit Call(Receiver& owner) : receiver(owner) {}
        Call(const Call&) = delete;
        Call& operator=(const Call&) = delete;
        ~Call() { receiver.isBusy = false; }
        Receiver& receiver;
    };

    std::weak_ptr<SampleBufferDelegate> delegate;
    std::shared_ptr<DispatchQueue> queue;
    std::atomic<bool> isBusy = false;  // from a frame's posting to the end of its call
    std::atomic<bool> isReplaced = false;
};

void GStreamerVideoOutput::setVideoSettings(const VideoSettings& settings) {
    const std::lock_guard lock(mutex_);
    isFormatKnown_ = settings.pixelFormat == kPixelFormat32Bgra;
}

void GStreamerVideoOutput::setSampleBufferDelegate(std::weak_ptr<SampleBufferDelegate> delegate,
                                                   std::shared_ptr<DispatchQueue> queue) {
    auto receiver = std::make_shared<Receiver>();
    receiver->delegate = std::move(delegate);
    receiver->queue = std::move(queue);
    {
        const std::lock_guard lock(mutex_);
        receiver_.swap(receiver);
    }
    if (receiver)
        receiver->isReplaced = true;
}

bool GStreamerVideoOutput::hasDelegate() const {
    const std::lock_guard lock(mutex_);
    return isFormatKnown_ && receiver_ && receiver_->queue && !receiver_->delegate.expired();
}

void GStreamerVideoOutput::post(const std::shared_ptr<LiveFrame>& frame,
                                const std::shared_ptr<CallGate>& gate) {
    std::shared_ptr<Receiver> receiver;
    {
        const std::lock_guard lock(mutex_);
        if (isFormatKnown_)
            receiver = receiver_;
    }
    if (!receiver || !receiver->queue || receiver->delegate.expired() ||
        receiver->isBusy.exchange(true))
        return;
    // The block must not own the queue, or the queue would be released on its own thread.
    const auto queue = receiver->queue;
    try {
        queue->async([weak = std::weak_ptr(receiver), gate, frame = Frame(frame, pool_)] {
            const auto current = weak.lock();
            if (!current)
                return;
            const Receiver::Call call(*current);
            try {
                const CallGate::Pass pass(*gate);
                const auto delegate = current->delegate.lock();
                if (pass && delegate && !current->isReplaced)
                    delegate->didOutput(frame);
            } catch (const std::exception&) {
                // One frame less, for want of memory.
            }
        });
    } catch (...) {
        receiver->isBusy = false;
        throw;
    }
}

}  // namespace kestrelid::capture
