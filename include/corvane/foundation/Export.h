#pragma once

/// Marks what a shared library of the project offers to others; everything else is compiled with hidden visibility.
#define CORVANE_EXPORT __attribute__((visibility("default")))
