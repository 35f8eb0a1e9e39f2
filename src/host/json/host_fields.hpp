// Reads records of a catalogue document into plain structures, driven by tables of fields.
//
// Every refusal names the place of the value, e.g. tables[3].columns[0].name. Places are linked from the inside out
// and live on the stack of the functions that walk the document. A null counts as absent, as the export leaves both
// out. Fields that no table knows are noted, each name once.
#pragma once

#include "kt_owned.hpp"
#include "records/host_catalogue.hpp"

#include <cstring>
#include <string>
#include <variant>

struct host_place {
    const host_place *parent = nullptr;
    const char *key = nullptr; // null: an element of a list
    uint32_t index = 0;
};

// The place as text; "the document" for the outermost one.
std::string host_place_text(const host_place &place);

// What reading collects besides the records: the names of unknown fields, and the defaults of columns.
struct host_reader {
    KT_vhash *unknown_fields;
    host_pool<host_default> &defaults;
};

// A whole number with the bounds that its use asks for, and that its member can hold.
template <class T> struct host_int_field {
    std::variant<int64_t T::*, int32_t T::*, uint8_t T::*> member;
    int64_t low;
    int64_t high;
};

// A nested record or list, read by a function of its own.
template <class T>
using host_child_field = void (*)(KT_context *ctx, host_reader &reader, const host_place &place,
                                  const KT_variant &value, T &record);

// std::monostate: a field that is known and not used.
template <class T> struct host_field {
    const char *name;
    std::variant<std::monostate, const char * T::*, bool T::*, host_int_field<T>, host_child_field<T>> target{};
    bool required = false;
};

// The values of one kind; each fails with the place when the value is of another.
void host_read_text(KT_context *ctx, const host_place &place, const KT_variant &value, const char **text);
void host_read_flag(KT_context *ctx, const host_place &place, const KT_variant &value, bool *flag);
void host_read_int(KT_context *ctx, const host_place &place, const KT_variant &value, int64_t low, int64_t high,
                   int64_t *number);
void host_read_map(KT_context *ctx, const host_place &place, const KT_variant &value, const KT_vhash **map);
void host_read_list(KT_context *ctx, const host_place &place, const KT_variant &value, const KT_varray **list,
                    uint32_t *count);
// The n-th element of a list, which must be a map.
void host_read_nth_map(KT_context *ctx, const host_place &place, const KT_varray *list, uint32_t n,
                       const KT_vhash **map);
void host_note_unknown_field(KT_context *ctx, host_reader &reader, const char *name);
void host_refuse_missing(KT_context *ctx, const host_place &place);

#define KT_HERE "src/host/json/host_fields"

template <class T>
void host_read_int_field(KT_context *ctx, const host_place &place, const KT_variant &value,
                         const host_int_field<T> &field, T &record)
{
    int64_t number = 0;
    KT_TRY(host_read_int(ctx, place, value, field.low, field.high, &number));
    std::visit(
        [&](auto member) {
            using held = std::remove_reference_t<decltype(record.*member)>;
            record.*member = static_cast<held>(number);
        },
        field.member);
}

template <class T>
void host_read_field(KT_context *ctx, host_reader &reader, const host_place &place, const KT_variant &value,
                     const host_field<T> &field, T &record)
{
    if (const auto *text = std::get_if<const char * T::*>(&field.target))
        KT_TRY(host_read_text(ctx, place, value, &(record.**text)));
    else if (const auto *flag = std::get_if<bool T::*>(&field.target))
        KT_TRY(host_read_flag(ctx, place, value, &(record.**flag)));
    else if (const auto *number = std::get_if<host_int_field<T>>(&field.target))
        KT_TRY(host_read_int_field(ctx, place, value, *number, record));
    else if (const auto *child = std::get_if<host_child_field<T>>(&field.target))
        KT_TRY((*child)(ctx, reader, place, value, record));
}

// The field of this name, or count. The server writes fields in the order of the tables, so the search begins at the
// field that is expected next.
template <class T> size_t host_find_field(const host_field<T> *fields, size_t count, size_t expected, const char *name)
{
    for (size_t step = 0; step < count; step++) {
        const size_t n = (expected + step) % count;
        if (strcmp(fields[n].name, name) == 0)
            return n;
    }
    return count;
}

template <class T, size_t Count>
void host_read_record(KT_context *ctx, host_reader &reader, const host_place &place, const KT_vhash *map,
                      const host_field<T> (&fields)[Count], T &record)
{
    static_assert(Count <= 64);
    uint64_t seen = 0;
    size_t expected = 0;
    uint32_t count = 0;
    KT_TRY(KT_vhash__count(ctx, map, &count));
    for (uint32_t n = 0; n < count; n++) {
        const char *key = nullptr;
        const KT_variant *value = nullptr;
        KT_TRY(KT_vhash__get_nth_pair(ctx, map, n, &key, &value));
        const size_t found = host_find_field(fields, Count, expected, key);
        if (found == Count) {
            KT_TRY(host_note_unknown_field(ctx, reader, key));
            continue;
        }
        expected = found + 1;
        if (value->type == KT_VARIANT_NULL)
            continue;
        seen |= uint64_t{1} << found;
        KT_TRY(host_read_field(ctx, reader, host_place{&place, key, 0}, *value, fields[found], record));
    }
    for (size_t n = 0; n < Count; n++) {
        if (fields[n].required && !(seen >> n & 1))
            KT_TRY(host_refuse_missing(ctx, host_place{&place, fields[n].name, 0}));
    }
}

// Reads a list of maps; make gives the record that the next element goes to.
template <class T, size_t Count, class Make>
void host_read_records(KT_context *ctx, host_reader &reader, const host_place &place, const KT_variant &value,
                       const host_field<T> (&fields)[Count], Make &&make)
{
    const KT_varray *list = nullptr;
    uint32_t count = 0;
    KT_TRY(host_read_list(ctx, place, value, &list, &count));
    for (uint32_t n = 0; n < count; n++) {
        const host_place element{&place, nullptr, n};
        const KT_vhash *map = nullptr;
        KT_TRY(host_read_nth_map(ctx, element, list, n, &map));
        KT_TRY(host_read_record(ctx, reader, element, map, fields, make()));
    }
}

#undef KT_HERE
