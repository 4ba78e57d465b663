#pragma once

/// The version of these headers, MAJOR.MINOR.PATCH. Libraries of one MAJOR.MINOR are compatible with each other; a
/// change of MINOR may break the binary interface as long as MAJOR is 0.
#define CORVANE_VERSION_MAJOR 0
#define CORVANE_VERSION_MINOR 1
#define CORVANE_VERSION_PATCH 0
/// The same as a text.
#define CORVANE_VERSION "0.1.0"
