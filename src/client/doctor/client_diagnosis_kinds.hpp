// The kinds of diagnoses: a stable code, how much it matters, and what to do.
#pragma once

#include "tov_doctor.h"

#include <string_view>

inline constexpr tov_client_diagnosis_kind client_diagnosis_kinds[] = {
    // SQLite, and the connections that it opens.
    {"sqlite-version", "error", "use SQLite 3.38 or later"},
    {"setting-foreign-keys", "note",
     "run PRAGMA foreign_keys=ON on each connection that changes rows, outside of a transaction"},
    {"setting-recursive-triggers", "note", "run PRAGMA recursive_triggers=ON on each connection that changes rows"},
    {"impossible-dates", "note",
     "use a newer SQLite, or create the database with the server's rules; tov-schema check finds such dates"},
    {"collations", "note", "load the extension libtov_sqlite into each connection"},
    // The file.
    {"integrity", "error", "restore a copy, or save what can be read with the sqlite3 shell's .recover"},
    {"unreadable", "error", "restore a copy, or save what can be read with the sqlite3 shell's .recover"},
    // What the schema makes of it.
    {"record-missing", "note", "create the database without --no-record, so that it can be compared and migrated"},
    {"record-unreadable", "error", "create the database anew from its schema, and load its rows"},
    {"table-changed", "error", "unload the rows, create the database anew from its schema, and load them"},
    {"object-missing", "error", "run the script that tov-schema doctor --format sql prints"},
    {"object-changed", "error", "run the script that tov-schema doctor --format sql prints"},
    {"object-added", "note", "nothing if it is meant to be there: tov-schema migrate --apply keeps it"},
    // Rows and references.
    {"reference-broken", "error", "correct the rows: tov-schema check lists them"},
    {"reference-without-index", "note", "run the script that tov-schema doctor --format sql prints"},
};

// One of them, by its code. A code that the table lacks does not compile.
struct client_diagnosis_code {
    consteval client_diagnosis_code(const char *code) : kind(find(code))
    {
    }
    const tov_client_diagnosis_kind *kind;

  private:
    static void a_code_that_is_not_in_the_table(); // not constexpr, so a call does not compile
    static consteval const tov_client_diagnosis_kind *find(std::string_view code)
    {
        for (const tov_client_diagnosis_kind &known : client_diagnosis_kinds) {
            if (known.code == code)
                return &known;
        }
        a_code_that_is_not_in_the_table();
        return nullptr;
    }
};
