"""The start-up failure family: message texts, codes and chaining over a pending error."""

import pytest

import failure_probe as probe


def raised(function, *args, **kwargs):
    with pytest.raises(BaseException) as caught:
        function(*args, **kwargs)
    return caught.value


def raised_inside(error):
    """The error after it was raised and caught, so it carries a traceback."""
    try:
        raise error
    except BaseException as caught:
        return caught


FAMILY = [
    (probe.raise_load_failure, ("orvane.pyfigura", -1008),
     "One or more errors occurred while loading the module 'orvane.pyfigura' (-1008)"),
    (probe.raise_module_failure, (-1003, "orvane.pyfigura.text"),
     "Module initialization internal error (-1003) <orvane.pyfigura.text>"),
    (probe.raise_module_failure, (-1012, "orvane.pyfigura", "orvane.pyfigura._C_APIT_Pen"),
     "Module initialization internal error (-1012) <orvane.pyfigura,orvane.pyfigura._C_APIT_Pen>"),
    (probe.raise_type_failure, (-1015, "orvane.pyfigura.Bitmap"),
     "Type initialization internal error (-1015) <orvane.pyfigura.Bitmap>"),
    (probe.raise_type_failure, (-1020, "orvane.pyfigura.Color", "RED"),
     "Type initialization internal error (-1020) <orvane.pyfigura.Color,RED>"),
    (probe.raise_dependency_failure, ("orvane.pygc",),
     "Unable to import module dependencies. Cannot import the orvane.pygc module. "
     "The module not found or errors occurred while initializing it."),
    (probe.raise_import_failure, ("uuid",),
     "Unable to import the specified module uuid. The module not found or errors occurred while initializing it."),
    (probe.raise_attribute_failure, ("UUID", "uuid"),
     "Unable to import the specified type UUID from the module uuid. "
     "The type not found or errors occurred while initializing it."),
]


class TestFamilyTexts:
    @pytest.mark.parametrize("function, args, text", FAMILY)
    def test_plain_import_error_when_nothing_is_pending(self, function, args, text):
        error = raised(function, *args)
        assert type(error) is ImportError
        assert str(error) == text
        assert error.__cause__ is None and error.__context__ is None

    @pytest.mark.parametrize("function, args, text", FAMILY)
    def test_chains_over_a_pending_error(self, function, args, text):
        pending = raised_inside(KeyError("first"))
        error = raised(function, *args, pending=pending)
        assert type(error) is ImportError and str(error) == text
        assert error.__cause__ is pending
        assert error.__context__ is pending


class TestChains:
    def test_failure_deep_in_start_up_shows_as_a_chain(self):
        inner = raised(probe.raise_type_failure, -1015, "orvane.pyfigura.Bitmap")
        outer = raised(probe.raise_load_failure, "orvane.pyfigura", -1006, pending=inner)
        assert str(outer) == "One or more errors occurred while loading the module 'orvane.pyfigura' (-1006)"
        assert outer.__cause__ is inner and outer.__context__ is inner
        assert str(inner) == "Type initialization internal error (-1015) <orvane.pyfigura.Bitmap>"

    def test_enum_failure_sets_type_error_and_chains(self):
        error = raised(probe.raise_enum_failure, "accessor missing", "orvane.pyfigura.drawing2d.FillMode")
        assert type(error) is ImportError
        assert str(error) == "enum type 'orvane.pyfigura.drawing2d.FillMode' is not initialized"
        assert type(error.__cause__) is TypeError and str(error.__cause__) == "accessor missing"
        assert error.__context__ is error.__cause__

    def test_enum_failure_replaces_a_pending_error_with_its_type_error(self):
        error = raised(probe.raise_enum_failure, "m", "E", pending=ValueError("old"))
        assert type(error.__cause__) is TypeError

    def test_chain_and_raise_uses_the_given_type(self):
        pending = raised_inside(ValueError("low"))
        error = raised(probe.chain_and_raise, RuntimeError, "high", pending=pending)
        assert type(error) is RuntimeError and str(error) == "high"
        assert error.__cause__ is pending and error.__context__ is pending
        assert pending.__traceback__ is not None

    def test_chain_and_raise_without_pending_error_has_no_cause(self):
        error = raised(probe.chain_and_raise, ImportError, "alone")
        assert error.__cause__ is None and error.__context__ is None
