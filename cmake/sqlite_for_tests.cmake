# SQLite::SQLite3 for the tests of a system that brings none, made from Debian's source package. The program does not
# need it: it opens the library through the system's own database provider.
enable_language(C)
set(TYINDEXER_SQLITE_SOURCE ${CMAKE_SOURCE_DIR}/build/sqlite CACHE PATH "Where the source of SQLite is or shall be put")
execute_process(COMMAND ${CMAKE_SOURCE_DIR}/script/fetch-sqlite ${TYINDEXER_SQLITE_SOURCE} OUTPUT_QUIET
                COMMAND_ERROR_IS_FATAL ANY)
set(CMAKE_C_COMPILER_LAUNCHER ${CMAKE_CXX_COMPILER_LAUNCHER})
add_library(sqlite_for_tests STATIC ${TYINDEXER_SQLITE_SOURCE}/sqlite3.c)
target_include_directories(sqlite_for_tests SYSTEM PUBLIC ${TYINDEXER_SQLITE_SOURCE})
# No test pulls the plug: waiting for the disk would be most of their time.
target_compile_definitions(sqlite_for_tests PRIVATE SQLITE_OMIT_LOAD_EXTENSION SQLITE_NO_SYNC)
add_library(SQLite::SQLite3 ALIAS sqlite_for_tests)
