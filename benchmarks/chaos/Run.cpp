#include "benchmarks/chaos/Run.h"

#include "benchmarks/chaos/Round.h"
#include "capture/gstreamer/GStreamerCapturePlatform.h"
#include "tests/capture/ProcessCounts.h"
#include "tests/capture/TestCamera.h"
#include "tests/support/FakeCapture.h"

#include <kestrelid/DefaultCamera.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <malloc.h>
#include <map>
#include <memory>
#include <thread>

namespace kestrelid::chaos {
namespace {

using namespace std::chrono_literals;

// A camera that is announced but does not give frames is tried again after up to 5 s; one whose
// screen is shown again is tried at once.
constexpr Seconds kFramesLimit = 2.0;
constexpr Seconds kLongestPause = 5.25;
constexpr int kFramesAwaited = 3;
constexpr Seconds kLooksForDevices = 0.2;  // of the test camera, after its file has changed
constexpr long kGrowthLimit = 24 * 1024;   // KiB
constexpr Seconds kThreadsEnd = 20.0;      // GLib keeps idle ones for 15 s

#if defined(__SANITIZE_THREAD__) || defined(__SANITIZE_ADDRESS__)
constexpr bool kMemoryTells = false;  // the sanitizer's own grows
#else
constexpr bool kMemoryTells = true;
#endif

// Judges nothing, on a worker as the real one does.
class QuickDetector final : public PassportDetector {
public:
    explicit QuickDetector(Totals& totals)
        : PassportDetector(test::noServices(), ValidationEffort::verdictOnly), totals_(totals) {}

    void validate(const Image&, Completion completion) override {
        ++totals_.verdicts;
        workers_->async(
            [completion = std::move(completion)] { completion(makeResult(false, 0.0, {}, {})); });
    }

private:
    Totals& totals_;
    const std::shared_ptr<DispatchQueue> workers_ = makeSerialQueue("worker");
};

CameraServices servicesFor(Totals& totals) {
    return {.authorization =
                std::make_shared<test::FakeAuthorization>(AuthorizationStatus::authorized),
            .capture = std::make_shared<capture::GStreamerCapturePlatform>(CameraOptions{}),
            .detector = std::make_shared<QuickDetector>(totals),
            .mainQueue = makeSerialQueue("main"),
            .makeSerialQueue = makeSerialQueue};
}

// What the process holds once nothing is under way.
struct Holding {
    long kilobytes = 0;
    int threads = 0;
    int descriptors = 0;
};

class Run {
public:
    Run(const RunOptions& options, const std::function<void(int)>& stopFor)
        : options_(options), stopFor_(stopFor), random_(options.seed) {
        for (const std::string& line : caps_)
            camera_.set(line);
    }

    int operator()() {
        const Seconds begin = clock_.now();
        const Seconds end = begin + options_.seconds;
        Seconds nextMinute = begin + 60.0;
        std::optional<Holding> before;
        while (clock_.now() < end) {
            if (!before && clock_.now() >= begin + options_.seconds / 10)
                before = settle(nullptr);
            const Round round = drawRound(random_, options_.without);
            witness_.begin(++rounds_);
            if (rounds_ >= options_.from)
                play(round);
            else if (!round.otherCaps.empty())
                changeFormats(round.otherCaps);
            if (clock_.now() >= nextMinute) {
                std::printf("minute %.0f: %d rounds, %d managers, %d photos taken, %d failed, "
                            "%ld MiB, %d threads, %d findings\n",
                            (clock_.now() - begin) / 60, rounds_, totals_.managers.load(),
                            totals_.photosTaken.load(), totals_.photosFailed.load(),
                            test::residentKilobytes() / 1024, test::threadCount(),
                            witness_.findings());
                std::fflush(stdout);
                nextMinute += 60.0;
            }
        }
        const Holding after = settle(before ? &*before : nullptr);
        compare(before.value_or(after), after);
        return witness_.findings();
    }

private:
    void play(const Round& round) {
        screen_.open();
        const Seconds begin = clock_.now();
        std::vector<bool> stands(round.faults.size());
        std::size_t nextDeed = 0;
        bool hasOtherCaps = round.otherCaps.empty();
        while (clock_.now() < begin + round.over) {
            const Seconds time = clock_.now() - begin;
            for (std::size_t index = 0; index < stands.size(); ++index) {
                const Fault& fault = round.faults[index];
                const bool shouldStand = time >= fault.begin && time < fault.end;
                if (shouldStand != stands[index])
                    change(fault, stands[index] = shouldStand);
            }
            if (!hasOtherCaps && time >= round.capsChange) {
                hasOtherCaps = true;
                changeFormats(round.otherCaps);
            }
            for (; nextDeed < round.deeds.size() && round.deeds[nextDeed].at <= time; ++nextDeed)
                perform(round.deeds[nextDeed]);
            look();
        }
        for (std::size_t index = 0; index < stands.size(); ++index) {
            if (stands[index])
                change(round.faults[index], false);
        }
        for (; nextDeed < round.deeds.size(); ++nextDeed)
            perform(round.deeds[nextDeed]);
        if (!hasOtherCaps)
            changeFormats(round.otherCaps);
        pause(kLooksForDevices * options_.patience);
        awaitFrames(round.isShownAgain);
        screen_.takePhotos(1);
        pause(round.quiet);
        if (const std::string status = screen_.status(); status != "live, published live")
            witness_.find("the camera should be live, but is " + status);
    }

    void change(const Fault& fault, bool stands) {
        witness_.note((stands ? "begins: " : "ends: ") + fault.lines.back());
        if (stands)
            ++counts_[std::string(fault.name)];
        for (const std::string& line : fault.lines)
            stands ? camera_.set(line) : camera_.unset(line);
    }

