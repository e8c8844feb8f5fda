// How the searching programs change an input whose first line is a name: mostly behind that line.

#include <algorithm>
#include <cstdint>
#include <cstring>

extern "C" size_t LLVMFuzzerMutate(uint8_t *data, size_t size, size_t maxSize);
extern "C" size_t LLVMFuzzerCustomMutator(uint8_t *data, size_t size, size_t maxSize, unsigned seed);

extern "C" size_t LLVMFuzzerCustomMutator(uint8_t *data, size_t size, size_t maxSize, unsigned seed)
{
    const void *end = memchr(data, '\n', size);
    size_t head = end == nullptr ? 0 : static_cast<size_t>(static_cast<const uint8_t *>(end) + 1 - data);

    if (seed % 32 == 0)
        head = 0;
    return head + LLVMFuzzerMutate(data + head, size - head, maxSize - head);
}
