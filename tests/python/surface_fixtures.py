"""Argument factories and the call walker behind test_surface_walk: every described call, built from api/*.json.

The module has two halves. The plan half (no import of the extension) reads the description and lists
every call of a class in a fixed order, with the static facts the test needs: which typed-array kinds a
call waits for, and which earlier trial would take its arguments. The walker half runs in a child
interpreter (`python -m surface_fixtures <class> <start> <tmp>`), makes fresh objects and arguments
for each call, runs it and prints one JSON line per call, so that a crash or hang costs one call only.
"""
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


# ---------------------------------------------------------------------------------------------
# Plan: the described calls of each class
# ---------------------------------------------------------------------------------------------

def load_description():
    """[(module, class)] for every class of api/*.json, and the enum table by managed name."""
    classes = []
    for path in sorted(glob.glob(os.path.join(API, "*.json"))):
        data = json.load(open(path))
        if "classes" in data:
            classes += [(data["module"], c) for c in data["classes"]]
    enums = {e["managed_name"]: e for e in json.load(open(os.path.join(API, "enums.json")))["enums"]}
    return classes, enums


# Largest magnitude each integer converter takes, and the magnitudes that step past them.
INTEGER_LIMITS = {"Byte": 255, "Int16": 32767, "Int32": 2 ** 31 - 1, "Int64": 2 ** 63 - 1}
ESCAPES = (1000, 100000, 2 ** 40)


def accepts(spelling, sample, magnitude=None):
    """Would the converter of `spelling` parse the value made for a parameter of type `sample`?

    The rules are those of the converters: integers take int and float within their range, reals take
    int and float, bool only bool, `object` anything, value types and other kinds only their own type.
    `magnitude` is the integer the walker passes instead of its usual small value, if any.
    """
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
    if spelling in by_name and sample in by_name:
        return _derives(sample, spelling, by_name)
    return accepts(spelling, sample, magnitude)


def _derives(name, base, by_name):
    while name is not None:
        if name == base:
            return True
        name = by_name[name]["base"] if name in by_name else None
    return False


def reach(trials, index, by_name):
    """(magnitudes, shadowing entry) for trials[index], called with keyword arguments.

    An earlier trial with the same keywords whose converters take the arguments wins the dispatch.
    Where an integer parameter of the earlier trial is narrower than this trial's, a larger integer
    steps past it (a Byte trial refuses 1000, an Int32 trial refuses 2**40); the magnitudes say which
    parameters need one. What no value can step past is shadowed for good.
    """
    target = trials[index]
    params = {p["name"]: p for p in target["params"]}
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


def calls_of(cls, by_name):
    """Every call of a class in walking order: constructors, methods, attributes, class attributes."""
    name = cls["name"]
    calls = []

    def add(kind, member, entry, owner=None, **extra):
        label = f"{owner}.{entry}" if owner else entry
        call = {"id": f"{name}.{member}[{label}]", "kind": kind, "member": member, "entry": entry,
                "params": [], "result": None}
        call.update(extra)
        calls.append(call)
        return call

    for i, t in enumerate(cls["constructors"]):
        c = add("ctor", "__init__", t["entry"], params=t["params"], result=name)
        c["magnitudes"], c["shadowed_by"] = reach(cls["constructors"], i, by_name)
    for m in cls["methods"]:
        if m.get("protocol"):
            continue
        for i, t in enumerate(m["trials"]):
            form = t.get("form", m["form"])
            c = add(form, m["name"], t["entry"], t.get("owner"), params=t["params"], result=t["result"])
            c["unmatched"] = bool(t.get("unmatched"))
            same_form = [x for x in m["trials"] if x.get("form", m["form"]) == form]
            c["magnitudes"], c["shadowed_by"] = reach(same_form, same_form.index(t), by_name)
    for a in cls["attributes"]:
        add("get", a["name"], a["getter"], result=a["type"], managed_type=a.get("managed_type"))
        if a["setter"]:
            setter_type = _setter_spelling(a)
            add("set", a["name"], a["setter"], result="None", getter_type=a["type"],
                params=[{"name": "value", "type": setter_type, "kind": "value",
                         "managed_type": a.get("managed_type")}])
    for a in cls["class_attributes"]:
        add("class_attribute", a["name"], a["entry"], result=a["type"])
    for c in calls:
        c.setdefault("shadowed_by", None)
        c.setdefault("magnitudes", {})
        c.setdefault("unmatched", False)
    return calls


