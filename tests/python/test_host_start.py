"""Import of orvane.pyfigura on a real .NET runtime: package tree, version attributes, tracing, shutdown."""
import os

import pytest

from conftest import TEST_ASSETS

import orvane.pyfigura as pyfigura


class TestPackageTree:
    SUBMODULES = ["text", "drawing2d", "design", "printing", "imaging"]

    def test_submodules_are_attributes_with_their_full_names(self):
        for short in self.SUBMODULES:
            module = getattr(pyfigura, short)
            assert module.__name__ == f"orvane.pyfigura.{short}"

    def test_submodules_are_not_importable_on_their_own(self, fresh_python):
        run = fresh_python(
            "import sys, orvane.pyfigura as p\n"
            "assert 'orvane.pyfigura.drawing2d' not in sys.modules\n"
            "try:\n"
            "    import orvane.pyfigura.drawing2d\n"
            "except ModuleNotFoundError as e:\n"
            "    print('refused', e.name)\n")
        assert run.returncode == 0, run
        assert "refused orvane.pyfigura.drawing2d" in run.stdout.decode()

    def test_hidden_wrpgen_package(self):
        assert pyfigura._wrpgen.__name__ == "orvane.pyfigura._wrpgen"
        assert pyfigura._wrpgen._interop.__name__ == "orvane.pyfigura._wrpgen._interop"
        assert pyfigura._wrpgen._generic.__name__ == "orvane.pyfigura._wrpgen._generic"


class TestVersionAttributes:
    def test_version_and_threshold(self):
        assert str(pyfigura.VERSION) == "22.9.1.0"
        assert pyfigura.VERSION.view == "22.9.1.0"
        assert (pyfigura.VERSION.major, pyfigura.VERSION.minor,
                pyfigura.VERSION.patch, pyfigura.VERSION.sub) == (22, 9, 1, 0)
        assert pyfigura._BACKWARD_COMPATIBILITY_THRESHOLD.view == "22.6.0.0"
        assert pyfigura._BACKWARD_COMPATIBILITY_THRESHOLD < pyfigura.VERSION

    def test_version_type_is_published_and_not_constructible(self):
        assert type(pyfigura.VERSION) is pyfigura._ModuleVersionType
        assert repr(pyfigura.VERSION) == "<orvane.pyfigura._ModuleVersionType: 22.9.1.0>"
        with pytest.raises(TypeError):
            pyfigura._ModuleVersionType()

    def test_dependency_publishes_the_same_layout(self):
        import orvane.pygc as pygc
        # Each module has its own static type of the same layout; the fields agree, and so does the hash.
        fields = ("major", "minor", "patch", "sub", "view")
        assert [getattr(pygc.VERSION, f) for f in fields] == [getattr(pyfigura.VERSION, f) for f in fields]
        assert hash(pygc.VERSION) == hash(pyfigura.VERSION)
        assert pygc._BACKWARD_COMPATIBILITY_THRESHOLD.view == "22.6.0.0"


def trace_lines(run):
    return run.stdout.decode().split("\r\n")


class TestTracing:
    def test_trace_lines_in_order_with_crlf(self, fresh_python):
        run = fresh_python("import orvane.pyfigura", env={"COREHOST_TRACE": "1"})
        assert run.returncode == 0, run
        lines = trace_lines(run)
        assert lines[0] == "CLR host tracing enabled"
        expected_order = [
            "Initializing .NET Core host...", "NETCORE_DIR: '", "PRODUCT_ASSEMBLY_DIR: '", "Loading: '",
            "Try get module...", "No existed module...", "wrap dll loaded", "Loading2: '",
            ".NET Core host ready.", "Creating default AppDomain...", "APP_PATH: '", "APP_NI_PATHS: '",
            "NATIVE_DLL_SEARCH_DIRECTORIES: '", "Default AppDomain ready.",
            "Shutdowning .NET Core host...", ".NET Core host is down: 0"]
        positions = [next(i for i, line in enumerate(lines) if line.startswith(prefix))
                     for prefix in expected_order]
        assert positions == sorted(positions)

    def test_trace_shows_discovered_directories(self, fresh_python):
        run = fresh_python("import orvane.pyfigura", env={"COREHOST_TRACE": "1"})
        lines = trace_lines(run)
        netcore = next(line for line in lines if line.startswith("NETCORE_DIR: "))
        assert netcore.rstrip("'").split("/")[-1].startswith("netcore")
        app_path = next(line for line in lines if line.startswith("APP_PATH: "))
        entries = app_path[len("APP_PATH: '"):-1].split(":")
        assert entries[0].endswith("/assemblies/pyfigura")
        assert entries[-1] == netcore[len("NETCORE_DIR: '"):-1]

    @pytest.mark.parametrize("value", [None, "0", "-1", "abc", ""])
    def test_switch_off_writes_nothing(self, fresh_python, value):
        run = fresh_python("import orvane.pyfigura", env={"COREHOST_TRACE": value})
        assert run.returncode == 0, run
        assert run.stdout == b""

    def test_trace_precedes_script_output(self, fresh_python):
        run = fresh_python("import orvane.pyfigura; print('after import')", env={"COREHOST_TRACE": "2"})
        text = run.stdout.decode()
        assert text.index("Default AppDomain ready.") < text.index("after import")


