// What the recorded schema makes, compared with what the database has.
#include "create/client_record.hpp"
#include "doctor/client_examination.hpp"
#include "kt_folded.hpp"

#include <map>

#define KT_HERE "src/client/doctor/client_examine_objects"

namespace {

// A row of the schema table.
struct found_object {
    std::string type;
    std::string name;
    std::string sql;
};

using found_objects = std::map<std::string, found_object>; // by name in lower case

} // namespace

void client_examination__record(KT_context *ctx, client_examination &examination)
{
    KT_TRY(client_read_record(ctx, examination.database, &examination.recorded.schema, &examination.options));
    if (examination.options.collations == TOV_CLIENT_COLLATIONS_SERVER)
        KT_TRY(client_examination__add(ctx, examination, "collations",
                                       "strings compare as the server says, by collations of an extension"));
}

void client_examination__plan(KT_context *ctx, client_examination &examination)
{
    if (examination.recorded.schema)
        KT_TRY(client_list_objects(ctx, examination.recorded.schema, &examination.options, examination.wanted));
}

static void my_read_objects(KT_context *ctx, client_examination &examination, found_objects &found)
{
    client_result rows;
    KT_TRY(client_examination__ask(ctx, examination,
                                   "SELECT type, name, sql FROM sqlite_schema WHERE sql IS NOT NULL AND "
                                   "name NOT LIKE 'sqlite\\_%' ESCAPE '\\' ORDER BY rowid",
                                   "", rows));
    for (const std::vector<std::string> &row : rows)
        found[kt_folded(row[1])] = {row[0], row[1], row[2]};
}

static std::string my_shown(std::string_view type, const std::string &name)
{
    return std::string(type) + " " + client_quoted(name);
}

static void my_add_changed(KT_context *ctx, client_examination &examination, const client_object &object,
                           const found_object &found)
{
    const std::string message = my_shown(found.type, found.name) + " is not as the schema has it";
    if (object.kind == client_kind::tbl || found.type == "table")
        KT_TRY(client_examination__add(ctx, examination, "table-changed", message));
    else
        KT_TRY(client_examination__add(ctx, examination, "object-changed", message,
                                       "DROP " + found.type + " " + client_quoted(found.name) + ";\n" + object.sql));
}

static void my_add_missing(KT_context *ctx, client_examination &examination, const client_object &object)
{
    if (object.kind == client_kind::index)
        examination.tbls_without_their_indexes.insert(kt_folded(object.tbl));
    const std::string word = kt_folded(client_object_word(object.kind));
    KT_TRY(client_examination__add(ctx, examination, "object-missing", my_shown(word, object.name) + " is missing",
                                   object.sql));
}

// The counter of versions and the record begin with a row, so SQLite keeps another statement of them.
static bool my_is_as_wanted(const client_object &object, const found_object &found)
{
    if (!kt_equal_folded(found.type, client_object_word(object.kind)))
        return false;
    return object.kind == client_kind::counter || object.kind == client_kind::record ||
           client_statement_meaning(object.sql) == client_statement_meaning(found.sql);
}

static void my_compare(KT_context *ctx, client_examination &examination, const found_objects &found, bool &is_same)
{
    for (const client_object &object : examination.wanted.objects) {
        const auto place = found.find(kt_folded(object.name));
        if (place != found.end() && my_is_as_wanted(object, place->second))
            continue;
        is_same = false;
        if (place == found.end())
            KT_TRY(my_add_missing(ctx, examination, object));
        else
            KT_TRY(my_add_changed(ctx, examination, object, place->second));
    }
}

// Tables that loading makes are ours, and have the prefix that no table of the schema has.
static bool my_is_ours(const client_examination &examination, const found_object &object)
{
    const std::string &prefix = examination.wanted.plan.trigger_prefix;
    return examination.wanted.find(object.name) || object.name == client_record_name(examination.wanted.plan) ||
           object.name == prefix + "load_progress" || object.name == prefix + "load_runs";
}

void client_examination__objects(KT_context *ctx, client_examination &examination)
{
    found_objects found;
    bool is_same = true;
    if (examination.wanted.objects.empty())
        return;
    KT_TRY(my_read_objects(ctx, examination, found));
    KT_TRY(my_compare(ctx, examination, found, is_same));
    if (is_same)
        KT_TRY(client_examination__pass(ctx, examination, "object-missing",
                                        "tables, indexes and triggers are those of the schema"));
    for (const auto &[key, object] : found) {
        if (!my_is_ours(examination, object))
            KT_TRY(client_examination__add(ctx, examination, "object-added",
                                           my_shown(object.type, object.name) + " is not of the schema"));
    }
}
