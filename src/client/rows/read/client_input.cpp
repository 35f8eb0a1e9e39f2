// UTF-8 is read straight into the buffer; anything else goes through a second one.
//
// A piece of the data says how many bytes it has in the file by itself: UTF-16 has two for each unit, and of any other
// encoding the piece is encoded again. So no map of places has to be kept.
#include "rows/read/client_input.hpp"

#include "kt_folded.hpp"
#include "rows/convert/client_utf8.hpp"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <iconv.h>

#define KT_HERE "src/client/rows/read/client_input"

static constexpr size_t first_chunk = size_t{256} * 1024;
static constexpr std::string_view utf_8_mark = "\xEF\xBB\xBF";
static constexpr std::string_view utf_16le_mark = "\xFF\xFE";
static constexpr std::string_view utf_16be_mark = "\xFE\xFF";

static const iconv_t no_iconv = reinterpret_cast<iconv_t>(-1); // NOLINT(performance-no-int-to-ptr)

client_input::~client_input()
{
    if (file_)
        std::fclose(file_);
    if (decoder_)
        iconv_close(decoder_);
    if (encoder_)
        iconv_close(encoder_);
}

void client_input::choose_encoding(KT_context *ctx, const std::string &encoding)
{
    if (encoding == "bytes") {
        encoding_ = client_encoding::bytes;
    } else if (kt_equal_folded(encoding, "utf-8") || kt_equal_folded(encoding, "utf8")) {
        encoding_ = client_encoding::utf_8;
    } else if (kt_equal_folded(encoding, "utf-16le") || kt_equal_folded(encoding, "utf-16") ||
               kt_equal_folded(encoding, "utf16")) {
        encoding_ = client_encoding::utf_16le;
    } else if (kt_equal_folded(encoding, "utf-16be")) {
        encoding_ = client_encoding::utf_16be;
    } else {
        const iconv_t decoder = iconv_open("UTF-8", encoding.c_str());
        const iconv_t encoder = iconv_open(encoding.c_str(), "UTF-8");
        decoder_ = decoder == no_iconv ? nullptr : decoder;
        encoder_ = encoder == no_iconv ? nullptr : encoder;
        encoding_ = client_encoding::other;
        if (!decoder_ || !encoder_)
            KT_FAIL(KT_ERR_UNEXPECTED_VALUE, "no encoding is called \"%s\"", encoding.c_str());
    }
}

// The encoding that zeros at every second byte show, as in UTF-16 where most characters are ASCII.
static client_encoding my_encoding_of_zeros(std::string_view bytes) noexcept
{
    const size_t pairs = std::min<size_t>(bytes.size(), 4096) / 2;
    size_t low_first = 0, high_first = 0;
    for (size_t n = 0; n < pairs; n++) {
        low_first += bytes[2 * n] != '\0' && bytes[2 * n + 1] == '\0' ? 1U : 0U;
        high_first += bytes[2 * n] == '\0' && bytes[2 * n + 1] != '\0' ? 1U : 0U;
    }
    if (low_first * 10 > pairs * 7)
        return client_encoding::utf_16le;
    return high_first * 10 > pairs * 7 ? client_encoding::utf_16be : client_encoding::utf_8;
}

void client_input::open(KT_context *ctx, const char *path, const std::string &encoding)
{
    file_ = std::fopen(path, "rbe");
    if (!file_ || std::fseek(file_, 0, SEEK_END) != 0)
        KT_FAIL(KT_ERR_NOT_FOUND, "%s: %s", path, std::strerror(errno));
    size_ = std::ftell(file_);
    std::rewind(file_);
    char head[4096] = {};
    const std::string_view bytes(head, std::fread(head, 1, sizeof head, file_));
    if (!encoding.empty())
        KT_TRY(choose_encoding(ctx, encoding));
    else if (bytes.starts_with(utf_16le_mark))
        encoding_ = client_encoding::utf_16le;
    else if (bytes.starts_with(utf_16be_mark))
        encoding_ = client_encoding::utf_16be;
    has_mark_ = bytes.starts_with(mark()) && !mark().empty();
    shown_encoding_ = encoding_ == client_encoding::utf_8 ? my_encoding_of_zeros(bytes) : encoding_;
    const auto start = static_cast<int64_t>(has_mark_ ? mark().size() : 0);
    KT_TRY(seek(ctx, start, 1));
}

void client_input::read_as_utf_16(KT_context *ctx)
{
    encoding_ = shown_encoding_;
    KT_TRY(seek(ctx, 0, 1));
}

std::string client_input::mark() const
{
    switch (encoding_) {
    case client_encoding::utf_8:
        return std::string(utf_8_mark);
    case client_encoding::utf_16le:
        return std::string(utf_16le_mark);
    case client_encoding::utf_16be:
        return std::string(utf_16be_mark);
    default:
        return "";
    }
}

