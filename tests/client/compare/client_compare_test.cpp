// Changes are seen, one at a time, and said to be what they are.
#include "compared_document.hpp"
#include "failing_alloc.hpp"

namespace {

struct change_case {
    const char *name;
    std::vector<std::pair<std::string, std::string>> replacements;
    const char *expected;
};

const change_case change_cases[] = {
    // Tables.
    {"a table is new",
     {{R"("2":{"name":"Orders","txid":6)",
       R"("3":{"name":"Notes","cols":{"1":{"name":"Id","type":{"name":"sint32"}}}},"2":{"name":"Orders","txid":6)"}},
     "Notes: added\nNotes: column Id: added: sint32\n"},
    {"a table is renamed",
     {{R"("name":"Customers","description")", R"("name":"Clients","description")"},
      {R"("1":{"name":"Customers")", R"("1":{"name":"Clients")"}},
     "dbo.Clients: renamed from dbo.Customers (guess)\n"},
    {"a table's name has other letters",
     {{R"("name":"Customers","description")", R"("name":"CUSTOMERS","description")"}},
     "dbo.CUSTOMERS: renamed from dbo.Customers\n"},
    {"a table is in another schema of the server",
     {{R"("schema":"dbo","name":"Orders")", R"("schema":"sales","name":"Orders")"}},
     "sales.Orders: renamed from dbo.Orders\n"},
    {"a table has another name in SQLite alone",
     {{R"("2":{"name":"Orders")", R"("2":{"name":"MyOrders")"}},
     "dbo.Orders: table dbo.Orders: name in SQLite: Orders -> MyOrders\n"},
    {"a table's description",
     {{"who buys", "who bought"}},
     "dbo.Customers: table dbo.Customers: description: who buys -> who bought\n"},
    {"a table has a history",
     {{R"("schema":"dbo","name":"Orders")", R"("schema":"dbo","name":"Orders","temporal_type":2)"}},
     "dbo.Orders: table dbo.Orders: temporal:  -> 2\n"},
    // Columns.
    {"a column is new",
     {{R"("5":{"name":"Paid")", R"("6":{"name":"Note","type":{"name":"uint1"}},"5":{"name":"Paid")"},
      {R"({"name":"Paid","id")", R"({"name":"Note","id":"6","type":"bit","nullable":true},{"name":"Paid","id")"}},
     "dbo.Orders: column Note: added: bit, nullable\n"},
    {"a column is gone",
     {{R"("2":{"name":"Name","type":{"name":"text","nocase":true,"unicode":true,"width":40},"mssql_col_data_type":"nvarchar"}})",
       R"("9":{"name":"Name2","type":{"name":"real8"}}})"},
      {R"({"name":"Name","id":"2","type":"nvarchar","length":80,"collation":"Latin1_General_CI_AS","nullable":true})",
       R"({"name":"Name2","id":"9","type":"float"})"}},
     "dbo.Customers: column Name: removed: nvarchar(40), collation Latin1_General_CI_AS, nullable\n"
     "dbo.Customers: column Name2: added: float\n"},
    {"a column is renamed, with its name everywhere",
     {{R"("name":"Total")", R"("name":"Amount")"}, {"[Total]", "[Amount]"}},
     "dbo.Orders: column Amount: renamed from Total (guess)\n"},
    {"a column's name has other letters",
     {{R"("name":"Total")", R"("name":"TOTAL")"}},
     "dbo.Orders: column TOTAL: renamed from Total\n"},
    {"columns in another order",
     {{R"({"name":"Id","id":"1","type":"int"},
{"name":"CustomerId","id":"2","type":"int","nullable":true})",
       R"({"name":"CustomerId","id":"2","type":"int","nullable":true},
{"name":"Id","id":"1","type":"int"})"}},
     "dbo.Orders: table dbo.Orders: order of columns: Id, CustomerId, Total, Code, Double, Paid -> CustomerId, Id, "
     "Total, Code, Double, Paid\n"},
    {"a type",
     {{R"({"name":"Id","id":"1","type":"int"})", R"({"name":"Id","id":"1","type":"bigint"})"},
      {R"({"name":"Id","type":{"name":"sint32"},"mssql_col_data_type":"int")",
       R"({"name":"Id","type":{"name":"sint64"},"mssql_col_data_type":"bigint")"}},
     "dbo.Orders: column Id: type: int -> bigint\n"},
    {"a width",
     {{R"("length":80)", R"("length":120)"}, {R"("width":40)", R"("width":60)"}},
     "dbo.Customers: column Name: type: nvarchar(40) -> nvarchar(60)\n"},
    {"a precision",
     {{R"("precision":9)", R"("precision":12)"}},
     "dbo.Orders: column Total: type: decimal(9,2) -> decimal(12,2)\n"},
    {"a scale",
     {{R"("precision":9,"scale":2)", R"("precision":9,"scale":4)"}},
     "dbo.Orders: column Total: type: decimal(9,2) -> decimal(9,4)\n"},
    {"an alias type",
     {{R"("type":"char")", R"("type":"char","user_type":"dbo.Code")"}},
     "dbo.Orders: column Code: alias type:  -> dbo.Code\n"},
    {"a column may be NULL",
     {{R"("type":"decimal","precision":9,"scale":2,"default")",
       R"("type":"decimal","precision":9,"scale":2,"nullable":true,"default")"},
      {R"("mssql_col_data_type":"decimal","notnull":{})", R"("mssql_col_data_type":"decimal")"}},
     "dbo.Orders: column Total: nullable: no -> yes\n"},
    {"a collation",
     {{"Latin1_General_BIN2", "Latin1_General_CS_AS"}},
     "dbo.Orders: column Code: collation: Latin1_General_BIN2 -> Latin1_General_CS_AS\n"},
    {"the collation that SQLite compares by",
     {{R"("nocase":true)", R"("nocase":false)"}},
     "dbo.Customers: column Name: form in SQLite: text (nocase, unicode, width 40) -> text (unicode, width 40)\n"},
    {"a default",
     {{R"j("default":"((0))")j", R"j("default":"((1))")j"}, {R"("expr":"0")", R"("expr":"1")"}},
     "dbo.Orders: column Total: default: ((0)) -> ((1))\n"},
    {"a default goes",
     {{R"j(,"default":"((0))")j", ""}, {R"("defval":{"expr":"0","name":"DF_Orders_Total"},)", ""}},
     "dbo.Orders: column Total: default: ((0)) -> \n"},
    {"a default that SQLite has in another way",
     {{R"("expr":"0")", R"j("expr":"(0+0)")j"}},
     "dbo.Orders: column Total: default in SQLite: 0 -> (0+0)\n"},
    {"the name of a default",
     {{"DF_Orders_Total", "DF_Amount"}},
     "dbo.Orders: column Total: name of the default: DF_Orders_Total -> DF_Amount\n"},
    {"where an identity column begins",
     {{R"("identity":["1","1"])", R"("identity":["100","1"])"}},
     "dbo.Customers: column Id: identity: 1, 1 -> 100, 1\n"},
    {"a computed column",
     {{"([Total]*(2))", "([Total]*(3))"}},
     "dbo.Orders: column Double: expression: ([Total]*(2)) -> ([Total]*(3))\n"},
    {"a generated column",
     {{R"("type":"datetime")", R"("type":"datetime","generated":1)"}},
     "dbo.Orders: column Paid: generated:  -> 1\n"},
    {"a hidden column",
     {{R"("type":"datetime")", R"("type":"datetime","hidden":true)"}},
     "dbo.Orders: column Paid: hidden: no -> yes\n"},
    {"a sparse column",
     {{R"("type":"datetime")", R"("type":"datetime","sparse":true)"}},
     "dbo.Orders: column Paid: sparse: no -> yes\n"},
    {"a column is the table's ROWGUIDCOL",
     {{R"("type":"datetime")", R"("type":"datetime","rowguidcol":true)"}},
     "dbo.Orders: column Paid: ROWGUIDCOL: no -> yes\n"},
    {"a column's description",
     {{R"("type":"datetime")", R"("type":"datetime","description":"when")"}},
     "dbo.Orders: column Paid: description:  -> when\n"},
    {"a column that SQLite leaves out",
     {{R"("5":{"name":"Paid","type":{"name":"datetime","precision":3},"mssql_col_data_type":"datetime"})",
       R"("5":{"name":"Double","type":{"name":"sint64"}})"},
      {R"({"name":"Double","type")", R"({"name":"Double","id":"5","type")"},
      {R"({"name":"Paid","id":"5")", R"({"name":"Paid")"}},
     "dbo.Orders: column Double: left out in SQLite: yes -> no\n"
     "dbo.Orders: column Paid: left out in SQLite: no -> yes\n"
     "dbo.Orders: index IX_Paid: columns: Paid DESC, Total -> Double DESC, Total\n"},
    // Keys.
    {"the columns of the primary key",
     {{R"("pk":{"name":"PK_Orders","cols":{"1":null}})", R"("pk":{"name":"PK_Orders","cols":{"1":null,"4":null}})"}},
     "dbo.Orders: primary key PK_Orders: columns: Id -> Id, Code\n"},
    {"the name of the primary key",
     {{"PK_Orders", "PK_O"}},
     "dbo.Orders: primary key PK_O: renamed from PK_Orders (guess)\n"},
    {"the primary key goes",
     {{R"("pk":{"name":"PK_Orders","cols":{"1":null}},)", ""}},
     "dbo.Orders: primary key PK_Orders: removed: (Id)\n"},
    {"the columns of a unique key",
     {{R"("UX_Code":{"4":null,"2":null})", R"("UX_Code":{"4":null})"}},
     "dbo.Orders: unique key UX_Code: columns: Code, CustomerId -> Code\n"},
    {"the order of a unique key's columns",
     {{R"("UX_Code":{"4":null,"2":null})", R"("UX_Code":{"2":null,"4":null})"}},
     "dbo.Orders: unique key UX_Code: columns: Code, CustomerId -> CustomerId, Code\n"},
    {"the name of a unique key",
     {{"UX_Code", "UQ_Code"}},
     "dbo.Orders: unique key UQ_Code: renamed from UX_Code (guess)\n"},
    {"a unique key goes",
     {{R"("uniques":{"UX_Code":{"4":null,"2":null}},)", ""}},
     "dbo.Orders: unique key UX_Code: removed: (Code, CustomerId)\n"},
    {"what a reference does on delete",
     {{R"("on_delete":"CASCADE")", R"("on_delete":"SET NULL")"}},
     "dbo.Orders: foreign key FK_Orders_Customers: on delete: CASCADE -> SET NULL\n"},
    {"what a reference does on update",
     {{R"("on_update":"NO ACTION")", R"("on_update":"CASCADE")"}},
     "dbo.Orders: foreign key FK_Orders_Customers: on update:  -> CASCADE\n"},
    {"when a reference is enforced",
     {{R"("deferred":false)", R"("deferred":true)"}},
     "dbo.Orders: foreign key FK_Orders_Customers: deferred: no -> yes\n"},
    {"the table that a reference leads to",
     {{R"("ref_tbl_id":"1")", R"("ref_tbl_id":"2")"}},
     "dbo.Orders: foreign key FK_Orders_Customers: refers to: Customers (Id) -> Orders (Id)\n"},
    {"the column that a reference leads to",
     {{R"("ref_col_id":"1")", R"("ref_col_id":"2")"}},
     "dbo.Orders: foreign key FK_Orders_Customers: refers to: Customers (Id) -> Customers (Name)\n"},
    {"a reference goes",
     {{R"(,"fk":{"name":"FK_Orders_Customers",
"ref_tbl_id":"1","ref_col_id":"1","deferred":false,"on_delete":"CASCADE","on_update":"NO ACTION"})",
       ""}},
     "dbo.Orders: foreign key FK_Orders_Customers: removed: (CustomerId), refers to Customers (Id), on delete "
     "CASCADE\n"},
    // Checks.
    {"the check of a column",
     {{"([Total]>=(0))", "([Total]>(0))"}},
     "dbo.Orders: check CK_Orders_Total: condition: ([Total]>=(0)) -> ([Total]>(0))\n"},
    {"the check of a table",
     {{"[Paid] IS NULL)", "[Paid] IS NOT NULL)"}},
     "dbo.Orders: check CK_Orders_Paid: condition: ([Total]>(0) OR [Paid] IS NULL) -> ([Total]>(0) OR [Paid] IS NOT "
     "NULL)\n"},
    {"a check goes",
     {{R"j("check":{"CK_Orders_Paid":{"expr":"([Total]>(0) OR [Paid] IS NULL)"}},)j", ""}},
     "dbo.Orders: check CK_Orders_Paid: removed: ([Total]>(0) OR [Paid] IS NULL)\n"},
    {"the name of a check",
     {{"CK_Orders_Paid", "CK_Paid"}},
     "dbo.Orders: check CK_Paid: renamed from CK_Orders_Paid (guess)\n"},
    // Indexes.
    {"the columns of an index",
     {{R"("cols":["5","3"])", R"("cols":["5","1"])"}},
     "dbo.Orders: index IX_Paid: columns: Paid DESC, Total -> Paid DESC, Id\n"},
    {"the order of an index",
     {{"[true,false]", "[false,false]"}},
     "dbo.Orders: index IX_Paid: columns: Paid DESC, Total -> Paid, Total\n"},
    {"what an index carries along",
     {{R"("included":["4","2"])", R"("included":["4","1"])"}},
     "dbo.Orders: index IX_Paid: included columns: Code, CustomerId -> Code, Id\n"},
    {"the filter of an index",
     {{"([Paid] IS NOT NULL)", "([Paid] IS NULL)"}},
     "dbo.Orders: index IX_Paid: filter: ([Paid] IS NOT NULL) -> ([Paid] IS NULL)\n"},
    {"a filter that SQLite does not have",
     {{R"j(,"where":"([Paid] IS NOT NULL)")j", ""}},
     "dbo.Orders: index IX_Paid: filter in SQLite: ([Paid] IS NOT NULL) -> \n"},
    {"a unique index",
     {{R"("name":"IX_Paid")", R"("name":"IX_Paid","unique":true)"}},
     "dbo.Orders: index IX_Paid: unique: no -> yes\n"},
    {"a clustered index",
     {{R"("name":"IX_Paid")", R"("name":"IX_Paid","clustered":true)"}},
     "dbo.Orders: index IX_Paid: clustered: no -> yes\n"},
    {"a disabled index",
     {{R"("name":"IX_Paid")", R"("name":"IX_Paid","disabled":true)"}},
     "dbo.Orders: index IX_Paid: disabled: no -> yes\n"},
    {"the kind of an index",
     {{R"("name":"IX_Paid")", R"("name":"IX_Paid","kind":"XML")"}},
     "dbo.Orders: index IX_Paid: kind:  -> XML\n"},
    {"an index that SQLite leaves out",
     {{R"("name":"IX_Paid")", R"("name":"IX_Paid","left_out":true)"}},
     "dbo.Orders: index IX_Paid: left out in SQLite: no -> yes\n"},
    {"the name of an index",
     {{"IX_Paid", "IX_Orders_Paid"}},
     "dbo.Orders: index IX_Orders_Paid: renamed from IX_Paid (guess)\n"},
    // The schema as a whole.
    {"a sequence", {{R"("start":"1")", R"("start":"100")"}}, "sequence dbo.Numbers: start: 1 -> 100\n"},
    {"a sequence of another type",
     {{R"("type":"bigint","start")", R"("type":"int","start")"}},
     "sequence dbo.Numbers: type: bigint -> int\n"},
    {"how a sequence goes on",
     {{R"("increment":"1"})", R"("increment":"2"})"}},
     "sequence dbo.Numbers: increment: 1 -> 2\n"},
    {"the collation of the database",
     {{R"("database":"Shop","collation":"Latin1_General_CI_AS")",
       R"("database":"Shop","collation":"Latin1_General_CS_AS")"}},
     "schema: collation: Latin1_General_CI_AS -> Latin1_General_CS_AS\n"},
    {"NULLs in unique keys",
     {{R"("indistinct_unique_nulls":true)", R"("indistinct_unique_nulls":false)"}},
     "schema: NULLs are equal in unique keys: yes -> no\n"},
    {"the compatibility level",
     {{R"("compat_level":1)", R"("compat_level":2)"}},
     "schema: compatibility level: 1 -> 2\n"},
};

