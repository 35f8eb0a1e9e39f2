// A fixture with a context and an empty schema.
#pragma once

#include "kt_test.hpp"
#include "tov_parse_defin.h"

class SchemaTest : public ContextTest {
  protected:
    void SetUp() override
    {
        ContextTest::SetUp();
        tov_schema__new(ctx, 1, &schema);
        ASSERT_OK(ctx);
    }
    void TearDown() override
    {
        tov_schema__nullfree(ctx, &schema);
        ContextTest::TearDown();
    }
    // Replaces the schema by an empty one.
    void reset_schema()
    {
        tov_schema__nullfree(ctx, &schema);
        tov_schema__new(ctx, 1, &schema);
    }
    // Replaces the schema by one read from JSON.
    void load(const char *json)
    {
        tov_schema__nullfree(ctx, &schema);
        tov_schema__from_json(ctx, json, &schema);
        ASSERT_OK(ctx);
    }
    // The document as JSON.
    std::string document()
    {
        KT_string *json = nullptr;
        tov_schema__to_json(ctx, schema, &json);
        return take(ctx, json);
    }
    // The document and the host internals as JSON, e.g. {"schema":{...},"host_internals":{...}}.
    std::string everything()
    {
        KT_vhash *both = nullptr;
        KT_vhash__alloc(ctx, &both);
        tov_schema__copy_into_vhash(ctx, schema, both, 1);
        std::string json = json_of(ctx, both);
        KT_vhash__free(ctx, both);
        return json;
    }

    tov_schema *schema = nullptr;
};
