"""Date and time rows of the value groups: tick arithmetic, naive and aware values, the range limits,
and DateTime, DateTimeOffset and TimeSpan made into Python values and back through Image.tag."""

from datetime import date, datetime, time, timedelta, timezone, tzinfo

import pytest

import datetime_probe as probe
import orvane.pyfigura as f

DAY = 864000000000
LIMIT = 0x2BCA2875F4374000
EPOCH_TICKS = 621355968000000000  # 1970-01-01


def ticks_of(moment):
    """Independent reference: whole microseconds since 0001-01-01, times ten."""
    delta = moment - datetime(1, 1, 1)
    return (delta.days * 86400 + delta.seconds) * 10_000_000 + delta.microseconds * 10


class BadOffset(datetime):
    def utcoffset(self):
        return 5


class HugeOffset(datetime):
    def utcoffset(self):
        return timedelta.max


class TestDateTimeIn:
    @pytest.mark.parametrize("moment", [
        datetime(1, 1, 1), datetime(1970, 1, 1), datetime(2000, 2, 29, 13, 14, 15, 161718),
        datetime(2100, 3, 1), datetime(2400, 12, 31, 23, 59, 59), datetime(9999, 12, 31, 23, 59, 59, 999999)])
    def test_naive_datetime_gives_status_1_and_its_ticks(self, moment):
        assert probe.datetime_in(moment) == (1, ticks_of(moment), 0, 0)

    def test_last_representable_moment_is_below_the_limit(self):
        status, ticks, _, _ = probe.datetime_in(datetime.max)
        assert status == 1 and ticks == LIMIT - 10

    def test_aware_datetime_gives_status_2_with_the_clock_reading_and_offset(self):
        zone = timezone(timedelta(hours=-5))
        assert probe.datetime_in(datetime(1970, 1, 1, 7, 0, tzinfo=zone)) == (
            2, EPOCH_TICKS + 7 * 36000000000, 0, -180000000000)

    def test_tzinfo_whose_offset_is_none_counts_as_naive(self):
        class NoOffset(tzinfo):
            def utcoffset(self, dt):
                return None
        assert probe.datetime_in(datetime(2020, 1, 1, tzinfo=NoOffset()))[0] == 1

    def test_utcoffset_that_is_not_a_timedelta_is_refused(self):
        with pytest.raises(TypeError, match=r"^instance utcoffset\(\) return wrong value$"):
            probe.datetime_in(BadOffset(2020, 1, 1, tzinfo=timezone.utc))

    def test_utcoffset_beyond_a_timespan_is_refused(self):
        with pytest.raises(OverflowError, match="^value too large or too small utc offset$"):
            probe.datetime_in(HugeOffset(2020, 1, 1, tzinfo=timezone.utc))

    def test_error_raised_by_the_zone_comes_through(self):
        class Broken(tzinfo):
            def utcoffset(self, dt):
                raise LookupError("no zone data")
        with pytest.raises(LookupError, match="no zone data"):
            probe.datetime_in(datetime(2020, 1, 1, tzinfo=Broken()))

    def test_date_is_midnight_and_never_aware(self):
        assert probe.date_in(date(2024, 2, 29)) == (1, ticks_of(datetime(2024, 2, 29)), 0, 0)

    def test_time_lies_on_the_first_day(self):
        assert probe.time_in(time(1, 2, 3, 4)) == (1, ticks_of(datetime(1, 1, 1, 1, 2, 3, 4)), 0, 0)
        assert probe.time_in(time(23, 0, tzinfo=timezone(timedelta(minutes=90)))) == (
            2, 23 * 36000000000, 0, 90 * 600000000)


