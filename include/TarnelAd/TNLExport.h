#pragma once

/// @file
/// @brief The export macro of the public API.
///
/// The libraries are built with hidden symbols: only the classes and functions marked
/// TNL_EXPORT in the public headers are visible to the programs that link them. Plain structures
/// without out-of-line functions need no mark.

#if defined(__GNUC__) || defined(__clang__)
/// Makes a class (its out-of-line members, virtual table and type information) or a function
/// visible outside the library.
#define TNL_EXPORT __attribute__((visibility("default")))
#else
#define TNL_EXPORT
#endif
