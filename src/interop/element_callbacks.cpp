// Reads one element of a Python list or sequence through its kind's converter, for typed managed arrays.
#include "interop/element_callbacks.h"

#include "generated_classes.h"
#include "host/released_calls.h"
#include "marshal/array_marshal.h"
#include "marshal/buffer_marshal.h"
#include "marshal/scalar_marshal.h"
#include "marshal/string_marshal.h"

namespace {

using ArgConverter = int (*)(PyObject*, void*);

// -2 when the failed lookup left an IndexError, else -1.
int32_t lookup_failure() { return PyErr_ExceptionMatches(PyExc_IndexError) ? -2 : -1; }

// List half: the element is borrowed from the list.
template <ArgConverter Convert>
int32_t list_element(PyObject* list, int32_t index, void* out) {
    PyObject* item = PyList_GetItem(list, index);
    if (item == nullptr) return lookup_failure();
    return Convert(item, out) == 1 ? 0 : -1;
}

// Sequence half: the element is handed to the caller in *held, whose output may point into it.
template <ArgConverter Convert>
int32_t sequence_element(PyObject* sequence, int32_t index, PyObject** held, void* out) {
    PyObject* item = PySequence_GetItem(sequence, index);
    if (item == nullptr) return lookup_failure();
    if (Convert(item, out) != 1) {
        Py_DECREF(item);
        return -1;
    }
    *held = item;
    return 0;
}

// Byte arrays have two outputs: the Py_buffer record and its BufferArg.
int32_t list_byte_array(PyObject* list, int32_t index, Py_buffer* view, BufferArg* arg) {
    PyObject* item = PyList_GetItem(list, index);
    if (item == nullptr) return lookup_failure();
    return convert_byte_array_element(item, view, arg) == 1 ? 0 : -1;
}

int32_t sequence_byte_array(PyObject* sequence, int32_t index, PyObject** held, Py_buffer* view, BufferArg* arg) {
    PyObject* item = PySequence_GetItem(sequence, index);
    if (item == nullptr) return lookup_failure();
    if (convert_byte_array_element(item, view, arg) != 1) {
        Py_DECREF(item);
        return -1;
    }
    *held = item;
    return 0;
}


// Per kind, the list reader and the sequence reader.
struct KindReaders {
    void* list;
    void* sequence;
};

template <ArgConverter Convert>
KindReaders readers() {
    return {locked_callback<&list_element<Convert>>(), locked_callback<&sequence_element<Convert>>()};
}

const KindReaders* kind_table() {
    static const KindReaders table[kElementKinds] = {
        {locked_callback<&list_byte_array>(), locked_callback<&sequence_byte_array>()},  // 0 byte array or buffer
        readers<CharacterRange_convert>(),                   // 1 InstanceArg
        readers<Color_convert>(),                            // 2
        readers<ColorMap_convert>(),                         // 3
        readers<EncoderParameter_convert>(),                 // 4
        readers<Point_convert>(),                            // 5
        readers<convert_pointf_element>(),                   // 6 a Point widens
        readers<PaperSize_convert>(),                        // 7
        readers<PaperSource_convert>(),                      // 8
        readers<PrinterResolution_convert>(),                // 9
        readers<Rectangle_convert>(),                        // 10
        readers<convert_rectanglef_element>(),              // 11 a Rectangle widens
        readers<convert_int16>(),                            // 12
        readers<convert_int32>(),                            // 13
        readers<convert_int64>(),                            // 14
        readers<convert_single>(),                           // 15
        readers<Generic_Array_FCB07591_convert>(),           // 16 ArrayArg of Single
        readers<convert_string>(),                           // 17 StringArg
    };
    return table;
}

}  // namespace

void* generic_element_reader(int position) {
    if (position < 0 || position >= kGenericCallbackCount) return nullptr;
    const KindReaders& kind = kind_table()[position % kElementKinds];
    return position < kElementKinds ? kind.list : kind.sequence;
}
