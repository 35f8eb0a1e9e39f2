#include "fk_random.hpp"

std::string fk_random::tbl_id()
{
    const std::string n = std::to_string(below(tbl_count_));
    if (chance(4))
        return "nowhere";
    return joined({chance(4) ? "T" : "t", n});
}

std::string fk_random::col_id()
{
    const std::string n = std::to_string(below(shape_.cols));
    if (chance(3))
        return "c99";
    return joined({chance(5) ? "C" : "c", n});
}

std::string fk_random::action()
{
    static const char *const actions[] = {"NO ACTION", "no action",   "CASCADE",
                                          "SET NULL",  "SET DEFAULT", "set default"};
    return actions[below(6)];
}

std::string fk_random::text_or_odd(const std::string &text)
{
    if (!chance(shape_.odd_percent))
        return joined({"\"", text, "\""});
    static const char *const odd[] = {"null", "7", "{}"};
    return odd[below(3)];
}

std::string fk_random::col_fk()
{
    std::string fk = R"({"deferred":false)";
    if (!chance(shape_.odd_percent))
        fk += joined({R"(,"ref_tbl_id":)", text_or_odd(tbl_id())});
    if (chance(90))
        fk += joined({R"(,"ref_col_id":)", text_or_odd(col_id())});
    if (chance(50))
        fk += joined({R"(,"name":)", text_or_odd("a name")});
    if (chance(60))
        fk += joined({R"(,"on_delete":)", text_or_odd(action())});
    if (chance(60))
        fk += joined({R"(,"on_update":)", text_or_odd(action())});
    return fk + "}";
}

std::string fk_random::col()
{
    static const char *const types[] = {"identity", "sint64", "sint32", "sint16", "uint8", "text", "sint32", "sint32"};
    std::string record = "{";
    if (chance(97))
        record += joined({R"("name":)", text_or_odd(joined({"name ", std::to_string(below(10))})), ","});
    if (!chance(shape_.odd_percent))
        record += joined({R"("type":{"name":")", types[below(8)], R"("},)"});
    if (chance(30))
        record += joined({R"("defval":{"expr":)", text_or_odd("42"), "},"});
    if (chance(shape_.fk_percent))
        record += joined({R"("fk":)", chance(shape_.odd_percent) ? "null" : col_fk(), ","});
    return record + R"("mssql_col_data_type":"int"})";
}

std::string fk_random::key()
{
    std::string record = "{";
    if (!chance(shape_.odd_percent)) {
        record += R"("cols":{)";
        std::string pairs;
        for (unsigned n = 0; n < shape_.cols; n++) {
            if (chance(60)) {
                pairs += joined({pairs.empty() ? "\"" : ",\"", chance(5) ? "C" : "c", std::to_string(n),
                                 "\":", text_or_odd(col_id())});
            }
        }
        record += pairs + "},";
    }
    if (!chance(shape_.odd_percent))
        record += joined({R"("ref_tbl_id":)", text_or_odd(tbl_id()), ","});
    if (!chance(shape_.odd_percent))
        record += R"("name":"key",)";
    if (shape_.actions || chance(70))
        record += joined({R"("on_delete":)", text_or_odd(action()), ","});
    if (shape_.actions || chance(70))
        record += joined({R"("on_update":)", text_or_odd(action()), ","});
    return record + R"("deferred":false})";
}

std::string fk_random::tbl(unsigned n)
{
    std::string record = joined({R"({"name":"table )", std::to_string(n), R"(","txid":1)"});
    if (!chance(shape_.odd_percent)) {
        record += R"(,"cols":{)";
        const unsigned cols = below(shape_.cols + 1);
        for (unsigned c = 0; c < cols; c++)
            record += joined({c ? ",\"" : "\"", chance(shape_.odd_percent / 4) ? "C" : "c", std::to_string(c),
                              "\":", chance(shape_.odd_percent / 4) ? "null" : col()});
        record += "}";
    }
    const unsigned keys = below(shape_.keys + 1);
    if (keys || chance(20)) {
        record += R"(,"foreignkeys":{)";
        for (unsigned k = 0; k < keys; k++) {
            // Ids are the schema's own, except now and then.
            const bool own = chance(95);
            record += joined({k ? ",\"" : "\"", own ? "k" : "same", std::to_string(own ? keys_made_++ : k),
                              "\":", chance(shape_.odd_percent / 4) ? "7" : key()});
        }
        record += "}";
    }
    return record + "}";
}

std::string fk_random::document(const fk_random_shape &shape)
{
    shape_ = shape;
    tbl_count_ = 1 + below(shape.tbls);
    std::string text = R"({"compat_level":1,"tbls":{)";
    for (unsigned n = 0; n < tbl_count_; n++)
        text +=
            joined({n ? ",\"" : "\"", chance(shape_.odd_percent / 4) ? "T" : "t", std::to_string(n), "\":", tbl(n)});
    return text + "}}";
}
