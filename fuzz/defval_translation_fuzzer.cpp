// Any host default for any type: a result is SQL that SQLite compiles, a failure leaves the result as it was, and
// saying whether a default is carried over is the same as carrying it over. The first byte picks the type, the second
// is the scale, the rest is the host's text.
#include "defval/defval_translation.hpp"
#include "kt_sqlite_functions.h"
#include "tov_parse_defin.h"

#include <cstdlib>
#include <cstring>
#include <iterator>
#include <string>
#include <string_view>

namespace {

struct fuzzed_type {
    const char *name;
    int32_t code;  // the host's; 0 for none
    bool is_tried; // its literals are tried in a database, which takes its time
    bool is_number_of_units;
};

constexpr fuzzed_type types[] = {
    {"identity", 0, false, false},  {"sint64", 127, true, false},    {"sint32", 56, true, false},
    {"sint16", 52, true, false},    {"uint8", 48, true, false},      {"uint1", 104, true, false},
    {"loose/int", 0, true, false},  {"real8", 62, true, false},      {"real4", 59, true, false},
    {"loose/real", 0, true, false}, {"decimal", 106, false, true},   {"money8", 60, false, true},
    {"money4", 122, false, true},   {"date", 40, true, false},       {"datetime", 42, true, false},
    {"time", 41, true, false},      {"text", 231, false, false},     {"loose/text", 0, false, false},
    {"blob", 165, false, false},    {"loose/blob", 0, false, false}, {"guid", 36, false, false},
    {"host", 0, false, false},
};

void check(bool holds)
{
    if (!holds)
        std::abort();
}

void check_compiles(KT_context *ctx, const char *expression)
{
    static const KT_sqlite_functions *fns = tov__get_sqlite_functions();
    static sqlite3 *connection = [] {
        sqlite3 *opened = nullptr;
        check(fns->open(":memory:", &opened, 6) == 0);
        return opened;
    }();
    KT_string *query = nullptr;
    KT_string__alloc(ctx, &query);
    KT_string__append__format(ctx, query, "SELECT %s", expression);
    sqlite3_stmt *statement = nullptr;
    check(fns->prepare(connection, KT_string__sz(query), &statement) == 0 && statement);
    fns->finalize(statement);
    KT_string__free(ctx, query);
}

void check_result(KT_context *ctx, const fuzzed_type &type, const char *host_text, const char *result)
{
    check(*result != '\0');
    if (type.is_number_of_units && KT_stricmp(result, "NULL") != 0) {
        int64_t units = 0;
        KT_int64__parse__strict(ctx, result, &units);
        check(!KT_context__has_err(ctx));
    }
    // Of a hexadecimal constant only the last two digits are known to be digits.
    if (!std::string_view(type.name).ends_with("blob"))
        check_compiles(ctx, result);
    else if (result[0] == 'x')
        check(std::strstr(host_text, "0x") != nullptr && std::strlen(result) % 2 == 1);
}

bool translate(KT_context *ctx, const fuzzed_type &type, uint32_t scale, const char *host_text)
{
    char untouched = 0;
    char *result = &untouched;
    tov_fix_mssql_defval(ctx, type.name, scale, host_text, &result);
    if (KT_context__has_err(ctx)) {
        check(result == &untouched);
        check(KT_context__err_description(ctx)[0] != '\0' && KT_context__count_err_stackframes(ctx) > 0);
        KT_context__err_reset(ctx);
        return false;
    }
    check(result != &untouched);
    if (result)
        check_result(ctx, type, host_text, result);
    _kt_free(ctx, result);
    return result != nullptr;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    if (size < 2)
        return 0;
    const fuzzed_type &type = types[data[0] % std::size(types)];
    const uint32_t scale = data[1];
    const std::string host_text(reinterpret_cast<const char *>(data + 2), size - 2);
    KT_context *ctx = nullptr;
    KT_context__alloc(&ctx);
    const bool is_carried_over = translate(ctx, type, scale, host_text.c_str());
    if (type.code != 0 && !type.is_tried)
        check(tov_is_defval_legit(host_text.c_str(), type.code, scale) == is_carried_over);
    KT_context__free(ctx);
    return 0;
}
