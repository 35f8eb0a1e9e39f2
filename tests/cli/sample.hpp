// Small inputs for the command's tests.
#pragma once

#include <string>

// An export of two tables: Customers (identity key, nvarchar, default) and Orders (decimal, reference, a default that
// does not carry over).
inline const std::string sample_catalogue = R"json({
"format":"sqlserver-catalogue","format_version":1,"database":{"name":"Shop","can_view_definitions":true},
"tables":[
{"id":101,"schema":"dbo","name":"Customers","columns":[
{"id":1,"name":"CustomerId","system_type_id":56,"system_type":"int","user_type":"int","max_length":4,"precision":10,
"scale":0,"is_nullable":false,"is_identity":true,"identity":{"seed":"1","increment":"1"}},
{"id":2,"name":"Name","system_type_id":231,"system_type":"nvarchar","user_type":"nvarchar","max_length":80,
"precision":0,"scale":0,"collation":"Latin1_General_CI_AS","comparison_style":196609,"is_nullable":false,
"default":{"kind":"constraint","id":1,"name":"DF_Name","definition":"(N'nobody')"}}],
"pk":{"name":"PK_Customers","columns":[{"name":"CustomerId"}]}},
{"id":102,"schema":"dbo","name":"Orders","columns":[
{"id":1,"name":"OrderId","system_type_id":56,"system_type":"int","user_type":"int","max_length":4,"precision":10,
"scale":0,"is_nullable":false,"is_identity":true,"identity":{"seed":"1","increment":"1"}},
{"id":2,"name":"CustomerId","system_type_id":56,"system_type":"int","user_type":"int","max_length":4,"precision":10,
"scale":0,"is_nullable":true},
{"id":3,"name":"Total","system_type_id":106,"system_type":"decimal","user_type":"decimal","max_length":9,
"precision":9,"scale":2,"is_nullable":true},
{"id":4,"name":"Placed","system_type_id":61,"system_type":"datetime","user_type":"datetime","max_length":8,
"precision":23,"scale":3,"is_nullable":true,
"default":{"kind":"constraint","id":2,"name":"DF_Placed","definition":"([dbo].[f]())"}}],
"pk":{"name":"PK_Orders","columns":[{"name":"OrderId"}]},
"fks":[{"name":"FK_Orders_Customers","id":201,"ref_table_id":101,"ref_schema":"dbo","ref_table":"Customers",
"ref_key":"PK_Customers","on_delete":"CASCADE","on_update":"NO_ACTION",
"columns":[{"column":"CustomerId","ref_column":"CustomerId"}]}]}
]})json";

// A schema as the module writes it: Parents with an identity column, Children that refer to them.
inline const std::string sample_schema = R"json({"compat_level":1,"tbls":{
"t1":{"name":"Parents","txid":5,"cols":{
"id":{"name":"Id","type":{"name":"identity"},"mssql_col_data_type":"int"},
"title":{"name":"Title","type":{"name":"text","fixed_width":false,"nocase":true,"width":20},
"mssql_col_data_type":"nvarchar","notnull":{}}},"pk":{"name":"PK","cols":{"id":null}}},
"t2":{"name":"Children","txid":7,"cols":{
"k":{"name":"K","type":{"name":"sint32"},"mssql_col_data_type":"int"},
"p":{"name":"ParentId","type":{"name":"sint32"},"mssql_col_data_type":"int","fk":{"name":"FK_P","ref_tbl_id":"t1",
"ref_col_id":"id","deferred":false,"on_delete":"CASCADE","on_update":"NO ACTION"}}},
"pk":{"name":"PK2","cols":{"k":null}}}}})json";
