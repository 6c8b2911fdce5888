# SPDX-License-Identifier: MIT
"""Reports of real and of hostile projects, read back out of a browser.

usage: test_report.py PROGRAM SAMPLES [unittest arguments]
"""
import html
import json
import os
import pathlib
import re
import shlex
import signal
import subprocess
import sys
import tempfile
import time
import unittest

from browser import opened

PROGRAM, SAMPLES = sys.argv[1], pathlib.Path(sys.argv[2])
WORK = tempfile.TemporaryDirectory()
HOSTILE = '</script><script>window.hit = 1</script><img src=x onerror="window.hit = 2">{{data}}%1 &amp; \'"'


def path(name):
    return os.path.join(WORK.name, name)


def meridor(*words, status=0):
    done = subprocess.run([PROGRAM, "--scratch", WORK.name, *map(str, words)], capture_output=True, text=True, check=False)
    assert done.returncode == status, (words, done.returncode, done.stdout, done.stderr)
    return done


def answer(*words):
    return json.loads(meridor("--json", *words).stdout)


def write(name, text):
    pathlib.Path(path(name)).write_text(text, encoding="utf-8")
    return path(name)


def square(column, row):
    ring = [[column, row], [column + 1, row], [column + 1, row + 1], [column, row + 1], [column, row]]
    return {"type": "Polygon", "coordinates": [ring]}


def geojson(name, shapes):
    features = [{"type": "Feature", "properties": properties, "geometry": geometry} for properties, geometry in shapes]
    return write(name, json.dumps({"type": "FeatureCollection", "features": features}))


