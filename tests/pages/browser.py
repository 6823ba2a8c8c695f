"""A headless browser for the tests of the pages."""
from selenium import webdriver


def open_browser():
    options = webdriver.ChromeOptions()
    for argument in ("--headless=new", "--no-sandbox", "--disable-gpu", "--window-size=1000,900"):
        options.add_argument(argument)
    options.set_capability("goog:loggingPrefs", {"browser": "ALL"})
    service = webdriver.chrome.service.Service("/usr/bin/chromedriver")
    return webdriver.Chrome(service=service, options=options)
