// Pages of Markdown for a repository: one that lists the tables, and one for each of them with a diagram of its
// neighbourhood.
#include "kt_folded.hpp"
#include "report/client_markdown.hpp"
#include "report/client_report.hpp"

#include <map>

#define KT_HERE "src/client/report/client_report_markdown"

namespace {

struct page {
    std::string tbl;  // its name
    std::string file; // the page's
    KT_vhash *record;
    std::vector<std::pair<std::string, KT_vhash *>> from; // references to it, with the tables that hold them
};

struct report_pages {
    std::vector<page> pages;
    std::map<std::string, size_t> index; // by the table's name, folded
};

} // namespace

static report_pages my_list_pages(KT_context *ctx, const KT_vhash *data)
{
    report_pages all;
    std::vector<std::string> taken = {"readme.md"};
    for (KT_vhash *record : client_report_maps(ctx, data, "tables")) {
        const std::string name = client_report_text(ctx, record, "table");
        all.index[kt_folded(name)] = all.pages.size();
        all.pages.push_back({name, client_markdown_file(name, taken), record, {}});
    }
    for (const page &it : all.pages) {
        for (KT_vhash *reference : client_report_maps(ctx, it.record, "references")) {
            const auto target = all.index.find(kt_folded(client_report_text(ctx, reference, "table")));
            if (target != all.index.end())
                all.pages[target->second].from.emplace_back(it.tbl, reference);
        }
    }
    return all;
}

static std::string my_link(const report_pages &all, const std::string &tbl)
{
    const auto found = all.index.find(kt_folded(tbl));
    const std::string name = client_markdown_text(tbl);
    return found == all.index.end() ? name : "[" + name + "](" + all.pages[found->second].file + ")";
}

static std::string my_joined(KT_context *ctx, const KT_vhash *map, const char *key)
{
    std::string text;
    for (const std::string &name : client_report_texts(ctx, map, key))
        text += (text.empty() ? "" : ", ") + client_markdown_text(name);
    return text;
}

static std::string my_number(KT_context *ctx, const KT_vhash *map, const char *key)
{
    int64_t number = 0;
    KT_bool has = 0;
    if (!kt_has_err(ctx))
        KT_vhash__has(ctx, map, key, &has);
    if (has && !kt_has_err(ctx))
        KT_vhash__get__int64(ctx, map, key, &number);
    return has ? std::to_string(number) : "";
}

static bool my_flag(KT_context *ctx, const KT_vhash *map, const char *key)
{
    KT_bool is_set = 0;
    if (!kt_has_err(ctx))
        KT_vhash__check__bool(ctx, map, key, &is_set);
    return is_set != 0;
}

static std::string my_col_row(KT_context *ctx, const KT_vhash *col)
{
    const auto text = [&](const char *key) { return client_report_text(ctx, col, key); };
    const std::string left_out = text("left_out");
    const std::string position = my_number(ctx, col, "primary_key");
    std::string keys = position.empty() ? "" : "primary key " + position;
    if (my_flag(ctx, col, "unique"))
        keys += keys.empty() ? "unique" : ", unique";
    const std::string kept = left_out.empty() ? text("form") : "left out: " + left_out;
    const char *null = !left_out.empty() ? "" : my_flag(ctx, col, "nullable") ? "yes" : "no";
    return client_markdown_row({client_markdown_text(text("name")), client_markdown_code(text("server_type")),
                                client_markdown_code(text("sqlite_type")), null, client_markdown_code(text("default")),
                                keys, client_markdown_text(kept), client_markdown_text(text("description"))});
}

static std::string my_cols(KT_context *ctx, const page &it)
{
    std::string text = "\n## Columns\n\n" + client_markdown_head({"Column", "Server type", "SQLite type", "NULL",
                                                                  "Default", "Keys", "Kept as", "Description"});
    for (const KT_vhash *col : client_report_maps(ctx, it.record, "columns"))
        text += my_col_row(ctx, col);
    return text;
}

