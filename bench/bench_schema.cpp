#include "bench_schema.hpp"

#include <cstdio>
#include <cstdlib>
#include <map>
#include <random>

namespace {

constexpr const char *words[] = {"Order",  "Item",   "Stock", "Price", "Customer", "Name",   "Date",   "Code",
                                 "Type",   "Status", "Line",  "City",  "Region",   "Total",  "Tax",    "Unit",
                                 "Weight", "Height", "Note",  "Flag",  "Invoice",  "Group",  "Level",  "User",
                                 "Rate",   "Count",  "Owner", "Batch", "Parent",   "Source", "Target", "Address"};

std::string name_of(std::mt19937 &random)
{
    std::string name = words[random() % std::size(words)];
    while (random() % 2)
        name += words[random() % std::size(words)];
    return name;
}

std::string tbl_id_of(uint32_t n)
{
    return std::to_string(100000000 + uint64_t{n} * 7919);
}

// What a column is; the shares are those of everyday schemas.
enum class column_kind { text, integer, decimal, datetime, bit, money, guid, blob };

column_kind kind_of(std::mt19937 &random)
{
    constexpr column_kind kinds[] = {
        column_kind::text,    column_kind::text,    column_kind::text,     column_kind::text,     column_kind::text,
        column_kind::text,    column_kind::text,    column_kind::text,     column_kind::integer,  column_kind::integer,
        column_kind::integer, column_kind::integer, column_kind::integer,  column_kind::decimal,  column_kind::decimal,
        column_kind::bit,     column_kind::bit,     column_kind::datetime, column_kind::datetime, column_kind::guid,
    };
    return kinds[random() % std::size(kinds)];
}

struct host_type {
    const char *name;
    const char *defval; // in SQLite; null: none
};

host_type set_type(KT_context *ctx, tov_schema *schema, const char *tbl, const char *col, column_kind kind,
                   uint32_t width)
{
    switch (kind) {
    case column_kind::text:
        tov_schema__set_col_type_text(ctx, schema, tbl, col, nullptr, nullptr, 0, 0, 1, 0, 0, 0, 0, 1, width);
        return {"nvarchar", "''"};
    case column_kind::integer:
        tov_schema__set_col_type_simple(ctx, schema, tbl, col, "sint32");
        return {"int", "0"};
    case column_kind::decimal:
        tov_schema__set_col_type_decimal(ctx, schema, tbl, col, 18, 2);
        return {"decimal", "0"};
    case column_kind::datetime:
        tov_schema__set_col_type_datetime(ctx, schema, tbl, col, 3, "datetime2");
        return {"datetime2", "(datetime('now'))"};
    case column_kind::bit:
        tov_schema__set_col_type_simple(ctx, schema, tbl, col, "uint1");
        return {"bit", "1"};
    case column_kind::money:
        tov_schema__set_col_type_simple(ctx, schema, tbl, col, "money8");
        return {"money", "0"};
    case column_kind::guid:
        tov_schema__set_col_type_simple(ctx, schema, tbl, col, "guid");
        return {"uniqueidentifier", "(randomblob(16))"};
    default:
        tov_schema__set_col_type_blob(ctx, schema, tbl, col, 0, 0);
        return {"varbinary", nullptr};
    }
}

void add_column(KT_context *ctx, tov_schema *schema, const char *tbl, uint32_t n, std::mt19937 &random)
{
    const std::string col = std::to_string(n);
    const std::string name = name_of(random) + col;
    tov_schema__add_col(ctx, schema, tbl, col.c_str(), name.c_str(), 1, 0, 0);
    if (n == 1) {
        tov_schema__set_col_type_identity(ctx, schema, tbl, col.c_str(), nullptr);
        tov_schema__set_mssql_col_type_name(ctx, schema, tbl, col.c_str(), "int");
        return;
    }
    constexpr uint32_t widths[] = {10, 20, 50, 100, 255};
    const host_type type = set_type(ctx, schema, tbl, col.c_str(), kind_of(random), widths[random() % 5]);
    tov_schema__set_mssql_col_type_name(ctx, schema, tbl, col.c_str(), type.name);
    if (random() % 2)
        tov_schema__set_colcon_notnull(ctx, schema, tbl, col.c_str(), 1, nullptr);
    if (type.defval && random() % 7 == 0)
        tov_schema__set_colcon_defval(ctx, schema, tbl, col.c_str(), 1, ("DF_" + std::string(tbl) + "_" + name).c_str(),
                                      type.defval);
}

// A reference from the table's n-th column to the identity column of an earlier table.
void add_reference(KT_context *ctx, tov_schema *schema, uint32_t from, uint32_t to, const char *col)
{
    const std::string tbl = tbl_id_of(from), ref_tbl = tbl_id_of(to);
    tov_schema__set_col_type_simple(ctx, schema, tbl.c_str(), col, "sint32");
    tov_schema__set_colcon_fk(ctx, schema, tbl.c_str(), col, 1, "1", ("FK_" + tbl + "_" + col).c_str(), ref_tbl.c_str(),
                              "1", 0, "NO ACTION", "NO ACTION", 0);
}

void add_keys(KT_context *ctx, tov_schema *schema, uint32_t n, uint32_t columns, std::mt19937 &random)
{
    const std::string tbl = tbl_id_of(n);
    tov_schema__set_pk_name(ctx, schema, tbl.c_str(), ("PK_" + tbl).c_str());
    tov_schema__add_to_pk(ctx, schema, tbl.c_str(), "1");
    if (columns > 3 && random() % 2) {
        tov_schema__add_to_unique_constraint(ctx, schema, tbl.c_str(), "2", ("UQ_" + tbl).c_str());
        tov_schema__add_to_unique_constraint(ctx, schema, tbl.c_str(), "3", ("UQ_" + tbl).c_str());
    }
    for (uint32_t reference = random() % 4; n > 0 && columns > 8 && reference > 0; reference--)
        add_reference(ctx, schema, n, static_cast<uint32_t>(random() % n), std::to_string(3 + reference).c_str());
}

tov_schema *make_schema(const bench_size &size)
{
    KT_context *ctx = bench_ctx();
    std::mt19937 random(42);
    tov_schema *schema = nullptr;
    tov_schema__new(ctx, 1, &schema);
    uint32_t left = size.columns;
    for (uint32_t n = 0; n < size.tables; n++) {
        const uint32_t columns = left / (size.tables - n);
        left -= columns;
        const std::string tbl = tbl_id_of(n);
        tov_schema__add_tbl(ctx, schema, tbl.c_str(), (name_of(random) + std::to_string(n)).c_str(), n);
        for (uint32_t c = 1; c <= columns; c++)
            add_column(ctx, schema, tbl.c_str(), c, random);
        add_keys(ctx, schema, n, columns, random);
        bench_check();
    }
    return schema;
}

} // namespace

