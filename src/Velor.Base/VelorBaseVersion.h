#pragma once

/// \file
/// The version of the headers, for what is decided while compiling. `VelorVersion::current` is the version of
/// the library that a program runs with.

/// A part of the version. The build takes it from here.
/// @{
#define VELOR_BASE_VERSION_MAJOR 6
#define VELOR_BASE_VERSION_MINOR 0
#define VELOR_BASE_VERSION_PATCH 0
/// @}

/// A version as a number that can be compared, for parts up to 255:
/// `#if VELOR_BASE_VERSION >= VELOR_BASE_VERSION_CHECK(6, 1, 0)`.
#define VELOR_BASE_VERSION_CHECK(major, minor, patch) ((major) << 16 | (minor) << 8 | (patch))
/// The version of the headers as such a number.
#define VELOR_BASE_VERSION                                                                                   \
    VELOR_BASE_VERSION_CHECK(VELOR_BASE_VERSION_MAJOR, VELOR_BASE_VERSION_MINOR, VELOR_BASE_VERSION_PATCH)
