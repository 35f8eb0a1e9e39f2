// The state of one reading of a JSON text, shared by the sources of the reader.
#pragma once

#include "base/kt_memory_private.hpp"
#include "tree/kt_tree.hpp"

// A stack whose first elements need no memory of their own.
template <class T, size_t Inline> class kt_reader_stack {
  public:
    kt_reader_stack() noexcept : begin_(inside_), top_(inside_), limit_(inside_ + Inline)
    {
    }
    kt_reader_stack(const kt_reader_stack &) = delete;
    kt_reader_stack &operator=(const kt_reader_stack &) = delete;
    ~kt_reader_stack()
    {
        if (begin_ != inside_)
            kt_release(begin_);
    }

    // A new uninitialised element on top, or null when memory is short.
    T *push() noexcept
    {
        if (top_ == limit_ && !grow()) [[unlikely]]
            return nullptr;
        return top_++;
    }
    T *at(size_t i) noexcept
    {
        return begin_ + i;
    }
    size_t count() const noexcept
    {
        return static_cast<size_t>(top_ - begin_);
    }
    void shrink_to(size_t count) noexcept
    {
        top_ = begin_ + count;
    }

  private:
    bool grow() noexcept
    {
        const size_t count = this->count();
        const size_t size = count * sizeof(T);
        const bool is_inside = begin_ == inside_;
        auto *block = static_cast<T *>(is_inside ? kt_allocate(2 * size) : kt_resize(begin_, size, 2 * size));
        if (!block)
            return false;
        if (is_inside)
            std::memcpy(static_cast<void *>(block), inside_, size);
        begin_ = block;
        top_ = block + count;
        limit_ = block + 2 * count;
        return true;
    }

    T *begin_;
    T *top_;
    T *limit_;
    T inside_[Inline];
};

enum class kt_reader_kind : uint32_t { list, shared_map, private_map };

// A map or list that is open. The keys of a private map are those of its shape, then those on the stack of keys.
struct kt_reader_frame {
    kt_shape *shape;
    uint32_t first_value;
    uint32_t first_key;
    kt_reader_kind kind;
};

struct kt_reader_key {
    kt_packed_key key;
    const char *place; // in the text, for a message
};

struct kt_json_reader {
    const char *text;
    const char *end;
    kt_progress progress; // up to the map or list that closed last
    kt_arena *arena;
    kt_reader_frame frame; // the innermost one; the others are on the stack
    kt_reader_stack<kt_reader_frame, 16> frames;
    kt_reader_stack<KT_variant, 64> values;
    kt_reader_stack<kt_reader_key, 16> keys;
    kt_reader_stack<char, 128> scratch; // a text without its escapes

    // Set by a failure; neither of them when memory is short.
    const char *failed_at;
    const char *expected;
};

// Each piece is read from its first byte and gives the place after it, or null after a failure.

inline const char *kt_reader_fail(kt_json_reader *reader, const char *place, const char *expected) noexcept
{
    reader->failed_at = place;
    reader->expected = expected;
    return nullptr;
}

inline const char *kt_reader_skip_blanks(const char *at) noexcept
{
    while (*at == ' ' || *at == '\n' || *at == '\r' || *at == '\t')
        at++;
    return at;
}

const char *kt_reader_number(kt_json_reader *reader, const char *at, KT_variant *value) noexcept;
// The rest of a text after its opening quote, when it is not short and plain.
const char *kt_reader_long_text(kt_json_reader *reader, const char *at, KT_variant *value) noexcept;
// The same as bytes, which lie in the JSON text or in the scratch stack until the next text is read.
const char *kt_reader_bytes(kt_json_reader *reader, const char *at, const char **bytes, size_t *length) noexcept;
// The rest of a key after its opening quote; takes it up in the innermost frame.
const char *kt_reader_key_text(kt_json_reader *reader, const char *at) noexcept;
// Makes a map or list of the values of the innermost frame; false after a failure.
bool kt_reader_close(kt_json_reader *reader, KT_variant *value) noexcept;
