#include "defaults/Resources.h"

#include <dlfcn.h>

namespace kestrelid::defaults {

namespace {

// The folder of the file that holds this code: the library, or a program that it is linked into.
std::filesystem::path ownFolder() {
    Dl_info place{};
    static const char kHere = 0;
    if (dladdr(&kHere, &place) == 0 || !place.dli_fname)
        return {};
    std::error_code error;
    return std::filesystem::canonical(place.dli_fname, error).parent_path();
}

}  // namespace

std::vector<std::filesystem::path> resourceFolders(const std::filesystem::path& chosen) {
    if (!chosen.empty())
        return {chosen};
    const std::filesystem::path own = ownFolder();
    if (own.empty())
        return {};  // never the folder that the program happens to run in
    std::vector<std::filesystem::path> folders{
        own / KESTRELID_RESOURCES,
        (own / KESTRELID_LIBRARIES_FROM_PROGRAM / KESTRELID_RESOURCES).lexically_normal()};
#ifdef KESTRELID_BUILD_RESOURCES
    folders.emplace_back(KESTRELID_BUILD_RESOURCES);
#endif
    return folders;
}

}  // namespace kestrelid::defaults