static std::string my_reference_row(KT_context *ctx, const KT_vhash *reference, const std::string &tbl)
{
    const std::string actions[] = {client_report_text(ctx, reference, "on_delete"),
                                   client_report_text(ctx, reference, "on_update")};
    return client_markdown_row({my_joined(ctx, reference, "columns"), tbl, my_joined(ctx, reference, "to"),
                                client_markdown_text(actions[0]), client_markdown_text(actions[1])});
}

static std::string my_references(KT_context *ctx, const report_pages &all, const page &it)
{
    std::string to, from;
    for (const KT_vhash *reference : client_report_maps(ctx, it.record, "references"))
        to += my_reference_row(ctx, reference, my_link(all, client_report_text(ctx, reference, "table")));
    for (const auto &[tbl, reference] : it.from)
        from += my_reference_row(ctx, reference, my_link(all, tbl));
    if (!to.empty())
        to = "\n## Refers to\n\n" +
             client_markdown_head({"Columns", "Table", "Its columns", "On delete", "On update"}) + to;
    if (!from.empty())
        from = "\n## Referred to by\n\n" +
               client_markdown_head({"Its columns", "Table", "Columns here", "On delete", "On update"}) + from;
    return to + from;
}

static std::string my_checks(KT_context *ctx, const page &it)
{
    std::string text;
    for (const KT_vhash *check : client_report_maps(ctx, it.record, "checks"))
        text += client_markdown_row({client_markdown_text(client_report_text(ctx, check, "name")),
                                     client_markdown_code(client_report_text(ctx, check, "expression"))});
    return text.empty() ? "" : "\n## Checks\n\n" + client_markdown_head({"Name", "Condition"}) + text;
}

static std::string my_indexes(KT_context *ctx, const page &it)
{
    std::string text;
    for (const KT_vhash *index : client_report_maps(ctx, it.record, "indexes"))
        text += client_markdown_row({client_markdown_text(client_report_text(ctx, index, "name")),
                                     client_markdown_text(client_report_text(ctx, index, "kind")),
                                     my_joined(ctx, index, "columns"), my_joined(ctx, index, "included"),
                                     client_markdown_code(client_report_text(ctx, index, "filter")),
                                     my_flag(ctx, index, "left_out") ? "left out" : "yes"});
    return text.empty()
               ? ""
               : "\n## Indexes\n\n" +
                     client_markdown_head({"Name", "Kind", "Columns", "Included", "Condition", "In SQLite"}) + text;
}

// The table in the middle, and each table that it refers to or that refers to it.
static std::string my_diagram(KT_context *ctx, const page &it)
{
    std::vector<std::string> names = {it.tbl};
    std::string boxes = "    t0[\"<b>" + client_mermaid_text(it.tbl) + "</b>\"]\n";
    std::string arrows;
    const auto box = [&](const std::string &name) {
        for (size_t n = 0; n < names.size(); n++) {
            if (kt_folded(names[n]) == kt_folded(name))
                return "t" + std::to_string(n);
        }
        names.push_back(name);
        std::string made = "t" + std::to_string(names.size() - 1);
        boxes += "    " + made + "[\"" + client_mermaid_text(name) + "\"]\n";
        return made;
    };
    const auto arrow = [&](const std::string &from, const std::string &to) {
        const std::string line = "    " + from + " --> " + to + "\n";
        if (arrows.find(line) == std::string::npos)
            arrows += line;
    };
    for (const KT_vhash *reference : client_report_maps(ctx, it.record, "references"))
        arrow("t0", box(client_report_text(ctx, reference, "table")));
    for (const auto &[tbl, reference] : it.from)
        arrow(box(tbl), "t0");
    return arrows.empty() ? "" : "\n```mermaid\nflowchart LR\n" + boxes + arrows + "```\n";
}

