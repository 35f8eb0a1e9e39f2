// The expression in a CREATE DEFAULT statement.
#include "steps/host_bound_default.hpp"

#include <gtest/gtest.h>

TEST(HostBoundDefaultTest, WhatFollowsTheLastAsAtTopLevel)
{
    const struct {
        const char *statement;
        const char *expression;
    } cases[] = {
        {"CREATE DEFAULT dbo.zero AS 0", "0"},
        {"create default [as] as\r\n  'as'\r\n", "'as'"},
        {"CREATE DEFAULT d AS CAST(1 AS int)", "CAST(1 AS int)"},
        {"/* was AS 1 /* nested AS 2 */ AS 3 */ CREATE DEFAULT d AS 4", "4"},
        {"-- AS 1\nCREATE DEFAULT d AS 5 ; \n", "5"},
        {"-- a; b\nCREATE DEFAULT d AS 5; -- AS 6", "5"},
        {"CREATE DEFAULT d AS ';' /* ; */;;", "';' /* ; */"},
        {"CREATE DEFAULT d AS;", ""},
        {"CREATE DEFAULT \"x AS y\" AS N'it''s AS'", "N'it''s AS'"},
        {"CREATE DEFAULT [a]]b AS c] AS 6", "6"},
        {"CREATE DEFAULT basAs AS 7", "7"},
        {"CREATE DEFAULT d", ""},
        {"CREATE DEFAULT d AS", ""},
        {"", ""},
        {"CREATE DEFAULT d AS 'not closed", "'not closed"},
        {"/* not closed AS 1", ""},
        {"-- AS 1", ""},
    };
    for (const auto &c : cases)
        EXPECT_EQ(host_bound_default_expression(c.statement), c.expression) << c.statement;
}
