"""The comfort calculator in a headless browser: comfort_calculator.py PROGRAM_THAT_WRITES_THE_PAGES"""
import math
import os
import subprocess
import sys
import tempfile
import unittest

from selenium.webdriver.common.by import By
from selenium.webdriver.common.keys import Keys
from selenium.webdriver.support.ui import Select

from browser import open_browser

COLOURS = {"green": "rgb(0, 255, 0)", "yellow": "rgb(255, 255, 0)", "red": "rgb(255, 0, 0)"}
RATIOS = {"4:3": 4 / 3, "16:10": 1.6, "16:9": 16 / 9, "Kino": 2048 / 1080}
COMPUTED = ("farpointdisp", "deviation", "presence", "angofdiverg", "angofparallax", "i_ratio")
STANDARD = (132.02, 132.02, 4000, 3000)


def angles(screen_width, distance, ratio, far, deviation, width, height):
    """Divergence in degrees and parallax in minutes of arc from the sizes of the room."""
    image_width = min(screen_width, screen_width * round(width / height, 3) / RATIOS[ratio])
    divergence = math.degrees((image_width * far / width - 0.06) / distance)
    return divergence, 60 * math.degrees(image_width * deviation / width / distance)


def verdict(value, green, yellow):
    return COLOURS["green" if value <= green else "yellow" if value <= yellow else "red"]


