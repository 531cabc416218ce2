#!/usr/bin/python3
# SPDX-License-Identifier: Apache-2.0
"""check_site.py HTML_DIR: opens every page of the site in Chromium, and follows every link within it.

It fails on a link or fragment that leads nowhere, on an error on the console, and on a picture that is not shown.
"""
import functools
import http.server
import os
import pathlib
import sys
import threading
from urllib.parse import urldefrag, unquote

from selenium import webdriver
from selenium.webdriver.chrome.service import Service

# The links of a page, those that scripts made too; what can be a link's aim; and pictures that are not there.
LOOK = """
const done = arguments[0];
Promise.all([...document.images].filter(i => !i.complete).map(i => new Promise(r => { i.onload = i.onerror = r; })))
    .then(() => {
const links = [...document.querySelectorAll('a[href], area[href]')].map(a => a.href.baseVal ?? a.href);
const ids = [...document.querySelectorAll('[id], a[name]')].flatMap(e => [e.id, e.getAttribute('name')]);
const pictures = [...document.querySelectorAll('img')].filter(i => !i.complete || i.naturalWidth === 0).map(i => i.src);
for (const o of document.querySelectorAll('object, iframe')) {
  let root = null;
  try { root = o.contentDocument && o.contentDocument.documentElement; } catch (e) {}
  if (o.id !== 'MSearchResults' && (!root || (/[.]svg$/.test(o.data || o.src) && root.localName !== 'svg'))) {
    pictures.push(o.data || o.src);
  } else if (root && root.localName === 'svg') {
    links.push(...[...root.querySelectorAll('a')].map(a => a.href.baseVal)
      .filter(h => h).map(h => new URL(h, o.data).href));
  }
}
done([links, ids.filter(i => i), pictures]);
});
"""


class Server(http.server.SimpleHTTPRequestHandler):
    def do_GET(self):
        if self.path == "/favicon.ico":  # browsers ask for it unbidden
            self.send_response(204)
            self.end_headers()
        else:
            super().do_GET()

    def log_message(self, *_):
        pass


def start_browser():
    options = webdriver.ChromeOptions()
    options.binary_location = "/usr/bin/chromium"
    for option in ("headless=new", "disable-gpu", "disable-dev-shm-usage", "window-size=1280,900"):
        options.add_argument("--" + option)
    if os.geteuid() == 0:
        options.add_argument("--no-sandbox")  # root has no sandbox
    options.set_capability("goog:loggingPrefs", {"browser": "ALL"})
    browser = webdriver.Chrome(service=Service("/usr/bin/chromedriver"), options=options)
    browser.set_page_load_timeout(60)
    browser.set_script_timeout(60)
    return browser


def look_at(browser, folder, root):
    """Returns what is wrong, and for each page its links and ids."""
    mistakes, pages = [], {}
    # The site's pages, whether or not a link leads there; parts of the search are no pages.
    waiting = [f"{root}/{file.relative_to(folder)}" for file in sorted(folder.glob("*.html"))]
    while waiting:
        page = waiting.pop()
        if page in pages:
            continue
        browser.get(page)
        links, ids, pictures = browser.execute_async_script(LOOK)
        pages[page] = (links, set(ids))
        name = page[len(root) + 1 :]
        mistakes += [f"{name}: picture {picture} is not shown" for picture in pictures]
        mistakes += [f"{name}: console: {entry['message']}" for entry in browser.get_log("browser")
                     if entry["level"] == "SEVERE"]
        for link in links:
            target = urldefrag(link)[0]
            file = folder / unquote(target[len(root) + 1 :])
            if target.startswith(root) and target.endswith(".html") and file.is_file():
                waiting.append(target)
    return mistakes, pages


def follow(pages, folder, root):
    mistakes, count = [], 0
    for page, (links, _) in sorted(pages.items()):
        for link in sorted(set(links)):
            target, fragment = urldefrag(link)
            if not target.startswith(root):
                if not link.startswith(("https:", "http:", "javascript:", "mailto:")):
                    mistakes.append(f"{page[len(root) + 1:]}: {link} leads out of the site")
                continue
            count += 1
            file = folder / unquote(target[len(root) + 1 :])
            if not file.is_file():
                mistakes.append(f"{page[len(root) + 1:]}: link to {target[len(root) + 1:]}, which is not there")
            elif fragment and unquote(fragment) not in pages[target][1]:
                mistakes.append(f"{page[len(root) + 1:]}: link to {link[len(root) + 1:]}, a place that is not there")
    return mistakes, count


def main(folder):
    server = http.server.ThreadingHTTPServer(("127.0.0.1", 0), functools.partial(Server, directory=str(folder)))
    threading.Thread(target=server.serve_forever, daemon=True).start()
    root = f"http://127.0.0.1:{server.server_port}"
    browser = start_browser()
    try:
        mistakes, pages = look_at(browser, folder, root)
    finally:
        browser.quit()
        server.shutdown()
    more, count = follow(pages, folder, root)
    mistakes += more
    print(*mistakes, sep="\n", file=sys.stderr, end="\n" if mistakes else "")
    if len(pages) < 30 or count < 500:
        sys.exit(f"only {len(pages)} pages and {count} links were found")
    print(f"{len(pages)} pages, {count} links")
    sys.exit(bool(mistakes))


main(pathlib.Path(sys.argv[1]).resolve())
