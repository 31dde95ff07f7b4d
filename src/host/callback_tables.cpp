// Static layout of the callback tables. Rows are filled by the marshalling layer that owns them;
// the null that ends some groups is a terminator the managed side reads, not a missing row.
#include "host/callback_tables.h"

#include <Python.h>

#include <cstdint>

#include "bridge/type_registry.h"
#include "interop/container_callbacks.h"
#include "interop/element_callbacks.h"
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

void* g_values_in[11] = {fn(expose_string),    fn(read_truth), fn(read_integer), fn(read_float),
                         fn(decimal_in),    fn(decimal_in_tuple), fn(datetime_in), fn(date_in),
                         fn(time_in),       fn(timedelta_in), fn(guid_in_quiet)};
void* g_values_out[13] = {fn(wrap_by_key), fn(out_bool),   fn(out_int32), fn(out_uint32), fn(out_int64),
                          fn(out_uint64), fn(out_double), fn(decimal_out), fn(datetime_out), fn(datetime_offset_out),
                          fn(timedelta_out), fn(guid_out), fn(out_char)};
void* g_buffers[4] = {fn(buffer_record_size), fn(zero_buffer_record), fn(acquire_buffer), fn(release_buffer_record)};
void* g_references[4] = {fn(ref_add), fn(ref_drop), fn(ref_none), fn(wrap_by_key_quiet)};
void* g_iteration[1] = {fn(iteration_next)};
void* g_containers[12] = {fn(container_list_size),     fn(container_list_size),    fn(container_list_pop),
                          fn(container_list_clear),    fn(container_sequence_size), fn(container_sequence_size),
                          fn(container_iterator),      fn(container_object_size),  fn(container_new_list32),
                          fn(container_new_list64),    fn(read_char_string),       nullptr};
void* g_lists[12] = {fn(list_get),       fn(list_set),       fn(list_append),        fn(list_insert),
                     fn(list_remove),    fn(list_contains),  fn(list_index),         fn(list_store),
                     fn(list_wrap_ilist), fn(list_wrap_array_list), fn(list_wrap_array), nullptr};
void* g_sequences[3] = {fn(sequence_get), fn(sequence_contains), fn(sequence_index)};
void* g_streams[12] = {fn(stream_write),     fn(stream_write_byte), fn(stream_read),  fn(stream_read_byte),
                       fn(stream_seek),      fn(stream_flush),      fn(stream_close), fn(stream_can_read),
                       fn(stream_can_write), fn(stream_can_seek),   fn(stream_tell),  fn(stream_length)};

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