TEST_F(CompareTest, EachChangeIsSeenAndNothingElse)
{
    for (const change_case &c : change_cases) {
        SCOPED_TRACE(c.name);
        EXPECT_EQ(compare(compared_document, changed(c.replacements)), c.expected);
        EXPECT_OK(ctx);
    }
}

// What is added one way is removed the other way, and no change is seen in one direction only.
TEST_F(CompareTest, EachChangeIsSeenBackwards)
{
    for (const change_case &c : change_cases) {
        SCOPED_TRACE(c.name);
        EXPECT_NE(compare(changed(c.replacements), compared_document), "");
        EXPECT_OK(ctx);
    }
}

struct same_case {
    const char *name;
    std::vector<std::pair<std::string, std::string>> replacements;
};

const same_case same_cases[] = {
    {"itself", {{"Orders", "Orders"}}},
    {"other transaction ids", {{R"("txid":5)", R"("txid":50)"}, {R"("txid":6,)", ""}}},
    {"other ids of tables",
     {{R"("1":{"name":"Customers")", R"("77":{"name":"Customers")"},
      {R"("2":{"name":"Orders")", R"("78":{"name":"Orders")"},
      {R"("ref_tbl_id":"1")", R"("ref_tbl_id":"77")"}}},
    {"other ids of columns",
     {{R"("5":{"name":"Paid")", R"("x":{"name":"Paid")"},
      {R"("id":"5")", R"("id":"x")"},
      {R"("cols":["5","3"])", R"("cols":["x","3"])"}}},
    {"another number of rows", {{R"("row_count":7)", R"("row_count":8)"}}},
    {"another database of another server", {{R"("database":"Shop")", R"("database":"Test")"}}},
    {"another source", {{R"("backend":{)", R"("backend":{"name":"SQL Server","api":"package",)"}}},
    {"a default in fewer parentheses", {{R"j("default":"((0))")j", R"j("default":"(0)")j"}}},
    {"a default in none, with blanks", {{R"j("default":"((0))")j", R"("default":" 0 ")"}}},
    {"a check in other spelling", {{"([Total]>=(0))", "/* at least */ total >= 0"}}},
    {"keywords in other letters", {{"OR [Paid] IS NULL)", "or Paid is null)"}}},
    {"a filter in other spelling", {{R"j("filter":"([Paid] IS NOT NULL)")j", R"("filter":"Paid is not null")"}}},
    {"an action in other letters", {{R"("on_delete":"CASCADE")", R"("on_delete":"Cascade")"}}},
    {"no action said in another way", {{R"(,"on_update":"NO ACTION")", ""}}},
    {"a reference to a primary key that is not named", {{R"("ref_col_id":"1",)", ""}}},
    {"columns that an index carries along, in another order", {{R"("included":["4","2"])", R"("included":["2","4"])"}}},
    {"flags that say nothing", {{R"("name":"IX_Paid")", R"("name":"IX_Paid","unique":false,"disabled":false)"}}},
};

