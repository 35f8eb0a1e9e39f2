// What a document is told that does not have the shape of one; document_shape_proof.cpp finds out whether it has.
//
// The tables of the shape end, so the walk is never deeper than they are, whatever the document holds. The way down to
// a value is a chain of steps on the stack, which becomes text only in a message.

#include "document/document_shape_proof.hpp"

#include <iterator>

namespace {

struct my_step {
    const my_step *above; // null at a member of the document itself
    const char *key;      // null for an element of a list
    uint32_t n;           // which element that is
};

} // namespace

// By member type.
static constexpr const char *my_type_words[] = {
    "a string", "an integer", "true or false", "an object", "an object",
    "a list",   "an object",  "an object",     "an object", "an object",
};
static_assert(std::size(my_type_words) == TOV_MEMBER_OPEN + 1);

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
    if (value->type != document_variant_of(type))
        KT_TRY(my_fail(ctx, KT_ERR_WRONG_TYPE, step, "not ", my_type_words[type]));
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
        const tov_member *member = document_find_member(shape, pair.key);
        if (member && !document_is_absent(value, *member))
            KT_TRY(my_check_value(ctx, pair, value, *member));
    }
}

void tov_schema__check_shape(KT_context *ctx, tov_schema *schema) noexcept
{
    KT_RETURN_IF_FAILED;
    auto &known = schema->known_shape;
    if (known.is_right && known.change_count == schema->change_count)
        return;
    if (!document_has_shape(ctx, schema->document, *tov_get_document_shape()))
        KT_TRY(my_check_record(ctx, nullptr, schema->document, *tov_get_document_shape()));
    known = {true, schema->change_count};
}
