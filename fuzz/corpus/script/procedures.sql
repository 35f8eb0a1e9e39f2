create default Z as 0
go
create rule R as @v > 0
go
exec sp_addtype Flag, 'bit', 'not null'
create type Code from nvarchar(10) null
create table T (A Flag, B Code collate Latin1_General_CI_AS, C xml(CONTENT dbo.S) sparse)
exec sp_bindefault 'Z', 'Flag' exec sp_bindrule 'R', 'dbo.T.B'
exec sys.sp_addextendedproperty @name = N'MS_Description', @value = N'it''s', @level0type = 'SCHEMA', @level0name = 'dbo', @level1type = 'TABLE', @level1name = 'T'
execute sp_executesql @stmt = N'create sequence N as bigint start with 1 increment by 1'
create procedure P as create table X (A int)
