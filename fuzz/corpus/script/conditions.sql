if object_id('T') is null create table T (A int) else drop table T
if not exists (select * from sys.columns c join sys.tables t on t.object_id = c.object_id where t.name = 'T' and c.name = 'B')
begin alter table T add B int end
if exists (select * from dbo.sysobjects where id = object_id(N'[dbo].[X]') and objectproperty(id, N'IsUserTable') = 1) drop table X
if col_length('T', 'C') is null and (1 = 1 or not 2 < 1) exec('alter table T add C int')
begin try select 1 as x into G end try begin catch throw end catch
while @n < 3 begin set @n = case when 1 = 1 then 2 end end
