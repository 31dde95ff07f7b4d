// The list surface: index and slice arithmetic, argument forms and list texts are native; every
// element-wise step, bounds check and mutation is one managed entry of the caller's ListEntries.
#include "interop/list_protocol.h"

#include "interop/arg_checks.h"
#include "interop/concat_to_list.h"

namespace {

InstanceHandle h(PyObject* self) { return handle_of(self); }

// ----- cold texts -----

[[gnu::cold]] PyObject* raise_out_of_range() {
    PyErr_SetString(PyExc_IndexError, "list index out of range");
    return nullptr;
}

[[gnu::cold]] void raise_size_mismatch(Py_ssize_t given, Py_ssize_t slice) {
    PyErr_Format(PyExc_ValueError, "attempt to assign sequence of size %zd to extended slice of size %zd", given,
                 slice);
}

[[gnu::cold]] void raise_bad_key(PyObject* key) {
    PyErr_Format(PyExc_TypeError, "list indices must be integers or slices, not %.200s", Py_TYPE(key)->tp_name);
}

[[gnu::cold]] PyObject* raise_value_error(const char* text) {
    PyErr_SetString(PyExc_ValueError, text);
    return nullptr;
}

[[gnu::cold]] int refuse_removal() {
    PyErr_SetString(PyExc_ValueError, "elements removing not supported");
    return -1;
}

[[gnu::cold]] PyObject* raise_pop(int32_t status) {
    if (status == 1) PyErr_SetString(PyExc_IndexError, "pop from empty list");
    if (status == 2) PyErr_SetString(PyExc_IndexError, "pop index out of range");
    return nullptr;
}

// ----- shared steps -----

PyObject* none_unless_error() {
    if (PyErr_Occurred()) return nullptr;
    Py_RETURN_NONE;
}

// The item behind a status of SqGetItem.
PyObject* item_of(int32_t status, PyObject* item) {
    if (status == 0) return item;
    Py_XDECREF(item);
    return status == 2 ? raise_out_of_range() : nullptr;
}

// Status of SqSetItem or RemoveAt as a slot result.
int store_status(int32_t status) {
    if (status == 0) return 0;
    if (status == 2) raise_out_of_range();
    return -1;
}

int set_at(PyObject* self, Py_ssize_t index, PyObject* value, const ListEntries& e) {
    if (value == nullptr) {
        if (e.remove_at == nullptr) return refuse_removal();
        return store_status(e.remove_at(h(self), static_cast<int32_t>(index)));
    }
    VariantArg v;
    if (!convert_variant(value, &v)) return -1;
    return store_status(e.set_item(h(self), static_cast<int32_t>(index), &v));
}

// Writes one Python value at a position without a bounds check. False with an exception set.
bool put_no_check(PyObject* self, Py_ssize_t at, PyObject* value, const ListEntries& e) {
    VariantArg v;
    if (!convert_variant(value, &v)) return false;
    e.set_item_no_check(h(self), static_cast<int32_t>(at), &v);
    return !PyErr_Occurred();
}

bool add_one(PyObject* self, PyObject* value, const ListEntries& e) {
    VariantArg v;
    if (!convert_variant(value, &v)) return false;
    e.add(h(self), &v);
    return !PyErr_Occurred();
}

// Reads positions 0..n-1 into list[0..n-1]. False with the list untouched past the failure.
bool fill_by_position(PyObject* self, PyObject* list, Py_ssize_t n, const ListEntries& e) {
    for (Py_ssize_t i = 0; i < n; ++i) {
        PyObject* item = e.get_item_no_check(h(self), static_cast<int32_t>(i));
        if (item == nullptr || PyErr_Occurred()) {
            Py_XDECREF(item);
            return false;
        }
        PyList_SET_ITEM(list, i, item);
    }
    return true;
}

PyObject* slice_of(PyObject* self, Py_ssize_t start, Py_ssize_t step, Py_ssize_t count, const ListEntries& e) {
    PyObject* list = PyList_New(count);
    if (list == nullptr || count == 0) return list;
    for (Py_ssize_t k = 0; k < count; ++k) {
        PyObject* item = e.get_item_no_check(h(self), static_cast<int32_t>(start + k * step));
        if (item == nullptr || PyErr_Occurred()) {
            Py_XDECREF(item);
            Py_DECREF(list);
            return nullptr;
        }
        PyList_SET_ITEM(list, k, item);
    }
    return list;
}

int delete_slice(PyObject* self, Py_ssize_t start, Py_ssize_t step, Py_ssize_t count, const ListEntries& e) {
    if (e.remove_items == nullptr) return refuse_removal();
    // Walk from the highest position down, so that no removal moves one still to be removed.
    if (step > 0) {
        start += (count - 1) * step;
        step = -step;
        if (start < 0) start = 0;
    }
    e.remove_items(h(self), static_cast<int32_t>(start), static_cast<int32_t>(count), static_cast<int32_t>(step));
    return PyErr_Occurred() ? -1 : 0;
}

// Slice assignment keeps the length: the value must have exactly `count` items, for every step.
int assign_slice(PyObject* self, Py_ssize_t start, Py_ssize_t step, Py_ssize_t count, PyObject* value,
                 const ListEntries& e) {
    if (PyList_CheckExact(value) || PyTuple_CheckExact(value)) {
        PyObject* fast = PySequence_Fast(value, "must assign iterable to extended slice");
        if (fast == nullptr) return -1;
        const Py_ssize_t size = PySequence_Fast_GET_SIZE(fast);
        int result = 0;
        if (size != count) {
            raise_size_mismatch(size, count);
            result = -1;
        }
        PyObject** items = PySequence_Fast_ITEMS(fast);
        for (Py_ssize_t k = 0; result == 0 && k < count; ++k)
            if (!put_no_check(self, start + k * step, items[k], e)) result = -1;
        Py_DECREF(fast);
        return result;
    }
    PySequenceMethods* sequence = Py_TYPE(value)->tp_as_sequence;
    if (!PySequence_Check(value) || sequence == nullptr || sequence->sq_length == nullptr) {
        PyErr_SetString(PyExc_TypeError, "must assign iterable to extended slice");
        return -1;
    }
    const Py_ssize_t size = PySequence_Size(value);
    if (size < 0) return -1;
    if (size != count) {
        raise_size_mismatch(size, count);
        return -1;
    }
    InstanceArg other{};
    if (e.set_items != nullptr && fill_instance_arg(value, &other)) {
        const int32_t whole = e.set_items(h(self), &other, static_cast<int32_t>(start), static_cast<int32_t>(count),
                                          static_cast<int32_t>(step));
        if (PyErr_Occurred()) return -1;
        if (whole == 1) return 0;
    }
    for (Py_ssize_t k = 0; k < count; ++k) {
        PyObject* item = PySequence_GetItem(value, k);
        if (item == nullptr) return -1;
        const bool stored = put_no_check(self, start + k * step, item, e);
        Py_DECREF(item);
        if (!stored) return -1;
    }
    return 0;
}

bool fill_own(PyObject* self, PyObject* list, Py_ssize_t n, const void* entries) {
    return fill_by_position(self, list, n, *static_cast<const ListEntries*>(entries));
}

bool has_length_slot(PyObject* object) {
    PySequenceMethods* sequence = Py_TYPE(object)->tp_as_sequence;
    return sequence != nullptr && sequence->sq_length != nullptr;
}

}  // namespace

