// The values of a catalogue document, each refused with its place when it is not what was expected.
#include "json/host_fields.hpp"

#define KT_HERE "src/host/json/host_fields"

std::string host_place_text(const host_place &place)
{
    if (!place.parent)
        return place.key ? place.key : "the document";
    std::string text = place.parent->parent || place.parent->key ? host_place_text(*place.parent) : "";
    if (!place.key)
        return text + '[' + std::to_string(place.index) + ']';
    return text.empty() ? place.key : text + '.' + place.key;
}

void host_read_text(KT_context *ctx, const host_place &place, const KT_variant &value, const char **text)
{
    if (value.type != KT_VARIANT_STRING)
        KT_FAIL(KT_ERR_WRONG_TYPE, "%s is not a text", host_place_text(place).c_str());
    KT_TRY(KT_variant__get__sz(ctx, &value, text));
}

void host_read_flag(KT_context *ctx, const host_place &place, const KT_variant &value, bool *flag)
{
    if (value.type != KT_VARIANT_BOOL)
        KT_FAIL(KT_ERR_WRONG_TYPE, "%s is not true or false", host_place_text(place).c_str());
    *flag = value.as.boolean != 0;
}

void host_read_int(KT_context *ctx, const host_place &place, const KT_variant &value, int64_t low, int64_t high,
                   int64_t *number)
{
    if (value.type != KT_VARIANT_INT64)
        KT_FAIL(KT_ERR_WRONG_TYPE, "%s is not a whole number", host_place_text(place).c_str());
    if (value.as.int64 < low || value.as.int64 > high)
        KT_FAIL(KT_ERR_UNEXPECTED_VALUE, "%s is %lld, not a number from %lld to %lld", host_place_text(place).c_str(),
                static_cast<long long>(value.as.int64), static_cast<long long>(low), static_cast<long long>(high));
    *number = value.as.int64;
}

void host_read_map(KT_context *ctx, const host_place &place, const KT_variant &value, const KT_vhash **map)
{
    if (value.type != KT_VARIANT_VHASH)
        KT_FAIL(KT_ERR_WRONG_TYPE, "%s is not an object", host_place_text(place).c_str());
    *map = value.as.vhash;
}

void host_read_list(KT_context *ctx, const host_place &place, const KT_variant &value, const KT_varray **list,
                    uint32_t *count)
{
    if (value.type != KT_VARIANT_VARRAY)
        KT_FAIL(KT_ERR_WRONG_TYPE, "%s is not a list", host_place_text(place).c_str());
    KT_TRY(KT_varray__count(ctx, value.as.varray, count));
    *list = value.as.varray;
}

void host_read_nth_map(KT_context *ctx, const host_place &place, const KT_varray *list, uint32_t n,
                       const KT_vhash **map)
{
    const KT_variant *value = nullptr;
    KT_TRY(KT_varray__get_nth(ctx, list, n, &value));
    KT_TRY(host_read_map(ctx, place, *value, map));
}

void host_note_unknown_field(KT_context *ctx, host_reader &reader, const char *name)
{
    KT_TRY(KT_vhash__update__null(ctx, reader.unknown_fields, name));
}

void host_refuse_missing(KT_context *ctx, const host_place &place)
{
    KT_FAIL(KT_ERR_KEY_NOT_FOUND, "%s is missing", host_place_text(place).c_str());
}
