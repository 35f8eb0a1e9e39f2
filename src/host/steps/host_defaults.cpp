// Column defaults: the server's text is always kept, and its SQLite form where there is one.
#include "steps/host_import.hpp"

#include "defaults/host_second_default.hpp"
#include "steps/host_bound_default.hpp"
#include "steps/host_default_form.hpp"

#include <string_view>

#define KT_HERE "src/host/steps/host_defaults"

KT_bool tov_host__is_refused_default(uint64_t code) noexcept
{
    constexpr int sqlite_error = 1;
    constexpr int sqlite_toobig = 18;
    constexpr int sqlite_constraint = 19;
    constexpr int sqlite_mismatch = 20;
    return code == KT_ERR_NOT_FOUND || code == KT_ERR_BAD_NUMBER || code == KT_ERR_SQLITE(sqlite_error) ||
           code == KT_ERR_SQLITE(sqlite_toobig) || code == KT_ERR_SQLITE(sqlite_constraint) ||
           code == KT_ERR_SQLITE(sqlite_mismatch);
}

static void my_translate(KT_context *ctx, host_import &import, const host_table &table, const host_column &col,
                         const char *host_text, host_translation &translation)
{
    kt_owned_text expr{ctx};
    KT_context__push_level(ctx);
    tov_schema__fix_mssql_defval(ctx, import.schema, table.id_text.c_str(), col.id_text, host_text, expr.out());
    const uint64_t code = KT_context__err_code(ctx);
    translation.message = KT_context__err_description(ctx);
    KT_context__pop_level(ctx);
    translation.refused = tov_host__is_refused_default(code) != 0;
    if (code != 0 && !translation.refused)
        KT_FAIL(code, "%s", translation.message.c_str());
    if (expr.get())
        translation.expr = expr.get();
}

// Brings what was translated into the form of the column's values, or refuses what the column cannot hold.
static void my_store(const host_column &col, host_translation &translation)
{
    if (translation.refused || !translation.expr)
        return;
    host_stored_default stored = host_store_default(col, *translation.expr);
    translation.refused = !stored.refusal.empty();
    translation.message = std::move(stored.refusal);
    translation.expr = std::move(stored.expr);
}

// All of a column that its type is made of, here and on the server, and with it what becomes of the default.
static std::string my_translation_key(const host_column &col, const std::string &host_text)
{
    std::string key = std::string(host_type_name(col)) + (col.rowid_key ? " rowid " : " ");
    for (const int64_t number :
         {int64_t{col.max_length}, int64_t{col.precision}, int64_t{col.scale}, int64_t{col.code_page}})
        key += std::to_string(number) + ' ';
    return key + host_text;
}

// The schema module reads literals and the UTC clocks. What it drops or refuses gets a second reading, whose constants
// it reads again: the column's checks have the last word.
static void my_translate_again(KT_context *ctx, host_import &import, const host_table &table, const host_column &col,
                               const std::string &host_text, host_translation &translation)
{
    const bool is_utc = import.options.clock == TOV_HOST_CLOCK_UTC;
    const host_second_default second = host_read_second_default(col, host_text, {is_utc, import.options.constants});
    host_translation again;
    if (!second.host_text.empty()) {
        KT_TRY(my_translate(ctx, import, table, col, second.host_text.c_str(), again));
        my_store(col, again);
    } else if (!second.expr.empty()) {
        again.expr = second.expr;
        again.is_local = second.is_local;
    }
    if (again.expr)
        translation = std::move(again);
}

static void my_find_translation(KT_context *ctx, host_import &import, const host_table &table, const host_column &col,
                                const std::string &host_text, host_translation &translation)
{
    constexpr size_t most = 10000; // worth remembering
    const std::string key = my_translation_key(col, host_text);
    if (const auto known = import.translations.find(key); known != import.translations.end()) {
        translation = known->second;
        return;
    }
    KT_TRY(my_translate(ctx, import, table, col, host_text.c_str(), translation));
    my_store(col, translation);
    if (!translation.expr || translation.refused)
        KT_TRY(my_translate_again(ctx, import, table, col, host_text, translation));
    if (import.translations.size() < most)
        import.translations.emplace(key, translation);
}

// The expression that the server evaluates: the definition, or the end of a bound default's whole statement.
std::string host_default_expression(const host_default &defval)
{
    const bool is_bound = defval.kind && std::string_view(defval.kind) == "bound";
    return std::string(is_bound ? host_bound_default_expression(defval.definition) : defval.definition);
}

static void my_report_dropped(KT_context *ctx, host_import &import, const host_table &table, const host_column &col)
{
    std::string_view sequence;
    const bool is_sequence = host_is_sequence_default(host_default_expression(*col.defval), sequence);
    KT_TRY(import.findings.add(
        ctx, "default-dropped", &table, &col, col.defval->definition,
        (is_sequence ? "left out: SQLite has no sequences" : "left out: SQLite has no default that means the same") +
            host_must_give_value(col)));
}

void host_add_default(KT_context *ctx, host_import &import, const host_table &table, const host_column &col)
{
    if (!col.defval)
        return;
    const host_default &defval = *col.defval;
    if (!defval.definition) {
        KT_TRY(import.findings.add(ctx, "default-hidden", &table, &col, defval.name,
                                   "left out: default hidden from this login"));
        return;
    }
    KT_TRY(tov_schema__set_host_defval(ctx, import.schema, table.id_text.c_str(), col.id_text, defval.definition));
    if (!col.prepared || col.rowid_key) // SQLite numbers the rows
        return;
    host_translation translation;
    KT_TRY(my_find_translation(ctx, import, table, col, host_default_expression(defval), translation));
    if (translation.refused) {
        KT_TRY(import.findings.add(ctx, "default-refused", &table, &col, defval.definition,
                                   "left out: it is not a value of the column's type: " + translation.message +
                                       host_must_give_value(col)));
        return;
    }
    if (!translation.expr) {
        KT_TRY(my_report_dropped(ctx, import, table, col));
        return;
    }
    if (translation.is_local && import.options.clock == TOV_HOST_CLOCK_LOCAL_REPORTED)
        KT_TRY(import.findings.add(ctx, "default-clock", &table, &col, defval.definition,
                                   "kept: it is the local time of the machine where the row is written, not of the "
                                   "server"));
    const bool has_name = !defval.kind || std::string_view(defval.kind) == "constraint";
    KT_TRY(tov_schema__set_colcon_defval(ctx, import.schema, table.id_text.c_str(), col.id_text, 1,
                                         has_name ? defval.name : nullptr, translation.expr->c_str()));
}
