// Scripts for other databases: what gives them away.
#include "script/host_script_reader.hpp"

// What gives a script away as one of another database.
std::string host_dialect_hint(const host_tsql_token &token)
{
    struct host_foreign_word {
        std::string_view word;
        const char *database;
    };
    static constexpr host_foreign_word words[] = {
        {"`", "MySQL"},
        {"AUTO_INCREMENT", "MySQL"},
        {"ENGINE", "MySQL"},
        {"UNSIGNED", "MySQL"},
        {"DELIMITER", "MySQL"},
        {"AUTOINCREMENT", "SQLite"},
        {"PRAGMA", "SQLite"},
        {"WITHOUT", "another database"},
        {"DEFERRABLE", "PostgreSQL"},
        {"::", "PostgreSQL"},
        {"RETURNING", "PostgreSQL"},
        {"PROMPT", "Oracle"},
        {"COMMENT", "another database"},
    };
    for (const host_foreign_word &foreign : words) {
        if (host_same_text(foreign.word, token.text))
            return std::string("; this looks like a script for ") + foreign.database;
    }
    return {};
}

// Types of other databases that T-SQL lacks, so that a script of theirs is told from one that uses a type which another
// script makes.
const char *host_other_database(std::string_view type)
{
    struct host_foreign_type {
        std::string_view name;
        const char *database;
    };
    static constexpr host_foreign_type types[] = {
        {"serial", "PostgreSQL"},
        {"bigserial", "PostgreSQL"},
        {"smallserial", "PostgreSQL"},
        {"bytea", "PostgreSQL"},
        {"timestamptz", "PostgreSQL"},
        {"jsonb", "PostgreSQL"},
        {"boolean", "another database"},
        {"varchar2", "Oracle"},
        {"nvarchar2", "Oracle"},
        {"number", "Oracle"},
        {"clob", "Oracle"},
        {"mediumint", "MySQL"},
        {"longtext", "MySQL"},
        {"mediumtext", "MySQL"},
        {"tinytext", "MySQL"},
        {"longblob", "MySQL"},
        {"enum", "MySQL"},
        {"blob", "another database"},
    };
    for (const host_foreign_type &foreign : types) {
        if (host_same_text(foreign.name, type))
            return foreign.database;
    }
    return nullptr;
}
