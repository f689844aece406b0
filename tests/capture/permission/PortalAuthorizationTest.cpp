#include "capture/permission/CameraPermission.h"
#include "tests/capture/permission/FakePortal.h"
#include "tests/capture/permission/NodeFolder.h"
#include "tests/support/TemporaryFolder.h"

#include <array>
#include <atomic>
#include <chrono>
#include <cstdlib>
#include <fcntl.h>
#include <future>
#include <gtest/gtest.h>
#include <memory>
#include <poll.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <thread>

namespace kestrelid::test {
namespace {

using namespace std::chrono_literals;
using Reply = PortalBehaviour::Reply;

// Requests access and keeps what that was answered.
struct Answer {
    explicit Answer(CameraAuthorization& authorization) {
        authorization.requestAccess([state = state](bool granted) {
            if (state->count++ == 0)
                state->granted.set_value(granted);
        });
    }

    // Absent where none came in time.
    std::optional<bool> wait() const {
        auto future = state->granted.get_future();
        const bool came = future.wait_for(60s) == std::future_status::ready;
        return came ? std::optional(future.get()) : std::nullopt;
    }
    int count() const { return state->count; }

    struct State {
        std::promise<bool> granted;
        std::atomic<int> count = 0;
    };
    const std::shared_ptr<State> state = std::make_shared<State>();
};

class PortalAuthorization : public testing::Test {
protected:
    [[nodiscard]] capture::PermissionEnvironment environment() const {
        return {.isSandboxed = true,
                .applicationId = "org.example.Host",
                .devices = nodes_.path(),
                .busAddress = bus_.address(),
                .queryLimit = 60s,  // machines that build meanwhile are slow
                .statusLimit = 60s};
    }

    [[nodiscard]] std::shared_ptr<CameraAuthorization> make() const {
        return capture::makeCameraAuthorization(environment());
    }

