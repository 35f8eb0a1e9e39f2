// The facts about the server, which the schema module carries along without a look: what is read of them later is of
// the kind that its readers expect, or the document is refused at once.
#include "check/client_strings.hpp"

#include <algorithm>
#include <cstring>
#include <span>

#define KT_HERE "src/client/check/client_facts"

namespace {

enum class fact_kind { string, integer, flag, strings, pair, flags, records }; // a pair is of strings

struct server_fact {
    const char *key;
    fact_kind kind;
    bool is_required = false;
    std::span<const server_fact> members = {}; // of each of several records
};

// What a record is: column 2 of table "Orders".
struct fact_place {
    const char *tbl;    // null for the server itself
    const char *record; // null for the facts about the table itself
    uint32_t n;
};

struct kind_traits {
    const char *words;
    KT_variant_type type;
    KT_variant_type element;
};

} // namespace

// By kind.
static constexpr kind_traits kinds[] = {
    {"a string", KT_VARIANT_STRING, KT_VARIANT_NULL},
    {"an integer", KT_VARIANT_INT64, KT_VARIANT_NULL},
    {"true or false", KT_VARIANT_BOOL, KT_VARIANT_NULL},
    {"a list of strings", KT_VARIANT_VARRAY, KT_VARIANT_STRING},
    {"a list of two strings", KT_VARIANT_VARRAY, KT_VARIANT_STRING},
    {"a list of truth values", KT_VARIANT_VARRAY, KT_VARIANT_BOOL},
    {"a list of objects", KT_VARIANT_VARRAY, KT_VARIANT_VHASH},
};

static const kind_traits &my_traits(const server_fact &fact) noexcept
{
    return kinds[static_cast<size_t>(fact.kind)];
}

static constexpr server_fact sequence_facts[] = {
    {"schema", fact_kind::string}, {"name", fact_kind::string},      {"type", fact_kind::string},
    {"start", fact_kind::string},  {"increment", fact_kind::string},
};
static constexpr server_fact server_facts[] = {
    {"version", fact_kind::integer},
    {"database", fact_kind::string},
    {"collation", fact_kind::string},
    {"code_page", fact_kind::integer},
    {"sequences", fact_kind::records, false, sequence_facts},
};
static constexpr server_fact col_facts[] = {
    {"name", fact_kind::string, true}, {"id", fact_kind::string},        {"type", fact_kind::string, true},
    {"user_type", fact_kind::string},  {"length", fact_kind::integer},   {"precision", fact_kind::integer},
    {"scale", fact_kind::integer},     {"collation", fact_kind::string}, {"code_page", fact_kind::integer},
    {"nullable", fact_kind::flag},     {"identity", fact_kind::pair},    {"computed", fact_kind::string},
    {"generated", fact_kind::integer}, {"hidden", fact_kind::flag},      {"default", fact_kind::string},
    {"rowguidcol", fact_kind::flag},   {"sparse", fact_kind::flag},      {"description", fact_kind::string},
};
static constexpr server_fact index_facts[] = {
    {"name", fact_kind::string},      {"unique", fact_kind::flag},      {"clustered", fact_kind::flag},
    {"disabled", fact_kind::flag},    {"kind", fact_kind::string},      {"cols", fact_kind::strings},
    {"included", fact_kind::strings}, {"descending", fact_kind::flags}, {"filter", fact_kind::string},
    {"where", fact_kind::string},     {"left_out", fact_kind::flag},
};
static constexpr server_fact tbl_facts[] = {
    {"schema", fact_kind::string},
    {"name", fact_kind::string},
    {"description", fact_kind::string},
    {"temporal_type", fact_kind::integer},
    {"row_count", fact_kind::integer},
    {"cols", fact_kind::records, false, col_facts},
    {"indexes", fact_kind::records, false, index_facts},
};

static void my_refuse(KT_context *ctx, uint64_t code, const fact_place &place, const server_fact &fact,
                      const char *flaw) noexcept
{
    kt_owned_string where{ctx};
    KT_TRY(KT_string__alloc(ctx, where.out()));
    if (place.tbl) {
        KT_TRY(KT_string__append__sz(ctx, where, "table "));
        KT_TRY(KT_string__append__shown(ctx, where, place.tbl));
        KT_TRY(KT_string__append__sz(ctx, where, ", "));
    }
    KT_TRY(KT_string__append__sz(ctx, where, "facts about the server"));
    if (place.record)
        KT_TRY(KT_string__append__format(ctx, where, ", %s[%u]", place.record, place.n));
    KT_FAIL(code, "%s: %s is %s", KT_string__sz(where), fact.key, flaw);
}

