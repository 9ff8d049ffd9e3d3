// Python objects handed to the library where it takes an object: a late-bound object
// whose members are the Python object's attributes. This is how a script implements a
// client interface the library calls back (ISubclass's WindowProc and MsgResponse).
#pragma once

#include "values.h"

namespace tsruntime::python {

// The library object standing for `target`, an instance of a Python class; the same one
// for as long as the library holds it, so that passing the object twice passes one
// object. Its members, found by name in any case when the library invokes them:
//   - a method: called with the arguments converted to Python (its positional parameters,
//     up to 16 more through *args), its result converted back (None gives Empty);
//   - any other attribute: a property to read (get) and assign (let).
// An exception raised by the Python code is kept and raised in Python when the call
// from Python that led to it returns; the library sees Empty.
Ref<Object> LateBoundPythonObject(py::handle target);

// The Python object behind `object` when it stands for one, else null.
PyObject* PythonTargetOf(const Object& object);

// Keeps a Python exception raised inside library code for the Python call in progress
// (see module.cpp).
void HandlerFailed(py::error_already_set error);

}  // namespace tsruntime::python
