#include "apps/cli/CameraWatch.h"
#include "apps/cli/WatchLog.h"
#include "tests/support/FakeCapture.h"
#include "tests/support/ManualQueue.h"

#include <kestrelid/ImageFile.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <fstream>

namespace kestrelid::cli {
namespace {

namespace fs = std::filesystem;
using test::FakeAuthorization;
using test::FakePlatform;
using test::ManualQueue;
using testing::ElementsAre;
using testing::HasSubstr;

std::string shortForm(const WatchEvent& event) {
    const std::string line = eventAsJson({}, event);
    const std::size_t start = line.find("\"event\":") + 8;
    return line.substr(start, line.rfind('}') - start);
}

constexpr const char* kAuthorized = R"("authorized","authorized":true)";
constexpr const char* kReady = R"("session","ready":true,"camera":"Fake camera")";

struct CameraWatchTest : testing::Test {
    std::shared_ptr<ManualQueue> queue = std::make_shared<ManualQueue>();
    std::shared_ptr<FakeAuthorization> authorization =
        std::make_shared<FakeAuthorization>(AuthorizationStatus::authorized);
    std::shared_ptr<FakePlatform> platform = std::make_shared<FakePlatform>();
    std::shared_ptr<test::FakeDetector> detector = std::make_shared<test::FakeDetector>();
    std::shared_ptr<CameraWatch> watch;
    std::vector<std::string> told;
    std::vector<ExitStatus> ended;
    double time = 0.0;  // seconds
    const fs::path page = testing::TempDir() + "kestrelid-" + std::to_string(::getpid()) + ".jpg";

    void TearDown() override { fs::remove(page); }

    void start(const WatchPlan& plan = {}) {
        watch = std::make_shared<CameraWatch>(
            plan, WatchCallbacks{
                      .tell = [this](const WatchEvent& event) { told.push_back(shortForm(event)); },
                      .onEnd = [this](ExitStatus status) { ended.push_back(status); },
                      .elapsed = [this] { return time; },
                      .whyDenied = [] { return "denied"; },
                      .whyNoCamera = [] { return ""; }});
        watch->start({.authorization = authorization,
                      .capture = platform,
                      .detector = detector,
                      .mainQueue = queue,
                      .makeSerialQueue = [this](const std::string&) { return queue; },
                      .now = [this] { return WallTime(std::chrono::duration<double>(time)); }});
        pass(0.0);
    }

    void pass(double seconds) {
        for (const double end = time + seconds; time < end; time += 0.1)
            queue->advance(0.1);
        queue->runAll();
    }

    void judge(std::initializer_list<bool> verdicts) {
        for (const bool isPassport : verdicts) {
            time += 0.5;
            platform->videoOutput.lock()->deliver(
                std::make_shared<test::FakePixelBuffer>(test::blankBitmap(8, 8)));
            queue->runAll();
            detector->answer(detector->completions.size() - 1, isPassport, isPassport ? 0.5 : 0.1);
            queue->runAll();
        }
    }

    WatchPlan photoPlan(std::optional<double> after = {},
                        std::optional<double> seconds = {}) const {
        WatchPlan plan;
        plan.photo = PhotoFile{.path = page};
        plan.photoAfter = after;
        plan.seconds = seconds;
        return plan;
    }

    std::size_t photosAsked() const { return platform->photoOutput.lock()->requests.size(); }

