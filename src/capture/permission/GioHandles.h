#pragma once

#include <gio/gio.h>
#include <memory>

namespace kestrelid::capture {

struct GioRelease {
    void operator()(GVariant* value) const { g_variant_unref(value); }
    void operator()(GError* error) const { g_error_free(error); }
    void operator()(GMainContext* context) const { g_main_context_unref(context); }
    void operator()(GMainLoop* loop) const { g_main_loop_unref(loop); }
    void operator()(GDBusConnection* connection) const { g_object_unref(connection); }
    void operator()(GCancellable* cancellable) const { g_object_unref(cancellable); }
    void operator()(GUnixFDList* files) const { g_object_unref(files); }
    void operator()(gchar* text) const { g_free(text); }
};

template <class T>
using GioHandle = std::unique_ptr<T, GioRelease>;

}  // namespace kestrelid::capture
