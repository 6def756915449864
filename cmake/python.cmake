# The system's Python, which the package pybind11-dev belongs to, whatever else is called python3; the Python package and its
# tests are left out where it is not there.
set(STAGEMARKS_PYTHON_DIR lib/python3/dist-packages)
set(PYBIND11_FINDPYTHON ON)
set(Python_EXECUTABLE /usr/bin/python3 CACHE FILEPATH "The Python that the package is built for")
find_package(Python 3.9 QUIET COMPONENTS Interpreter Development)
find_package(pybind11 2.10 QUIET)
if(STAGEMARKS_SANITIZE)
  # An interpreter that was built without them cannot load what has sanitizers in it.
  set(STAGEMARKS_PYTHON OFF)
elseif(pybind11_FOUND AND Python_FOUND)
  set(STAGEMARKS_PYTHON ON)
else()
  set(STAGEMARKS_PYTHON OFF)
  message(STATUS "The Python package is left out: pybind11-dev and python3-dev are needed for it.")
endif()
