// Conditions of the server, of checks and of indexes: whether SQLite has one that means the same.
#pragma once

#include "checks/host_check_grammar.hpp"
#include "steps/host_import.hpp"

// Why a reading was refused, for a finding.
std::string host_refusal_text(const host_check_reading &reading);

// Compiles the table, as it will be created, with a condition that was read and not refused. The message stays empty
// when SQLite takes it.
void host_try_condition(KT_context *ctx, host_import &import, const host_table &table, const std::string &condition,
                        std::string &message);
