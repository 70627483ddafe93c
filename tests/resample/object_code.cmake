# Looks at the machine code of the engine's object files: what an old processor runs must not hold
# the instructions of a newer one. Run with -P by the test object_code.
#   OBJDUMP  the disassembler
#   OBJECTS  the object files, separated by |

# What the first processors with SSE brought, outside of the xmm registers too.
set(sse_instructions
    "pinsrw|pextrw|pshufw|pmovmskb|pavgb|pavgw|pmaxub|pmaxsw|pminub|pminsw|psadbw|pmulhuw"
    "|maskmovq|movntq|sfence|prefetch|ldmxcsr|stmxcsr|fxsave|fxrstor|fisttp|[lm]fence")
string(JOIN "" sse_instructions ${sse_instructions})
set(wide_register "%[xyz]mm[0-9]")
set(mmx_register "%mm[0-7]")
set(sse_instruction "[\t ](${sse_instructions})[a-z0-9]*[\t ]")

function(require_absent code pattern object what)
    string(REGEX MATCH "[^\n]*${pattern}[^\n]*" found "${code}")
    if(found)
        message(SEND_ERROR "${object} holds ${what}: ${found}")
    endif()
endfunction()

string(REPLACE "|" ";" objects "${OBJECTS}")
set(portable_count 0)
set(mmx_count 0)
foreach(object IN LISTS objects)
    execute_process(COMMAND "${OBJDUMP}" -d --no-show-raw-insn "${object}"
        OUTPUT_VARIABLE code RESULT_VARIABLE result)
    if(NOT result EQUAL 0 OR NOT code MATCHES "[\t ]ret|<[^>]*>:|file format")
        message(FATAL_ERROR "Cannot disassemble ${object}")
    endif()
    string(REPLACE ";" " " code "${code}")
    # The file's suffix says which instruction set it may use.
    if(object MATCHES "_mmx\\.cpp")
        math(EXPR mmx_count "${mmx_count} + 1")
        require_absent("${code}" "${wide_register}" "${object}" "a wide register")
        require_absent("${code}" "${sse_instruction}" "${object}" "an SSE instruction")
        if(NOT code MATCHES "${mmx_register}")
            message(SEND_ERROR "${object} uses no MMX register at all")
        endif()
    elseif(NOT object MATCHES "_(sse|sse2|ssse3|sse41|avx|avx2|avx512[a-z]*)\\.cpp")
        math(EXPR portable_count "${portable_count} + 1")
        require_absent("${code}" "${wide_register}" "${object}" "a wide register")
        require_absent("${code}" "${mmx_register}" "${object}" "an MMX register")
        require_absent("${code}" "${sse_instruction}" "${object}" "an SSE instruction")
    endif()
endforeach()

message(STATUS "${portable_count} portable and ${mmx_count} MMX object files")
if(portable_count EQUAL 0 OR mmx_count EQUAL 0)
    message(FATAL_ERROR "Nothing was looked at")
endif()
