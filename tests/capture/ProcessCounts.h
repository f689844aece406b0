#pragma once

namespace kestrelid::test {

// Of this process.
[[nodiscard]] int threadCount();
[[nodiscard]] int descriptorCount();
[[nodiscard]] long residentKilobytes();

}  // namespace kestrelid::test
