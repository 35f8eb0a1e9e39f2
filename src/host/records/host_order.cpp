// One order for what a source may list in any, no names that the server made, and the names that tables get here.
//
// Which of two equal references is kept, and which reference a column carries itself, depends on their order. So
// everything is sorted by name, and what has no name by what it says: then an export, a package and a script of one
// database give one schema.
#include "records/host_catalogue.hpp"

#include "kt_folded.hpp"

#include <algorithm>
#include <tuple>

std::string host_folded(std::string_view name)
{
    return kt_folded(name);
}

const char *host_shown_name(const char *name)
{
    return name ? name : "without a name";
}

static bool my_is_hex(char byte)
{
    return (byte >= '0' && byte <= '9') || (byte >= 'A' && byte <= 'F') || (byte >= 'a' && byte <= 'f');
}

// The server names a constraint by its kind, pieces of the names of table and column, and a number: DF__Orders__Total__
// 0A1B2C3D. Exports do not say it of every constraint, and scripts write such names as if somebody had chosen them.
static bool my_is_made_by_server(std::string_view name)
{
    constexpr std::string_view kinds[] = {"PK__", "UQ__", "FK__", "CK__", "DF__"};
    if (std::none_of(std::begin(kinds), std::end(kinds), [&](std::string_view kind) { return name.starts_with(kind); }))
        return false;
    const size_t separator = name.rfind("__");
    const std::string_view number = name.substr(separator + 2);
    return separator >= 4 && number.size() >= 8 && number.size() <= 16 &&
           std::all_of(number.begin(), number.end(), my_is_hex);
}

// After this a constraint without a name has a null for it, and is_system_named says the same.
template <class Constraint> static void my_forget_made_name(Constraint &constraint)
{
    const std::string_view name = constraint.name ? constraint.name : "";
    constraint.is_system_named = constraint.is_system_named || name.empty() || my_is_made_by_server(name);
    if (constraint.is_system_named)
        constraint.name = nullptr;
}

// Indexes are not among them: these always have a name of their own.
static void my_forget_made_names(host_table &table)
{
    for (host_column &col : table.cols) {
        if (col.defval)
            my_forget_made_name(*col.defval);
    }
    if (table.has_pk)
        my_forget_made_name(table.pk);
    for (host_key &key : table.uniques)
        my_forget_made_name(key);
    for (host_foreignkey &fk : table.fks)
        my_forget_made_name(fk);
    for (host_check &check : table.checks)
        my_forget_made_name(check);
}

static std::string_view my_text(const char *text)
{
    return text ? text : "";
}

// Sorts by keys that are made once for each record. What has no name comes last.
template <class Record, class Key> static void my_sort(std::vector<Record> &records, Key &&key_of)
{
    if (records.size() < 2)
        return;
    using key = decltype(key_of(records.front()));
    std::vector<std::pair<key, size_t>> order;
    order.reserve(records.size());
    for (size_t n = 0; n < records.size(); n++)
        order.emplace_back(key_of(records[n]), n);
    if (std::is_sorted(order.begin(), order.end()))
        return;
    std::sort(order.begin(), order.end());
    std::vector<Record> sorted;
    sorted.reserve(records.size());
    for (const auto &[of_record, n] : order)
        sorted.push_back(std::move(records[n]));
    records = std::move(sorted);
}

static std::string my_col_list(const std::vector<const char *> &names)
{
    std::string list;
    for (const char *name : names)
        list += host_folded(name) + '\n';
    return list;
}

static std::string my_reference(const host_foreignkey &fk)
{
    std::string text = host_folded(my_text(fk.ref_schema)) + '\n' + host_folded(my_text(fk.ref_table)) + '\n';
    for (const auto &[col_name, ref_col_name] : fk.col_names)
        text += host_folded(col_name) + '\n' + host_folded(ref_col_name) + '\n';
    return text;
}

static void my_order_table(host_table &table)
{
    const auto by_name = [](const auto &record, std::string rest) {
        return std::tuple(record.name == nullptr, host_folded(my_text(record.name)), std::string(my_text(record.name)),
                          std::move(rest));
    };
    my_sort(table.uniques, [&](const host_key &key) { return by_name(key, my_col_list(key.col_names)); });
    my_sort(table.indexes, [&](const host_index &index) { return by_name(index, ""); });
    my_sort(table.fks, [&](const host_foreignkey &fk) { return by_name(fk, my_reference(fk)); });
    my_sort(table.checks,
            [&](const host_check &check) { return by_name(check, std::string(my_text(check.definition))); });
}

static void my_name_table(host_table &table)
{
    table.label = std::string(table.schema_name) + '.' + table.name;
    table.sqlite_name = std::string_view(table.schema_name) == "dbo" ? table.name : table.label;
    for (host_column &col : table.cols)
        col.sqlite_name = col.name;
}

void host_order_catalogue(host_catalogue &catalogue)
{
    for (host_table &table : catalogue.tables) {
        my_name_table(table);
        my_forget_made_names(table);
        my_order_table(table);
    }
    my_sort(catalogue.sequences, [](const host_sequence &sequence) {
        return std::pair(std::string(my_text(sequence.schema_name)), std::string(my_text(sequence.name)));
    });
    my_sort(catalogue.tables, [](const host_table &table) {
        return std::tuple(host_folded(table.schema_name), host_folded(table.name), std::string(table.schema_name),
                          std::string(table.name));
    });
}
