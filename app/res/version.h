// The program's version record, for the resource script and for the record of the Linux program. Plain macros: the
// resource compiler reads this file too.
#pragma once

#define CORVANE_FILE_VERSION_MAJOR 5
#define CORVANE_FILE_VERSION_MINOR 0
#define CORVANE_FILE_VERSION_PATCH 0
#define CORVANE_FILE_VERSION_BUILD 111

#define CORVANE_FILE_TYPE 1 // VFT_APP

#define CORVANE_PRODUCT_VERSION "5.0"
#define CORVANE_FILE_VERSION "5.0.0.111"
#define CORVANE_INTERNAL_NAME "Corvane"
#define CORVANE_FILE_DESCRIPTION "Corvane mail command"
#define CORVANE_LEGAL_COPYRIGHT "Copyright (c) Ostrel"
#define CORVANE_COMPANY_NAME "Ostrel"
#define CORVANE_ORIGINAL_FILENAME "corvane.exe"
