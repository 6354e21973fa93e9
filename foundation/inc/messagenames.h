// The message names of the foundation, for the sources that raise them. Names of the console framework, the application
// and the delivery stand with their modules.
#pragma once

#include "foundation/inc/message.h"

/// Calls `row` with each name, in alphabetical order.
// clang-format off: it would indent each row further than the one before
#define TSX_FOUNDATION_MESSAGES(row)                                                                                   \
    row(CURRENT_LANGUAGE_NAME) row(ERR_BAD_ARCHIVE) row(ERR_BAD_ARCHIVE_VERSION) row(ERR_BAD_INI_FILE)                 \
        row(ERR_BAD_TEXT_FILE) row(ERR_CANT_LOAD_DLL) row(ERR_CANT_LOAD_RESOURCE) row(ERR_CANT_WRITE_TO_REGISTRY)      \
            row(ERR_CANT_WRITE_TO_SETUP) row(ERR_CREATE_TEMP_FILE) row(ERR_DIVIDE_ZERO) row(ERR_FILE_ACCESS_DENIED)    \
                row(ERR_FILE_ALREADY_EXISTS) row(ERR_FILE_BAD_PATH) row(ERR_FILE_BAD_SEEK)                             \
                    row(ERR_FILE_DIRECTORY_FULL) row(ERR_FILE_DISK_FULL) row(ERR_FILE_END_OF_FILE)                     \
                        row(ERR_FILE_GENERIC) row(ERR_FILE_HARD_IO) row(ERR_FILE_INVALID_FILE)                         \
                            row(ERR_FILE_LOCK_VIOLATION) row(ERR_FILE_NOT_FOUND) row(ERR_FILE_REMOVE_CURRENT_DIR)      \
                                row(ERR_FILE_SHARING_VIOLATION) row(ERR_FILE_TOO_MANY_OPEN_FILES)                      \
                                    row(ERR_NO_GDI_RESOURCE) row(ERR_NO_MODULE_LOADED_FOR_CLASS) row(ERR_NO_TLS)       \
                                        row(ERR_RATIONAL_OVERFLOW) row(ERR_UNCAUGHT_INTERNAL_ERROR)                    \
                                            row(ERR_UNKNOWN_COM_ERROR) row(ERR_UNKNOWN_LAST_ERROR_TEXT)                \
                                                row(MSG_ASSERT) row(MSG_ASSERTLASTERROR) row(MSG_FAST_MEMORY_FILE)     \
                                                    row(MSG_INTERNAL_ERROR) row(MSG_INTERNAL_ERROR_WITH_CODE)          \
                                                        row(MSG_MEMORY_FILE) row(MSG_PRESUME)                          \
                                                            row(MSG_PRESUMELASTERROR) row(MSG_VIRTUAL_MEMORY_FILE)
// clang-format on

namespace Tsx {

#define TSX_DECLARE_MESSAGE(name) extern CMessageName name;
TSX_FOUNDATION_MESSAGES(TSX_DECLARE_MESSAGE)
#undef TSX_DECLARE_MESSAGE

} // namespace Tsx
