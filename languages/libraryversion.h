// The version record of a resource library: the program's, but for what tells the two apart. Plain macros: the resource
// compiler reads this file too.
#pragma once

#include "app/res/version.h"

#undef RESOURCE_FILE_TYPE
#define RESOURCE_FILE_TYPE 2 // VFT_DLL

// A library that says anything else is not taken for one.
#undef RESOURCE_FILE_DESCRIPTION
#define RESOURCE_FILE_DESCRIPTION "Resource DLL"

#undef RESOURCE_INTERNAL_NAME
#define RESOURCE_INTERNAL_NAME RESOURCE_LIBRARY
#undef RESOURCE_ORIGINAL_FILENAME
#define RESOURCE_ORIGINAL_FILENAME RESOURCE_LIBRARY ".dll"
