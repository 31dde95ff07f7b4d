// The Stream converter: null, a managed stream's handle, or a Python file object lent for the call.
#include "interop/stream_marshal.h"

#include "bridge/wrapper_object.h"
#include "interop/stream_wrapper.h"
#include "common/dependency_import.h"
#include "common/interned_names.h"

namespace {

int refuse_stream(PyObject* object) {
    PyErr_Format(PyExc_TypeError, "can't build Stream from '%s'", Py_TYPE(object)->tp_name);
    return 0;
}

// 1 instance, 0 not, -1 failed (the import or the test). The class is fetched anew on each use.
int is_instance_of(PyObject* object, const char* module, InternedName class_name) {
    PyObject* cls = import_attribute(module, interned(class_name));
    if (cls == nullptr) return -1;
    int answer = PyObject_IsInstance(object, cls);
    Py_DECREF(cls);
    return answer;
}

}  // namespace

int convert_stream(PyObject* object, void* out) {
    StreamArg* arg = static_cast<StreamArg*>(out);
    if (object == Py_None) {
        arg->kind = kStreamHandle;
        arg->value = 0;
        return 1;
    }
    PyTypeObject* type = Py_TYPE(object);
    if (type == &Interop_StreamWrapper_Type || PyType_IsSubtype(type, &Interop_StreamWrapper_Type)) {
        arg->kind = kStreamHandle;
        arg->value = handle_of(object);
        return 1;
    }
    if (is_wrapper(object)) {
        IsAssignableByHandle assignable = stream_is_assignable();
        if (assignable == nullptr) return refuse_stream(object);
        uint8_t answer = assignable(handle_of(object));
        if (PyErr_Occurred()) return 0;
        if (answer == 0) return refuse_stream(object);
        arg->kind = kStreamHandle;
        arg->value = handle_of(object);
        return 1;
    }
    const struct {
        const char* module;
        InternedName name;
    } file_classes[] = {{"io", InternedName::RawIOBase},
                        {"io", InternedName::BufferedIOBase},
                        {"orvane.pyio", InternedName::BufferStream}};
    for (const auto& c : file_classes) {
        int answer = is_instance_of(object, c.module, c.name);
        if (answer < 0) return 0;
        if (answer == 1) {
            arg->kind = kStreamPythonFile;
            arg->value = reinterpret_cast<uint64_t>(object);
            return 1;
        }
    }
    return refuse_stream(object);
}
