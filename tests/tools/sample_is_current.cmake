# Makes a sample again with the command that samples/README.md names and compares the bytes, so that sample, generator
# and README stay one.
#   cmake -DTRACEGEN=... -DSAMPLES=... -DSAMPLE=drive.trc -DOUTPUT=... -P sample_is_current.cmake
string(REPLACE "." "\\." sample_expression "${SAMPLE}")
file(STRINGS ${SAMPLES}/README.md command REGEX "^    tracegen .* samples/${sample_expression}$")
list(LENGTH command commands)
if(NOT commands EQUAL 1)
  message(FATAL_ERROR "samples/README.md has ${commands} commands for ${SAMPLE}, expected one")
endif()
string(REGEX REPLACE "^    tracegen (.*) samples/[^ ]*$" "\\1" arguments "${command}")
separate_arguments(arguments UNIX_COMMAND "${arguments}")
execute_process(COMMAND ${TRACEGEN} ${arguments} ${OUTPUT} COMMAND_ERROR_IS_FATAL ANY)
execute_process(COMMAND ${CMAKE_COMMAND} -E compare_files ${OUTPUT} ${SAMPLES}/${SAMPLE} RESULT_VARIABLE differs)
if(differs)
  message(FATAL_ERROR "samples/${SAMPLE} is not what its command in samples/README.md makes; see ${OUTPUT}")
endif()

# A sample shows all there is to see.
foreach(kind DT FD FB FE BI RR ST EC ER EV)
  file(STRINGS ${SAMPLES}/${SAMPLE} lines REGEX "^ *[0-9]+ +[0-9.]+ ${kind} " LIMIT_COUNT 1)
  if(NOT lines)
    message(FATAL_ERROR "samples/${SAMPLE} has no line of kind ${kind}")
  endif()
endforeach()
