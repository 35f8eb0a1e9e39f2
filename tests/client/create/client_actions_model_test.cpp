// Deletes in random databases, compared with a plain model of what the standard's delete actions do.
#include "client_test.hpp"

#include <algorithm>
#include <map>
#include <optional>
#include <random>
#include <set>
#include <vector>

namespace {

using value = std::optional<std::string>; // as SQLite shows it; none is NULL

enum class collation { binary, nocase, rtrim };

struct key_col {
    std::string name;
    bool text; // else an integer
    collation compared;
};

struct foreign_key {
    size_t parent;
    std::string action;
    std::vector<size_t> cols; // positions in the table's columns, one for each key column of the parent
    std::vector<value> defaults;
};

struct model_tbl {
    std::string name;
    std::vector<key_col> cols; // the key's columns first, then those of foreign keys
    size_t key_count;
    std::vector<foreign_key> fks;
};

using row = std::vector<value>;
using content = std::vector<std::vector<row>>; // by table

} // namespace

static std::string lower(std::string text)
{
    std::transform(text.begin(), text.end(), text.begin(), [](char c) { return c >= 'A' && c <= 'Z' ? c + 32 : c; });
    return text;
}

// The value that stands for all that a column takes for equal.
static value folded(const key_col &col, const value &v)
{
    if (!v || col.compared == collation::binary)
        return v;
    return col.compared == collation::nocase ? lower(*v) : v->substr(0, v->find_last_not_of(' ') + 1);
}

// Whether a row refers to a parent row: no NULL in its key, and equal as the parent's columns compare.
static bool refers(const row &child, const foreign_key &fk, const model_tbl &parent_tbl, const row &parent)
{
    for (size_t n = 0; n < fk.cols.size(); n++) {
        const value &from = child[fk.cols[n]];
        const value &to = parent[n];
        if (!from || !to)
            return false;
        if (folded(parent_tbl.cols[n], from) != folded(parent_tbl.cols[n], to))
            return false;
    }
    return true;
}

namespace {
class DeleteModel {
  public:
    explicit DeleteModel(const std::vector<model_tbl> &tbls) : tbls_(tbls)
    {
    }

    // What deleting some rows of a table leaves, which may hold references to nowhere.
    content after_delete(const content &before, size_t tbl, const std::set<size_t> &rows) const
    {
        std::vector<std::set<size_t>> gone(tbls_.size());
        gone[tbl] = rows;
        while (spread(before, gone)) {
        }
        content after(tbls_.size());
        for (size_t t = 0; t < tbls_.size(); t++) {
            for (size_t r = 0; r < before[t].size(); r++) {
                if (!gone[t].count(r))
                    after[t].push_back(reset(before, gone, t, before[t][r]));
            }
        }
        return after;
    }

    bool holds(const content &rows) const
    {
        for (size_t t = 0; t < tbls_.size(); t++) {
            for (const foreign_key &fk : tbls_[t].fks) {
                for (const row &child : rows[t]) {
                    if (!is_free(child, fk) && !find(rows[fk.parent], child, fk))
                        return false;
                }
            }
        }
        return true;
    }

