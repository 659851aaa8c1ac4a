#include <atomic>
#include <cstdlib>
#include <new>

std::atomic<std::size_t> s_largestBlock{ 0 };

void* operator new(std::size_t size)
{
    if (size > s_largestBlock) {
        s_largestBlock = size;
    }
    if (void* block = std::malloc(size)) {
        return block;
    }
    throw std::bad_alloc();
}

void operator delete(void* block) noexcept { std::free(block); }

void operator delete(void* block, std::size_t) noexcept { std::free(block); }
