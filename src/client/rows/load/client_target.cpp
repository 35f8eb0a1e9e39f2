// Values are converted and bound one after the other; SQLite judges the row as a whole.
//
// The schema's check of each value, made by triggers or by constraints, is left out where conversion alone decides:
// every converted value passes it. Where the database computes a value (a default, the number of a row), or has other
// triggers or constraints, they are asked.
#include "rows/load/client_target.hpp"

#include <algorithm>

#define KT_HERE "src/client/rows/load/client_target"

static std::string my_insert_text(const client_row_tbl &tbl, const std::vector<size_t> &cols)
{
    if (cols.empty())
        return "INSERT INTO " + client_quoted(tbl.name) + " DEFAULT VALUES";
    std::string names;
    std::string marks;
    for (const size_t col : cols) {
        names += (names.empty() ? "" : ",") + client_quoted(tbl.cols[col].name);
        marks += marks.empty() ? "?" : ",?";
    }
    return "INSERT INTO " + client_quoted(tbl.name) + " (" + names + ") VALUES (" + marks + ")";
}

// Why a column may not be left out of a row, if so.
static client_reject my_judge_absence(const client_row_col &col) noexcept
{
    if (col.has_default || col.rowid || col.type.base == client_base::rowversion)
        return client_reject::none;
    if (col.has_server_default || col.identity)
        return client_reject::server_value;
    return col.type.nullable ? client_reject::none : client_reject::no_value;
}

static void my_fill_layout(client_target &target, client_layout &layout)
{
    for (size_t n = 0; n < target.tbl.cols.size(); n++) {
        const client_row_col &col = target.tbl.cols[n];
        if (!col.stored)
            continue;
        const auto field = std::find(layout.cols.begin(), layout.cols.end(), n);
        const bool given = field != layout.cols.end();
        const bool made = !given && !col.has_default && col.type.base == client_base::rowversion;
        if (given || made) {
            layout.params.push_back(n);
            layout.places.push_back(given ? static_cast<size_t>(field - layout.cols.begin()) : client_no_field);
        } else if (layout.absence == client_reject::none) {
            layout.absence = my_judge_absence(col);
            layout.blame = n;
        }
        target.with_triggers |= !given && col.has_default; // a value that was not converted
        target.with_constraints |= !given && (col.has_default || col.rowid);
    }
}

void client_target__lay_out(KT_context *ctx, client_connection &database, client_target &target,
                            const std::vector<size_t> &cols, client_layout **layout)
{
    const auto [place, is_new] = target.layouts.try_emplace(cols);
    *layout = &place->second;
    if (!is_new)
        return;
    place->second.cols = cols;
    my_fill_layout(target, place->second);
    place->second.rooms.resize(place->second.params.size());
    KT_TRY(client_connection__prepare(ctx, database, my_insert_text(target.tbl, place->second.params),
                                      place->second.insert));
}

// The bytes stay where they are until the row is put in.
static int my_bind(const client_connection &database, sqlite3_stmt *statement, int index,
                   const client_value &value) noexcept
{
    const auto size = static_cast<int>(value.bytes.size());
    const char *bytes = value.bytes.data() ? value.bytes.data() : "";
    switch (value.storage) {
    case client_storage::integer:
        return database.functions->bind_int64(statement, index, value.integer);
    case client_storage::real:
        return database.functions->bind_double(statement, index, value.real);
    case client_storage::text:
        return database.functions->bind_text_in_place(statement, index, bytes, size);
    case client_storage::blob:
        return database.functions->bind_blob_in_place(statement, index, bytes, size);
    case client_storage::null:
        break;
    }
    return database.functions->bind_null(statement, index);
}

// A rowversion that the row comes without.
static void my_bind_version(KT_context *ctx, client_connection &database, client_target &target, size_t col,
                            sqlite3_stmt *statement, int index, client_verdict &verdict)
{
    if (!target.has_version)
        KT_TRY(client_versions__follow(ctx, database, target.tbl.name, target.tbl.cols[col].name, *target.versions));
    target.has_version = true;
    verdict.version = std::max(target.versions->last, verdict.version) + 1;
    const client_version_bytes bytes = client_bytes_of_version(verdict.version);
    const auto size = static_cast<int>(bytes.size());
    KT_TRY(
        client_connection__check(ctx, database, database.functions->bind_blob(statement, index, bytes.data(), size)));
}

