#!/usr/bin/env python3
"""The command line as other tools rely on it: exit statuses, error lines, packing and unpacking, broken files.

    tests/run_commands.py [--vorlane PATH] [FILTER...]

The last line is `N passed, N failed`.
"""

import argparse
import json
import os
import random
import re
import shutil
import socket
import struct
import subprocess
import sys
import tempfile
import time
import zlib

sys.path.insert(0, os.path.dirname(os.path.abspath(__file__)))
from harness.ipp_server import IppServer  # noqa: E402

ROOT = os.path.dirname(os.path.dirname(os.path.abspath(__file__)))
EXAMPLES = sorted(os.listdir(os.path.join(ROOT, "examples")))
EXAMPLES = [e for e in EXAMPLES if os.path.exists(os.path.join(ROOT, "examples", e, "vorlane.toml"))]
SAMPLE = os.path.join(ROOT, "tests", "programs", "banks", "two_parts")


class Failure(Exception):
    pass


class Bench:
    """One folder to work in, and the command."""

    def __init__(self, vorlane, folder):
        self.vorlane, self.folder = vorlane, folder

    def path(self, *names):
        return os.path.join(self.folder, *names)

    def write(self, name, content):
        mode = "wb" if isinstance(content, bytes) else "w"
        with open(self.path(name), mode) as f:
            f.write(content)
        return self.path(name)

    def read(self, name):
        with open(self.path(name), "rb") as f:
            return f.read()

    def run(self, *args, status=0, **variables):
        env = dict(variables, **os.environ, ASAN_OPTIONS="exitcode=99", UBSAN_OPTIONS="exitcode=99:print_stacktrace=1",
                   XDG_DATA_HOME=self.path("data"))
        done = subprocess.run([self.vorlane, *args], stdout=subprocess.PIPE, stderr=subprocess.PIPE,
                              stdin=subprocess.DEVNULL, cwd=self.folder, timeout=120, env=env)
        wanted = status if isinstance(status, tuple) else (status,)
        if done.returncode not in wanted:
            raise Failure(f"vorlane {' '.join(args)}: status {done.returncode}, expected {status}:\n"
                          f"{done.stderr.decode(errors='replace')[-2000:]}")
        return done.stdout, done.stderr.decode("utf-8", "replace")


def expect(condition, why):
    if not condition:
        raise Failure(why)


def wrong_usage(b):
    b.write("a.vlq", "x = 1;")
    for args in ([], ["nonsense"], ["run"], ["run", "--nope", "a.vlq"], ["run", "a.vlq", "--size", "big"],
                 ["run", "a.vlq", "--size", "0x0"], ["run", "a.vlq", "--clock", "slow"], ["run", "a.vlq", "--scale", "big"], ["run", "a.vlq", "--max-time", "-1"],
                 ["run", "a.vlq", "--param", "novalue"], ["run", "a.vlq", "--headless", "--input", "absent.jsonl"],
                 ["pack"], ["extract", "a.vlp"], ["check"], ["reference", "Nothing"], ["info"], ["tokens"]):
        _, err = b.run(*args, status=64)
        expect(err.strip(), f"{args}: no word about what is wrong")


def kept_files(b):
    source = b.write("Game 1.vlq", """
i = New Ini("x");
n = i.GetIntValue("game", "runs", 0);
i.SetValue("game", "runs", n + 1);
f = New File("Scores.txt");
f.SetPosition(f.GetLength());
f.WriteLn("run ", n);
l = f.GetLength();
t = Disk.CreateTemporaryFile();
d = Disk.Exist("D:\\x");
""")
    for run in range(3):
        out, _ = b.run("run", source, "--headless", "--keep-files", "--globals", "-")
        state = json.loads(out)
        expect(state["n"] == run and state["l"] == 7 * (run + 1), f"run {run}: {state}")
        expect(state["t"] == "C:\\WINDOWS\\TEMP\\vl1.tmp" and state["d"] == 0, f"run {run}: {state}")
    out, _ = b.run("saves", "list")
    name = out.decode().split()[0]
    expect(name.startswith("Game-1-") and " 2 files " in out.decode() and source in out.decode(), out)
    out, _ = b.run("saves", "show", source)
    shown = out.decode()
    expect("21  C:\\VORLANE\\Scores.txt" in shown and "C:\\WINDOWS\\Game 1_vlp.ini" in shown and "TEMP" not in shown, shown)
    b.run("saves", "export", name, "-o", "out")
    expect(b.read(os.path.join("out", "VORLANE", "Scores.txt")) == b"run 0\r\nrun 1\r\nrun 2\r\n", "export")
    b.run("saves", "export", name, "-o", "out", status=64)
    b.run("saves", "clear", name)
    expect(b.run("saves", "list")[0] == b"", "cleared")
    b.run("saves", "show", source, status=64)
    os.symlink("/etc/passwd", b.path("out", "VORLANE", "link.txt"))
    b.run("saves", "import", source, "out")
    expect(b"link" not in b.run("saves", "show", source)[0], "a link is not copied")
    out, _ = b.run("run", source, "--headless", "--keep-files", "--globals", "-")
    expect(json.loads(out)["n"] == 3, "imported")
    out, _ = b.run("run", b.write("b.vlq", 'f = New File("x.txt");'), "--headless", status=1)
    b.run("run", b.write("c.vlq", "x = 1;"), "--headless", "--keep-files")
    expect(b.run("saves", "list")[0].count(b"\n") == 1, "nothing was made, nothing is kept")
    b.run("saves", "clear", status=64)
    b.run("saves", "clear", "--all")
    expect(b.run("saves", "list")[0] == b"", "all cleared")
    b.run("saves", status=64)
    b.run("saves", "show", "absent.vlp", status=64)


