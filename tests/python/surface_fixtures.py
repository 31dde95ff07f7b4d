"""Argument factories and the call walker behind test_surface_walk: every described call, built from api/*.json.

The plan half (no import of the extension) lists every call of a class in a fixed order, with the magnitudes
that step past earlier trials. The walker half runs in a child (`python surface_fixtures.py <class> <start> <tmp>`)
and prints one JSON line per call, so that a crash or hang costs one call only.
"""
import functools
import glob
import io
import json
import os
import struct
import sys
import traceback
import uuid

REPO = os.path.dirname(os.path.dirname(os.path.dirname(os.path.abspath(__file__))))
API = os.path.join(REPO, "api")

VALUE_TYPES = ("Point", "PointF", "Size", "SizeF", "Rectangle", "RectangleF", "Color")
INTEGER_TYPES = ("Int32", "Int16", "Int64", "Byte")
REAL_TYPES = ("Single", "Double")
UNMATCHED_TEXT = "this overload has no managed counterpart"
NO_INSTANCE = {"IDeviceContext": "no call returns an IDeviceContext and it has no constructor"}


def load_description():
    """[(module, class)] for every class of api/*.json, and the enum table by managed name."""
    classes = []
    for path in sorted(glob.glob(os.path.join(API, "*.json"))):
        data = json.load(open(path))
        classes += [(data["module"], c) for c in data.get("classes", [])]
    enums = {e["managed_name"]: e for e in json.load(open(os.path.join(API, "enums.json")))["enums"]}
    return classes, enums


# Largest magnitude each integer converter takes, and the magnitudes that step past them.
INTEGER_LIMITS = {"Byte": 255, "Int16": 32767, "Int32": 2 ** 31 - 1, "Int64": 2 ** 63 - 1}
ESCAPES = (1000, 100000, 2 ** 40)


def accepts(spelling, sample, magnitude=None):
    """Would the converter of `spelling` parse the value made for a parameter of type `sample` (or `magnitude`)?"""
    numbers = INTEGER_TYPES + REAL_TYPES
    if spelling in INTEGER_TYPES and sample in numbers:
        return magnitude is None or magnitude <= INTEGER_LIMITS[spelling]
    if spelling in REAL_TYPES:
        return sample in numbers
    return spelling == sample or spelling == "object"


def _takes(param, sample_param, magnitude, by_name):
    if param["kind"] == "list" or sample_param["kind"] == "list":
        return param["kind"] == sample_param["kind"]
    spelling, sample = param["type"], sample_param["type"]
    if spelling in by_name and sample in by_name:  # classes: does the sample's class derive from the parameter's?
        while sample is not None and sample != spelling:
            sample = by_name[sample]["base"] if sample in by_name else None
        return sample == spelling
    return accepts(spelling, sample, magnitude)


def reach(trials, index, by_name):
    """(magnitudes, shadowing entry) for trials[index] called with keywords: an earlier trial that takes them wins.

    Where an integer parameter of the earlier trial is narrower, a larger integer steps past it.
    """
    params = {p["name"]: p for p in trials[index]["params"]}
    rivals = [t for t in trials[:index] if {p["name"] for p in t["params"]} == set(params)]
    magnitudes = {}
    for rival in rivals:
        if not all(_takes(p, params[p["name"]], magnitudes.get(p["name"]), by_name) for p in rival["params"]):
            continue
        for p in rival["params"]:
            own = params[p["name"]]
            steps = [m for m in ESCAPES if m > magnitudes.get(p["name"], 0)
                     and not _takes(p, own, m, by_name) and _takes(own, own, m, by_name)]
            if steps and own["kind"] == "value" and own["type"] in INTEGER_TYPES + REAL_TYPES:
                magnitudes[p["name"]] = steps[0]
                break
    for rival in rivals:
        if all(_takes(p, params[p["name"]], magnitudes.get(p["name"]), by_name) for p in rival["params"]):
            return magnitudes, rival["entry"]
    return magnitudes, None


SETTER_TYPES = {("int", "System.Int16"): "Int16", ("int", "System.Int64"): "Int64",
                ("float", "System.Double"): "Double", ("object", "System.String"): "String",
                ("object", "System.Byte[]"): "byte[]", ("object", "System.Guid"): "Guid"}
DEFAULT_SETTER_TYPES = {"int": "Int32", "float": "Single", "uint": "Byte"}