TEST_F(CompareTest, WhatDoesNotCountIsNoChange)
{
    for (const same_case &c : same_cases) {
        SCOPED_TRACE(c.name);
        EXPECT_EQ(compare(compared_document, changed(c.replacements)), "");
        EXPECT_EQ(compare(changed(c.replacements), compared_document), "");
        EXPECT_OK(ctx);
    }
}

TEST_F(CompareTest, NamesThatNobodyGaveAreTheSame)
{
    const std::string by_server = changed({{"PK_Orders", "PK__Orders__3214EC07A1B2C3D4"},
                                           {"FK_Orders_Customers", "FK__Orders__Customer__0B5CAFEA"},
                                           {"UX_Code", "UQ__Orders__A25C5AA7D3C1E0F2"},
                                           {"CK_Orders_Paid", "CK__Orders__2A4B4B5E"},
                                           {"DF_Orders_Total", "DF__Orders__Total__37394015"}});
    const std::string by_import = changed({{R"("name":"PK_Orders",)", ""},
                                           {"FK_Orders_Customers", "FK_Orders_CustomerId"},
                                           {"UX_Code", "UQ_Orders_Code_CustomerId"},
                                           {"CK_Orders_Paid", "CK_Orders_Total_Paid_2"},
                                           {R"(,"name":"DF_Orders_Total")", ""}});
    EXPECT_EQ(compare(by_server, by_import), "");
    EXPECT_EQ(compare(compared_document, by_import),
              "dbo.Orders: primary key (Id): name: PK_Orders -> \n"
              "dbo.Orders: unique key UQ_Orders_Code_CustomerId: renamed from UX_Code (guess)\n"
              "dbo.Orders: foreign key FK_Orders_CustomerId: renamed from FK_Orders_Customers (guess)\n"
              "dbo.Orders: check CK_Orders_Total_Paid_2: renamed from CK_Orders_Paid (guess)\n");
}

