// What a load tells at its end: the rows that were refused, and a table of what became of the others.
#pragma once

#include "cli.hpp"
#include "tov_client.h"

#include <memory>

struct cli_loader {
    explicit cli_loader(KT_context *context) : ctx(context)
    {
    }
    ~cli_loader()
    {
        tov_client__free_loader(ctx, loader);
    }
    cli_loader(const cli_loader &) = delete;
    cli_loader &operator=(const cli_loader &) = delete;

    KT_context *ctx;
    tov_client_loader *loader = nullptr;
};

// Ends the load and prints its table on standard output, the refused rows on standard error; says where the files of
// refused rows are, if there are any. said is how many rows the source says it has, -1 where it does not. Gives the
// exit code: 1 when rows were refused, or are missing.
int cli_finish_load(KT_context *ctx, cli_loader &loader, const std::string &database, const std::string &rejects,
                    bool quiet, int64_t said = -1);
