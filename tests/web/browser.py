"""A Chromium without a window, that asks nothing of other hosts."""
import pathlib
import shutil
import tempfile

from selenium import webdriver
from selenium.webdriver.chrome.service import Service
from selenium.webdriver.common.keys import Keys  # noqa: F401, for those who use a browser

FLAGS = ["--headless=new", "--no-sandbox", "--disable-gpu", "--disable-quic", "--no-first-run",
         "--disable-background-networking", "--disable-component-update", "--disable-sync",
         "--disable-dev-shm-usage", "--lang=en-GB", "--force-color-profile=srgb"]


class Browser:
    """Used with `with`; its own folder goes at the end."""

    def __enter__(self):
        self.folder = tempfile.mkdtemp(prefix="zvrsit-browser-")
        options = webdriver.ChromeOptions()
        options.binary_location = shutil.which("chromium")
        for flag in [*FLAGS, f"--user-data-dir={self.folder}"]:
            options.add_argument(flag)
        options.set_capability("goog:loggingPrefs", {"browser": "ALL"})
        self.driver = webdriver.Chrome(service=Service(shutil.which("chromedriver")), options=options)
        self.driver.set_script_timeout(90)  # also on a machine that builds meanwhile
        self.command("Performance.enable", timeDomain="threadTicks")
        # Before anything of a page runs: what its policy forbids is kept.
        self.command("Page.addScriptToEvaluateOnNewDocument", source="""
            window.violations = [];
            document.addEventListener("securitypolicyviolation",
              (event) => window.violations.push(event.violatedDirective + " " + event.blockedURI));""")
        return self

    def __exit__(self, *_):
        self.driver.quit()
        shutil.rmtree(self.folder, ignore_errors=True)

    def command(self, name, **values):
        return self.driver.execute_cdp_cmd(name, values)

    def run(self, script, *values):
        return self.driver.execute_script(script, *values)

    def open(self, path, route=""):
        """A report, once its data is shown."""
        self.driver.get("about:blank")
        self.driver.get(pathlib.Path(path).resolve().as_uri() + route)
        self.wait("return document.querySelector('main h2') !== null")

    def keys(self, *keys):
        """Pressed where the focus is."""
        webdriver.ActionChains(self.driver, duration=0).send_keys(*keys).perform()

    def wait(self, script, *values):
        self.driver.execute_async_script(
            "const [body, values, done] = arguments; const test = new Function(body);"
            "const look = () => (test.apply(null, values) ? done() : setTimeout(look, 5)); look();",
            script, list(values))

    def go(self, route):
        """To another view of the page that is open."""
        self.driver.execute_async_script(
            "const [route, done] = arguments; if (location.hash === route) return done();"
            "addEventListener('hashchange', () => setTimeout(done), { once: true });"
            "location.hash = route;", route)

    def screen(self, width, height=900, dark=False, reduced=False):
        self.command("Emulation.setDeviceMetricsOverride", width=width, height=height,
                     deviceScaleFactor=1, mobile=False)
        self.command("Emulation.setEmulatedMedia", features=[
            {"name": "prefers-color-scheme", "value": "dark" if dark else "light"},
            {"name": "prefers-reduced-motion", "value": "reduce" if reduced else "no-preference"}])

    def busy(self):
        """Seconds of the processor that the page has taken."""
        metrics = self.command("Performance.getMetrics")["metrics"]
        return next(row["value"] for row in metrics if row["name"] == "TaskDuration")

    def complaints(self):
        """What the console and the policy have said."""
        return [entry["message"] for entry in self.driver.get_log("browser")] + self.run(
            "return window.violations.splice(0)")
