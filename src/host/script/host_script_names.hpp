// Maps by name, in which the case of ASCII letters does not count. Their keys are borrowed: kept strings.
#pragma once

#include "tsql/host_tsql_words.hpp"

#include <cstddef>
#include <unordered_map>
#include <unordered_set>

// A name within a schema.
struct host_qualified_name {
    std::string_view schema;
    std::string_view name;
};

struct host_name_hash {
    size_t operator()(std::string_view name) const;
    size_t operator()(const host_qualified_name &name) const;
};

struct host_name_equal {
    bool operator()(std::string_view a, std::string_view b) const
    {
        return host_same_text(a, b);
    }
    bool operator()(const host_qualified_name &a, const host_qualified_name &b) const
    {
        return host_same_text(a.name, b.name) && host_same_text(a.schema, b.schema);
    }
};

template <class Value>
using host_name_map = std::unordered_map<host_qualified_name, Value, host_name_hash, host_name_equal>;
using host_name_set = std::unordered_set<host_qualified_name, host_name_hash, host_name_equal>;
