# Builds the native extension, the loader library, the managed interop assembly and the
# importable package tree under build/python; `make demo` and `make test` also install what they need.
PY      ?= /usr/bin/python3
BUILD   := build
JOBS    ?= $(shell nproc)
DOTNET  ?= dotnet
MANAGED := managed/WrpInterop.Orvane.PyFigura.csproj

.PHONY: all deps generate native managed test-assets layout test test-python test-native demo bench typecheck fuzz test-asan windows-check clean

all: layout

deps:
	scripts/install-deps.sh

# Both sides of the binding are generated from api/ into build/gen.
generate:
	$(PY) generator/generate.py --api api --out $(BUILD)/gen

native: generate
	cmake -S . -B $(BUILD)/native -DCMAKE_BUILD_TYPE=Release -DPython3_EXECUTABLE=$(PY) >/dev/null
	cmake --build $(BUILD)/native -j$(JOBS)

managed: generate
	$(DOTNET) publish $(MANAGED) -c Release -o $(BUILD)/managed/pyfigura --nologo -v quiet

# Test assemblies: the probe beside the real interop assembly, and interop assemblies that lack
# one ExchangeHost entry or one enumeration accessor, for the start-up failure tests.
test-assets: layout
	rm -rf $(BUILD)/test-assets/assemblies && mkdir -p $(BUILD)/test-assets/assemblies
	ln -s ../../python/orvane/assemblies/pyfigura $(BUILD)/test-assets/assemblies/pyfigura
	$(DOTNET) publish tests/support/probe-assembly/Orvane.PyFigura.Probe.csproj -c Release \
	    -o $(BUILD)/test-assets/assemblies/probe --nologo -v quiet
	$(DOTNET) publish tests/support/no-boxstctarget/NoBoxStcTarget.csproj -c Release \
	    -o $(BUILD)/test-assets/no-boxstctarget/pyfigura --nologo -v quiet
	$(DOTNET) publish tests/support/no-enum-accessor/NoEnumAccessor.csproj -c Release \
	    -o $(BUILD)/test-assets/no-enum-accessor/pyfigura --nologo -v quiet
	$(DOTNET) build examples/gallery/csharp/Gallery.csproj -c Release -o $(BUILD)/test-assets/gallery --nologo -v quiet

layout: native managed
	PY=$(PY) scripts/layout.sh $(BUILD)

test: deps all test-assets test-native test-python

test-native:
	cd $(BUILD)/native && ctest --output-on-failure

test-python:
	PYTHONPATH=$(BUILD)/python:$(BUILD)/native/tests $(PY) -m pytest -q tests/python

demo: deps all
	PYTHONPATH=$(BUILD)/python $(PY) examples/demo.py
	PYTHONPATH=$(BUILD)/python $(PY) examples/gallery/shapes_and_text.py

# The examples against the generated stubs.
typecheck: layout
	MYPYPATH=$(BUILD)/python $(PY) -m mypy --cache-dir $(BUILD)/mypy-cache examples

bench: all test-assets
	$(DOTNET) build bench/csharp/ManagedCallBench.csproj -c Release -o $(BUILD)/bench/csharp --nologo -v quiet
	PYTHONPATH=$(BUILD)/python:$(BUILD)/native/bench $(PY) bench/run.py

# The native parts under AddressSanitizer and UndefinedBehaviorSanitizer (own build tree), with the
# GoogleTest tests and the Python tests; the sanitizer runtime and libstdc++ are preloaded into Python.
ASAN := $(BUILD)/asan
# The Python tests run under the sanitizer; a subset: make test-asan ASAN_TESTS=tests/python/test_pixel_buffers.py
ASAN_TESTS ?= tests/python
SANITIZE := -fsanitize=address,undefined -fno-omit-frame-pointer
ASAN_ENV := ASAN_OPTIONS=detect_leaks=0:handle_segv=0:handle_sigbus=0:handle_sigfpe=0:handle_sigill=0:allow_user_segv_handler=1:alloc_dealloc_mismatch=0:detect_odr_violation=0 \
    UBSAN_OPTIONS=print_stacktrace=1:halt_on_error=1
test-asan: deps all test-assets
	$(PY) generator/generate.py --api api --out $(ASAN)/gen
	cmake -S . -B $(ASAN)/native -DCMAKE_BUILD_TYPE=RelWithDebInfo -DPython3_EXECUTABLE=$(PY) \
	    -DCMAKE_C_FLAGS="$(SANITIZE)" -DCMAKE_CXX_FLAGS="$(SANITIZE)" -DCMAKE_SHARED_LINKER_FLAGS="$(SANITIZE)" \
	    -DCMAKE_MODULE_LINKER_FLAGS="$(SANITIZE)" -DCMAKE_EXE_LINKER_FLAGS="$(SANITIZE)" >/dev/null
	cmake --build $(ASAN)/native -j$(JOBS)
	ln -sfn ../managed $(ASAN)/managed
	ln -sfn ../test-assets $(ASAN)/test-assets
	PY=$(PY) scripts/layout.sh $(ASAN)
	cd $(ASAN)/native && $(ASAN_ENV) ctest --output-on-failure
	ORVANE_TEST_BUILD=$(abspath $(ASAN)) $(ASAN_ENV) \
	    LD_PRELOAD="$$(gcc -print-file-name=libasan.so) $$(gcc -print-file-name=libstdc++.so)" \
	    PYTHONPATH=$(ASAN)/python:$(ASAN)/native/tests $(PY) -m pytest -q -p no:cacheprovider $(ASAN_TESTS)

# Hostile images: 3,000 mutated files of eight formats; crashes are checked against a plain .NET program.
# The test suite against the small deliberate faults of tools/faults/faults.json, one at a time.
faults: deps
	$(PY) tools/faults/run.py --rev HEAD --work $(BUILD)/faults

fuzz: deps all
	PYTHONPATH=$(BUILD)/python $(PY) tools/fuzz/image_fuzz.py --files 3000 --work $(BUILD)/fuzz

# Windows, as far as this machine goes: the host, the loader DLL and the extension cross-built with
# mingw-w64, the Windows runtime pack from NuGet, the host tests and a runtime start under wine64.
windows-check: generate
	JOBS=$(JOBS) PY=$(PY) scripts/windows-check.sh $(BUILD)

clean:
	rm -rf $(BUILD) managed/bin managed/obj
