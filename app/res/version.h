// The program's version record, for the resource script and for the record of the Linux program. Plain macros: the
// resource compiler reads this file too.
#pragma once

#define RESOURCE_FILE_VERSION_MAJOR 5
#define RESOURCE_FILE_VERSION_MINOR 0
#define RESOURCE_FILE_VERSION_PATCH 0
#define RESOURCE_FILE_VERSION_BUILD 111

#define RESOURCE_FILE_TYPE 1 // VFT_APP

#define RESOURCE_PRODUCT_VERSION "5.0"
#define RESOURCE_FILE_VERSION "5.0.0.111"
#define RESOURCE_INTERNAL_NAME "Corvane"
#define RESOURCE_FILE_DESCRIPTION "Corvane mail command"
#define RESOURCE_LEGAL_COPYRIGHT "Copyright (c) Ostrel"
#define RESOURCE_COMPANY_NAME "Ostrel"
#define RESOURCE_ORIGINAL_FILENAME "corvane.exe"
