#include <pybind11/pybind11.h>

#include "operations.h"
#include "special.h"

PYBIND11_MODULE(_vek, module) {
  vekpy::defineOperations(module);
  vekpy::defineFunctions(module);
  vekpy::defineStates(module);
  vekpy::defineIsp(module);
}
