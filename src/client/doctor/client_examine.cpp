// The examination as a whole: what is looked at, and what becomes of what cannot be read.
#include "doctor/client_examination.hpp"

#include <cstdio>
#include <iterator>

#define KT_HERE "src/client/doctor/client_examine"

namespace {

struct look {
    void (*at)(KT_context *ctx, client_examination &examination);
    client_diagnosis_code when_it_fails;
    client_diagnosis_code when_not_found = when_it_fails;
};

} // namespace

static constexpr look looks[] = {
    {client_examination__library, "sqlite-version"},
    {client_examination__file, "integrity"},
    {client_examination__record, "record-unreadable", "record-missing"},
    {client_examination__plan, "record-unreadable"},
    {client_examination__objects, "unreadable"},
    {client_examination__dates, "unreadable"},
    {client_examination__references, "unreadable"},
    {client_examination__indexes, "unreadable"},
};

const tov_client_diagnosis_kind *tov_client__get_nth_diagnosis_kind(uint32_t n) noexcept
{
    return n < std::size(client_diagnosis_kinds) ? &client_diagnosis_kinds[n] : nullptr;
}

static void my_add(KT_context *ctx, client_examination &examination, const tov_client_diagnosis_kind &kind,
                   const char *severity, const std::string &message, KT_vhash **record)
{
    KT_TRY(KT_varray__appendnew__vhash(ctx, examination.diagnoses, record));
    KT_TRY(KT_vhash__add__string__sz(ctx, *record, "code", kind.code));
    KT_TRY(KT_vhash__add__string__sz(ctx, *record, "severity", severity));
    KT_TRY(KT_vhash__add__string__sz(ctx, *record, "message", message.c_str()));
}

void client_examination__add(KT_context *ctx, client_examination &examination, client_diagnosis_code code,
                             const std::string &message, const std::string &sql)
{
    KT_vhash *record = nullptr;
    KT_TRY(my_add(ctx, examination, *code.kind, code.kind->severity, message, &record));
    KT_TRY(KT_vhash__add__string__sz(ctx, record, "advice", code.kind->advice));
    if (!sql.empty())
        KT_TRY(KT_vhash__add__string__sz(ctx, record, "sql", sql.c_str()));
}

void client_examination__pass(KT_context *ctx, client_examination &examination, client_diagnosis_code code,
                              const std::string &message)
{
    KT_vhash *record = nullptr;
    KT_TRY(my_add(ctx, examination, *code.kind, "ok", message, &record));
}

void client_examination__ask(KT_context *ctx, client_examination &examination, const char *sql,
                             const std::string &argument, client_result &rows)
{
    client_connection &database = examination.database;
    kt_owned_statement statement{database.functions};
    bool has = false;
    KT_TRY(client_connection__prepare(ctx, database, sql, statement));
    if (database.functions->bind_parameter_count(statement) > 0)
        KT_TRY(client_connection__bind_text(ctx, database, statement, 1, argument));
    KT_TRY(client_connection__step(ctx, database, statement, has));
    while (has) {
        std::vector<std::string> &row = rows.emplace_back();
        for (int n = 0; n < database.functions->column_count(statement); n++)
            row.emplace_back(client_column_text(database, statement, n));
        KT_TRY(client_connection__step(ctx, database, statement, has));
    }
}

void client_examination__list_tbls(KT_context *ctx, client_examination &examination, std::vector<std::string> &names)
{
    client_result rows;
    KT_TRY(client_examination__ask(ctx, examination,
                                   "SELECT name FROM sqlite_schema WHERE type = 'table' AND rootpage > 0 AND "
                                   "name NOT LIKE 'sqlite\\_%' ESCAPE '\\' ORDER BY rowid",
                                   "", rows));
    for (const std::vector<std::string> &row : rows)
        names.push_back(row[0]);
}

// Whether an error says something about what is in the database, not about reaching it or about memory.
static bool my_is_about_content(uint64_t code) noexcept
{
    constexpr uint64_t first = KT_ERR_SQLITE(0);
    constexpr uint64_t last = KT_ERR_SQLITE(SQLITE_DONE);
    if (code < first || code > last)
        return code != KT_ERR_OUT_OF_MEMORY;
    return code == KT_ERR_SQLITE(SQLITE_ERROR) || code == KT_ERR_SQLITE(SQLITE_CORRUPT) ||
           code == KT_ERR_SQLITE(SQLITE_TOOBIG);
}

// What a look fails on is one more diagnosis, and the others are tried all the same.
static void my_look(KT_context *ctx, client_examination &examination, const look &look)
{
    char reason[400];
    KT_context__push_level(ctx);
    kt_contain(ctx, [&] { look.at(ctx, examination); });
    const uint64_t code = KT_context__err_code(ctx);
    static_cast<void>(std::snprintf(reason, sizeof reason, "%s", KT_context__err_description(ctx))); // may be cut
    KT_context__pop_level(ctx);
    if (!code)
        return;
    if (!my_is_about_content(code))
        KT_FAIL(code, "%s", reason);
    const client_diagnosis_code diagnosis = code == KT_ERR_NOT_FOUND ? look.when_not_found : look.when_it_fails;
    KT_TRY(client_examination__add(ctx, examination, diagnosis, reason));
}

void tov_client__examine_database(KT_context *ctx, const char *file_name, KT_varray **diagnoses) noexcept
{
    kt_contain(ctx, [&] {
        client_examination examination{ctx};
        kt_owned_varray list{ctx};
        KT_TRY(KT_varray__alloc(ctx, list.out()));
        examination.diagnoses = list;
        KT_TRY(client_connection__open(ctx, examination.database, file_name, true));
        KT_TRY(client_connection__distrust(ctx, examination.database));
        KT_TRY(client_connection__run(ctx, examination.database, "BEGIN")); // all of it as it is at one moment
        for (const look &look : looks)
            KT_TRY(my_look(ctx, examination, look));
        list.move_to(diagnoses);
    });
}
