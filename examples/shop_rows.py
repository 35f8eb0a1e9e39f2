"""The rows of the sample business, a shop for tea, coffee and what one needs to make them.

Names and prices are listed; the rest is counted out, so that every run gives the same rows. Each function gives the
rows of a table in the order of its columns, without those that the server computes.
"""
import struct
import uuid
from datetime import date, datetime, time, timedelta
from decimal import Decimal

CENT = Decimal("0.01")

COUNTRIES = """AT Austria 43|AU Australia 61|BE Belgium 32|BR Brazil 55|CH Switzerland 41|CN China 86|CO Colombia 57
CZ Czechia 420|DE Germany 49|DK Denmark 45|ET Ethiopia 251|FR France 33|GB United Kingdom 44|ID Indonesia 62
IN India 91|IT Italy 39|JP Japan 81|KE Kenya 254|LK Sri Lanka 94|NL Netherlands 31|NP Nepal 977|PL Poland 48
SE Sweden 46|TF French Southern Territories -|TW Taiwan 886|VN Vietnam 84"""

CATEGORIES = {
    "Tea": ["Black tea", "Green tea", "Oolong", "White tea", "Herbal tea", "Rooibos"],
    "Coffee": ["Espresso", "Filter coffee", "Decaffeinated", "Raw beans"],
    "Pots and cups": ["Teapots", "Coffee pots", "Cups", "Glasses"],
    "Tools": ["Grinders", "Scales", "Kettles", "Filters"],
    "Sweet things": ["Honey", "Sugar", "Biscuits"],
}

SUPPLIERS = """IN Darjeeling Gardens|LK Nuwara Estates|CN Huangshan Leaf|JP Uji Chaen|TW Alishan Oolong
KE Kericho Tea|NP Ilam Hills|ET Yirgacheffe Union|CO Finca La Loma|BR Fazenda Boa Vista|VN Dalat Beans
ID Gayo Highland|IT Macinatori Rossi|DE Töpferei Möller|DE Glashütte Süd|PL Ceramika Bolesław|CZ Porcelán Dubí
DK Kedel & Søn|NL Van Dijk Filters|SE Biodlarna|FR Biscuiterie Rivière|BE Suikerhuis|GB Kettleworks
CH Waagen Zürcher"""

# City, latitude, longitude.
WAREHOUSES = """Hamburg 53.55 9.99|Berlin 52.52 13.41|Köln 50.94 6.96|München 48.14 11.58|Leipzig 51.34 12.37
Bremen 53.08 8.80|Dresden 51.05 13.74|Nürnberg 49.45 11.08|Wien 48.21 16.37|Graz 47.07 15.44|Zürich 47.37 8.54
Basel 47.56 7.59|Antwerpen 51.22 4.40|Rotterdam 51.92 4.48|Utrecht 52.09 5.12|Lyon 45.76 4.84|Lille 50.63 3.07
København 55.68 12.57|Malmö 55.60 13.00|Poznań 52.41 16.93|Wrocław 51.11 17.04|Brno 49.20 16.61|Torino 45.07 7.69
Leeds 53.80 -1.55"""

# Category, price, weight in kilograms or -, colour, name; loose goods are sold by the kilogram.
PRODUCTS = """Black tea,38.5000,1,none,Darjeeling First Flush|Black tea,24.9000,1,none,Ceylon Orange Pekoe
Black tea,19.7500,1,none,Assam Broken|Black tea,28.4000,1,none,Earl Grey|Green tea,52.0000,1,none,Sencha Uji
Green tea,31.2000,1,none,Gunpowder|Green tea,118.0000,1,green,Matcha, ceremonial
Oolong,74.8000,1,none,Alishan High Mountain|Oolong,41.6000,1,none,Tie Guan Yin|White tea,66.0000,1,none,Pai Mu Tan
Herbal tea,14.3000,1,none,Peppermint|Herbal tea,16.8000,1,none,Camomile flowers
Rooibos,17.2500,1,red,Rooibos natural|Rooibos,19.9000,1,red,Rooibos vanilla|Espresso,27.8000,1,brown,Espresso Napoli
Espresso,31.5000,1,brown,Espresso Crema|Filter coffee,29.9000,1,brown,Yirgacheffe washed
Filter coffee,26.4000,1,brown,Finca La Loma|Decaffeinated,28.9000,1,brown,Gayo decaffeinated
Raw beans,12.9500,1,green,Dalat green beans|Teapots,44.9500,0.82,white,Teapot "Dubí", 1.2 l
Teapots,69.0000,1.46,black,Cast-iron pot, 0.8 l|Teapots,32.5000,0.54,clear,Glass teapot, 1 l
Coffee pots,24.9900,0.41,silver,Moka pot, 6 cups|Coffee pots,36.0000,0.63,clear,French press, 1 l
Cups,7.9500,0.21,blue,Cup "Bolesław"|Cups,9.5000,0.19,white,Espresso cup|Glasses,6.2500,-,clear,Tea glass
Grinders,129.0000,2.85,black,Conical grinder|Grinders,58.0000,0.71,silver,Hand grinder
Scales,42.5000,0.33,black,Brewing scale|Kettles,89.9000,1.12,silver,Gooseneck kettle
Filters,4.4900,0.105,white,Paper filters, 100|Filters,5.9500,-,none,Cotton filter
Honey,8.7500,0.5,yellow,Heather honey|Sugar,3.9500,0.5,brown,Rock sugar|Biscuits,6.4000,0.25,none,Shortbread"""

