"""Reports of real runs in a headless browser: report.py ZEMORA ZEMORA_SCENE"""
import os
import subprocess
import sys
import tempfile
import unittest
from urllib.parse import quote

from selenium.webdriver.common.by import By

from browser import open_browser

MARKUP = "<script>document.title='taken over'</script><img src=x onerror=\"document.title='taken over'\">"
FOLDER = "a&b <i>'\" ü 畫"
NAME = "p <b>&amp;' #1% ä"
# HtmlImages: what has to be there for it, and how many pictures a pair shows.
SHOWN = {1: ("--LeftRightOutput=2", 2), 2: ("--StereoOutput=2", 1), 3: ("--AnaglyphOutput=2", 1), 4: ("--StereoOutput=2", 2)}


class Report(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.temporary = tempfile.TemporaryDirectory(prefix="zemora report ")
        cls.folder = os.path.join(cls.temporary.name, FOLDER)
        os.mkdir(cls.folder)
        pair = [os.path.join(cls.folder, NAME + end) for end in ("_l.jpg", "_r.jpg")]
        subprocess.run([SCENE, *pair, "500", "400", "height=3"], check=True, stdout=subprocess.DEVNULL)
        cls.browser = open_browser()

    @classmethod
    def tearDownClass(cls):
        cls.browser.quit()
        cls.temporary.cleanup()

    def mount(self, *settings):
        call = [ZEMORA, "--PathofImages=" + self.folder, "--InputMode=1", "--StopAtError=0", "--VerboseMode=2",
                "--MetaTransfer=0", "--LeftRightOutput=0", "--StereoOutput=0", "--AnaglyphOutput=0", "--Language=1",
                "--WriteDataBase=0", "--ImageText=" + MARKUP, "--CaptionText=" + MARKUP, "--ExifCopyright=" + MARKUP]
        run = subprocess.run(call + list(settings), stdin=subprocess.DEVNULL, capture_output=True, check=False)
        self.assertEqual(run.returncode, 0, run.stdout[-3000:])

    def open_report(self):
        self.browser.get("file://" + quote(os.path.join(self.folder, "zemora_report.html")))
        self.assertIn("Report", self.browser.title)

    def test_pictures_are_shown_and_no_text_becomes_markup(self):
        for choice, (output, pictures) in SHOWN.items():
            with self.subTest(HtmlImages=choice):
                self.mount(f"--HtmlImages={choice}", "--ReportMode=1", output)
                self.open_report()
                shown = self.browser.find_elements(By.TAG_NAME, "img")
                self.assertEqual(len(shown), pictures)
                for picture in shown:
                    self.assertGreater(int(picture.get_property("naturalWidth")), 0, picture.get_attribute("src"))
                self.assertEqual(self.browser.find_elements(By.CSS_SELECTOR, "i, div.pair script"), [])
                self.assertIn(NAME + "_l.jpg", self.browser.find_element(By.TAG_NAME, "body").text)
                self.assertEqual(self.browser.get_log("browser"), [])

    def test_a_dome_image_is_shown_by_its_thumbnails_and_labels_stay_on_one_line(self):
        self.mount("--HtmlImages=3", "--ReportMode=1", "--AnaglyphOutput=2", "--PlanetariumOutput=1")
        self.open_report()
        shown = self.browser.find_elements(By.TAG_NAME, "img")
        self.assertEqual([int(picture.get_property("naturalWidth")) > 0 for picture in shown], [True, True])
        self.browser.set_window_size(500, 800)
        lines = self.browser.execute_script("""return Array.from(document.querySelectorAll(
            "table[cellspacing] td:first-child:not([colspan])"), cell => {
                const label = document.createRange();
                label.selectNodeContents(cell);
                return label.getClientRects().length;
            })""")
        self.assertGreater(len(lines), 10)
        self.assertEqual(max(lines), 1, "a label is broken")

    def test_an_appended_report_is_one_page_and_hands_its_values_to_the_calculator(self):
        for _ in range(2):
            self.mount("--ReportMode=2", "--HtmlImages=0", "--StereoOutput=2")
        self.open_report()
        self.assertGreaterEqual(len(self.browser.find_elements(By.CSS_SELECTOR, "div.pair")), 2)
        link = self.browser.find_elements(By.PARTIAL_LINK_TEXT, "Comfort Calculator")[-1]
        query = dict(part.split("=") for part in link.get_attribute("href").split("?")[1].split("&"))
        link.click()
        self.browser.switch_to.window(self.browser.window_handles[-1])
        ratio = self.browser.find_element(By.ID, "i_ratio").get_property("value")
        self.assertAlmostEqual(float(ratio), int(query["wi"]) / int(query["hei"]), delta=0.001)


if __name__ == "__main__":
    ZEMORA, SCENE = os.path.abspath(sys.argv[1]), os.path.abspath(sys.argv[2])
    unittest.main(argv=sys.argv[:1])
