// Element readers of the generic callback table that are not one template instance per kind.
#include "module/element_callbacks.h"

#include "interop/array_marshal.h"

int32_t element_lookup_failure() { return PyErr_ExceptionMatches(PyExc_IndexError) ? -2 : -1; }

int32_t list_byte_array(PyObject* list, int32_t index, Py_buffer* view, BufferArg* arg) {
    PyObject* item = PyList_GetItem(list, index);
    if (item == nullptr) return element_lookup_failure();
    return convert_byte_array_element(item, view, arg) == 1 ? 0 : -1;
}

int32_t sequence_byte_array(PyObject* sequence, int32_t index, PyObject** held, Py_buffer* view, BufferArg* arg) {
    PyObject* item = PySequence_GetItem(sequence, index);
    if (item == nullptr) return element_lookup_failure();
    if (convert_byte_array_element(item, view, arg) != 1) {
        Py_DECREF(item);
        return -1;
    }
    *held = item;
    return 0;
}
