# Cross build for Windows x86-64 with Debian's clang and lld over the headers and run-time of
# g++-mingw-w64-x86-64-posix. What is shipped takes the run-time of g++-mingw-w64-x86-64-win32 (CompilerSettings.cmake).

set(CMAKE_SYSTEM_NAME Windows)
set(CMAKE_SYSTEM_PROCESSOR x86_64)
set(triple x86_64-w64-mingw32)

set(CMAKE_CXX_COMPILER clang++)
set(CMAKE_CXX_COMPILER_TARGET ${triple})
set(CMAKE_RC_COMPILER ${triple}-windres)
foreach(tool AR NM OBJCOPY OBJDUMP RANLIB)
    string(TOLOWER ${tool} name)
    set(CMAKE_${tool} ${triple}-${name} CACHE FILEPATH "")
endforeach()

# clang does not look for this gcc by itself, so that its C++ headers, start files and libraries are named here.
execute_process(COMMAND ${triple}-g++-posix -print-libgcc-file-name
    OUTPUT_VARIABLE libgcc OUTPUT_STRIP_TRAILING_WHITESPACE)
get_filename_component(gcc_folder "${libgcc}" DIRECTORY)
set(CMAKE_CXX_FLAGS_INIT
    "-isystem ${gcc_folder}/include/c++ -isystem ${gcc_folder}/include/c++/${triple} -B ${gcc_folder}")
set(CMAKE_EXE_LINKER_FLAGS_INIT "-fuse-ld=lld -L ${gcc_folder}")
set(CMAKE_SHARED_LINKER_FLAGS_INIT "-fuse-ld=lld -L ${gcc_folder}")

# The run-time that has locks of the system's own and no std::thread, for what is shipped.
execute_process(COMMAND ${triple}-g++-win32 -print-libgcc-file-name
    OUTPUT_VARIABLE libgcc OUTPUT_STRIP_TRAILING_WHITESPACE COMMAND_ERROR_IS_FATAL ANY)
get_filename_component(folder "${libgcc}" DIRECTORY)
set(CORVANE_SHIPPED_RUNTIME ${folder}/libstdc++.a ${folder}/libgcc.a ${folder}/libgcc_eh.a)

set(CMAKE_FIND_ROOT_PATH /usr/${triple})
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)

set(CMAKE_CROSSCOMPILING_EMULATOR ${CMAKE_CURRENT_LIST_DIR}/../tools/wine-run)
