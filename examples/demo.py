"""Demo: starts .NET inside Python and has System.Drawing draw and save a PNG.

Until the drawing classes are bound, the scene is drawn by a small probe entry that the test
assets provide, reached through the same host and binding path the extension uses.
"""
import os
import sys

HERE = os.path.dirname(os.path.abspath(__file__))
BUILD = os.path.join(HERE, "..", "build")
os.environ.setdefault("NETCORE_WRAPPER_ASSEMBLY_DIR_orvane", os.path.join(BUILD, "test-assets", "assemblies"))
sys.path.insert(0, os.path.join(BUILD, "native", "tests"))

import orvane.pyfigura as pyfigura  # noqa: E402  (starts the runtime)
import host_probe  # noqa: E402

out = os.path.abspath(sys.argv[1] if len(sys.argv) > 1 else os.path.join(BUILD, "demo.png"))
host_probe.draw_sample(out, "Hi")
print(f"orvane.pyfigura {pyfigura.VERSION} drew {out}")
