"""PNG pictures in plain Python: enough to compare screenshots exactly and to write the difference."""

import struct
import zlib

SIGNATURE = b"\x89PNG\r\n\x1a\n"


class Picture:
    """Pixels as rows of (red, green, blue) bytes."""

    def __init__(self, width, height, rows):
        self.width, self.height, self.rows = width, height, rows


def _paeth(a, b, c):
    p = a + b - c
    pa, pb, pc = abs(p - a), abs(p - b), abs(p - c)
    return a if pa <= pb and pa <= pc else b if pb <= pc else c


def _unfilter(kind, line, above, step):
    if kind == 0:
        return
    for i in range(len(line)):
        left = line[i - step] if i >= step else 0
        up = above[i]
        corner = above[i - step] if i >= step else 0
        if kind == 1:
            add = left
        elif kind == 2:
            add = up
        elif kind == 3:
            add = (left + up) >> 1
        elif kind == 4:
            add = _paeth(left, up, corner)
        else:
            raise ValueError(f"filter {kind}")
        line[i] = (line[i] + add) & 255


def load(path):
    """Any 8-bit PNG without interlacing; alpha is dropped."""
    with open(path, "rb") as f:
        data = f.read()
    if data[:8] != SIGNATURE:
        raise ValueError(f"{path} is no PNG")
    position, body, palette, head = 8, b"", b"", None
    while position + 8 <= len(data):
        size, kind = struct.unpack(">I4s", data[position:position + 8])
        chunk = data[position + 8:position + 8 + size]
        position += 12 + size
        if kind == b"IHDR":
            head = struct.unpack(">IIBBBBB", chunk)
        elif kind == b"PLTE":
            palette = chunk
        elif kind == b"IDAT":
            body += chunk
    width, height, depth, colour, _, _, interlace = head
    if depth != 8 or interlace:
        raise ValueError(f"{path}: only 8 bits a channel without interlacing")
    step = {0: 1, 2: 3, 3: 1, 4: 2, 6: 4}[colour]
    raw = zlib.decompress(body)
    above, rows, position = bytearray(width * step), [], 0
    for _ in range(height):
        line = bytearray(raw[position + 1:position + 1 + width * step])
        _unfilter(raw[position], line, above, step)
        position += 1 + width * step
        above = line
        if colour == 2:
            rows.append(bytes(line))
            continue
        row = bytearray(width * 3)
        for channel in range(3):
            if colour == 3:
                row[channel::3] = bytes(palette[3 * v + channel] for v in line)
            else:
                row[channel::3] = line[(channel if colour == 6 else 0)::step]
        rows.append(bytes(row))
    return Picture(width, height, rows)


def save(path, picture):
    raw = b"".join(b"\0" + row for row in picture.rows)

    def chunk(kind, data):
        return struct.pack(">I", len(data)) + kind + data + struct.pack(">I", zlib.crc32(kind + data))

    head = struct.pack(">IIBBBBB", picture.width, picture.height, 8, 2, 0, 0, 0)
    with open(path, "wb") as f:
        f.write(SIGNATURE + chunk(b"IHDR", head) + chunk(b"IDAT", zlib.compress(raw, 9)) + chunk(b"IEND", b""))


def differences(a, b):
    """(number of differing pixels, first differing position, a picture that shows them in red)."""
    width, height = max(a.width, b.width), max(a.height, b.height)
    count, first, rows = 0, None, []
    for y in range(height):
        left = a.rows[y] if y < a.height else b""
        right = b.rows[y] if y < b.height else b""
        if left == right and len(left) == 3 * width:
            rows.append(bytes(192 + (v >> 2) for v in left))
            continue
        row = bytearray()
        for x in range(width):
            p, q = left[3 * x:3 * x + 3], right[3 * x:3 * x + 3]
            if p == q:
                row += bytes(192 + (v >> 2) for v in p)
            else:
                row += b"\xff\0\0"
                count += 1
                first = first or (x, y)
        rows.append(bytes(row))
    return count, first, Picture(width, height, rows)
