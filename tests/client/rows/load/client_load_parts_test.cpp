// Row parts of packages: bcp's native form, in pieces of any size.
#include "load_test.hpp"

#include "rows/convert/client_utf8.hpp"

using namespace std::string_literals;

namespace {

struct row_part {
    const char *schema_name;
    const char *tbl_name;
    uint32_t number;
    std::string bytes;
};

struct part_list {
    std::vector<row_part> parts;
    size_t piece = 1;      // bytes that are handed over at once
    size_t end = SIZE_MAX; // after so many bytes reading fails
};

void read_parts(KT_context *ctx, void *data, tov_client_take_part take, void *take_data)
{
    const auto &list = *static_cast<const part_list *>(data);
    size_t taken = 0;
    for (const row_part &part : list.parts) {
        for (size_t at = 0; at < part.bytes.size() && !KT_context__has_err(ctx); at += list.piece) {
            if (taken++ == list.end) {
                KT_context__err(ctx, KT_ERR_NOT_FOUND, "here", 1, "the network is gone");
                return;
            }
            const size_t size = std::min(list.piece, part.bytes.size() - at);
            take(ctx, take_data, part.schema_name, part.tbl_name, part.number, part.bytes.data() + at, size);
        }
        if (!KT_context__has_err(ctx))
            take(ctx, take_data, part.schema_name, part.tbl_name, part.number, nullptr, 0);
    }
}

std::string utf16(std::string_view text)
{
    std::string bytes;
    client_append_as_utf16(bytes, text);
    return bytes;
}

// A row of Customers: an id, a name behind its length (null is none), a code and a date that are NULL.
std::string customer(char id, const char *name)
{
    std::string row = {id, 0, 0, 0};
    const std::string units = name ? utf16(name) : "";
    row += name ? std::string{static_cast<char>(units.size()), 0} + units : "\xFF\xFF";
    return row + "\xFF\xFF\xFF";
}

// A row of Orders: an id, a customer (0 is NULL), a price of 1.50, no note.
std::string order(char id, char customer_id)
{
    std::string row = {id, 0, 0, 0};
    row += customer_id ? "\4"s + customer_id + std::string(3, '\0') : "\xFF";
    row += "\x13\x09\x02\x01\x96"s + std::string(15, '\0');
    return row + std::string(8, '\xFF');
}

class ClientLoadParts : public LoadTest {
  protected:
    void SetUp() override
    {
        LoadTest::SetUp();
        create();
    }
    std::string load_parts(part_list &list, tov_client_load_options options = {})
    {
        tov_client_loader *loader = nullptr;
        KT_varray *report = nullptr;
        KT_varray *remarks = nullptr;
        std::string result;
        tov_client__open_loader(ctx, schema, path("db").c_str(), &options, &loader);
        tov_client__load_parts(ctx, loader, "shop", read_parts, &list);
        if (!KT_context__has_err(ctx))
            tov_client__finish_load(ctx, loader, &report, &remarks);
        if (!KT_context__has_err(ctx)) {
            result = shown_report(report);
            shown_remarks = shown_texts(remarks);
        }
        KT_varray__free(ctx, report);
        KT_varray__free(ctx, remarks);
        tov_client__free_loader(ctx, loader);
        return result;
    }
};

TEST_F(ClientLoadParts, InPiecesOfAnySize)
{
    for (size_t piece = 1; piece < 40; piece += 6) {
        SCOPED_TRACE(piece);
        std::remove(path("db").c_str());
        create();
        part_list list{{{"Sales", "Orders", 0, order(10, 1) + order(11, 0)},
                        {"Sales", "Orders", 1, order(12, 2)},
                        {"dbo", "Customers", 0, customer(1, "Ada") + customer(2, nullptr) + customer(3, "")}},
                       piece};
        EXPECT_EQ(load_parts(list), "Sales.Orders 2 2 0; Sales.Orders 1 1 0; Customers 3 3 0");
        EXPECT_OK(ctx);
        EXPECT_EQ(query("SELECT Id, quote(Name) FROM Customers"), "1|'Ada' 2|NULL 3|''");
        EXPECT_EQ(query("SELECT Id, Customer, Price FROM \"Sales.Orders\" ORDER BY Id"),
                  "10|1|150 11|NULL|150 12|2|150");
    }
}

TEST_F(ClientLoadParts, RowsThatReferToNothingAreFoundAgain)
{
    const std::string rejects = path("rejects");
    tov_client_load_options options = {};
    options.rejects = rejects.c_str();
    part_list list{{{"Sales", "Orders", 0, order(10, 1) + order(11, 9)}, {"dbo", "Customers", 0, customer(1, "Ada")}},
                   7};
    EXPECT_EQ(load_parts(list, options), "Sales.Orders 2 1 1; Customers 1 1 0");
    EXPECT_EQ(query("SELECT Id FROM \"Sales.Orders\""), "10");
    EXPECT_EQ(read("rejects/Sales.Orders-0.bcp"), order(11, 9));
}

TEST_F(ClientLoadParts, APartThatCannotBeReadIsToldWithItsPlace)
{
    part_list list{{{"dbo", "Customers", 0, customer(1, "Ada") + customer(2, "Bob").substr(0, 8)}}, 5};
    EXPECT_EQ(load_parts(list), "Customers 2 1 1");
    EXPECT_NE(shown_remarks.find("row 2, column Name: : cut-row"), std::string::npos) << shown_remarks;

    std::string odd = customer(3, "Eve");
    odd[4] = 5;
    part_list broken{{{"dbo", "Customers", 1, odd + customer(4, "Mia")}}, 100};
    EXPECT_EQ(load_parts(broken), "Customers 1 0 1");
    EXPECT_NE(shown_remarks.find("row 1, column Name: : bad-row"), std::string::npos) << shown_remarks;
}

TEST_F(ClientLoadParts, ATableThatTheSchemaLacksIsNamed)
{
    part_list list{{{"dbo", "Nobody", 0, "12345"}, {"dbo", "Customers", 0, customer(1, "Ada")}}, 100};
    EXPECT_EQ(load_parts(list), "dbo.Nobody 0 0 0; Customers 1 1 0");
}

// Parts are told apart by where they come, not by names, which are alike once a dot joins them.
TEST_F(ClientLoadParts, PartsWithTheSameNameAreDifferent)
{
    part_list list{{{"dbo", "Customers", 0, customer(1, "Ada")},
                    {"Sales", "Orders", 0, order(1, 9) + order(2, 1)},
                    {"Sales", "Orders", 0, order(3, 1) + order(4, 8)}},
                   100};
    tov_client_load_options options = {};
    options.again = 1;
    EXPECT_EQ(load_parts(list, options), "Customers 1 1 0; Sales.Orders 2 1 1; Sales.Orders 2 1 1");
    EXPECT_EQ(query("SELECT Id FROM \"Sales.Orders\""), "2 3");
}

TEST_F(ClientLoadParts, APartGoesOnWhereItWas)
{
    part_list list{{{"Sales", "Orders", 0, order(10, 0) + order(11, 0) + order(12, 0) + order(13, 0)}}, 1};
    tov_client_load_options options = {};
    options.batch = 1;
    const size_t row = order(10, 0).size();
    for (const size_t end : {size_t{1}, row, row + 1, 3 * row - 1, 4 * row - 1}) {
        SCOPED_TRACE(end);
        std::remove(path("db").c_str());
        create();
        list.end = end;
        load_parts(list, options);
        EXPECT_FAILED(ctx, KT_ERR_NOT_FOUND);
        reset();
        EXPECT_EQ(query("SELECT count(*) FROM \"Sales.Orders\""), std::to_string(end / row));
        list.end = SIZE_MAX;
        EXPECT_EQ(load_parts(list, options), "Sales.Orders 4 4 0");
        EXPECT_EQ(query("SELECT group_concat(Id) FROM \"Sales.Orders\""), "10,11,12,13");
    }
}

TEST_F(ClientLoadParts, APartIsLoadedOnce)
{
    part_list list{{{"dbo", "Customers", 0, customer(1, "Ada")}}, 100};
    EXPECT_EQ(load_parts(list), "Customers 1 1 0");
    EXPECT_EQ(load_parts(list), "Customers 1 1 0");
    EXPECT_EQ(query("SELECT count(*) FROM Customers"), "1");
}

TEST_F(ClientLoadParts, TheHistoryOfATableIsCountedAndLeftOut)
{
    KT_vhash *facts = nullptr;
    tov_schema__ensure_tbl_server(ctx, schema, "1", &facts);
    KT_vhash__update__int64(ctx, facts, "temporal_type", 1);
    part_list list{{{"dbo", "Customers", 0, customer(1, "Ada") + customer(1, "Ada")}}, 100};
    EXPECT_EQ(load_parts(list), "Customers 2 0 0");
    EXPECT_EQ(query("SELECT count(*) FROM Customers"), "0");
}

TEST_F(ClientLoadParts, NativeFilesAreRead)
{
    tov_client_load_options options = {};
    options.format = "native";
    EXPECT_EQ(load({write("Customers.bcp", customer(1, "Ada") + customer(2, "Bob"))}, options), "Customers 2 2 0");
    EXPECT_EQ(query("SELECT Id, Name FROM Customers"), "1|Ada 2|Bob");
}

} // namespace
