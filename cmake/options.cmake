# What every target of the project is compiled with.
add_library(tyindexer_options INTERFACE)
target_compile_options(tyindexer_options INTERFACE
  -Wall -Wextra -Wpedantic -Wshadow -Wnon-virtual-dtor -Wold-style-cast -Woverloaded-virtual -Werror)
# GCC 12 takes "text" + std::string for a copy onto itself when it optimises; it is none.
target_compile_options(tyindexer_options INTERFACE $<$<CXX_COMPILER_ID:GNU>:-Wno-restrict>)
if(TYINDEXER_SANITIZE)
  target_compile_options(tyindexer_options INTERFACE
    -fsanitize=${TYINDEXER_SANITIZE} -fno-sanitize-recover=all -fno-omit-frame-pointer)
  target_link_options(tyindexer_options INTERFACE -fsanitize=${TYINDEXER_SANITIZE})
endif()
