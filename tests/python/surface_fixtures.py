"""Argument factories and the call walker behind test_surface_walk: every described call, built from api/*.json.
`python surface_fixtures.py <class> <start> <tmp>` walks one class, one JSON line per call."""
import contextlib
import functools
import glob
import io
import json
import os
import random
import sys
import tempfile
import traceback
import uuid

REPO = os.path.dirname(os.path.dirname(os.path.dirname(os.path.abspath(__file__))))
API = os.path.join(REPO, "api")
sys.path.append(os.path.join(REPO, "tools", "fuzz"))
import image_fuzz  # noqa: E402 - its seeds are the walker's sample files

VALUE_TYPES = ("Point", "PointF", "Size", "SizeF", "Rectangle", "RectangleF", "Color")
INTEGER_TYPES = ("Int32", "Int16", "Int64", "Byte")
REAL_TYPES = ("Single", "Double")
UNMATCHED_TEXT = "this overload has no managed counterpart"


def load_description():
    """[(module, class)] for every class of api/*.json, and the enum table by managed name."""
    files = [json.load(open(path)) for path in sorted(glob.glob(os.path.join(API, "*.json")))]
    enums = {e["managed_name"]: e for e in json.load(open(os.path.join(API, "enums.json")))["enums"]}
    return [(data["module"], c) for data in files for c in data.get("classes", [])], enums


# Largest magnitude each integer converter takes, and the magnitudes that step past them.
INTEGER_LIMITS = {"Byte": 255, "Int16": 32767, "Int32": 2 ** 31 - 1, "Int64": 2 ** 63 - 1}
ESCAPES = (1000, 100000, 2 ** 40)


def takes(param, sample_param, magnitude, by_name):
    """Would the converter of `param` parse the value made for `sample_param` (or an integer of `magnitude`)?"""
    if "list" in (param["kind"], sample_param["kind"]):
        return param["kind"] == sample_param["kind"]
    spelling, sample, numbers = param["type"], sample_param["type"], INTEGER_TYPES + REAL_TYPES
    while spelling in by_name and sample in by_name and sample != spelling:  # a class takes its derived classes
        sample = by_name[sample]["base"]
    if spelling in INTEGER_TYPES and sample in numbers:
        return magnitude is None or magnitude <= INTEGER_LIMITS[spelling]
    return sample in numbers if spelling in REAL_TYPES else spelling in (sample, "object")


def reach(trials, index, by_name):
    """(magnitudes, shadowing entry) of trials[index] called by keyword: integers past narrower earlier trials."""
    params = {p["name"]: p for p in trials[index]["params"]}
    rivals = [t for t in trials[:index] if {p["name"] for p in t["params"]} == set(params)]
    magnitudes = {}

    def takes_all(rival):
        return all(takes(p, params[p["name"]], magnitudes.get(p["name"]), by_name) for p in rival["params"])
    for rival in filter(takes_all, rivals):
        for p in rival["params"]:
            own = params[p["name"]]
            steps = [m for m in ESCAPES if m > magnitudes.get(p["name"], 0)
                     and not takes(p, own, m, by_name) and takes(own, own, m, by_name)]
            if steps and own["kind"] == "value" and own["type"] in INTEGER_TYPES + REAL_TYPES:
                magnitudes[p["name"]] = steps[0]
                break
    return magnitudes, next((rival["entry"] for rival in rivals if takes_all(rival)), None)


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
            add("set", a["name"], a["setter"], result="None", params=[{
                "name": "value", "type": a.get("setter_type") or a["type"], "kind": "value",
                "managed_type": a.get("managed_type")}])
    for a in cls["class_attributes"]:
        add("class_attribute", a["name"], a["entry"], result=a["type"])
    return calls


def plan():
    """{class name: (module, [calls])} over the whole description."""
    classes, _ = load_description()
    by_name = {c["name"]: c for _, c in classes}
    return {c["name"]: (module, calls_of(c, by_name)) for module, c in classes}


# -- sample files and fixed arguments ---------------------------------------------------------

REF_ARRAY_LENGTH = 32  # room for every point of the walker's path
QUALITY_GUID = uuid.UUID("1d5be4b5-fa4a-452d-9cdd-5db35105e7eb")


@functools.cache
def samples():
    """Sample files by kind: the image fuzzer's seeds (PNG drawn by the module, ICO and EMF written byte by byte)."""
    return image_fuzz.raster_seeds()


