#pragma once

/// What the two compilers spell differently.

/// Has the compiler check the arguments of a printf-like function: `text` and `first` are the positions of the format
/// and of its first argument, counted from 1.
#ifdef _WIN32
#define ZQV_PRINTF(text, first) __attribute__((format(gnu_printf, text, first)))
#else
#define ZQV_PRINTF(text, first) __attribute__((format(printf, text, first)))
#endif

/// Places a variable in a writable section that all processes which have the library loaded see as one. The variable
/// needs an initial value.
#ifdef _WIN32
#define ZQV_SHARED_BETWEEN_PROCESSES __attribute__((section(".shared"), shared))
#else
#define ZQV_SHARED_BETWEEN_PROCESSES
#endif
