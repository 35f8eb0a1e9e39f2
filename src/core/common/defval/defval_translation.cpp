// Host defaults become SQLite defaults.
//
// A default is peeled down to one literal, if it is one, and then the column's abstract type decides what becomes of
// it, or of the call or hexadecimal constant that is there instead. What cannot be carried over gives no default.
// A NULL literal comes before any type.

#include "defval/defval_translation.hpp"
#include "defval/defval_peel.hpp"
#include "defval/defval_trial.hpp"
#include "document/tov_parse_defin_private.hpp"

#include <cstring>
#include <iterator>

namespace {

// What a rule decides about: the text, and the literal peeled from it, which a rule may move to the result.
struct host_default {
    const tov_abstract_type *type; // null for a name of no type
    uint32_t scale;
    const char *text;
    kt_owned_text literal; // null when the text is not a literal
};

// Leaves the result null for no default, otherwise gives it a new text.
using defval_rule = void (*)(KT_context *ctx, host_default &defval, char **result) noexcept;

} // namespace

void kt_copy_alloc_buf_len(KT_context *ctx, const char *bytes, uint32_t length, char **copy) noexcept
{
    void *block = nullptr;
    KT_TRY(_kt_malloc(ctx, size_t{length} + 1, &block));
    char *text = static_cast<char *>(block);
    std::memcpy(text, bytes, length);
    text[length] = '\0';
    *copy = text;
}

void _tov_parse_mssql_defval_func_no_args(KT_context *ctx, const char *host_text, char **name) noexcept
{
    std::string_view function;
    if (!_tov_peel_call(host_text, &function))
        return;
    if (!function.data()) {
        *name = nullptr;
        return;
    }
    KT_TRY(kt_copy_alloc_buf_len(ctx, function.data(), static_cast<uint32_t>(function.size()), name));
}

// Gives the result the text `sql` when the default calls one of two functions, in any letter case.
static void my_translate_call(KT_context *ctx, const char *host_text, const char *function, const char *alternative,
                              const char *sql, char **result) noexcept
{
    kt_owned_text name{ctx};
    KT_TRY(_tov_parse_mssql_defval_func_no_args(ctx, host_text, name.out()));
    if (name && (KT_stricmp(name, function) == 0 || KT_stricmp(name, alternative) == 0))
        KT_TRY(KT_strdup(ctx, sql, result));
}

static void my_scaled(KT_context *ctx, const char *literal, uint32_t scale, char **result) noexcept
{
    int64_t units = 0;
    KT_TRY(tov_convert_decimal_constant_to_scaled_integer(ctx, literal, scale, &units));
    char digits[21];
    KT_TRY(KT_strdup(ctx, KT_int64_to_sz(units, digits), result));
}

static void my_try_constant(KT_context *ctx, host_default &defval, char **result) noexcept
{
    KT_bool ok = 0;
    KT_TRY(_tov_is_valid_constant(ctx, defval.type->name, defval.literal, &ok));
    if (ok)
        defval.literal.move_to(result);
}

// The rules. Each is entered with a null result.

static void my_fix_never(KT_context *, host_default &, char **) noexcept
{
}

static void my_fix_any_literal(KT_context *, host_default &defval, char **result) noexcept
{
    defval.literal.move_to(result);
}

static void my_fix_money(KT_context *ctx, host_default &defval, char **result) noexcept
{
    constexpr uint32_t money_scale = 4;
    if (defval.literal)
        KT_TRY(my_scaled(ctx, defval.literal, money_scale, result));
}

static void my_fix_decimal(KT_context *ctx, host_default &defval, char **result) noexcept
{
    if (defval.literal)
        KT_TRY(my_scaled(ctx, defval.literal, defval.scale, result));
}

// A literal GUID would be text, while the column holds 16 bytes.
static void my_fix_guid(KT_context *ctx, host_default &defval, char **result) noexcept
{
    if (!defval.literal)
        KT_TRY(my_translate_call(ctx, defval.text, "NEWID", "NEWSEQUENTIALID", "(randomblob(16))", result));
}

// Only the UTC clocks mean what SQLite's 'now' means.
static void my_fix_clock(KT_context *ctx, host_default &defval, const char *now, char **result) noexcept
{
    if (defval.literal)
        KT_TRY(my_try_constant(ctx, defval, result));
    else
        KT_TRY(my_translate_call(ctx, defval.text, "GETUTCDATE", "SYSUTCDATETIME", now, result));
}

