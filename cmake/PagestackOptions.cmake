# What every target of the project compiles with; link to pagestack_options to get it.
add_library(pagestack_options INTERFACE)
target_compile_features(pagestack_options INTERFACE cxx_std_20)
target_include_directories(pagestack_options INTERFACE ${PROJECT_SOURCE_DIR} ${PROJECT_BINARY_DIR})
# -ffp-contract=off: a fused multiply-add, which some processors have and others do not, would give
# other last digits and so other pixels.
target_compile_options(pagestack_options INTERFACE
  -Wall -Wextra -Wpedantic -Wconversion -Wshadow -Wold-style-cast -Wnon-virtual-dtor
  -Woverloaded-virtual
  -ffp-contract=off
  $<$<BOOL:${PAGESTACK_WERROR}>:-Werror>)
if(CMAKE_UNITY_BUILD AND CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
  # GCC takes a file that is joined with others for a header.
  target_compile_options(pagestack_options INTERFACE -Wno-subobject-linkage)
endif()
target_compile_definitions(pagestack_options INTERFACE
  QT_NO_CAST_FROM_ASCII QT_NO_CAST_TO_ASCII QT_NO_FOREACH
  QT_NO_NARROWING_CONVERSIONS_IN_CONNECT)

# The tests are some forty programs: a linker that takes a sixth of the time is used where it happens to be.
find_program(PAGESTACK_LLD ld.lld)
mark_as_advanced(PAGESTACK_LLD)
if(PAGESTACK_LLD AND NOT APPLE)
  target_link_options(pagestack_options INTERFACE -fuse-ld=lld)
endif()

# Sanitized builds check as much as they can: the assertions of Qt and of the standard library, which
# an optimized build leaves out, are on as well.
if(PAGESTACK_SANITIZE)
  target_compile_options(pagestack_options INTERFACE
    -fsanitize=${PAGESTACK_SANITIZE} -fno-sanitize-recover=all -fno-omit-frame-pointer)
  target_link_options(pagestack_options INTERFACE -fsanitize=${PAGESTACK_SANITIZE})
  target_compile_definitions(pagestack_options INTERFACE QT_FORCE_ASSERTS _GLIBCXX_ASSERTIONS)
endif()

if(PAGESTACK_COVERAGE)
  # Threads count too: without atomic counters some run backwards, which gcovr refuses. They are slow, so
  # only the code that is looked at gets them, and what the standard library adds to it does not.
  target_compile_options(pagestack_options INTERFACE --coverage -fprofile-update=atomic
    "-fprofile-filter-files=/(engine|filelist)/[^.]*\\.(cpp|h)$" "-fprofile-exclude-files=/tests/")
  target_link_options(pagestack_options INTERFACE --coverage)
endif()

# The headers that most files include, compiled once for all of a build: a third of its time goes into
# them otherwise. With files joined (CMAKE_UNITY_BUILD) a build takes half of the rest. Neither is for the
# preset "dev", so that a file that lacks an include is noticed there.
if(PAGESTACK_PRECOMPILE)
  file(CONFIGURE OUTPUT ${PROJECT_BINARY_DIR}/precompiled.cpp CONTENT "")
  add_library(pagestack_precompiled OBJECT ${PROJECT_BINARY_DIR}/precompiled.cpp)
  target_link_libraries(pagestack_precompiled PRIVATE pagestack_options Qt6::Core)
  target_precompile_headers(pagestack_precompiled PRIVATE
    <QtCore> <algorithm> <array> <cmath> <cstdint> <cstring> <functional> <memory> <optional> <span>
    <stdexcept> <string> <utility> <vector>)
endif()

function(pagestack_precompile target)
  if(PAGESTACK_PRECOMPILE)
    target_precompile_headers(${target} REUSE_FROM pagestack_precompiled)
  endif()
endfunction()

# One static library of the project: pagestack_library(NAME SOURCES ... LINKS ... CODECS ...).
# LINKS are visible to users of the library, CODECS are not.
function(pagestack_library name)
  cmake_parse_arguments(ARG "" "" "SOURCES;LINKS;CODECS" ${ARGN})
  add_library(${name} STATIC ${ARG_SOURCES})
  target_link_libraries(${name} PUBLIC pagestack_options Qt6::Core ${ARG_LINKS} PRIVATE ${ARG_CODECS})
  pagestack_precompile(${name})
endfunction()