void client_input::seek(KT_context *ctx, int64_t position, int64_t line)
{
    if (std::fseek(file_, static_cast<long>(position), SEEK_SET) != 0)
        KT_FAIL(KT_ERR_NOT_FOUND, "the file cannot be read from byte %lld on", static_cast<long long>(position));
    buffer_.clear();
    encoded_.clear();
    taken_ = counted_ = 0;
    position_ = position;
    line_ = line;
    is_all_ = false;
    KT_TRY(fill(ctx));
}

static void my_swap_pairs(std::string &bytes)
{
    for (size_t n = 0; n + 1 < bytes.size(); n += 2)
        std::swap(bytes[n], bytes[n + 1]);
}

// How much of some UTF-16 can be decoded before more is there: whole units, and no half of a pair.
static size_t my_whole_units(std::string_view utf16) noexcept
{
    size_t size = utf16.size() / 2 * 2;
    if (size >= 2 && (static_cast<unsigned char>(utf16[size - 1]) & 0xFC) == 0xD8)
        size -= 2;
    return size;
}

void client_input::decode(KT_context *ctx, bool is_end)
{
    if (encoding_ == client_encoding::other) {
        std::string room(encoded_.size() * 4 + 16, '\0');
        char *from = encoded_.data();
        char *to = room.data();
        size_t left = encoded_.size();
        size_t free = room.size();
        const size_t result = iconv(decoder_, &from, &left, &to, &free);
        const bool is_cut = result == static_cast<size_t>(-1) && errno == EINVAL && !is_end;
        if (result == static_cast<size_t>(-1) && !is_cut)
            KT_FAIL(KT_ERR_BAD_VALUE, "byte %lld is not of the file's encoding",
                    static_cast<long long>(std::ftell(file_) - static_cast<long>(left)));
        buffer_.append(room, 0, room.size() - free);
        encoded_.erase(0, encoded_.size() - left);
        return;
    }
    const size_t whole = is_end ? encoded_.size() : my_whole_units(encoded_);
    std::string units = encoded_.substr(0, whole);
    encoded_.erase(0, whole);
    if (is_end && units.size() % 2 != 0) // a byte that is half a unit is shown as what it cannot be
        units.append("\xD8");
    client_append_utf16(buffer_, units);
}

void client_input::drop_taken()
{
    line();
    buffer_.erase(0, taken_);
    counted_ -= taken_;
    taken_ = 0;
}

void client_input::feed(std::string_view bytes, bool is_end)
{
    drop_taken();
    buffer_ += bytes;
    is_all_ = is_end;
}

void client_input::fill(KT_context *ctx)
{
    drop_taken();
    const bool is_plain = encoding_ == client_encoding::utf_8 || encoding_ == client_encoding::bytes;
    const size_t chunk = std::max(first_chunk, buffer_.size());
    std::string &into = is_plain ? buffer_ : encoded_;
    const size_t before = into.size();
    into.resize(before + chunk);
    const size_t size = std::fread(into.data() + before, 1, chunk, file_);
    into.resize(before + size);
    if (std::ferror(file_))
        KT_FAIL(KT_ERR_NOT_FOUND, "the file cannot be read: %s", std::strerror(errno));
    is_all_ = size < chunk;
    if (is_plain)
        return;
    if (encoding_ == client_encoding::utf_16be) {
        std::string fresh = into.substr(before);
        my_swap_pairs(fresh);
        into.replace(before, fresh.size(), fresh);
    }
    KT_TRY(decode(ctx, is_all_));
}

size_t client_input::raw_size(std::string_view piece)
{
    switch (encoding_) {
    case client_encoding::bytes:
    case client_encoding::utf_8:
        return piece.size();
    case client_encoding::utf_16le:
    case client_encoding::utf_16be:
        return client_count_units(piece) * 2;
    case client_encoding::other:
        return raw(piece).size();
    }
    return 0;
}

std::string client_input::raw(std::string_view piece)
{
    std::string result;
    if (encoding_ == client_encoding::bytes || encoding_ == client_encoding::utf_8) {
        result = piece;
    } else if (encoding_ == client_encoding::other) {
        std::string from_room(piece);
        result.resize(piece.size() * 4 + 16);
        char *from = from_room.data();
        char *to = result.data();
        size_t left = from_room.size();
        size_t free = result.size();
        iconv(encoder_, &from, &left, &to, &free);
        result.resize(result.size() - free);
    } else {
        client_append_as_utf16(result, piece);
        if (encoding_ == client_encoding::utf_16be)
            my_swap_pairs(result);
    }
    return result;
}

void client_input::take(size_t size)
{
    position_ += static_cast<int64_t>(raw_size(data().substr(0, size)));
    taken_ += size;
}

int64_t client_input::line()
{
    if (counted_ < taken_) {
        const auto from = buffer_.begin() + static_cast<std::ptrdiff_t>(counted_);
        const auto to = buffer_.begin() + static_cast<std::ptrdiff_t>(taken_);
        if (encoding_ != client_encoding::bytes) // which have no lines
            line_ += std::count(from, to, '\n');
        counted_ = taken_;
    }
    return line_;
}
