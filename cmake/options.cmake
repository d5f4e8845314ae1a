# What every target of the project is compiled with.
add_library(tyindexer_options INTERFACE)
target_compile_options(tyindexer_options INTERFACE
  -Wall -Wextra -Wpedantic -Wshadow -Wnon-virtual-dtor -Wold-style-cast -Woverloaded-virtual -Werror)
if(TYINDEXER_SANITIZE)
  target_compile_options(tyindexer_options INTERFACE
    -fsanitize=${TYINDEXER_SANITIZE} -fno-sanitize-recover=all -fno-omit-frame-pointer)
  target_link_options(tyindexer_options INTERFACE -fsanitize=${TYINDEXER_SANITIZE})
endif()
