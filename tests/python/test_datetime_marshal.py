"""Date and time rows of the value groups: tick arithmetic, zones, range limits and the kinds of DateTime made."""
from datetime import datetime, time, timedelta, timezone

import pytest

import datetime_probe as probe

DAY, HOUR = 864000000000, 36000000000
LIMIT = 0x2BCA2875F4374000
TOP = (2**63 - 1) // 10  # the largest TimeSpan in whole microseconds


def ticks_of(moment):
    """Independent reference: whole microseconds since 0001-01-01, times ten."""
    delta = moment.replace(tzinfo=None) - datetime(1, 1, 1)
    return (delta.days * 86400 + delta.seconds) * 10_000_000 + delta.microseconds * 10


def shifted(offset):
    """A datetime whose utcoffset() gives `offset` (or raises it), past datetime's own checks."""
    class Shifted(datetime):
        def utcoffset(self):
            if isinstance(offset, Exception):
                raise offset
            return offset
    return Shifted(2020, 1, 1, tzinfo=timezone.utc)


MOMENTS = [datetime(1, 1, 1), datetime(1600, 2, 29, 1), datetime(1900, 2, 28), datetime(1900, 3, 1),
           datetime(2000, 2, 29, 13, 14, 15, 161718), datetime(2024, 12, 31), datetime(2100, 3, 1),
           datetime(9999, 12, 31, 23, 59, 59, 999999), shifted(None)]  # the last: a zone without offset


@pytest.mark.parametrize("read, value, record", [(probe.datetime_in, m, (1, ticks_of(m), 0, 0)) for m in MOMENTS] + [
    (probe.datetime_in, datetime(1970, 1, 1, 7, tzinfo=timezone(timedelta(hours=-5))),
     (2, ticks_of(datetime(1970, 1, 1, 7)), 0, -5 * HOUR)),
    (probe.time_in, time(23, 0, tzinfo=timezone(timedelta(minutes=90))), (2, 23 * HOUR, 0, 90 * 600000000))])
def test_naive_values_give_status_1_and_their_ticks_and_come_back_naive_aware_ones_status_2(read, value, record):
    assert read(value) == record
    back = probe.datetime_out(record[1])
    assert record[0] == 2 or (back == value.replace(tzinfo=None) and back.tzinfo is None)


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


@pytest.mark.parametrize("kind, zone", [(1, timezone.utc), (2, timezone(timedelta(hours=2)))])
def test_utc_and_local_values_keep_the_clock_and_come_back_with_their_zone(kind, zone):
    back = probe.datetime_out(ticks_of(datetime(1999, 12, 31, 23, 59)), kind, 2 * HOUR)
    assert (back.replace(tzinfo=None), back.utcoffset()) == (datetime(1999, 12, 31, 23, 59), zone.utcoffset(None))
    assert zone is not timezone.utc or back.tzinfo is timezone.utc
