// A query of the server's catalogue, as read.
//
// It is a list of views and of tests joined by AND. Each test narrows down one fact: the object, its schema, its kind,
// the column. A view or test that is not known leaves the answer open, unless another test rules it out.
#pragma once

#include "script/host_script_conditions.hpp"

enum class host_view_kind { objects, columns, indexes, schemas, types, databases, properties };

// What a column of a view is about.
enum class host_topic {
    unknown,
    anything,
    object_name,
    object_id,
    parent_id,
    schema_id,
    schema_name,
    kind,
    column,
    index,
    type,
    database
};

struct host_view {
    std::string_view name;
    host_view_kind kind;
    std::string_view object_kinds; // separated by blanks; empty: all
    host_topic name_topic;         // of its column "name"
};

struct host_query_test {
    host_topic topic;
    std::vector<host_fact> values;
};

struct host_query_source {
    const host_view *view;
    std::string_view alias;
};

struct host_catalogue_query {
    std::vector<host_query_source> sources;
    std::vector<host_query_test> tests;
    std::vector<host_fact> arguments; // of fn_listextendedproperty
    bool is_open = false;             // something was not understood
};

// host_script_answers.cpp: whether the query has rows.
std::optional<bool> host_answer(host_script_reader &reader, const host_catalogue_query &query);
