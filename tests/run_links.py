#!/usr/bin/env python3
"""Applications and files from addresses, against a real HTTP server on loopback: redirects, statuses, slow and broken answers.

    tests/run_links.py [--vorlane PATH]

The last line is `N passed, N failed`.
"""

import argparse
import http.server
import json
import os
import subprocess
import sys
import tempfile
import threading

ROOT = os.path.dirname(os.path.dirname(os.path.abspath(__file__)))
DATA = bytes(range(256)) * 200

MAIN = """
data = System.DownloadFile("data.bin");
b = New Binary();
size = 0;
If (data != "") { b.LoadData(data); size = b.GetDataSize(); }
moved = System.DownloadFile("moved");
same = moved != "" && moved != data;
absent = System.DownloadFile("absent.bin");
broken = System.DownloadFile("broken.bin");
elsewhere = System.DownloadFile("http://10.255.255.1/x.bin");
trap = System.DownloadFile("trap");
seen = 0;
last = 0;
total = 0;
stopped = 0;
OnDownload = Told;
slow = System.DownloadFile("slow.bin", 1);
again = slow == System.DownloadFile("SLOW.BIN", 1);
For (i = 0; i < 400 && last != System.DOWNLOADSTATUS_DOWNLOADED; i++) Wait(10);
endless = System.DownloadFile("endless.bin", 1);
OnDownload = Stopper;
For (i = 0; i < 400 && stopped != System.DOWNLOADSTATUS_ABORTED; i++) Wait(10);
Function Told(url, path, done, size, status) { seen++; last = status; total = done; }
Function Stopper(url, path, done, size, status) {
  stopped = status;
  If (done > 0) System.StopFileDownload("endless.bin");
}
"""


AGAIN = """
aborted = System.DOWNLOADSTATUS_ABORTED;
downloaded = System.DOWNLOADSTATUS_DOWNLOADED;
last = 0; done = 0; smallest = 1000000;
OnDownload = Stopper;
first = System.DownloadFile("patient.bin", 1);
For (i = 0; i < 2000 && last != aborted; i++) Wait(10);
stopped = last == aborted;
Wait(50);
last = 0;
OnDownload = Told;
second = System.DownloadFile("patient.bin", 1);
For (i = 0; i < 2000 && last != downloaded && last != aborted; i++) Wait(10);
b = New Binary();
b.LoadData(second);
size = b.GetDataSize();
middle = b.GetByte(30000);
Wait(50);
last = 0;
broken = System.DownloadFile("broken.bin", 1);
For (i = 0; i < 2000 && last != aborted; i++) Wait(10);
broke = last == aborted && done == 5000;
Wait(50);
last = 0;
System.DownloadFile("absent.bin", 1);
For (i = 0; i < 2000 && last != aborted; i++) Wait(10);
absent = last == aborted;
lower = second.ToLowerCase();
named = lower.IndexOf("vrl", 0) >= 0 && lower.IndexOf(".dwn", 0) >= 0;
Function Stopper(url, path, bytes, total, status) {
  last = status;
  If (bytes > 0) System.StopFileDownload("PATIENT.BIN");
}
Function Told(url, path, bytes, total, status) {
  last = status;
  If (bytes > 0) done = bytes;
  If (bytes > 0 && bytes < smallest) smallest = bytes;
}
"""


class Pages(http.server.BaseHTTPRequestHandler):
    protocol_version = "HTTP/1.1"
    asked = []
    ranges = []
    release = threading.Event()

    def log_message(self, *args):
        pass

    def answer(self, status, body=b"", **headers):
        self.send_response(status)
        self.send_header("Content-Length", str(len(body)))
        for name, value in headers.items():
            self.send_header(name, value)
        self.end_headers()
        self.wfile.write(body)

    def do_GET(self):
        Pages.asked.append((self.path, self.headers.get("User-Agent")))
        name = self.path.rsplit("/", 1)[-1]
        if name in self.server.files:
            self.answer(200, self.server.files[name])
        elif name == "data.bin":
            self.answer(200, DATA)
        elif name == "moved":
            self.answer(302, b"elsewhere", Location="/folder/data.bin")
        elif name == "trap":
            self.answer(302, Location="http://10.255.255.1/x")
        elif name == "round":
            self.answer(302, Location="/round")
        elif name == "broken.bin":
            self.send_response(200)
            self.send_header("Content-Length", "100000")
            self.end_headers()
            self.wfile.write(DATA[:5000])
            self.close_connection = True
        elif name == "slow.bin":
            self.send_response(200)
            self.send_header("Content-Length", str(len(DATA)))
            self.end_headers()
            for start in range(0, len(DATA), 10000):
                self.wfile.write(DATA[start:start + 10000])
                self.wfile.flush()
        elif name == "patient.bin":
            # Serves ranges. The first to come is kept waiting until it goes.
            Pages.ranges.append(self.headers.get("Range"))
            part = int(Pages.ranges[-1][6:].split("-")[0]) if Pages.ranges[-1] else 0
            self.send_response(206 if part else 200)
            self.send_header("Accept-Ranges", "bytes")
            self.send_header("Content-Length", str(len(DATA) - part))
            self.end_headers()
            if len(Pages.ranges) > 1:
                self.wfile.write(DATA[part:])
                return
            self.wfile.write(DATA[:20000])
            for byte in DATA[20000:]:
                if Pages.release.wait(0.02):
                    break
                try:
                    self.wfile.write(bytes([byte]))
                except OSError:
                    break
            self.close_connection = True
        elif name == "endless.bin":
            self.send_response(200)
            self.send_header("Content-Length", "1000000000")
            self.end_headers()
            try:
                while not Pages.release.is_set():
                    self.wfile.write(DATA)
            except OSError:
                pass
            self.close_connection = True
        else:
            self.answer(404, b"no such page")


