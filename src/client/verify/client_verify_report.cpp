// Violations on their way to the caller: the row's key, the value as a literal, and the limit.
#include "verify/client_verify.hpp"

#include "kt_chars.h"

#include <charconv>
#include <cmath>

#define KT_HERE "src/client/verify/client_verify_report"

static constexpr int shown_chars = 60;
static constexpr int shown_bytes = 30;

std::string client_short_value(const std::string &value)
{
    return "CASE typeof(" + value + ") WHEN 'text' THEN substr(" + value + ",1," + std::to_string(shown_chars + 1) +
           ") WHEN 'blob' THEN substr(" + value + ",1," + std::to_string(shown_bytes + 1) + ") ELSE " + value + " END";
}

// In quotes; what is not UTF-8 is shown as U+FFFD, and what was cut off as an ellipsis.
static std::string my_text_literal(const char *text)
{
    std::string literal = "'";
    const char *at = text;
    for (int count = 0; *at && count < shown_chars; count++) {
        const char *start = at;
        if (KT_char__next(&at) < 0)
            literal += "\xEF\xBF\xBD";
        else
            literal.append(start, at);
        if (*start == '\'')
            literal += '\'';
    }
    return literal + (*at ? "…'" : "'");
}

static std::string my_blob_literal(const unsigned char *bytes, int size)
{
    static constexpr char digits[] = "0123456789ABCDEF";
    std::string literal = "x'";
    for (int n = 0; bytes && n < size && n < shown_bytes; n++)
        literal += {digits[bytes[n] >> 4], digits[bytes[n] & 15]};
    return literal + (size > shown_bytes ? "…'" : "'");
}

// As few digits as tell the number from all others.
static std::string my_real_literal(double number)
{
    if (std::isinf(number))
        return number < 0 ? "-9e999" : "9e999";
    char bytes[40];
    const std::string text(bytes, std::to_chars(bytes, bytes + sizeof bytes, number).ptr);
    const bool looks_whole = text.find_first_not_of("-0123456789") == std::string::npos;
    return text + (looks_whole ? ".0" : "");
}

std::string client_shown_result(const client_verify &run, sqlite3_stmt *statement, int column)
{
    const KT_sqlite_functions *functions = run.database.functions;
    switch (functions->column_type(statement, column)) {
    case SQLITE_INTEGER:
        return std::to_string(functions->column_int64(statement, column));
    case SQLITE_FLOAT:
        return my_real_literal(functions->column_double(statement, column));
    case SQLITE_TEXT: {
        const char *text = functions->column_text(statement, column);
        return my_text_literal(text ? text : "");
    }
    case SQLITE_BLOB: {
        const auto *bytes = static_cast<const unsigned char *>(functions->column_blob(statement, column));
        return my_blob_literal(bytes, functions->column_bytes(statement, column));
    }
    default:
        return "NULL";
    }
}

std::string client_row_results(const client_verify_tbl &tbl)
{
    std::string results = tbl.found->rowid.empty() ? "NULL" : client_verify_rowid;
    for (const std::string &value : tbl.key_values)
        results += "," + client_short_value(value);
    return results;
}

int client_count_row_results(const client_verify_tbl &tbl) noexcept
{
    return 1 + static_cast<int>(tbl.key_values.size());
}

static std::string my_shown_key(const client_verify &run, const client_verify_tbl &tbl, sqlite3_stmt *statement)
{
    std::string key;
    for (size_t n = 0; n < tbl.key_names.size(); n++)
        key += (n ? ", " : "") + tbl.key_names[n] + "=" + client_shown_result(run, statement, static_cast<int>(n) + 1);
    return key;
}

static const char *my_text(const std::string &text) noexcept
{
    return text.empty() ? nullptr : text.c_str();
}

static void my_report(KT_context *ctx, client_verify &run, const client_finding &finding,
                      tov_client_violation violation)
{
    run.is_whole = run.options.max == 0 || run.count < run.options.max;
    if (!run.is_whole)
        return;
    run.count++;
    violation.kind = finding.kind;
    violation.col = my_text(finding.col);
    violation.value = my_text(finding.value);
    violation.message = finding.message.c_str();
    KT_TRY(run.take(ctx, run.data, &violation));
}

void client_verify__report_row(KT_context *ctx, client_verify &run, const client_verify_tbl &tbl,
                               sqlite3_stmt *statement, const client_finding &finding)
{
    const std::string key = my_shown_key(run, tbl, statement);
    tov_client_violation violation = {};
    violation.tbl = tbl.tbl.name.c_str();
    violation.has_rowid = !tbl.found->rowid.empty();
    if (violation.has_rowid)
        violation.rowid = run.database.functions->column_int64(statement, 0);
    violation.key = my_text(key);
    KT_TRY(my_report(ctx, run, finding, violation));
}

void client_verify__report_tbl(KT_context *ctx, client_verify &run, const char *tbl_name, const client_finding &finding)
{
    tov_client_violation violation = {};
    violation.tbl = tbl_name;
    KT_TRY(my_report(ctx, run, finding, violation));
}
