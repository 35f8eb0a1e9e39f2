create table dbo.[Order Details] (Id int identity(1,1) not null primary key, Code nvarchar(20) not null default N'x' unique,
  Price decimal(9, 2) null check (Price >= 0 and Price < 1000), Parent int references Parents on delete cascade,
  Total as (Price * 2) persisted, index IX_Code (Code desc) where Code is not null, constraint CK check (Code in ('a', 'b')))
create table Parents (Id int not null constraint PK_Parents primary key clustered with (fillfactor = 90) on [PRIMARY])
