// The array protocol over a managed array table, with element conversions told by an element family:
// the typed arrays and iterators of _wrpgen._generic are instantiations of these templates.
#pragma once
#ifndef PY_SSIZE_T_CLEAN
#define PY_SSIZE_T_CLEAN
#endif
#include <Python.h>

#include <cstdint>

#include "bridge/class_binding.h"
#include "bridge/wrapper_object.h"
#include "interop/concat_to_list.h"
#include "interop/wrapper_type_shape.h"
#include "marshal/buffer_marshal.h"
#include "marshal/guid_marshal.h"

// Positions in every array table (the typed ones and SiApiArray share the first eleven).
enum ArrayEntry : int {
    kArraySqLength,
    kArraySqContains,
    kArraySqGetItem,
    kArraySqGetItemNoCheck,
    kArraySqSetItem,
    kArraySqSetItemNoChek,
    kArrayMpSetItems,
    kArrayReverse,
    kArraySort,
    kArrayIndexBy,
    kArrayCountOf,
};

// --- cold paths and shared steps (generic_arrays.cpp) ----------------------------------------------------

int raise_removing_refused();                                        // ValueError; -1
PyObject* raise_index_out_of_range();                                // IndexError "list index out of range"
int raise_index_out_of_range_status();                               // the same; -1
PyObject* raise_bad_key(PyObject* key);                              // TypeError on the key's type
int raise_bad_key_status(PyObject* key);                             // the same; -1
int raise_slice_size(Py_ssize_t given, Py_ssize_t slice);            // ValueError with both sizes; -1
int raise_slice_not_iterable();                                      // TypeError; -1
PyObject* raise_value_not_in_list();                                 // ValueError; null
PyObject* raise_sorting_key();                                       // ValueError; null
int32_t index_to_wire(Py_ssize_t index);                             // beyond 32 bits: a position that misses
bool key_is_index(PyObject* key);                                    // the key's type has nb_index
// A wrapper (by its slots or its host mark) filled into `arg`; false for any other object.
bool instance_arg_of(PyObject* object, InstanceArg* arg);

using ArgConverter = int (*)(PyObject*, void*);
struct GuidValue;

// --- element families -----------------------------------------------------------------------------------
// Each tells: In, the record a Python value is converted to (passed by pointer); Out, the record an element
// comes back in; from_python and to_python; drop, for an Out that owns a reference; kNoCheckReturns, whether
// SqGetItemNoCheck returns the element instead of filling an Out.

template <typename Record, ArgConverter Convert, PyObject* (*Wrap)(const void*)>
struct ValueElement {
    using In = Record;
    using Out = Record;
    static constexpr bool kNoCheckReturns = false;
    static int from_python(PyObject* object, In* in) { return Convert(object, in); }
    static PyObject* to_python(const Out& out) { return Wrap(&out); }
    static void drop(Out&) {}
};

template <typename Record, ArgConverter Convert, PyObject* (*Make)(const Record&)>
struct ScalarElement {
    using In = Record;
    using Out = Record;
    static constexpr bool kNoCheckReturns = false;
    static int from_python(PyObject* object, In* in) { return Convert(object, in); }
    static PyObject* to_python(const Out& out) { return Make(out); }
    static void drop(Out&) {}
};

template <ArgConverter Convert, PyObject* (*Wrap)(InstanceHandle)>
struct ClassElement {
    using In = InstanceHandle;
    using Out = InstanceHandle;
    static constexpr bool kNoCheckReturns = true;
    static int from_python(PyObject* object, In* in) { return Convert(object, in); }
    static PyObject* to_python(const Out& out) { return Wrap(out); }
    static void drop(Out&) {}
};

// Elements that come back as Python objects made by managed code: the reference is handed on.
struct ObjectOut {
    using Out = PyObject*;
    static PyObject* to_python(Out out) { return out; }
    static void drop(Out& out) { Py_CLEAR(out); }
};

// byte[] elements: a leased buffer in, a bytes object (or None) out.
struct BytesElement : ObjectOut {
    using In = BufferArg;
    static constexpr bool kNoCheckReturns = false;
};

PyObject* long_from_int32(const int32_t& value);
PyObject* float_from_single(const float& value);
PyObject* uuid_from_guid(const GuidValue& value);

