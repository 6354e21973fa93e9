# Language level, warnings, sanitizers and the few switches that differ by system. Everything of ours is compiled with
# these.

set(CMAKE_CXX_STANDARD 20)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_EXPORT_COMPILE_COMMANDS ON)
set(CMAKE_CXX_VISIBILITY_PRESET hidden)
set(CMAKE_VISIBILITY_INLINES_HIDDEN ON)
set(CMAKE_POSITION_INDEPENDENT_CODE ON)
set(CMAKE_RUNTIME_OUTPUT_DIRECTORY ${CMAKE_BINARY_DIR}/bin)

if(NOT DEFINED CMAKE_CXX_COMPILER_LAUNCHER)
    find_program(CCACHE_PROGRAM ccache)
    if(CCACHE_PROGRAM)
        set(CMAKE_CXX_COMPILER_LAUNCHER ${CCACHE_PROGRAM})
    endif()
endif()

# Position-independent executables, where the linker knows them.
include(CheckPIESupported)
check_pie_supported(LANGUAGES CXX)

add_library(corvane_settings INTERFACE)
target_include_directories(corvane_settings INTERFACE ${PROJECT_SOURCE_DIR})
target_compile_options(corvane_settings INTERFACE
    -Wall -Wextra -Wpedantic -Wshadow -Wconversion -Wsign-conversion -Wold-style-cast -Wnon-virtual-dtor
    -Woverloaded-virtual -Wcast-qual -Wformat=2 -Wundef)
if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
    # gcc 12 sees overlaps in the string concatenation of its own library where there are none.
    target_compile_options(corvane_settings INTERFACE -Wno-restrict)
endif()
if(CORVANE_WARNINGS_AS_ERRORS)
    target_compile_options(corvane_settings INTERFACE -Werror)
endif()
if(CORVANE_FAULTS)
    target_compile_definitions(corvane_settings INTERFACE PLATFORM_FAULTS)
endif()

if(WIN32)
    # dllexport is all that the executable's four functions and its marker need on Windows.
    target_compile_definitions(corvane_settings INTERFACE "PLATFORM_EXPORT=__attribute__((dllexport))")
    # What nobody calls goes, above all of the run-time that is linked in: its functions have no unwind data.
    target_compile_options(corvane_settings INTERFACE -ffunction-sections -fdata-sections)
    target_link_options(corvane_settings INTERFACE -static -Wl,--gc-sections)
    # winpthreads stops threads and changes their registers, as few programs but malicious ones do: tests alone need it.
    if(NOT CORVANE_SHIPPED_RUNTIME)
        set(CORVANE_SHIPPED_RUNTIME pthread) # another tool chain has but one
    endif()
    set(is_shipped $<BOOL:$<TARGET_PROPERTY:IS_SHIPPED>>)
    target_link_libraries(corvane_settings INTERFACE
        "$<${is_shipped}:${CORVANE_SHIPPED_RUNTIME}>$<$<NOT:${is_shipped}>:pthread>")
else()
    target_compile_definitions(corvane_settings INTERFACE
        "PLATFORM_EXPORT=__attribute__((visibility(\"default\")))")
endif()

if(CORVANE_SEPARATE_SYMBOLS)
    # Two builds of one commit are the same bytes, wherever they are made. A debugger is then told where the sources are.
    target_compile_options(corvane_settings INTERFACE
        -ffile-prefix-map=${PROJECT_SOURCE_DIR}=. -ffile-prefix-map=${PROJECT_BINARY_DIR}=build)
endif()

include(CheckCXXCompilerFlag)
# protection(FLAG): with a flag that not every processor or compiler knows.
function(protection flag)
    string(MAKE_C_IDENTIFIER "HAS${flag}" known)
    check_cxx_compiler_flag(${flag} ${known})
    if(${known})
        target_compile_options(corvane_settings INTERFACE ${flag})
    endif()
endfunction()

if(CORVANE_HARDENING AND WIN32)
    # This clang makes no Control Flow Guard tables for mingw, and its stack protector needs a library of the run-time.
    target_link_options(corvane_settings INTERFACE
        -Wl,--dynamicbase,--high-entropy-va,--nxcompat,--no-insert-timestamp)
elseif(CORVANE_HARDENING)
    target_link_options(corvane_settings INTERFACE -Wl,-z,relro,-z,now,-z,noexecstack)
    if(NOT CORVANE_SANITIZERS)
        protection(-fstack-protector-strong)
        protection(-fstack-clash-protection)
        protection(-fcf-protection)
        # It checks calls whose sizes the optimiser knows.
        target_compile_options(corvane_settings INTERFACE
            $<$<CONFIG:Release,RelWithDebInfo,MinSizeRel>:-U_FORTIFY_SOURCE>
            $<$<CONFIG:Release,RelWithDebInfo,MinSizeRel>:-D_FORTIFY_SOURCE=2>)
    endif()
endif()

# The product's code tells the fuzzer which branches an input took.
if(CORVANE_FUZZ)
    add_compile_options(-fsanitize=fuzzer-no-link)
endif()

# Sanitizers are set for the whole build, the test framework included, so that containers are instrumented alike.
if(CORVANE_SANITIZERS)
    add_compile_options(-fsanitize=${CORVANE_SANITIZERS} -fno-sanitize-recover=all -fno-omit-frame-pointer -g1)
    add_link_options(-fsanitize=${CORVANE_SANITIZERS})
endif()

# precompile_library(TARGET): what nearly every source reads of the C++ library is read once. With gcc 12 that library
# would then no longer be exempt from what the compiler wrongly warns of.
if(CMAKE_CXX_COMPILER_ID STREQUAL "Clang")
    file(CONFIGURE OUTPUT ${CMAKE_BINARY_DIR}/precompiled.cpp CONTENT "")
    add_library(precompiled OBJECT EXCLUDE_FROM_ALL ${CMAKE_BINARY_DIR}/precompiled.cpp)
    target_link_libraries(precompiled PRIVATE corvane_settings)
    target_precompile_headers(precompiled PRIVATE
        <algorithm> <array> <atomic> <bit> <cstring> <functional> <limits> <memory> <mutex> <optional> <span> <string>
        <string_view> <utility> <vector>)
endif()
function(precompile_library target)
    if(TARGET precompiled)
        target_precompile_headers(${target} REUSE_FROM precompiled)
    endif()
endfunction()
