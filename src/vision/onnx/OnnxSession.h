#pragma once

#include "vision/onnx/Failure.h"

#include <cstdint>
#include <memory>
#include <span>
#include <stop_token>
#include <string>
#include <vector>

struct OrtSession;
struct OrtValue;

namespace kestrelid::vision {

class OnnxRuntime;

// Input of a run; the caller keeps the values.
struct OnnxInput {
    std::span<const float> values;
    std::span<const std::int64_t> shape;  // its product is the number of values
};

// An output of a run, in the memory of the runtime that made it.
class OnnxTensor {
public:
    [[nodiscard]] std::span<const float> values() const noexcept { return values_; }
    [[nodiscard]] const std::vector<std::int64_t>& shape() const noexcept { return shape_; }

private:
    friend class OnnxSession;

    std::shared_ptr<OrtValue> value_;
    std::span<const float> values_;
    std::vector<std::int64_t> shape_;
};

// A model ready to run. Thread: any, several runs at once.
class OnnxSession {
public:
    // One input for each of the model's, in its order; so are the outputs. A run that is told to
    // stop fails at the network's next node.
    [[nodiscard]] Expected<std::vector<OnnxTensor>> run(std::span<const OnnxInput> inputs,
                                                        const std::stop_token& stop = {}) const;

private:
    friend class OnnxRuntime;

    OnnxSession() = default;
    [[nodiscard]] static Expected<OnnxSession> open(std::shared_ptr<const OnnxRuntime> runtime,
                                                    const std::string& model, int threads);

    std::shared_ptr<const OnnxRuntime> runtime_;
    std::shared_ptr<OrtSession> session_;
    std::vector<std::string> inputNames_;
    std::vector<std::string> outputNames_;
};

}  // namespace kestrelid::vision
