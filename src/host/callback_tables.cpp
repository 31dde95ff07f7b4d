// Static layout of the callback tables. Rows are filled by the marshalling layer that owns them;
// the null that ends some groups is a terminator the managed side reads, not a missing row. Every
// row takes the interpreter lock back first when its thread gave it up for a released call.
#include "host/callback_tables.h"

#include <Python.h>

#include <cstdint>

#include "bridge/type_registry.h"
#include "host/released_calls.h"
#include "interop/container_callbacks.h"
#include "interop/element_callbacks.h"
#include "interop/stream_callbacks.h"
#include "marshal/buffer_marshal.h"
#include "marshal/datetime_marshal.h"
#include "marshal/decimal_marshal.h"
#include "marshal/guid_marshal.h"
#include "marshal/scalar_marshal.h"
#include "marshal/stream_marshal.h"
#include "marshal/string_marshal.h"

namespace {

// Group references.
void ref_add(PyObject* obj) { Py_XINCREF(obj); }
void ref_drop(PyObject* obj) { Py_XDECREF(obj); }
PyObject* ref_none() { Py_RETURN_NONE; }

// Group values out: scalars.
PyObject* out_bool(uint8_t value) { return PyBool_FromLong(value); }
PyObject* out_int32(int32_t value) { return PyLong_FromLong(value); }
PyObject* out_uint32(uint32_t value) { return PyLong_FromUnsignedLong(value); }
PyObject* out_int64(int64_t value) { return PyLong_FromLongLong(value); }
PyObject* out_uint64(uint64_t value) { return PyLong_FromUnsignedLongLong(value); }
PyObject* out_double(double value) { return PyFloat_FromDouble(value); }
PyObject* out_char(uint16_t unit) {
    char16_t text[1] = {static_cast<char16_t>(unit)};
    int byte_order = -1;
    return PyUnicode_DecodeUTF16(reinterpret_cast<const char*>(text), 2, "", &byte_order);
}

template <typename Fn>
void* fn(Fn f) {
    return reinterpret_cast<void*>(f);
}

void* g_values_in[11] = {locked_callback<expose_string>(),    locked_callback<read_truth>(), locked_callback<read_integer>(), locked_callback<read_float>(),
                         locked_callback<decimal_in>(),    locked_callback<decimal_in_tuple>(), locked_callback<datetime_in>(), locked_callback<date_in>(),
                         locked_callback<time_in>(),       locked_callback<timedelta_in>(), locked_callback<guid_in_quiet>()};
void* g_values_out[13] = {locked_callback<wrap_by_key>(), locked_callback<out_bool>(),   locked_callback<out_int32>(), locked_callback<out_uint32>(), locked_callback<out_int64>(),
                          locked_callback<out_uint64>(), locked_callback<out_double>(), locked_callback<decimal_out>(), locked_callback<datetime_out>(), locked_callback<datetime_offset_out>(),
                          locked_callback<timedelta_out>(), locked_callback<guid_out>(), locked_callback<out_char>()};
void* g_buffers[4] = {locked_callback<buffer_record_size>(), locked_callback<zero_buffer_record>(), locked_callback<acquire_buffer>(), locked_callback<release_buffer_record>()};
void* g_references[4] = {locked_callback<ref_add>(), locked_callback<ref_drop>(), locked_callback<ref_none>(), locked_callback<wrap_by_key_quiet>()};
void* g_iteration[1] = {locked_callback<iteration_next>()};
void* g_containers[12] = {locked_callback<container_list_size>(),     locked_callback<container_list_size>(),    locked_callback<container_list_pop>(),
                          locked_callback<container_list_clear>(),    locked_callback<container_sequence_size>(), locked_callback<container_sequence_size>(),
                          locked_callback<container_iterator>(),      locked_callback<container_object_size>(),  locked_callback<container_new_list32>(),
                          locked_callback<container_new_list64>(),    locked_callback<read_char_string>(),       nullptr};
void* g_lists[12] = {locked_callback<list_get>(),       locked_callback<list_set>(),       locked_callback<list_append>(),        locked_callback<list_insert>(),
                     locked_callback<list_remove>(),    locked_callback<list_contains>(),  locked_callback<list_index>(),         locked_callback<list_store>(),
                     locked_callback<list_wrap_ilist>(), locked_callback<list_wrap_array_list>(), locked_callback<list_wrap_array>(), nullptr};
void* g_sequences[3] = {locked_callback<sequence_get>(), locked_callback<sequence_contains>(), locked_callback<sequence_index>()};
void* g_streams[12] = {locked_callback<stream_write>(),     locked_callback<stream_write_byte>(), locked_callback<stream_read>(),  locked_callback<stream_read_byte>(),
                       locked_callback<stream_seek>(),      locked_callback<stream_flush>(),      locked_callback<stream_close>(), locked_callback<stream_can_read>(),
                       locked_callback<stream_can_write>(), locked_callback<stream_can_seek>(),   locked_callback<stream_tell>(),  locked_callback<stream_length>()};

void* const g_static_groups[9] = {g_values_in, g_values_out, g_buffers,   g_references, g_iteration,
                                  g_containers, g_lists,      g_sequences, g_streams};

void* g_generic_functions[36] = {};
void* g_generic_cells[36] = {};

}  // namespace

void* const* py_static_callbacks() { return g_static_groups; }

void* const* py_generic_callbacks() {
    for (int i = 0; i < 36; ++i) {
        g_generic_functions[i] = generic_element_reader(i);
        g_generic_cells[i] = &g_generic_functions[i];
    }
    return g_generic_cells;
}