bool fill_instance_arg(PyObject* object, InstanceArg* arg) {
    int32_t kind;
    if (!recognise_by_slot(object, &kind) && !recognise_by_mark(object, &kind)) return false;
    arg->kind = kind;
    arg->handle = handle_of(object);
    return true;
}

// ----- length and membership -----

Py_ssize_t list_length(PyObject* self, const ListEntries& e) {
    const int32_t n = e.length(h(self));
    if (n < 0 && PyErr_Occurred()) return -1;
    return n;
}

PyObject* list_length_attr(PyObject* self, const ListEntries& e) {
    const int32_t n = e.length(h(self));
    if (n < 0 && PyErr_Occurred()) return nullptr;
    return PyLong_FromLong(n);
}

int list_sq_contains(PyObject* self, PyObject* value, const ListEntries& e) {
    VariantArg v;
    if (!convert_variant(value, &v)) return -1;
    const int32_t found = e.contains(h(self), &v);
    if (PyErr_Occurred()) return -1;
    return found != 0;
}

PyObject* list_contains(PyObject* self, PyObject* value, const ListEntries& e) {
    VariantArg v;
    if (!convert_variant(value, &v)) return nullptr;
    const int32_t found = e.contains(h(self), &v);
    if (PyErr_Occurred()) return nullptr;
    return PyBool_FromLong(found);
}

