#include "c/Border.h"
#include "c/Handles.h"

#include <algorithm>
#include <chrono>
#include <cstddef>
#include <cstring>
#include <string>
#include <string_view>
#include <utility>
#include <variant>

namespace {

using kestrelid::c::Failure;
using kestrelid::c::guarded;
using kestrelid::c::require;

using Result = kestrelid::PassportValidationResult;

// The enumerators of both interfaces have the same values, so that they can be cast.
template <typename Enumerator>
constexpr bool same(int forC, Enumerator forCpp) {
    return forC == static_cast<int>(forCpp);
}
static_assert(same(KESTRELID_COMPLETE, kestrelid::ValidationEffort::complete) &&
              same(KESTRELID_VERDICT_ONLY, kestrelid::ValidationEffort::verdictOnly));

constexpr std::chrono::minutes kLongestWait{10};

void checkRange(int32_t value, int32_t last, const char* name) {
    if (value < 0 || value > last)
        throw Failure{KESTRELID_INVALID_ARGUMENT,
                      std::string(name) + " is out of range: 0 to " + std::to_string(last)};
}

// The caller's options in the form of this version.
KestrelidDetectorOptions known(const KestrelidDetectorOptions* given) {
    KestrelidDetectorOptions options{};
    if (!given)
        return options;
    kestrelid::c::checkStruct(given, given->struct_size,
                              offsetof(KestrelidDetectorOptions, console_user) +
                                  sizeof(options.console_user),
                              sizeof(options));
    std::memcpy(&options, given, std::min(given->struct_size, sizeof(options)));
    checkRange(options.effort, KESTRELID_VERDICT_ONLY, "effort");
    checkRange(options.text_threads, 64, "text_threads");
    return options;
}

kestrelid::PlatformServices ownServices(const KestrelidDetectorOptions& options) {
    kestrelid::DefaultServicesOptions wanted;
    if (options.resources)
        wanted.resources = options.resources;
    if (options.text_threads > 0)
        wanted.textThreads = options.text_threads;
    kestrelid::PlatformServices services = defaultServices(wanted);
    if (options.console)
        services.console = [console = options.console,
                            user = options.console_user](std::string_view line) {
            console(user, std::string(line).c_str(), line.size());
        };
    return services;
}

kestrelid::PlatformServices services(const KestrelidDetectorOptions& options) {
    if (!options.share)
        return ownServices(options);
    if (options.resources || options.text_threads || options.console)
        throw Failure{KESTRELID_INVALID_ARGUMENT,
                      "a detector that shares takes these options from the other one"};
    return options.share->services;
}

}  // namespace

KestrelidStatus kestrelid_detector_create(const KestrelidDetectorOptions* given,
                                          KestrelidDetector** detector, KestrelidError** error) {
    return guarded(error, [&] {
        require(detector, "detector");
        *detector = nullptr;
        const KestrelidDetectorOptions options = known(given);
        auto made = std::make_unique<KestrelidDetector>();
        made->services = services(options);
        made->detector = kestrelid::PassportDetector::create(
            made->services, static_cast<kestrelid::ValidationEffort>(options.effort));
        if (!made->detector)
            throw std::bad_alloc();
        *detector = made.release();
    });
}

void kestrelid_detector_release(KestrelidDetector* detector) {
    delete detector;
}

KestrelidStatus kestrelid_detector_validate(KestrelidDetector* detector,
                                            const KestrelidImage* image,
                                            KestrelidCompletion completion, void* user,
                                            void (*dispose)(void* user), KestrelidError** error) {
    return guarded(error, [&] {
        // Disposes if anything below throws, itself included.
        const std::shared_ptr<void> owner(user, [dispose](void* disposed) {
            if (dispose)
                dispose(disposed);
        });
        require(detector, "detector");
        detector->detector->validate(image ? image->image : kestrelid::Image(),
                                     [owner, completion](const Result& result) {
                                         const KestrelidResult handle{.own = {}, .shown = &result};
                                         if (completion)
                                             completion(owner.get(), &handle);
                                     });
    });
}

KestrelidStatus kestrelid_detector_validate_wait(KestrelidDetector* detector,
                                                 const KestrelidImage* image,
                                                 KestrelidResult** result, KestrelidError** error) {
    return guarded(error, [&] {
        require(result, "result");
        *result = nullptr;
        require(detector, "detector");
        kestrelid::Judgement judgement =
            detector->detector->judge(image ? image->image : kestrelid::Image(), kLongestWait);
        if (const auto* none = std::get_if<kestrelid::NoVerdict>(&judgement))
            throw Failure{KESTRELID_FAILED, std::string(none->cause)};
        *result = new KestrelidResult{.own = std::get<Result>(std::move(judgement))};
    });
}

KestrelidStatus kestrelid_detector_examine_wait(KestrelidDetector* detector,
                                                const KestrelidImage* image,
                                                const KestrelidDay* as_of, KestrelidResult** result,
                                                KestrelidZones** zones, KestrelidError** error) {
    return guarded(error, [&] {
        if (result)
            *result = nullptr;
        if (zones)
            *zones = nullptr;
        require(result, "result");
        require(zones, "zones");
        require(detector, "detector");
        kestrelid::ExaminationResult examined = detector->detector->examineNow(
            image ? image->image : kestrelid::Image(),
            {.zoneRules = kestrelid::c::zoneRules(as_of)}, kLongestWait);
        if (const auto* none = std::get_if<kestrelid::NoVerdict>(&examined))
            throw Failure{KESTRELID_FAILED, std::string(none->cause)};
        auto& examination = std::get<kestrelid::Examination>(examined);
        auto found = std::make_unique<KestrelidZones>(std::move(examination.zones));
        auto verdict = std::make_unique<KestrelidResult>();
        if (examination.chosenOutline) {
            verdict->outline.emplace();
            std::ranges::transform(examination.outlines[*examination.chosenOutline].corners,
                                   verdict->outline->begin(), kestrelid::c::pointForC);
        }
        for (const kestrelid::KeywordMatch& match : examination.matches)
            verdict->matches.push_back(
                {std::string(match.keyword), static_cast<std::int32_t>(match.distance)});
        verdict->own = std::move(examination.verdict);
        *result = verdict.release();
        *zones = found.release();
    });
}