CUSTOMERS = """SE Anna Bergström|AT Teehaus Wiesner KG|NL Jan de Vries|DE Café Nordlicht GmbH|FR Marie Lefèvre
PL Piotr Wójcik|CH Hotel Alpenblick AG|DK Sofie Jørgensen|DE Bäckerei Krüger KG|IT Luca Ferrari|CZ Eva Nováková
GB Tom O'Brien|DE Kontor 17 GmbH|AT Ines Hofer|FR Salon de thé Marceau|SE Lars Nyström|CZ Kavárna Slavia
DE Hanna Schäfer|DE Bistro "Am Markt"|CH Elisabeth Meier|BE Bart Peeters|PL Herbaciarnia Lipa|DE Jonas Weiß
IT Giulia Conti|DK Ole Madsen|FR Claire Dubois|DE Rösterei Blum GmbH|PL Nina Kowalska|AT Felix Huber|GB Tea & Co Ltd"""


def listed(text):
    return text.replace("\n", "|").split("|")


def guid(*words):
    return uuid.uuid5(uuid.NAMESPACE_URL, "shop/" + "/".join(map(str, words)))


def place(*steps):
    """A hierarchyid of steps from 1 to 7."""
    bits = "".join(f"01{step:02b}1" if step < 4 else f"100{step - 4:02b}1" for step in steps)
    bits += "0" * (-len(bits) % 8)
    return int(bits, 2).to_bytes(len(bits) // 8, "big")


def point(latitude, longitude):
    """A geography point of WGS 84."""
    return struct.pack("<iBBdd", 4326, 1, 0x0C, latitude, longitude)


def categories():
    rows = []
    for top, (name, parts) in enumerate(CATEGORIES.items(), 1):
        parent = len(rows) + 1
        rows.append((parent, None, name, 10 * top, place(top)))
        for nth, part in enumerate(parts, 1):
            rows.append((len(rows) + 1, parent, part, nth if nth < 6 else -1, place(top, nth)))
    return rows


def countries():
    rows = []
    for line in listed(COUNTRIES):
        code, rest = line.split(" ", 1)
        name, prefix = rest.rsplit(" ", 1)
        rows.append((code, name, None if prefix == "-" else int(prefix)))
    return rows


def warehouses():
    rows = []
    for n, line in enumerate(listed(WAREHOUSES)):
        city, latitude, longitude = line.split()
        opened = date(2009, 4, 1) + timedelta(days=173 * n)
        closed = opened + timedelta(days=2922) if n % 8 == 5 else None
        location = point(float(latitude), float(longitude))
        rows.append((guid("warehouse", city), city, location, None, opened, closed, None))
    return rows


def suppliers():
    rows = []
    for n, line in enumerate(listed(SUPPLIERS), 1):
        country, name = line.split(" ", 1)
        phone = f"+{dict((row[0], row[2]) for row in countries())[country]} {200 + 7 * n} {41000 + 977 * n}"
        terms = None if n % 3 else f"{10 * (1 + n % 4)} days net, 2 % within a week"
        contract = datetime(2015, 1, 1, 9, 30) + timedelta(days=61 * n) if n % 5 else None
        opens = time(7 + n % 3, 30 * (n % 2))
        fee = Decimal(n % 9 + 1) / 4
        rows.append((n, name, country, phone if n % 4 else None, 1 + (n + 2) % 5, opens, terms, fee, contract))
    return rows


def products():
    ids = {row[2]: row[0] for row in categories()}
    rows = []
    for n, line in enumerate(listed(PRODUCTS), 101):
        category, price, weight, colour, name = line.split(",", 4)
        price = Decimal(price)
        cost = (price * Decimal("0.58")).quantize(Decimal("0.0001")) if n % 6 else None
        sku = f"{category[:2].upper()}-{n:05}"
        manual = f"<manual><title>{name}</title></manual>" if category in ("Grinders", "Scales", "Kettles") else None
        supplier = 1 + (n - 101) * 24 // 37 if n % 9 else None
        rows.append(
            (n, sku, name, ids[category], supplier, n + 1 if n == 103 else None, price, cost,
             None if weight == "-" else float(weight), colour, n == 103, None, manual,
             f"{name}: {category.lower()}" if n % 4 else "", (2000 + n).to_bytes(8, "big"))
        )
    return rows


def customers():
    domains = ("example.com", "example.org", "example.net")
    rows = []
    for n, line in enumerate(listed(CUSTOMERS), 1):
        country, name = line.split(" ", 1)
        email = f"customer{n}@{domains[n % 3]}"
        is_company = name.endswith((" KG", " GmbH", " AG", " Ltd"))
        rows.append(
            (n, f"C-{10000 + n}", name, email if n % 30 else None, country, "C" if is_company else "P",
             Decimal(2500 if is_company else 250), 0.05 if is_company else 0.0, n % 11 != 0,
             date(2018, 2, 1) + timedelta(days=67 * n), None, None if n % 7 else "Rings first.\nPays by invoice.",
             guid("customer", n))
        )
    return rows


def prices():
    rows = []
    for product in products():
        for year in (2023, 2024):
            price = (product[6] * (Decimal("0.96") if year == 2023 else 1)).quantize(CENT)
            set_at = datetime(year - 1, 12, 15, 8, product[0] % 60, 12, 347000)
            rows.append((product[0], datetime(year, 1, 1), price, "Eva" if year == 2024 else None, set_at))
    return rows


def stock():
    places = [row[0] for row in warehouses() if row[5] is None]
    rows = []
    for n, product in enumerate(products()):
        for nth in (n % len(places), (n + 7) % len(places)):
            quantity = 12 + n * 17 % 140
            counted = datetime(2024, 2, 29, 6, 30) + timedelta(minutes=11 * n) if n % 5 else None
            shelf = f"{'ABCD'[nth % 4]}-{n:02}" if n % 6 else None
            seal = guid("seal", n, nth).bytes if n % 4 == 0 else bytes(16)
            rows.append((places[nth], product[0], quantity, quantity // 6, shelf, counted, seal))
    return rows


def order_lines():
    places = {}
    for row in stock():
        places.setdefault(row[1], row[0])
    rows = []
    for order in range(1, 41):
        for line in range(1, 2 + order % 3):
            product = products()[(order * 5 + line * 11) % 37]
            is_loose = product[8] == 1
            quantity = Decimal(1 + (order + line) % 5) / (4 if is_loose else 1)
            discount = Decimal("0.05") if order % 8 == 0 else Decimal(0)
            warehouse = None if order > 36 else places[product[0]]
            rows.append((order, line, product[0], warehouse, quantity, product[6], discount))
    return rows


def orders():
    rows = []
    lines = order_lines()
    for n in range(1, 41):
        placed = datetime(2024, 3, 1, 7, 15, 9, 250000) + timedelta(days=n, minutes=97 * n, milliseconds=173 * n)
        total = sum((row[4] * row[5] * (1 - row[6]) for row in lines if row[0] == n), Decimal(0)).quantize(CENT)
        required = placed.date() + timedelta(days=14) if n % 3 == 0 else None
        status = "N" if n > 36 else "P" if n > 32 else "S"
        parent = n - 30 if n in (31, 37) else None
        rows.append((n, f"2024-{n:05}", 1 + n * 7 % 30, placed, required, status, "EUR", total, parent))
    return rows


def shipments():
    rows = []
    for order in orders():
        if order[5] == "S":
            sent = order[3] + timedelta(days=1, hours=5, microseconds=1234)
            seen = sent + timedelta(days=2) if order[0] % 2 else None
            carrier = ("Parcel Post", "Nordkurier", "Radbote")[order[0] % 3]
            rows.append((f"S24-{order[0]:06}", order[0], order[0], carrier, 1 + order[0] % 3, sent, seen))
    return rows


def shipment_lines():
    shipped = {row[2]: row[0] for row in shipments()}
    return [
        (shipped[row[0]], row[0], row[1], row[4], guid("label", *row[:2]).bytes if row[1] == 1 else None)
        for row in order_lines()
        if row[0] in shipped
    ]


def rows_of_shop():
    return {
        "dbo.Categories": categories(),
        "dbo.Countries": countries(),
        "dbo.Customers": customers(),
        "dbo.ProductPrices": prices(),
        "dbo.Products": products(),
        "dbo.Stock": stock(),
        "dbo.Suppliers": suppliers(),
        "dbo.Warehouses": warehouses(),
        "sales.OrderLines": order_lines(),
        "sales.Orders": orders(),
        "sales.ShipmentLines": shipment_lines(),
        "sales.Shipments": shipments(),
    }
