#include "tests/capture/permission/FakePortal.h"

#include <cstdio>
#include <cstdlib>
#include <sys/socket.h>
#include <sys/un.h>
#include <utility>

// A portal on the session bus that grants the camera and hands out connections to the PipeWire at
// the socket named on the command line. Ends with its standard input.
namespace {

kestrelid::base::OwnedDescriptor connectTo(const std::string& socketPath) {
    sockaddr_un address{.sun_family = AF_UNIX, .sun_path = {}};
    socketPath.copy(address.sun_path, sizeof address.sun_path - 1);
    kestrelid::base::OwnedDescriptor connection(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0));
    const auto* named = reinterpret_cast<const sockaddr*>(&address);
    const bool isThere = ::connect(connection.number(), named, sizeof address) == 0;
    return isThere ? std::move(connection) : kestrelid::base::OwnedDescriptor();
}

}  // namespace

int main(int argc, char** argv) {
    const char* bus = std::getenv("DBUS_SESSION_BUS_ADDRESS");
    if (argc != 2 || !bus)
        return 2;
    const kestrelid::test::FakePortal portal(
        bus, {.response = 0, .hasStore = false, .openRemote = [path = std::string(argv[1])] {
                  return connectTo(path);
              }});
    std::puts("ready");
    std::fflush(stdout);
    while (std::getchar() != EOF) {
    }
    return 0;
}