KT_context *bench_ctx()
{
    static KT_context *ctx = [] {
        KT_context *made = nullptr;
        KT_context__alloc(&made);
        return made;
    }();
    return ctx;
}

void bench_check()
{
    if (!KT_context__has_err(bench_ctx()))
        return;
    std::fprintf(stderr, "bench: %s\n", KT_context__err_description(bench_ctx()));
    std::exit(1);
}

tov_schema *bench_schema(const bench_size &size)
{
    static std::map<uint32_t, tov_schema *> made;
    tov_schema *&schema = made[size.tables];
    if (!schema)
        schema = make_schema(size);
    return schema;
}

const std::string &bench_json(const bench_size &size)
{
    static std::map<uint32_t, std::string> made;
    std::string &json = made[size.tables];
    if (json.empty()) {
        KT_string *text = nullptr;
        tov_schema__to_json(bench_ctx(), bench_schema(size), &text);
        bench_check();
        json = KT_string__sz(text);
        KT_string__free(bench_ctx(), text);
    }
    return json;
}

void bench_texts_of_table(KT_context *ctx, tov_schema *schema, const char *tbl)
{
    uint32_t columns = 0, uniques = 0;
    tov_schema__count_cols(ctx, schema, tbl, &columns);
    tov_schema__count_uniques(ctx, schema, tbl, &uniques);
    for (uint32_t c = 0; c < columns; c++) {
        const char *col = nullptr, *defin = nullptr;
        KT_string *check = nullptr;
        tov_schema__get_nth_col_id(ctx, schema, tbl, c, &col);
        tov_schema__get_col_defin(ctx, schema, tbl, col, nullptr, &defin);
        tov_schema__get_col_validation_expression(ctx, schema, tbl, col, &check);
        KT_string__free(ctx, check);
    }
    const char *defin = nullptr;
    tov_schema__get_pk_defin(ctx, schema, tbl, &defin);
    for (uint32_t n = 0; n < uniques; n++) {
        const char *unique = nullptr;
        tov_schema__get_nth_unique_id(ctx, schema, tbl, n, &unique);
        tov_schema__get_unique_defin(ctx, schema, tbl, unique, &defin);
    }
}