static void my_refuse_kind(KT_context *ctx, const fact_place &place, const server_fact &fact) noexcept
{
    kt_owned_string flaw{ctx};
    KT_TRY(KT_string__alloc(ctx, flaw.out()));
    KT_TRY(KT_string__append__format(ctx, flaw, "not %s", my_traits(fact).words));
    KT_TRY(my_refuse(ctx, KT_ERR_WRONG_TYPE, place, fact, KT_string__sz(flaw)));
}

static void my_check_record(KT_context *ctx, const fact_place &place, const KT_vhash *record,
                            std::span<const server_fact> facts) noexcept;

static void my_check_list(KT_context *ctx, const fact_place &place, const server_fact &fact,
                          const KT_varray *list) noexcept
{
    uint32_t count = 0;
    KT_TRY(KT_varray__count(ctx, list, &count));
    if (fact.kind == fact_kind::pair && count != 2)
        return my_refuse_kind(ctx, place, fact);
    for (uint32_t n = 0; n < count; n++) {
        const KT_variant *value = nullptr;
        KT_TRY(KT_varray__get_nth(ctx, list, n, &value));
        if (value->type != my_traits(fact).element)
            return my_refuse_kind(ctx, place, fact);
        if (fact.kind == fact_kind::records)
            KT_TRY(my_check_record(ctx, {place.tbl, fact.key, n}, value->as.vhash, fact.members));
    }
}

static void my_check_value(KT_context *ctx, const fact_place &place, const server_fact &fact,
                           const KT_variant *value) noexcept
{
    if (value->type == KT_VARIANT_NULL && !fact.is_required) // as good as absent
        return;
    if (value->type != my_traits(fact).type)
        return my_refuse_kind(ctx, place, fact);
    if (value->type == KT_VARIANT_VARRAY)
        KT_TRY(my_check_list(ctx, place, fact, value->as.varray));
}

static void my_check_missing(KT_context *ctx, const fact_place &place, const KT_vhash *record,
                             std::span<const server_fact> facts) noexcept
{
    for (const server_fact &fact : facts) {
        KT_bool has = 1;
        if (fact.is_required)
            KT_TRY(KT_vhash__has(ctx, record, fact.key, &has));
        if (!has)
            return my_refuse(ctx, KT_ERR_KEY_NOT_FOUND, place, fact, "missing");
    }
}

static void my_check_record(KT_context *ctx, const fact_place &place, const KT_vhash *record,
                            std::span<const server_fact> facts) noexcept
{
    uint32_t count = 0;
    KT_TRY(my_check_missing(ctx, place, record, facts));
    KT_TRY(KT_vhash__count(ctx, record, &count));
    for (uint32_t n = 0; n < count; n++) {
        const char *key = nullptr;
        const KT_variant *value = nullptr;
        KT_TRY(KT_vhash__get_nth_pair(ctx, record, n, &key, &value));
        const auto fact = std::find_if(facts.begin(), facts.end(),
                                       [key](const server_fact &one) { return std::strcmp(one.key, key) == 0; });
        if (fact != facts.end())
            KT_TRY(my_check_value(ctx, place, *fact, value));
    }
}

void client_check_server_facts(KT_context *ctx, tov_schema *schema) noexcept
{
    KT_vhash *server = nullptr;
    KT_TRY(tov_schema__check_server(ctx, schema, &server));
    if (server)
        KT_TRY(my_check_record(ctx, {nullptr, nullptr, 0}, server, server_facts));
}

void client_check_tbl_facts(KT_context *ctx, const client_walk &w, const KT_vhash *record) noexcept
{
    KT_vhash *server = nullptr;
    KT_TRY(KT_vhash__check__vhash(ctx, record, "server", &server));
    if (server)
        KT_TRY(my_check_record(ctx, {w.tbl.name, nullptr, 0}, server, tbl_facts));
}
