// A fixture that reads scripts and shows what they leave behind.
#pragma once

#include "kt_test.hpp"
#include "script/host_script.hpp"

struct script_case {
    const char *name;
    const char *script;
    const char *expected;
};

class ScriptTest : public ContextTest {
  protected:
    void TearDown() override
    {
        findings.reset();
        ContextTest::TearDown();
    }
    // Reads scripts; the error, if any, stays in the context.
    void read(const std::vector<host_script_file> &files, const host_script_options &options = {})
    {
        made_catalogue.emplace();
        findings = std::make_unique<host_findings>(ctx);
        host_read_scripts(ctx, files, options, *findings, catalogue);
    }
    void read(std::string_view script)
    {
        read(std::vector<host_script_file>{{"a.sql", script}});
    }
    std::string error() const
    {
        return KT_context__err_description(ctx);
    }
    // The findings, one line each.
    std::string lines()
    {
        KT_varray *list = nullptr;
        findings->move_to(&list);
        kt_owned_varray owned{ctx};
        *owned.out() = list;
        std::string text;
        uint32_t count = 0;
        if (list)
            KT_varray__count(ctx, list, &count);
        for (uint32_t n = 0; n < count; n++) {
            KT_vhash *finding = nullptr;
            const char *code = nullptr, *place = nullptr, *host_text = nullptr;
            KT_varray__get__vhash(ctx, list, n, &finding);
            KT_vhash__get__sz(ctx, finding, "code", &code);
            KT_vhash__check__sz(ctx, finding, "place", &place);
            KT_vhash__check__sz(ctx, finding, "host_text", &host_text);
            text +=
                (n ? "\n" : "") + std::string(code) + ' ' + (place ? place : "") + ' ' + (host_text ? host_text : "");
        }
        return text;
    }
    // Everything about the tables, in a short form of its own.
    std::string shown() const
    {
        std::string text;
        for (const host_table &table : catalogue.tables)
            text += (text.empty() ? "" : "\n") + shown(table);
        return text;
    }

    std::optional<host_catalogue> made_catalogue{std::in_place};
    host_catalogue &catalogue = *made_catalogue;
    std::unique_ptr<host_findings> findings;

    // Each script leaves the tables that are expected, and no findings.
    template <size_t count> void expect_tables(const script_case (&cases)[count])
    {
        for (const script_case &c : cases) {
            SCOPED_TRACE(c.name);
            read(c.script);
            EXPECT_OK(ctx);
            EXPECT_EQ(shown(), c.expected);
            EXPECT_EQ(lines(), "");
            reset();
        }
    }

  private:
    static std::string join(const std::vector<const char *> &names, const std::vector<bool> &descending = {})
    {
        std::string text;
        for (size_t n = 0; n < names.size(); n++)
            text += (n ? "," : "") + std::string(names[n]) + (n < descending.size() && descending[n] ? "-" : "");
        return '(' + text + ')';
    }
    static std::string named(const char *name)
    {
        return name ? std::string(" ") + name : "";
    }
    static std::string shown(const host_column &col)
    {
        std::string text = col.name;
        if (col.is_computed)
            return text + " as " + (col.computed ? col.computed : "?") + (col.is_persisted ? " persisted" : "");
        text += ' ' + std::string(col.user_type ? col.user_type : "?");
        text += '/' + std::to_string(col.max_length) + '/' + std::to_string(col.precision) + '/' +
                std::to_string(col.scale);
        text += col.is_nullable ? " null" : "";
        text += col.collation ? std::string(" ") + col.collation : "";
        if (col.is_identity)
            text += std::string(" identity(") + col.identity.seed + ',' + col.identity.increment + ')';
        text += col.is_rowguidcol ? " rowguidcol" : "";
        text += col.is_sparse ? " sparse" : "";
        text += col.is_column_set ? " column_set" : "";
        text += col.is_filestream ? " filestream" : "";
        text += col.encryption_type ? " encrypted" : "";
        text += col.generated_always_type ? " generated" + std::to_string(col.generated_always_type) : "";
        text += col.is_hidden ? " hidden" : "";
        if (col.defval)
            text += ' ' + std::string(col.defval->kind) + named(col.defval->name) + ' ' + col.defval->definition;
        text += col.rule ? std::string(" rule ") + col.rule : "";
        return text + (col.description ? std::string(" -- ") + col.description : "");
    }
    static std::string shown(const host_key &key, const char *kind)
    {
        return std::string("; ") + kind + named(key.name) + join(key.col_names, key.descending) +
               (key.is_clustered ? " clustered" : "") + (key.is_disabled ? " disabled" : "") +
               (key.filter ? std::string(" where ") + key.filter : "");
    }
    static std::string shown(const host_foreignkey &fk)
    {
        std::string cols, ref_cols;
        for (const auto &[col, ref_col] : fk.col_names) {
            cols += (cols.empty() ? "" : ",") + std::string(col);
            ref_cols += (ref_cols.empty() ? "" : ",") + std::string(ref_col);
        }
        return "; fk" + named(fk.name) + '(' + cols + ") " + fk.ref_schema + '.' + fk.ref_table + '(' + ref_cols + ')' +
               (std::string_view(fk.on_delete) == "NO ACTION" ? "" : std::string(" delete ") + fk.on_delete) +
               (std::string_view(fk.on_update) == "NO ACTION" ? "" : std::string(" update ") + fk.on_update) +
               (fk.is_disabled ? " disabled" : "") + (fk.is_not_trusted ? " untrusted" : "");
    }
    static std::string shown(const host_table &table)
    {
        std::string text = std::string(table.schema_name) + '.' + table.name + ": ";
        for (const host_column &col : table.cols)
            text += (&col == &table.cols.front() ? "" : ", ") + shown(col);
        if (table.has_pk)
            text += shown(table.pk, "pk");
        for (const host_key &key : table.uniques)
            text += shown(key, key.is_index ? "unique index" : "unique");
        for (const host_index &index : table.indexes)
            text += std::string("; index") + named(index.name) + join(index.col_names, index.descending);
        for (const host_foreignkey &fk : table.fks)
            text += shown(fk);
        for (const host_check &check : table.checks)
            text += "; check" + named(check.name) + ' ' + check.definition + (check.is_disabled ? " disabled" : "") +
                    (check.is_not_trusted ? " untrusted" : "");
        text += table.temporal_type == 2 ? "; temporal" : table.temporal_type == 1 ? "; history" : "";
        text += table.is_memory_optimized ? "; in memory" : "";
        text += table.is_external ? "; external" : "";
        return text + (table.description ? std::string(" -- ") + table.description : "");
    }
};
