#include "vision/zone/ZoneSearch.h"

#include "vision/zone/LineCandidates.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <optional>
#include <span>
#include <utility>

namespace kestrelid::vision {
namespace {

constexpr std::size_t kLookedAt = 8;  // candidates; a page of print has many more
constexpr std::size_t kTries = 4;     // lines that a zone is built around, each way up
// Of a candidate's length over all layouts: 44, 36 or 30 characters are within what the network
// reads when they are taken for this many.
constexpr double kGlancedCharacters = 36.6;

constexpr std::size_t kGlanceMarks = 6;
constexpr float kGlanceProbability = 0.6f;
constexpr float kSureGlance = 0.97f;  // hardly anything but a zone is read as surely
constexpr float kLineProbability = 0.5f;
constexpr float kSureLine = 0.9f;
constexpr float kPoorLine = 0.8f;
constexpr float kSureZone = 0.95f;           // quality
constexpr float kStraight = 0.98f;           // hardly better when read again
constexpr float kWorthStraightening = 0.4f;  // below, it is no zone
constexpr std::size_t kLineMarks = 14;    // few enough for a name's line whose fillers are hidden
constexpr std::size_t kFirstMarks = 24;   // of the line that a zone is built around
constexpr double kCardCharacters = 33.0;  // longer lines are no card's of three lines

constexpr double kSameLine = 0.7;  // pitches between the middles of one line found twice

// Between the middles of a zone's neighbouring lines, in pitches: 2.5 as printed.
constexpr double kNearest = 1.15;
constexpr double kFarthest = 3.6;

// Where a neighbour is looked for, likeliest first.
const std::array<std::vector<double>, 2> kNeighbours{{{2.5}, {2.2, 2.8}}};

// Moves of the two ends, in pitches, for a line that was not met in its middle.
constexpr std::array<std::pair<double, double>, 4> kMoves{
    {{-0.18, -0.18}, {0.18, 0.18}, {-0.2, 0.2}, {0.2, -0.2}}};

Stretch moved(const Stretch& stretch, double atStart, double atEnd) {
    const cv::Point2d down = stretch.line.down() * stretch.pitch;
    Stretch result = stretch;
    result.line = {stretch.line.start + down * atStart, stretch.line.end + down * atEnd};
    return result;
}

bool isPlausible(const Stretch& stretch) {
    constexpr double kLeastPitch = 2.5;  // pixels of the view
    constexpr double kLeastCharacters = 10.0;
    return stretch.pitch > kLeastPitch && stretch.line.length() > kLeastCharacters * stretch.pitch;
}

// A zone's lines in the making.
class Search {
public:
    Search(const LineReader& reader, const PictureLevels& picture)
        : reader_(reader), picture_(picture) {}

    Expected<std::vector<FoundZone>> run() {
        const cv::Mat1b look = picture_.sample(reader_.view().toPicture, reader_.view().size);
        std::array<std::vector<Rated>, 2> ways;  // one way up, and the other
        candidates_ = lineCandidates(look);
        if (auto error = rate(ways))
            return *error;
        const auto best = [](const std::vector<Rated>& way) {
            return way.empty() ? 0.0f : way.front().probability;
        };
        if (best(ways[1]) > best(ways[0]))
            std::swap(ways[0], ways[1]);
        std::vector<FoundZone> found;
        for (const auto& stretches : ways) {
            if (auto error = readWay(stretches, found))
                return *error;
            if (!found.empty() && found.front().quality > kSureZone)
                break;
        }
        std::ranges::stable_sort(
            found, [](const FoundZone& a, const FoundZone& b) { return a.quality > b.quality; });
        return found;
    }

private:
    using Trouble = std::optional<Failure>;

    struct Rated {
        float probability = 0.0f;
        Stretch stretch;
    };

