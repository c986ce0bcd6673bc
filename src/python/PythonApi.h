#pragma once

// The one place that includes Python.h. The limited API is what keeps these sources independent of the
// interpreter's version: everything beyond it does not compile.

#define Py_LIMITED_API 0x03080000
#define PY_SSIZE_T_CLEAN
#include <Python.h>