PyObject* list_count(PyObject* self, PyObject* value, const ListEntries& e) {
    VariantArg v;
    if (!convert_variant(value, &v)) return nullptr;
    const int32_t count = e.count_of(h(self), &v);
    if (PyErr_Occurred()) return nullptr;
    return PyLong_FromLong(count);
}

// ----- items and slices -----

PyObject* list_item(PyObject* self, Py_ssize_t index, const ListEntries& e) {
    PyObject* item = nullptr;
    const int32_t status = e.get_item(h(self), static_cast<int32_t>(index), &item);
    return item_of(status, item);
}

int list_ass_item(PyObject* self, Py_ssize_t index, PyObject* value, const ListEntries& e) {
    return set_at(self, index, value, e);
}

PyObject* list_subscript(PyObject* self, PyObject* key, const ListEntries& e) {
    const Py_ssize_t n = list_length(self, e);
    if (n < 0 && PyErr_Occurred()) return nullptr;
    PyNumberMethods* number = Py_TYPE(key)->tp_as_number;
    if (number != nullptr && number->nb_index != nullptr) {
        Py_ssize_t i = PyNumber_AsSsize_t(key, PyExc_IndexError);
        if (i == -1 && PyErr_Occurred()) return nullptr;
        if (i < 0) i += n;
        return list_item(self, i, e);
    }
    if (Py_IS_TYPE(key, &PySlice_Type)) {
        Py_ssize_t start, stop, step;
        if (PySlice_Unpack(key, &start, &stop, &step) < 0) return nullptr;
        const Py_ssize_t count = PySlice_AdjustIndices(n, &start, &stop, step);
        return slice_of(self, start, step, count, e);
    }
    raise_bad_key(key);
    return nullptr;
}

int list_ass_subscript(PyObject* self, PyObject* key, PyObject* value, const ListEntries& e) {
    const Py_ssize_t n = list_length(self, e);
    if (n < 0 && PyErr_Occurred()) return -1;
    PyNumberMethods* number = Py_TYPE(key)->tp_as_number;
    if (number != nullptr && number->nb_index != nullptr) {
        Py_ssize_t i = PyNumber_AsSsize_t(key, PyExc_IndexError);
        if (i == -1 && PyErr_Occurred()) return -1;
        if (i < 0) i += n;
        return set_at(self, i, value, e);
    }
    if (Py_IS_TYPE(key, &PySlice_Type)) {
        Py_ssize_t start, stop, step;
        if (PySlice_Unpack(key, &start, &stop, &step) < 0) return -1;
        const Py_ssize_t count = PySlice_AdjustIndices(n, &start, &stop, step);
        if (value == nullptr) return delete_slice(self, start, step, count, e);
        return assign_slice(self, start, step, count, value, e);
    }
    raise_bad_key(key);
    return -1;
}

// ----- plain list results -----

