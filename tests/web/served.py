"""A site that the program serves, and its view in a browser."""
import signal
import subprocess
import time

EDITOR = "editor:{path}:{line}:{column}"
IS_LIVE = "return document.querySelector('main h2') !== null && document.querySelector('.live-live') !== null"


class Served:
    """A site that is served; used with `with`."""

    def __init__(self, sites, name):
        self.words = [sites.program, "--db", sites.folder / "db", "serve", name, "--editor", EDITOR]

    def __enter__(self):
        self.program = subprocess.Popen(self.words, stdout=subprocess.PIPE, text=True)
        self.address = self.program.stdout.readline().strip()
        assert self.address.startswith("http://127.0.0.1:"), self.address
        return self

    def end(self):
        self.program.send_signal(signal.SIGINT)
        self.program.wait(20)

    def __exit__(self, *_):
        self.program.kill()
        self.program.wait()


def open_view(browser, address, route=""):
    browser.driver.get("about:blank")
    browser.driver.get(address + route)
    browser.wait(IS_LIVE)


def shown_after(browser, selector, text, is_there, write):
    """Milliseconds from before write() to when an element shows, or shows no more."""
    browser.run("""const [selector, text, isThere] = arguments;
        window.shownAt = undefined;
        const look = () => {
          const has = [...document.querySelectorAll(selector)].some((e) => e.textContent.includes(text));
          if (has !== isThere || window.shownAt !== undefined) return;
          window.shownAt = Date.now();
          watch.disconnect();
        };
        const watch = new MutationObserver(look);
        watch.observe(document.body, { childList: true, subtree: true });""", selector, text, is_there)
    begin = time.time() * 1000
    write()
    browser.wait("return window.shownAt !== undefined")
    return browser.run("return window.shownAt") - begin