def calls_of(cls, by_name):
    """Every call of a class in walking order: constructors, methods, attributes, class attributes."""
    calls = []

    def add(kind, member, entry, owner=None, rivals=None, **extra):
        label = f"{owner}.{entry}" if owner else entry
        call = {"id": f"{cls['name']}.{member}[{label}]", "kind": kind, "member": member, "entry": entry,
                "params": [], "result": None, "unmatched": False, **extra}
        call["magnitudes"], call["shadowed_by"] = reach(*rivals, by_name) if rivals else ({}, None)
        calls.append(call)

    for i, t in enumerate(cls["constructors"]):
        add("ctor", "__init__", t["entry"], params=t["params"], result=cls["name"], rivals=(cls["constructors"], i))
    for m in cls["methods"]:
        for t in [] if m.get("protocol") else m["trials"]:
            form = t.get("form", m["form"])
            same_form = [x for x in m["trials"] if x.get("form", m["form"]) == form]
            add(form, m["name"], t["entry"], t.get("owner"), params=t["params"], result=t["result"],
                unmatched=bool(t.get("unmatched")), rivals=(same_form, same_form.index(t)))
    for a in cls["attributes"]:
        add("get", a["name"], a["getter"], result=a["type"])
        if a["setter"]:
            t = a["type"]
            spelling = a.get("setter_type") or SETTER_TYPES.get((t, a.get("clr"))) or DEFAULT_SETTER_TYPES.get(t, t)
            add("set", a["name"], a["setter"], result="None",
                params=[{"name": "value", "type": spelling, "kind": "value", "managed_type": a.get("managed_type")}])
    for a in cls["class_attributes"]:
        add("class_attribute", a["name"], a["entry"], result=a["type"])
    return calls


def plan():
    """{class name: (module, [calls])} over the whole description."""
    classes, _ = load_description()
    by_name = {c["name"]: c for _, c in classes}
    return {c["name"]: (module, calls_of(c, by_name)) for module, c in classes}


# -- sample files and fixed arguments ---------------------------------------------------------

PNG_TEXT_PROPERTY = 0x9286  # where libgdiplus puts the text of a PNG tEXt chunk
REF_ARRAY_LENGTH = 32  # room for every point of the walker's path
QUALITY_GUID = uuid.UUID("1d5be4b5-fa4a-452d-9cdd-5db35105e7eb")


def png_bytes(mode="RGBA", colour=(200, 40, 10, 255), text=None):
    """An 8x8 PNG; with a text, a tEXt chunk too, which libgdiplus reads as a property item."""
    from PIL import Image, PngImagePlugin
    out, info = io.BytesIO(), PngImagePlugin.PngInfo()
    if text:
        info.add_text("Title", text)
    Image.new(mode, (8, 8), colour).save(out, "PNG", pnginfo=info)
    return out.getvalue()


def ico_bytes(size=16):
    """An icon with one 32-bit DIB image: the directory, the bitmap header, colours and mask (rows of 32 bits)."""
    colours, mask = bytes([200, 40, 10, 255]) * (size * size), bytes(4 * size)
    header = struct.pack("<IiiHHIIiiII", 40, size, 2 * size, 1, 32, 0, len(colours) + len(mask), 0, 0, 0, 0)
    image = header + colours + mask
    return struct.pack("<HHH", 0, 1, 1) + struct.pack("<BBBBHHII", size, size, 0, 0, 1, 32, len(image), 22) + image


def emf_bytes(header_size=88, eof_size=20):
    """A minimal enhanced metafile: the header record and the end-of-file record."""
    bounds_and_frame = struct.pack("<8i", 0, 0, 15, 15, 0, 0, 400, 400)
    header = struct.pack("<II", 1, header_size) + bounds_and_frame + struct.pack(
        "<IIIIHHIIIiiii", 0x464D4520, 0x10000, header_size + eof_size, 2, 1, 0, 0, 0, 0, 1024, 768, 320, 240)
    return header + struct.pack("<IIIII", 14, eof_size, 0, 16, eof_size)


SAMPLES = {"png": png_bytes, "ico": ico_bytes, "emf": emf_bytes,
           "text.png": lambda: png_bytes("RGB", (10, 200, 40), "Surface")}


@functools.cache
def sample(kind):
    return SAMPLES[kind]()


PREFERRED_ENUM_MEMBERS = {
    "PixelFormat": "FORMAT_32BPP_ARGB", "GraphicsUnit": "PIXEL", "ImageLockMode": "READ_WRITE", "KnownColor": "RED",
    "PrinterUnit": "DISPLAY", "FontStyle": "BOLD", "EncoderParameterValueType": "VALUE_TYPE_LONG",
    "CopyPixelOperation": "SOURCE_COPY"}
