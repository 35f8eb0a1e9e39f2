// The schema handle: how a schema is made, travels, and is freed.
//
// A handle always has a document and a string pool; host internals come with the first write that needs them.
// A handle is complete when it is given out: what is half made is freed on the way back.

#include "document/tov_parse_defin_private.hpp"

// Definition texts are short, and many schemas are never asked for one.
static constexpr uint32_t my_strpool_size_hint = 500;

template <class T>
static void my_free_in_level(KT_context *ctx, void (*free_object)(KT_context *, T *) noexcept, T *object) noexcept
{
    KT_context__push_level(ctx);
    free_object(ctx, object);
    KT_context__pop_level(ctx);
}

void tov_schema__nullfree(KT_context *ctx, tov_schema **schema) noexcept
{
    if (!schema || !*schema)
        return;
    tov_schema *freed = std::exchange(*schema, nullptr);
    my_free_in_level(ctx, KT_strpool__free, freed->strpool);
    my_free_in_level(ctx, KT_vhash__free, freed->document);
    my_free_in_level(ctx, KT_vhash__free, freed->host_internals);
    my_free_in_level(ctx, _tov_fk_index__free, freed->fk_index);
    my_free_in_level(ctx, _tov_fk_order__free, freed->fk_order);
    my_free_in_level<void>(ctx, _kt_free, freed);
}

static void my_free_schema(KT_context *ctx, tov_schema *schema) noexcept
{
    tov_schema__nullfree(ctx, &schema);
}

using my_owned_schema = kt_owned<tov_schema, my_free_schema>;

static void my_require_root(KT_context *ctx, const KT_vhash *tree, const char *argument) noexcept
{
    KT_bool is_root = 0;
    KT_TRY(KT_vhash__is_root(ctx, tree, &is_root));
    if (!is_root)
        KT_FAIL(KT_ERR_BORROWED,
                "the map given as %s belongs to another map; give a copy of it (KT_vhash__alloc__copy)", argument);
}

// A schema frees its trees, so each has to be one that is freed by itself, and only once.
static void my_check_trees(KT_context *ctx, const KT_vhash *document, const KT_vhash *host_internals) noexcept
{
    if (!document)
        KT_FAIL(KT_ERR_NULL_ARGUMENT, "document is null");
    if (document == host_internals)
        KT_FAIL(KT_ERR_BORROWED, "one map is given as document and as host_internals");
    KT_TRY(my_require_root(ctx, document, "document"));
    if (host_internals)
        KT_TRY(my_require_root(ctx, host_internals, "host_internals"));
}

void tov_schema__alloc__vhash(KT_context *ctx, KT_vhash **document, KT_vhash **host_internals,
                              tov_schema **schema) noexcept
{
    KT_TRY(my_check_trees(ctx, *document, host_internals ? *host_internals : nullptr));
    void *block = nullptr;
    KT_TRY(_kt_malloc(ctx, sizeof(tov_schema), &block));
    my_owned_schema made{ctx};
    *made.out() = new (block) tov_schema{};
    KT_TRY(KT_strpool__alloc(ctx, &made.get()->strpool, my_strpool_size_hint));
    // Nothing fails from here on, so a caller loses its trees only to a schema that it gets.
    made.get()->document = std::exchange(*document, nullptr);
    if (host_internals)
        made.get()->host_internals = std::exchange(*host_internals, nullptr);
    made.move_to(schema);
}

void tov_schema__from_json(KT_context *ctx, const char *json, tov_schema **schema) noexcept
{
    kt_owned_vhash document{ctx};
    KT_TRY(KT_vhash__alloc__from_json__sz(ctx, document.out(), json));
    KT_TRY(tov_schema__alloc__vhash(ctx, document.out(), nullptr, schema));
}

void tov_schema__new(KT_context *ctx, uint32_t compat_level, tov_schema **schema) noexcept
{
    // The way through JSON makes a new schema exactly what a parsed one is.
    kt_owned_vhash document{ctx};
    kt_owned_string json{ctx};
    KT_TRY(KT_vhash__alloc(ctx, document.out()));
    KT_TRY(KT_vhash__add__int64(ctx, document, "compat_level", compat_level));
    KT_TRY(KT_string__alloc(ctx, json.out()));
    KT_TRY(KT_vhash__to_json(ctx, document, json));
    KT_TRY(tov_schema__from_json(ctx, KT_string__sz(json), schema));
}

void tov_schema__to_json(KT_context *ctx, tov_schema *schema, KT_string **json) noexcept
{
    kt_owned_string text{ctx};
    KT_TRY(KT_string__alloc(ctx, text.out()));
    KT_TRY(KT_vhash__to_json(ctx, schema->document, text));
    text.move_to(json);
}

void tov_schema__copy_into_vhash(KT_context *ctx, tov_schema *schema, KT_vhash *destination,
                                 KT_bool include_host_internals) noexcept
{
    KT_TRY(KT_vhash__remove_if_present(ctx, destination, "schema", nullptr));
    KT_TRY(KT_vhash__addcopy__vhash(ctx, destination, "schema", schema->document));
    if (!include_host_internals)
        return;
    KT_TRY(KT_vhash__remove_if_present(ctx, destination, "host_internals", nullptr));
    if (schema->host_internals)
        KT_TRY(KT_vhash__addcopy__vhash(ctx, destination, "host_internals", schema->host_internals));
}