class OfIncome(unittest.TestCase):
    """The states of the USA: 48 objects, 81 years, queen neighbours."""

    @classmethod
    def setUpClass(cls):
        us = SAMPLES / "us_income"
        meridor("import", us / "states48.geojson", path("income.vorn"), "--name", "states", "--key", "fips", "--table",
                us / "income_1929_2009.csv", "--table", us / "admission.csv", "--series", "income=1929..2009",
                "--start", "admitted", "--times", "auto")
        meridor("weights", "create", path("income.vorn"), "queen")
        meridor("report", path("income.vorn"), path("income.html"), "--title", "Income")
        cls.enter = opened(path("income.html"))
        cls.page = cls.enter.__enter__()
        cls.addClassCleanup(cls.enter.__exit__, None, None, None)

    def setUp(self):
        self.page.slide(-1)
        self.page.run("document.querySelector('.clear').click()")
        self.page.frame(150)

    def table(self):
        """Name and texts of the cells of each row."""
        return {cells[0]: cells[1:] for cells in self.page.run(
            "return [...document.querySelectorAll('.objects tbody tr')].map((row) => [...row.children].map((c) => c.textContent))")}

    def test_stands_alone(self):
        self.assertEqual(self.page.complaints(), [])
        self.assertEqual(self.page.requests(), [])
        self.assertLess(os.path.getsize(path("income.html")), 5_000_000)

    def test_slider_shows_the_values_of_its_time(self):
        for position, year in ((0, 1929), (52, 1981), (-1, 2009)):
            with self.subTest(year=year):
                self.page.slide(position)
                self.assertEqual(self.page.text(".now"), str(year))
                rows = self.table()
                self.assertEqual(len(rows), 48)
                for state in ("Virginia", "Nevada"):
                    known = [entry["value"] for entry in answer("series", path("income.vorn"), "income", state)["values"]
                             if entry["time"] == str(year)]
                    self.assertEqual(rows[state][0].replace("\u2009", ""), str(known[0]))
                self.assertEqual(sum(map(int, self.page.texts(".legend .count"))), 48)

    def test_objects_come_into_being_under_the_slider(self):
        self.page.run("const s = document.querySelector('.controls select'); s.value = '-1';"
                      "s.dispatchEvent(new Event('change'))")
        self.page.slide(0)
        first = answer("info", path("income.vorn"), "--at", self.page.text(".now"))
        self.assertEqual(sorted(self.table()), ["Delaware"])
        self.assertEqual(len(first["geographies"][0]["existing"]), 1)
        self.page.run("const s = document.querySelector('.controls select'); s.value ="
                      "[...s.options].find((o) => o.text === 'income').value; s.dispatchEvent(new Event('change'))")
        self.page.slide(-1)

    def chosen(self):
        """How many objects are chosen, as each part of the page shows it."""
        return {
            "table": len(self.table()),
            "map": self.page.run("return 48 - document.querySelectorAll('.shapes path.out').length"),
            "scatter": self.page.run("return [...document.querySelectorAll('g:nth-of-type(2) > .point.chosen')]"
                                     ".reduce((sum, path) => sum + path.getAttribute('d').split('M').length - 1, 0)"),
            "status": int(self.page.text(".status").split(" chosen")[0].split()[-1]),
        }

    def test_the_listed_commands_run(self):
        page = pathlib.Path(path("income.html")).read_text(encoding="utf-8")
        lines = [shlex.split(html.unescape(line)) for line in re.findall("<dd><code>(.*?)</code></dd>", page)]
        self.assertEqual(sorted({words[1] for words in lines}),
                         ["classes", "info", "moran", "series", "stats", "weights"])
        for words in lines:
            self.assertEqual(words[0], "meridor")
            meridor(*words[1:])

    def test_brushes_choose_everywhere(self):
        for name, brush, start, end, other in (
                ("map", "svg.map", (0.0, 0.0), (0.35, 1.0), None),
                ("histogram", ".side .chart:nth-of-type(2) .brush .overlay", (0.45, 0.5), (0.99, 0.6), None),
                ("scatter", ".below .chart .brush .overlay", (0.02, 0.02), (0.4, 0.98), None)):
            with self.subTest(brush=name):
                self.page.drag(brush, start, end)
                seen = self.chosen()
                self.assertEqual(len(set(seen.values())), 1, seen)
                self.assertTrue(0 < seen["table"] < 48, seen)
        self.page.run("document.querySelector('.clear').click()")
        self.page.frame(150)
        self.page.run("document.querySelector('.objects tbody tr').click()")
        self.page.frame(250)
        self.assertEqual(set(self.chosen().values()), {1})

    def test_links_of_the_object_that_is_looked_at(self):
        for state in ("Virginia", "Maine"):
            self.page.run("const r = [...document.querySelectorAll('.objects tbody tr')].find((row) =>"
                          "row.textContent.startsWith(arguments[0]));"
                          "r.dispatchEvent(new MouseEvent('mouseover', {bubbles: true}))", state)
            self.page.frame(50)
            known = answer("neighbors", path("income.vorn"), "queen", state, "--at", "2009")["neighbors"]
            self.assertEqual(len(self.page.texts(".links line")), len(known), state)

    def test_moran_of_every_year(self):
        known = answer("moran", path("income.vorn"), "income", "queen", "--seed", 1)["times"]
        rows = self.page.run(
            "const t = [...document.querySelectorAll('details table')].find((t) => t.caption.textContent.startsWith('Moran'));"
            "return [...t.tBodies[0].rows].map((row) => [...row.cells].map((cell) => cell.textContent))")
        self.assertEqual([(row[0], row[2], row[7]) for row in rows],
                         [(one["time"], f"{one['I']:.4f}", f"{one['p']:g}") for one in known])
        for row in rows:
            self.assertLess(float(row[4]), float(row[2]), "every year lies above the band of permutations")

    def test_keys_move_time(self):
        slider = self.page.driver.find_element("css selector", "input[type=range]")
        slider.send_keys("\ue012")  # to the left
        self.page.frame(50)
        self.assertEqual(self.page.text(".now"), "2008")

    def test_texts_stand_out_from_their_ground(self):
        for scheme in ("light", "dark"):
            with opened(path("income.html"), emulate={"prefers-color-scheme": scheme}) as page:
                low = page.run("""
                    const parts = (text) => text.match(/[\\d.]+/g).map(Number);
                    const light = ([r, g, b]) => [r, g, b].map((c) => c / 255)
                        .map((c) => (c <= 0.04045 ? c / 12.92 : ((c + 0.055) / 1.055) ** 2.4))
                        .reduce((sum, c, i) => sum + c * [0.2126, 0.7152, 0.0722][i], 0);
                    const ground = (node) => {
                        for (; node; node = node.parentElement) {
                            const color = parts(getComputedStyle(node).backgroundColor);
                            if (color.length === 3 || color[3] > 0) return color;
                        }
                    };
                    const low = [];
                    for (const node of document.querySelectorAll('h1, p, dt, dd, th, td, button, label span, .now, summary, .axis text')) {
                        const style = getComputedStyle(node);
                        const a = light(parts(node.matches('text') ? style.fill : style.color));
                        const b = light(ground(node));
                        const ratio = (Math.max(a, b) + 0.05) / (Math.min(a, b) + 0.05);
                        if (ratio < 4.5) low.push([node.textContent.slice(0, 30), ratio]);
                    }
                    return low;""")
                self.assertEqual(low, [], scheme)

    def test_without_scripts_there_are_a_map_and_tables(self):
        with opened(path("income.html"), scripts=False) as page:
            nodes = page.driver.find_elements("css selector", "svg.still path")
            self.assertEqual(len(nodes), 48)
            captions = [node.get_attribute("textContent") for node in page.driver.find_elements("css selector", "caption")]
            self.assertIn("income by time", captions)


