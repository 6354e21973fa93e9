# What an installation consists of besides the programs, and the packages that `cpack` makes of it.

set(CPACK_PACKAGE_NAME corvane)
set(CPACK_PACKAGE_VENDOR Ostrel)
set(CPACK_PACKAGE_CONTACT "Ostrel <corvane@ostrel.example>")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "hand an e-mail from the command line to the mail client")
set(CPACK_PACKAGE_DESCRIPTION
    "The message opens in the installed mail client, where it can be changed, sent
or dropped: nothing is sent by the program itself. Subject, text, attachments
and recipients come from the command line or from response files.")
set(CPACK_PACKAGE_VERSION ${PROJECT_VERSION})
set(CPACK_STRIP_FILES OFF) # they are stripped, and their symbols lie apart
set(CPACK_PRE_BUILD_SCRIPTS ${CMAKE_CURRENT_LIST_DIR}/PackageDates.cmake)

if(WIN32)
    set(CPACK_GENERATOR ZIP)
    set(CPACK_PACKAGE_FILE_NAME corvane-${PROJECT_VERSION}-windows-x86_64)
    if(CORVANE_STATIC_RUNTIME)
        # The notices of what is linked in, as Debian's packages of it have them.
        install(FILES docs/licences.txt DESTINATION licences RENAME README.txt)
        install(FILES /usr/share/doc/mingw-w64-x86-64-dev/copyright DESTINATION licences RENAME mingw-w64.txt)
        install(FILES /usr/share/doc/gcc-mingw-w64-base/copyright DESTINATION licences RENAME gcc.txt)
        install(FILES /usr/share/common-licenses/GPL-3 DESTINATION licences RENAME GPL-3.txt)
    endif()
else()
    set(CPACK_GENERATOR DEB)
    set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
    set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
    set(CPACK_DEBIAN_PACKAGE_SECTION mail)
    set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
    set(CPACK_POST_BUILD_SCRIPTS ${PROJECT_SOURCE_DIR}/cmake/PlainDebianPackage.cmake)
    set(CPACK_DEBIAN_PACKAGE_SUGGESTS "thunderbird | mail-reader, xdg-utils")
    set(CPACK_INSTALL_DEFAULT_DIRECTORY_PERMISSIONS
        OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE WORLD_READ WORLD_EXECUTE)

    # Debian wants these compressed, and without a name or a time in them.
    find_program(GZIP_PROGRAM gzip REQUIRED)
    function(install_compressed source name folder)
        set(made ${CMAKE_CURRENT_BINARY_DIR}/${name}.gz)
        add_custom_command(OUTPUT ${made} DEPENDS ${source} VERBATIM
            COMMAND sh -c "exec \"$1\" -9nc \"$2\" >\"$3\"" sh ${GZIP_PROGRAM} ${source} ${made})
        add_custom_target(compressed_${name} ALL DEPENDS ${made})
        add_dependencies(product compressed_${name})
        install(FILES ${made} DESTINATION ${folder})
    endfunction()
    install_compressed(${PROJECT_SOURCE_DIR}/docs/corvane.1 corvane.1 ${CMAKE_INSTALL_MANDIR}/man1)
    string(TIMESTAMP changelog_date "%a, %d %b %Y %H:%M:%S +0000" UTC) # of SOURCE_DATE_EPOCH, where that is given
    configure_file(docs/changelog.in changelog @ONLY)
    install_compressed(${CMAKE_CURRENT_BINARY_DIR}/changelog changelog ${CMAKE_INSTALL_DOCDIR})
    install(FILES docs/copyright DESTINATION ${CMAKE_INSTALL_DOCDIR})
    install(FILES ${PROJECT_SOURCE_DIR}/completions/corvane.bash
        DESTINATION ${CMAKE_INSTALL_DATADIR}/bash-completion/completions RENAME corvane)
    install(FILES ${PROJECT_SOURCE_DIR}/completions/_corvane DESTINATION ${CMAKE_INSTALL_DATADIR}/zsh/vendor-completions)
    install(FILES ${PROJECT_SOURCE_DIR}/completions/corvane.fish
        DESTINATION ${CMAKE_INSTALL_DATADIR}/fish/vendor_completions.d)
endif()
install(FILES README.md CHANGELOG.md
    docs/windows.md docs/mailclients.md docs/settings.md docs/translating.md docs/recipes.md
    DESTINATION ${CORVANE_DOCUMENT_FOLDER})
include(CPack)