class TestTimeDeltaIn:
    @pytest.mark.parametrize("delta, ticks", [
        (timedelta(0), 0),
        (timedelta(days=-1, seconds=86399), -10000000),
        (timedelta(microseconds=-1), -10),
        (timedelta(days=1, seconds=1, microseconds=1), DAY + 10000010),
        (timedelta(days=-3, hours=5, microseconds=250), -3 * DAY + 5 * 36000000000 + 2500)])
    def test_fields_in_normal_form_give_signed_ticks(self, delta, ticks):
        assert probe.timedelta_in(delta) == ticks

    def test_largest_timespan_in_whole_microseconds_fits(self):
        top = timedelta(microseconds=(2**63 - 1) // 10)
        assert probe.timedelta_in(top) == (2**63 - 1) // 10 * 10
        assert probe.timedelta_in(-top) == -((2**63 - 1) // 10 * 10)

    @pytest.mark.parametrize("delta", [
        timedelta.max, timedelta.min, timedelta(seconds=922337203686),
        timedelta(seconds=922337203685, microseconds=477581)])
    def test_beyond_timespan_is_refused(self, delta):
        with pytest.raises(OverflowError, match="^value too large or too small for .Net TimeSpan$"):
            probe.timedelta_in(delta)


class TestOut:
    def test_unspecified_kind_comes_back_naive(self):
        moment = datetime(2023, 7, 14, 9, 8, 7, 654321)
        back = probe.datetime_out(ticks_of(moment))
        assert back == moment and back.tzinfo is None

    def test_utc_kind_comes_back_with_timezone_utc(self):
        back = probe.datetime_out(ticks_of(datetime(2023, 7, 14)), 1)
        assert back.tzinfo is timezone.utc and back.replace(tzinfo=None) == datetime(2023, 7, 14)

    @pytest.mark.parametrize("kind", [2, 3])
    def test_local_kinds_come_back_with_their_offset(self, kind):
        back = probe.datetime_out(ticks_of(datetime(2023, 7, 14, 12)), kind, 2 * 36000000000)
        assert back.utcoffset() == timedelta(hours=2) and back.hour == 12

    def test_offset_value_keeps_clock_and_negative_offset(self):
        back = probe.datetime_offset_out(ticks_of(datetime(1999, 12, 31, 23, 59)), -(5 * 3600 + 1800) * 10_000_000)
        assert back == datetime(1999, 12, 31, 23, 59, tzinfo=timezone(-timedelta(hours=5, minutes=30)))
        assert back.utcoffset() == -timedelta(hours=5, minutes=30)

    def test_last_tick_digit_is_cut_off(self):
        assert probe.datetime_out(15).microsecond == 1
        assert probe.datetime_out(LIMIT - 1) == datetime.max

    @pytest.mark.parametrize("ticks, delta", [
        (-10000000, timedelta(seconds=-1)), (-15, timedelta(microseconds=-1)),
        (3 * DAY + 123456789, timedelta(days=3, microseconds=12345678)),
        (2**63 - 1, timedelta(microseconds=(2**63 - 1) // 10)),
        (-2**63, -timedelta(microseconds=2**63 // 10))])
    def test_timedelta_from_ticks_truncates_toward_zero(self, ticks, delta):
        assert probe.timedelta_out(ticks) == delta

    @pytest.mark.parametrize("moment", [
        datetime(1, 1, 1), datetime(1600, 2, 29, 1), datetime(1900, 2, 28), datetime(1900, 3, 1),
        datetime(2000, 12, 31, 23, 59, 59, 999999), datetime(2024, 12, 31), datetime(9999, 12, 31)])
    def test_ticks_to_fields_inverts_fields_to_ticks(self, moment):
        status, ticks, _, _ = probe.datetime_in(moment)
        assert probe.datetime_out(ticks) == moment


@pytest.fixture
def bitmap():
    with f.Bitmap(2, 2) as image:
        yield image


class TestThroughImageTag:
    @pytest.mark.parametrize("value", [
        datetime(2024, 5, 1, 12, 30, 1, 123456),
        datetime(2024, 5, 1, 12, 30, tzinfo=timezone(timedelta(hours=-5))),
        datetime(2024, 5, 1, tzinfo=timezone.utc),
        datetime(9999, 12, 31, 23, 59, 59, 999999)])
    def test_datetime_round_trip_keeps_clock_and_zone(self, bitmap, value):
        bitmap.tag = value
        back = bitmap.tag
        assert type(back) is datetime
        assert back.replace(tzinfo=None) == value.replace(tzinfo=None)
        assert back.utcoffset() == value.utcoffset()

    @pytest.mark.parametrize("value", [timedelta(days=-1, seconds=5, microseconds=7), timedelta(0),
                                       timedelta(days=10675199, seconds=10085, microseconds=477580)])
    def test_timedelta_round_trip(self, bitmap, value):
        bitmap.tag = value
        back = bitmap.tag
        assert type(back) is timedelta and back == value

    def test_date_and_time_come_back_as_datetimes(self, bitmap):
        bitmap.tag = date(2020, 2, 29)
        assert bitmap.tag == datetime(2020, 2, 29)
        bitmap.tag = time(6, 7, 8)
        assert bitmap.tag == datetime(1, 1, 1, 6, 7, 8)

    def test_failures_of_the_rows_reach_the_setter_as_proxy_errors(self, bitmap):
        with pytest.raises(RuntimeError, match="OverflowError: value too large or too small for .Net TimeSpan"):
            bitmap.tag = timedelta.max
        with pytest.raises(RuntimeError, match=r"TypeError: instance utcoffset\(\) return wrong value"):
            bitmap.tag = BadOffset(2020, 1, 1, tzinfo=timezone.utc)
