# Run by CPack over what goes into a package: all of it gets one time, so that two packages of a commit are equal.
if(DEFINED ENV{SOURCE_DATE_EPOCH})
    execute_process(COMMAND_ERROR_IS_FATAL ANY
        COMMAND find ${CPACK_TEMPORARY_DIRECTORY} -exec touch -h -d @$ENV{SOURCE_DATE_EPOCH} {} +)
endif()
