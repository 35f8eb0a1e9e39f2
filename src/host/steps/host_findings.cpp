// Findings as records and as lines.
#include "steps/host_findings.hpp"

#include "kt_chars.h"
#include "steps/host_members.hpp"
#include "tov_host.h"

#include <iterator>

#define KT_HERE "src/host/steps/host_findings"

void host_findings::add(KT_context *ctx, host_finding_code code, const host_table *table, const host_column *col,
                        const char *host_text, const std::string &reason)
{
    if (!list_.get())
        KT_TRY(KT_varray__alloc(ctx, list_.out()));
    KT_vhash *finding = nullptr;
    KT_TRY(KT_varray__appendnew__vhash(ctx, list_, &finding));
    KT_TRY(host_add_text(ctx, finding, "code", code.kind->code));
    KT_TRY(host_add_text(ctx, finding, "severity", code.kind->severity));
    KT_TRY(host_add_text(ctx, finding, "table", table ? table->label.c_str() : nullptr));
    KT_TRY(host_add_text(ctx, finding, "column", col ? col->name : nullptr));
    KT_TRY(host_add_text(ctx, finding, "reason", reason.c_str()));
    KT_TRY(host_add_text(ctx, finding, "host_text", host_text));
}

void host_findings::add_at(KT_context *ctx, host_finding_code code, const char *place, const char *host_text,
                           const std::string &reason)
{
    KT_TRY(add(ctx, code, nullptr, nullptr, host_text, reason));
    uint32_t count = 0;
    KT_vhash *finding = nullptr;
    KT_TRY(KT_varray__count(ctx, list_, &count));
    KT_TRY(KT_varray__get__vhash(ctx, list_, count - 1, &finding));
    KT_TRY(host_add_text(ctx, finding, "place", place));
}

std::string host_must_give_value(const host_column &col)
{
    return col.is_nullable ? "" : "; the column is NOT NULL, so inserts must give a value";
}

static std::string my_bracketed(const char *name)
{
    std::string text = "[";
    for (const char *byte = name; *byte; byte++) {
        text += *byte;
        if (*byte == ']')
            text += ']';
    }
    return text + ']';
}

std::string host_key_text(const char *kind, const host_key &key)
{
    std::string text = std::string(kind) + (key.name ? ' ' + my_bracketed(key.name) : "") + " (";
    for (const char *col_name : key.col_names)
        text += (text.back() == '(' ? "" : ", ") + my_bracketed(col_name);
    return key.filter ? text + ") WHERE " + key.filter : text + ')';
}

std::string host_foreignkey_text(const host_foreignkey &fk)
{
    std::string cols;
    std::string ref_cols;
    for (const auto &[col_name, ref_col_name] : fk.col_names) {
        cols += (cols.empty() ? "" : ", ") + my_bracketed(col_name);
        ref_cols += (ref_cols.empty() ? "" : ", ") + my_bracketed(ref_col_name);
    }
    return (fk.name ? "CONSTRAINT " + my_bracketed(fk.name) + ' ' : "") + "FOREIGN KEY (" + cols + ") REFERENCES " +
           my_bracketed(fk.ref_schema) + '.' + my_bracketed(fk.ref_table) + " (" + ref_cols + ") ON DELETE " +
           fk.on_delete + " ON UPDATE " + fk.on_update;
}

// Appends a part of a line after its separator.
static void my_append_part(KT_context *ctx, KT_string *line, const char *separator, const char *text)
{
    if (!text)
        return;
    KT_TRY(KT_string__append__sz(ctx, line, separator));
    KT_TRY(KT_string__append__harmless(ctx, line, text));
}

void tov_host__format_finding(KT_context *ctx, const KT_vhash *finding, KT_string *line) noexcept
{
    const char *code = nullptr, *table = nullptr, *column = nullptr, *reason = nullptr, *host_text = nullptr,
               *place = nullptr;
    KT_TRY(KT_vhash__get__sz(ctx, finding, "code", &code));
    KT_TRY(KT_vhash__check__sz(ctx, finding, "table", &table));
    KT_TRY(KT_vhash__check__sz(ctx, finding, "column", &column));
    KT_TRY(KT_vhash__check__sz(ctx, finding, "reason", &reason));
    KT_TRY(KT_vhash__check__sz(ctx, finding, "host_text", &host_text));
    KT_TRY(KT_vhash__check__sz(ctx, finding, "place", &place));
    kt_owned_string text{ctx};
    KT_TRY(KT_string__alloc(ctx, text.out()));
    KT_TRY(my_append_part(ctx, text, "", code));
    KT_TRY(my_append_part(ctx, text, ": ", place));
    KT_TRY(my_append_part(ctx, text, ": ", table));
    KT_TRY(my_append_part(ctx, text, table ? "." : ": ", column));
    KT_TRY(my_append_part(ctx, text, ": ", reason));
    KT_TRY(my_append_part(ctx, text, ": ", host_text));
    KT_TRY(KT_string__append__string(ctx, line, text));
}

const tov_host_finding_kind *tov_host__get_nth_finding_kind(uint32_t n) noexcept
{
    return n < std::size(host_finding_kinds) ? &host_finding_kinds[n] : nullptr;
}
