"""How each type spelling of the API description crosses the native side of the wire.

A parameter form says how a Python argument is converted and handed to an entry; a result form
says what the entry returns and how that becomes a Python object.
"""
import generic_emitter

SCALAR_PARAMS = {
    # spelling: (C type, converter)
    "bool": ("uint8_t", "convert_bool"),
    "Byte": ("uint8_t", "convert_byte"),
    "Int16": ("int16_t", "convert_int16"),
    "Int32": ("int32_t", "convert_int32"),
    "Int64": ("int64_t", "convert_int64"),
    "Single": ("float", "convert_single"),
    "Double": ("double", "convert_double"),
}

# Result spelling plus managed type -> (C return type, expression making a Python object of `r`).
SCALAR_RESULTS = {
    ("bool", None): ("uint8_t", "PyBool_FromLong(r)"),
    ("uint", None): ("uint8_t", "PyLong_FromLong(r)"),
    ("int", "System.Int16"): ("int16_t", "PyLong_FromLong(r)"),
    ("int", "System.Int64"): ("int64_t", "PyLong_FromLongLong(r)"),
    ("int", "System.IntPtr"): ("int64_t", "PyLong_FromLongLong(r)"),
    ("int", None): ("int32_t", "PyLong_FromLong(r)"),
    ("float", "System.Double"): ("double", "PyFloat_FromDouble(r)"),
    ("float", None): ("float", "PyFloat_FromDouble(r)"),
}

VALUE_TYPES = {"Point", "PointF", "Size", "SizeF", "Rectangle", "RectangleF", "Color"}

# Element spelling of a ref/out list parameter, from its managed by-ref type.
LIST_ELEMENTS = {
    "System.Int32&": "Int32",
    "System.Single&": "Single",
    "System.Boolean&": "bool",
    "System.Byte&": "Byte",
    "System.Byte[]&": "byte[]",
    "System.Drawing.PointF[]&": "PointF[]",
}

# Result spelling of a list element once the call has filled it.
LIST_ELEMENT_RESULTS = {"Int32": "int", "Single": "float", "bool": "bool", "Byte": "uint",
                        "byte[]": "object", "PointF[]": "PointF[]"}


def ident(python_name):
    """C identifier of a class: nested names use an underscore; interop wrappers get a prefix."""
    if python_name.startswith("_"):
        return "Interop" + python_name
    return python_name.replace(".", "_")


class ParamForm:
    """Native handling of one parameter: local storage, reset, converter, wire argument."""

    def __init__(self, c_type, converter, pass_address=False, init="{}", kind="plain"):
        self.c_type = c_type
        self.converter = converter
        self.pass_address = pass_address
        self.init = init
        self.kind = kind  # plain | lease | list

    def wire_type(self):
        return self.c_type + "*" if self.pass_address else self.c_type


class ResultForm:
    """Native handling of one result."""

    def __init__(self, kind, c_type=None, make=None, wrap=None, record=None):
        self.kind = kind  # none | scalar | object | handle | typed | value | refused
        self.c_type = c_type
        self.make = make
        self.wrap = wrap
        self.record = record


class Forms:
    def __init__(self, model):
        self.model = model

    def param(self, spelling, clr=None, path=False):
        m = self.model
        if spelling in SCALAR_PARAMS:
            c_type, conv = SCALAR_PARAMS[spelling]
            return ParamForm(c_type, conv)
        if spelling == "String":
            return ParamForm("StringArg", "convert_path" if path else "convert_string", True, "{-1, 0, nullptr}")
        if spelling == "byte[]":
            return ParamForm("BufferLease", "convert_byte_array", False, kind="lease")
        if spelling == "Guid":
            return ParamForm("GuidValue", "convert_guid", True)
        if spelling == "object":
            return ParamForm("VariantArg", "convert_variant", True)
        if spelling == "Stream":
            return ParamForm("StreamArg", "convert_stream", True)
        if spelling.endswith("[]"):
            return ParamForm("ArrayArg", generic_emitter.array_converter(m, spelling), True)
        if spelling in VALUE_TYPES:
            return ParamForm(spelling + "Value", spelling + "_convert", True)
        if m.is_class(spelling):
            cls = m.class_by_name[spelling]
            if cls["shape"] in ("interface", "managed_struct"):
                return ParamForm("InstanceArg", ident(spelling) + "_convert", True)
            return ParamForm("InstanceHandle", ident(spelling) + "_convert")
        raise ValueError(f"no parameter form for {spelling!r}")

    def setter_spelling(self, attribute):
        """Parameter spelling of an attribute's setter value."""
        if attribute.get("setter_type"):
            return attribute["setter_type"]
        t, clr = attribute["type"], attribute.get("clr")
        if t == "int":
            return {"System.Int16": "Int16", "System.Int64": "Int64"}.get(clr, "Int32")
        if t == "float":
            return "Double" if clr == "System.Double" else "Single"
        if t == "uint":
            return "Byte"
        if t == "object":
            return {"System.String": "String", "System.Byte[]": "byte[]", "System.Guid": "Guid"}.get(clr, "object")
        return t

    def result(self, spelling, clr=None):
        m = self.model
        if spelling == "None":
            return ResultForm("none")
        if clr == "System.Void":
            clr = None  # a managed void declared with a result: the entry answers 0
        if (spelling, clr) in SCALAR_RESULTS:
            c_type, make = SCALAR_RESULTS[(spelling, clr)]
            return ResultForm("scalar", c_type, make)
        if (spelling, None) in SCALAR_RESULTS and spelling != "object":
            c_type, make = SCALAR_RESULTS[(spelling, None)]
            return ResultForm("scalar", c_type, make)
        if spelling == "object":
            return ResultForm("object", "PyObject*")
        if spelling.endswith("[]"):
            return ResultForm("handle", "InstanceHandle", wrap=generic_emitter.array_wrap(m, spelling))
        if spelling in VALUE_TYPES:
            return ResultForm("value", spelling + "Value", wrap=spelling + "_wrap")
        if m.is_class(spelling):
            cls = m.class_by_name[spelling]
            if cls["shape"] == "interface":
                return ResultForm("typed", "TypedHandle", wrap=ident(spelling) + "_wrap")
            return ResultForm("handle", "InstanceHandle", wrap=ident(spelling) + "_wrap")
        raise ValueError(f"no result form for {spelling!r} ({clr})")

    def attribute_result(self, attribute):
        return self.result(attribute["type"], attribute.get("clr"))
