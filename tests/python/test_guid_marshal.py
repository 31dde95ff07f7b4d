"""Guid converter, the quiet reader of the values-in row and the UUID builder of the values-out row."""

import uuid

import pytest

import marshal_probe as probe

FIXED = uuid.UUID("00112233-4455-6677-8899-aabbccddeeff")


class Tagged(uuid.UUID):
    pass


class TestGuidIn:
    @pytest.mark.parametrize("value", [FIXED, uuid.uuid4(), Tagged(int=5)])
    def test_converter_copies_bytes_le(self, value):
        assert probe.convert("guid", value) == value.bytes_le

    @pytest.mark.parametrize("value, name", [(str(FIXED), "str"), (FIXED.bytes_le, "bytes"), (None, "NoneType")])
    def test_converter_refuses_other_types(self, value, name):
        with pytest.raises(TypeError, match=f"^can't build Guid from '{name}'$"):
            probe.convert("guid", value)

    def test_quiet_reader_skips_the_type_test(self):
        class Lookalike:
            bytes_le = FIXED.bytes_le
        assert probe.guid_in_quiet(FIXED) == FIXED.bytes_le
        assert probe.guid_in_quiet(Lookalike()) == FIXED.bytes_le

    def test_quiet_reader_leaves_the_attribute_error_pending(self):
        with pytest.raises(AttributeError):
            probe.guid_in_quiet(object())


class TestGuidOut:
    def test_builds_a_uuid_from_bytes_le(self):
        result = probe.guid_out(FIXED.bytes_le)
        assert type(result) is uuid.UUID and result == FIXED

    @pytest.mark.parametrize("value", [FIXED, uuid.uuid4(), uuid.UUID(int=0), uuid.UUID(int=2**128 - 1)])
    def test_round_trip(self, value):
        assert probe.guid_out(probe.convert("guid", value)) == value
