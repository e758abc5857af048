/// \file
/// \brief Lets the n-th operator new of a call fail, and counts how often it was called.
///
/// Replaces the global operator new: include it in exactly one source file of a test program. Lists keep
/// requests and per-station values in nodes made by operator new; bytes and texts come from malloc.
#ifndef TESTS_FAILING_ALLOCATION_H
#define TESTS_FAILING_ALLOCATION_H

#include <cstddef>
#include <cstdlib>
#include <new>

/// While one exists, operator new fails at call number \a failing (from 0 on; -1: never) and all later ones.
class AllocationWatch
{
public:
    explicit AllocationWatch(int failing)
    {
        failAt = failing;
        calls = 0;
        active = true;
    }
    ~AllocationWatch() { active = false; }
    AllocationWatch(const AllocationWatch&) = delete;
    AllocationWatch& operator=(const AllocationWatch&) = delete;

    /// Calls of operator new under the last watch.
    static int count() { return calls; }

    static void* allocate(std::size_t size)
    {
        if (active && calls++ >= failAt && failAt >= 0)
            throw std::bad_alloc();
        void* const memory = std::malloc(size == 0 ? 1 : size);
        if (memory == nullptr)
            throw std::bad_alloc();
        return memory;
    }

private:
    static inline bool active = false;
    static inline int failAt = -1;
    static inline int calls = 0;
};

void* operator new(std::size_t size)
{
    return AllocationWatch::allocate(size);
}
void* operator new[](std::size_t size)
{
    return AllocationWatch::allocate(size);
}
void* operator new(std::size_t size, const std::nothrow_t&) noexcept
{
    return std::malloc(size == 0 ? 1 : size);
}
void* operator new[](std::size_t size, const std::nothrow_t&) noexcept
{
    return std::malloc(size == 0 ? 1 : size);
}
void operator delete(void* memory) noexcept
{
    std::free(memory);
}
void operator delete[](void* memory) noexcept
{
    std::free(memory);
}
void operator delete(void* memory, std::size_t) noexcept
{
    std::free(memory);
}
void operator delete[](void* memory, std::size_t) noexcept
{
    std::free(memory);
}

#endif
