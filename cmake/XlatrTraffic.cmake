# Tests and benchmarks make their input with xlatr_traffic, even if the tools themselves are not built.
if(NOT TARGET xlatr_traffic)
  add_subdirectory(${PROJECT_SOURCE_DIR}/tools/tracegen ${PROJECT_BINARY_DIR}/tools/tracegen)
endif()
