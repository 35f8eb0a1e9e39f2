#!/usr/bin/env python3
"""Opens reports in a real browser and uses them as a person does.

report_test.py COMMAND SOURCE_FOLDER BROWSER
"""
import json
import os
import subprocess
import sys
import tempfile
import unittest

from browser import Browser

COMMAND, SOURCE, PROGRAM = sys.argv[1:4]
MARKUP = "<img src=x onerror=alert(1)></script><script>alert(2)</script>"


def column(name, number, references=""):
    return '"%d":{"name":%s,"type":{"name":"sint32"},"notnull":{}%s}' % (number, json.dumps(name), references)


def schema_of(count):
    """Tables that each refer to the one before and to the first; every tenth has a schema of its own."""
    tables = []
    for n in range(count):
        cols = [column("Id", 1)]
        for number, target in enumerate(sorted({0, n - 1} if n else ()), 2):
            fk = ',"fk":{"ref_tbl_id":"%d","ref_col_id":"1","deferred":true}' % target
            cols.append(column("To%d" % target, number, fk))
        cols += [column("Col%d" % number, number) for number in range(10, 20)]
        tables.append('"%d":{"name":"T%04d","cols":{%s},"pk":{"name":"PK","cols":{"1":null}},"server":{"schema":"s%d",'
                      '"name":"T%04d","cols":[]}}' % (n, n, ",".join(cols), n % 10, n))
    return '{"compat_level":1,"tbls":{%s}}' % ",".join(tables)


def markup_schema():
    name = json.dumps(MARKUP)
    return ('{"compat_level":1,"server":{"version":1,"database":%s},"tbls":{"1":{"name":%s,"cols":{"1":{"name":%s,'
            '"type":{"name":"sint32"},"check":[{"name":%s,"expr":"(1<2)"}],"fk":{"name":%s,"ref_tbl_id":"2",'
            '"ref_col_id":"1","deferred":true}}},"server":{"schema":%s,"name":%s,"description":%s,"cols":[{"name":%s,'
            '"id":"1","type":"int","description":%s}],"indexes":[{"name":%s,"cols":["1"]}]}},"2":{"name":"Other",'
            '"cols":{"1":{"name":"Id","type":{"name":"sint32"},"notnull":{}}},"pk":{"name":null,"cols":{"1":null}}}}}'
            ) % ((name,) * 11)


