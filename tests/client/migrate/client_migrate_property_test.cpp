// Random pairs of schemas with rows. Afterwards the database is the one that the new schema makes, and its rows are
// what a plain model makes of the old ones; or a value does not fit, which the model says as well, and nothing has
// changed.
#include "migrated_database.hpp"

#include <cinttypes>
#include <optional>
#include <random>

namespace {

enum class kind { small, whole, big, fine, finer, brief, wide };

struct kind_traits {
    const char *abstract;
    const char *server;
    int scale;     // of numbers
    int64_t limit; // of numbers as they are kept; of strings their width
    bool is_text;
};

const kind_traits traits[] = {
    {R"("name":"sint16")", R"("type":"smallint")", 0, 32767, false},
    {R"("name":"sint32")", R"("type":"int")", 0, INT32_MAX, false},
    {R"("name":"sint64")", R"("type":"bigint")", 0, INT64_MAX, false},
    {R"("name":"decimal","precision":9,"scale":2)", R"("type":"decimal","precision":9,"scale":2)", 2, 999999999, false},
    {R"("name":"decimal","precision":12,"scale":4)", R"("type":"decimal","precision":12,"scale":4)", 4, 999999999999,
     false},
    {R"("name":"text","unicode":true,"width":6)", R"("type":"nvarchar","length":12)", 0, 6, true},
    {R"("name":"text","unicode":true,"width":20)", R"("type":"nvarchar","length":40)", 0, 20, true},
};

const kind_traits &of(kind k)
{
    return traits[static_cast<size_t>(k)];
}

// A number as it is kept, or a string; nothing for NULL.
struct value {
    std::optional<int64_t> number;
    std::optional<std::string> text;
};

struct column {
    std::string name;
    kind type;
    bool nullable;
    bool has_default; // 1, or '1'
    bool indexed;
    int id; // the same in both schemas
};

struct table {
    std::string name;
    int id;
    std::vector<column> cols; // after Id, the key
    std::vector<std::vector<value>> rows;
};

using schema_model = std::vector<table>;

class Random {
  public:
    explicit Random(uint32_t seed) : engine_(seed)
    {
    }
    int below(int count)
    {
        return std::uniform_int_distribution<int>(0, count - 1)(engine_);
    }
    bool one_in(int count)
    {
        return below(count) == 0;
    }

  private:
    std::minstd_rand engine_;
};

column random_column(Random &random, int id)
{
    const auto type = static_cast<kind>(random.below(7));
    return {"C" + std::to_string(id), type, !random.one_in(3), random.one_in(2), random.one_in(4), id};
}

std::string letters(Random &random, int most)
{
    std::string text;
    for (int n = random.below(most + 1); n > 0; n--)
        text += static_cast<char>('a' + random.below(3));
    return text;
}

value random_value(Random &random, const column &col)
{
    if (col.nullable && random.one_in(4))
        return {};
    const kind_traits &type = of(col.type);
    if (type.is_text && random.one_in(2))
        return {{}, letters(random, static_cast<int>(type.limit))};
    static constexpr int64_t powers[] = {1, 100, 10000, 1000000, 100000000, 1000000000000};
    int64_t number = (random.below(2001) - 1000) * powers[random.below(6)];
    number = std::clamp(number, -type.limit, type.limit);
    if (type.is_text)
        return {{}, std::to_string(number % 100000)};
    return {number, {}};
}

schema_model random_schema(Random &random)
{
    schema_model schema;
    const int count = 1 + random.below(3);
    for (int t = 0; t < count; t++) {
        table tbl{"T" + std::to_string(t), t, {}, {}};
        for (int c = 0, cols = 1 + random.below(4); c < cols; c++)
            tbl.cols.push_back(random_column(random, c));
        for (int r = random.below(6); r > 0; r--) {
            std::vector<value> row;
            for (const column &col : tbl.cols)
                row.push_back(random_value(random, col));
            tbl.rows.push_back(row);
        }
        schema.push_back(tbl);
    }
    return schema;
}

void change_column(Random &random, column &col)
{
    switch (random.below(5)) {
    case 0:
        col.name = "R" + col.name;
        break;
    case 1:
        col.type = static_cast<kind>(random.below(7));
        break;
    case 2:
        col.nullable = !col.nullable;
        break;
    case 3:
        col.has_default = !col.has_default;
        break;
    default:
        col.indexed = !col.indexed;
        break;
    }
}

void change_table(Random &random, table &tbl)
{
    for (column &col : tbl.cols) {
        if (random.one_in(3))
            change_column(random, col);
    }
    if (random.one_in(4))
        tbl.cols.push_back(random_column(random, 10));
    if (tbl.cols.size() > 1 && random.one_in(4))
        tbl.cols.erase(tbl.cols.begin() + random.below(static_cast<int>(tbl.cols.size())));
    if (random.one_in(5))
        std::reverse(tbl.cols.begin(), tbl.cols.end());
    if (random.one_in(5))
        tbl.name = "N" + tbl.name;
}

schema_model changed(Random &random, schema_model schema)
{
    for (table &tbl : schema)
        change_table(random, tbl);
    if (schema.size() > 1 && random.one_in(4))
        schema.pop_back();
    if (random.one_in(4))
        schema.push_back({"Extra", 20, {random_column(random, 0)}, {}});
    return schema;
}

std::string column_json(const column &col)
{
    const bool is_text = of(col.type).is_text;
    const int64_t one = col.type == kind::fine ? 100 : col.type == kind::finer ? 10000 : 1;
    return ",\"" + std::to_string(col.id + 2) + R"(":{"name":")" + col.name + R"(","type":{)" + of(col.type).abstract +
           "}" + (col.nullable ? "" : R"(,"notnull":{})") +
           (col.has_default ? R"(,"defval":{"expr":")" + (is_text ? "'1'" : std::to_string(one)) + "\"}" : "") + "}";
}

std::string facts_json(const column &col)
{
    return R"(,{"name":")" + col.name + R"(","id":")" + std::to_string(col.id + 2) + "\"," + of(col.type).server +
           (col.nullable ? R"(,"nullable":true)" : "") + "}";
}

