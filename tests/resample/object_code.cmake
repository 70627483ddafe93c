# Looks at the machine code of the engine's object files: what an old processor runs must not hold
# the instructions of a newer one. Run with -P by the test object_code.
#   OBJDUMP  the disassembler
#   OBJECTS  the object files, separated by |

# What the first processors with SSE brought, outside of the xmm registers too.
set(sse_instructions
    "pinsrw|pextrw|pshufw|pmovmskb|pavgb|pavgw|pmaxub|pmaxsw|pminub|pminsw|psadbw|pmulhuw"
    "|maskmovq|movntq|sfence|prefetch|ldmxcsr|stmxcsr|fxsave|fxrstor|fisttp|[lm]fence")
string(JOIN "" sse_instructions ${sse_instructions})
# What the first ones with SSE2 brought.
set(sse2_instructions
    "movapd|movupd|movsd|movhpd|movlpd|movdq[au]|movdq2q|movq2dq|movntdq|movntpd|movnti|cvt[a-z0-9]*[ps]d"
    "|cvtdq2ps|cvtt?ps2dq|(add|sub|mul|div|sqrt|min|max|cmp|and|andn|or|xor|shuf|unpckl|unpckh)[ps]d"
    "|u?comisd|paddq|psubq|pmuludq|pshufd|pshuf[lh]w|ps[lr]ldq|punpck[lh]qdq|maskmovdqu|[lm]fence")
string(JOIN "" sse2_instructions ${sse2_instructions})
set(sse2_instruction "[\t ](${sse2_instructions})[\t ]")
# Integers in wide registers.
set(wide_integers "[\t ](p[a-z]+|mov[dq])[\t ][^\n]*%xmm")
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
set(sse_count 0)
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
    elseif(object MATCHES "_sse\\.cpp")
        math(EXPR sse_count "${sse_count} + 1")
        require_absent("${code}" "%[yz]mm[0-9]" "${object}" "a register wider than SSE's")
        require_absent("${code}" "${sse2_instruction}" "${object}" "an SSE2 instruction")
        require_absent("${code}" "${wide_integers}" "${object}" "an SSE2 instruction")
        foreach(instruction IN ITEMS pinsrw pavgb)
            if(NOT code MATCHES "[\t ]${instruction}[\t ]")
                message(SEND_ERROR "${object} makes no use of ${instruction}")
            endif()
        endforeach()
    elseif(NOT object MATCHES "_(sse2|ssse3|sse41|avx|avx2|avx512[a-z]*)\\.cpp")
        math(EXPR portable_count "${portable_count} + 1")
        require_absent("${code}" "${wide_register}" "${object}" "a wide register")
        require_absent("${code}" "${mmx_register}" "${object}" "an MMX register")
        require_absent("${code}" "${sse_instruction}" "${object}" "an SSE instruction")
    endif()
endforeach()

message(STATUS "${portable_count} portable, ${mmx_count} MMX and ${sse_count} SSE object files")
if(portable_count EQUAL 0 OR mmx_count EQUAL 0 OR sse_count EQUAL 0)
    message(FATAL_ERROR "Nothing was looked at")
endif()
