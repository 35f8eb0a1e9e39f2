// Connections and statements of SQLite that close themselves, through the function table that they came from.
#pragma once

#include "kt_sqlite_functions.h"

#include <utility>

// Not copyable; out() for what opens or prepares, converts to a pointer for calls.
template <class T, int (*KT_sqlite_functions::*Close)(T *)> struct kt_sqlite_owned {
    explicit kt_sqlite_owned(const KT_sqlite_functions *functions) noexcept : functions_(functions)
    {
    }
    ~kt_sqlite_owned()
    {
        close();
    }
    kt_sqlite_owned(const kt_sqlite_owned &) = delete;
    kt_sqlite_owned &operator=(const kt_sqlite_owned &) = delete;

    T **out() noexcept
    {
        return &ptr_;
    }
    operator T *() const noexcept
    {
        return ptr_;
    }
    // Closes it before the end of the scope, to see what SQLite says then. Nothing open is SQLITE_OK.
    int close() noexcept
    {
        T *ptr = std::exchange(ptr_, nullptr);
        return ptr ? (functions_->*Close)(ptr) : 0;
    }

  private:
    const KT_sqlite_functions *functions_;
    T *ptr_ = nullptr;
};

using kt_owned_connection = kt_sqlite_owned<sqlite3, &KT_sqlite_functions::close>;
using kt_owned_statement = kt_sqlite_owned<sqlite3_stmt, &KT_sqlite_functions::finalize>;
