// An in-memory SQLite database, opened through the runtime, to try generated SQL on.
#pragma once

#include "kt_sqlite_functions.h"

#include <sqlite3.h>

#include <string>

class sqlite_database {
  public:
    sqlite_database()
    {
        tov__get_sqlite_functions()->open(":memory:", &connection_, SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE);
        run("PRAGMA foreign_keys=ON");
    }
    ~sqlite_database()
    {
        sqlite3_close(connection_);
    }
    sqlite_database(const sqlite_database &) = delete;
    sqlite_database &operator=(const sqlite_database &) = delete;

    // Runs statements; "" when all went well, else SQLite's message.
    std::string run(const std::string &sql)
    {
        char *message = nullptr;
        const int code = sqlite3_exec(connection_, sql.c_str(), nullptr, nullptr, &message);
        std::string result = message ? message : code == SQLITE_OK ? "" : sqlite3_errstr(code);
        sqlite3_free(message);
        return result;
    }

    // SQLite's code alone, which needs no memory of ours.
    int code_of(const std::string &sql)
    {
        return sqlite3_exec(connection_, sql.c_str(), nullptr, nullptr, nullptr);
    }

    // The first column of the first row as text; "(none)" without a row, "(null)" for null, else SQLite's message.
    std::string ask(const std::string &sql)
    {
        sqlite3_stmt *statement = nullptr;
        std::string result = "(none)";
        if (sqlite3_prepare_v2(connection_, sql.c_str(), -1, &statement, nullptr) != SQLITE_OK)
            result = sqlite3_errmsg(connection_);
        else if (const int code = sqlite3_step(statement); code == SQLITE_ROW)
            result = text_of(sqlite3_column_text(statement, 0));
        else if (code != SQLITE_DONE)
            result = sqlite3_errmsg(connection_);
        sqlite3_finalize(statement);
        return result;
    }

  private:
    static std::string text_of(const unsigned char *text)
    {
        return text ? reinterpret_cast<const char *>(text) : "(null)";
    }

    sqlite3 *connection_ = nullptr;
};
