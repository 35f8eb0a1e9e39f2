// A fixture that creates a database from one document, migrates it to another and looks at what became of it.
#pragma once

#include "load_test.hpp"
#include "migrate/client_object_list.hpp"
#include "tov_migrate.h"

#include <algorithm>
#include <filesystem>

class MigrateTest : public LoadTest {
  protected:
    void TearDown() override
    {
        tov_schema__nullfree(ctx, &new_schema);
        LoadTest::TearDown();
    }
    // Creates the database from a document.
    void create_from(const std::string &document)
    {
        std::filesystem::remove(path("db"));
        reset_schema_to(document.c_str());
        create();
    }
    // Runs statements in the database, under the settings that it needs; SQLite's message when one fails.
    std::string in_db(const std::string &sql, const std::string &name = "db")
    {
        sqlite3 *opened = nullptr;
        sqlite3_open(path(name).c_str(), &opened);
        const std::string message = run(opened, "PRAGMA foreign_keys=ON;PRAGMA recursive_triggers=ON;" + sql);
        sqlite3_close(opened);
        return message;
    }
    std::string rows_in_db(const std::string &query, const std::string &name = "db")
    {
        sqlite3 *opened = nullptr;
        sqlite3_open(path(name).c_str(), &opened);
        const std::string found = rows(opened, query);
        sqlite3_close(opened);
        return found;
    }
    void set_new_schema(const std::string &document)
    {
        tov_schema__nullfree(ctx, &new_schema);
        tov_schema__from_json(ctx, document.c_str(), &new_schema);
        ASSERT_OK(ctx);
    }
    // Migrates; empty when it is done, else why not.
    std::string migrate(const std::string &document, const std::vector<const char *> &losses = {},
                        const std::vector<const char *> &renames = {})
    {
        set_new_schema(document);
        tov_client_migrate_options options = {};
        options.allowed_losses = losses.data();
        options.allowed_loss_count = static_cast<uint32_t>(losses.size());
        options.compare.renames = renames.data();
        options.compare.rename_count = static_cast<uint32_t>(renames.size());
        tov_client__migrate_database(ctx, path("db").c_str(), new_schema, &options);
        const std::string why = KT_context__has_err(ctx) ? KT_context__err_description(ctx) : "";
        KT_context__err_reset(ctx);
        return why;
    }
    // All that a database consists of, in a form that does not depend on how SQLite has rewritten a statement.
    std::vector<std::string> objects_of(const std::string &name)
    {
        std::vector<std::string> objects;
        sqlite3 *opened = nullptr;
        sqlite3_stmt *statement = nullptr;
        sqlite3_open(path(name).c_str(), &opened);
        sqlite3_prepare_v2(opened, "SELECT type || ' ' || name || ' ' || tbl_name, sql FROM sqlite_master", -1,
                           &statement, nullptr);
        const auto text = [&](int column) {
            const unsigned char *bytes = sqlite3_column_text(statement, column);
            return std::string(bytes ? reinterpret_cast<const char *>(bytes) : "");
        };
        while (sqlite3_step(statement) == SQLITE_ROW)
            objects.push_back(text(0) + "\n" + client_statement_meaning(text(1)));
        sqlite3_finalize(statement);
        sqlite3_close(opened);
        std::sort(objects.begin(), objects.end());
        return objects;
    }
    // The database is the one that the new schema makes, with sound rows.
    void expect_as_created()
    {
        expect_as_created_but("");
    }
    // The same, aside from a view of somebody's own.
    void expect_as_created_but(const std::string &view)
    {
        std::filesystem::remove(path("fresh"));
        tov_client__create_database(ctx, new_schema, path("fresh").c_str(), nullptr, nullptr);
        EXPECT_OK(ctx);
        std::vector<std::string> objects = objects_of("db");
        std::erase_if(objects, [&](const std::string &object) { return object.starts_with("view " + view + ' '); });
        EXPECT_EQ(objects, objects_of("fresh"));
        EXPECT_EQ(rows_in_db("PRAGMA integrity_check"), "ok");
        EXPECT_EQ(rows_in_db("PRAGMA foreign_key_check"), "");
        EXPECT_EQ(rows_in_db("SELECT document FROM tov_schema"),
                  rows_in_db("SELECT document FROM tov_schema", "fresh"));
    }

    tov_schema *new_schema = nullptr;
};
