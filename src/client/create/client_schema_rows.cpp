// A schema of very many tables, created in time that grows with their number. Smaller ones are created the ordinary
// way.
//
// SQLite reads its whole schema table after each CREATE, and goes through all tables that it holds in memory, so by
// itself it takes time with the square of the number of tables: half a minute for 4,000 with their triggers. Three
// things keep it short (PRAGMA writable_schema allows them, and the transaction covers them):
// - While tables are created, the rows of those that are finished wait on a shelf, a temporary table, and SQLite is
//   made to forget these tables; a table may refer to one that SQLite does not know.
// - A table is created without the constraints that are generated: they are known to be good, and SQLite would compile
//   them twice. Its row gets the whole text on the shelf.
// - A trigger's or view's statement is compiled, which checks it as creating would, but not run: the row that running
//   would write goes to the shelf. For the first one the tables come back, bare, so that SQLite knows them.
// In the end the rows on the shelf, in order, are those of the schema table.
#include "create/client_schema_rows.hpp"

#include <sqlite3.h>

#define KT_HERE "src/client/create/client_schema_rows"

// From how many tables on this is worth it, and how many are created between two walks to the shelf.
static constexpr uint32_t many_tbls = 256;
static constexpr uint32_t tbls_of_a_walk = 64;

// The name of the shelf could not be a table's of a schema, because of its quote.
static constexpr const char *make_shelf = "CREATE TEMP TABLE \"tov'shelf\"(type, name, tbl_name, rootpage, sql, bare)";
static constexpr const char *make_texts = "CREATE TEMP TABLE \"tov'texts\"(name PRIMARY KEY, sql)";
static constexpr const char *fill_shelf =
    "INSERT INTO temp.\"tov'shelf\" SELECT type, name, tbl_name, rootpage, coalesce((SELECT t.sql FROM "
    "temp.\"tov'texts\" AS t WHERE t.name = m.name AND m.type = 'table'), m.sql), m.sql FROM main.sqlite_master AS m";
static constexpr const char *clear_texts = "DELETE FROM temp.\"tov'texts\"";
static constexpr const char *delete_shelved = "DELETE FROM main.sqlite_master";
static constexpr const char *show_bare = "INSERT INTO main.sqlite_master(type, name, tbl_name, rootpage, sql) "
                                         "SELECT type, name, tbl_name, rootpage, bare FROM temp.\"tov'shelf\" "
                                         "ORDER BY rowid";
static constexpr const char *show_all = "INSERT INTO main.sqlite_master(type, name, tbl_name, rootpage, sql) "
                                        "SELECT type, name, tbl_name, rootpage, sql FROM temp.\"tov'shelf\" "
                                        "ORDER BY rowid";
static constexpr const char *try_writing = "DELETE FROM main.sqlite_master WHERE rowid IS NULL";
static constexpr const char *shelve_row =
    "INSERT INTO temp.\"tov'shelf\"(type, name, tbl_name, rootpage, sql) VALUES(?4, ?1, ?2, 0, ?3)";
static constexpr const char *shelve_text = "INSERT INTO temp.\"tov'texts\"(name, sql) VALUES(?1, ?2)";

static constexpr const char *allow_writing = "PRAGMA writable_schema=ON";
static constexpr const char *forget_schema = "PRAGMA writable_schema=RESET";

static int my_prepare(client_database &database, const char *sql, kt_owned_statement &statement) noexcept
{
    const client_on_duty duty(database.guard, {client_duty::own_statement});
    return database.functions->prepare(database.connection, sql, statement.out());
}

// A refusal is not a failure: the statements then stay null, and every row is SQLite's own affair.
void client_schema_rows__begin(KT_context *ctx, client_database &database, const client_plan &plan) noexcept
{
    if (plan.tbls.size() < many_tbls)
        return;
    KT_TRY(client_database__run(ctx, database, allow_writing));
    kt_owned_statement attempt{database.functions};
    if (my_prepare(database, try_writing, attempt) != SQLITE_OK)
        return;
    KT_TRY(client_database__run(ctx, database, make_shelf));
    KT_TRY(client_database__run(ctx, database, make_texts));
    int code = my_prepare(database, shelve_text, database.shelve_text);
    if (code == SQLITE_OK)
        code = my_prepare(database, shelve_row, database.shelve_row);
    if (code != SQLITE_OK)
        CLIENT_FAIL_IN(database, code);
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
    KT_TRY(my_run_on_new_rows(ctx, database, fill_shelf));
    KT_TRY(my_run_on_new_rows(ctx, database, delete_shelved));
    KT_TRY(client_database__run(ctx, database, clear_texts));
    KT_TRY(my_forget_schema(ctx, database));
    database.new_tbls = 0;
}

// A table's indexes are created after it, so it stays until the next one comes.
void client_schema_rows__begin_tbl(KT_context *ctx, client_database &database) noexcept
{
    if (client_schema_rows__are_ours(database) && database.new_tbls == tbls_of_a_walk)
        KT_TRY(my_walk_to_shelf(ctx, database));
    database.new_tbls++;
}

// Runs a prepared statement of our own with strings as its parameters.
static int my_run_with(client_database &database, sqlite3_stmt *statement, std::initializer_list<const char *> values)
{
    const KT_sqlite_functions *functions = database.functions;
    const client_on_duty duty(database.guard, {client_duty::own_statement});
    int place = 0;
    for (const char *value : values) {
        const int code = functions->bind_text(statement, ++place, value, -1);
        if (code != SQLITE_OK)
            return code;
    }
    const int code = functions->step(statement);
    const int reset_code = functions->reset(statement);
    return code == SQLITE_DONE ? reset_code : code;
}

int client_schema_rows__keep_text(client_database &database, const client_statement &statement) noexcept
{
    return my_run_with(database, database.shelve_text, {statement.name, statement.sql});
}

void client_schema_rows__show_tbls(KT_context *ctx, client_database &database) noexcept
{
    if (!client_schema_rows__are_ours(database) || database.has_all_tbls)
        return;
    KT_TRY(my_walk_to_shelf(ctx, database));
    KT_TRY(client_database__run(ctx, database, show_bare));
    KT_TRY(my_forget_schema(ctx, database));
    database.has_all_tbls = true;
}

int client_schema_rows__add(client_database &database, const client_statement &statement) noexcept
{
    const bool is_view = statement.kind == client_kind::view;
    return my_run_with(
        database, database.shelve_row,
        {statement.name, is_view ? statement.name : statement.tbl, statement.sql, is_view ? "view" : "trigger"});
}

void client_schema_rows__finish(KT_context *ctx, client_database &database) noexcept
{
    if (!client_schema_rows__are_ours(database))
        return;
    if (database.has_all_tbls)
        KT_TRY(my_run_on_new_rows(ctx, database, delete_shelved));
    else
        KT_TRY(my_walk_to_shelf(ctx, database));
    KT_TRY(client_database__run(ctx, database, show_all));
}
