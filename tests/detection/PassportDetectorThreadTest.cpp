#include "base/AsioQueue.h"
#include "tests/support/FakeServices.h"

#include <kestrelid/PassportDetector.h>

#include <atomic>
#include <cmath>
#include <future>
#include <gtest/gtest.h>
#include <latch>
#include <thread>

namespace kestrelid::detection {
namespace {

using namespace std::chrono_literals;

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

TEST(PassportDetectorThreads, ReleaseWaitsForNothingAndWhatReadsTextAnswers) {
    std::latch isReading(1);
    std::latch isReleased(1);
    std::promise<void> answered;
    const auto text = std::make_shared<test::FakeText>();
    text->duringRequest = [&] {
        isReading.count_down();
        isReleased.wait();
    };
    PlatformServices withText = services(1);
    withText.text = text;
    auto detector = PassportDetector::create(std::move(withText));
    detector->validate(Image(test::blankBitmap(60, 60)),
                       [&](const auto&) { answered.set_value(); });
    isReading.wait();
    detector.reset();  // a release that waited would wait for ever
    isReleased.count_down();
    EXPECT_EQ(answered.get_future().wait_for(60s), std::future_status::ready);
}

TEST(PassportDetectorThreads, JudgeWaitsForTheVerdictOrSaysWhyThereIsNone) {
    const Image image(test::blankBitmap(60, 60));
    const auto reasonOf = [](const Judgement& judgement) {
        return std::get<NoVerdict>(judgement).reason;
    };
    auto detector = PassportDetector::create(services(2));
    for (const Image& judged : {image, Image()}) {
        const Judgement judgement = detector->judge(judged);
        EXPECT_EQ(std::get<PassportValidationResult>(judgement).isPassport(),
                  judged.bitmap().has_value());
    }
    const auto text = std::make_shared<test::FakeText>();
    std::promise<void> isOver;
    text->duringRequest = [waited = isOver.get_future().share()] { waited.wait(); };
    PlatformServices slow = services(1);
    slow.text = text;
    const auto slowDetector = PassportDetector::create(slow);
    for (const double seconds : {0.001, 0.0, -1e300, std::nan("")})
        EXPECT_EQ(reasonOf(slowDetector->judge(image, std::chrono::duration<double>(seconds))),
                  NoVerdict::Reason::timedOut);
    isOver.set_value();

    struct Releasing final : RectangleService {
        RectangleResult perform(const Bitmap&, const RectangleRequest&) override {
            detector->reset();
            return {};
        }
        std::shared_ptr<PassportDetector>* detector = nullptr;
    };
    const auto releasing = std::make_shared<Releasing>();
    PlatformServices abandoned = services(1);
    abandoned.rectangles = releasing;
    releasing->detector = &detector;
    detector = PassportDetector::create(abandoned);
    EXPECT_EQ(reasonOf(detector->judge(image)), NoVerdict::Reason::abandoned);
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