class ReportTest(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.folder = tempfile.TemporaryDirectory()
        cls.browser = Browser(PROGRAM).__enter__()
        cls.shop = cls.report("shop", os.path.join(SOURCE, "examples/shop.json"))

    @classmethod
    def tearDownClass(cls):
        cls.browser.__exit__()
        cls.folder.cleanup()

    def setUp(self):
        self.browser.messages.clear()

    def tearDown(self):
        self.assertEqual(self.browser.messages, [], "the console stays empty")

    @classmethod
    def report(cls, name, source, *options):
        page = os.path.join(cls.folder.name, name + ".html")
        subprocess.run([COMMAND, "report", source, "-o", page, *options], check=True)
        return page

    @classmethod
    def report_of(cls, name, schema):
        path = os.path.join(cls.folder.name, name + ".json")
        with open(path, "w", encoding="utf-8") as file:
            file.write(schema)
        return cls.report(name, path)

    def texts(self, selector):
        return self.browser.run("[...document.querySelectorAll(%s)].map((e) => e.textContent)" % json.dumps(selector))

    def heading(self):
        return self.texts("main h2")[0]

    def test_says_what_is_in_the_schema(self):
        self.browser.open(self.shop)
        self.assertEqual(self.texts("h1"), ["Shop"])
        self.assertIn("12 tables · 94 columns · 17 references · 20 findings", self.texts("#summary")[0])
        self.assertEqual(self.heading(), "Overview")
        self.assertEqual(len(self.texts("main tbody tr")), 12)
        self.assertIn("Whoever orders, private or company", self.texts("main td .text"))

    def test_search_finds_tables_columns_and_descriptions(self):
        self.browser.open(self.shop)
        self.browser.press("/", 191, "/")
        self.browser.type("ship")
        self.assertEqual(self.texts("#tables a")[:2], ["sales.ShipmentLines", "sales.Shipments"])
        self.browser.run("document.activeElement.select()")
        self.browser.type("packed")
        self.assertEqual(self.texts("#tables a"), ["sales.Orders.Status"], "a column's description")
        self.assertEqual(self.texts("#found"), ["0 tables, 1 column"])
        self.browser.press("ArrowDown", 40)
        self.browser.press("Enter", 13, "\r")
        self.assertEqual(self.heading(), "sales.Orders")
        self.assertTrue(self.browser.run("document.activeElement.matches('main h2')"), "the focus goes along")
        self.browser.run("document.getElementById('search').select(); document.getElementById('search').focus()")
        self.browser.type("no such thing")
        self.assertEqual(self.texts("#found"), ["0 tables"])

    def test_links_lead_both_ways_and_back(self):
        self.browser.open(self.shop)
        self.browser.click('#tables a[data-table="sales.Orders"]')
        self.assertEqual(self.heading(), "sales.Orders")
        self.browser.click('main a[href="#table/Customers"]')
        self.assertEqual(self.heading(), "Customers")
        self.assertEqual(self.texts('#tables a[aria-current="page"]'), ["Customers"])
        self.browser.click('main a[href="#table/sales.Orders"]')
        self.assertEqual(self.heading(), "sales.Orders")
        self.browser.run("new Promise((done) => { addEventListener('hashchange', done, {once: true}); history.back(); })")
        self.assertEqual(self.heading(), "Customers")

    def test_every_link_leads_somewhere(self):
        self.browser.open(self.shop, "#all")
        links = self.browser.run("[...new Set([...document.querySelectorAll('a')].map((a) => a.getAttribute('href')))]")
        self.assertGreater(len(links), 15)
        for link in links:
            if link == "#main":
                continue
            self.browser.open(self.shop, link)
            self.assertNotIn("no such", self.heading(), link)

    def test_findings_stand_beside_what_they_concern(self):
        self.browser.open(self.shop, "#table/Products")
        self.assertEqual(self.browser.run("document.querySelector('tr[data-column=Margin] + tr.notes b').textContent"),
                         "warning column-computed")
        self.browser.open(self.shop, "#findings")
        self.assertEqual(len(self.texts("main .note")), 20)

    def test_the_diagram_grows_where_it_is_clicked(self):
        page = self.report_of("fifty", schema_of(50))
        self.browser.open(page, "#diagram/T0040")
        nodes = "[...document.querySelectorAll('.node')].map((e) => e.dataset.table).sort()"
        self.assertEqual(self.browser.run(nodes), ["T0000", "T0039", "T0040", "T0041"])
        self.browser.click('.node[data-table="T0041"] rect')
        self.assertEqual(self.browser.run(nodes), ["T0000", "T0039", "T0040", "T0041", "T0042"])
        self.assertTrue(self.browser.run("document.activeElement.matches('.node[data-table=T0041] .grow')"))
        self.browser.press("Enter", 13, "\r")
        self.assertEqual(self.browser.run(nodes), ["T0000", "T0039", "T0040", "T0041"], "and shrinks again")
        for count in (28, 50):
            self.browser.click('.node[data-table="T0000"] rect')
            self.assertEqual(len(self.browser.run(nodes)), count, "24 at a time")
        overlaps = """(() => { const boxes = [...document.querySelectorAll('.node .box')].map((e) =>
            e.getBoundingClientRect()); return boxes.flatMap((a, i) => boxes.slice(i + 1).filter((b) => a.x < b.right &&
            b.x < a.right && a.y < b.bottom && b.y < a.bottom)).length; })()"""
        self.assertEqual(self.browser.run(overlaps), 0, "no box covers another")
        self.assertEqual(self.browser.run("document.querySelectorAll('svg > path').length"), 97)
        self.browser.click('.node[data-table="T0007"] a')
        self.assertEqual(self.heading(), "T0007")

    def test_changes_are_marked(self):
        old = os.path.join(self.folder.name, "old.json")
        with open(os.path.join(SOURCE, "examples/shop.json"), encoding="utf-8") as file:
            catalogue = json.load(file)
        for table in catalogue["tables"]:
            if table["name"] == "Suppliers":
                table["columns"] = [col for col in table["columns"] if col["name"] != "Phone"]
        catalogue["tables"] = [table for table in catalogue["tables"] if table["name"] != "ProductPrices"]
        with open(old, "w", encoding="utf-8") as file:
            json.dump(catalogue, file)
        page = self.report("changes", os.path.join(SOURCE, "examples/shop.json"), "--diff", old)
        self.browser.open(page)
        self.assertIn("2 tables differ", self.texts("#summary")[0])
        self.assertEqual(self.texts("main th .mark"), ["added", "changed"])
        self.browser.click('a[href="#changes"]')
        self.assertEqual(self.texts("main h3"), ["dbo.ProductPrices added", "dbo.Suppliers changed"])
        self.browser.open(page, "#table/Suppliers")
        self.assertEqual(self.texts("tr[data-column=Phone] .mark"), ["added"])
        self.assertEqual(self.texts("tr[data-column] .mark"), ["added"])
        self.assertIn("added column Phone", self.texts("main .note.added")[0])
        self.browser.open(self.shop)
        self.assertTrue(self.browser.run("document.getElementById('changes-link').hidden"))

    def test_schemas_can_be_hidden(self):
        page = self.report_of("hundred", schema_of(100))
        self.browser.open(page, "#diagram/T0040")
        self.browser.run("document.getElementById('schemas').open = true")
        self.browser.click("#schemas label:nth-of-type(2) input")
        self.assertEqual(self.texts("#found"), ["90 tables"])
        self.assertEqual(self.browser.run("[...document.querySelectorAll('.node')].map((e) => e.dataset.table).sort()"),
                         ["T0000", "T0039", "T0040"], "T0041 is in the schema that was hidden")

    def test_a_thousand_tables(self):
        page = self.report_of("thousand", schema_of(1000))
        self.browser.open(page)
        times = self.browser.run("performance.getEntriesByType('navigation')[0].toJSON()")
        print("1,000 tables: usable %d ms after opening" % times["loadEventEnd"])
        self.assertEqual(len(self.texts("#tables a")), 1000)
        made = self.browser.run("document.querySelectorAll('*').length")
        print("1,000 tables: %d elements" % made)
        self.assertLess(made, 15000, "tables are shown when they are asked for")
        self.browser.run("document.getElementById('search').focus()")
        self.browser.type("t0999")
        self.assertEqual(self.texts("#tables a"), ["T0999"])
        self.browser.open(page, "#diagram")
        self.assertEqual(len(self.texts(".node")), 25, "a table and some neighbours")
        self.browser.run("[...document.querySelectorAll('button')].find((b) => b.textContent === 'Whole schema').click()")
        self.assertEqual(len(self.texts(".node")), 120, "no more than can be read")
        self.assertIn("no more than 120", self.texts(".tools [role=status]")[0])

    def test_names_made_of_markup_are_shown(self):
        page = self.report_of("markup", markup_schema())
        for place in ("", "#diagram", "#all", "#findings"):
            self.browser.open(page, place)
            self.assertEqual(self.browser.run("document.querySelectorAll('img').length"), 0, place)
            self.assertEqual(self.browser.run("document.querySelectorAll('script').length"), 3, place)
            self.assertEqual(self.texts("h1"), [MARKUP])
        self.browser.open(page)
        self.browser.run("document.querySelector('main tbody a').click()")
        self.browser.run("new Promise((done) => setTimeout(done))")
        self.assertEqual(self.heading(), MARKUP)
        self.assertIn(MARKUP, self.texts("main .text"))
        self.assertEqual(self.texts("main .about"), [MARKUP])
        self.assertIn("(1<2)", self.texts("main code"))

    def test_nothing_is_asked_of_the_network(self):
        self.browser.open(self.shop)
        self.assertEqual(self.browser.run("performance.getEntriesByType('resource').length"), 0)

    def test_everything_has_a_name(self):
        for place in ("#overview", "#diagram", "#findings", "#all", "#table/sales.Orders"):
            self.browser.open(self.shop, place)
            self.browser.call("Accessibility.enable")
            nodes = self.browser.call("Accessibility.getFullAXTree")["nodes"]
            for node in nodes:
                role = node.get("role", {}).get("value")
                if role in ("link", "button", "searchbox", "checkbox", "combobox", "table", "region", "navigation"):
                    self.assertTrue(node.get("name", {}).get("value"), (place, node))
            levels = self.browser.run("[...document.querySelectorAll('h1, h2, h3')].map((e) => Number(e.tagName[1]))")
            for before, after in zip(levels, levels[1:]):
                self.assertLessEqual(after, before + 1, place)


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1], verbosity=2)