  private:
    static bool is_free(const row &child, const foreign_key &fk)
    {
        return std::any_of(fk.cols.begin(), fk.cols.end(), [&](size_t col) { return !child[col]; });
    }
    bool find(const std::vector<row> &parents, const row &child, const foreign_key &fk) const
    {
        return std::any_of(parents.begin(), parents.end(),
                           [&](const row &parent) { return refers(child, fk, tbls_[fk.parent], parent); });
    }
    bool refers_to_gone(const content &before, const std::vector<std::set<size_t>> &gone, const row &child,
                        const foreign_key &fk) const
    {
        return std::any_of(gone[fk.parent].begin(), gone[fk.parent].end(), [&](size_t parent) {
            return refers(child, fk, tbls_[fk.parent], before[fk.parent][parent]);
        });
    }
    // One more round of CASCADE; false when nothing more is to go.
    bool spread(const content &before, std::vector<std::set<size_t>> &gone) const
    {
        bool more = false;
        for (size_t t = 0; t < tbls_.size(); t++) {
            for (const foreign_key &fk : tbls_[t].fks) {
                for (size_t r = 0; fk.action == "CASCADE" && r < before[t].size(); r++) {
                    if (!gone[t].count(r) && refers_to_gone(before, gone, before[t][r], fk))
                        more = gone[t].insert(r).second;
                }
            }
        }
        return more;
    }
    row reset(const content &before, const std::vector<std::set<size_t>> &gone, size_t t, const row &old) const
    {
        row result = old;
        for (const foreign_key &fk : tbls_[t].fks) {
            if (fk.action == "CASCADE" || fk.action == "NO ACTION" || !refers_to_gone(before, gone, old, fk))
                continue;
            for (size_t n = 0; n < fk.cols.size(); n++)
                result[fk.cols[n]] = fk.action == "SET DEFAULT" ? fk.defaults[n] : std::nullopt;
        }
        return result;
    }

    const std::vector<model_tbl> &tbls_;
};
} // namespace

class ClientActionsModel : public ClientTest {
  protected:
    size_t below(size_t limit)
    {
        return std::uniform_int_distribution<size_t>(0, limit - 1)(random);
    }
    collation any_collation()
    {
        static constexpr collation all[] = {collation::binary, collation::binary, collation::nocase, collation::rtrim};
        return all[below(4)];
    }
    // A value of a small domain, in letter case and with blanks at the end as it comes.
    value any_value(const key_col &col)
    {
        static constexpr const char *texts[] = {"a", "A", "a ", "b", "B", "c "};
        return col.text ? texts[below(6)] : std::to_string(below(4));
    }
    // The same value as a column of the kind may also write it.
    value respell(const key_col &parent_col, const value &original)
    {
        if (!original || parent_col.compared == collation::binary || below(2))
            return original;
        if (parent_col.compared == collation::rtrim)
            return *original + " ";
        return lower(*original) == *original ? static_cast<char>((*original)[0] - 32) + original->substr(1)
                                             : lower(*original);
    }

    void make_tbls()
    {
        tbls.assign(1 + below(4), {});
        for (size_t t = 0; t < tbls.size(); t++) {
            model_tbl &tbl = tbls[t];
            tbl.name = "T" + std::to_string(t);
            tbl.key_count = 1 + below(2);
            for (size_t n = 0; n < tbl.key_count; n++) {
                const bool text = below(2);
                tbl.cols.push_back({"K" + std::to_string(n), text, text ? any_collation() : collation::binary});
            }
        }
        for (model_tbl &tbl : tbls) {
            for (size_t count = below(4); count > 0; count--)
                make_fk(tbl);
        }
    }
    void make_fk(model_tbl &tbl)
    {
        static constexpr const char *actions[] = {"CASCADE", "SET NULL", "SET DEFAULT", "NO ACTION", "CASCADE"};
        foreign_key fk;
        fk.parent = below(tbls.size());
        fk.action = actions[below(5)];
        const model_tbl &parent = tbls[fk.parent];
        for (size_t n = 0; n < parent.key_count; n++) {
            const bool text = parent.cols[n].text;
            const key_col col = {"F" + std::to_string(tbl.cols.size()), text,
                                 text ? any_collation() : collation::binary};
            fk.cols.push_back(tbl.cols.size());
            // A default may not make a row refer to itself in another spelling, which SQLite does not recognise.
            const bool respelt = &parent == &tbl && parent.cols[n].compared != collation::binary;
            fk.defaults.push_back(!respelt && below(4) ? any_value(col) : std::nullopt);
            tbl.cols.push_back(col);
        }
        tbl.fks.push_back(fk);
    }
    static std::string literal(const key_col &col, const value &v)
    {
        return !v ? "NULL" : col.text ? "'" + *v + "'" : *v;
    }