static void my_fix_date(KT_context *ctx, host_default &defval, char **result) noexcept
{
    KT_TRY(my_fix_clock(ctx, defval, "(date('now'))", result));
}

static void my_fix_time(KT_context *ctx, host_default &defval, char **result) noexcept
{
    KT_TRY(my_fix_clock(ctx, defval, "(time('now'))", result));
}

static void my_fix_datetime(KT_context *ctx, host_default &defval, char **result) noexcept
{
    KT_TRY(my_fix_clock(ctx, defval, "(datetime('now'))", result));
}

static void my_fix_real(KT_context *ctx, host_default &defval, char **result) noexcept
{
    if (defval.literal)
        KT_TRY(my_try_constant(ctx, defval, result));
}

static void my_fix_integer(KT_context *ctx, host_default &defval, char **result) noexcept
{
    if (!defval.literal)
        return;
    const tov_abstract_type &type = *defval.type;
    KT_bool ok = 0;
    KT_TRY(_tov_int_default_valid(ctx, defval.literal, type.name, type.low, type.high, &ok));
    if (ok)
        defval.literal.move_to(result);
}

// The bit that a refused literal stands for, if SQLite evaluates it to one of the host's words for a truth value.
// Otherwise the refusal, which the context holds at entry, stands, even when the evaluation itself fails.
static void my_fix_refused_bit(KT_context *ctx, const char *literal, char **result) noexcept
{
    kt_owned_text query{ctx};
    *query.out() = KT_mprintf("SELECT typeof(%s), (%s)\n", literal, literal);
    if (!query)
        KT_FAIL_GENERIC(KT_ERR_OUT_OF_MEMORY);
    const char *bit = nullptr;
    KT_context__push_level(ctx);
    _tov_read_truth(ctx, query, &bit);
    KT_context__pop_level(ctx);
    if (!bit) {
        kt_add_frame(ctx, KT_HERE, __LINE__);
        return;
    }
    KT_context__err_reset(ctx);
    KT_TRY(KT_strdup(ctx, bit, result));
}

static void my_fix_bit(KT_context *ctx, host_default &defval, char **result) noexcept
{
    my_fix_integer(ctx, defval, result);
    if (!kt_has_err(ctx))
        return;
    my_fix_refused_bit(ctx, defval.literal, result);
    kt_failed_at(ctx, KT_HERE, __LINE__);
}

static void my_fix_blob(KT_context *ctx, host_default &defval, char **result) noexcept
{
    if (defval.literal)
        return;
    const std::string_view digits = _tov_peel_hex_digits(defval.text);
    if (!digits.data())
        return;
    *result = KT_mprintf("x'%.*s'", static_cast<int>(digits.size()), digits.data());
    if (!*result)
        KT_FAIL_GENERIC(KT_ERR_OUT_OF_MEMORY);
}

// By kind of type. Text columns keep any literal, and so does a type that is not known.
static constexpr defval_rule my_rules[] = {
    /* identity */ my_fix_never,
    /* integer */ my_fix_integer,
    /* bit */ my_fix_bit,
    /* real */ my_fix_real,
    /* decimal */ my_fix_decimal,
    /* money */ my_fix_money,
    /* date */ my_fix_date,
    /* time */ my_fix_time,
    /* datetime */ my_fix_datetime,
    /* text */ my_fix_any_literal,
    /* blob */ my_fix_blob,
    /* guid */ my_fix_guid,
};
static_assert(std::size(my_rules) == TOV_KIND_GUID + 1);

static defval_rule my_find_rule(const tov_abstract_type *type) noexcept
{
    return type ? my_rules[type->kind] : my_fix_any_literal;
}

void tov_fix_mssql_defval(KT_context *ctx, const char *abstract_type, uint32_t scale, const char *host_text,
                          char **result) noexcept
{
    host_default defval{tov_find_abstract_type(abstract_type), scale, host_text, kt_owned_text{ctx}};
    const std::string_view literal = _tov_peel_literal(host_text);
    if (literal.data())
        KT_TRY(kt_copy_alloc_buf_len(ctx, literal.data(), static_cast<uint32_t>(literal.size()), defval.literal.out()));
    if (defval.literal && KT_stricmp(defval.literal, "NULL") == 0) {
        defval.literal.move_to(result);
        return;
    }
    char *translated = nullptr;
    KT_TRY(my_find_rule(defval.type)(ctx, defval, &translated));
    *result = translated;
}
