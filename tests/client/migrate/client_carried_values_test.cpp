// A value of a column that gets another type becomes what loading it would make of it: rows that were unloaded from the
// old database and loaded into one of the new schema are held against those that were migrated.
#include "guide/declared_types.hpp"
#include "migrated_database.hpp"
#include "type_document.hpp"

#include <map>

namespace {

// A type with values of it, as files have them.
struct typed_values {
    const char *name;
    client_declared_type type;
    std::vector<const char *> values;
};

using base = client_base;

const typed_values all_values[] = {
    {"bit", declared(base::bit), {"0", "1"}},
    {"int", declared(base::integer), {"-2147483648", "0", "1", "1753", "20240229"}},
    {"bigint", declared(base::bigint), {"-9223372036854775808", "12", "9223372036854775807"}},
    {"decimal(9,2)", declared(base::decimal, 9, 2), {"-0.50", "12.00", "12.34", "-9999999.99"}},
    {"decimal(38,20)", declared(base::decimal, 38, 20), {"0.00000000000000000001", "0.05"}},
    {"money", declared(base::money), {"-0.0001", "12.3400", "922337203685477.5807"}},
    {"float", declared(base::floating, 53), {"0.1", "1e+20", "-12.5", "0.3333333333333333", "5"}},
    {"real", declared(base::real, 24), {"0.1", "-12.5", "16777216"}},
    {"char(5)", declared(base::fixed_char, 0, 0, 5), {"ab   ", "12   ", "é    ", "1.5  "}},
    {"varchar(40)", declared(base::varchar, 0, 0, 40), {"", "0x0A1B", "2024-02-29", "-7", "1e3", "  5 ", "€"}},
    {"nchar(8)", declared(base::fixed_nchar, 0, 0, 8), {"ab      ", "\U0001F600ab    "}},
    {"nvarchar(60)",
     declared(base::nvarchar, 0, 0, 60),
     {"", "\U0001F600", "\u65e5\u672c", "12.50", "2024-02-29T10:11:12.3456789", "2023-02-29", "10:11:12",
      "6F9619FF-8B86-D011-B42D-00C04FC964FF", "{6f9619ff-8b86-d011-b42d-00c04fc964ff}", "0x", "0xZZ",
      "2024-02-29 10:11:12 +02:00", "\xEF\xBB\xBF<a/>", "0xFF19966F868B11D0B42D00C04FC964FF"}},
    {"binary(4)", declared(base::binary, 0, 0, 4), {"0x01020304"}},
    {"varbinary(20)",
     declared(base::varbinary, 0, 0, 20),
     {"0x", "0x41", "0xFF19966F868B11D0B42D00C04FC964FF", "0x0102030405060708090A0B0C0D0E0F1011121314"}},
    {"uniqueidentifier", declared(base::guid), {"6F9619FF-8B86-D011-B42D-00C04FC964FF"}},
    {"date", declared(base::date), {"0001-01-01", "1753-01-01", "2024-02-29", "9999-12-31"}},
    {"time(0)", declared(base::time, 0, 0), {"00:00:00", "23:59:59"}},
    {"time(7)", declared(base::time, 0, 7), {"10:11:12.0000000", "10:11:12.1230000", "10:11:12.1234567"}},
    {"smalldatetime", declared(base::smalldatetime), {"1900-01-01 00:00:00", "2079-06-06 23:59:00"}},
    {"datetime", declared(base::datetime), {"2024-02-29 00:00:00.000", "2024-02-29 10:11:12.997"}},
    {"datetime2(1)", declared(base::datetime2, 0, 1), {"2024-02-29 00:00:00.0", "2024-02-29 10:11:12.5"}},
    {"datetime2(7)",
     declared(base::datetime2, 0, 7),
     {"0001-01-01 00:00:00.0000000", "2024-02-29 10:11:12.1200000", "2024-02-29 10:11:12.1234567",
      "9999-12-31 23:59:59.9990000"}},
    {"datetimeoffset(7)",
     declared(base::datetimeoffset, 0, 7),
     {"2024-02-29 00:00:00.0000000 +00:00", "2024-02-29 10:11:12.1234567 -05:30"}},
};

// A value that is kept as it is, though the text that shows it would be read otherwise: a real as a float of the same
// digits, and the bytes of a uniqueidentifier not at all.
bool is_kept_exactly(base from, base to)
{
    return (from == base::real && to == base::floating) || (from == base::guid && client_is_binary(to));
}

std::string quoted_field(const std::string &value)
{
    return '"' + value + '"';
}

class CarriedValues : public MigrateTest {
  protected:
    static std::string tbl(size_t n)
    {
        return "T" + std::to_string(n);
    }
    // A database whose tables all have the same type, and the values in each.
    void create_old(const typed_values &old_values)
    {
        const std::vector<client_declared_type> same(std::size(all_values), old_values.type);
        create_from(document_of_tables(same));
        std::string content = "Id,c\n";
        for (size_t n = 0; n < old_values.values.size(); n++)
            content += std::to_string(n + 1) + "," + quoted_field(old_values.values[n]) + "\n";
        std::vector<std::string> files;
        for (size_t n = 0; n < same.size(); n++)
            files.push_back(write(tbl(n) + ".csv", content));
        load(files, as_csv());
        ASSERT_OK(ctx);
        ASSERT_EQ(rows_in_db("SELECT count(*) FROM T0"), std::to_string(old_values.values.size()));
    }
    static tov_client_load_options as_csv()
    {
        tov_client_load_options options = {};
        options.format = "csv";
        options.header = 1;
        options.exact = 1;
        return options;
    }
    // What loading the same rows comes to.
    void load_unloaded()
    {
        KT_varray *report = nullptr;
        tov_client_unload_options options = {};
        options.format = "csv";
        tov_client__unload(ctx, schema, path("db").c_str(), path("out").c_str(), &options, &report);
        KT_varray__free(ctx, report);
        std::vector<client_declared_type> types;
        std::vector<std::string> files;
        for (const typed_values &values : all_values) {
            files.push_back(path("out/" + tbl(types.size()) + ".csv"));
            types.push_back(values.type);
        }
        new_document = document_of_tables(types);
        std::filesystem::remove(path("loaded"));
        reset_schema_to(new_document.c_str());
        create("loaded");
        load(files, as_csv(), "loaded");
        ASSERT_OK(ctx);
    }
    std::vector<const char *> all_losses()
    {
        tbls.clear();
        for (size_t n = 0; n < std::size(all_values); n++)
            tbls.push_back(tbl(n));
        std::vector<const char *> losses;
        for (const std::string &name : tbls)
            losses.push_back(name.c_str());
        return losses;
    }
    std::string values_of(size_t n, const std::string &database)
    {
        return rows_in_db("SELECT Id, quote(c) FROM " + tbl(n) + " ORDER BY Id", database);
    }
    // The first row of a table that loading has refused; NULL when it has refused none.
    std::string refused_row(size_t n)
    {
        return rows_in_db("SELECT min(Id) FROM " + tbl(n) + " WHERE Id NOT IN (" + loaded_ids(n) + ")", "whole");
    }
    // Rows that loading refuses are refused as well, each for the types that do not take it.
    void expect_refused(const typed_values &old_values)
    {
        std::map<std::string, std::vector<size_t>> refusing;
        for (size_t n = 0; n < std::size(all_values); n++) {
            if (!is_kept_exactly(old_values.type.type.base, all_values[n].type.type.base))
                refusing[refused_row(n)].push_back(n);
        }
        refusing.erase("NULL");
        for (const auto &[id, types] : refusing) {
            create_from(document_of_tables({old_values.type}));
            const std::string insert = "INSERT INTO T0 SELECT * FROM whole.T0 WHERE Id = " + id;
            ASSERT_EQ(in_db("ATTACH '" + path("whole") + "' AS whole; " + insert), "");
            for (const size_t n : types) {
                SCOPED_TRACE(std::string("to ") + all_values[n].name);
                EXPECT_NE(migrate(document_of_tables({all_values[n].type}), {"T0"}), "") << "row " << id;
            }
        }
    }
    std::string loaded_ids(size_t n)
    {
        std::string ids = rows_in_db("SELECT Id FROM " + tbl(n), "loaded");
        std::replace(ids.begin(), ids.end(), ' ', ',');
        return ids;
    }

