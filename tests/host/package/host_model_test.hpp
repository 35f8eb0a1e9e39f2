// A fixture that reads packages into catalogues, and a text of what a catalogue says.
#pragma once

#include "host_test.hpp"
#include "package/host_package.hpp"
#include "package_builder.hpp"

#define KT_HERE "tests"

class HostPackageTest : public HostTest {
  protected:
    void read(std::string_view bytes, const host_package_limits &limits = {})
    {
        forget();
        made_catalogue.emplace();
        host_findings found{ctx};
        kt_contain(ctx, [&] { host_read_package(ctx, bytes, found, catalogue, limits); });
        found.move_to(&findings);
    }

    // Each table with what belongs to it, a line for each thing.
    std::string described() const
    {
        std::string text;
        for (const host_table &table : catalogue.tables)
            text += described(table);
        return text;
    }

    std::optional<host_catalogue> made_catalogue{std::in_place};
    host_catalogue &catalogue = *made_catalogue;

  private:
    static std::string described(const host_table &table);
};

inline std::string listed(const std::vector<const char *> &names, const std::vector<bool> &descending = {})
{
    std::string text;
    for (size_t n = 0; n < names.size(); n++)
        text += (n ? "," : "") + std::string(names[n]) + (n < descending.size() && descending[n] ? "-" : "");
    return '(' + text + ')';
}

inline std::string or_nameless(const char *name, bool is_system_named)
{
    return name ? name : is_system_named ? "nameless" : "null";
}

inline std::string described_col(const host_column &col)
{
    std::string text = "  " + std::to_string(col.id) + ' ' + col.name + ' ';
    if (col.is_computed)
        text += std::string("AS ") + col.computed + (col.is_persisted ? " persisted" : "");
    else
        text += std::string(col.system_type ? col.system_type : "-") + ' ' + col.user_type + ' ' +
                std::to_string(col.max_length) + ' ' + std::to_string(col.precision) + ' ' + std::to_string(col.scale);
    if (col.collation)
        text += ' ' + std::string(col.collation) + ' ' + std::to_string(col.code_page) + ' ' +
                std::to_string(col.comparison_style);
    text += col.is_nullable ? " null" : "";
    if (col.is_identity)
        text += std::string(" identity ") + col.identity.seed + ',' + col.identity.increment;
    text += std::string(col.is_rowguidcol ? " rowguid" : "") + (col.is_sparse ? " sparse" : "") +
            (col.is_column_set ? " columnset" : "") + (col.is_filestream ? " filestream" : "") +
            (col.is_hidden ? " hidden" : "") + (col.encryption_type ? " encrypted" : "") +
            (col.is_assembly_type ? " clr" : "");
    if (col.generated_always_type)
        text += " generated " + std::to_string(col.generated_always_type);
    if (col.defval)
        text += " default " + or_nameless(col.defval->name, col.defval->is_system_named) + ' ' + col.defval->definition;
    return text + (col.description ? std::string(" \"") + col.description + '"' : "") + '\n';
}

inline std::string described_key(const char *kind, const host_key &key)
{
    return std::string("  ") + kind + ' ' + or_nameless(key.name, key.is_system_named) +
           listed(key.col_names, key.descending) + (key.included_names.empty() ? "" : listed(key.included_names)) +
           (key.is_clustered ? " clustered" : "") + (key.is_disabled ? " disabled" : "") +
           (key.filter ? std::string(" WHERE ") + key.filter : "") + '\n';
}

inline std::string described_fk(const host_foreignkey &fk)
{
    std::string cols;
    for (const auto &[col, ref_col] : fk.col_names)
        cols += (cols.empty() ? "" : ",") + std::string(col) + ':' + ref_col;
    return "  fk " + or_nameless(fk.name, fk.is_system_named) + '(' + cols + ") " + std::to_string(fk.ref_tbl_id) +
           ' ' + fk.ref_schema + '.' + fk.ref_table + ' ' + fk.on_delete + '/' + fk.on_update +
           (fk.is_not_trusted ? " untrusted" : "") + (fk.is_disabled ? " disabled" : "") + '\n';
}

inline std::string HostPackageTest::described(const host_table &table)
{
    std::string text = std::to_string(table.id) + ' ' + table.label +
                       (table.temporal_type ? " temporal " + std::to_string(table.temporal_type) : "") +
                       (table.is_memory_optimized ? " memory" : "") + (table.is_node ? " node" : "") +
                       (table.description ? std::string(" \"") + table.description + '"' : "") + '\n';
    for (const host_column &col : table.cols)
        text += described_col(col);
    if (table.has_pk)
        text += described_key("pk", table.pk);
    for (const host_key &key : table.uniques)
        text += described_key(key.is_index ? "unique index" : "unique", key);
    for (const host_index &index : table.indexes)
        text += std::string("  index ") + index.name + listed(index.col_names, index.descending) +
                listed(index.included_names) + (index.filter ? std::string(" WHERE ") + index.filter : "") + '\n';
    for (const host_foreignkey &fk : table.fks)
        text += described_fk(fk);
    for (const host_check &check : table.checks)
        text += "  check " + or_nameless(check.name, check.is_system_named) + ' ' +
                (check.definition ? check.definition : "hidden") + (check.is_not_trusted ? " untrusted" : "") +
                (check.is_disabled ? " disabled" : "") + '\n';
    return text;
}