PREFERRED_ENUM_MEMBERS = {
    "PixelFormat": "FORMAT_32BPP_ARGB", "GraphicsUnit": "PIXEL", "ImageLockMode": "READ_WRITE", "KnownColor": "RED",
    "FontStyle": "BOLD", "EncoderParameterValueType": "VALUE_TYPE_LONG", "CopyPixelOperation": "SOURCE_COPY"}
SECOND_VALUES = {"Point": (9, 7), "PointF": (9.5, 7.5), "Color": (255, 240, 220, 10), "Size": (6, 6),
                 "SizeF": (6.0, 6.0), "Rectangle": (2, 2, 6, 6), "RectangleF": (2.0, 2.0, 6.0, 6.0)}
FIRST_VALUES = {"Point": (1, 2), "PointF": (1.5, 2.5), "Size": (4, 4), "SizeF": (4.0, 4.0), "Rectangle": (0, 0, 8, 8),
                "RectangleF": (0.0, 0.0, 8.0, 8.0), "Color": (255, 10, 20, 30)}
FILE_KINDS = {"Icon": "ico", "Metafile": "emf"}  # the sample a class reads; the others read a PNG
STRINGS = {"family_name": "DejaVu Sans", "name": "DejaVu Sans", "html_color": "#ff8000",
           "system_font_name": "DefaultFont"}


def integer(name):  # indexes, offsets and flags 0, colours 255, other numbers 4
    if any(w in name for w in ("index", "first", "offset", "start_angle", "language", "flags", "style", "type",
                               "propid")):
        return 0
    return {"sweep_angle": 90, "ole_color": 255, "win_32_color": 255, "value": 255,
            "number_of_segments": 1}.get(name, 4)


def real(name):  # angles 45, factors 0.5, other numbers 4
    return 45.0 if "angle" in name else 0.5 if name in ("tension", "focus", "scale", "factor") else 4.0


# -- the walker: runs in the child interpreter ------------------------------------------------

class Unavailable(Exception):  # no object of a class can be made here
    pass


