"""Generates both sides of the binding from the API description: native C++ and managed C#.

    /usr/bin/python3 generator/generate.py [--api api] [--out build/gen]
"""
import argparse
import os
import sys

HERE = os.path.dirname(os.path.abspath(__file__))
sys.path.insert(0, HERE)

import api_model  # noqa: E402
import callback_emitter  # noqa: E402
import generic_emitter  # noqa: E402
import managed_emitter  # noqa: E402
import native_emitter  # noqa: E402
import record_emitter  # noqa: E402
import stub_emitter  # noqa: E402


def main():
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("--api", default=os.path.join(os.path.dirname(HERE), "api"))
    parser.add_argument("--out", default=os.path.join(os.path.dirname(HERE), "build", "gen"))
    args = parser.parse_args()
    model = api_model.load(args.api)
    native = native_emitter.emit_native(model, os.path.join(args.out, "native"))
    managed_emitter.emit_managed(model, os.path.join(args.out, "managed"))
    generic_emitter.write_all(generic_emitter.emit_native(model, os.path.join(args.out, "native")))
    generic_emitter.write_all(generic_emitter.emit_managed(model, os.path.join(args.out, "managed")))
    generic_emitter.write_all(stub_emitter.emit_stubs(model, os.path.join(args.out, "stubs")))
    generic_emitter.write_all(callback_emitter.emit(model, args.out))
    generic_emitter.write_all(record_emitter.emit(model, args.out))
    print(f"generated {len(native)} native files from {len(model.classes)} classes into {args.out}")


if __name__ == "__main__":
    main()
