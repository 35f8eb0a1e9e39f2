/*
 * The host side: what a SQL Server user has at hand becomes a schema.
 *
 * Three kinds of source are read: the catalogue export, which is the JSON document that catalogue.sql, beside this
 * header, prints on a server; packages (.dacpac, .bacpac); and T-SQL scripts. Everything that SQLite or this system
 * cannot carry over unchanged is a finding; docs/findings.md lists the codes. A schema that comes without findings
 * describes the tables exactly.
 *
 * The conventions are those of the schema module (tov_parse_defin.h): the context comes first and carries failures,
 * outputs are written on success only.
 */
#ifndef TOV_HOST_H
#define TOV_HOST_H

#include "tov_parse_defin.h"

KT_BEGIN_DECLS

/** The kinds of source. */
enum {
    TOV_HOST_SOURCE_AUTO = 0, /**< says the content: ZIP is a package, JSON an export, any other text a script */
    TOV_HOST_SOURCE_JSON = 1,
    TOV_HOST_SOURCE_PACKAGE = 2,
    TOV_HOST_SOURCE_SCRIPT = 3
};

/** Strings of an option that may be given more than once. Not one when count is 0. */
typedef struct tov_host_list {
    const char *const *items;
    size_t count;
} tov_host_list;

/** What the server's local clock, such as getdate(), becomes in a default. */
enum {
    TOV_HOST_CLOCK_LOCAL_REPORTED = 0, /**< local time, with a finding (default-clock) for each such column */
    TOV_HOST_CLOCK_UTC = 1,
    TOV_HOST_CLOCK_LOCAL = 2 /**< the local time of the machine where a row is written */
};

/** How to import. A field that is 0 or null has its default, so start from an empty structure. */
typedef struct tov_host_options {
    /** The transaction id of every table. */
    int64_t txid;
    /** Also reports fields of an export that are not known here, each name once. */
    KT_bool verbose;
    /** One of TOV_HOST_SOURCE_...: what the bytes are, whatever they look like. */
    int32_t source;
    /** Optional; the encoding of scripts that are not Unicode, e.g. "windows-1252". */
    const char *encoding;
    /**
     * The tables to import, as patterns of SCHEMA.TABLE in which * stands for any characters and ? for one, e.g.
     * "sales.*"; a pattern without a dot is one for the table's name in every schema. The case of ASCII letters does
     * not count. Empty: all tables.
     */
    tov_host_list only;
    /** The tables to leave out, also of those that only names; patterns as above. */
    tov_host_list skip;
    /**
     * Names in SQLite, each as OLD=NEW, where OLD is SCHEMA.TABLE or SCHEMA.TABLE.COLUMN as the server has it and NEW
     * the name alone, e.g. "dbo.O'Brien=OBrien".
     */
    tov_host_list renames;
    /** Values of variables in scripts, each as NAME=VALUE. */
    tov_host_list defines;
    /** One of TOV_HOST_CLOCK_... */
    int32_t clock;
    /** What functions such as db_name() and suser_sname() give in defaults, each as NAME=VALUE. */
    tov_host_list constants;
    /**
     * Types in place of the server's, each as NAME=TYPE, where NAME is SCHEMA.TABLE.COLUMN or that of an alias type,
     * SCHEMA.TYPE, for all its columns, and TYPE a type of the server as scripts declare it, e.g.
     * "dbo.Orders.Total=decimal(18,4)".
     */
    tov_host_list types;
} tov_host_options;

/** One of several files that are read together. */
typedef struct tov_host_file {
    const char *name;  /**< optional; as findings and messages show it */
    const char *bytes; /**< need not end at NUL */
    size_t size;       /**< in bytes */
} tov_host_file;

