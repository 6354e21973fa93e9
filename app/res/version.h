// The program's version record, for the resource script and for the record of the Linux program. Plain macros: the
// resource compiler reads this file too. The four numbers of the version come from project(VERSION) in the top
// CMakeLists.txt, as RESOURCE_FILE_VERSION_MAJOR, _MINOR, _PATCH and _BUILD.
#pragma once

#define RESOURCE_QUOTED(text) #text
#define RESOURCE_TEXT(number) RESOURCE_QUOTED(number)

#define RESOURCE_FILE_TYPE 1 // VFT_APP

#define RESOURCE_PRODUCT_VERSION                                                                                       \
    RESOURCE_TEXT(RESOURCE_FILE_VERSION_MAJOR) "." RESOURCE_TEXT(RESOURCE_FILE_VERSION_MINOR)
#define RESOURCE_FILE_VERSION                                                                                          \
    RESOURCE_PRODUCT_VERSION                                                                                           \
    "." RESOURCE_TEXT(RESOURCE_FILE_VERSION_PATCH) "." RESOURCE_TEXT(RESOURCE_FILE_VERSION_BUILD)
#define RESOURCE_INTERNAL_NAME "Corvane"
#define RESOURCE_FILE_DESCRIPTION "Corvane mail command"
#define RESOURCE_LEGAL_COPYRIGHT "Copyright (c) Ostrel"
#define RESOURCE_COMPANY_NAME "Ostrel"
#define RESOURCE_ORIGINAL_FILENAME "corvane.exe"