// The converted form of one Python value, kept for the length of one managed call.
template <typename E>
struct ElementArg {
    typename E::In value{};
    int convert(PyObject* object) { return E::from_python(object, &value); }
    typename E::In* get() { return &value; }
};

template <>
struct ElementArg<BytesElement> {
    BufferLeaseGuard lease;
    int convert(PyObject* object) { return convert_byte_array(object, lease.lease()); }
    BufferArg* get() { return lease.arg(); }
};

// --- the protocol ---------------------------------------------------------------------------------------
// B, the binding of one instantiation, gives: Element; array_entries() (the table's slots); enumerable_entry()
// and enumerator_entry(); array_status() and iter_status(); array_type() and iter_type().

template <typename B>
struct TypedArray {
    using E = typename B::Element;
    using In = typename E::In;
    using Out = typename E::Out;
    using Arg = ElementArg<E>;

    static void* entry(int position) { return B::array_entries()[position]; }

    static int convert_arg(PyObject* object, void* arg) { return static_cast<Arg*>(arg)->convert(object); }

    static int32_t raw_length(PyObject* self) {
        return reinterpret_cast<int32_t (*)(InstanceHandle)>(entry(kArraySqLength))(handle_of(self));
    }

    static Py_ssize_t sq_length(PyObject* self) {
        int32_t n = raw_length(self);
        if (n < 0 && PyErr_Occurred()) return -1;
        return n;
    }

    static PyObject* length_get(PyObject* self, void*) {
        int32_t n = raw_length(self);
        if (n < 0 && PyErr_Occurred()) return nullptr;
        return PyLong_FromLong(n);
    }

    // One element by position, without a bounds test: a new reference or null.
    static PyObject* read_no_check(InstanceHandle handle, int32_t index) {
        Out out{};
        if constexpr (E::kNoCheckReturns) {
            out = reinterpret_cast<Out (*)(InstanceHandle, int32_t)>(entry(kArraySqGetItemNoCheck))(handle, index);
        } else {
            reinterpret_cast<void (*)(InstanceHandle, int32_t, Out*)>(entry(kArraySqGetItemNoCheck))(handle, index, &out);
        }
        if (PyErr_Occurred()) {
            E::drop(out);
            return nullptr;
        }
        return E::to_python(out);
    }

    static PyObject* item_at(PyObject* self, int32_t index) {
        Out out{};
        int32_t status = reinterpret_cast<int32_t (*)(InstanceHandle, int32_t, Out*)>(entry(kArraySqGetItem))(
            handle_of(self), index, &out);
        if (PyErr_Occurred() || status != 0) {
            E::drop(out);
            if (status == 2 && !PyErr_Occurred()) return raise_index_out_of_range();
            return nullptr;
        }
        return E::to_python(out);
    }

    static PyObject* sq_item(PyObject* self, Py_ssize_t index) { return item_at(self, index_to_wire(index)); }

    static int set_at(PyObject* self, int32_t index, PyObject* value) {
        Arg arg;
        if (!arg.convert(value)) return -1;
        int32_t status = reinterpret_cast<int32_t (*)(InstanceHandle, int32_t, In*)>(entry(kArraySqSetItem))(
            handle_of(self), index, arg.get());
        if (PyErr_Occurred()) return -1;
        if (status == 2) return raise_index_out_of_range_status();
        return status == 0 ? 0 : -1;
    }

    static int sq_ass_item(PyObject* self, Py_ssize_t index, PyObject* value) {
        if (value == nullptr) return raise_removing_refused();
        return set_at(self, index_to_wire(index), value);
    }

    static int sq_contains(PyObject* self, PyObject* value) {
        Arg arg;
        if (!arg.convert(value)) return -1;
        int32_t found = reinterpret_cast<int32_t (*)(InstanceHandle, In*)>(entry(kArraySqContains))(
            handle_of(self), arg.get());
        if (PyErr_Occurred()) return -1;
        return found != 0;
    }

    // Fills `list` from position `at` with the array's first n elements.
    static bool fill_own(PyObject* self, PyObject* list, Py_ssize_t n) {
        InstanceHandle handle = handle_of(self);
        for (Py_ssize_t i = 0; i < n; ++i) {
            PyObject* item = read_no_check(handle, static_cast<int32_t>(i));
            if (item == nullptr) return false;
            PyList_SET_ITEM(list, i, item);
        }
        return true;
    }