std::string table_json(const table &tbl)
{
    std::string cols;
    std::string facts;
    std::string indexes;
    for (const column &col : tbl.cols) {
        cols += column_json(col);
        facts += facts_json(col);
        if (col.indexed)
            indexes += (indexes.empty() ? "" : ",") + (R"({"name":"IX_)" + tbl.name + col.name + R"(","cols":[")") +
                       std::to_string(col.id + 2) + "\"]}";
    }
    return "\"" + std::to_string(tbl.id) + R"(":{"name":")" + tbl.name +
           R"(","cols":{"1":{"name":"Id","type":{"name":"sint32"},"notnull":{}})" + cols +
           R"(},"pk":{"name":"PK","cols":{"1":null}},"server":{"schema":"dbo","name":")" + tbl.name +
           R"(","cols":[{"name":"Id","id":"1","type":"int"})" + facts + R"(],"indexes":[)" + indexes + "]}}";
}

std::string json_of(const schema_model &schema)
{
    std::string tables;
    for (const table &tbl : schema)
        tables += (tables.empty() ? "" : ",") + table_json(tbl);
    return R"({"compat_level":1,"backend":{},"tbls":{)" + tables + "}}";
}

std::string literal(const value &v)
{
    return v.number ? std::to_string(*v.number) : v.text ? "'" + *v.text + "'" : "NULL";
}

std::string inserts_of(const schema_model &schema)
{
    std::string sql;
    for (const table &tbl : schema) {
        for (size_t r = 0; r < tbl.rows.size(); r++) {
            std::string names = "Id";
            std::string values = std::to_string(r);
            for (size_t c = 0; c < tbl.cols.size(); c++) {
                names += "," + tbl.cols[c].name;
                values += "," + literal(tbl.rows[r][c]);
            }
            sql += "INSERT INTO " + tbl.name + " (" + names + ") VALUES (" + values + ");";
        }
    }
    return sql;
}

// The model: what becomes of a value; nothing where it does not fit.
std::optional<value> converted(const value &v, kind from, kind to)
{
    const kind_traits &a = of(from);
    const kind_traits &b = of(to);
    if (!v.number && !v.text)
        return v;
    if (b.is_text) {
        std::string text = v.text.value_or("");
        if (v.number && a.scale == 0)
            text = std::to_string(*v.number);
        if (v.number && a.scale > 0) {
            int64_t power = a.scale == 2 ? 100 : 10000;
            char buffer[64];
            std::snprintf(buffer, sizeof buffer, "%s%" PRId64 ".%0*" PRId64, *v.number < 0 ? "-" : "",
                          std::abs(*v.number) / power, a.scale, std::abs(*v.number) % power);
            text = buffer;
        }
        return static_cast<int64_t>(text.size()) <= b.limit ? std::optional(value{{}, text}) : std::nullopt;
    }
    if (v.text && v.text->find_first_not_of("-0123456789") != std::string::npos)
        return std::nullopt;
    if (v.text && v.text->empty())
        return std::nullopt;
    __extension__ typedef __int128 wide_int;
    wide_int number = v.text ? std::stoll(*v.text) : *v.number;
    for (int n = v.text ? 0 : a.scale; n < b.scale; n++)
        number *= 10;
    for (int n = v.text ? 0 : a.scale; n > b.scale; n--) {
        if (number % 10 != 0)
            return std::nullopt;
        number /= 10;
    }
    if (number > b.limit || number < (b.scale ? -static_cast<wide_int>(b.limit) : -static_cast<wide_int>(b.limit) - 1))
        return std::nullopt;
    return value{static_cast<int64_t>(number), {}};
}

