// Python's datetime, date, time and timedelta read into ticks, and made from ticks, for the callback groups.
#include "marshal/datetime_marshal.h"

#include <datetime.h>

#include "common/dependency_import.h"
#include "common/interned_names.h"

namespace {

// The C API capsule is looked up anew at each entry: a sister module may have reloaded datetime.
bool refresh_datetime_api() {
    PyDateTimeAPI = static_cast<PyDateTime_CAPI*>(PyCapsule_Import(PyDateTime_CAPSULE_NAME, 0));
    return PyDateTimeAPI != nullptr;
}

int32_t overflow(const char* text) {
    PyErr_SetString(PyExc_OverflowError, text);
    return 0;
}

bool delta_to_ticks(PyObject* delta, int64_t* ticks) {
    return ticks_from_delta(PyDateTime_DELTA_GET_DAYS(delta), PyDateTime_DELTA_GET_SECONDS(delta),
                            PyDateTime_DELTA_GET_MICROSECONDS(delta), ticks);
}

// The zone of a datetime or time: false with an exception set, else whether an offset was found.
bool read_utc_offset(PyObject* object, bool* has_offset, int64_t* offset) {
    *has_offset = false;
    PyObject* tzinfo = PyObject_GetAttr(object, interned(InternedName::Tzinfo));
    if (tzinfo == nullptr) return false;
    bool naive = tzinfo == Py_None;
    Py_DECREF(tzinfo);
    if (naive) return true;
    PyObject* delta = PyObject_CallMethodNoArgs(object, interned(InternedName::Utcoffset));
    if (PyErr_Occurred()) {
        Py_XDECREF(delta);
        return false;
    }
    if (delta == Py_None) {
        Py_DECREF(delta);
        return true;
    }
    bool is_delta = PyDelta_Check(delta);
    bool converted = is_delta && delta_to_ticks(delta, offset);
    Py_DECREF(delta);
    if (!is_delta) {
        PyErr_SetString(PyExc_TypeError, "instance utcoffset() return wrong value");
        return false;
    }
    if (!converted) {
        PyErr_SetString(PyExc_OverflowError, "value too large or too small utc offset");
        return false;
    }
    *has_offset = true;
    return true;
}

// Clock fields with an optional zone into the record: 1 plain, 2 with the offset word, 0 failed.
int32_t zoned_in(const DateTimeParts& parts, bool has_offset, int64_t offset, ManagedDateTime* out,
                 const char* offset_overflow) {
    if (has_offset) {
        out->offset = offset;
        return ticks_from_parts(parts, &out->value) ? 2 : overflow(offset_overflow);
    }
    return ticks_from_parts(parts, &out->value) ? 1 : overflow("value too large or too small for .Net DateTime");
}

PyObject* import_datetime_attribute(InternedName name) { return import_attribute("datetime", interned(name)); }

// datetime.datetime(fields..., zone): a new reference, or null.
PyObject* aware_datetime(const DateTimeParts& parts, PyObject* zone) {
    PyObject* datetime_type = import_datetime_attribute(InternedName::Datetime);
    if (datetime_type == nullptr) return nullptr;
    PyObject* args = Py_BuildValue("iiiiiiiO", parts.year, parts.month, parts.day, parts.hour, parts.minute,
                                   parts.second, parts.microsecond, zone);
    PyObject* result = args == nullptr ? nullptr : PyObject_CallObject(datetime_type, args);
    Py_XDECREF(args);
    Py_DECREF(datetime_type);
    return result;
}

PyObject* utc_zone() {
    PyObject* timezone_type = import_datetime_attribute(InternedName::Timezone);
    if (timezone_type == nullptr) return nullptr;
    PyObject* utc = PyObject_GetAttr(timezone_type, interned(InternedName::Utc));
    Py_DECREF(timezone_type);
    return utc;
}

PyObject* offset_zone(int64_t offset) {
    TimeSpanParts span = delta_from_ticks(offset);
    PyObject* delta = PyDateTimeAPI->Delta_FromDelta(span.days, span.seconds, span.microseconds, 1,
                                                     PyDateTimeAPI->DeltaType);
    if (delta == nullptr) return nullptr;
    PyObject* timezone_type = import_datetime_attribute(InternedName::Timezone);
    PyObject* zone = timezone_type == nullptr ? nullptr : PyObject_CallOneArg(timezone_type, delta);
    Py_XDECREF(timezone_type);
    Py_DECREF(delta);
    return zone;
}

PyObject* with_zone(const DateTimeParts& parts, PyObject* zone) {
    if (zone == nullptr) return nullptr;
    PyObject* result = aware_datetime(parts, zone);
    Py_DECREF(zone);
    return result;
}

}  // namespace

