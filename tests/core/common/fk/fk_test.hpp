// Shared by the tests of the foreign-key analysis: short ways to build a schema and to read results.
#pragma once

#include "failing_alloc.hpp"
#include "fk_random.hpp"
#include "schema_test.hpp"

#include <functional>
#include <initializer_list>
#include <sstream>
#include <utility>

inline void free_result(KT_context *ctx, KT_varray *list)
{
    KT_varray__free(ctx, list);
}
inline void free_result(KT_context *ctx, KT_vhash *map)
{
    KT_vhash__free(ctx, map);
}
inline void free_result(KT_context *ctx, KT_nullhash *set)
{
    KT_nullhash__free(ctx, set);
}
inline void free_result(KT_context *ctx, KT_string *string)
{
    KT_string__free(ctx, string);
}

// Whether an operation came out as its plain form did: the same error or none, and then the same result.
template <class Result, class Text>
void expect_same(KT_context *ctx, const std::function<void(Result **)> &operation,
                 const std::function<void(Result **)> &plain, Text text_of)
{
    Result *expected = nullptr;
    Result *result = nullptr;
    plain(&expected);
    const uint64_t code = KT_context__err_code(ctx);
    const std::string description = KT_context__err_description(ctx);
    KT_context__err_reset(ctx);
    operation(&result);
    EXPECT_EQ(KT_context__err_code(ctx), code);
    EXPECT_EQ(KT_context__err_description(ctx), description);
    KT_context__err_reset(ctx);
    EXPECT_EQ(text_of(ctx, result), text_of(ctx, expected));
}

// Runs an operation with the 1st, 2nd, 3rd ... allocation failing, until none is left to fail; the last run's result
// stays. The runtime can do without some allocations, so a run may succeed although one failed.
template <class T, class Run> void sweep_allocations(KT_context *ctx, T **result, Run run)
{
    // What the schema keeps of a first look at it is the schema's, and no leak of the runs that follow.
    run();
    free_result(ctx, *result);
    *result = nullptr;
    int failures = 0;
    for (kt_failing_alloc fault; fault.next(); KT_context__err_reset(ctx)) {
        run();
        if (!fault.fired())
            break;
        if (KT_context__has_err(ctx)) {
            failures++;
            EXPECT_FAILED(ctx, KT_ERR_OUT_OF_MEMORY);
            EXPECT_EQ(*result, nullptr);
        }
        free_result(ctx, *result);
        *result = nullptr;
        EXPECT_EQ(fault.leaked(), 0u);
    }
    EXPECT_OK(ctx);
    EXPECT_GT(failures, 0);
}

class FkTest : public SchemaTest {
  protected:
    void tbl(const char *tbl_id)
    {
        tov_schema__add_tbl(ctx, schema, tbl_id, tbl_id, 1);
        ASSERT_OK(ctx);
    }
    // A column named after its id: "the id" for id.
    void col(const char *tbl_id, const char *col_id, const char *type = "sint32")
    {
        tov_schema__add_col(ctx, schema, tbl_id, col_id, joined({"the ", col_id}).c_str(), 1, 0, 0);
        tov_schema__set_col_type_simple(ctx, schema, tbl_id, col_id, type);
        ASSERT_OK(ctx);
    }
    struct with {
        const char *on_delete = nullptr;
        const char *on_update = nullptr;
        const char *name = nullptr;
    };
    // A column-level key.
    void refer(const char *tbl_id, const char *col_id, const char *ref_tbl_id, const char *ref_col_id)
    {
        refer(tbl_id, col_id, ref_tbl_id, ref_col_id, with{});
    }
    void refer(const char *tbl_id, const char *col_id, const char *ref_tbl_id, const char *ref_col_id, const with &w)
    {
        tov_schema__set_colcon_fk(ctx, schema, tbl_id, col_id, 1, "fk", w.name, ref_tbl_id, ref_col_id, 0, w.on_delete,
                                  w.on_update, 0);
        ASSERT_OK(ctx);
    }
    using pairs = std::initializer_list<std::pair<const char *, const char *>>;
    // A table-level key.
    void key(const char *fk_id, const char *tbl_id, const char *ref_tbl_id, pairs cols)
    {
        key(fk_id, tbl_id, ref_tbl_id, cols, with{"NO ACTION", "NO ACTION", fk_id});
    }
    void key(const char *fk_id, const char *tbl_id, const char *ref_tbl_id, pairs cols, const with &w)
    {
        tov_schema__create_foreignkey(ctx, schema, fk_id, w.name, tbl_id, ref_tbl_id, 0, w.on_delete, w.on_update, 0);
        for (const auto &[from, to] : cols)
            tov_schema__add_to_foreignkey(ctx, schema, tbl_id, fk_id, from, to);
        ASSERT_OK(ctx);
    }
    // Tables and who they refer to, e.g. "d>c c>a,b a b": by column-level keys; "d=c" by table-level ones.
    void tbls(const std::string &text)
    {
        std::istringstream words{text};
        for (std::string word; words >> word;) {
            const size_t end = word.find_first_of(">=");
            const std::string id = word.substr(0, end);
            tbl(id.c_str());
            for (size_t at = end; at != std::string::npos;) {
                const size_t next = word.find_first_of(">=,", at + 1);
                add_reference(id, word.substr(at + 1, next - at - 1), word[end] == '>');
                at = next;
            }
        }
    }

