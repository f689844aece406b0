#include "OwnCamera.h"

#include <fstream>
#include <future>
#include <iostream>
#include <iterator>
#include <kestrelid/ImageFile.h>

using namespace kestrelid;

namespace {

// Frames are BGRA8; pictures of files are RGB8 or Gray8.
Bitmap asFrame(const Bitmap& picture) {
    const int bytes = bytesPerPixel(picture.format());
    const auto size = static_cast<std::size_t>(picture.width()) * picture.height() * 4;
    const std::shared_ptr<std::byte[]> pixels(new std::byte[size]);
    std::byte* target = pixels.get();
    for (int y = 0; y < picture.height(); ++y)
        for (int x = 0; x < picture.width(); ++x, target += 4) {
            const std::byte* const source = picture.row(y) + x * bytes;
            target[0] = source[bytes - 1];  // blue
            target[1] = source[bytes / 2];
            target[2] = source[0];
            target[3] = std::byte{255};
        }
    return *Bitmap::wrap(picture.width(), picture.height(), picture.width() * 4, PixelFormat::bgra8,
                         pixels, size);
}

std::vector<std::byte> bytesOf(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    const std::string bytes{std::istreambuf_iterator<char>(file), {}};
    const auto* const begin = reinterpret_cast<const std::byte*>(bytes.data());
    return {begin, begin + bytes.size()};
}

}  // namespace

// own-camera PICTURE: the picture stands for a camera of your own. Waits until a passport is in
// view and takes a photo.
int main(int count, char** arguments) {
    if (count != 2)
        return std::cerr << "usage: own-camera PICTURE\n", 2;
    const auto picture = readImage(arguments[1]);
    if (const auto* error = std::get_if<ImageError>(&picture))
        return std::cerr << arguments[1] << ": " << error->cause << '\n', 1;
    const Bitmap frame = asFrame(*std::get<Image>(picture).bitmap());

    const auto device = std::make_shared<OwnDevice>();
    device->frame = [frame] { return frame; };
    device->takePhoto = [path = std::string(arguments[1])] { return bytesOf(path); };
    device->photoDimensions = {.width = frame.width(), .height = frame.height()};

    const auto mainQueue = makeSerialQueue("main");  // with screens: makeQtMainQueue()
    std::promise<std::optional<Image>> photo;
    std::shared_ptr<CameraManager> manager;
    std::vector<Subscription> changes;
    bool isAsked = false;
    mainQueue->async([&] {
        manager = CameraManager::create(
            {.authorization = std::make_shared<AlwaysAllowed>(),
             .capture = std::make_shared<OwnPlatform>(device),
             .detector = PassportDetector::create(defaultServices(), ValidationEffort::verdictOnly),
             .mainQueue = mainQueue,
             .makeSerialQueue = makeSerialQueue});
        manager->onPhotoCapture = [&](const auto& taken) { photo.set_value(taken); };
        const auto takeOnce = [&](bool) {
            const bool isTime =
                manager->isSessionReady().value() && manager->isDocumentDetected().value();
            if (isTime && !std::exchange(isAsked, true))
                manager->capturePhoto();
        };
        changes.push_back(manager->isSessionReady().didChange(takeOnce));
        changes.push_back(manager->isDocumentDetected().didChange(takeOnce));
        manager->checkAuthorization();
    });

    auto taken = photo.get_future();
    const bool isTaken = taken.wait_for(std::chrono::seconds(60)) == std::future_status::ready;
    std::promise<void> released;
    mainQueue->async([&] {
        changes.clear();
        manager.reset();
        released.set_value();
    });
    released.get_future().wait();
    if (!isTaken)
        return std::cout << "no passport came into view\n", 0;
    const auto image = taken.get();
    if (!image || !image->bitmap())
        return std::cerr << "the photo failed\n", 1;
    std::cout << "a passport; photo of " << image->bitmap()->width() << "x"
              << image->bitmap()->height() << '\n';
    return 0;
}
