"""Small real files of every format that selu reads, each with a way to print what was read of it.

    for specimen in specimens.ALL:
        specimen.write(folder)                      # writes its files
        checks.run([selu, *specimen.arguments], folder)
"""
import gzip
import json
import struct
import zlib
from dataclasses import dataclass
from typing import Callable, Optional

SIZE = (7, 6, 5)
LEVELS = [(x * 37 + y * 11 + z * 5) % 251 for z in range(5) for y in range(6) for x in range(7)]
PIXELS8 = bytes(LEVELS)
PIXELS16 = struct.pack("<210H", *(level * 257 for level in LEVELS))
SLICE8, SLICE16 = PIXELS8[:42], PIXELS16[:84]
SHOW = ["walk", "window", "--image"]  # prints every voxel's place and value


@dataclass
class Specimen:
    """Files by their names, the one to damage, and the arguments that read them."""
    name: str
    files: dict
    target: str
    arguments: list
    # The target's inner bytes, packed anew after they were damaged; None where nothing is packed.
    pack: Optional[Callable[[bytes], bytes]] = None
    # Whether a cut can be told: a text of numbers cut within or behind its last one is a whole text.
    tells_cuts: bool = True

    def write(self, folder, damaged=None):
        """Writes the files; `damaged` in place of the target's bytes."""
        for name, content in self.files.items():
            if name == self.target:
                content = content if damaged is None else damaged
                content = self.pack(content) if self.pack else content
            path = folder / name
            path.parent.mkdir(parents=True, exist_ok=True)
            path.write_bytes(content)


# ---- PNG ----

def png_chunk(kind, content):
    return (struct.pack(">I", len(content)) + kind + content +
            struct.pack(">I", zlib.crc32(kind + content)))


def png(width, height, bits, rows, color=0, more=b""):
    raw = b"".join(b"\0" + row for row in rows)
    return (b"\x89PNG\r\n\x1a\n" + png_chunk(b"IHDR", struct.pack(">IIBBBBB", width, height, bits, color, 0, 0, 0)) +
            more + png_chunk(b"IDAT", zlib.compress(raw)) + png_chunk(b"IEND", b""))


def png_with_checksums(content):
    """The same chunks with checksums that fit, so that the reader gets beyond them."""
    result, at = content[:8], 8
    while at + 12 <= len(content):
        length = struct.unpack(">I", content[at:at + 4])[0]
        if at + 12 + length > len(content):
            break
        body = content[at + 4:at + 8 + length]
        result += content[at:at + 4] + body + struct.pack(">I", zlib.crc32(body))
        at += 12 + length
    return result + content[at:]


PNG8 = png(7, 6, 8, [SLICE8[y * 7:y * 7 + 7] for y in range(6)])
PNG16 = png(7, 6, 16, [struct.pack(">7H", *struct.unpack("<7H", SLICE16[y * 14:y * 14 + 14]))
                       for y in range(6)])
PNG1 = png(7, 6, 1, [bytes([0b10101010 >> y % 2]) for y in range(6)])


# ---- TIFF ----

