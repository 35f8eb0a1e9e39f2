// The error context: one error for each nested level.
//
// Most levels never hold an error, so a level is only a number; what is kept is a stack of error records, each with
// the level it belongs to. The record of the current level, if there is one, is always on top. The first records and
// the frames and description texts of ordinary errors lie inside the context, so that running out of memory can be
// reported in full without taking any.
//
// An error for which there is not a record (more levels with errors than the context has room for, and no memory) lives
// in the code alone. It cannot be set aside when a further level is opened, so that level shares it: an error is
// never forgotten.
#include "kt_context.h"
#include "base/kt_memory_private.hpp"

#include <cassert>
#include <cstdarg>
#include <cstddef>
#include <cstdio>
#include <cstring>
#include <new>

namespace {

constexpr uint32_t inline_records = 8;
constexpr uint32_t inline_frames = 32;
constexpr size_t inline_text = 256;

struct stack_frame {
    const char *file;
    int32_t line;
};

struct error_record {
    uint64_t code;
    uint32_t level;
    uint32_t frame_count;
    uint32_t frame_room; // frames that `frames` has place for
    stack_frame *frames; // first_frames or a block
    char *text;          // short_text or a block
    error_record *below;
    stack_frame first_frames[inline_frames];
    char short_text[inline_text];
};

} // namespace

struct KT_context {
    uint64_t code; // of the current level; kt_has_err() reads it as the first member
    uint32_t level;
    uint32_t shared_levels; // levels opened on top of an error that could not be set aside
    uint32_t records;       // on the stack
    error_record *top;
    error_record first_records[inline_records];
};
static_assert(offsetof(KT_context, code) == 0 && sizeof(KT_context::code) == sizeof(uint64_t));

static const char *my_generic_text(uint64_t code)
{
    switch (code) {
    case KT_ERR_NOT_FOUND:
        return "not found";
    case KT_ERR_NULL_ARGUMENT:
        return "a required argument is null";
    case KT_ERR_OUT_OF_MEMORY:
        return "out of memory";
    case KT_ERR_SCHEMA_NOT_SUPPORTED:
        return "the schema is not supported";
    case KT_ERR_UNEXPECTED_VALUE:
        return "unexpected value";
    case KT_ERR_KEY_NOT_FOUND:
        return "no such key";
    case KT_ERR_DUPLICATE_KEY:
        return "the key exists already";
    case KT_ERR_WRONG_TYPE:
        return "the value is of another type";
    case KT_ERR_OUT_OF_RANGE:
        return "position out of range";
    case KT_ERR_BAD_JSON:
        return "malformed JSON text";
    case KT_ERR_BAD_NUMBER:
        return "not a number";
    case KT_ERR_BAD_VALUE:
        return "the value cannot be written";
    case KT_ERR_BORROWED:
        return "the map or list belongs to another one";
    default:
        return code >> 32 == KT_ERR_SQLITE(0) >> 32 ? "SQLite error" : "error";
    }
}

static error_record *my_current_record(const KT_context *ctx)
{
    return ctx->top && ctx->top->level == ctx->level ? ctx->top : nullptr;
}

static void my_release_text(error_record *record)
{
    if (record->text != record->short_text)
        kt_release(record->text);
    record->text = record->short_text;
}

static void my_drop_record(KT_context *ctx)
{
    error_record *record = ctx->top;
    my_release_text(record);
    if (record->frames != record->first_frames)
        kt_release(record->frames);
    ctx->top = record->below;
    if (--ctx->records >= inline_records)
        kt_release(record);
}

static error_record *my_add_record(KT_context *ctx)
{
    void *place = ctx->records < inline_records ? &ctx->first_records[ctx->records] : kt_allocate(sizeof(error_record));
    if (!place)
        return nullptr;
    error_record *record = new (place) error_record;
    record->level = ctx->level;
    record->frame_count = 0;
    record->frame_room = inline_frames;
    record->frames = record->first_frames;
    record->text = record->short_text;
    record->below = ctx->top;
    ctx->top = record;
    ctx->records++;
    return record;
}

// The first `room` - 1 bytes of a text that is longer, without cutting a UTF-8 character in two.
static void my_copy_cut(char *to, size_t room, const char *text)
{
    size_t length = room - 1;
    while (length > 0 && (static_cast<unsigned char>(text[length]) & 0xC0) == 0x80)
        length--;
    std::memcpy(to, text, length);
    to[length] = '\0';
}

// A text of at most inline_text bytes. Like that of my_set_text(), it may be the record's present one or a part of it.
static void my_set_short_text(error_record *record, const char *text, size_t size)
{
    std::memmove(record->short_text, text, size);
    my_release_text(record);
}

static void my_set_text(error_record *record, const char *text)
{
    const size_t size = std::strlen(text) + 1;
    if (size <= inline_text) {
        my_set_short_text(record, text, size);
        return;
    }
    void *block = kt_allocate(size);
    if (!block) {
        char cut[inline_text];
        my_copy_cut(cut, inline_text, text);
        my_set_short_text(record, cut, std::strlen(cut) + 1);
        return;
    }
    std::memcpy(block, text, size);
    my_release_text(record);
    record->text = static_cast<char *>(block);
}