static tov_schema *make_tables(uint32_t tables, uint32_t columns)
{
    KT_context *ctx = bench_ctx();
    tov_schema *schema = nullptr;
    tov_schema__new(ctx, 1, &schema);
    for (uint32_t n = 0; n < tables; n++) {
        const std::string tbl = tbl_id_of(n);
        tov_schema__add_tbl(ctx, schema, tbl.c_str(), ("T" + std::to_string(n)).c_str(), 0);
        for (uint32_t c = 1; c <= columns; c++) {
            const std::string col = std::to_string(c);
            tov_schema__add_col(ctx, schema, tbl.c_str(), col.c_str(), ("C" + col).c_str(), 1, 0, 0);
            tov_schema__set_col_type_simple(ctx, schema, tbl.c_str(), col.c_str(), "sint32");
        }
    }
    bench_check();
    return schema;
}

// Ten columns a table, as in a table of links; each reference takes the next column that is free.
tov_schema *bench_reference_schema(uint32_t tables, uint32_t references)
{
    tov_schema *schema = make_tables(tables, 10);
    std::mt19937 random(7);
    std::vector<uint32_t> used(tables, 1);
    for (uint32_t made = 0; made < references;) {
        const auto from = static_cast<uint32_t>(random() % tables);
        if (from == 0 || used[from] == 10)
            continue;
        used[from]++;
        add_reference(bench_ctx(), schema, from, static_cast<uint32_t>(random() % from),
                      std::to_string(used[from]).c_str());
        made++;
    }
    bench_check();
    return schema;
}

tov_schema *bench_reversed_chain(uint32_t tables)
{
    tov_schema *schema = make_tables(tables, 10);
    for (uint32_t n = 0; n + 1 < tables; n++)
        add_reference(bench_ctx(), schema, n, n + 1, "2");
    bench_check();
    return schema;
}

static std::string column_json(uint32_t n, const std::string &tbl, const std::string &name, std::mt19937 &random)
{
    static const std::string text_type =
        R"json(,"system_type_id":231,"system_type":"nvarchar","user_type":"nvarchar","max_length":80,"precision":0,)json"
        R"json("scale":0,"collation":"Latin1_General_CI_AS","comparison_style":196609)json";
    static const std::string int_type = R"json(,"system_type_id":56,"system_type":"int","user_type":"int",)json"
                                        R"json("max_length":4,"precision":10,"scale":0)json";
    const std::string id = std::to_string(n);
    const bool is_text = n > 1 && random() % 2;
    std::string json = "{\"id\":" + id + ",\"name\":\"" + name + "\",\"is_nullable\":";
    json += n > 1 && random() % 2 ? "true" : "false";
    json += is_text ? text_type : int_type;
    if (n == 1)
        json += R"json(,"is_identity":true,"identity":{"seed":"1","increment":"1"})json";
    else if (!is_text && random() % 5 == 0)
        json += R"json(,"default":{"kind":"constraint","id":1,"name":"DF_)json" + tbl + "_" + id +
                R"json(","definition":"((0))"})json";
    return json + "}";
}

