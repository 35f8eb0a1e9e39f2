// UTF-16 without a byte-order mark: read where zero bytes can mean nothing else, refused row by row elsewhere.
#include "load_test.hpp"

#include "rows/convert/client_utf8.hpp"

namespace {

constexpr const char *not_read = "not-utf-8: every second byte of the file is zero";

struct unmarked_case {
    const char *name;
    const char *file;
    const char *format;
    const char *content;
    bool is_read;
};

const unmarked_case unmarked_cases[] = {
    {"a script by its name", "rows.sql", "", "/* \xC3\x84 */ INSERT Customers (Id) VALUES (7)", true},
    {"a script by its option", "rows.txt", "insert", "INSERT Customers (Id) VALUES (7)", true},
    {"JSON by its beginning", "Customers.dat", "", "[{\"Id\":7}]", true},
    {"an object a line", "Customers.dat", "", "{\"Id\":7}\r\n", true},
    {"JSON by its option", "Customers.dat", "json", " \n[{\"Id\":7}]", true},
    {"a bcp file", "Customers.dat", "bcp", "7\tAda\tABC\t\r\n", false},
    {"a bcp file that begins like JSON", "Customers.dat", "bcp", "[\tAda\tABC\t\r\n", false},
    {"CSV", "Customers.csv", "csv", "7,Ada,ABC,\r\n", false},
};

class ClientLoadUnmarkedUtf16 : public LoadTest {
  protected:
    void expect(const unmarked_case &c, const std::string &bytes)
    {
        std::remove(path("db").c_str());
        create();
        tov_client_load_options options = {};
        options.format = c.format;
        load({write(c.file, bytes)}, options);
        ASSERT_OK(ctx);
        EXPECT_EQ(query("SELECT group_concat(Id) FROM Customers"), c.is_read ? "7" : "NULL");
        if (c.is_read)
            EXPECT_EQ(shown_remarks, "");
        else
            EXPECT_NE(shown_remarks.find(not_read), std::string::npos) << shown_remarks;
    }
};

TEST_F(ClientLoadUnmarkedUtf16, InBothByteOrders)
{
    for (const unmarked_case &c : unmarked_cases) {
        SCOPED_TRACE(c.name);
        std::string bytes;
        client_append_as_utf16(bytes, c.content);
        expect(c, bytes);
        for (size_t n = 0; n + 1 < bytes.size(); n += 2)
            std::swap(bytes[n], bytes[n + 1]);
        expect(c, bytes);
    }
}

} // namespace