def printed_pages(b):
    b.write("p.vlq", """
p = New Printer();
a = p.GetPrinterSurface();
p.InitDocument("Two / pages");
s = p.GetPrinterSurface();
p.NewPage();
s.Clear(RED);
p.SendDocument();
b = p.GetPrinterWidth();
p.EndPage();
p.NewPage();
p.EndPage();
p.SendDocument();
c = p.GetPrinterWidth();
g = New Surface(96, 48);
g.Clear(BLUE);
p.Print("Inch", g);
p.Print("Inch", g, 1);
p.Print("Text", "words");
p.InitDocument("never");
p.NewPage();
p.AbortDocument();
p.InitDocument("open");
""")
    out, _ = b.run("run", "p.vlq", "--headless", "--globals", "-", "--print-to", "paper")
    state = json.loads(out)
    expect((state["a"], state["b"], state["c"]) == (0, 2480, 0), state)
    names = sorted(os.listdir(b.path("paper")))
    expect(names == ["Inch-2.pdf", "Inch.pdf", "Text.pdf", "Two - pages.pdf"], names)

    def pages(name):
        pdf = b.read(os.path.join("paper", name))
        expect(pdf.startswith(b"%PDF-") and pdf.rstrip().endswith(b"%%EOF"), name)
        # A picture without colours is kept as grey, or as black and white.
        found = []
        for about, stream in re.findall(rb"<<([^<>]*/Subtype /Image[^<>]*)>>\s*stream\r?\n(.*?)\r?\nendstream", pdf, re.S):
            expect(b"/Width 2480" in about and b"/Height 3508" in about, about)
            bits = int(re.search(rb"/BitsPerComponent (\d+)", about)[1])
            found.append((3 if b"/DeviceRGB" in about else 1, bits, zlib.decompress(stream)))
        return found

    def pixel(page, x, y):
        components, bits, lines = page
        if bits == 1:
            return (lines[y * 310 + x // 8] >> (7 - x % 8) & 1) * 255,
        at = (y * 2480 + x) * components
        return tuple(lines[at:at + components])

    first, second = pages("Two - pages.pdf")
    expect(pixel(first, 5, 5) == pixel(second, 2479, 3507) == (255, 0, 0), "red pages")
    inch, = pages("Inch.pdf")
    white, blue = (255, 255, 255), (0, 0, 255)
    expect([pixel(inch, 299, 149), pixel(inch, 300, 10), pixel(inch, 10, 150)] == [blue, white, white], "an inch by a half")
    full, = pages("Inch-2.pdf")
    expect(pixel(full, 2479, 3507) == blue, "the whole page")
    text, = pages("Text.pdf")
    ink = [(x, y) for y in range(100) for x in range(2480) if pixel(text, x, y)[0] < 128]
    expect(ink and min(x for x, _ in ink) >= 8 and max(y for _, y in ink) < 70, "a line of text")
    b.run("run", "p.vlq", "--headless", status=1)


def printed_to_a_queue(b):
    server = IppServer("attic")
    b.write("p.vlq", """
p = New Printer();
p.InitDocument("Menü");
p.NewPage();
s = p.GetPrinterSurface();
If (p.GetPrinterWidth() > 0) s.Clear(RED);
p.EndPage();
p.SendDocument();
p.InitDocument("never");
p.NewPage();
p.AbortDocument();
w = p.GetPrinterWidth();
p.InitDocument("last");
w = p.GetPrinterWidth();
""".encode("cp1252"))

    def printed_width(queue):
        out, _ = b.run("run", "p.vlq", "--headless", "--globals", "-", "--print-queue", queue, CUPS_SERVER=server.address)
        return json.loads(out)["w"]

    expect(printed_width("cellar") == 0 and not server.documents, "a queue that isn't there printed")
    expect([printed_width("attic"), printed_width("default")] == [2480, 2480], "no printer")
    expect(server.titles == ["Menü"] * 2, server.titles)
    for kind, document in server.documents:
        expect(kind == "application/pdf" and document.startswith(b"%PDF") and document.rstrip().endswith(b"%%EOF"), kind)
    server.shutdown()
    server.server_close()
    expect(printed_width("attic") == 0, "a server that is gone printed")
    b.run("run", "p.vlq", "--print-queue", "attic", "--print-to", "paper", status=64)


def wrong_input_lines(b):
    b.write("a.vlq", "x = 1;")
    for line in ("{", "[]", "{}", '{"at": 1}', '{"at": 1, "type": "nonsense"}', '{"at": "x", "type": "close"}',
                 '{"at": 1, "type": "key", "key": "NoSuchKey"}', '{"at": -5, "type": "resize", "width": 1}',
                 '{"at": 1, "type": "key", "key": "F99999999999"}', '{"at": 1, "type": "joystick"}',
                 '{"at": 1, "type": "joystick", "axis": 0}', '{"at": 1, "type": "mouse", "button": "fifth"}'):
        b.write("in.jsonl", line + "\n")
        b.run("run", "a.vlq", "--headless", "--input", "in.jsonl", status=64)


def recorded_input_replays(b):
    b.write("a.vlq", "Wait(900); g = New GameInput(); Wait(20);")
    lines = [
        {"at": 10, "type": "key", "code": 160, "down": True, "mods": ["shift"]},
        {"at": 20, "type": "char", "code": 233},
        {"at": 30, "type": "mouse", "x": 5, "y": 6, "button": "right", "down": True, "double": True},
        {"at": 30, "type": "mouse", "x": 5, "y": 6, "button": "fourth", "down": False},
        {"at": 40, "type": "mouse", "x": -7, "y": 8},
        {"at": 50, "type": "mouse", "dx": -7, "dy": 8},
        {"at": 60, "type": "wheel", "delta": -120, "x": 1, "y": 2},
        {"at": 70, "type": "resize", "width": 300, "height": 200},
        {"at": 80, "type": "focus", "down": False},
        {"at": 100, "type": "joystick", "joystick": 3, "attach": "A pad, of sorts", "axes": 4, "rotations": 2,
         "buttons": 11, "hats": 1},
        {"at": 110, "type": "joystick", "joystick": 3, "axis": 1, "value": -65535},
        {"at": 120, "type": "joystick", "joystick": 3, "rotation": 0, "value": 77},
        {"at": 130, "type": "joystick", "joystick": 3, "button": 10, "down": True},
        {"at": 140, "type": "joystick", "joystick": 3, "hat": 0, "value": 31500},
        {"at": 150, "type": "joystick", "joystick": 3, "detach": True},
        {"at": 160, "type": "joystick", "joystick": 0, "attach": "", "axes": 0, "rotations": 0, "buttons": 0, "hats": 0},
    ]
    b.write("in.jsonl", "".join(json.dumps(line) + "\n" for line in lines))
    b.run("run", "a.vlq", "--headless", "--input", "in.jsonl", "--record", "out.jsonl", status=0)
    with open(os.path.join(b.folder, "out.jsonl"), encoding="utf-8") as file:
        recorded = [json.loads(line) for line in file]
    expect(recorded == lines, f"recorded {recorded}")


def help_texts(b):
    for command in ([], ["run"], ["pack"], ["info"], ["extract"], ["tokens"], ["check"], ["reference"]):
        out, _ = b.run(*command, "--help")
        expect(b"--help" in out, f"{command}: no help")
    out, _ = b.run("run", "--help")
    for option in ("--headless", "--clock", "--param", "--args", "--detached", "--size", "--max-time", "--input", "--record",
                   "--screenshot", "--globals", "--seed", "--scale", "--full-screen", "--frames", "--no-shell", "--no-settings",
                   "--allow-net", "--real-net"):
        expect(option.encode() in out, f"{option} isn't in the help of run")
        man = open(os.path.join(ROOT, "packaging", "vorlane.1")).read()
        expect(f"Fl -{option[2:]}" in man, f"{option} isn't in the man page")


def statuses_of_run(b):
    b.write("good.vlq", "x = 1;")
    b.write("syntax.vlq", "x = 1;\ny = ;\n")
    b.write("fails.vlq", "x = 1;\n\n\ny = x / 0;\n")
    out, _ = b.run("run", "good.vlq", "--headless", "--globals", "-")
    expect(json.loads(out) == {"x": 1}, out)
    for name, line in (("syntax", "syntax - syntax: Error #16 at line 2."), ("fails", "fails - fails: Error #111 at line 4.")):
        _, err = b.run("run", name + ".vlq", "--headless", status=1)
        expect(err.rstrip("\n").split("\n")[-1] == line, f"last line {err!r}")
    b.run("run", "good.vlq", "--headless", "--globals", "out.json")
    expect(json.loads(b.read("out.json")) == {"x": 1}, "globals in a file")


def frames_in_a_folder(b):
    app = os.path.join(ROOT, "examples", "follow")
    b.run("run", app, "--headless", "--max-time", "500", "--size", "320x240", "--frames", "out")
    names = sorted(os.listdir(b.path("out")))
    expect(len(names) >= 4, f"too few frames: {names}")
    times = [int(n[7:15]) for n in names]
    expect(times == sorted(times) and [int(n[:6]) for n in names] == list(range(1, len(names) + 1)), names)
    pictures = [b.read("out/" + n) for n in names]
    expect(all(a != c for a, c in zip(pictures, pictures[1:])), "the same picture twice")
    b.run("run", app, "--headless", "--max-time", "500", "--size", "320x240", "--frames", "again")
    expect([b.read("again/" + n) for n in sorted(os.listdir(b.path("again")))] == pictures, "another run, other frames")
    b.write("a.vlq", "x = 1;")
    _, err = b.run("run", "a.vlq", "--headless", "--frames", "out", status=64)
    expect("isn't empty" in err, err)
    b.run("run", "a.vlq", "--headless", "--frames", "a.vlq", status=64)


def no_display(b):
    b.write("a.vlq", "x = 1;")
    clean = {k: v for k, v in os.environ.items() if k not in ("DISPLAY", "WAYLAND_DISPLAY", "SDL_VIDEODRIVER")}
    done = subprocess.run([b.vorlane, "run", "a.vlq", "--no-settings"], stdout=subprocess.PIPE, stderr=subprocess.PIPE,
                          stdin=subprocess.DEVNULL, cwd=b.folder, timeout=60, env=clean)
    err = done.stderr.decode()
    expect(done.returncode == 64 and err.count("\n") == 1 and "--headless" in err, f"{done.returncode}: {err}")


def a_broken_settings_file(b):
    os.makedirs(b.path("config", "vorlane"))
    b.write("config/vorlane/settings.toml", "scaling = 'huge'\n")
    b.write("a.vlq", "x = 1;")
    env = dict(os.environ, XDG_CONFIG_HOME=b.path("config"), SDL_VIDEODRIVER="dummy")
    done = subprocess.run([b.vorlane, "run", "a.vlq"], stderr=subprocess.PIPE, cwd=b.folder, timeout=60, env=env)
    expect(done.returncode == 64 and b"settings.toml: line 1: scaling must be" in done.stderr, done.stderr)
    b.run("run", "a.vlq", "--headless")


def unreadable_applications(b):
    os.mkdir(b.path("empty"))
    b.write("empty.vlp", b"")
    b.write("text.vlp", b"this is no application at all, but a text of some length")
    b.write("zeros.vlp", bytes(5000))
    for app in ("absent.vlp", "absent.vlq", "empty", "empty.vlp", "text.vlp", "zeros.vlp"):
        _, err = b.run("run", app, "--headless", status=2)
        expect(err.count("\n") == 1, f"{app}: not one line: {err!r}")
    for command in ("info", "tokens"):
        b.run(command, "absent.vlp", status=2)
    b.run("extract", "text.vlp", "-o", "out", status=2)


def pack_extract_pack(b):
    apps = [(name, os.path.join(ROOT, "examples", name)) for name in EXAMPLES] + [("sample", SAMPLE)]
    for name, folder in apps:
        b.run("pack", folder, "-o", f"{name}.vlp")
        b.run("extract", f"{name}.vlp", "-o", f"{name}-out")
        b.run("pack", f"{name}-out", "-o", f"{name}-again.vlp")
        expect(b.read(f"{name}.vlp") == b.read(f"{name}-again.vlp"), f"{name}: packed again it differs")


def packed_and_folder_run_alike(b):
    b.run("pack", SAMPLE, "-o", "sample.vlp")
    packed, _ = b.run("run", "sample.vlp", "--headless", "--globals", "-")
    folder, _ = b.run("run", SAMPLE, "--headless", "--globals", "-")
    expect(packed == folder and len(packed) > 200, "other globals")


def the_same_twice(b):
    app = os.path.join(ROOT, "examples", "follow")
    outs = []
    for n in (1, 2):
        out, _ = b.run("run", app, "--headless", "--max-time", "700", "--globals", "-", "--screenshot", f"{n}.png")
        outs.append(out)
    expect(outs[0] == outs[1], "other globals the second time")
    expect(b.read("1.png") == b.read("2.png"), "another picture the second time")


def seeds_matter(b):
    b.write("r.vlq", "x = Random(1000000);")
    outs = [b.run("run", "r.vlq", "--headless", "--globals", "-", "--seed", seed)[0] for seed in ("1", "2", "1")]
    expect(outs[0] == outs[2] and outs[0] != outs[1], outs)


def info_as_json(b):
    b.run("pack", SAMPLE, "-o", "sample.vlp")
    out, _ = b.run("info", "sample.vlp", "--json")
    info = json.loads(out)
    text = json.dumps(info)
    for word in ("First", "Second", "words", "Alpha", "cellar"):
        expect(word in text, f"{word} isn't in the JSON")
    out, _ = b.run("info", "sample.vlp")
    for word in (b"First", b"words", b"Alpha"):
        expect(word in out, f"{word} isn't in the text")


def tokens_of_a_source(b):
    b.write("a.vlq", "x = 1 + 2;\nFunction F(n) { Return n; }\n")
    out, _ = b.run("tokens", "a.vlq")
    expect(len(out.decode().strip().split("\n")) >= 15, "too few records")
    b.write("bad.vlq", "x = ;")
    b.run("tokens", "bad.vlq", status=1)


def check_sources(b):
    b.write("good.vlq", "x = 1;\n")
    b.write("bad.vlq", "x = 1;\n  y = ++x;\n")
    b.write("worse.vlq", "x = 1, 2;\n")
    b.run("check", "good.vlq")
    _, err = b.run("check", "good.vlq", "bad.vlq", "worse.vlq", status=1)
    expect("bad.vlq:2:9:" in err and "worse.vlq:1:6:" in err and "good" not in err, err)
    b.run("check", "absent.vlq", status=(1, 2))


def reference_as_json(b):
    out, _ = b.run("reference", "--json")
    classes = {c["class"]: c for c in json.loads(out)}
    for name, number in (("String", 8), ("Math", 2), ("Program", 56), ("System", 39), ("Bank", 60), ("Process", 52)):
        expect(classes[name]["id"] == number, f"{name} has another id")
    for c in classes.values():
        ids = [m["id"] for m in c["members"]]
        expect(len(set(ids)) == len(ids), f"{c['class']}: an id twice")
        for m in c["members"]:
            expect(m["kind"] in ("member", "event", "constant"), m)
            expect(("value" in m) == (m["kind"] == "constant"), m)
            expect((m["kind"] == "event") == (m["name"].startswith("On") and m["kind"] != "constant"), m)
    constants = {m["name"]: m.get("value") for m in classes["System"]["members"]}
    expect(constants["OS_LINUX"] == 5, constants.get("OS_LINUX"))
    out, _ = b.run("reference", "Math")
    expect(b"Atan2" in out, "no Atan2")


def cut_files(b):
    """A file cut anywhere ends with a status of its own and one line, and never takes the player down."""
    b.run("pack", SAMPLE, "-o", "sample.vlp")
    whole = b.read("sample.vlp")
    for size in sorted(set(range(0, 40)) | set(range(0, len(whole), 97))):
        b.write("cut.vlp", whole[:size])
        _, err = b.run("run", "cut.vlp", "--headless", "--max-time", "50", status=(0, 1, 2))
        b.run("info", "cut.vlp", status=(0, 2))
        expect(err.count("\n") <= 2, err)


def flipped_bits(b):
    b.run("pack", SAMPLE, "-o", "sample.vlp")
    whole = b.read("sample.vlp")
    chance = random.Random(4711)
    for _ in range(150):
        broken = bytearray(whole)
        for _ in range(chance.choice((1, 1, 1, 4))):
            broken[chance.randrange(len(broken))] ^= 1 << chance.randrange(8)
        b.write("broken.vlp", bytes(broken))
        b.run("run", "broken.vlp", "--headless", "--max-time", "50", status=(0, 1, 2))
        shutil.rmtree(b.path("out"), ignore_errors=True)
        b.run("extract", "broken.vlp", "-o", "out", status=(0, 1, 2))


def absurd_sizes(b):
    """Every 32-bit word of the file in turn as the largest number: nothing allocates what the file can't hold."""
    b.run("pack", SAMPLE, "-o", "sample.vlp")
    whole = b.read("sample.vlp")
    for at in range(0, min(len(whole), 4000) - 4, 23):
        b.write("absurd.vlp", whole[:at] + b"\xff\xff\xff\x7f" + whole[at + 4:])
        b.run("run", "absurd.vlp", "--headless", "--max-time", "50", status=(0, 1, 2))


def free_ports():
    """A port for TCP with the one above it for datagrams, both free a moment ago."""
    for _ in range(100):
        with socket.socket() as tcp, socket.socket(type=socket.SOCK_DGRAM) as udp:
            tcp.bind(("127.0.0.1", 0))
            port = tcp.getsockname()[1]
            try:
                udp.bind(("127.0.0.1", port + 1))
                return port
            except (OSError, OverflowError):
                continue
    raise Failure("no free ports")


def start(b, source, port):
    return subprocess.Popen([b.vorlane, "run", source, "--headless", "--real-net", "--globals", "-",
                             "--param", f"PORT={port}"], stdout=subprocess.PIPE, stderr=subprocess.PIPE, cwd=b.folder)


def finish_run(process):
    out, err = process.communicate(timeout=90)
    expect(process.returncode == 0, f"status {process.returncode}: {err.decode(errors='replace')}")
    return json.loads(out)


def connect_when_there(port):
    """The server's process may need a moment; the deadline is the operating system's patience with a test."""
    deadline = time.monotonic() + 60
    while True:
        try:
            return socket.create_connection(("127.0.0.1", port), timeout=60)
        except ConnectionRefusedError:
            expect(time.monotonic() < deadline, "nobody listens")


def read_exactly(peer, count):
    data = b""
    while len(data) < count:
        piece = peer.recv(count - len(data))
        expect(piece, f"the connection ended after {data!r}")
        data += piece
    return data


def text_field(text):
    return struct.pack("<I", len(text)) + text


NET_SERVER = """
port = Program.GetParamValue("PORT");
heard = ""; done = 0;
net = New Vex();
server = net.HostServer(port);
server.OnNewConnection = NewConnection;
While (done == 0) { Wait(20); }
Wait(200);
Function NewConnection(s, c) { c.OnMsgFromClient = FromClient; c.SendText("hello " + c.GetName(), 300); }
Function FromClient(c, text, type) {
  heard += c.GetName() + ":" + text + type + ";";
  If (text == "end") { done = 1; }
}
"""

NET_PLAYER = """
port = Program.GetParamValue("PORT");
heard = ""; channel = 0; rounds = 0;
net = New Vex();
p = 0;
While (rounds < 5) {
  If (p == 0) { p = net.Connect("localhost", port, "Bo"); p.OnMsgFromServer = FromServer; p.OnMessage = Message; }
  Wait(20);
}
p.SendText("end", 9);
Wait(300);
Function FromServer(p, text, type) { heard += text + type + ";"; channel = p.SignOn("room"); channel.OnUserIsOn = IsOn; }
Function IsOn(c, u) { u.SendText("ping", 1); }
Function Message(p, u, text, type) { rounds = rounds + 1; If (rounds < 5) { u.SendText("ping", rounds); } }
"""


def wire_by_a_plain_client(b):
    """What a client that knows nothing of the player sees of a server: each byte."""
    b.write("server.vlq", NET_SERVER)
    port = free_ports()
    process = start(b, "server.vlq", port)
    try:
        with connect_when_there(port) as peer:
            motd = b"VexAPI Version 1.22"
            greeting = b"\x0a" + text_field(motd) + struct.pack("<BHI", 12, 3, 1)
            got = read_exactly(peer, len(greeting))
            expect(got == greeting, f"greeting {got!r}")
            peer.sendall(struct.pack("<BH", 12, 3) + text_field(b"Ann"))
            hello = struct.pack("<BHII", 1, 300, 0, 0) + text_field(b"hello Ann")
            got = read_exactly(peer, len(hello))
            expect(got == hello, f"text {got!r}")
            peer.sendall(b"\x04" + text_field(b"hall"))
            joined = (struct.pack("<BIII", 8, 1, 2, 1) + text_field(b"Ann") + text_field(b"127.0.0.1") + text_field(b"hall"))
            got = read_exactly(peer, len(joined))
            expect(got == joined, f"joined {got!r}")
            # A text a byte at a time, and a datagram, which may overtake it.
            for byte in struct.pack("<BH", 2, 77) + text_field(b"slow"):
                peer.sendall(bytes([byte]))
            peer.sendall(struct.pack("<BH", 2, 5) + text_field(b"end"))
        heard = finish_run(process)["heard"]
        expect(heard == "Ann:slow77;Ann:end5;", heard)
    finally:
        process.kill()


def two_players_of_two_processes(b):
    """A plain client and a player in a process of its own, over a server in another."""
    b.write("server.vlq", NET_SERVER)
    b.write("player.vlq", NET_PLAYER)
    port = free_ports()
    server = start(b, "server.vlq", port)
    player = None
    try:
        with connect_when_there(port) as peer:
            peer.sendall(struct.pack("<BH", 12, 3) + text_field(b"Ann") + b"\x04" + text_field(b"room"))
            # Greeting, text, Joined: what comes then is the player's.
            read_exactly(peer, 24 + 7 + 11 + 4 + 9 + 13 + 7 + 13 + 8)
            player = start(b, "player.vlq", port)
            arrived = read_exactly(peer, 13 + 6 + 13)
            expect(arrived == struct.pack("<BIII", 6, 3, 2, 1) + text_field(b"Bo") + text_field(b"127.0.0.1"), f"{arrived!r}")
            for number in range(5):
                ping = read_exactly(peer, 11 + 8)
                expect(ping == struct.pack("<BHII", 1, number or 1, 2, 3) + text_field(b"ping"), f"{number}: {ping!r}")
                peer.sendall(struct.pack("<BHII", 3, 0, 2, 3) + text_field(b"pong"))
            result = finish_run(player)
            expect(result["rounds"] == 5 and result["heard"] == "hello Bo300;", result)
        expect(finish_run(server)["heard"] == "Bo:end9;", "the server heard something else")
    finally:
        server.kill()
        if player:
            player.kill()


NET_RELAY = """
port = Program.GetParamValue("PORT");
heard = ""; came = 0; done = 0;
net = New Vex();
server = net.HostServer(port);
server.OnNewConnection = NewConnection;
While (done == 0) { Wait(20); }
left = server.GetConnectionCount();
Function NewConnection(s, c) { came = came + 1; c.OnMsgFromClient = FromClient; c.SendText("in", 1); }
Function FromClient(c, text, type) {
  heard += text + type + ";";
  c.BlastText("got " + text, 7);
  If (text == "end") { done = 1; }
}
"""


def be_let_in(tcp, name):
    """What comes before the program has set its functions is nobody's: it says when it has."""
    tcp.sendall(struct.pack("<BH", 12, 3) + text_field(name))
    read_exactly(tcp, 24 + 7 + 11 + 4 + 2)


def plain_player(address, port, name):
    """TCP and UDP at an address of its own, so that the port of datagrams isn't the server's."""
    udp = socket.socket(type=socket.SOCK_DGRAM)
    udp.setsockopt(socket.SOL_SOCKET, socket.SO_REUSEADDR, 1)
    udp.bind((address, port + 1))
    udp.settimeout(60)
    tcp = socket.create_connection(("127.0.0.1", port), timeout=60, source_address=(address, 0))
    be_let_in(tcp, name)
    tcp.sendall(b"\x04" + text_field(b"room"))
    return tcp, udp


def datagrams_of_plain_clients(b):
    """Blasts to the server, from it, and relayed by it to the other members, to the byte; strange ones do nothing."""
    b.write("server.vlq", NET_RELAY)
    port = free_ports()
    process = start(b, "server.vlq", port)
    target = ("127.0.0.1", port + 1)
    try:
        connect_when_there(port).close()
        (a_tcp, a_udp), (b_tcp, b_udp) = plain_player("127.0.0.2", port, b"Ann"), plain_player("127.0.0.3", port, b"Bo")
        joined = read_exactly(a_tcp, 13 + 7 + 13 + 8)
        a_id, session = struct.unpack("<II", joined[1:9])
        b_id = struct.unpack("<I", read_exactly(b_tcp, 13 + 6 + 13 + 8)[1:5])[0]
        for strange in (b"", b"\x02", b"\x01" * 14, b"\x63" * 30, b"\x02" + b"\xff" * 4000, b"\x01" + b"\0" * 5000):
            a_udp.sendto(strange, target)
        a_udp.sendto(struct.pack("<BHI", 2, 5, a_id) + b"quick", target)
        got = a_udp.recv(5000)
        expect(got == struct.pack("<BHIII", 1, 7, 0, 0, a_id) + b"got quick", got)
        a_udp.sendto(struct.pack("<BHIII", 1, 9, session, a_id, 0) + b"all", target)
        got = b_udp.recv(5000)
        expect(got == struct.pack("<BHIII", 1, 9, session, a_id, b_id) + b"all", got)
        a_tcp.sendall(struct.pack("<BH", 2, 1) + text_field(b"end"))
        heard = finish_run(process)["heard"]
        expect(heard == "quick5;end1;", heard)
        for s in (a_tcp, a_udp, b_tcp, b_udp):
            s.close()
    finally:
        process.kill()


def a_thousand_connects_in_a_row(b):
    """Some break off at once, some within a message, some say nothing and stay: the server serves the next one."""
    b.write("server.vlq", NET_RELAY)
    port = free_ports()
    process = start(b, "server.vlq", port)
    try:
        connect_when_there(port).close()
        silent = []
        for i in range(1000):
            peer = socket.create_connection(("127.0.0.1", port), timeout=60)
            if i % 4 == 1:
                peer.sendall(struct.pack("<BHI", 12, 3, 100) + b"half")
            if i % 4 == 2:
                peer.setsockopt(socket.SOL_SOCKET, socket.SO_LINGER, struct.pack("ii", 1, 0))
            if i % 50 == 0:
                silent.append(peer)
            else:
                peer.close()
        with socket.create_connection(("127.0.0.1", port), timeout=60) as last:
            be_let_in(last, b"Last")
            last.sendall(struct.pack("<BH", 2, 1) + text_field(b"end"))
            result = finish_run(process)
        expect(result["heard"] == "end1;" and result["came"] == 1, result)
        # Those who said nothing are still there; the others' ends may be seen a moment later.
        expect(len(silent) + 1 <= result["left"] <= 1001, result)
        for peer in silent:
            peer.close()
    finally:
        process.kill()


def the_hosts_stop_in_real_time(b):
    """--max-time counts by the real clock as well; the program ends in order, whether it waits or not."""
    for name, body in (("waits", "While (1) Wait(1000);"), ("works", "While (1) x = x + 1;"),
                       ("deaf", "DisableEvents(); While (1) x = x + 1;"),
                       ("listens", 'l = New VexSocket(); l.Listen(7000); s = New VexSocket(); s.SetTimeOut(1000000); '
                        's.Connect("127.0.0.1", 7000); b = s.Recv(10);')):
        b.write(name + ".vlq", "x = 0; started = 1; " + body)
        start_time = time.monotonic()
        out, _ = b.run("run", name + ".vlq", "--headless", "--clock", "real", "--max-time", "300", "--globals", "-")
        expect(json.loads(out)["started"] == 1, out)
        expect(time.monotonic() - start_time >= 0.3, f"{name}: it ended before its time")


TESTS = [frames_in_a_folder, kept_files, printed_pages, printed_to_a_queue, no_display, a_broken_settings_file, wrong_usage, wrong_input_lines,
         recorded_input_replays, help_texts, statuses_of_run, unreadable_applications, pack_extract_pack,
         packed_and_folder_run_alike, the_same_twice, seeds_matter, info_as_json, tokens_of_a_source, check_sources,
         reference_as_json, wire_by_a_plain_client, two_players_of_two_processes,
         datagrams_of_plain_clients, a_thousand_connects_in_a_row, the_hosts_stop_in_real_time, cut_files, flipped_bits, absurd_sizes]


def main():
    parser = argparse.ArgumentParser(usage=__doc__)
    parser.add_argument("--vorlane", default=os.path.join(ROOT, "build", "tools", "vorlane"))
    parser.add_argument("filters", nargs="*")
    args = parser.parse_args()
    passed = failed = 0
    for test in TESTS:
        if args.filters and not any(f in test.__name__ for f in args.filters):
            continue
        with tempfile.TemporaryDirectory(prefix="vorlane-command-") as folder:
            try:
                test(Bench(os.path.abspath(args.vorlane), folder))
                passed += 1
            except Exception as error:  # a fault of one test must not hide the others
                failed += 1
                print(f"FAILED command {test.__name__}: {'' if isinstance(error, Failure) else type(error).__name__ + ': '}"
                      f"{error}")
    print(f"{passed} passed, {failed} failed")
    return 1 if failed else 0


if __name__ == "__main__":
    sys.exit(main())
