#pragma once
/// Mutations of JSON that leave it JSON: a reader that refuses most of what chance makes of a
/// document would never be seen behind its parser.

#include <cstddef>
#include <cstdint>

namespace fuzz {

/// For `LLVMFuzzerCustomMutator`, with its arguments. What is no JSON, and every third input, is
/// left to libFuzzer.
size_t mutate_json(uint8_t *bytes, size_t size, size_t most, unsigned seed);

} // namespace fuzz
