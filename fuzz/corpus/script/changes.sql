create table T (A int)
go
alter table T add B int not null constraint D default 5, C as A + 1
alter table T alter column A bigint not null
alter table T with nocheck add constraint CK check (A > 0), constraint PK primary key (A)
alter table T nocheck constraint all alter table T with check check constraint CK
create unique nonclustered index U on T (A asc) include (B) where B is not null with (drop_existing = off)
alter index U on T disable drop index U on T
alter table T drop constraint D, column B
exec sp_rename 'T', 'S' exec sp_rename 'S.A', 'Id', 'COLUMN'
alter schema other transfer dbo.S
GO 2
