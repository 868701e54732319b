#include "Allocations.h"

#include <algorithm>
#include <cstdlib>
#include <malloc.h>
#include <new>

namespace {

struct {
    std::size_t count = 0;
    std::size_t octets = 0;
    std::size_t peak = 0;
    std::size_t failures = 0;
    std::size_t failFrom = ~std::size_t{0}; ///< counts of allocations
    std::size_t failTo = ~std::size_t{0};
} heap;

void* allocate(std::size_t size) noexcept {
    const std::size_t number = heap.count++;
    if (number >= heap.failFrom && number < heap.failTo) {
        ++heap.failures;
        return nullptr;
    }
    void* const memory = std::malloc(std::max<std::size_t>(size, 1));
    heap.octets += malloc_usable_size(memory);
    heap.peak = std::max(heap.peak, heap.octets);
    return memory;
}

void* allocateOrThrow(std::size_t size) {
    void* const memory = allocate(size);
    return memory != nullptr ? memory : throw std::bad_alloc();
}

void release(void* memory) noexcept {
    heap.octets -= malloc_usable_size(memory);
    std::free(memory);
}

} // namespace

namespace allocations {

std::size_t count() {
    return heap.count;
}

std::size_t octets() {
    return heap.octets;
}

std::size_t peak() {
    return heap.peak;
}

void startPeak() {
    heap.peak = heap.octets;
}

std::size_t failures() {
    return heap.failures;
}

Failing::Failing(std::size_t nth, bool lasts) {
    heap.failFrom = heap.count + nth;
    heap.failTo = lasts ? ~std::size_t{0} : heap.failFrom + 1;
}

Failing::~Failing() {
    heap.failFrom = ~std::size_t{0};
}

} // namespace allocations

void* operator new(std::size_t size) {
    return allocateOrThrow(size);
}

void* operator new[](std::size_t size) {
    return allocateOrThrow(size);
}

void* operator new(std::size_t size, const std::nothrow_t& /*tag*/) noexcept {
    return allocate(size);
}

void* operator new[](std::size_t size, const std::nothrow_t& /*tag*/) noexcept {
    return allocate(size);
}

void operator delete(void* memory) noexcept {
    release(memory);
}

void operator delete[](void* memory) noexcept {
    release(memory);
}

void operator delete(void* memory, std::size_t /*size*/) noexcept {
    release(memory);
}

void operator delete[](void* memory, std::size_t /*size*/) noexcept {
    release(memory);
}

void operator delete(void* memory, const std::nothrow_t& /*tag*/) noexcept {
    release(memory);
}

void operator delete[](void* memory, const std::nothrow_t& /*tag*/) noexcept {
    release(memory);
}
