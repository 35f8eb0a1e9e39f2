// The schema as a whole, and what all readers need.
#include "compare/client_content_parts.hpp"

#include "kt_folded.hpp"

#include <algorithm>
#include <array>
#include <cctype>

#define KT_HERE "src/client/compare/client_content"

static constexpr auto traits = std::to_array<client_fact_traits>({
    {"type", 't', false, false},
    {"alias type", 't', false, false},
    {"collation", 't', false, true},
    {"form in SQLite", 't', true, true},
    {"left out in SQLite", 't', true, false},
    {"nullable", 'n', false, false},
    {"NOT NULL in SQLite", 'n', true, false},
    {"default", 'd', false, false},
    {"name of the default", 'D', true, true},
    {"default in SQLite", 'd', true, false},
    {"identity", 'i', false, false},
    {"expression", 'c', false, false},
    {"generated", 'g', false, false},
    {"hidden", 'h', false, false},
    {"ROWGUIDCOL", 'r', false, false},
    {"sparse", 's', false, false},
    {"columns", 'C', true, false},
    {"refers to", 'R', true, false},
    {"on delete", 'o', true, false},
    {"on update", 'u', true, false},
    {"deferred", 'e', true, false},
    {"condition", 'x', true, false},
    {"unique", 'U', false, false},
    {"clustered", 'l', false, false},
    {"disabled", 'a', false, false},
    {"kind", 'k', false, false},
    {"included columns", 'I', false, false},
    {"filter", 'f', false, false},
    {"filter in SQLite", 'f', true, false},
    {"type", 'y', false, false},
    {"start", 'S', false, false},
    {"increment", 'm', false, false},
    {"temporal", 'T', false, false},
    {"description", 'p', false, false},
    {"order of columns", 'O', true, false},
    {"name in SQLite", 'N', false, true},
    {"compatibility level", 'L', true, false},
    {"NULLs are equal in unique keys", 'q', true, false},
});
static_assert(traits.size() == static_cast<size_t>(client_fact_kind::count));

const client_fact_traits &client_traits_of(client_fact_kind kind) noexcept
{
    return traits[static_cast<size_t>(kind)];
}

const char *client_part_word(client_part_kind kind) noexcept
{
    static constexpr const char *words[] = {"column", "primary key", "unique key", "foreign key",
                                            "check",  "index",       "sequence"};
    return words[static_cast<size_t>(kind)];
}

const client_fact *client_find_fact(const std::vector<client_fact> &facts, client_fact_kind kind) noexcept
{
    const auto found = std::find_if(facts.begin(), facts.end(), [&](const auto &fact) { return fact.kind == kind; });
    return found == facts.end() ? nullptr : &*found;
}

bool client_have_same_facts(const std::vector<client_fact> &a, const std::vector<client_fact> &b)
{
    return std::equal(a.begin(), a.end(), b.begin(), b.end(), [](const client_fact &one, const client_fact &other) {
        return one.kind == other.kind && one.meaning == other.meaning;
    });
}

client_name_meaning client_tbl_reading::names() const
{
    const auto known = renaming.cols.find(tbl.id);
    if (known == renaming.cols.end())
        return {};
    return [&cols = known->second](const std::string &name) {
        const auto renamed = cols.find(name);
        return renamed == cols.end() ? name : renamed->second;
    };
}

void client_add_fact(std::vector<client_fact> &facts, client_fact_kind kind, std::string shown, std::string meaning)
{
    if (!shown.empty())
        facts.push_back({kind, std::move(shown), std::move(meaning)});
}

void client_add_fact(std::vector<client_fact> &facts, client_fact_kind kind, std::string shown)
{
    std::string meaning = shown;
    client_add_fact(facts, kind, std::move(shown), std::move(meaning));
}

void client_add_expression(const client_tbl_reading &reading, std::vector<client_fact> &facts, client_fact_kind kind,
                           const char *expression)
{
    if (expression)
        client_add_fact(facts, kind, expression, client_meaning(expression, reading.names()));
}

void client_add_text_of(KT_context *ctx, const KT_vhash *record, const char *key, std::vector<client_fact> &facts,
                        client_fact_kind kind)
{
    const char *text = nullptr;
    KT_TRY(KT_vhash__check__sz(ctx, record, key, &text));
    if (text)
        client_add_fact(facts, kind, text);
}

void client_add_number_of(KT_context *ctx, const KT_vhash *record, const char *key, std::vector<client_fact> &facts,
                          client_fact_kind kind)
{
    int64_t number = 0;
    KT_TRY(KT_vhash__check__int64(ctx, record, key, &number));
    if (number != 0)
        client_add_fact(facts, kind, std::to_string(number));
}

void client_add_flag_of(KT_context *ctx, const KT_vhash *record, const char *key, std::vector<client_fact> &facts,
                        client_fact_kind kind)
{
    KT_bool flag = 0;
    KT_TRY(KT_vhash__check__bool(ctx, record, key, &flag));
    if (flag)
        client_add_fact(facts, kind, "yes");
}

bool client_is_servers_name(std::string_view name) noexcept
{
    const size_t tail = name.rfind("__");
    const bool is_long = name.size() > 6 && name.substr(2, 2) == "__" && tail > 2 && name.size() - tail >= 10;
    return is_long && std::all_of(name.begin() + static_cast<std::ptrdiff_t>(tail) + 2, name.end(),
                                  [](char c) { return std::isxdigit(static_cast<unsigned char>(c)); });
}

