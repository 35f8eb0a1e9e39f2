// Column defaults: the server's text is always kept, and its SQLite form where there is one.
#include "steps/host_import.hpp"

#include "steps/host_bound_default.hpp"

#include <string_view>

#define KT_HERE "src/host/steps/host_defaults"

// What the translation said: a default, nothing, or why the column's own type check refuses it.
struct host_translation {
    explicit host_translation(KT_context *ctx) : expr(ctx)
    {
    }
    kt_owned_text expr;
    bool refused = false;
    std::string message;
};

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
    KT_context__push_level(ctx);
    tov_schema__fix_mssql_defval(ctx, import.schema, table.id_text.c_str(), col.id_text.c_str(), host_text,
                                 translation.expr.out());
    const uint64_t code = KT_context__err_code(ctx);
    translation.message = KT_context__err_description(ctx);
    KT_context__pop_level(ctx);
    translation.refused = tov_host__is_refused_default(code) != 0;
    if (code != 0 && !translation.refused)
        KT_FAIL(code, "%s", translation.message.c_str());
}

// The expression that the server evaluates: the definition, or the end of a bound default's whole statement.
static std::string my_expression(const host_default &defval)
{
    const bool is_bound = defval.kind && std::string_view(defval.kind) == "bound";
    return std::string(is_bound ? host_bound_default_expression(defval.definition) : defval.definition);
}

void host_add_default(KT_context *ctx, host_import &import, const host_table &table, const host_column &col)
{
    const host_default &defval = col.defval;
    if (!defval.present)
        return;
    if (!defval.definition) {
        KT_TRY(import.findings.add(ctx, "default-hidden", &table, &col, defval.name,
                                   "left out: default hidden from this login"));
        return;
    }
    KT_TRY(
        tov_schema__set_host_defval(ctx, import.schema, table.id_text.c_str(), col.id_text.c_str(), defval.definition));
    if (!col.prepared)
        return;
    host_translation translation{ctx};
    KT_TRY(my_translate(ctx, import, table, col, my_expression(defval).c_str(), translation));
    if (translation.refused) {
        KT_TRY(import.findings.add(ctx, "default-refused", &table, &col, defval.definition,
                                   "left out: it is not a value of the column's type: " + translation.message +
                                       host_must_give_value(col)));
        return;
    }
    if (!translation.expr.get()) {
        KT_TRY(import.findings.add(ctx, "default-dropped", &table, &col, defval.definition,
                                   "left out: SQLite has no default that means the same" + host_must_give_value(col)));
        return;
    }
    const bool has_name = !defval.kind || std::string_view(defval.kind) == "constraint";
    KT_TRY(tov_schema__set_colcon_defval(ctx, import.schema, table.id_text.c_str(), col.id_text.c_str(), 1,
                                         has_name ? defval.name : nullptr, translation.expr));
}
