// The forms in which the server reads days and times, and texts that only look like one of them.
#include "defaults/host_plain_moment.hpp"

#include <gtest/gtest.h>

namespace {

struct plain_case {
    const char *text;
    const char *plain; // the text itself where it is not read
};

const plain_case plain_cases[] = {
    {"", "1900-01-01"},
    {"   ", "1900-01-01"},
    {"19991231", "1999-12-31"},
    {"19991231 10:00", "1999-12-31 10:00"},
    {"1999123", "1999123"},
    {"19991231x", "19991231x"},
    {"00000000", "00000000"},
    // month and day in some order
    {"12/31/1999", "1999-12-31"},
    {"31-12-1999", "1999-12-31"},
    {"31.12.1999 10:00", "1999-12-31 10:00"},
    {"5/5/1999", "1999-05-05"},
    {"5/6/1999", "5/6/1999"},
    {"31/31/1999", "1999-31-31"}, // no day, which is refused later
    {"12/31/99", "12/31/99"},
    {"12/31/1999x", "12/31/1999x"},
    {"12/31-1999", "12/31-1999"},
    {"12/x/1999", "12/x/1999"},
    {"12:31", "12:31"},
    {"12", "12"},
    // months by their names
    {"31 Dec 1999", "1999-12-31"},
    {"31-dec-1999", "1999-12-31"},
    {"31 DECEMBER, 1999", "1999-12-31"},
    {"December 31, 1999", "1999-12-31"},
    {"december 31 1999 10:00", "1999-12-31 10:00"},
    {"May 1 2020", "2020-05-01"},
    {"31 Dece 1999", "31 Dece 1999"},
    {"31-Dec 1999", "31-Dec 1999"},
    {"31 Dec 99", "31 Dec 99"},
    {"Dec 1999", "Dec 1999"},
    {"Dec x 1999", "Dec x 1999"},
    {"31 Dec 1999x", "31 Dec 1999x"},
    // times of twelve hours
    {"12am", "00:00:00"},
    {"12:30 PM", "12:30:00"},
    {"1:02:03.5 pm ", "13:02:03.5"},
    {" 1 pm", " 13:00:00"},
    {"0 am", "0 am"},
    {"13 pm", "13 pm"},
    {"x pm", "x pm"},
    {"1x pm", "1x pm"},
    {"1:x pm", "1:x pm"},
    {"19991231 1:30pm", "1999-12-31 13:30:00"},
};

TEST(HostPlainMoment, ReadsWhatTheServerReads)
{
    for (const plain_case &c : plain_cases)
        EXPECT_EQ(host_plain_moment(c.text), c.plain) << '"' << c.text << '"';
}

TEST(HostPlainMoment, KnowsWhatALanguageDecides)
{
    const std::pair<const char *, bool> cases[] = {
        {"2020-01-02", true}, {"2020-01-02 10:00", true}, {"2020-01-01", false},  {"2020-01-13", false},
        {"2020-0102", false}, {"20200102", false},        {"2020-01-02x", false}, {"2020/01/02", false},
    };
    for (const auto &[text, expected] : cases)
        EXPECT_EQ(host_is_read_by_language(text), expected) << text;
}

TEST(HostPlainMoment, CountsDaysFromTheFirstOf1900)
{
    const std::pair<const char *, const char *> cases[] = {
        {"0", "1900-01-01"},
        {"-1", "1899-12-31"},
        {"2958463", "9999-12-31"},
        {"2958464", ""},
        {"-53690", "1753-01-01"},
        {"-53691", ""},
        {"1.5", ""},
        {"", ""},
        {"x", ""},
    };
    for (const auto &[text, day] : cases)
        EXPECT_EQ(host_day_of_number(text), day) << text;
}

} // namespace
