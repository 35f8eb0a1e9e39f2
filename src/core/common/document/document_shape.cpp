// The tables of the document's shape, from the innermost record outwards.

#include "document/tov_parse_defin_private.hpp"

#include <iterator>

// clang-format off
static constexpr tov_member my_type_members[] = {
    {"name",            TOV_MEMBER_STRING,  1, TOV_ROLE_TYPE, "type", nullptr},
    {"constraint_name", TOV_MEMBER_STRING,  0, TOV_ROLE_NAME, "name of the key", nullptr},
    {"precision",       TOV_MEMBER_INTEGER, 0, TOV_ROLE_FREE, "precision", nullptr},
    {"scale",           TOV_MEMBER_INTEGER, 0, TOV_ROLE_FREE, "scale", nullptr},
    {"fixed_width",     TOV_MEMBER_BOOLEAN, 0, TOV_ROLE_FREE, "fixed width", nullptr},
    {"locale",          TOV_MEMBER_STRING,  0, TOV_ROLE_FREE, "locale", nullptr},
    {"binary",          TOV_MEMBER_BOOLEAN, 0, TOV_ROLE_FREE, "binary collation", nullptr},
    {"noaccent",        TOV_MEMBER_BOOLEAN, 0, TOV_ROLE_FREE, "insensitivity to accents", nullptr},
    {"nocase",          TOV_MEMBER_BOOLEAN, 0, TOV_ROLE_FREE, "insensitivity to case", nullptr},
    {"_KS",             TOV_MEMBER_BOOLEAN, 0, TOV_ROLE_FREE, "sensitivity to kana", nullptr},
    {"_WS",             TOV_MEMBER_BOOLEAN, 0, TOV_ROLE_FREE, "sensitivity to width", nullptr},
    {"_SC",             TOV_MEMBER_BOOLEAN, 0, TOV_ROLE_FREE, "supplementary characters", nullptr},
    {"unicode",         TOV_MEMBER_BOOLEAN, 0, TOV_ROLE_FREE, "Unicode", nullptr},
    {"width",           TOV_MEMBER_INTEGER, 0, TOV_ROLE_FREE, "width", nullptr},
    {"host_type",       TOV_MEMBER_STRING,  0, TOV_ROLE_FREE, "server's type", nullptr},
};
static constexpr tov_shape my_type = {"type", my_type_members, std::size(my_type_members)};

static constexpr tov_member my_notnull_members[] = {
    {"name", TOV_MEMBER_STRING, 0, TOV_ROLE_NAME, "name of NOT NULL", nullptr},
};
static constexpr tov_shape my_notnull = {"not-null constraint", my_notnull_members, std::size(my_notnull_members)};

static constexpr tov_member my_defval_members[] = {
    {"expr", TOV_MEMBER_STRING, 1, TOV_ROLE_DEFAULT, "default", nullptr},
    {"name", TOV_MEMBER_STRING, 0, TOV_ROLE_NAME,    "name of the default", nullptr},
};
static constexpr tov_shape my_defval = {"default", my_defval_members, std::size(my_defval_members)};

static constexpr tov_member my_col_check_members[] = {
    {"expr", TOV_MEMBER_STRING, 1, TOV_ROLE_CHECK, "check", nullptr},
    {"name", TOV_MEMBER_STRING, 0, TOV_ROLE_NAME,  "name of the check", nullptr},
};
static constexpr tov_shape my_col_check = {"check of a column", my_col_check_members, std::size(my_col_check_members)};

static constexpr tov_member my_col_fk_members[] = {
    {"name",       TOV_MEMBER_STRING,  0, TOV_ROLE_NAME,   "name of the foreign key", nullptr},
    {"ref_tbl_id", TOV_MEMBER_STRING,  1, TOV_ROLE_TBL_ID, "reference", nullptr},
    {"ref_col_id", TOV_MEMBER_STRING,  0, TOV_ROLE_COL_ID, "reference", nullptr},
    {"deferred",   TOV_MEMBER_BOOLEAN, 0, TOV_ROLE_FREE,   "deferral", nullptr},
    {"on_delete",  TOV_MEMBER_STRING,  0, TOV_ROLE_ACTION, "on_delete", nullptr},
    {"on_update",  TOV_MEMBER_STRING,  0, TOV_ROLE_ACTION, "on_update", nullptr},
};
static constexpr tov_shape my_col_fk = {"reference of a column", my_col_fk_members, std::size(my_col_fk_members)};

static constexpr tov_member my_col_members[] = {
    {"name",                TOV_MEMBER_STRING, 1, TOV_ROLE_NAME, nullptr, nullptr},
    {"type",                TOV_MEMBER_RECORD, 1, TOV_ROLE_FREE, "type", &my_type},
    {"mssql_col_data_type", TOV_MEMBER_STRING, 0, TOV_ROLE_FREE, "server's type", nullptr},
    {"notnull",             TOV_MEMBER_RECORD, 0, TOV_ROLE_FREE, "NOT NULL", &my_notnull},
    {"defval",              TOV_MEMBER_RECORD, 0, TOV_ROLE_FREE, "default", &my_defval},
    {"check",               TOV_MEMBER_LIST,   0, TOV_ROLE_FREE, "checks", &my_col_check},
    {"fk",                  TOV_MEMBER_RECORD, 0, TOV_ROLE_FREE, "foreign key", &my_col_fk},
};
static constexpr tov_shape my_col = {"column", my_col_members, std::size(my_col_members)};