// The types and rules of the columns are constraints of the table too, each named by what a trigger would say.
static client_reject my_constraint(int code, const std::string &message) noexcept
{
    switch (code) {
    case SQLITE_CONSTRAINT_PRIMARYKEY:
    case SQLITE_CONSTRAINT_UNIQUE:
    case SQLITE_CONSTRAINT_ROWID:
        return client_reject::duplicate_key;
    case SQLITE_CONSTRAINT_NOTNULL:
        return client_reject::null_not_allowed;
    case SQLITE_CONSTRAINT_CHECK:
        return message.find("] constraint violation: ") == std::string::npos ? client_reject::check_violated
                                                                             : client_reject::not_accepted;
    default:
        return client_reject::not_accepted;
    }
}

static void my_insert(KT_context *ctx, client_connection &database, sqlite3_stmt *statement, client_verdict &verdict)
{
    const KT_sqlite_functions *functions = database.functions;
    const int code = functions->step(statement);
    if (code == SQLITE_DONE) {
        verdict.rowid = functions->last_insert_rowid(database.connection);
        functions->reset(statement);
        return;
    }
    const int primary = code & 0xFF;
    verdict.message = functions->message(database.connection);
    const int extended = functions->extended_errcode(database.connection);
    functions->reset(statement);
    if (primary == SQLITE_TOOBIG)
        verdict.reject = client_reject::too_long;
    else if (primary == SQLITE_CONSTRAINT || primary == SQLITE_MISMATCH)
        verdict.reject = my_constraint(extended, verdict.message);
    else
        KT_FAIL(KT_ERR_SQLITE(code), "%s", verdict.message.c_str());
}

// Converts and binds the row's fields; the verdict names the first that does not go.
static void my_bind_all(KT_context *ctx, client_connection &database, client_converter &converter,
                        client_target &target, client_layout &layout, const client_row &row, client_verdict &verdict)
{
    sqlite3_stmt *statement = layout.insert;
    for (size_t n = 0; n < layout.params.size(); n++) {
        const size_t col = layout.params[n];
        const auto index = static_cast<int>(n + 1);
        const size_t field = layout.places[n];
        if (field == client_no_field) {
            KT_TRY(my_bind_version(ctx, database, target, col, statement, index, verdict));
            continue;
        }
        client_value value;
        converter.room = &layout.rooms[n];
        verdict.reject = client_convert(converter, target.tbl.cols[col].type, row.fields[field], value);
        if (verdict.reject == client_reject::none) {
            const int code = my_bind(database, statement, index, value);
            if (code == SQLITE_TOOBIG)
                verdict.reject = client_reject::too_long;
            else
                KT_TRY(client_connection__check(ctx, database, code));
        }
        if (verdict.reject != client_reject::none) {
            verdict.col = col;
            verdict.field = field;
            return;
        }
        if (target.tbl.cols[col].type.base == client_base::rowversion)
            verdict.version = std::max(verdict.version, client_number_of_version(value.bytes));
        if (value.shortened)
            verdict.shortened.push_back(col);
    }
}

// The layout for a row that gives fewer fields than its kind.
static void my_narrow(KT_context *ctx, client_connection &database, client_target &target, const client_row &row,
                      client_layout **layout)
{
    std::vector<size_t> cols = (*layout)->cols;
    for (size_t n = 0; n < cols.size(); n++) {
        if (row.fields[n].form == client_form::absent)
            cols[n] = client_no_col;
    }
    KT_TRY(client_target__lay_out(ctx, database, target, cols, layout));
}

void client_target__put(KT_context *ctx, client_connection &database, client_converter &converter,
                        client_target &target, client_layout &whole, const client_row &row, client_verdict &verdict)
{
    client_layout *layout = &whole;
    if (row.has_absent)
        KT_TRY(my_narrow(ctx, database, target, row, &layout));
    if (layout->absence != client_reject::none) {
        verdict.reject = layout->absence;
        verdict.col = layout->blame;
        return;
    }
    KT_TRY(client_connection__run_triggers(ctx, database, target.with_triggers));
    KT_TRY(client_connection__ask_constraints(ctx, database, target.with_triggers || target.with_constraints));
    converter.with_rules = target.with_rules;
    my_bind_all(ctx, database, converter, target, *layout, row, verdict);
    converter.room = &converter.scratch;
    if (kt_failed_at(ctx, KT_HERE, __LINE__))
        return;
    if (verdict.reject != client_reject::none)
        return;
    KT_TRY(my_insert(ctx, database, layout->insert, verdict));
    if (verdict.reject == client_reject::none)
        client_versions__note(*target.versions, verdict.version);
}
