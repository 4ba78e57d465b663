#pragma once

/// Marks what a shared library of the project offers to others; everything else is compiled with hidden visibility.
#define CORVANE_EXPORT __attribute__((visibility("default")))

/// Marks a private class nested in an exported one, which would be exported with it: for what only the library defines.
#define CORVANE_HIDDEN __attribute__((visibility("hidden")))
