// A schema of very many tables, created in time that grows with their number. Smaller ones are created the ordinary
// way.
//
// SQLite reads its whole schema table after each CREATE, and goes through all tables that it holds in memory, so by
// itself it takes time with the square of the number of tables: half a minute for 4,000 with their triggers. Two things
// keep both short (PRAGMA writable_schema allows them, and the transaction covers them):
// - While tables are created, the rows of those that are finished wait on a shelf, a temporary table, and SQLite is
//   made to forget these tables; a table may refer to one that SQLite does not know. The rows go back, in order, before
//   the first trigger, and SQLite reads them once.
// - A trigger's or view's statement is compiled, which checks it as creating would, but not run: the row that running
//   would write is inserted instead.
#include "create/client_schema_rows.hpp"

#include <sqlite3.h>

#define KT_HERE "src/client/create/client_schema_rows"

// From how many tables on this is worth it, and how many are created between two walks to the shelf.
static constexpr uint32_t many_tbls = 256;

// The name of the shelf could not be a table's of a schema, because of its quote.
static constexpr const char *make_shelf = "CREATE TEMP TABLE \"tov'shelf\"(type, name, tbl_name, rootpage, sql)";
static constexpr const char *fill_shelf = "INSERT INTO temp.\"tov'shelf\" SELECT type, name, tbl_name, rootpage, sql "
                                          "FROM main.sqlite_master";
static constexpr const char *delete_shelved = "DELETE FROM main.sqlite_master";
static constexpr const char *empty_shelf =
    "INSERT INTO main.sqlite_master(type, name, tbl_name, rootpage, sql) "
    "SELECT type, name, tbl_name, rootpage, sql FROM temp.\"tov'shelf\" ORDER BY rowid";
static constexpr const char *insert_row =
    "INSERT INTO main.sqlite_master(type, name, tbl_name, rootpage, sql) VALUES(?4, ?1, ?2, 0, ?3)";

static constexpr const char *drop_shelf = "DROP TABLE temp.\"tov'shelf\"";

static constexpr const char *allow_writing = "PRAGMA writable_schema=ON";
static constexpr const char *forget_schema = "PRAGMA writable_schema=RESET";

// A refusal is not a failure: the statement then stays null, and every row is SQLite's own affair.
void client_schema_rows__begin(KT_context *ctx, client_database &database, const client_plan &plan) noexcept
{
    if (plan.tbls.size() < many_tbls)
        return;
    KT_TRY(client_database__run(ctx, database, allow_writing));
    const client_on_duty duty(database.guard, {client_duty::own_statement});
    database.functions->prepare(database.connection, insert_row, database.insert_row.out());
}

// Runs a statement that is about the rows after the last one that was there before.
static void my_run_on_new_rows(KT_context *ctx, client_database &database, const char *sql) noexcept
{
    kt_owned_string text{ctx};
    KT_TRY(KT_string__alloc__sz(ctx, text.out(), sql));
    KT_TRY(KT_string__append__format(ctx, text, " WHERE rowid > %lld", static_cast<long long>(database.last_old_row)));
    KT_TRY(client_database__run(ctx, database, KT_string__sz(text)));
}

// Makes SQLite read the schema table again, as it is now, when it next needs it.
static void my_forget_schema(KT_context *ctx, client_database &database) noexcept
{
    KT_TRY(client_database__run(ctx, database, forget_schema));
    KT_TRY(client_database__run(ctx, database, allow_writing));
}

static void my_walk_to_shelf(KT_context *ctx, client_database &database) noexcept
{
    if (!database.has_shelf)
        KT_TRY(client_database__run(ctx, database, make_shelf));
    database.has_shelf = true;
    KT_TRY(my_run_on_new_rows(ctx, database, fill_shelf));
    KT_TRY(my_run_on_new_rows(ctx, database, delete_shelved));
    KT_TRY(my_forget_schema(ctx, database));
    database.new_tbls = 0;
}

// A table's indexes are created after it, so it stays until the next one comes.
void client_schema_rows__begin_tbl(KT_context *ctx, client_database &database) noexcept
{
    if (database.insert_row && database.new_tbls == many_tbls)
        KT_TRY(my_walk_to_shelf(ctx, database));
    database.new_tbls++;
}

void client_schema_rows__end_tbls(KT_context *ctx, client_database &database) noexcept
{
    if (!database.has_shelf)
        return;
    KT_TRY(my_walk_to_shelf(ctx, database));
    KT_TRY(client_database__run(ctx, database, empty_shelf));
    KT_TRY(client_database__run(ctx, database, drop_shelf));
    KT_TRY(my_forget_schema(ctx, database));
    database.has_shelf = false;
}

int client_schema_rows__insert(client_database &database, const client_statement &statement) noexcept
{
    const KT_sqlite_functions *functions = database.functions;
    sqlite3_stmt *row = database.insert_row;
    const client_on_duty duty(database.guard, {client_duty::own_statement});
    const bool is_view = statement.kind == client_kind::view;
    const char *values[] = {statement.name, is_view ? statement.name : statement.tbl, statement.sql,
                            is_view ? "view" : "trigger"};
    int code = SQLITE_OK;
    for (int n = 0; n < 4 && code == SQLITE_OK; n++)
        code = functions->bind_text(row, n + 1, values[n], -1);
    if (code == SQLITE_OK)
        code = functions->step(row);
    const int reset_code = functions->reset(row);
    return code == SQLITE_DONE ? reset_code : code;
}
