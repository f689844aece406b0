#pragma once

#include <cstdint>
#include <exception>
#include <functional>
#include <map>
#include <memory>
#include <utility>

namespace kestrelid {

/// Keeps an observer registered for as long as it lives; may outlive the field. An empty one
/// registers nothing.
using Subscription = std::shared_ptr<const void>;

/// A value whose changes are announced: to every observer of willChange() while the old value still
/// stands, then, once the new one stands, to every observer of didChange(). Every assignment is
/// announced, also of an equal value. Observers are called in the order in which they were
/// registered; they may register and drop observers, also themselves. One that throws keeps neither
/// the value from standing nor the others from being told. Thread: one, that of its owner (a
/// CameraManager: main queue).
template <typename Value>
class Published {
public:
    /// Gets the value that is announced.
    using Observer = std::function<void(const Value& newValue)>;

    /// Announces nothing yet.
    explicit Published(Value initial) : value_(std::move(initial)) {}
    Published(const Published&) = delete;
    Published& operator=(const Published&) = delete;

    /// The value that stands.
    [[nodiscard]] const Value& value() const noexcept { return value_; }

    /// Calls observer before each change, with the value to come.
    [[nodiscard]] Subscription willChange(Observer observer) const {
        return willChange_->add(std::move(observer));
    }
    /// Calls observer after each change.
    [[nodiscard]] Subscription didChange(Observer observer) const {
        return didChange_->add(std::move(observer));
    }

    /// For the owner. Throws what the first observer has thrown, once all are told.
    void publish(Value newValue) {
        const auto will = willChange_;
        const auto did = didChange_;
        const Value announced = newValue;
        std::exception_ptr thrown;
        will->tell(announced, thrown);
        if (will.use_count() > 1) {  // no observer has released the owner, and this field with it
            value_ = std::move(newValue);
            did->tell(announced, thrown);
        }
        if (thrown)
            std::rethrow_exception(thrown);
    }

private:
    class Observers : public std::enable_shared_from_this<Observers> {
    public:
        Subscription add(Observer observer) {
            const std::uint64_t number = next_++;
            observers_.emplace(number, std::make_shared<const Observer>(std::move(observer)));
            return Subscription(this, [weak = this->weak_from_this(), number](const void*) {
                if (const auto all = weak.lock())
                    all->observers_.erase(number);
            });
        }

        void tell(const Value& value, std::exception_ptr& thrown) const {
            const std::uint64_t end = next_;  // those added meanwhile wait for the next change
            for (auto at = observers_.begin(); at != observers_.end() && at->first < end;) {
                const std::uint64_t number = at->first;
                const std::shared_ptr<const Observer> observer = at->second;
                try {
                    (*observer)(value);
                } catch (...) {
                    if (!thrown)
                        thrown = std::current_exception();
                }
                at = observers_.upper_bound(number);
            }
        }

    private:
        std::map<std::uint64_t, std::shared_ptr<const Observer>> observers_;
        std::uint64_t next_ = 0;
    };

    Value value_;
    std::shared_ptr<Observers> willChange_ = std::make_shared<Observers>();
    std::shared_ptr<Observers> didChange_ = std::make_shared<Observers>();
};

}  // namespace kestrelid
