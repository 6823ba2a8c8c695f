"""The page and the report of a film in a headless browser: video_pages.py PROGRAM_THAT_WRITES_THE_PAGES [PICTURES]"""
import math
import os
import re
import shutil
import subprocess
import sys
import tempfile
import unittest

from selenium.webdriver.common.by import By
from selenium.webdriver.common.keys import Keys

from browser import open_browser

COLOURS = {"green": "rgb(0, 255, 0)", "yellow": "rgb(255, 255, 0)", "red": "rgb(255, 0, 0)"}
CHARTS = ("height_analysis", "size_analysis", "rotation_analysis", "vertical_analysis", "horizontal_analysis",
          "stress_analysis", "window_analysis", "disparities")
# How many lines of a chart are to be seen: the colour of each covers pixels enough.
COUNT_LINES = r"""
    const canvas = document.querySelector("#" + arguments[0] + " canvas.flot-base");
    const pixels = canvas.getContext("2d").getImageData(0, 0, canvas.width, canvas.height).data;
    return jQuery("#" + arguments[0]).data("plot").getData().filter(line => {
        const colour = line.color.match(/\d+/g).map(Number);
        let found = 0;
        for (let i = 0; i < pixels.length; i += 4) {
            found += pixels[i + 3] > 100 && colour.every((level, at) => Math.abs(pixels[i + at] - level) < 12);
        }
        return found > 300;
    }).length;"""


