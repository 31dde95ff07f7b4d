// Entry point of the extension module orvane.pyfigura.
#pragma once
#include <Python.h>

PyMODINIT_FUNC PyInit_pyfigura();
