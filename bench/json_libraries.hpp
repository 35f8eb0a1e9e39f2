// The trees of three libraries behind one interface, so that a case is written once for all of them.
#pragma once

#include "bench_schema.hpp"
#include "kt_vhash.h"

#include <boost/json.hpp>
#include <rapidjson/document.h>

#include <vector>

// A column to ask for. The ids lie in the record itself, so that asking a million times reads them in a row.
struct bench_place {
    char tbl[12];
    char col[8];
};

// So many columns of a schema of that size, at random, the same for everyone.
std::vector<bench_place> bench_places(const bench_size &size, size_t count);

class our_tree {
  public:
    static constexpr const char *name = "ours";
    explicit our_tree(const std::string &text);
    our_tree(const our_tree &) = delete;
    our_tree &operator=(const our_tree &) = delete;
    ~our_tree();
    // Writes the whole text and frees it; gives its first byte.
    char write() const;
    const char *type_name(const bench_place &place) const;

  private:
    KT_vhash *map_ = nullptr;
};

class boost_tree {
  public:
    static constexpr const char *name = "Boost.JSON";
    explicit boost_tree(const std::string &text) : value_(boost::json::parse(text, &memory_))
    {
    }
    char write() const;
    const char *type_name(const bench_place &place) const;

  private:
    boost::json::monotonic_resource memory_;
    boost::json::value value_;
};

// With validated UTF-8 and exact doubles. It has no index, so it is asked for no column.
class rapidjson_tree {
  public:
    static constexpr const char *name = "RapidJSON";
    explicit rapidjson_tree(const std::string &text);
    // Into a buffer that has the size of the text from the start.
    char write() const;

  private:
    rapidjson::Document document_;
    size_t size_;
};