static std::string my_finding(KT_context *ctx, const KT_vhash *finding)
{
    const auto text = [&](const char *key) { return client_report_text(ctx, finding, key); };
    const std::string col = text("column");
    const std::string host_text = text("host_text");
    return "- **" + text("severity") + "** `" + text("code") + "`" +
           (col.empty() ? "" : " " + client_markdown_code(col)) + ": " + client_markdown_text(text("reason")) +
           (host_text.empty() ? "" : ": " + client_markdown_code(host_text)) + "\n";
}

static std::string my_findings(KT_context *ctx, const KT_vhash *data, const page &it)
{
    const std::string server_name = kt_folded(client_report_text(ctx, it.record, "server_table"));
    std::string text;
    for (const KT_vhash *finding : client_report_maps(ctx, data, "findings")) {
        if (kt_folded(client_report_text(ctx, finding, "table")) == server_name)
            text += my_finding(ctx, finding);
    }
    return text.empty() ? "" : "\n## Findings\n\n" + text;
}

static std::string my_violations(KT_context *ctx, const page &it)
{
    std::string text;
    for (const KT_vhash *violation : client_report_maps(ctx, it.record, "violations")) {
        const std::string col = client_report_text(ctx, violation, "column");
        text += "- **" + client_report_text(ctx, violation, "severity") + "** `" +
                client_report_text(ctx, violation, "code") + "`" +
                (col.empty() ? "" : " " + client_markdown_code(col)) + ": " +
                client_markdown_text(client_report_text(ctx, violation, "message")) +
                ", times: " + my_number(ctx, violation, "count") + "\n";
    }
    return text.empty() ? "" : "\n## Rows that the server would refuse\n\n" + text;
}

static std::string my_table_page(KT_context *ctx, const KT_vhash *data, const report_pages &all, const page &it)
{
    const std::string server_name = client_report_text(ctx, it.record, "server_table");
    const std::string description = client_report_text(ctx, it.record, "description");
    const std::string rows = my_number(ctx, it.record, "rows");
    std::string text = "# " + client_markdown_text(it.tbl) + "\n\n[All tables](README.md)";
    text += server_name == it.tbl ? "" : ", on the server " + client_markdown_text(server_name);
    text += rows.empty() ? "\n" : ", rows: " + rows + "\n";
    text += description.empty() ? "" : "\n" + client_markdown_text(description) + "\n";
    text += my_diagram(ctx, it);
    text += my_cols(ctx, it);
    text += my_references(ctx, all, it);
    text += my_checks(ctx, it);
    text += my_indexes(ctx, it);
    return text + my_findings(ctx, data, it) + my_violations(ctx, it);
}

static std::string my_index_page(KT_context *ctx, const KT_vhash *data, const report_pages &all)
{
    std::string text = "# " + client_markdown_text(client_report_text(ctx, data, "title")) + "\n\n" +
                       client_markdown_head({"Table", "Columns", "Refers to", "Referred to by", "Rows", "Description"});
    for (const page &it : all.pages)
        text += client_markdown_row({my_link(all, it.tbl),
                                     std::to_string(client_report_maps(ctx, it.record, "columns").size()),
                                     std::to_string(client_report_maps(ctx, it.record, "references").size()),
                                     std::to_string(it.from.size()), my_number(ctx, it.record, "rows"),
                                     client_markdown_text(client_report_text(ctx, it.record, "description"))});
    return text;
}

void tov_client__write_markdown_report(KT_context *ctx, tov_schema *schema, const tov_client_report_options *options,
                                       tov_client_take_report_file take, void *data) noexcept
{
    kt_contain(ctx, [&] {
        kt_owned_vhash report{ctx};
        KT_TRY(client_report_gather(ctx, schema, options, report.out()));
        const report_pages all = my_list_pages(ctx, report);
        const std::string index = my_index_page(ctx, report, all);
        KT_TRY(take(ctx, data, "README.md", index.c_str()));
        for (const page &it : all.pages) {
            const std::string text = my_table_page(ctx, report, all, it);
            KT_TRY(take(ctx, data, it.file.c_str(), text.c_str()));
        }
    });
}