class VideoPages(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.folder = tempfile.TemporaryDirectory(prefix="zemora films #")
        subprocess.run([PROGRAM, cls.folder.name], check=True, stdout=subprocess.DEVNULL)
        cls.browser = open_browser()
        cls.browser.execute_cdp_cmd("Network.enable", {})
        cls.browser.execute_cdp_cmd("Network.emulateNetworkConditions", {
            "offline": True, "latency": 0, "downloadThroughput": 0, "uploadThroughput": 0})

    @classmethod
    def tearDownClass(cls):
        cls.browser.quit()
        cls.folder.cleanup()

    def open(self, language, page="zemora_deepvideoanalysis", clear=True, folder=None):
        address = os.path.join(folder or self.folder.name, language, page + ".html").replace("#", "%23")
        self.browser.get("file://" + address)
        if clear:
            self.browser.execute_script("localStorage.clear()")
            self.browser.get("file://" + address)

    def complaints(self):
        """What the browser told, but for the thumbnails that the example does not have."""
        return [line for line in self.browser.get_log("browser") if "/ct/" not in line["message"]]

    def field(self, name):
        return self.browser.find_element(By.ID, name)

    def value(self, name):
        return self.field(name).get_property("value")

    def type(self, name, text):
        self.field(name).send_keys(Keys.CONTROL + "a" + Keys.NULL + Keys.DELETE + text + Keys.TAB)

    def colour(self, name):
        return self.browser.execute_script("return getComputedStyle(arguments[0]).backgroundColor", self.field(name))

    def data(self, language, name):
        with open(os.path.join(self.folder.name, language, "zemora_dispdata.dat"), encoding="ascii") as file:
            return float(re.search(r"var %s *= (\S+);" % name, file.read()).group(1))

    def picture(self, name):
        if len(sys.argv) > 2:
            height = self.browser.execute_script("return document.documentElement.scrollHeight")
            self.browser.set_window_size(1000, height + 200)
            self.browser.save_screenshot(f"{sys.argv[2]}/{name}.png")
            self.browser.set_window_size(1000, 900)

    def test_every_chart_is_drawn_without_a_network(self):
        for language, heading in (("en", "Height Error Analysis"), ("de", "Analyse des Hoehenfehlers")):
            self.open(language)
            for chart in CHARTS:
                lines = self.browser.execute_script(COUNT_LINES, chart)
                self.assertEqual(lines, 4 if chart == "disparities" else 1, chart)
                self.assertEqual(self.field(chart).size, {"width": 640, "height": 300}, chart)
            text = self.browser.find_element(By.TAG_NAME, "body").text
            self.assertIn(heading, text)
            self.assertIn("{{width}} & <b>_l.mp4", text)
            self.assertIn("Grüße_r.mp4", text)
            self.assertIn("[‰]", self.field("disparities").find_element(By.XPATH, "following-sibling::div").text)
            self.assertIn("°", self.field("rotation_analysis").text)
            self.assertEqual(self.complaints(), [])
            self.picture("deep_" + language)

    def test_the_report_shows_errors_and_disparities(self):
        for language in ("en", "de"):
            self.open(language, "zemora_report")
            self.assertEqual(self.browser.execute_script(COUNT_LINES, "error_analysis"), 5)
            self.assertEqual(self.browser.execute_script(COUNT_LINES, "disparities"), 4)
            for unit in ("pix", "%", "°"):
                self.assertIn(unit, self.field("error_analysis").text)
            self.assertEqual(self.complaints(), [])
            self.picture("report_" + language)
            self.browser.find_element(By.PARTIAL_LINK_TEXT, "Zemora").click()
            self.assertIn("Deep Zemora Video Analysis", self.browser.title)
            self.browser.get_log("browser")

    def expect_angles(self, language, kind):
        width, distance = float(self.value("screenwidth")), float(self.value("screendistance"))
        far, deviation = (self.data(language, f"{name}_{kind}") for name in ("dispmax", "deviation"))
        divergence = math.degrees((width * far / 1000 - 0.06) / distance)
        parallax = 60 * math.degrees(width * deviation / 1000 / distance)
        for name, number in (("farpointdisp", far), ("deviation", deviation), ("presence", width / distance),
                             ("angofdiverg", divergence), ("angofparallax", parallax)):
            self.assertAlmostEqual(float(self.value(name)), number, delta=0.0051, msg=name)
        verdict = "green" if divergence <= 0.5 else "yellow" if divergence <= 1.0 else "red"
        self.assertEqual(self.colour("angofdiverg"), COLOURS[verdict])
        verdict = ("green" if parallax <= 70 else "yellow" if parallax <= 90 and divergence <= 0.5 else "red")
        self.assertEqual(self.colour("angofparallax"), COLOURS[verdict])
        return divergence, parallax

    def test_the_calculator_follows_the_formulas_and_the_choice(self):
        for language in ("en", "de"):
            self.open(language)
            self.assertEqual((self.value("screenwidth"), self.value("screendistance")), ("6.0", "8.6"))
            seen = set()
            for room in (("2", "12"), ("6", "8.6"), ("9", "11.7"), ("12.5", "9.3"), ("14.3", "30"), ("30", "4")):
                self.type("screenwidth", room[0])
                self.type("screendistance", room[1])
                for kind in ("mean", "max"):
                    self.field(kind + "disp").click()
                    self.expect_angles(language, kind)
                    seen.add((self.colour("angofdiverg"), self.colour("angofparallax")))
            self.assertGreater(len(seen), 3, "the rooms do not tell the verdicts apart")
            self.field("typical").click()
            self.assertAlmostEqual(float(self.value("screendistance")), 3.5 * math.sqrt(30), delta=0.051)
            self.expect_angles(language, "max")

    def test_a_parallax_for_pop_ups_is_red_where_the_eyes_diverge(self):
        self.open("en")
        self.type("screenwidth", "10")
        self.type("screendistance", "10")
        set_data = "dispmax_mean = arguments[0]; deviation_mean = arguments[1]; do_refresh()"
        for divergence, parallax, colour in ((0.5, 85, "yellow"), (0.7, 85, "red"), (0.2, 95, "red"), (0.7, 65, "green")):
            far = 1000 * (math.radians(divergence) * 10 + 0.06) / 10
            self.browser.execute_script(set_data, far, 1000 * math.radians(parallax / 60))
            self.assertEqual(self.colour("angofparallax"), COLOURS[colour], (divergence, parallax))

    def test_the_screen_is_that_of_the_other_calculator(self):
        self.open("en")
        self.type("screenwidth", "11.5")
        self.type("screendistance", "14.2")
        self.browser.get("file://" + self.folder.name.replace("#", "%23") + "/comfortcalculator_en.html")
        self.assertEqual((self.value("screenwidth"), self.value("screendistance")), ("11.5", "14.2"))
        self.open("de", clear=False)
        self.assertEqual((self.value("screenwidth"), self.value("screendistance")), ("11.5", "14.2"))
        self.expect_angles("de", "mean")

    def test_missing_scripts_or_data_leave_a_line_and_the_calculator(self):
        with tempfile.TemporaryDirectory(prefix="zemora bare ") as bare:
            for gone in ("javascript", "zemora_dispdata.dat"):
                folder = os.path.join(bare, gone)
                shutil.copytree(self.folder.name, folder)
                path = os.path.join(folder, "en", gone)
                if os.path.isdir(path):
                    shutil.rmtree(path)
                else:
                    os.remove(path)
                self.open("en", folder=folder)
                self.assertIn("The chart cannot be drawn", self.field("disparities").text)
                self.type("screenwidth", "9")
                self.assertEqual(self.value("presence"), "1.05")
                if gone == "javascript":
                    self.expect_angles("en", "mean")
        self.browser.get_log("browser")

    def test_an_appended_report_draws_the_last_run_alone(self):
        path = os.path.join(self.folder.name, "en", "zemora_report")
        with open(path + ".html", encoding="latin-1") as file:
            page = file.read()
        body = page[page.index("<script src"):page.index("</div></body>")]
        with open(path + "_twice.html", "w", encoding="latin-1") as file:
            file.write(page.replace("</div></body>", body + "</div></body>"))
        self.open("en", "zemora_report_twice")
        self.assertEqual(len(self.browser.find_elements(By.ID, "error_analysis")), 1)
        self.assertEqual(self.browser.execute_script(COUNT_LINES, "error_analysis"), 5)
        self.assertIn("replaced by those of a later run", self.browser.find_element(By.TAG_NAME, "body").text)
        self.assertEqual(self.complaints(), [])

    def test_no_page_is_wider_than_a_telephone(self):
        screen = {"width": 360, "height": 800, "deviceScaleFactor": 1, "mobile": True}
        self.browser.execute_cdp_cmd("Emulation.setDeviceMetricsOverride", screen)
        for page in ("zemora_deepvideoanalysis", "zemora_report"):
            self.open("de", page)
            self.assertLessEqual(self.browser.execute_script("return document.documentElement.scrollWidth"), 360, page)
        self.browser.execute_cdp_cmd("Emulation.clearDeviceMetricsOverride", {})


if __name__ == "__main__":
    PROGRAM = sys.argv[1]
    unittest.main(argv=sys.argv[:1])
