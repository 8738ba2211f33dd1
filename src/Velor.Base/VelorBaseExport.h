#pragma once

#include <QtCore/qcompilerdetection.h>

/// \file
/// What a symbol of the shared library shows to its callers. Everything is hidden unless a class says
/// otherwise.
///
/// - `VELOR_BASE_EXPORT` on a class: its functions, virtual table and type information can be linked.
/// - `VELOR_BASE_TYPE` on a class: only its virtual table and type information can be linked, so that a
/// caller
///   may derive from it and cast to it. Its functions that are not inline carry `VELOR_BASE_PRIVATE`.

#if defined(VELOR_BASE_BUILDING)
#define VELOR_BASE_EXPORT Q_DECL_EXPORT
#else
#define VELOR_BASE_EXPORT Q_DECL_IMPORT
#endif

// Only ELF knows a class whose table is visible while its functions are not.
#if defined(__ELF__)
#define VELOR_BASE_TYPE Q_DECL_EXPORT
#define VELOR_BASE_PRIVATE Q_DECL_HIDDEN
#else
#define VELOR_BASE_TYPE
#define VELOR_BASE_PRIVATE
#endif
