# Looks for stack protectors in libraries of the product. Run with -P by the test stack_protectors.
#   NM         lists symbols
#   PROTECTED  libraries that must have them, separated by |
#   PLAIN      a library that must not

function(count_protected library result)
    execute_process(COMMAND "${NM}" --undefined-only "${library}"
        OUTPUT_VARIABLE symbols RESULT_VARIABLE failed ERROR_QUIET)
    if(failed OR NOT symbols MATCHES " U ")
        message(FATAL_ERROR "Cannot list the symbols of ${library}")
    endif()
    string(REGEX MATCHALL "__stack_chk_fail" found "${symbols}")
    list(LENGTH found count)
    set(${result} ${count} PARENT_SCOPE)
endfunction()

string(REPLACE "|" ";" libraries "${PROTECTED}")
foreach(library IN LISTS libraries)
    count_protected("${library}" count)
    if(count EQUAL 0)
        message(SEND_ERROR "${library} has no stack protectors")
    endif()
endforeach()
count_protected("${PLAIN}" count)
if(NOT count EQUAL 0)
    message(SEND_ERROR "${PLAIN} has stack protectors: they cost time for each row")
endif()
