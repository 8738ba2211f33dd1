# The xxHash library brings no package of its own for CMake: this makes the target xxHash::xxhash of its header, which
# holds all of it.

if(TARGET xxHash::xxhash)
    return()
endif()
find_path(XXHASH_INCLUDE_DIR xxhash.h REQUIRED)
mark_as_advanced(XXHASH_INCLUDE_DIR)
add_library(xxHash::xxhash INTERFACE IMPORTED)
target_include_directories(xxHash::xxhash INTERFACE "${XXHASH_INCLUDE_DIR}")
