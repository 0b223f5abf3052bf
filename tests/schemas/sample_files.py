"""Files for `tympan` to tell of: good ones of each format, made by the command itself, and what can
become of them."""
import shutil
import struct
import subprocess
import zlib

# Places in the file that `tympan sample` makes.
FIRST_ENTRY, ENTRY_BYTES, PATH_AT, Y_OFFSET_AT = 2048, 256, 2, 82
COLOUR_FLAGS = 2049


def png(path, width, height, pixel):
    """An RGB picture; `pixel(x, y)` gives the three bytes."""
    def chunk(name, data):
        return (struct.pack(">I", len(data)) + name + data
                + struct.pack(">I", zlib.crc32(name + data)))
    rows = b"".join(b"\0" + b"".join(bytes(pixel(x, y)) for x in range(width))
                    for y in range(height))
    path.write_bytes(b"\x89PNG\r\n\x1a\n"
                     + chunk(b"IHDR", struct.pack(">IIBBBBB", width, height, 8, 2, 0, 0, 0))
                     + chunk(b"IDAT", zlib.compress(rows)) + chunk(b"IEND", b""))


def tiff(path, bits, samples, photometric):
    """A picture of 8 by 2 pixels, of a kind that these numbers make."""
    shorts = {256: [8], 257: [2], 258: [bits] * samples, 259: [1], 262: [photometric], 273: [8],
              277: [samples], 278: [2], 279: [2 * bits * samples]}
    if photometric == 3:
        shorts[320] = [0] * 3 * 256
    data = bytes(2 * bits * samples)
    fields = b""
    for tag, values in sorted(shorts.items()):
        packed = struct.pack(f"<{len(values)}H", *values).ljust(4, b"\0")
        if len(packed) > 4:
            packed, data = struct.pack("<I", 8 + len(data)), data + packed
        fields += struct.pack("<HHI", tag, 3, len(values)) + packed
    path.write_bytes(struct.pack("<2sHI", b"II", 42, 8 + len(data)) + data
                     + struct.pack("<H", len(shorts)) + fields + bytes(4))


TIFF_KINDS = {"bilevel": (1, 1, 0), "inverse": (8, 1, 0), "grey": (8, 1, 1), "palette": (8, 1, 3),
              "rgb": (8, 3, 2), "ycbcr": (8, 3, 6), "cmyk": (8, 4, 5), "five": (8, 5, 5),
              "six": (8, 6, 5), "seven": (8, 7, 5), "eight": (8, 8, 5), "sixteen": (16, 1, 1)}


def patched(path, name, *patches):
    """A copy beside a file, with other bytes at some places."""
    data = bytearray(path.read_bytes())
    for place, new in patches:
        data[place:place + len(new)] = new
    copy = path.with_name(name)
    copy.write_bytes(data)
    return copy


def cut(path, folder):
    """Copies that end at places where a reader of some format has to notice."""
    whole = path.read_bytes()
    lengths = {0, 1, 29, 300, 1027, 1080, 2047, 2050, len(whole) // 2, len(whole) - 1}
    for length in sorted(lengths):
        copy = folder / f"{length}-{path.name}"
        copy.write_bytes(whole[:length])
        if path.with_suffix(".bin").exists():
            shutil.copy(path.with_suffix(".bin"), copy.with_suffix(".bin"))
        yield copy


class Files:
    """A folder of them. Those in `good` are as the command made them; all in `line_work` open."""

    def __init__(self, folder, command):
        self.folder = folder
        self.command = command
        self._make_job()
        self._import_other_kinds()
        self._write_tiffs()
        self.good = sorted(path for path in folder.rglob("*") if path.suffix in
                           {".ct", ".lw", ".jpg", ".tif", ".pg"})
        self.bad = [*self._broken_pages(), *self._broken_side_files(), *self._others()]
        self.line_work = [path for path in self.good + self.bad if path.suffix == ".lw"]
        (folder / "cut").mkdir()
        self.cut = [one for path in self.good for one in cut(path, folder / "cut")]

    def _run(self, *words):
        subprocess.run([self.command, *words], check=True, capture_output=True, cwd=self.folder)

    def _make_job(self):
        png(self.folder / "photo.png", 48, 32, lambda x, y: (5 * x, 7 * y, x + y))
        png(self.folder / "drawing.png", 60, 40,
            lambda x, y: [(255, 255, 255), (0, 0, 0), (224, 176, 128)][x // 8 % 3])
        self._run("sample", "job", "--photo", "photo.png", "--line-work", "drawing.png")

    def _import_other_kinds(self):
        self._run("rows", "job/photograph.ct", "--separation", "cyan", "-o", "grey.png")
        for source, made in [("grey.png", "grey.ct"), ("grey.png", "grey.lw"),
                             ("grey.png", "grey.jpg"), ("job/plates.tif", "plates.ct"),
                             ("job/plates.tif", "plates.jpg")]:
            self._run("import", source, "-o", made)
        self._run("index", "job/drawing.lw")
        self._run("crop", "job/drawing.lw", "crop.lw", "--left", "2", "--right", "30")

    def _write_tiffs(self):
        for name, numbers in TIFF_KINDS.items():
            tiff(self.folder / f"{name}.tif", *numbers)

    # Entries of the sample's page: 0 a CT, 1 line work, 2 the CT in it, 3 a TIFF, 4 a JPEG.
    def _broken_pages(self):
        page = self.folder / "job" / "page.pg"
        shutil.copy(self.folder / "job" / "photograph.ct", self.folder / "job" / "caf\udce9.ct")
        paths = {"raw": b"caf\xe9.ct", "raw-missing": b"non\xe9.ct", "missing": b"none.ct",
                 "nested": b"page.pg", "unknown-picture": b"../photo.png"}
        for name, path in paths.items():
            yield patched(page, f"{name}.pg", (FIRST_ENTRY + PATH_AT, path.ljust(80, b"\0")))
        yield patched(page, "unknown-type.pg", (FIRST_ENTRY + ENTRY_BYTES, b"\x09"))
        yield patched(page, "infinite.pg", (FIRST_ENTRY + Y_OFFSET_AT, b"+.12500000E999"))
        yield patched(page, "empty.pg", (1080, b"000000"))

    def _broken_side_files(self):
        drawing, picture = self.folder / "job" / "drawing.lw", self.folder / "job" / "print.jpg"
        yield patched(drawing, "see-through\udce9.lw", (COLOUR_FLAGS, b"\xf0"))
        yield patched(drawing, "stale.lw")
        (drawing.with_name("stale.bin")).write_bytes(b"12345".ljust(100, b"\0"))
        yield patched(picture, "bad.jpg")
        side = picture.with_suffix(".bin").read_bytes()
        (picture.with_name("bad.bin")).write_bytes(side[:-8])
        yield patched(picture, "alone.jpg")

    def _others(self):
        job = self.folder / "job"
        (self.folder / "empty").write_bytes(b"")
        (self.folder / "text").write_text("no picture at all\n" * 200)
        yield from [self.folder / "empty", self.folder / "text", self.folder / "non\udce9",
                    self.folder, self.folder / "photo.png", job / "caf\udce9.ct"]
        yield patched(job / "photograph.ct", "five-plates.ct", (1025, b"\x05"))
        yield patched(job / "photograph.ct", "no-size.ct", (1028, b"0" * 28))
        yield patched(job / "photograph.ct", "millimetres.ct", (1024, b"\x07"))
