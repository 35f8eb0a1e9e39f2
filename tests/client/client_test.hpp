// A fixture with a schema to build and a database to try it in.
#pragma once

#include "kt_sqlite_dates.h"
#include "schema_test.hpp"
#include "tov_client.h"

#include <sqlite3.h>
#include <string>

// Runs statements: empty when they succeed, else SQLite's message.
inline std::string run(sqlite3 *connection, const std::string &sql)
{
    char *message = nullptr;
    sqlite3_exec(connection, sql.c_str(), nullptr, nullptr, &message);
    std::string result = message ? message : "";
    sqlite3_free(message);
    return result;
}

// The rows of a query: values joined by "|", "NULL" for null, rows by a blank; or "error: " and SQLite's message.
inline std::string rows(sqlite3 *connection, const std::string &sql)
{
    std::string result;
    char *message = nullptr;
    const auto add_row = [](void *data, int count, char **values, char **) {
        std::string &text = *static_cast<std::string *>(data);
        text += text.empty() ? "" : " ";
        for (int i = 0; i < count; i++)
            text += (i ? "|" : "") + std::string(values[i] ? values[i] : "NULL");
        return 0;
    };
    if (sqlite3_exec(connection, sql.c_str(), add_row, &result, &message) != SQLITE_OK)
        result = std::string("error: ") + message;
    sqlite3_free(message);
    return result;
}

// Scripts that tests read lack the record of the schema, which has tests of its own.
inline constexpr tov_client_create_options without_record = {0,
                                                             nullptr,
                                                             nullptr,
                                                             TOV_CLIENT_RULES_SERVER,
                                                             TOV_CLIENT_INDEXES_ALL,
                                                             TOV_CLIENT_COLLATIONS_BUILTIN,
                                                             1,
                                                             TOV_CLIENT_CHECKS_CONSTRAINTS};
// The same with triggers, which repeat what the schema module writes.
inline constexpr tov_client_create_options with_triggers = {0,
                                                            nullptr,
                                                            nullptr,
                                                            TOV_CLIENT_RULES_SERVER,
                                                            TOV_CLIENT_INDEXES_ALL,
                                                            TOV_CLIENT_COLLATIONS_BUILTIN,
                                                            1,
                                                            TOV_CLIENT_CHECKS_TRIGGERS};

class ClientTest : public SchemaTest {
  protected:
    void TearDown() override
    {
        close();
        SchemaTest::TearDown();
    }

    void add_tbl(const char *tbl_id, const char *name)
    {
        tov_schema__add_tbl(ctx, schema, tbl_id, name, 0);
    }
    void add_col(const char *tbl_id, const char *col_id, const char *name, const char *type = "sint32")
    {
        tov_schema__add_col(ctx, schema, tbl_id, col_id, name, 1, 0, 0);
        tov_schema__set_col_type_simple(ctx, schema, tbl_id, col_id, type);
    }
    void add_text_col(const char *tbl_id, const char *col_id, const char *name, bool nocase)
    {
        tov_schema__add_col(ctx, schema, tbl_id, col_id, name, 1, 0, 0);
        tov_schema__set_col_type_text(ctx, schema, tbl_id, col_id, nullptr, nullptr, 0, 0, nocase, 0, 0, 0, 0, 1, 50);
    }
    void set_pk(const char *tbl_id, const char *col_id)
    {
        tov_schema__set_pk_name(ctx, schema, tbl_id, "PK");
        tov_schema__add_to_pk(ctx, schema, tbl_id, col_id);
    }
    // A reference of one column, with the action on delete.
    void set_fk(const char *tbl_id, const char *col_id, const char *ref_tbl_id, const char *ref_col_id,
                const char *on_delete)
    {
        tov_schema__set_colcon_fk(ctx, schema, tbl_id, col_id, 1, "fk", nullptr, ref_tbl_id, ref_col_id, 1, on_delete,
                                  "NO ACTION", 0);
    }
    // A table "t" named T with an integer column "a" named A that is its key.
    void make_one_tbl()
    {
        reset_schema();
        add_tbl("t", "T");
        add_col("t", "a", "A");
        set_pk("t", "a");
    }

    std::string script(const tov_client_create_options *options = &without_record)
    {
        KT_string *text = nullptr;
        tov_client__write_script__with(ctx, schema, options, &text);
        return take(ctx, text);
    }
    // Opens a database in memory and runs the script of the schema there.
    void open(const tov_client_create_options *options = &without_record)
    {
        close();
        ASSERT_EQ(sqlite3_open(":memory:", &connection), SQLITE_OK);
        KT_sqlite__normalise_dates(ctx, tov__get_sqlite_functions(), connection);
        const std::string text = script(options);
        ASSERT_OK(ctx);
        ASSERT_EQ(run(connection, text), "") << text;
    }
    void close()
    {
        sqlite3_close(connection);
        connection = nullptr;
    }

    sqlite3 *connection = nullptr;
};