def tiff(order, pages, width, height, bits, compression=1, big=False):
    """Grayscale pages of one strip each, or of two where they are packed."""
    offset_type, offset_code = ("Q", 16) if big else ("I", 4)
    head = (b"II" if order == "<" else b"MM") + struct.pack(order + "H", 43 if big else 42)
    result = head + (struct.pack(order + "HHQ", 8, 0, 16) if big else struct.pack(order + "I", 8))
    for index, page in enumerate(pages):
        half = len(page) // 2
        strips = [page] if compression == 1 else [page[:half], page[half:]]
        strips = [tiff_pack(strip, compression) for strip in strips]
        tags = [(256, 3, [width]), (257, 3, [height]), (258, 3, [bits]), (259, 3, [compression]),
                (262, 3, [1]), (273, offset_code, None), (277, 3, [1]),
                (278, 3, [height if compression == 1 else height // 2]),
                (279, offset_code, [len(strip) for strip in strips]), (339, 3, [1])]
        count_size, entry_size, inline = (8, 20, 8) if big else (2, 12, 4)
        start = len(result)
        extra_at = start + count_size + entry_size * len(tags) + struct.calcsize(offset_type)
        item_size = struct.calcsize("=" + offset_type)
        # The values that do not fit into their entries, then the strips.
        lists = item_size * len(strips) if item_size * len(strips) > inline else 0
        places, at = [], extra_at + 2 * lists
        for strip in strips:
            places.append(at)
            at += len(strip)
        entries, extra = b"", b""
        for tag, kind, values in tags:
            values = places if values is None else values
            form = order + str(len(values)) + {3: "H", 4: "I", 16: "Q"}[kind]
            content = struct.pack(form, *values)
            if len(content) > inline:
                where = extra_at + len(extra)
                extra += content
                content = struct.pack(order + offset_type, where)
            entries += struct.pack(order + "HH" + offset_type, tag, kind, len(values)) + content.ljust(inline, b"\0")
        following = 0 if index + 1 == len(pages) else at
        result += struct.pack(order + ("Q" if big else "H"), len(tags)) + entries
        result += struct.pack(order + offset_type, following) + extra + b"".join(strips)
    return result


def tiff_pack(strip, compression):
    if compression == 8:
        return zlib.compress(strip)
    if compression == 32773:  # PackBits: runs of bytes as they are
        return b"".join(bytes([len(strip[i:i + 128]) - 1]) + strip[i:i + 128] for i in range(0, len(strip), 128))
    return strip


PAGES8 = [PIXELS8[z * 42:z * 42 + 42] for z in range(5)]
PAGES16 = [PIXELS16[z * 84:z * 84 + 84] for z in range(5)]
PAGES16_BIG = [struct.pack(">42H", *struct.unpack("<42H", page)) for page in PAGES16]


# ---- NRRD, MetaImage, NIfTI ----

def nrrd(encoding, content, more=""):
    return (f"NRRD0004\ntype: uint16\ndimension: 3\nsizes: 7 6 5\nspacings: 0.5 0.5 2\nendian: little\n"
            f"encoding: {encoding}\n{more}\n").encode() + content


def meta(packed=False, data="LOCAL", content=b""):
    size = f"CompressedDataSize = {len(content)}\n" if packed else ""
    return (f"ObjectType = Image\nNDims = 3\nBinaryData = True\nBinaryDataByteOrderMSB = False\n"
            f"CompressedData = {packed}\n{size}TransformMatrix = 1 0 0 0 1 0 0 0 1\nOffset = 0 0 0\n"
            f"ElementSpacing = 0.5 0.5 2\nDimSize = 7 6 5\nElementType = MET_USHORT\n"
            f"ElementDataFile = {data}\n").encode() + content


def nifti(order, pair=False):
    head = bytearray(348)
    struct.pack_into(order + "i", head, 0, 348)
    struct.pack_into(order + "8h", head, 40, 3, *SIZE, 1, 1, 1, 1)
    struct.pack_into(order + "2h", head, 70, 512, 16)  # unsigned 16-bit
    struct.pack_into(order + "8f", head, 76, 1, 0.5, 0.5, 2, 0, 0, 0, 0)
    struct.pack_into(order + "3f", head, 108, 0 if pair else 352, 1, 0)
    head[344:348] = b"ni1\0" if pair else b"n+1\0"
    return bytes(head) + bytes(4)


TEXT_NUMBERS = " ".join(str(level) for level in LEVELS).encode() + b"\n"


# ---- DICOM ----

def dicom_element(group, element, kind, value, explicit=True):
    if len(value) % 2:
        value += b"\0" if kind == b"UI" else b" "
    head = struct.pack("<HH", group, element)
    if not explicit:
        return head + struct.pack("<I", len(value)) + value
    if kind in (b"OB", b"OW"):
        return head + kind + struct.pack("<HI", 0, len(value)) + value
    return head + kind + struct.pack("<H", len(value)) + value


def dicom(pixels, position=0, explicit=True):
    kind, name = b"1.2.840.10008.5.1.4.1.1.2", b"1.2.3.%d" % (position + 100)
    syntax = b"1.2.840.10008.1.2.1" if explicit else b"1.2.840.10008.1.2"
    begin = b"".join(dicom_element(2, *field) for field in (
        (1, b"OB", b"\0\1"), (2, b"UI", kind), (3, b"UI", name), (0x10, b"UI", syntax), (0x12, b"UI", b"1.2.3.4")))
    short = lambda number: struct.pack("<H", number)
    fields = [(8, 0x16, b"UI", kind), (8, 0x18, b"UI", name), (8, 0x60, b"CS", b"CT"),
              (0x20, 0x0d, b"UI", b"1.2.3.4.5"), (0x20, 0x0e, b"UI", b"1.2.3.4.5.6"),
              (0x20, 0x32, b"DS", b"0\\0\\%d" % position), (0x20, 0x37, b"DS", b"1\\0\\0\\0\\1\\0"),
              (0x28, 2, b"US", short(1)), (0x28, 4, b"CS", b"MONOCHROME2"), (0x28, 0x10, b"US", short(6)),
              (0x28, 0x11, b"US", short(7)), (0x28, 0x30, b"DS", b"0.75\\0.5"), (0x28, 0x100, b"US", short(16)),
              (0x28, 0x101, b"US", short(16)), (0x28, 0x102, b"US", short(15)), (0x28, 0x103, b"US", short(0)),
              (0x7fe0, 0x10, b"OW", pixels)]
    body = b"".join(dicom_element(*field, explicit) for field in fields)
    length = dicom_element(2, 0, b"UL", struct.pack("<I", len(begin)))
    return bytes(128) + b"DICM" + length + begin + body


# ---- What is no image ----

CORNERS = [(0, 0, 0), (9, 0, 0), (0, 9, 0), (0, 0, 9)]
FACES = [(0, 2, 1), (0, 1, 3), (0, 3, 2), (1, 2, 3)]
OFF = ("OFF\n4 4 6\n" + "".join(f"{x} {y} {z}\n" for x, y, z in CORNERS) +
       "".join(f"3 {a} {b} {c}\n" for a, b, c in FACES)).encode()
STL_TEXT = ("solid part\n" + "".join(
    "facet normal 0 0 0\nouter loop\n" + "".join("vertex %d %d %d\n" % CORNERS[i] for i in face) +
    "endloop\nendfacet\n" for face in FACES) + "endsolid part\n").encode()
STL = b"a part".ljust(80) + struct.pack("<I", 4) + b"".join(
    struct.pack("<12fH", 0, 0, 0, *(v for i in face for v in CORNERS[i]), 0) for face in FACES)
MIXTURE = json.dumps({"components": [
    {"weight": 0.75, "distribution": "vmf", "kappa": 50, "theta": 1},
    {"weight": 0.25, "distribution": "isotropic"}]}, indent=1).encode()
FEATURES = json.dumps({"maximum label": 2, "cell 1": {"volume [px]": 12, "status": "inside", "box": [1, 2.5]},
                       "cell 2": {"volume [px]": 7, "status": "border", "box": [3, 4e300]}}, indent=1).encode()
FEATURE_TABLE = ["feature-image", "a.json", "--id-key", "cell", "--csv", "-"]


def image(name, file, content, more=None, target=None, **others):
    """A specimen whose voxels are printed."""
    return Specimen(name, {file: content, **(more or {})}, target or file, [*SHOW, file.split("/")[0]], **others)


GZIPPED = lambda content: gzip.compress(content, mtime=0)
ALL = [
    image("png-8", "a.png", PNG8),
    image("png-16", "a.png", PNG16),
    image("png-1", "a.png", PNG1),
    image("png-checksums", "a.png", PNG16, pack=png_with_checksums),
    image("tiff", "a.tif", tiff("<", PAGES8, 7, 6, 8)),
    image("tiff-one", "a.tif", tiff("<", PAGES16[:1], 7, 6, 16)),
    image("tiff-big-endian", "a.tif", tiff(">", PAGES16_BIG, 7, 6, 16)),
    image("tiff-deflate", "a.tif", tiff("<", PAGES16, 7, 6, 16, 8)),
    image("tiff-packbits", "a.tif", tiff(">", PAGES8, 7, 6, 8, 32773)),
    image("tiff-64", "a.tif", tiff("<", PAGES16, 7, 6, 16, 8, True)),
    image("nrrd", "a.nrrd", nrrd("raw", PIXELS16)),
    image("nrrd-gzip", "a.nrrd", nrrd("gzip", GZIPPED(PIXELS16))),
    image("nrrd-text", "a.nrrd", nrrd("ascii", TEXT_NUMBERS), tells_cuts=False),
    image("nrrd-hex", "a.nrrd", nrrd("hex", PIXELS16.hex().encode())),
    image("nrrd-detached", "a.nhdr", nrrd("raw", b"", "data file: a.raw\n"), {"a.raw": PIXELS16}),
    image("nrrd-data", "a.nhdr", nrrd("raw", b"", "data file: a.raw\n"), {"a.raw": PIXELS16}, "a.raw"),
    image("meta", "a.mha", meta(content=PIXELS16)),
    image("meta-packed", "a.mha", meta(True, content=zlib.compress(PIXELS16))),
    image("meta-detached", "a.mhd", meta(data="a.raw"), {"a.raw": PIXELS16}),
    image("meta-data", "a.mhd", meta(data="a.raw"), {"a.raw": PIXELS16}, "a.raw"),
    image("nifti", "a.nii", nifti("<") + PIXELS16),
    image("nifti-big-endian", "a.nii", nifti(">") + struct.pack(">210H", *struct.unpack("<210H", PIXELS16))),
    image("nifti-gzip", "a.nii.gz", GZIPPED(nifti("<") + PIXELS16)),
    image("nifti-inside", "a.nii.gz", nifti("<") + PIXELS16, pack=GZIPPED),
    image("nifti-pair", "a.hdr", nifti("<", True)[:348], {"a.img": PIXELS16}),
    image("nifti-pixels", "a.hdr", nifti("<", True)[:348], {"a.img": PIXELS16}, "a.img"),
    image("dicom", "a.dcm", dicom(SLICE16)),
    image("dicom-implicit", "a.dcm", dicom(SLICE16, explicit=False)),
    image("dicom-folder", "s/1.dcm", dicom(SLICE16, 0), {"s/2.dcm": dicom(SLICE16, 1), "s/3.dcm": dicom(SLICE16, 2)},
          "s/2.dcm"),
    image("png-folder", "s/1.png", PNG16, {"s/2.png": PNG16, "s/3.png": PNG16}, "s/2.png"),
    image("tiff-folder", "s/1.tif", tiff("<", PAGES8[:1], 7, 6, 8),
          {"s/2.tif": tiff("<", PAGES8[1:2], 7, 6, 8), "s/3.tif": tiff("<", PAGES8[2:3], 7, 6, 8)}, "s/2.tif"),
    Specimen("off", {"a.off": OFF}, "a.off", ["walk", "solid", "--mesh", "a.off"], tells_cuts=False),
    Specimen("stl-text", {"a.stl": STL_TEXT}, "a.stl", ["walk", "solid", "--mesh", "a.stl"]),
    Specimen("stl", {"a.stl": STL}, "a.stl", ["walk", "solid", "--mesh", "a.stl"]),
    Specimen("corners", {"a.csv": b"x,y\n0,0\n10,0\n10,10\n4,6\n"}, "a.csv",
             ["walk", "polygon", "--corners", "a.csv"], tells_cuts=False),
    Specimen("faces", {"c.csv": b"".join(b"%d,%d,%d\n" % corner for corner in CORNERS),
                       "a.csv": b"".join(b"%d,%d,%d\n" % face for face in FACES)}, "a.csv",
             ["walk", "solid", "--corners", "c.csv", "--faces", "a.csv"], tells_cuts=False),
    Specimen("features", {"a.json": FEATURES}, "a.json", FEATURE_TABLE),
    Specimen("mixture", {"a.json": MIXTURE}, "a.json",
             ["sample", "mixture", "file=a.json", "-n", "5", "--seed", "1"]),
]