# Abstract classes stand for the derived class made instead; the plain ones are made without arguments.
DERIVED = {"Image": "Bitmap", "Brush": "SolidBrush", "PrintController": "StandardPrintController",
           "FontCollection": "InstalledFontCollection"}
PLAIN = set("""StringFormat BufferedGraphicsContext BitmapSuffixInSameAssemblyAttribute IconConverter ImageConverter
    BitmapSuffixInSatelliteAssemblyAttribute ImageFormatConverter FontConverter FontConverter.FontNameConverter
    FontConverter.FontUnitConverter PathData ColorMap WmfPlaceableFileHeader BitmapData ColorMatrix ImageAttributes
    MetaHeader PreviewPrintController StandardPrintController MarginsConverter PaperSource PrinterResolution
    PageSettings PrintDocument PrinterSettings PrintEventArgs PrivateFontCollection InstalledFontCollection""".split())
SECOND_VALUES = {"Point": (9, 7), "PointF": (9.5, 7.5), "Color": (255, 240, 220, 10), "Size": (6, 6),
                 "SizeF": (6.0, 6.0), "Rectangle": (2, 2, 6, 6), "RectangleF": (2.0, 2.0, 6.0, 6.0)}
FIRST_VALUES = {"Point": (1, 2), "PointF": (1.5, 2.5), "Size": (4, 4), "SizeF": (4.0, 4.0), "Rectangle": (0, 0, 8, 8),
                "RectangleF": (0.0, 0.0, 8.0, 8.0), "Color": (255, 10, 20, 30)}


def integer(name):
    if name in ("width", "height", "src_width", "src_height", "right", "bottom", "length"):
        return 4
    if any(w in name for w in ("index", "first", "offset", "start_angle", "language", "flags", "style", "type",
                               "propid")):
        return 0
    return {"sweep_angle": 90, "ole_color": 255, "win_32_color": 255, "value": 255}.get(name, 1)


def real(name):
    if name in ("width", "height", "em_size", "size"):
        return 4.0
    if "angle" in name:
        return 45.0
    return 0.5 if name in ("tension", "focus", "scale", "factor") else 2.5


def file_kind(owner):
    return {"Icon": "ico", "Metafile": "emf"}.get(owner, "png")


# -- the walker: runs in the child interpreter ------------------------------------------------

class Unavailable(Exception):
    """No object of a class can be made here."""


