#pragma once

#include <gio/gio.h>
#include <memory>

namespace kestrelid::capture {

// Gives up one reference. Overloads, because many of these functions are inline and so cannot be a
// template's argument.
struct GLibReleaser {
    void operator()(GCancellable* object) const { g_object_unref(object); }
    void operator()(GDBusConnection* object) const { g_object_unref(object); }
    void operator()(GError* error) const { g_error_free(error); }
    void operator()(GMainContext* context) const { g_main_context_unref(context); }
    void operator()(GUnixFDList* object) const { g_object_unref(object); }
    void operator()(GVariant* value) const { g_variant_unref(value); }
    void operator()(char* text) const { g_free(text); }
};

template <typename T, typename Releaser = GLibReleaser>
using GLibHandle = std::unique_ptr<T, Releaser>;

using ErrorHandle = GLibHandle<GError>;
using TextHandle = GLibHandle<char>;

}  // namespace kestrelid::capture
