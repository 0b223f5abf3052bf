#include "faults/allocations.h"

#include <malloc.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <new>

namespace tympan::test {

namespace {

struct {
    std::size_t number = 0, seen = 0, liveCount = 0, liveBytes = 0, atPlan = 0, peakBytes = 0;
    bool isArmed = false, onwards = false, hasFailed = false;
    unsigned char filling = 0;
} state;

bool IsToFail()
{
    if (!state.isArmed || state.number == 0)
        return false;
    ++state.seen;
    const bool fails = state.seen == state.number || (state.onwards && state.seen > state.number);
    state.hasFailed |= fails;
    return fails;
}

void* Take(std::size_t size) noexcept
{
    constexpr std::size_t kFilled = 64U << 10U; // of a block, so that large claims cost no time
    // NOLINTNEXTLINE(cppcoreguidelines-no-malloc): operator new itself has nothing else to stand on
    void* const block = IsToFail() ? nullptr : std::malloc(size == 0 ? 1 : size);
    if (block == nullptr)
        return nullptr;
    std::memset(block, state.filling, std::min(size, kFilled));
    ++state.liveCount;
    state.liveBytes += malloc_usable_size(block);
    if (state.isArmed)
        state.peakBytes = std::max(state.peakBytes, state.liveBytes);
    return block;
}

void* TakeOrThrow(std::size_t size)
{
    void* const block = Take(size);
    if (block == nullptr)
        throw std::bad_alloc();
    return block;
}

void Give(void* block) noexcept
{
    if (block == nullptr)
        return;
    --state.liveCount;
    state.liveBytes -= malloc_usable_size(block);
    std::free(block); // NOLINT(cppcoreguidelines-no-malloc): as above
}

} // namespace

void Allocations::Plan(std::size_t number, bool onwards, unsigned char filling)
{
    state.number = number;
    state.seen = 0;
    state.onwards = onwards;
    state.hasFailed = false;
    state.filling = filling;
    state.atPlan = state.peakBytes = state.liveBytes;
}

void Allocations::Recover()
{
    state.number = 0;
}

bool Allocations::HasFailed()
{
    return state.hasFailed;
}

unsigned char Allocations::Filling()
{
    return state.filling;
}

std::size_t Allocations::LiveCount()
{
    return state.liveCount;
}

std::size_t Allocations::PeakBytes()
{
    return state.peakBytes - state.atPlan;
}

AllocationsArmed::AllocationsArmed(bool armed) : before_(state.isArmed)
{
    state.isArmed = armed;
}

AllocationsArmed::~AllocationsArmed()
{
    state.isArmed = before_;
}

} // namespace tympan::test

void* operator new(std::size_t size)
{
    return tympan::test::TakeOrThrow(size);
}
void* operator new[](std::size_t size)
{
    return tympan::test::TakeOrThrow(size);
}
void* operator new(std::size_t size, const std::nothrow_t&) noexcept
{
    return tympan::test::Take(size);
}
void* operator new[](std::size_t size, const std::nothrow_t&) noexcept
{
    return tympan::test::Take(size);
}
void operator delete(void* block) noexcept
{
    tympan::test::Give(block);
}
void operator delete[](void* block) noexcept
{
    tympan::test::Give(block);
}
void operator delete(void* block, std::size_t) noexcept
{
    tympan::test::Give(block);
}
void operator delete[](void* block, std::size_t) noexcept
{
    tympan::test::Give(block);
}
void operator delete(void* block, const std::nothrow_t&) noexcept
{
    tympan::test::Give(block);
}
void operator delete[](void* block, const std::nothrow_t&) noexcept
{
    tympan::test::Give(block);
}
