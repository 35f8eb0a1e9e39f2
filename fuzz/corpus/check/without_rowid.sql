CREATE TABLE Rows(Name TEXT COLLATE NOCASE, Price, Code AS (Name || Price), "a""b" PRIMARY KEY) WITHOUT ROWID;
CREATE TABLE Others(K, V, rowid, oid, _rowid_);
INSERT INTO Rows VALUES('x', -9223372036854775808, 1), ('y', 7, 2), ('y', 7, 'it''s');
INSERT INTO Others VALUES('x', 1, 2, 3, 4), ('x', x'00', 2, 3, 4);
