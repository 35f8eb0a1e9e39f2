#!/usr/bin/env bash
# The sample package comes whole into a database: each row of each table, and the values as they were written.
#
# sample_test.sh COMMAND PACKAGE
set -euo pipefail

command=$1
package=$2

work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
cd "$work"

fail()
{
    echo "$1" >&2
    exit 1
}

if ! "$command" convert "$package" shop.db --views --rejects rejects >summary 2>findings; then
    cat summary findings >&2
    exit 1
fi
[[ -z $(ls -A rejects 2>/dev/null) ]] || fail "rows were rejected: $(ls rejects)"
[[ $(sqlite3 shop.db "PRAGMA integrity_check; PRAGMA foreign_key_check") == ok ]] || fail "the database is not sound"

# Read, loaded, rejected, shortened: a few dozen rows of each of twelve tables, all of them loaded.
tables=0
total=0
while read -r table rows loaded rejected shortened _; do
    [[ $table != table && $table != total ]] || continue
    ((rows >= 24 && loaded == rows && rejected == 0 && shortened == 0)) || fail "not all rows of $table: $loaded of $rows"
    [[ $(sqlite3 shop.db "SELECT count(*) FROM \"$table\"") == "$rows" ]] || fail "$table has other rows than were read"
    tables=$((tables + 1))
    total=$((total + rows))
done <summary
((tables == 12)) || fail "$tables tables"
origin=$(python3 -c 'import sys, zipfile; print(zipfile.ZipFile(sys.argv[1]).read("Origin.xml").decode())' "$package")
[[ $origin == *"<TableRowCountTotalTag>$total<"* ]] || fail "the package says that it has other than $total rows"

# value QUERY EXPECTED
value()
{
    local found
    found=$(sqlite3 -nullvalue NULL shop.db "$1")
    [[ $found == "$2" ]] || fail "$1: $found, not $2"
}

value "SELECT * FROM Countries WHERE Code IN ('DE', 'TF')" "DE|Germany|49
TF|French Southern Territories|NULL"
value "SELECT CategoryId, ParentId, Name, SortOrder, hex(Place) FROM Categories WHERE CategoryId IN (1, 6)" \
    "1|NULL|Tea|10|58
6|1|Herbal tea|5|5C60"
value "SELECT CustomerNo, Name, Kind, CreditLimit, Discount, IsActive, Since, Portrait, Remarks FROM v_Customers
    WHERE CustomerId = 7" \
    "C-10007|Hotel Alpenblick AG|C|2500.0000|0.05|1|2019-05-16|NULL|Rings first.
Pays by invoice."
value "SELECT Email, v.RowGuid, hex(c.RowGuid) FROM v_Customers AS v JOIN Customers AS c USING (CustomerId, Email)
    WHERE CustomerId = 1" \
    "customer1@example.org|C31F1DD3-CA37-52C2-AAF4-2647DA83353D|D31D1FC337CAC252AAF42647DA83353D"
value "SELECT Email FROM Customers WHERE CustomerId = 30" NULL
value "SELECT Sku, Name, Price, Cost, Weight, Colour, Discontinued, Manual, hex(Changed) FROM v_Products
    WHERE ProductId IN (103, 128, 129)" \
    "BL-00103|Assam Broken|19.7500|11.4550|1.0|none|1|NULL|0000000000000837
GL-00128|Tea glass|6.2500|3.6250|NULL|clear|0|NULL|0000000000000850
GR-00129|Conical grinder|129.0000|74.8200|2.85|black|0|<manual><title>Conical grinder</title></manual>|0000000000000851"
value "SELECT Price, typeof(Price) FROM Products WHERE ProductId = 101" "385000|integer"
value "SELECT ValidFrom, Price, SetBy, SetAt FROM v_ProductPrices WHERE ProductId = 101" \
    "2023-01-01 00:00:00.000|36.9600|NULL|2022-12-15 08:41:12.347
2024-01-01 00:00:00.000|38.5000|Eva|2023-12-15 08:41:12.347"
value "SELECT Phone, Rating, OpensAt, Terms, DailyFee, ContractFrom FROM v_Suppliers WHERE SupplierId IN (3, 5)" \
    "+86 221 43931|1|07:30:00|40 days net, 2 % within a week|1.0000|2015-07-03 09:30:00
+886 235 45885|3|09:30:00|NULL|1.5000|NULL"
value "SELECT WarehouseId, hex(Location), OpenedOn, ClosedOn FROM v_Warehouses WHERE Name IN ('Hamburg', 'Bremen')" \
    "CC6B2A06-16B0-5E60-8F32-EFEE1A93CA64|E6100000010C0AD7A3703D8A4A409A99999999992140|2011-08-14|2019-08-14
731DE497-C866-5B7B-BEF8-7BDA2697C58A|E6100000010C6666666666C64A407B14AE47E1FA2340|2009-04-01|NULL"
value "SELECT Quantity, Reserved, Shelf, CountedAt, hex(Seal) FROM v_Stock WHERE ProductId = 102" \
    "29|4|B-01  |2024-02-29 06:41:00|00000000000000000000000000000000
29|4|A-01  |2024-02-29 06:41:00|00000000000000000000000000000000"
value "SELECT OrderNo, PlacedAt, RequiredBy, Status, Total, ParentOrderId FROM \"v_sales.Orders\" WHERE OrderId IN (6, 31)" \
    "2024-00006|2024-03-07 16:57:10.288|2024-03-21|S|39.0000|NULL
2024-00031|2024-04-03 09:22:14.613|NULL|S|253.6800|1"
value "SELECT LineNumber, WarehouseId, Quantity, UnitPrice, Discount FROM \"v_sales.OrderLines\" WHERE OrderId = 40" \
    "1|NULL|2.000|9.5000|0.0500
2|NULL|0.750|38.5000|0.0500"
value "SELECT Parcels, SentAt FROM \"v_sales.Shipments\" WHERE ShipmentId = 1" \
    "2|2024-03-03 13:52:09.4242340"
value "SELECT Quantity, length(Label) FROM \"v_sales.ShipmentLines\" WHERE OrderId = 1" \
    "0.750|16
4.000|NULL"
