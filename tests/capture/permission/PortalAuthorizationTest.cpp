#include "capture/permission/CameraPermission.h"
#include "tests/capture/permission/FakePortal.h"
#include "tests/capture/permission/NodeFolder.h"

#include <array>
#include <atomic>
#include <chrono>
#include <fcntl.h>
#include <future>
#include <memory>
#include <sys/socket.h>
#include <thread>

namespace kestrelid::test {
namespace {

using namespace std::chrono_literals;
using Reply = PortalBehaviour::Reply;

// What a request was answered.
class Answer {
public:
    [[nodiscard]] std::function<void(bool)> completion() const {
        return [state = state_](bool granted) {
            if (state->count++ == 0)
                state->granted.set_value(granted);
        };
    }

    // Absent where none came in time.
    std::optional<bool> wait() {
        if (future_.wait_for(30s) != std::future_status::ready)
            return std::nullopt;
        return future_.get();
    }

    [[nodiscard]] int count() const { return state_->count; }

private:
    struct State {
        std::promise<bool> granted;
        std::atomic<int> count = 0;
    };
    std::shared_ptr<State> state_ = std::make_shared<State>();
    std::future<bool> future_ = state_->granted.get_future();
};

class PortalAuthorization : public testing::Test {
protected:
    [[nodiscard]] capture::PermissionEnvironment environment() const {
        return {.isSandboxed = true,
                .applicationId = "org.example.Host",
                .devices = nodes_.path(),
                .busAddress = bus_.address()};
    }

    [[nodiscard]] std::shared_ptr<CameraAuthorization> make() const {
        return capture::makeCameraAuthorization(environment());
    }

