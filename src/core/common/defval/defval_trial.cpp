// Trials of default values in a throw-away database.
//
// Each trial opens a database of its own, rolls back what it did and closes it, however it ends. The check that
// rejects a value aborts the INSERT, so a rejection is SQLite's constraint error and not an answer of "no".

#include "defval/defval_trial.hpp"
#include "defval/defval_sqlite.hpp"
#include "document/tov_parse_defin_private.hpp"

#include <cerrno>
#include <cstdlib>

// A trigger with the check that columns of that type get, width and digits left open.
static void my_create_trigger(KT_context *ctx, const tov_scratch &scratch, const char *abstract_type) noexcept
{
    constexpr int32_t unspecified = -1;
    kt_owned_string check{ctx};
    KT_TRY(tov_schema__get_validation_expression(ctx, abstract_type, unspecified, unspecified, unspecified, 0, "v",
                                                 check.out()));
    kt_owned_text trigger{ctx};
    *trigger.out() = KT_mprintf("CREATE TRIGGER bar BEFORE INSERT ON foo\nBEGIN\n\n%s;\nEND", KT_string__sz(check));
    if (!trigger)
        KT_FAIL_GENERIC(KT_ERR_OUT_OF_MEMORY);
    KT_TRY(_tov_sqlite__exec(ctx, scratch.fns, scratch.connection, trigger));
}

static void my_insert(KT_context *ctx, const tov_scratch &scratch, const char *abstract_type, const char *literal,
                      KT_bool *inserted) noexcept
{
    const KT_sqlite_functions *fns = scratch.fns;
    sqlite3 *connection = scratch.connection;
    KT_TRY(_tov_sqlite__exec(ctx, fns, connection, "BEGIN TRANSACTION"));
    const char *decl = tov_abstract_type_to_sqlite_decl(abstract_type);
    KT_TRY(_tov_sqlite__execf(ctx, fns, connection, "CREATE TABLE foo (v %s);", decl));
    KT_TRY(my_create_trigger(ctx, scratch, abstract_type));
    KT_TRY(_tov_sqlite__execf(ctx, fns, connection, "INSERT OR IGNORE INTO foo (v) VALUES (%s);", literal));
    *inserted = fns->changes(connection) == 1;
}

static void my_roll_back(KT_context *ctx, const tov_scratch &scratch) noexcept
{
    KT_context__push_level(ctx);
    _tov_sqlite__execf(ctx, scratch.fns, scratch.connection, "ROLLBACK TRANSACTION");
    KT_context__pop_level(ctx);
}

void _tov_is_valid_constant(KT_context *ctx, const char *abstract_type, const char *literal, KT_bool *ok) noexcept
{
    tov_scratch scratch;
    KT_TRY(_tov_scratch__open(ctx, &scratch));
    KT_bool inserted = 0;
    my_insert(ctx, scratch, abstract_type, literal, &inserted);
    my_roll_back(ctx, scratch);
    if (kt_failed_at(ctx, KT_HERE, __LINE__))
        return;
    *ok = inserted;
}

void _tov_int_default_valid(KT_context *ctx, const char *literal, const char *abstract_type, int64_t low, int64_t high,
                            KT_bool *ok) noexcept
{
    char *end = nullptr;
    errno = 0;
    const long long value = std::strtoll(literal, &end, 10);
    if (*end == '\0' && errno == 0) {
        *ok = low <= value && value <= high;
        return;
    }
    KT_TRY(_tov_is_valid_constant(ctx, abstract_type, literal, ok));
}

// The first column holds the name of a type and so is always text; it is the second one that decides.
static const char *my_truth_of_row(const KT_sqlite_functions *fns, sqlite3_stmt *row) noexcept
{
    if (fns->column_type(row, 0) != TOV_SQLITE_TEXT)
        return nullptr;
    const char *value = fns->column_text(row, 1);
    if (!value)
        return nullptr;
    if (KT_stricmp(value, "True") == 0)
        return "1";
    return KT_stricmp(value, "False") == 0 ? "0" : nullptr;
}

void _tov_read_truth(KT_context *ctx, const char *query, const char **bit) noexcept
{
    tov_scratch scratch;
    KT_TRY(_tov_scratch__open(ctx, &scratch));
    kt_owned_statement row{scratch.fns};
    int rc = scratch.fns->prepare(scratch.connection, query, row.out());
    if (rc != TOV_SQLITE_OK)
        KT_FAIL_GENERIC(KT_ERR_SQLITE(rc));
    rc = scratch.fns->step(row);
    if (rc != TOV_SQLITE_ROW && rc != TOV_SQLITE_DONE)
        KT_FAIL_GENERIC(KT_ERR_SQLITE(rc));
    *bit = rc == TOV_SQLITE_ROW ? my_truth_of_row(scratch.fns, row) : nullptr;
}
