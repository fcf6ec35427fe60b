# SPDX-License-Identifier: GPL-3.0-or-later
# The browser route of a listing, as a user takes it: the sell page the
# program wrote is opened in headless Chromium from its file, the site's
# submit button pressed, the review page's button pressed in turn, and the
# new item number the site names printed. It types nothing into the form: what
# the listing holds is what the program put there. Only loopback addresses are
# reached.
import argparse
import pathlib
import re
import sys
import tempfile

from selenium import webdriver
from selenium.webdriver.chrome.service import Service
from selenium.webdriver.common.by import By
from selenium.webdriver.support.ui import WebDriverWait


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("--page", required=True, help="the sell page the program wrote")
    parser.add_argument("--chromium", required=True)
    parser.add_argument("--chromedriver", required=True)
    args = parser.parse_args()

    options = webdriver.ChromeOptions()
    options.binary_location = args.chromium
    for flag in ("--headless=new", "--no-sandbox", "--disable-dev-shm-usage",
                 "--no-first-run", "--disable-extensions", "--disable-background-networking",
                 "--disable-component-update", "--disable-sync",
                 "--host-resolver-rules=MAP * ~NOTFOUND, EXCLUDE 127.0.0.1"):
        options.add_argument(flag)
    with tempfile.TemporaryDirectory() as profile:
        options.add_argument("--user-data-dir=" + profile)
        driver = webdriver.Chrome(service=Service(args.chromedriver), options=options)
        try:
            wait = WebDriverWait(driver, 60)
            driver.get(pathlib.Path(args.page).resolve().as_uri())
            driver.find_element(By.CSS_SELECTOR, "form input[type=submit]").click()
            wait.until(lambda d: "Review your listing" in d.page_source
                       or "Problem with your listing" in d.page_source)
            if "Review your listing" not in driver.page_source:
                print(driver.page_source, file=sys.stderr)
                return 1
            driver.find_element(By.CSS_SELECTOR, "form input[type=submit]").click()
            wait.until(lambda d: "Your new item number is" in d.page_source)
            found = re.search(r"Your new item number is <b>#(\d+)</b>", driver.page_source)
            if not found:
                print(driver.page_source, file=sys.stderr)
                return 1
            print(found.group(1))
            return 0
        finally:
            driver.quit()


if __name__ == "__main__":
    sys.exit(main())
