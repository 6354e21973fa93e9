# What holds for the files that are installed, and for no other.

if(CORVANE_SEPARATE_SYMBOLS)
    find_program(CMAKE_OBJCOPY objcopy REQUIRED)
    # In the whole build, for the layers are libraries; tests and benchmarks take it back.
    add_compile_options(-g)
endif()

# shipped_binary(TARGET): an executable or a module of the product.
function(shipped_binary target)
    set_target_properties(${target} PROPERTIES IS_SHIPPED ON)
    if(NOT WIN32)
        # What nothing is taken from need not be loaded in every run.
        target_link_options(${target} PRIVATE -Wl,--as-needed)
        if(CORVANE_STATIC_RUNTIME)
            # A user's machine need not have this compiler's run-time, and a start without it is faster.
            target_link_options(${target} PRIVATE -static-libstdc++ -static-libgcc)
        endif()
    endif()
    if(CORVANE_SEPARATE_SYMBOLS)
        set(file $<TARGET_FILE:${target}>)
        add_custom_command(TARGET ${target} POST_BUILD
            COMMAND ${CMAKE_OBJCOPY} --only-keep-debug ${file} ${file}.debug
            # The dates as they are: objcopy would write the present time into a PE header, and no two builds were equal.
            COMMAND ${CMAKE_OBJCOPY} --preserve-dates --strip-all --add-gnu-debuglink=${file}.debug ${file}
            VERBATIM)
    endif()
endfunction()