    static PyObject* own_list(PyObject* self, Py_ssize_t n, Py_ssize_t extra) {
        PyObject* list = PyList_New(n + extra);
        if (list == nullptr) return nullptr;
        if (!fill_own(self, list, n)) {
            Py_DECREF(list);
            return nullptr;
        }
        return list;
    }

    static bool fill_head(PyObject* self, PyObject* list, Py_ssize_t n, const void*) { return fill_own(self, list, n); }

    static PyObject* sq_concat(PyObject* self, PyObject* other) {
        Py_ssize_t n = sq_length(self);
        if (n < 0) return nullptr;
        return concat_to_list(self, n, other, fill_head, nullptr);
    }

    static PyObject* sq_repeat(PyObject* self, Py_ssize_t count) {
        if (count < 0) count = 0;
        Py_ssize_t n = sq_length(self);
        if (n < 0) return nullptr;
        if (n > 0 && count > PY_SSIZE_T_MAX / n) return PyErr_NoMemory();
        PyObject* result = PyList_New(n * count);
        if (result == nullptr || count == 0) return result;
        InstanceHandle handle = handle_of(self);
        for (Py_ssize_t i = 0; i < n; ++i) {
            PyObject* item = read_no_check(handle, static_cast<int32_t>(i));
            if (item == nullptr) {
                Py_DECREF(result);
                return nullptr;
            }
            PyList_SET_ITEM(result, i, item);
            for (Py_ssize_t r = 1; r < count; ++r) PyList_SET_ITEM(result, i + r * n, Py_NewRef(item));
        }
        return result;
    }

    static PyObject* mp_subscript(PyObject* self, PyObject* key) {
        Py_ssize_t n = sq_length(self);
        if (n < 0) return nullptr;
        if (key_is_index(key)) {
            Py_ssize_t i = PyNumber_AsSsize_t(key, PyExc_IndexError);
            if (i == -1 && PyErr_Occurred()) return nullptr;
            if (i < 0) i += n;
            return item_at(self, index_to_wire(i));
        }
        if (!PySlice_Check(key)) return raise_bad_key(key);
        Py_ssize_t start, stop, step;
        if (PySlice_Unpack(key, &start, &stop, &step) < 0) return nullptr;
        Py_ssize_t m = PySlice_AdjustIndices(n, &start, &stop, step);
        PyObject* result = PyList_New(m > 0 ? m : 0);
        if (result == nullptr) return nullptr;
        InstanceHandle handle = handle_of(self);
        for (Py_ssize_t k = 0; k < m; ++k) {
            PyObject* item = read_no_check(handle, static_cast<int32_t>(start + k * step));
            if (item == nullptr) {
                Py_DECREF(result);
                return nullptr;
            }
            PyList_SET_ITEM(result, k, item);
        }
        return result;
    }

    static bool set_no_check(InstanceHandle handle, Py_ssize_t position, PyObject* value) {
        Arg arg;
        if (!arg.convert(value)) return false;
        reinterpret_cast<void (*)(InstanceHandle, int32_t, In*)>(entry(kArraySqSetItemNoChek))(
            handle, static_cast<int32_t>(position), arg.get());
        return !PyErr_Occurred();
    }

    static int assign_slice(PyObject* self, Py_ssize_t start, Py_ssize_t step, Py_ssize_t m, PyObject* value) {
        InstanceHandle handle = handle_of(self);
        if (PyList_CheckExact(value) || PyTuple_CheckExact(value)) {
            PyObject* fast = PySequence_Fast(value, "must assign iterable to extended slice");
            if (fast == nullptr) return -1;
            Py_ssize_t size = PySequence_Fast_GET_SIZE(fast);
            int status = 0;
            if (size != m) {
                status = raise_slice_size(size, m);
            } else {
                PyObject** items = PySequence_Fast_ITEMS(fast);
                for (Py_ssize_t k = 0; k < m && status == 0; ++k)
                    if (!set_no_check(handle, start + k * step, items[k])) status = -1;
            }
            Py_DECREF(fast);
            return status;
        }
        PySequenceMethods* seq = Py_TYPE(value)->tp_as_sequence;
        if (!PySequence_Check(value) || seq->sq_length == nullptr) return raise_slice_not_iterable();
        Py_ssize_t size = PySequence_Size(value);
        if (size < 0) return -1;
        if (size != m) return raise_slice_size(size, m);
        InstanceArg other{};
        if (instance_arg_of(value, &other)) {
            int32_t taken = reinterpret_cast<int32_t (*)(InstanceHandle, InstanceArg*, int32_t, int32_t, int32_t)>(
                entry(kArrayMpSetItems))(handle, &other, static_cast<int32_t>(start), static_cast<int32_t>(m),
                                         static_cast<int32_t>(step));
            if (PyErr_Occurred()) return -1;
            if (taken == 1) return 0;
        }
        for (Py_ssize_t k = 0; k < m; ++k) {
            PyObject* item = PySequence_GetItem(value, k);
            if (item == nullptr) return -1;
            bool done = set_no_check(handle, start + k * step, item);
            Py_DECREF(item);
            if (!done) return -1;
        }
        return 0;
    }

