#pragma once

#include "benchmarks/chaos/Witness.h"

#include <kestrelid/CameraManager.h>

#include <atomic>
#include <deque>
#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

namespace kestrelid::chaos {

// What is promised, in seconds; all are multiplied by the patience of slow builds.
inline constexpr Seconds kPhotoLimit = 3.0;
inline constexpr Seconds kCallLimit = 1.5;       // of the main queue: half a second for calls under
                                                 // way, and 0.9 s for a driver that hangs
inline constexpr Seconds kReleasedLimit = 10.0;  // a set-up, the readiness check, photos
inline constexpr Seconds kHangs = 20.0;

// What a run counts.
struct Totals {
    std::atomic<int> photosAsked = 0;
    std::atomic<int> photosTaken = 0;
    std::atomic<int> photosFailed = 0;
    std::atomic<int> managers = 0;
    std::atomic<int> verdicts = 0;
    Longest toFrames;
    Longest toPhoto;
    Longest call;
    Longest gap;
    Longest release;  // until nothing holds the manager
};

// A scanning screen: its manager, and the surface on which frames are shown. Its calls are carried
// out on a main queue of its own. Thread: one.
class Screen {
public:
    Screen(CameraServices services, const AwakeClock& clock, Witness& witness, Totals& totals,
           int patience);
    Screen(const Screen&) = delete;
    Screen& operator=(const Screen&) = delete;
    ~Screen();

    void open();  // if it is released
    void release();
    void show();
    void hide();
    void takePhotos(int number);

    // Looks whether anything is overdue. Ends the process where the main queue hangs.
    void look();

    // Waits until nothing of the screen is left.
    void releaseAndWait();

    // Frames with a picture that came to the present manager's surfaces.
    [[nodiscard]] int frames() const;
    [[nodiscard]] std::string status();  // waits for the main queue

private:
    struct Visit;
    struct Surface;

    void onMain(const std::string& name, std::function<void()> call);
    void beat();

    const CameraServices services_;
    const AwakeClock& clock_;
    Witness& witness_;
    Totals& totals_;
    const int patience_;
    std::atomic<Seconds> lastBeat_ = 0.0;
    std::atomic<bool> ends_ = false;
    std::atomic<bool> hasEnded_ = false;

    std::shared_ptr<CameraManager> manager_;  // main queue
    Subscription status_;                     // main queue
    std::shared_ptr<Surface> surface_;        // main queue
    std::shared_ptr<Visit> visit_;            // of the present manager, or the last one
    std::vector<std::shared_ptr<Visit>> former_;
};

}  // namespace kestrelid::chaos
