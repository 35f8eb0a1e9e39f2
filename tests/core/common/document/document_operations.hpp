// Every exported operation that takes a context, each with a call on a stage that is set up for all of them.
#pragma once

#include "kt_sqlite_dates.h"
#include "kt_strpool.h"
#include "tov_parse_defin.h"

#include <array>
#include <cstdint>
#include <functional>
#include <span>
#include <string>

// What the calls work on. A call that takes something over leaves null behind.
struct stage {
    tov_schema *schema;       // tables p and c, each with something of everything
    tov_schema *other;        // shares table p and one of its columns, and has no settings
    KT_vhash *map;            // a value of each kind, by the name of the kind
    KT_varray *list;          // a member of map: a text and a map
    KT_varray *loose_list;    // a list of its own, empty
    KT_vhash *trees[2];       // a document and host internals
    KT_vhash *lite;           // a lite schema of p
    KT_vhash *cols;           // what a select list of c is made of
    KT_nullhash *set;         // holds p
    KT_string *string;        // "text"
    KT_string *longer_string; // 5000 characters
    KT_strpool *pool;         // empty
    void *block;              // of a few bytes
};

// Makes a tree of these members, which are JSON without the braces around it; how is the maker's affair.
using tree_maker = std::function<KT_vhash *(const std::string &members)>;

// A tree read from JSON, which must be well-formed.
KT_vhash *tree_of(KT_context *ctx, const std::string &json);
stage make_stage(KT_context *ctx, const tree_maker &make_tree);
void free_stage(KT_context *ctx, stage s);
// All that a call may have changed.
std::string written(KT_context *ctx, const stage &s);

// Outputs of one call, preset to what no operation writes.
struct outcome {
    static constexpr char untouched[] = "untouched";

    std::array<const char *, 5> texts{untouched, untouched, untouched, untouched, untouched};
    uint32_t count = 77;
    KT_bool flag = 77;
    KT_bool flag2 = 77;
    int32_t int32 = 77;
    int64_t int64 = 77;
    uint64_t uint64 = 77;
    double real = 77;
    KT_vhash *child = nullptr;
    KT_varray *child_list = nullptr;
    const KT_variant *variant = nullptr;
    // Owned.
    void *block = nullptr;
    char *text = nullptr;
    KT_string *string = nullptr;
    KT_strpool *pool = nullptr;
    KT_vhash *map = nullptr;
    KT_nullhash *set = nullptr;
    std::array<KT_varray *, 4> lists{};
    tov_schema *schema = nullptr;

    bool operator==(const outcome &) const = default;
};

void free_outcome(KT_context *ctx, outcome &o);

// What a call needs and what it leaves behind when memory runs out.
enum class need {
    nothing, // takes no memory on this stage
    all,     // fails and leaves everything as it was
    part,    // fails, and may leave a part of the change
    record,  // the same, and a second call may find the record there that the first one added
    outputs, // fails, and may have written outputs before
};

struct operation {
    const char *name;
    need memory;
    void (*run)(KT_context *ctx, stage &s, outcome &o);
};

// In the order of cmake/exports.txt.
std::span<const operation> every_operation();

// An exported name without a row, and why.
struct exempted {
    const char *name;
    const char *reason;
};
std::span<const exempted> operations_without_a_row();
