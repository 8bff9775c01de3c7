#pragma once

// Each target defines these two; libFuzzer calls them, and so does the replay
// driver that the test suite runs over the corpora.
#include <cstddef>
#include <cstdint>

extern "C" int LLVMFuzzerInitialize(int *argc, char ***argv);
extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size);
