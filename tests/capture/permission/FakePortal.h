#pragma once

#include "capture/CameraRemote.h"
#include "capture/GLibHandles.h"
#include "capture/permission/ContextThread.h"

#include <atomic>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace kestrelid::test {

// A session bus of the test's own.
class PrivateBus {
public:
    PrivateBus();
    ~PrivateBus();
    PrivateBus(const PrivateBus&) = delete;
    PrivateBus& operator=(const PrivateBus&) = delete;

    [[nodiscard]] std::string address() const;

    // Ends the daemon so that it tells nobody.
    void kill() const;

private:
    GTestDBus* bus_;
};

struct PortalBehaviour {
    enum class Reply {
        predictedHandle,
        responseFirst,  // the signal before the method's reply
        otherHandle,    // as portals did that know no token
        error,
        none,
    };
    Reply reply = Reply::predictedHandle;
    std::optional<std::uint32_t> response = {};  // at once; absent: by respond()

    bool hasStore = true;
    std::string application = "org.example.Host";
    std::optional<std::string> stored = {};  // what the store has for that application
    bool hasCamera = true;

    // Opens the connection to PipeWire for who asks for it; empty: who asks is refused.
    std::function<base::OwnedDescriptor()> openRemote = {};
};

// The desktop's portal and permission store. Thread: any.
class FakePortal {
public:
    FakePortal(const std::string& address, PortalBehaviour behaviour);

    // Leaves the bus.
    ~FakePortal();

    // Answers the latest question.
    void respond(std::uint32_t response);

    // False where fewer were asked in time.
    [[nodiscard]] bool waitForQuestions(int count) const;
    [[nodiscard]] int questions() const { return questions_; }

    // Whether who asked last is still on the bus.
    [[nodiscard]] bool hasQuestioner();
    // The bus sees it a moment later. False where it stays for a minute.
    [[nodiscard]] bool waitUntilQuestionerLeaves();

private:
    void serve();
    void lookup(GDBusMethodInvocation* invocation);
    void openRemote(GDBusMethodInvocation* invocation);
    void accessCamera(GDBusMethodInvocation* invocation);
    void emit(std::uint32_t response);
    void onThread(const std::function<void()>& task);

    const std::string address_;
    const PortalBehaviour behaviour_;
    capture::GLibHandle<GDBusConnection> connection_;  // on the thread
    std::string questioner_;                           // on the thread
    std::string handle_;                               // on the thread
    std::vector<GDBusMethodInvocation*> unreplied_;    // on the thread
    std::atomic<int> questions_ = 0;
    capture::ContextThread thread_;
};

}  // namespace kestrelid::test