    void answerPhoto() {
        const fs::path file = page.native() + "-stored.jpg";
        ASSERT_FALSE(writeImage(file, Image(test::blankBitmap(16, 32))));
        std::ifstream stream(file, std::ios::binary);
        const std::string bytes(std::istreambuf_iterator<char>(stream), {});
        fs::remove(file);
        const auto* data = reinterpret_cast<const std::byte*>(bytes.data());
        platform->photoOutput.lock()->finish(
            {.fileDataRepresentation = std::vector<std::byte>(data, data + bytes.size())});
        queue->runAll();
    }
};

TEST_F(CameraWatchTest, TellsVerdictsAndEachChangeOfTheDocument) {
    start();
    pass(1.2);
    judge({false, true, true, false, false});
    constexpr const char* kYes = R"("verdict","isPassport":true,"confidence":0.5)";
    constexpr const char* kNo = R"("verdict","isPassport":false,"confidence":0.1)";
    EXPECT_THAT(told, ElementsAre(kAuthorized, kReady, kNo, kYes, R"("document","detected":true)",
                                  kYes, kNo, kNo, R"("document","detected":false)"));
}

TEST_F(CameraWatchTest, WaitsForThePersonToAnswer) {
    *authorization = FakeAuthorization(AuthorizationStatus::notDetermined);
    start();
    pass(5.0);
    EXPECT_TRUE(told.empty());
    authorization->answer(true);
    pass(1.2);
    EXPECT_THAT(told, ElementsAre(kAuthorized, kReady));
}

TEST_F(CameraWatchTest, EndsOnceAndReleasesTheCamera) {
    WatchPlan plan;
    plan.seconds = 3.0;
    start(plan);
    pass(2.7);
    EXPECT_TRUE(ended.empty());
    pass(0.4);
    EXPECT_TRUE(platform->session.expired());
    watch->stop();
    watch->fail("too late");
    EXPECT_THAT(ended, ElementsAre(ExitStatus::done));
    EXPECT_EQ(told.size(), 2u);
    EXPECT_EQ(queue->waiting(), 0u);
}

TEST_F(CameraWatchTest, PhotoWaitsForPassportAndReadiness) {
    start(photoPlan());
    judge({true});
    EXPECT_EQ(photosAsked(), 0u);  // in view, but the camera is not ready
    judge({false, false});
    pass(1.2);
    EXPECT_EQ(photosAsked(), 0u);  // ready, but out of view
    judge({true});
    ASSERT_EQ(photosAsked(), 1u);
    judge({false, false, true});
    EXPECT_EQ(photosAsked(), 1u);
    answerPhoto();
    EXPECT_EQ(told.back(), R"("photo","file":")" + page.native() + R"(","width":16,"height":32)");
    EXPECT_THAT(ended, ElementsAre(ExitStatus::done));
    EXPECT_TRUE(std::holds_alternative<Image>(readImage(page)));
}

TEST_F(CameraWatchTest, PhotoAfterSecondsWaitsForNoPassportAndTheEndForThePhoto) {
    for (const double seconds : {10.0, 3.0}) {  // the photo comes before it, after it
        start(photoPlan(2.0, seconds));
        pass(1.1);
        judge({true});
        EXPECT_EQ(photosAsked(), 0u);
        pass(2.2);
        ASSERT_EQ(photosAsked(), 1u);
        EXPECT_TRUE(ended.empty());
        answerPhoto();
        pass(0.2);
        EXPECT_EQ(ended.empty(), seconds > 9);
        pass(10.0);
        EXPECT_THAT(ended, ElementsAre(ExitStatus::done));
        ended.clear();
        fs::remove(page);
        time = 0;
    }
}

TEST_F(CameraWatchTest, MissedPhotoIsAnError) {
    start(photoPlan(0.0));
    pass(1.2);
    platform->photoOutput.lock()->finish({}, CaptureError{"gone"});
    queue->runAll();
    EXPECT_THAT(told.back(), HasSubstr(".jpg: the camera gave no photo"));
    EXPECT_THAT(ended, ElementsAre(ExitStatus::inputFailed));
}

TEST_F(CameraWatchTest, FileThatAppearsMeanwhileIsReplacedOnlyByForce) {
    for (const bool force : {false, true}) {
        WatchPlan plan = photoPlan(0.0);
        plan.photo->mayReplace = force;
        start(plan);
        pass(1.2);
        std::ofstream(page) << "theirs";
        answerPhoto();
        EXPECT_EQ(ended.back(), force ? ExitStatus::done : ExitStatus::inputFailed);
        EXPECT_EQ(fs::file_size(page) == 6u, !force);
    }
}

}  // namespace
}  // namespace kestrelid::cli
