#include "json_libraries.hpp"

#include <rapidjson/stringbuffer.h>
#include <rapidjson/writer.h>

#include <cstdio>
#include <random>

std::vector<bench_place> bench_places(const bench_size &size, size_t count)
{
    KT_context *ctx = bench_ctx();
    std::mt19937 random(1);
    std::vector<bench_place> all(count);
    for (bench_place &place : all) {
        const char *tbl = nullptr;
        uint32_t cols = 0;
        tov_schema__get_nth_tbl_id(ctx, bench_schema(size), static_cast<uint32_t>(random() % size.tables), &tbl);
        tov_schema__count_cols(ctx, bench_schema(size), tbl, &cols);
        bench_check();
        std::snprintf(place.tbl, sizeof place.tbl, "%s", tbl);
        std::snprintf(place.col, sizeof place.col, "%hu", static_cast<unsigned short>(1 + random() % cols));
    }
    return all;
}

our_tree::our_tree(const std::string &text)
{
    KT_vhash__alloc__from_json__sz(bench_ctx(), &map_, text.c_str());
    bench_check();
}

our_tree::~our_tree()
{
    KT_vhash__free(bench_ctx(), map_);
}

char our_tree::write() const
{
    KT_string *text = nullptr;
    KT_string__alloc(bench_ctx(), &text);
    KT_vhash__to_json(bench_ctx(), map_, text);
    bench_check();
    const char first = *KT_string__sz(text);
    KT_string__free(bench_ctx(), text);
    return first;
}

const char *our_tree::type_name(const bench_place &place) const
{
    KT_context *ctx = bench_ctx();
    KT_vhash *at = nullptr;
    const char *type = nullptr;
    KT_vhash__get__vhash(ctx, map_, "tbls", &at);
    KT_vhash__get__vhash(ctx, at, place.tbl, &at);
    KT_vhash__get__vhash(ctx, at, "cols", &at);
    KT_vhash__get__vhash(ctx, at, place.col, &at);
    KT_vhash__get__vhash(ctx, at, "type", &at);
    KT_vhash__get__sz(ctx, at, "name", &type);
    return type;
}

char boost_tree::write() const
{
    return boost::json::serialize(value_).front();
}

const char *boost_tree::type_name(const bench_place &place) const
{
    const boost::json::object &tbl = value_.as_object().at("tbls").as_object().at(place.tbl).as_object();
    const boost::json::object &type = tbl.at("cols").as_object().at(place.col).as_object().at("type").as_object();
    return type.at("name").as_string().data();
}

rapidjson_tree::rapidjson_tree(const std::string &text) : size_(text.size())
{
    document_.Parse<rapidjson::kParseValidateEncodingFlag | rapidjson::kParseFullPrecisionFlag>(text.c_str(),
                                                                                                text.size());
}

char rapidjson_tree::write() const
{
    rapidjson::StringBuffer text(nullptr, size_ + 1);
    rapidjson::Writer<rapidjson::StringBuffer> writer(text);
    document_.Accept(writer);
    return *text.GetString();
}
