// A file as UTF-8, a piece at a time, with the place of each piece in the file.
#pragma once

#include "kt_try.hpp"

#include <cstdint>
#include <cstdio>
#include <string>
#include <string_view>

enum class client_encoding : uint8_t { bytes, utf_8, utf_16le, utf_16be, other };

class client_input {
  public:
    client_input() = default;
    ~client_input();
    client_input(const client_input &) = delete;
    client_input &operator=(const client_input &) = delete;

    // Opens a file. The encoding is a name that iconv knows, "bytes" for none, or empty: then the mark at the beginning
    // decides, and without one it is UTF-8.
    void open(KT_context *ctx, const char *path, const std::string &encoding);

    // Takes what is fed to it in the place of a file: bytes that are taken as they are.
    void open_fed()
    {
        encoding_ = shown_encoding_ = client_encoding::bytes;
    }
    void feed(std::string_view bytes, bool is_end);
    bool is_fed() const noexcept
    {
        return !file_;
    }

    // What was read and not yet taken, and whether the file ends with it.
    std::string_view data() const noexcept
    {
        return std::string_view(buffer_).substr(taken_);
    }
    bool is_all() const noexcept
    {
        return is_all_;
    }
    // Reads more to the end of the data.
    void fill(KT_context *ctx);
    // Drops the data up to a size; the rest stays where it is until the next fill.
    void take(size_t size);
    // Goes to a place that was told by position() before.
    void seek(KT_context *ctx, int64_t position, int64_t line);

    // Of the beginning of the data: the byte in the file, and the line, counted from 1.
    int64_t position() const noexcept
    {
        return position_;
    }
    int64_t line();
    int64_t size() const noexcept
    {
        return size_;
    }
    client_encoding encoding() const noexcept
    {
        return encoding_;
    }
    // Whether every second byte of the file's beginning is zero, though it has no mark and is read as UTF-8.
    bool looks_like_utf_16() const noexcept
    {
        return encoding_ != shown_encoding_;
    }
    // Reads such a file from its beginning as what it looks like: for formats in which a zero byte means nothing.
    void read_as_utf_16(KT_context *ctx);
    // The bytes that a piece of the data has in the file.
    std::string raw(std::string_view piece);
    // What comes before the first row of such a file.
    std::string mark() const;

  private:
    void drop_taken();
    size_t raw_size(std::string_view piece);
    void choose_encoding(KT_context *ctx, const std::string &encoding);
    void decode(KT_context *ctx, bool is_end);

    std::FILE *file_ = nullptr;
    client_encoding encoding_ = client_encoding::utf_8;
    bool has_mark_ = false;
    client_encoding shown_encoding_ = client_encoding::utf_8; // by the zeros of a file without a mark
    bool is_all_ = false;
    std::string buffer_;  // UTF-8
    std::string encoded_; // read and not yet decoded
    size_t taken_ = 0;    // of the buffer
    size_t counted_ = 0;  // of the buffer, for lines
    int64_t position_ = 0;
    int64_t line_ = 1;
    int64_t size_ = 0;
    void *decoder_ = nullptr; // of iconv
    void *encoder_ = nullptr;
};