class Walker:
    def __init__(self, tmp):
        import orvane.pyfigura as f
        self.f, self.im = f, f.imaging
        self.modules = {m.__name__: m for m in (f, f.drawing2d, f.imaging, f.printing, f.text, f.design)}
        self.tmp, self.keep, self.making = tmp, [], set()
        self.weird = [None, 0, -1, 2 ** 31 - 1, -2 ** 31, 2 ** 63, 1e30, float("nan"), "", "x" * 1000, b"", [], [None],
                      (), f.Bitmap(1, 1), f.Color.red, f.Point(-5, -5), f.RectangleF(0, 0, -1, -1),
                      f.Graphics.__new__(f.Graphics)]  # hostile values, an empty wrapper among them
        classes, self.enums = load_description()
        self.classes = {c["name"]: (module, c) for module, c in classes}
        # A class without constructors stands for the first class derived from it.
        self.derived = {c["base"]: c["name"] for _, c in reversed(classes)}

    def python_class(self, name):  # a nested class is an attribute of its outer class
        return functools.reduce(getattr, name.split("."), self.modules[self.classes[name][0]])

    def enum_member(self, managed_type):
        e = self.enums[managed_type]
        enum = getattr(self.modules[e["module"]], e["name"])
        return enum[PREFERRED_ENUM_MEMBERS[e["name"]]] if e["name"] in PREFERRED_ENUM_MEMBERS else list(enum)[0]

    def sample_file(self, kind):
        with tempfile.NamedTemporaryFile(suffix=f".{kind}", dir=self.tmp, delete=False) as out:
            out.write(samples()[kind])
        return out.name

    def held(self, obj):
        self.keep.append(obj)
        return obj

    def graphics(self):
        return self.f.Graphics.from_image(self.held(self.f.Bitmap(16, 16)))

    def target_graphics(self):  # the Graphics a call is made on, so that its states and containers belong to it
        return self.target if isinstance(self.target, self.f.Graphics) else self.graphics()

    def encoder_parameters(self):
        parameters = self.im.EncoderParameters(1)
        parameters.param = [self.im.EncoderParameter(self.im.Encoder.QUALITY, value=90)]
        return parameters

    def makers(self):
        """The classes that no constructor makes, or none with made arguments in a usable state."""
        f, im, rect = self.f, self.im, self.f.Rectangle(0, 0, 8, 8)
        return {
            "Graphics": self.graphics, "EncoderParameters": self.encoder_parameters,
            "GraphicsPath": lambda: f.drawing2d.GraphicsPath(self.array("PointF"), bytes([0, 1, 129])),  # a triangle
            "GraphicsContainer": lambda: self.target_graphics().begin_container(),
            "GraphicsState": lambda: self.target_graphics().save(),
            "BufferedGraphics": lambda: f.BufferedGraphicsContext().allocate(self.graphics(), rect),
            "RegionData": lambda: f.Region(rect).get_region_data(),
            "FrameDimension": lambda: im.FrameDimension(im.FrameDimension.page.guid),
            "ImageFormat": lambda: im.ImageFormat(im.ImageFormat.png.guid),
            "PropertyItem": lambda: self.instance("Bitmap").get_property_item(0x0301),  # the gAMA of the PNG
            "ColorPalette": lambda: f.Bitmap(4, 4, im.PixelFormat.FORMAT_8BPP_INDEXED).palette,
            "ImageCodecInfo": lambda: im.ImageCodecInfo.get_image_encoders()[0],
            "MetafileHeader": lambda: im.Metafile(self.sample_file("emf")).get_metafile_header(),
        }

    def instance(self, name):
        """A fresh object of the class `name`: by its maker, else by its first constructor that takes made arguments."""
        made = name if self.classes[name][1]["constructors"] else self.derived.get(name, name)
        makers = self.makers()
        if made in self.making:
            raise Unavailable(f"making a {made} takes a {made}")
        self.making.add(made)
        try:
            if made in makers:
                return self.held(makers[made]())
            for trial in self.classes[made][1]["constructors"]:
                try:
                    return self.held(self.python_class(made)(**self.arguments(trial["params"], made)))
                except (RuntimeError, TypeError, Unavailable):
                    continue
        except RuntimeError as e:
            raise Unavailable(f"making {name}: {e}") from None
        finally:
            self.making.discard(made)
        raise Unavailable(f"{name} has no public way to make an instance")

    def arguments(self, params, owner, magnitudes={}):
        return {p["name"]: magnitudes.get(p["name"]) or self.argument(p, owner) for p in params}

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
        if t == "String":  # a file name is a sample file of the format the class reads
            return self.sample_file(FILE_KINDS.get(owner, "png")) if param.get("path") else STRINGS.get(name, "Surface")
        if t == "Stream":
            return io.BytesIO(samples()[FILE_KINDS.get(owner, "png")])
        if t in VALUE_TYPES:  # the second of a pair (point2, color2) differs from the first
            return self.value(t, name.endswith("2"))
        if t.endswith("[]") and t != "byte[]":
            return self.array(t[:-2])
        fixed = {"Byte": 1, "bool": True, "Guid": QUALITY_GUID, "object": "Surface",
                 "byte[]": bytes([0, 1, 129]) if name == "types" else b"\x01\x02\x03\x04"}
        return fixed[t] if t in fixed else self.instance(t)

    def value(self, t, second=False):
        args = (SECOND_VALUES if second else FIRST_VALUES)[t]
        return self.f.Color.from_argb(*args) if t == "Color" else getattr(self.f, t)(*args)

    def array(self, element):
        """A short list: three points make a parallelogram, other values a pair, factors run from 0 to 1."""
        if element == "Single[]":
            return [[1.0 if i == j else 0.0 for j in range(5)] for i in range(5)]
        if element in ("Point", "PointF"):
            return [getattr(self.f, element)(*xy) for xy in ((0, 0), (8, 2), (2, 8))]
        if element in VALUE_TYPES:
            return [self.value(element), self.value(element, True)]
        made = {"Int32": [0, 1, 2], "Int16": [0, 1, 2], "Int64": [0, 1, 2], "Single": [0.0, 0.5, 1.0],
                "String": ["Surface", "Walk"], "byte[]": [b"\x89PNG", b"\xff\xff\xff\xff"]}
        return made[element] if element in made else [self.instance(element)]

    # -- one call -----------------------------------------------------------------------------
    def run(self, owner, call):
        """The outcome record of the call (without the id), after which the member is called with hostile arguments."""
        record, attempts = self.outcome(owner, call), []
        with contextlib.suppress(Exception):  # no object to be hostile with
            attempts = self.hostile(owner, call)
        for attempt in attempts:
            with contextlib.suppress(Exception):  # any Python exception will do; ending the process will not
                attempt()
        return dict(record, hostile=len(attempts))

    def hostile(self, owner, call):
        """Calls of the member again: with None for each argument in turn, random hostile values, an empty wrapper."""
        kind, member, params, cls = call["kind"], call["member"], call["params"], self.python_class(owner)
        if kind == "set":
            target = self.instance(owner)
            return [functools.partial(setattr, target, member, value) for value in self.weird]
        if kind not in ("ctor", "static", "instance"):
            return []
        callee = cls if kind == "ctor" else getattr(cls if kind == "static" else self.instance(owner), member)
        attempts = [lambda name=p["name"]: callee(**{**self.arguments(params, owner), name: None}) for p in params]
        rng = random.Random(call["id"])
        attempts += [functools.partial(callee, *rng.choices(self.weird, k=len(params))) for _ in range(4)]
        if kind == "instance":  # an empty wrapper (handle 0) as self
            attempts.append(functools.partial(getattr(cls.__new__(cls), member), *[None] * len(params)))
        return attempts

    def outcome(self, owner, call):
        self.keep, self.target = [], None
        try:
            target, kwargs = self.prepare(owner, call)
        except Unavailable as e:
            return {"outcome": "unavailable", "message": str(e)}
        except Exception as e:  # noqa: BLE001 - a factory that breaks is reported, not fatal
            return {"outcome": "error", "message": f"making the arguments: {e!r}", "trace": traceback.format_exc(4)}
        try:
            result = target(**kwargs)
        except Exception as e:  # noqa: BLE001 - a managed refusal, a converter's TypeError or anything else
            if isinstance(e, RuntimeError) and str(e).startswith("Proxy error("):
                return {"outcome": "refused", "message": str(e)}
            if isinstance(e, TypeError):
                return {"outcome": "typeerror", "message": str(e),
                        "arguments": {k: f"{type(v).__name__}: {v!r:.60}" for k, v in kwargs.items()}}
            return {"outcome": "error", "message": f"{e!r}", "trace": traceback.format_exc(limit=3)}
        # A call taken by an earlier trial answers as that trial does; only its outcome counts.
        problem = None if call["shadowed_by"] else self.check_result(owner, call, result, kwargs)
        return {"outcome": "ok", "problem": problem} if problem else {"outcome": "ok"}

    def prepare(self, owner, call):
        """(callable, keyword arguments) for the call."""
        cls, kind, member = self.python_class(owner), call["kind"], call["member"]
        if kind in ("instance", "get", "set"):
            obj = self.target = self.instance(owner)
        kwargs = self.arguments(call["params"], owner, call["magnitudes"])
        if kind in ("ctor", "static", "instance"):
            return (cls if kind == "ctor" else getattr(cls if kind == "static" else obj, member)), kwargs
        if kind in ("class_attribute", "get"):
            return (lambda: getattr(cls if kind == "class_attribute" else obj, member)), {}
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
            close = isinstance(back, float) and isinstance(value, float) and (
                abs(back - value) <= 1e-5 * max(1.0, abs(value)))
            return None if back == value or close else f"set {value!r}, read back {back!r}"
        if call["kind"] == "ctor":
            made = type(result)
            return None if made is self.python_class(owner) else f"constructor made a {made.__name__}"
        for p in call["params"]:
            if p["kind"] == "list" and len(kwargs[p["name"]]) != 1:
                return f"out list {p['name']} holds {kwargs[p['name']]!r} after the call"
        expected = call["result"]
        if expected in (None, "object") or (expected.endswith("[]") and expected != "byte[]"):
            return None
        ok = {"None": result is None, "bool": type(result) is bool, "float": type(result) is float,
              "int": isinstance(result, int) and type(result) is not bool,
              "uint": type(result) is int and 0 <= result < 256}.get(expected)
        if ok is None:
            ok = (type(result) is getattr(self.f, expected) if expected in VALUE_TYPES
                  else result is None or isinstance(result, self.python_class(expected)))
        return None if ok else f"described result {expected}, got {type(result).__name__}: {result!r:.80}"


if __name__ == "__main__":  # walk the calls of one class from a start index, one JSON line per call
    owner, start, tmp = sys.argv[1:4]
    # Records go to a copy of the original stdout; whatever else writes to fd 1 lands on stderr.
    out = os.fdopen(os.dup(1), "w")
    os.dup2(2, 1)
    walker, (_, calls) = Walker(tmp), plan()[owner]
    for index in range(int(start), len(calls)):
        print(json.dumps({"start": index, "id": calls[index]["id"]}), file=out, flush=True)
        record = dict(walker.run(owner, calls[index]), index=index, id=calls[index]["id"])
        print(json.dumps(record, default=repr), file=out, flush=True)