    static int mp_ass_subscript(PyObject* self, PyObject* key, PyObject* value) {
        Py_ssize_t n = sq_length(self);
        if (n < 0) return -1;
        if (key_is_index(key)) {
            Py_ssize_t i = PyNumber_AsSsize_t(key, PyExc_IndexError);
            if (i == -1 && PyErr_Occurred()) return -1;
            if (i < 0) i += n;
            if (value == nullptr) return raise_removing_refused();
            return set_at(self, index_to_wire(i), value);
        }
        if (!PySlice_Check(key)) return raise_bad_key_status(key);
        Py_ssize_t start, stop, step;
        if (PySlice_Unpack(key, &start, &stop, &step) < 0) return -1;
        Py_ssize_t m = PySlice_AdjustIndices(n, &start, &stop, step);
        if (value == nullptr) return raise_removing_refused();
        return assign_slice(self, start, step, m, value);
    }

    static PyObject* tp_iter(PyObject* self) {
        InstanceHandle enumerator = 0;
        int32_t status = reinterpret_cast<int32_t (*)(InstanceHandle, InstanceHandle*)>(B::enumerable_entry())(
            handle_of(self), &enumerator);
        if (status < 0 || PyErr_Occurred()) return nullptr;
        return wrap_class_handle(enumerator, B::iter_type());
    }

    static PyObject* tp_richcompare(PyObject* self, PyObject* other, int op) {
        if (PyObject_IsInstance(other, reinterpret_cast<PyObject*>(B::array_type())) <= 0) Py_RETURN_NOTIMPLEMENTED;
        return class_compare(handle_of(self), handle_of(other), op);
    }

    static PyObject* tp_new(PyTypeObject* type, PyObject* args, PyObject* kwargs) {
        return gated_new(type, B::array_status(), args, kwargs);
    }

    // --- methods ---

    static PyObject* index(PyObject* self, PyObject* args) {
        Arg arg;
        Py_ssize_t start = 0, stop = 0;
        if (!PyArg_ParseTuple(args, "O&|nn", convert_arg, &arg, &start, &stop)) return nullptr;
        Py_ssize_t given = PyTuple_GET_SIZE(args);
        int32_t found = reinterpret_cast<int32_t (*)(InstanceHandle, int32_t, int32_t, int32_t, int32_t, In*)>(
            entry(kArrayIndexBy))(handle_of(self), given >= 2, index_to_wire(start), given >= 3, index_to_wire(stop),
                                  arg.get());
        if (PyErr_Occurred()) return nullptr;
        if (found < 0) return raise_value_not_in_list();
        return PyLong_FromLong(found);
    }

    static PyObject* count(PyObject* self, PyObject* value) {
        Arg arg;
        if (!arg.convert(value)) return nullptr;
        int32_t n = reinterpret_cast<int32_t (*)(InstanceHandle, In*)>(entry(kArrayCountOf))(handle_of(self), arg.get());
        if (PyErr_Occurred()) return nullptr;
        return PyLong_FromLong(n);
    }

    static PyObject* sort(PyObject* self, PyObject* args, PyObject* kwargs) {
        static const char* const keywords[] = {"key", "reverse", nullptr};
        PyObject* key = Py_None;
        int reverse = 0;
        if (!PyArg_ParseTupleAndKeywords(args, kwargs, "|Op", const_cast<char**>(keywords), &key, &reverse))
            return nullptr;
        if (key != Py_None) return raise_sorting_key();
        reinterpret_cast<void (*)(InstanceHandle, int32_t)>(entry(kArraySort))(handle_of(self), reverse);
        if (PyErr_Occurred()) return nullptr;
        Py_RETURN_NONE;
    }

