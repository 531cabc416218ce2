// SPDX-License-Identifier: Apache-2.0
#ifndef IPL_PLEXPORT_H
#define IPL_PLEXPORT_H

/// @file
/// Marks of the compiler.

/// Marks a symbol that libIPLKernel.so exports, or an entry symbol that a module exports.
/// Everything else should be compiled with -fvisibility=hidden.
#define IPL_API __attribute__((visibility("default")))

/// Keeps a private operation of an exported class out of the exported symbols; of a variable it says that the library
/// has it, so that it is reached without a detour.
#define IPL_HIDDEN __attribute__((visibility("hidden")))

/// Lets the compiler check a format text against the arguments that follow it. Both numbers count from 1, and 1 is
/// the object itself.
#define IPL_PRINTF(formatIndex, firstArgument) __attribute__((format(printf, formatIndex, firstArgument)))

/// Marks the functions of the optional layer (namespace ipl), which become part of their callers: a module that uses
/// them has no symbol of them, at any level of optimisation.
#define IPL_ALWAYS_INLINE inline __attribute__((always_inline))
/// A function that is not inlined, so that those that seldom call it stay short.
#define IPL_NEVER_INLINE __attribute__((noinline))

/// Lets the library's own build check where the fields of a class lie. Never defined for others.
template <typename T>
struct PLContractLayout;

#endif  // IPL_PLEXPORT_H