PyObject* list_concat(PyObject* self, PyObject* other, const ListEntries& e) {
    const Py_ssize_t n = list_length(self, e);
    if (n < 0 && PyErr_Occurred()) return nullptr;
    return concat_to_list(self, n, other, fill_own, &e);
}

PyObject* list_repeat(PyObject* self, Py_ssize_t count, const ListEntries& e) {
    if (count < 0) count = 0;
    const Py_ssize_t n = list_length(self, e);
    if (n < 0 && PyErr_Occurred()) return nullptr;
    if (n > 0 && count > PY_SSIZE_T_MAX / n) return PyErr_NoMemory();
    PyObject* list = PyList_New(count * n);
    if (list == nullptr || count == 0) return list;
    for (Py_ssize_t i = 0; i < n; ++i) {
        PyObject* item = e.get_item_no_check(h(self), static_cast<int32_t>(i));
        if (item == nullptr || PyErr_Occurred()) {
            Py_XDECREF(item);
            Py_DECREF(list);
            return nullptr;
        }
        PyList_SET_ITEM(list, i, item);
        for (Py_ssize_t j = 1; j < count; ++j) PyList_SET_ITEM(list, i + j * n, Py_NewRef(item));
    }
    return list;
}

PyObject* list_copy(PyObject* self, const ListEntries& e) {
    const Py_ssize_t n = list_length(self, e);
    if (n < 0 && PyErr_Occurred()) return nullptr;
    PyObject* list = PyList_New(n);
    if (list == nullptr || fill_by_position(self, list, n, e)) return list;
    Py_DECREF(list);
    return nullptr;
}

// ----- in-place operators -----

PyObject* list_inplace_concat(PyObject* self, PyObject* other, const ListEntries& e) {
    PyObject* done = list_extend(self, other, e);
    if (done == nullptr) return nullptr;
    Py_DECREF(done);
    return Py_NewRef(self);
}

PyObject* list_inplace_repeat(PyObject* self, Py_ssize_t count, const ListEntries& e) {
    e.inplace_repeat(h(self), static_cast<int32_t>(count));
    if (PyErr_Occurred()) return nullptr;
    return Py_NewRef(self);
}

// ----- methods -----

PyObject* list_append(PyObject* self, PyObject* value, const ListEntries& e) {
    VariantArg v;
    if (!convert_variant(value, &v)) return nullptr;
    e.add(h(self), &v);
    return none_unless_error();
}

PyObject* list_insert(PyObject* self, PyObject* args, const ListEntries& e) {
    Py_ssize_t index;
    VariantArg v;
    reset_variant_arg(&v);
    if (!PyArg_ParseTuple(args, "nO&", &index, convert_variant, &v)) return nullptr;
    e.insert(h(self), static_cast<int32_t>(index), &v);
    return none_unless_error();
}

