#pragma once

#include "vision/onnx/OnnxSession.h"
#include "vision/onnx/ResourceFolders.h"

#include <filesystem>
#include <memory>
#include <string>
#include <string_view>

struct OrtApi;
struct OrtEnv;

namespace kestrelid::vision {

inline constexpr std::string_view kOnnxLibraryName = "libonnxruntime.so";

// The API level to ask a library of this version for: its own, since the table of functions only
// grows, or that of the headers if the library is newer. 0 if version is not "1.MINOR...".
[[nodiscard]] unsigned onnxApiLevel(std::string_view version);

// ONNX Runtime, loaded while the program runs. Thread: any.
class OnnxRuntime : public std::enable_shared_from_this<OnnxRuntime> {
public:
    using Loaded = Expected<std::shared_ptr<const OnnxRuntime>>;

    // Takes the library from the resource folders, else the system's.
    [[nodiscard]] static Loaded load(const ResourceFolders& resources);

    ~OnnxRuntime();
    OnnxRuntime(const OnnxRuntime&) = delete;
    OnnxRuntime& operator=(const OnnxRuntime&) = delete;

    [[nodiscard]] const std::string& version() const noexcept { return version_; }
    [[nodiscard]] const std::filesystem::path& library() const noexcept { return library_; }

    // threads: those that share the work of one run, the calling one included.
    [[nodiscard]] Expected<OnnxSession> open(const std::filesystem::path& model, int threads) const;

private:
    friend class OnnxSession;

    OnnxRuntime() = default;
    [[nodiscard]] static Loaded start(void* handle);

    const OrtApi* api_ = nullptr;
    OrtEnv* environment_ = nullptr;
    std::string version_;
    std::filesystem::path library_;
};

}  // namespace kestrelid::vision
