#include "cli_violations.hpp"

#include "cli_files.hpp"
#include "cli_harmless.hpp"
#include "cli_json.hpp"
#include "cli_layout.hpp"
#include "cli_sarif.hpp"

#include <cstring>

// What errors name: __FILE__ has the folder of the build in it, and the command would differ with that.
static constexpr const char *here = "src/cli/cli_violations";

// How much is kept before it goes to standard output.
static constexpr size_t piece_size = size_t{64} * 1024;

static std::string my_text(const char *text)
{
    return text ? text : "";
}

// Which row of the table, in words: "row 5 (Id=1)".
static std::string my_row(const tov_client_violation &violation)
{
    const std::string key = my_text(violation.key);
    if (!violation.has_rowid)
        return key.empty() ? "" : "row " + key;
    return "row " + std::to_string(violation.rowid) + (key.empty() ? "" : " (" + key + ")");
}

// code: table.column: row: message: value
static std::string my_line(const tov_client_violation &violation)
{
    std::string line = violation.kind->code;
    if (violation.tbl)
        line += std::string(": ") + violation.tbl + (violation.col ? std::string(".") + violation.col : "");
    const std::string row = my_row(violation);
    line += (row.empty() ? "" : ": " + row) + ": " + violation.message;
    return cli_harmless(line + (violation.value ? std::string(": ") + violation.value : "")) + "\n";
}

static std::string my_json(KT_context *ctx, const tov_client_violation &violation)
{
    const cli_map map(ctx);
    cli_add_text(ctx, map, "code", violation.kind->code);
    cli_add_text(ctx, map, "severity", violation.kind->severity);
    cli_add_text(ctx, map, "table", violation.tbl);
    if (violation.has_rowid)
        cli_add_number(ctx, map, "rowid", violation.rowid);
    cli_add_text(ctx, map, "key", violation.key);
    cli_add_text(ctx, map, "column", violation.col);
    cli_add_text(ctx, map, "value", violation.value);
    cli_add_text(ctx, map, "message", violation.message);
    return cli_json_text(ctx, map);
}

// In quotes where it has to be.
static std::string my_field(const std::string &text)
{
    if (text.find_first_of(",\"\r\n") == std::string::npos)
        return text;
    std::string field = "\"";
    for (const char byte : text)
        field += byte == '"' ? std::string("\"\"") : std::string(1, byte);
    return field + "\"";
}

static constexpr const char *csv_head = "code,severity,table,rowid,key,column,value,message\r\n";

static std::string my_csv(const tov_client_violation &violation)
{
    std::string line = violation.kind->code;
    const std::string rowid = violation.has_rowid ? std::to_string(violation.rowid) : "";
    for (const std::string &text :
         {std::string(violation.kind->severity), my_text(violation.tbl), rowid, my_text(violation.key),
          my_text(violation.col), my_text(violation.value), my_text(violation.message)})
        line += "," + my_field(text);
    return line + "\r\n";
}

cli_violations::cli_violations(KT_context *ctx, std::string format, std::string output, std::string database)
    : ctx_(ctx), format_(std::move(format)), output_(std::move(output)), database_(std::move(database))
{
    if (format_ == "csv")
        text_ = csv_head;
    if (format_ == "json")
        text_ = "{\"violations\":[";
    if (format_ != "sarif")
        return;
    KT_varray__alloc(ctx, &list_);
    cli_check(ctx, "");
}

cli_violations::~cli_violations()
{
    KT_varray__free(ctx_, list_);
}

// Findings of an import have these members.
void cli_violations::add_to_list(const tov_client_violation &violation)
{
    KT_vhash *map = cli_append_map(ctx_, list_);
    const std::string row = my_row(violation);
    const std::string reason = (row.empty() ? "" : row + ": ") + violation.message;
    cli_add_text(ctx_, map, "code", violation.kind->code);
    cli_add_text(ctx_, map, "severity", violation.kind->severity);
    cli_add_text(ctx_, map, "table", violation.tbl);
    cli_add_text(ctx_, map, "column", violation.col);
    cli_add_text(ctx_, map, "reason", reason.c_str());
    cli_add_text(ctx_, map, "host_text", violation.value);
}

void cli_violations::add(const tov_client_violation &violation)
{
    const bool is_first = counts_.empty();
    counts_[violation.kind]++;
    if (format_ == "sarif")
        add_to_list(violation);
    else if (format_ == "json")
        text_ += (is_first ? "\n" : ",\n") + my_json(ctx_, violation);
    else
        text_ += format_ == "csv" ? my_csv(violation) : my_line(violation);
    flush(piece_size);
}

void cli_violations::flush(size_t most)
{
    if (!output_.empty() || text_.size() < most || text_.empty())
        return;
    cli_print(text_);
    text_.clear();
}

// No exception may cross the check: what went wrong becomes an error of the context, and ends it.
void cli_violations::take(KT_context *ctx, void *data, const tov_client_violation *violation) noexcept
try {
    static_cast<cli_violations *>(data)->add(*violation);
} catch (const std::bad_alloc &) {
    KT_context__err__generic(ctx, KT_ERR_OUT_OF_MEMORY, here, __LINE__);
} catch (const std::exception &error) {
    KT_context__err__generic(ctx, KT_ERR_UNEXPECTED_VALUE, here, __LINE__);
    KT_context__err_set_description(ctx, "%s", error.what());
}

static std::vector<cli_sarif_rule> my_violation_rules()
{
    std::vector<cli_sarif_rule> rules;
    for (uint32_t n = 0; const tov_client_violation_kind *kind = tov_client__get_nth_violation_kind(n); n++)
        rules.push_back({kind->code, kind->severity, kind->meaning});
    return rules;
}

void cli_violations::finish(bool is_whole)
{
    if (format_ == "json")
        text_ += std::string(counts_.empty() ? "]" : "\n]") + ",\"complete\":" + (is_whole ? "true" : "false") + "}\n";
    if (format_ == "sarif")
        text_ = cli_sarif(ctx_, my_violation_rules(), list_, database_);
    if (output_.empty())
        flush(0);
    else
        cli_write_file(output_, text_);
}

std::string cli_violations::summary() const
{
    std::vector<std::vector<std::string>> lines;
    for (uint32_t n = 0; const tov_client_violation_kind *kind = tov_client__get_nth_violation_kind(n); n++) {
        const auto count = counts_.find(kind);
        if (count != counts_.end())
            lines.push_back({std::to_string(count->second), kind->severity, kind->code, kind->meaning});
    }
    return lines.empty() ? "" : cli_lay_out(lines, "  ");
}

int64_t cli_violations::errors() const
{
    int64_t errors = 0;
    for (const auto &[kind, count] : counts_)
        errors += std::strcmp(kind->severity, "error") == 0 ? count : 0;
    return errors;
}
