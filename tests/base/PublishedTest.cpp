#include <kestrelid/Published.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <optional>
#include <string>
#include <vector>

namespace kestrelid::base {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

TEST(Published, AnnouncesBeforeAndAfterTheChange) {
    Published<int> field(1);
    std::vector<std::string> seen;
    const auto note = [&](const char* when) {
        return [&seen, &field, when](int next) {
            seen.push_back(when + std::to_string(field.value()) + ">" + std::to_string(next));
        };
    };
    const Subscription did = field.didChange(note("did "));
    const Subscription will = field.willChange(note("will "));
    field.publish(2);
    field.publish(2);
    EXPECT_THAT(seen, ElementsAre("will 1>2", "did 2>2", "will 2>2", "did 2>2"));
}

TEST(Published, ObserversMayComeAndGoWhileTheyAreTold) {
    Published<int> field(0);
    std::vector<std::string> seen;
    Subscription second;
    Subscription added;
    Subscription first = field.didChange([&](int) {
        seen.emplace_back("first");
        second.reset();
        added = field.didChange([&](int) { seen.emplace_back("added"); });
        first.reset();
    });
    second = field.didChange([&](int) { seen.emplace_back("second"); });
    field.publish(1);
    EXPECT_THAT(seen, ElementsAre("first")) << "the second one was dropped before its turn";
    seen.clear();
    field.publish(2);
    EXPECT_THAT(seen, ElementsAre("added"));
}

TEST(Published, ObserverMayReleaseTheOwnerAndSubscriptionsOutliveIt) {
    auto field = std::make_optional<Published<int>>(0);
    std::vector<int> after;
    const Subscription did = field->didChange([&](int value) { after.push_back(value); });
    const Subscription will = field->willChange([&](int) { field.reset(); });
    field->publish(1);
    EXPECT_FALSE(field);
    EXPECT_THAT(after, IsEmpty());
}

}  // namespace
}  // namespace kestrelid::base
