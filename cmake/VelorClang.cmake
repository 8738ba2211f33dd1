# The compiler of the preset "clang", and of those that inherit it: Debian names each version apart.

execute_process(COMMAND ${CMAKE_CURRENT_LIST_DIR}/../tools/clang
    OUTPUT_VARIABLE velor_clang OUTPUT_STRIP_TRAILING_WHITESPACE COMMAND_ERROR_IS_FATAL ANY)
set(CMAKE_CXX_COMPILER clang++-${velor_clang})
