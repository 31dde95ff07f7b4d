// Values of managed type `object`: classified natively, read by the managed side according to the code.
#pragma once
#include <Python.h>

#include <cstdint>
#include "generated_wire_records.h"

enum VariantCode : int32_t {
    kVariantNone = 0,
    kVariantClass = 1,
    kVariantStruct = 2,
    kVariantString = 3,
    kVariantBytes = 4,
    kVariantBool = 5,
    kVariantInt = 6,
    kVariantFloat = 7,
    kVariantDecimal = 8,
    kVariantDecimalTuple = 9,
    kVariantDateTime = 10,
    kVariantDate = 11,
    kVariantTime = 12,
    kVariantTimeDelta = 13,
    kVariantUuid = 14,
    kVariantList = 15,
    kVariantTuple = 16,
};

inline void reset_variant_arg(VariantArg* arg) {
    arg->code = 0;
    arg->padding = 0;
    arg->value = 0;
}

// ArgConverter: classifies any Python object; 0 with TypeError "unknown variant type" for the rest.
int convert_variant(PyObject* object, void* out);
