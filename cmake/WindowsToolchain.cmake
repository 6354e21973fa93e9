# Cross build for Windows x86-64 with Debian's clang and lld over the headers and run-time of
# g++-mingw-w64-x86-64-posix.

set(CMAKE_SYSTEM_NAME Windows)
set(CMAKE_SYSTEM_PROCESSOR x86_64)
set(triple x86_64-w64-mingw32)

set(CMAKE_CXX_COMPILER clang++)
set(CMAKE_CXX_COMPILER_TARGET ${triple})
set(CMAKE_RC_COMPILER ${triple}-windres)
set(CMAKE_OBJCOPY ${triple}-objcopy CACHE FILEPATH "")
set(CMAKE_AR ${triple}-ar CACHE FILEPATH "")
set(CMAKE_RANLIB ${triple}-ranlib CACHE FILEPATH "")

# clang does not look for this gcc by itself, so that its C++ headers, start files and libraries are named here.
execute_process(COMMAND ${triple}-g++-posix -print-libgcc-file-name
    OUTPUT_VARIABLE libgcc OUTPUT_STRIP_TRAILING_WHITESPACE)
get_filename_component(gcc_folder "${libgcc}" DIRECTORY)
set(CMAKE_CXX_FLAGS_INIT
    "-isystem ${gcc_folder}/include/c++ -isystem ${gcc_folder}/include/c++/${triple} -B ${gcc_folder}")
set(CMAKE_EXE_LINKER_FLAGS_INIT "-fuse-ld=lld -L ${gcc_folder}")
set(CMAKE_SHARED_LINKER_FLAGS_INIT "-fuse-ld=lld -L ${gcc_folder}")

set(CMAKE_FIND_ROOT_PATH /usr/${triple})
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)

set(CMAKE_CROSSCOMPILING_EMULATOR ${CMAKE_CURRENT_LIST_DIR}/../tools/wine-run)