    void make_schema()
    {
        reset_schema();
        for (const model_tbl &tbl : tbls)
            describe_cols(tbl);
        for (const model_tbl &tbl : tbls)
            describe_fks(tbl);
    }
    void describe_cols(const model_tbl &tbl)
    {
        const char *id = tbl.name.c_str();
        add_tbl(id, id);
        for (size_t n = 0; n < tbl.cols.size(); n++) {
            const char *col = tbl.cols[n].name.c_str();
            if (tbl.cols[n].text)
                add_any_text_col(id, col, tbl.cols[n].compared);
            else
                add_col(id, col, col);
            if (n == 0)
                tov_schema__set_pk_name(ctx, schema, id, "PK");
            if (n < tbl.key_count)
                tov_schema__add_to_pk(ctx, schema, id, col);
        }
    }
    void add_any_text_col(const char *tbl_id, const char *col, collation compared)
    {
        tov_schema__add_col(ctx, schema, tbl_id, col, col, 1, 0, 0);
        tov_schema__set_col_type_text(ctx, schema, tbl_id, col, nullptr, nullptr, 0, 0, compared == collation::nocase,
                                      0, 0, 0, /* fixed width */ compared == collation::rtrim, 1, 50);
    }
    void describe_fks(const model_tbl &tbl)
    {
        const char *id = tbl.name.c_str();
        for (size_t k = 0; k < tbl.fks.size(); k++) {
            const foreign_key &fk = tbl.fks[k];
            const char *parent = tbls[fk.parent].name.c_str();
            const std::string fk_id = "fk" + std::to_string(k);
            const bool in_column = fk.cols.size() == 1 && below(2);
            if (!in_column)
                tov_schema__create_foreignkey(ctx, schema, fk_id.c_str(), fk_id.c_str(), id, parent, 1,
                                              fk.action.c_str(), "NO ACTION", 0);
            for (size_t n = 0; n < fk.cols.size(); n++) {
                const key_col &col = tbl.cols[fk.cols[n]];
                const char *ref_col = tbls[fk.parent].cols[n].name.c_str();
                if (fk.defaults[n])
                    tov_schema__set_colcon_defval(ctx, schema, id, col.name.c_str(), 1, nullptr,
                                                  literal(col, fk.defaults[n]).c_str());
                if (in_column)
                    set_fk(id, col.name.c_str(), parent, ref_col, fk.action.c_str());
                else
                    tov_schema__add_to_foreignkey(ctx, schema, id, fk_id.c_str(), col.name.c_str(), ref_col);
            }
        }
    }

    // Rows with distinct keys, whose references are NULL or lead to rows that are there.
    content make_rows()
    {
        content result(tbls.size());
        for (size_t t = 0; t < tbls.size(); t++) {
            std::set<std::string> keys;
            for (size_t tries = 3 + below(8); tries > 0; tries--) {
                row r(tbls[t].cols.size());
                std::string key;
                for (size_t n = 0; n < tbls[t].key_count; n++) {
                    r[n] = any_value(tbls[t].cols[n]);
                    key += "|" + *folded(tbls[t].cols[n], r[n]);
                }
                if (keys.insert(key).second)
                    result[t].push_back(r);
            }
        }
        for (size_t t = 0; t < tbls.size(); t++) {
            for (row &r : result[t])
                point_somewhere(result, tbls[t], r);
        }
        return result;
    }
    void point_somewhere(const content &all, const model_tbl &tbl, row &r)
    {
        for (const foreign_key &fk : tbl.fks) {
            const std::vector<row> &parents = all[fk.parent];
            const row &parent = parents[below(parents.size())];
            const bool free = below(5) == 0;
            for (size_t n = 0; n < fk.cols.size(); n++) {
                // SQLite compares a row's reference to itself byte for byte, so there the spelling is kept.
                const value key = &parent == &r ? parent[n] : respell(tbls[fk.parent].cols[n], parent[n]);
                r[fk.cols[n]] = free && n == 0 ? std::nullopt : key;
            }
        }
    }

