// What is decided where two values meet. The checks as a whole are in host_check_grammar_test.cpp; here are the edges
// of numbers, and that it does not matter on which side a value stands.
#include "checks/host_check_values.hpp"

#include <gtest/gtest.h>
#include <string>

static host_column a_column(const char *type)
{
    host_column col;
    col.system_type = type;
    return col;
}

TEST(HostCheckValuesTest, NumbersAreWholeUpToNineDigits)
{
    EXPECT_EQ(host_number_value("999999999").kind, host_value_kind::whole_literal);
    EXPECT_EQ(host_number_value("0000000000001").kind, host_value_kind::whole_literal);
    EXPECT_EQ(host_number_value("1000000000").kind, host_value_kind::number_literal);
    EXPECT_EQ(host_number_value("1.0").kind, host_value_kind::number_literal);
}

static const char *compare(const host_value &left, const host_value &right, const char *sign)
{
    static constexpr std::string_view definition = "[A]'b'";
    host_check_changes changes;
    host_value a = left, b = right;
    a.place = a.extent = definition.substr(0, 3);
    b.place = b.extent = definition.substr(3);
    a.expr = b.expr = a.place;
    return host_compare(changes, a, b, sign);
}

TEST(HostCheckValuesTest, FifteenDigitsAreExact)
{
    const host_column col = a_column("float");
    const host_value value = host_column_value(col);
    EXPECT_EQ(compare(value, host_number_value("0.00123456789012345"), "<"), nullptr);
    EXPECT_EQ(compare(value, host_number_value("123456789012.345"), "<"), nullptr);
    EXPECT_NE(compare(value, host_number_value("123456789012.3456"), "<"), nullptr);
}

TEST(HostCheckValuesTest, SidesDoNotMatter)
{
    const char *const types[] = {"int",
                                 "bit",
                                 "float",
                                 "real",
                                 "money",
                                 "varchar",
                                 "date",
                                 "datetime",
                                 "datetime2",
                                 "smalldatetime",
                                 "uniqueidentifier",
                                 "varbinary"};
    for (const char *left_type : types) {
        for (const char *right_type : types) {
            SCOPED_TRACE(std::string(left_type) + ' ' + right_type);
            const host_column left = a_column(left_type);
            const host_column right = a_column(right_type);
            for (const char *sign : {"=", "<"}) {
                EXPECT_EQ(!compare(host_column_value(left), host_column_value(right), sign),
                          !compare(host_column_value(right), host_column_value(left), sign));
            }
        }
    }
}
