// Whether a document has the shape of one.
//
// The tables of the shape end, so the walk is never deeper than they are, whatever the document holds. The way down to
// a value is a chain of steps on the stack, which becomes text only in a message.

#include "document/tov_parse_defin_private.hpp"

#include <cstring>
#include <iterator>

namespace {

struct my_step {
    const my_step *above; // null at a member of the document itself
    const char *key;      // null for an element of a list
    uint32_t n;           // which element that is
};

struct my_type_facts {
    KT_variant_type variant;
    const char *words;
};

} // namespace

// By member type.
static constexpr my_type_facts my_types[] = {
    {KT_VARIANT_STRING, "a string"}, {KT_VARIANT_INT64, "an integer"}, {KT_VARIANT_BOOL, "true or false"},
    {KT_VARIANT_VHASH, "an object"}, {KT_VARIANT_VHASH, "an object"},  {KT_VARIANT_VARRAY, "a list"},
    {KT_VARIANT_VHASH, "an object"}, {KT_VARIANT_VHASH, "an object"},  {KT_VARIANT_VHASH, "an object"},
    {KT_VARIANT_VHASH, "an object"},
};
static_assert(std::size(my_types) == TOV_MEMBER_OPEN + 1);

static void my_append_place(KT_context *ctx, KT_string *text, const my_step *step) noexcept
{
    if (step->above)
        KT_TRY(my_append_place(ctx, text, step->above));
    if (step->key)
        KT_TRY(KT_string__append__format(ctx, text, "%s%s", step->above ? "." : "", step->key));
    else
        KT_TRY(KT_string__append__format(ctx, text, "[%u]", step->n));
}

static void my_fail(KT_context *ctx, uint64_t code, const my_step &step, const char *what, const char *words) noexcept
{
    kt_owned_string place{ctx};
    KT_TRY(KT_string__alloc(ctx, place.out()));
    KT_TRY(my_append_place(ctx, place, &step));
    KT_FAIL(code, "%s is %s%s", KT_string__sz(place), what, words);
}

static void my_check_type(KT_context *ctx, const my_step &step, const KT_variant *value, tov_member_type type) noexcept
{
    if (value->type != my_types[type].variant)
        KT_TRY(my_fail(ctx, KT_ERR_WRONG_TYPE, step, "not ", my_types[type].words));
}

static void my_check_record(KT_context *ctx, const my_step *step, const KT_vhash *record,
                            const tov_shape &shape) noexcept;

static void my_check_list(KT_context *ctx, const my_step &step, const KT_varray *list, const tov_shape &shape) noexcept
{
    uint32_t count = 0;
    KT_TRY(KT_varray__count(ctx, list, &count));
    for (uint32_t n = 0; n < count; n++) {
        const my_step element{&step, nullptr, n};
        const KT_variant *value = nullptr;
        KT_TRY(KT_varray__get_nth(ctx, list, n, &value));
        KT_TRY(my_check_type(ctx, element, value, TOV_MEMBER_RECORD));
        KT_TRY(my_check_record(ctx, &element, value->as.vhash, shape));
    }
}

// The values of a map that is keyed by ids. Those of a set of columns may be anything.
static void my_check_values(KT_context *ctx, const my_step &step, const KT_vhash *map,
                            const tov_member &member) noexcept
{
    uint32_t count = 0;
    KT_TRY(KT_vhash__count(ctx, map, &count));
    for (uint32_t n = 0; n < count; n++) {
        my_step pair{&step, nullptr, 0};
        const KT_variant *value = nullptr;
        KT_TRY(KT_vhash__get_nth_pair(ctx, map, n, &pair.key, &value));
        const bool is_text = member.type == TOV_MEMBER_COL_PAIRS;
        KT_TRY(my_check_type(ctx, pair, value, is_text ? TOV_MEMBER_STRING : TOV_MEMBER_RECORD));
        if (member.shape)
            KT_TRY(my_check_record(ctx, &pair, value->as.vhash, *member.shape));
    }
}

static void my_check_value(KT_context *ctx, const my_step &step, const KT_variant *value,
                           const tov_member &member) noexcept
{
    KT_TRY(my_check_type(ctx, step, value, member.type));
    switch (member.type) {
    case TOV_MEMBER_RECORD:
        KT_TRY(my_check_record(ctx, &step, value->as.vhash, *member.shape));
        break;
    case TOV_MEMBER_LIST:
        KT_TRY(my_check_list(ctx, step, value->as.varray, *member.shape));
        break;
    case TOV_MEMBER_RECORDS:
    case TOV_MEMBER_COL_SETS:
    case TOV_MEMBER_COL_PAIRS:
        KT_TRY(my_check_values(ctx, step, value->as.vhash, member));
        break;
    default: // has nothing inside that could be wrong
        break;
    }
}

static const tov_member *my_find_member(const tov_shape &shape, const char *key) noexcept
{
    for (uint32_t n = 0; n < shape.count; n++)
        if (std::strcmp(shape.members[n].key, key) == 0)
            return &shape.members[n];
    return nullptr;
}

static void my_check_missing(KT_context *ctx, const my_step *step, const KT_vhash *record,
                             const tov_shape &shape) noexcept
{
    for (uint32_t n = 0; n < shape.count; n++) {
        const tov_member &member = shape.members[n];
        KT_bool has = 1;
        if (member.is_required)
            KT_TRY(KT_vhash__has(ctx, record, member.key, &has));
        if (!has)
            KT_TRY(my_fail(ctx, KT_ERR_KEY_NOT_FOUND, {step, member.key, 0}, "missing", ""));
    }
}

// Null in the place of an optional string is as good as its absence: setters write it for a string that is null.
static bool my_is_absent(const KT_variant *value, const tov_member &member) noexcept
{
    return value->type == KT_VARIANT_NULL && member.type == TOV_MEMBER_STRING && !member.is_required;
}

static void my_check_record(KT_context *ctx, const my_step *step, const KT_vhash *record,
                            const tov_shape &shape) noexcept
{
    KT_TRY(my_check_missing(ctx, step, record, shape));
    uint32_t count = 0;
    KT_TRY(KT_vhash__count(ctx, record, &count));
    for (uint32_t n = 0; n < count; n++) {
        my_step pair{step, nullptr, 0};
        const KT_variant *value = nullptr;
        KT_TRY(KT_vhash__get_nth_pair(ctx, record, n, &pair.key, &value));
        const tov_member *member = my_find_member(shape, pair.key);
        if (member && !my_is_absent(value, *member))
            KT_TRY(my_check_value(ctx, pair, value, *member));
    }
}

void tov_schema__check_shape(KT_context *ctx, tov_schema *schema) noexcept
{
    KT_TRY(my_check_record(ctx, nullptr, schema->document, *tov_get_document_shape()));
}
