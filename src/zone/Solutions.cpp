#include "zone/Solutions.h"

#include <utility>

namespace kestrelid::zone {
namespace {

void offer(Solutions::Best& best, Solution solution) {
    if (!best.first || solution.cost < best.first->cost)
        best.second = std::exchange(best.first, std::move(solution));
    else if (!best.second || solution.cost < best.second->cost)
        best.second = std::move(solution);
}

void offerAll(Solutions::Best& best, const Solutions::Best& others) {
    for (const auto& solution : {others.first, others.second}) {
        if (solution)
            offer(best, *solution);
    }
}

}  // namespace

Solutions Solutions::unchanged(int sum) {
    Solutions solutions;
    solutions.add(sum, {});
    return solutions;
}

void Solutions::add(int sum, Solution solution) {
    offer(byRemainder_[static_cast<std::size_t>(sum % 10)], std::move(solution));
}

Solutions Solutions::combined(const Solutions& other) const {
    Solutions all;
    for (int i = 0; i < 10; ++i) {
        for (const auto& mine : {at(i).first, at(i).second}) {
            for (int j = 0; mine && j < 10; ++j) {
                for (const auto& theirs : {other.at(j).first, other.at(j).second}) {
                    if (!theirs)
                        continue;
                    Solution both = *mine;
                    both.cost += theirs->cost;
                    both.changes.insert(both.changes.end(), theirs->changes.begin(),
                                        theirs->changes.end());
                    all.add(i + j, std::move(both));
                }
            }
        }
    }
    return all;
}

bool Solutions::isEmpty() const noexcept {
    for (const Best& best : byRemainder_) {
        if (best.first)
            return false;
    }
    return true;
}

Solutions::Best Solutions::best() const {
    Best all;
    for (const Best& best : byRemainder_)
        offerAll(all, best);
    return all;
}

}  // namespace kestrelid::zone
