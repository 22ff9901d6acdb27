#!/usr/bin/env python3
"""Draws the example documents (label.pdf, stencil.pdf, label.png, barcode-ladder.pdf) with nothing but Python.

The PDF files are plain text inside, so that a change can be read.
SPDX-License-Identifier: Apache-2.0
"""
import itertools
import math
import pathlib
import struct
import zlib

FOLDER = pathlib.Path(__file__).parent


def pdf(name, width, height, content, extra=""):
    """Writes a document of one page; `extra` goes into the page's resources."""
    fonts = "/Font << /F1 5 0 R /F2 6 0 R >>"
    bodies = [
        "<< /Type /Catalog /Pages 2 0 R >>",
        "<< /Type /Pages /Kids [3 0 R] /Count 1 >>",
        f"<< /Type /Page /Parent 2 0 R /MediaBox [0 0 {width} {height}] /Contents 4 0 R\n"
        f"   /Resources << {fonts} {extra} >> >>",
        f"<< /Length {len(content)} >>\nstream\n{content}\nendstream",
        "<< /Type /Font /Subtype /Type1 /BaseFont /Helvetica >>",
        "<< /Type /Font /Subtype /Type1 /BaseFont /Helvetica-Bold >>",
    ]
    text, places = "%PDF-1.4\n", []
    for number, body in enumerate(bodies, 1):
        places.append(len(text))
        text += f"{number} 0 obj\n{body}\nendobj\n"
    xref = len(text)
    text += f"xref\n0 {len(bodies) + 1}\n0000000000 65535 f \n"
    text += "".join(f"{place:010d} 00000 n \n" for place in places)
    text += f"trailer\n<< /Size {len(bodies) + 1} /Root 1 0 R >>\nstartxref\n{xref}\n%%EOF\n"
    (FOLDER / name).write_text(text, encoding="ascii", newline="\n")


def words(x, y, size, text, font="F1"):
    return f"BT /{font} {size} Tf {x} {y} Td ({text}) Tj ET"


# The modules of two symbols that both contain the number of the label, one bit each, rows from the top.
# zint --barcode=20 -d KV2011748206 --dump
CODE_128 = "D2163BAC5DEC9D8921949E99199B1D6"
# zint --barcode=58 --secure=2 -d https://example.com/KV2011748206 --dump
QR_CODE = """
FE1C8BF8
82A3D208
BA66B2E8
BA1F1AE8
BAEA62E8
82545A08
FEAAABF8
00168000
AA731890
E1CB1A48
0B5423B8
98F16C90
BB30FE58
8D158648
BEEBE5D8
211EBD50
DBEB7E58
51336E68
AAEC6698
58B969D0
AF709F80
00EDD8B8
FE03DAD8
8226C8D8
BAE32F98
BA7F0CA0
BA8649C8
82071A10
FEFE9998
""".split()


def modules(x, y, width, height, rows):
    """Rectangles for the runs of dark modules; `y` is the bottom of the lowest row."""
    bars = []
    for line, row in enumerate(reversed(rows)):
        bits = "".join(f"{int(digit, 16):04b}" for digit in row)
        at = 0
        for dark, run in itertools.groupby(bits):
            length = len(list(run))
            if dark == "1":
                bars.append(f"{x + at * width:.4f} {y + line * height:.4f} {length * width:.4f} {height:.4f} re f")
            at += length
    return "\n".join(bars)


def label():
    """A shipping label of 4 by 6 inches: text, rules, a Code 128 and a QR code, a grey ramp, a black field."""
    page = [
        "1.5 w 12 12 264 408 re S",
        "12 348 m 276 348 l S 12 236 m 276 236 l S 12 96 m 276 96 l S 200 348 m 200 420 l S",
        words(22, 404, 8, "FROM"),
        words(22, 390, 11, "Harbour Lamp Works", "F2"),
        words(22, 376, 11, "14 Quay Street"),
        words(22, 362, 11, "Northport 20117"),
        "208 356 60 56 re f 1 g",
        words(221, 372, 40, "A", "F2"),
        "0 g",
        words(22, 332, 8, "TO"),
        words(22, 304, 22, "Ada Winterbourne", "F2"),
        words(22, 280, 18, "Flat 3, 77 Mill Lane"),
        words(22, 254, 22, "Oldbridge  48 206", "F2"),
    ]
    dot = 72 / 203
    page.append(modules(80 * dot, 124, 4 * dot, 100, [CODE_128]))
    page.append(modules(608 * dot, 160, 5 * dot, 5 * dot, QR_CODE))
    page.append(words(82, 106, 12, "KV 2011 7482 06"))
    for step in range(11):
        page.append(f"{step / 10:g} g {24 + step * 22} 52 22 34 re f")
    page += ["0 g", words(24, 34, 7, "0"), words(130, 34, 7, "grey ramp"), words(250, 34, 7, "100")]
    page.append("0.2 w " + " ".join(f"{24 + i} 20 m {24 + i * 1.1:.1f} 30 l S" for i in range(0, 220, 4)))
    pdf("label.pdf", 288, 432, "\n".join(page))


def petal(angle, length, spread):
    """A closed petal from the origin, turned by `angle` degrees, as two curves."""
    turned = []
    for x, y in ((length * 0.3, spread), (length * 0.8, spread), (length, 0),
                 (length * 0.8, -spread), (length * 0.3, -spread), (0, 0)):
        a = math.radians(angle)
        turned.append(f"{x * math.cos(a) - y * math.sin(a):.1f} {x * math.sin(a) + y * math.cos(a):.1f}")
    return f"0 0 m {' '.join(turned[:3])} c {' '.join(turned[3:])} c h"