def _setter_spelling(a):
    if a.get("setter_type"):
        return a["setter_type"]
    t, clr = a["type"], a.get("clr")
    if t == "int":
        return {"System.Int16": "Int16", "System.Int64": "Int64"}.get(clr, "Int32")
    if t == "float":
        return "Double" if clr == "System.Double" else "Single"
    if t == "uint":
        return "Byte"
    if t == "object":
        return {"System.String": "String", "System.Byte[]": "byte[]", "System.Guid": "Guid"}.get(clr, "object")
    return t


def plan():
    """{class name: (module, [calls])} over the whole description."""
    classes, _ = load_description()
    by_name = {c["name"]: c for _, c in classes}
    return {c["name"]: (module, calls_of(c, by_name)) for module, c in classes}


# ---------------------------------------------------------------------------------------------
# Sample files
# ---------------------------------------------------------------------------------------------

PNG_TEXT_PROPERTY = 0x9286  # where libgdiplus puts the text of a PNG tEXt chunk
REF_ARRAY_LENGTH = 32  # room for every point of the walker's path
QUALITY_GUID = uuid.UUID("1d5be4b5-fa4a-452d-9cdd-5db35105e7eb")


def png_bytes():
    from PIL import Image
    out = io.BytesIO()
    Image.new("RGBA", (8, 8), (200, 40, 10, 255)).save(out, "PNG")
    return out.getvalue()


def ico_bytes():
    """A 16x16 icon with one 32-bit DIB image: the directory, the bitmap header, colours and mask."""
    size = 16
    colours = bytes([200, 40, 10, 255]) * (size * size)
    mask = bytes(4 * size)  # rows of 32 bits, all shown
    header = struct.pack("<IiiHHIIiiII", 40, size, 2 * size, 1, 32, 0, len(colours) + len(mask), 0, 0, 0, 0)
    image = header + colours + mask
    directory = struct.pack("<HHH", 0, 1, 1) + struct.pack("<BBBBHHII", size, size, 0, 0, 1, 32, len(image), 22)
    return directory + image


def png_with_text_bytes():
    """A PNG with a tEXt chunk, which libgdiplus reads as a property item."""
    from PIL import Image, PngImagePlugin
    out = io.BytesIO()
    info = PngImagePlugin.PngInfo()
    info.add_text("Title", "Surface")
    Image.new("RGB", (8, 8), (10, 200, 40)).save(out, "PNG", pnginfo=info)
    return out.getvalue()


def emf_bytes():
    """A minimal enhanced metafile: the header record and the end-of-file record."""
    header_size, eof_size = 88, 20
    bounds = struct.pack("<4i", 0, 0, 15, 15)
    frame = struct.pack("<4i", 0, 0, 400, 400)
    header = struct.pack("<II", 1, header_size) + bounds + frame + struct.pack(
        "<IIIIHHIIIiiii", 0x464D4520, 0x10000, header_size + eof_size, 2, 1, 0, 0, 0, 0, 1024, 768, 320, 240)
    eof = struct.pack("<IIIII", 14, eof_size, 0, 16, eof_size)
    return header + eof


SAMPLES = {"png": png_bytes, "ico": ico_bytes, "emf": emf_bytes, "text.png": png_with_text_bytes}


# ---------------------------------------------------------------------------------------------
# Walker: runs in the child interpreter
# ---------------------------------------------------------------------------------------------

class Unavailable(Exception):
    """No object of a class can be made here."""

    def __init__(self, reason):
        super().__init__(reason)
        self.reason = reason


