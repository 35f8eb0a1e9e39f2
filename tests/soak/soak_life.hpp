// One schema of the soak, from its building to its freeing.
#pragma once

#include "tov_parse_defin.h"

#include <string>

struct life {
    KT_context *ctx = nullptr;
    tov_schema *schema = nullptr;
    unsigned pairs = 0;  // of tables
    uint64_t digest = 0; // of all that it says
};

// Ends the program, and says why.
[[noreturn]] void stop(const std::string &why);

// Builds a schema, changes it, writes it as JSON, reads that back, compares, and asks questions.
life begin_life(unsigned pairs);
// Asks again, which must give what it gave before, and frees the schema.
void end_life(life &l);
