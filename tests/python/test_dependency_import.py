"""Version-checked import of the sister module and single-attribute imports."""

import decimal
import sys
import types

import pytest

import failure_probe
import version_probe

IMPORTER = "orvane.pyfigura"
DEPENDENCY = "orvane.pygc"
REFERENCE = (22, 9, 1, 0)
PREFIX = f"Unable to import module dependencies. Cannot import the {DEPENDENCY} module. "


def version(text):
    return version_probe.make(*map(int, text.split(".")), text)


@pytest.fixture
def fake_pygc(monkeypatch):
    """Installs a stand-in orvane.pygc in sys.modules; monkeypatch puts the real entry back."""
    def install(version_text=None, threshold_text=None):
        module = types.ModuleType(DEPENDENCY)
        if version_text is not None:
            module.VERSION = version(version_text)
        if threshold_text is not None:
            module._BACKWARD_COMPATIBILITY_THRESHOLD = version(threshold_text)
        monkeypatch.setitem(sys.modules, DEPENDENCY, module)
        return module
    return install


def check(reference=REFERENCE):
    return failure_probe.import_versioned_dependency(IMPORTER, DEPENDENCY, reference)


class TestAccepted:
    @pytest.mark.parametrize("found, threshold", [
        ("22.9.1.0", "22.6.0.0"),
        ("22.10.0.0", "22.6.0.0"),
        ("22.9.1.0", "22.9.1.0"),
        ("100.0.0.0", "1.0.0.0"),
    ])
    def test_threshold_to_found_range_accepts(self, fake_pygc, found, threshold):
        module = fake_pygc(found, threshold)
        assert check() is module

    def test_the_real_sister_is_accepted(self):
        import orvane.pygc
        assert check() is orvane.pygc


class TestRefused:
    def test_missing_module_chains_over_the_import_error(self, monkeypatch):
        monkeypatch.setitem(sys.modules, DEPENDENCY, None)
        with pytest.raises(ImportError) as caught:
            check()
        assert str(caught.value) == (
            PREFIX + "The module not found or errors occurred while initializing it.")
        assert isinstance(caught.value.__cause__, ModuleNotFoundError)
        assert caught.value.__context__ is caught.value.__cause__

    def test_missing_version(self, fake_pygc):
        fake_pygc(None, "22.6.0.0")
        with pytest.raises(ImportError) as caught:
            check()
        assert str(caught.value) == (
            PREFIX + f"The {DEPENDENCY} module found does not have 'VERSION' attribute "
            "to check version compatibility.")
        assert caught.value.__cause__ is None and caught.value.__context__ is None

    def test_found_version_lower_than_reference(self, fake_pygc):
        fake_pygc("22.9.0.0", "22.6.0.0")
        with pytest.raises(ImportError) as caught:
            check()
        assert str(caught.value) == (
            PREFIX + f"The {DEPENDENCY} module found has a version ('22.9.0.0') that is lower than "
            "the referenced version of that module ('22.9.1.0').")

    def test_missing_threshold(self, fake_pygc):
        fake_pygc("22.9.1.0", None)
        with pytest.raises(ImportError) as caught:
            check()
        assert str(caught.value) == (
            PREFIX + f"The {DEPENDENCY} module found does not have 'BACKWARD_COMPATIBILITY_THRESHOLD' "
            "attribute to check version compatibility.")

    def test_reference_older_than_threshold_names_the_importer(self, fake_pygc):
        fake_pygc("23.0.0.0", "23.0.0.0")
        with pytest.raises(ImportError) as caught:
            check()
        assert str(caught.value) == (
            PREFIX + "The installed version of the module ('23.0.0.0') is not compatible with the "
            "referenced vesion of the module ('22.9.1.0'). The installed version of the module is not "
            "compatible with the module versions < '23.0.0.0'. "
            f"Update dendend module '{IMPORTER}' to a latest version.")

    def test_messages_use_the_published_view(self, fake_pygc):
        module = fake_pygc("22.9.1.0", "22.6.0.0")
        module.VERSION = version_probe.make(1, 0, 0, 0, "old-build")
        with pytest.raises(ImportError, match=r"\('old-build'\)"):
            check()


class TestImportAttribute:
    def test_returns_the_attribute(self):
        assert failure_probe.import_attribute("decimal", "Decimal") is decimal.Decimal

    def test_missing_module(self):
        with pytest.raises(ImportError) as caught:
            failure_probe.import_attribute("orvane_no_such_module", "Decimal")
        assert str(caught.value) == (
            "Unable to import the specified module orvane_no_such_module. "
            "The module not found or errors occurred while initializing it.")
        assert isinstance(caught.value.__cause__, ModuleNotFoundError)

    def test_missing_attribute(self):
        with pytest.raises(ImportError) as caught:
            failure_probe.import_attribute("decimal", "NoSuchType")
        assert str(caught.value) == (
            "Unable to import the specified type NoSuchType from the module decimal. "
            "The type not found or errors occurred while initializing it.")
        assert isinstance(caught.value.__cause__, AttributeError)
        assert caught.value.__context__ is caught.value.__cause__

    def test_imports_anew_each_time(self, monkeypatch):
        monkeypatch.setitem(sys.modules, "orvane_swapped", types.SimpleNamespace(Thing=1))
        assert failure_probe.import_attribute("orvane_swapped", "Thing") == 1
        monkeypatch.setitem(sys.modules, "orvane_swapped", types.SimpleNamespace(Thing=2))
        assert failure_probe.import_attribute("orvane_swapped", "Thing") == 2
