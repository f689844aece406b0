#include "apps/cli/CameraWatch.h"

#include "apps/cli/WatchLog.h"
#include "tests/support/FakeCapture.h"
#include "tests/support/ManualQueue.h"

#include <kestrelid/ImageFile.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <fstream>
#include <sstream>

namespace kestrelid::cli {
namespace {

namespace fs = std::filesystem;
using test::FakeAuthorization;
using test::FakeDetector;
using test::FakePlatform;
using test::ManualQueue;
using testing::ElementsAre;

std::string shortForm(const WatchEvent& event) {
    const std::string line = eventAsJson({}, event);
    return line.substr(line.find("\"event\":") + 8, line.rfind('}') - line.find("\"event\":") - 8);
}

constexpr const char* kAuthorized = R"("authorized","authorized":true)";
constexpr const char* kReady = R"("session","ready":true,"camera":"Fake camera")";
constexpr const char* kInView = R"("document","detected":true)";

struct CameraWatchTest : testing::Test {
    std::shared_ptr<ManualQueue> queue = std::make_shared<ManualQueue>();
    std::shared_ptr<FakeAuthorization> authorization =
        std::make_shared<FakeAuthorization>(AuthorizationStatus::authorized);
    std::shared_ptr<FakePlatform> platform = std::make_shared<FakePlatform>();
    std::shared_ptr<FakeDetector> detector = std::make_shared<FakeDetector>();
    std::shared_ptr<CameraWatch> watch;
    std::vector<std::string> told;
    std::vector<ExitStatus> ended;
    double time = 0.0;  // seconds
    fs::path folder;

    void SetUp() override {
        std::string pattern = (fs::temp_directory_path() / "kestrelid-XXXXXX").native();
        ASSERT_NE(::mkdtemp(pattern.data()), nullptr);
        folder = pattern;
    }
    void TearDown() override { fs::remove_all(folder); }

