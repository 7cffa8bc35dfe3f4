# What every target of the project is compiled with: the language level, the warnings, the sanitizers of the preset.
function(xlatr_target name)
  target_compile_features(${name} PRIVATE cxx_std_20 c_std_11)
  set_target_properties(${name} PROPERTIES CXX_EXTENSIONS OFF C_EXTENSIONS OFF CXX_VISIBILITY_PRESET hidden
                                           C_VISIBILITY_PRESET hidden VISIBILITY_INLINES_HIDDEN ON)
  target_compile_options(${name} PRIVATE -Wall -Wextra -Wpedantic -Wconversion -Wsign-conversion -Wshadow
                                         $<$<COMPILE_LANGUAGE:CXX>:-Wmissing-declarations>
                                         $<$<CXX_COMPILER_ID:Clang>:-Wthread-safety>)
  # Times are the same on every processor: none fuses a product with a sum, which rounds once instead of twice.
  target_compile_options(${name} PRIVATE -ffp-contract=off)
  # GCC 12 takes "text" + std::string for a copy onto itself, where it inlines it (GCC bug 105651).
  if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU" AND CMAKE_CXX_COMPILER_VERSION VERSION_LESS 13)
    target_compile_options(${name} PRIVATE -Wno-restrict)
  endif()
  if(XLATR_SANITIZE)
    target_compile_options(${name} PRIVATE -fsanitize=${XLATR_SANITIZE} -fno-omit-frame-pointer
                                           -fno-sanitize-recover=all)
    target_link_options(${name} PRIVATE -fsanitize=${XLATR_SANITIZE})
  endif()
endfunction()