    std::string new_document;
    std::vector<std::string> tbls;
};

TEST_F(CarriedValues, AreThoseThatLoadingMakes)
{
    for (const typed_values &old_values : all_values) {
        SCOPED_TRACE(old_values.name);
        create_old(old_values);
        load_unloaded();
        std::filesystem::copy_file(path("db"), path("whole"), std::filesystem::copy_options::overwrite_existing);
        std::string refused;
        for (size_t n = 0; n < std::size(all_values); n++)
            refused += "DELETE FROM " + tbl(n) + " WHERE Id NOT IN (" + loaded_ids(n) + ");";
        ASSERT_EQ(in_db(refused), "");
        EXPECT_EQ(migrate(new_document, all_losses()), "");
        for (size_t n = 0; n < std::size(all_values); n++) {
            SCOPED_TRACE(std::string("to ") + all_values[n].name);
            if (!is_kept_exactly(old_values.type.type.base, all_values[n].type.type.base)) {
                EXPECT_EQ(values_of(n, "db"), values_of(n, "loaded"));
            }
        }
        expect_refused(old_values);
    }
}

// Bytes are the same in both.
TEST_F(CarriedValues, AreKeptWhereTheirBytesMeanTheSame)
{
    create_from(document_of_tables({declared(base::guid), declared(base::real, 24)}));
    ASSERT_EQ(in_db("INSERT INTO T0 VALUES (1, x'FF19966F868B11D0B42D00C04FC964FF');"
                    "INSERT INTO T1 VALUES (1, 0.100000001490116119384765625)"),
              "");
    EXPECT_EQ(migrate(document_of_tables({declared(base::binary, 0, 0, 17), declared(base::floating, 53)})), "");
    EXPECT_EQ(rows_in_db("SELECT quote(c) FROM T0"), "X'FF19966F868B11D0B42D00C04FC964FF00'");
    EXPECT_EQ(rows_in_db("SELECT c = 0.100000001490116119384765625 FROM T1"), "1");
}

} // namespace
