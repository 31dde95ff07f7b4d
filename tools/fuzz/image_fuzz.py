"""Hostile images: mutated PNG, JPEG, GIF, BMP, TIFF, ICO, WMF and EMF files loaded through the module.

    python3 tools/fuzz/image_fuzz.py [--files N] [--seed S] [--batch B] [--work DIR]

Seeds are made here: the raster formats drawn and saved by the module itself, ICO, WMF and EMF written
byte by byte. Each mutant (bit flips, truncation, overwritten header bytes, a repeated slice) is loaded
by a child process (tools/fuzz/fuzz_worker.py) through Bitmap(path), Image.from_stream(BytesIO) and
Icon(path), a batch of files per child, with a timeout. A file that ends its child by a signal is
loaded again by a plain .NET program (tools/fuzz/decider): if that crashes too, the crash is
libgdiplus's own; if not, it is the module's. Prints the counts and every crash and hang, and exits 1
when the module crashed or hung.
"""
import argparse
import io
import os
import random
import select
import shutil
import struct
import subprocess
import sys
import tempfile

HERE = os.path.dirname(os.path.abspath(__file__))
WORKER = os.path.join(HERE, "fuzz_worker.py")
DECIDER = os.path.join(HERE, "decider", "Decider.csproj")
PYTHON = "/usr/bin/python3" if os.path.exists("/usr/bin/python3") else sys.executable
FILE_SECONDS = 10  # a file whose loads take longer than this counts as a hang


# ----- seeds -----------------------------------------------------------------------------------
def raster_seeds():
    import orvane.pyfigura as f
    bitmap = f.Bitmap(24, 16)
    with f.Graphics.from_image(bitmap) as g:
        g.clear(f.Color.white)
        g.fill_ellipse(f.Brushes.red, 2, 2, 14, 10)
        g.draw_line(f.Pens.blue, 0, 15, 23, 0)
    bitmap.set_pixel(1, 1, f.Color.from_argb(128, 0, 255, 0))
    formats = f.imaging.ImageFormat
    seeds = {}
    for name, fmt in (("png", formats.png), ("jpeg", formats.jpeg), ("gif", formats.gif),
                      ("bmp", formats.bmp), ("tiff", formats.tiff)):
        out = io.BytesIO()
        bitmap.save(out, fmt)
        seeds[name] = out.getvalue()
    seeds["ico"] = icon_file(seeds["bmp"])
    seeds["wmf"] = wmf_file()
    seeds["emf"] = emf_file()
    return seeds