// A check says the same whether it is a column's or the table's.
TEST_F(CompareTest, ACheckMayBeTheTables)
{
    const std::string moved = changed(
        {{R"j(,"check":[{"expr":"([Total]>=(0))","name":"CK_Orders_Total"}])j", ""},
         {R"("check":{"CK_Orders_Paid")", R"j("check":{"CK_Orders_Total":{"expr":"[Total]>=(0)"},"CK_Orders_Paid")j"}});
    EXPECT_EQ(compare(compared_document, moved), "");
}

// A document without facts about the server is compared as SQLite has its tables.
TEST_F(CompareTest, WithoutFactsSQLitesTablesAreCompared)
{
    const std::string bare = R"({"compat_level":1,"tbls":{"9":{"name":"Customers","cols":{
        "b":{"name":"Id","type":{"name":"identity","constraint_name":"PK_Customers"},"notnull":{}},
        "c":{"name":"Name","type":{"name":"text","nocase":true,"unicode":true,"width":50}}}}}})";
    EXPECT_EQ(compare(bare, compared_document).substr(0, 181),
              "schema: NULLs are equal in unique keys: no -> yes\n"
              "dbo.Customers: column Name: form in SQLite: text (nocase, unicode, width 50) -> text (nocase, unicode, "
              "width 40)\n"
              "dbo.Orders: added\n");
}

