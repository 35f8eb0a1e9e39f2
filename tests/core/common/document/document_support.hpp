// What the tests of the document share: schemas loaded from two JSON texts, and tables of failing calls.
#pragma once

#include "document/tov_parse_defin_private.hpp"

#include "failing_alloc.hpp"
#include "schema_test.hpp"

#include <algorithm>

inline constexpr char untouched[] = "untouched";

// Outputs of one call, preset to what no operation writes.
struct outputs {
    const char *text = untouched;
    const char *text2 = untouched;
    const char *text3 = untouched;
    uint32_t count = 77;
    KT_bool flag = 77;
    KT_bool flag2 = 77;
    int32_t int32 = 77;
    int64_t int64 = 77;
    KT_vhash *map = nullptr;
    KT_string *string = nullptr;

    bool operator==(const outputs &) const = default;
};

// A call as a function without captures, which sees context c, schema s, outputs o.
#define CALL(...) [](KT_context *c, [[maybe_unused]] tov_schema *s, [[maybe_unused]] outputs &o) { __VA_ARGS__; }
using call = void (*)(KT_context *ctx, tov_schema *s, outputs &o);

struct failure_case {
    const char *name;
    const char *document; // JSON
    const char *host;     // JSON, or null for no host internals
    uint64_t code;
    const char *description; // null where the runtime words it
    call run;
};

struct sweep_case {
    const char *name;
    const char *document; // JSON
    const char *host;     // JSON, or null for no host internals
    call run;
};

// A table T with a column C that has no type.
inline constexpr char one_col[] = R"({"tbls":{"t":{"name":"T","txid":1,"cols":{"c":{"name":"C"}}}}})";
inline constexpr char no_tbls[] = R"({"tbls":{}})";

class DocumentTest : public SchemaTest {
  protected:
    void load_trees(const char *document, const char *host)
    {
        KT_vhash *document_tree = nullptr;
        KT_vhash *host_tree = nullptr;
        tov_schema__nullfree(ctx, &schema);
        KT_vhash__alloc__from_json__sz(ctx, &document_tree, document);
        if (host)
            KT_vhash__alloc__from_json__sz(ctx, &host_tree, host);
        tov_schema__alloc__vhash(ctx, &document_tree, &host_tree, &schema);
        ASSERT_OK(ctx);
    }
    std::string host_internals()
    {
        return json_of(ctx, schema->host_internals);
    }
    // The column t/c as JSON.
    std::string col_record()
    {
        KT_vhash *col = nullptr;
        _tov_schema__get_col(ctx, schema, "t", "c", &col);
        return json_of(ctx, col);
    }

    // Runs each call on a fresh schema: it fails as the case says, passes through the module, and writes no output.
    template <size_t Count> void expect_failures(const failure_case (&cases)[Count])
    {
        for (const failure_case &c : cases) {
            SCOPED_TRACE(c.name);
            load_trees(c.document, c.host);
            outputs o;
            c.run(ctx, schema, o);
            EXPECT_FAILED(ctx, c.code);
            if (c.description) {
                EXPECT_STREQ(KT_context__err_description(ctx), c.description);
            }
            expect_module_frame();
            EXPECT_TRUE(o == outputs{});
            reset();
        }
    }
    // The frame added last is the module's.
    void expect_module_frame()
    {
        const uint32_t count = KT_context__count_err_stackframes(ctx);
        ASSERT_GT(count, 0u);
        const char *file = nullptr;
        int32_t line = 0;
        KT_context__get_nth_err_stackframe(ctx, count - 1, &file, &line);
        EXPECT_STREQ(file, "src/core/common/tov_parse_defin");
        EXPECT_GT(line, 0);
    }
    // Runs each call on fresh schemas, with one allocation failing that it makes: it says so, writes no output, and
    // leaves a schema that can still be written and freed without a leak. A tree takes its memory in chunks, so the
    // trees are filled to have the failure at each step of the call in turn.
    template <size_t Count> void expect_survival(const sweep_case (&cases)[Count])
    {
        static constexpr uint32_t most_left = 64;
        for (const sweep_case &c : cases) {
            SCOPED_TRACE(c.name);
            load_fillable(c);
            const uint32_t room = measure_room(schema->document);
            const uint32_t host_room = measure_room(schema->host_internals);
            int failures = 0;
            for (uint32_t left = 0; left <= most_left; left++) {
                bool fired = true;
                for (int turn = 1; fired; turn++) {
                    load_fillable(c);
                    fill(schema->document, room - std::min(room, left));
                    fill(schema->host_internals, host_room - std::min(host_room, left));
                    fired = run_with_failure(c.run, turn, &failures);
                }
            }
            EXPECT_GT(failures, 0) << "nothing was made to fail";
        }
    }

  private:
    static constexpr uint32_t filler_count = 600;

    // The same JSON object with a first member of values that are there to be replaced by larger ones.
    static std::string fillable(const char *json)
    {
        std::string fillers;
        for (uint32_t n = 0; n < filler_count; n++)
            fillers += (n ? ",\"" : "\"") + std::to_string(n) + "\":null";
        return R"({"fillers":{)" + fillers + (json[1] == '}' ? "}" : "},") + (json + 1);
    }
    void load_fillable(const sweep_case &c)
    {
        load_trees(fillable(c.document).c_str(), c.host ? fillable(c.host).c_str() : nullptr);
    }
    // Takes so many of the smallest blocks that a tree gives; tells the number of those that there was room for.
    uint32_t fill(KT_vhash *tree, uint32_t count)
    {
        KT_vhash *fillers = nullptr;
        if (tree)
            KT_vhash__get__vhash(ctx, tree, "fillers", &fillers);
        for (uint32_t n = 0; fillers && n < count; n++) {
            KT_vhash__update__string__sz(ctx, fillers, std::to_string(n).c_str(), "14 characters.");
            if (KT_context__has_err(ctx)) {
                reset();
                return n;
            }
        }
        return count;
    }
    // The number of smallest blocks that a tree has room for without taking memory. It is filled thereby.
    uint32_t measure_room(KT_vhash *tree)
    {
        kt_failing_alloc fault{kt_failing_alloc::mode::from_there_on};
        fault.next();
        const uint32_t room = fill(tree, filler_count);
        EXPECT_TRUE(!tree || fault.fired()) << "more fillers are needed";
        return room;
    }
    // Fails the call's allocation of this number, counted from 1. False when it makes fewer.
    bool run_with_failure(call run, int turn, int *failures)
    {
        outputs o;
        kt_failing_alloc fault;
        for (int n = 0; n < turn; n++)
            fault.next();
        run(ctx, schema, o);
        const bool fired = fault.fired();
        if (KT_context__has_err(ctx)) {
            (*failures)++;
            EXPECT_TRUE(fired);
            EXPECT_FAILED(ctx, KT_ERR_OUT_OF_MEMORY);
            expect_module_frame();
            EXPECT_TRUE(o == outputs{});
            reset();
            EXPECT_NE(everything(), "");
        }
        KT_string__free(ctx, o.string);
        tov_schema__nullfree(ctx, &schema);
        EXPECT_EQ(fault.leaked(), 0u);
        EXPECT_OK(ctx);
        return fired;
    }
};
