#include "tests/faults/Scenarios.h"

#include "apps/cli/TextCommand.h"
#include "tests/faults/Faults.h"
#include "tests/support/FakeServices.h"
#include "tests/support/TemporaryFolder.h"

#include <kestrelid/DefaultCamera.h>
#include <kestrelid/ImageFile.h>
#include <kestrelid/kestrelid.h>
#include <kestrelid/MachineReadableZone.h>
#include <kestrelid/TextEvidence.h>

#include <chrono>
#include <condition_variable>
#include <deque>
#include <fstream>
#include <iterator>
#include <mutex>
#include <semaphore>
#include <string_view>
#include <utility>

namespace kestrelid::test {
namespace {

using namespace std::chrono_literals;

const std::filesystem::path kSource = KESTRELID_SOURCE_DIR;
const std::filesystem::path kPictures = kSource / "tests/imagefile/data";

// What call gives while requests may be refused. All else here is the test's own.
template <typename Call>
auto attempt(const Call& call) {
    const Attempt attempted;
    return call();
}

std::string bytesOf(const std::filesystem::path& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

// ---- Pictures

std::string answerOf(const Image& image) {
    const Bitmap& bitmap = *image.bitmap();
    const auto row = static_cast<std::size_t>(bitmap.width() * bytesPerPixel(bitmap.format()));
    auto sum = static_cast<std::size_t>(image.orientation());
    for (int y = 0; y < bitmap.height(); ++y) {
        const auto* bytes = reinterpret_cast<const char*>(bitmap.row(y));
        sum = sum * 31 + std::hash<std::string_view>()({bytes, row});
    }
    return "a picture of sum " + std::to_string(sum);
}

std::string read(const std::filesystem::path& path) {
    const ImageResult result = attempt([&] { return readImage(path); });
    const auto* error = std::get_if<ImageError>(&result);
    if (error && error->isOutOfMemory != error->cause.ends_with(" memory"))
        return "another kind than the cause: " + error->cause;
    return error ? "error: " + error->cause : answerOf(std::get<Image>(result));
}

std::string write(const char* name) {
    const TemporaryFolder folder;
    const auto image = std::get<Image>(readImage(kPictures / "turned.jpg"));
    const auto path = folder / name;
    const auto error = attempt([&] { return writeImage(path, image); });
    if (!error)
        return read(path);
    const bool isClean = std::filesystem::is_empty(folder.path());
    return isClean ? "error: " + error->cause : "a file is left behind";
}

std::string answerOf(KestrelidStatus status, KestrelidError* error, const std::string& good) {
    const std::string cause = kestrelid_error_text(error);
    kestrelid_error_free(error);
    if (!cause.empty() && (status == KESTRELID_OUT_OF_MEMORY) != cause.ends_with(" memory"))
        return "another status than the cause: " + cause;
    return status == KESTRELID_OK ? good : "error: " + std::to_string(status) + " " + cause;
}

std::string decodeForC(const std::string& file) {
    KestrelidImage* image = nullptr;
    KestrelidError* error = nullptr;
    const KestrelidStatus status =
        attempt([&] { return kestrelid_image_decode(file.data(), file.size(), &image, &error); });
    const std::string size = std::to_string(kestrelid_image_width(image)) + " x " +
                             std::to_string(kestrelid_image_height(image));
    kestrelid_image_release(image);
    return answerOf(status, error, size);
}

// ---- Text

std::string weighText() {
    const std::string text = "Passeport \u00c9tranger \u09aa\u09be\u09b8\u09aa\u09cb\u09b0\u09cd"
                             "\u099f\nSurname Given Names Nationality Date of Birth\n"
                             "P<UTOERIKSSON<<ANNA<MARIA<<<<<<<<<<<<<<<<<<<\n"
                             "L898902C36UTO7408122F1204159ZE184226B<<<<<10\n";
    try {
        const TextEvidence evidence = attempt([&] { return textEvidence(text); });
        return evidence.cleaned + "; " + evidence.keywordReason + "; " + evidence.mrzLike.reason;
    } catch (const std::bad_alloc&) {
        return "error: std::bad_alloc";
    }
}

// Without memory there is no zone; the library still works then, as the next run shows.
std::string parseText() {
    const auto zones = attempt([&] {
        return parseZones("P<UTOERIKSSON<<ANNA<MARIA<<<<<<<<<<<<<<<<<<<\n"
                          "L898902C36UTO7408122F1204159ZE184226B<<<<<10\n",
                          {.asOf = CalendarDay{2026, 11, 22}});
    });
    return zones.empty() ? "error: no zone" : zones[0].isTrustworthy() ? "a zone" : "not strict";
}

// As main() of the program does.
std::string textCommand(bool json) {
    const cli::TextOptions options{.files = {kSource / "README.md"}, .json = json};
    try {
        return attempt([&] { return cli::text(options); }) == cli::ExitStatus::done
                   ? "done"
                   : "error: an exit status";
    } catch (const std::exception& error) {
        return std::string("error: ") + error.what();
    }
}

// ---- Verdicts

// What a host gets of a call: lines on its console, and a verdict.
struct Host {
    std::mutex mutex;
    std::string lines;
    std::string verdict;
    int completions = 0;
    std::binary_semaphore isDone{0};

    void print(std::string_view line) {
        const Calm calm;
        const std::lock_guard lock(mutex);
        lines.append("; ").append(line);
    }
    [[nodiscard]] std::string answer() const {
        return lines.empty() ? verdict : "error: " + verdict + lines;
    }
};

std::string validate(const std::function<PlatformServices()>& services, const Image& image) {
    const auto host = std::make_shared<Host>();
    PassportDetector::Completion completion = [host](const PassportValidationResult& result) {
        const Calm calm;
        host->verdict = std::to_string(result.confidence());
        for (const std::string& reason : result.reasons())
            host->verdict += " " + reason;
        host->isDone.release();
    };
    std::function<void(std::string_view)> console = [host](auto line) { host->print(line); };
    attempt([&] {
        PlatformServices given = services();
        given.console = std::move(console);
        const auto detector = PassportDetector::create(std::move(given));
        if (!detector)
            return host->print("no detector");
        detector->validate(image, std::move(completion));
        host->isDone.acquire();
    });
    return host->answer();
}

// A recogniser of the host's own on the machine's queue.
PlatformServices ownRecogniser() {
    PlatformServices services;
    {
        const Calm calm;
        services.rectangles = std::make_shared<FakeRectangles>(std::vector{rectangleOf(0.8, 0.7)});
        services.text = std::make_shared<FakeText>(
            std::vector<std::string>{"Passport", "Surname", "Nationality"});
    }
    services.queue = defaultServices().queue;
    return services;
}

std::string create() {
    return attempt([] { return PassportDetector::create() != nullptr; }) ? "one" : "error: none";
}

// Once waiting for the verdict and once not. There are no models: text gives a line on the console.
std::string validateForC() {
    Host host;
    KestrelidDetectorOptions options{};
    options.struct_size = sizeof options;
    options.resources = "/nowhere";
    options.console = [](void* user, const char* line, std::size_t) {
        static_cast<Host*>(user)->print(line);
    };
    options.console_user = &host;
    KestrelidPixels pixels{};
    const std::string bytes(60 * 40, 'x');
    pixels = {sizeof pixels, bytes.data(), bytes.size(), 60, 60, 40, KESTRELID_GRAY8};
    KestrelidImage* image = nullptr;
    KestrelidDetector* detector = nullptr;
    KestrelidResult* result = nullptr;
    KestrelidError* error = nullptr;
    const KestrelidStatus status = attempt([&] {
        KestrelidStatus last = kestrelid_image_from_pixels(&pixels, &image, &error);
        if (last == KESTRELID_OK)
            last = kestrelid_detector_create(&options, &detector, &error);
        if (last == KESTRELID_OK)
            last = kestrelid_detector_validate_wait(detector, image, &result, &error);
        if (last == KESTRELID_OK) {
            last = kestrelid_detector_validate(
                detector, image,
                [](void* user, const KestrelidResult*) { ++static_cast<Host*>(user)->completions; },
                &host, [](void* user) { static_cast<Host*>(user)->isDone.release(); }, &error);
            host.isDone.acquire();
        }
        kestrelid_detector_release(detector);
        kestrelid_image_release(image);
        return last;
    });
    if (result)
        host.verdict = kestrelid_result_reason_count(result) > 0
                           ? kestrelid_result_reason(result, 0, nullptr)
                           : "nothing";
    kestrelid_result_release(result);
    if (host.completions != (status == KESTRELID_OK))
        host.print("no completion");
    return answerOf(status, error, host.answer());
}

// ---- Cameras

// A host's main queue without its delays, whose blocks the test runs.
class HostQueue final : public DispatchQueue {
public:
    void async(Block block) override { asyncAfter({}, std::move(block)); }
    void asyncAfter(std::chrono::duration<double>, Block block) override {
        const Calm calm;
        const std::lock_guard lock(mutex_);
        blocks_.push_back(std::move(block));
        changed_.notify_all();
    }

    // False if it does not become true.
    template <typename Condition>
    bool runUntil(const Condition& isTrue) {
        const auto limit = std::chrono::steady_clock::now() + 15s;
        std::unique_lock lock(mutex_);
        while (!isTrue() && std::chrono::steady_clock::now() < limit) {
            if (blocks_.empty()) {
                changed_.wait_for(lock, 20ms);
                continue;
            }
            Block block = std::move(blocks_.front());
            blocks_.pop_front();
            lock.unlock();
            block();
            block = nullptr;  // may hold the last of a manager
            lock.lock();
        }
        return isTrue();
    }

private:
    std::mutex mutex_;
    std::condition_variable changed_;
    std::deque<Block> blocks_;
};

// From the permission to the first verdict and a photo.
std::string camera(const std::string& file) {
    const auto queue = std::make_shared<HostQueue>();
    CameraOptions options;
    options.camera = file;
    std::string answer = "error: no manager";
    std::optional<bool> isReady;
    bool isJudged = false;
    int photos = 0;
    std::vector<Subscription> subscriptions;
    attempt([&] {
        auto manager =
            CameraManager::create(defaultCameraServices(queue, options, ownRecogniser()));
        if (!manager)
            return;
        {
            const Calm calm;
            subscriptions = {
                manager->isSessionReady().didChange([&](bool now) { isReady = now; }),
                manager->detectionConfidence().didChange([&](float) { isJudged = true; })};
            manager->onPhotoCapture = [&](const std::optional<Image>& photo) {
                const Calm ours;
                answer = photo ? answerOf(*photo) : "error: no photo";
                ++photos;
            };
        }
        manager->checkAuthorization();
        const bool isSettled = queue->runUntil([&] {
            const bool runs = isReady.value_or(true) && manager->session()->isRunning();
            return isReady && (isJudged || !runs);
        });
        manager->capturePhoto();
        const bool isAnswered = queue->runUntil([&] { return photos > 0; });
        const std::weak_ptr<CameraManager> released = std::exchange(manager, nullptr);
        if (!isSettled || !isAnswered || !queue->runUntil([&] { return released.expired(); }) ||
            photos != 1)
            std::abort();  // neither judges nor fails, or owes a photo, or gives two, or stays
    });
    return answer;
}

}  // namespace

std::vector<Scenario> scenarios() {
    std::vector<Scenario> all = {
        {"create", create},
        {"validate",
         [image = Image(blankBitmap(60, 40))] { return validate(ownRecogniser, image); }},
        {"c.validate", validateForC},
        {"camera", [] { return camera(kPictures / "201x134.jpg"); }},
        {"picture",
         [image = std::get<Image>(readImage(kSource / "samples/utopia-scan.jpg", {400}))] {
             return validate([] { return defaultServices(); }, image);
         }},
        {"text", weighText},
        {"text.command", [] { return textCommand(false); }},
        {"text.json", [] { return textCommand(true); }},
        {"zone", parseText},
        {"write.jpg", [] { return write("a.jpg"); }},
        {"write.png", [] { return write("a.png"); }},
    };
    for (const std::string name :
         {"turned.jpg", "progressive.jpg", "ink.jpg", "turned.png", "clear16-interlaced.png",
          "palette-transparent.png", "turned.webp", "lossless-transparent.webp", "animated.webp",
          "turned.tif", "jpeg.tif", "deflate-planes.tif", "lzw16-big-endian.tif", "tiles.tif",
          "turned.heic", "transparent.heic"}) {
        all.push_back({"read." + name, [path = kPictures / name] { return read(path); }});
        all.push_back(
            {"c.decode." + name, [file = bytesOf(kPictures / name)] { return decodeForC(file); }});
    }
    return all;
}

}  // namespace kestrelid::test
