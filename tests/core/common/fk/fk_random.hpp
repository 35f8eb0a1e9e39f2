// Random schema documents for comparing the foreign-key analysis with its plain form.
#pragma once

#include <cstdint>
#include <initializer_list>
#include <random>
#include <string>
#include <string_view>

// The pieces as one text.
inline std::string joined(std::initializer_list<std::string_view> pieces)
{
    std::string text;
    for (const std::string_view piece : pieces)
        text += piece;
    return text;
}

struct fk_random_shape {
    unsigned tbls = 5;        // at most
    unsigned cols = 3;        // of a table, at most
    unsigned fk_percent = 40; // of columns that have a column-level key
    unsigned keys = 2;        // table-level keys of a table, at most
    unsigned odd_percent = 0; // of places that a document from outside gets wrong
    bool actions = true;      // whether every table-level key has its actions
};

class fk_random {
  public:
    explicit fk_random(uint32_t seed) : engine_(seed)
    {
    }
    uint32_t below(uint32_t count)
    {
        return static_cast<uint32_t>(engine_() % count);
    }
    bool chance(unsigned percent)
    {
        return below(100) < percent;
    }
    // A document of tables t0, t1, ... with columns c0, c1, ...
    std::string document(const fk_random_shape &shape);
    // An id of a table or column that is there, mostly.
    std::string tbl_id();
    std::string col_id();
    std::string action();

  private:
    std::string tbl(unsigned n);
    std::string col();
    std::string col_fk();
    std::string key();
    std::string text_or_odd(const std::string &text);

    std::mt19937 engine_;
    fk_random_shape shape_;
    unsigned tbl_count_ = 1;
    unsigned keys_made_ = 0;
};
