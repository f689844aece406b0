#ifdef __SANITIZE_THREAD__
#include <dlfcn.h>
#include <glib.h>
#include <sanitizer/tsan_interface.h>

// GLib's locks are futexes of its own, which the thread sanitizer does not see: whatever GStreamer
// hands from one thread to another would look like a race. These stand in front of them, in the
// program, where the dynamic linker looks first, and tell the sanitizer who waited for whom. GLib's
// other locks are pthread's, which it sees.
namespace {

template <typename Function>
Function* behind(Function* /*own*/, const char* name) {
    return reinterpret_cast<Function*>(::dlsym(RTLD_NEXT, name));
}

}  // namespace

#define KESTRELID_BEHIND(function) static auto* const real = behind(&function, #function)

extern "C" {

__attribute__((visibility("default"))) void g_mutex_lock(GMutex* mutex) {
    KESTRELID_BEHIND(g_mutex_lock);
    real(mutex);
    __tsan_acquire(mutex);
}

__attribute__((visibility("default"))) gboolean g_mutex_trylock(GMutex* mutex) {
    KESTRELID_BEHIND(g_mutex_trylock);
    const gboolean isLocked = real(mutex);
    if (isLocked)
        __tsan_acquire(mutex);
    return isLocked;
}

__attribute__((visibility("default"))) void g_mutex_unlock(GMutex* mutex) {
    KESTRELID_BEHIND(g_mutex_unlock);
    __tsan_release(mutex);
    real(mutex);
}

__attribute__((visibility("default"))) void g_cond_wait(GCond* condition, GMutex* mutex) {
    KESTRELID_BEHIND(g_cond_wait);
    __tsan_release(mutex);
    real(condition, mutex);
    __tsan_acquire(mutex);
}

__attribute__((visibility("default"))) gboolean g_cond_wait_until(GCond* condition, GMutex* mutex,
                                                                  gint64 end) {
    KESTRELID_BEHIND(g_cond_wait_until);
    __tsan_release(mutex);
    const gboolean isSignalled = real(condition, mutex, end);
    __tsan_acquire(mutex);
    return isSignalled;
}

}  // extern "C"
#endif
