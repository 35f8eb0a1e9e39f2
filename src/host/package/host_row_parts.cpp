// Row parts are entries such as Data/dbo.Order%20Details/TableData-000-00000.BCP. The folder is the table's schema and
// name, joined by a dot and encoded as in a web address; as names may hold dots too, the model says which is which.
#include "tov_row_parts.h"

#include "package/host_model_tree.hpp"
#include "package/host_names.hpp"
#include "package/host_origin.hpp"

#include <algorithm>
#include <charconv>
#include <map>

#define KT_HERE "src/host/package/host_row_parts"

struct host_tbl_name {
    const char *schema_name = nullptr;
    const char *name = nullptr;
    bool is_ambiguous = false; // another table has the same name once the dot is in between
};

// Collects the names of the tables and skips all else.
class host_tbl_names : public host_element_reader {
  public:
    void look(KT_context *ctx, std::string_view type, std::string_view name, bool *) override
    {
        if (type == "SqlTable")
            KT_TRY(add(ctx, name));
    }
    void take(KT_context *, const host_node &) override
    {
    }
    // Null when there is no such table.
    const host_tbl_name *find(const std::string &folder) const
    {
        const auto found = names_.find(folder);
        return found == names_.end() ? nullptr : &found->second;
    }

  private:
    void add(KT_context *ctx, std::string_view text)
    {
        host_name_parts name;
        KT_TRY(host_split_name(ctx, text, name));
        const char *schema_name = host_keep_part(texts_, name.parts[0]);
        const char *tbl_name = host_keep_part(texts_, name.last());
        const auto [place, is_new] =
            names_.try_emplace(std::string(schema_name) + '.' + tbl_name, host_tbl_name{schema_name, tbl_name});
        place->second.is_ambiguous = !is_new;
    }

    host_texts texts_;
    std::map<std::string, host_tbl_name> names_;
};

struct host_part {
    const host_zip_entry *entry;
    const host_tbl_name *table;
    std::pair<uint32_t, uint32_t> numbers; // of its file name
};

static int my_hex_value(char digit)
{
    if (digit >= '0' && digit <= '9')
        return digit - '0';
    const char lower = static_cast<char>(digit | 0x20);
    return lower >= 'a' && lower <= 'f' ? lower - 'a' + 10 : -1;
}

// Undoes the encoding of web addresses; what is none stays.
static std::string my_decoded(std::string_view text)
{
    std::string decoded;
    for (size_t at = 0; at < text.size(); at++) {
        const int high = text[at] == '%' && at + 2 < text.size() ? my_hex_value(text[at + 1]) : -1;
        const int low = high >= 0 ? my_hex_value(text[at + 2]) : -1;
        decoded += low >= 0 ? static_cast<char>(high * 16 + low) : text[at];
        at += low >= 0 ? 2 : 0;
    }
    return decoded;
}

// Takes "TableData-000-00000.BCP" apart; false for another file.
static bool my_read_numbers(std::string_view file, std::pair<uint32_t, uint32_t> &numbers)
{
    constexpr std::string_view begin = "TableData-", end = ".BCP";
    if (!file.starts_with(begin) || !file.ends_with(end))
        return false;
    file = file.substr(begin.size(), file.size() - begin.size() - end.size());
    const char *last = file.data() + file.size();
    const auto first = std::from_chars(file.data(), last, numbers.first);
    if (first.ec != std::errc{} || first.ptr == last || *first.ptr != '-')
        return false;
    const auto second = std::from_chars(first.ptr + 1, last, numbers.second);
    return second.ec == std::errc{} && second.ptr == last;
}

static void my_find_part(KT_context *ctx, const host_tbl_names &names, const host_zip_entry &entry,
                         std::vector<host_part> &parts)
{
    constexpr std::string_view data = "Data/";
    const std::string_view path = entry.name;
    const size_t slash = path.rfind('/');
    host_part part{&entry, nullptr, {}};
    if (!path.starts_with(data) || slash < data.size() || !my_read_numbers(path.substr(slash + 1), part.numbers))
        return;
    part.table = names.find(my_decoded(path.substr(data.size(), slash - data.size())));
    if (!part.table)
        KT_FAIL(KT_ERR_UNEXPECTED_VALUE, "%s in the package holds rows of a table that its model lacks", entry.name);
    if (part.table->is_ambiguous)
        KT_FAIL(KT_ERR_UNEXPECTED_VALUE,
                "%s in the package may hold rows of two tables: schema and name of one, "
                "joined by a dot, are those of the other",
                entry.name);
    parts.push_back(part);
}

static void my_read_names(KT_context *ctx, host_zip &package, const host_package_limits &limits, host_tbl_names &names)
{
    const host_zip_entry *entry = nullptr;
    KT_TRY(host_find_model(ctx, package, limits, &entry));
    host_tree_builder builder{names};
    host_xml xml{entry->name, limits, builder};
    KT_TRY(package.read(ctx, *entry, [&xml](KT_context *inner, std::string_view piece) { xml.parse(inner, piece); }));
    KT_TRY(xml.finish(ctx));
}

static void my_sort(std::vector<host_part> &parts)
{
    const auto key = [](const host_part &part) {
        return std::tuple<std::string_view, std::string_view, std::pair<uint32_t, uint32_t>>(
            part.table->schema_name, part.table->name, part.numbers);
    };
    std::sort(parts.begin(), parts.end(), [&key](const host_part &a, const host_part &b) { return key(a) < key(b); });
}

static void my_read_part(KT_context *ctx, host_zip &package, const host_zip_entry &entry, const tov_host_row_part &part,
                         tov_host_take_rows take, void *data)
{
    KT_TRY(package.read(ctx, entry, [&](KT_context *inner, std::string_view piece) {
        take(inner, data, &part, piece.data(), piece.size());
    }));
    KT_TRY(take(ctx, data, &part, nullptr, 0));
}

static void my_read_parts(KT_context *ctx, std::string_view bytes, tov_host_take_rows take, void *data)
{
    const host_package_limits limits;
    host_zip package;
    host_tbl_names names;
    std::vector<host_part> parts;
    KT_TRY(package.open(ctx, bytes, limits));
    KT_TRY(my_read_names(ctx, package, limits, names));
    for (const host_zip_entry &entry : package.entries())
        KT_TRY(my_find_part(ctx, names, entry, parts));
    my_sort(parts);
    uint32_t number = 0;
    for (size_t n = 0; n < parts.size(); n++) {
        const host_tbl_name &table = *parts[n].table;
        number = n > 0 && parts[n - 1].table == &table ? number + 1 : 0;
        const tov_host_row_part part{table.schema_name, table.name, number, parts[n].entry->size};
        KT_TRY(my_read_part(ctx, package, *parts[n].entry, part, take, data));
    }
}

void tov_host__read_row_parts(KT_context *ctx, const char *bytes, size_t size, tov_host_take_rows take,
                              void *data) noexcept
{
    kt_contain(ctx, [&] { KT_TRY(my_read_parts(ctx, {bytes, size}, take, data)); });
}

static void my_count_rows(KT_context *ctx, std::string_view bytes, int64_t *row_count)
{
    const host_package_limits limits;
    host_zip package;
    host_origin origin;
    KT_TRY(package.open(ctx, bytes, limits));
    KT_TRY(host_read_origin(ctx, package, limits, origin));
    *row_count = origin.row_count;
}

void tov_host__count_packed_rows(KT_context *ctx, const char *bytes, size_t size, int64_t *row_count) noexcept
{
    kt_contain(ctx, [&] { KT_TRY(my_count_rows(ctx, {bytes, size}, row_count)); });
}
