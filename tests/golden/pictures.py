"""The input pictures of the golden cases: sets of files, most of them written by zemora_scene.

Each set is a function that fills a folder. Pictures are lists of rows from the top, a row is bytes of
red, green, blue."""
import os
import struct
import subprocess
import zlib

ERRORS = ("height=5", "size=0.6", "rotation=0.4", "vergence_v=0.2", "vergence_h=0.1", "noise=1")


class Maker:
    """Writes files into one folder."""

    def __init__(self, scene, folder):
        self.scene_tool = scene
        self.folder = folder

    def path(self, name):
        path = os.path.join(self.folder, name)
        os.makedirs(os.path.dirname(path), exist_ok=True)
        return path

    def scene(self, left, right, width, height, *settings):
        subprocess.run([self.scene_tool, self.path(left), self.path(right), str(width), str(height), *settings],
                       check=True, stdout=subprocess.DEVNULL)

    def rows(self, width, height, *settings):
        """Both views of a scene as rows of pixels."""
        names = ["view_l.bmp", "view_r.bmp"]
        self.scene(*names, width, height, *settings)
        views = [read_bmp(self.path(name)) for name in names]
        for name in names:
            os.remove(self.path(name))
        return views

    def write(self, name, data):
        with open(self.path(name), "wb") as file:
            file.write(data)

    def read(self, name):
        with open(self.path(name), "rb") as file:
            return file.read()


def swapped_channels(row):
    """Red and blue of a row exchanged."""
    result = bytearray(row)
    result[0::3], result[2::3] = row[2::3], row[0::3]
    return bytes(result)


def read_bmp(path):
    with open(path, "rb") as file:
        data = file.read()
    start, = struct.unpack_from("<I", data, 10)
    width, height = struct.unpack_from("<ii", data, 18)
    pitch = (3 * width + 3) // 4 * 4
    return [swapped_channels(data[start + y * pitch:start + y * pitch + 3 * width]) for y in range(height - 1, -1, -1)]


def bmp(rows):
    width = len(rows[0]) // 3
    padding = bytes(-3 * width % 4)
    body = b"".join(swapped_channels(row) + padding for row in reversed(rows))
    return (b"BM" + struct.pack("<IHHI", 54 + len(body), 0, 0, 54)
            + struct.pack("<IiiHHIIiiII", 40, width, len(rows), 1, 24, 0, len(body), 2835, 2835, 0, 0) + body)


def png(rows, channels=3, depth=8):
    """A PNG of grey or colour; samples of 16 bits are big-endian."""
    def chunk(kind, data):
        return struct.pack(">I", len(data)) + kind + data + struct.pack(">I", zlib.crc32(kind + data))
    width = len(rows[0]) // channels // (depth // 8)
    head = struct.pack(">IIBBBBB", width, len(rows), depth, 2 if channels == 3 else 0, 0, 0, 0)
    body = zlib.compress(b"".join(b"\0" + row for row in rows), 1)
    return b"\x89PNG\r\n\x1a\n" + chunk(b"IHDR", head) + chunk(b"IDAT", body) + chunk(b"IEND", b"")


def deep_rows(rows):
    """Samples of 16 bits whose low bytes differ from their high ones."""
    def deep(row):
        result = bytearray(2 * len(row))
        result[0::2] = row
        result[1::2] = bytes((7 * i + value) % 256 for i, value in enumerate(row))
        return bytes(result)
    return [deep(row) for row in rows]


def tiff16(rows):
    """An uncompressed big-endian TIFF of three channels of 16 bits."""
    body = b"".join(rows)
    width, height = len(rows[0]) // 6, len(rows)
    entries = [(256, 4, 1, width), (257, 4, 1, height), (258, 3, 3, 8), (259, 3, 1, 1 << 16), (262, 3, 1, 2 << 16),
               (273, 4, 1, 16), (277, 3, 1, 3 << 16), (278, 4, 1, height), (279, 4, 1, len(body))]
    directory = struct.pack(">H", len(entries)) + b"".join(struct.pack(">HHII", *entry) for entry in entries) + bytes(4)
    return b"MM\0*" + struct.pack(">I", 16 + len(body)) + struct.pack(">HHHH", 16, 16, 16, 0) + body + directory


