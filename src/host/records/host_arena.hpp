// Memory that is taken in pieces and freed all at once.
//
// The records of a large database take a hundred megabytes and more, and the kernel's work at the first touch of each
// page of 4 KiB is a good part of reading them: chunks grow, and large ones ask for the system's huge pages.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <new>
#include <span>
#include <utility>
#include <vector>

#ifdef __linux__
#include <sys/mman.h>
#endif

class host_arena {
  public:
    host_arena() = default;
    host_arena(const host_arena &) = delete;
    host_arena &operator=(const host_arena &) = delete;

    void *take(size_t size, size_t alignment)
    {
        const size_t padding = -reinterpret_cast<uintptr_t>(end_) & (alignment - 1);
        if (size > room_ || padding > room_ - size)
            return take_from_new_chunk(size);
        char *piece = end_ + padding;
        end_ = piece + size;
        room_ -= size + padding;
        return piece;
    }

  private:
    static constexpr size_t huge_page = size_t{2} << 20;
    struct freer {
        bool is_large = false;
        void operator()(char *chunk) const
        {
            if (is_large)
                operator delete (chunk, std::align_val_t{huge_page});
            else
                operator delete(chunk);
        }
    };

    void *take_from_new_chunk(size_t size)
    {
        size_t chunk = size > next_ ? size : next_;
        const bool is_large = chunk >= huge_page;
        if (is_large)
            chunk = (chunk + huge_page - 1) / huge_page * huge_page;
        void *memory = is_large ? operator new (chunk, std::align_val_t{huge_page}) : operator new(chunk);
        std::unique_ptr<char, freer> owned(static_cast<char *>(memory), freer{is_large});
#ifdef MADV_HUGEPAGE
        if (is_large)
            (void)madvise(memory, chunk, MADV_HUGEPAGE); // a kernel without them does well too
#endif
        if (next_ < 2 * huge_page)
            next_ *= 2;
        end_ = owned.get() + size;
        room_ = chunk - size;
        chunks_.push_back(std::move(owned));
        return memory;
    }

    std::vector<std::unique_ptr<char, freer>> chunks_;
    size_t next_ = 16384; // size of the next chunk
    char *end_ = nullptr;
    size_t room_ = 0;
};

// Lets a container take its memory from an arena, which must outlive it; without one, from the heap.
template <class Value> struct host_arena_allocator {
    using value_type = Value;
    using propagate_on_container_move_assignment = std::true_type;
    using propagate_on_container_swap = std::true_type;

    host_arena *arena = nullptr;

    host_arena_allocator() = default;
    explicit host_arena_allocator(host_arena &from) : arena(&from)
    {
    }
    template <class Other> explicit host_arena_allocator(const host_arena_allocator<Other> &other) : arena(other.arena)
    {
    }
    Value *allocate(size_t count)
    {
        if (!arena)
            return std::allocator<Value>{}.allocate(count);
        return static_cast<Value *>(arena->take(count * sizeof(Value), alignof(Value)));
    }
    void deallocate(Value *values, size_t count)
    {
        if (!arena)
            std::allocator<Value>{}.deallocate(values, count);
    }
    bool operator==(const host_arena_allocator &) const = default;
};

// Records that keep their addresses, and are freed together.
template <class Record> class host_pool {
  public:
    host_pool() = default;
    host_pool(const host_pool &) = delete;
    host_pool &operator=(const host_pool &) = delete;
    ~host_pool()
    {
        for (const std::span<Record> records : chunks_)
            std::destroy(records.begin(), records.end());
    }
    Record *add()
    {
        static constexpr size_t chunk = 64;
        if (chunks_.empty() || used_ == chunk) {
            Record *records = static_cast<Record *>(arena_.take(chunk * sizeof(Record), alignof(Record)));
            std::uninitialized_default_construct_n(records, chunk);
            chunks_.push_back({records, chunk});
            used_ = 0;
        }
        return &chunks_.back()[used_++];
    }

  private:
    host_arena arena_;
    std::vector<std::span<Record>> chunks_;
    size_t used_ = 0; // of the last chunk
};
