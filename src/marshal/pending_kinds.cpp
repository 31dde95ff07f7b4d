// Refusing converters for the kinds not bound yet.
#include "marshal/pending_kinds.h"

namespace {

int refuse(const char* kind, PyObject* object) {
    PyErr_Format(PyExc_TypeError, "%s parameters are not supported yet (got '%s')", kind, Py_TYPE(object)->tp_name);
    return 0;
}

}  // namespace

int convert_pending_value(PyObject* object, void*) { return refuse("value-type", object); }
