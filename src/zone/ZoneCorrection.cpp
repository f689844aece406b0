#include "zone/ZoneCorrection.h"

#include "zone/CheckDigits.h"
#include "zone/Solutions.h"

#include <algorithm>
#include <cmath>

namespace kestrelid::zone {
namespace {

// A change less likely than 1 to 33 is not made: one in ten changes at random makes a digit pass,
// so that a digit alone does not carry more.
constexpr float kMaximumCost = 3.5f;  // nats, of all changes to one field

// The next change that fits must be 2.7 times less likely, or nobody knows which of both it is.
constexpr float kMargin = 1.0f;  // nats

// Characters that are covered together, and what they add to the digits.
struct Group {
    std::vector<ZonePlace> places;  // the field's own digit last, if it has one
    std::vector<int> own;           // weight of each place in the field's own digit; empty: none
    std::vector<int> composite;     // in the composite one
    bool mayHoldFillers = true;     // a filler would end a long number
};

int residue(const ZoneGrid& grid, const std::vector<ZonePlace>& places,
            const std::vector<int>& weights) {
    int sum = 0;
    for (std::size_t i = 0; i < weights.size(); ++i)
        sum += weights[i] * std::max(0, valueOf(grid.at(places[i]).now().character));
    return sum % 10;
}

// The digit itself counts with -1, so that all is well where the sum is 0.
constexpr int kDigitWeight = 9;

// Weight of a place in the composite digit; 0: not covered.
int compositeWeight(const ZoneLayout& layout, ZonePlace place) {
    if (layout.composite.empty())
        return 0;
    if (place == layout.compositeDigit)
        return kDigitWeight;
    std::size_t before = 0;
    for (const Run& run : layout.composite) {
        if (place.line == run.line && place.column >= run.column &&
            place.column < run.column + run.length)
            return weightAt(before + static_cast<std::size_t>(place.column - run.column));
        before += static_cast<std::size_t>(run.length);
    }
    return 0;
}

std::vector<ZonePlace> compositePlaces(const ZoneLayout& layout) {
    std::vector<ZonePlace> places;
    for (const Run& run : layout.composite) {
        for (int i = 0; i < run.length; ++i)
            places.push_back({run.line, run.column + i});
    }
    if (!places.empty())
        places.push_back(layout.compositeDigit);
    return places;
}

bool areAllowed(const ZoneGrid& grid, const std::vector<ZonePlace>& places) {
    return std::all_of(places.begin(), places.end(),
                       [&](ZonePlace place) { return grid.at(place).isAllowed(); });
}

// Where the rest of a long number ends with its digit, seen from the start of the next field; 0: it
// is none. At least one character, the digit and a filler.
int longNumberEnd(const ZoneGrid& grid, const FieldLayout& number, const FieldLayout& next) {
    if (grid.at(number.digitPlace()).now().character != '<')
        return 0;
    for (int i = 0; i < number.length; ++i) {
        if (grid.at(number.place(i)).now().character == '<')
            return 0;
    }
    for (int i = 0; i < next.length; ++i) {
        if (grid.at(next.place(i)).now().character != '<')
            continue;
        const char digit = i >= 2 ? grid.at(next.place(i - 1)).now().character : '<';
        return digit >= '0' && digit <= '9' ? i - 1 : 0;
    }
    return 0;
}

DigitCheck checkOf(const ZoneGrid& grid, const FieldLayout& field) {
    DigitCheck check{&field, {}, field.digitPlace()};
    for (int i = 0; i < field.length; ++i)
        check.covered.push_back(field.place(i));
    if (field.digit == DigitRule::longNumber) {
        const auto fields = grid.layout().fields;
        const auto next = std::find_if(fields.begin(), fields.end(), [](const FieldLayout& other) {
            return other.kind == ZoneFieldKind::optionalData;
        });
        if (const int end = longNumberEnd(grid, field, *next); end > 0) {
            for (int i = 0; i < end; ++i)
                check.covered.push_back(next->place(i));
            check.digit = next->place(end);
        }
    }
    return check;
}

Group groupOf(const ZoneLayout& layout, std::vector<ZonePlace> places, bool hasOwnDigit) {
    Group group;
    group.places = std::move(places);
    for (std::size_t i = 0; i < group.places.size(); ++i) {
        const bool isDigit = i + 1 == group.places.size();
        if (hasOwnDigit)
            group.own.push_back(isDigit ? kDigitWeight : weightAt(i));
        group.composite.push_back(compositeWeight(layout, group.places[i]));
    }
    return group;
}

// Whether no digit stands where the field's own has its place. A filler may, where the field is
// empty; a letter may not, though where a long number has its digit the layout knows none.
bool lacksDigit(const ZoneGrid& grid, const Group& group, const Solution& solution) {
    const auto characterAt = [&](ZonePlace place) {
        for (const Change& change : solution.changes) {
            if (change.place == place)
                return grid.at(place).allowed[static_cast<std::size_t>(change.choice)].character;
        }
        return grid.at(place).now().character;
    };
    if (group.own.empty())
        return false;
    const char digit = characterAt(group.places.back());
    if (digit != '<')
        return digit < '0' || digit > '9';
    return std::any_of(group.places.begin(), group.places.end(),
                       [&](ZonePlace place) { return characterAt(place) != '<'; });
}

// One place taken for another choice.
struct Step {
    std::size_t index = 0;  // in the group
    int choice = 0;
    float cost = 0.0f;
    int own = 0;  // added to the sums
    int composite = 0;
};

std::vector<Step> stepsOf(const ZoneGrid& grid, const Group& group) {
    std::vector<Step> steps;
    for (std::size_t i = 0; i < group.places.size(); ++i) {
        const Cell& cell = grid.at(group.places[i]);
        for (int choice = 1; choice < cell.allowedCount && !cell.dependsOnOthers; ++choice) {
            const auto& other = cell.allowed[static_cast<std::size_t>(choice)];
            if (other.character == '<' && !group.mayHoldFillers)
                continue;
            const float cost = std::log(cell.allowed[0].probability / other.probability);
            const int change = valueOf(other.character) - valueOf(cell.allowed[0].character) + 40;
            if (cost <= kMaximumCost)
                steps.push_back({i, choice, cost, group.own.empty() ? 0 : group.own[i] * change,
                                 group.composite[i] * change});
        }
    }
    return steps;
}

// What fits the group's own digit, with two changes at most; all, if it has none.
Solutions solve(const ZoneGrid& grid, const Group& group) {
    Solutions solutions;
    if (!areAllowed(grid, group.places))
        return solutions;
    const int own = residue(grid, group.places, group.own);
    const int composite = residue(grid, group.places, group.composite);
    const auto offer = [&](int ownSum, int compositeSum, auto... steps) {
        Solution solution;
        ((solution.cost += steps.cost,
          solution.changes.push_back({group.places[steps.index], steps.choice})),
         ...);
        if (ownSum % 10 == 0 && solution.cost <= kMaximumCost && !lacksDigit(grid, group, solution))
            solutions.add(compositeSum, std::move(solution));
    };
    offer(own, composite);
    const std::vector<Step> steps = stepsOf(grid, group);
    for (std::size_t i = 0; i < steps.size(); ++i) {
        const Step& a = steps[i];
        offer(own + a.own, composite + a.composite, a);
        for (std::size_t j = i + 1; j < steps.size(); ++j) {
            const Step& b = steps[j];
            if (a.index != b.index && a.cost + b.cost <= kMaximumCost)
                offer(own + a.own + b.own, composite + a.composite + b.composite, a, b);
        }
    }
    return solutions;
}

void take(ZoneGrid& grid, const Solution& solution) {
    for (const Change& change : solution.changes) {
        grid.at(change.place).taken = change.choice;
        grid.at(change.place).isTakenByCheckDigit = true;
    }
}

// Takes the likeliest solution if no other is nearly as likely.
bool takeOnly(ZoneGrid& grid, const Solutions::Best& best, std::vector<ZonePlace>& rivals) {
    if (!best.first)
        return false;
    const bool hasRival = best.second && best.second->cost - best.first->cost < kMargin;
    if (hasRival && !best.first->changes.empty())
        return false;
    take(grid, *best.first);
    if (hasRival) {
        for (const Change& change : best.second->changes)
            rivals.push_back(change.place);
    }
    return true;
}

CheckDigit resultOf(const ZoneGrid& grid, const DigitCheck& check, bool fits) {
    if (!fits)
        return CheckDigit::failed;
    return grid.at(check.digit).now().character == '<' ? CheckDigit::nonePrinted
                                                       : CheckDigit::passed;
}

// A field with a digit of its own, and what would fit it.
struct FieldSearch {
    DigitCheck check;
    Group group;
    Solutions found;
};

FieldSearch searchIn(const ZoneGrid& grid, const FieldLayout& field) {
    FieldSearch search{checkOf(grid, field), {}, {}};
    DigitCheck& check = search.check;
    std::vector<ZonePlace> places = check.covered;
    places.push_back(check.digit);
    search.group = groupOf(grid.layout(), std::move(places), true);
    search.group.mayHoldFillers = !check.isLong();
    search.found = solve(grid, search.group);
    const auto best = search.found.best().first;
    check.result = resultOf(grid, check, best && best->changes.empty());
    return search;
}

// Whether a place that the composite digit covers may be changed for its sake alone.
bool isFree(ZonePlace place, const std::vector<FieldSearch>& searches) {
    return std::none_of(searches.begin(), searches.end(), [&](const FieldSearch& search) {
        const DigitCheck& check = search.check;
        // The fillers that stand for a long number's digit and behind it stay what they are.
        const bool isMark =
            check.isLong() && (place == check.field->digitPlace() ||
                               place == ZonePlace{check.digit.line, check.digit.column + 1});
        const auto& places = search.group.places;
        return isMark || std::find(places.begin(), places.end(), place) != places.end();
    });
}

// Decides between what fits the fields. Changes none whose own digit holds, and says nothing where
// one cannot be mended.
bool decideByComposite(ZoneGrid& grid, const std::vector<FieldSearch>& searches,
                       std::vector<ZonePlace>& rivals) {
    std::vector<ZonePlace> rest = compositePlaces(grid.layout());
    if (rest.empty() || !areAllowed(grid, rest))
        return false;
    std::erase_if(rest, [&](ZonePlace place) { return !isFree(place, searches); });
    Solutions whole = solve(grid, groupOf(grid.layout(), rest, false));
    for (const FieldSearch& search : searches) {
        if (search.check.result == CheckDigit::failed)
            whole = whole.combined(search.found);
        else
            whole = whole.combined(
                Solutions::unchanged(residue(grid, search.group.places, search.group.composite)));
    }
    return takeOnly(grid, whole.at(0), rivals);
}

CheckDigit compositeResult(const ZoneGrid& grid) {
    const std::vector<ZonePlace> places = compositePlaces(grid.layout());
    if (places.empty())
        return CheckDigit::nonePrinted;
    const Group group = groupOf(grid.layout(), places, false);
    return areAllowed(grid, places) && residue(grid, places, group.composite) == 0
               ? CheckDigit::passed
               : CheckDigit::failed;
}

}  // namespace

const DigitCheck* Checks::of(const FieldLayout& field) const noexcept {
    for (const DigitCheck& check : fields) {
        if (check.field == &field)
            return &check;
    }
    return nullptr;
}

int Checks::passed() const noexcept {
    return static_cast<int>(std::count_if(
               fields.begin(), fields.end(),
               [](const auto& check) { return check.result == CheckDigit::passed; })) +
           (composite == CheckDigit::passed);
}

int Checks::failed() const noexcept {
    return static_cast<int>(std::count_if(
               fields.begin(), fields.end(),
               [](const auto& check) { return check.result == CheckDigit::failed; })) +
           (composite == CheckDigit::failed);
}

Checks checkAndCorrect(ZoneGrid& grid) {
    std::vector<FieldSearch> searches;
    for (const FieldLayout& field : grid.layout().fields) {
        if (field.digit != DigitRule::none)
            searches.push_back(searchIn(grid, field));
    }
    Checks checks;
    const bool isDecided = decideByComposite(grid, searches, checks.rivals);
    for (FieldSearch& search : searches) {
        DigitCheck& check = search.check;
        const bool isMended = isDecided && check.result == CheckDigit::failed;
        if (isMended || takeOnly(grid, search.found.best(), checks.rivals))
            check.result = resultOf(grid, check, true);
        checks.fields.push_back(std::move(check));
    }
    checks.composite = compositeResult(grid);
    return checks;
}

}  // namespace kestrelid::zone
