# What every target of the project is compiled with.
add_library(tyindexer_options INTERFACE)
target_compile_options(tyindexer_options INTERFACE
  -Wall -Wextra -Wpedantic -Wshadow -Wnon-virtual-dtor -Wold-style-cast -Woverloaded-virtual -Werror)
# GCC 12 reports overlapping copies in its own std::string at -O2 and above (its bug 105651).
if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU" AND CMAKE_CXX_COMPILER_VERSION VERSION_LESS 13)
  target_compile_options(tyindexer_options INTERFACE -Wno-restrict)
endif()
if(TYINDEXER_SANITIZE)
  target_compile_options(tyindexer_options INTERFACE
    -fsanitize=${TYINDEXER_SANITIZE} -fno-sanitize-recover=all -fno-omit-frame-pointer)
  target_link_options(tyindexer_options INTERFACE -fsanitize=${TYINDEXER_SANITIZE})
endif()
