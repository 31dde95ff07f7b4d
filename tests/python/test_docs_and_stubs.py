"""Docstrings, signatures and typing stubs generated from the API description, checked against it and mypy."""
import functools
import inspect
import os
import pydoc
import subprocess
import sys

import pytest

from conftest import PACKAGE_ROOT, PYTHON, REPO

import orvane.pyfigura as f

sys.path.insert(0, os.path.join(REPO, "generator"))
import api_model  # noqa: E402

MODEL = api_model.load(os.path.join(REPO, "api"))


def owner_of(entity):
    return functools.reduce(getattr, entity["module"].split(".")[2:] + entity["name"].split("."), f)


def members(kind):
    """(owner description, member description) of every generated member of one kind."""
    for entity in MODEL.classes + MODEL.values:
        for member in entity[kind]:
            if kind != "methods" or member.get("trials"):
                yield pytest.param(entity, member, id=f"{entity['name']}.{member['name']}")


@pytest.mark.parametrize("entity, method", members("methods"))
def test_method_docs_list_every_overload_and_single_ones_have_a_signature(entity, method):
    trials = method["trials"]
    if method["form"] == "mixed":  # reached on the class: the static form
        trials = [t for t in trials if t.get("form") == "static"]
    function, name = getattr(owner_of(entity), method["name"]), method["name"]
    lines = [line for line in function.__doc__.splitlines() if line.startswith(name + "(") and "[" in line]
    assert len(lines) == len(trials), function.__doc__
    for line, trial in zip(lines, trials):
        assert [p["name"] for p in trial["params"]] == [
            part.split(":")[0] for part in line[len(name) + 1:line.index(")")].split(", ") if part]
        assert f"[{entity['managed_name']}.{trial['managed_name']}]" in line
    if len(trials) == 1 and method["form"] != "mixed":
        receiver = [] if method["form"] == "static" else ["self"]
        assert list(inspect.signature(function).parameters) == receiver + [p["name"] for p in trials[0]["params"]]


@pytest.mark.parametrize("entity, attribute", [*members("attributes"), *members("class_attributes")])
def test_attribute_docs_name_the_type_and_the_managed_member(entity, attribute):
    doc = vars(owner_of(entity))[attribute["name"]].__doc__
    assert doc.startswith(attribute["name"] + ": ") and f"[{entity['managed_name']}." in doc, doc


def test_reference_reads_like_python():
    assert "characters_fitted: list[int] [out]" in f.Graphics.measure_string.__doc__
    assert "matrix: drawing2d.Matrix" in f.Graphics.multiply_transform.__doc__
    assert "pixel_format: imaging.PixelFormat (read-only)" in vars(f.Image)["pixel_format"].__doc__
    assert "System.Drawing.Imaging.PixelFormat" in f.imaging.PixelFormat.__doc__ and "Drawing.Point" in f.Point.__doc__
    text = pydoc.render_doc(f.Graphics, renderer=pydoc.plaintext)  # what help() shows
    assert ("draw_string(s: str, font: Font, brush: Brush, layout_rectangle: RectangleF, format: StringFormat)"
            " -> None  [System.Drawing.Graphics.DrawString]") in text
    assert "clip: Region (settable: Region)  [System.Drawing.Graphics.Clip]" in text


def test_mypy_passes_the_examples_and_reports_a_wrong_call(tmp_path):
    (tmp_path / "wrong_calls.py").write_text("from orvane.pyfigura import Bitmap, Point, drawing2d\n"
                                             "Bitmap('a', 'b', 'c')\nPoint(1, 2).x = 'text'\n"
                                             "drawing2d.Matrix().rotate(1.0, order='append')\n")
    run = subprocess.run([PYTHON, "-m", "mypy", "--cache-dir", str(tmp_path / "cache"), "--no-error-summary",
                          os.path.join(REPO, "examples"), "wrong_calls.py"],
                         capture_output=True, text=True, env={**os.environ, "MYPYPATH": PACKAGE_ROOT}, cwd=tmp_path)
    reported = {tuple(line.split(":")[:2]) for line in run.stdout.splitlines() if ": error:" in line}
    assert reported == {("wrong_calls.py", n) for n in "234"}, run.stdout  # and none in the examples
