"""A print server on loopback that knows one queue: the few operations of IPP (RFC 8010) that a client of CUPS needs."""

import http.server
import struct
import threading

OPERATIONS, JOB, END, PRINTER = 1, 2, 3, 4
INTEGER, ENUM, NAME, URI, CHARSET, LANGUAGE = 0x21, 0x23, 0x42, 0x45, 0x47, 0x48
CREATE_JOB, SEND_DOCUMENT, GET_PRINTER_ATTRIBUTES, GET_DEFAULT = 0x0005, 0x0006, 0x000B, 0x4001
NOT_FOUND = 0x0406


def attribute(tag, name, value):
    data = struct.pack(">i", value) if isinstance(value, int) else value.encode()
    return struct.pack(">BH", tag, len(name)) + name.encode() + struct.pack(">H", len(data)) + data


def parse(body):
    """The operation, the values of the attributes by name, and what stands behind them."""
    operation, at, values = struct.unpack(">H", body[2:4])[0], 8, {}
    while body[at] != END:
        if body[at] < 0x10:
            at += 1
            continue
        length, = struct.unpack(">H", body[at + 1:at + 3])
        name = body[at + 3:at + 3 + length].decode()
        at += 3 + length
        length, = struct.unpack(">H", body[at:at + 2])
        values[name] = body[at + 2:at + 2 + length]
        at += 2 + length
    return operation, values, body[at + 1:]


class IppServer(http.server.ThreadingHTTPServer):
    def __init__(self, queue):
        super().__init__(("127.0.0.1", 0), Requests)
        self.queue = queue
        self.titles = []
        self.documents = []
        threading.Thread(target=self.serve_forever, daemon=True).start()

    @property
    def address(self):
        return f"127.0.0.1:{self.server_address[1]}"


class Requests(http.server.BaseHTTPRequestHandler):
    protocol_version = "HTTP/1.1"

    def log_message(self, *args):
        pass

    def body(self):
        if self.headers.get("Transfer-Encoding") != "chunked":
            return self.rfile.read(int(self.headers.get("Content-Length", 0)))
        parts = []
        while size := int(self.rfile.readline(), 16):
            parts.append(self.rfile.read(size))
            self.rfile.readline()
        self.rfile.readline()
        return b"".join(parts)

    def do_POST(self):
        body = self.body()
        operation, values, document = parse(body)
        server = self.server
        uri = f"ipp://{server.address}/printers/{server.queue}"
        printer = bytes([PRINTER]) + attribute(NAME, "printer-name", server.queue) + \
            attribute(URI, "printer-uri-supported", uri) + attribute(ENUM, "printer-state", 3)
        status, group = 0, b""
        asked = values.get("printer-uri", b"").decode()
        if operation != GET_DEFAULT and not asked.endswith("/" + server.queue):
            status = NOT_FOUND
        elif operation in (GET_DEFAULT, GET_PRINTER_ATTRIBUTES):
            group = printer
        elif operation == CREATE_JOB:
            server.titles.append(values["job-name"].decode())
            group = bytes([JOB]) + attribute(INTEGER, "job-id", len(server.titles))
        elif operation == SEND_DOCUMENT:
            server.documents.append((values["document-format"].decode(), document))
            group = bytes([JOB]) + attribute(INTEGER, "job-id", len(server.titles))
        answer = struct.pack(">BBH", 2, 0, status) + body[4:8] + bytes([OPERATIONS]) + \
            attribute(CHARSET, "attributes-charset", "utf-8") + \
            attribute(LANGUAGE, "attributes-natural-language", "en") + group + bytes([END])
        self.send_response(200)
        self.send_header("Content-Type", "application/ipp")
        self.send_header("Content-Length", str(len(answer)))
        self.end_headers()
        self.wfile.write(answer)