    PrivateBus bus_;
    NodeFolder nodes_;
};

struct Stored {
    const char* name;
    PortalBehaviour behaviour;
    AuthorizationStatus status;
    int questions;
};

void PrintTo(const Stored& stored, std::ostream* stream) {
    *stream << stored.name;
}

class StoredPermission : public PortalAuthorization, public testing::WithParamInterface<Stored> {};

TEST_P(StoredPermission, DecidesWhetherThePersonIsAsked) {
    PortalBehaviour behaviour = GetParam().behaviour;
    behaviour.response = 1;
    FakePortal portal(bus_.address(), behaviour);
    const auto authorization = make();
    EXPECT_EQ(authorization->status(), GetParam().status);
    Answer answer;
    authorization->requestAccess(answer.completion());
    EXPECT_EQ(answer.wait(), GetParam().status == AuthorizationStatus::authorized);
    EXPECT_EQ(portal.questions(), GetParam().questions);
}

INSTANTIATE_TEST_SUITE_P(
    Answers, StoredPermission,
    testing::Values(Stored{"yes", {.stored = "yes"}, AuthorizationStatus::authorized, 0},
                    Stored{"no", {.stored = "no"}, AuthorizationStatus::denied, 0},
                    Stored{"ask", {.stored = "ask"}, AuthorizationStatus::notDetermined, 1},
                    Stored{"absent", {}, AuthorizationStatus::notDetermined, 1},
                    Stored{"ofAnother",
                           {.application = "org.example.Other", .stored = "yes"},
                           AuthorizationStatus::notDetermined,
                           1},
                    Stored{"noStore", {.hasStore = false}, AuthorizationStatus::notDetermined, 1}),
    [](const auto& row) { return row.param.name; });

struct Question {
    const char* name;
    PortalBehaviour behaviour;
    bool granted;
};

void PrintTo(const Question& question, std::ostream* stream) {
    *stream << question.name;
}

class PortalQuestion : public PortalAuthorization, public testing::WithParamInterface<Question> {};

TEST_P(PortalQuestion, IsAnswered) {
    FakePortal portal(bus_.address(), GetParam().behaviour);
    auto surroundings = environment();
    if (GetParam().behaviour.reply == Reply::none)
        surroundings.callLimit = 100ms;
    const auto authorization = capture::makeCameraAuthorization(surroundings);
    Answer answer;
    authorization->requestAccess(answer.completion());
    EXPECT_EQ(answer.wait(), GetParam().granted);
    EXPECT_EQ(authorization->status(), GetParam().granted ? AuthorizationStatus::authorized
                                                          : AuthorizationStatus::notDetermined);
    EXPECT_EQ(answer.count(), 1);
}

INSTANTIATE_TEST_SUITE_P(
    Responses, PortalQuestion,
    testing::Values(
        Question{"granted", {.response = 0}, true}, Question{"refused", {.response = 1}, false},
        Question{"closed", {.response = 2}, false},
        Question{"beforeTheReply", {.reply = Reply::responseFirst, .response = 0}, true},
        Question{"refusedBeforeTheReply", {.reply = Reply::responseFirst, .response = 1}, false},
        Question{"error", {.reply = Reply::error}, false},
        Question{"noReply", {.reply = Reply::none}, false}),
    [](const auto& row) { return row.param.name; });

class LatePortalAnswer : public PortalAuthorization, public testing::WithParamInterface<Reply> {};

TEST_P(LatePortalAnswer, IsWaitedForAndSharedByAllRequests) {
    FakePortal portal(bus_.address(), {.reply = GetParam()});
    const auto authorization = make();
    Answer first;
    Answer second;
    authorization->requestAccess(first.completion());
    authorization->requestAccess(second.completion());
    // Answers only once both requests are under way.
    EXPECT_EQ(authorization->status(), AuthorizationStatus::notDetermined);
    ASSERT_TRUE(portal.waitForQuestions(1));
    EXPECT_EQ(first.count() + second.count(), 0);
    portal.respond(0);
    EXPECT_EQ(first.wait(), true);
    EXPECT_EQ(second.wait(), true);
    EXPECT_EQ(portal.questions(), 1);
}

INSTANTIATE_TEST_SUITE_P(Handles, LatePortalAnswer,
                         testing::Values(Reply::predictedHandle, Reply::otherHandle));

TEST_F(PortalAuthorization, GrantsNothingWithoutAPortalOrABus) {
    for (const auto& address : {bus_.address(), std::string("unix:path=/nonexistent")}) {
        auto surroundings = environment();
        surroundings.busAddress = address;
        const auto authorization = capture::makeCameraAuthorization(surroundings);
        EXPECT_EQ(authorization->status(), AuthorizationStatus::notDetermined);
        Answer answer;
        authorization->requestAccess(answer.completion());
        EXPECT_EQ(answer.wait(), false);
    }
}

TEST_F(PortalAuthorization, AsksAgainAfterARefusal) {
    FakePortal portal(bus_.address(), {});
    const auto authorization = make();
    for (const std::uint32_t response : {1u, 0u}) {
        Answer answer;
        authorization->requestAccess(answer.completion());
        ASSERT_TRUE(portal.waitForQuestions(response == 1 ? 1 : 2));
        portal.respond(response);
        EXPECT_EQ(answer.wait(), response == 0);
    }
}

TEST_F(PortalAuthorization, APortalThatGoesAwayGrantsNothing) {
    const auto authorization = make();
    Answer answer;
    {
        FakePortal portal(bus_.address(), {});
        authorization->requestAccess(answer.completion());
        ASSERT_TRUE(portal.waitForQuestions(1));
    }
    EXPECT_EQ(answer.wait(), false);
    FakePortal portal(bus_.address(), {.response = 0});
    Answer again;
    authorization->requestAccess(again.completion());
    EXPECT_EQ(again.wait(), true);
}

TEST_F(PortalAuthorization, ABusThatGoesAwayGrantsNothing) {
    const auto authorization = make();
    Answer answer;
    auto portal = std::make_unique<FakePortal>(bus_.address(), PortalBehaviour{});
    authorization->requestAccess(answer.completion());
    ASSERT_TRUE(portal->waitForQuestions(1));
    bus_.kill();
    EXPECT_EQ(answer.wait(), false);
    EXPECT_EQ(answer.count(), 1);
}

TEST_F(PortalAuthorization, ReleaseAnswersWhoWaitsAndTakesTheQuestionAway) {
    FakePortal portal(bus_.address(), {});
    auto authorization = make();
    Answer answer;
    authorization->requestAccess(answer.completion());
    ASSERT_TRUE(portal.waitForQuestions(1));
    EXPECT_TRUE(portal.hasQuestioner());
    authorization.reset();
    EXPECT_EQ(answer.count(), 1);
    EXPECT_EQ(answer.wait(), false);
    EXPECT_FALSE(portal.hasQuestioner());
}

TEST_F(PortalAuthorization, ReleaseDoesNotWaitForAPortalThatHangs) {
    FakePortal portal(bus_.address(), {.reply = Reply::none});
    auto authorization = make();  // whose call may take 10 s
    Answer answer;
    authorization->requestAccess(answer.completion());
    ASSERT_TRUE(portal.waitForQuestions(1));
    const auto start = std::chrono::steady_clock::now();
    authorization.reset();
    EXPECT_EQ(answer.wait(), false);
    EXPECT_LT(std::chrono::steady_clock::now() - start, 5s);
}

TEST_F(PortalAuthorization, MayBeUsedAndReleasedByItsOwnAnswer) {
    FakePortal portal(bus_.address(), {.response = 0});
    auto authorization = make();
    std::promise<std::shared_ptr<CameraAuthorization>> handedOver;
    std::promise<AuthorizationStatus> status;
    authorization->requestAccess([&, owner = handedOver.get_future().share()](bool) mutable {
        auto last = owner.get();
        owner = {};
        handedOver = {};
        status.set_value(last->status());
    });
    handedOver.set_value(std::exchange(authorization, nullptr));
    auto result = status.get_future();
    ASSERT_EQ(result.wait_for(30s), std::future_status::ready);
    EXPECT_EQ(result.get(), AuthorizationStatus::authorized);
}

TEST_F(PortalAuthorization, ANodeThatOpensNeedsNoQuestion) {
    nodes_.add("video0", 0666);
    {
        FakePortal portal(bus_.address(), {.stored = "no"});
        EXPECT_EQ(make()->status(), AuthorizationStatus::denied);
    }
    EXPECT_EQ(make()->status(), AuthorizationStatus::authorized);
}

// Ends where the other side has no owner left.
bool isClosed(const base::OwnedDescriptor& side) {
    char byte = 0;
    return ::recv(side.number(), &byte, 1, MSG_DONTWAIT) == 0;
}

TEST_F(PortalAuthorization, HandsOverAConnectionThatEndsWithItsOwner) {
    base::OwnedDescriptor far;
    const auto connect = [&far] {
        std::array<int, 2> pair{};
        if (::socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, pair.data()) != 0)
            return base::OwnedDescriptor();
        far = base::OwnedDescriptor(pair[0]);
        return base::OwnedDescriptor(pair[1]);
    };
    FakePortal portal(bus_.address(), {.openRemote = connect});
    base::OwnedDescriptor near = capture::makeCameraRemote(environment())();
    ASSERT_TRUE(near.isOpen());
    EXPECT_NE(::fcntl(near.number(), F_GETFD) & FD_CLOEXEC, 0);
    EXPECT_FALSE(isClosed(far));
    near = base::OwnedDescriptor();
    EXPECT_TRUE(isClosed(far)) << "nobody else keeps it open";
}

TEST_F(PortalAuthorization, HandsOverNoConnectionWhereItIsRefusedOrNobodyIsThere) {
    EXPECT_FALSE(capture::makeCameraRemote(environment())().isOpen());
    FakePortal portal(bus_.address(), {});
    EXPECT_FALSE(capture::makeCameraRemote(environment())().isOpen());
    auto outside = environment();
    outside.isSandboxed = false;
    EXPECT_FALSE(capture::makeCameraRemote(outside));
}

TEST_F(PortalAuthorization, FindsTheSessionBus) {
    FakePortal portal(bus_.address(), {.stored = "yes"});
    auto surroundings = environment();
    surroundings.busAddress.clear();  // PrivateBus makes itself this process's session bus
    EXPECT_EQ(capture::makeCameraAuthorization(surroundings)->status(),
              AuthorizationStatus::authorized);
}

}  // namespace
}  // namespace kestrelid::test