    PrivateBus bus_;
    NodeFolder nodes_;
};

TEST_F(PortalAuthorization, WhatIsStoredDecidesWhetherThePersonIsAsked) {
    using enum AuthorizationStatus;
    struct Stored {
        const char* name;
        PortalBehaviour behaviour;
        AuthorizationStatus status;
        int questions;
    };
    for (const Stored& row :
         {Stored{"yes", {.stored = "yes"}, authorized, 0},
          Stored{"no", {.stored = "no"}, denied, 0}, Stored{"absent", {}, notDetermined, 1},
          Stored{"of another",
                 {.application = "org.example.Other", .stored = "yes"},
                 notDetermined,
                 1},
          Stored{"no store", {.hasStore = false}, notDetermined, 1}}) {
        SCOPED_TRACE(row.name);
        PortalBehaviour behaviour = row.behaviour;
        behaviour.response = 1;
        FakePortal portal(bus_.address(), behaviour);
        const auto authorization = make();
        EXPECT_EQ(authorization->status(), row.status);
        Answer answer(*authorization);
        EXPECT_EQ(answer.wait(), row.status == authorized);
        EXPECT_EQ(portal.questions(), row.questions);
    }
}

TEST_F(PortalAuthorization, AQuestionIsAnsweredOnce) {
    struct Question {
        const char* name;
        PortalBehaviour behaviour;
        bool granted;
    };
    for (const Question& row :
         {Question{"granted", {.response = 0}, true}, Question{"refused", {.response = 1}, false},
          Question{"before the reply", {.reply = Reply::responseFirst, .response = 0}, true},
          Question{"error", {.reply = Reply::error}, false},
          Question{"no reply", {.reply = Reply::none}, false}}) {
        SCOPED_TRACE(row.name);
        FakePortal portal(bus_.address(), row.behaviour);
        auto surroundings = environment();
        if (row.behaviour.reply == Reply::none)
            surroundings.callLimit = 100ms;
        const auto authorization = capture::makeCameraAuthorization(surroundings);
        Answer answer(*authorization);
        EXPECT_EQ(answer.wait(), row.granted);
        EXPECT_EQ(authorization->status(), row.granted ? AuthorizationStatus::authorized
                                                       : AuthorizationStatus::notDetermined);
        EXPECT_EQ(answer.count(), 1);
    }
}

TEST_F(PortalAuthorization, ALateAnswerIsSharedByAllRequestsAndARefusalAskedAgain) {
    for (const Reply reply : {Reply::predictedHandle, Reply::otherHandle}) {
        FakePortal portal(bus_.address(), {.reply = reply});
        const auto authorization = make();
        int questions = 0;
        for (const std::uint32_t response : {1u, 0u}) {
            Answer first(*authorization);
            Answer second(*authorization);
            // Answers only once both requests are under way.
            EXPECT_EQ(authorization->status(), AuthorizationStatus::notDetermined);
            ASSERT_TRUE(portal.waitForQuestions(++questions));
            EXPECT_EQ(first.count() + second.count(), 0);
            portal.respond(response);
            EXPECT_EQ(first.wait(), response == 0);
            EXPECT_EQ(second.wait(), response == 0);
            EXPECT_EQ(portal.questions(), questions);
        }
    }
}

TEST_F(PortalAuthorization, APortalOrABusThatGoesAwayGrantsNothing) {
    const auto authorization = make();
    auto portal = std::make_unique<FakePortal>(bus_.address(), PortalBehaviour{});
    Answer orphan(*authorization);
    ASSERT_TRUE(portal->waitForQuestions(1));
    portal.reset();
    EXPECT_EQ(orphan.wait(), false);
    {
        FakePortal next(bus_.address(), {.response = 0});
        EXPECT_EQ(Answer(*authorization).wait(), true);
    }
    const auto other = make();
    portal = std::make_unique<FakePortal>(bus_.address(), PortalBehaviour{});
    Answer stranded(*other);
    ASSERT_TRUE(portal->waitForQuestions(1));
    bus_.kill();
    EXPECT_EQ(stranded.wait(), false);
    EXPECT_EQ(stranded.count(), 1);
}

TEST_F(PortalAuthorization, ReleaseAnswersWhoWaitsAndTakesTheQuestionAway) {
    for (const Reply reply : {Reply::predictedHandle, Reply::none}) {
        FakePortal portal(bus_.address(), {.reply = reply});
        auto environs = environment();
        environs.callLimit = 1h;  // a portal that hangs holds nobody up
        auto authorization = capture::makeCameraAuthorization(environs);
        Answer answer(*authorization);
        ASSERT_TRUE(portal.waitForQuestions(1));
        EXPECT_TRUE(portal.hasQuestioner());
        authorization.reset();
        EXPECT_EQ(answer.count(), 1);
        EXPECT_EQ(answer.wait(), false);
        EXPECT_TRUE(portal.waitUntilQuestionerLeaves());
    }
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
    EXPECT_EQ(status.get_future().get(), AuthorizationStatus::authorized);
}

TEST_F(PortalAuthorization, ANodeThatOpensNeedsNoQuestion) {
    nodes_.add("video0", 0666);
    {
        FakePortal portal(bus_.address(), {.stored = "no"});
        EXPECT_EQ(make()->status(), AuthorizationStatus::denied);
    }
    EXPECT_EQ(make()->status(), AuthorizationStatus::authorized);
}

// Whether the other side has no owner left, or has none within milliseconds: the bus lets go of its
// copy a moment after it has handed it on.
bool isClosed(const base::OwnedDescriptor& side, int milliseconds) {
    pollfd closing{.fd = side.number(), .events = POLLRDHUP, .revents = 0};
    return ::poll(&closing, 1, milliseconds) == 1;
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
    EXPECT_FALSE(isClosed(far, 0));
    near = base::OwnedDescriptor();
    EXPECT_TRUE(isClosed(far, 60'000)) << "nobody else keeps it open";
}

TEST_F(PortalAuthorization, ThereIsNothingToGrantOrHandOverWithoutAPortal) {
    EXPECT_FALSE(capture::makeCameraRemote(environment())().isOpen());
    EXPECT_EQ(Answer(*make()).wait(), false);
    FakePortal portal(bus_.address(), {});
    EXPECT_FALSE(capture::makeCameraRemote(environment())().isOpen()) << "refused";
    auto surroundings = environment();
    surroundings.busAddress = "unix:path=/nonexistent";
    EXPECT_EQ(Answer(*capture::makeCameraAuthorization(surroundings)).wait(), false);
}

TEST(CameraRemote, IsOutsideASandboxTheSocketThatPipeWireListensAt) {
    const TemporaryFolder folder;
    const std::string path = folder / "pipewire-0";
    const base::OwnedDescriptor server(::socket(AF_UNIX, SOCK_STREAM, 0));
    sockaddr_un address{.sun_family = AF_UNIX, .sun_path = {}};
    path.copy(address.sun_path, sizeof address.sun_path - 1);
    ASSERT_EQ(::bind(server.number(), reinterpret_cast<sockaddr*>(&address), sizeof address), 0);
    ASSERT_EQ(::listen(server.number(), 9), 0);
    const std::string nowhere = "/nonexistent";
    const struct {
        std::string remote, runtimeFolder, userFolder;  // empty: not in the environment
        bool isOpen;
    } rows[] = {{"", "", folder.path(), true},
                {"", folder.path(), nowhere, true},
                {"", nowhere, folder.path(), false},
                {"other", "", folder.path(), false},
                {path, nowhere, nowhere, true},
                {path, "", "", true},
                {"", "", "", false},
                {path + std::string(200, 'x'), "", "", false}};
    const char* const before = std::getenv("XDG_RUNTIME_DIR");
    const std::string own = before ? before : "";
    const auto set = [](const char* name, const std::string& value) {
        value.empty() ? unsetenv(name) : setenv(name, value.c_str(), 1);
    };
    for (const auto& row : rows) {
        set("PIPEWIRE_REMOTE", row.remote);
        set("PIPEWIRE_RUNTIME_DIR", row.runtimeFolder);
        set("XDG_RUNTIME_DIR", row.userFolder);
        EXPECT_EQ(capture::makeCameraRemote({})().isOpen(), row.isOpen)
            << row.remote << ' ' << row.runtimeFolder << ' ' << row.userFolder;
    }
    set("PIPEWIRE_REMOTE", "");
    set("PIPEWIRE_RUNTIME_DIR", "");
    set("XDG_RUNTIME_DIR", own);
}

}  // namespace
}  // namespace kestrelid::test
