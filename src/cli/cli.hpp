// What the commands of tov-schema share: how a run fails, and objects of the runtime that free themselves.
//
// It is an ordinary program: it uses exceptions and the standard library, and turns a context that holds an
// error into a cli_failure at once (cli_check).
#pragma once

#include "kt_owned.hpp"
#include "tov_parse_defin.h"

#include <stdexcept>
#include <string>

// Exit codes.
inline constexpr int cli_done = 0;
inline constexpr int cli_found = 1;    // findings or differences, where they were asked for; rows refused
inline constexpr int cli_refused = 2;  // the command line is wrong, or a file cannot be used
inline constexpr int cli_internal = 3; // out of memory, or a mistake of the program

// Ends the run with "tov-schema: what: where" on standard error.
struct cli_failure : std::runtime_error {
    explicit cli_failure(const std::string &what, const std::string &where = "", int code = cli_refused)
        : std::runtime_error(where.empty() ? what : what + ": " + where), exit_code(code)
    {
    }
    int exit_code;
};

// The same for a command line that is wrong: says where help is.
struct cli_usage_failure : cli_failure {
    using cli_failure::cli_failure;
};

struct cli_context {
    cli_context()
    {
        KT_context__alloc(&ctx);
        if (!ctx)
            throw std::bad_alloc();
    }
    ~cli_context()
    {
        KT_context__free(ctx);
    }
    cli_context(const cli_context &) = delete;
    cli_context &operator=(const cli_context &) = delete;

    KT_context *ctx = nullptr;
};

// Whether an error says nothing about what the user gave: memory ran out, or SQLite was used wrongly or is broken.
inline bool cli_is_internal(uint64_t code)
{
    constexpr int sqlite_internal = 2, sqlite_nomem = 7, sqlite_misuse = 21;
    return code == KT_ERR_OUT_OF_MEMORY || code == KT_ERR_SQLITE(sqlite_internal) ||
           code == KT_ERR_SQLITE(sqlite_nomem) || code == KT_ERR_SQLITE(sqlite_misuse);
}

// Throws when the call before has failed. where is the file or thing that it was about.
inline void cli_check(KT_context *ctx, const std::string &where)
{
    if (!KT_context__has_err(ctx))
        return;
    const std::string what = KT_context__err_description(ctx);
    const int exit_code = cli_is_internal(KT_context__err_code(ctx)) ? cli_internal : cli_refused;
    KT_context__err_reset(ctx);
    throw cli_failure(what, where, exit_code);
}

struct cli_schema {
    explicit cli_schema(KT_context *context) : ctx(context)
    {
    }
    ~cli_schema()
    {
        tov_schema__nullfree(ctx, &schema);
    }
    cli_schema(const cli_schema &) = delete;
    cli_schema &operator=(const cli_schema &) = delete;
    operator tov_schema *() const
    {
        return schema;
    }

    KT_context *ctx;
    tov_schema *schema = nullptr;
};