class TestStartupFailures:
    def test_missing_exchange_entry_chains_binding_error_under_1007(self, fresh_python):
        broken = os.path.join(TEST_ASSETS, "no-boxstctarget")
        run = fresh_python(
            "try:\n"
            "    import orvane.pyfigura\n"
            "except ImportError as e:\n"
            "    print(e)\n"
            "    print(type(e.__cause__).__name__, e.__cause__)\n"
            "    print(e.__cause__ is e.__context__)\n",
            env={"NETCORE_WRAPPER_ASSEMBLY_DIR_orvane": broken})
        assert run.returncode == 0, run
        message, cause, same = run.stdout.decode().splitlines()
        assert message == "One or more errors occurred while loading the module 'orvane.pyfigura' (-1007)"
        assert cause.startswith(
            "TypeError While initializing the host for the 'Orvane.WrpGen.Interop.ExchangeHost "
            "(Assembly=WrpInterop.Orvane.PyFigura)' type, an error occurred - Method 'BoxStcTarget' "
            "not found (error=")
        assert cause.endswith(")")
        assert same == "True"

    def test_missing_dependency_fails_with_1008_before_the_host_starts(self, fresh_python):
        run = fresh_python(
            "import sys\n"
            "sys.modules['orvane.pygc'] = None\n"
            "try:\n"
            "    import orvane.pyfigura\n"
            "except ImportError as e:\n"
            "    print(e)\n"
            "    print(e.__cause__)\n",
            env={"COREHOST_TRACE": "1"})
        assert run.returncode == 0, run
        out = run.stdout.decode()
        assert "Initializing .NET Core host..." not in out
        assert "One or more errors occurred while loading the module 'orvane.pyfigura' (-1008)" in out
        assert ("Unable to import module dependencies. Cannot import the orvane.pygc module. "
                "The module not found or errors occurred while initializing it.") in out

    def test_incomplete_runtime_layout_is_an_import_error(self, fresh_python, tmp_path):
        (tmp_path / "orvane.embed.coreclrwrap.so").write_bytes(b"")  # beside, not in a netcoreX.Y directory
        run = fresh_python(
            "try:\n"
            "    import orvane.pyfigura\n"
            "except ImportError as e:\n"
            "    print(e)\n",
            env={"NETCORE_WRAPPER_NETCORE_DIR_orvane": str(tmp_path)})
        assert run.returncode == 0, run
        out = run.stdout.decode()
        assert "cannot load orvane.pyfigura" in out
        assert str(tmp_path) in out and "netcoreX.Y" in out

    def test_missing_interop_assembly_is_an_import_error(self, fresh_python, tmp_path):
        (tmp_path / "empty").mkdir()
        run = fresh_python(
            "try:\n"
            "    import orvane.pyfigura\n"
            "except ImportError as e:\n"
            "    print(e)\n",
            env={"NETCORE_WRAPPER_ASSEMBLY_DIR_orvane": str(tmp_path)})
        assert run.returncode == 0, run
        assert "WrpInterop.Orvane.PyFigura.dll" in run.stdout.decode()


def test_relative_roots_in_the_environment_are_made_absolute(fresh_python):
    # Relative roots would reach the runtime as relative assembly paths, which it refuses at start.
    package = os.path.join(os.path.dirname(os.path.abspath(__file__)), "..", "..", "build", "python", "orvane")
    relative = os.path.relpath(os.path.join(package, "assemblies"))
    run = fresh_python("import os, orvane.pyfigura as f\n"
                       "print(os.path.isabs(os.environ['NETCORE_WRAPPER_ASSEMBLY_DIR_orvane']), f.Bitmap(2, 3).height)",
                       env={"NETCORE_WRAPPER_ASSEMBLY_DIR_orvane": relative})
    assert run.returncode == 0, run
    assert run.stdout.decode().split() == ["True", "3"]
