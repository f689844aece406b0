// Calls in flight: how often and in which order completions and disposals come. There are no models
// here, so that a call takes milliseconds and its text fails, which the console is told.

#define _POSIX_C_SOURCE 200809L

#include "tests/c/Check.h"

#include <kestrelid/kestrelid.h>
#include <pthread.h>
#include <time.h>

enum { kCalls = 12, kCallers = 3 };

static pthread_mutex_t mutex = PTHREAD_MUTEX_INITIALIZER;
static pthread_cond_t changed = PTHREAD_COND_INITIALIZER;
static int disposals = 0;
static int consoleLines = 0;

struct Call {
    int completions;
    int disposals;
    KestrelidDetector* releasedInside;
};

static void complete(void* user, const KestrelidResult* result) {
    struct Call* call = user;
    pthread_mutex_lock(&mutex);
    CHECK(call->completions == 0 && call->disposals == 0);
    ++call->completions;
    pthread_mutex_unlock(&mutex);
    CHECK(!kestrelid_result_is_passport(result));
    CHECK(kestrelid_result_reason_count(result) > 1);
    kestrelid_detector_release(call->releasedInside);
}

static void dispose(void* user) {
    struct Call* call = user;
    pthread_mutex_lock(&mutex);
    CHECK(call->disposals == 0);
    ++call->disposals;
    ++disposals;
    pthread_cond_broadcast(&changed);
    pthread_mutex_unlock(&mutex);
}

static void console(void* user, const char* line, size_t size) {
    pthread_mutex_lock(&mutex);
    CHECK(user == &consoleLines);
    CHECK(size > 0 && strlen(line) == size);
    ++consoleLines;
    pthread_mutex_unlock(&mutex);
}

static void waitForDisposals(int expected) {
    struct timespec deadline;
    clock_gettime(CLOCK_REALTIME, &deadline);
    deadline.tv_sec += 60;
    pthread_mutex_lock(&mutex);
    while (disposals < expected)
        CHECK(pthread_cond_timedwait(&changed, &mutex, &deadline) == 0);
    CHECK(disposals == expected);
    disposals = 0;
    pthread_mutex_unlock(&mutex);
}

static KestrelidDetector* makeDetector(void) {
    const KestrelidDetectorOptions options = {.struct_size = sizeof(options),
                                              .resources = "/nowhere",
                                              .console = console,
                                              .console_user = &consoleLines};
    KestrelidDetector* detector = NULL;
    CHECK(kestrelid_detector_create(&options, &detector, NULL) == KESTRELID_OK);
    return detector;
}

static KestrelidImage* makeImage(void) {
    enum { kWidth = 200, kHeight = 150 };
    static const unsigned char bytes[kWidth * kHeight];
    const KestrelidPixels pixels = {.struct_size = sizeof(pixels),
                                    .bytes = bytes,
                                    .size = sizeof(bytes),
                                    .stride = kWidth,
                                    .width = kWidth,
                                    .height = kHeight,
                                    .format = KESTRELID_GRAY8};
    KestrelidImage* image = NULL;
    CHECK(kestrelid_image_from_pixels(&pixels, &image, NULL) == KESTRELID_OK);
    return image;
}

struct Caller {
    KestrelidDetector* detector;
    struct Call calls[kCalls];
};

static void* start(void* argument) {
    struct Caller* caller = argument;
    for (int index = 0; index < kCalls; ++index) {
        KestrelidImage* image = makeImage();
        CHECK(kestrelid_detector_validate(caller->detector, image, complete, &caller->calls[index],
                                          dispose, NULL) == KESTRELID_OK);
        kestrelid_image_release(image);  // while it is judged
    }
    return NULL;
}

static void severalCallersAtOnce(void) {
    static struct Caller callers[kCallers];
    pthread_t threads[kCallers];
    KestrelidDetector* detector = makeDetector();
    for (int index = 0; index < kCallers; ++index) {
        callers[index].detector = detector;
        CHECK(pthread_create(&threads[index], NULL, start, &callers[index]) == 0);
    }
    for (int index = 0; index < kCallers; ++index)
        CHECK(pthread_join(threads[index], NULL) == 0);
    waitForDisposals(kCallers * kCalls);
    kestrelid_detector_release(detector);
    for (int caller = 0; caller < kCallers; ++caller)
        for (int call = 0; call < kCalls; ++call)
            CHECK(callers[caller].calls[call].completions == 1);
    CHECK(consoleLines == 2 * kCallers * kCalls);  // neither outlines nor text can be had
}

// A busy machine may hold this thread up until all are answered.
static void releaseInFlight(void) {
    int given = kCalls;
    for (int rounds = 1; given == kCalls; ++rounds) {
        struct Caller caller = {makeDetector(), {{0, 0, NULL}}};
        CHECK(rounds < 50);
        start(&caller);
        kestrelid_detector_release(caller.detector);
        waitForDisposals(kCalls);
        given = 0;
        for (int call = 0; call < kCalls; ++call)
            given += caller.calls[call].completions;
    }
}

static void releaseInsideCompletion(void) {
    static struct Call call;
    KestrelidDetector* detector = makeDetector();
    KestrelidImage* image = makeImage();
    call.releasedInside = detector;
    CHECK(kestrelid_detector_validate(detector, image, complete, &call, dispose, NULL) ==
          KESTRELID_OK);
    waitForDisposals(1);
    CHECK(call.completions == 1);
    kestrelid_image_release(image);
}

int main(void) {
    severalCallersAtOnce();
    releaseInFlight();
    releaseInsideCompletion();
    return 0;
}