class Walker:
    def __init__(self, tmp):
        import orvane.pyfigura as f
        from orvane.pyfigura import design, drawing2d, imaging, printing, text
        self.f, self.d2, self.im, self.pr, self.tx, self.ds = f, drawing2d, imaging, printing, text, design
        self.modules = {"orvane.pyfigura": f, "orvane.pyfigura.drawing2d": drawing2d,
                        "orvane.pyfigura.imaging": imaging, "orvane.pyfigura.printing": printing,
                        "orvane.pyfigura.text": text, "orvane.pyfigura.design": design}
        self.tmp = tmp
        self.samples = {}
        self.counter = 0
        self.keep = []
        classes, self.enums = load_description()
        self.class_modules = {c["name"]: module for module, c in classes}

    # -- types --------------------------------------------------------------------------------
    def python_class(self, name):
        obj = self.modules[self.class_modules[name]]
        for part in name.split("."):
            obj = getattr(obj, part)
        return obj

    def value_class(self, name):
        return getattr(self.f, name)

    def enum_member(self, managed_type):
        e = self.enums[managed_type]
        enum = getattr(self.modules[e["module"]], e["name"])
        preferred = {"PixelFormat": "FORMAT_32BPP_ARGB", "GraphicsUnit": "PIXEL", "ImageLockMode": "READ_WRITE",
                     "KnownColor": "RED", "PrinterUnit": "DISPLAY", "FontStyle": "BOLD",
                     "EncoderParameterValueType": "VALUE_TYPE_LONG", "CopyPixelOperation": "SOURCE_COPY"}
        name = preferred.get(e["name"])
        return enum[name] if name else list(enum)[0]

    # -- files --------------------------------------------------------------------------------
    def sample(self, kind):
        if kind not in self.samples:
            self.samples[kind] = SAMPLES[kind]()
        return self.samples[kind]

    def sample_file(self, kind):
        self.counter += 1
        path = os.path.join(self.tmp, f"sample_{self.counter}.{kind}")
        with open(path, "wb") as out:
            out.write(self.sample(kind))
        return path

    # -- objects ------------------------------------------------------------------------------
    def bitmap(self, size=16):
        return self.f.Bitmap(size, size)

    def graphics(self):
        b = self.bitmap()
        self.keep.append(b)
        return self.f.Graphics.from_image(b)

    def path(self):
        p = self.d2.GraphicsPath()
        p.add_rectangle(self.f.Rectangle(1, 1, 8, 8))
        p.add_ellipse(self.f.Rectangle(2, 2, 6, 4))
        return p

    def metafile(self):
        return self.im.Metafile(self.sample_file("emf"))

    def instance(self, name):
        """A fresh, ready-made object of the class `name` (or of a derived class for abstract ones)."""
        f, d2, im, pr, tx = self.f, self.d2, self.im, self.pr, self.tx
        red = f.Color.from_argb(255, 200, 30, 30)
        blue = f.Color.from_argb(255, 30, 30, 200)
        rect = f.Rectangle(0, 0, 8, 8)
        makers = {
            "Image": self.bitmap,
            "Bitmap": self.bitmap,
            "Brush": lambda: f.SolidBrush(red),
            "SolidBrush": lambda: f.SolidBrush(red),
            "TextureBrush": lambda: f.TextureBrush(self.bitmap()),
            "Pen": lambda: f.Pen(red, 2.0),
            "Font": lambda: f.Font(f.FontFamily("DejaVu Sans"), 10.0),
            "FontFamily": lambda: f.FontFamily("DejaVu Sans"),
            "StringFormat": f.StringFormat,
            "Region": lambda: f.Region(rect),
            "Icon": lambda: f.Icon(self.sample_file("ico")),
            "BufferedGraphics": lambda: f.BufferedGraphicsContext().allocate(self.graphics(), rect),
            "BufferedGraphicsContext": f.BufferedGraphicsContext,
            "CharacterRange": lambda: f.CharacterRange(0, 2),
            "IDeviceContext": self.no_device_context,
            "ToolboxBitmapAttribute": lambda: f.ToolboxBitmapAttribute(self.sample_file("png")),
            "BitmapSuffixInSameAssemblyAttribute": f.BitmapSuffixInSameAssemblyAttribute,
            "BitmapSuffixInSatelliteAssemblyAttribute": f.BitmapSuffixInSatelliteAssemblyAttribute,
            "IconConverter": f.IconConverter,
            "ImageConverter": f.ImageConverter,
            "ImageFormatConverter": f.ImageFormatConverter,
            "FontConverter": f.FontConverter,
            "FontConverter.FontNameConverter": f.FontConverter.FontNameConverter,
            "FontConverter.FontUnitConverter": f.FontConverter.FontUnitConverter,
            "Graphics": self.graphics,
            "Blend": lambda: d2.Blend(3),
            "ColorBlend": lambda: d2.ColorBlend(3),
            "GraphicsContainer": lambda: self.target_graphics().begin_container(),
            "GraphicsState": lambda: self.target_graphics().save(),
            "HatchBrush": lambda: d2.HatchBrush(d2.HatchStyle.CROSS, red, blue),
            "LinearGradientBrush": lambda: d2.LinearGradientBrush(f.Point(0, 0), f.Point(8, 8), red, blue),
            "Matrix": lambda: d2.Matrix(1.0, 0.5, 0.0, 1.0, 2.0, 3.0),
            "PathData": d2.PathData,
            "PathGradientBrush": lambda: d2.PathGradientBrush(self.path()),
            "RegionData": lambda: f.Region(rect).get_region_data(),
            "AdjustableArrowCap": lambda: d2.AdjustableArrowCap(3.0, 3.0),
            "CustomLineCap": lambda: d2.CustomLineCap(None, self.path()),
            "GraphicsPathIterator": lambda: d2.GraphicsPathIterator(self.path()),
            "GraphicsPath": self.path,
            "Metafile": self.metafile,
            "ColorMap": im.ColorMap,
            "Encoder": lambda: im.Encoder(QUALITY_GUID),
            "FrameDimension": lambda: im.FrameDimension(im.FrameDimension.page.guid),
            "ImageFormat": lambda: im.ImageFormat(im.ImageFormat.png.guid),
            "PropertyItem": self.property_item,
            "WmfPlaceableFileHeader": im.WmfPlaceableFileHeader,
            "BitmapData": im.BitmapData,
            "ColorMatrix": im.ColorMatrix,
            "ColorPalette": lambda: f.Bitmap(4, 4, im.PixelFormat.FORMAT_8BPP_INDEXED).palette,
            "EncoderParameter": lambda: im.EncoderParameter(im.Encoder.QUALITY, value=90),
            "EncoderParameters": self.encoder_parameters,
            "ImageAttributes": im.ImageAttributes,
            "ImageCodecInfo": self.codec,
            "MetafileHeader": lambda: self.metafile().get_metafile_header(),
            "MetaHeader": im.MetaHeader,
            "PreviewPageInfo": lambda: pr.PreviewPageInfo(self.bitmap(), f.Size(8, 8)),
            "PreviewPrintController": pr.PreviewPrintController,
            "PrintController": pr.StandardPrintController,
            "StandardPrintController": pr.StandardPrintController,
            "QueryPageSettingsEventArgs": lambda: pr.QueryPageSettingsEventArgs(pr.PageSettings()),
            "InvalidPrinterException": lambda: pr.InvalidPrinterException(pr.PrinterSettings()),
            "Margins": lambda: pr.Margins(10, 20, 30, 40),
            "MarginsConverter": pr.MarginsConverter,
            "PaperSize": lambda: pr.PaperSize("Surface", 827, 1169),
            "PaperSource": pr.PaperSource,
            "PrinterResolution": pr.PrinterResolution,
            "PageSettings": pr.PageSettings,
            "PrintDocument": pr.PrintDocument,
            "PrinterSettings": pr.PrinterSettings,
            "PrinterSettings.PaperSizeCollection": lambda: pr.PrinterSettings.PaperSizeCollection([pr.PaperSize("Surface", 827, 1169)]),
            "PrinterSettings.PaperSourceCollection": lambda: pr.PrinterSettings.PaperSourceCollection([pr.PaperSource()]),
            "PrinterSettings.PrinterResolutionCollection": lambda: pr.PrinterSettings.PrinterResolutionCollection([pr.PrinterResolution()]),
            "PrinterSettings.StringCollection": lambda: pr.PrinterSettings.installed_printers,
            "PrintEventArgs": pr.PrintEventArgs,
            "PrintPageEventArgs": lambda: pr.PrintPageEventArgs(self.graphics(), rect, rect, pr.PageSettings()),
            "PrivateFontCollection": tx.PrivateFontCollection,
            "FontCollection": tx.InstalledFontCollection,
            "InstalledFontCollection": tx.InstalledFontCollection,
            "CategoryNameCollection": lambda: self.ds.CategoryNameCollection(["Surface", "Walk"]),
        }
        if name not in makers:
            raise Unavailable(f"{name} has no public way to make an instance")
        try:
            obj = makers[name]()
        except Unavailable:
            raise
        except RuntimeError as e:
            raise Unavailable(f"making {name}: {e}") from None
        self.keep.append(obj)
        return obj

    def target_graphics(self):
        """The Graphics a call is made on, so that its states and containers belong to it."""
        if isinstance(self.target, self.f.Graphics):
            return self.target
        return self.graphics()

    def no_device_context(self):
        raise Unavailable("no call returns an IDeviceContext and it has no constructor")

    def encoder_parameters(self):
        parameters = self.im.EncoderParameters(1)
        parameters.param = [self.im.EncoderParameter(self.im.Encoder.QUALITY, value=90)]
        return parameters

    def codec(self):
        return self.im.ImageCodecInfo.get_image_encoders()[0]

    def property_item(self):
        image = self.f.Bitmap(io.BytesIO(self.sample("text.png")))
        self.keep.append(image)
        return image.get_property_item(PNG_TEXT_PROPERTY)

    # -- arguments ----------------------------------------------------------------------------
    def argument(self, param, owner):
        t, name = param["type"], param["name"]
        if param["kind"] == "list":
            return self.ref_list(param)
        if param.get("managed_type"):
            return self.enum_member(param["managed_type"])
        if t in ("Int32", "Int16", "Int64"):
            return self.integer(name)
        if t == "Byte":
            return 1
        if t in REAL_TYPES:
            return self.real(name)
        if t == "bool":
            return True
        if t == "String":
            return self.string(name, owner)
        if t == "byte[]":
            return bytes([0, 1, 129]) if name == "types" else b"\x01\x02\x03\x04"
        if t == "Stream":
            return io.BytesIO(self.sample(self.file_kind(owner)))
        if t == "Guid":
            return QUALITY_GUID
        if t == "object":
            return "Surface"
        if t in VALUE_TYPES:
            return self.value(t, second=name.endswith("2"))
        if t.endswith("[]") and t != "byte[]":
            return self.array(t[:-2], name, owner)
        return self.instance(t)

    def array(self, element, name, owner):
        """A short list of elements: three points make a parallelogram, factors run from 0 to 1."""
        f = self.f
        if element == "Single[]":
            return [[1.0 if i == j else 0.0 for j in range(5)] for i in range(5)]
        made = {"Point": [f.Point(0, 0), f.Point(8, 2), f.Point(2, 8)],
                "PointF": [f.PointF(0.0, 0.0), f.PointF(8.0, 2.0), f.PointF(2.0, 8.0)],
                "Rectangle": [f.Rectangle(0, 0, 4, 4), f.Rectangle(2, 2, 4, 4)],
                "RectangleF": [f.RectangleF(0.0, 0.0, 4.0, 4.0), f.RectangleF(2.0, 2.0, 4.0, 4.0)],
                "Color": [f.Color.from_argb(255, 200, 0, 0), f.Color.from_argb(255, 0, 0, 200)],
                "Single": [0.0, 0.5, 1.0], "Int32": [0, 1, 2], "Int16": [0, 1, 2], "Int64": [0, 1, 2],
                "String": ["Surface", "Walk"], "byte[]": [b"\x89PNG", b"\xff\xff\xff\xff"]}
        if element in made:
            return made[element]
        return [self.instance(element)]

    def ref_list(self, param):
        """The one-element list of a ref or out parameter: empty, or room for a ref array to be filled."""
        clr = param.get("clr", "")
        if clr == "System.Drawing.PointF[]&":
            return [[self.f.PointF(0.0, 0.0)] * REF_ARRAY_LENGTH]
        if clr == "System.Byte[]&":
            return [bytearray(REF_ARRAY_LENGTH)]
        return []

    def file_kind(self, owner):
        return {"Icon": "ico", "Metafile": "emf"}.get(owner, "png")

    def integer(self, name):
        if name in ("width", "height", "src_width", "src_height", "right", "bottom", "length"):
            return 4
        if any(word in name for word in ("index", "first", "offset", "start_angle", "language", "flags",
                                         "style", "type", "propid")):
            return 0
        if name == "sweep_angle":
            return 90
        if name in ("ole_color", "win_32_color", "value"):
            return 255
        return 1

    def real(self, name):
        if name in ("width", "height", "em_size", "size"):
            return 4.0
        if "angle" in name:
            return 45.0
        if name in ("tension", "focus", "scale", "factor"):
            return 0.5
        return 2.5

    def string(self, name, owner):
        if name in ("filename", "file_name", "file_path", "image_file"):
            return self.sample_file(self.file_kind(owner))
        if name == "color_profile_filename":
            return os.path.join(self.tmp, "missing.icc")
        if name in ("family_name", "name"):
            return "DejaVu Sans"
        if name == "html_color":
            return "#ff8000"
        if name == "system_font_name":
            return "DefaultFont"
        return "Surface"

    def value(self, t, second=False):
        """A value of a value type; the second of a pair (point2, color2) differs from the first."""
        f = self.f
        if second:
            return {"Point": f.Point(9, 7), "PointF": f.PointF(9.5, 7.5), "Color": f.Color.from_argb(255, 240, 220, 10),
                    "Size": f.Size(6, 6), "SizeF": f.SizeF(6.0, 6.0), "Rectangle": f.Rectangle(2, 2, 6, 6),
                    "RectangleF": f.RectangleF(2.0, 2.0, 6.0, 6.0)}[t]
        return {"Point": lambda: f.Point(1, 2), "PointF": lambda: f.PointF(1.5, 2.5),
                "Size": lambda: f.Size(4, 4), "SizeF": lambda: f.SizeF(4.0, 4.0),
                "Rectangle": lambda: f.Rectangle(0, 0, 8, 8),
                "RectangleF": lambda: f.RectangleF(0.0, 0.0, 8.0, 8.0),
                "Color": lambda: f.Color.from_argb(255, 10, 20, 30)}[t]()

    # -- one call -----------------------------------------------------------------------------
    def run(self, owner, call):
        """Make the call; returns the outcome record (without the id)."""
        self.keep = []
        self.target = None
        try:
            target, kwargs = self.prepare(owner, call)
        except Unavailable as e:
            return {"outcome": "unavailable", "message": e.reason}
        except Exception as e:  # noqa: BLE001 - a factory that breaks is reported, not fatal
            return {"outcome": "error", "type": type(e).__name__, "message": f"making the arguments: {e}",
                    "trace": traceback.format_exc(limit=4)}
        try:
            result = target(**kwargs) if kwargs is not None else target()
        except RuntimeError as e:
            text = str(e)
            if text.startswith("Proxy error("):
                return {"outcome": "refused", "refusal": text[len("Proxy error("):text.index(")")],
                        "message": text}
            return {"outcome": "error", "type": "RuntimeError", "message": text}
        except TypeError as e:
            return {"outcome": "typeerror", "message": str(e), "arguments": self.describe(kwargs)}
        except Exception as e:  # noqa: BLE001 - any other type is recorded as it is
            return {"outcome": "error", "type": type(e).__name__, "message": str(e),
                    "trace": traceback.format_exc(limit=3)}
        record = {"outcome": "ok", "result_type": type(result).__name__}
        # A call taken by an earlier trial answers as that trial does; only its outcome counts.
        problem = None if call["shadowed_by"] else self.check_result(owner, call, result, kwargs)
        if problem:
            record["problem"] = problem
        return record

    def prepare(self, owner, call):
        """(callable, keyword arguments) for the call; None arguments for an attribute read."""
        cls = self.python_class(owner)
        kind, member = call["kind"], call["member"]
        if kind in ("instance", "get", "set"):
            obj = self.target = self.instance(owner)
        kwargs = {p["name"]: call["magnitudes"].get(p["name"]) or self.argument(p, owner) for p in call["params"]}
        if kind == "ctor":
            return cls, kwargs
        if kind == "static":
            return getattr(cls, member), kwargs
        if kind == "class_attribute":
            return (lambda: getattr(cls, member)), None
        if kind == "instance":
            return getattr(obj, member), kwargs
        if kind == "get":
            return (lambda: getattr(obj, member)), None
        # A setter takes back what the getter gives, where the getter gives something.
        try:
            value = getattr(obj, member)
            if value is None and call["params"][0]["type"] not in ("String", "object", "byte[]"):
                value = kwargs["value"]
        except (RuntimeError, TypeError):
            value = kwargs["value"]
        self.setter_value = value
        return (lambda: setattr(obj, member, value) or self.read_back(obj, member)), {}

    def read_back(self, obj, member):
        try:
            return ("read", getattr(obj, member))
        except (RuntimeError, TypeError) as e:
            return ("unreadable", str(e))

    def check_result(self, owner, call, result, kwargs):
        """A text if the result does not have the described type, None otherwise."""
        if call["kind"] == "set":
            state, back = result
            if state == "read" and _comparable(self.setter_value) and not _same(back, self.setter_value):
                return f"set {self.setter_value!r}, read back {back!r}"
            return None
        if call["kind"] == "ctor":
            made = type(result)
            return None if made is self.python_class(owner) else f"constructor made a {made.__name__}"
        problem = self.check_type(call["result"], result)
        if problem:
            return problem
        for p in call["params"]:
            if p["kind"] == "list" and len(kwargs[p["name"]]) != 1:
                return f"out list {p['name']} holds {kwargs[p['name']]!r} after the call"
        return None

    def check_type(self, expected, result):
        if expected in (None, "object"):
            return None
        checks = {"None": lambda r: r is None, "bool": lambda r: type(r) is bool,
                  "int": lambda r: isinstance(r, int) and not isinstance(r, bool),
                  "uint": lambda r: type(r) is int and 0 <= r < 256, "float": lambda r: type(r) is float}
        if expected in checks:
            ok = checks[expected](result)
        elif expected in VALUE_TYPES:
            ok = type(result) is self.value_class(expected)
        elif expected.endswith("[]") and expected != "byte[]":
            ok = True
        else:
            ok = result is None or isinstance(result, self.python_class(expected))
        return None if ok else f"described result {expected}, got {type(result).__name__}: {result!r:.80}"

    def describe(self, kwargs):
        if not kwargs:
            return {}
        return {k: f"{type(v).__name__}: {v!r:.60}" for k, v in kwargs.items()}


def _comparable(value):
    """Scalars, strings, enum members and value types compare by value; class instances do not."""
    return isinstance(value, (int, float, str)) or type(value).__name__ in VALUE_TYPES


def _same(a, b):
    if isinstance(b, float) and isinstance(a, float):
        return abs(a - b) <= 1e-5 * max(1.0, abs(b))
    return a == b


def worker_main(argv):
    """Child side: walk the calls of one class from a start index, one JSON line per call."""
    owner, start, tmp = argv[0], int(argv[1]), argv[2]
    # Records go to a copy of the original stdout; whatever else writes to fd 1 lands on stderr.
    out = os.fdopen(os.dup(1), "w")
    os.dup2(2, 1)
    walker = Walker(tmp)
    _, calls = plan()[owner]
    for index in range(start, len(calls)):
        call = calls[index]
        out.write(json.dumps({"start": index, "id": call["id"]}) + "\n")
        out.flush()
        record = walker.run(owner, call)
        record.update({"index": index, "id": call["id"]})
        out.write(json.dumps(record, default=repr) + "\n")
        out.flush()


if __name__ == "__main__":
    worker_main(sys.argv[1:])
