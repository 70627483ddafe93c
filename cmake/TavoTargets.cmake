# What every target of this project is compiled with, and the two ways to declare one.

# The engine is written with their intrinsics, attributes and options for single files.
if(NOT CMAKE_CXX_COMPILER_ID MATCHES "^(GNU|Clang|AppleClang)$" OR MSVC)
    message(FATAL_ERROR "TavoResample is built with GCC (for Windows: mingw-w64) or clang, with the "
        "command line of GCC. This compiler is neither: ${CMAKE_CXX_COMPILER_ID}, "
        "${CMAKE_CXX_COMPILER}. CONTRIBUTING.md says how to build on Windows.")
endif()

set(CMAKE_CXX_STANDARD 20)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_POSITION_INDEPENDENT_CODE ON)

if(NOT CMAKE_BUILD_TYPE)
    set(CMAKE_BUILD_TYPE Release)
endif()

if(CMAKE_SIZEOF_VOID_P EQUAL 4)
    set(TAVO_32BIT ON)
else()
    set(TAVO_32BIT OFF)
endif()

add_library(tavo_options INTERFACE)
target_include_directories(tavo_options INTERFACE "${PROJECT_SOURCE_DIR}")
target_compile_options(tavo_options INTERFACE -Wall -Wextra -Werror)
if(TAVO_32BIT)
    # Windows enters 32-bit code with a stack aligned to 4 bytes only.
    target_compile_options(tavo_options INTERFACE -mstackrealign)
endif()
if(WIN32)
    target_compile_definitions(tavo_options INTERFACE
        UNICODE _UNICODE WINVER=0x0601 _WIN32_WINNT=0x0601)
    if(MINGW)
        # One file to install: no run-time library beside the module. The time of linking would make
        # every build of the same sources another file.
        target_link_options(tavo_options INTERFACE -static -Wl,--no-insert-timestamp
            -Wl,--dynamicbase -Wl,--nxcompat
            $<IF:$<BOOL:${TAVO_32BIT}>,-Wl$<COMMA>--no-seh,-Wl$<COMMA>--high-entropy-va>)
    endif()
endif()
if(TAVO_SANITIZE)
    add_compile_options(-fsanitize=${TAVO_SANITIZE} -fno-sanitize-recover=all
        -fno-omit-frame-pointer)
    add_link_options(-fsanitize=${TAVO_SANITIZE})
endif()

if(MINGW)
    add_library(tavo_stack_guard STATIC "${PROJECT_SOURCE_DIR}/cmake/stack_guard.cpp")
    target_link_libraries(tavo_stack_guard PUBLIC tavo_options)
    target_compile_options(tavo_stack_guard PRIVATE -fno-exceptions)
endif()

# tavo_protect(NAME): stack protectors for the code of a target.
function(tavo_protect name)
    if(MINGW)
        target_compile_options(${name} PRIVATE -fstack-protector-strong)
        target_link_libraries(${name} PRIVATE tavo_stack_guard)
    endif()
endfunction()

# tavo_library(NAME SOURCES...): a static library of product code.
function(tavo_library name)
    add_library(${name} STATIC ${ARGN})
    target_link_libraries(${name} PUBLIC tavo_options)
    # Not the kernels: their functions run for each row.
    if(NOT name STREQUAL "tavo_resample")
        tavo_protect(${name})
    endif()
endfunction()

# tavo_module_library(NAME SOURCES...): the same for code that the module consists of. It runs inside
# other programs, without the C++ runtime: see module/module_runtime.cpp.
function(tavo_module_library name)
    tavo_library(${name} ${ARGN})
    target_compile_options(${name} PRIVATE -fno-exceptions)
endfunction()

# tavo_reuse_headers(NAME module|host): the platform's headers take longer to read than most of our files
# to compile, so they are read once for the module's code and once for the program's. No file relies on
# that: each includes what it uses.
if(WIN32)
    file(CONFIGURE OUTPUT "${CMAKE_BINARY_DIR}/nothing.cpp" CONTENT "// Precompiled headers only.\n")
    set(platform_headers "${PROJECT_SOURCE_DIR}/dshow/platform.h" <dvdmedia.h>
        <algorithm> <atomic> <memory> <utility>)
    tavo_module_library(tavo_module_headers "${CMAKE_BINARY_DIR}/nothing.cpp")
    target_precompile_headers(tavo_module_headers PRIVATE ${platform_headers})
    tavo_library(tavo_host_headers "${CMAKE_BINARY_DIR}/nothing.cpp")
    target_precompile_headers(tavo_host_headers PRIVATE ${platform_headers}
        <filesystem> <optional> <span> <string> <vector>)
endif()
function(tavo_reuse_headers name kind)
    target_precompile_headers(${name} REUSE_FROM tavo_${kind}_headers)
    if(MINGW AND kind STREQUAL host)
        # gcc 12 warns of the terminator of a std::wstring, and forgets that this is a system header.
        target_compile_options(${name} PRIVATE -Wno-array-bounds -Wno-stringop-overread)
    endif()
endfunction()

# tavo_ship(NAME): strips a file that goes to users. Its symbols stay beside it, where debuggers look.
function(tavo_ship name)
    if(MINGW)
        set(file "$<TARGET_FILE:${name}>")
        add_custom_command(TARGET ${name} POST_BUILD
            COMMAND "${CMAKE_OBJCOPY}" --preserve-dates --only-keep-debug "${file}" "${file}.debug"
            COMMAND "${CMAKE_STRIP}" --preserve-dates --strip-all "${file}"
            COMMAND "${CMAKE_OBJCOPY}" --preserve-dates "--add-gnu-debuglink=${file}.debug" "${file}"
            VERBATIM)
    endif()
endfunction()

# tavo_test(NAME SOURCES... [LIBS libraries...]): a GoogleTest program, run by ctest as one test.
function(tavo_test name)
    cmake_parse_arguments(arg "" "" "LIBS" ${ARGN})
    add_executable(${name} ${arg_UNPARSED_ARGUMENTS})
    target_link_libraries(${name} PRIVATE ${arg_LIBS} GTest::gtest_main tavo_options)
    target_precompile_headers(${name} REUSE_FROM tavo_test_headers)
    add_test(NAME ${name} COMMAND ${name})
    set_tests_properties(${name} PROPERTIES TIMEOUT 1800)
endfunction()