void client_name_part(const client_tbl_reading &reading, const char *letters, const std::vector<std::string> &cols,
                      const char *name, client_part &part)
{
    if (!name || client_is_servers_name(name))
        return;
    part.name = name;
    std::string made_up = letters + ('_' + reading.tbl.sqlite_name);
    for (const std::string &col : cols)
        made_up += '_' + col;
    const std::string_view rest =
        part.name.size() >= made_up.size() ? std::string_view(part.name).substr(made_up.size()) : std::string_view("x");
    const bool is_numbered =
        rest.size() > 1 && rest[0] == '_' && rest.find_first_not_of("0123456789", 1) == std::string_view::npos;
    part.name_is_made_up = kt_equal_folded(std::string_view(part.name).substr(0, made_up.size()), made_up) &&
                           (rest.empty() || is_numbered);
}

static void my_read_tbl_facts(KT_context *ctx, client_tbl_reading &reading)
{
    client_tbl_content &tbl = reading.tbl;
    const char *server_schema = nullptr;
    const char *server_name = nullptr;
    if (reading.server) {
        KT_TRY(KT_vhash__check__sz(ctx, reading.server, "schema", &server_schema));
        KT_TRY(KT_vhash__check__sz(ctx, reading.server, "name", &server_name));
        KT_TRY(client_add_number_of(ctx, reading.server, "temporal_type", tbl.facts, client_fact_kind::temporal_type));
        KT_TRY(client_add_text_of(ctx, reading.server, "description", tbl.facts, client_fact_kind::description));
    }
    tbl.name = server_name ? server_name : tbl.sqlite_name;
    if (server_name && server_schema)
        tbl.name = std::string(server_schema) + '.' + server_name;
}

static void my_read_tbl(KT_context *ctx, tov_schema *schema, const char *tbl_id, const client_renaming &renaming,
                        const client_same_tbls &same, client_tbl_content &tbl)
{
    const char *name = nullptr;
    client_tbl_reading reading{schema, renaming, tbl, nullptr, {}};
    KT_TRY(tov_schema__get_tbl_name(ctx, schema, tbl_id, &name));
    KT_TRY(tov_schema__check_tbl_server(ctx, schema, tbl_id, &reading.server));
    tbl.id = tbl_id;
    tbl.sqlite_name = name ? name : "";
    KT_TRY(my_read_tbl_facts(ctx, reading));
    if (!same.empty() && same.contains(kt_folded(tbl.id)))
        return;
    KT_TRY(client_read_cols(ctx, reading));
    KT_TRY(client_read_keys(ctx, reading));
    KT_TRY(client_read_checks(ctx, reading));
    KT_TRY(client_read_indexes(ctx, reading));
}

static void my_read_sequence(KT_context *ctx, const KT_vhash *record, client_content &content)
{
    const char *schema_name = nullptr;
    const char *name = nullptr;
    KT_TRY(KT_vhash__check__sz(ctx, record, "schema", &schema_name));
    KT_TRY(KT_vhash__check__sz(ctx, record, "name", &name));
    client_part part{client_part_kind::sequence, std::string(schema_name ? schema_name : "") + '.' + (name ? name : ""),
                     ""};
    KT_TRY(client_add_text_of(ctx, record, "type", part.facts, client_fact_kind::sequence_type));
    KT_TRY(client_add_text_of(ctx, record, "start", part.facts, client_fact_kind::start));
    KT_TRY(client_add_text_of(ctx, record, "increment", part.facts, client_fact_kind::increment));
    content.parts.push_back(std::move(part));
}

static void my_read_sequences(KT_context *ctx, const KT_vhash *server, client_content &content)
{
    KT_varray *list = nullptr;
    uint32_t count = 0;
    KT_TRY(KT_vhash__check__varray(ctx, server, "sequences", &list));
    if (list)
        KT_TRY(KT_varray__count(ctx, list, &count));
    for (uint32_t n = 0; n < count; n++) {
        KT_vhash *record = nullptr;
        KT_TRY(KT_varray__get__vhash(ctx, list, n, &record));
        KT_TRY(my_read_sequence(ctx, record, content));
    }
}

static void my_read_whole(KT_context *ctx, tov_schema *schema, client_content &content)
{
    const KT_vhash *document = nullptr;
    KT_vhash *backend = nullptr;
    KT_vhash *server = nullptr;
    KT_TRY(tov_schema__get_document(ctx, schema, &document));
    KT_TRY(client_add_number_of(ctx, document, "compat_level", content.facts, client_fact_kind::compat_level));
    // Asked of the document itself: the module's operation would add what it does not find.
    KT_TRY(KT_vhash__check__vhash(ctx, document, "backend", &backend));
    if (backend)
        KT_TRY(
            client_add_flag_of(ctx, backend, "indistinct_unique_nulls", content.facts, client_fact_kind::equal_nulls));
    KT_TRY(tov_schema__check_server(ctx, schema, &server));
    content.has_facts = server;
    if (!server)
        return;
    KT_TRY(client_add_text_of(ctx, server, "collation", content.facts, client_fact_kind::collation));
    KT_TRY(my_read_sequences(ctx, server, content));
}

void client_read_content(KT_context *ctx, tov_schema *schema, const client_renaming &renaming,
                         const client_same_tbls &same, client_content &content) noexcept
{
    kt_contain(ctx, [&] {
        uint32_t count = 0;
        KT_TRY(my_read_whole(ctx, schema, content));
        KT_TRY(tov_schema__count_tbls(ctx, schema, &count));
        content.tbls.resize(count);
        for (uint32_t n = 0; n < count; n++) {
            const char *tbl_id = nullptr;
            KT_TRY(tov_schema__get_nth_tbl_id(ctx, schema, n, &tbl_id));
            KT_TRY(my_read_tbl(ctx, schema, tbl_id, renaming, same, content.tbls[n]));
        }
    });
}
