"""Docstrings of the generated members, and the Python spelling of every type the description uses.

One line per overload: Python parameter names and types, the result type, marks for the lists that
carry ref/out values back, and the managed member the call reaches. A member with one overload opens
with the `name(a, b)\\n--\\n\\n` form from which CPython derives __text_signature__.
"""
from native_forms import LIST_ELEMENTS

# Description spelling -> what a Python user passes or gets.
SCALARS = {"bool": "bool", "Byte": "int", "Int16": "int", "Int32": "int", "Int64": "int", "Single": "float",
           "Double": "float", "String": "str", "byte[]": "bytes", "Guid": "uuid.UUID", "Stream": "BinaryIO",
           "object": "object", "int": "int", "uint": "int", "float": "float", "None": "None"}

# Managed type of an attribute typed `object`, as Python sees its value.
OBJECT_ATTRIBUTES = {"System.String": "str", "System.Byte[]": "bytes", "System.Guid": "uuid.UUID"}

LIST_ELEMENT_TYPES = {"Int32": "int", "Single": "float", "bool": "bool", "Byte": "int", "byte[]": "bytes"}


class TypeNames:
    """Python names of description types as seen from one module (other modules are prefixed)."""

    def __init__(self, model, home):
        self.model = model
        self.home = home
        self.enum_by_managed = {e["managed_name"]: e for e in model.enums}
        self.sequence = "list"  # docs read list[...]; stubs ask for any Sequence

    def _qualify(self, module, name):
        if module == self.home:
            return name
        return module.rsplit(".", 1)[-1] + "." + name

    def enum_name(self, managed):
        enum = self.enum_by_managed.get(managed)
        return self._qualify(enum["module"], enum["name"]) if enum else None

    def named(self, spelling):
        if spelling in SCALARS:
            return SCALARS[spelling]
        if spelling.endswith("[]"):
            return f"{self.sequence}[{self.named(spelling[:-2])}]"
        model = self.model
        entity = model.class_by_name.get(spelling) or model.value_by_name.get(spelling)
        if entity is None:
            return "object"
        return self._qualify(entity["module"], spelling)

    def param(self, p):
        if p["kind"] == "list":
            element = LIST_ELEMENTS.get(p.get("clr"), "Int32")
            inner = self.enum_name(p.get("managed_type")) or LIST_ELEMENT_TYPES.get(element)
            inner = inner or self.named(element)
            return f"list[{inner}]"
        enum = self.enum_name(p.get("managed_type")) if p.get("type") == "Int32" else None
        return enum or self.named(p["type"])

    def result(self, spelling, clr):
        if spelling in ("int", "Int32") and clr:
            enum = self.enum_name(clr)
            if enum:
                return enum
        if spelling == "object" and clr in OBJECT_ATTRIBUTES:
            return OBJECT_ATTRIBUTES[clr] + " | None"
        return self.named(spelling)

    def setter(self, attribute):
        if attribute.get("setter_type"):
            spelling = attribute["setter_type"]
            if spelling == "Int32" and attribute.get("clr"):
                return self.result("int", attribute["clr"])
            return self.named(spelling)
        return self.result(attribute["type"], attribute.get("clr"))


def managed_member(owner, trial_or_attribute, fallback):
    name = trial_or_attribute.get("managed_name") or fallback
    if name == ".ctor":
        return owner["managed_name"]
    return f"{owner['managed_name']}.{name}"


def overload_line(names, name, params, result):
    parts = []
    for p in params:
        text = f"{p['name']}: {names.param(p)}"
        if p["kind"] == "list":
            text += f" [{p.get('direction', 'ref')}]"
        parts.append(text)
    line = f"{name}({', '.join(parts)})"
    return line if result is None else f"{line} -> {result}"


def signature_header(name, params, static):
    """The first-line form CPython turns into __text_signature__ (positional-or-keyword parameters)."""
    names = [p["name"] for p in params]
    if not static:
        names.insert(0, "$self")
    return f"{name}({', '.join(names)})\n--\n\n"


def method_doc(names, owner, method, static=None):
    """Docstring of a method (or one form of a mixed method) from its trials."""
    trials = [t for t in method["trials"] if static is None or (t.get("form") == "static") == static]
    is_static = method["form"] == "static" if static is None else static
    lines = []
    for t in trials:
        line = overload_line(names, method["name"], t["params"], names.result(t.get("result"), t.get("result_clr")))
        lines.append(f"{line}  [{managed_member(owner, t, method['name'])}]")
    head = signature_header(method["name"], trials[0]["params"], is_static) if len(trials) == 1 else ""
    kind = "Static method" if is_static else "Method"
    if len(trials) > 1:
        kind += f", {len(trials)} overloads tried in this order: the first whose arguments convert is called"
    return head + "\n".join(lines) + f"\n\n{kind}."


