#include "cli_shape.hpp"

#include <span>
#include <string_view>
#include <utility>

namespace {

enum class kind { text, integer, truth, map, list };

struct member {
    const char *key;
    kind type;
    bool is_required = false;
    bool has_maps = false;             // a map keyed by ids: whether its values are maps
    bool has_texts = false;            // or texts
    std::span<const member> own = {};  // a map with known keys: its members
    std::span<const member> each = {}; // a map keyed by ids, or a list: the members of each value
};

constexpr member text(const char *key, bool is_required = false)
{
    return {.key = key, .type = kind::text, .is_required = is_required};
}
constexpr member integer(const char *key, bool is_required = false)
{
    return {.key = key, .type = kind::integer, .is_required = is_required};
}
constexpr member truth(const char *key)
{
    return {.key = key, .type = kind::truth};
}
constexpr member map(const char *key, std::span<const member> own, bool is_required = false)
{
    return {.key = key, .type = kind::map, .is_required = is_required, .own = own};
}
constexpr member by_id(const char *key, std::span<const member> each)
{
    return {.key = key, .type = kind::map, .has_maps = true, .each = each};
}
constexpr member list(const char *key, std::span<const member> each)
{
    return {.key = key, .type = kind::list, .each = each};
}

constexpr member type_members[] = {
    text("name", true),   text("constraint_name"), integer("precision"), integer("scale"),
    truth("fixed_width"), integer("width"),        text("locale"),       truth("binary"),
    truth("noaccent"),    truth("nocase"),         truth("unicode"),     text("host_type"),
};
constexpr member named[] = {text("name")};
constexpr member expression[] = {text("expr", true), text("name")};
constexpr member reference[] = {
    text("name"), text("ref_tbl_id", true), text("ref_col_id"), truth("deferred"), text("on_delete"), text("on_update"),
};
constexpr member column[] = {
    text("name", true),        map("type", type_members, true), text("mssql_col_data_type"), map("notnull", named),
    map("defval", expression), list("check", expression),       map("fk", reference),
};
constexpr member foreign_key[] = {
    {.key = "cols", .type = kind::map, .is_required = true, .has_texts = true},
    text("name"),
    text("ref_tbl_id", true),
    truth("deferred"),
    text("on_delete"),
    text("on_update"),
};
constexpr member primary_key[] = {text("name"), {.key = "cols", .type = kind::map}};
constexpr member check[] = {text("expr", true)};
constexpr member table[] = {
    text("name", true),     integer("txid"),      by_id("cols", column),
    map("pk", primary_key), by_id("uniques", {}), by_id("foreignkeys", foreign_key),
    by_id("check", check),
};
constexpr member backend[] = {text("name"), text("api"), truth("indistinct_unique_nulls")};
constexpr member document_members[] = {
    integer("compat_level", true),
    by_id("tbls", table),
    integer("filter_id"),
    map("backend", backend),
};

constexpr const char *words[] = {"a string", "an integer", "true or false", "an object", "a list"};

bool has_type(const KT_variant *value, kind type)
{
    constexpr KT_variant_type types[] = {KT_VARIANT_STRING, KT_VARIANT_INT64, KT_VARIANT_BOOL, KT_VARIANT_VHASH,
                                         KT_VARIANT_VARRAY};
    return value->type == types[static_cast<int>(type)];
}

// Walks a document along its shape; place is the way down, for the message.
class shape_check {
  public:
    shape_check(KT_context *context, std::string path) : ctx_(context), path_(std::move(path))
    {
    }

    void check_map(const KT_vhash *map, std::span<const member> shape)
    {
        for (const member &m : shape) {
            KT_bool has = 0;
            KT_vhash__has(ctx_, map, m.key, &has);
            if (m.is_required && !has)
                fail(step(m.key), "is missing");
        }
        for_each(map, [&](const char *key, const KT_variant *value) {
            for (const member &m : shape)
                if (std::string_view(m.key) == key)
                    check_value(value, m);
        });
    }

  private:
    std::string step(const std::string &key) const
    {
        return place_.empty() ? key : place_ + "." + key;
    }

    [[noreturn]] void fail(const std::string &place, const std::string &what) const
    {
        throw cli_failure(place + " " + what, path_);
    }

    // Visits every pair, with the place at it.
    template <class Visit> void for_each(const KT_vhash *map, Visit visit)
    {
        uint32_t count = 0;
        KT_vhash__count(ctx_, map, &count);
        const std::string before = place_;
        for (uint32_t n = 0; n < count; n++) {
            const char *key = nullptr;
            const KT_variant *value = nullptr;
            KT_vhash__get_nth_pair(ctx_, map, n, &key, &value);
            place_ = before.empty() ? key : before + "." + key;
            visit(key, value);
        }
        place_ = before;
    }

    void check_value(const KT_variant *value, const member &m)
    {
        if (value->type == KT_VARIANT_NULL && m.type == kind::text && !m.is_required)
            return; // as good as absent
        if (!has_type(value, m.type))
            fail(place_, std::string("is not ") + words[static_cast<int>(m.type)]);
        if (m.type == kind::list)
            check_elements(value->as.varray, m.each);
        else if (m.type == kind::map && m.own.empty())
            for_each(value->as.vhash, [&](const char *, const KT_variant *each) { check_each(each, m); });
        else if (m.type == kind::map)
            check_map(value->as.vhash, m.own);
    }

    // A value of a map that is keyed by ids.
    void check_each(const KT_variant *value, const member &m)
    {
        if (m.has_texts && value->type != KT_VARIANT_STRING)
            fail(place_, "is not a string");
        if (m.has_maps && value->type != KT_VARIANT_VHASH)
            fail(place_, "is not an object");
        if (m.has_maps)
            check_map(value->as.vhash, m.each);
    }

    void check_elements(const KT_varray *list, std::span<const member> shape)
    {
        uint32_t count = 0;
        KT_varray__count(ctx_, list, &count);
        const std::string before = place_;
        for (uint32_t n = 0; n < count; n++) {
            const KT_variant *value = nullptr;
            KT_varray__get_nth(ctx_, list, n, &value);
            place_ = before + "[" + std::to_string(n) + "]";
            if (value->type != KT_VARIANT_VHASH)
                fail(place_, "is not an object");
            check_map(value->as.vhash, shape);
        }
        place_ = before;
    }

    KT_context *ctx_;
    std::string path_;
    std::string place_;
};

} // namespace

void cli_check_schema_shape(KT_context *ctx, const KT_vhash *document, const std::string &path)
{
    shape_check(ctx, path).check_map(document, document_members);
}
