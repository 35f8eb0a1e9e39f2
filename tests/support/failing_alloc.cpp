// The hook behind kt_failing_alloc. Blocks come from the C library as ever, so that objects made before the sweep may
// grow or be freed in it, and objects that survive it may be freed after it; which blocks are new is kept beside.
#include "failing_alloc.hpp"

#include <cstdlib>
#include <mutex>
#include <unordered_set>

struct kt_failing_alloc::state {
    mode how = mode::once;
    size_t least = 0; // bytes of an allocation that counts
    std::mutex mutex;
    size_t turn = 0;  // the allocation that fails, counted from 1
    size_t count = 0; // allocations since next()
    bool fired = false;
    bool paused = false;
    std::unordered_set<void *> blocks;

    bool is_to_fail(size_t size)
    {
        if (paused || size < least)
            return false;
        count++;
        const bool fails = (how == mode::once && count == turn) || (how == mode::from_there_on && count >= turn);
        fired = fired || fails;
        return fails;
    }
};

static void *allocate(void *data, size_t size)
{
    auto *state = static_cast<kt_failing_alloc::state *>(data);
    const std::lock_guard lock{state->mutex};
    if (state->is_to_fail(size))
        return nullptr;
    void *block = std::malloc(size);
    state->blocks.insert(block);
    return block;
}

static void *resize(void *data, void *block, size_t, size_t new_size)
{
    auto *state = static_cast<kt_failing_alloc::state *>(data);
    const std::lock_guard lock{state->mutex};
    if (state->is_to_fail(new_size))
        return nullptr;
    const bool is_new = state->blocks.erase(block) > 0;
    void *moved = std::realloc(block, new_size);
    if (is_new)
        state->blocks.insert(moved);
    return moved;
}

static void release(void *data, void *block)
{
    auto *state = static_cast<kt_failing_alloc::state *>(data);
    const std::lock_guard lock{state->mutex};
    state->blocks.erase(block);
    std::free(block);
}

kt_failing_alloc::kt_failing_alloc(mode how, size_t least) : state_(new state)
{
    state_->how = how;
    state_->least = least;
    const KT_allocator allocator = {allocate, resize, release, state_};
    KT_memory__set_allocator(&allocator);
}

kt_failing_alloc::~kt_failing_alloc()
{
    KT_memory__set_allocator(nullptr);
    delete state_;
}

bool kt_failing_alloc::next()
{
    const std::lock_guard lock{state_->mutex};
    state_->turn++;
    state_->count = 0;
    state_->fired = false;
    state_->paused = false;
    state_->blocks.clear();
    return true;
}

void kt_failing_alloc::pause()
{
    const std::lock_guard lock{state_->mutex};
    state_->paused = true;
}

bool kt_failing_alloc::fired() const
{
    const std::lock_guard lock{state_->mutex};
    return state_->fired;
}

size_t kt_failing_alloc::leaked() const
{
    const std::lock_guard lock{state_->mutex};
    return state_->blocks.size();
}