    // The longest candidates that look and read like a zone's lines, best first.
    Trouble rate(std::array<std::vector<Rated>, 2>& ways) const {
        std::vector<Stretch> stretches;
        const std::size_t count = std::min(candidates_.size(), kLookedAt);
        for (const Baseline& line : std::span(candidates_).first(count)) {
            const Stretch stretch{line, line.length() / kGlancedCharacters};
            if (!isPlausible(stretch) || !reader_.isEvenPrint(stretch))
                continue;
            stretches.push_back(stretch);
            stretches.push_back({line.reversed(), stretch.pitch});
        }
        const auto glances = reader_.glance(stretches);
        if (!glances)
            return Failure(glances.error());
        for (std::size_t index = 0; index < stretches.size(); ++index) {
            const LineScores& scores = (*glances)[index];
            if (scores.marks().size() >= kGlanceMarks &&
                scores.meanProbability() > kGlanceProbability)
                ways[index % 2].push_back({scores.meanProbability(), stretches[index]});
        }
        for (auto& way : ways)
            std::ranges::stable_sort(way, std::greater{}, &Rated::probability);
        return std::nullopt;
    }

    // The zones that stand that way up.
    Trouble readWay(const std::vector<Rated>& stretches, std::vector<FoundZone>& found) const {
        std::vector<SeenLine> known;  // every line read so far
        std::size_t tries = 0;
        for (const Rated& rated : stretches) {
            if (tries == kTries)
                break;
            if (std::ranges::any_of(known, [&](const SeenLine& line) {
                    return std::abs(line.stretch.distanceTo(rated.stretch.line)) < kSameLine;
                }))
                continue;
            // Once there is a zone, another one has to be as clear to be worth the time.
            if (!found.empty() && rated.probability < kSureGlance)
                break;
            ++tries;
            auto read = reader_.read({&rated.stretch, 1});
            if (!read)
                return Failure(read.error());
            auto line = refined(std::move(read->front()));
            if (!line)
                return Failure(line.error());
            known.push_back(*line);
            if (line->count() < kFirstMarks || line->scores.meanProbability() <= kLineProbability)
                continue;
            auto stack = stackAround(*std::move(line));
            if (!stack)
                return Failure(stack.error());
            known.insert(known.end(), stack->begin(), stack->end());
            if (auto error = addZone(*stack, found))
                return error;
        }
        return std::nullopt;
    }

    // Of the line and what is read at tries the one that seems most of a zone's line.
    Expected<SeenLine> bestOf(SeenLine line, std::span<const Stretch> tries) const {
        auto read = reader_.read(tries);
        if (!read)
            return Failure(read.error());
        for (SeenLine& other : *read) {
            if (other.weight() > line.weight())
                line = std::move(other);
        }
        return line;
    }

    // The line, read again where its characters were seen if it was read badly.
    Expected<SeenLine> refined(SeenLine line) const {
        const auto seen = line.seen();
        if (!seen || !isPlausible(*seen) || line.scores.meanProbability() > kSureLine)
            return line;
        std::vector<Stretch> tries{*seen};
        if (line.scores.meanProbability() < kPoorLine) {
            for (const auto& [atStart, atEnd] : kMoves)
                tries.push_back(moved(*seen, atStart, atEnd));
        }
        return bestOf(std::move(line), tries);
    }

    // How far from the stretch, above (side -1) or below (side 1), candidates lie that may be its
    // neighbours: in pitches.
    std::vector<double> neighboursOf(const Stretch& stretch, int side) const {
        std::vector<double> distances;
        for (const Baseline& candidate : candidates_) {
            const double distance = side * stretch.distanceTo(candidate);
            const auto isSame = [&](double known) { return std::abs(known - distance) < 0.2; };
            if (distance > kNearest && distance < kFarthest &&
                std::ranges::none_of(distances, isSame))
                distances.push_back(distance);
        }
        return distances;
    }

