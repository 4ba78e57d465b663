# Writes the names of all keys and buttons that the machine's Linux headers know, as rows of a table: {"KEY_OK", KEY_OK}.
# Second names of a key come first, so that a search from the end finds the proper one.
find_path(LINUX_HEADERS linux/input-event-codes.h REQUIRED)
mark_as_advanced(LINUX_HEADERS)
file(STRINGS ${LINUX_HEADERS}/linux/input-event-codes.h definitions
     REGEX "^#define[ \t]+(KEY|BTN)_[A-Z0-9_]+[ \t]+[A-Z0-9]")
# Bounds, and no keys.
list(FILTER definitions EXCLUDE REGEX "KEY_(RESERVED|MIN_INTERESTING|MAX|CNT)[ \t]")
set(second_names)
set(proper_names)
foreach(definition IN LISTS definitions)
    string(REGEX REPLACE "^#define[ \t]+([A-Z0-9_]+)[ \t]+.*" "{\"\\1\", \\1},\n" row "${definition}")
    if(definition MATCHES "[ \t](KEY|BTN)_[A-Z0-9_]+[ \t]+(KEY|BTN)_")
        string(APPEND second_names "${row}")
    else()
        string(APPEND proper_names "${row}")
    endif()
endforeach()
file(CONFIGURE OUTPUT generated/KeyNameRows.inc CONTENT "${second_names}${proper_names}" @ONLY)
