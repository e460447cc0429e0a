#pragma once

#include <cstddef>
#include <cstdint>

/// Gives a fuzz target one input; called by the fuzzing engine, or by replayMain where there is
/// none. Returns 0; a fault that is found ends the process.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);
