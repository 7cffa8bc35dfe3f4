# What every target of the project is compiled with: the language level, the warnings, the sanitizers of the preset, and
# what makes a build quicker.

function(xlatr_target name)
  target_compile_features(${name} PRIVATE cxx_std_20 c_std_11)
  set_target_properties(${name} PROPERTIES CXX_EXTENSIONS OFF C_EXTENSIONS OFF CXX_VISIBILITY_PRESET hidden
                                           C_VISIBILITY_PRESET hidden VISIBILITY_INLINES_HIDDEN ON)
  target_compile_options(${name} PRIVATE -Wall -Wextra -Wpedantic -Wconversion -Wsign-conversion -Wshadow
                                         $<$<COMPILE_LANGUAGE:CXX>:-Wmissing-declarations>
                                         $<$<CXX_COMPILER_ID:Clang>:-Wthread-safety -Wreserved-identifier>)
  # Times are the same on every processor: none fuses a product with a sum, which rounds once instead of twice.
  target_compile_options(${name} PRIVATE -ffp-contract=off)
  # GCC 12 takes "text" + std::string for a copy onto itself, where it inlines it (GCC bug 105651).
  if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU" AND CMAKE_CXX_COMPILER_VERSION VERSION_LESS 13)
    target_compile_options(${name} PRIVATE -Wno-restrict)
  endif()

  cmake_path(RELATIVE_PATH CMAKE_CURRENT_SOURCE_DIR BASE_DIRECTORY ${PROJECT_SOURCE_DIR} OUTPUT_VARIABLE folder)
  if(XLATR_SANITIZE)
    set(instrumented "${XLATR_SANITIZE}")
    # A fuzzer follows the code that it searches, which the tests are not.
    if(folder MATCHES "^tests(/|$)")
      string(REGEX REPLACE ",?fuzzer-no-link" "" instrumented "${instrumented}")
    endif()
    target_compile_options(${name} PRIVATE -fsanitize=${instrumented} -fno-omit-frame-pointer
                                           -fno-sanitize-recover=all)
    target_link_options(${name} PRIVATE -fsanitize=${XLATR_SANITIZE})
  endif()
  if(XLATR_COVERAGE AND folder MATCHES "^(src|tools|tests|fuzz)(/|$)")
    xlatr_count_lines(${name} ${folder})
  endif()
  xlatr_unite(${name} ${folder})
endfunction()

# What runs is counted. A process adds its counts to those in the build folder when it ends, wherever it runs; %m, which
# follows from its code, keeps programs apart. Only code that users get is looked at afterwards: the tests count too since
# an inline function may be theirs when they are linked.
function(xlatr_count_lines name folder)
  # Threads that count the same line at the same time would lose counts, and more of one place than of another.
  set(counting "-fprofile-instr-generate=${PROJECT_BINARY_DIR}/counts/%m.profraw" -fprofile-update=atomic)
  target_compile_options(${name} PRIVATE ${counting})
  target_link_options(${name} PRIVATE ${counting})
  if(folder MATCHES "^(src|tools)(/|$)")
    target_compile_options(${name} PRIVATE -fcoverage-mapping)
  endif()
endfunction()

# The environment of a test. %m alone would be the same for programs that link the same code of the library.
function(xlatr_test_environment test)
  set(environment "TZ=UTC")
  if(XLATR_COVERAGE)
    list(APPEND environment "LLVM_PROFILE_FILE=${PROJECT_BINARY_DIR}/counts/${test}-%m.profraw")
  endif()
  set_tests_properties(${test} PROPERTIES ENVIRONMENT "${environment}")
endfunction()

# Compiles the files of a folder as one, which reads their headers once. XLATR_UNITY names what is united; elsewhere each
# file is compiled alone and so proves that it includes what it needs.
function(xlatr_unite name folder)
  if(XLATR_UNITY STREQUAL "ALL")
    set(united "^(src|tools|tests)(/|$)")
  elseif(XLATR_UNITY STREQUAL "TESTS")
    set(united "^tests(/|$)")
  else()
    return()
  endif()
  if(NOT folder MATCHES "${united}")
    return()
  endif()
  set_target_properties(${name} PROPERTIES UNITY_BUILD ON UNITY_BUILD_MODE GROUP)
  # A file's names may be hidden by those of another file, and its types seem to come from a header.
  target_compile_options(${name} PRIVATE -Wno-shadow
    $<$<AND:$<CXX_COMPILER_ID:GNU>,$<COMPILE_LANGUAGE:CXX>>:-Wno-subobject-linkage>)
  # Sources are added after this call, also by folders below.
  cmake_language(EVAL CODE "cmake_language(DEFER CALL xlatr_group_by_folder [[${name}]])")
endfunction()

function(xlatr_group_by_folder name)
  get_target_property(sources ${name} SOURCES)
  foreach(source IN LISTS sources)
    cmake_path(ABSOLUTE_PATH source BASE_DIRECTORY ${CMAKE_CURRENT_SOURCE_DIR} NORMALIZE OUTPUT_VARIABLE path)
    cmake_path(GET path PARENT_PATH folder)
    cmake_path(RELATIVE_PATH folder BASE_DIRECTORY ${PROJECT_SOURCE_DIR} OUTPUT_VARIABLE folder)
    string(MAKE_C_IDENTIFIER "${folder}" group)
    set_source_files_properties(${source} TARGET_DIRECTORY ${name} PROPERTIES UNITY_GROUP ${group})
  endforeach()
endfunction()

# xlatr_compile_alone(<target> <file>...): the files use names that other files of their folder use too.
function(xlatr_compile_alone target)
  set_source_files_properties(${ARGN} TARGET_DIRECTORY ${target} PROPERTIES SKIP_UNITY_BUILD_INCLUSION ON)
endfunction()
