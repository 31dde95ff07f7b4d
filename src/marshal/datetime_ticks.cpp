// Tick arithmetic of the managed calendar: civil fields and timedelta fields to 100 ns ticks and back.
#include "marshal/datetime_marshal.h"

namespace {

constexpr int64_t kDaysPer400Years = 146097;
constexpr int64_t kDaysPer100Years = 36524;
constexpr int64_t kDaysPer4Years = 1461;
constexpr int64_t kDaysPerYear = 365;

constexpr int32_t kDaysToMonthCommon[13] = {0, 31, 59, 90, 120, 151, 181, 212, 243, 273, 304, 334, 365};
constexpr int32_t kDaysToMonthLeap[13] = {0, 31, 60, 91, 121, 152, 182, 213, 244, 274, 305, 335, 366};

// TimeSpan's range in whole seconds, and the last second in which only part of the microseconds fit.
constexpr int64_t kMaxSpanSeconds = 922337203685LL;
constexpr int64_t kLastFullSecond = 922337203684LL;
constexpr int64_t kMaxEdgeMicroseconds = 477580;

bool is_leap_year(int32_t year) { return year % 4 == 0 && (year % 100 != 0 || year % 400 == 0); }

}  // namespace

DateTimeParts parts_from_ticks(uint64_t value) {
    DateTimeParts parts;
    parts.kind = static_cast<int32_t>(value >> kDateTimeKindShift);
    int64_t ticks = static_cast<int64_t>(value & kTicksMask);
    int64_t rest = ticks / kTicksPerDay;
    int64_t y400 = rest / kDaysPer400Years;
    rest -= y400 * kDaysPer400Years;
    int64_t y100 = rest / kDaysPer100Years;
    if (y100 == 4) y100 = 3;
    rest -= y100 * kDaysPer100Years;
    int64_t y4 = rest / kDaysPer4Years;
    rest -= y4 * kDaysPer4Years;
    int64_t y1 = rest / kDaysPerYear;
    if (y1 == 4) y1 = 3;
    rest -= y1 * kDaysPerYear;  // day of the year, from 0
    parts.year = static_cast<int32_t>(400 * y400 + 100 * y100 + 4 * y4 + y1 + 1);
    bool leap = y1 == 3 && (y4 != 24 || y100 == 3);
    const int32_t* table = leap ? kDaysToMonthLeap : kDaysToMonthCommon;
    int32_t day_of_year = static_cast<int32_t>(rest);
    int32_t month = day_of_year / 32 + 1;
    while (day_of_year >= table[month]) ++month;
    parts.month = month;
    parts.day = day_of_year - table[month - 1] + 1;
    parts.hour = static_cast<int32_t>(ticks / 36000000000LL % 24);
    parts.minute = static_cast<int32_t>(ticks / 600000000LL % 60);
    parts.second = static_cast<int32_t>(ticks / 10000000LL % 60);
    parts.microsecond = static_cast<int32_t>(ticks / 10 % 1000000);  // the last tick digit is cut off
    return parts;
}

bool ticks_from_parts(const DateTimeParts& parts, uint64_t* value) {
    if (parts.year < 1 || parts.year > 9999 || parts.month < 1 || parts.month > 12 || parts.day < 1) return false;
    const int32_t* table = is_leap_year(parts.year) ? kDaysToMonthLeap : kDaysToMonthCommon;
    if (parts.day > table[parts.month] - table[parts.month - 1]) return false;
    int64_t y = parts.year - 1;
    int64_t days = y * 365 + y / 4 - y / 100 + y / 400 + table[parts.month - 1] + parts.day - 1;
    int64_t second = parts.second == 60 ? 59 : parts.second;
    int64_t seconds = days * 86400 + int64_t{parts.hour} * 3600 + int64_t{parts.minute} * 60 + second;
    int64_t ticks = (seconds * 1000000 + parts.microsecond) * 10;
    if (ticks < 0 || static_cast<uint64_t>(ticks) >= kTicksLimit) return false;
    *value = static_cast<uint64_t>(ticks) | (static_cast<uint64_t>(parts.kind) << kDateTimeKindShift);
    return true;
}

bool ticks_from_delta(int64_t days, int64_t seconds, int64_t microseconds, int64_t* ticks) {
    if (days < 0) {
        // Carry one day into the seconds so that all three fields have the same sign.
        days += 1;
        microseconds += (seconds - 86400) * 1000000;
        seconds = microseconds / 1000000;
        microseconds -= seconds * 1000000;
    }
    int64_t total = days * 86400 + seconds;
    if (total < -kMaxSpanSeconds || total > kMaxSpanSeconds) return false;
    if ((total < -kLastFullSecond || total > kLastFullSecond) &&
        (microseconds < -kMaxEdgeMicroseconds || microseconds > kMaxEdgeMicroseconds)) {
        return false;
    }
    *ticks = (total * 1000000 + microseconds) * 10;
    return true;
}

TimeSpanParts delta_from_ticks(int64_t ticks) {
    TimeSpanParts parts;
    parts.days = static_cast<int32_t>(ticks / kTicksPerDay);
    parts.seconds = static_cast<int32_t>(ticks / 10000000 % 86400);
    parts.microseconds = static_cast<int32_t>(ticks / 10 % 1000000);
    return parts;
}
