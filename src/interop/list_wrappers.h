// _IListWrapper and _ColBaseWrapper: the list surface over SiApiCntList, with the length of SiApiCntCollection.
#pragma once
#include <Python.h>

#include "bridge/class_binding.h"
#include "interop/list_protocol.h"

extern PyTypeObject Interop_IListWrapper_Type;
extern PyTypeObject Interop_ColBaseWrapper_Type;

const TypeInitStatus& Interop_IListWrapper_status();
const TypeInitStatus& Interop_ColBaseWrapper_status();

// Every role of SiApiCntList, the length from SiApiCntCollection. Bound on first use.
const ListEntries& cnt_list_entries();
