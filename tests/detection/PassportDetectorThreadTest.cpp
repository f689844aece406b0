#include "base/AsioQueue.h"
#include "tests/support/FakeServices.h"

#include <kestrelid/PassportDetector.h>

#include <atomic>
#include <future>
#include <gtest/gtest.h>
#include <latch>
#include <thread>

namespace kestrelid::detection {
namespace {

// Safe to call from several threads at once, unlike the recording fakes.
class Rectangles final : public RectangleService {
    RectangleResult perform(const Bitmap&, const RectangleRequest&) override {
        return std::vector{test::rectangleOf(0.9, 0.9)};
    }
};
class Text final : public TextService {
    TextResult perform(const Bitmap& bitmap, const TextRequest&) override {
        const std::string line = bitmap.width() > 50 ? "PASSPORT" : "";
        return std::vector{TextObservation({}, {{line, 1.0f}})};
    }
};

PlatformServices services(int threads) {
    return {.rectangles = std::make_shared<Rectangles>(),
            .text = std::make_shared<Text>(),
            .queue = std::make_shared<base::AsioQueue>("test", threads)};
}

TEST(PassportDetectorThreads, OverlappingCallsAreIndependent) {
    constexpr int kCallers = 4;
    constexpr int kCallsEach = 100;
    const auto detector = PassportDetector::create(services(3));
    std::atomic<int> right = 0;
    std::latch done(kCallers * kCallsEach);
    std::vector<std::jthread> callers;
    for (int caller = 0; caller < kCallers; ++caller)
        callers.emplace_back([&, caller] {
            const auto here = std::this_thread::get_id();
            for (int call = 0; call < kCallsEach; ++call) {
                const bool isWide = (caller + call) % 2 == 0;
                detector->validate(Image(test::blankBitmap(isWide ? 100 : 40, 30)),
                                   [&, isWide, here](const PassportValidationResult& result) {
                                       right += result.isPassport() == isWide &&
                                                here != std::this_thread::get_id();
                                       done.count_down();
                                   });
            }
        });
    done.wait();
    EXPECT_EQ(right, kCallers * kCallsEach);
}

TEST(PassportDetectorThreads, ReleaseAtAnyMomentLeavesNothingBehind) {
    // The last owner goes while calls are under way; every call either answers once or is given up.
    for (int round = 0; round < 200; ++round) {
        const auto answers = std::make_shared<std::atomic<int>>(0);
        {
            auto detector = PassportDetector::create(services(2));
            for (int call = 0; call < 3; ++call)
                detector->validate(Image(test::blankBitmap(60, 60)),
                                   [answers](const auto&) { ++*answers; });
            if (round % 2 == 0)
                std::this_thread::yield();
        }
        // Only this owner is left once every completion is destroyed, called or not.
        while (answers.use_count() > 1)
            std::this_thread::yield();
        EXPECT_LE(*answers, 3);
    }
}

TEST(PassportDetectorThreads, ReleaseWaitsForTextThatIsBeingRead) {
    // Otherwise a program could end while its libraries are still at work.
    std::atomic<bool> isAnswered = false;
    std::latch isReading(1);
    std::latch isReleasing(1);
    const auto text = std::make_shared<test::FakeText>();
    text->duringRequest = [&] {
        isReading.count_down();
        isReleasing.wait();
        for (int turn = 0; turn < 1000; ++turn)
            std::this_thread::yield();
    };
    PlatformServices withText = services(2);
    withText.text = text;
    auto detector = PassportDetector::create(std::move(withText));
    detector->validate(Image(test::blankBitmap(60, 60)), [&](const auto&) { isAnswered = true; });
    isReading.wait();
    isReleasing.count_down();
    detector.reset();
    EXPECT_TRUE(isAnswered);
}

TEST(PassportDetectorThreads, MayBeReleasedInItsOwnCompletion) {
    auto detector = PassportDetector::create(services(2));
    std::promise<bool> answered;
    detector->validate(Image(test::blankBitmap(60, 60)),
                       [&](const PassportValidationResult& result) {
                           detector.reset();
                           answered.set_value(result.isPassport());
                       });
    EXPECT_TRUE(answered.get_future().get());
}

}  // namespace
}  // namespace kestrelid::detection
