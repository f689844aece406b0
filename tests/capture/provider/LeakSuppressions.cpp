#ifdef __SANITIZE_ADDRESS__
// Seen by the runtime only where they are exported.
// NOLINTBEGIN(bugprone-reserved-identifier)
extern "C" {
__attribute__((visibility("default"))) const char* __asan_default_options();
__attribute__((visibility("default"))) const char* __lsan_default_options();
__attribute__((visibility("default"))) const char* __lsan_default_suppressions();
}
// NOLINTEND(bugprone-reserved-identifier)

// GLib leaves old tables of names behind on purpose once a program knows more than 2048 of them,
// which happens while libraries load. Only the slow unwinder sees as far as the loader.
extern "C" const char* __asan_default_options() {
    return "fast_unwind_on_malloc=0";
}

extern "C" const char* __lsan_default_options() {
    return "print_suppressions=0";
}

extern "C" const char* __lsan_default_suppressions() {
    return "leak:call_init\n";
}
#endif
