// Date and time across the managed boundary: datetime, date, time and timedelta to ticks of 100 ns and back.
#pragma once

#define PY_SSIZE_T_CLEAN
#include <Python.h>

#include <cstdint>
#include "generated_wire_records.h"

constexpr int64_t kTicksPerDay = 864000000000LL;
constexpr uint64_t kTicksLimit = 0x2BCA2875F4374000ULL;  // first tick beyond 9999-12-31
constexpr uint64_t kTicksMask = (1ULL << 62) - 1;
constexpr int kDateTimeKindShift = 62;

enum DateTimeKind : int32_t { kKindUnspecified = 0, kKindUtc = 1, kKindLocal = 2 };

// Civil fields of a tick count: what Python's datetime is built from, and read from.
struct DateTimeParts {
    int32_t kind = 0;
    int32_t year = 1;
    int32_t month = 1;
    int32_t day = 1;
    int32_t hour = 0;
    int32_t minute = 0;
    int32_t second = 0;
    int32_t microsecond = 0;
};

// The fields of a Python timedelta.
struct TimeSpanParts {
    int32_t days = 0;
    int32_t seconds = 0;
    int32_t microseconds = 0;
};

// Tick arithmetic, free of Python.
DateTimeParts parts_from_ticks(uint64_t value);
// False when a field or the result lies outside the managed range.
bool ticks_from_parts(const DateTimeParts& parts, uint64_t* value);
// Fields in Python's normal form (days may be negative, seconds and microseconds not). False beyond TimeSpan.
bool ticks_from_delta(int64_t days, int64_t seconds, int64_t microseconds, int64_t* ticks);
TimeSpanParts delta_from_ticks(int64_t ticks);

// Group values in. `out` is a ManagedDateTime for the first three, the ticks word for the last.
// datetime and time: 1 a DateTime, 2 a DateTimeOffset with the offset word written, 0 with an exception set.
int32_t datetime_in(PyObject* object, ManagedDateTime* out);
int32_t date_in(PyObject* object, ManagedDateTime* out);
int32_t time_in(PyObject* object, ManagedDateTime* out);
int32_t timedelta_in(PyObject* object, int64_t* ticks);

// Group values out: new references, or null with an exception set.
PyObject* datetime_out(const ManagedDateTime* value);         // naive, UTC or offset by kind
PyObject* datetime_offset_out(const ManagedDateTime* value);  // aware, with the offset word
PyObject* timedelta_out(int64_t ticks);
