"""Date and time rows of the value groups: tick arithmetic, naive and aware values, the range limits,
and DateTime, DateTimeOffset and TimeSpan made into Python values (through Image.tag: test_variants)."""

from datetime import date, datetime, time, timedelta, timezone

import pytest

import datetime_probe as probe

DAY = 864000000000
HOUR = 36000000000
LIMIT = 0x2BCA2875F4374000
TOP = (2**63 - 1) // 10  # the largest TimeSpan in whole microseconds


def ticks_of(moment):
    """Independent reference: whole microseconds since 0001-01-01, times ten."""
    delta = moment - datetime(1, 1, 1)
    return (delta.days * 86400 + delta.seconds) * 10_000_000 + delta.microseconds * 10


def shifted(offset):
    """A datetime whose utcoffset() gives `offset` (or raises it), past datetime's own checks."""
    class Shifted(datetime):
        def utcoffset(self):
            if isinstance(offset, Exception):
                raise offset
            return offset
    return Shifted(2020, 1, 1, tzinfo=timezone.utc)


class TestIn:
    @pytest.mark.parametrize("moment", [
        datetime(1, 1, 1), datetime(2000, 2, 29, 13, 14, 15, 161718), datetime(2100, 3, 1),
        datetime(9999, 12, 31, 23, 59, 59, 999999), shifted(None)])
    def test_naive_datetime_gives_status_1_and_its_ticks(self, moment):
        assert probe.datetime_in(moment) == (1, ticks_of(moment.replace(tzinfo=None)), 0, 0)

    def test_aware_values_give_status_2_and_dates_and_times_lie_at_midnight_and_on_the_first_day(self):
        assert probe.datetime_in(datetime(1970, 1, 1, 7, tzinfo=timezone(timedelta(hours=-5)))) == (
            2, ticks_of(datetime(1970, 1, 1, 7)), 0, -5 * HOUR)
        assert probe.time_in(time(23, 0, tzinfo=timezone(timedelta(minutes=90)))) == (2, 23 * HOUR, 0, 90 * 600000000)
        assert probe.date_in(date(2024, 2, 29)) == (1, ticks_of(datetime(2024, 2, 29)), 0, 0)
        assert probe.time_in(time(1, 2, 3, 4)) == (1, ticks_of(datetime(1, 1, 1, 1, 2, 3, 4)), 0, 0)

    @pytest.mark.parametrize("moment, error, message", [
        (shifted(5), TypeError, r"^instance utcoffset\(\) return wrong value$"),
        (shifted(timedelta.max), OverflowError, "^value too large or too small utc offset$"),
        (shifted(LookupError("no zone data")), LookupError, "^no zone data$")])
    def test_offsets_that_are_refused(self, moment, error, message):
        with pytest.raises(error, match=message):
            probe.datetime_in(moment)

    @pytest.mark.parametrize("delta, ticks", [
        (timedelta(days=-1, seconds=86399), -10000000), (timedelta(microseconds=-1), -10),
        (timedelta(days=-3, hours=5, microseconds=250), -3 * DAY + 5 * HOUR + 2500),
        (timedelta(microseconds=TOP), TOP * 10), (-timedelta(microseconds=TOP), -TOP * 10)])
    def test_timedelta_fields_in_normal_form_give_signed_ticks(self, delta, ticks):
        assert probe.timedelta_in(delta) == ticks

    @pytest.mark.parametrize("delta", [timedelta.max, timedelta.min, timedelta(microseconds=TOP + 1)])
    def test_timedelta_beyond_a_timespan_is_refused(self, delta):
        with pytest.raises(OverflowError, match="^value too large or too small for .Net TimeSpan$"):
            probe.timedelta_in(delta)


class TestOut:
    @pytest.mark.parametrize("moment", [
        datetime(1, 1, 1), datetime(1600, 2, 29, 1), datetime(1900, 2, 28), datetime(1900, 3, 1),
        datetime(2000, 12, 31, 23, 59, 59, 999999), datetime(2024, 12, 31), datetime(9999, 12, 31)])
    def test_unspecified_kind_inverts_fields_to_ticks_naive(self, moment):
        back = probe.datetime_out(probe.datetime_in(moment)[1])
        assert back == moment and back.tzinfo is None

    def test_last_tick_digit_is_cut_off(self):
        assert probe.datetime_out(15).microsecond == 1 and probe.datetime_out(LIMIT - 1) == datetime.max
        assert probe.datetime_in(datetime.max)[1] == LIMIT - 10

    @pytest.mark.parametrize("kind, offset, zone", [
        (1, 0, timezone.utc), (2, 2 * HOUR, timezone(timedelta(hours=2))), (3, 2 * HOUR, timezone(timedelta(hours=2)))])
    def test_utc_and_local_kinds_come_back_with_their_zone(self, kind, offset, zone):
        back = probe.datetime_out(ticks_of(datetime(2023, 7, 14, 12)), kind, offset)
        assert back == datetime(2023, 7, 14, 12, tzinfo=zone) and back.utcoffset() == zone.utcoffset(None)
        assert kind != 1 or back.tzinfo is timezone.utc

    def test_offset_value_keeps_clock_and_negative_offset(self):
        back = probe.datetime_offset_out(ticks_of(datetime(1999, 12, 31, 23, 59)), -(5 * 3600 + 1800) * 10_000_000)
        assert (back.replace(tzinfo=None), back.utcoffset()) == (datetime(1999, 12, 31, 23, 59), -timedelta(hours=5.5))

    @pytest.mark.parametrize("ticks, delta", [
        (-10000000, timedelta(seconds=-1)), (-15, timedelta(microseconds=-1)),
        (3 * DAY + 123456789, timedelta(days=3, microseconds=12345678)),
        (2**63 - 1, timedelta(microseconds=TOP)), (-2**63, -timedelta(microseconds=2**63 // 10))])
    def test_timedelta_from_ticks_truncates_toward_zero(self, ticks, delta):
        assert probe.timedelta_out(ticks) == delta