    // The last call failed like this, and its last frame is the module's; clears the error.
    void expect_failure(uint64_t code, const char *description)
    {
        EXPECT_ERROR(ctx, code, description);
        const char *file = "";
        int32_t line = 0;
        const uint32_t count = KT_context__count_err_stackframes(ctx);
        if (count > 0)
            KT_context__get_nth_err_stackframe(ctx, count - 1, &file, &line);
        EXPECT_STREQ(file, "src/core/common/tov_parse_defin");
        EXPECT_GT(line, 0);
        reset();
    }

    // Sweeps a question that may leave an index in the handle: each run asks a new schema, and the index must be gone
    // with it.
    template <class T, class Run> void sweep_question(T **result, Run run)
    {
        const std::string json = document();
        sweep_allocations(ctx, result, [&] {
            tov_schema *asked = nullptr;
            tov_schema__from_json(ctx, json.c_str(), &asked);
            if (asked)
                run(asked);
            tov_schema__nullfree(ctx, &asked);
        });
    }

  private:
    void add_reference(const std::string &id, const std::string &ref_id, bool col_level)
    {
        const std::string n = std::to_string(references++);
        if (col_level) {
            const std::string col_id = joined({"c", n});
            col(id.c_str(), col_id.c_str());
            refer(id.c_str(), col_id.c_str(), ref_id.c_str(), "id");
        } else {
            key(joined({"k", n}).c_str(), id.c_str(), ref_id.c_str(), {});
        }
    }
    int references = 0;
};

// The texts of a list, one blank between; "(null)" for none. Takes the list over.
inline std::string take(KT_context *ctx, KT_varray *list)
{
    if (!list)
        return "(null)";
    std::string result;
    uint32_t count = 0;
    KT_varray__count(ctx, list, &count);
    for (uint32_t n = 0; n < count; n++) {
        const char *text = "?";
        KT_varray__get__sz(ctx, list, n, &text);
        result += joined({n ? " " : "", text});
    }
    KT_varray__free(ctx, list);
    return result;
}

// The texts of a set likewise.
inline std::string take(KT_context *ctx, KT_nullhash *set)
{
    if (!set)
        return "(null)";
    std::string result;
    uint32_t count = 0;
    KT_nullhash__count(ctx, set, &count);
    for (uint32_t n = 0; n < count; n++) {
        const char *text = "?";
        KT_nullhash__get_nth(ctx, set, n, &text);
        result += joined({n ? " " : "", text});
    }
    KT_nullhash__free(ctx, set);
    return result;
}

// A map as JSON; "null" for none. Takes the map over.
inline std::string take(KT_context *ctx, KT_vhash *map)
{
    std::string result = json_of(ctx, map);
    KT_vhash__free(ctx, map);
    return result;
}

// A list of maps as JSON objects, one a line; "(null)" for none. Takes the list over.
inline std::string take_records(KT_context *ctx, KT_varray *records)
{
    if (!records)
        return "(null)";
    std::string result;
    uint32_t count = 0;
    KT_varray__count(ctx, records, &count);
    for (uint32_t n = 0; n < count; n++) {
        KT_vhash *record = nullptr;
        KT_varray__get__vhash(ctx, records, n, &record);
        result += joined({n ? "\n" : "", json_of(ctx, record)});
    }
    KT_varray__free(ctx, records);
    return result;
}