int32_t datetime_in(PyObject* object, ManagedDateTime* out) {
    if (!refresh_datetime_api()) return 0;
    bool has_offset;
    int64_t offset = 0;
    if (!read_utc_offset(object, &has_offset, &offset)) return 0;
    DateTimeParts parts;
    parts.year = PyDateTime_GET_YEAR(object);
    parts.month = PyDateTime_GET_MONTH(object);
    parts.day = PyDateTime_GET_DAY(object);
    parts.hour = PyDateTime_DATE_GET_HOUR(object);
    parts.minute = PyDateTime_DATE_GET_MINUTE(object);
    parts.second = PyDateTime_DATE_GET_SECOND(object);
    parts.microsecond = PyDateTime_DATE_GET_MICROSECOND(object);
    return zoned_in(parts, has_offset, offset, out, "value too large or too small for .Net DateTimeOffSet");
}

int32_t date_in(PyObject* object, ManagedDateTime* out) {
    if (!refresh_datetime_api()) return 0;
    DateTimeParts parts;
    parts.year = PyDateTime_GET_YEAR(object);
    parts.month = PyDateTime_GET_MONTH(object);
    parts.day = PyDateTime_GET_DAY(object);
    return zoned_in(parts, false, 0, out, nullptr);
}

int32_t time_in(PyObject* object, ManagedDateTime* out) {
    if (!refresh_datetime_api()) return 0;
    bool has_offset;
    int64_t offset = 0;
    if (!read_utc_offset(object, &has_offset, &offset)) return 0;
    DateTimeParts parts;  // on 0001-01-01
    parts.hour = PyDateTime_TIME_GET_HOUR(object);
    parts.minute = PyDateTime_TIME_GET_MINUTE(object);
    parts.second = PyDateTime_TIME_GET_SECOND(object);
    parts.microsecond = PyDateTime_TIME_GET_MICROSECOND(object);
    ticks_from_parts(parts, &out->value);  // always in range
    if (!has_offset) return 1;
    out->offset = offset;
    return 2;
}

int32_t timedelta_in(PyObject* object, int64_t* ticks) {
    if (!refresh_datetime_api()) return 0;
    return delta_to_ticks(object, ticks) ? 1 : overflow("value too large or too small for .Net TimeSpan");
}

PyObject* datetime_out(const ManagedDateTime* value) {
    if (!refresh_datetime_api()) return nullptr;
    DateTimeParts parts = parts_from_ticks(value->value);
    switch (parts.kind) {
        case kKindUnspecified:
            return PyDateTimeAPI->DateTime_FromDateAndTime(parts.year, parts.month, parts.day, parts.hour,
                                                           parts.minute, parts.second, parts.microsecond, Py_None,
                                                           PyDateTimeAPI->DateTimeType);
        case kKindUtc:
            return with_zone(parts, utc_zone());
        default:
            return with_zone(parts, offset_zone(value->offset));
    }
}

PyObject* datetime_offset_out(const ManagedDateTime* value) {
    if (!refresh_datetime_api()) return nullptr;
    return with_zone(parts_from_ticks(value->value), offset_zone(value->offset));
}

PyObject* timedelta_out(int64_t ticks) {
    if (!refresh_datetime_api()) return nullptr;
    TimeSpanParts span = delta_from_ticks(ticks);
    return PyDateTimeAPI->Delta_FromDelta(span.days, span.seconds, span.microseconds, 1, PyDateTimeAPI->DeltaType);
}