def stencil():
    """A flower on an A4 sheet: fine and strong lines, three greys, a shaded disc, a spiral."""
    page = ["1 J 1 j q 1 0 0 1 297 470 cm"]
    for count, length, spread, grey, line in ((12, 230, 62, 0.88, 1.2), (9, 165, 56, 0.75, 1.8),
                                              (7, 105, 44, 0.55, 2.6)):
        for i in range(count):
            page.append(f"{grey} g 0 G {line} w {petal(360 * i / count + count, length, spread)} B")
    page.append("q 44 0 m 44 24.3 24.3 44 0 44 c -24.3 44 -44 24.3 -44 0 c "
                "-44 -24.3 -24.3 -44 0 -44 c 24.3 -44 44 -24.3 44 0 c h W n /Disc sh Q")
    spiral = [(3 + t * 0.9, t * 0.33) for t in range(45)]
    page.append("2 w " + " ".join(
        f"{r * math.cos(a):.1f} {r * math.sin(a):.1f} {'l' if i else 'm'}"
        for i, (r, a) in enumerate(spiral)) + " S Q")
    page.append("5 w 297 236 m 280 190 330 150 300 70 c S")
    page.append("0.9 g 2 w 300 150 m 350 190 400 180 430 150 c 390 120 340 120 300 150 c B")
    page.append("0.5 w " + " ".join(f"{330 + i * 12} {152 + i} m {342 + i * 12} {172 - i} l S"
                                    for i in range(6)))
    disc = ("/Shading << /Disc << /ShadingType 3 /ColorSpace /DeviceGray /Coords [0 0 0 0 0 44]\n"
            "   /Function << /FunctionType 2 /Domain [0 1] /C0 [1] /C1 [0.35] /N 1.5 >> >> >>")
    pdf("stencil.pdf", 595.28, 841.89, "\n".join(page), disc)


def picture():
    """A grey ball on a checked floor, 240 by 160 dots."""
    width, height = 240, 160
    rows = bytearray()
    for y in range(height):
        rows.append(0)  # no filter
        for x in range(width):
            grey = 235 - y // 4 if y < 110 else (120 if (x // 20 + y // 10) % 2 else 215)
            dx, dy = (x - 120) / 62, (y - 78) / 62
            if dx * dx + dy * dy < 1:
                light = (-0.5 * dx - 0.6 * dy + 0.6 * math.sqrt(1 - dx * dx - dy * dy)) / 0.99
                grey = int(30 + 215 * max(light, 0.0))
            rows.append(min(grey, 255))

    def chunk(kind, data):
        return struct.pack(">I", len(data)) + kind + data + struct.pack(">I", zlib.crc32(kind + data))

    header = struct.pack(">IIBBBBB", width, height, 8, 0, 0, 0, 0)
    (FOLDER / "label.png").write_bytes(
        b"\x89PNG\r\n\x1a\n" + chunk(b"IHDR", header) + chunk(b"IDAT", zlib.compress(bytes(rows), 9))
        + chunk(b"IEND", b""))


# Code 39: five bars and four spaces per character, n narrow and w wide.
CODE_39 = {
    "0": "nnnwwnwnn", "1": "wnnwnnnnw", "2": "nnwwnnnnw", "3": "wnwwnnnnn", "4": "nnnwwnnnw",
    "5": "wnnwwnnnn", "6": "nnwwwnnnn", "7": "nnnwnnwnw", "8": "wnnwnnwnn", "9": "nnwwnnwnn",
    ".": "wwnnnnwnn", "*": "nwnnwnwnn",
}


def code_39(x, y, module, height, text):
    """Rectangles for a symbol; wide elements are three modules wide."""
    bars = []
    for character in f"*{text}*":
        for i, element in enumerate(CODE_39[character]):
            width = module * (3 if element == "w" else 1)
            if i % 2 == 0:
                bars.append(f"{x:.4f} {y} {width:.4f} {height} re f")
            x += width
        x += module
    return "\n".join(bars)


def ladder():
    """A sheet of 4 by 6 inches: one barcode per line, each a little wider, with its module width as content."""
    page = [words(20, 408, 13, "Barcode ladder", "F2"),
            words(20, 394, 8, "Scan from the top. Each code contains its bar width in millimetres."),
            words(20, 383, 8, "Use the first width that always scans, or a wider one.")]
    widths = ((0.125, "203 dpi: 1 dot"), (0.169, "300 dpi: 2 dots"), (0.200, ""),
              (0.250, "203 dpi: 2 dots"), (0.254, "300 dpi: 3 dots"), (0.300, ""),
              (0.339, "300 dpi: 4 dots"), (0.375, "203 dpi: 3 dots"), (0.423, "300 dpi: 5 dots"),
              (0.500, "203 dpi: 4 dots"))
    # Exact widths in points, so that the bars are whole dots at that resolution.
    exact = {0.125: 72 / 203, 0.169: 2 * 0.24, 0.250: 2 * 72 / 203, 0.254: 3 * 0.24, 0.339: 4 * 0.24,
             0.375: 3 * 72 / 203, 0.423: 5 * 0.24, 0.500: 4 * 72 / 203}
    for line, (width, note) in enumerate(widths):
        y = 344 - line * 37
        page.append(code_39(20, y, exact.get(width, width * 72 / 25.4), 26, f"{width:.3f}"))
        page.append(words(205, y + 14, 9, f"{width:.3f} mm", "F2"))
        page.append(words(205, y + 4, 7, note))
    pdf("barcode-ladder.pdf", 288, 432, "\n".join(page))


if __name__ == "__main__":
    ladder()
    label()
    stencil()
    picture()
