# tavo_test_emulated(NAME [FILTER gtest-filter]): runs a test of the native 32-bit build again on
# emulated older processors, and on a newer one, if qemu-user is there. The emulator stops at xmm
# registers that a processor lacks, and at SSSE3 and later; it lets MMX and SSE2 pass, which
# object_code and mmx_free look after.

if(TAVO_32BIT AND CMAKE_SYSTEM_NAME STREQUAL "Linux")
    find_program(TAVO_QEMU_I386 NAMES qemu-i386 qemu-i386-static
        DOC "User-mode emulator for 32-bit x86")
endif()

function(tavo_test_emulated name)
    if(NOT TAVO_QEMU_I386)
        return()
    endif()
    cmake_parse_arguments(arg "" "FILTER" "" ${ARGN})
    if(NOT arg_FILTER)
        set(arg_FILTER "*")
    endif()
    # Each model and the processor level that it has.
    foreach(model_level IN ITEMS "pentium2,-mmx:0" "pentium2:1" "pentium3:2" "max:2")
        string(REGEX MATCH "^(.*):(.)$" matched "${model_level}")
        set(test "${name}.${CMAKE_MATCH_1}")
        add_test(NAME ${test} COMMAND "${TAVO_QEMU_I386}" -cpu "${CMAKE_MATCH_1}"
            $<TARGET_FILE:${name}> "--gtest_filter=${arg_FILTER}")
        set_tests_properties(${test} PROPERTIES TIMEOUT 1800
            ENVIRONMENT "TAVO_EXPECTED_CPU_LEVEL=${CMAKE_MATCH_2}")
    endforeach()
endfunction()