class Failure(Exception):
    pass


def expect(condition, why):
    if not condition:
        raise Failure(why)


class Bench:
    def __init__(self, vorlane, folder, server):
        self.vorlane, self.folder, self.server = vorlane, folder, server
        self.base = f"http://127.0.0.1:{server.server_port}/folder/"

    def pack(self, source):
        path = os.path.join(self.folder, "app")
        os.makedirs(path, exist_ok=True)
        with open(os.path.join(path, "vorlane.toml"), "w") as f:
            f.write('name = "Linked"\n')
        with open(os.path.join(path, "main.vlq"), "w") as f:
            f.write(source)
        out = os.path.join(self.folder, "app.vlp")
        subprocess.run([self.vorlane, "pack", path, "-o", out], check=True, stdout=subprocess.DEVNULL)
        with open(out, "rb") as f:
            return f.read()

    def run(self, url, status=0):
        env = dict(os.environ, ASAN_OPTIONS="exitcode=99", UBSAN_OPTIONS="exitcode=99:print_stacktrace=1")
        done = subprocess.run([self.vorlane, "run", url, "--headless", "--clock", "real", "--detached", "--globals", "-"],
                              stdout=subprocess.PIPE, stderr=subprocess.PIPE, stdin=subprocess.DEVNULL, timeout=60, env=env,
                              cwd=self.folder)
        if done.returncode != status:
            raise Failure(f"{url}: status {done.returncode}, expected {status}: {done.stderr.decode()[-1000:]}")
        return done.stdout, done.stderr.decode()


def downloads_of_a_fetched_application(b):
    b.server.files["app.vlp"] = b.pack(MAIN)
    before = set(os.listdir(b.folder))
    out, _ = b.run(b.base + "app.vlp")
    g = json.loads(out)
    expect(g["size"] == len(DATA), f"data.bin has {g['size']} bytes")
    expect(g["same"] == 1, "the redirect wasn't followed to a file of its own")
    expect(g["absent"] == "" and g["broken"] == "" and g["elsewhere"] == "" and g["trap"] == "", g)
    expect(g["again"] == 1 and g["last"] & 0xFFFFFFFF == 0xBCBC0002 and g["total"] == len(DATA) and g["seen"] >= 2, g)
    expect(g["stopped"] & 0xFFFFFFFF == 0xBCBC0003, g)
    expect(set(os.listdir(b.folder)) == before, "a file was left behind")
    agents = {path: agent for path, agent in Pages.asked}
    expect(agents["/folder/app.vlp"] == "Vorlane ActiveX Control", agents)
    expect(agents["/folder/data.bin"] == "Vorlane Pro", agents)
    expect(sum(path == "/folder/slow.bin" for path, _ in Pages.asked) == 1, "fetched twice")


def what_can_not_be_fetched(b):
    closed = http.server.HTTPServer(("127.0.0.1", 0), Pages)
    port = closed.server_port
    closed.server_close()
    for url in (b.base + "absent.vlp", b.base + "round", b.base + "broken.bin", f"http://127.0.0.1:{port}/a.vlp",
                "gopher://127.0.0.1/a.vlp", "http://"):
        _, err = b.run(url, status=2)
        expect(err.count("\n") == 1 and "fetched" in err, f"{url}: {err!r}")
    _, err = b.run(b.base + "data.bin", status=2)
    expect(err.count("\n") == 1, f"no application: {err!r}")


def a_file_address(b):
    b.pack("x = 7;")
    out, _ = b.run("file://" + os.path.join(b.folder, "app.vlp").replace("a", "%61"))
    expect(json.loads(out)["x"] == 7, out)
    b.run("file:///absent.vlp", status=2)
    b.run("file://elsewhere/absent.vlp", status=2)


def a_stopped_download_is_fetched_anew(b):
    b.server.files["again.vlp"] = b.pack(AGAIN)
    out, _ = b.run(b.base + "again.vlp")
    g = json.loads(out)
    expect(g["stopped"] == 1 and g["first"] != "" and g["second"] != "", g)
    expect(g["size"] == len(DATA) and g["middle"] & 255 == DATA[30000], g)
    expect(Pages.ranges == [None, None], f"asked for parts: {Pages.ranges}")
    expect(g["broke"] == 1 and g["absent"] == 1 and g["named"] == 1, g)


TESTS = [downloads_of_a_fetched_application, what_can_not_be_fetched, a_file_address, a_stopped_download_is_fetched_anew]


def main():
    parser = argparse.ArgumentParser(usage=__doc__)
    parser.add_argument("--vorlane", default=os.path.join(ROOT, "build", "tools", "vorlane"))
    args = parser.parse_args()
    server = http.server.ThreadingHTTPServer(("127.0.0.1", 0), Pages)
    server.daemon_threads = True
    server.files = {}
    threading.Thread(target=server.serve_forever, daemon=True).start()
    passed = failed = 0
    for test in TESTS:
        with tempfile.TemporaryDirectory(prefix="vorlane-links-") as folder:
            try:
                test(Bench(os.path.abspath(args.vorlane), folder, server))
                passed += 1
            except Exception as error:  # a fault of one test must not hide the others
                failed += 1
                print(f"FAILED links {test.__name__}: {'' if isinstance(error, Failure) else type(error).__name__ + ': '}{error}")
    Pages.release.set()
    server.shutdown()
    print(f"{passed} passed, {failed} failed")
    return 1 if failed else 0


if __name__ == "__main__":
    sys.exit(main())