/**
 * Reads a source and builds the schema that it describes.
 *
 * Takes what tools make of an export: UTF-8 with or without byte-order mark, UTF-16LE with one, a header line with its
 * dashes, a trailing row count, line ends put into the document by a tool, and a bare list of tables.
 *
 *
 * @code{.c}
 * // The schema of a source, or null and an error in the context; prints what does not go over unchanged.
 * tov_schema *import(KT_context *ctx, const char *bytes, size_t size)
 * {
 *     tov_host_options options = {0};
 *     tov_schema *schema = NULL;
 *     KT_varray *findings = NULL;
 *     KT_string *line = NULL;
 *     uint32_t count = 0;
 *     options.clock = TOV_HOST_CLOCK_UTC;
 *     tov_host__import(ctx, bytes, size, &options, &schema, &findings);
 *     if (findings)
 *         KT_varray__count(ctx, findings, &count);
 *     for (uint32_t n = 0; n < count && !KT_context__has_err(ctx); n++) {
 *         KT_vhash *finding = NULL;
 *         KT_string__alloc(ctx, &line);
 *         KT_varray__get__vhash(ctx, findings, n, &finding);
 *         tov_host__format_finding(ctx, finding, line);
 *         if (!KT_context__has_err(ctx))
 *             puts(KT_string__sz(line));
 *         KT_string__free(ctx, line);
 *         line = NULL;
 *     }
 *     KT_varray__free(ctx, findings);
 *     return schema;
 * }
 * @endcode
 * @param bytes           the source's content; need not end at NUL.
 * @param size            its size in bytes.
 * @param options         optional.
 * @param[out] schema     owned; freed with tov_schema__nullfree().
 * @param[out] findings   owned, null when there are none; freed with KT_varray__free(). One map for each, in the
 *                        order in which they were met, absent members left out:
 *                        {"code":"default-dropped","severity":"warning","table":"dbo.Orders",
 *                        "column":"Placed","reason":"...","host_text":"(getdate())"}; those about a script have
 *                        "place":"orders.sql:12:5" instead of a table and column
 *
 * Fails with KT_ERR_BAD_JSON when an export is not a JSON document; with KT_ERR_WRONG_TYPE, KT_ERR_KEY_NOT_FOUND or
 * KT_ERR_UNEXPECTED_VALUE when a value is not what it should be, and the description names the place, e.g.
 * "tables[3].columns[0].name is not a text", or when an option is not well-formed.
 */
TOV_API void tov_host__import(KT_context *ctx, const char *bytes, size_t size, const tov_host_options *options,
                              tov_schema **schema, KT_varray **findings) KT_NOEXCEPT;

/**
 * As tov_host__import(), for files that together are one source: the scripts of a folder, in an order that their
 * references allow, whatever the names. An export or a package must be the only file.
 *
 * Fails with KT_ERR_UNEXPECTED_VALUE too when there is no file, or an export or a package beside other files.
 */
TOV_API void tov_host__import_files(KT_context *ctx, const tov_host_file *files, size_t count,
                                    const tov_host_options *options, tov_schema **schema,
                                    KT_varray **findings) KT_NOEXCEPT;

/** What the bytes are when nobody says it: TOV_HOST_SOURCE_JSON, TOV_HOST_SOURCE_PACKAGE or TOV_HOST_SOURCE_SCRIPT. */
TOV_API int32_t tov_host__recognise(const char *bytes, size_t size) KT_NOEXCEPT;

/**
 * Whether an error of tov_schema__fix_mssql_defval() says that the default is not a value of the column. Any other
 * says that the question could not be answered, for example because memory ran out.
 */
TOV_API KT_bool tov_host__is_refused_default(uint64_t code) KT_NOEXCEPT;

/** A kind of findings; all members are static. */
typedef struct tov_host_finding_kind {
    const char *code; /**< stable, e.g. "check-left-out" */
    /**
     * "error": something of the source has no place in the schema, or may be missing from it unseen. "warning": the
     * SQLite database accepts, fills in or holds something else than the server. "note": the server's rules are kept,
     * or are not in force there either; the finding says what else may differ. "info": SQLite's own means come near to
     * what the server does; --strict takes no notice of it.
     */
    const char *severity;
    const char *meaning; /**< a sentence without full stop, for people */
} tov_host_finding_kind;

/** The n-th kind of findings, counted from 0; null past the last. */
TOV_API const tov_host_finding_kind *tov_host__get_nth_finding_kind(uint32_t n) KT_NOEXCEPT;

/**
 * Appends a finding to a string as one line without line end: "code: table.column: reason: host text", absent parts
 * left out. Line ends and tabs inside a part are written as blanks, other characters that would disturb a terminal as
 * <U+202E>.
 */
TOV_API void tov_host__format_finding(KT_context *ctx, const KT_vhash *finding, KT_string *line) KT_NOEXCEPT;

KT_END_DECLS

#endif
