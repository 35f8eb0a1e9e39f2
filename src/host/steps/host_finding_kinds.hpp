// The kinds of findings: a stable code, how much it matters, and what it means in general.
#pragma once

#include "tov_host.h"

#include <string_view>

inline constexpr const char *host_info = "info";
inline constexpr const char *host_note = "note";
inline constexpr const char *host_warning = "warning";
inline constexpr const char *host_error = "error";

inline constexpr tov_host_finding_kind host_finding_kinds[] = {
    // The source.
    {"text-split", host_warning, "A tool put line ends into strings of the document"},
    {"definitions-hidden", host_error, "The login of the export could not see all definitions"},
    {"definitions-unknown", host_warning, "The export does not say whether its login saw all definitions"},
    {"objects-left-out", host_note, "Objects that a schema has no place for are left out"},
    {"no-tables", host_error, "The source holds no tables"},
    {"pattern-unused", host_warning, "A pattern or name of the options fits nothing"},
    {"unknown-field", host_note, "A field of the export is not known"},
    {"model-checksum", host_warning, "The package's model does not have the checksum that the package says"},
    {"table-property-unknown", host_warning, "The package says something of a table that is not known"},
    {"constraint-without-table", host_error, "A constraint's table is not in the package"},
    {"fk-action-assumed", host_warning, "The meaning of a foreign key's action in the package is assumed"},
    {"statement-not-read", host_error, "A statement that may have changed a table was not followed"},
    {"variable-undefined", host_error, "A script uses a variable that nothing defines"},
    // Tables and columns.
    {"table-without-columns", host_error, "A table is left out, since no column of it can be kept"},
    {"name-not-writable", host_error, "A name cannot be written in SQLite"},
    {"name-taken", host_error, "Two names are the same for SQLite"},
    {"table-history", host_note, "The history of a temporal table is left out"},
    {"table-external", host_note, "An external table is kept as an ordinary one"},
    {"table-filetable", host_note, "A table of files is kept as an ordinary one"},
    {"table-graph", host_note, "A table of a graph is kept as an ordinary one"},
    {"column-graph", host_note, "A pseudo column of a graph is left out"},
    {"column-computed", host_warning, "A computed column is left out"},
    {"column-set", host_note, "A set of sparse columns is left out"},
    {"column-filestream", host_error, "A column whose values are files is left out"},
    {"column-encrypted", host_error, "An encrypted column is left out"},
    {"column-generated", host_warning, "A column that the server writes is left out"},
    {"column-hidden", host_warning, "A hidden column is left out"},
    {"type-unsupported", host_error, "A column is left out, since nothing can hold its type"},
    {"rowversion-as-bytes", host_warning,
     "A rowversion is kept as bytes, which the database numbers without the server"},
    {"type-as-text", host_warning, "A moment with an offset is kept as a text"},
    {"type-as-bytes", host_note, "A type of a program library is kept as its bytes"},
    {"decimal-too-wide", host_warning, "A decimal is kept as a 64-bit integer, which cannot hold all its values"},
    {"width-in-bytes", host_warning, "A width counts bytes on the server and characters in SQLite"},
    {"identity-as-integer", host_warning, "An identity column is kept as a number that SQLite does not fill in"},
    {"identity-numbering", host_note, "SQLite numbers rows in other steps than the server"},
    {"rule-left-out", host_warning, "A bound rule is left out"},
    // Defaults, keys, references, checks.
    {"default-hidden", host_error, "The login of the export could not see a default"},
    {"default-dropped", host_warning, "A default is left out, since SQLite has none that means the same"},
    {"default-clock", host_warning,
     "A default of the server's local time gives that of the machine where a row is written"},
    {"default-refused", host_warning, "A default is left out, since it is not a value of the column's type"},
    {"key-disabled", host_note, "A disabled key is left out"},
    {"key-unprepared-column", host_warning, "A key is left out with a column of it"},
    {"unique-filtered", host_warning, "A unique index is left out, since SQLite would read its filter differently"},
    {"unique-nullable", host_note, "NULLs in a unique key are distinct without the server's rules"},
    {"pk-as-unique", host_note, "The identity column becomes the primary key, and the primary key a unique one"},
    {"index-disabled", host_note, "A disabled index is left out"},
    {"index-kind", host_note, "An index of a kind that SQLite lacks is left out"},
    {"index-unprepared-column", host_note, "An index is left out with a column of it"},
    {"index-redundant", host_note, "An index is left out, since a key or another index does the same"},
    {"index-filter", host_note, "An index holds all rows, since SQLite would read its filter differently"},
    {"index-included", host_note, "Columns that an index only carries along become part of it, or are left out"},
    {"index-order", host_note, "A unique index has all of its columns in ascending order"},
    {"comparison-approximate", host_info, "SQLite tells strings apart that the server takes as equal"},
    {"fk-disabled", host_note, "A disabled foreign key is left out"},
    {"fk-untrusted", host_note, "The server has not checked a foreign key on all rows"},
    {"fk-parent-missing", host_warning, "A foreign key is left out, since what it refers to is missing"},
    {"fk-parent-skipped", host_warning, "A foreign key is left out, since what it refers to was skipped"},
    {"fk-parent-key-missing", host_warning, "A foreign key is left out, since it does not refer to a key"},
    {"fk-unprepared-column", host_warning, "A foreign key is left out with a column of it"},
    {"fk-duplicate", host_note, "A foreign key that says the same as another is left out"},
    {"tables-in-circle", host_note, "Tables refer to each other"},
    {"columns-in-circle", host_note, "Columns refer to each other"},
    {"check-left-out", host_warning, "A check is left out, since SQLite would read it differently"},
    {"check-unprepared-column", host_warning, "A check is left out with a column of it"},
    {"check-disabled", host_note, "A disabled check is left out"},
    {"check-hidden", host_error, "The login of the export could not see a check"},
    {"check-untrusted", host_note, "The server has not checked a check on all rows"},
};

// One of them, by its code. A code that the table lacks does not compile.
struct host_finding_code {
    constexpr host_finding_code() = default;
    consteval host_finding_code(const char *code) : kind(find(code))
    {
    }
    const tov_host_finding_kind *kind = nullptr;

  private:
    static consteval const tov_host_finding_kind *find(std::string_view code)
    {
        for (const tov_host_finding_kind &known : host_finding_kinds) {
            if (known.code == code)
                return &known;
        }
        throw "a code that is not in the table";
    }
};
