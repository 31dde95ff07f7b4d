// Callbacks through which exceptions cross between managed code and Python.
#pragma once

#define PY_SSIZE_T_CLEAN
#include <Python.h>

#include <cstdint>

#include "marshal/string_marshal.h"

// Raises RuntimeError "Proxy error(<type>): <message>". Both references are stolen; a null prints
// as "<unknown>". Called by managed code after it caught one of its own exceptions.
void raise_proxy_error(PyObject* type_name, PyObject* message);

// Takes the pending Python exception away and delivers its formatted text: a new str reference in
// *text_out and a view of it in *view_out. 0 when both are filled, else -1; with nothing pending,
// -1 and the outputs are untouched. Always returns with no exception pending.
int32_t catch_and_clear_error(PyObject** text_out, StringArg* view_out);

// Fallback formatter from the type's __qualname__, str(value) and the traceback. The triple is
// borrowed; any of value and traceback may be null. True on success.
bool format_pending_exception(PyObject* type, PyObject* value, PyObject* traceback, PyObject** text_out);