TEST_F(CompareTest, IdsDecideWhenTheyAreAskedTo)
{
    const std::string other_ids = changed({{R"("3":{"name":"Total")", R"("30":{"name":"Total")"},
                                           {R"("id":"3")", R"("id":"30")"},
                                           {R"("cols":["5","3"])", R"("cols":["5","30"])"}});
    tov_client_compare_options options = {};
    options.by_id = 1;
    EXPECT_NE(compare(compared_document, other_ids, options).find("column Total: removed"), std::string::npos);
    const std::string renamed = changed({{R"("name":"Total")", R"("name":"Amount")"}, {"[Total]", "[Amount]"}});
    EXPECT_EQ(compare(compared_document, renamed, options), "dbo.Orders: column Amount: renamed from Total\n");
}

struct rename_case {
    const char *name;
    const char *rename;
    const char *expected;
};

TEST_F(CompareTest, OptionsDecideWhatWasRenamed)
{
    // Another name and another type: nobody would guess it.
    const std::string amount = changed({{R"("name":"Total","type":{"name":"decimal","precision":9)",
                                         R"("name":"Amount","type":{"name":"decimal","precision":12)"},
                                        {R"("name":"Total","id":"3","type":"decimal","precision":9)",
                                         R"("name":"Amount","id":"3","type":"decimal","precision":12)"},
                                        {"[Total]", "[Amount]"}});
    const rename_case cases[] = {
        {"a column", "dbo.Orders.Total=Amount",
         "dbo.Orders: column Amount: renamed from Total\n"
         "dbo.Orders: column Amount: type: decimal(9,2) -> decimal(12,2)\n"},
        {"names in SQLite, the new one whole", "orders.total=Orders.Amount",
         "dbo.Orders: column Amount: renamed from Total\n"
         "dbo.Orders: column Amount: type: decimal(9,2) -> decimal(12,2)\n"},
    };
    for (const rename_case &c : cases) {
        SCOPED_TRACE(c.name);
        EXPECT_EQ(compare(compared_document, amount, {0, &c.rename, 1}), c.expected);
    }
    const char *not_renamed = "dbo.Orders.Total=";
    const std::string guessed = changed({{R"("name":"Total")", R"("name":"Amount")"}, {"[Total]", "[Amount]"}});
    EXPECT_NE(compare(compared_document, guessed, {0, &not_renamed, 1}).find("column Total: removed"),
              std::string::npos);
    const char *tbl = "Customers=Clients";
    const std::string clients = changed({{R"("name":"Customers","description")", R"("name":"Clients","description")"},
                                         {R"("1":{"name":"Customers")", R"("41":{"name":"Clients")"},
                                         {R"("ref_tbl_id":"1")", R"("ref_tbl_id":"41")"},
                                         {R"({"name":"Name","id":"2")", R"({"name":"FullName","id":"2")"},
                                         {R"("2":{"name":"Name")", R"("2":{"name":"FullName")"}});
    EXPECT_EQ(compare(compared_document, clients, {0, &tbl, 1}),
              "dbo.Clients: renamed from dbo.Customers\ndbo.Clients: column FullName: renamed from Name (guess)\n");
}

