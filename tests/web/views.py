"""What the tests see of a view, and how they use it."""
import re

from browser import Keys
from reports import expect

AREAS = """return [...document.querySelectorAll(".map > .map-row .map-area")].map((area) => {
    const box = area.getBBox();
    const point = (area.getAttribute("d") ?? "").match(/^M(\\S+) ([^A-Za-z]+)/);
    return { name: area.getAttribute("aria-label"), look: area.getAttribute("class").split("map-")[2],
      box: [box.x, box.y, box.width, box.height], point: point && [Number(point[1]), Number(point[2])],
      isStop: area.getAttribute("tabindex") === "0", hasFocus: area === document.activeElement };
  });"""


def text_of(browser, selector):
    return browser.run("return [...document.querySelectorAll(arguments[0])].map((e) => e.textContent)", selector)


def count_line(browser):
    return text_of(browser, "main .count[role=status]")[0]


def check_quiet(browser, where):
    expect(f"what the console says of {where}", browser.complaints(), [])


def type_search(browser, text):
    field = browser.driver.find_element("css selector", "main input[type=search]")
    field.send_keys(Keys.CONTROL, "a", Keys.NULL, Keys.BACKSPACE, text)


def choose(browser, label, begin):
    browser.run("""const [label, begin] = arguments;
        const field = [...document.querySelectorAll("main .field")].find((f) => f.textContent.startsWith(label));
        const select = field.querySelector("select");
        select.value = [...select.options].find((option) => option.text.startsWith(begin)).value;
        select.dispatchEvent(new Event("change"));""", label, begin)


def press(browser, text):
    button = browser.run("""return [...document.querySelectorAll("main button, main summary")]
        .find((b) => b.textContent.trim().startsWith(arguments[0])) ?? null;""", text)
    assert button is not None, f"no button {text}"
    button.click()


def show_all_links(browser, selector):
    """Presses the buttons that show more of short lists."""
    browser.run("""for (const button of document.querySelectorAll(arguments[0] + " .more-places")) {
          while (!button.hidden) button.click();
        }""", selector)


def section_links(browser, title):
    return sorted(browser.run("""const section = [...document.querySelectorAll("main section")]
        .find((s) => s.querySelector("h3").textContent.startsWith(arguments[0]));
        return section ? [...section.querySelectorAll("li a")].map((a) => a.textContent) : [];""", title))


def areas(browser):
    """Those of a map."""
    found = browser.run(AREAS)
    for area in found:
        area["name"], *facts = area["name"].split(", ")
        area["facts"] = ", ".join(facts)
    return found


def number_in(area, words):
    found = re.search(words + r" ([\d,]+)", area["facts"])
    return int(found[1].replace(",", "")) if found else None


def files_in(area):
    return number_in(area, "holds") or 1


def leaves(found):
    return [area for area in found if area["look"] not in ("open", "elsewhere")]


def act(browser, name, event):
    """An event at the area of that name."""
    browser.run("""const [name, event] = arguments;
        const area = [...document.querySelectorAll(".map-area")]
          .find((one) => one.getAttribute("aria-label")?.split(", ")[0] === name);
        area.dispatchEvent(event === "click" ? new MouseEvent(event, { bubbles: true })
                                             : new PointerEvent(event, { bubbles: true }));""", name, event)
