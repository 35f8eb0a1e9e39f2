CREATE TABLE Rows(Id INTEGER PRIMARY KEY, Name AS (abs(Price)), Price, Born AS (randomblob(9)), Bytes AS (zeroblob(Id)) STORED, Number REAL CHECK(Number > 0));
INSERT INTO Rows(Id, Price, Number) VALUES(1, -9223372036854775808, 1);
INSERT INTO Rows(Id, Price, Number) VALUES(5, 7, 9);