static constexpr tov_member my_pk_members[] = {
    {"name", TOV_MEMBER_STRING,  0, TOV_ROLE_NAME, "name of the primary key", nullptr},
    {"cols", TOV_MEMBER_COL_SET, 0, TOV_ROLE_FREE, "primary key", nullptr},
};
static constexpr tov_shape my_pk = {"primary key", my_pk_members, std::size(my_pk_members)};

static constexpr tov_member my_fk_members[] = {
    {"cols",       TOV_MEMBER_COL_PAIRS, 1, TOV_ROLE_FREE,   "columns", nullptr},
    {"name",       TOV_MEMBER_STRING,    0, TOV_ROLE_NAME,   "name of the foreign key", nullptr},
    {"ref_tbl_id", TOV_MEMBER_STRING,    1, TOV_ROLE_TBL_ID, "reference", nullptr},
    {"deferred",   TOV_MEMBER_BOOLEAN,   0, TOV_ROLE_FREE,   "deferral", nullptr},
    {"on_delete",  TOV_MEMBER_STRING,    0, TOV_ROLE_ACTION, "on_delete", nullptr},
    {"on_update",  TOV_MEMBER_STRING,    0, TOV_ROLE_ACTION, "on_update", nullptr},
};
static constexpr tov_shape my_fk = {"foreign key", my_fk_members, std::size(my_fk_members)};

static constexpr tov_member my_tbl_check_members[] = {
    {"expr", TOV_MEMBER_STRING, 1, TOV_ROLE_INNER_CHECK, nullptr, nullptr},
};
static constexpr tov_shape my_tbl_check = {"check of a table", my_tbl_check_members, std::size(my_tbl_check_members)};

static constexpr tov_member my_tbl_members[] = {
    {"name",        TOV_MEMBER_STRING,   1, TOV_ROLE_NAME, nullptr, nullptr},
    {"txid",        TOV_MEMBER_INTEGER,  0, TOV_ROLE_FREE, "transaction id", nullptr},
    {"cols",        TOV_MEMBER_RECORDS,  0, TOV_ROLE_FREE, "column", &my_col},
    {"pk",          TOV_MEMBER_RECORD,   0, TOV_ROLE_FREE, "primary key", &my_pk},
    {"uniques",     TOV_MEMBER_COL_SETS, 0, TOV_ROLE_FREE, "unique constraint", nullptr},
    {"foreignkeys", TOV_MEMBER_RECORDS,  0, TOV_ROLE_FREE, "foreign key", &my_fk},
    {"check",       TOV_MEMBER_RECORDS,  0, TOV_ROLE_FREE, "check", &my_tbl_check},
    {"server",      TOV_MEMBER_OPEN,     0, TOV_ROLE_FREE, "facts about the server", nullptr},
};
static constexpr tov_shape my_tbl = {"table", my_tbl_members, std::size(my_tbl_members)};

static constexpr tov_member my_backend_members[] = {
    {"name",                    TOV_MEMBER_STRING,  0, TOV_ROLE_FREE, "name of the server", nullptr},
    {"api",                     TOV_MEMBER_STRING,  0, TOV_ROLE_FREE, "interface of the server", nullptr},
    {"indistinct_unique_nulls", TOV_MEMBER_BOOLEAN, 0, TOV_ROLE_FREE, "NULLs in unique constraints", nullptr},
};
static constexpr tov_shape my_backend = {"backend", my_backend_members, std::size(my_backend_members)};

static constexpr tov_member my_document_members[] = {
    {"compat_level", TOV_MEMBER_INTEGER, 1, TOV_ROLE_FREE, "compatibility level", nullptr},
    {"tbls",         TOV_MEMBER_RECORDS, 0, TOV_ROLE_FREE, "table", &my_tbl},
    {"filter_id",    TOV_MEMBER_INTEGER, 0, TOV_ROLE_FREE, "filter id", nullptr},
    {"backend",      TOV_MEMBER_RECORD,  0, TOV_ROLE_FREE, "backend", &my_backend},
    {"server",       TOV_MEMBER_OPEN,    0, TOV_ROLE_FREE, "facts about the server", nullptr},
};
static constexpr tov_shape my_document = {"document", my_document_members, std::size(my_document_members)};
// clang-format on

const tov_shape *tov_get_document_shape(void) noexcept
{
    return &my_document;
}

void tov_schema__get_document(KT_context *ctx, tov_schema *schema, const KT_vhash **document) noexcept
{
    KT_RETURN_IF_FAILED;
    *document = schema->document;
}