PyObject* list_extend(PyObject* self, PyObject* other, const ListEntries& e) {
    InstanceArg arg{};
    if (fill_instance_arg(other, &arg)) {
        const int32_t whole = e.inplace_concat(h(self), &arg);
        if (PyErr_Occurred()) return nullptr;
        if (whole == 1) Py_RETURN_NONE;
    }
    if (PyList_CheckExact(other) || PyTuple_CheckExact(other)) {
        PyObject* fast = PySequence_Fast(other, "argument must be iterable");
        if (fast == nullptr) return nullptr;
        const Py_ssize_t m = PySequence_Fast_GET_SIZE(fast);
        bool ok = true;
        if (e.ensure_capacity != nullptr) {
            e.ensure_capacity(h(self), static_cast<int32_t>(m));
            ok = !PyErr_Occurred();
        }
        // A conversion may call back into Python and change the list: its size is read at each step.
        for (Py_ssize_t k = 0; ok && k < m && k < PySequence_Fast_GET_SIZE(fast); ++k)
            ok = add_one(self, PySequence_Fast_ITEMS(fast)[k], e);
        Py_DECREF(fast);
        return ok ? none_unless_error() : nullptr;
    }
    if (PySequence_Check(other) && has_length_slot(other)) {
        const Py_ssize_t m = PySequence_Size(other);
        if (m < 0) return nullptr;
        if (e.ensure_capacity != nullptr) {
            e.ensure_capacity(h(self), static_cast<int32_t>(m));
            if (PyErr_Occurred()) return nullptr;
        }
        for (Py_ssize_t k = 0; k < m; ++k) {
            PyObject* item = PySequence_GetItem(other, k);
            if (item == nullptr) return nullptr;
            const bool ok = add_one(self, item, e);
            Py_DECREF(item);
            if (!ok) return nullptr;
        }
        Py_RETURN_NONE;
    }
    if (Py_TYPE(other)->tp_iter == nullptr && !PySequence_Check(other))
        return raise_value_error("argument must be iterable or sequence");
    PyObject* iterator = PyObject_GetIter(other);
    if (iterator == nullptr) return PyErr_Occurred() ? nullptr : raise_value_error("argument must be iterable");
    PyObject* item;
    while ((item = PyIter_Next(iterator)) != nullptr) {
        const bool ok = add_one(self, item, e);
        Py_DECREF(item);
        if (!ok) break;
    }
    Py_DECREF(iterator);
    return none_unless_error();
}

PyObject* list_remove(PyObject* self, PyObject* value, const ListEntries& e) {
    VariantArg v;
    if (!convert_variant(value, &v)) return nullptr;
    const int32_t found = e.remove(h(self), &v);
    if (PyErr_Occurred()) return nullptr;
    if (found == 0) return raise_value_error("list.remove(x): x not in list");
    Py_RETURN_NONE;
}

PyObject* list_pop(PyObject* self, PyObject* args, const ListEntries& e) {
    const Py_ssize_t argc = PyTuple_GET_SIZE(args);
    if (wrong_arg_count(argc, "pop", 0, 1)) return nullptr;
    Py_ssize_t index = 0;
    if (!read_optional_index(args, &index)) return nullptr;
    PyObject* item = nullptr;
    const int32_t status = e.pop(h(self), static_cast<int32_t>(argc), static_cast<int32_t>(index), &item);
    if (status == 0) return item;
    Py_XDECREF(item);
    return raise_pop(status);
}

PyObject* list_clear(PyObject* self, const ListEntries& e) {
    e.clear(h(self));
    return none_unless_error();
}

PyObject* list_index(PyObject* self, PyObject* args, const ListEntries& e) {
    VariantArg v;
    reset_variant_arg(&v);
    Py_ssize_t start = 0;
    Py_ssize_t stop = 0;
    if (!PyArg_ParseTuple(args, "O&|nn", convert_variant, &v, &start, &stop)) return nullptr;
    const Py_ssize_t argc = PyTuple_GET_SIZE(args);
    const int32_t at = e.index_by(h(self), argc >= 2, static_cast<int32_t>(start), argc >= 3,
                                  static_cast<int32_t>(stop), &v);
    if (PyErr_Occurred()) return nullptr;
    if (at < 0) return raise_value_error("value is not in list");
    return PyLong_FromLong(at);
}

PyObject* list_sort(PyObject* self, PyObject* args, PyObject* kwargs, const ListEntries& e) {
    static const char* const keywords[] = {"key", "reverse", nullptr};
    PyObject* key = Py_None;
    int reverse = 0;
    if (!PyArg_ParseTupleAndKeywords(args, kwargs, "|Op", const_cast<char**>(keywords), &key, &reverse))
        return nullptr;
    if (key != Py_None) return raise_value_error("custom sorting key is not supported");
    e.sort(h(self), reverse);
    return none_unless_error();
}

PyObject* list_reverse(PyObject* self, const ListEntries& e) {
    e.reverse(h(self));
    return none_unless_error();
}