class OfOthers(unittest.TestCase):
    def test_names_are_text_and_never_markup(self):
        table = geojson("hostile.geojson", [({"k": f"{i}{HOSTILE}", "v": i, HOSTILE: HOSTILE}, square(i, 0)) for i in range(4)])
        imported = meridor("import", table, path("hostile.vorn"), "--key", "k", "--name", HOSTILE)
        self.assertIn(f"{HOSTILE}: 4 objects, 4 polygons", imported.stdout)
        meridor("weights", "create", path("hostile.vorn"), HOSTILE)
        meridor("report", path("hostile.vorn"), path("hostile.html"), "--title", HOSTILE)
        for scripts in (True, False):
            with opened(path("hostile.html"), scripts=scripts) as page:
                if scripts:
                    page.run("document.querySelector('.objects tbody tr').click()")
                    page.frame(300)
                    self.assertIsNone(page.run("return window.hit ?? null"))
                    self.assertEqual(page.run("return document.title"), HOSTILE)
                    self.assertIn(f"0{HOSTILE}", page.texts(".objects .name"))
                    beyond = page.run("return [...document.querySelectorAll('.chart select')].map((one) =>"
                                      "one.getBoundingClientRect().right - one.closest('figure').getBoundingClientRect().right)")
                    self.assertTrue(beyond and max(beyond) <= 0, beyond)
                    self.assertEqual(page.complaints(), [])
                self.assertEqual(len(page.driver.find_elements("css selector", "img")), 0)
                self.assertEqual(page.driver.find_element("css selector", "h1").text, HOSTILE)

    def test_grids_are_pictures_with_the_same_slider(self):
        meridor("import", SAMPLES / "carolina_climate" / "pr_1999.tif", path("rain.vorn"), "--times", "date")
        meridor("report", path("rain.vorn"), path("rain.html"), "--datasets", "pr_1999", "--times", "1999-08,1999-09",
                "--maps", "1999-08,1999-09")
        with opened(path("rain.html")) as page:
            self.assertEqual(page.run("return document.querySelector('input[type=range]').max"), "1")
            self.assertEqual(page.text(".now"), "1999-09")
            known = answer("series", path("rain.vorn"), "pr_1999", "40,12")["values"][8]["value"]
            page.run("const b = document.querySelector('svg.over').getBoundingClientRect();"
                     "document.querySelector('svg.over').dispatchEvent(new PointerEvent('pointermove',"
                     "{clientX: b.x + b.width * 40.5 / 81, clientY: b.y + b.height * 12.5 / 33}))")
            page.frame(200)
            self.assertEqual(page.text(".tooltip strong"), "column 40, row 12")
            self.assertAlmostEqual(float(page.text(".tooltip div").split(": ")[1]), known, places=3)
            for number, month in ((0, "1999-08"), (1, "1999-09")):
                page.run("document.querySelectorAll('.then')[arguments[0]].click()", number)
                page.frame(200)
                self.assertEqual((page.text(".now"), page.texts(".then .when")[number]), (month, month))
            self.assertEqual(page.complaints(), [])

    def test_charts_without_values_or_of_one(self):
        for name, cell in (("gone", -9), ("flat", "2e300")):
            meridor("import", write(f"{name}.asc", "ncols 2\nnrows 2\nxllcorner 0\nyllcorner 0\ncellsize 1\nNODATA_value -9\n"
                                    f"{cell} {cell}\n{cell} {cell}\n"), path(f"{name}.vorn"))
            meridor("report", path(f"{name}.vorn"), path(f"{name}.html"))
            with opened(path(f"{name}.html")) as page:
                self.assertEqual(page.complaints(), [])
                self.assertEqual(page.run("return [...document.querySelectorAll('svg *')].filter((one) =>"
                                          "[...one.attributes].some((each) => each.value.includes('NaN'))).length"), 0)

    def test_many_objects_are_painted_and_found(self):
        side = 30
        values = lambda i: {"k": f"o{i}", "v1": i % 7, "v2": i * 31 % 11 if i % 5 else None}
        mesh = geojson("painted.geojson", [(values(i), square(i % side, i // side)) for i in range(side * side)])
        meridor("import", mesh, path("painted.vorn"), "--key", "k", "--series", "v=v1..v2")
        meridor("report", path("painted.vorn"), path("painted.html"))
        with opened(path("painted.html"), height=2400) as page:
            for position in (0, 1, 0):
                page.slide(position)
                page.frame(300)
                for number in (1, 10, 101, 105):
                    seen = page.run("""
                        const [number, side] = arguments;
                        const svg = document.querySelector('svg.map'), canvas = document.querySelector('canvas.fills');
                        const box = svg.getBoundingClientRect(), view = svg.viewBox.baseVal;
                        const x = (number % side + 0.5) / side * (view.width + 2 * view.x) - view.x;
                        const y = (side - 0.5 - Math.floor(number / side)) / side * (view.height + 2 * view.y) - view.y;
                        const at = (length) => [x * length / view.width, y * length / view.width];
                        const [left, top] = at(box.width), [column, row] = at(canvas.width);
                        svg.dispatchEvent(new PointerEvent('pointermove', {clientX: box.x + left, clientY: box.y + top}));
                        const copy = new OffscreenCanvas(1, 1).getContext('2d');
                        copy.drawImage(canvas, -Math.floor(column), -Math.floor(row));
                        const pixel = copy.getImageData(0, 0, 1, 1).data;
                        const swatch = document.querySelector(`tr[data-object="${number}"] .swatch`);
                        const isMissing = swatch.classList.contains('missing');
                        return [document.querySelector('.tooltip strong').textContent, isMissing,
                            isMissing || getComputedStyle(swatch).backgroundColor === `rgb(${[...pixel].slice(0, 3).join(', ')})`];
                        """, number, side)
                    self.assertEqual(seen, [f"o{number}", position == 1 and number % 5 == 0, True])
            self.assertEqual(page.complaints(), [])

    def test_points_and_dated_shapes(self):
        shapes = [({"k": "a", "s": "1900", "e": "1909"}, {"type": "Point", "coordinates": [1, 1]}),
                  ({"k": "a", "s": "1910", "e": "1919"}, {"type": "Point", "coordinates": [3, 1]}),
                  ({"k": "b", "s": "1905", "e": "1919"}, {"type": "Point", "coordinates": [9, 5]})]
        meridor("import", geojson("moving.geojson", shapes), path("moving.vorn"), "--key", "k", "--start", "s", "--end", "e")
        meridor("report", path("moving.vorn"), path("moving.html"))
        with opened(path("moving.html")) as page:
            seen = []
            for position in range(int(page.run("return document.querySelector('input[type=range]').max")) + 1):
                page.slide(position)
                seen.append(page.texts(".objects .name"))
            self.assertEqual(seen, [["a"], ["a", "b"], ["a", "b"]])
            self.assertEqual(page.complaints(), [])

    def test_moments_below_an_axis_do_not_cover_each_other(self):
        rows = [f"a,{hour % 5},1,2005-06-{8 + hour // 24:02}T{hour % 24:02}:30,{hour}" for hour in range(0, 400, 6)]
        write("track.csv", "\n".join(["k,x,y,t,v", *rows]))
        meridor("import", path("track.csv"), path("track.vorn"), "--key", "k", "--x", "x", "--y", "y", "--start", "t", "--end", "next")
        meridor("report", path("track.vorn"), path("track.html"))
        with opened(path("track.html")) as page:
            boxes = page.run("return [...document.querySelectorAll('g.tick text')].filter((one) => one.textContent.includes('T'))"
                             ".map((one) => one.getBoundingClientRect()).map((box) => [box.left, box.right]).sort((a, b) => a[0] - b[0])")
            self.assertGreater(len(boxes), 1)
            self.assertTrue(all(one[1] < other[0] for one, other in zip(boxes, boxes[1:])), boxes)
            self.assertIn("1 object.", page.text(".objects") + page.text(".table"))

    def test_small_maps_show_their_times_and_move_the_slider(self):
        history = SAMPLES / "us_states_history" / "states_1783_2000.geojson"
        meridor("import", history, path("history.vorn"), "--key", "id", "--start", "start_date", "--end", "end_date")
        days = ["1790-08-02", "1860-06-01", "1900-06-01", "2000-04-01"]
        meridor("report", path("history.vorn"), path("history.html"), "--datasets", "terr_type,area_sqmi", "--maps", ",".join(days))
        with opened(path("history.html")) as page:
            self.assertEqual(page.texts(".then .when"), days)
            self.assertEqual(page.texts(".then .note"), ["17 objects", "41 objects", "50 objects", "49 objects"])
            self.assertEqual(page.text(".picture .title"), "terr_type")
            page.run("document.querySelectorAll('.then')[1].click()")
            page.frame(200)
            self.assertEqual(len(page.texts(".objects .name")), 41)
            fills = [page.run("return [...document.querySelectorAll(arguments[0])].filter((p) => p.getAttribute('d'))"
                              ".map((p) => getComputedStyle(p).fill).sort()", selector)
                     for selector in (".then:nth-of-type(2) path", "svg.map.polygons .shapes path")]
            self.assertEqual(fills[0], fills[1])
            self.assertGreater(len(set(fills[0])), 2)
            self.assertEqual(page.complaints(), [])
        meridor("report", path("history.vorn"), path("history2.html"), "--maps", "soon", status=2)
        meridor("report", path("history.vorn"), path("history3.html"), "--beside", "area_sqmi,terr_type")
        with opened(path("history3.html")) as page:
            page.run("document.querySelectorAll('.then')[1].click()")
            page.frame(200)
            fills = [page.run("return [...document.querySelectorAll(arguments[0])].filter((p) => p.getAttribute('d'))"
                              ".map((p) => getComputedStyle(p).fill).sort()", selector)
                     for selector in (".then:nth-of-type(2) path", "svg.map.polygons .shapes path")]
            self.assertEqual(fills[0], fills[1])
            self.assertEqual(page.texts(".then .when"), ["area_sqmi", "terr_type"])
            self.assertEqual(page.complaints(), [])

    def test_datasets_stand_side_by_side(self):
        wells = SAMPLES / "wells"
        meridor("import", wells / "truth.asc", path("wells.vorn"), "--name", "field")
        meridor("import", wells / "wells.csv", path("wells.vorn"), "--append", "--key", "well", "--x", "x", "--y", "y")
        meridor("krige", path("wells.vorn"), "level", "--model", "exponential:9:2700", "--to", "field", "--into", "predicted")
        line = ["report", path("wells.vorn"), "--datasets", "truth,predicted,predicted variance,level"]
        meridor(*line, path("wells.html"), "--beside", "truth,predicted,predicted variance", "--same-classes", "truth,predicted")
        with opened(path("wells.html")) as page:
            self.assertEqual(page.texts(".then .when"), ["truth", "predicted", "predicted variance"])
            ramps = page.texts(".then .ramp")
            self.assertEqual(ramps[0], ramps[1])
            self.assertNotEqual(ramps[0], ramps[2])
            self.assertEqual(page.run("return document.querySelectorAll('#geography-1 .then').length"), 0)
            for number, name in ((1, "predicted"), (0, "truth"), (2, "predicted variance")):
                page.run("document.querySelectorAll('.then')[arguments[0]].click()", number)
                page.frame(200)
                self.assertEqual(page.text(".picture .title"), name)
                seen = page.run("""
                    const pressed = [...document.querySelectorAll('.then')].map((one) => one.getAttribute('aria-pressed'));
                    return [document.querySelector('.controls select').selectedOptions[0].text, pressed.indexOf('true'),
                        document.querySelectorAll('.then canvas')[arguments[0]].toDataURL()
                        === document.querySelector('.picture canvas').toDataURL()];
                    """, number)
                self.assertEqual(seen, [name, number, True])
            page.run("const grid = document.querySelector('.then .grid'), b = grid.getBoundingClientRect();"
                     "grid.dispatchEvent(new PointerEvent('pointermove', {clientX: b.x + b.width * 12.5 / 60,"
                     "clientY: b.y + b.height * 7.5 / 40}))")
            page.frame(200)
            for note, name in zip(page.texts(".then .note"), ("truth", "predicted")):
                known = answer("series", path("wells.vorn"), name, "12,7")["values"][0]["value"]
                self.assertAlmostEqual(float(note), known, places=3)
            self.assertEqual(page.complaints(), [])
        for words in (("--beside", "level"), ("--beside", "nothing"), ("--same-classes", "truth,level")):
            meridor(*line, path("no.html"), *words, status=1)
            self.assertFalse(os.path.exists(path("no.html")), words)

    def test_refusals_leave_no_file(self):
        meridor("import", geojson("one.geojson", [({"k": "a", "v": 1.5}, square(0, 0))]), path("one.vorn"), "--key", "k")
        for words, status in ((("--datasets", "none"), 1), (("--times", "soon"), 2), (("--simplify", "-1"), 2), (("--maps", "5"), 1)):
            meridor("report", path("one.vorn"), path("no.html"), *words, status=status)
            self.assertFalse(os.path.exists(path("no.html")), words)
        write("there.html", "kept")
        meridor("report", path("one.vorn"), path("there.html"), status=1)
        self.assertEqual(pathlib.Path(path("there.html")).read_text(encoding="utf-8"), "kept")

    def test_a_cancel_leaves_no_file(self):
        side = 20
        meridor("import", geojson("many.geojson", [({"k": str(i), "v": i * 37 % 101}, square(i % side, i // side))
                                                   for i in range(side * side)]), path("many.vorn"), "--key", "k")
        meridor("weights", "create", path("many.vorn"), "queen")
        os.mkdir(path("out"))
        run = subprocess.Popen([PROGRAM, "--quiet", "--scratch", WORK.name, "report", path("many.vorn"),
                                path("out/many.html"), "--permutations", "1000000"])
        time.sleep(1)
        run.send_signal(signal.SIGINT)
        self.assertEqual(run.wait(60), 130)
        self.assertEqual(os.listdir(path("out")), [])


if __name__ == "__main__":
    unittest.main(argv=[sys.argv[0], *sys.argv[3:]])