def python_method_doc(pm):
    """Docstring of a method written in Python: its text signature from the stub parameters, then its text."""
    first = "$type" if pm["form"] == "class" else "$self"
    params = [first]
    for p in filter(None, (p.strip() for p in pm["params"].split(","))):
        name, _, rest = p.partition(":")
        default = rest.partition("=")[2].strip()
        params.append(f"{name.strip()}={default}" if default else name.strip())
    return f"{pm['name']}({', '.join(params)}, /)\n--\n\n{pm['doc']}"


def constructor_doc(names, owner):
    """Class docstring: the managed type, then the constructor overloads."""
    short = owner["name"].split(".")[-1]
    trials = owner.get("constructors") or []
    kind = owner.get("managed_kind") or owner.get("shape", "type")
    text = f"Python view of the managed {kind} {owner['managed_name']}."
    if owner.get("buffer"):
        text += (" While its bits are locked it is a buffer: memoryview(data) and numpy.asarray(data) view the"
                 " locked pixels without a copy, (height, width, 3|4) in B, G, R(, A) order for 24 and 32 bpp.")
    if owner.get("no_constructor") or not trials:
        return text + "\n\nNot constructed from Python; instances come from other members."
    head = signature_header(short, trials[0]["params"], True) if len(trials) == 1 else ""
    lines = [f"{overload_line(names, short, t['params'], None)}  [{owner['managed_name']}]" for t in trials]
    return head + text + "\n\nConstructors, tried in this order:\n" + "\n".join(lines)


def attribute_doc(names, owner, attribute):
    managed = attribute.get("getter") or ""
    managed = managed[4:] if managed.startswith("get_") else attribute["name"]
    text = f"{attribute['name']}: {names.result(attribute['type'], attribute.get('clr'))}"
    if attribute.get("setter") or str(attribute.get("native", "")).startswith("read and write"):
        text += f" (settable: {names.setter(attribute)})"
    else:
        text += " (read-only)"
    return f"{text}  [{owner['managed_name']}.{managed}]"


def class_attribute_doc(names, owner, attribute):
    kind = attribute.get("member", "property")
    return (f"{attribute['name']}: {names.result(attribute['type'], attribute.get('clr'))} (class {kind})  "
            f"[{owner['managed_name']}.{attribute['managed_name']}]")


def enum_doc(enum):
    return f"Members of the managed enumeration {enum['managed_name']}, as IntEnum."


def c_literal(text):
    """C string literal of a docstring, split at its line breaks."""
    escaped = text.replace("\\", "\\\\").replace('"', '\\"')
    pieces = escaped.split("\n")
    return " ".join('"' + p + ('\\n"' if i < len(pieces) - 1 else '"') for i, p in enumerate(pieces))


def value_native_method_doc(names, owner, method):
    short = owner["name"]
    return (f"{method['name']}()\n--\n\n{method['name']}() -> {short}  [{owner['managed_name']}.Empty]\n\n"
            f"Static method: the empty {short}.")


def value_doc(value):
    """Docstring of a native value type: its managed type and its constructor forms."""
    name = value["name"]
    forms = value["constructor"]["forms"]
    field_types = {f["name"]: "float" if f["c_type"] == "double" else "int" for f in value["record"]["fields"]}
    lines = []
    for form in forms:
        if form.get("fields"):
            args = ", ".join(f"{f}: {field_types[f]}" for f in form["fields"])
        elif form.get("accepts") and form["count"] == 1:
            args = "value: " + " | ".join(form["accepts"])
        elif form.get("accepts"):
            args = ", ".join(f"{n}: {t}" for n, t in zip(("location", "size"), form["accepts"]))
        elif form["count"] == 0:
            args = ""
        else:
            args = "value"
        lines.append(f"{name}({args})")
    keywords = sorted({f for form in forms for f in form.get("fields", [])}, key=lambda f: "xywhargb".find(f[0]))
    return (f"Value type mirroring the managed struct {value['managed_name']}.\n\nConstructors:\n"
            + "\n".join(lines)
            + f"\n\nThe field names ({', '.join(keywords)}) may be given as keywords.")