def icon_file(bmp):
    """One 24x16 image: the BMP's DIB (without its file header) with the height doubled for the mask."""
    dib = bytearray(bmp[14:])
    width, height = struct.unpack_from("<ii", dib, 4)
    struct.pack_into("<i", dib, 8, height * 2)
    mask_row = ((width + 31) // 32) * 4
    dib += bytes(mask_row * height)
    header = struct.pack("<HHH", 0, 1, 1)
    entry = struct.pack("<BBBBHHII", width, height, 0, 0, 1, 32, len(dib), 6 + 16)
    return header + entry + bytes(dib)


def wmf_file():
    """A placeable WMF: a rectangle and a line, then the end record."""
    records = b"".join([
        struct.pack("<IH4h", 7, 0x041B, 10, 30, 2, 2),      # Rectangle(bottom, right, top, left)
        struct.pack("<IH2h", 5, 0x0214, 4, 4),              # MoveTo
        struct.pack("<IH2h", 5, 0x0213, 20, 28),            # LineTo
        struct.pack("<IH", 3, 0x0000),                      # EOF
    ])
    words = (18 + len(records)) // 2
    header = struct.pack("<HHHIHH", 1, 9, 0x0300, words, 0, 5)  # type, header words, version, size
    placeable = struct.pack("<IH4hHI", 0x9AC6CDD7, 0, 0, 0, 32, 24, 1440, 0)
    checksum = 0
    for i in range(0, 20, 2):
        checksum ^= struct.unpack_from("<H", placeable, i)[0]
    placeable += struct.pack("<H", checksum)
    return placeable + header + records


def emf_file():
    """An EMF: header, a rectangle, end of file."""
    rectangle = struct.pack("<II4i", 43, 24, 2, 2, 30, 20)  # EMR_RECTANGLE
    eof = struct.pack("<IIIII", 14, 20, 0, 16, 20)          # EMR_EOF
    header_size = 88
    total = header_size + len(rectangle) + len(eof)
    header = struct.pack("<II4i4iIIIIHHIII2i2i", 1, header_size, 0, 0, 32, 24, 0, 0, 846, 635,
                         0x464D4520, 0x10000, total, 3, 1, 0, 0, 0, 0, 1024, 768, 320, 240)
    return header + rectangle + eof


# ----- mutations -------------------------------------------------------------------------------
def mutate(data, rng):
    data = bytearray(data)
    kind = rng.randrange(4)
    if kind == 0:  # bit flips
        for _ in range(rng.randint(1, 8)):
            i = rng.randrange(len(data))
            data[i] ^= 1 << rng.randrange(8)
    elif kind == 1:  # truncation
        data = data[:rng.randrange(1, len(data))]
    elif kind == 2:  # header fields: random bytes, or extreme little/big numbers, in the first 64 bytes
        for _ in range(rng.randint(1, 4)):
            i = rng.randrange(min(64, len(data)))
            value = rng.choice([b"\xff\xff\xff\x7f", b"\x00\x00\x00\x80", b"\x00\x00", b"\xff\xff",
                                bytes([rng.randrange(256)])])
            data[i:i + len(value)] = value
    else:  # a slice repeated in place
        i = rng.randrange(len(data))
        j = min(len(data), i + rng.randint(1, 64))
        data[i:i] = data[i:j] * rng.randint(1, 20)
    return bytes(data)


# ----- running ---------------------------------------------------------------------------------
def run_batch(paths, env, seconds=FILE_SECONDS):
    """Loads paths in one child; returns {index: outcome} and (index, what) of a crash or hang, if any.

    The child reports before and after each file; `seconds` without a report is a hang."""
    child = subprocess.Popen([PYTHON, WORKER], stdin=subprocess.PIPE, stdout=subprocess.PIPE,
                             stderr=subprocess.DEVNULL, text=True, env=env)
    child.stdin.write("\n".join(paths) + "\n")
    child.stdin.close()
    outcomes, started, hung = {}, None, False
    while True:
        ready, _, _ = select.select([child.stdout], [], [], seconds)
        if not ready:
            hung = True
            child.kill()
            break
        line = child.stdout.readline()
        if not line:
            break
        parts = line.split()
        if parts[:1] == ["start"]:
            started = int(parts[1])
        elif parts[:1] == ["end"]:
            outcomes[int(parts[1])] = parts[2]
    returncode = child.wait()
    if not hung and returncode == 0:
        return outcomes, None
    failed = started if started is not None and started not in outcomes else len(outcomes)
    what = "hang" if hung else f"signal {-returncode}" if returncode < 0 else f"exit {returncode}"
    return outcomes, (failed, what)


def decider_dll(work):
    out = os.path.join(work, "decider")
    build = subprocess.run(["dotnet", "build", DECIDER, "-c", "Release", "-o", out, "--nologo", "-v", "quiet"],
                           capture_output=True, text=True)
    if build.returncode != 0:
        raise RuntimeError("the decider did not build:\n" + build.stdout + build.stderr)
    return os.path.join(out, "FuzzDecider.dll")


def native_library_fails(dll, path):
    """True when the plain .NET program crashes or hangs on the file too."""
    try:
        done = subprocess.run(["dotnet", dll, path], capture_output=True, timeout=FILE_SECONDS * 3)
    except subprocess.TimeoutExpired:
        return True
    return done.returncode != 0


def main(argv=None):
    parser = argparse.ArgumentParser(description=__doc__.split("\n")[0])
    parser.add_argument("--files", type=int, default=3000)
    parser.add_argument("--seed", type=int, default=1)
    parser.add_argument("--batch", type=int, default=60)
    parser.add_argument("--work", default=None, help="directory for the files (kept); a temporary one otherwise")
    options = parser.parse_args(argv)
    work = options.work or tempfile.mkdtemp(prefix="image-fuzz-")
    os.makedirs(work, exist_ok=True)
    env = dict(os.environ)
    rng = random.Random(options.seed)
    seeds = raster_seeds()
    names = sorted(seeds)
    paths = []
    for number in range(options.files):
        kind = names[number % len(names)]
        path = os.path.join(work, f"{number:05d}.{kind}")
        with open(path, "wb") as out:
            out.write(mutate(seeds[kind], rng))
        paths.append(path)
    counts = {"loaded": 0, "refused": 0, "slow": 0}
    crashes, hangs, ours, theirs = [], [], [], []
    dll = None
    pending = list(paths)
    while pending:
        batch, pending = pending[:options.batch], pending[options.batch:]
        outcomes, failure = run_batch(batch, env)
        for outcome in outcomes.values():
            counts[outcome] += 1
        if failure is not None:
            index, what = failure
            path = batch[index]
            if dll is None:
                dll = decider_dll(work)
            if native_library_fails(dll, path):
                theirs.append((path, what))
            elif what == "hang":
                # A slow load on a busy machine is not a hang: the file alone gets a longer time.
                alone, still = run_batch([path], env, FILE_SECONDS * 3)
                if still is None:
                    counts[alone[0]] += 1
                    counts["slow"] += 1
                    what = None
                else:
                    ours.append((path, what))
            else:
                ours.append((path, what))
            if what is not None:
                (hangs if what == "hang" else crashes).append((path, what))
            pending = batch[index + 1:] + pending  # the rest of the batch in a new child
    print(f"files tried: {len(paths)} ({', '.join(names)})")
    print(f"loaded: {counts['loaded']}, refused with a Python exception: {counts['refused']} "
          f"(slow, over {FILE_SECONDS} s but ended: {counts['slow']})")
    print(f"crashes: {len(crashes)}, hangs: {len(hangs)}; "
          f"the module's: {len(ours)}, the native library's (a plain .NET program fails too): {len(theirs)}")
    for path, what in ours:
        print(f"  module: {path} ({what})")
    for path, what in theirs:
        print(f"  native library: {path} ({what})")
    if not options.work and not (crashes or hangs):
        shutil.rmtree(work, ignore_errors=True)
    return 1 if ours else 0


if __name__ == "__main__":
    sys.exit(main())
