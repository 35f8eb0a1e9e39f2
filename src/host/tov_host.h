/*
 * The host side: a SQL Server catalogue export becomes a schema.
 *
 * The export is the JSON document that catalogue.sql, beside this header, prints on a server. Everything that SQLite
 * or this system cannot carry over as it stands is a finding; docs/findings.md lists the codes. A schema that comes
 * without findings describes the tables exactly.
 */
#ifndef TOV_HOST_H
#define TOV_HOST_H

#include "tov_parse_defin.h"

/** How to import. A field that is not set has the default that stands here. */
struct tov_host_options {
    /** The transaction id of every table. */
    int64_t txid = 0;
    /** Also reports fields of the export that are not known here, each name once. */
    bool verbose = false;
};

/**
 * Reads a catalogue export and builds the schema that it describes.
 *
 * Takes what tools make of such a file: UTF-8 with or without byte-order mark, UTF-16LE with one, a header line with
 * its dashes, a trailing row count, line ends put into the document by a tool, and a bare list of tables.
 *
 * @param bytes           the file's content; need not end at NUL.
 * @param size            its size in bytes.
 * @param options         optional.
 * @param[out] schema     owned; freed with tov_schema__nullfree().
 * @param[out] findings   owned, null when there are none; freed with KT_varray__free(). One map for each, in the
 *                        order in which they were met, absent members left out:
 *                        {"code":"default-dropped","table":"dbo.Orders","column":"Placed","reason":"...",
 *                        "host_text":"(getdate())"}
 *
 * Fails with KT_ERR_BAD_JSON when the file is no such text; with KT_ERR_WRONG_TYPE, KT_ERR_KEY_NOT_FOUND or
 * KT_ERR_UNEXPECTED_VALUE when a value is not what it should be, and the description names the place, e.g.
 * "tables[3].columns[0].name is not a text"; with KT_ERR_SCHEMA_NOT_SUPPORTED when the names of two tables or two
 * columns would be one name in SQLite, or a table's begins with sqlite_.
 */
void tov_host__import(KT_context *ctx, const char *bytes, size_t size, const tov_host_options *options,
                      tov_schema **schema, KT_varray **findings) noexcept;

/**
 * Whether an error of tov_schema__fix_mssql_defval() says that the default is not a value of the column. Any other says
 * that the question could not be answered, such as for want of memory.
 */
bool tov_host__is_refused_default(uint64_t code) noexcept;

/**
 * Appends a finding to a text as one line without line end: "code: table.column: reason: host text", absent parts
 * left out. Line ends and tabs inside a part are written as blanks, other characters that would disturb a terminal as
 * <U+202E>.
 */
void tov_host__format_finding(KT_context *ctx, const KT_vhash *finding, KT_string *line) noexcept;

#endif
