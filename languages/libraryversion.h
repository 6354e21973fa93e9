// The version record of a resource library: the program's, but for what tells the two apart. Plain macros: the resource
// compiler reads this file too.
#pragma once

#include "app/res/version.h"

#undef CORVANE_FILE_TYPE
#define CORVANE_FILE_TYPE 2 // VFT_DLL

// A library that says anything else is not taken for one.
#undef CORVANE_FILE_DESCRIPTION
#define CORVANE_FILE_DESCRIPTION "Resource DLL"

#undef CORVANE_INTERNAL_NAME
#define CORVANE_INTERNAL_NAME RESOURCE_LIBRARY
#undef CORVANE_ORIGINAL_FILENAME
#define CORVANE_ORIGINAL_FILENAME RESOURCE_LIBRARY ".dll"
