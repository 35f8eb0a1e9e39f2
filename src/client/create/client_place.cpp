// Messages say where in the schema the trouble is, with names shown so that they can disturb nothing.
#include "create/client_place.hpp"

#define KT_HERE "src/client/create/client_place"

static void my_append_place(KT_context *ctx, KT_string *text, const client_place &place) noexcept
{
    KT_TRY(KT_string__append__sz(ctx, text, "table "));
    KT_TRY(KT_string__append__shown(ctx, text, place.tbl));
    if (place.part) {
        KT_TRY(KT_string__append__format(ctx, text, ", %s ", place.part));
        KT_TRY(KT_string__append__shown(ctx, text, place.part_name));
    }
    if (place.detail)
        KT_TRY(KT_string__append__format(ctx, text, ", %s", place.detail));
}

void client_fail_at(KT_context *ctx, const char *file, int32_t line, uint64_t code, const client_place &place,
                    const char *format, ...) noexcept
{
    kt_owned_string where{ctx};
    KT_TRY(KT_string__alloc(ctx, where.out()));
    KT_TRY(my_append_place(ctx, where, place));
    kt_owned_string what{ctx};
    KT_TRY(KT_string__alloc(ctx, what.out()));
    va_list args;
    va_start(args, format);
    KT_string__vsprintf(ctx, what, format, args);
    va_end(args);
    if (kt_failed_at(ctx, KT_HERE, __LINE__))
        return;
    KT_context__err__generic(ctx, code, file, line);
    KT_context__err_set_description(ctx, "%s: %s", KT_string__sz(where), KT_string__sz(what));
}
