// Conditions of the server, of checks and of indexes: whether one means the same in SQLite, as it is written.
#pragma once

#include "checks/host_check_grammar.hpp"
#include "kt_sqlite_owned.hpp"
#include "steps/host_import.hpp"

// For the conditions of one table: a connection to an empty database, on which statements are compiled and never run,
// and the beginning of the table's.
struct host_condition_trial {
    const KT_sqlite_functions *functions = tov__get_sqlite_functions();
    kt_owned_connection connection{functions};
    std::string columns;
};

// Why a reading was refused, for a finding.
std::string host_refusal_text(const host_check_reading &reading);

// Compiles the table, as it will be created, with a condition that was read and not refused. The message stays empty
// when SQLite takes it.
void host_try_condition(KT_context *ctx, host_import &import, host_condition_trial &trial, const host_table &table,
                        const char *definition, std::string &message);