    void insert(const content &all)
    {
        std::string sql = "BEGIN;";
        for (size_t t = 0; t < tbls.size(); t++) {
            for (const row &r : all[t])
                sql += "INSERT INTO " + tbls[t].name + " VALUES(" + listed(tbls[t], r, ",") + ");";
        }
        ASSERT_EQ(run(connection, sql + "COMMIT"), "") << sql;
    }
    static std::string listed(const model_tbl &tbl, const row &r, const char *separator)
    {
        std::string text;
        for (size_t n = 0; n < r.size(); n++)
            text += (n ? separator : "") + literal(tbl.cols[n], r[n]);
        return text;
    }
    std::string in_database(const model_tbl &tbl)
    {
        std::string cols;
        for (const key_col &col : tbl.cols)
            cols += (cols.empty() ? "quote(" : "||'|'||quote(") + col.name + ")";
        return rows(connection, "SELECT " + cols + " FROM " + tbl.name + " ORDER BY 1");
    }
    static std::string in_model(const model_tbl &tbl, const std::vector<row> &content_rows)
    {
        std::vector<std::string> lines;
        for (const row &r : content_rows)
            lines.push_back(listed(tbl, r, "|"));
        std::sort(lines.begin(), lines.end());
        std::string text;
        for (const std::string &line : lines)
            text += (text.empty() ? "" : " ") + line;
        return text;
    }
    void expect_content(const content &expected)
    {
        for (size_t t = 0; t < tbls.size(); t++)
            EXPECT_EQ(in_database(tbls[t]), in_model(tbls[t], expected[t])) << tbls[t].name;
    }
    // A statement that deletes one to three rows, and what the model says that it leaves.
    std::string choose_delete(content &all)
    {
        const size_t t = below(tbls.size());
        if (all[t].empty())
            return "";
        std::set<size_t> chosen;
        std::string condition;
        for (size_t count = 1 + below(3); count > 0; count--) {
            const size_t r = below(all[t].size());
            chosen.insert(r);
            condition += condition.empty() ? "(" : " OR (";
            for (size_t n = 0; n < tbls[t].key_count; n++)
                condition += (n ? " AND " : "") + tbls[t].cols[n].name + "=" + literal(tbls[t].cols[n], all[t][r][n]);
            condition += ")";
        }
        all = DeleteModel(tbls).after_delete(all, t, chosen);
        return "DELETE FROM " + tbls[t].name + " WHERE " + condition;
    }
    // Deletes in one to three statements of a transaction, where a later one may mend what an earlier one broke; false
    // when the model says that the commit is refused.
    bool delete_some(content &all)
    {
        content expected = all;
        std::string sql = "BEGIN;";
        for (size_t count = 1 + below(3); count > 0; count--)
            sql += choose_delete(expected) + ";";
        const bool holds = DeleteModel(tbls).holds(expected);
        EXPECT_EQ(run(connection, sql + "COMMIT"), holds ? "" : "FOREIGN KEY constraint failed") << sql;
        if (holds)
            all = expected;
        else
            EXPECT_EQ(run(connection, "ROLLBACK"), "");
        expect_content(all);
        return holds;
    }

    std::mt19937 random{20240229};
    std::vector<model_tbl> tbls;
};

TEST_F(ClientActionsModel, DeletesDoWhatTheStandardSays)
{
    int done = 0;
    int refused = 0;
    for (int round = 0; round < 300 && !HasFailure(); round++) {
        SCOPED_TRACE(round);
        make_tbls();
        make_schema();
        open();
        content all = make_rows();
        ASSERT_TRUE(DeleteModel(tbls).holds(all));
        insert(all);
        expect_content(all);
        for (int n = 0; n < 4 && !HasFailure(); n++)
            (delete_some(all) ? done : refused)++;
        EXPECT_EQ(rows(connection, "PRAGMA foreign_key_check"), "");
        if (HasFailure())
            ADD_FAILURE() << script();
    }
    // Both outcomes were met often enough to mean something.
    EXPECT_GT(done, 400);
    EXPECT_GT(refused, 50);
}
