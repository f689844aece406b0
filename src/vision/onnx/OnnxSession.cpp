#include "vision/onnx/OnnxSession.h"

#include "base/ExitGate.h"
#include "vision/onnx/OnnxRuntime.h"
#include "vision/onnx/OnnxStatus.h"

#include <algorithm>
#include <utility>

namespace kestrelid::vision {
namespace {

// These move turns of layout to where they hold whole numbers; at the blocked layout's edges, where
// the recogniser has them, they cost nothing. Names that the runtime does not know it ignores.
constexpr auto kMovingTurns =
    "QDQPropagationTransformer;TransposeOptimizer;TransposeOptimizer_CPUExecutionProvider";

// Settings for many pictures of many sizes one after another: a memory pattern is planned again for
// each size, and spinning threads take the cores from other requests. The arena stays on: threads
// share it, where the heap would keep a large picture's memory once for every thread.
std::optional<Failure> configure(const OrtApi& api, OrtSessionOptions& options, int threads) {
    if (auto error = onnxError(api, api.SetIntraOpNumThreads(&options, std::max(threads, 1))))
        return error;
    if (auto error = onnxError(api, api.SetInterOpNumThreads(&options, 1)))
        return error;
    if (auto error = onnxError(api, api.SetSessionExecutionMode(&options, ORT_SEQUENTIAL)))
        return error;
    if (auto error = onnxError(api, api.SetSessionGraphOptimizationLevel(&options, ORT_ENABLE_ALL)))
        return error;
    if (auto error = onnxError(api, api.DisableMemPattern(&options)))
        return error;
    if (auto error =
            onnxError(api, api.AddSessionConfigEntry(&options, "session.use_env_allocators", "1")))
        return error;
    if (auto error = onnxError(
            api, api.AddSessionConfigEntry(&options, "session.intra_op.allow_spinning", "0")))
        return error;
    return onnxError(api, api.AddSessionConfigEntry(
                              &options, "optimization.disable_specified_optimizers", kMovingTurns));
}

using NameCall = OrtStatus* (*)(const OrtSession*, std::size_t, OrtAllocator*, char**);

std::optional<Failure> readNames(const OrtApi& api, const OrtSession& session, std::size_t count,
                                 NameCall call, std::vector<std::string>& names) {
    OrtAllocator* allocator = nullptr;
    if (auto error = onnxError(api, api.GetAllocatorWithDefaultOptions(&allocator), allocator))
        return error;
    for (std::size_t index = 0; index < count; ++index) {
        char* name = nullptr;
        if (auto error = onnxError(api, call(&session, index, allocator, &name), name))
            return error;
        const auto free = [allocator](char* old) { allocator->Free(allocator, old); };
        const std::unique_ptr<char, decltype(free)> owner(name, free);
        names.emplace_back(name);
    }
    return std::nullopt;
}

std::optional<Failure> readShape(const OrtApi& api, const OrtValue& value,
                                 std::vector<std::int64_t>& shape) {
    OrtTensorTypeAndShapeInfo* raw = nullptr;
    if (auto error = onnxError(api, api.GetTensorTypeAndShape(&value, &raw), raw))
        return error;
    const std::unique_ptr<OrtTensorTypeAndShapeInfo, decltype(api.ReleaseTensorTypeAndShapeInfo)>
        typeAndShape(raw, api.ReleaseTensorTypeAndShapeInfo);
    ONNXTensorElementDataType type{};
    std::size_t dimensions = 0;
    if (auto error = onnxError(api, api.GetTensorElementType(raw, &type)))
        return error;
    if (type != ONNX_TENSOR_ELEMENT_DATA_TYPE_FLOAT)
        return failure("ONNX Runtime: the model gives something else than float values");
    if (auto error = onnxError(api, api.GetDimensionsCount(raw, &dimensions)))
        return error;
    shape.resize(dimensions);
    return onnxError(api, api.GetDimensions(raw, shape.data(), dimensions));
}

std::vector<const char*> pointers(const std::vector<std::string>& names) {
    std::vector<const char*> result;
    for (const auto& name : names)
        result.push_back(name.c_str());
    return result;
}

}  // namespace

Expected<OnnxSession> OnnxSession::open(std::shared_ptr<const OnnxRuntime> runtime,
                                        const std::string& model, int threads) {
    const base::ExitGate::Pass pass;
    if (!pass)
        return failure(base::kEnding);
    const OrtApi& api = *runtime->api_;
    OrtSessionOptions* rawOptions = nullptr;
    if (auto error = onnxError(api, api.CreateSessionOptions(&rawOptions), rawOptions))
        return *error;
    const std::unique_ptr<OrtSessionOptions, decltype(api.ReleaseSessionOptions)> options(
        rawOptions, api.ReleaseSessionOptions);
    if (auto error = configure(api, *options, threads))
        return *error;

    OrtSession* rawSession = nullptr;
    if (auto error = onnxError(
            api,
            api.CreateSession(runtime->environment_, model.c_str(), options.get(), &rawSession),
            rawSession))
        return failure(error->value().description + " (" + model + ")");
    OnnxSession session;
    // The environment must outlive its sessions, so each holds the runtime.
    session.session_ = std::shared_ptr<OrtSession>(
        rawSession, [runtime](OrtSession* old) { runtime->api_->ReleaseSession(old); });
    session.runtime_ = std::move(runtime);

    std::size_t inputs = 0;
    std::size_t outputs = 0;
    if (auto error = onnxError(api, api.SessionGetInputCount(rawSession, &inputs)))
        return *error;
    if (auto error = onnxError(api, api.SessionGetOutputCount(rawSession, &outputs)))
        return *error;
    if (auto error =
            readNames(api, *rawSession, inputs, api.SessionGetInputName, session.inputNames_))
        return *error;
    if (auto error =
            readNames(api, *rawSession, outputs, api.SessionGetOutputName, session.outputNames_))
        return *error;
    return session;
}

Expected<std::vector<OnnxTensor>> OnnxSession::run(std::span<const OnnxInput> inputs,
                                                   const std::stop_token& stop) const {
    const OrtApi& api = *runtime_->api_;
    OrtRunOptions* rawOptions = nullptr;
    if (auto error = onnxError(api, api.CreateRunOptions(&rawOptions), rawOptions))
        return *error;
    const std::unique_ptr<OrtRunOptions, decltype(api.ReleaseRunOptions)> options(
        rawOptions, api.ReleaseRunOptions);
    // A run that is told to terminate stops at the network's next node.
    const auto terminate = [&] { (void)onnxError(api, api.RunOptionsSetTerminate(rawOptions)); };
    const base::ExitGate::Pass pass(terminate);
    if (!pass)
        return failure(base::kEnding);
    const std::stop_callback stopping(stop, terminate);
    if (inputs.size() != inputNames_.size())
        return failure("ONNX Runtime: the model takes another number of inputs");
    const auto owned = [this](OrtValue* value) {
        return std::shared_ptr<OrtValue>(
            value, [runtime = runtime_](OrtValue* old) { runtime->api_->ReleaseValue(old); });
    };

    OrtMemoryInfo* rawMemory = nullptr;
    if (auto error = onnxError(
            api, api.CreateCpuMemoryInfo(OrtDeviceAllocator, OrtMemTypeDefault, &rawMemory),
            rawMemory))
        return *error;
    const std::unique_ptr<OrtMemoryInfo, decltype(api.ReleaseMemoryInfo)> memory(
        rawMemory, api.ReleaseMemoryInfo);
    std::vector<std::shared_ptr<OrtValue>> values;
    std::vector<const OrtValue*> rawInputs;
    for (const auto& input : inputs) {
        OrtValue* value = nullptr;
        // The call takes writable memory for tensors of any use; inputs are only read.
        if (auto error =
                onnxError(api,
                          api.CreateTensorWithDataAsOrtValue(
                              memory.get(), const_cast<float*>(input.values.data()),
                              input.values.size_bytes(), input.shape.data(), input.shape.size(),
                              ONNX_TENSOR_ELEMENT_DATA_TYPE_FLOAT, &value),
                          value))
            return *error;
        values.push_back(owned(value));
        rawInputs.push_back(value);
    }

    const auto inputNames = pointers(inputNames_);
    const auto outputNames = pointers(outputNames_);
    std::vector<OrtValue*> rawOutputs(outputNames.size(), nullptr);
    std::vector<OnnxTensor> outputs(rawOutputs.size());
    OrtStatus* const status =
        api.Run(session_.get(), rawOptions, inputNames.data(), rawInputs.data(), rawInputs.size(),
                outputNames.data(), outputNames.size(), rawOutputs.data());
    // All of them owned before anything else is asked for memory.
    const auto releaseAll = [&api](std::vector<OrtValue*>* rest) {
        std::ranges::for_each(*rest, api.ReleaseValue);
    };
    const std::unique_ptr<std::vector<OrtValue*>, decltype(releaseAll)> owner(&rawOutputs,
                                                                              releaseAll);
    if (auto refusal = onnxError(api, status))
        return *refusal;
    if (std::ranges::count(rawOutputs, nullptr) > 0)
        return failure("ONNX Runtime: out of memory");
    for (std::size_t index = 0; index < outputs.size(); ++index)
        outputs[index].value_ = owned(std::exchange(rawOutputs[index], nullptr));
    for (auto& output : outputs) {
        if (auto error = readShape(api, *output.value_, output.shape_))
            return *error;
        void* memoryOfOutput = nullptr;
        if (auto error =
                onnxError(api, api.GetTensorMutableData(output.value_.get(), &memoryOfOutput)))
            return *error;
        std::size_t count = 1;
        for (const std::int64_t extent : output.shape_)
            count *= static_cast<std::size_t>(extent);
        output.values_ = {static_cast<const float*>(memoryOfOutput), count};
    }
    return outputs;
}

}  // namespace kestrelid::vision
