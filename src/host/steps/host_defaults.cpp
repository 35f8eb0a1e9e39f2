// Column defaults: the server's text is always kept, and its SQLite form where there is one.
#include "steps/host_import.hpp"

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

// All of a column that its type in the schema is made of, and with it what becomes of the default.
static std::string my_translation_key(const host_column &col, const std::string &host_text)
{
    return std::string(host_type_name(col)) + (col.rowid_key ? " rowid " : " ") + std::to_string(col.max_length) + ' ' +
           std::to_string(col.precision) + ' ' + std::to_string(col.scale) + ' ' + host_text;
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
    if (import.translations.size() < most)
        import.translations.emplace(key, translation);
}

static bool my_is_number(std::string_view digits, int low, int high)
{
    int number = 0;
    for (const char digit : digits) {
        if (digit < '0' || digit > '9')
            return false;
        number = number * 10 + (digit - '0');
    }
    return number >= low && number <= high;
}

static bool my_is_date(std::string_view text)
{
    return text.size() == 10 && text[4] == '-' && text[7] == '-' && my_is_number(text.substr(0, 4), 0, 9999) &&
           my_is_number(text.substr(5, 2), 1, 12) && my_is_number(text.substr(8, 2), 1, 31);
}

static bool my_is_time(std::string_view text)
{
    const bool with_seconds = text.size() >= 8;
    return text.size() >= 5 && text[2] == ':' && my_is_number(text.substr(0, 2), 0, 23) &&
           my_is_number(text.substr(3, 2), 0, 59) &&
           (text.size() == 5 || (with_seconds && text[5] == ':' && my_is_number(text.substr(6, 2), 0, 59)));
}

// The column's check lets pass what SQLite's date functions do not know at all, such as '01/01/1900': they answer with
// NULL, and NULL breaks no check. What they know, the check has looked at.
static bool my_is_known_moment(std::string_view abstract_type, std::string_view expr)
{
    if (!expr.starts_with('\''))
        return true;
    const std::string_view text = expr.substr(1, expr.size() - 2);
    if (abstract_type == "date")
        return my_is_date(text);
    if (abstract_type == "time")
        return my_is_time(text);
    if (abstract_type != "datetime")
        return true;
    return my_is_date(text.substr(0, 10)) &&
           (text.size() == 10 || ((text[10] == ' ' || text[10] == 'T') && my_is_time(text.substr(11))));
}

// Refuses what the trial could not judge.
static void my_check_moment(KT_context *ctx, host_import &import, const host_table &table, const host_column &col,
                            host_translation &translation)
{
    const char *abstract_type = nullptr;
    const char *sqlite_typeof = nullptr;
    if (translation.refused || !translation.expr)
        return;
    KT_TRY(tov_schema__get_col_type(ctx, import.schema, table.id_text.c_str(), col.id_text, &abstract_type,
                                    &sqlite_typeof));
    if (my_is_known_moment(abstract_type, *translation.expr))
        return;
    translation.refused = true;
    translation.message = std::string("not a ") + abstract_type + " in a form that SQLite knows";
}

// The expression that the server evaluates: the definition, or the end of a bound default's whole statement.
std::string host_default_expression(const host_default &defval)
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
    KT_TRY(tov_schema__set_host_defval(ctx, import.schema, table.id_text.c_str(), col.id_text, defval.definition));
    if (!col.prepared)
        return;
    host_translation translation;
    KT_TRY(my_find_translation(ctx, import, table, col, host_default_expression(defval), translation));
    KT_TRY(my_check_moment(ctx, import, table, col, translation));
    if (translation.refused) {
        KT_TRY(import.findings.add(ctx, "default-refused", &table, &col, defval.definition,
                                   "left out: it is not a value of the column's type: " + translation.message +
                                       host_must_give_value(col)));
        return;
    }
    if (!translation.expr) {
        KT_TRY(import.findings.add(ctx, "default-dropped", &table, &col, defval.definition,
                                   "left out: SQLite has no default that means the same" + host_must_give_value(col)));
        return;
    }
    const host_stored_default stored = host_store_default(col, translation.expr->c_str());
    if (!stored.refusal.empty()) {
        KT_TRY(import.findings.add(ctx, "default-refused", &table, &col, defval.definition,
                                   "left out: it is not a value of the column's type: " + stored.refusal +
                                       host_must_give_value(col)));
        return;
    }
    const bool has_name = !defval.kind || std::string_view(defval.kind) == "constraint";
    KT_TRY(tov_schema__set_colcon_defval(ctx, import.schema, table.id_text.c_str(), col.id_text, 1,
                                         has_name ? defval.name : nullptr, stored.expr.c_str()));
}