// The new table's rows; nothing where one does not fit.
std::optional<std::string> expected_rows(const table &old_tbl, const table &new_tbl)
{
    std::string text;
    for (size_t r = 0; r < old_tbl.rows.size(); r++) {
        text += (text.empty() ? "" : " ") + std::to_string(r);
        for (const column &col : new_tbl.cols) {
            const auto old_col = std::find_if(old_tbl.cols.begin(), old_tbl.cols.end(),
                                              [&](const column &other) { return other.id == col.id; });
            const bool is_new = old_col == old_tbl.cols.end();
            std::optional<value> v = value{};
            if (!is_new)
                v = converted(old_tbl.rows[r][static_cast<size_t>(old_col - old_tbl.cols.begin())], old_col->type,
                              col.type);
            else if (col.has_default && of(col.type).is_text)
                v = value{{}, "1"};
            else if (col.has_default)
                v = value{of(col.type).scale == 2 ? 100 : of(col.type).scale == 4 ? 10000 : 1, {}};
            if (!v || (!col.nullable && !v->number && !v->text))
                return std::nullopt;
            text += "|" + literal(*v);
        }
    }
    return text;
}

class MigrateProperty : public MigrateTest {
  protected:
    // What is in a table, in the model's words.
    std::string found_rows(const table &tbl)
    {
        std::string cols = "Id";
        for (const column &col : tbl.cols)
            cols += ",quote(" + col.name + ")";
        return rows_in_db("SELECT " + cols + " FROM " + tbl.name + " ORDER BY Id");
    }
    void check(uint32_t seed, int &done);
};

void MigrateProperty::check(uint32_t seed, int &done)
{
    Random random(seed);
    const schema_model before = random_schema(random);
    const schema_model after = changed(random, before);
    create_from(json_of(before));
    ASSERT_EQ(in_db(inserts_of(before)), "");
    std::vector<std::string> strings;
    bool fits = true;
    for (const table &tbl : before) {
        strings.push_back(tbl.name);
        const auto kept =
            std::find_if(after.begin(), after.end(), [&](const table &other) { return other.id == tbl.id; });
        fits = fits && (kept == after.end() || expected_rows(tbl, *kept));
    }
    const std::vector<std::string> objects = objects_of("db");
    std::vector<const char *> losses;
    for (const std::string &name : strings)
        losses.push_back(name.c_str());
    set_new_schema(json_of(after));
    tov_client_migrate_options options = {};
    options.compare.by_id = 1;
    options.allowed_losses = losses.data();
    options.allowed_loss_count = static_cast<uint32_t>(losses.size());
    tov_client__migrate_database(ctx, path("db").c_str(), new_schema, &options);
    const std::string why = KT_context__has_err(ctx) ? KT_context__err_description(ctx) : "";
    KT_context__err_reset(ctx);
    EXPECT_EQ(why.empty(), fits) << why << "\n"
                                 << json_of(before) << "\n"
                                 << json_of(after) << "\n"
                                 << inserts_of(before);
    if (!why.empty()) {
        EXPECT_EQ(objects_of("db"), objects);
        return;
    }
    done++;
    expect_as_created();
    for (const table &tbl : after) {
        const auto old_tbl =
            std::find_if(before.begin(), before.end(), [&](const table &other) { return other.id == tbl.id; });
        EXPECT_EQ(found_rows(tbl), old_tbl == before.end() ? "" : expected_rows(*old_tbl, tbl).value_or("?"))
            << json_of(before) << "\n"
            << json_of(after) << "\n"
            << inserts_of(before);
    }
}

// TOV_MIGRATIONS says how many pairs; the first ones are always the same.
TEST_F(MigrateProperty, RowsAreWhatThePlainModelSays)
{
    const char *wanted = std::getenv("TOV_MIGRATIONS");
    const int count = wanted ? std::atoi(wanted) : 100;
    int done = 0;
    for (int n = 0; n < count && !HasFailure(); n++) {
        SCOPED_TRACE(n);
        check(static_cast<uint32_t>(n + 1), done);
    }
    EXPECT_GT(done, count / 4);
    std::printf("%d pairs, %d migrated, the others refused as they should be\n", count, done);
}

} // namespace
