# Warnings are errors, in every target.
add_compile_options(
  -Wall -Wextra -Wpedantic -Wshadow -Wconversion -Wsign-conversion -Wcast-qual -Wformat=2 -Wundef
  -Wno-format-nonliteral -Werror)
add_compile_options($<$<COMPILE_LANGUAGE:CXX>:-Wnon-virtual-dtor> $<$<COMPILE_LANGUAGE:CXX>:-Woverloaded-virtual>)
add_compile_options(-fstack-protector-strong)
# What an assertion or a library's macro says of a place tells the file's name in the sources, not where they stood.
add_compile_options(-fmacro-prefix-map=${PROJECT_SOURCE_DIR}/=)
add_link_options(-Wl,-z,relro,-z,now)
if(NOT CMAKE_BUILD_TYPE STREQUAL "Debug" AND NOT TW_SANITIZE)
  add_compile_definitions($<$<CONFIG:Release,RelWithDebInfo>:_FORTIFY_SOURCE=2>)
endif()
if(TW_SANITIZE)
  # gcc 12 takes no function's address in a constant expression while it checks for null pointers, and the record
  # tables are constant. A null pointer that is used still ends the program.
  if(TW_SANITIZE MATCHES "undefined")
    set(TW_SANITIZE_LESS -fno-sanitize=null,nonnull-attribute,returns-nonnull-attribute)
  endif()
  add_compile_options(-fsanitize=${TW_SANITIZE} ${TW_SANITIZE_LESS} -fno-omit-frame-pointer -fno-sanitize-recover=all)
  add_link_options(-fsanitize=${TW_SANITIZE})
endif()