def mpo(left, right):
    """A multi-picture file of two JPEGs."""
    def index(size_1, size_2, offset):
        entry = struct.pack("<HHII", 0xB000, 7, 4, 0x30303130) + struct.pack("<HHII", 0xB001, 4, 1, 2)
        entry += struct.pack("<HHII", 0xB002, 7, 32, 50)
        views = struct.pack("<IIII", 0x20002, size_1, 0, 0) + struct.pack("<IIII", 0x20002, size_2, offset, 0)
        segment = b"MPF\0II*\0" + struct.pack("<IH", 8, 3) + entry + bytes(4) + views
        return b"\xff\xe2" + struct.pack(">H", len(segment) + 2) + segment
    exif = b"\xff\xe1\0\x16Exif\0\0II*\0" + struct.pack("<IHI", 8, 0, 0)
    second = right[:2] + exif + right[2:]
    size = len(left) + len(exif) + len(index(0, 0, 0))
    origin = 2 + len(exif) + 8
    return left[:2] + exif + index(size, len(second), size - origin) + left[2:] + second


def ink_profile():
    """A colour profile of a printer with four inks, as tables of two places a side from and to Lab."""
    def table(inputs, outputs, places):
        straight = bytes(range(256))
        unit = b"".join(struct.pack(">i", 65536 if i % 4 == 0 else 0) for i in range(9))
        return (b"mft1" + bytes(4) + bytes([inputs, outputs, 2, 0]) + unit + straight * inputs + bytes(places)
                + straight * outputs)
    to_inks = [value for place in range(8) for value in
               ((40, 30, 20, 220) if place < 4 else (250 * (place % 4 < 2), 200 * (place % 2), 180 * (1 - place % 2), 5))]
    to_lab = [value for place in range(16) for value in (255 - 16 * place, 100 + 4 * place, 160 - 5 * place)]
    tags = [(b"B2A0", table(3, 4, to_inks)), (b"A2B0", table(4, 3, to_lab))]
    place, directory, body = 132 + 12 * len(tags), b"", b""
    for name, data in tags:
        directory += name + struct.pack(">II", place + len(body), len(data))
        body += data + bytes(-len(data) % 4)
    head = (struct.pack(">I", place + len(body)) + bytes(4) + b"\2\x40\0\0prtrCMYKLab " + bytes(12) + b"acsp" + bytes(28)
            + struct.pack(">III", 0xF6D6, 0x10000, 0xD32D))
    return head + bytes(128 - len(head)) + struct.pack(">I", len(tags)) + directory + body


def plain(width, height, colour):
    return [bytes(colour) * width for _ in range(height)]


def beside(left, right):
    return [a + b for a, b in zip(left, right)]


def framed(rows, colour):
    """The picture with a slightly tilted frame painted over its borders."""
    width, height = len(rows[0]) // 3, len(rows)
    result = []
    for y, row in enumerate(rows):
        lean_left, lean_right = 22 + 4 * y // height, 31 - 4 * y // height
        if y < 18 or y >= height - 26:
            result.append(bytes(colour) * width)
        else:
            result.append(bytes(colour) * lean_left + row[3 * lean_left:3 * (width - lean_right)]
                          + bytes(colour) * lean_right)
    return result