class ComfortCalculator(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.folder = tempfile.TemporaryDirectory(prefix="zemora pages #")
        subprocess.run([PROGRAM, cls.folder.name], check=True, stdout=subprocess.DEVNULL)
        cls.browser = open_browser()

    @classmethod
    def tearDownClass(cls):
        cls.browser.quit()
        cls.folder.cleanup()

    def tearDown(self):
        self.assertEqual(self.browser.get_log("browser"), [])

    def open(self, query="", language="en", keep_storage=False):
        name = os.path.join(self.folder.name, f"comfortcalculator_{language}.html").replace("#", "%23")
        if not keep_storage:
            self.browser.get("file://" + name)
            self.browser.execute_script("localStorage.clear()")
        self.browser.get("file://" + name + query)

    def field(self, name):
        return self.browser.find_element(By.ID, name)

    def value(self, name):
        return self.field(name).get_property("value")

    def type(self, name, text):
        self.field(name).send_keys(Keys.CONTROL + "a" + Keys.NULL + Keys.DELETE + text + Keys.TAB)

    def sizes(self):
        return self.value("screenwidth"), self.value("screendistance")

    def expect_angles(self, ratio, picture=STANDARD):
        shown = self.browser.execute_script("""return Object.fromEntries(Array.from(
            document.querySelectorAll("input"), one => [one.id, [one.value, getComputedStyle(one).backgroundColor]]))""")
        screen_width, distance = float(shown["screenwidth"][0]), float(shown["screendistance"][0])
        divergence, parallax = angles(screen_width, distance, ratio, *picture)
        for name, value, limits in (("angofdiverg", divergence, (0.5, 1.0)), ("angofparallax", parallax, (70, 90))):
            self.assertAlmostEqual(float(shown[name][0]), value, delta=0.0051, msg=name)
            self.assertEqual(shown[name][1], verdict(value, *limits), name)
        projected = max(picture[2], picture[2] * RATIOS[ratio] / round(picture[2] / picture[3], 3))
        self.assertAlmostEqual(float(shown["farpointdisp"][0]), 1000 * picture[0] / projected, delta=0.0051)
        self.assertAlmostEqual(float(shown["deviation"][0]), 1000 * picture[1] / projected, delta=0.0051)
        self.assertAlmostEqual(float(shown["presence"][0]), screen_width / distance, delta=0.0051)
        self.assertAlmostEqual(float(shown["i_ratio"][0]), picture[2] / picture[3], delta=0.00051)
        for name, colour in (("screenwidth", "rgb(228, 255, 228)"), ("presence", "rgb(228, 238, 238)")):
            self.assertEqual(shown[name][1], colour)

    def test_every_ratio_and_room_follows_the_formulas(self):
        for language in ("en", "de"):
            self.open(language=language)
            self.assertEqual(self.sizes(), ("6.0", "8.6"))
            self.assertIn("⇒", self.browser.find_element(By.TAG_NAME, "table").text)
            for room in (("2", "12"), ("12,5", "9.3"), ("30", "4"), ("0", "3")):
                self.type("screenwidth", room[0])
                self.type("screendistance", room[1])
                for ratio in RATIOS:
                    Select(self.field("s_ratio")).select_by_visible_text(ratio)
                    self.expect_angles(ratio)

    def test_sizes_are_stepped_rounded_and_held(self):
        self.open()
        for button, sizes in (("inc1", ("6.5", "8.6")), ("dec1", ("6.0", "8.6")), ("inc2", ("6.0", "9.0")),
                              ("dec2", ("6.0", "8.5")), ("typical", ("6.0", "8.6"))):
            self.field(button).click()
            self.assertEqual(self.sizes(), sizes, button)
            self.expect_angles("4:3")
        self.type("screenwidth", "0.5")
        self.type("screendistance", "0.3")
        self.field("dec1").click()
        self.field("dec2").click()
        self.assertEqual(self.sizes(), ("0.5", "0.5"))
        for typed, sizes in ((("6.3", "7.77"), ("6.5", "7.8")), (("-3", "0"), ("0.0", "0.1")),
                             (("wide", ""), ("6.0", "8.6"))):
            self.type("screenwidth", typed[0])
            self.type("screendistance", typed[1])
            self.assertEqual(self.sizes(), sizes)
            self.expect_angles("4:3")

    def test_query_gives_picture_and_ratio(self):
        for picture, selected, ratio in (((-40, 60, 4000, 2000), 0, "16:9"), ((90, 100, 3000, 2000), 1, "4:3"),
                                         ((90, 100, 4000, 2000), 2, "4:3"), ((90, 100, 1920, 1080), 3, "16:10"),
                                         ((90, 0, 1920, 1080), 5, "Kino"), ((90, 0, 1920, 1080), 77, "16:9")):
            self.open("?far=%d&dev=%d&wi=%d&hei=%d&pr=%d" % (*picture, selected), "de")
            self.assertEqual(Select(self.field("s_ratio")).first_selected_option.text, ratio)
            self.expect_angles(ratio, picture)

    def test_other_queries_give_the_standard_picture_and_no_markup(self):
        for query in ("?", "?far=1&dev=2", "?far=1&dev=2&wi=0&hei=3000&pr=0", "?far=x&dev=NaN&wi=1e9&hei=Infinity&pr=-",
                      "?far=<img src=x onerror=alert(1)>&dev=<script>alert(1)</script>&wi=1&hei=1&pr=0",
                      "?far=%3Cb%3E&dev='\"&wi=&hei=&pr=&&&"):
            self.open(query)
            self.assertEqual([self.value(name) for name in COMPUTED],
                             ["33.00", "33.00", "0.70", "0.92", "79.14", "1.333"], query)
            self.assertEqual(self.browser.find_elements(By.TAG_NAME, "img"), [])

    def test_screen_stays_from_visit_to_visit(self):
        self.open()
        self.type("screenwidth", "11.5")
        self.type("screendistance", "14.2")
        self.browser.refresh()
        self.assertEqual(self.sizes(), ("11.5", "14.2"))
        self.expect_angles("4:3")
        self.open("?far=50&dev=60&wi=4000&hei=3000&pr=0", "de", keep_storage=True)
        self.assertEqual(self.sizes(), ("11.5", "14.2"))
        self.browser.execute_script("localStorage.setItem('ScreenWidth_loc', '<b>'); read_storage()")
        self.assertEqual(self.sizes(), ("11.5", "14.2"))

    def test_works_without_storage(self):
        source = "Object.defineProperty(window, 'localStorage', {get() { throw new Error('refused'); }});"
        added = self.browser.execute_cdp_cmd("Page.addScriptToEvaluateOnNewDocument", {"source": source})
        self.open(keep_storage=True)
        self.type("screenwidth", "9")
        self.expect_angles("4:3")
        self.browser.execute_cdp_cmd("Page.removeScriptToEvaluateOnNewDocument", added)

    def test_no_page_is_wider_than_a_telephone(self):
        screen = {"width": 360, "height": 800, "deviceScaleFactor": 1, "mobile": True}
        self.browser.execute_cdp_cmd("Emulation.setDeviceMetricsOverride", screen)
        for name in ("comfortcalculator_en", "comfortcalculator_de", "zemora_report"):
            self.browser.get("file://" + self.folder.name.replace("#", "%23") + f"/{name}.html")
            self.assertLessEqual(self.browser.execute_script("return document.documentElement.scrollWidth"), 360, name)
            if len(sys.argv) > 2:  # a folder for pictures of the pages
                self.browser.save_screenshot(f"{sys.argv[2]}/{name}.png")
        self.browser.execute_cdp_cmd("Emulation.clearDeviceMetricsOverride", {})


if __name__ == "__main__":
    PROGRAM = sys.argv[1]
    unittest.main(argv=sys.argv[:1])
