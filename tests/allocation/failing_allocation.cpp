// SPDX-License-Identifier: MIT
#include "allocation/failing_allocation.h"

#include <cerrno>
#include <cstdlib>
#include <new>

namespace
{

struct Watch {
    bool active;
    int nth;
    Failing which;
    int calls;
    bool failed;
    long living;
};

thread_local Watch current;

// Counts an allocation. \return whether it has to fail
bool Refuse()
{
    if (!current.active)
        return false;
    ++current.calls;
    const bool later = current.which == Failing::ONE_AND_ALL_LATER && current.calls > current.nth;
    if (current.nth == 0 || (current.calls != current.nth && !later))
        return false;
    current.failed = true;
    errno = ENOMEM;
    return true;
}

void* Counted(void* block)
{
    if (block)
        ++current.living;
    return block;
}

} // namespace

AllocationWatch::AllocationWatch(int nth, Failing which)
{
    current.nth = nth;
    current.which = which;
    current.calls = 0;
    current.failed = false;
    current.active = true;
}

AllocationWatch::~AllocationWatch()
{
    current.active = false;
}

int AllocationWatch::count()
{
    return current.calls;
}

bool AllocationWatch::failed()
{
    return current.failed;
}

long AllocationWatch::livingBlocks()
{
    return current.living;
}

#ifdef PLC_SANITIZED

bool AllocationWatch::coversMalloc()
{
    return false;
}

void* operator new(std::size_t size)
{
    void* const block = Refuse() ? nullptr : Counted(std::malloc(size == 0 ? 1 : size));
    if (!block)
        throw std::bad_alloc();
    return block;
}

void* operator new[](std::size_t size)
{
    return operator new(size);
}

void operator delete(void* block) noexcept
{
    if (block)
        --current.living;
    std::free(block);
}

void operator delete[](void* block) noexcept
{
    operator delete(block);
}

void operator delete(void* block, std::size_t) noexcept
{
    operator delete(block);
}

void operator delete[](void* block, std::size_t) noexcept
{
    operator delete(block);
}

#else

#include <malloc.h>

// The C library's own functions under their second names; the ones below take their place in every module.
// Visible, because libQt5Core and the C++ runtime are to find them.
extern "C" {
void* __libc_malloc(std::size_t size);
void* __libc_calloc(std::size_t count, std::size_t size);
void* __libc_realloc(void* block, std::size_t size);
void __libc_free(void* block);

#define REPLACES_LIBC __attribute__((visibility("default")))

REPLACES_LIBC void* malloc(std::size_t size) noexcept
{
    return Refuse() ? nullptr : Counted(__libc_malloc(size));
}

REPLACES_LIBC void* calloc(std::size_t count, std::size_t size) noexcept
{
    return Refuse() ? nullptr : Counted(__libc_calloc(count, size));
}

REPLACES_LIBC void* realloc(void* block, std::size_t size) noexcept
{
    if (Refuse())
        return nullptr;
    void* const moved = __libc_realloc(block, size);
    return block ? moved : Counted(moved);
}

REPLACES_LIBC void free(void* block) noexcept
{
    if (block)
        --current.living;
    __libc_free(block);
}
}

// Fresh and freed memory holds this byte or its complement, so that nobody gets by with what was there
// before.
static const int perturbed = mallopt(M_PERTURB, 0xA5);

bool AllocationWatch::coversMalloc()
{
    return perturbed == 1;
}

#endif
