// Functions on images as the table of tools/operations.py has them.
#pragma once
#include <pybind11/pybind11.h>

namespace vekpy {

/// Adds all of them to the module.
void defineOperations(const pybind11::module_& module);

}  // namespace vekpy
