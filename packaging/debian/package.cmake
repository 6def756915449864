# The Debian package: `cpack -G DEB` in the build folder.
set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME stagemarks)
set(CPACK_PACKAGE_VERSION ${PROJECT_VERSION})
set(CPACK_PACKAGE_CONTACT "Stagemarks maintainers <maintainers@stagemarks.invalid>")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "record, recall and export the states of a 3D scene")
set(CPACK_PACKAGE_DESCRIPTION
"Stagemarks records the state of a 3D scene under a name - render settings,
the switches of every object, chosen tags, camera and layers - and brings
any state back in one undo step. Many recorded states can be changed at once,
and each can be exported as a scene file of its own with its textures.

This package contains the plug-in with its manual, the command line
stagemarks, the desktop stagemarks-desktop, the viewer of its web pages, and
sample scenes.")
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_STRIP_FILES ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_RELEASE 1)
set(CPACK_DEBIAN_PACKAGE_SECTION graphics)
set(CPACK_DEBIAN_PACKAGE_PRIORITY optional)
set(CPACK_DEBIAN_COMPRESSION_TYPE xz)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
# The engine's library is found beside the programs, not by the system.
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS ${CMAKE_LIBRARY_OUTPUT_DIRECTORY})
set(CPACK_DEBIAN_PACKAGE_DEPENDS "fonts-dejavu-core")
set(CPACK_DEBIAN_PACKAGE_RECOMMENDS "fonts-droid-fallback, evince | pdf-viewer, xdg-utils, bash-completion")
if(STAGEMARKS_DESKTOP)
  set(CPACK_DEBIAN_PACKAGE_SUGGESTS "qt6-wayland")
endif()
# What Python has is a package of its own: who does not write scripts needs no Python.
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_COMPONENTS_GROUPING IGNORE)
set(CPACK_COMPONENTS_ALL Unspecified)
set(CPACK_DEBIAN_UNSPECIFIED_PACKAGE_NAME stagemarks)
set(CPACK_DEBIAN_UNSPECIFIED_FILE_NAME DEB-DEFAULT)
if(STAGEMARKS_PYTHON)
  list(APPEND CPACK_COMPONENTS_ALL python)
  math(EXPR next_python "${Python_VERSION_MINOR} + 1")
  set(CPACK_DEBIAN_PYTHON_PACKAGE_NAME python3-stagemarks)
  set(CPACK_DEBIAN_PYTHON_FILE_NAME DEB-DEFAULT)
  set(CPACK_DEBIAN_PYTHON_PACKAGE_SECTION python)
  set(CPACK_DEBIAN_PYTHON_PACKAGE_DEPENDS "stagemarks (= ${PROJECT_VERSION}-1), python3 (>= 3.${Python_VERSION_MINOR}), python3 (<< 3.${next_python})")
  set(CPACK_DEBIAN_PYTHON_PACKAGE_RECOMMENDS "")
  set(CPACK_DEBIAN_PYTHON_PACKAGE_SUGGESTS "python3-numpy")
  set(CPACK_COMPONENT_PYTHON_DESCRIPTION
"record, recall and export the states of a 3D scene (Python)
Stagemarks records the state of a 3D scene under a name and brings it back.

This package contains the Python module stagemarks, and what the desktop
needs for its scripts and its console.")
  set(CPACK_DEBIAN_UNSPECIFIED_PACKAGE_SUGGESTS "python3-stagemarks")
endif()
include(CPack)
