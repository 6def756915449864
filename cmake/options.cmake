# Options of the build and the one interface target that carries warnings and sanitizers.
set(CMAKE_CXX_STANDARD 20)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_EXPORT_COMPILE_COMMANDS ON)
set(CMAKE_POSITION_INDEPENDENT_CODE ON)
include(CheckPIESupported)
check_pie_supported(LANGUAGES CXX)
if(NOT CMAKE_BUILD_TYPE)
  set(CMAKE_BUILD_TYPE Release)
endif()

option(STAGEMARKS_TESTS "Build the tests" ON)
option(STAGEMARKS_TESTS_WITH_PROGRAMS "Build the programs and the plug-in with each test program" ON)
option(STAGEMARKS_BENCH "Build the benchmarks" OFF)
option(STAGEMARKS_DESKTOP "Build the desktop program" ON)
option(STAGEMARKS_NODE "Fetch packages of Node, for web pages and some tests" ON)
option(STAGEMARKS_WERROR "Treat warnings as errors" OFF)
option(STAGEMARKS_UNITY "Compile several files of a folder at a time" ON)
set(STAGEMARKS_ALONE "" CACHE STRING "Targets each file of which is compiled alone all the same")
set(STAGEMARKS_SANITIZE "" CACHE STRING "Sanitizers, as -fsanitize= takes them")

# Everything of a build lies as it will lie when installed: bin, the engine's library in the folder for libraries, plug-ins in
# plugins/Stagemarks beside it, sample scenes in share/stagemarks. The programs find their parts from where they lie.
if(CMAKE_LIBRARY_ARCHITECTURE)
  set(CMAKE_INSTALL_LIBDIR lib/${CMAKE_LIBRARY_ARCHITECTURE} CACHE PATH "Where libraries are installed")
endif()
if(NOT CMAKE_INSTALL_DOCDIR)  # empty in a build folder from before documents were installed
  set(CMAKE_INSTALL_DOCDIR share/doc/stagemarks CACHE PATH "Where documents are installed" FORCE)
endif()
include(GNUInstallDirs)
set(CMAKE_RUNTIME_OUTPUT_DIRECTORY ${CMAKE_BINARY_DIR}/bin)
set(CMAKE_LIBRARY_OUTPUT_DIRECTORY ${CMAKE_BINARY_DIR}/${CMAKE_INSTALL_LIBDIR}/stagemarks)
set(STAGEMARKS_PLUGIN_DIR ${CMAKE_LIBRARY_OUTPUT_DIRECTORY}/plugins)
set(STAGEMARKS_INSTALL_LIBDIR ${CMAKE_INSTALL_LIBDIR}/stagemarks)
set(STAGEMARKS_INSTALL_DATADIR ${CMAKE_INSTALL_DATADIR}/stagemarks)
file(RELATIVE_PATH STAGEMARKS_SHARED_FROM_PROGRAMS ${CMAKE_INSTALL_FULL_BINDIR} ${CMAKE_INSTALL_FULL_DATADIR}/stagemarks)
file(RELATIVE_PATH STAGEMARKS_LIBRARY_FROM_PROGRAMS ${CMAKE_INSTALL_FULL_BINDIR} ${CMAKE_INSTALL_FULL_LIBDIR}/stagemarks)
file(RELATIVE_PATH STAGEMARKS_PROGRAMS_FROM_LIBRARY ${CMAKE_INSTALL_FULL_LIBDIR}/stagemarks ${CMAKE_INSTALL_FULL_BINDIR})
# Binaries of a build search where those of an installation do. A search path that is changed at the installation is filled up
# with empty parts meanwhile, which stand for the current folder: whoever can write there could slip in a library.
set(CMAKE_BUILD_WITH_INSTALL_RPATH ON)
set(CMAKE_INSTALL_RPATH "$ORIGIN/${STAGEMARKS_LIBRARY_FROM_PROGRAMS}")

# With precompiled headers a cache has to be told that a header's time says nothing about what is in it.
find_program(CCACHE ccache)
if(CCACHE AND NOT CMAKE_CXX_COMPILER_LAUNCHER)
  set(CMAKE_CXX_COMPILER_LAUNCHER
      ${CMAKE_COMMAND} -E env CCACHE_SLOPPINESS=pch_defines,time_macros,include_file_mtime,include_file_ctime ${CCACHE})
endif()

add_library(project_options INTERFACE)
# Where files are compiled together clang takes a constant of one file for shadowed by a local name of another.
set(shadows -Wshadow)
if(STAGEMARKS_UNITY AND CMAKE_CXX_COMPILER_ID MATCHES "Clang")
  set(shadows "")
endif()
target_compile_options(project_options INTERFACE -Wall -Wextra -Wpedantic ${shadows} -Wconversion -Wno-sign-conversion
                                                 -Wnon-virtual-dtor -Woverloaded-virtual)
# GCC 12 sees overlapping copies in plain string sums that have none.
target_compile_options(project_options INTERFACE $<$<CXX_COMPILER_ID:GNU>:-Wno-restrict>)
if(STAGEMARKS_WERROR)
  target_compile_options(project_options INTERFACE -Werror)
