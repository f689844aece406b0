#include "vision/onnx/OnnxRuntime.h"

#include "base/ExitGate.h"
#include "vision/onnx/OnnxStatus.h"

#include <algorithm>
#include <charconv>
#include <dlfcn.h>

namespace kestrelid::vision {
namespace {

// The oldest that knows operators of version 17, which the text networks are made of. The functions
// called here came with level 11.
constexpr unsigned kOldestApiLevel = 12;

// Debian names the library after its minor version (libonnxruntime1.21), others after the major
// one.
void* openSystemLibrary() {
    const std::string name(kOnnxLibraryName);
    for (const auto& candidate : {name + ".1", name})
        if (void* handle = dlopen(candidate.c_str(), RTLD_NOW | RTLD_LOCAL))
            return handle;
    for (unsigned minor = ORT_API_VERSION; minor >= kOldestApiLevel; --minor)
        if (void* handle =
                dlopen((name + ".1." + std::to_string(minor)).c_str(), RTLD_NOW | RTLD_LOCAL))
            return handle;
    return nullptr;
}

// One arena for all models. An arena of each session's own would hold the largest picture's memory
// once for each model. It doubles when it grows: an arena that grows by what is asked for keeps a
// piece of memory for every size of picture that it has seen, and fits nothing else into it.
std::optional<Failure> shareArena(const OrtApi& api, OrtEnv* environment) {
    OrtMemoryInfo* rawMemory = nullptr;
    if (auto error = onnxError(
            api, api.CreateCpuMemoryInfo(OrtArenaAllocator, OrtMemTypeDefault, &rawMemory),
            rawMemory))
        return error;
    const std::unique_ptr<OrtMemoryInfo, decltype(api.ReleaseMemoryInfo)> memory(
        rawMemory, api.ReleaseMemoryInfo);
    // The library has one environment for the whole process: a second attempt to make one is
    // refused, and shares the arena of the first.
    (void)onnxError(api, api.CreateAndRegisterAllocator(environment, memory.get(), nullptr));
    return std::nullopt;
}

}  // namespace

unsigned onnxApiLevel(std::string_view version) {
    if (!version.starts_with("1."))
        return 0;
    version.remove_prefix(2);
    unsigned minor = 0;
    const auto [end, failure] =
        std::from_chars(version.data(), version.data() + version.size(), minor);
    return failure == std::errc() ? std::min<unsigned>(minor, ORT_API_VERSION) : 0;
}

OnnxRuntime::Loaded OnnxRuntime::load(const ResourceFolders& resources) {
    const base::ExitGate::Pass pass;
    if (!pass)
        return failure(base::kEnding);
    std::string refusal;
    if (const auto path = resources.find(kOnnxLibraryName)) {
        if (void* handle = dlopen(path->c_str(), RTLD_NOW | RTLD_LOCAL))
            return start(handle);
        if (const char* reason = dlerror())
            refusal = reason;
    }
    if (void* handle = openSystemLibrary())
        return start(handle);
    if (!refusal.empty())
        return failure("ONNX Runtime cannot be loaded (" + refusal +
                       "): " + std::string(kRuntimeRemedy));
    return failure(resources.missing(kOnnxLibraryName, kRuntimeRemedy));
}

OnnxRuntime::Loaded OnnxRuntime::start(void* handle) {
    using GetApiBase = const OrtApiBase* (*)();
    const auto getApiBase = reinterpret_cast<GetApiBase>(dlsym(handle, "OrtGetApiBase"));
    Dl_info place{};
    if (!getApiBase || dladdr(reinterpret_cast<const void*>(getApiBase), &place) == 0)
        return failure(std::string(kOnnxLibraryName) +
                       " is not ONNX Runtime: " + std::string(kRuntimeRemedy));

    const std::shared_ptr<OnnxRuntime> runtime(new OnnxRuntime);
    const OrtApiBase& base = *getApiBase();
    runtime->version_ = base.GetVersionString();
    runtime->library_ = place.dli_fname;
    const unsigned level = onnxApiLevel(runtime->version_);
    runtime->api_ = level >= kOldestApiLevel ? base.GetApi(level) : nullptr;
    if (!runtime->api_)
        return failure("ONNX Runtime " + runtime->version_ + " at " + runtime->library_.string() +
                       " is too old: " + std::string(kRuntimeRemedy));

    const OrtApi& api = *runtime->api_;
    // A library must not write to its host's standard error: failures come back as statuses.
    if (auto error = onnxError(
            api, api.CreateEnv(ORT_LOGGING_LEVEL_FATAL, "kestrelid", &runtime->environment_),
            runtime->environment_))
        return *error;
    if (auto error = onnxError(api, api.DisableTelemetryEvents(runtime->environment_)))
        return *error;
    if (auto error = shareArena(api, runtime->environment_))
        return *error;
    base::ExitGate::guard();
    return std::shared_ptr<const OnnxRuntime>(runtime);
}

OnnxRuntime::~OnnxRuntime() {
    if (environment_)
        api_->ReleaseEnv(environment_);
}

Expected<OnnxSession> OnnxRuntime::open(const std::filesystem::path& model, int threads) const {
    return OnnxSession::open(shared_from_this(), model.string(), threads);
}

}  // namespace kestrelid::vision