    void start(const WatchPlan& plan = {}) {
        watch = std::make_shared<CameraWatch>(
            plan, WatchCallbacks{
                      .tell = [this](const WatchEvent& event) { told.push_back(shortForm(event)); },
                      .onEnd = [this](ExitStatus status) { ended.push_back(status); },
                      .elapsed = [this] { return time; },
                      .whyDenied = [] { return "denied"; },
                      .whyNoCamera = [] { return "no camera"; }});
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

    void judge(bool isPassport) {
        time += 0.5;
        const auto pixels = std::make_shared<test::FakePixelBuffer>(test::blankBitmap(8, 8));
        platform->videoOutput.lock()->deliver(pixels);
        queue->runAll();
        detector->answer(detector->completions.size() - 1, isPassport, isPassport ? 0.5 : 0.1);
        queue->runAll();
    }

    WatchPlan photoPlan(std::optional<double> after = {}, bool mayReplace = false) const {
        WatchPlan plan;
        plan.photo = PhotoFile{.path = folder / "page.jpg", .mayReplace = mayReplace};
        plan.photoAfter = after;
        return plan;
    }

    std::size_t photosAsked() const { return platform->photoOutput.lock()->requests.size(); }

    void answerPhoto() {
        const fs::path file = folder / "stored.jpg";
        ASSERT_FALSE(writeImage(file, Image(test::blankBitmap(16, 32))));
        std::ifstream stream(file, std::ios::binary);
        std::ostringstream content;
        content << stream.rdbuf();
        const std::string bytes = content.str();
        const auto* data = reinterpret_cast<const std::byte*>(bytes.data());
        platform->photoOutput.lock()->finish(
            {.fileDataRepresentation = std::vector<std::byte>(data, data + bytes.size())});
        queue->runAll();
    }
};

TEST_F(CameraWatchTest, TellsVerdictsAndEachChangeOfTheDocument) {
    start();
    pass(1.2);
    for (const bool isPassport : {false, true, true, false, false})
        judge(isPassport);
    constexpr const char* kYes = R"("verdict","isPassport":true,"confidence":0.5)";
    constexpr const char* kNo = R"("verdict","isPassport":false,"confidence":0.1)";
    EXPECT_THAT(told, ElementsAre(kAuthorized, kReady, kNo, kYes, kInView, kYes, kNo, kNo,
                                  R"("document","detected":false)"));
    EXPECT_TRUE(ended.empty());
}

TEST_F(CameraWatchTest, EndsWithTheReasonWhereThereIsNothingToWatch) {
    struct Row {
        const char* name;
        std::function<void(CameraWatchTest&)> prepare;
        std::vector<std::string> told;
    };
    const std::string opened = R"("authorized","authorized":true)";
    const std::string notReady = R"("session","ready":false,"camera":"Fake camera")";
    const std::vector<Row> rows{
        {"denied",
         [](auto& t) {
             t.authorization = std::make_shared<FakeAuthorization>(AuthorizationStatus::denied);
         },
         {R"("authorized","authorized":false)", R"("error","error":"denied")"}},
        {"no camera",
         [](auto& t) { t.platform->machine->hasDevice = false; },
         {opened, R"("session","ready":false,"camera":null)", R"("error","error":"no camera")"}},
        {"busy",
         [](auto& t) { t.platform->machine->deviceOpens = false; },
         {opened, notReady, R"("error","error":"Fake camera: in use by another program")"}},
        {"no frames",
         [](auto& t) { t.platform->machine->starts = false; },
         {opened, notReady,
          R"("error","error":"Fake camera: opened, but gives no pictures; another program may be using it")"}},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        platform = std::make_shared<FakePlatform>();
        authorization = std::make_shared<FakeAuthorization>(AuthorizationStatus::authorized);
        row.prepare(*this);
        told.clear();
        ended.clear();
        start();
        pass(1.5);
        EXPECT_EQ(told, row.told);
        EXPECT_THAT(ended, ElementsAre(ExitStatus::inputFailed));
        EXPECT_TRUE(platform->session.expired());
    }
}

TEST_F(CameraWatchTest, CallsTheCameraAsThePersonDoes) {
    WatchPlan plan;
    plan.camera = "pictures/page.jpg";
    start(plan);
    pass(1.2);
    EXPECT_EQ(told.back(), R"("session","ready":true,"camera":"pictures/page.jpg")");
    platform->session.lock()->lose();
    pass(0.3);
    EXPECT_EQ(told.back(), R"("error","error":"pictures/page.jpg: the camera was lost")");
}

TEST_F(CameraWatchTest, WaitsForThePersonToAnswer) {
    authorization = std::make_shared<FakeAuthorization>(AuthorizationStatus::notDetermined);
    start();
    pass(5.0);
    EXPECT_TRUE(told.empty());
    authorization->answer(true);
    pass(1.2);
    EXPECT_THAT(told, ElementsAre(kAuthorized, kReady));
}

TEST_F(CameraWatchTest, NoticesALostCameraSoon) {
    start();
    pass(1.2);
    platform->session.lock()->lose();
    pass(0.3);
    EXPECT_EQ(told.back(), R"("error","error":"Fake camera: the camera was lost")");
    EXPECT_THAT(ended, ElementsAre(ExitStatus::inputFailed));
}

TEST_F(CameraWatchTest, EndsOnceAndReleasesTheCamera) {
    WatchPlan plan;
    plan.seconds = 3.0;
    start(plan);
    pass(2.7);
    EXPECT_TRUE(ended.empty());
    pass(0.4);
    EXPECT_THAT(ended, ElementsAre(ExitStatus::done));
    EXPECT_TRUE(platform->session.expired());
    watch->stop();
    watch->fail("too late");
    EXPECT_EQ(ended.size(), 1u);
    EXPECT_EQ(told.size(), 2u);
    EXPECT_EQ(queue->waiting(), 0u);
}

TEST_F(CameraWatchTest, VerdictsAfterTheEndAreNotTold) {
    start();
    pass(1.2);
    judge(false);
    platform->videoOutput.lock()->deliver(
        std::make_shared<test::FakePixelBuffer>(test::blankBitmap(8, 8)));
    time += 0.5;
    queue->runAll();
    watch->stop();
    const std::size_t before = told.size();
    detector->answer(detector->completions.size() - 1, true, 0.5);
    queue->runAll();
    EXPECT_EQ(told.size(), before);
}

TEST_F(CameraWatchTest, PhotoWaitsForPassportAndReadiness) {
    start(photoPlan());
    judge(true);
    EXPECT_EQ(photosAsked(), 0u);  // in view, but the camera is not ready
    judge(false);
    judge(false);
    pass(1.2);
    EXPECT_EQ(photosAsked(), 0u);  // ready, but out of view
    judge(true);
    ASSERT_EQ(photosAsked(), 1u);
    judge(false);
    judge(false);
    judge(true);
    EXPECT_EQ(photosAsked(), 1u);
    answerPhoto();
    EXPECT_EQ(told.back(), R"("photo","file":")" + (folder / "page.jpg").native() +
                               R"(","width":16,"height":32)");
    EXPECT_THAT(ended, ElementsAre(ExitStatus::done));
    EXPECT_TRUE(std::holds_alternative<Image>(readImage(folder / "page.jpg")));
}

TEST_F(CameraWatchTest, PhotoAfterSecondsWaitsForNoPassport) {
    WatchPlan plan = photoPlan(2.0);
    plan.seconds = 10.0;
    start(plan);
    pass(1.1);
    judge(true);
    EXPECT_EQ(photosAsked(), 0u);
    pass(2.2);
    ASSERT_EQ(photosAsked(), 1u);
    answerPhoto();
    EXPECT_TRUE(ended.empty());  // --seconds decides
    pass(10.0);
    EXPECT_THAT(ended, ElementsAre(ExitStatus::done));
}

TEST_F(CameraWatchTest, PhotoUnderWayIsAwaitedWhenTheTimeIsUp) {
    WatchPlan plan = photoPlan(1.0);
    plan.seconds = 3.0;
    start(plan);
    pass(4.0);
    EXPECT_TRUE(ended.empty());
    answerPhoto();
    pass(0.2);
    EXPECT_THAT(ended, ElementsAre(ExitStatus::done));
}

TEST_F(CameraWatchTest, MissedPhotoIsAnError) {
    WatchPlan plan = photoPlan();
    plan.seconds = 3.0;
    start(plan);
    pass(3.3);
    EXPECT_THAT(told.back(), testing::HasSubstr("page.jpg: no photo: no passport"));
    EXPECT_THAT(ended, ElementsAre(ExitStatus::inputFailed));

    start(photoPlan(0.0));
    pass(1.2);
    platform->photoOutput.lock()->finish({}, CaptureError{"gone"});
    queue->runAll();
    EXPECT_THAT(told.back(), testing::HasSubstr("page.jpg: the camera gave no photo"));
    EXPECT_EQ(ended.back(), ExitStatus::inputFailed);
}

TEST_F(CameraWatchTest, FileThatAppearsMeanwhileIsReplacedOnlyByForce) {
    for (const bool force : {false, true}) {
        start(photoPlan(0.0, force));
        pass(1.2);
        std::ofstream(folder / "page.jpg") << "theirs";
        answerPhoto();
        EXPECT_EQ(ended.back(), force ? ExitStatus::done : ExitStatus::inputFailed);
        EXPECT_EQ(fs::file_size(folder / "page.jpg") == 6u, !force);
    }
}

}  // namespace
}  // namespace kestrelid::cli