def mask_rows(width, height, channels=3):
    """A slope from far above to near below, with a nearer box and a farther one."""
    result = []
    for y in range(height):
        row = bytearray(bytes([40 + 160 * y // height]) * width)
        if height // 3 <= y < 2 * height // 3:
            row[width // 4:width // 2] = bytes([230]) * (width // 2 - width // 4)
            row[3 * width // 5:4 * width // 5] = bytes([5]) * (4 * width // 5 - 3 * width // 5)
        result.append(bytes(value for value in row for _ in range(channels)))
    return result


def small(make):
    make.scene("a_l.jpg", "a_r.jpg", 480, 360, "seed=3", *ERRORS)


def other(make):
    make.scene("b_l.jpg", "b_r.jpg", 420, 330, "seed=8", "height=-3", "size=-0.4", "rotation=-0.3", "brightness=0.8")


def bitmaps(make):
    make.scene("c_l.bmp", "c_r.bmp", 450, 340, "seed=5", "height=4", "rotation=0.5", "brightness=1.2")


def inks(make):
    make.write("inks.icc", ink_profile())


def wide(make):
    make.scene("w_l.bmp", "w_r.bmp", 1400, 900, "seed=4", "height=11", "size=0.9", "rotation=-0.5", "vergence_v=0.4",
               "vergence_h=-0.2", "noise=2")


def deep_scene(make):
    make.scene("d_l.bmp", "d_r.bmp", 600, 440, "seed=6", "near=-45", "far=35", "height=3")


def before_window(make):
    make.scene("n_l.bmp", "n_r.bmp", 500, 380, "seed=12", "near=-60", "far=5", "objects=20", "height=2")


def portrait(make):
    make.scene("p_l.jpg", "p_r.jpg", 330, 480, "seed=7", *ERRORS)


def lying(make):
    """Portrait pictures that lie on their side and say so in their Exif."""
    make.scene("y_l.jpg", "y_r.jpg", 400, 300, "seed=9", "height=2")
    for name, turn in (("y_l.jpg", "6"), ("y_r.jpg", "6")):
        subprocess.run(["exiftool", "-q", "-n", "-overwrite_original", "-Exif:Model=Twin", "-Exif:Orientation=" + turn,
                        make.path(name)], check=True)


def unequal(make):
    make.scene("u_l.jpg", "spare.jpg", 480, 360, "seed=3", "height=3")
    make.scene("spare.jpg", "u_r.jpg", 520, 372, "seed=3", "height=3")
    os.remove(make.path("spare.jpg"))


def strangers(make):
    """Two pictures that do not belong together."""
    make.scene("x_l.jpg", "spare.jpg", 400, 300, "seed=21")
    make.scene("spare.jpg", "x_r.jpg", 400, 300, "seed=77", "pattern=3")
    os.remove(make.path("spare.jpg"))


def grey(make):
    for name in ("g_l.bmp", "g_r.bmp"):
        make.write(name, bmp(plain(300, 240, (90, 90, 90))))


def half_grey(make):
    """Texture in a corner only."""
    views = make.rows(400, 300, "seed=3")
    for name, rows in zip(("h_l.bmp", "h_r.bmp"), views):
        empty = plain(400, 300, (120, 120, 120))
        make.write(name, bmp([(row[:360] + grey_row[360:]) if y < 100 else grey_row
                              for y, (row, grey_row) in enumerate(zip(rows, empty))]))


def resized(make):
    """Views that differ more in size and turn than a rig does: written under reserve."""
    make.scene("z_l.bmp", "z_r.bmp", 600, 450, "seed=2", "size=5", "rotation=2")


def exchanged(make):
    make.scene("e_l.bmp", "e_r.bmp", 600, 450, "seed=2", "near=-50", "far=40", "swap=1")


def patterned(make):
    make.scene("q_l.bmp", "q_r.bmp", 500, 400, "seed=2", "pattern=1", "texture=5", "height=6")


def barrel(make):
    make.scene("r_l.bmp", "r_r.bmp", 700, 500, "seed=2", "barrel=8", "height=4", "near=-30", "far=30")


def far_off(make):
    """Errors beyond what is found."""
    make.scene("f_l.bmp", "f_r.bmp", 700, 520, "seed=11", "height=60", "rotation=3", "size=2", "noise=3")


def far_turned(make):
    """Errors that only the wide search finds."""
    make.scene("h40_l.bmp", "h40_r.bmp", 700, 520, "seed=11", "height=40", "rotation=3")


def dull(make):
    make.scene("m_l.bmp", "m_r.bmp", 400, 300, "seed=2", "texture=8", "noise=4", "brightness=0.5", "flat=1")


def stereo(make):
    left, right = make.rows(400, 300, "seed=3", "height=3", "rotation=0.3")
    make.write("s_s.bmp", bmp(beside(left, right)))
    make.scene("s_l.jpg", "s_r.jpg", 400, 300, "seed=3", "height=3", "rotation=0.3")
    make.write("s.mpo", mpo(make.read("s_l.jpg"), make.read("s_r.jpg")))
    make.write("broken.mpo", make.read("s.mpo")[:len(make.read("s.mpo")) // 2])
    os.remove(make.path("s_l.jpg"))
    os.remove(make.path("s_r.jpg"))


def deep(make):
    left, right = (deep_rows(rows) for rows in make.rows(440, 340, "seed=3", "height=3"))
    make.write("k_l.png", png(left, depth=16))
    make.write("k_r.png", png(right, depth=16))
    make.write("t_l.tif", tiff16(left))
    make.write("t_r.tif", tiff16(right))


def greys(make):
    """Views of one channel."""
    for name, rows in zip(("v_l.png", "v_r.png"), make.rows(360, 280, "seed=14", "height=3")):
        make.write(name, png([row[1::3] for row in rows], channels=1))


def frames(make):
    for name, rows in zip(("o_l.bmp", "o_r.bmp"), make.rows(520, 400, "seed=3", "height=4", "rotation=0.4")):
        make.write(name, bmp(framed(rows, (10, 20, 160))))


def depth(make):
    photo, _ = make.rows(400, 300, "seed=5")
    mask = mask_rows(400, 300)
    make.write("a_rgb.png", png(photo))
    make.write("a_d.png", png(mask))
    make.write("i_rgb.png", png(photo))
    make.write("i_d.png", png(mask_rows(200, 150, 1), channels=1))
    make.write("both/b.png", png(beside(photo, mask)))


def bmp_forms(make):
    """A view of 256 greys and one of 32 bits, from the top down."""
    left, right = make.rows(300, 220, "seed=15", "height=2")
    greys = b"".join(bytes((value, value, value, 0)) for value in range(256))
    body = b"".join(row[1::3] for row in reversed(left))
    make.write("1_l.bmp", b"BM" + struct.pack("<IHHI", 1078 + len(body), 0, 0, 1078)
               + struct.pack("<IiiHHIIiiII", 40, 300, 220, 1, 8, 0, len(body), 0, 0, 256, 0) + greys + body)
    body = b"".join(bytes((row[i + 2], row[i + 1], row[i], 255)) for row in right for i in range(0, 900, 3))
    make.write("1_r.bmp", b"BM" + struct.pack("<IHHI", 54 + len(body), 0, 0, 54)
               + struct.pack("<IiiHHIIiiII", 40, 300, -220, 1, 32, 0, len(body), 0, 0, 0, 0) + body)


def samsung_photo(photo, mask, width, height):
    """The photo with a depth map, dark near, in the trailer of that maker."""
    def block(kind, name, data):
        return struct.pack("<HHI", 0, kind, len(name)) + name + data
    extra = bytes(32) + struct.pack("<III", 0xFFFF0001, width, height) + bytes(52)
    blocks = [(0x0AB1, block(0x0AB1, b"DualShot_DepthMap_1", mask)), (0x0AB3, block(0x0AB3, b"DualShot_Extra_Info", extra))]
    total, place, directory = sum(len(data) for _, data in blocks), 0, b"SEFH" + struct.pack("<II", 101, 2)
    for kind, data in blocks:
        directory += struct.pack("<HHII", 0, kind, total - place, len(data))
        place += len(data)
    return photo + b"".join(data for _, data in blocks) + directory + struct.pack("<I", len(directory)) + b"SEFT"


def phone(make):
    """A photo with a depth picture behind it, one with a map of another maker, one with a mask beside it, one
    without any."""
    make.scene("apple.jpg", "spare.jpg", 400, 300, "seed=5")
    os.remove(make.path("spare.jpg"))
    make.scene("mask.jpg", "other_D.jpg", 400, 300, "seed=6", "texture=0")
    photo = make.read("apple.jpg")
    make.write("other.jpg", photo)
    make.write("none.jpg", photo)
    dark_near = b"".join(bytes(255 - value for value in row) for row in mask_rows(200, 150, 1))
    make.write("sam.jpg", samsung_photo(photo, dark_near, 200, 150))
    make.write("apple.jpg", mpo(photo, make.read("mask.jpg")))
    os.remove(make.path("mask.jpg"))
    for name, maker in (("apple.jpg", "Apple"), ("none.jpg", "samsung"), ("sam.jpg", "samsung")):
        subprocess.run(["exiftool", "-q", "-m", "-overwrite_original", "-EXIF:Make=" + maker, "-EXIF:Orientation#=1",
                        make.path(name)], check=True)


def sequence(make):
    """Photos in `l` with masks at the first and the last frame only."""
    photo, _ = make.rows(500, 320, "seed=5")
    for number in range(4):
        moved = [row[3 * 5 * number:] + row[:3 * 5 * number] for row in photo]
        make.write(f"l/p_{number + 1:02}.png", png(moved))
        if number in (0, 3):
            make.write(f"r/p_{number + 1:02}.png", png([row[3 * 5 * number:] + row[:3 * 5 * number]
                                                       for row in mask_rows(500, 320)]))


def tree(make):
    """Folders of views: equal names, an umlaut, orphans and a file that is no picture."""
    make.scene("l/IMG 1.jpg", "r/IMG 1.jpg", 320, 240, "seed=3", "height=3")
    make.scene("l/IMG 2.jpg", "r/IMG 2.jpg", 320, 240, "seed=4", "height=-2")
    make.scene("day 2/l/M\u00fchle 9.jpg", "day 2/r/M\u00fchle 9.jpg", 300, 220, "seed=5")
    make.scene("day 2/l/M\u00fchle 10.jpg", "day 2/r/M\u00fchle 10.jpg", 300, 220, "seed=6", "rotation=0.5")
    make.scene("day 3/l/lonely.jpg", "day 3/x/lonely.jpg", 200, 150)
    make.write("l/notes.txt", b"no picture\n")


def row_of_files(make):
    """Pictures of one object from places beside each other."""
    make.scene("f1.jpg", "f2.jpg", 320, 240, "seed=3", "height=2")
    make.scene("spare.jpg", "f3.jpg", 320, 240, "seed=3", "height=-2", "near=-24", "far=16")
    os.remove(make.path("spare.jpg"))


def broken(make):
    """Files that cannot be read beside a pair that can."""
    make.scene("a_l.jpg", "a_r.jpg", 320, 240, "seed=3", "height=2")
    whole = make.read("a_l.jpg")
    make.write("cut_l.jpg", whole[:len(whole) // 2])
    make.write("cut_r.jpg", make.read("a_r.jpg"))
    make.write("empty_l.jpg", b"")
    make.write("empty_r.jpg", whole)
    make.write("text_l.jpg", b"no picture\n" * 20)
    make.write("text_r.jpg", b"no picture\n" * 20)
    make.scene("lone_l.jpg", "spare.jpg", 200, 150)
    os.remove(make.path("spare.jpg"))


def tagged(make):
    """Views with metadata of a camera."""
    make.scene("j_l.jpg", "j_r.jpg", 360, 270, "seed=3", "height=2")
    subprocess.run(["exiftool", "-q", "-n", "-overwrite_original", "-DateTimeOriginal=2001:09:09 01:46:41", "-Make=Tester",
                    "-Exif:Model=Twin", "-IPTC:Headline=A garden", "-Exif:ColorSpace=1", "-Orientation=1",
                    make.path("j_l.jpg"), make.path("j_r.jpg")], check=True)


def times(make):
    """Views whose capture times show which belong together."""
    for number in (1, 2, 3):
        make.scene(f"l/{number}.jpg", f"r/{number}.jpg", 240, 180, f"seed={number}")
    os.remove(make.path("r/2.jpg"))
    for name, time in (("l/1", "10:00:00"), ("r/1", "10:00:07"), ("l/2", "10:01:00"), ("l/3", "10:02:00"), ("r/3", "10:02:08")):
        subprocess.run(["exiftool", "-q", "-overwrite_original", "-DateTimeOriginal=2024:05:01 " + time,
                        make.path(name + ".jpg")], check=True)


SETS = {name: maker for name, maker in list(globals().items())
        if callable(maker) and getattr(maker, "__code__", None) and maker.__code__.co_varnames[:1] == ("make",)}
