// Draws known faults onto pictures of pages, and prints how often guidance tells each of them.
//
// usage: kestrelid_guidance [--only FAULT] [FOLDER...]
// Each folder has a manifest.tsv that names pictures and the corners of the page in them; without
// any: samples/. --only: the faults whose names hold that word.
#include "camera/PageLook.h"
#include "imagefile/JpegCodec.h"
#include "vision/ReducedPicture.h"

#include <kestrelid/DefaultServices.h>
#include <kestrelid/ImageFile.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <functional>
#include <iostream>
#include <map>
#include <opencv2/imgproc.hpp>
#include <sstream>
#include <string>
#include <vector>

namespace kestrelid {
namespace {

constexpr int kWidth = 1280;  // of a frame, in pixels
constexpr int kHeight = 720;
constexpr double kMostOfAFrame = 0.86;  // of its width and height, that a page takes in a good one

// A page cut out of its picture, and how much each pixel is of it.
struct Page {
    cv::Mat pixels;    // blue, green, red
    cv::Mat coverage;  // 0..255
    double area;       // pixels
};

// Where a page lies in the frame.
struct Place {
    double scale = 1.0;
    double x = kWidth / 2.0;  // of its middle
    double y = kHeight / 2.0;
};

// Pages, and desks without any.
struct Material {
    std::vector<Page> pages;
    std::vector<cv::Mat> desks;
};

std::vector<std::string> split(const std::string& text, char separator) {
    std::vector<std::string> parts;
    std::istringstream stream(text);
    for (std::string part; std::getline(stream, part, separator);)
        parts.push_back(part);
    return parts;
}

cv::Mat pictureAt(const std::filesystem::path& path) {
    const ImageResult read = readImage(path.string());
    const auto* image = std::get_if<Image>(&read);
    if (!image)
        throw std::runtime_error(path.string() + ": cannot be read");
    const Bitmap bitmap = image->upright().bitmap().value();
    return vision::inBgr(vision::viewOf(bitmap), bitmap.format());
}

Page cutOut(const cv::Mat& picture, const std::vector<cv::Point>& corners) {
    cv::Mat coverage(picture.size(), CV_8U, cv::Scalar(0));
    cv::fillConvexPoly(coverage, corners, cv::Scalar(255), cv::LINE_AA);
    const cv::Rect box = cv::boundingRect(corners) & cv::Rect({0, 0}, picture.size());
    return {picture(box).clone(), coverage(box).clone(), cv::contourArea(corners)};
}

// Those of the folder that are neither dark nor glaring, empty or covered by a hand.
void read(const std::filesystem::path& folder, Material& material) {
    std::ifstream manifest(folder / "manifest.tsv");
    std::string line;
    if (!std::getline(manifest, line))
        throw std::runtime_error((folder / "manifest.tsv").string() + ": cannot be read");
    const std::vector<std::string> names = split(line, '\t');
    while (std::getline(manifest, line)) {
        const std::vector<std::string> values = split(line, '\t');
        std::map<std::string, std::string> row;
        for (std::size_t index = 0; index < std::min(names.size(), values.size()); ++index)
            row[names[index]] = values[index];
        const auto shows = [&](const char* word) {
            return row["shows"].find(word) != std::string::npos;
        };
        if (shows("dim") || shows("glare") || shows("hand") || shows("blank"))
            continue;
        const cv::Mat picture = pictureAt(folder / row["file"]);
        std::vector<cv::Point> corners;
        for (const std::string& corner : split(row["quad_tl_tr_br_bl"], ';')) {
            const std::vector<std::string> at = split(corner, ',');
            if (at.size() == 2)
                corners.emplace_back(cvRound(std::stod(at[0])), cvRound(std::stod(at[1])));
        }
        if (corners.size() == 4) {
            material.pages.push_back(cutOut(picture, corners));
        } else {
            material.desks.emplace_back();
            cv::resize(picture, material.desks.back(), {kWidth, kHeight}, 0, 0, cv::INTER_AREA);
        }
    }
}

// Soft blotches of a colour, another one for each number.
cv::Mat paintedDesk(int number) {
    cv::RNG random(static_cast<std::uint64_t>(number) + 1);
    const double brightness = random.uniform(50.0, 190.0);
    const cv::Scalar colour(brightness * random.uniform(0.6, 1.0),
                            brightness * random.uniform(0.8, 1.0), brightness);
    cv::Mat blotches(9, 16, CV_32FC3);
    random.fill(blotches, cv::RNG::NORMAL, colour, cv::Scalar::all(12));
    cv::Mat desk;
    cv::resize(blotches, desk, {kWidth, kHeight}, 0, 0, cv::INTER_CUBIC);
    return desk;
}

// The frame before the sensor sees it: values beyond 255 are still told apart.
cv::Mat laid(const Page& page, const Place& place, const cv::Mat& desk) {
    const cv::Size size(std::max(1, cvRound(page.pixels.cols * place.scale)),
                        std::max(1, cvRound(page.pixels.rows * place.scale)));
    const int how = place.scale < 1.0 ? cv::INTER_AREA : cv::INTER_LINEAR;
    cv::Mat pixels;
    cv::Mat coverage;
    cv::resize(page.pixels, pixels, size, 0, 0, how);
    cv::resize(page.coverage, coverage, size, 0, 0, how);
    const cv::Point corner(cvRound(place.x - size.width / 2.0),
                           cvRound(place.y - size.height / 2.0));
    cv::Mat frame = desk.clone();
    const cv::Rect visible = cv::Rect(corner, size) & cv::Rect(0, 0, kWidth, kHeight);
    for (int y = visible.y; y < visible.br().y; ++y) {
        for (int x = visible.x; x < visible.br().x; ++x) {
            const float share =
                static_cast<float>(coverage.at<uchar>(y - corner.y, x - corner.x)) / 255.0f;
            const cv::Vec3b& over = pixels.at<cv::Vec3b>(y - corner.y, x - corner.x);
            cv::Vec3f& under = frame.at<cv::Vec3f>(y, x);
            for (int channel = 0; channel < 3; ++channel)
                under[channel] += share * (static_cast<float>(over[channel]) - under[channel]);
        }
    }
    return frame;
}

// What the sensor makes of it.
struct Sensor {
    double gain = 1.0;
    double noise = 2.0;         // deviation in grey values
    bool isVideoRange = false;  // white ends at 235, black at 16
    int frame = 0;              // each has noise of its own
    int quality = 0;            // of the JPEG that the camera sends; 0: raw pixels
};

Bitmap bitmapOf(const cv::Mat& bytes) {
    const std::size_t size = bytes.total() * bytes.elemSize();
    const std::shared_ptr<std::byte[]> pixels(new std::byte[size]);
    std::memcpy(pixels.get(), bytes.data, size);
    return *Bitmap::wrap(bytes.cols, bytes.rows, static_cast<std::ptrdiff_t>(bytes.step),
                         PixelFormat::bgr8, pixels, size);
}

cv::Mat seen(const cv::Mat& frame, const Sensor& sensor) {
    cv::Mat noise(frame.size(), CV_32FC3);
    cv::RNG random(4711 + static_cast<std::uint64_t>(sensor.frame));
    random.fill(noise, cv::RNG::NORMAL, 0.0, sensor.noise);
    cv::Mat bytes;
    cv::Mat(frame * sensor.gain + noise).convertTo(bytes, CV_8UC3);
    if (sensor.isVideoRange)
        bytes.convertTo(bytes, CV_8UC3, 219.0 / 255.0, 16.0);
    if (sensor.quality == 0)
        return bytes;
    const ImageResult decoded =
        decodeImage(imagefile::encodeJpeg(bitmapOf(bytes), sensor.quality).value());
    const Bitmap bitmap = std::get<Image>(decoded).bitmap().value();
    return vision::inBgr(vision::viewOf(bitmap), bitmap.format());
}

Place wellPlaced(const Page& page) {
    return {.scale = std::min({1.0, kMostOfAFrame * kWidth / page.pixels.cols,
                               kMostOfAFrame * kHeight / page.pixels.rows})};
}

Place withShare(const Page& page, double share) {
    return {.scale = std::sqrt(share * kWidth * kHeight / page.area)};
}

// So that a share of the page lies beyond an edge: 0 left, 1 right, 2 top, 3 bottom.
Place beyond(const Page& page, double share, int edge) {
    Place place = wellPlaced(page);
    const double wide = page.pixels.cols * place.scale;
    const double high = page.pixels.rows * place.scale;
    if (edge < 2)
        place.x = edge == 0 ? wide * (0.5 - share) : kWidth - wide * (0.5 - share);
    else
        place.y = edge == 2 ? high * (0.5 - share) : kHeight - high * (0.5 - share);
    return place;
}

cv::Mat moved(const cv::Mat& frame, int length, double degrees) {
    cv::Mat kernel(length, length, CV_32F, cv::Scalar(0));
    const double middle = (length - 1) / 2.0;
    const double radians = degrees * CV_PI / 180.0;
    const cv::Point2d reach(middle * std::cos(radians), middle * std::sin(radians));
    cv::line(kernel, cv::Point2d(middle - reach.x, middle - reach.y),
             cv::Point2d(middle + reach.x, middle + reach.y), cv::Scalar(1));
    cv::Mat blurred;
    cv::filter2D(frame, blurred, -1, kernel / cv::sum(kernel)[0]);
    return blurred;
}

cv::Mat blurred(const cv::Mat& frame, double deviation) {
    cv::Mat result;
    cv::GaussianBlur(frame, result, {0, 0}, deviation);
    return result;
}

// A reflection with soft edges, whose core of that share of the page is blown out.
void addGlare(cv::Mat& frame, const Page& page, const Place& place, double share) {
    constexpr double kStrength = 500.0;  // grey values at its middle: 2.5 times what white takes
    const double area = share * page.area * place.scale * place.scale;
    // The light falls to 100 beyond the paper's 155 at this part of its reach.
    const double coreOfReach = std::sqrt(std::log(kStrength / 100.0));
    const double high = std::sqrt(area / (CV_PI * 1.6)) / coreOfReach;
    const double wide = 1.6 * high;
    for (int y = 0; y < kHeight; ++y) {
        for (int x = 0; x < kWidth; ++x) {
            const double along = (x - place.x - 0.15 * wide) / wide;
            const double across = (y - place.y) / high;
            const auto light =
                static_cast<float>(kStrength * std::exp(-along * along - across * across));
            frame.at<cv::Vec3f>(y, x) += cv::Vec3f::all(light);
        }
    }
}

using Frames = std::vector<cv::Mat>;

struct Case {
    std::string fault;
    std::string level;
    Advice expected;
    double PageLook::*measure;  // what tells it; null: the outline alone
    std::function<Frames(const Page& page, const cv::Mat& desk)>
        frames;  // a fifth of a second apart
};

std::string number(double value) {
    std::array<char, 32> text{};
    std::snprintf(text.data(), text.size(), "%g", value);
    return text.data();
}

std::vector<Case> allCases() {
    std::vector<Case> cases;
    const auto add = [&](std::string fault, std::string level, Advice expected,
                         double PageLook::*measure, auto draw) {
        cases.push_back(
            {std::move(fault), std::move(level), expected, measure,
             [draw](const Page& page, const cv::Mat& desk) { return Frames{draw(page, desk)}; }});
    };
    const auto good = [](const Page& page, const cv::Mat& desk) {
        return laid(page, wellPlaced(page), desk);
    };
    const auto withSensor = [&](const std::string& level, const Sensor& sensor) {
        for (const auto& measure : {&PageLook::sharpness, &PageLook::glare})
            add("none", level, Advice::none, measure, [=](const Page& page, const cv::Mat& desk) {
                return seen(good(page, desk), sensor);
            });
    };
    withSensor("as photographed", {});
    withSensor("noise of 6", {.noise = 6.0});
    withSensor("gain 0.6", {.gain = 0.6, .noise = 3.0});
    withSensor("gain 1.3, partly white", {.gain = 1.3});
    withSensor("gain 1.8, mostly white", {.gain = 1.8});
    withSensor("motion JPEG", {.quality = 75});
    withSensor("motion JPEG, gain 1.3", {.gain = 1.3, .quality = 75});
    withSensor("video range", {.isVideoRange = true});
    withSensor("video range, gain 1.3", {.gain = 1.3, .isVideoRange = true});

    for (const double noise : {2.0, 1.0, 0.5, 0.0})
        add("none", "white label on 3% of the page, noise of " + number(noise), Advice::none,
            &PageLook::glare, [=](const Page& page, const cv::Mat& desk) {
                cv::Mat frame = good(page, desk);
                const double side = std::sqrt(0.03 * page.area) * wellPlaced(page).scale;
                cv::rectangle(frame, {cvRound(kWidth / 2.0 - side / 2), kHeight / 2},
                              {cvRound(kWidth / 2.0 + side / 2), cvRound(kHeight / 2.0 + side)},
                              cv::Scalar::all(245), cv::FILLED);
                return seen(frame, {.noise = noise});
            });
    for (const double share : {0.22, 0.25})
        add("page far away", "share of " + number(share), Advice::none, &PageLook::sharpness,
            [=](const Page& page, const cv::Mat& desk) {
                return seen(laid(page, withShare(page, share), desk), {});
            });
    for (const double share : {0.15, 0.1, 0.05, 0.03})
        add("page far away", "share of " + number(share), Advice::moveCloser, nullptr,
            [=](const Page& page, const cv::Mat& desk) {
                return seen(laid(page, withShare(page, share), desk), {});
            });
    for (const double gain : {0.4, 0.3, 0.2, 0.12, 0.06})
        add("dark", "gain " + number(gain), Advice::tooDark, &PageLook::brightness,
            [=](const Page& page, const cv::Mat& desk) {
                return seen(good(page, desk), {.gain = gain, .noise = 4.0});
            });
    for (const double deviation : {0.7, 1.0, 1.5, 2.0, 3.0, 5.0})
        for (const double noise : {2.0, 6.0})
            add("out of focus", number(deviation) + " pixels, noise of " + number(noise),
                Advice::holdStill, &PageLook::sharpness,
                [=](const Page& page, const cv::Mat& desk) {
                    return seen(blurred(good(page, desk), deviation), {.noise = noise});
                });
    const std::pair<const char*, double> directions[] = {
        {"across", 0.0}, {"down", 90.0}, {"aslant", 35.0}};
    for (const auto& [direction, degrees] : directions)
        for (const int length : {3, 5, 9, 15, 25})
            add(std::string("moved ") + direction, std::to_string(length) + " pixels",
                Advice::holdStill, &PageLook::sharpness,
                [=, angle = degrees](const Page& page, const cv::Mat& desk) {
                    return seen(moved(good(page, desk), length, angle), {});
                });
    const std::pair<const char*, Sensor> sensors[] = {
        {"", {}}, {", video range", {.isVideoRange = true}}, {", motion JPEG", {.quality = 75}}};
    for (const auto& [kind, sensor] : sensors)
        for (const double share : {0.005, 0.01, 0.02, 0.05, 0.1, 0.2, 0.4})
            add(std::string("glare") + kind, number(100 * share) + "% of the page", Advice::glare,
                &PageLook::glare, [=, sensor = sensor](const Page& page, const cv::Mat& desk) {
                    cv::Mat frame = good(page, desk);
                    addGlare(frame, page, wellPlaced(page), share);
                    return seen(frame, sensor);
                });
    const char* const edges[] = {"left", "right", "top", "bottom"};
    for (int edge = 0; edge < 4; ++edge)
        for (const double share : {0.05, 0.2, 0.5})
            add(std::string("cut at the ") + edges[edge], number(100 * share) + "%",
                Advice::wholePage, nullptr, [=](const Page& page, const cv::Mat& desk) {
                    return seen(laid(page, beyond(page, share, edge), desk), {});
                });
    for (const double times : {1.1, 1.3, 1.8})
        add("too close", number(times) + " times the frame", Advice::moveBack, nullptr,
            [=](const Page& page, const cv::Mat& desk) {
                const Place place{.scale = times * std::max(1.0 * kWidth / page.pixels.cols,
                                                            1.0 * kHeight / page.pixels.rows)};
                return seen(laid(page, place, desk), {});
            });
    for (const int step : {0, 4, 8, 16, 32, 64})
        cases.push_back({"moving", std::to_string(5 * step) + " pixels a second",
                         step < 16 ? Advice::none : Advice::holdStill, nullptr,
                         [=](const Page& page, const cv::Mat& desk) {
                             Frames frames;
                             for (int time = -2; time < 2; ++time) {
                                 Place place = wellPlaced(page);
                                 place.x += time * step;
                                 frames.push_back(
                                     seen(laid(page, place, desk), {.frame = time + 2}));
                             }
                             return frames;
                         }});
    return cases;
}

// What is told in the end, without waiting until it may be told.
struct Told {
    Advice advice;
    PageLook last;
    double motion = 0.0;  // from one frame to the next, in the picture's diagonals a second
};

double wayBetween(const RectangleObservation& from, const RectangleObservation& to) {
    double farthest = 0.0;
    for (std::size_t corner = 0; corner < from.corners.size(); ++corner)
        farthest = std::max(farthest, std::hypot(to.corners[corner].x - from.corners[corner].x,
                                                 to.corners[corner].y - from.corners[corner].y));
    return farthest / std::sqrt(2.0);
}

Told toldOf(const Frames& frames, RectangleService& outlines) {
    constexpr int kLooks = 4;
    constexpr double kBetween = 0.2;  // seconds
    GuidanceLimits limits;
    limits.hold = {};
    PageTracker tracker(limits);
    Told told{};
    for (int look = 0; look < kLooks; ++look) {
        const PageLook before = told.last;
        if (look < static_cast<int>(frames.size()))
            told.last =
                camera::lookAtPage(bitmapOf(frames[static_cast<std::size_t>(look)]), outlines)
                    .value();
        tracker.see(told.last, PageTracker::Time(kBetween * look));
        if (look > 0 && before.outline && told.last.outline)
            told.motion =
                std::max(told.motion, wayBetween(*before.outline, *told.last.outline) / kBetween);
    }
    told.advice = tracker.live().advice;
    return told;
}

std::string percent(std::size_t part, std::size_t all) {
    return all == 0 ? "" : std::to_string(100 * part / all) + "%";
}

// Least, tenth percentile, median, ninetieth percentile and most.
std::string spread(std::vector<double> values) {
    if (values.empty())
        return "";
    std::ranges::sort(values);
    std::string text;
    for (const double share : {0.0, 0.1, 0.5, 0.9, 1.0}) {
        std::array<char, 32> part{};
        const double value =
            values[static_cast<std::size_t>(share * static_cast<double>(values.size() - 1))];
        std::snprintf(part.data(), part.size(), "%s%.3f", text.empty() ? "" : " ", value);
        text += part.data();
    }
    return text;
}

void printRow(const std::string& fault, const std::string& level, Advice expected,
              double PageLook::*measure, const std::vector<Told>& all) {
    std::map<std::string, std::size_t> others;
    std::size_t right = 0;
    std::size_t found = 0;
    std::vector<double> values;
    for (const Told& told : all) {
        right += told.advice == expected ? 1 : 0;
        found += told.last.outline ? 1 : 0;
        if (told.advice != expected)
            ++others[std::string(keyOf(told.advice))];
        if (fault == "moving")
            values.push_back(told.motion);
        else if (measure && told.last.outline)
            values.push_back(told.last.*measure);
    }
    std::string rest;
    for (const auto& [advice, count] : others)
        rest += (rest.empty() ? "" : ", ") + advice + " " + percent(count, all.size());
    const char* name = fault == "moving"                  ? "motion "
                       : measure == &PageLook::brightness ? "brightness "
                       : measure == &PageLook::glare      ? "glare "
                       : measure == &PageLook::sharpness  ? "sharpness "
                                                          : "";
    std::cout << "| " << fault << " | " << level << " | " << percent(found, all.size()) << " | "
              << keyOf(expected) << " " << percent(right, all.size()) << " | " << rest << " | "
              << name << spread(values) << " |" << std::endl;
}

void run(const std::vector<std::filesystem::path>& folders, const std::string& only) {
    cv::setNumThreads(1);
    Material material;
    for (const auto& folder : folders)
        read(folder, material);
    const PlatformServices services = defaultServices();
    std::cout << material.pages.size() << " pages, " << material.desks.size()
              << " desks without one\n\n"
                 "| Fault | How much | Page found | As it should be | Else | Measured: least, 10%, "
                 "50%, 90%, most |\n|---|---|---|---|---|---|\n";
    const auto isWanted = [&](const std::string& fault) {
        return fault.find(only) != std::string::npos;
    };
    for (const double gain : {1.0, 0.5, 0.2, 0.1}) {
        if (!isWanted("no page"))
            continue;
        std::vector<Told> all;
        for (const cv::Mat& desk : material.desks) {
            cv::Mat frame;
            desk.convertTo(frame, CV_32FC3);
            all.push_back(toldOf({seen(frame, {.gain = gain})}, *services.rectangles));
        }
        printRow("no page", "gain " + number(gain), gain > 0.3 ? Advice::noPage : Advice::tooDark,
                 nullptr, all);
    }
    for (const Case& row : allCases()) {
        if (!isWanted(row.fault + ' ' + row.level))
            continue;
        std::vector<Told> all;
        int index = 0;
        for (const Page& page : material.pages)
            all.push_back(toldOf(row.frames(page, paintedDesk(index++)), *services.rectangles));
        printRow(row.fault, row.level, row.expected, row.measure, all);
    }
}

}  // namespace
}  // namespace kestrelid

int main(int count, char** arguments) try {
    std::vector<std::string> words(arguments + 1, arguments + count);
    std::string only;
    if (words.size() >= 2 && words[0] == "--only") {
        only = words[1];
        words.erase(words.begin(), words.begin() + 2);
    }
    std::vector<std::filesystem::path> folders(words.begin(), words.end());
    if (folders.empty())
        folders.emplace_back(KESTRELID_SAMPLES_DIR);
    kestrelid::run(folders, only);
    return 0;
} catch (const std::exception& error) {
    std::cerr << "kestrelid_guidance: " << error.what() << '\n';
    return 1;
}