    // What stands above (side -1) or below (side 1) the line: where a candidate lies, as far as
    // another neighbour (pitches; 0: there is none), or else where neighbours usually stand.
    Expected<std::optional<SeenLine>> neighbour(const SeenLine& line, int side,
                                                double spacing) const {
        const Stretch stretch = line.seen().value_or(line.stretch);
        std::vector<std::vector<double>> rounds{neighboursOf(stretch, side)};
        if (spacing > 0.0)
            rounds.push_back({spacing});
        rounds.insert(rounds.end(), kNeighbours.begin(), kNeighbours.end());
        for (const std::vector<double>& distances : rounds) {
            std::vector<Stretch> tries;
            for (const double distance : distances)
                tries.push_back(moved(stretch, side * distance, side * distance));
            if (tries.empty())
                continue;
            auto read = reader_.read(tries);
            if (!read)
                return Failure(read.error());
            auto best = std::ranges::max_element(*read, {}, &SeenLine::weight);
            if (best->count() < kLineMarks || best->scores.meanProbability() < kLineProbability)
                continue;
            auto better = refined(std::move(*best));
            if (!better)
                return Failure(better.error());
            const double distance = side * stretch.distanceTo(better->stretch.line);
            if (distance > kNearest && distance < kFarthest)
                return std::optional(*std::move(better));
        }
        return std::optional<SeenLine>();
    }

    // The line with those above and below it, from the top.
    Expected<std::vector<SeenLine>> stackAround(SeenLine line) const {
        const auto seen = line.seen();
        const bool mayBeCard = !seen || seen->line.length() < kCardCharacters * seen->pitch;
        const std::size_t most = mayBeCard ? 3 : 2;
        std::vector<SeenLine> stack{std::move(line)};
        const bool isUpperLine = neighboursOf(stack.front().stretch, -1).empty() &&
                                 !neighboursOf(stack.front().stretch, 1).empty();
        for (const int side : {isUpperLine ? 1 : -1, isUpperLine ? -1 : 1}) {
            while (stack.size() < most) {
                const double spacing =
                    stack.size() < 2 ? 0.0 : stack[0].stretch.distanceTo(stack[1].stretch.line);
                auto next = neighbour(side > 0 ? stack.back() : stack.front(), side, spacing);
                if (!next)
                    return Failure(next.error());
                if (!*next)
                    break;
                stack.insert(side > 0 ? stack.end() : stack.begin(), **std::move(next));
            }
        }
        return stack;
    }

    // All lines over the stretch that any of them covers, with a pitch that fits all.
    Expected<std::vector<SeenLine>> levelled(const std::vector<SeenLine>& stack) const {
        double pitch = 0.0;
        std::vector<Stretch> seen;
        for (const SeenLine& line : stack) {
            seen.push_back(line.seen().value_or(line.stretch));
            pitch += seen.back().pitch / static_cast<double>(stack.size());
        }
        double nearest = kFarthest;
        for (std::size_t index = 1; index < stack.size(); ++index)
            nearest = std::min(nearest, std::abs(seen[index - 1].distanceTo(seen[index].line)));
        // In a squeezed picture the neighbours would come into view.
        constexpr double kSqueezed = 1.85;  // pitches
        const double tall = nearest < kSqueezed ? std::max(1.0, 0.8 * nearest) : ZoneNetwork::kTall;
        std::vector<Stretch> stretches;
        for (const Stretch& one : seen) {
            const cv::Point2d along = one.line.along();
            double first = 0.0;
            double last = one.line.length();
            for (const Stretch& other : seen) {
                first = std::min(first, (other.line.start - one.line.start).dot(along));
                last = std::max(last, (other.line.end - one.line.start).dot(along));
            }
            stretches.push_back(
                {{one.line.start + along * first, one.line.start + along * last}, pitch, tall});
        }
        return reader_.read(stretches);
    }

    struct Layout {
        std::size_t lines;
        std::size_t characters;
    };

    // Which layouts have lines of about that length.
    static std::vector<Layout> layoutsFor(std::size_t lines, double characters) {
        constexpr std::array<Layout, 4> kLayouts{{{3, 30}, {2, 44}, {2, 36}, {1, 30}}};
        constexpr double kOff = 3.0;  // characters; a hidden end or a stain beside the line
        std::vector<Layout> all;
        for (const Layout& layout : kLayouts) {
            // Any line of a card would do for a zone of one line.
            const bool isEnough = layout.lines == 1 ? lines == 1 : layout.lines <= lines;
            if (isEnough && std::abs(characters - static_cast<double>(layout.characters)) <= kOff)
                all.push_back(layout);
        }
        return all;
    }