// The key and a check of the table's first column, and its reference to the first column of the table before.
static std::string constraints_json(const std::string &tbl, const std::string &key, const std::string &ref_tbl,
                                    const std::string &ref_name, const std::string &ref_key)
{
    std::string json = R"json(,"pk":{"name":"PK_)json" + tbl + R"json(","is_clustered":true,"columns":[{"name":")json" +
                       key + R"json(","descending":false}]},"checks":[{"name":"CK_)json" + tbl +
                       R"json(","definition":"([)json" + key + R"json(]>(0))"}])json";
    if (ref_tbl.empty())
        return json;
    return json + R"json(,"fks":[{"id":9)json" + tbl + R"json(,"name":"FK_)json" + tbl +
           R"json(","ref_table_id":)json" + ref_tbl + R"json(,"ref_schema":"dbo","ref_table":")json" + ref_name +
           R"json(","on_delete":"NO_ACTION","on_update":"NO_ACTION","columns":[{"column":")json" + key +
           R"json(","ref_column":")json" + ref_key + R"json("}]}])json";
}

std::string bench_catalogue(const bench_size &size)
{
    std::mt19937 random(42);
    std::string json = R"json({"format":"sqlserver-catalogue","format_version":1,)json"
                       R"json("database":{"name":"B","can_view_definitions":true},"tables":[)json";
    std::string last_name, last_key;
    uint32_t left = size.columns;
    for (uint32_t n = 0; n < size.tables; n++) {
        const uint32_t columns = left / (size.tables - n);
        left -= columns;
        const std::string tbl = tbl_id_of(n);
        const std::string name = name_of(random) + std::to_string(n);
        json += (n ? ",{\"id\":" : "{\"id\":") + tbl + R"json(,"schema":"dbo","name":")json" + name +
                R"json(","columns":[)json";
        const std::string key = name_of(random) + "1";
        for (uint32_t c = 1; c <= columns; c++)
            json +=
                (c > 1 ? "," : "") + column_json(c, tbl, c == 1 ? key : name_of(random) + std::to_string(c), random);
        json += "]" + constraints_json(tbl, key, n ? tbl_id_of(n - 1) : "", last_name, last_key) + "}";
        last_name = name;
        last_key = key;
    }
    return json + "]}";
}

static std::string column_sql(uint32_t n, const std::string &tbl, std::mt19937 &random)
{
    constexpr const char *types[] = {"[nvarchar](50) NULL",   "[int] NOT NULL",        "[nvarchar](max) NULL",
                                     "[datetime] NULL",       "[decimal](18, 2) NULL", "[bit] NOT NULL",
                                     "[varchar](20) NOT NULL"};
    const std::string name = "[" + name_of(random) + std::to_string(n) + "]";
    if (n == 1)
        return "\t[Id] [int] IDENTITY(1,1) NOT NULL,\n";
    std::string text = "\t" + name + " " + types[random() % std::size(types)];
    if (random() % 7 == 0)
        text += " CONSTRAINT [DF_" + tbl + "_" + std::to_string(n) + "] DEFAULT ((0))";
    return text + ",\n";
}

std::string bench_script(const bench_size &size)
{
    std::mt19937 random(42);
    std::string script = "USE [B]\nGO\n", references;
    std::string last;
    uint32_t left = size.columns;
    for (uint32_t n = 0; n < size.tables; n++) {
        const uint32_t columns = left / (size.tables - n);
        left -= columns;
        const std::string tbl = name_of(random) + std::to_string(n);
        script += "/****** Object:  Table [dbo].[" + tbl +
                  "] ******/\nSET ANSI_NULLS ON\nGO\nSET QUOTED_IDENTIFIER ON\nGO\n" + "CREATE TABLE [dbo].[" + tbl +
                  "](\n";
        for (uint32_t c = 1; c <= columns; c++)
            script += column_sql(c, tbl, random);
        script += " CONSTRAINT [PK_" + tbl + "] PRIMARY KEY CLUSTERED \n(\n\t[Id] ASC\n)WITH (PAD_INDEX = OFF, " +
                  "IGNORE_DUP_KEY = OFF, ALLOW_ROW_LOCKS = ON) ON [PRIMARY]\n) ON [PRIMARY]\nGO\n";
        if (n > 0)
            references += "ALTER TABLE [dbo].[" + tbl + "]  WITH CHECK ADD  CONSTRAINT [FK_" + tbl +
                          "] FOREIGN KEY([Id])\nREFERENCES [dbo].[" + last + "] ([Id])\nGO\n";
        last = tbl;
    }
    return script + references;
}