    void changeFormats(const std::vector<std::string>& caps) {
        witness_.note("other formats: " + caps.back());
        ++counts_["other formats"];
        for (const std::string& line : caps)
            camera_.set(line);
        for (const std::string& line : std::exchange(caps_, caps)) {
            if (std::ranges::find(caps, line) == caps.end())
                camera_.unset(line);
        }
    }

    void perform(const Deed& deed) {
        switch (deed.kind) {
        case Deed::Kind::photos:
            return screen_.takePhotos(deed.number);
        case Deed::Kind::hide:
            return screen_.hide();
        case Deed::Kind::show:
            return screen_.show();
        case Deed::Kind::release:
            return screen_.release();
        case Deed::Kind::open:
            return screen_.open();
        case Deed::Kind::suspend:
            witness_.note("suspension");
            ++counts_["suspension"];
            return stopFor_(deed.number);
        }
    }

    void awaitFrames(bool isShownAgain) {
        screen_.open();
        // A camera that has never worked is not tried again by itself, nor one whose first frame
        // came when its start had just been given up.
        const bool isAlone = !isShownAgain && screen_.frames() > 0 &&
                             !screen_.status().starts_with(keyOf(CameraState::failed));
        witness_.note(isAlone ? "trouble is over, left to itself" : "trouble is over");
        const Seconds limit = kFramesLimit + (isAlone ? kLongestPause : 0.0);
        if (const auto took = framesWithin(limit, isAlone))
            return totals_.toFrames.add(*took, isAlone ? "left to itself" : "shown again");
        witness_.find("no frames in time; the camera is " + screen_.status());
        if (framesWithin(4 * kFramesLimit, false))
            return witness_.note("frames after it was shown again");
        witness_.find("nor after it was shown again; the camera is " + screen_.status());
        screen_.release();
        screen_.open();
    }

    // Nothing where none came. Where a slow build has longer, the screen is shown several times.
    std::optional<Seconds> framesWithin(Seconds limit, bool isAlone) {
        const Seconds begin = clock_.now();
        const int before = screen_.frames();
        for (int attempt = 0; attempt < options_.patience; ++attempt) {
            if (!isAlone)
                screen_.show();
            while (clock_.now() - begin < limit * (attempt + 1)) {
                if (screen_.frames() >= before + kFramesAwaited)
                    return clock_.now() - begin;
                look();
            }
        }
        return std::nullopt;
    }

    void pause(Seconds seconds) {
        const Seconds end = clock_.now() + seconds;
        while (clock_.now() < end)
            look();
    }

    void look() {
        screen_.look();
        std::this_thread::sleep_for(2ms);
    }

    // goal: what was held before; it is waited for.
    Holding settle(const Holding* goal) {
        screen_.releaseAndWait();
        if (!camera_.waitUntilClosed())
            witness_.find("the camera stays open");
        const Seconds end = clock_.now() + (goal ? kThreadsEnd * options_.patience : 1.0);
        const auto isMore = [&] {
            return !goal || test::threadCount() > goal->threads ||
                   test::descriptorCount() > goal->descriptors;
        };
        while (clock_.now() < end && isMore())
            std::this_thread::sleep_for(20ms);
        ::malloc_trim(0);
        return {.kilobytes = test::residentKilobytes(),
                .threads = test::threadCount(),
                .descriptors = test::descriptorCount()};
    }

    void compare(const Holding& before, const Holding& after) {
        const long growth = after.kilobytes - before.kilobytes;
        if (kMemoryTells && growth > kGrowthLimit)
            witness_.find("memory grew by " + std::to_string(growth) + " KiB");
        if (after.threads > before.threads)
            witness_.find(std::to_string(after.threads - before.threads) + " threads are left");
        if (after.descriptors > before.descriptors)
            witness_.find(std::to_string(after.descriptors - before.descriptors) +
                          " descriptors are left");
        std::string faults;
        for (const auto& [name, count] : counts_)
            faults += (faults.empty() ? "" : ", ") + name + ' ' + std::to_string(count);
        std::printf("seed %u: %d rounds, %d managers; faults: %s; photos: %d taken, %d failed, %d "
                    "asked for; longest: to frames %s, photo %s, call %s, gap of the main queue "
                    "%s, release %s; grew by %ld KiB, %d threads, %d descriptors; %d findings\n",
                    options_.seed, rounds_, totals_.managers.load(), faults.c_str(),
                    totals_.photosTaken.load(), totals_.photosFailed.load(),
                    totals_.photosAsked.load(), totals_.toFrames.text().c_str(),
                    totals_.toPhoto.text().c_str(), totals_.call.text().c_str(),
                    totals_.gap.text().c_str(), totals_.release.text().c_str(), growth,
                    after.threads - before.threads, after.descriptors - before.descriptors,
                    witness_.findings());
    }

    const RunOptions& options_;
    const std::function<void(int)>& stopFor_;
    std::mt19937 random_;
    const AwakeClock clock_;
    Witness witness_{clock_, options_.seed};
    Totals totals_;
    std::map<std::string, int> counts_;
    int rounds_ = 0;
    std::vector<std::string> caps_ = firstCaps();
    test::TestCamera camera_{"device Chaos Camera\nexclusive\n"};
    Screen screen_{servicesFor(totals_), clock_, witness_, totals_, options_.patience};
};

}  // namespace

int run(const RunOptions& options, const std::function<void(int)>& stopFor) {
    Run chaos(options, stopFor);
    return chaos();
}

}  // namespace kestrelid::chaos
