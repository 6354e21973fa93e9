# Modules that carry messages: the program, and the libraries of other languages.

# module_resources(TARGET ROWS VERSION SCRIPT): compiles into the target the table of messages in the file ROWS, as
# strings and as the four exports, and the version record whose values VERSION has. SCRIPT is the resource script on
# Windows. Files by path from the root.
function(module_resources target rows version script)
    target_sources(${target} PRIVATE ${PROJECT_SOURCE_DIR}/app/res/messagetable.cpp)
    target_link_libraries(${target} PRIVATE corvane_settings)
    project_version_define(${target})
    if(WIN32)
        target_sources(${target} PRIVATE ${PROJECT_SOURCE_DIR}/${script})
        # The manifest is in the build folder.
        target_include_directories(${target} PRIVATE ${PROJECT_SOURCE_DIR} ${PROJECT_BINARY_DIR})
        # The resource compiler tells nobody what it has read.
        foreach(file ${rows} ${version} app/res/version.h app/res/module.rc app/res/corvane.manifest.in)
            set_property(SOURCE ${PROJECT_SOURCE_DIR}/${script} APPEND
                PROPERTY OBJECT_DEPENDS ${PROJECT_SOURCE_DIR}/${file})
        endforeach()
    else()
        target_sources(${target} PRIVATE ${PROJECT_SOURCE_DIR}/platform/linux/modules/moduleresources.cpp)
    endif()
    module_resources_define(${target} RESOURCE_MESSAGES ${rows})
    module_resources_define(${target} RESOURCE_VERSION ${version})
    target_compile_definitions(${target} PRIVATE RESOURCE_FIRST_MESSAGE=4096) # the number of the first row's string
endfunction()

# A macro that stands for a quoted text. The resource compiler's preprocessor is started by a shell of its own, which
# takes one pair of quotes away.
function(module_resources_define target name value)
    target_compile_definitions(${target} PRIVATE
        "$<$<COMPILE_LANGUAGE:CXX>:${name}=\"${value}\">"
        "$<$<COMPILE_LANGUAGE:RC>:${name}=\\\"${value}\\\">")
endfunction()

# resource_library(TARGET NAME FOLDER ROWS [VERSION]): the library NAME.dll with a table of messages. It has that name on
# either system, for libraries of languages are found by listing a folder.
function(resource_library target name folder rows)
    set(version languages/libraryversion.h ${ARGN})
    list(GET version -1 version)
    add_library(${target} SHARED)
    module_resources(${target} ${rows} ${version} languages/library.rc)
    module_resources_define(${target} RESOURCE_LIBRARY ${name})
    set_target_properties(${target} PROPERTIES
        PREFIX ""
        OUTPUT_NAME ${name}
        SUFFIX .dll
        NO_SONAME ON
        LIBRARY_OUTPUT_DIRECTORY ${folder}
        RUNTIME_OUTPUT_DIRECTORY ${folder}
        ARCHIVE_OUTPUT_DIRECTORY ${CMAKE_CURRENT_BINARY_DIR})
    # Rows and a search in them: nothing that throws, or that a sanitizer could find, whose run-time would take the
    # program's symbols of the same names for clashes.
    target_compile_options(${target} PRIVATE $<$<COMPILE_LANGUAGE:CXX>:-fno-exceptions> -fno-sanitize=all)
    target_link_options(${target} PRIVATE -fno-sanitize=all)
    shipped_binary(${target}) # as a translator would ship it
endfunction()

# The four numbers of project(VERSION), which stands nowhere else.
function(project_version_define target)
    target_compile_definitions(${target} PRIVATE
        RESOURCE_FILE_VERSION_MAJOR=${PROJECT_VERSION_MAJOR}
        RESOURCE_FILE_VERSION_MINOR=${PROJECT_VERSION_MINOR}
        RESOURCE_FILE_VERSION_PATCH=${PROJECT_VERSION_PATCH}
        RESOURCE_FILE_VERSION_BUILD=${PROJECT_VERSION_TWEAK})
endfunction()