    std::optional<FoundZone> zoneOf(std::span<const SeenLine> lines, std::size_t characters) const {
        FoundZone zone;
        zone.quality = 1.0f;
        for (const SeenLine& line : lines) {
            auto aligned = line.scores.align(characters);
            if (!aligned)
                return std::nullopt;
            zone.quality *= std::pow(aligned->quality, 1.0f / static_cast<float>(lines.size()));
            const double perCharacter = (aligned->frames.back() - aligned->frames.front()) /
                                        static_cast<double>(characters - 1);
            zone.reading.lines.push_back(
                {.characters = std::move(aligned->characters),
                 .corners = corners(line, aligned->frames.front() - perCharacter / 2.0,
                                    aligned->frames.back() + perCharacter / 2.0)});
        }
        const auto& corners = zone.reading.lines.front().corners;
        zone.reading.pixelsPerCharacter =
            std::hypot((corners[1].x - corners[0].x) * picture_.size().width,
                       (corners[1].y - corners[0].y) * picture_.size().height) /
            static_cast<double>(characters);
        return zone;
    }

    // The zone of lines that stand one below the other: the layout that fits best.
    std::optional<FoundZone> bestZone(const std::vector<SeenLine>& lines) const {
        double longest = 0.0;
        for (const SeenLine& line : lines) {
            if (const auto seen = line.seen())
                longest = std::max(longest, seen->line.length() / seen->pitch);
        }
        std::optional<FoundZone> best;
        for (const Layout& layout : layoutsFor(lines.size(), longest)) {
            for (std::size_t first = 0; first + layout.lines <= lines.size(); ++first) {
                auto zone =
                    zoneOf(std::span(lines).subspan(first, layout.lines), layout.characters);
                if (zone && (!best || zone->quality > best->quality))
                    best = std::move(zone);
            }
        }
        return best;
    }

    // A page that curls lifts an end of its lines: each is read again beside where it was seen.
    Trouble straighten(std::vector<SeenLine>& lines) const {
        for (SeenLine& line : lines) {
            std::vector<Stretch> tries;
            for (const auto& [atStart, atEnd] : kMoves)
                tries.push_back(moved(line.stretch, atStart, atEnd));
            auto best = bestOf(std::move(line), tries);
            if (!best)
                return Failure(best.error());
            line = *std::move(best);
        }
        return std::nullopt;
    }

    Trouble addZone(const std::vector<SeenLine>& stack, std::vector<FoundZone>& found) const {
        auto lines = levelled(stack);
        if (!lines)
            return Failure(lines.error());
        auto zone = bestZone(*lines);
        if (zone && zone->quality > kWorthStraightening && zone->quality < kStraight) {
            if (auto error = straighten(*lines))
                return error;
            auto again = bestZone(*lines);
            if (again && again->quality > zone->quality)
                zone = std::move(again);
        }
        if (zone)
            found.push_back(*std::move(zone));
        return std::nullopt;
    }

    std::array<NormalizedPoint, 4> corners(const SeenLine& line, double first, double last) const {
        constexpr double kHalfHeight = 0.8;  // pitches, of a character
        const cv::Point2d down = line.stretch.line.down() * (line.stretch.pitch * kHalfHeight);
        const cv::Point2d start = line.at(first);
        const cv::Point2d end = line.at(last);
        const auto inPicture = [&](const cv::Point2d& point) {
            const cv::Vec3d mapped = reader_.view().toPicture * cv::Vec3d(point.x, point.y, 1.0);
            return NormalizedPoint{(mapped[0] / mapped[2] + 0.5) / picture_.size().width,
                                   1.0 - (mapped[1] / mapped[2] + 0.5) / picture_.size().height};
        };
        return {inPicture(start - down), inPicture(end - down), inPicture(end + down),
                inPicture(start + down)};
    }

    const LineReader& reader_;
    const PictureLevels& picture_;
    std::vector<Baseline> candidates_;
};

}  // namespace

Expected<std::vector<FoundZone>> searchZones(const LineReader& reader,
                                             const PictureLevels& picture) {
    return Search(reader, picture).run();
}

}  // namespace kestrelid::vision
