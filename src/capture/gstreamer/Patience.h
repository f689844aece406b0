#pragma once

#include <chrono>

namespace kestrelid::capture {

// How long a session waits for its device before it goes on without it.
struct Patience {
    using Milliseconds = std::chrono::milliseconds;

    Milliseconds start{1900};  // the session promises 2 s
    Milliseconds finish{900};  // for the device that another one replaces to be let go
    Milliseconds frame{1500};  // without a frame a device is lost
    Milliseconds pause{1900};  // and in one call of its driver
    // For the first frame of another format, in place and by a device that starts anew. Both
    // together stay below `pause`.
    Milliseconds change{600};
    Milliseconds restart{1200};
    Milliseconds still{1000};    // then the photo is a frame of the format that flows
    Milliseconds settling{300};  // of exposure and focus in a still's format; one frame is awaited
    Milliseconds next{1400};     // for a still of the format that flows, on a busy machine
    Milliseconds photo{2500};    // an answer is due after 3 s; encoding takes some of it

    // For machines that are slow for a known reason, such as a sanitizer.
    [[nodiscard]] constexpr Patience times(int factor) const {
        return {.start = start * factor,
                .finish = finish * factor,
                .frame = frame * factor,
                .pause = pause * factor,
                .change = change * factor,
                .restart = restart * factor,
                .still = still * factor,
                .settling = settling * factor,
                .next = next * factor,
                .photo = photo * factor};
    }
};

}  // namespace kestrelid::capture
