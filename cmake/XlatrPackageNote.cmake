set(XLATR_PACKAGE_NOTE_TEMPLATE ${CMAKE_CURRENT_LIST_DIR}/package_note.c.in)

# xlatr_package_note(<target> [NAME <name>] [VERSION <version>]) gives an executable an ELF package note, by default with
# the name "xlatr" and the project's version. `readelf -n` shows it. On a system without ELF there is nothing to do.
function(xlatr_package_note target)
  cmake_parse_arguments(NOTE "" "NAME;VERSION" "" ${ARGN})
  if(WIN32 OR APPLE)
    return()
  endif()
  if(NOT NOTE_NAME)
    set(NOTE_NAME xlatr)
  endif()
  if(NOT NOTE_VERSION)
    set(NOTE_VERSION ${PROJECT_VERSION})
  endif()
  set(source ${CMAKE_CURRENT_BINARY_DIR}/${target}_package_note.c)
  configure_file(${XLATR_PACKAGE_NOTE_TEMPLATE} ${source} @ONLY)
  target_sources(${target} PRIVATE ${source})
endfunction()
