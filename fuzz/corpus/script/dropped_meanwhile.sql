create table T (A int)
go
alter table T add B Code
%%
create type Code from int
go
drop table T
