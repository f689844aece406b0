#include "apps/cli/WatchLog.h"

#include "apps/cli/JsonLine.h"
#include "apps/cli/TerminalText.h"
#include "apps/cli/ZoneReport.h"

#include <chrono>
#include <cstdio>
#include <ctime>
#include <span>

namespace kestrelid::cli {
namespace {

using Json = nlohmann::ordered_json;

// 2026-11-21T09:30:00.125+01:00
std::string localTime(WallTime time) {
    const auto milliseconds =
        std::chrono::floor<std::chrono::milliseconds>(time).time_since_epoch();
    const auto seconds = std::chrono::floor<std::chrono::seconds>(milliseconds);
    const std::time_t whole = seconds.count();
    std::tm local{};
    if (localtime_r(&whole, &local) == nullptr)
        return "-";
    char date[32];
    char zone[8];  // +0100
    std::strftime(date, sizeof date, "%Y-%m-%dT%H:%M:%S", &local);
    std::strftime(zone, sizeof zone, "%z", &local);
    char text[64];
    std::snprintf(text, sizeof text, "%s.%03d%.3s:%s", date,
                  static_cast<int>((milliseconds - seconds).count()), zone, zone + 3);
    return text;
}

struct TextLine {
    std::string operator()(const AuthorizationKnown& event) const {
        return event.authorized ? "authorized  yes" : "";
    }
    std::string operator()(const SessionKnown& event) const {
        return event.ready ? "session     " + terminalText(event.camera.value_or("")) + " is ready"
                           : "";
    }
    std::string operator()(const FrameJudged& event) const {
        // Three decimals: with two, 0.499 would look like the 0.5 that makes a passport.
        char text[64];
        std::snprintf(text, sizeof text, "verdict     %s, confidence %.3f",
                      event.isPassport ? "passport" : "not a passport", event.confidence);
        return text;
    }
    std::string operator()(const DocumentChanged& event) const {
        return event.detected ? "document    in view" : "document    gone";
    }
    std::string operator()(const ZoneChanged& event) const {
        if (!event.live.zone)
            return "zone        gone";
        const MachineReadableZone& zone = *event.live.zone;
        std::string text = "zone        " + std::string(nameOf(zone.format));
        if (event.live.isStrict())
            return text + ", strict\n" + zoneTable(zone);
        text += zone.isTrustworthy() ? ", one frame"
                                     : ", not strict: " + describe(zone.problems.front());
        return text;
    }
    std::string operator()(const PhotoWritten& event) const {
        return "photo       " + terminalText(event.file) + ", " + std::to_string(event.width) +
               "x" + std::to_string(event.height);
    }
    std::string operator()(const WatchFailed&) const { return ""; }
};

struct JsonFields {
    Json operator()(const AuthorizationKnown& event) const {
        return {{"event", "authorized"}, {"authorized", event.authorized}};
    }
    Json operator()(const SessionKnown& event) const {
        return {{"event", "session"},
                {"ready", event.ready},
                {"camera", event.camera ? Json(*event.camera) : Json()}};
    }
    Json operator()(const FrameJudged& event) const {
        return {{"event", "verdict"},
                {"isPassport", event.isPassport},
                {"confidence", event.confidence}};
    }
    Json operator()(const DocumentChanged& event) const {
        return {{"event", "document"}, {"detected", event.detected}};
    }
    Json operator()(const ZoneChanged& event) const {
        Json object{{"event", "zone"},
                    {"frames", event.live.frames},
                    {"strict", event.live.isStrict()},
                    {"zone", Json()}};
        if (event.live.zone)
            object["zone"] = zonesAsJson(std::span(&*event.live.zone, 1)).front();
        return object;
    }
    Json operator()(const PhotoWritten& event) const {
        return {{"event", "photo"},
                {"file", event.file},
                {"width", event.width},
                {"height", event.height}};
    }
    Json operator()(const WatchFailed& event) const {
        return {{"event", "error"}, {"error", event.cause}};
    }
};

}  // namespace

std::string eventAsText(WallTime time, const WatchEvent& event) {
    const std::string line = std::visit(TextLine(), event);
    if (line.empty())
        return "";
    return localTime(time) + "  " + line + (line.ends_with('\n') ? "" : "\n");
}

std::string eventAsJson(WallTime time, const WatchEvent& event) {
    Json object{{"time", localTime(time)}};
    object.update(std::visit(JsonFields(), event));
    return jsonLine(object);
}

}  // namespace kestrelid::cli