    static PyObject* reverse(PyObject* self, PyObject*) {
        reinterpret_cast<void (*)(InstanceHandle)>(entry(kArrayReverse))(handle_of(self));
        if (PyErr_Occurred()) return nullptr;
        Py_RETURN_NONE;
    }

    static PyObject* copy(PyObject* self, PyObject*) {
        Py_ssize_t n = sq_length(self);
        if (n < 0) return nullptr;
        return own_list(self, n, 0);
    }

    static PyObject* contains(PyObject* self, PyObject* value) {
        int found = sq_contains(self, value);
        if (found < 0) return nullptr;
        return PyBool_FromLong(found);
    }

    static inline PySequenceMethods sequence_methods = {
        sq_length, sq_concat, sq_repeat, sq_item, nullptr, sq_ass_item, nullptr, sq_contains, nullptr, nullptr};
    static inline PyMappingMethods mapping_methods = {sq_length, mp_subscript, mp_ass_subscript};
    static inline PyMethodDef methods[] = {
        {"index", reinterpret_cast<PyCFunction>(index), METH_VARARGS, nullptr},
        {"count", reinterpret_cast<PyCFunction>(count), METH_O, nullptr},
        {"sort", reinterpret_cast<PyCFunction>(reinterpret_cast<void (*)()>(sort)), METH_VARARGS | METH_KEYWORDS,
         nullptr},
        {"reverse", reinterpret_cast<PyCFunction>(reverse), METH_NOARGS, nullptr},
        {"copy", reinterpret_cast<PyCFunction>(copy), METH_NOARGS, nullptr},
        {"contains", reinterpret_cast<PyCFunction>(contains), METH_O, nullptr},
        {nullptr, nullptr, 0, nullptr}};
    static inline PyGetSetDef getset[] = {{"length", length_get, nullptr, nullptr, nullptr},
                                          {nullptr, nullptr, nullptr, nullptr, nullptr}};
};

template <typename B>
struct TypedIterator {
    using E = typename B::Element;
    using Out = typename E::Out;

    static PyObject* tp_iternext(PyObject* self) {
        Out out{};
        uint32_t status = reinterpret_cast<uint32_t (*)(InstanceHandle, Out*)>(B::enumerator_entry())(
            handle_of(self), &out);
        if (PyErr_Occurred() || status > 1) {
            E::drop(out);
            return nullptr;
        }
        if (status == 1) {
            PyErr_SetNone(PyExc_StopIteration);
            return nullptr;
        }
        return E::to_python(out);
    }

    static PyObject* tp_richcompare(PyObject* self, PyObject* other, int op) {
        if (PyObject_IsInstance(other, reinterpret_cast<PyObject*>(B::iter_type())) <= 0) Py_RETURN_NOTIMPLEMENTED;
        return class_compare(handle_of(self), handle_of(other), op);
    }

    static PyObject* tp_new(PyTypeObject* type, PyObject* args, PyObject* kwargs) {
        return gated_new(type, B::iter_status(), args, kwargs);
    }

    static inline PyMethodDef methods[] = {WRAPPER_CONTEXT_METHODS, {nullptr, nullptr, 0, nullptr}};
};

template <typename B>
PyTypeObject typed_array_type(const char* name) {
    using A = TypedArray<B>;
    PyTypeObject t = wrapper_type_shape(name);
    t.tp_as_sequence = &A::sequence_methods;
    t.tp_as_mapping = &A::mapping_methods;
    t.tp_richcompare = A::tp_richcompare;
    t.tp_iter = A::tp_iter;
    t.tp_methods = A::methods;
    t.tp_getset = A::getset;
    t.tp_new = A::tp_new;
    return t;
}

template <typename B>
PyTypeObject typed_iter_type(const char* name) {
    using I = TypedIterator<B>;
    PyTypeObject t = wrapper_type_shape(name);
    t.tp_richcompare = I::tp_richcompare;
    t.tp_iter = PyObject_SelfIter;
    t.tp_iternext = I::tp_iternext;
    t.tp_methods = I::methods;
    t.tp_new = I::tp_new;
    return t;
}
