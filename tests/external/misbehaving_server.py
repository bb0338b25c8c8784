"""An HTTP server that does whatever real ones do wrong; each path is one way to do it."""
import asyncio
import collections
import email.utils
import gzip
import ssl
import threading
import time
import zlib

PAGE = ('<p id="here">x<p id=user-content-readme><a name="old name">x</a><p id="caf\u00e9">'
        '<template><p id=hidden></template>')
ROBOTS = "User-agent: *\nDisallow: /\n\nUser-agent: Zvrsit\nDisallow: /private\nAllow: /private/open$\n"
BOMB_SIZE = 200 << 20


class Server:
    """Serves on a free port of the loopback until closed. `seen` counts requests by (method, path)."""

    def __init__(self, certificate=None):
        self.seen = collections.Counter()
        self.times = collections.defaultdict(list)
        self.busy = self.busiest = 0
        self.bomb = b""
        self.loop = asyncio.new_event_loop()
        context = None
        if certificate:
            context = ssl.SSLContext(ssl.PROTOCOL_TLS_SERVER)
            context.load_cert_chain(certificate)
        self.server = self.loop.run_until_complete(
            asyncio.start_server(self.serve, "127.0.0.1", 0, ssl=context, limit=1 << 20))
        self.port = self.server.sockets[0].getsockname()[1]
        self.address = f"{'https' if certificate else 'http'}://127.0.0.1:{self.port}"
        threading.Thread(target=self.run, daemon=True).start()

    def run(self):
        self.loop.set_exception_handler(lambda loop, context: None)
        self.loop.run_forever()

    def asked(self, path):
        return self.seen["HEAD", path] + self.seen["GET", path]

    def forget(self):
        self.seen.clear()
        self.times.clear()
        self.busiest = 0

    async def serve(self, reader, writer):
        try:
            while await self.answer(reader, writer):
                await writer.drain()
        except (ConnectionError, asyncio.IncompleteReadError):
            pass
        finally:
            writer.close()

    async def answer(self, reader, writer):
        """One request; false when the connection ends with it."""
        head = (await reader.readuntil(b"\r\n\r\n")).decode("latin-1").split("\r\n")
        method, target, _ = head[0].split(" ", 2)
        headers = {name.lower(): value.strip()
                   for name, _, value in (line.partition(":") for line in head[1:])}
        path = "/" + target.split("/", 3)[3] if target.startswith("http") else target
        self.seen[method, path] += 1
        self.times[path].append(time.monotonic())
        self.busy += 1
        self.busiest = max(self.busiest, self.busy)
        try:
            return await self.reply(method, path, headers, reader, writer)
        finally:
            self.busy -= 1

    async def reply(self, method, path, headers, reader, writer):
        is_head = method == "HEAD"
        name = path[1:].split("?")[0].replace("/", "_").replace("-", "_").replace(".", "_")

        def send(status, body=b"", **fields):
            lines = [f"HTTP/1.1 {status} Text"]
            fields.setdefault("Content_Length", str(len(body)))
            lines += [f"{key.replace('_', '-')}: {value}" for key, value in fields.items()]
            writer.write("\r\n".join(lines).encode("utf-8") + b"\r\n\r\n" + (b"" if is_head else body))
            return True

        if method == "CONNECT":
            return send(407)
        if name.isdigit():
            return send(int(name))
        special = getattr(self, "at_" + name, None)
        if special is None:
            return send(200, b"ok")
        done = special(send, is_head, headers, path, writer)
        return await done if asyncio.iscoroutine(done) else done

    # Redirects.
    def at_moved(self, send, *_):
        return send(301, Location="/ok?1")

    def at_moved_308(self, send, *_):
        return send(308, Location="ok")

    def at_moved_to_place(self, send, *_):
        return send(301, Location="/old-page#here")

    def at_moved_to_nobody(self, send, *_):
        return send(301, Location="http://nosuch.invalid/y")

    def at_to_cataloging(self, send, *_):
        return send(302, Location="/cataloging/")

    def at_for_now(self, send, *_):
        return send(302, Location="/ok")

    def at_moved_then_for_now(self, send, *_):
        return send(301, Location="/for-now")

    def at_for_now_then_moved(self, send, *_):
        return send(307, Location="/moved")

    def at_moved_to_nothing(self, send, *_):
        return send(301, Location="/404")

    def at_loop(self, send, *_):
        return send(302, Location="/loop")

    def at_account(self, send, *_):
        return send(302, Location="/users/sign_in?next=/account")

    def at_to_ftp(self, send, *_):
        return send(302, Location="ftp://127.0.0.1/x")

    def at_to_file(self, send, *_):
        return send(301, Location="file:///etc/hostname")

    def at_to_password(self, send, *_):
        return send(301, Location=f"{self.address.replace('//', '//bob:secret@')}/ok")

    def at_to_mark(self, send, *_):
        return send(301, Location="/\x1b]0;x\x07")

    # What HEAD is refused with.
    def at_head_405(self, send, is_head, *_):
        return send(405 if is_head else 200, b"ok")

    def at_head_404(self, send, is_head, *_):
        return send(404 if is_head else 200, b"ok")

    def at_head_500(self, send, is_head, *_):
        return send(500 if is_head else 200, b"ok")

    def at_head_dropped(self, send, is_head, *_):
        return not is_head and send(200, b"ok")

    # What passes.
    def at_wait_a_second(self, send, is_head, headers, path, writer):
        is_first = self.asked(path) == 1
        return send(429, Retry_After="1") if is_first else send(200)

    def at_wait_until(self, send, is_head, headers, path, writer):
        when = email.utils.formatdate(time.time() + 2, usegmt=True)
        return send(503, Retry_After=when) if self.asked(path) == 1 else send(200)

    def at_wait_forbidden(self, send, is_head, headers, path, writer):
        return send(403, Retry_After="1") if self.asked(path) == 1 else send(200)

    def at_wait_for_ever(self, send, *_):
        return send(429, Retry_After="999999999999")

    def at_later(self, send, is_head, headers, path, writer):
        return send(503 if self.asked(path) < 3 else 200)

    def at_dropped_once(self, send, is_head, headers, path, writer):
        return self.asked(path) > 2 and send(200)

    # What does not end, or too early.
    async def at_silent(self, send, *_):
        await asyncio.sleep(30)

    async def at_endless(self, send, is_head, headers, path, writer):
        if is_head:
            return send(405)
        send(200, Content_Length=str(1 << 60))
        while True:
            writer.write(b"x" * 65536)
            await writer.drain()

    async def at_stalled(self, send, is_head, headers, path, writer):
        if is_head:
            return send(405)
        send(200, Content_Length="1000")
        await writer.drain()
        await asyncio.sleep(30)

    def at_truncated(self, send, is_head, *_):
        send(405 if is_head else 200, b"<p id=x>", Content_Length="1000")
        return is_head

    async def at_endless_headers(self, send, is_head, headers, path, writer):
        writer.write(b"HTTP/1.1 200 OK\r\n")
        while True:
            writer.write(b"X-Field: " + b"x" * 4000 + b"\r\n")
            await writer.drain()

    def at_long_header(self, send, *_):
        return send(200, X_Long="x" * 300_000)

    def at_bomb(self, send, is_head, *_):
        if not self.bomb:  # made in pieces: the memory of this process counts for those it starts
            zipper = zlib.compressobj(1, wbits=31)
            pieces = [zipper.compress(b" " * (1 << 20)) for _ in range(BOMB_SIZE >> 20)]
            self.bomb = b"".join(pieces) + zipper.flush()
        return send(200, self.bomb, Content_Encoding="gzip", Content_Type="text/html")

    # What is no HTTP, or no answer.
    def at_garbage(self, send, is_head, headers, path, writer):
        writer.write(b"SSH-2.0-server\r\n\r\n")
        return False

    def at_dropped(self, *_):
        return False

    # What wants something of the client.
    def at_cookie(self, send, is_head, headers, *_):
        if "seen=1" in headers.get("cookie", ""):
            return send(200)
        return send(302, Location="/cookie", Set_Cookie="seen=1")

    def at_locked(self, send, is_head, headers, *_):
        is_known = headers.get("authorization") == "Basic Ym9iOnNlY3JldA=="  # bob:secret
        return send(200) if is_known else send(401, WWW_Authenticate='Basic realm="x"')

    def at_agent(self, send, is_head, headers, *_):
        return send(200 if headers.get("user-agent") == "zvrsit/9 (test)" else 403)

    def at_robots_txt(self, send, *_):
        return send(200, ROBOTS.encode(), Content_Type="text/plain")

    # Pages.
    def at_page(self, send, *_):
        return send(200, PAGE.encode(), Content_Type="text/html; charset=utf-8")

    def at_zipped(self, send, *_):
        return send(200, gzip.compress(PAGE.encode()), Content_Encoding="gzip",
                    Content_Type="text/html")

    def at_no_gzip(self, send, *_):
        return send(200, PAGE.encode(), Content_Encoding="gzip", Content_Type="text/html")

    def at_old_page(self, send, *_):
        return send(200, PAGE.encode("latin-1"), Content_Type="text/html")

    def at_paper(self, send, *_):
        return send(200, b"%PDF", Content_Type="application/pdf")

    async def at_some_time(self, send, *_):
        await asyncio.sleep(0.03)
        return send(200)
