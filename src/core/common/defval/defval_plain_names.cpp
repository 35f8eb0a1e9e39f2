// The scanner, the translation and the trials under their plain names, for code that is linked with the static form of
// the library and declares them itself. The library never calls them by these names, so that a program may have
// functions of its own that are called so: this source is linked only where somebody asks for a name in it, and even
// then a definition of the program's own comes first. Hidden from the dynamic linker, for the reason that
// tov_defval.h gives.

#include "defval/defval_chars.hpp"
#include "defval/defval_sqlite.hpp"
#include "defval/defval_tokenizer.hpp"
#include "defval/defval_translation.hpp"
#include "defval/defval_trial.hpp"
#include "document/tov_plain_name.hpp"

extern "C" {

TOV_PLAIN_NAME extern const unsigned char sqlite3CtypeMap[256];
TOV_PLAIN_NAME extern const unsigned char sqlite3UpperToLower[256];
TOV_PLAIN_NAME int sqlite3KeywordCode(const char *text, int n) noexcept;
TOV_PLAIN_NAME int32_t get_token(const char *text, int32_t *code) noexcept;
TOV_PLAIN_NAME int32_t keywordCode(const char *text, int32_t n) noexcept;
TOV_PLAIN_NAME void parse_mssql_defval_func_no_args(KT_context *ctx, const char *host_text, char **name) noexcept;
TOV_PLAIN_NAME void is_valid_constant(KT_context *ctx, const char *abstract_type, const char *literal,
                                      KT_bool *ok) noexcept;
TOV_PLAIN_NAME void int_default_valid(KT_context *ctx, const char *literal, const char *abstract_type, int64_t low,
                                      int64_t high, KT_bool *ok) noexcept;
TOV_PLAIN_NAME void sqlite_fun__exec(KT_context *ctx, const KT_sqlite_functions *fns, sqlite3 *connection,
                                     const char *sql) noexcept;
TOV_PLAIN_NAME void sqlite_fun__execf(KT_context *ctx, const KT_sqlite_functions *fns, sqlite3 *connection,
                                      const char *format, ...) noexcept KT_PRINTF(4, 5);

const unsigned char sqlite3CtypeMap[256] = {TOV_VALUES_256(tov_char_class_of)};

const unsigned char sqlite3UpperToLower[256] = {TOV_VALUES_256(tov_lower_of)};

int sqlite3KeywordCode(const char *text, int n) noexcept
{
    return _tov_find_keyword(text, n);
}

int32_t get_token(const char *text, int32_t *code) noexcept
{
    return _tov_get_token(text, code);
}

int32_t keywordCode(const char *text, int32_t n) noexcept
{
    return _tov_find_keyword(text, n);
}

void parse_mssql_defval_func_no_args(KT_context *ctx, const char *host_text, char **name) noexcept
{
    _tov_parse_mssql_defval_func_no_args(ctx, host_text, name);
}

void is_valid_constant(KT_context *ctx, const char *abstract_type, const char *literal, KT_bool *ok) noexcept
{
    _tov_is_valid_constant(ctx, abstract_type, literal, ok);
}

void int_default_valid(KT_context *ctx, const char *literal, const char *abstract_type, int64_t low, int64_t high,
                       KT_bool *ok) noexcept
{
    _tov_int_default_valid(ctx, literal, abstract_type, low, high, ok);
}

void sqlite_fun__exec(KT_context *ctx, const KT_sqlite_functions *fns, sqlite3 *connection, const char *sql) noexcept
{
    _tov_sqlite__exec(ctx, fns, connection, sql);
}

void sqlite_fun__execf(KT_context *ctx, const KT_sqlite_functions *fns, sqlite3 *connection, const char *format,
                       ...) noexcept
{
    va_list args;
    va_start(args, format);
    _tov_sqlite__execv(ctx, fns, connection, format, args);
    va_end(args);
}

} // extern "C"
