"""Version objects: text forms, FNV-1a hash, ordering by numbers and read-only fields."""

import operator

import pytest

import version_probe


def fnv1a(numbers):
    """Reference FNV-1a over the four fields as little-endian signed 32-bit words."""
    value = 0x811C9DC5
    for field in numbers:
        for byte in (field & 0xFFFFFFFF).to_bytes(4, "little"):
            value = ((value ^ byte) * 16777619) & 0xFFFFFFFF
    return value - (1 << 32) if value >= 1 << 31 else value


def make(numbers, text=None):
    return version_probe.make(*numbers, text if text is not None else ".".join(map(str, numbers)))


class TestTextAndFields:
    def test_repr_names_the_type_and_the_view(self):
        assert repr(make((22, 9, 1, 0))) == "<orvane.pyfigura._ModuleVersionType: 22.9.1.0>"

    def test_str_and_view_are_the_given_text(self):
        version = make((1, 2, 3, 4), "one-two")
        assert str(version) == "one-two"
        assert version.view == "one-two"

    def test_numbers_are_ints(self):
        version = make((22, -9, 2147483647, -2147483648))
        assert (version.major, version.minor, version.patch, version.sub) == (22, -9, 2147483647, -2147483648)

    @pytest.mark.parametrize("field", ["major", "minor", "patch", "sub", "view"])
    def test_fields_are_read_only(self, field):
        version = make((22, 9, 1, 0))
        with pytest.raises(AttributeError):
            setattr(version, field, 1)

    def test_type_cannot_be_instantiated_by_scripts(self):
        with pytest.raises(TypeError):
            version_probe._ModuleVersionType()


class TestHash:
    @pytest.mark.parametrize("numbers", [(22, 9, 1, 0), (0, 0, 0, 0), (-1, 255, 65536, 7), (3, 1, 4, 1)])
    def test_hash_is_fnv1a_of_the_numbers_widened_as_signed(self, numbers):
        assert hash(make(numbers)) == fnv1a(numbers)

    def test_negative_hashes_occur_and_are_sign_extended(self):
        samples = [(major, 0, 0, 0) for major in range(64)]
        assert any(fnv1a(s) < 0 for s in samples)
        assert all(hash(make(s)) == fnv1a(s) for s in samples)

    def test_view_takes_no_part(self):
        assert hash(make((22, 9, 1, 0), "a")) == hash(make((22, 9, 1, 0), "b"))

    def test_the_error_marker_is_never_returned(self):
        numbers = (1, 8, 0, 1217457877)  # FNV-1a of these is 0xFFFFFFFF
        assert fnv1a(numbers) == -1
        assert hash(make(numbers)) == -2


class TestOrdering:
    OPERATORS = [operator.lt, operator.le, operator.eq, operator.ne, operator.gt, operator.ge]

    @pytest.mark.parametrize("left, right", [
        ((22, 9, 1, 0), (22, 9, 1, 0)),
        ((22, 9, 1, 0), (22, 10, 0, 0)),
        ((23, 0, 0, 0), (22, 99, 99, 99)),
        ((1, 2, 3, 4), (1, 2, 3, 5)),
        ((-1, 0, 0, 0), (0, 0, 0, 0)),
    ])
    def test_all_operators_follow_tuple_order(self, left, right):
        for op in self.OPERATORS:
            assert op(make(left), make(right)) is op(left, right), op.__name__
            assert op(make(right), make(left)) is op(right, left), op.__name__

    def test_fields_compare_as_numbers_not_text(self):
        assert make((22, 10, 0, 0)) > make((22, 9, 1, 0))

    def test_view_is_ignored(self):
        assert make((22, 9, 1, 0), "x") == make((22, 9, 1, 0), "y")

    def test_other_types_are_not_implemented(self):
        version = make((22, 9, 1, 0))
        assert version.__eq__(1) is NotImplemented
        assert version.__lt__((22, 9, 1, 0)) is NotImplemented
        assert (version == 1) is False
        with pytest.raises(TypeError):
            version < 1

    @pytest.mark.parametrize("reference, found, expected", [
        ((22, 9, 1, 0), (22, 9, 1, 0), 0),
        ((22, 9, 1, 0), (22, 10, 0, 0), -1),
        ((22, 9, 1, 0), (22, 9, 0, 0), 1),
        ((0, 0, 0, -1), (0, 0, 0, 0), -1),
    ])
    def test_version_compare_against_numbers(self, reference, found, expected):
        assert version_probe.compare(reference, make(found)) == expected


class TestSisterPygc:
    def test_publishes_its_version_and_threshold(self):
        import orvane.pygc as pygc
        assert (str(pygc.VERSION), str(pygc._BACKWARD_COMPATIBILITY_THRESHOLD)) == ("22.9.1.0", "22.6.0.0")
        assert (pygc.VERSION.major, pygc.VERSION.minor, pygc.VERSION.patch, pygc.VERSION.sub) == (22, 9, 1, 0)
        assert pygc._BACKWARD_COMPATIBILITY_THRESHOLD < pygc.VERSION
        assert hash(pygc.VERSION) == fnv1a((22, 9, 1, 0))
