/*
 * A report on a schema for people: one page for a browser, or pages of Markdown for a repository.
 *
 * The conventions are those of the schema module (tov_parse_defin.h). A schema may come from anywhere: its names and
 * texts are shown as they are and never become markup.
 */
#ifndef TOV_REPORT_H
#define TOV_REPORT_H

#include "tov_parse_defin.h"

KT_BEGIN_DECLS

/** What a report says besides the schema. All zero is nothing. */
typedef struct tov_client_report_options {
    /** Optional: what the report is called; else the name of the server's database. */
    const char *title;
    /** Optional: findings of an import, as tov_host__import() gives them; borrowed. */
    const KT_varray *findings;
    /** Optional: a database of the schema's tables, whose rows are counted and checked. It is read only. */
    const char *database;
    /** Optional: what tov_client__compare() says has changed from an earlier schema to this one; borrowed. */
    const KT_vhash *changes;
} tov_client_report_options;

/**
 * Writes a report as one HTML page that needs nothing but a browser: no network, no file beside it.
 *
 *
 * @code{.c}
 * void report(KT_context *ctx, tov_schema *schema, const KT_varray *findings, FILE *page)
 * {
 *     tov_client_report_options options = {0};
 *     KT_string *html = NULL;
 *     options.title = "Shop";
 *     options.findings = findings;
 *     tov_client__write_html_report(ctx, schema, &options, &html);
 *     if (html)
 *         fputs(KT_string__sz(html), page);
 *     KT_string__free(ctx, html);
 * }
 * @endcode
 * @param options    optional.
 * @param[out] html  owned.
 *
 * Fails with KT_ERR_SQLITE(rc) where the database cannot be read, or lacks a table, and as
 * tov_client__check_database() does.
 */
TOV_API void tov_client__write_html_report(KT_context *ctx, tov_schema *schema,
                                           const tov_client_report_options *options, KT_string **html) KT_NOEXCEPT;

/** Takes a file of a report; name is one of a file alone, in characters that every file system takes. */
typedef void (*tov_client_take_report_file)(KT_context *ctx, void *data, const char *name, const char *text);

/**
 * Writes a report as Markdown with Mermaid diagrams: README.md, which lists the tables, and a file for each table.
 *
 * @param options  optional.
 * @param take     called once for each file; when it raises an error in the context, the report ends with that.
 * @param data     handed to take.
 *
 * Fails as tov_client__write_html_report() does.
 */
TOV_API void tov_client__write_markdown_report(KT_context *ctx, tov_schema *schema,
                                               const tov_client_report_options *options,
                                               tov_client_take_report_file take, void *data) KT_NOEXCEPT;

KT_END_DECLS

#endif
