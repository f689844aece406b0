#include "tests/capture/permission/FakePortal.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <sys/socket.h>
#include <sys/un.h>

// A portal on the session bus that grants the camera and hands out connections to the PipeWire at
// the socket named on the command line. Ends with its standard input.
namespace {

kestrelid::base::OwnedDescriptor connectTo(const std::string& socketPath) {
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    if (socketPath.size() >= sizeof address.sun_path)
        return {};
    std::memcpy(address.sun_path, socketPath.c_str(), socketPath.size());
    kestrelid::base::OwnedDescriptor connection(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0));
    if (!connection.isOpen() ||
        ::connect(connection.number(), reinterpret_cast<const sockaddr*>(&address),
                  sizeof address) != 0)
        return {};
    return connection;
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
