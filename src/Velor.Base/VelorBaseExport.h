#pragma once

/// \file
/// What a symbol of the shared library shows to its callers, and other marks that compilers spell
/// differently. Everything is hidden unless it is marked otherwise.

// Every public header reaches this one before it declares anything. Qt's moc does not define the language
// version that it reads.
#if (defined(_MSVC_LANG) ? _MSVC_LANG : __cplusplus) < 202002L && !defined(Q_MOC_RUN)
#error "Velor2.Base needs C++20 or later: compile with -std=c++20, or CMAKE_CXX_STANDARD 20 in CMake"
// Compilers go on behind an #error, and end where a file is missing: no other message hides the one above.
#include "compile with -std=c++20"
#endif

// Qt has such macros, too, but the header that defines them would be half the cost of a header without Qt
// types. Only ELF knows a class whose table is visible while its functions are not.
#if defined(__ELF__)
/// On a class: its functions, virtual table and type information can be linked. Also on a function.
#define VELOR_BASE_EXPORT __attribute__((visibility("default")))
/// On a class: only its virtual table and type information can be linked, so that a caller may derive from
/// it and cast to it.
#define VELOR_BASE_TYPE __attribute__((visibility("default")))
/// On a function of such a class that is not inline: it cannot be linked.
#define VELOR_BASE_PRIVATE __attribute__((visibility("hidden")))
#else
#if defined(VELOR_BASE_BUILDING)
#define VELOR_BASE_EXPORT __declspec(dllexport)
#else
#define VELOR_BASE_EXPORT __declspec(dllimport)
#endif
#define VELOR_BASE_TYPE
#define VELOR_BASE_PRIVATE
#endif

// What only some compilers take has a fallback beside it, which VELOR_BASE_PORTABLE chooses for its tests.
#if defined(__GNUC__) && !defined(VELOR_BASE_PORTABLE)
#define VELOR_BASE_GNU
#endif

#if defined(VELOR_BASE_GNU)
/// Behind a function whose parameter number `text`, counted from 1, is a format of `printf` for the arguments
/// from number `first` on: the compiler then warns of arguments that do not fit.
#define VELOR_BASE_PRINTF(text, first) __attribute__((format(printf, text, first)))
#else
/// Without such warnings.
#define VELOR_BASE_PRINTF(text, first)
#endif