struct failure_case {
    const char *name;
    const char *rename;
    uint64_t code;
    const char *description;
};

TEST_F(CompareTest, OptionsThatNameNothingFail)
{
    const failure_case cases[] = {
        {"no such table", "Nothing=Customers", KT_ERR_NOT_FOUND,
         "there is no table or column 'Nothing' in the old schema"},
        {"no such new table", "Customers=Nothing", KT_ERR_NOT_FOUND, "there is no table 'Nothing' in the new schema"},
        {"no such new column", "Customers.Name=Nothing", KT_ERR_NOT_FOUND,
         "there is no column 'Nothing' in the new table dbo.Customers"},
        {"not OLD=NEW", "Customers", KT_ERR_UNEXPECTED_VALUE, "'Customers' is not OLD=NEW"},
    };
    for (const failure_case &c : cases) {
        SCOPED_TRACE(c.name);
        EXPECT_EQ(compare(compared_document, compared_document, {0, &c.rename, 1}), "");
        EXPECT_EQ(KT_context__err_code(ctx), c.code);
        EXPECT_STREQ(KT_context__err_description(ctx), c.description);
        KT_context__err_reset(ctx);
    }
}

TEST_F(CompareTest, ADocumentOfAnotherShapeFails)
{
    EXPECT_EQ(compare(compared_document, R"({"compat_level":1,"tbls":[]})"), "");
    EXPECT_TRUE(KT_context__has_err(ctx));
    KT_context__err_reset(ctx);
}

TEST_F(CompareTest, EveryAllocationMayFail)
{
    tov_schema *old_schema = nullptr;
    tov_schema *new_schema = nullptr;
    tov_schema__from_json(ctx, compared_document.c_str(), &old_schema);
    tov_schema__from_json(ctx, changed({{R"("name":"Total")", R"("name":"Amount")"}}).c_str(), &new_schema);
    for (kt_failing_alloc fault; fault.next(); KT_context__err_reset(ctx)) {
        KT_vhash *changes = nullptr;
        tov_client__compare(ctx, old_schema, new_schema, nullptr, &changes);
        if (!fault.fired()) {
            EXPECT_OK(ctx);
            KT_vhash__free(ctx, changes);
            break;
        }
        EXPECT_FAILED(ctx, KT_ERR_OUT_OF_MEMORY);
        EXPECT_EQ(changes, nullptr);
    }
    tov_schema__nullfree(ctx, &old_schema);
    tov_schema__nullfree(ctx, &new_schema);
}

} // namespace