endif()
# Hardening: an error in the code is hard to use for more than a crash. tests/architecture looks for
# it in the binaries. Sanitizers bring checks of their own.
include(CheckCXXCompilerFlag)
foreach(flag -fstack-protector-strong -fstack-clash-protection -fcf-protection)
  string(MAKE_C_IDENTIFIER "HAS${flag}" known)
  check_cxx_compiler_flag(${flag} ${known})
  if(${known})
    add_compile_options(${flag})
  endif()
endforeach()
if(NOT STAGEMARKS_SANITIZE)
  add_compile_options($<$<NOT:$<CONFIG:Debug>>:-U_FORTIFY_SOURCE> $<$<NOT:$<CONFIG:Debug>>:-D_FORTIFY_SOURCE=2>)
endif()
add_link_options(-Wl,-z,relro,-z,now)
# GCC spends a fifth of its time looking for memory that it might use again. Where there is enough, it need not: a compilation
# takes 150 MB more, 900 MB at most.
cmake_host_system_information(RESULT memory QUERY TOTAL_PHYSICAL_MEMORY)
cmake_host_system_information(RESULT cores QUERY NUMBER_OF_LOGICAL_CORES)
math(EXPR enough "1500 * (${cores} + 2)")
if(memory GREATER enough)
  add_compile_options($<$<CXX_COMPILER_ID:GNU>:--param=ggc-min-heapsize=800000>)
endif()
# For what waits for a person or for the engine: its files compile in about two thirds of the time.
set(STAGEMARKS_QUICK_TO_COMPILE $<$<CONFIG:Release>:-O1>)
# Tests compile in two thirds of the time without optimization, and nearly all the time that they take is not theirs.
set(STAGEMARKS_TEST_OPTIONS -O0 -U_FORTIFY_SOURCE)
# Clang's address sanitizer comes with a fuzzer: what it fuzzes counts where it has been.
set(STAGEMARKS_FUZZ OFF)
if(CMAKE_CXX_COMPILER_ID MATCHES "Clang" AND STAGEMARKS_SANITIZE MATCHES "address")
  set(STAGEMARKS_FUZZ ON)
  set(STAGEMARKS_FUZZED -fsanitize-coverage=inline-8bit-counters,indirect-calls,trace-cmp)
endif()
if(STAGEMARKS_SANITIZE)
  # -O1, and -O0 for what is quick to compile: with the checks of the sanitizers in it, code takes a third of the time to
  # compile as it does with -O2, and the tests run nearly as fast. -g1 has what their reports show. With -O1 GCC warns of a variable
  # inside the standard library beside a setjmp, and takes copies of its function objects for uninitialized.
  add_compile_options(-O1 -g1)
  set(STAGEMARKS_QUICK_TO_COMPILE -O0)
  if(CMAKE_CXX_COMPILER_ID MATCHES "Clang")  # says it by words of its own only
    foreach(sanitizer address thread)
      if(STAGEMARKS_SANITIZE MATCHES "${sanitizer}")
        string(TOUPPER ${sanitizer} name)
        add_compile_definitions(__SANITIZE_${name}__)
      endif()
    endforeach()
  endif()
  target_compile_options(project_options INTERFACE -fsanitize=${STAGEMARKS_SANITIZE} -fno-omit-frame-pointer
                                                   $<$<CXX_COMPILER_ID:GNU>:-Wno-clobbered;-Wno-maybe-uninitialized>)
  target_link_options(project_options INTERFACE -fsanitize=${STAGEMARKS_SANITIZE})
endif()

# Large headers of libraries are read once for all files of a target (cmake/precompiled). Each file still includes what it uses:
# a build with CMAKE_DISABLE_PRECOMPILE_HEADERS=ON, as ./test --sanitize is one, finds what is missing.
# With a third argument the target takes over what that other target, which is compiled alike, has precompiled.
function(precompile target header)
  if(header STREQUAL Standard)
    # Where it is precompiled, GCC 12 sees copies in string sums that are too long and are not. The build of ./test --lint,
    # which precompiles nothing, has clang-tidy look for true ones.
    target_compile_options(${target} PRIVATE $<$<CXX_COMPILER_ID:GNU>:-Wno-stringop-overflow;-Wno-stringop-overread;-Wno-array-bounds>)
  endif()
  if(ARGC GREATER 2 AND NOT target STREQUAL ARGV2)
    target_precompile_headers(${target} REUSE_FROM ${ARGV2})
  else()
    target_precompile_headers(${target} PRIVATE ${CMAKE_SOURCE_DIR}/cmake/precompiled/${header}.h)
  endif()
endfunction()

# Compiles sixteen files of the target at a time: what they include and instantiate is paid for once, which makes a clean build of
# them twice as fast, and a build after one change slower: who works in one place switches it off. So names in their unnamed
# namespaces must differ. ./test --lint REV, which asks for each file alone, switches it off, too.
function(compile_together target)
  set(together ${STAGEMARKS_UNITY})
  if(target IN_LIST STAGEMARKS_ALONE)
    set(together OFF)
  endif()
  set_target_properties(${target} PROPERTIES UNITY_BUILD ${together} UNITY_BUILD_BATCH_SIZE 16)
  if(together)
    # A file's own class may hold what is in the file's unnamed namespace; GCC takes it for a header's.
    target_compile_options(${target} PRIVATE $<$<CXX_COMPILER_ID:GNU>:-Wno-subobject-linkage>)
  endif()
endfunction()