// Past the frames that lie inside, a frame for which there is no memory is left out.
static void my_add_frame(error_record *record, const char *file, int32_t line)
{
    if (record->frame_count == record->frame_room) {
        const size_t size = record->frame_room * sizeof(stack_frame);
        const bool is_inside = record->frames == record->first_frames;
        void *block = is_inside ? kt_allocate(2 * size) : kt_resize(record->frames, size, 2 * size);
        if (!block)
            return;
        if (is_inside)
            std::memcpy(block, record->first_frames, size);
        record->frames = static_cast<stack_frame *>(block);
        record->frame_room *= 2;
    }
    record->frames[record->frame_count++] = {file, line};
}

void KT_context__alloc(KT_context **ctx) noexcept
{
    void *block = kt_allocate(sizeof(KT_context));
    if (!block) {
        *ctx = nullptr;
        return;
    }
    KT_context *made = new (block) KT_context;
    made->code = 0;
    made->level = 0;
    made->shared_levels = 0;
    made->records = 0;
    made->top = nullptr;
    *ctx = made;
}

void KT_context__free(KT_context *ctx) noexcept
{
    if (!ctx)
        return;
    while (ctx->top)
        my_drop_record(ctx);
    kt_release(ctx);
}

void KT_context__err(KT_context *ctx, uint64_t code, const char *file, int32_t line, const char *message) noexcept
{
    assert(code != 0);
    if (ctx->shared_levels > 0)
        return;
    error_record *record = my_current_record(ctx);
    if (!record)
        record = my_add_record(ctx);
    ctx->code = code;
    if (!record)
        return;
    record->code = code;
    record->frame_count = 0;
    my_set_text(record, message ? message : my_generic_text(code));
    my_add_frame(record, file, line);
}

void KT_context__err__generic(KT_context *ctx, uint64_t code, const char *file, int32_t line) noexcept
{
    KT_context__err(ctx, code, file, line, nullptr);
}

void KT_context__err_set_description(KT_context *ctx, const char *format, ...) noexcept
{
    error_record *record = my_current_record(ctx); // none at a level that is shared
    if (!record)
        return;
    // The arguments may point into the present description, so that stays until the new text is made.
    char text[inline_text];
    va_list args;
    va_start(args, format);
    const int length = std::vsnprintf(text, sizeof text, format, args);
    va_end(args);
    if (length < 0)
        return;
    const size_t size = static_cast<size_t>(length) + 1;
    char *block = size > sizeof text ? static_cast<char *>(kt_allocate(size)) : nullptr;
    if (!block) {
        if (size > sizeof text) {
            char cut[inline_text - 1];
            my_copy_cut(cut, sizeof cut, text);
            my_set_text(record, cut);
        } else {
            my_set_text(record, text);
        }
        return;
    }
    va_start(args, format);
    static_cast<void>(std::vsnprintf(block, size, format, args)); // measured above
    va_end(args);
    my_release_text(record);
    record->text = block;
}

void KT_context__err_stackframe_add(KT_context *ctx, const char *file, int32_t line) noexcept
{
    error_record *record = my_current_record(ctx);
    if (record)
        my_add_frame(record, file, line);
}

KT_bool KT_context__has_err(const KT_context *ctx) noexcept
{
    return ctx->code != 0;
}

void KT_context__err_reset(KT_context *ctx) noexcept
{
    if (ctx->shared_levels > 0)
        return;
    if (my_current_record(ctx))
        my_drop_record(ctx);
    ctx->code = 0;
}

void KT_context__push_level(KT_context *ctx) noexcept
{
    if (ctx->code != 0 && !my_current_record(ctx)) {
        ctx->shared_levels++;
        return;
    }
    ctx->level++;
    ctx->code = 0;
}

void KT_context__pop_level(KT_context *ctx) noexcept
{
    if (ctx->shared_levels > 0) {
        ctx->shared_levels--;
        return;
    }
    assert(ctx->level > 0);
    if (my_current_record(ctx))
        my_drop_record(ctx);
    ctx->level--;
    const error_record *record = my_current_record(ctx);
    ctx->code = record ? record->code : 0;
}

uint64_t KT_context__err_code(const KT_context *ctx) noexcept
{
    return ctx->code;
}

const char *KT_context__err_description(const KT_context *ctx) noexcept
{
    if (ctx->code == 0)
        return "";
    const error_record *record = my_current_record(ctx);
    return record ? record->text : my_generic_text(ctx->code);
}

uint32_t KT_context__count_err_stackframes(const KT_context *ctx) noexcept
{
    const error_record *record = my_current_record(ctx);
    return record ? record->frame_count : 0;
}

void KT_context__get_nth_err_stackframe(const KT_context *ctx, uint32_t n, const char **file, int32_t *line) noexcept
{
    const error_record *record = my_current_record(ctx);
    const bool is_there = record && n < record->frame_count;
    *file = is_there ? record->frames[n].file : "";
    *line = is_there ? record->frames[n].line : 0;
}
