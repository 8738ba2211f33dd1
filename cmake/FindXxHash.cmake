# The xxHash library brings no package of its own for CMake: this makes the target xxHash::xxhash.

if(TARGET xxHash::xxhash)
    return()
endif()
find_path(XXHASH_INCLUDE_DIR xxhash.h REQUIRED)
find_library(XXHASH_LIBRARY xxhash REQUIRED)
mark_as_advanced(XXHASH_INCLUDE_DIR XXHASH_LIBRARY)
add_library(xxHash::xxhash UNKNOWN IMPORTED)
set_target_properties(xxHash::xxhash PROPERTIES
    IMPORTED_LOCATION "${XXHASH_LIBRARY}"
    INTERFACE_INCLUDE_DIRECTORIES "${XXHASH_INCLUDE_DIR}")