class Walker:
    def __init__(self, tmp):
        import orvane.pyfigura as f
        self.f, self.d2, self.im, self.pr = f, f.drawing2d, f.imaging, f.printing
        self.modules = {m.__name__: m for m in (f, f.drawing2d, f.imaging, f.printing, f.text, f.design)}
        self.tmp, self.counter, self.keep = tmp, 0, []
        classes, self.enums = load_description()
        self.class_modules = {c["name"]: module for module, c in classes}

    def python_class(self, name):
        obj = self.modules[self.class_modules[name]]
        for part in name.split("."):
            obj = getattr(obj, part)
        return obj

    def enum_member(self, managed_type):
        e = self.enums[managed_type]
        enum = getattr(self.modules[e["module"]], e["name"])
        name = PREFERRED_ENUM_MEMBERS.get(e["name"])
        return enum[name] if name else list(enum)[0]

    def sample_file(self, kind):
        self.counter += 1
        path = os.path.join(self.tmp, f"sample_{self.counter}.{kind}")
        with open(path, "wb") as out:
            out.write(sample(kind))
        return path

    def held(self, obj):
        self.keep.append(obj)
        return obj

    def graphics(self):
        return self.f.Graphics.from_image(self.held(self.f.Bitmap(16, 16)))

    def target_graphics(self):
        """The Graphics a call is made on, so that its states and containers belong to it."""
        return self.target if isinstance(self.target, self.f.Graphics) else self.graphics()

    def path(self):
        p = self.d2.GraphicsPath()
        p.add_rectangle(self.f.Rectangle(1, 1, 8, 8))
        p.add_ellipse(self.f.Rectangle(2, 2, 6, 4))
        return p

    def encoder_parameters(self):
        parameters = self.im.EncoderParameters(1)
        parameters.param = [self.im.EncoderParameter(self.im.Encoder.QUALITY, value=90)]
        return parameters

    def instance(self, name):
        """A fresh, ready-made object of the class `name` (or of a derived class for abstract ones)."""
        f, d2, im, pr = self.f, self.d2, self.im, self.pr
        red, blue = f.Color.from_argb(255, 200, 30, 30), f.Color.from_argb(255, 30, 30, 200)
        rect = f.Rectangle(0, 0, 8, 8)
        makers = {
            "Bitmap": lambda: f.Bitmap(16, 16), "SolidBrush": lambda: f.SolidBrush(red),
            "TextureBrush": lambda: f.TextureBrush(f.Bitmap(16, 16)), "Pen": lambda: f.Pen(red, 2.0),
            "Font": lambda: f.Font(f.FontFamily("DejaVu Sans"), 10.0),
            "FontFamily": lambda: f.FontFamily("DejaVu Sans"),
            "Region": lambda: f.Region(rect), "Icon": lambda: f.Icon(self.sample_file("ico")),
            "BufferedGraphics": lambda: f.BufferedGraphicsContext().allocate(self.graphics(), rect),
            "CharacterRange": lambda: f.CharacterRange(0, 2),
            "ToolboxBitmapAttribute": lambda: f.ToolboxBitmapAttribute(self.sample_file("png")),
            "Graphics": self.graphics, "Blend": lambda: d2.Blend(3), "ColorBlend": lambda: d2.ColorBlend(3),
            "GraphicsContainer": lambda: self.target_graphics().begin_container(),
            "GraphicsState": lambda: self.target_graphics().save(),
            "HatchBrush": lambda: d2.HatchBrush(d2.HatchStyle.CROSS, red, blue),
            "LinearGradientBrush": lambda: d2.LinearGradientBrush(f.Point(0, 0), f.Point(8, 8), red, blue),
            "Matrix": lambda: d2.Matrix(1.0, 0.5, 0.0, 1.0, 2.0, 3.0),
            "PathGradientBrush": lambda: d2.PathGradientBrush(self.path()),
            "RegionData": lambda: f.Region(rect).get_region_data(),
            "AdjustableArrowCap": lambda: d2.AdjustableArrowCap(3.0, 3.0),
            "CustomLineCap": lambda: d2.CustomLineCap(None, self.path()),
            "GraphicsPathIterator": lambda: d2.GraphicsPathIterator(self.path()), "GraphicsPath": self.path,
            "Metafile": lambda: im.Metafile(self.sample_file("emf")), "Encoder": lambda: im.Encoder(QUALITY_GUID),
            "FrameDimension": lambda: im.FrameDimension(im.FrameDimension.page.guid),
            "ImageFormat": lambda: im.ImageFormat(im.ImageFormat.png.guid),
            "PropertyItem": lambda: self.held(f.Bitmap(io.BytesIO(sample("text.png")))).get_property_item(
                PNG_TEXT_PROPERTY),
            "ColorPalette": lambda: f.Bitmap(4, 4, im.PixelFormat.FORMAT_8BPP_INDEXED).palette,
            "EncoderParameter": lambda: im.EncoderParameter(im.Encoder.QUALITY, value=90),
            "EncoderParameters": self.encoder_parameters,
            "ImageCodecInfo": lambda: im.ImageCodecInfo.get_image_encoders()[0],
            "MetafileHeader": lambda: im.Metafile(self.sample_file("emf")).get_metafile_header(),
            "PreviewPageInfo": lambda: pr.PreviewPageInfo(f.Bitmap(16, 16), f.Size(8, 8)),
            "QueryPageSettingsEventArgs": lambda: pr.QueryPageSettingsEventArgs(pr.PageSettings()),
            "InvalidPrinterException": lambda: pr.InvalidPrinterException(pr.PrinterSettings()),
            "Margins": lambda: pr.Margins(10, 20, 30, 40), "PaperSize": lambda: pr.PaperSize("Surface", 827, 1169),
            "PrinterSettings.PaperSizeCollection":
                lambda: pr.PrinterSettings.PaperSizeCollection([pr.PaperSize("Surface", 827, 1169)]),
            "PrinterSettings.PaperSourceCollection":
                lambda: pr.PrinterSettings.PaperSourceCollection([pr.PaperSource()]),
            "PrinterSettings.PrinterResolutionCollection":
                lambda: pr.PrinterSettings.PrinterResolutionCollection([pr.PrinterResolution()]),
            "PrinterSettings.StringCollection": lambda: pr.PrinterSettings.installed_printers,
            "PrintPageEventArgs": lambda: pr.PrintPageEventArgs(self.graphics(), rect, rect, pr.PageSettings()),
            "CategoryNameCollection": lambda: f.design.CategoryNameCollection(["Surface", "Walk"]),
        }
        made = DERIVED.get(name, name)
        if made in PLAIN:
            makers[made] = self.python_class(made)
        if name in NO_INSTANCE or made not in makers:
            raise Unavailable(NO_INSTANCE.get(name, f"{name} has no public way to make an instance"))
        try:
            return self.held(makers[made]())
        except RuntimeError as e:
            raise Unavailable(f"making {name}: {e}") from None

    def argument(self, param, owner):
        t, name = param["type"], param["name"]
        if param["kind"] == "list":  # a ref or out parameter: empty, or room for a ref array to be filled
            return {"System.Drawing.PointF[]&": [[self.f.PointF(0.0, 0.0)] * REF_ARRAY_LENGTH],
                    "System.Byte[]&": [bytearray(REF_ARRAY_LENGTH)]}.get(param.get("clr", ""), [])
        if param.get("managed_type"):
            return self.enum_member(param["managed_type"])
        if t in ("Int32", "Int16", "Int64"):
            return integer(name)
        if t in REAL_TYPES:
            return real(name)
        if t == "String":
            return self.string(name, owner)
        if t == "Stream":
            return io.BytesIO(sample(file_kind(owner)))
        if t in VALUE_TYPES:  # the second of a pair (point2, color2) differs from the first
            args = (SECOND_VALUES if name.endswith("2") else FIRST_VALUES)[t]
            return self.f.Color.from_argb(*args) if t == "Color" else getattr(self.f, t)(*args)
        if t.endswith("[]") and t != "byte[]":
            return self.array(t[:-2])
        fixed = {"Byte": 1, "bool": True, "Guid": QUALITY_GUID, "object": "Surface",
                 "byte[]": bytes([0, 1, 129]) if name == "types" else b"\x01\x02\x03\x04"}
        return fixed[t] if t in fixed else self.instance(t)

    def array(self, element):
        """A short list of elements: three points make a parallelogram, factors run from 0 to 1."""
        f = self.f
        if element == "Single[]":
            return [[1.0 if i == j else 0.0 for j in range(5)] for i in range(5)]
        made = {"Point": lambda: [f.Point(0, 0), f.Point(8, 2), f.Point(2, 8)],
                "PointF": lambda: [f.PointF(0.0, 0.0), f.PointF(8.0, 2.0), f.PointF(2.0, 8.0)],
                "Rectangle": lambda: [f.Rectangle(0, 0, 4, 4), f.Rectangle(2, 2, 4, 4)],
                "RectangleF": lambda: [f.RectangleF(0.0, 0.0, 4.0, 4.0), f.RectangleF(2.0, 2.0, 4.0, 4.0)],
                "Color": lambda: [f.Color.from_argb(255, 200, 0, 0), f.Color.from_argb(255, 0, 0, 200)],
                "Single": lambda: [0.0, 0.5, 1.0], "String": lambda: ["Surface", "Walk"],
                "byte[]": lambda: [b"\x89PNG", b"\xff\xff\xff\xff"]}
        if element in ("Int32", "Int16", "Int64"):
            return [0, 1, 2]
        return made[element]() if element in made else [self.instance(element)]

    def string(self, name, owner):
        if name in ("filename", "file_name", "file_path", "image_file"):
            return self.sample_file(file_kind(owner))
        if name == "color_profile_filename":
            return os.path.join(self.tmp, "missing.icc")
        return {"family_name": "DejaVu Sans", "name": "DejaVu Sans", "html_color": "#ff8000",
                "system_font_name": "DefaultFont"}.get(name, "Surface")

    # -- one call -----------------------------------------------------------------------------
    def run(self, owner, call):
        """Make the call; returns the outcome record (without the id)."""
        self.keep, self.target = [], None
        try:
            target, kwargs = self.prepare(owner, call)
        except Unavailable as e:
            return {"outcome": "unavailable", "message": str(e)}
        except Exception as e:  # noqa: BLE001 - a factory that breaks is reported, not fatal
            return {"outcome": "error", "message": f"making the arguments: {e!r}",
                    "trace": traceback.format_exc(limit=4)}
        try:
            result = target(**kwargs) if kwargs is not None else target()
        except Exception as e:  # noqa: BLE001 - a managed refusal, a converter's TypeError or anything else
            text = str(e)
            if isinstance(e, RuntimeError) and text.startswith("Proxy error("):
                return {"outcome": "refused", "message": text}
            if isinstance(e, TypeError):
                return {"outcome": "typeerror", "message": text,
                        "arguments": {k: f"{type(v).__name__}: {v!r:.60}" for k, v in (kwargs or {}).items()}}
            return {"outcome": "error", "message": f"{e!r}", "trace": traceback.format_exc(limit=3)}
        # A call taken by an earlier trial answers as that trial does; only its outcome counts.
        problem = None if call["shadowed_by"] else self.check_result(owner, call, result, kwargs)
        return {"outcome": "ok", "problem": problem} if problem else {"outcome": "ok"}

    def prepare(self, owner, call):
        """(callable, keyword arguments) for the call; None arguments for an attribute read."""
        cls = self.python_class(owner)
        kind, member = call["kind"], call["member"]
        if kind in ("instance", "get", "set"):
            obj = self.target = self.instance(owner)
        kwargs = {p["name"]: call["magnitudes"].get(p["name"]) or self.argument(p, owner) for p in call["params"]}
        if kind == "ctor":
            return cls, kwargs
        if kind in ("static", "instance"):
            return getattr(cls if kind == "static" else obj, member), kwargs
        if kind in ("class_attribute", "get"):
            return (lambda: getattr(cls if kind == "class_attribute" else obj, member)), None
        # A setter takes back what the getter gives, where the getter gives something.
        try:
            value = getattr(obj, member)
            if value is None and call["params"][0]["type"] not in ("String", "object", "byte[]"):
                value = kwargs["value"]
        except (RuntimeError, TypeError):
            value = kwargs["value"]
        self.setter_value = value

        def set_and_read_back():
            setattr(obj, member, value)
            try:
                return ("read", getattr(obj, member))
            except (RuntimeError, TypeError) as e:
                return ("unreadable", str(e))
        return set_and_read_back, {}

    def check_result(self, owner, call, result, kwargs):
        """A text if the result does not have the described type, None otherwise."""
        if call["kind"] == "set":
            (state, back), value = result, self.setter_value
            # Scalars, strings, enum members and value types compare by value; class instances do not.
            if state != "read" or not (isinstance(value, (int, float, str)) or type(value).__name__ in VALUE_TYPES):
                return None
            if isinstance(back, float) and isinstance(value, float):
                same = abs(back - value) <= 1e-5 * max(1.0, abs(value))
            else:
                same = back == value
            return None if same else f"set {value!r}, read back {back!r}"
        if call["kind"] == "ctor":
            made = type(result)
            return None if made is self.python_class(owner) else f"constructor made a {made.__name__}"
        problem = self.check_type(call["result"], result)
        for p in call["params"]:
            if not problem and p["kind"] == "list" and len(kwargs[p["name"]]) != 1:
                problem = f"out list {p['name']} holds {kwargs[p['name']]!r} after the call"
        return problem

    def check_type(self, expected, result):
        checks = {"None": lambda r: r is None, "bool": lambda r: type(r) is bool,
                  "int": lambda r: isinstance(r, int) and not isinstance(r, bool),
                  "uint": lambda r: type(r) is int and 0 <= r < 256, "float": lambda r: type(r) is float}
        if expected in (None, "object") or (expected.endswith("[]") and expected != "byte[]"):
            ok = True
        elif expected in checks:
            ok = checks[expected](result)
        elif expected in VALUE_TYPES:
            ok = type(result) is getattr(self.f, expected)
        else:
            ok = result is None or isinstance(result, self.python_class(expected))
        return None if ok else f"described result {expected}, got {type(result).__name__}: {result!r:.80}"


def worker_main(owner, start, tmp):
    """Child side: walk the calls of one class from a start index, one JSON line per call."""
    # Records go to a copy of the original stdout; whatever else writes to fd 1 lands on stderr.
    out = os.fdopen(os.dup(1), "w")
    os.dup2(2, 1)
    walker = Walker(tmp)
    _, calls = plan()[owner]
    for index in range(int(start), len(calls)):
        out.write(json.dumps({"start": index, "id": calls[index]["id"]}) + "\n")
        out.flush()
        record = dict(walker.run(owner, calls[index]), index=index, id=calls[index]["id"])
        out.write(json.dumps(record, default=repr) + "\n")
        out.flush()


if __name__ == "__main__":
    worker_main(*sys.argv[1:4])
