# The library exports, of its namespace, the operations that its header declares and nothing else.
execute_process(COMMAND ${NM} -DC --defined-only ${LIBRARY} OUTPUT_VARIABLE symbols RESULT_VARIABLE failed)
if(failed)
    message(FATAL_ERROR "${NM} failed on ${LIBRARY}")
endif()
# A symbol of the namespace: a type letter, then the name, up to its arguments.
string(REGEX MATCHALL " [A-Za-z] ztOverlays::[^(\n]*" exported "${symbols}")
list(TRANSFORM exported REPLACE " [A-Za-z] ztOverlays::" "")
list(SORT exported)

file(READ ${HEADER} header)
string(REGEX MATCHALL "ZTOVERLAYUTILS_EXPORT [A-Za-z:<>]+ [A-Za-z]+\\(" declared "${header}")
list(TRANSFORM declared REPLACE "ZTOVERLAYUTILS_EXPORT [A-Za-z:<>]+ ([A-Za-z]+)\\(" "\\1")
list(SORT declared)

if(NOT declared OR NOT exported STREQUAL declared)
    message(FATAL_ERROR "exported: ${exported}\ndeclared: ${declared}")
endif()
foreach(class ztImageGenericFilter ztImageBilinearFilter)
    if(NOT symbols MATCHES "typeinfo for ${class}")
        message(FATAL_ERROR "${class} is not exported")
    endif()
endforeach()
