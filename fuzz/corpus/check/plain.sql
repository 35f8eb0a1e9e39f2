CREATE TABLE Rows(Id INTEGER PRIMARY KEY, Name TEXT, Code TEXT, Price INTEGER, At TEXT, Born TEXT, Clock TEXT, Bytes BLOB, Guid BLOB, Flag INTEGER, Number REAL, Parent INTEGER);
CREATE TABLE Others(K TEXT, V TEXT);
INSERT INTO Rows VALUES(1, 'abc', 'A  ', 1250, '2013-07-01 12:30:45.263', '2013-07-01', '07:00:00.0000000', x'0A1B', zeroblob(16), 1, 0.5, NULL), (2, 'ABC ', 'A', -9223372036854775808, '2013-02-30 12:30:45.263', '2013-02-30', '23:59:59.9999999', x'0A1B0A1B0A', x'00', 2, 9e999, 7), (40000, NULL, 'Я', 1e3, x'00', '', 'x', 'y', 5, 'z', 'q', 'r');
INSERT INTO Others VALUES('a', 'A'), ('A ', NULL), (NULL, 'x'), ('abcdefghijkl', 'y');
