// Contents of _wrpgen._interop and _wrpgen._generic, and the descriptor types of the root, in their orders.
#include "bridge/descriptors.h"
#include "interop/interop_types.h"
#include "common/module_contents.h"

namespace {

PyTypeObject* const kIterable[] = {&Interop_IterableWrapper_Type};
PyTypeObject* const kIterableCol[] = {&Interop_IterableWrapper_Type, &Interop_IColWrapper_Type};
PyTypeObject* const kIterableColList[] = {&Interop_IterableWrapper_Type, &Interop_IColWrapper_Type,
                                          &Interop_IListWrapper_Type};
PyTypeObject* const kDisposable[] = {&Interop_IDisposableWrapper_Type};

const InteropRegistration kInteropTypes[] = {
    {&Interop_IDisposableWrapper_Type, "_IDisposableWrapper", {nullptr, 0}, true},
    {&Interop_IterWrapper_Type, "_IterWrapper", {nullptr, 0}, true},
    {&Interop_IterableWrapper_Type, "_IterableWrapper", {nullptr, 0}, true},
    {&Interop_IColWrapper_Type, "_IColWrapper", {kIterable, 1}, true},
    {&Interop_IListWrapper_Type, "_IListWrapper", {kIterableCol, 2}, true},
    {&Interop_RoColBaseWrapper_Type, "_RoColBaseWrapper", {kIterableCol, 2}, true},
    {&Interop_ColBaseWrapper_Type, "_ColBaseWrapper", {kIterableColList, 3}, true},
    {&Interop_ArrayWrapper_Type, "_ArrayWrapper", {kIterableColList, 3}, true},
    {&Interop_ArrListWrapper_Type, "_ArrListWrapper", {kIterableColList, 3}, true},
    {&Interop_ShlBufferView_Type, "_ShlBufferView", {nullptr, 0}, false},
    {&Interop_StreamWrapper_Type, "_StreamWrapper", {kDisposable, 1}, true},
};

}  // namespace

const InteropContents kInteropContents = {kInteropTypes, sizeof kInteropTypes / sizeof kInteropTypes[0]};

PyTypeObject* const kRootDescriptorTypes[] = {&FieldDescrType, &MixMethodDescrType, nullptr};
const char* const kRootDescriptorNames[] = {"_FieldDescrType", "_MixMethodDescrType", nullptr};
