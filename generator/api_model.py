"""Loads the API description (api/*.json) into one indexed model for the generators."""
import json
import os

CLASS_FILES = ["drawing.json", "drawing2d.json", "imaging.json", "printing.json", "text.json", "design.json"]

VALUE_TYPES = ["Point", "PointF", "Rectangle", "RectangleF", "Size", "SizeF", "Color"]

SCALARS = {"bool", "Byte", "Int16", "Int32", "Int64", "Single", "Double"}


class ApiModel:
    """Classes, value types, enumerations and module orders, with lookups by Python name."""

    def __init__(self, api_dir):
        self.api_dir = api_dir
        self.classes = []
        for name in CLASS_FILES:
            self.classes.extend(self._load(name)["classes"])
        self.class_by_name = {c["name"]: c for c in self.classes}
        self.values = self._load("values.json")["value_types"]
        self.value_by_name = {v["name"]: v for v in self.values}
        self.enums = self._load("enums.json")["enums"]
        self.enum_by_name = {e["name"]: e for e in self.enums}
        self.modules = self._load("modules.json")
        self.callbacks = self._load("callbacks.json")
        self.records = self._load("records.json")

    def _load(self, name):
        with open(os.path.join(self.api_dir, name), encoding="utf-8") as f:
            return json.load(f)

    def is_class(self, type_name):
        return type_name in self.class_by_name

    def is_value_type(self, type_name):
        return type_name in self.value_by_name

    def is_array(self, type_name):
        return type_name.endswith("[]") and type_name != "byte[]"


def load(api_dir=None):
    if api_dir is None:
        api_dir = os.path.join(os.path.dirname(os.path.dirname(os.path.abspath(__file__))), "api")
    return ApiModel(api_dir)
