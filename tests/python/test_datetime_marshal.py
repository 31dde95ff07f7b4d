"""Date and time rows of the value groups: tick arithmetic, naive and aware values, the range limits,
and DateTime, DateTimeOffset and TimeSpan made into Python values (through Image.tag: test_variants)."""
from datetime import date, datetime, time, timedelta, timezone

import pytest

import datetime_probe as probe

DAY, HOUR = 864000000000, 36000000000
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


@pytest.mark.parametrize("moment", [
    datetime(1, 1, 1), datetime(1600, 2, 29, 1), datetime(1900, 2, 28), datetime(1900, 3, 1),
    datetime(2000, 2, 29, 13, 14, 15, 161718), datetime(2024, 12, 31), datetime(2100, 3, 1),
    datetime(9999, 12, 31, 23, 59, 59, 999999)])
def test_naive_datetime_gives_status_1_and_its_ticks_and_comes_back_naive(moment):
    record = probe.datetime_in(moment)
    assert record == (1, ticks_of(moment), 0, 0)
    back = probe.datetime_out(record[1])
    assert back == moment and back.tzinfo is None


@pytest.mark.parametrize("read, value, record", [
    (probe.datetime_in, shifted(None), (1, ticks_of(datetime(2020, 1, 1)), 0, 0)),  # a zone without offset
    (probe.datetime_in, datetime(1970, 1, 1, 7, tzinfo=timezone(timedelta(hours=-5))),
     (2, ticks_of(datetime(1970, 1, 1, 7)), 0, -5 * HOUR)),
    (probe.time_in, time(23, 0, tzinfo=timezone(timedelta(minutes=90))), (2, 23 * HOUR, 0, 90 * 600000000)),
    (probe.time_in, time(1, 2, 3, 4), (1, ticks_of(datetime(1, 1, 1, 1, 2, 3, 4)), 0, 0)),  # on the first day
    (probe.date_in, date(2024, 2, 29), (1, ticks_of(datetime(2024, 2, 29)), 0, 0))])  # at midnight
def test_zones_dates_and_times_give_their_records(read, value, record):
    assert read(value) == record


@pytest.mark.parametrize("read, value, error, message", [
    (probe.datetime_in, shifted(5), TypeError, r"^instance utcoffset\(\) return wrong value$"),
    (probe.datetime_in, shifted(timedelta.max), OverflowError, "^value too large or too small utc offset$"),
    (probe.datetime_in, shifted(LookupError("no zone data")), LookupError, "^no zone data$"),
    (probe.timedelta_in, timedelta.min, OverflowError, "^value too large or too small for .Net TimeSpan$"),
    (probe.timedelta_in, timedelta(microseconds=TOP + 1), OverflowError, "for .Net TimeSpan$")])
def test_refusals(read, value, error, message):
    with pytest.raises(error, match=message):
        read(value)


@pytest.mark.parametrize("delta, ticks", [
    (timedelta(seconds=-1), -10000000), (timedelta(microseconds=-1), -10),
    (timedelta(days=-3, hours=5, microseconds=250), -3 * DAY + 5 * HOUR + 2500),
    (timedelta(microseconds=TOP), TOP * 10), (-timedelta(microseconds=TOP), -TOP * 10)])
def test_timedelta_fields_in_normal_form_give_signed_ticks_and_back(delta, ticks):
    assert probe.timedelta_in(delta) == ticks and probe.timedelta_out(ticks) == delta


def test_the_last_tick_digit_is_cut_off_toward_zero():
    assert probe.datetime_out(15).microsecond == 1 and probe.datetime_out(LIMIT - 1) == datetime.max
    assert [probe.timedelta_out(t) for t in (-15, 3 * DAY + 123456789, 2**63 - 1, -2**63)] == [
        timedelta(microseconds=-1), timedelta(days=3, microseconds=12345678), timedelta(microseconds=TOP),
        -timedelta(microseconds=2**63 // 10)]


@pytest.mark.parametrize("make, zone", [
    (lambda ticks: probe.datetime_out(ticks, 1, 2 * HOUR), timezone.utc),
    (lambda ticks: probe.datetime_out(ticks, 2, 2 * HOUR), timezone(timedelta(hours=2))),
    (lambda ticks: probe.datetime_offset_out(ticks, -(5 * 3600 + 1800) * 10_000_000), timezone(-timedelta(hours=5.5)))])
def test_utc_local_and_offset_values_keep_the_clock_and_come_back_with_their_zone(make, zone):
    back = make(ticks_of(datetime(1999, 12, 31, 23, 59)))
    assert (back.replace(tzinfo=None), back.utcoffset()) == (datetime(1999, 12, 31, 23, 59), zone.utcoffset(None))
    assert zone is not timezone.utc or back.tzinfo is timezone.utc
