// The rows of a database: how many there are of each table, and which of them the server would refuse.
#include "report/client_report.hpp"
#include "rows/load/client_connection.hpp"
#include "tov_check.h"

#include <map>
#include <tuple>

#define KT_HERE "src/client/report/client_report_rows"

namespace {

// Violations that say the same, however many rows there are.
struct violation_group {
    std::string severity;
    int64_t count = 0;
    std::vector<std::string> examples;
};

// By table, code, column and message.
using violation_groups = std::map<std::tuple<std::string, std::string, std::string, std::string>, violation_group>;

constexpr size_t most_examples = 3;

} // namespace

// The schema's names were not checked.
static std::string my_quoted(const std::string &name)
{
    std::string quoted = "\"";
    for (const char c : name)
        quoted += c == '"' ? "\"\"" : std::string(1, c);
    return quoted + "\"";
}

static void my_count_rows(KT_context *ctx, const char *file_name, const KT_vhash *data)
{
    client_connection database;
    KT_TRY(client_connection__open(ctx, database, file_name, true));
    for (KT_vhash *record : client_report_maps(ctx, data, "tables")) {
        const std::string name = client_report_text(ctx, record, "table");
        int64_t count = 0;
        KT_TRY(client_connection__ask(ctx, database, "SELECT count(*) FROM main." + my_quoted(name), count));
        KT_TRY(KT_vhash__add__int64(ctx, record, "rows", count));
    }
}

static std::string my_example(const tov_client_violation &violation)
{
    std::string text = violation.key ? violation.key : "";
    if (text.empty() && violation.has_rowid)
        text = "rowid " + std::to_string(violation.rowid);
    if (violation.value)
        text += (text.empty() ? "" : ": ") + std::string(violation.value);
    return text;
}

static void my_take(KT_context *ctx, void *data, const tov_client_violation *violation) noexcept
{
    kt_contain(ctx, [&] {
        const auto text = [](const char *string) { return std::string(string ? string : ""); };
        violation_group &group = (*static_cast<violation_groups *>(
            data))[{text(violation->tbl), violation->kind->code, text(violation->col), text(violation->message)}];
        group.severity = violation->kind->severity;
        group.count++;
        const std::string example = my_example(*violation);
        if (group.examples.size() < most_examples && !example.empty())
            group.examples.push_back(example);
    });
}

static void my_add_group(KT_context *ctx, const violation_groups::value_type &found, KT_vhash *record)
{
    const auto &[tbl, code, col, message] = found.first;
    KT_varray *list = nullptr;
    KT_varray *examples = nullptr;
    KT_vhash *violation = nullptr;
    KT_TRY(KT_vhash__ensure__varray(ctx, record, "violations", &list));
    KT_TRY(KT_varray__appendnew__vhash(ctx, list, &violation));
    KT_TRY(KT_vhash__add__string__sz(ctx, violation, "code", code.c_str()));
    KT_TRY(KT_vhash__add__string__sz(ctx, violation, "severity", found.second.severity.c_str()));
    KT_TRY(KT_vhash__add__string__sz(ctx, violation, "message", message.c_str()));
    if (!col.empty())
        KT_TRY(KT_vhash__add__string__sz(ctx, violation, "column", col.c_str()));
    KT_TRY(KT_vhash__add__int64(ctx, violation, "count", found.second.count));
    KT_TRY(KT_vhash__addnew__varray(ctx, violation, "examples", &examples));
    for (const std::string &example : found.second.examples)
        KT_TRY(KT_varray__append__string__sz(ctx, examples, example.c_str()));
}

static void my_check_rows(KT_context *ctx, tov_schema *schema, const char *file_name, const KT_vhash *data)
{
    violation_groups groups;
    std::map<std::string, KT_vhash *> records;
    KT_TRY(tov_client__check_database(ctx, schema, file_name, nullptr, my_take, &groups, nullptr));
    for (KT_vhash *record : client_report_maps(ctx, data, "tables"))
        records[client_report_text(ctx, record, "table")] = record;
    for (const auto &found : groups) {
        const auto record = records.find(std::get<0>(found.first));
        if (record != records.end())
            KT_TRY(my_add_group(ctx, found, record->second));
    }
}

void client_report_add_rows(KT_context *ctx, tov_schema *schema, const char *file_name, const KT_vhash *data)
{
    KT_TRY(my_count_rows(ctx, file_name, data));
    KT_TRY(my_check_rows(ctx, schema, file_name, data));
}
