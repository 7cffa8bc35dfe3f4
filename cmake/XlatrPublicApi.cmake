# What is made of the public headers while building: they are the one list of exported functions.
find_package(Python3 REQUIRED COMPONENTS Interpreter)

set(XLATR_PUBLIC_HEADERS
  ${PROJECT_SOURCE_DIR}/include/xlatr/export.h
  ${PROJECT_SOURCE_DIR}/include/xlatr/frames.h
  ${PROJECT_SOURCE_DIR}/include/xlatr/objects.h
  ${PROJECT_SOURCE_DIR}/include/xlatr/xlatr.h
)

# Those of the object families, whose calls and types are made from the prototypes.
set(XLATR_OBJECT_HEADERS ${XLATR_PUBLIC_HEADERS})
list(FILTER XLATR_OBJECT_HEADERS EXCLUDE REGEX "/frames\\.h$")

set(XLATR_PUBLIC_API_DIR ${PROJECT_SOURCE_DIR}/scripts/public_api)
# Without -B the interpreter would leave its compiled modules in the source tree.
set(XLATR_PUBLIC_API ${Python3_EXECUTABLE} -B ${XLATR_PUBLIC_API_DIR})
set(XLATR_PUBLIC_API_SOURCES
  ${XLATR_PUBLIC_API_DIR}/__init__.py
  ${XLATR_PUBLIC_API_DIR}/__main__.py
  ${XLATR_PUBLIC_API_DIR}/export_lists.py
  ${XLATR_PUBLIC_API_DIR}/frozen_list.py
  ${XLATR_PUBLIC_API_DIR}/object_calls.py
  ${XLATR_PUBLIC_API_DIR}/object_families.py
  ${XLATR_PUBLIC_API_DIR}/prototypes.py
)

# xlatr_export_lists(DIRECTORY) makes xlatr.exports (the names, one per line), xlatr.map (the version script) and
# xlatr.def (the module definition) there, for targets of the calling CMakeLists.txt.
function(xlatr_export_lists directory)
  add_custom_command(
    OUTPUT ${directory}/xlatr.exports ${directory}/xlatr.map ${directory}/xlatr.def
    COMMAND ${XLATR_PUBLIC_API} lists --abi ${PROJECT_VERSION_MAJOR} --directory ${directory} ${XLATR_PUBLIC_HEADERS}
    DEPENDS ${XLATR_PUBLIC_HEADERS} ${XLATR_PUBLIC_API_SOURCES}
    COMMENT "Listing the exported functions"
    VERBATIM)
endfunction()

# xlatr_object_calls(FILE) makes the header of a fuzz target with a call of each exported function.
function(xlatr_object_calls file)
  add_custom_command(
    OUTPUT ${file}
    COMMAND ${XLATR_PUBLIC_API} calls --output ${file} ${XLATR_OBJECT_HEADERS}
    DEPENDS ${XLATR_PUBLIC_HEADERS} ${XLATR_PUBLIC_API_SOURCES}
    COMMENT "Making the calls of all exported functions"
    VERBATIM)
endfunction()

# The header that has each exported family as a type, for what includes tests/support/object_families.hpp and links
# xlatr_families.
set(families_directory ${PROJECT_BINARY_DIR}/families)
file(MAKE_DIRECTORY ${families_directory})
add_custom_command(
  OUTPUT ${families_directory}/object_family_types.hpp
  COMMAND ${XLATR_PUBLIC_API} families --output ${families_directory}/object_family_types.hpp ${XLATR_OBJECT_HEADERS}
  DEPENDS ${XLATR_PUBLIC_HEADERS} ${XLATR_PUBLIC_API_SOURCES}
  COMMENT "Making the types of all exported families"
  VERBATIM)
add_custom_target(xlatr_object_families DEPENDS ${families_directory}/object_family_types.hpp)
add_library(xlatr_families INTERFACE)
target_include_directories(xlatr_families INTERFACE ${families_directory})
add_dependencies(xlatr_families xlatr_object_families)
